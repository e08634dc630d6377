#include "splitPoint.h"

#include <array>
#include <utility>
#include <vector>

#include "AddressSet.h"
#include "Dt2.h"
#include "KelmarTest.h"
#include "SegmentChecker.h"
#include "diagnostics.h"
#include "distance.h"
#include "geometryTools.h"
#include "require.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

namespace {

/// The middle of two points, and the points of the grid of doubles around it.
class MiddleGrid {
public:
    MiddleGrid(const Point2& p, const Point2& q)
        : middle((p.x() + q.x()) * 0.5, (p.y() + q.y()) * 0.5),
          ulpX(getUlp(middle.x())),
          ulpY(getUlp(middle.y())) {}

    const Point2& getMiddle() const noexcept { return middle; }

    /// The middle and its neighbours `k` places away in the eight directions, in a fixed order, until one fits.
    template <class Fits>
    bool find(int k, Fits fits, Point2& out) const {
        constexpr std::array<int, 3> offsets{0, -1, 1};
        for (const int dx : offsets) {
            for (const int dy : offsets) {
                const Point2 candidate(middle.x() + (dx * k) * ulpX, middle.y() + (dy * k) * ulpY);
                if (!fits(candidate)) continue;
                out = candidate;
                return true;
            }
        }
        return false;
    }

private:
    Point2 middle;
    double ulpX, ulpY;
};

/// Whether a point lies strictly on the inner side of the two edges of a triangle that meet at a corner.
bool liesWithin(KelmarTest& predicates, const Triangle2* pT, int apex, const Point2& point) {
    return predicates.getOrientation2(corner(pT, cw(apex)), corner(pT, apex), &point) == ORIENTATION2_CCW &&
           predicates.getOrientation2(corner(pT, apex), corner(pT, ccw(apex)), &point) == ORIENTATION2_CCW;
}

/// The search of isVisible(): over all triangles that a segment meets.
class SightLine {
public:
    SightLine(Dt2& dt_, const Point2& a_, const Point2& b_) : dt(dt_), a(a_), b(b_), line(a_, b_) {}

    bool isFree(Triangle2* pStartT) {
        push(pStartT);
        while (!vOpen.empty()) {
            Triangle2* const pT = vOpen.back();
            vOpen.pop_back();
            for (int edge = 0; edge < 3; ++edge) {
                const Verdict verdict = look(pT, edge);
                if (verdict != Verdict::GO_ON) return verdict == Verdict::FREE;
            }
        }
        return true;
    }

private:
    enum class Verdict { GO_ON, FREE, BLOCKED };

    void push(Triangle2* pT) {
        if (pT != nullptr && sVisited.insert(pT)) vOpen.push_back(pT);
    }

    bool isEnd(const Point2& point) const { return samePoint(point, a) || samePoint(point, b); }

    /// For a vertex that isn't an end.
    bool liesInBetween(const Point2& vertex) const {
        return isBetween(a, b, vertex) && getOrientation2(&a, &b, &vertex) == ORIENTATION2_COLLINEAR;
    }

    Verdict look(Triangle2* pT, int edge) {
        const Point2 &p = *corner(pT, ccw(edge)), &q = *corner(pT, cw(edge));
        Segment2 side(p, q);
        switch (checker.getIntersectionType(&line, &side)) {
            case SIT_NONE:
                return Verdict::GO_ON;
            case SIT_POINT:
                if (dt.isConstraint(pT, edge) || liesInBetween(p) || liesInBetween(q))
                    return Verdict::BLOCKED;
                push(neighbour(pT, edge));
                return Verdict::GO_ON;
            case SIT_ENDPOINT:
                return pushAround(isEnd(p) ? p : q);
            case SIT_SEGMENT:
                return isBetween(a, b, p) || isBetween(a, b, q) ? Verdict::BLOCKED : Verdict::FREE;
            default:
                error("isVisible()", "SIT_UNINITIALIZED, unexpected");
                require(false, "false");
                return Verdict::BLOCKED;
        }
    }

    Verdict pushAround(const Point2& vertex) {
        if (!isEnd(vertex)) return Verdict::BLOCKED;
        visitUmbrella(&vertex, [&](Triangle2* pT) {
            push(pT);
            return false;
        });
        return Verdict::GO_ON;
    }

    Dt2& dt;
    Point2 a, b;
    Segment2 line;
    SegmentChecker checker;
    std::vector<Triangle2*> vOpen;
    TriangleSet sVisited;
};

}  // namespace

bool computeCenterWithoutConflict(Dt2* pDt, KelmarTest* pPredicates, Triangle2* pT, int edge, Point2& out) {
    const Point2 &p = *corner(pT, ccw(edge)), &q = *corner(pT, cw(edge));
    const MiddleGrid grid(p, q);

    const auto isOnLine = [&](const Point2& candidate) {
        return pPredicates->getOrientation2(&p, &q, &candidate) == ORIENTATION2_COLLINEAR;
    };
    if (grid.find(1, isOnLine, out)) return true;

    const Triangle2* const pU = neighbour(pT, edge);
    const auto isInQuadrilateral = [&](const Point2& candidate) {
        return liesWithin(*pPredicates, pT, edge, candidate) &&
               (pU == nullptr || liesWithin(*pPredicates, pU, indexOf(pU, pT), candidate));
    };
    for (int k = 0; k <= 2; ++k)
        if (grid.find(k, isInQuadrilateral, out)) return true;

    const auto seesBothEnds = [&](const Point2& candidate) {
        return isVisible(pDt, candidate, p) && isVisible(pDt, candidate, q);
    };
    for (int k = 0; k <= 4; ++k)
        if (grid.find(k, seesBothEnds, out)) return true;

    out = grid.getMiddle();
    return false;
}

bool isVisible(Dt2* pDt, Point2 a, Point2 b) {
    if (!pDt->is2D()) {
        warning("isVisible", "!pDt->is2D(), returning false");
        return false;
    }
    Triangle2* pStartT = pDt->locate(a);
    if (pStartT == nullptr) {
        std::swap(a, b);
        pStartT = pDt->locate(a);
    }
    if (pStartT == nullptr) {
        warning("isVisible", "start and stop not in triangulation area");
        return false;
    }
    return SightLine(*pDt, a, b).isFree(pStartT);
}

}  // namespace KELMAR_NORVIK2D
