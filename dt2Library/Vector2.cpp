#include "Vector2.h"

#include <cmath>

#include "geometryTools.h"
#include "require.h"
#include "roundingMode.h"

namespace KELMAR_NORVIK2D {

Vector2::Vector2(const Point2& from, const Point2& to) {
    RoundToNearest nearest;
    set(to.x() - from.x(), to.y() - from.y());
}

double Vector2::length() const {
    RoundToNearest nearest;
    return nearest.keep(std::sqrt(sqLength()));
}

double Vector2::sqLength() const {
    RoundToNearest nearest;
    return nearest.keep(xComponent * xComponent + yComponent * yComponent);
}

Vector2 Vector2::orthogonalVector() const {
    RoundToNearest nearest;
    if (xComponent == 0.0 && yComponent == 0.0) return {0.0, 0.0};

    // Dividing by the greater component keeps the quotient within [-1, 1], whatever the magnitudes are.
    const bool bFlat = std::fabs(xComponent) > std::fabs(yComponent);
    const Vector2 start =
        bFlat ? Vector2(-yComponent / xComponent, 1.0) : Vector2(1.0, -xComponent / yComponent);
    const Vector2 unit = normalize(start);

    // Which of the two normals is the left one is decided exactly, on the rounded vectors. The exact test
    // takes finite coordinates only.
    const Point2 origin(0.0, 0.0), tip(xComponent, yComponent), unitTip(unit.xComponent, unit.yComponent);
    const bool bFinite = std::isfinite(xComponent) && std::isfinite(yComponent);
    const Orientation2 side = bFinite ? getOrientation2(&origin, &tip, &unitTip) : ORIENTATION2_COLLINEAR;
    require(side != ORIENTATION2_COLLINEAR, "side!=ORIENTATION2_COLLINEAR");
    return side == ORIENTATION2_CCW ? unit : -unit;
}

double Vector2::operator*(const Vector2& other) const {
    RoundToNearest nearest;
    return nearest.keep(xComponent * other.xComponent + yComponent * other.yComponent);
}

Vector2 Vector2::operator*(double factor) const {
    RoundToNearest nearest;
    return {nearest.keep(xComponent * factor), nearest.keep(yComponent * factor)};
}

Vector2 Vector2::operator/(double divisor) const {
    RoundToNearest nearest;
    return {nearest.keep(xComponent / divisor), nearest.keep(yComponent / divisor)};
}

Vector2 Vector2::operator+(const Vector2& other) const {
    RoundToNearest nearest;
    return {nearest.keep(xComponent + other.xComponent), nearest.keep(yComponent + other.yComponent)};
}

Vector2 Vector2::operator-(const Vector2& other) const {
    RoundToNearest nearest;
    return {nearest.keep(xComponent - other.xComponent), nearest.keep(yComponent - other.yComponent)};
}

// Changing a sign is exact in every mode: no guard.
Vector2 Vector2::operator-() const { return {-xComponent, -yComponent}; }

Vector2 operator-(const Point2& a, const Point2& b) { return {b, a}; }

Point2 operator+(const Point2& point, const Vector2& vector) {
    RoundToNearest nearest;
    return {nearest.keep(point.x() + vector.x()), nearest.keep(point.y() + vector.y())};
}

Point2 operator-(const Point2& point, const Vector2& vector) {
    RoundToNearest nearest;
    return {nearest.keep(point.x() - vector.x()), nearest.keep(point.y() - vector.y())};
}

}  // namespace KELMAR_NORVIK2D
