#include "walk.h"

#include <cstdlib>

#include "hotLoop.h"
#include "require.h"

namespace KELMAR_NORVIK2D {

namespace {

/// Whether the point has the coordinates of a corner.
bool hasCornerAt(const Triangle2* pT, const Point2* pVtx) {
    for (int i = 0; i < 3; ++i)
        if (samePoint(corner(pT, i), pVtx)) return true;
    return false;
}

Orientation2 sideOf(KelmarTest& predicates, const Triangle2* pT, int edge, const Point2* pVtx) {
    return predicates.getOrientation2(corner(pT, ccw(edge)), corner(pT, cw(edge)), pVtx);
}

/// The point is on the line of the hull edge `edge` of `pT`. Either it lies on that edge or beyond another
/// hull edge of the same triangle: then the answer is that edge. Or it lies farther along the line: then `pT`
/// moves on, and the answer is -1.
int leaveHullLine(KelmarTest& predicates, const Point2* pVtx, Triangle2*& pT, int edge) {
    for (const int side : {ccw(edge), cw(edge)}) {
        if (sideOf(predicates, pT, side, pVtx) != ORIENTATION2_CW) continue;
        Triangle2* pNext = neighbour(pT, side);
        if (pNext == nullptr) return side;
        pT = pNext;
        return -1;
    }
    return edge;
}

}  // namespace

NORVIK2D_HOT_LOOP int walkToConflict(KelmarTest& predicates, const Point2* pVtx, Triangle2*& pT,
                                     int& edgeIndex) {
    require(pT != nullptr, "pStartTriangle!=__null");
    // A visibility walk may cycle where the mesh isn't Delaunay, as across constraints; after this many steps
    // it continues at random.
    constexpr int numOrderlySteps = 1000;

    edgeIndex = -1;
    int edge = 0, second = 1, third = 2;  // the edges still to be tested, in this order
    int numUntested = 3;
    for (int steps = 0;;) {
        const Orientation2 side = sideOf(predicates, pT, edge, pVtx);
        if (side == ORIENTATION2_CW) {
            edgeIndex = -1;
            Triangle2* const pNext = neighbour(pT, edge);
            if (pNext == nullptr) return edge;
            const int entry = indexOf(pNext, pT);
            pT = pNext;
            if (++steps <= numOrderlySteps) [[likely]] {
                // The edge just crossed needs no test. Which of the others comes first alternates with the
                // place where the crossing happened.
                const bool bSecondTest = numUntested == 2;
                edge = bSecondTest ? cw(entry) : ccw(entry);
                second = bSecondTest ? ccw(entry) : cw(entry);
                numUntested = 2;
            } else {
                edge = std::rand() % 3;
                second = ccw(edge);
                third = cw(edge);
                numUntested = 3;
            }
            continue;
        }
        if (side == ORIENTATION2_COLLINEAR) [[unlikely]] {
            if (hasCornerAt(pT, pVtx)) return LOCATE_DUPLICATE;
            if (neighbour(pT, edge) == nullptr) {
                const int result = leaveHullLine(predicates, pVtx, pT, edge);
                if (result >= 0) return result;
                edgeIndex = -1;
                edge = 0;
                second = 1;
                third = 2;
                numUntested = 3;
                continue;
            }
            edgeIndex = edge;
        }
        if (--numUntested == 0) return LOCATE_INSIDE;
        edge = second;
        second = third;
    }
}

}  // namespace KELMAR_NORVIK2D
