#pragma once

#include <map>
#include <set>

#include "Point2.h"
#include "byAddress.h"

namespace KELMAR_NORVIK2D {

class Dt2;

/// The vertices that refinement has placed inside zones, and may remove again.
class InnerVtxMgr {
public:
    void addVtx(Point2* pVtx);
    /// Keeps a vertex for good. A later removal that comes upon it fails: for vertices that become ends of constraints.
    void eraseVtx(Point2* pVtx);
    void clear();
    /// Removes the vertices strictly inside a circle from here, and from the triangulation unless they are ends of
    /// constraints; in the order of their x.
    void removePreviouslyInsertedVertices(Point2* pCenter, double sqRadius, Dt2* pDt);

private:
    std::set<Point2*, ByAddress> sInsertedInnerPoints;
    std::multimap<double, Point2*> xIndex;  ///< the same vertices by x
};

}  // namespace KELMAR_NORVIK2D
