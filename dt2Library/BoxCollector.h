#pragma once

#include <algorithm>
#include <limits>
#include <vector>

#include "Bbox2.h"
#include "Point2.h"

namespace KELMAR_NORVIK2D {

/// Collects the box of many points, and whether all are finite.
class BoxCollector {
public:
    void add(double x, double y) {
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
        // 0 * x is 0 for finite numbers, NaN otherwise.
        poison += 0.0 * x + 0.0 * y;
    }
    bool areFinite() const { return poison == 0.0; }
    Bbox2 getBox() const {
        Bbox2 box;
        box.add(Point2(minX, minY));
        box.add(Point2(maxX, maxY));
        return box;
    }

private:
    static constexpr double infinity = std::numeric_limits<double>::infinity();
    double minX = infinity, minY = infinity, maxX = -infinity, maxY = -infinity;
    double poison = 0.0;
};

inline BoxCollector collectBox(const std::vector<Point2>& points) {
    BoxCollector collector;
    for (const Point2& point : points) collector.add(point.x(), point.y());
    return collector;
}

}  // namespace KELMAR_NORVIK2D
