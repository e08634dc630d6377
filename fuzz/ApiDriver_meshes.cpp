// Quality meshes, import and export, questions, and mistakes.
#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "ApiDriver.h"
#include "ApiListener.h"
#include "ApiTrace.h"
#include "canonicalMesh.h"
#include "meshLaws.h"
#include "zoneLaws.h"

using namespace KELMAR_NORVIK2D;
using zoneLaws::trianglesOf;

// ------------------------------------------------------------------------------------------------ refinement

namespace {

/// Finer to the right.
class GradedParams : public MeshGenParams {
public:
    GradedParams(Zone2* pZone_, const Bbox2& box)
        : MeshGenParams(pZone_),
          middle(0.5 * (box.getMinX() + box.getMaxX())),
          fine(0.1 * (box.getMaxX() - box.getMinX() + box.getMaxY() - box.getMinY())) {}
    double getMaxEdgeLength(Triangle2* pT) override {
        return pT->getBarycenter().x() > middle ? fine : maxEdgeLength;
    }

private:
    double middle, fine;
};

}  // namespace

/// One of the zones, if it isn't large, in the form that refinement takes; or null.
ApiDriver::Zone2* ApiDriver::zoneToRefine() {
    constexpr std::size_t mostTriangles = 300;
    if (vZones.empty() || !isUsable()) return nullptr;
    const KnownZone known = from.oneOf(vZones);
    const Triangles vTriangles = trianglesOf(known.pZone);
    if (vTriangles.empty() || vTriangles.size() > mostTriangles) return nullptr;
    const ZoneLocation kind = known.pZone->getZoneLocation();
    // Where pieces are missing a zone may leak.
    if (known.area.has_value() && !bLacking && (kind == ZL_BOUNDED || kind == ZL_INSIDE)) return known.pZone;
    say("zone = mesh.createZone(triangles of zone)->convertToBoundedZone();");
    Zone2* const pGrown = pMesh->createZone(vTriangles);
    noteBorder(pGrown);
    if (Hearing::heard("almost degenerate")) return nullptr;
    Zone2* const pZone = pGrown->convertToBoundedZone();
    expect(pZone != nullptr, "a zone of triangles has a border");
    noteBorder(pZone);
    know(pZone, zoneLaws::areaOf(pZone), 1e-3);
    return pZone;
}

void ApiDriver::refine() {
    if (!mayCross()) return;
    Zone2* const pZone = zoneToRefine();
    if (pZone == nullptr || pZone->numberOfConstraintGraphs() != 1) return;
    const Bbox2 box = pZone->getBoundingBox();
    const double extent = std::max(box.getMaxX() - box.getMinX(), box.getMaxY() - box.getMinY());
    const double area = zoneLaws::areaOf(pZone);
    constexpr double none = std::numeric_limits<double>::max();
    MeshGenParams plain(pZone);
    GradedParams graded(pZone, box);
    MeshGenParams& params = from.oneIn(4) ? graded : plain;
    params.minAngleDegree = 10.0 * from.below(4);
    params.minEdgeLength = extent * (from.oneIn(2) ? 0.02 : 0.1);
    params.maxEdgeLength = from.oneIn(3) ? 0.2 * extent : none;
    params.maxTriangleArea = from.oneIn(3) ? 0.01 * area : none;
    params.growFactor = from.oneIn(3) ? 2.0 + from.below(4) : none;
    params.growFactorMinArea = 0.003 * area;
    params.bAllowConstraintSplitting = !from.oneIn(4);
    // A constraint that was drawn through a vertex of an earlier run needs it.
    params.bProtectOlderSteiners = bDrawnSince || !from.oneIn(3);
    const bool bGrid = from.oneIn(3);
    if (bGrid) {
        params.gridVector = Vector2(from.around0(3), from.around0(3));
        params.gridLength = extent / (2.0 + from.below(12));
    }
    const int cancelAt = from.oneIn(5) ? static_cast<int>(from.below(20)) : ApiListener::never;
    const ApiListener listener(*pMesh, cancelAt);
    say("refine(zone, {minAngle ", params.minAngleDegree, ", minEdge ", params.minEdgeLength, ", maxEdge ",
        params.maxEdgeLength, ", maxArea ", params.maxTriangleArea, ", grow ", params.growFactor,
        ", growMinArea ", params.growFactorMinArea, ", split ", params.bAllowConstraintSplitting,
        ", protect ", params.bProtectOlderSteiners, ", grid ", params.gridLength, " along (",
        params.gridVector.x(), ", ", params.gridVector.y(), "), graded ", &params == &graded, ", cancel at ",
        cancelAt, "})");
    pMesh->refineAdvanced(&params);
    expect(listener.isContent(), "progress rises to 1");
    bRefined = true;
    bDrawnSince &= !params.bProtectOlderSteiners;
    bWaiting |= bConforming;
    readVertices(Growth::ALLOWED,
                 bGrid || !params.bProtectOlderSteiners ? Loss::OF_FREE_VERTICES : Loss::NONE);
    noteApplied();
    if (isExact())
        expect(std::fabs(zoneLaws::areaOf(pZone) - area) <= 1e-9 * extent * extent,
               "refinement keeps the area");
}

