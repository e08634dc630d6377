#include <algorithm>
#include <cmath>
#include <limits>

#include "Dt2.h"
#include "UmbrellaWalk.h"
#include "diagnostics.h"
#include "distance.h"
#include "geometryTools.h"
#include "require.h"

namespace KELMAR_NORVIK2D {

// --------------------------------------------------------------------------------------------- input

namespace {

bool areFinite(const std::vector<Segment2>& vSegments) {
    for (const Segment2& segment : vSegments) {
        if (isFinite(segment.getSrc()) && isFinite(segment.getTrg())) continue;
        warning("Dt2::createConstraint()", "non-finite coordinates, nothing done");
        return false;
    }
    return true;
}

}  // namespace

ConstraintGraph2* Dt2::createConstraint(const std::vector<Segment2>& vSegments,
                                        ConstraintInsertionStrategy cis, bool bOrientedSegments) {
    if (vSegments.empty()) {
        warning("Dt2::createConstraint(..)", "vSegments is empty, returning NULL");
        return nullptr;
    }
    if (!areFinite(vSegments)) return nullptr;
    return bOrientedSegments ? constraintMgr.createConstraint_oriented(vSegments, cis)
                             : constraintMgr.createConstraint(vSegments, cis);
}

ConstraintGraph2* Dt2::createConstraint(const std::vector<Edge2*>& vEdges, ConstraintInsertionStrategy cis) {
    if (vEdges.empty()) {
        warning("Dt2::createConstraint(..)", "vEdges is empty, returning NULL");
        return nullptr;
    }
    return constraintMgr.createConstraint(vEdges, cis, true);
}

bool Dt2::establishUndivided(const std::vector<Segment2>& vSegments) {
    if (!areFinite(vSegments)) return false;
    std::vector<double> vCoordinates;
    for (const Segment2& segment : vSegments)
        for (const Point2& end : {segment.getSrc(), segment.getTrg()})
            vCoordinates.insert(vCoordinates.end(), {end.x(), end.y()});
    std::vector<Point2*> vEnds(2 * vSegments.size());
    insert(static_cast<int>(vEnds.size()), vCoordinates.data(), vEnds.data());

    std::vector<ConstraintMgr::PointPair> vPairs;
    for (std::size_t i = 0; i < vEnds.size(); i += 2) vPairs.emplace_back(vEnds[i], vEnds[i + 1]);
    const ConstraintGraph2* const pGraph =
        constraintMgr.createConstraint(vPairs, CIS_CONSTRAINED_DELAUNAY, false);
    if (!is2D()) return true;
    std::vector<ConstraintSegment2*> vRecords;
    pGraph->getAliveConstraintChain(vRecords);
    return std::all_of(vRecords.begin(), vRecords.end(), [this](ConstraintSegment2* pCSeg) {
        Crossings crossings;
        return newCDT_traverseCZ(pCSeg, crossings) == nullptr && crossings.empty();
    });
}

void Dt2::applyConstraintsAndZones() {
    if (!is2D()) {
        warning("Dt2::applyConstraintsAndZones()",
                "The triangulation is not full dimensional yet. Nothing to do");
        return;
    }
    constraintMgr.apply();
}

/// The vertex comes to lie on an edge: if that is a constraint, it is divided there.
void Dt2::splitConstraintAt(Point2* pVtx, Point2* pEnd0, Point2* pEnd1) {
    if (!isConstraint(pEnd0, pEnd1)) return;
    ConstraintSegment2* const pCSeg = constraintMgr.getAliveConstraintSegment(pEnd0, pEnd1);
    require(pCSeg != nullptr, "pCSeg!=__null");
    const bool bOK = pCSeg->split_combinatorialOnly(pVtx);
    require(bOK, "bOK");
}

// ------------------------------------------------------------------------------- the beginning of a segment

namespace {

/// How a segment begins at its source: it is an edge, or it runs into a vertex next to the source, or into a triangle,
/// through which it leaves across the edge opposite the source.
struct Beginning {
    enum Kind { EDGE, VERTEX, TRIANGLE } kind = EDGE;
    Triangle2* pT = nullptr;
    Point2* pVtx = nullptr;  ///< of a VERTEX, else null
};

/// Looks for the beginning of a segment by turning around its source.
class TurnAroundSource {
public:
    TurnAroundSource(KelmarTest& predicates_, Point2* pSrc_, Point2* pTrg_)
        : predicates(&predicates_), pSrc(pSrc_), pTrg(pTrg_), umbrella(pSrc_) {}

