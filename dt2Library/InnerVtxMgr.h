#pragma once

#include <cstddef>
#include <vector>

#include "AddressSet.h"
#include "Point2.h"

namespace KELMAR_NORVIK2D {

class Dt2;

/// The vertices that refinement has placed inside zones, and may remove again.
///
/// Most of them are added between two removals: they are put in order when somebody asks. The order is kept in runs, each at
/// least twice as long as the next one, so that no entry is moved often.
///
/// Laws:
///  1. Behind the last run lie the entries that were added since, in the order of adding. Entries of a run are ordered by x, and
///     among equal x by the order of adding.
///  2. An entry without a vertex has been removed.
class InnerVtxMgr {
public:
    void addVtx(Point2* pVtx);
    /// Keeps a vertex for good. A later removal that comes upon it fails: for vertices that become ends of constraints.
    void eraseVtx(Point2* pVtx) { sInsertedInnerPoints.erase(pVtx); }
    void clear();
    /// Removes the vertices strictly inside a circle from here, and from the triangulation unless they are ends of
    /// constraints; in the order of their x.
    void removePreviouslyInsertedVertices(Point2* pCenter, double sqRadius, Dt2* pDt);

private:
    struct Entry {
        double x;
        Point2* pVtx;
    };

    void putInOrder();
    void mergeLastRuns();

    VertexSet sInsertedInnerPoints;
    std::vector<Entry> xIndex;
    std::vector<std::size_t> vRunEnds;  ///< ascending
    std::vector<Entry*> vInside;        ///< scratch
};

}  // namespace KELMAR_NORVIK2D
