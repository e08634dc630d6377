#pragma once

#include <vector>

#include "Triangle2.h"
#include "VertexPair2.h"

/// What the library's free functions on sets of triangles are made of.
namespace KELMAR_NORVIK2D {

/// Appends the edges that a set of triangles has on its outside, in the order of the triangles given.
void getBorders_tools(const std::vector<Triangle2*>& vTriangles, std::vector<VertexPair2>& vBorders);

}  // namespace KELMAR_NORVIK2D
