// The one source that changes the rounding mode. It is compiled with -frounding-math, but compilers still
// move arithmetic across fesetround (clang does under link-time optimisation), so every operand and every
// result of a directed operation passes a barrier.
#include "roundingMode.h"

#include <cfenv>

#if defined(__x86_64__) || defined(__SSE2__)
#include <xmmintrin.h>
#define NORVIK2D_HAS_MXCSR 1
#endif

namespace KELMAR_NORVIK2D {

namespace {

#ifdef NORVIK2D_HAS_MXCSR
constexpr unsigned int roundingControlBits = 0x6000;
constexpr unsigned int denormalBits = 0x8040;  // flush to zero, denormals are zero
constexpr unsigned int watchedBits = roundingControlBits | denormalBits;
#endif

/// Pins a value to this place of the program: nothing that computes it moves below, nothing that uses it
/// above.
inline double pinned(double value) {
#ifdef NORVIK2D_HAS_MXCSR
    asm volatile("" : "+x"(value) : : "memory");
#else
    asm volatile("" : "+m"(value) : : "memory");
#endif
    return value;
}

inline void setRounding(int mode) {
    asm volatile("" : : : "memory");
    std::fesetround(mode);
    asm volatile("" : : : "memory");
}

/// The x87 rounding mode, as fegetround tells it, without a call: each query to a mesh begins with this.
inline int roundingInForce() noexcept {
#ifdef NORVIK2D_HAS_MXCSR
    unsigned short control;
    asm volatile("fnstcw %0" : "=m"(control));
    return control & (FE_DOWNWARD | FE_UPWARD | FE_TOWARDZERO);
#else
    return std::fegetround();
#endif
}

/// A product of two coordinate differences, (a - b) * (c - d).
struct DifferenceProduct {
    double a, b, c, d;

    bool isPositive() const { return (b > a) == (d > c); }

    /// The signed factors, rounded under the present mode.
    double signedValue() const {
        const double first = pinned(pinned(a) - pinned(b));
        const double second = pinned(pinned(c) - pinned(d));
        return pinned(first * second);
    }

    /// The magnitudes of the factors, rounded under the present mode.
    double magnitude() const {
        const double first = pinned(b > a ? pinned(b) - pinned(a) : pinned(a) - pinned(b));
        const double second = pinned(d > c ? pinned(d) - pinned(c) : pinned(c) - pinned(d));
        return pinned(first * second);
    }

    /// Not below the true value: upward on the magnitudes of a positive product, towards zero on a negative
    /// one.
    double upper() const {
        setRounding(isPositive() ? FE_UPWARD : FE_TOWARDZERO);
        return isPositive() ? magnitude() : signedValue();
    }

    /// Not above the true value.
    double lower() const {
        setRounding(isPositive() ? FE_TOWARDZERO : FE_UPWARD);
        return isPositive() ? signedValue() : -magnitude();
    }
};

/// The determinant (a.x - c.x)(b.y - c.y) - (a.y - c.y)(b.x - c.x) as minuend and subtrahend.
DifferenceProduct minuend(const Point2* pA, const Point2* pB, const Point2* pC) {
    return {pA->x(), pC->x(), pB->y(), pC->y()};
}
DifferenceProduct subtrahend(const Point2* pA, const Point2* pB, const Point2* pC) {
    return {pA->y(), pC->y(), pB->x(), pC->x()};
}

}  // namespace

// A client may have set SSE and x87 apart: fegetround reads x87, so the SSE control word is saved and
// restored by itself.
[[gnu::noinline]] RoundToNearest::RoundToNearest() noexcept
    : oldRounding(roundingInForce()), oldControl(0), bChanged(oldRounding != FE_TONEAREST) {
#ifdef NORVIK2D_HAS_MXCSR
    oldControl = _mm_getcsr();
    bChanged = bChanged || (oldControl & watchedBits) != 0;
#endif
    if (!bChanged) [[likely]]
        return;
    setRounding(FE_TONEAREST);
#ifdef NORVIK2D_HAS_MXCSR
    _mm_setcsr(_mm_getcsr() & ~watchedBits);
#endif
}

[[gnu::noinline]] RoundToNearest::~RoundToNearest() {
    if (!bChanged) [[likely]]
        return;
    setRounding(oldRounding);
#ifdef NORVIK2D_HAS_MXCSR
    _mm_setcsr((_mm_getcsr() & ~watchedBits) | (oldControl & watchedBits));
#endif
}

[[gnu::noinline]] double upperOrientationBound(const Point2* pA, const Point2* pB, const Point2* pC) {
    const int clientMode = std::fegetround();
    const double p = minuend(pA, pB, pC).upper();
    const double q = subtrahend(pA, pB, pC).lower();
    setRounding(FE_UPWARD);
    const double bound = pinned(pinned(p) - pinned(q));
    setRounding(clientMode);
    return bound;
}

[[gnu::noinline]] double lowerOrientationBound(const Point2* pA, const Point2* pB, const Point2* pC) {
    const int clientMode = std::fegetround();
    const double p = minuend(pA, pB, pC).lower();
    const double q = subtrahend(pA, pB, pC).upper();
    setRounding(FE_DOWNWARD);
    const double bound = pinned(pinned(p) - pinned(q));
    setRounding(clientMode);
    return bound;
}

}  // namespace KELMAR_NORVIK2D