    /// Looks at one triangle. Whether it holds the beginning.
    bool step(Beginning& beginning) {
        Triangle2* const pT = umbrella.getTriangle();
        const int k = indexOf(pT, pSrc);
        Point2* const b = corner(pT, ccw(k));
        Point2* const c = corner(pT, cw(k));
        if (b == pTrg || c == pTrg) {
            beginning = {Beginning::EDGE, pT, nullptr};
            return true;
        }
        const Orientation2 sideOfB = b == pLastC ? sideOfLastC : sideOf(b);
        const Orientation2 sideOfC = sideOf(c);
        require(sideOfB != ORIENTATION2_COLLINEAR || sideOfC != ORIENTATION2_COLLINEAR,
                "!(ori1==ORIENTATION2_COLLINEAR && ori2==ORIENTATION2_COLLINEAR)");
        if (sideOfB == ORIENTATION2_COLLINEAR && sideOfC == ORIENTATION2_CCW) {
            beginning = {Beginning::VERTEX, pT, b};
            return true;
        }
        if (sideOfC == ORIENTATION2_COLLINEAR && sideOfB == ORIENTATION2_CW) {
            beginning = {Beginning::VERTEX, pT, c};
            return true;
        }
        if (sideOfB == ORIENTATION2_CW && sideOfC == ORIENTATION2_CCW) {
            beginning = {Beginning::TRIANGLE, pT, nullptr};
            return true;
        }
        pLastC = c;
        sideOfLastC = sideOfC;
        // Straight lines from a vertex to another one begin in the mesh, as its outline is convex.
        require(umbrella.advance(), "!bAround");
        return false;
    }

private:
    Orientation2 sideOf(const Point2* pVtx) const { return predicates->getOrientation2(pSrc, pTrg, pVtx); }

    KelmarTest* predicates;
    Point2 *pSrc, *pTrg;
    UmbrellaWalk umbrella;
    const Point2* pLastC = nullptr;
    Orientation2 sideOfLastC = ORIENTATION2_COLLINEAR;
};

/// Looks for the beginning of a segment by walking along it from its target: where very many triangles meet at the source,
/// that is shorter.
class WalkFromTarget {
public:
    WalkFromTarget(KelmarTest& predicates_, Point2* pSrc_, Point2* pTrg_)
        : predicates(predicates_), pSrc(pSrc_), pTrg(pTrg_), pFrom(pTrg_), turn(predicates_, pTrg_, pSrc_) {}

    bool step(Beginning& beginning) {
        if (pT == nullptr) return stepAround(beginning);
        Triangle2* const pNext = neighbour(pT, exit);
        const int j = indexOf(pNext, pT);
        Point2* const v = corner(pNext, j);
        pT = pNext;
        if (v == pSrc) {
            beginning = {Beginning::TRIANGLE, pNext, nullptr};
            return true;
        }
        switch (predicates.getOrientation2(pTrg, pSrc, v)) {
            case ORIENTATION2_CCW:
                exit = ccw(j);
                break;
            case ORIENTATION2_CW:
                exit = cw(j);
                break;
            default:
                startAt(v);
        }
        return false;
    }

private:
    /// Turns around a vertex on the segment.
    bool stepAround(Beginning& beginning) {
        Beginning fromHere;
        if (!turn.step(fromHere)) return false;
        switch (fromHere.kind) {
            case Beginning::EDGE:
                beginning = fromHere;
                if (pFrom != pTrg) beginning = {Beginning::VERTEX, fromHere.pT, pFrom};
                return true;
            case Beginning::VERTEX:
                startAt(fromHere.pVtx);
                return false;
            default:
                pT = fromHere.pT;
                exit = indexOf(pT, pFrom);
                return false;
        }
    }

