#include "Dt2.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "diagnostics.h"
#include "distance.h"
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
}

int Dt2::setNumCPU(int n) {
    numCPU = n > 0 ? n : 1;
    if (n == 0) numCPU = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    return numCPU;
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
    require(vFreshTriangles.empty(), "vFreshTriangles.empty()");
    vFreshTriangles.resize(n);
    {
        const std::lock_guard lock(storesMutex);
        for (Triangle2*& pT : vFreshTriangles) pT = trianglePool.get();
    }
    // The first touch of a record may cost a page, which other threads needn't wait for.
    for (Triangle2* pT : vFreshTriangles) makeDead(pT);
}

// ------------------------------------------------------------------------------------------ flips

NORVIK2D_HOT_LOOP void Dt2::flipUntilDelaunay(const Point2* pVtx) {
    flipper.flipUntilDelaunay(pVtx, [&](Triangle2* pT) { return !isConstraint(pT, 0) && !bNoFlips; });
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
            if (!flipper.isFlipWanted(pT, pVtx)) continue;
            flipEdge(pT, 0);
            vNextRound.push_back(pT);
            vNextRound.push_back(pU);
        }
        std::swap(vRound, vNextRound);
    }
}

// ---------------------------------------------------------------------------------- insertion of one point

Point2* Dt2::insert(const Point2& point, Triangle2* pNear) {
    if (!isFinite(point)) {
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
    insertVertex(pVtx, pNear != nullptr ? pNear : vertexVault.getCloseTriangle(key));
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

NORVIK2D_HOT_LOOP Triangle2* Dt2::initVCheckT13(Triangle2* pT, Point2* pVtx) {
    Triangle2* const pA = takeTriangle();
    flipper.splitInThree(pT, pVtx, pA, takeTriangle());
    return pT;
}

NORVIK2D_HOT_LOOP Triangle2* Dt2::initVCheckT24(Triangle2* pT, Point2* pVtx, int edge) {
    require(neighbour(pT, edge) != nullptr, "pNeigA!=__null");
    Point2* const pEnd0 = corner(pT, ccw(edge));
    Point2* const pEnd1 = corner(pT, cw(edge));
    Triangle2* const pV = takeTriangle();
    flipper.splitInFour(pT, pVtx, edge, pV, takeTriangle());
    splitConstraintAt(pVtx, pEnd0, pEnd1);
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
    splitConstraintAt(p, b, c);
    Triangle2* const pW = createTriangle(p, c, a);

    setCorners(pT, p, a, b);
    setNeighbours(pT, nC, nullptr, pW);
    setNeighbours(pW, nB, pT, nullptr);
    replaceNeighbour(nB, pT, pW);
    for (Point2* pVtx : {p, a, b}) setIncidentTriangle(pVtx, pT);
    vRound.assign({pT, pW});
}

}  // namespace KELMAR_NORVIK2D
