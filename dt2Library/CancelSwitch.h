#pragma once

#include <atomic>

namespace KELMAR_NORVIK2D {

/// The wish, uttered by any thread, that a long operation end at its next step. Only operations that are open to it, for the
/// lifetime of a Scope, hear of it; between them it gets lost.
class CancelSwitch {
public:
    void request() noexcept { bRequested.store(true, std::memory_order_relaxed); }
    /// Whether the last operation that was open to it has been cut short.
    bool wasCancelled() const noexcept { return bCancelled; }

    /// Whether that has happened to the present operation.
    bool isCutShort() const noexcept { return bOpen && bCancelled; }

    /// To be asked at each step.
    bool shouldStop() noexcept {
        if (!bOpen || !bRequested.load(std::memory_order_relaxed)) [[likely]]
            return false;
        bCancelled = true;
        return true;
    }

    class Scope {
    public:
        explicit Scope(CancelSwitch& cancelSwitch_) noexcept : cancelSwitch(cancelSwitch_) {
            cancelSwitch.bRequested.store(false, std::memory_order_relaxed);
            cancelSwitch.bCancelled = false;
            cancelSwitch.bOpen = true;
        }
        ~Scope() { cancelSwitch.bOpen = false; }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        CancelSwitch& cancelSwitch;
    };

    /// A part of an operation that has to come to its end.
    class Pause {
    public:
        explicit Pause(CancelSwitch& cancelSwitch_) noexcept
            : cancelSwitch(cancelSwitch_), bWasOpen(cancelSwitch_.bOpen) {
            cancelSwitch.bOpen = false;
        }
        ~Pause() { cancelSwitch.bOpen = bWasOpen; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        CancelSwitch& cancelSwitch;
        bool bWasOpen;
    };

private:
    std::atomic<bool> bRequested{false};
    bool bOpen = false;
    bool bCancelled = false;
};

}  // namespace KELMAR_NORVIK2D
