#pragma once

#include <map>
#include <vector>

#include "Point2.h"
#include "VertexPair2.h"

/// What is known of a cut while it is made.
namespace KELMAR_NORVIK2D {

/// A segment that the mesh is cut along.
struct CUTT_KnifeStruct {
    Point2 src, trg;
    std::vector<Point2> vIntersections;  ///< where it crosses edges; each may come repeatedly
    std::vector<Point2*> vOnKnife;       ///< vertices strictly inside of it, at edges that it overlaps
};

/// An edge that knives meet.
struct CUTT_IntersectedEdgeStruct {
    std::vector<Point2> vIntersections;  ///< of all knives; each may come repeatedly
};

using CUTT_IntersectedEdges = std::map<VertexPair2, CUTT_IntersectedEdgeStruct>;
/// The vertices that stand for crossings.
using CUTT_RoundedPoints = std::map<Point2, Point2*>;

}  // namespace KELMAR_NORVIK2D
