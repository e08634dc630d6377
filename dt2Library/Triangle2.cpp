#include "Triangle2.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

#include "KelmarTest.h"
#include "distance.h"
#include "geometryTools.h"
#include "heron.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

namespace {

/// Whether the point lies to the right of the directed edge, decided exactly.
bool isClockwise(const Point2* pA, const Point2* pB, const Point2& point) {
    return orientationOnThread(pA, pB, &point) == ORIENTATION2_CW;
}

/// The mean of the value nearest to zero and the one farthest from it.
double commonOffset(double a, double b, double c) {
    const auto isNearerToZero = [](double u, double v) { return std::fabs(u) < std::fabs(v); };
    const auto [least, greatest] = std::minmax({a, b, c}, isNearerToZero);
    return (least + greatest) * 0.5;
}

double squaredEdgeLength(const Triangle2& triangle, int index) {
    return squaredDistance(*corner(&triangle, ccw(index)), *corner(&triangle, cw(index)));
}

int longestEdge(const Triangle2& triangle) {
    const double sqLengths[3] = {squaredEdgeLength(triangle, 0), squaredEdgeLength(triangle, 1),
                                 squaredEdgeLength(triangle, 2)};
    return static_cast<int>(std::max_element(sqLengths, sqLengths + 3) - sqLengths);
}

/// The circumcentre by determinants, in coordinates less the offset; false if that has no finite result.
bool determinantCenter(const Triangle2& triangle, double xOffset, double yOffset, Point2& center) {
    const Point2 *pA = corner(&triangle, 0), *pB = corner(&triangle, 1), *pC = corner(&triangle, 2);
    const double ax = pA->x() - xOffset, ay = pA->y() - yOffset;
    const double bx = pB->x() - xOffset, by = pB->y() - yOffset;
    const double cx = pC->x() - xOffset, cy = pC->y() - yOffset;

    // Four times the signed area: exactly 0 for corners that are collinear after rounding.
    const double d = 2 * (ax * by + bx * cy + cx * ay - (ax * cy + bx * ay + cx * by));
    if (d == 0.0) return false;

    const double a = ax * ax + ay * ay;
    const double b = bx * bx + by * by;
    const double c = cx * cx + cy * cy;
    const double x = (a * (by - cy) + b * (cy - ay) + c * (ay - by)) / d + xOffset;
    const double y = (a * (cx - bx) + b * (ax - cx) + c * (bx - ax)) / d + yOffset;
    if (!std::isfinite(x) || !std::isfinite(y)) return false;
    center = Point2(x, y);
    return true;
}

/// The accuracy test of getDual().
bool isAccurate(const Triangle2& triangle, int index, const Point2& center) {
    constexpr double tolerance = 1e-6;
    if (!isFinite(center)) return false;

    const Point2* pA = corner(&triangle, index);
    const Point2* pB = corner(&triangle, ccw(index));
    const Point2* pC = corner(&triangle, cw(index));
    // The longest edge is the only one that a circumcentre may lie beyond.
    if (isClockwise(pA, pB, center) || isClockwise(pC, pA, center)) return false;

    const double d0 = distance(center, *pA);
    const double d1 = distance(center, *pB);
    const double d2 = distance(center, *pC);
    return std::max({std::fabs(d0 - d1), std::fabs(d1 - d2), std::fabs(d2 - d0)}) < tolerance;
}

/// The position of a pointer among three. The branch-free form of the hot loops is indexOf() in
/// triangleLinks.h, which can't tell a stranger from position 0.
int checkedIndex(const void* pWanted, const void* p0, const void* p1, const void* p2,
                 const Triangle2& triangle) {
    if (pWanted == p0) return 0;
    if (pWanted == p1) return 1;
    if (pWanted == p2) return 2;
    print(compose("BUG: Triangle2::getIntraTriangleIndex failed for ", pWanted, " in ", triangle, "\n"));
    require(false, "index>=0");
    return -1;
}

/// Side lengths, each opposite the corner of the same number.
struct SideLengths {
    double a, b, c;

