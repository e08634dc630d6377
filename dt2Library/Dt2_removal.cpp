#include <algorithm>

#include "Dt2.h"
#include "Edge2.h"
#include "TriangleMarks.h"
#include "Visualizer2.h"
#include "diagnostics.h"
#include "hotLoop.h"
#include "require.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

/// Flips edges of the triangles of vRound as long as a neighbour's far corner lies in a circumcircle and `mayFlip` allows it; in
/// rounds, breadth first. Dead triangles in the list have no neighbours.
template <class MayFlip>
NORVIK2D_HOT_LOOP void Dt2::flipRoundsUntilDelaunay(MayFlip mayFlip) {
    // The edge between these two is the result of the last flip: testing it would be idle.
    const Triangle2 *pLastT = nullptr, *pLastU = nullptr;
    while (!vRound.empty()) {
        vNextRound.clear();
        for (Triangle2* pT : vRound) {
            for (int i = 0; i < 3; ++i) {
                Triangle2* pU = neighbour(pT, i);
                if ((pT == pLastT && pU == pLastU) || (pT == pLastU && pU == pLastT)) continue;
                if (pU == nullptr) continue;
                if (predicates.circleInc3state(pT, farCorner(pT, i)) != CINC2_INCIRCLE) continue;
                if (!mayFlip(pT, i)) continue;
                flipEdge(pT, i);
                pLastT = pT;
                pLastU = pU;
                vNextRound.push_back(pT);
                vNextRound.push_back(pU);
                addRefCand3(pT);
                addRefCand3(pU);
            }
        }
        std::swap(vRound, vNextRound);
    }
}

void Dt2::remove(Point2* pVtx) {
    if (pVtx == nullptr) {
        warning("Dt2::remove(..)", "pVtx==NULL, illegal, return.");
        return;
    }
    if (isConstraintVertex(pVtx)) {
        warning("Dt2::remove()", "Illegal: Can't remove a constraint vertex");
        return;
    }
    vertexVault.sortIV(SORT_IF_NEEDED);
    if (pVtx->getIncidentTriangle() == nullptr) {
        if (is2D() || !vertexVault.isActive(pVtx)) {
            warning("Dt2::remove()", "vertex does not belong to the triangulation, return");
            return;
        }
        vertexVault.removeAndInvalidateVtx(pVtx);
        return;
    }
    vertexVault.prefetchItem(pVtx);
    if (!collectUmbrella(pVtx)) {
        remove_CHVersion(pVtx, true);
        restoreFlippedConstraints();
        return;
    }
    if (!bMayLackDelaunay) detachSurroundings(pVtx);
    reduceDegree(pVtx);
    collapseDegreeThree(pVtx);
    std::swap(vRound, vUmbrellaT);
    flipRoundsUntilDelaunay([&](const Triangle2* pT, int edge) { return !isConstraint(pT, edge); });
    if (!bMayLackDelaunay) attachSurroundings();
    removedVertices.push_back(pVtx);
    vertexVault.removeAndInvalidateVtx(pVtx);
}

/// Collects the triangles around an inner vertex in vUmbrellaT, counterclockwise from its incident triangle;
/// false for a vertex on the hull. In a large mesh the time goes into waiting for memory: so the umbrella is
/// walked both ways at once, and what the removal reads next is asked for on the way.
bool Dt2::collectUmbrella(const Point2* pVtx) {
    vUmbrellaT.clear();
    vRound.clear();
    const auto visit = [&](Triangle2* pT, std::vector<Triangle2*>& vVisited) {
        const int k = indexOf(pT, pVtx);
        for (int i = 0; i < 3; ++i) {
            prefetchTriangle(neighbour(pT, i));
            __builtin_prefetch(corner(pT, i));
        }
        vVisited.push_back(pT);
        return k;
    };
    Triangle2* pForward = pVtx->getIncidentTriangle();
    prefetchTriangle(pForward);
    Triangle2* pBackward = previousAround(pForward, pVtx);
    for (;;) {
        pForward = neighbour(pForward, ccw(visit(pForward, vUmbrellaT)));
        if (pForward == nullptr || pBackward == nullptr) return false;
        if (pForward == pBackward) break;
        pBackward = neighbour(pBackward, cw(visit(pBackward, vRound)));
        if (pBackward == nullptr) return false;
        if (pForward == pBackward) break;
    }
    visit(pForward, vUmbrellaT);
    vUmbrellaT.insert(vUmbrellaT.end(), vRound.rbegin(), vRound.rend());
    return true;
}

