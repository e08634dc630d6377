#pragma once

#include <algorithm>
#include <cmath>

#include "Vector2.h"
#include "standardOutput.h"

/// Directions and angles for loops that stand under RoundToNearest already, which the public functions set anew at each call.
namespace KELMAR_NORVIK2D {

/// The vector scaled to length 1; (0,0), with a remark, for one without length.
inline Vector2 unitVector(double x, double y) {
    const double length = std::sqrt(x * x + y * y);
    // So written that a NaN counts as a null vector too.
    if (!(length > 0.0)) [[unlikely]] {
        print("warning: normalize(const Vector2& other), Null length vector!\n");
        return {0.0, 0.0};
    }
    return {x / length, y / length};
}
inline Vector2 unitVector(const Point2& from, const Point2& to) {
    return unitVector(to.x() - from.x(), to.y() - from.y());
}

/// The cosine of the angle between two unit vectors. Rounding may lead their product slightly out of the domain of acos.
inline double cosineBetween(const Vector2& a, const Vector2& b) {
    return std::clamp(a.x() * b.x() + a.y() * b.y(), -1.0, 1.0);
}

/// The angle that belongs to a cosine, in degrees.
inline double degreesOf(double cosine) {
    // Ten digits by convention: angles that clients compare with were made with this factor, not with 180/pi.
    constexpr double degreesPerRadian = 57.295779513;
    return std::acos(cosine) * degreesPerRadian;
}

}  // namespace KELMAR_NORVIK2D
