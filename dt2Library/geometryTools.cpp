#include "geometryTools.h"

#include <algorithm>
#include <cmath>

#include "angles.h"
#include "diagnostics.h"
#include "heron.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

Vector2 normalize(const Vector2& vector) {
    RoundToNearest nearest;
    const Vector2 unit = unitVector(nearest.keep(vector.x()), nearest.keep(vector.y()));
    return {nearest.keep(unit.x()), nearest.keep(unit.y())};
}

double getAngleDegree(const Vector2& a, const Vector2& b) {
    RoundToNearest nearest;
    return nearest.keep(degreesOf(std::clamp(a * b, -1.0, 1.0)));
}

Point2 barycenter(const Point2& p0, const Point2& p1, const Point2& p2) {
    RoundToNearest nearest;
    return {nearest.keep((p0.x() + p1.x() + p2.x()) / 3.0), nearest.keep((p0.y() + p1.y() + p2.y()) / 3.0)};
}

double heronProduct(double a, double b, double c) {
    const double s = (a + b + c) * 0.5;
    // In this order: the area is compared with values that were made so, to the last bit.
    return (s - a) * s * (s - b) * (s - c);
}

double heronArea(double a, double b, double c, const Triangle2* pT) {
    const double product = heronProduct(a, b, c);
    if (std::isnan(product)) {
        warning("Triangle2::computeArea()", "invalid value, no area for this triangle");
        std::string corners;
        if (pT != nullptr)
            corners =
                compose("Corners are: ", *corner(pT, 0), "; ", *corner(pT, 1), "; ", *corner(pT, 2), "\n");
        print(compose("ownHalfCircf=", (a + b + c) * 0.5, "\n", corners, "len0=", a, "\nlen1=", b,
                      "\nlen2=", c, "\n"));
        require(false, "!tools_isnan(product)");
    }
    return product > 0.0 ? std::sqrt(product) : 0.0;
}

double computeArea(double a, double b, double c) {
    RoundToNearest nearest;
    return nearest.keep(heronArea(nearest.keep(a), nearest.keep(b), nearest.keep(c), nullptr));
}

double getArea2D(const Point2& p0, const Point2& p1, const Point2& p2) {
    RoundToNearest nearest;
    return nearest.keep(
        computeArea(Vector2(p1, p2).length(), Vector2(p2, p0).length(), Vector2(p0, p1).length()));
}

Point2 getFootPoint(const Point2& p0, const Point2& p1, const Point2& q) {
    RoundToNearest nearest;
    const Vector2 line(p0, p1);
    const double length = line.length();
    if (length == 0.0) {
        warning("getFootPoint()", "len2d==0");
        if (p0 == p1) warning("getFootPoint()", "p0==p1, invalid parameters");
        return {-999.0, -999.0};
    }
    const Vector2 u = line / length;
    const double t = u.y() * (q.y() - p0.y()) + (q.x() - p0.x()) * u.x();
    return {nearest.keep(p0.x() + t * u.x()), nearest.keep(p0.y() + t * u.y())};
}

double getPointLineDistance2D(const Point2& p0, const Point2& p1, const Point2& q) {
    RoundToNearest nearest;
    if (p0 == p1) {
        error("getPointLineDistance2D(..)", "p0==p1");
        return 0.0;
    }
    return nearest.keep(Vector2(q, getFootPoint(p0, p1, q)).length());
}

Bbox2 getBox(const std::vector<Point2>& points) {
    Bbox2 box;
    box.add(points.data(), points.data() + points.size());
    return box;
}

Bbox2 getBox(const std::vector<Point2*>& points) {
    Bbox2 box;
    box.add(points.begin(), points.end());
    return box;
}

double getUlp(double value) {
    RoundToNearest nearest;
    // No sum with a NaN equals it: the search below wouldn't end.
    if (std::isnan(value)) {
        warning("getUlp", "ulp is nan for " + double2string(value));
        return value;
    }
    double last = 1.0;
    for (double e = 0.5; value + e != value; e *= 0.5) last = e;
    return last;
}

}  // namespace KELMAR_NORVIK2D
