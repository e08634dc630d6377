#pragma once

#include <limits>
#include <vector>

#include "Point2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

class KelmarTest;

/// An axis-parallel box that grows with the points it is given. An empty box is invalid and has its bounds
/// the wrong way round: the largest finite double as least, its negative as greatest value.
class NORVIK2D_EXPORT Bbox2 {
public:
    Bbox2() noexcept = default;

    /// Grows the box; true if it changed, as it always does by the first point of an invalid box.
    bool add(const Point2& point);
    /// The same for a range of points or of pointers to points; false for an empty range.
    template <class Iterator>
    bool add(Iterator first, Iterator last) {
        bool bChanged = false;
        for (; first != last; ++first)
            if (add(pointOf(*first))) bChanged = true;
        return bChanged;
    }
    /// The same for points that lie in memory one after the other.
    bool add(const Point2* pFirst, const Point2* pLast);

    /// Both bounds of x first, then both of y.
    void getBounds(double& xLeast, double& xGreatest, double& yLeast, double& yGreatest) const noexcept;
    double getMinX() const noexcept { return minX; }
    double getMaxX() const noexcept { return maxX; }
    double getMinY() const noexcept { return minY; }
    double getMaxY() const noexcept { return maxY; }
    /// Whether the box has received a point.
    bool isValid() const noexcept { return bValid; }

    /// Doubles width and height around the centre. No effect on an invalid box.
    void doubleTheBox();
    /// Makes width and height `factor` times as large around the centre. No effect on an invalid box.
    void enlargeRanges(double factor);

    /// The centre; an invalid box gives a warning, and (0,0).
    Point2 computeCenter() const;

    /// Whether the closed boxes meet; false with a warning if one is invalid.
    bool doIntersect(const Bbox2& other) const;
    /// Whether the point lies in the closed box; false for an invalid one.
    bool isInBox(const Point2& point) const;

    /// Merges the other box into *this one* and returns a copy of it. An empty other box gives a warning
    /// only.
    Bbox2 operator+(const Bbox2& other);

    /// Appends the four corners counterclockwise from (minX, minY).
    void getCorners(std::vector<Point2>& corners) const;
    /// The same corners, each moved outward by `distance` on both axes.
    void getOffsetCorners(double distance, std::vector<Point2>& corners) const;

    /// The predicates that are told of the box's magnitude whenever doubleTheBox() or enlargeRanges() widens
    /// it, or null. They aren't owned and must outlive these calls; copies of the box tell them as well.
    void setPredicates(KelmarTest* pPredicates_) noexcept { pPredicates = pPredicates_; }

private:
    static const Point2& pointOf(const Point2& point) noexcept { return point; }
    static const Point2& pointOf(const Point2* pPoint) noexcept { return *pPoint; }
    bool grow(double x, double y) noexcept;
    void widen(double xMargin, double yMargin);

    double minX = std::numeric_limits<double>::max();
    double minY = std::numeric_limits<double>::max();
    double maxX = -std::numeric_limits<double>::max();
    double maxY = -std::numeric_limits<double>::max();
    bool bValid = false;
    KelmarTest* pPredicates = nullptr;
};

}  // namespace KELMAR_NORVIK2D
