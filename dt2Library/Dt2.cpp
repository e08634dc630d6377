#include "Dt2.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "diagnostics.h"
#include "hotLoop.h"
#include "require.h"
#include "walk.h"

namespace KELMAR_NORVIK2D {

// ------------------------------------------------------------------------------------------ life and stores

Dt2::Dt2(unsigned int numExpected) {
    // Bounds of the first blocks that keep 2 * m + 10 within an int, and of the later ones: 100 MB each.
    constexpr unsigned int mostExpected = 1000000000;
    const int m = static_cast<int>(std::clamp(numExpected, 3U, mostExpected));
    pointPool.init(m, 3125000);
    trianglePool.init(2 * m + 10, 2083333);
    box.setPredicates(&predicates);
    vCheckT.reserve(64);
}

int Dt2::setNumCPU(int n) {
    numCPU = n > 0 ? n : 1;
    if (n == 0) numCPU = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    return numCPU;
}

/// A record whose fields are still to be written.
inline Triangle2* Dt2::takeTriangle() {
    if (recycledTriangles.empty()) {
        Triangle2* pFreshT = trianglePool.get();
        makeDead(pFreshT);  // should memory run out before it is written
        return pFreshT;
    }
    Triangle2* pT = recycledTriangles.back();
    recycledTriangles.pop_back();
    return pT;
}

Triangle2* Dt2::createTriangle(Point2* a, Point2* b, Point2* c) {
    Triangle2* pT = takeTriangle();
    setCorners(pT, a, b, c);
    setNeighbours(pT, nullptr, nullptr, nullptr);
    setIncidentTriangle(a, pT);
    setIncidentTriangle(b, pT);
    setIncidentTriangle(c, pT);
    return pT;
}

void Dt2::storeRecycledT(const std::vector<Triangle2*>& vDeadT) {
    const std::lock_guard lock(storesMutex);
    recycledTriangles.insert(recycledTriangles.end(), vDeadT.begin(), vDeadT.end());
}

void Dt2::getFreshTriangles(std::size_t n, std::vector<Triangle2*>& vFreshTriangles) {
    const std::lock_guard lock(storesMutex);
    require(vFreshTriangles.empty(), "vFreshTriangles.empty()");
    vFreshTriangles.resize(n);
    for (Triangle2*& pT : vFreshTriangles) {
        pT = trianglePool.get();
        makeDead(pT);
    }
}

// ------------------------------------------------------------------------------------------ flips

/// Whether the circumcircle across edge 0 of a triangle (vertex,a,b) contains the vertex, `pFar` being the corner beyond;
/// null stands for the outside of the hull, which has no circle.
[[gnu::always_inline]] inline bool Dt2::isFlipWanted(const Triangle2* pT, const Point2* pVtx,
                                                     const Point2* pA, const Point2* pB, const Point2* pFar) {
    if (pFar == nullptr) [[unlikely]]
        return false;
    const CircleVerdict verdict = KelmarTest::inCircleFilter(pB, pA, pFar, pVtx);
    if (verdict != CircleVerdict::UNDECIDED) [[likely]]
        return verdict == CircleVerdict::INSIDE;
    return predicates.exact_circleInc(neighbour(pT, 0), pVtx);
}

[[gnu::cold, gnu::noinline]] bool Dt2::isFlipWanted(const Triangle2* pT, const Point2* pVtx) {
    return isFlipWanted(pT, pVtx, corner(pT, 1), corner(pT, 2), farCornerOrNull(neighbour(pT, 0), pT));
}

/// The same for two triangles that follow each other counterclockwise around the vertex, (vertex,a,b) and (vertex,b,c):
/// bits 0 and 1.
[[gnu::always_inline]] inline unsigned Dt2::wantedFlips(const Triangle2* pT, const Triangle2* pNextT,
                                                        const Point2* pVtx, const Point2* pA,
                                                        const Point2* pB, const Point2* pC,
                                                        const Point2* pFarAB, const Point2* pFarBC) {
    if (pFarAB == nullptr || pFarBC == nullptr) [[unlikely]]
        return (isFlipWanted(pT, pVtx) ? 1U : 0U) | (isFlipWanted(pNextT, pVtx) ? 2U : 0U);
    const DoublePair q = coordinatesOf(pVtx);
    const DoublePair a = coordinatesOf(pA) - q, b = coordinatesOf(pB) - q, c = coordinatesOf(pC) - q;
    const CircleVerdicts verdicts =
        KelmarTest::inCircleFilters(b, a, coordinatesOf(pFarAB) - q, c, b, coordinatesOf(pFarBC) - q);
    if (verdicts.areDecided()) [[likely]]
        return verdicts.inside;
    return decideFlips(pT, pNextT, pVtx, verdicts);
}

/// Decides what the filter has left undecided.
unsigned Dt2::decideFlips(const Triangle2* pT, const Triangle2* pNextT, const Point2* pVtx,
                          CircleVerdicts verdicts) {
    const auto isWanted = [&](const Triangle2* pOneT, unsigned bit) {
        if (((verdicts.inside | verdicts.outside) & bit) != 0) return (verdicts.inside & bit) != 0;
        return predicates.exact_circleInc(neighbour(pOneT, 0), pVtx);
    };
    return (isWanted(pT, 1) ? 1U : 0U) | (isWanted(pNextT, 2) ? 2U : 0U);
}

/// Flips what vCheckT asks for, and what the flips bring to light. Depth first: of the two triangles that a flip has made
/// the partner goes on, and the other one waits on the stack. A test may be made long before its flip: no flip in between
/// reaches the triangle across.
NORVIK2D_HOT_LOOP void Dt2::flipUntilDelaunay(const Point2* pVtx) {
    while (!vCheckT.empty()) {
        Triangle2* pT = vCheckT.back();
        vCheckT.pop_back();
        while (!isConstraint(pT, 0) && !bNoFlips) {
            const auto [pU, b, w, c, pFarBW, pFarWC] = flipEdge(pT, 0);
            const unsigned wanted = wantedFlips(pT, pU, pVtx, b, w, c, pFarBW, pFarWC);
            if ((wanted & 2U) != 0) {
                if ((wanted & 1U) != 0) vCheckT.push_back(pT);
                pT = pU;
            } else if ((wanted & 1U) == 0) {
                break;
            }
        }
    }
}

/// Legalises the triangles of vRound, all of which have the vertex as corner 0; breadth first.
NORVIK2D_HOT_LOOP void Dt2::legaliseInRounds(const Point2* pVtx) {
    while (!vRound.empty()) {
        vNextRound.clear();
        for (Triangle2* pT : vRound) {
            Triangle2* pU = neighbour(pT, 0);
            if (pU == nullptr || isConstraint(pT, 0)) continue;
            // Without flips only a triangle without area gets one: the mesh wouldn't be valid otherwise.
            if (bNoFlips &&
                predicates.getOrientation2(corner(pT, 1), corner(pT, 2), pVtx) != ORIENTATION2_COLLINEAR)
                continue;
            if (!isFlipWanted(pT, pVtx)) continue;
            flipEdge(pT, 0);
            vNextRound.push_back(pT);
            vNextRound.push_back(pU);
        }
        std::swap(vRound, vNextRound);
    }
}

// ---------------------------------------------------------------------------------- insertion of one point

Point2* Dt2::insert(const Point2& point) {
    if (!std::isfinite(point.x()) || !std::isfinite(point.y())) {
        warning("Dt2::insert()", "non-finite coordinates, nothing done");
        return nullptr;
    }
    if (!box.isInBox(point)) {
        box.add(point);
        hReconfiguration();
    }
    if (!is2D()) return insertWhileDegenerate(point);

    Point2* pVtx = newVertex(point);
    const std::uint32_t key = hc.iReset(point);
    vertexVault.addItem(key, pVtx);
    insertVertex(pVtx, vertexVault.getCloseTriangle(key));
    if (!vertexVault.dupIsClean()) return vertexVault.treatOneDupGetHandle(pVtx);
    vertexVault.sortIV(SORT_IF_NEEDED);
    return pVtx;
}

/// Without triangles a duplicate can only be found by looking at all points. This phase is meant to be short.
Point2* Dt2::insertWhileDegenerate(const Point2& point) {
    for (const IdxVtxAct* pItem : *vertexVault.getData())
        if (pItem->bAct && samePoint(pItem->pVtx, &point)) return pItem->pVtx;
    Point2* pVtx = newVertex(point);
    vertexVault.addItem(hc.iReset(point), pVtx);
    createFullDimTriangle(0);
    return pVtx;
}

/// The box has changed: it is doubled, so that this happens seldom, and all keys refer to the new one.
void Dt2::hReconfiguration() {
    box.doubleTheBox();
    hc = HC2(box.getMinX(), box.getMinY(), box.getMaxX(), box.getMaxY(), hilbertKeyBits);
    vertexVault.reconfiguration();
}

Triangle2* Dt2::insertVertex(Point2*& pVtx, Triangle2* pStartT) {
    int edge = -1;
    Triangle2* pT = pStartT;
    const int code = walkToConflict(predicates, pVtx, pT, edge);
    return insertLocated(pVtx, pT, code, edge);
}

/// Inserts a vertex where a walk has ended.
Triangle2* Dt2::insertLocated(Point2*& pVtx, Triangle2* pT, int code, int edge) {
    if (progress.isTracked()) [[unlikely]]
        progress.incProgress(1);
    if (code != LOCATE_INSIDE) return triangulateCoplanarOrDuplicate(pVtx, pT, code);

    Triangle2* pResult = edge < 0 ? initVCheckT13(pT, pVtx) : initVCheckT24(pT, pVtx, edge);
    flipUntilDelaunay(pVtx);
    return pResult;
}

int Dt2::locateConflictTriangle(const Point2* pVtx, Triangle2*& pT, int& edgeIndex) {
    return walkToConflict(predicates, pVtx, pT, edgeIndex);
}

Triangle2* Dt2::triangulateCoplanarOrDuplicate(Point2*& pVtx, Triangle2* pT, int code) {
    if (code != LOCATE_DUPLICATE) return insertVertexCH(pVtx, pT, code);
    for (int i = 0; i < 3; ++i) {
        if (!samePoint(corner(pT, i), pVtx)) continue;
        vertexVault.registerDup(pVtx, corner(pT, i));
        return pT;
    }
    error("triangulateCoplanarOrDuplicate()", "Proxy not found");
    require(false, "false");
    return nullptr;
}

NORVIK2D_HOT_LOOP Triangle2* Dt2::initVCheckT13(Triangle2* pT, Point2* p) {
    //         a
    //        /|\           T becomes (p,a,b), A is (p,b,c), B is (p,c,a)
    //       / p \          nX: the neighbour opposite x
    //      b --- c
    Point2* const a = corner(pT, 0);
    Point2* const b = corner(pT, 1);
    Point2* const c = corner(pT, 2);
    Triangle2* const nA = neighbour(pT, 0);
    Triangle2* const nB = neighbour(pT, 1);
    Triangle2* const nC = neighbour(pT, 2);
    Triangle2* const pA = takeTriangle();
    Triangle2* const pB = takeTriangle();

    setCorners(pT, p, a, b);
    setNeighbours(pT, nC, pA, pB);
    setCorners(pA, p, b, c);
    setNeighbours(pA, nA, pB, pT);
    setCorners(pB, p, c, a);
    setNeighbours(pB, nB, pT, pA);
    setIncidentTriangle(p, pT);
    setIncidentTriangle(a, pT);
    setIncidentTriangle(b, pT);
    setIncidentTriangle(c, pB);
    const Point2* const pFarA = replaceNeighbour(nA, pT, pA);
    const Point2* const pFarB = replaceNeighbour(nB, pT, pB);
    const Point2* const pFarC = farCornerOrNull(nC, pT);

    // All tests before the first jump that depends on one: which way it goes can't be predicted.
    const unsigned wanted = wantedFlips(pT, pA, p, a, b, c, pFarC, pFarA);
    const bool bWantedB = isFlipWanted(pB, p, c, a, pFarB);
    if ((wanted & 1U) != 0) vCheckT.push_back(pT);
    if ((wanted & 2U) != 0) vCheckT.push_back(pA);
    if (bWantedB) vCheckT.push_back(pB);
    return pT;
}

NORVIK2D_HOT_LOOP Triangle2* Dt2::initVCheckT24(Triangle2* pT, Point2* p, int edge) {
    //         a
    //      T / \           T becomes (p,c,a), U becomes (p,a,b),
    //       b-p-c          V is (p,b,d), W is (p,d,c)
    //      U \ /
    //         d
    Triangle2* const pU = neighbour(pT, edge);
    require(pU != nullptr, "pNeigA!=__null");
    const int j = indexOf(pU, pT);
    Point2* const a = corner(pT, edge);
    Point2* const b = corner(pT, ccw(edge));
    Point2* const c = corner(pT, cw(edge));
    Point2* const d = corner(pU, j);
    Triangle2* const nCA = neighbour(pT, ccw(edge));
    Triangle2* const nAB = neighbour(pT, cw(edge));
    Triangle2* const nBD = neighbour(pU, ccw(j));
    Triangle2* const nDC = neighbour(pU, cw(j));

    Triangle2* const pV = takeTriangle();
    Triangle2* const pW = takeTriangle();

    setCorners(pT, p, c, a);
    setNeighbours(pT, nCA, pU, pW);
    setCorners(pU, p, a, b);
    setNeighbours(pU, nAB, pV, pT);
    setCorners(pV, p, b, d);
    setNeighbours(pV, nBD, pW, pU);
    setCorners(pW, p, d, c);
    setNeighbours(pW, nDC, pT, pV);
    setIncidentTriangle(a, pU);
    setIncidentTriangle(b, pV);
    for (Point2* pVtx : {p, c, d}) setIncidentTriangle(pVtx, pW);
    // Where b has three triangles only, nAB is nBD: it has to lose U on that side before it gets U on the
    // other.
    const Point2* const pFarBD = replaceNeighbour(nBD, pU, pV);
    const Point2* const pFarDC = replaceNeighbour(nDC, pU, pW);
    const Point2* const pFarAB = replaceNeighbour(nAB, pT, pU);
    const Point2* const pFarCA = farCornerOrNull(nCA, pT);

    const unsigned wantedTU = wantedFlips(pT, pU, p, c, a, b, pFarCA, pFarAB);
    const unsigned wantedVW = wantedFlips(pV, pW, p, b, d, c, pFarBD, pFarDC);
    if ((wantedTU & 1U) != 0) vCheckT.push_back(pT);
    if ((wantedTU & 2U) != 0) vCheckT.push_back(pU);
    if ((wantedVW & 1U) != 0) vCheckT.push_back(pV);
    if ((wantedVW & 2U) != 0) vCheckT.push_back(pW);
    return pT;
}

void Dt2::flip(Triangle2* pT, int edge) { flipEdge(pT, edge); }

bool Dt2::canBeFlipped(const Triangle2* pT, int edge) {
    if (neighbour(pT, edge) == nullptr || isConstraint(pT, edge)) return false;
    const Point2* a = corner(pT, edge);
    const Point2* w = farCorner(pT, edge);
    return predicates.getOrientation2(a, w, corner(pT, ccw(edge))) == ORIENTATION2_CW &&
           predicates.getOrientation2(a, w, corner(pT, cw(edge))) == ORIENTATION2_CCW;
}

// ---------------------------------------------------------------------------------------------- hull growth

/// A hull edge that the point is only collinear with isn't visible.
bool Dt2::sees(const Point2* pVtx, const Side& side) {
    const auto [pT, edge] = side;
    return predicates.getOrientation2(corner(pT, ccw(edge)), corner(pT, cw(edge)), pVtx) == ORIENTATION2_CW;
}

void Dt2::determineHullPatchLeft(std::vector<Side>& out, Triangle2* pT, int edge, const Point2* pVtx) {
    for (Side side = previousHullSide({pT, edge}); sees(pVtx, side); side = previousHullSide(side))
        out.push_back(side);
}

void Dt2::determineHullPatchRight(std::vector<Side>& out, Triangle2* pT, int edge, const Point2* pVtx) {
    for (Side side = nextHullSide({pT, edge}); sees(pVtx, side); side = nextHullSide(side))
        out.push_back(side);
}

Triangle2* Dt2::insertVertexCH(Point2* pVtx, Triangle2* pT, int edge) {
    vHullLeft.clear();
    vHullRight.assign(1,
                      {pT, edge});  // the start edge is in the list, whether the point sees it or lies on it
    determineHullPatchLeft(vHullLeft, pT, edge, pVtx);
    determineHullPatchRight(vHullRight, pT, edge, pVtx);

    vRound.clear();
    const bool bOneEdge = vHullLeft.empty() && vHullRight.size() == 1;
    if (bOneEdge && predicates.getOrientation2(corner(pT, ccw(edge)), corner(pT, cw(edge)), pVtx) ==
                        ORIENTATION2_COLLINEAR) {
        splitHullEdge(pT, edge, pVtx);
    } else {
        attachToHull(pVtx);
    }
    Triangle2* pResult = bOneEdge ? vRound.front() : vRound.back();
    legaliseInRounds(pVtx);
    return pResult;
}

/// A triangle across each visible hull edge, in counterclockwise order of the hull.
void Dt2::attachToHull(Point2* pVtx) {
    const auto attach = [&](const Side& side) {
        const auto [pU, edge] = side;
        Triangle2* pNew = createTriangle(pVtx, corner(pU, cw(edge)), corner(pU, ccw(edge)));
        setNeighbour(pU, edge, pNew);
        setNeighbour(pNew, 0, pU);
        if (!vRound.empty()) {
            setNeighbour(vRound.back(), 2, pNew);
            setNeighbour(pNew, 1, vRound.back());
        }
        vRound.push_back(pNew);
    };
    std::for_each(vHullLeft.rbegin(), vHullLeft.rend(), attach);
    std::for_each(vHullRight.begin(), vHullRight.end(), attach);
}

void Dt2::splitHullEdge(Triangle2* pT, int edge, Point2* p) {
    //         a
    //        /|\           T becomes (p,a,b), W is (p,c,a);
    //       / | \          their outer edges at p are the halves of the hull edge
    //      b--p--c
    Point2* const a = corner(pT, edge);
    Point2* const b = corner(pT, ccw(edge));
    Point2* const c = corner(pT, cw(edge));
    Triangle2* const nB = neighbour(pT, ccw(edge));
    Triangle2* const nC = neighbour(pT, cw(edge));
    Triangle2* const pW = createTriangle(p, c, a);

    setCorners(pT, p, a, b);
    setNeighbours(pT, nC, nullptr, pW);
    setNeighbours(pW, nB, pT, nullptr);
    replaceNeighbour(nB, pT, pW);
    for (Point2* pVtx : {p, a, b}) setIncidentTriangle(pVtx, pT);
    vRound.assign({pT, pW});
}

}  // namespace KELMAR_NORVIK2D
