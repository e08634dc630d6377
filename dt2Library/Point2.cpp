#include "Point2.h"

#include <ostream>

#include "roundingMode.h"

namespace KELMAR_NORVIK2D {

// The comparisons stand here, under the guard: where denormal numbers are read as zero, different points look
// equal.

bool Point2::operator==(const Point2& other) const noexcept {
    RoundToNearest nearest;
    return nearest.keep(xCoord == other.xCoord && yCoord == other.yCoord);
}

bool Point2::operator<(const Point2& other) const noexcept {
    RoundToNearest nearest;
    return nearest.keep(xCoord != other.xCoord ? xCoord < other.xCoord : yCoord < other.yCoord);
}

std::ostream& operator<<(std::ostream& os, const Point2& point) {
    return os << "Point2 (" << static_cast<const void*>(&point) << "," << point.customIndex
              << "): " << point.x() << ", " << point.y();
}

}  // namespace KELMAR_NORVIK2D
