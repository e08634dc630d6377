#pragma once

#include <algorithm>
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

/// For a point on the line through a and b: whether it lies strictly between them. Coordinates tell that exactly; lengths,
/// which hasOnCollinearPoint() compares, are rounded.
inline bool isBetween(const Point2& a, const Point2& b, const Point2& q) noexcept {
    if (a.x() != b.x()) return std::min(a.x(), b.x()) < q.x() && q.x() < std::max(a.x(), b.x());
    return std::min(a.y(), b.y()) < q.y() && q.y() < std::max(a.y(), b.y());
}

inline double distance(const Point2& a, const Point2& b) noexcept { return std::sqrt(squaredDistance(a, b)); }

}  // namespace KELMAR_NORVIK2D
