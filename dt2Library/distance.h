#pragma once

#include <cmath>

#include "Point2.h"

/// Properties of plain points, and lengths for loops that stand under RoundToNearest already, which the public functions set anew at each call.
namespace KELMAR_NORVIK2D {

inline double squaredDistance(const Point2& a, const Point2& b) noexcept {
    const double dx = b.x() - a.x(), dy = b.y() - a.y();
    return dx * dx + dy * dy;
}

/// Whether both coordinates are numbers: others are refused wherever points come in.
inline bool isFinite(const Point2& point) noexcept {
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

inline double distance(const Point2& a, const Point2& b) noexcept { return std::sqrt(squaredDistance(a, b)); }

}  // namespace KELMAR_NORVIK2D
