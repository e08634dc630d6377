#pragma once

#include <vector>

#include "KelmarTest.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

/// Puts a vertex into the triangle or onto the edge where it lies, and flips edges until all triangles around it are
/// Delaunay again. The triangulation has one; so has each of the workers that insert at the same time, with predicates and
/// a stack of its own.
///
/// Law: the stack holds triangles with the new vertex as corner 0 whose edge 0 is to be flipped. It is empty between
/// insertions and keeps its capacity.
class StarFlipper {
public:
    explicit StarFlipper(KelmarTest& predicates_) : predicates(predicates_) { vCheckT.reserve(64); }

    /// Whether nothing waits to be flipped.
    bool isIdle() const noexcept { return vCheckT.empty(); }

    /// A triangle divided in three: its corners, and the corners beyond its edges, null outside the hull.
    struct DividedTriangle {
        Point2 *a, *b, *c;
        const Point2 *pFarA, *pFarB, *pFarC;
    };

    /// Divides a triangle in three, using the fresh records `pA` and `pB`, and no predicates.
    [[gnu::always_inline]] static DividedTriangle divideInThree(Triangle2* pT, Point2* p, Triangle2* pA,
                                                                Triangle2* pB) {
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
        return {a, b, c, pFarA, pFarB, farCornerOrNull(nC, pT)};
    }

    /// The same, and makes the stack of the edges that are to be flipped.
    [[gnu::always_inline]] void splitInThree(Triangle2* pT, Point2* p, Triangle2* pA, Triangle2* pB) {
        const auto [a, b, c, pFarA, pFarB, pFarC] = divideInThree(pT, p, pA, pB);
        // All tests before the first jump that depends on one: which way it goes can't be predicted.
        const unsigned wanted = wantedFlips(pT, pA, p, a, b, c, pFarC, pFarA);
        const bool bWantedB = isFlipWanted(pB, p, c, a, pFarB);
        if ((wanted & 1U) != 0) vCheckT.push_back(pT);
        if ((wanted & 2U) != 0) vCheckT.push_back(pA);
        if (bWantedB) vCheckT.push_back(pB);
    }

    /// Divides the two triangles at an inner edge in four, using the fresh records `pV` and `pW`.
    [[gnu::always_inline]] void splitInFour(Triangle2* pT, Point2* p, int edge, Triangle2* pV,
                                            Triangle2* pW) {
        //         a
        //      T / \           T becomes (p,c,a), U becomes (p,a,b),
        //       b-p-c          V is (p,b,d), W is (p,d,c)
        //      U \ /
        //         d
        Triangle2* const pU = neighbour(pT, edge);
        const int j = indexOf(pU, pT);
        Point2* const a = corner(pT, edge);
        Point2* const b = corner(pT, ccw(edge));
        Point2* const c = corner(pT, cw(edge));
        Point2* const d = corner(pU, j);
        Triangle2* const nCA = neighbour(pT, ccw(edge));
        Triangle2* const nAB = neighbour(pT, cw(edge));
        Triangle2* const nBD = neighbour(pU, ccw(j));
        Triangle2* const nDC = neighbour(pU, cw(j));

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
    }

    /// Flips what the stack asks for, and what the flips bring to light, where `mayFlip` allows it. Depth first: of the two
    /// triangles that a flip has made the partner goes on, and the other one waits on the stack. A test may be made long
    /// before its flip: no flip in between reaches the triangle across.
    template <class MayFlip>
    [[gnu::always_inline]] void flipUntilDelaunay(const Point2* pVtx, MayFlip mayFlip) {
        while (!vCheckT.empty()) {
            Triangle2* pT = vCheckT.back();
            vCheckT.pop_back();
            while (mayFlip(pT)) {
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

    /// Whether the circumcircle across edge 0 of a triangle at the vertex contains the vertex. There is none outside the hull.
    bool isFlipWanted(const Triangle2* pT, const Point2* pVtx);

    /// The same for a triangle (vertex,a,b), `pFar` being the corner beyond, null outside the hull.
    [[gnu::always_inline]] bool isFlipWanted(const Triangle2* pT, const Point2* pVtx, const Point2* pA,
                                             const Point2* pB, const Point2* pFar) {
        if (pFar == nullptr) [[unlikely]]
            return false;
        const CircleVerdict verdict = KelmarTest::inCircleFilter(pB, pA, pFar, pVtx);
        if (verdict != CircleVerdict::UNDECIDED) [[likely]]
            return verdict == CircleVerdict::INSIDE;
        return predicates.exact_circleInc(neighbour(pT, 0), pVtx);
    }

    /// The same for two triangles that follow each other counterclockwise around the vertex, (vertex,a,b) and (vertex,b,c):
    /// bits 0 and 1.
    [[gnu::always_inline]] unsigned wantedFlips(const Triangle2* pT, const Triangle2* pNextT,
                                                const Point2* pVtx, const Point2* pA, const Point2* pB,
                                                const Point2* pC, const Point2* pFarAB,
                                                const Point2* pFarBC) {
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

private:
    unsigned decideFlips(const Triangle2* pT, const Triangle2* pNextT, const Point2* pVtx,
                         CircleVerdicts verdicts);

    KelmarTest& predicates;
    std::vector<Triangle2*> vCheckT;
};

}  // namespace KELMAR_NORVIK2D
