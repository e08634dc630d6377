#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <tuple>

#include "KelmarTest.h"
#include "diagnostics.h"
#include "distance.h"
#include "geometryTools.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"
#include "tools.h"

namespace KELMAR_NORVIK2D {

namespace {

/// The exact crossing. Threads take turns with one engine, for its rationals are dear to make.
void exactIntersection(const Point2& p0, const Point2& p1, const Point2& q0, const Point2& q1, double& x,
                       double& y) {
    static std::mutex mutex;
    static KelmarTest predicates;
    const std::lock_guard lock(mutex);
    predicates.getIntersectionCoords_gmp(p0, p1, q0, q1, x, y);
}

/// The end that two segments share, null if they share none.
const Point2* commonEnd(const Point2& p0, const Point2& p1, const Point2& q0, const Point2& q1) {
    if (p0 == q0 || p0 == q1) return &p0;
    if (p1 == q0 || p1 == q1) return &p1;
    return nullptr;
}

struct Vector {
    double x, y;
};
Vector operator-(const Vector& a, const Vector& b) { return {a.x - b.x, a.y - b.y}; }
double crossProduct(const Vector& a, const Vector& b) { return a.x * b.y - b.x * a.y; }

/// Steep segments get great slopes, upright ones one beyond all thresholds.
double slopeOf(const Vector& direction) {
    return std::fabs(direction.x) > 1e-50 ? direction.y / direction.x : 100000.0;
}

/// Whether doubles give a good crossing of lines with these slopes. What isn't a number doesn't.
bool areWellApart(double slope0, double slope1) {
    constexpr double steep = 1000.0, leastDifference = 0.01;
    if (std::isinf(slope0) || std::isinf(slope1)) return false;
    if (std::fabs(slope0) > steep && std::fabs(slope1) > steep) return false;
    return std::fabs(slope0 - slope1) >= leastDifference;
}

/// The crossing in doubles, relative to the centre of all four points, so that the numbers are small. False if the result
/// isn't good: it has to lie in the box of the four.
bool quickIntersection(const Point2& p0, const Point2& p1, const Point2& q0, const Point2& q1, double& x,
                       double& y) {
    const auto [minX, maxX] = std::minmax({p0.x(), p1.x(), q0.x(), q1.x()});
    const auto [minY, maxY] = std::minmax({p0.y(), p1.y(), q0.y(), q1.y()});
    const Vector center{(maxX - minX) * 0.5 + minX, (maxY - minY) * 0.5 + minY};
    const auto relative = [&](const Point2& point) { return Vector{point.x(), point.y()} - center; };
    const Vector a = relative(p0), b = relative(p1), c = relative(q0), d = relative(q1);
    if (!areWellApart(slopeOf(b - a), slopeOf(d - c))) return false;

    const Vector ab = a - b, cd = c - d;
    const double den = ab.x * cd.y - cd.x * ab.y;
    if (den == 0.0) return false;
    const double u = crossProduct(a, b), v = crossProduct(c, d);
    x = center.x + (cd.x * u - ab.x * v) / den;
    y = center.y + (u * cd.y - v * ab.y) / den;
    return minX <= x && x <= maxX && minY <= y && y <= maxY;
}

/// Takes the nearest end for a crossing that all but coincides with it.
void snapToEnd(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4, Point2& isp) {
    constexpr double greatestSquaredDistance = 1e-12;
    using Candidate = std::tuple<double, Point2>;
    std::array<Candidate, 4> candidates;
    std::size_t numCandidates = 0;
    const auto consider = [&](const Point2& end, const Point2& a, const Point2& b) {
        if (approxHasOn(a, b, end)) candidates[numCandidates++] = {squaredDistance(isp, end), end};
    };
    consider(p1, p3, p4);
    consider(p2, p3, p4);
    consider(p3, p1, p2);
    consider(p4, p1, p2);
    if (numCandidates == 0) return;
    const auto& [least, end] = *std::min_element(candidates.begin(), candidates.begin() + numCandidates);
    if (least < greatestSquaredDistance) isp = end;
}

/// Searches a horizontal line for where it crosses the line through two points.
class Bisection {
public:
    Bisection(const Point2& p0_, const Point2& p1_, double y_) : p0(p0_), p1(p1_), y(y_) {}

    double search(double start, double halfRange);

private:
    Orientation2 sideAt(double x) const {
        const Point2 q(x, y);
        return orientationOnThread(&p0, &p1, &q);
    }
    void warnOfManySteps(int numSteps, double lo, double hi, double x, double halfRange) const;

