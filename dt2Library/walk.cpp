#include "walk.h"

#include <algorithm>

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

/// What the static filter alone says of a triangle that the walk has entered across `entry`: whether the
/// point is inside, or beyond which of the other two edges, the one that is asked first taking precedence.
/// Both edges are computed before anything is decided, since no processor can predict which one it is.
struct QuickStep {
    QuickStep() = default;
    QuickStep(const Triangle2* pT, int entry, bool bClockwiseFirst, DoublePair point, double bound) {
        const DoublePair apex = coordinatesOf(corner(pT, entry)) - point;
        const double sideCcw = crossProduct(coordinatesOf(corner(pT, cw(entry))) - point, apex);
        const double sideCw = crossProduct(apex, coordinatesOf(corner(pT, ccw(entry))) - point);
        const double first = bClockwiseFirst ? sideCw : sideCcw;
        const double second = bClockwiseFirst ? sideCcw : sideCw;
        const bool bFirstPassed = first > bound;
        bBeyondFirst = -bound > first;
        bLeaves = bBeyondFirst | (bFirstPassed & (-bound > second));
        bInside = bFirstPassed & (second > bound);
    }

    bool bLeaves, bBeyondFirst, bInside;
};

/// The same for the first triangle of a walk, whose edges are asked in counterclockwise order from `first`.
struct QuickStart {
    QuickStart(const Triangle2* pT, int first, DoublePair point, double bound) {
        const DoublePair a = coordinatesOf(corner(pT, first)) - point;
        const DoublePair b = coordinatesOf(corner(pT, ccw(first))) - point;
        const DoublePair c = coordinatesOf(corner(pT, cw(first))) - point;
        const double side0 = crossProduct(b, c), side1 = crossProduct(c, a), side2 = crossProduct(a, b);
        const bool bBeyond0 = -bound > side0, bBeyond1 = -bound > side1, bBeyond2 = -bound > side2;
        const bool bPassed0 = side0 > bound, bPassed1 = side1 > bound;
        bLeaves = bBeyond0 | (bPassed0 & (bBeyond1 | (bPassed1 & bBeyond2)));
        bInside = bPassed0 & bPassed1 & (side2 > bound);
        numPassed = bBeyond0 ? 0 : bBeyond1 ? 1 : 2;
        exit = bBeyond0 ? first : bBeyond1 ? ccw(first) : cw(first);
    }

    bool bLeaves, bInside;
    int numPassed, exit;
};

/// Which of the two edges ahead is asked first: by turns, or the one on the side of the line from corner 0 of the first
/// triangle to the point where the apex isn't, so that the walk follows the line.
enum class Preference { BY_TURNS, ALONG_LINE };

template <Preference preference>
[[gnu::always_inline]] inline int walk(KelmarTest& predicates, const Point2* pVtx, Triangle2*& pT,
                                       int& edgeIndex, int maxSteps) {
    require(pT != nullptr, "pStartTriangle!=__null");
    // A visibility walk may cycle where the mesh isn't Delaunay, as across constraints; after this many steps
    // it continues at random. One along a line never leaves it.
    constexpr bool bAlongLine = preference == Preference::ALONG_LINE;
    constexpr int numOrderlySteps = bAlongLine ? std::numeric_limits<int>::max() - 1 : 1000;
    const int numStepsToBreak = std::min(numOrderlySteps, maxSteps);

    edgeIndex = -1;
    // The line begins at corner 0, between edges 1 and 2. A point beyond edge 0 may be beyond one of these as well; the way
    // along the line then turns around the corner, and across edge 0 it would lead away from the line.
    constexpr int first = bAlongLine ? 1 : 0;
    int edge = first, second = ccw(first), third = cw(first);  // the edges still to be tested, in this order
    int numUntested = 3;
    const DoublePair point = coordinatesOf(pVtx);
    const double bound = predicates.getStaticBound();
    const DoublePair line = coordinatesOf(corner(pT, 0)) - point;
    const QuickStart start(pT, first, point, bound);
    if (start.bInside) return LOCATE_INSIDE;
    if (start.bLeaves) {
        edge = start.exit;
        numUntested = 3 - start.numPassed;
    }
    bool bIsBeyond = start.bLeaves;
    RandomEdges randomEdges;
    for (int steps = 0;;) {
        const Orientation2 side = bIsBeyond ? ORIENTATION2_CW : sideOf(predicates, pT, edge, pVtx);
        bIsBeyond = false;
        if (side == ORIENTATION2_CW) {
            edgeIndex = -1;
            // The edge just crossed needs no test. By turns, which of the others comes first depends on where the crossing
            // happened.
            bool bClockwiseFirst = numUntested == 2;
            int entry;
            for (QuickStep step;;) {
                Triangle2* const pNext = sharedNeighbour(pT, edge);
                if (pNext == nullptr) {
                    require(!bAlongLine, "tmpTriangle!=__null");
                    return edge;
                }
                prefetchTriangle(pNext);
                entry = sharedIndexOf(pNext, pT);
                pT = pNext;
                if (++steps > numStepsToBreak) [[unlikely]]
                    break;
                if (bAlongLine)
                    bClockwiseFirst = crossProduct(line, coordinatesOf(corner(pT, entry)) - point) > 0.0;
                step = QuickStep(pT, entry, bClockwiseFirst, point, bound);
                if (step.bInside) return LOCATE_INSIDE;
                if (!step.bLeaves) [[unlikely]]
                    break;
                edge = bClockwiseFirst == step.bBeyondFirst ? cw(entry) : ccw(entry);
                if (!bAlongLine) bClockwiseFirst = step.bBeyondFirst;
            }
            if (steps > maxSteps) return LOCATE_TOO_FAR;
            if (steps <= numOrderlySteps) [[likely]] {
                edge = bClockwiseFirst ? cw(entry) : ccw(entry);
                second = bClockwiseFirst ? ccw(entry) : cw(entry);
                numUntested = 2;
            } else {
                edge = randomEdges.next();
                second = ccw(edge);
                third = cw(edge);
                numUntested = 3;
            }
            continue;
        }
        if (side == ORIENTATION2_COLLINEAR) [[unlikely]] {
            if (hasCornerAt(pT, pVtx)) return LOCATE_DUPLICATE;
            if (sharedNeighbour(pT, edge) == nullptr) {
                require(!bAlongLine, "pStartTriangle->getOppositeTriangle(ith)!=__null");
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

}  // namespace

NORVIK2D_HOT_LOOP int walkToConflict(KelmarTest& predicates, const Point2* pVtx, Triangle2*& pT,
                                     int& edgeIndex, int maxSteps) {
    return walk<Preference::BY_TURNS>(predicates, pVtx, pT, edgeIndex, maxSteps);
}

NORVIK2D_HOT_LOOP int walkAlongLine(KelmarTest& predicates, const Point2* pVtx, Triangle2*& pT,
                                    int& edgeIndex) {
    return walk<Preference::ALONG_LINE>(predicates, pVtx, pT, edgeIndex, std::numeric_limits<int>::max());
}

}  // namespace KELMAR_NORVIK2D
