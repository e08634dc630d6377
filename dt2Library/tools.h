#pragma once

#include <vector>

#include "Point2.h"
#include "Triangle2.h"
#include "VertexPair2.h"

/// What the library's free functions on sets of triangles are made of.
namespace KELMAR_NORVIK2D {

class KelmarTest;

/// The middle of an edge, or a point a few last places away that isn't inside of the triangle, if there is one.
Point2 getOuterSplitPoint(const Triangle2* pT, int edge, KelmarTest* pPredicates);

/// Appends the edges that a set of triangles has on its outside, in the order of the triangles given.
void getBorders_tools(const std::vector<Triangle2*>& vTriangles, std::vector<VertexPair2>& vBorders);

}  // namespace KELMAR_NORVIK2D
