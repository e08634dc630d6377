#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "distance.h"
#include "geometryTools.h"
#include "mtxTools.h"
#include "roundingMode.h"

namespace KELMAR_NORVIK2D {

namespace {

using Line = std::vector<Point2>;

bool isClosed(const Line& line) { return line.front() == line.back(); }

/// The distances of points from the segment ab.
class DistanceFromSegment {
public:
    DistanceFromSegment(const Point2& a, const Point2& b) {
        takeEnds(a, b);
        if (std::isfinite(length)) return;
        // Quarters of coordinates, however large, have differences that don't overflow.
        unit = 0.25;
        takeEnds(a, b);
    }

    double operator()(const Point2& q) const {
        const double x = unit * q.x() - ax, y = unit * q.y() - ay;
        // Not by squares, which would overflow long before the coordinates do.
        const double along = dirX * x + dirY * y;
        // Infinite, or NaN, is only what is far away.
        if (!(along > 0.0)) return std::hypot(x, y) / unit;
        if (along >= length) return std::hypot(unit * q.x() - bx, unit * q.y() - by) / unit;
        return std::fabs(dirX * y - dirY * x) / unit;
    }

private:
    void takeEnds(const Point2& a, const Point2& b) {
        ax = unit * a.x(), ay = unit * a.y();
        bx = unit * b.x(), by = unit * b.y();
        length = std::hypot(bx - ax, by - ay);
        if (length == 0.0) return;
        dirX = (bx - ax) / length;
        dirY = (by - ay) / length;
    }

    double unit = 1.0;  ///< of all that follow
    double ax = 0.0, ay = 0.0, bx = 0.0, by = 0.0;
    double length = 0.0, dirX = 0.0, dirY = 0.0;
};

struct Farthest {
    double distance = -1.0;
    std::size_t index = 0;
};

/// The first one of the inner points between two that are farthest from the segment ab.
Farthest findFarthest(const Line& line, std::size_t first, std::size_t last, const Point2& a,
                      const Point2& b) {
    const DistanceFromSegment distanceOf(a, b);
    Farthest farthest;
    for (std::size_t i = first + 1; i < last; ++i) {
        const double distance = distanceOf(line[i]);
        if (distance > farthest.distance) farthest = {distance, i};
    }
    return farthest;
}

using Kept = std::vector<bool>;

/// Of a closed line, the point farthest from its ends and the one farthest from the segment between these are kept in any case.
void keepTriangle(const Line& line, Kept& kept) {
    const std::size_t last = line.size() - 1;
    const std::size_t tip = findFarthest(line, 0, last, line[0], line[0]).index;
    const Farthest before = findFarthest(line, 0, tip, line[0], line[tip]);
    const Farthest behind = findFarthest(line, tip, last, line[0], line[tip]);
    kept[tip] = true;
    kept[before.distance >= behind.distance ? before.index : behind.index] = true;
}

void keepFarthest(const Line& line, double tolerance, Kept& kept) {
    // Ranges between kept points, the last one first.
    std::vector<std::pair<std::size_t, std::size_t>> vRanges;
    for (std::size_t i = 1, first = 0; i < line.size(); ++i)
        if (kept[i]) vRanges.emplace_back(std::exchange(first, i), i);
    while (!vRanges.empty()) {
        const auto range = vRanges.back();
        vRanges.pop_back();
        const Farthest farthest =
            findFarthest(line, range.first, range.second, line[range.first], line[range.second]);
        if (!(farthest.distance > tolerance)) continue;
        kept[farthest.index] = true;
        vRanges.emplace_back(range.first, farthest.index);
        vRanges.emplace_back(farthest.index, range.second);
    }
}

void simplifyByDistance(Line& line, double tolerance) {
    Kept kept(line.size());
    kept.front() = kept.back() = true;
    if (isClosed(line)) keepTriangle(line, kept);
    keepFarthest(line, tolerance, kept);
    std::size_t numKept = 0;
    for (std::size_t i = 0; i < line.size(); ++i)
        if (kept[i]) line[numKept++] = line[i];
    line.resize(numKept);
}

bool isOnSegment(const Point2& a, const Point2& b, const Point2& q) {
    return getOrientation2(&a, &b, &q) == ORIENTATION2_COLLINEAR && (q == a || q == b || isBetween(a, b, q));
}

void dropCollinear(Line& line, std::size_t least) {
    std::size_t numKept = 1;
    for (std::size_t i = 1; i < line.size(); ++i) {
        const bool bInner = i + 1 < line.size() && numKept + line.size() - i > least;
        if (bInner && isOnSegment(line[numKept - 1], line[i + 1], line[i])) continue;
        line[numKept++] = line[i];
    }
    line.resize(numKept);
}

}  // namespace

void simplifyPolyline(std::vector<Point2>& inOut, double tolerance) {
    RoundToNearest nearest;
    if (inOut.empty()) return;
    const std::size_t least = isClosed(inOut) ? 4 : 2;
    if (inOut.size() <= least) return;
    if (tolerance > 0.0)
        simplifyByDistance(inOut, tolerance);
    else
        dropCollinear(inOut, least);
}

void polylinesToSegments(const std::vector<std::vector<Point2>>& vvLines, std::vector<Segment2>& vSegments) {
    RoundToNearest nearest;
    for (const Line& line : vvLines)
        for (std::size_t i = 1; i < line.size(); ++i)
            if (line[i - 1] != line[i]) vSegments.emplace_back(line[i - 1], line[i]);
}

}  // namespace KELMAR_NORVIK2D
