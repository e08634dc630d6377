#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "MsgBase.h"

namespace KELMAR_NORVIK2D {

/// Counts the steps of a long operation and tells subscribers how far it is, from 0.0 to 1.0. Where no one
/// listens nothing is computed. Neither subscribers nor linked progress objects are owned; all calls come
/// from the thread that runs the operation.
class Progress {
public:
    Progress() = default;
    /// Undoes all links.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// The same pair may be added several times, and is called as often; removing takes all of them away.
    void subscribe(MsgType type, MsgBase* pMsg);
    void unsubscribe(MsgType type, MsgBase* pMsg);

    /// Makes `pChild` a part of this operation: its value is added to this one's.
    void addChild(Progress* pChild);

    /// A muted progress does nothing at all.
    void setMuted(bool bMuted_) noexcept { bMuted = bMuted_; }
    bool isMuted() const noexcept { return bMuted; }

    /// Whether steps need to be counted: an operation runs and someone listens.
    bool isTracked() const noexcept { return total != 0 && !bMuted && hasListeners(); }

    /// Begins an operation; nothing happens if it is muted or without subscribers.
    void start(const std::string& name_, std::uint64_t total_);
    /// Adds `n` steps; about a hundred times in all the listeners hear of it.
    void incProgress(unsigned long n) {
        if (!isTracked() || bFinished) return;
        count += n;
        if (count % step == 0) refresh();
    }
    /// How often listeners hear of the operation: each time the count of steps is a multiple of this.
    void setStep(std::uint64_t step_) noexcept { step = step_; }
    /// More steps than foreseen.
    void addToTotal(std::uint64_t n) {
        if (total != 0) total += n;
    }
    /// Ends an operation, unless it is muted. The last value that subscribers get is 1.0, once.
    void finish();

    /// Steps done of all, plus the values of the children: each adds up to 1.0, whatever their number. What
    /// exceeds 1.0 is cut before subscribers see it.
    double getPercDone() const;

    /// Calls the subscribers of the type in the order of subscription.
    void broadcast(MsgType type, const std::string& text, double value);

private:
    bool hasListeners() const noexcept { return numSubscribers != 0 || !parents.empty(); }
    bool isSubscribed(MsgType type, const MsgBase* pMsg) const;
    void refresh();

    std::vector<Progress*> children;
    std::vector<Progress*> parents;
    std::multimap<MsgType, MsgBase*> subscribers;
    std::uint64_t numSubscribers = 0;
    std::uint64_t total = 0;
    std::uint64_t count = 0;
    std::uint64_t step = 1;
    std::string name;
    bool bBegun = false;  ///< also an operation without steps begins and ends
    bool bFinished = false;
    bool bMuted = false;
};

/// Mutes a progress for its lifetime, for operations inside of one that reports already.
class MuteScope {
public:
    explicit MuteScope(Progress& progress_) noexcept : progress(progress_), bWasMuted(progress.isMuted()) {
        progress.setMuted(true);
    }
    ~MuteScope() { progress.setMuted(bWasMuted); }
    MuteScope(const MuteScope&) = delete;
    MuteScope& operator=(const MuteScope&) = delete;

private:
    Progress& progress;
    bool bWasMuted;
};

/// An operation whose parts report nothing of their own: the only one of its kind in sight.
class ProgressPhase {
public:
    ProgressPhase(Progress& progress_, const char* name, std::uint64_t total)
        : progress(progress_), bWasMuted(progress_.isMuted()) {
        progress.start(name, total);
        progress.setMuted(true);
    }
    ~ProgressPhase() { progress.setMuted(bWasMuted); }
    ProgressPhase(const ProgressPhase&) = delete;
    ProgressPhase& operator=(const ProgressPhase&) = delete;

    void advance(unsigned long n) {
        progress.setMuted(bWasMuted);
        progress.incProgress(n);
        progress.setMuted(true);
    }
    /// To be called however the operation ends but by an exception.
    void finish() {
        progress.setMuted(bWasMuted);
        progress.finish();
    }

private:
    Progress& progress;
    bool bWasMuted;
};

}  // namespace KELMAR_NORVIK2D