// --------------------------------------------------------------------------------------- import and export

void ApiDriver::importElsewhere() {
    if (isHugeOrTiny()) return;
    Triangles vTriangles = somePatch(1 + from.below(60));
    if (vTriangles.empty()) return;
    const Shape shape = shapeOf(vTriangles);
    const bool bReorient = from.oneIn(2), bKeepBox = from.oneIn(3);
    std::vector<Point2> points;
    CanonicalMesh given;
    for (const Triangle2* pT : vTriangles) {
        const int turn = bReorient && from.oneIn(2) ? 2 : 1;
        std::array<::Coordinates, 3> corners;
        for (int i = 0; i < 3; ++i) {
            points.push_back(*pT->getCorner(i * turn % 3));
            corners[static_cast<std::size_t>(i)] = {points.back().x(), points.back().y()};
        }
        std::sort(corners.begin(), corners.end());
        given.push_back(corners);
    }
    std::sort(given.begin(), given.end());
    say("other.importTriangles(std::vector<Point2>", points, ", ", bReorient, ", ", bKeepBox, ");");
    Norvik_2D other;
    Zone2* const pZone = other.importTriangles(points, bReorient, bKeepBox);
    expect(pZone != nullptr, "triangles of a mesh can be imported");
    CanonicalMesh told;
    for (const Triangle2* pT : trianglesOf(pZone)) {
        std::array<::Coordinates, 3> corners;
        for (int i = 0; i < 3; ++i)
            corners[static_cast<std::size_t>(i)] = {pT->getCorner(i)->x(), pT->getCorner(i)->y()};
        std::sort(corners.begin(), corners.end());
        told.push_back(corners);
    }
    std::sort(told.begin(), told.end());
    expect(told == given, "the zone of imported triangles has them as they are");
    for (unsigned n = from.below(4); n > 0; --n) other.insert(somePoint());
    expect(std::fabs(zoneLaws::areaOf(pZone) - shape.area) <= shape.slack,
           "the zone of imported triangles stays");
    const std::string faults = zoneLaws::soundness(other, false);
    if (!faults.empty()) throw LawBroken(faults);
}

void ApiDriver::exportArrays() {
    MeshArrays arrays;
    pMesh->exportMesh(arrays);
    Triangles vTriangles;
    std::vector<Point2*> vVertices;
    pMesh->getTrianglePointers(vTriangles);
    pMesh->getVertexPointers(vVertices);
    pMesh->writeObj("/dev/null");
    expect(arrays.corners.size() == 3 * vTriangles.size() &&
               arrays.neighbours.size() == arrays.corners.size() &&
               arrays.constraintFlags.size() == arrays.corners.size(),
           "arrays have all triangles");
    if (vTriangles.empty()) return;
    expect(arrays.coordinates.size() == 2 * vVertices.size(), "arrays have all points");
    std::map<const Triangle2*, std::int64_t> mPlace{{nullptr, -1}};
    for (std::size_t i = 0; i < vTriangles.size(); ++i) mPlace[vTriangles[i]] = static_cast<std::int64_t>(i);
    for (std::size_t at = 0; at < arrays.corners.size(); ++at) {
        Triangle2* const pT = vTriangles[at / 3];
        const int corner = static_cast<int>(at % 3);
        expect(vVertices[static_cast<std::size_t>(arrays.corners[at])] == pT->getCorner(corner),
               "corners are told");
        expect(arrays.neighbours[at] == mPlace.at(pT->getOppositeTriangle(corner)), "neighbours are told");
        expect((arrays.constraintFlags[at] != 0) == pMesh->isConstraint(pT, corner), "constraints are told");
    }
}

