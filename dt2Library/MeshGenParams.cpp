#include "MeshGenParams.h"

#include "Zone2.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

// Without a zone the refinement reports it.
MeshGenParams::MeshGenParams(Zone2* pZone_) : pZone(pZone_) {
    if (pZone == nullptr || pZone->getZoneLocation() == ZL_INSIDE || pZone->getZoneLocation() == ZL_BOUNDED)
        return;
    printToStandardError(
        "\n\n\nMeshGenParams::MeshGenParams(..), ERROR: \n\tbehavior since Norvik 1.39: "
        "The zoneLocation must be ZL_INSIDE or ZL_BOUNDED. "
        "Please convert the zone using pZone->convertToBoundedZone(..)\n\n\n");
}

MeshGenParams::~MeshGenParams() = default;

double MeshGenParams::getMaxTriangleArea(Triangle2* /*pTriangle*/) { return maxTriangleArea; }
double MeshGenParams::getMaxEdgeLength(Triangle2* /*pTriangle*/) { return maxEdgeLength; }

}  // namespace KELMAR_NORVIK2D