    void startAt(Point2* pVtx) {
        pFrom = pVtx;
        pT = nullptr;
        turn = TurnAroundSource(predicates, pVtx, pSrc);
    }

    KelmarTest& predicates;
    Point2 *pSrc, *pTrg;
    Point2* pFrom;          ///< the last vertex on the segment
    TurnAroundSource turn;  ///< around it
    Triangle2* pT = nullptr;
    int exit = 0;
};

constexpr int numUsualTriangles = 32;

/// A triangle with the edge between two vertices, if it is among the first ones around the source. Null says nothing.
Triangle2* findEdgeNearby(const Point2* pSrc, const Point2* pTrg) {
    UmbrellaWalk umbrella(pSrc);
    for (int i = 0; i < numUsualTriangles; ++i) {
        Triangle2* const pT = umbrella.getTriangle();
        if (corner(pT, 0) == pTrg || corner(pT, 1) == pTrg || corner(pT, 2) == pTrg) return pT;
        if (!umbrella.advance()) break;
    }
    return nullptr;
}

/// The beginning of a segment. Most are edges already, which takes no predicate to see. At a source with very many triangles
/// both searches take steps by turns, and the first to arrive answers; both answers are the same.
Beginning beginningOf(KelmarTest& predicates, Point2* pSrc, Point2* pTrg) {
    if (Triangle2* const pT = findEdgeNearby(pSrc, pTrg)) return {Beginning::EDGE, pT, nullptr};
    Beginning beginning;
    TurnAroundSource turn(predicates, pSrc, pTrg);
    for (int i = 0; i < numUsualTriangles; ++i)
        if (turn.step(beginning)) return beginning;
    WalkFromTarget walk(predicates, pSrc, pTrg);
    while (!turn.step(beginning) && !walk.step(beginning)) {
    }
    return beginning;
}

}  // namespace

// ------------------------------------------------------------------------------------- constrained segments

void Dt2::newCDT_applyOneCS(ConstraintSegment2* pInitialCSeg) {
    require(pInitialCSeg->getCIS() == CIS_CONSTRAINED_DELAUNAY,
            "pInitialCSeg->getCIS()==CIS_CONSTRAINED_DELAUNAY");
    require(pInitialCSeg->isAlive(), "pInitialCSeg->isAlive()");
    if (pInitialCSeg->getSrc() == pInitialCSeg->getTrg()) {
        warning("Dt2::newCDT_applyOneCS()", "Degenerate constraint, return");
        return;
    }
    establish(pInitialCSeg);
}

/// Makes an alive record, or what it has to be divided into, edges.
///
/// A straight line crosses each of the others once at most. The rounded pieces of lines that are nearly the same cross each other
/// again and again, though: where the crossings are many more than all records there are, nothing is divided any more, and what
/// crosses stays out.
void Dt2::establish(ConstraintSegment2* pInitialCSeg) {
    constexpr std::size_t mostRepeated = 20000;
    const bool bWasOver = bDividingIsOver;
    if (!bWasOver) numDivisionsLeft = mostRepeated + constraintMgr.getNumberOfRecords();
    // What still has to become an edge, pieces of other segments that were in the way included.
    std::vector<ConstraintSegment2*> stack;
    newCDT_insertOrSplit(pInitialCSeg, stack);
    while (!stack.empty() && bDividingIsOver == bWasOver) {
        ConstraintSegment2* const pCSeg = stack.back();
        stack.pop_back();
        if (!pCSeg->isAlive()) {
            pCSeg->getChildrenRec(stack);
        } else if (pCSeg->getSrc() == pCSeg->getTrg()) {
            warning("Dt2::newCDT_applyOneCS()", "Degenerate constraint (2), return");
        } else {
            newCDT_insertOrSplit(pCSeg, stack);
        }
    }
}

void Dt2::newCDT_insertOrSplit(ConstraintSegment2* pCSeg, std::vector<ConstraintSegment2*>& stack) {
    Crossings vPairIspCS;
    Point2* const pExistingVertex = newCDT_traverseCZ(pCSeg, vPairIspCS);
    if (pExistingVertex != nullptr) {
        require(vPairIspCS.empty(), "vPairIspCS.empty()");
        require(pExistingVertex != pCSeg->getSrc(), "pExistingVertex!=pCSeg->getSrc()");
        require(pExistingVertex != pCSeg->getTrg(), "pExistingVertex!=pCSeg->getTrg()");
        if (pCSeg->split_combinatorialOnly(pExistingVertex)) pCSeg->getChildrenRec(stack);
        return;
    }
    if (vPairIspCS.empty() || !mayDivideAtCrossing()) return;
    require(vPairIspCS.size() == 1, "vPairIspCS.size()==1");
    const auto& [splitPoint, pCrossingCSeg] = vPairIspCS.front();
    require(splitPoint != *pCrossingCSeg->getSrc() && splitPoint != *pCrossingCSeg->getTrg(),
            "splitPoint!=*pCrossingCSeg->getSrc() && splitPoint!=*pCrossingCSeg->getTrg()");

    // Both are suspended while the vertex comes in, so that its insertion divides neither.
    const auto splitSuspended = [&](ConstraintSegment2* pSuspended, Point2* pSplit) {
        pSuspended->unkill();
        if (!pSuspended->split_combinatorialOnly(pSplit)) return false;
        pSuspended->kill();
        pSuspended->getChildrenRec(stack);
        return true;
    };
    const bool bSplitSelf = splitPoint != *pCSeg->getSrc() && splitPoint != *pCSeg->getTrg();
    Triangle2* const pNear = killAndUnestablishConstraintSegment(pCrossingCSeg);
    if (bSplitSelf) killAndUnestablishConstraintSegment(pCSeg);
    Point2* const pNew = insert(splitPoint, pNear);
    const bool bWayIsFree = splitSuspended(pCrossingCSeg, pNew);
    if (bSplitSelf) {
        splitSuspended(pCSeg, pNew);
    } else {
        require(pCSeg->isAlive(), "pCSeg->isAlive()");
        if (bWayIsFree) stack.push_back(pCSeg);
    }
}

bool Dt2::mayDivideAtCrossing() {
    if (numDivisionsLeft > 0) {
        --numDivisionsLeft;
        return true;
    }
    if (!bDividingIsOver) endDividing("Dt2::newCDT_applyOneCS()");
    return false;
}

void Dt2::endDividing(const char* place) {
    bDividingIsOver = true;
    numDivisionsLeft = 0;
    warning(place, "insufficient numeric accuracy, need to skip last insertions");
}

Point2* Dt2::newCDT_traverseCZ(ConstraintSegment2* pCSeg, Crossings& vPairIspCS) {
    Point2* const s = pCSeg->getSrc();
    Point2* const t = pCSeg->getTrg();
    require(s->getIncidentTriangle() != nullptr, "pStart->getIncidentTriangle()!=NULL");
    require(t->getIncidentTriangle() != nullptr, "pStop->getIncidentTriangle()!=NULL");
    if (s == t) {
        warning("Dt2::newCDT_traverseCZ()", "degenerate constraint segment, nothing to do");
        return nullptr;
    }
    const Beginning beginning = beginningOf(predicates, s, t);
    if (beginning.kind == Beginning::EDGE) return nullptr;
    if (beginning.pVtx != nullptr) {
        // As part of a constraint it isn't refinement's to remove any more.
        innerVtxMgr.eraseVtx(beginning.pVtx);
        return beginning.pVtx;
    }

    Triangle2* pT = beginning.pT;
    int exit = indexOf(pT, s);
    if (farCorner(pT, exit) == t && !isConstraint(pT, exit)) {
        // Two crossed triangles become those two that rebuilding would make of them.
        flipEdge(pT, exit);
        return nullptr;
    }

    // The crossed triangles, and the edges along them to the right and to the left.
    vRightChain.assign(1, {pT, cw(exit)});
    vLeftChain.assign(1, {pT, ccw(exit)});
    vCrossedT.assign(1, pT);
    for (Point2* v = nullptr; v != t;) {
        Triangle2* const pNext = neighbour(pT, exit);
        const int j = indexOf(pNext, pT);
        if (isConstraint(pNext, j)) return reportCrossing(pCSeg, Edge2(pNext, j), vPairIspCS);
        vCrossedT.push_back(pNext);
        pT = pNext;
        v = corner(pNext, j);
        const Orientation2 side = v == t ? ORIENTATION2_COLLINEAR : predicates.getOrientation2(s, t, v);
        if (side == ORIENTATION2_COLLINEAR && v != t) {
            vPairIspCS.clear();
            return v;
        }
        if (side != ORIENTATION2_CW) {
            vLeftChain.push_back({pNext, cw(j)});
            exit = ccw(j);
        }
        if (side != ORIENTATION2_CCW) {
            vRightChain.push_back({pNext, ccw(j)});
            exit = cw(j);
        }
    }
    require(vPairIspCS.empty(), "vPairIspCS.empty()");
    rebuildConflictZone();
    return nullptr;
}

/// Where a segment meets the constraint across its way: the vertex if the crossing falls on one, null otherwise.
Point2* Dt2::reportCrossing(const ConstraintSegment2* pCSeg, const Edge2& crossed, Crossings& vPairIspCS) {
    Point2* const a = crossed.getSrc();
    Point2* const b = crossed.getTrg();
    Point2 p;
    const bool bGood = getIntersectionPoint(*a, *b, *pCSeg->getSrc(), *pCSeg->getTrg(), p);
    if (p == *a) return a;
    if (p == *b) return b;
    if (!bGood)
        warning("Dt2::treatConstraintZone()",
                "intersection point of two constraints has bad numerica accuracy!");
    vPairIspCS.emplace_back(p, constraintMgr.getAliveConstraintSegment(a, b));
    require(vPairIspCS.size() == 1, "vPairIspCS.size()==1");
    return nullptr;
}

/// Replaces the crossed triangles by those of the two polygons on both sides of the segment. Only the diagonals of the polygons
/// are tested: the triangles around the polygons, with their edges to them, belong to the new mesh as they did to the old one.
void Dt2::rebuildConflictZone() {
    vNewT.clear();
    vDiagonals.clear();
    Triangle2* const pRight = triangulatePolygon(vRightChain, vNewT);
    // It was gathered from the source on, and its edges run back to there.
    std::reverse(vLeftChain.begin(), vLeftChain.end());
    Triangle2* const pLeft = triangulatePolygon(vLeftChain, vNewT);
    setNeighbour(pLeft, 1, pRight);
    setNeighbour(pRight, 1, pLeft);
    // Only now: they have carried the edges of both polygons.
    for (Triangle2* pT : vCrossedT) {
        makeDead(pT);
        recycledTriangles.push_back(pT);
    }
    flipBackToDelaunay(vDiagonals);
}

namespace {

/// Closes a corner between two edges of a chain by a triangle. The old triangles carry the edges that are still to be closed:
/// where an ear a-b-c is cut off, the carrier of a-b carries a-c from then on.
///
///            b
///      u1  /   \  u2          the ear E = (a,b,c) takes the place of the carriers T1 of a-b and T2 of b-c at their
///        /   E   \            outer neighbours u1 and u2; T1 becomes its neighbour 1
///       a ------- c
///           T1
Triangle2* cutOffEar(Dt2& mesh, const Side& carrierAB, const Side& carrierBC) {
    const auto [pT1, i1] = carrierAB;
    const auto [pT2, i2] = carrierBC;
    Point2* const a = corner(pT1, ccw(i1));
    Point2* const b = corner(pT1, cw(i1));
    Point2* const c = corner(pT2, cw(i2));
    Triangle2* const pOuter1 = neighbour(pT1, i1);
    Triangle2* const pOuter2 = neighbour(pT2, i2);
    Triangle2* const pEar = mesh.createTriangle(a, b, c);
    replaceNeighbour(pOuter1, pT1, pEar);
    replaceNeighbour(pOuter2, pT2, pEar);
    setNeighbours(pEar, pOuter2, pT1, pOuter1);
    setCorner(pT1, cw(i1), c);
    setNeighbour(pT1, i1, pEar);
    return pEar;
}

}  // namespace

/// Cuts off ears, pass after pass. Mostly there is one only.
Triangle2* Dt2::triangulatePolygon(const std::vector<Border>& chain, std::vector<Triangle2*>& vOut) {
    if (chain.size() == 2) {
        vOut.push_back(cutOffEar(*this, chain[0], chain[1]));
        return vOut.back();
    }
    constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
    const std::size_t numNodes = chain.size();
    vChainNodes.resize(numNodes);
    vCandidates.clear();
    for (std::size_t i = 0; i < numNodes; ++i) {
        vChainNodes[i] = {chain[i], i == 0 ? none : i - 1, i + 1 == numNodes ? none : i + 1};
        vCandidates.push_back(i);
    }
    Triangle2* pEar = nullptr;
    // A corner that isn't convex stays so until one of its edges is replaced: each pass looks at the corners behind the nodes
    // that the pass before has changed.
    while (vChainNodes[0].next != none) {
        vNextCandidates.clear();
        for (const std::size_t i : vCandidates) {
            ChainNode& node = vChainNodes[i];
            if (node.bUnlinked || node.next == none) continue;
            ChainNode& nextNode = vChainNodes[node.next];
            const auto [pT1, i1] = node.border;
            const auto [pT2, i2] = nextNode.border;
            if (predicates.getOrientation2(corner(pT1, ccw(i1)), corner(pT1, cw(i1)), corner(pT2, cw(i2))) !=
                ORIENTATION2_CCW)
                continue;

            pEar = cutOffEar(*this, node.border, nextNode.border);
            vOut.push_back(pEar);
            if (node.bDiagonal) vDiagonals.emplace_back(pEar, 2);
            if (nextNode.bDiagonal) vDiagonals.emplace_back(pEar, 0);
            node.bDiagonal = true;
            nextNode.bUnlinked = true;
            node.next = nextNode.next;
            if (node.next != none) vChainNodes[node.next].previous = i;
            if (node.previous != none && (vNextCandidates.empty() || vNextCandidates.back() != node.previous))
                vNextCandidates.push_back(node.previous);
            vNextCandidates.push_back(i);
        }
        std::swap(vCandidates, vNextCandidates);
        // A polygon of which all corners are seen from one edge has an ear.
        require(!vCandidates.empty(), "pResult!=__null");
    }
    return pEar;
}

void Dt2::flipToMatchCDT(std::vector<Triangle2*>& vT) {
    std::vector<Side> vOpen;
    for (Triangle2* pT : vT)
        for (int i = 0; i < 3; ++i) vOpen.emplace_back(pT, i);
    vT.clear();
    flipBackToDelaunay(vOpen);
}

Triangle2* Dt2::killAndUnestablishConstraintSegment(ConstraintSegment2* pCSeg) {
    pCSeg->kill();
    return legaliseEdge(pCSeg->getSrc(), pCSeg->getTrg());
}

Triangle2* Dt2::legaliseEdge(Point2* pSrc, Point2* pTrg) {
    Triangle2* const pT = getAdjacentTriangle(pSrc, pTrg);
    if (pT == nullptr) return nullptr;  // it isn't an edge
    std::vector<Side> vOpen{{pT, cw(indexOf(pT, pSrc))}};
    flipBackToDelaunay(vOpen);
    return pT;
}

// -------------------------------------------------------------------------------------- conforming segments

namespace {

/// Goes straight from a vertex to the triangle with a point, or closer to it: among slivers other ways are long. Begins with a
/// triangle of the vertex in about that direction.
Triangle2* walkTowards(KelmarTest& predicates, const Point2* pFrom, const Point2& point, Triangle2* pT) {
    int exit = indexOf(pT, pFrom);
    const auto right = [&] { return corner(pT, ccw(exit)); };
    const auto left = [&] { return corner(pT, cw(exit)); };
    const auto sideOf = [&](const Point2* pVtx) { return predicates.getOrientation2(pFrom, &point, pVtx); };

    const bool bTurnsRight = sideOf(right()) == ORIENTATION2_CCW;
    while (bTurnsRight ? sideOf(right()) == ORIENTATION2_CCW : sideOf(left()) == ORIENTATION2_CW) {
        Triangle2* const pNext = neighbour(pT, bTurnsRight ? cw(exit) : ccw(exit));
        if (pNext == nullptr) return pT;
        pT = pNext;
        exit = indexOf(pT, pFrom);
    }
    const auto isBeyondExit = [&] {
        return predicates.getOrientation2(right(), left(), &point) == ORIENTATION2_CW &&
               sideOf(right()) != ORIENTATION2_CCW && sideOf(left()) != ORIENTATION2_CW;
    };
    while (neighbour(pT, exit) != nullptr && isBeyondExit()) {
        Triangle2* const pNext = neighbour(pT, exit);
        const int j = indexOf(pNext, pT);
        const bool bLeft = sideOf(corner(pNext, j)) == ORIENTATION2_CCW;
        pT = pNext;
        exit = bLeft ? ccw(j) : cw(j);
    }
    return pT;
}

}  // namespace

void Dt2::insertSegmentConformingDelaunay(ConstraintSegment2* pCSeg) {
    Point2* const s = pCSeg->getSrc();
    Point2* const t = pCSeg->getTrg();
    const Beginning beginning = beginningOf(predicates, s, t);
    if (beginning.kind == Beginning::EDGE) return;
    if (beginning.pVtx != nullptr && hasOnCollinearPoint(*s, *t, *beginning.pVtx)) {
        pCSeg->split_combinatorialOnly(beginning.pVtx);
        return;
    }
    const Point2 middle = centerWithShift(*s, *t);
    if (isTooShortToHalve(*s, *t) || middle == *s || middle == *t) {
        warning("Dt2::insertSegmentConformingDelaunay()",
                "Double precision arithmetic does not allow to split a segment further, giving up. "
                "Incorrect result!");
        return;
    }
    if (!mayHalve()) return;
    ++numHalvings;
    pCSeg->split_combinatorialOnly(insert(middle, walkTowards(predicates, s, middle, beginning.pT)));
}

/// Segments that are nearly on one line halve each other by turns: each time their pieces get shorter there are twice as many. Where
/// that many middles aren't enough, and the mesh has hardly another vertex, nothing is divided any more.
bool Dt2::mayHalve() {
    constexpr std::size_t mostOfAny = 100000;
    constexpr double largestShare = 0.95;
    if (bDividingIsOver) return false;
    const double mostOfThese = largestShare * static_cast<double>(getApproxNumPoints());
    if (numHalvings < mostOfAny || static_cast<double>(numHalvings) < mostOfThese) return true;
    endDividing("Dt2::insertSegmentConformingDelaunay()");
    return false;
}

/// Ten last places of the greatest coordinates are too little.
bool Dt2::isTooShortToHalve(const Point2& a, const Point2& b) const {
    constexpr double leastExponent = -1074.0, greatestExponent = 1024.0;
    const double exponent =
        std::clamp(std::ceil(std::log2(predicates.getBoundMagnitude())), leastExponent, greatestExponent);
    const double tooShort =
        std::ldexp(10.0 * std::numeric_limits<double>::epsilon(), static_cast<int>(exponent));
    return std::fabs(a.x() - b.x()) < tooShort && std::fabs(a.y() - b.y()) < tooShort;
}

void Dt2::getCZ(const Point2& /*src*/, const Point2& /*trg*/, std::vector<Triangle2*>& /*out*/) {
    fatBar("getCZ needs to be finalized");
}

}  // namespace KELMAR_NORVIK2D