/// Cuts the links between the umbrella of an inner vertex and the mesh around it. What the removal leaves there is
/// legalised by itself: the triangles around it keep their empty circles (law 1), so that no edge to them is ever flipped,
/// and most of the memory to wait for isn't needed before the end.
void Dt2::detachSurroundings(const Point2* pVtx) {
    vSurroundings.clear();
    for (Triangle2* pT : vUmbrellaT) {
        const int k = indexOf(pT, pVtx);
        vSurroundings.push_back({corner(pT, ccw(k)), neighbour(pT, k)});
        setNeighbour(pT, k, nullptr);
    }
}

void Dt2::attachSurroundings() {
    for (const auto& [pFrom, pOuter] : vSurroundings) {
        Triangle2* const pT = clockwiseEnd(pFrom->getIncidentTriangle(), pFrom);
        const int edge = cw(indexOf(pT, pFrom));
        setNeighbour(pT, edge, pOuter);
        if (pOuter != nullptr) setNeighbour(pOuter, cw(indexOf(pOuter, corner(pT, cw(edge)))), pT);
    }
}

/// Flips spokes away until three are left. Of an inner vertex with more there is always one that can go.
void Dt2::reduceDegree(Point2* pVtx) {
    auto degree = static_cast<std::ptrdiff_t>(vUmbrellaT.size());
    std::ptrdiff_t attempts = degree;
    Triangle2* pT = vUmbrellaT.front();
    while (degree >= 4) {
        if (--attempts < 0) reportUnflippable(pVtx);
        Triangle2* pFlipped = flipForRemove(pVtx, pT);
        if (pFlipped == nullptr) {
            pT = nextAround(pT, pVtx);
            continue;
        }
        --degree;
        attempts = degree + 1;
        pT = pFlipped;
    }
}

void Dt2::reportUnflippable(const Point2* pVtx) {
    Visualizer2 visualizer(globalPrefix() + "removeFailed.ps");
    show(&visualizer, true);
    visualizer.addObject(*pVtx, Color(1.0, 0.3, 0.3, 1.0, false));
    visualizer.writeFile();
    print(compose("vUmbrellaT.size()=", vUmbrellaT.size(), "\n"));
    conditionFailed("false", __builtin_FILE(), __builtin_LINE());
}

/// Weaker than canBeFlipped on purpose: the vertex may become collinear with the ends of the new edge.
Triangle2* Dt2::flipForRemove(Point2* pVtx, Triangle2* pT) {
    //         w
    //        /|\            T is (v,a,b), U lies across the spoke v-b;
    //      /  b  \          a-w replaces the spoke
    //     v ----- a
    const int k = indexOf(pT, pVtx);
    const Point2* a = corner(pT, ccw(k));
    const Point2* b = corner(pT, cw(k));
    Triangle2* const pU = neighbour(pT, ccw(k));
    const Point2* w = farCorner(pT, ccw(k));
    if (predicates.getOrientation2(a, w, pVtx) == ORIENTATION2_CW) return nullptr;
    if (predicates.getOrientation2(a, b, w) != ORIENTATION2_CCW) return nullptr;
    flipEdge(pT, ccw(k));
    addRefCand3(pT);
    addRefCand3(pU);
    return pU;
}

/// The three triangles around the vertex become one.
void Dt2::collapseDegreeThree(Point2* pVtx) {
    Triangle2* t[3];
    Point2* c[3];
    Triangle2* outer[3];
    Triangle2* pT = pVtx->getIncidentTriangle();
    for (int i = 0; i < 3; ++i) {
        const int k = indexOf(pT, pVtx);
        t[i] = pT;
        c[i] = corner(pT, ccw(k));
        outer[i] = neighbour(pT, k);
        pT = neighbour(pT, ccw(k));
    }
    for (int i = 0; i < 3; ++i) replaceNeighbour(outer[i], t[i], t[0]);
    setCorners(t[0], c[0], c[1], c[2]);
    setNeighbours(t[0], outer[1], outer[2], outer[0]);
    for (Point2* pCorner : c) setIncidentTriangle(pCorner, t[0]);
    addRefCand3(t[0]);
    for (Triangle2* pDeadT : {t[1], t[2]}) {
        makeDead(pDeadT);
        recycledTriangles.push_back(pDeadT);
    }
}

/// The way of a hull vertex: flip what can be flipped, drop what remains, and let the hull shrink.
void Dt2::remove_CHVersion(Point2* pVtx, bool bInvalidate) {
    vRound.clear();
    vUmbrellaT.clear();
    if (pVtx->getIncidentTriangle() != nullptr) flipSpokesAway(pVtx);
    cutOff(pVtx);
    // Without regard to constraints: what the vertex has left behind was cut without regard to them too.
    flipRoundsUntilDelaunay([&](const Triangle2* pT, int edge) {
        if (isConstraint(pT, edge))
            vFlippedConstraints.push_back(
                constraintMgr.getAliveConstraintSegment(corner(pT, ccw(edge)), corner(pT, cw(edge))));
        return true;
    });
    if (!bInvalidate) return;
    removedVertices.push_back(pVtx);
    vertexVault.removeAndInvalidateVtx(pVtx);
}

