#pragma once

#include <type_traits>

#include "Point2.h"

namespace KELMAR_NORVIK2D {

/// Makes answers independent of the host's floating-point settings: for its lifetime results are rounded to
/// nearest and (on x86) denormal numbers are neither flushed to zero nor read as zero. Both settings return
/// as they were at the end of the scope, an exception included. Threads started within the scope inherit it.
class RoundToNearest {
public:
    RoundToNearest() noexcept;
    ~RoundToNearest();
    RoundToNearest(const RoundToNearest&) = delete;
    RoundToNearest& operator=(const RoundToNearest&) = delete;

    /// Hands a number through that belongs into this scope. Without it a compiler that sees both ends of the
    /// scope may compute a result behind it, or begin with an argument before it.
    template <class Number>
    Number keep(Number number) const noexcept {
        // A bool not by itself: Clang 14 may set all bits of one that is true, and takes it back as it is.
        if constexpr (std::is_same_v<Number, bool>) return keep(int{number}) != 0;
#if defined(__SSE2__)
        if constexpr (std::is_floating_point_v<Number>)
            asm volatile("" : "+x"(number) : : "memory");
        else
#endif
            asm volatile("" : "+rm"(number) : : "memory");
        return number;
    }

private:
    int oldRounding;
    unsigned int oldControl;
    bool bChanged;
};

/// Bounds of the orientation determinant of a, b, c by directed rounding, each sure to be on its side of the
/// true value. The rounding mode is restored before they return.
double upperOrientationBound(const Point2* pA, const Point2* pB, const Point2* pC);
double lowerOrientationBound(const Point2* pA, const Point2* pB, const Point2* pC);

}  // namespace KELMAR_NORVIK2D