    explicit SideLengths(const Triangle2& triangle)
        : a(std::sqrt(squaredEdgeLength(triangle, 0))),
          b(std::sqrt(squaredEdgeLength(triangle, 1))),
          c(std::sqrt(squaredEdgeLength(triangle, 2))) {}
};

/// The area without an assertion: a triangle must be printable in whatever state, dead ones included.
double printableArea(const Triangle2& triangle) {
    RoundToNearest nearest;
    if (isDead(&triangle)) return 0.0;
    const SideLengths sides(triangle);
    const double product = heronProduct(sides.a, sides.b, sides.c);
    if (std::isnan(product)) return std::numeric_limits<double>::quiet_NaN();
    return product > 0.0 ? std::sqrt(product) : 0.0;
}

}  // namespace

int Triangle2::getIntraTriangleIndex(const Triangle2* pNeighbour) const {
    return checkedIndex(pNeighbour, pNeighbours[0], pNeighbours[1], pNeighbours[2], *this);
}

int Triangle2::getIntraTriangleIndex(const Point2* pCorner) const {
    return checkedIndex(pCorner, pCorners[0], pCorners[1], pCorners[2], *this);
}

Point2 Triangle2::getBarycenter() const { return barycenter(*pCorners[0], *pCorners[1], *pCorners[2]); }

double Triangle2::getSquaredEdgeLength2D(int index) const {
    RoundToNearest nearest;
    return nearest.keep(squaredEdgeLength(*this, index));
}

double Triangle2::getSquaredEdgeLength(int index) const { return getSquaredEdgeLength2D(index); }

double Triangle2::getMaxSqEdgeLen2D() const { return getSquaredEdgeLength2D(getMaxIndex()); }

int Triangle2::getMaxIndex() const {
    RoundToNearest nearest;
    return nearest.keep(longestEdge(*this));
}

int Triangle2::getMinIndex() const {
    RoundToNearest nearest;
    const double sqLengths[3] = {squaredEdgeLength(*this, 0), squaredEdgeLength(*this, 1),
                                 squaredEdgeLength(*this, 2)};
    return nearest.keep(static_cast<int>(std::min_element(sqLengths, sqLengths + 3) - sqLengths));
}

bool Triangle2::hasVertex(const Point2* pVertex) const noexcept {
    return pVertex == pCorners[0] || pVertex == pCorners[1] || pVertex == pCorners[2];
}

// On the line of the edge, and within the other two half planes: the closed edge remains.
bool Triangle2::hasOnEdge(int index, const Point2& point) const {
    RoundToNearest nearest;
    if (!isFinite(point)) return false;
    const Point2* pApex = pCorners[index];
    const Point2* pSrc = pCorners[ccw(index)];
    const Point2* pTrg = pCorners[cw(index)];
    return orientationOnThread(pSrc, pTrg, &point) == ORIENTATION2_COLLINEAR &&
           !isClockwise(pTrg, pApex, point) && !isClockwise(pApex, pSrc, point);
}

bool Triangle2::hasOnEdge(int index, const Point2* pPoint) const { return hasOnEdge(index, *pPoint); }

double Triangle2::getInteriorAngle2D(int index) const {
    const Point2& apex = *pCorners[index];
    return getAngleDegree(normalize(Vector2(apex, *pCorners[ccw(index)])),
                          normalize(Vector2(apex, *pCorners[cw(index)])));
}

double Triangle2::getArea2D() const {
    RoundToNearest nearest;
    const SideLengths sides(*this);
    return nearest.keep(computeArea(sides.a, sides.b, sides.c));
}

double Triangle2::computeArea(double a, double b, double c) const {
    RoundToNearest nearest;
    return nearest.keep(heronArea(nearest.keep(a), nearest.keep(b), nearest.keep(c), this));
}