    const Point2 p0, p1;
    const double y;
};

void Bisection::warnOfManySteps(int numSteps, double lo, double hi, double x, double halfRange) const {
    warning("getBetterX",
            compose("unexpected behavior, observe!\nsearchCtr=", numSteps, "\nxMin=", lo, "\nxMax=", hi,
                    "\ncurrentX=", x, "\nhalfRange=", halfRange, "\nxMax-xMin=", hi - lo,
                    "\nxMax-currentX=", hi - x, "\nxMax<xMin: ", hi<lo, "\nxMax>xMin: ", hi> lo,
                    "\ncurrentX<xMax: ", x<hi, "\ncurrentX>xMin: ", x> lo, "\nreturning currentX"));
}

double Bisection::search(double start, double halfRange) {
    constexpr int manySteps = 1000, tooManySteps = 1005;
    double lo = start - halfRange, hi = start + halfRange;
    if (!std::isfinite(lo) || !std::isfinite(hi)) return start;
    const Orientation2 sideLo = sideAt(lo), sideHi = sideAt(hi);
    if (sideLo == ORIENTATION2_COLLINEAR || sideLo == sideHi) return start;
    double x = start;
    for (int numSteps = 1;; ++numSteps) {
        if (numSteps > manySteps) warnOfManySteps(numSteps, lo, hi, x, halfRange);
        const double next = lo + 0.5 * (hi - lo);
        // Neighbouring doubles have nothing between them.
        if (numSteps > tooManySteps || !(next > lo && next < hi)) return x;
        x = next;
        const Orientation2 side = sideAt(x);
        if (side == ORIENTATION2_COLLINEAR) return x;
        (side == sideHi ? hi : lo) = x;
    }
}

Point2 transposed(const Point2& point) { return {point.y(), point.x()}; }

/// The middle of two numbers, also where their sum is beyond the range of doubles.
double middle(double a, double b) {
    const double sum = a + b;
    return std::isfinite(sum) ? sum * 0.5 : a * 0.5 + b * 0.5;
}

}  // namespace

bool samePoint(const Point2& a, const Point2& b) { return a == b; }

bool approxHasOn(const Point2& a, const Point2& b, const Point2& q) {
    RoundToNearest nearest;
    if (q == a || q == b) return true;
    const double length = squaredDistance(a, b);
    return length >= squaredDistance(q, a) && length >= squaredDistance(q, b);
}

bool hasOnCollinearPoint(const Point2& a, const Point2& b, const Point2& q) {
    RoundToNearest nearest;
    const double length = squaredDistance(a, b);
    return length > squaredDistance(q, a) && length > squaredDistance(q, b);
}

void getIntersectionCoordsNoRounding(const Point2& p0, const Point2& p1, const Point2& q0, const Point2& q1,
                                     double& x, double& y) {
    RoundToNearest nearest;
    if (const Point2* pEnd = commonEnd(p0, p1, q0, q1)) {
        x = pEnd->x();
        y = pEnd->y();
    } else if (!quickIntersection(p0, p1, q0, q1, x, y)) {
        exactIntersection(p0, p1, q0, q1, x, y);
    }
}

void getIntersectionPointNoRounding(const Point2& p0, const Point2& p1, const Point2& q0, const Point2& q1,
                                    Point2& out) {
    if (const Point2* pEnd = commonEnd(p0, p1, q0, q1)) {
        out = *pEnd;
        return;
    }
    double x, y;
    getIntersectionCoordsNoRounding(p0, p1, q0, q1, x, y);
    out = Point2(x, y);
}

bool getIntersectionPoint(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4,
                          Point2& isp) {
    RoundToNearest nearest;
    getIntersectionPointNoRounding(p1, p2, p3, p4, isp);
    snapToEnd(p1, p2, p3, p4, isp);
    if (!approxHasOn(p1, p2, isp) || !approxHasOn(p3, p4, isp)) {
        // Far from the origin doubles are too coarse for flat crossings: the exact one is cut to doubles just once.
        double x, y;
        exactIntersection(p1, p2, p3, p4, x, y);
        isp = Point2(x, y);
        snapToEnd(p1, p2, p3, p4, isp);
    }
    require(approxHasOn(p1, p2, isp), "approxHasOn(p1,p2,isp)");
    require(approxHasOn(p3, p4, isp), "approxHasOn(p3,p4,isp)");
    return true;
}

double getBetterX(const Point2& p0, const Point2& p1, const Point2& q, double halfRange) {
    RoundToNearest nearest;
    return nearest.keep(Bisection(p0, p1, q.y()).search(q.x(), nearest.keep(halfRange)));
}

double getBetterY(const Point2& p0, const Point2& p1, const Point2& q, double halfRange) {
    return getBetterX(transposed(p0), transposed(p1), transposed(q), halfRange);
}

Point2 adaptPointToSegment(const Point2& p0, const Point2& p1, const Point2& q) {
    RoundToNearest nearest;
    constexpr double greatestMove = 0.001, partOfExtent = 100.0;
    const double dx = std::fabs(p0.x() - p1.x()), dy = std::fabs(p0.y() - p1.y());
    const double rangeX = std::min(greatestMove, dx / partOfExtent);
    const double rangeY = std::min(greatestMove, dy / partOfExtent);
    if (dy > dx) {
        const double x = getBetterX(p0, p1, q, rangeX);
        return {x, getBetterY(p0, p1, Point2(x, q.y()), rangeY)};
    }
    const double y = getBetterY(p0, p1, q, rangeY);
    return {getBetterX(p0, p1, Point2(q.x(), y), rangeX), y};
}

Point2 centerWithShift(const Point2& p0, const Point2& p1) {
    RoundToNearest nearest;
    return adaptPointToSegment(p0, p1, Point2(middle(p0.x(), p1.x()), middle(p0.y(), p1.y())));
}

Point2 getOuterSplitPoint(const Triangle2* pT, int edge, KelmarTest* pPredicates) {
    constexpr int mostUlps = 20;
    const Point2* const a = corner(pT, ccw(edge));
    const Point2* const b = corner(pT, cw(edge));
    const auto isInside = [&](const Point2& point) {
        return pPredicates->getOrientation2(a, b, &point) == ORIENTATION2_CCW;
    };
    const Point2 center = centerWithShift(*a, *b);
    if (!isInside(center)) return center;
    const Point2 m(middle(a->x(), b->x()), middle(a->y(), b->y()));
    const double ulpX = getUlp(m.x()), ulpY = getUlp(m.y());
    for (int s = 0; s < mostUlps; ++s)
        for (const int signX : {0, -1, 1})
            for (const int signY : {0, -1, 1}) {
                const Point2 point(m.x() + signX * s * ulpX, m.y() + signY * s * ulpY);
                if (!isInside(point)) return point;
            }
    return center;
}

}  // namespace KELMAR_NORVIK2D
