#pragma once

#include "Edge2.h"
#include "Point2.h"
#include "Triangle2.h"

namespace KELMAR_NORVIK2D {

/// The library's own door to the private fields of the mesh records. Clients see read access only; this keeps
/// the writers inline and in one place.
struct MeshAccess {
    static Point2*& corner(Triangle2* pT, int index) noexcept { return pT->pCorners[index]; }
    static Triangle2*& neighbour(Triangle2* pT, int index) noexcept { return pT->pNeighbours[index]; }
    static Triangle2*& incidentTriangle(Point2* pVtx) noexcept { return pVtx->pIncidentTriangle; }
};

}  // namespace KELMAR_NORVIK2D
