#pragma once

#include <iosfwd>
#include <utility>

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

class Point2;

/// The one record on which a mesh rests: three corners and three neighbours.
///
///            corner 0
///              /\             neighbour i lies opposite corner i, across the
///  neighb. 2  /  \  neighb. 1 edge from corner ccw(i) to corner cw(i);
///            /____\           null where that edge is on the convex hull
///    corner 1       corner 2
///         neighbour 0
///
/// Laws that hold for every triangle of a triangulation between two calls:
///  1. Corners run counterclockwise.
///  2. If neighbour i of T is U, then U has T as a neighbour at exactly one index j, and the corners ccw(i),
///     cw(i) of T are the corners cw(j), ccw(j) of U.
///  3. The incident triangle of a live vertex is a live triangle that has the vertex as a corner.
///  4. A dead triangle has all six pointers null.
///
/// Triangles belong to their triangulation and never move; clients only hold pointers to them. Nothing else
/// is stored here: whether an edge is a constraint, for example, is asked of the triangulation.
class NORVIK2D_EXPORT Triangle2 {
public:
    Triangle2() noexcept = default;

    Point2* getCorner(int index) const noexcept { return pCorners[index]; }

    /// The neighbour across the edge opposite corner `index`; null on the convex hull.
    Triangle2* getOppositeTriangle(int index) const noexcept { return pNeighbours[index]; }

    /// Index of a neighbour. A triangle that is none fails an assertion (NorvikException).
    int getIntraTriangleIndex(const Triangle2* pNeighbour) const;
    /// Index of a corner. A point that is none fails an assertion (NorvikException).
    int getIntraTriangleIndex(const Point2* pCorner) const;

    /// Arithmetic mean of the corners, custom index -1.
    Point2 getBarycenter() const;

    /// Squared length of the edge opposite corner `index`.
    double getSquaredEdgeLength2D(int index) const;
    double getSquaredEdgeLength(int index) const;
    /// The largest of the three.
    double getMaxSqEdgeLen2D() const;
    /// Index of the longest edge; the lowest index on a tie.
    int getMaxIndex() const;
    /// Index of the shortest edge; the lowest index on a tie.
    int getMinIndex() const;

    /// Whether this very vertex is a corner; coordinates aren't compared.
    bool hasVertex(const Point2* pVertex) const noexcept;

    /// Whether the point lies on the closed edge opposite corner `index`, decided exactly.
    bool hasOnEdge(int index, const Point2& point) const;
    bool hasOnEdge(int index, const Point2* pPoint) const;

    /// Angle at corner `index`, in degrees.
    double getInteriorAngle2D(int index) const;

    /// Area, by Heron's formula on the side lengths. Coordinates so large that the product of the lengths is
    /// not a number fail an assertion (NorvikException) after a warning.
    double getArea2D() const;
    /// The area of a triangle with these side lengths; 0 where they violate the triangle inequality.
    double computeArea(double a, double b, double c) const;

    /// The circumcentre, and whether it is accurate: its distances to the corners differ by less than 1e-6
    /// (absolute) and it lies on the inner side of the edges at the corner opposite the longest edge. An
    /// inaccurate centre is still the best one found.
    std::pair<Point2, bool> getDual() const;

    /// The steps of getDual(). Offset: per axis the mean of the corner coordinates of least and of greatest
    /// absolute value.
    void getCommonOffset(double& xOffset, double& yOffset) const;
    /// The determinant formula in coordinates less the offset; false if it has no finite result.
    bool getCC_strategy1(double xOffset, double yOffset, Point2& center) const;
    /// Bisection along the perpendicular bisector of the edge opposite corner `index`.
    void getCC_strategy2(int index, double xOffset, double yOffset, Point2& center) const;
    /// The accuracy test of getDual(), `index` being the corner opposite the longest edge.
    bool isAccurateCC(int index, const Point2& center) const;

private:
    friend struct MeshAccess;

    Point2* pCorners[3] = {nullptr, nullptr, nullptr};
    Triangle2* pNeighbours[3] = {nullptr, nullptr, nullptr};
};

static_assert(sizeof(Triangle2) == 6 * sizeof(void*), "six pointers are all the state");

/// Writes the address, the area, and each corner with the neighbour opposite.
NORVIK2D_EXPORT std::ostream& operator<<(std::ostream& os, const Triangle2& triangle);

}  // namespace KELMAR_NORVIK2D
