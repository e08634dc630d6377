#pragma once

#include <set>
#include <utility>
#include <vector>

#include "Edge2.h"
#include "Point2.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "VertexPair2.h"
#include "norvikExport.h"

/// Borders, components and rings of sets of triangles and of loose segments. Triangles must be alive; "outside" of a set is also
/// where there is no triangle.
namespace KELMAR_NORVIK2D {

class Norvik_2D;
class Zone2;

/// Appends the edges between triangles of the set and the outside, in the order of the triangles, directed so that the set is
/// on their left.
NORVIK2D_EXPORT void getBorders(const std::vector<Triangle2*>& vTriangles, std::vector<Segment2>& out);

/// Orders the segments of a simple ring so that each begins where the one before ends, beginning with the first; segments are
/// turned around where needed. False, and nothing is changed, if they are no ring (with a warning) or if there are none. Only
/// the first ring is kept if there are several.
NORVIK2D_EXPORT bool sortRing(std::vector<Segment2>& vSegments);

/// Orders the segments of a ring that may touch itself at vertices, counterclockwise from its vertex of least x (least y among
/// these). Segments that the way around doesn't come by, such as those of a second ring, are dropped. False, with a warning, and
/// nothing is changed, if they are no ring.
NORVIK2D_EXPORT bool sortRingCCW(std::vector<Segment2>& vSegments);

/// Whether the segments are closed (an even number of ends at each point) and meet nowhere but at ends. Segments of no length
/// don't count, and one may be given several times; all on one line count as meeting nowhere. Decided exactly, by a triangulation of
/// the segments.
NORVIK2D_EXPORT bool isSimplePolygon(const std::vector<Segment2>& vSegments);

/// Appends the three edges of each triangle.
NORVIK2D_EXPORT void getDirectedEdges(const std::vector<Triangle2*>& vTriangles, std::vector<Edge2>& out);

/// The same, and orders all that `out` holds then by the addresses of the ends; of edges with the same ends one is kept.
NORVIK2D_EXPORT void getUndirectedEdges(const std::vector<Triangle2*>& vTriangles, std::vector<Edge2>& out);

/// Appends the corners of the triangles, and orders all that `out` holds then by address, each once.
NORVIK2D_EXPORT void getVertices(const std::vector<Triangle2*>& vTriangles, std::vector<Point2*>& out);

/// Appends the edges of the triangles, and orders all that `out` holds then, each once.
NORVIK2D_EXPORT void getVertexPairs(const std::vector<Triangle2*>& vTriangles, std::vector<VertexPair2>& out);
/// The same for all triangles of a triangulation, or of a zone. A null pointer gives a warning, and nothing is done.
NORVIK2D_EXPORT void getVertexPairs(Norvik_2D* pNorvik, std::vector<VertexPair2>& out);
NORVIK2D_EXPORT void getVertexPairs(Zone2* pZone, std::vector<VertexPair2>& out);

/// Appends the components of the set: triangles that can be reached from each other across edges that aren't in `sBlocked`. The
/// components are ordered by their lowest address. Triangles that are named repeatedly are counted once, with a warning.
NORVIK2D_EXPORT void getConnectedComponents(std::vector<Triangle2*> vTriangles,
                                            std::vector<std::vector<Triangle2*>>& out,
                                            const std::set<VertexPair2>& sBlocked);
/// The same with all edges open.
NORVIK2D_EXPORT void getConnectedComponents(const std::vector<Triangle2*>& vTriangles,
                                            std::vector<std::vector<Triangle2*>>& out);

/// Appends one border ring of a component in walking order, with the component on the left. It begins at the end of the first
/// border edge that isn't in `sIgnore` (pairs with the lower address first); without one nothing happens. A component that
/// touches itself at a vertex isn't for this. `vTriangles` is ordered by address, each once.
NORVIK2D_EXPORT void getSortedBorders(std::vector<Triangle2*>& vTriangles, std::vector<Edge2>& out,
                                      const std::set<std::pair<Point2*, Point2*>>& sIgnore);

/// Orders directed border edges, which may touch each other at vertices, to closed rings: appends these to `vPolygons`, and the
/// edges that make no ring to `vRemaining`.
NORVIK2D_EXPORT void edgesToPolygons(const std::vector<Edge2>& vEdges,
                                     std::vector<std::vector<Edge2>>& vPolygons,
                                     std::vector<Edge2>& vRemaining);

}  // namespace KELMAR_NORVIK2D
