#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <typeinfo>

#include "ConstraintGraph2.h"
#include "Dt2.h"
#include "MeshGenParams.h"
#include "RefCand3.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "distance.h"
#include "hotLoop.h"
#include "require.h"
#include "splitPoint.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

// ------------------------------------------------------------------------------------------- parameters

void Dt2::refineClassic(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                        bool bAllowConstraintSplitting) {
    MeshGenParams params(pZone);
    params.minAngleDegree = minAngleDegree;
    params.minEdgeLength = minEdgeLength;
    params.maxEdgeLength = maxEdgeLength;
    params.bAllowConstraintSplitting = bAllowConstraintSplitting;
    refineGate(&params);
}

void Dt2::refineAdvanced(MeshGenParams* pParams) {
    if (pParams == nullptr) {
        warning("Dt2::refineAdvanced()", "pParameters==NULL");
        return;
    }
    refineGate(pParams);
}

bool Dt2::haveValidPreconditions(MeshGenParams* pParams) {
    const Zone2* const pZone = pParams->pZone;
    if (pZone == nullptr) {
        error("Dt2::refineMain2(..)", "pZone==NULL");
        return false;
    }
    if (pZone->getZoneLocation() != ZL_INSIDE && pZone->getZoneLocation() != ZL_BOUNDED) {
        error("Dt2::refineMain2()",
              "The zoneLocation must be ZL_INSIDE or ZL_BOUNDED. Please convert the zone using "
              "pZone->convertToBoundedZone(..)");
        return false;
    }
    if (pParams->minAngleDegree > 30.0) {
        error("Dt2::refine(..)", "minAngleDegree must be <=30.0, return");
        return false;
    }
    if (pZone->getDelaunayTriangulation() != this) {
        error("Dt2::refine(..)", "the zone belongs to another triangulation, return");
        return false;
    }
    return true;
}

// --------------------------------------------------------------------------------------------- the passes

namespace {

constexpr int mostPasses = 50;

/// The limits if they depend on nothing but the triangle itself.
std::optional<UniformLimits> uniformLimitsOf(const MeshGenParams& params) {
    if (typeid(params) != typeid(MeshGenParams) || params.growFactor != std::numeric_limits<double>::max())
        return {};
    return UniformLimits{params.minAngleDegree, params.maxEdgeLength, params.maxTriangleArea};
}

/// A direction and a spacing that make a grid.
bool wantsGrid(const MeshGenParams& params) {
    const Vector2& direction = params.gridVector;
    return params.gridLength > 0.0 && std::isfinite(params.gridLength) && std::isfinite(direction.x()) &&
           std::isfinite(direction.y()) && (direction.x() != 0.0 || direction.y() != 0.0);
}

}  // namespace

/// A run goes through all triangles of the zone, the worst one first, and through those that it changes on the way; pass after
/// pass, until one has changed nothing.
void Dt2::refineMain3(MeshGenParams* pParams) {
    if (pParams->bProtectOlderSteiners) innerVtxMgr.clear();
    if (!haveValidPreconditions(pParams)) return;
    {
        const MuteScope muted(progress);
        applyConstraintsAndZones();
        if (cancelSwitch.shouldStop()) return;
        const CancelSwitch::Pause pause(cancelSwitch);
        if (wantsGrid(*pParams)) preMeshing(pParams);
    }
    require(pRefinementQueue == nullptr, "pmmAng2RC==__null");
    pRefinementQueue = std::make_unique<RefinementQueue>();
    uniformLimits = uniformLimitsOf(*pParams);
    numRefinementVertices = 0;
    bPrecisionLimitReached = false;
    for (int numPasses = 0; numPasses < mostPasses && refineOnce(pParams); ++numPasses)
        if (isRefinementExhausted() || cancelSwitch.shouldStop()) break;
    pRefinementQueue.reset();
    progress.finish();
}

/// One pass; whether it has changed anything.
bool Dt2::refineOnce(MeshGenParams* pParams) {
    const std::size_t numTriangles = getInitialRefineCandidates(pParams);
    // One more than there are: only the end of the run is told as such. Those that don't wait are done.
    progress.start("refine", numTriangles + 1);
    progress.incProgress(numTriangles - pRefinementQueue->size());
    bool bChanged = false;
    std::uint64_t numServed = 0;
    while (!pRefinementQueue->empty() && !isRefinementExhausted() && !cancelSwitch.shouldStop()) {
        const WaitingTriangle first = pRefinementQueue->pop();
        // Nobody knows how many will be served: listeners hear of every hundredth part of what has been.
        progress.setStep(1 + numServed++ / 100);
        progress.incProgress(1);
        if (!first.isAlive()) continue;
        const std::size_t numWaiting = pRefinementQueue->size();
        const MuteScope muted(progress);
        RefCand3 candidate(this, first.pTriangle);
        if (tryRefine(candidate, pParams)) bChanged = true;
        progress.addToTotal(pRefinementQueue->size() - numWaiting);
    }
    // A long run doesn't hold its peak of memory.
    pRefinementQueue = std::make_unique<RefinementQueue>();
    return bChanged;
}

