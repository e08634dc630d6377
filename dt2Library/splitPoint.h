#pragma once

#include "Point2.h"
#include "Triangle2.h"

/// Where an edge of a constraint is split.
namespace KELMAR_NORVIK2D {

class Dt2;
class KelmarTest;

/// Finds a point near the middle of an edge at which the edge can be split without harm: the middle as computed, or a point a
/// few last places away from it. The best is one exactly on the line; otherwise one strictly inside the quadrilateral of the
/// two triangles, so that none of them turns over; otherwise one that sees both ends. False, with the middle, if there is none.
bool computeCenterWithoutConflict(Dt2* pDt, KelmarTest* pPredicates, Triangle2* pT, int edge, Point2& out);

/// Whether the open segment between two points meets no constraint and no vertex. False, with a warning, without triangles and
/// if both points lie outside the hull.
bool isVisible(Dt2* pDt, Point2 a, Point2 b);

}  // namespace KELMAR_NORVIK2D
