#pragma once

#include <iosfwd>

#include "Point2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// A centre and a *squared* radius: both constructors take the square.
class NORVIK2D_EXPORT Circle2 {
public:
    /// The circle of radius 0 around the empty result (see Point2).
    Circle2() noexcept = default;
    Circle2(double x, double y, double sqRadius_) noexcept : center(x, y), sqRadius(sqRadius_) {}
    Circle2(const Point2& center_, double sqRadius_) noexcept : center(center_), sqRadius(sqRadius_) {}

    double getRadius() const;
    double getSqRadius() const noexcept { return sqRadius; }
    Point2 getCenter() const noexcept { return center; }

private:
    friend NORVIK2D_EXPORT std::ostream& operator<<(std::ostream& os, const Circle2& circle);

    Point2 center;
    double sqRadius = 0.0;
};

NORVIK2D_EXPORT std::ostream& operator<<(std::ostream& os, const Circle2& circle);

}  // namespace KELMAR_NORVIK2D