void Dt2::CAT_removeBoxPoint(Point2* pVtx, const TriangleMarks& givenTriangles) {
    vRound.clear();
    vUmbrellaT.clear();
    flipSpokesAway(pVtx);
    cutOff(pVtx);
    flipRoundsUntilDelaunay([&](const Triangle2* pT, int edge) {
        return !givenTriangles.contains(pT) && !givenTriangles.contains(neighbour(pT, edge));
    });
    removedVertices.push_back(pVtx);
    vertexVault.removeAndInvalidateVtx(pVtx);
}

/// Makes the constraints edges again that gave way to the removal of a hull vertex; conforming ones too, which would get
/// vertices otherwise.
void Dt2::restoreFlippedConstraints() {
    const MuteScope muted(progress);
    for (ConstraintSegment2* pCSeg : vFlippedConstraints)
        if (is2D() && pCSeg->isAlive()) establish(pCSeg);
    vFlippedConstraints.clear();
}

/// Flips spokes of a hull vertex until the triangles left around it see a chain that is nowhere convex
/// towards it. One pass from the clockwise end, with a step back behind each flip, since that may have made
/// the spoke before flippable. The triangles that have lost the vertex are collected in vRound, those that
/// keep it in vUmbrellaT.
void Dt2::flipSpokesAway(Point2* pVtx) {
    Triangle2* pT = clockwiseEnd(pVtx->getIncidentTriangle(), pVtx);
    while (Triangle2* pU = nextAround(pT, pVtx)) {
        const int k = indexOf(pT, pVtx);
        const Point2* w = corner(pU, cw(indexOf(pU, pVtx)));
        if (predicates.getOrientation2(corner(pT, ccw(k)), corner(pT, cw(k)), w) != ORIENTATION2_CCW) {
            pT = pU;
            continue;
        }
        flipEdge(pT, ccw(k));
        vRound.push_back(pT);
        Triangle2* pBefore = previousAround(pU, pVtx);
        pT = pBefore != nullptr ? pBefore : pU;
    }
    for (; pT != nullptr; pT = previousAround(pT, pVtx)) vUmbrellaT.push_back(pT);
}

/// Takes the triangles of vUmbrellaT away from the hull. If nothing lies behind them the mesh is gone.
void Dt2::cutOff(Point2* pVtx) {
    bool bMeshRemains = false;
    for (Triangle2* pT : vUmbrellaT)
        for (int i = 0; i < 3; ++i) setIncidentTriangle(corner(pT, i), nullptr);
    for (Triangle2* pT : vUmbrellaT) {
        Triangle2* pBehind = neighbour(pT, indexOf(pT, pVtx));
        if (pBehind == nullptr) continue;
        bMeshRemains = true;
        replaceNeighbour(pBehind, pT, nullptr);
        for (int i = 0; i < 3; ++i) setIncidentTriangle(corner(pBehind, i), pBehind);
    }
    if (!bMeshRemains) vertexVault.bFullDimensional = false;
    for (Triangle2* pT : vUmbrellaT) {
        makeDead(pT);
        recycledTriangles.push_back(pT);
    }
}

void Dt2::bfsFlipIncident(Point2* pVtx) {
    std::vector<Side> vOpen;
    visitUmbrella(pVtx, [&](Triangle2* pT) {
        vOpen.emplace_back(pT, indexOf(pT, pVtx));
        return false;
    });
    flipBackToDelaunay(vOpen);
}

/// Flips the edges of the stack, and those that the flips bring to light, until all are Delaunay or constraints.
void Dt2::flipBackToDelaunay(std::vector<Side>& vOpen) {
    while (!vOpen.empty()) {
        const auto [pFromT, fromICI] = vOpen.back();
        vOpen.pop_back();
        Triangle2* const pU = neighbour(pFromT, fromICI);
        if (pU == nullptr ||
            predicates.circleInc3state(pFromT, farCorner(pFromT, fromICI)) != CINC2_INCIRCLE ||
            isConstraint(pFromT, fromICI))
            continue;
        require(canBeFlipped(pFromT, fromICI), "canBeFlipped(pFromT,fromICI)");
        flipEdge(pFromT, fromICI);
        for (Triangle2* pT : {pFromT, pU})
            for (int i = 0; i < 3; ++i)
                if (neighbour(pT, i) != pFromT && neighbour(pT, i) != pU) vOpen.emplace_back(pT, i);
    }
}

}  // namespace KELMAR_NORVIK2D
