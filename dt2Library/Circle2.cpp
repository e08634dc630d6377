#include "Circle2.h"

#include <cmath>
#include <ostream>

#include "roundingMode.h"

namespace KELMAR_NORVIK2D {

double Circle2::getRadius() const {
    RoundToNearest nearest;
    return nearest.keep(std::sqrt(sqRadius));
}

std::ostream& operator<<(std::ostream& os, const Circle2& circle) {
    return os << "Circle2: " << circle.center << ", r=" << circle.getRadius();
}

}  // namespace KELMAR_NORVIK2D
