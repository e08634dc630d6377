#pragma once

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

class Triangle2;
class Zone2;

/// Combine two zones of one triangulation to a new one, which asks its operands at each question: it stays right when the mesh
/// changes, and the operands must outlive it. The result belongs to the triangulation (Norvik_2D::deleteZone). Null for a null
/// zone (with a warning), for zones of different triangulations (with an error message), and if there are no triangles (with a
/// warning).
NORVIK2D_EXPORT Zone2* zoneUnion(Zone2* pZone0, Zone2* pZone1);
NORVIK2D_EXPORT Zone2* zoneIntersection(Zone2* pZone0, Zone2* pZone1);
/// The first zone without the second one.
NORVIK2D_EXPORT Zone2* zoneDifference(Zone2* pZone0, Zone2* pZone1);
NORVIK2D_EXPORT Zone2* zoneSymmetricDifference(Zone2* pZone0, Zone2* pZone1);

/// A client's answer to a question about a triangle.
class NORVIK2D_EXPORT UserPredicateT {
public:
    virtual ~UserPredicateT() = default;
    /// What is asked of each triangle in turn.
    virtual bool operator()(Triangle2* pTriangle) = 0;
};

/// Takes triangles away from the border of a zone inwards for as long as the predicate agrees, and makes a new zone (of kind
/// ZL_GROW) of what is left. No holes come into being: a triangle goes only if one of its edges is free. The predicate must
/// answer by the triangle alone, may be asked repeatedly, and must not change the mesh.
///
/// The zone is what it is now: its border becomes constraints, and it doesn't follow later changes of the input zone. Null if
/// nothing is left, and, with a warning, for a null zone or one without triangles. `bVerbose` prints numbers and areas of
/// triangles to standard output.
NORVIK2D_EXPORT Zone2* peelOffIf(Zone2* pZone, UserPredicateT* pPredicate, bool bVerbose = false);

}  // namespace KELMAR_NORVIK2D
