#pragma once

#include <iosfwd>

#include "Point2.h"
#include "Triangle2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// A directed edge of a mesh: a triangle and the index of the opposite corner. It runs counterclockwise
/// around its triangle, from corner ccw(index) to corner cw(index). The other side of the same edge is a
/// different Edge2.
class NORVIK2D_EXPORT Edge2 {
public:
    Edge2() noexcept = default;
    Edge2(Triangle2* pTriangle_, int index_) noexcept : pTriangle(pTriangle_), index(index_) {}

    Point2* getSrc() const noexcept { return pTriangle->getCorner((index + 1) % 3); }
    Point2* getTrg() const noexcept { return pTriangle->getCorner((index + 2) % 3); }
    /// Source and target in one call.
    void getPoints(Point2*& pSrc, Point2*& pTrg) const noexcept;

    Triangle2* getTriangle() const noexcept { return pTriangle; }
    int getIndex() const noexcept { return index; }

    /// The triangle and index of this edge, then the neighbour across it and its index of the edge (null and
    /// -1 on the convex hull).
    void getTriangles(Triangle2*& pT0, Triangle2*& pT1, int& index0, int& index1) const noexcept;

    /// The *squared* length.
    double getLength2D() const;

    /// By the addresses of the end points, the smaller one of each edge first; the two sides of an edge are
    /// equivalent.
    bool operator<(const Edge2& other) const noexcept;

private:
    friend struct MeshAccess;

    Triangle2* pTriangle = nullptr;
    int index = -1;
};

NORVIK2D_EXPORT std::ostream& operator<<(std::ostream& os, const Edge2& edge);

}  // namespace KELMAR_NORVIK2D