/// All triangles of the zone in the order of their making, not of their addresses: so a run can be repeated.
std::size_t Dt2::getInitialRefineCandidates(MeshGenParams* pParams) {
    require(pRefinementQueue != nullptr, "pmmAng2RC!=__null");
    std::vector<Triangle2*> vTriangles;
    pParams->pZone->getTriangles(vTriangles);
    for (const std::span<Triangle2> records : trianglePool.stretches()) {
        const auto first =
            std::lower_bound(vTriangles.begin(), vTriangles.end(), records.data(), ByAddress{});
        const auto behind =
            std::lower_bound(first, vTriangles.end(), records.data() + records.size(), ByAddress{});
        std::for_each(first, behind, [&](Triangle2* pT) { addRefCand3(pT); });
    }
    return vTriangles.size();
}

/// Where the limits are the same everywhere and at all times, a triangle that meets them needn't wait for its turn.
void Dt2::queueForRefinement(Triangle2* pT) {
    const double minAngle = RefCand3::minAngleOf(pT);
    if (uniformLimits && RefCand3::meetsLimits(pT, minAngle, *uniformLimits)) return;
    pRefinementQueue->push(minAngle, pT);
}

/// Limits of size that ask for the impossible would keep a pass going for ever.
bool Dt2::isRefinementExhausted() {
    if (numRefinementVertices < mostRefinementVertices) [[likely]]
        return false;
    reportPrecisionLimit();
    return true;
}

void Dt2::reportPrecisionLimit() {
    if (bPrecisionLimitReached) return;
    bPrecisionLimitReached = true;
    warning("Dt2::refineMain3()", "double precision limit reached, the mesh limits can't be met everywhere");
}

// ------------------------------------------------------------------------------------------------ one step

namespace {

bool isInZone(const Triangle2* pT, const Zone2& zone) {
    std::vector<Triangle2*> vTriangles;
    zone.getTriangles(vTriangles);
    return std::find(vTriangles.begin(), vTriangles.end(), pT) != vTriangles.end();
}

}  // namespace

bool Dt2::tryRefine(RefCand3& candidate, MeshGenParams* pParams) {
    require(candidate.isAlive(), "pRC->isAlive()");
    require(pRefinementQueue != nullptr, "pmmAng2RC!=__null");
    if (!candidate.needRefinement(pParams)) return false;
    const ConstraintGraph2* const pGraph = pParams->pZone->getConstraintGraph();
    require(pGraph != nullptr, "pCG!=__null");
    const auto [pContainingT, splitIndex] = candidate.getContainingTriangleAndIndex();
    if (splitIndex == SPLIT_NEVER) return false;
    if (splitIndex != SPLIT_NONE) {
        // Walls a last place apart are divided by each other's vertices, and a triangle that was between them may end up outside.
        const bool bWall = isConstraint(pContainingT, splitIndex);
        return (bWall || isInZone(pContainingT, *pParams->pZone)) && splitForRefinement(candidate, pGraph);
    }
    insertSteiner(candidate.getSteiner(), pContainingT);
    return true;
}

void Dt2::insertSteiner(const Point2& steiner, Triangle2* pContainingTriangle) {
    Point2* pVtx = newVertex(Point2(steiner.x(), steiner.y()));
    vertexVault.addItem(hc.iReset(*pVtx), pVtx);
    insertVertexForRefinement(pVtx, pContainingTriangle);
    innerVtxMgr.addVtx(pVtx);
    ++numRefinementVertices;
}

/// Splits the constraint that lies between a triangle and its circumcentre. The vertices that were placed too close to the new
/// one go.
bool Dt2::splitForRefinement(const RefCand3& candidate, const ConstraintGraph2* pGraph) {
    const auto [pT, edge] = candidate.getContainingTriangleAndIndex();
    Point2* const p1 = corner(pT, ccw(edge));
    Point2* const p2 = corner(pT, cw(edge));
    ConstraintSegment2* const pCSeg = candidate.getAliveConstraintSegment(edge);
    require(pCSeg != nullptr, "pCSeg!=__null");
    require(
        (pCSeg->getSrc() == p1 && pCSeg->getTrg() == p2) || (pCSeg->getSrc() == p2 && pCSeg->getTrg() == p1),
        "(pCSeg->getSrc()==p1 && pCSeg->getTrg()==p2) || (pCSeg->getSrc()==p2 && pCSeg->getTrg()==p1)");
    Point2 split;
    if (!computeCenterWithoutConflict(this, &predicates, pT, edge, split)) {
        warning("Dt2::refineMain3()",
                "no appropriate splitPoint in double precision arithmetic for a triangle");
        return false;
    }
    if (samePoint(&split, p1) || samePoint(&split, p2)) {
        warning("Dt2::refineMain3()",
                "Double precision arithmetic does not allow to split a segment further, giving up");
        for (int k = 0; k < 3; ++k)
            print(compose("EdgeLen2D(", k, "): ", distance(*corner(pT, ccw(k)), *corner(pT, cw(k))), "\n"));
        return false;
    }
    const bool bOfZone = pGraph->isConstraint(pCSeg);
    Point2* const pNew = pCSeg->insertAndSplit(split);
    require(pNew != nullptr, "pInsertedVertex!=__null");
    ++numRefinementVertices;
    innerVtxMgr.removePreviouslyInsertedVertices(pNew, squaredDistance(*p1, *pNew), this);
    if (!bOfZone) return true;
    if (pGraph->isReverse(pCSeg))
        addRefCandsInsideZone(pCSeg->getTrg(), pCSeg->getSrc(), pNew, *pGraph);
    else
        addRefCandsInsideZone(pCSeg->getSrc(), pCSeg->getTrg(), pNew, *pGraph);
    return true;
}