// The formula is fast and good for most triangles. It suffers from cancellation in thin ones, so its result
// is checked, and the bisection takes over where it fails.
std::pair<Point2, bool> Triangle2::getDual() const {
    RoundToNearest nearest;
    const double xOffset = commonOffset(pCorners[0]->x(), pCorners[1]->x(), pCorners[2]->x());
    const double yOffset = commonOffset(pCorners[0]->y(), pCorners[1]->y(), pCorners[2]->y());
    const int index = longestEdge(*this);

    Point2 center;
    if (determinantCenter(*this, xOffset, yOffset, center) && isAccurate(*this, index, center))
        return {center, true};
    getCC_strategy2(index, xOffset, yOffset, center);
    return {center, isAccurate(*this, index, center)};
}

// Coordinates near the origin have more digits behind the point: the formulas work on the corners less this
// offset.
void Triangle2::getCommonOffset(double& xOffset, double& yOffset) const {
    RoundToNearest nearest;
    xOffset = commonOffset(pCorners[0]->x(), pCorners[1]->x(), pCorners[2]->x());
    yOffset = commonOffset(pCorners[0]->y(), pCorners[1]->y(), pCorners[2]->y());
}

bool Triangle2::getCC_strategy1(double xOffset, double yOffset, Point2& center) const {
    RoundToNearest nearest;
    return nearest.keep(determinantCenter(*this, xOffset, yOffset, center));
}

void Triangle2::getCC_strategy2(int index, double xOffset, double yOffset, Point2& center) const {
    RoundToNearest nearest;
    const Vector2 offset(xOffset, yOffset);
    const Point2 a = *pCorners[index] - offset;
    const Point2 b = *pCorners[ccw(index)] - offset;
    const Point2 c = *pCorners[cw(index)] - offset;
    const Point2 middle((b.x() + c.x()) * 0.5, (b.y() + c.y()) * 0.5);

    // The corner lies to the right of c -> b, so the normal leads away from it. With an acute angle at the
    // corner the centre is on the corner's side, not farther than the corner itself; with an obtuse one it is
    // on the other side, at a distance without limit.
    constexpr double farthest = 1e13, farthestOfLength = 10.0;
    Vector2 normal = (b - c).orthogonalVector();
    double searchRange = std::max(farthest, farthestOfLength * distance(b, c)) / normal.length(), sign = -1.0;
    if (squaredDistance(a, middle) > squaredDistance(b, middle)) {
        normal = -normal;
        searchRange = Vector2(a, middle).length() / normal.length();
        sign = 1.0;
    }

    // The excess falls along the normal until the candidate is as far from a as from b. It ends at the latest
    // when the interval can't get any narrower, within some 1,100 halvings.
    double low = 0.0, high = 1.0, t = 0.5;
    const auto candidate = [&] { return middle + normal * searchRange * t; };
    for (;;) {
        const Point2 point = candidate();
        const double excess = squaredDistance(a, point) - squaredDistance(b, point);
        if (std::fabs(excess) < 1e-16) break;
        (excess * sign < 0.0 ? high : low) = t;
        t = (low + high) * 0.5;
        if (t == low || t == high) break;
    }
    center = candidate() + offset;
}

bool Triangle2::isAccurateCC(int index, const Point2& center) const {
    RoundToNearest nearest;
    return nearest.keep(isAccurate(*this, index, center));
}

std::ostream& operator<<(std::ostream& os, const Triangle2& triangle) {
    os << "Triangle(" << static_cast<const void*>(&triangle) << "): area2D=" << printableArea(triangle)
       << ", ";
    for (int i = 0; i < 3; ++i) {
        os << i << ": ";
        if (const Point2* pCorner = corner(&triangle, i)) os << *pCorner;
        os << "\t oppTriangle: " << static_cast<const void*>(neighbour(&triangle, i));
    }
    return os;
}

}  // namespace KELMAR_NORVIK2D
