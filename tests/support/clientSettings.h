#pragma once

#include <cfenv>
#include <utility>

#ifdef __SSE2__
#include <xmmintrin.h>
#endif

/// The client's floating-point settings for as long as this lives: a rounding mode, and denormals flushed or not.
class ClientSettings {
public:
    ClientSettings(int rounding, bool bFlush) {
        std::fesetround(rounding);
#ifdef __SSE2__
        if (bFlush) _mm_setcsr(_mm_getcsr() | 0x8040);
#else
        static_cast<void>(bFlush);
#endif
        before = now();
    }
    ~ClientSettings() {
#ifdef __SSE2__
        _mm_setcsr(_mm_getcsr() & ~0x8040U);
#endif
        std::fesetround(FE_TONEAREST);
    }
    ClientSettings(const ClientSettings&) = delete;
    ClientSettings& operator=(const ClientSettings&) = delete;

    bool areKept() const { return now() == before; }
    /// Whether the settings in force are those that the library computes with.
    static bool areNormal() { return now().first == FE_TONEAREST && (now().second & 0x8040U) == 0; }

private:
    static std::pair<int, unsigned> now() {
#ifdef __SSE2__
        return {std::fegetround(), _mm_getcsr() & ~0x3FU};  // without the exception flags
#else
        return {std::fegetround(), 0};
#endif
    }
    std::pair<int, unsigned> before;
};

inline constexpr int roundingModes[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