void Dt2::addRefCandsInsideZone(Point2* pSrc, Point2* pTrg, Point2* pSplit, const ConstraintGraph2& graph) {
    require(pSrc != pTrg && pSrc != pSplit && pTrg != pSplit, "pSrc!=pTrg && pSrc!=pSplit && pTrg!=pSplit");
    // As many as this are left to the next pass.
    constexpr int veryMany = 100;
    std::vector<Triangle2*> vAround;
    vAround.reserve(veryMany);
    int numBeforeLast = 0;
    for (Triangle2* pT = getAdjacentTriangle(pSplit, pTrg); pT != nullptr; pT = nextAround(pT, pSplit)) {
        vAround.push_back(pT);
        Point2* const pNext = corner(pT, cw(indexOf(pT, pSplit)));
        // Where a half was divided further at once, its nearer piece leads elsewhere than to the source: behind it is no zone.
        if (pNext == pSrc || graph.isConstraint(pSplit, pNext)) break;
        if (++numBeforeLast > veryMany) return;
    }
    if (numBeforeLast == veryMany) return;
    for (Triangle2* pT : vAround) addRefCand3(pT);
}

/// The vertex lies in the triangle or on an edge of it. There is no difference: a triangle without area, which arises at an
/// edge, is flipped away.
NORVIK2D_HOT_LOOP void Dt2::insertVertexForRefinement(Point2*& pNew, Triangle2* pContainingTriangle) {
    require(pContainingTriangle != nullptr, "pContainingTriangle!=__null");
    require(flipper.isIdle(), "vCheckT.empty()");
    Triangle2* const pT = pContainingTriangle;
    Triangle2* const pA = takeTriangle();
    Triangle2* const pB = takeTriangle();
    const auto [a, b, c, pFarA, pFarB, pFarC] = StarFlipper::divideInThree(pT, pNew, pA, pB);
    const unsigned wanted = flipper.wantedFlips(pT, pA, pNew, a, b, c, pFarC, pFarA);
    const bool bWantedB = flipper.isFlipWanted(pB, pNew, c, a, pFarB);
    vRound.clear();
    if ((wanted & 1U) != 0) vRound.push_back(pT);
    if ((wanted & 2U) != 0) vRound.push_back(pA);
    if (bWantedB) vRound.push_back(pB);
    vStar.assign({{pT, a, b}, {pA, b, c}, {pB, c, a}});

    while (!vRound.empty()) {
        vNextRound.clear();
        for (Triangle2* pStarT : vRound) {
            if (isConstraint(pStarT, 0)) {
                // It protects its edge, but not against a vertex on its very line, which has no business there: it should
                // have divided the constraint.
                if (predicates.getOrientation2(pNew, corner(pStarT, 1), corner(pStarT, 2)) !=
                    ORIENTATION2_COLLINEAR)
                    continue;
                assert(false && "a vertex on a constraint");
            }
            const auto [pU, q, w, r, pFarQW, pFarWR] = flipEdge(pStarT, 0);
            const unsigned wantedNext = flipper.wantedFlips(pStarT, pU, pNew, q, w, r, pFarQW, pFarWR);
            if ((wantedNext & 1U) != 0) vNextRound.push_back(pStarT);
            if ((wantedNext & 2U) != 0) vNextRound.push_back(pU);
            vStar.push_back({pStarT, q, w});
            vStar.push_back({pU, w, r});
        }
        std::swap(vRound, vNextRound);
    }
    // In the order of their making, but only now: those that didn't last needn't be judged.
    for (const auto& [pStarT, q, r] : vStar)
        if (corner(pStarT, 1) == q && corner(pStarT, 2) == r) addRefCand3(pStarT);
}

}  // namespace KELMAR_NORVIK2D
