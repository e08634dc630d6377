#pragma once

#include <gmpxx.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

#include "Point2.h"

/// Signs of determinants in integers, for comparison with the library's: finite doubles are multiples of one power of two,
/// so scaled by it they are integers. Nothing of the library's arithmetic is used.
namespace exactSigns {

using KELMAR_NORVIK2D::Point2;

struct ExactPoint {
    mpz_class x, y;
};

/// Greatest exponent of a power of two that divides all coordinates noted.
class CommonScale {
public:
    void note(double value) {
        if (value != 0.0) lowest = std::min(lowest, std::ilogb(value) - 52);
    }
    void note(const Point2& point) {
        note(point.x());
        note(point.y());
    }
    ExactPoint exact(const Point2& point) const { return {scaled(point.x()), scaled(point.y())}; }

private:
    mpz_class scaled(double value) const {
        if (value == 0.0) return 0;
        const int exponent = std::ilogb(value) - 52;
        mpz_class result(std::scalbn(value, -exponent));
        result <<= static_cast<mp_bitcnt_t>(exponent - lowest);
        return result;
    }

    int lowest = INT_MAX;
};

/// Twice the area of a, b, c: positive if they run counterclockwise.
inline mpz_class doubleArea(const ExactPoint& a, const ExactPoint& b, const ExactPoint& c) {
    return mpz_class((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x));
}

/// Positive if q lies in the circumcircle of the counterclockwise triangle a, b, c.
inline int inCircle(const ExactPoint& a, const ExactPoint& b, const ExactPoint& c, const ExactPoint& q) {
    const mpz_class ax = a.x - q.x, ay = a.y - q.y, bx = b.x - q.x, by = b.y - q.y, cx = c.x - q.x,
                    cy = c.y - q.y;
    return sgn(mpz_class((ax * ax + ay * ay) * (bx * cy - cx * by) +
                         (bx * bx + by * by) * (cx * ay - ax * cy) +
                         (cx * cx + cy * cy) * (ax * by - bx * ay)));
}

inline int orientationSign(const Point2& a, const Point2& b, const Point2& c) {
    CommonScale scale;
    for (const Point2* p : {&a, &b, &c}) scale.note(*p);
    return sgn(doubleArea(scale.exact(a), scale.exact(b), scale.exact(c)));
}

constexpr int unsure = 2;

/// The sign where extended doubles are sure of it, otherwise `unsure`. Their exponents are so wide that no product of four
/// differences of doubles leaves their range, so only rounding counts.
inline int fastInCircleSign(const Point2& a, const Point2& b, const Point2& c, const Point2& q) {
    using Wide = long double;
    if constexpr (std::numeric_limits<Wide>::max_exponent < 16384) return unsure;
    const Wide ax = Wide(a.x()) - q.x(), ay = Wide(a.y()) - q.y(), bx = Wide(b.x()) - q.x(),
               by = Wide(b.y()) - q.y(), cx = Wide(c.x()) - q.x(), cy = Wide(c.y()) - q.y();
    const Wide lengthA = ax * ax + ay * ay, lengthB = bx * bx + by * by, lengthC = cx * cx + cy * cy;
    const Wide det =
        lengthA * (bx * cy - cx * by) + lengthB * (cx * ay - ax * cy) + lengthC * (ax * by - bx * ay);
    const Wide permanent = lengthA * (std::fabs(bx * cy) + std::fabs(cx * by)) +
                           lengthB * (std::fabs(cx * ay) + std::fabs(ax * cy)) +
                           lengthC * (std::fabs(ax * by) + std::fabs(bx * ay));
    const Wide bound = permanent * 64 * std::numeric_limits<Wide>::epsilon();
    return det > bound ? 1 : det < -bound ? -1 : unsure;
}

}  // namespace exactSigns