// ------------------------------------------------------------------------------------------------- questions

void ApiDriver::askMesh() {
    const Bbox2 box = pMesh->computeBoundingBox();
    double leastX = HUGE_VAL, greatestY = -HUGE_VAL;
    for (const auto& [xy, pVtx] : mVertices) {
        leastX = std::min(leastX, xy.first);
        greatestY = std::max(greatestY, xy.second);
    }
    if (!mVertices.empty()) expect(box.getMinX() == leastX && box.getMaxY() == greatestY, "the box is tight");
    if (!pMesh->is2D()) return;
    std::vector<VertexPair2> vPairs;
    getVertexPairs(pMesh.get(), vPairs);
    expect(mVertices.size() + pMesh->numberOfTriangles() == vPairs.size() + 1,
           "vertices + triangles = edges + 1");
    if (!vZones.empty() && !isHugeOrTiny() && isEnforced()) {
        const Zone2* const pZone = from.oneOf(vZones).pZone;
        MeshArrays arrays;
        pMesh->exportMesh(const_cast<Zone2*>(pZone), arrays);
        expect(arrays.numberOfTriangles() <= static_cast<std::int64_t>(pZone->getNumberOfTriangles()),
               "arrays have no more triangles than the zone");
    }
}

void ApiDriver::askVertex() {
    Point2* const pVtx = someHandle();
    if (pVtx == nullptr || !pMesh->is2D()) return;
    Triangles vAround;
    pMesh->getIncidentTriangles(pVtx, vAround);
    expect(!vAround.empty() && vAround[0] == pVtx->getIncidentTriangle(),
           "the incident triangle comes first");
    TriangleAroundVertexIterator it(pVtx);
    const TriangleAroundVertexIterator start = it;
    std::size_t numSeen = 0;
    do {
        if (*it != nullptr) expect(numSeen < vAround.size() && *it == vAround[numSeen++], "both walks agree");
        ++it;
    } while (it != start);
    expect(numSeen == vAround.size(), "both walks agree");
    for (Triangle2* pT : vAround) {
        const int corner = pT->getIntraTriangleIndex(pVtx);
        Point2* const pNext = pT->getCorner((corner + 1) % 3);
        expect(pMesh->getAdjacentTriangle(pVtx, pNext) == pT, "triangles are found by their edges");
        expect((pMesh->getConstraintSegment(pVtx, pNext) != nullptr) ==
                   pMesh->isConstraint(pT, (corner + 2) % 3),
               "constraints are found by their ends");
    }
}

/// Calls that are refused, with a word, and change nothing.
void ApiDriver::mistake() {
    static constexpr double bad[] = {std::numeric_limits<double>::quiet_NaN(),
                                     std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity()};
    Point2 point = somePoint();
    point = from.oneIn(2) ? Point2(bad[from.below(3)], point.y()) : Point2(point.x(), bad[from.below(3)]);
    const Point2 good = somePoint();
    std::vector<Point2*> handles;
    switch (from.below(8)) {
        case 0:
            expect(pMesh->insert(point) == nullptr, "points have numbers");
            break;
        case 1:
            pMesh->insert(std::vector<Point2>{good, point}, handles);
            expect(handles == std::vector<Point2*>(2), "points have numbers");
            break;
        case 2:
            expect(pMesh->locate(point) == nullptr, "points have numbers");
            break;
        case 3:
            expect(pMesh->createConstraint({Segment2(good, point)}, CIS_CONSTRAINED_DELAUNAY) == nullptr,
                   "segments have numbers");
            break;
        case 4:
            pMesh->cutTriangles(good, point, from.oneIn(2));
            break;
        case 5:
            expect(pMesh->createZone(std::vector<Graph*>(), ZL_GROW, point) == nullptr, "seeds have numbers");
            break;
        case 6:
            pMesh->remove(nullptr);
            break;
        default:
            pMesh->deleteZone(nullptr);
    }
    expect(!Hearing::all().empty(), "a mistake is told");
    readVertices(Growth::NONE, Loss::NONE);
}

void ApiDriver::control() {
    pMesh->requestCancel();
    const int numCPU = from.around0(4);
    const int inForce = pMesh->setNumCPU(numCPU);
    expect(numCPU <= 0 || inForce == numCPU, "the number of threads is taken as it is");
    pMesh->setName("driven");
    expect(pMesh->getName() == "driven", "a mesh keeps its name");
    if (from.oneIn(4)) pMesh->statistics("driven");
}
