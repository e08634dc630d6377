#pragma once

#include "Point2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// A direction with a length; (0,0) by default.
class NORVIK2D_EXPORT Vector2 {
public:
    Vector2() noexcept = default;
    Vector2(double x, double y) noexcept : xComponent(x), yComponent(y) {}
    /// The vector that leads from one point to the other.
    Vector2(const Point2& from, const Point2& to);

    double x() const noexcept { return xComponent; }
    double y() const noexcept { return yComponent; }
    void set(double x, double y) noexcept {
        xComponent = x;
        yComponent = y;
    }

    double length() const;
    double sqLength() const;

    /// The unit vector to the left of this one; (0,0) for the null vector. A vector that isn't finite fails
    /// an assertion (NorvikException).
    Vector2 orthogonalVector() const;

    /// The dot product.
    double operator*(const Vector2& other) const;

    Vector2 operator*(double factor) const;
    Vector2 operator/(double divisor) const;
    Vector2 operator+(const Vector2& other) const;
    Vector2 operator-(const Vector2& other) const;
    Vector2 operator-() const;

private:
    double xComponent = 0.0;
    double yComponent = 0.0;
};

/// The vector from `b` to `a`.
NORVIK2D_EXPORT Vector2 operator-(const Point2& a, const Point2& b);
/// The moved point, without a custom index.
NORVIK2D_EXPORT Point2 operator+(const Point2& point, const Vector2& vector);
NORVIK2D_EXPORT Point2 operator-(const Point2& point, const Vector2& vector);

}  // namespace KELMAR_NORVIK2D
