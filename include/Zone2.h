#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Bbox2.h"
#include "Edge2.h"
#include "Point2.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

class ConstraintGraph2;
class Dt2;
class Visualizer2;

/// How a zone finds its triangles.
enum ZoneLocation : int {
    ZL_GLOBAL = 0,                 ///< all triangles
    ZL_INSIDE = 1,                 ///< what lies to the left of the directed pieces of the graphs
    ZL_OUTSIDE = 2,                ///< what lies to the right of them
    ZL_GROW = 3,                   ///< what can be reached from seed points without crossing a graph
    ZL_RESULT_UNION = 4,           ///< in at least one of two zones
    ZL_RESULT_INTERSECTION = 5,    ///< in both zones
    ZL_RESULT_DIFFERENCE = 6,      ///< in the first zone, not in the second
    ZL_RESULT_SYM_DIFFERENCE = 7,  ///< in exactly one of two zones
    ZL_BOUNDED = 8                 ///< like ZL_INSIDE, by a graph made of the zone's whole border
};

/// A region of a triangulation. It holds no triangles, only how to find them: constraint graphs, seed points or two other
/// zones. Each question is answered from the mesh as it is then, so a zone stays what it is when the mesh changes: where its
/// walls are divided, their pieces are the walls.
///
/// The walls of a zone are the alive pieces of its own graphs, no other constraints. A graph that isn't closed bounds nothing:
/// what starts on one side leaks around its ends. Pieces that aren't edges yet are no walls either
/// (Norvik_2D::applyConstraintsAndZones).
///
/// Zones belong to their triangulation, which destroys those that are left at its end; Norvik_2D::deleteZone does so earlier.
/// Only Norvik_2D::createZone and the operations on zones make them. A zone that others are combined of must outlive these.
///
/// Questions don't change anything: several threads may ask at once as long as nobody changes the mesh.
class NORVIK2D_EXPORT Zone2 {
public:
    /// All triangles, or, for the results of operations, those of operands that are still to be named.
    Zone2(Dt2* pDt_, ZoneLocation zoneLoc_);
    /// One oriented graph; ZL_INSIDE, ZL_OUTSIDE or ZL_BOUNDED (other kinds end in a NorvikException).
    Zone2(Dt2* pDt_, ZoneLocation zoneLoc_, ConstraintGraph2* pGraph);
    /// Oriented graphs; ZL_INSIDE or ZL_OUTSIDE (other kinds end in a NorvikException).
    Zone2(Dt2* pDt_, ZoneLocation zoneLoc_, const std::vector<ConstraintGraph2*>& vGraphs);
    /// Walls and seeds of a grown zone. Null graphs stand for no wall.
    Zone2(Dt2* pDt_, const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc_,
          const std::vector<Point2>& vSeeds);
    Zone2(const Zone2&) = delete;
    Zone2& operator=(const Zone2&) = delete;

    ZoneLocation getZoneLocation() const noexcept { return zoneLoc; }
    Dt2* getDelaunayTriangulation() const noexcept { return pDt; }

    /// The one graph. Null if there is none, and, with a warning, if there are more.
    ConstraintGraph2* getConstraintGraph() const;
    /// Appends all graphs.
    void getConstraintGraphs(std::vector<ConstraintGraph2*>& out) const;
    std::size_t numberOfConstraintGraphs() const noexcept { return vConstraintGraphs.size(); }

    /// Appends the triangles, ordered by address. Those of a grown zone come seed after seed, and twice if two seeds reach
    /// them. None, with a warning, if the triangulation has no triangles.
    void getTriangles(std::vector<Triangle2*>& out) const;
    /// How many getTriangles() would append.
    std::size_t getNumberOfTriangles() const;
    /// The sum of their areas.
    double getArea2D() const;
    /// Appends the corners of the triangles, and orders all that `out` holds then by address, each once.
    void getVertices(std::vector<Point2*>& out) const;
    /// The tight box of these vertices, invalid if there are none.
    Bbox2 getBoundingBox() const;

    /// Append the edges between a triangle of the zone and none of it, each with the zone on its left, triangle by triangle:
    /// in the order of getTriangles(), or ordered by the triangles' addresses.
    void getBoundaryEdges(std::vector<Edge2>& out) const;
    void getBorderEdges(std::vector<Edge2>& out) const;
    /// The same as values, in the order of getTriangles(): they outlast changes of the mesh.
    void getBoundarySegments(std::vector<Segment2>& out) const;

    /// A zone of the same triangles that is bounded by one graph made of the zone's border, which quality meshing asks for; a
    /// zone of kind ZL_INSIDE is returned as it is. Makes edges of all constraints first. Null, with a warning, if there are no
    /// triangles. A new zone is the triangulation's too.
    Zone2* convertToBoundedZone();

    /// Turns the falling diagonals of the zone's grid-like cells into rising ones, except constraints. Flipped are the longest
    /// edges of triangles between two of the zone whose corners are exactly cocircular or, with a tolerance above 0, whose two
    /// diagonals differ by at most that share of the longer one.
    void unifyGrid(double tolerance);

    /// Prints the number of triangles and the distribution of their interior angles to standard output.
    void statistics(const std::string& name) const;

    /// Draws the zone's triangles to a PostScript file, with all edges of the triangulation or with those of the zone only;
    /// constraints are red if they are wanted.
    void show(const std::string& fileName, bool bShowFull, bool bWithConstraints) const;
    /// Adds the same to a plot.
    void show(Visualizer2* pVisualizer, bool bShowFull, bool bWithConstraints) const;
    /// Draws the triangles and the graphs' alive pieces to a PostScript file, "debug.ps" if `name` is empty.
    void debug(const std::string& name) const;

private:
    friend class Dt2;

    void initWorkspace(bool bInside, std::vector<Triangle2*>& vWorkspace) const;
    void bfsFromWorkspace(std::vector<Triangle2*>& vWorkspace, std::vector<Triangle2*>& out) const;
    void getTriangles_RESULT(std::vector<Triangle2*>& out) const;
    bool isResult() const noexcept {
        return zoneLoc >= ZL_RESULT_UNION && zoneLoc <= ZL_RESULT_SYM_DIFFERENCE;
    }
    void combine(const std::vector<Triangle2*>& v0, const std::vector<Triangle2*>& v1,
                 std::vector<Triangle2*>& out) const;

    Dt2* pDt;
    ZoneLocation zoneLoc;
    std::vector<ConstraintGraph2*> vConstraintGraphs;
    std::vector<Point2> vStartPoints;
    std::vector<Zone2*> vInputZones;
};

}  // namespace KELMAR_NORVIK2D
