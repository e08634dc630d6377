#pragma once

#include <vector>

#include "AddressSet.h"
#include "Edge2.h"
#include "Point2.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "VertexPair2.h"
#include "triangleLinks.h"

/// What the library's free functions on sets of triangles are made of.
namespace KELMAR_NORVIK2D {

class KelmarTest;

/// The middle of an edge, or a point a few last places away that isn't inside of the triangle, if there is one.
Point2 getOuterSplitPoint(const Triangle2* pT, int edge, KelmarTest* pPredicates);

/// Visits the edges that a set of triangles has on its outside, as triangle and index: in the order of the triangles given,
/// those of each by index.
template <class Visit>
void visitBorders(const std::vector<Triangle2*>& vTriangles, Visit visit) {
    const TriangleSet sTriangles(vTriangles);
    for (Triangle2* pT : vTriangles)
        for (int edge = 0; edge < 3; ++edge)
            if (!sTriangles.contains(neighbour(pT, edge))) visit(pT, edge);
}

/// Appends these edges, as pairs or as segments with the set on their left.
void getBorders_tools(const std::vector<Triangle2*>& vTriangles, std::vector<VertexPair2>& vBorders);
void getBorders_tools(const std::vector<Triangle2*>& vTriangles, std::vector<Segment2>& vBorders);

/// See sortRing() and edgesToPolygons() in freeFunctions.h.
bool sortRing_tools(std::vector<Segment2>& vSegments);
void edgesToPolygons_tools(const std::vector<Edge2>& vEdges, std::vector<std::vector<Edge2>>& vPolygons,
                           std::vector<Edge2>& vRemaining);

}  // namespace KELMAR_NORVIK2D
