#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "AddressSet.h"
#include "Dt2.h"
#include "TriangleMarks.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "distance.h"
#include "geometryTools.h"
#include "require.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

// A cut goes in three steps: what the knives meet is found in the mesh as it was; the crossings become vertices; chains of
// constraints are made along the knives. So that triangles keep their shape meanwhile, nothing is flipped, all edges around the
// cut become constraints, and the crossed ones chains of constraints.

namespace {

/// True for as long as this lives, however it ends.
class FlagScope {
public:
    explicit FlagScope(bool& bFlag_) : bFlag(bFlag_) { bFlag = true; }
    ~FlagScope() { bFlag = false; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

private:
    bool& bFlag;
};

void appendEdgesOf(const Triangle2* pT, std::vector<VertexPair2>& vEdges) {
    for (int i = 0; i < 3; ++i) vEdges.emplace_back(corner(pT, ccw(i)), corner(pT, cw(i)));
}

}  // namespace

void Dt2::CUTT_cutTriangles(const std::vector<Segment2>& vSegments, bool bWithConstraints,
                            std::vector<ConstraintSegment2*>& vPieces) {
    if (vSegments.empty()) return;
    if (!is2D()) {
        warning("Dt2::CUTT_cutTriangles(..)", "The triangulation is not 2D yet, nothing to do");
        return;
    }
    for (const Segment2& segment : vSegments) {
        if (isFinite(segment.getSrc()) && isFinite(segment.getTrg())) continue;
        warning("Dt2::CUTT_cutTriangles(..)", "non-finite coordinates, nothing done");
        return;
    }
    // Two steps for each knife: what it meets, and its chain.
    ProgressPhase phase(progress, "cutTriangles", 2 * vSegments.size());
    applyConstraintsAndZones();
    std::vector<CUTT_KnifeStruct> vKnives;
    for (const Segment2& segment : vSegments)
        if (segment.getSrc() != segment.getTrg())
            vKnives.push_back({segment.getSrc(), segment.getTrg(), {}, {}});
    if (vKnives.empty()) {
        warning("Dt2::CUTT_cutTriangles(..)", "No or only degenerate segments, nothing to do");
        phase.finish();
        return;
    }
    CUTT_IntersectedEdges mIntersectedEdges;
    for (CUTT_KnifeStruct& knife : vKnives) {
        CUTT_getIntersections(knife, mIntersectedEdges);
        phase.advance(1);
    }

    std::optional<FlagScope> frozen;
    if (bWithConstraints) {
        frozen.emplace(bNoFlips);
        bMayLackDelaunay = true;
        protectShape(vKnives, mIntersectedEdges);
    }
    CUTT_RoundedPoints mRoundedPoints;
    for (const auto& [edge, intersected] : mIntersectedEdges)
        for (const Point2& isp : intersected.vIntersections) CUTT_roundAndInsertIsp(isp, mRoundedPoints);
    const auto appendRounded = [&](const std::vector<Point2>& vPoints, std::vector<Point2*>& vVertices) {
        for (const Point2& point : vPoints) vVertices.push_back(mRoundedPoints.at(point));
    };
    std::vector<Point2*> vInner, vSorted;
    if (bWithConstraints) {
        for (const auto& [edge, intersected] : mIntersectedEdges) {
            vInner.clear();
            appendRounded(intersected.vIntersections, vInner);
            vSorted.clear();
            CUTT_insertConstraintSegments(edge.getVtx0(), edge.getVtx1(), vInner, vSorted);
        }
    }
    for (const CUTT_KnifeStruct& knife : vKnives) {
        Point2* const pSrc = insert(knife.src);
        Point2* const pTrg = insert(knife.trg);
        vInner = knife.vOnKnife;
        appendRounded(knife.vIntersections, vInner);
        vSorted.clear();
        CUTT_insertConstraintSegments(pSrc, pTrg, vInner, vSorted);
        require(vSorted.size() > 1, "vSortedPoints.size()>1");
        for (std::size_t i = 0; i + 1 < vSorted.size(); ++i)
            appendAlivePieces(vSorted[i], vSorted[i + 1], vPieces);
        phase.advance(1);
    }
    applyConstraintsAndZones();
    phase.finish();
}

/// Other knives may have divided the record since it was made.
void Dt2::appendAlivePieces(Point2* p, Point2* q, std::vector<ConstraintSegment2*>& vPieces) const {
    ConstraintSegment2* const pCSeg = constraintMgr.findConstraintSegment(p, q);
    require(pCSeg != nullptr, "pCSeg!=__null");
    pCSeg->getAlivePieces(vPieces);
}

// ------------------------------------------------------------------------------------- what the knives meet

void Dt2::CUTT_getIntersections(CUTT_KnifeStruct& knife, CUTT_IntersectedEdges& mIntersectedEdges) {
    coverByPredicates(knife.src);
    coverByPredicates(knife.trg);
    const Point2 a = std::min(knife.src, knife.trg), b = std::max(knife.src, knife.trg);
    std::vector<Triangle2*> vOpen;
    TriangleSet sVisited;
    const auto visit = [&](Triangle2* pT) {
        if (sVisited.insert(pT)) vOpen.push_back(pT);
    };
    if (Triangle2* const pStartT = locate(a)) {
        visit(pStartT);
    } else {
        std::vector<Side> vHull;
        getConvexHull(vHull);
        for (const Side& side : vHull) visit(side.first);
    }
    while (!vOpen.empty()) {
        Triangle2* const pT = vOpen.back();
        vOpen.pop_back();
        for (int i = 0; i < 3; ++i) {
            const VertexPair2 edge(corner(pT, ccw(i)), corner(pT, cw(i)));
            if (!meets(edge, a, b, knife, mIntersectedEdges)) continue;
            if (neighbour(pT, i) != nullptr) visit(neighbour(pT, i));
        }
    }
}

/// Enters what a knife from a to b and an edge have in common. Whether there is something.
bool Dt2::meets(const VertexPair2& edge, const Point2& a, const Point2& b, CUTT_KnifeStruct& knife,
                CUTT_IntersectedEdges& mIntersectedEdges) {
    Point2* const p = edge.getVtx0();
    Point2* const q = edge.getVtx1();
    switch (predicates.getIntersectionType(*p, *q, a, b)) {
        case IST_COLLINEAR: {
            std::vector<Point2>& vOnEdge = mIntersectedEdges[edge].vIntersections;
            const double sqLenEdge = squaredDistance(*p, *q), sqLenKnife = squaredDistance(a, b);
            for (const Point2& end : {a, b})
                if (sqLenEdge > squaredDistance(*p, end) && sqLenEdge > squaredDistance(*q, end))
                    vOnEdge.push_back(end);
            for (Point2* pVtx : {p, q})
                if (sqLenKnife > squaredDistance(a, *pVtx) && sqLenKnife > squaredDistance(b, *pVtx))
                    knife.vOnKnife.push_back(pVtx);
            return true;
        }
        case IST_REGULAR: {
            Point2 isp;
            if (!getIntersectionPoint(*p, *q, a, b, isp)) {
                warning("cutTriangles()", "numerical issue, no intersection point");
                print(compose(*p, " <-> ", *q, "\n", a, " <-> ", b, "\n"));
                return false;
            }
            mIntersectedEdges[edge].vIntersections.push_back(isp);
            knife.vIntersections.push_back(isp);
            return true;
        }
        default:
            return false;
    }
}

// -------------------------------------------------------------------------------------------- keeping the shape

/// Makes constraints of the edges around the cut, but for those that are cut.
void Dt2::protectShape(const std::vector<CUTT_KnifeStruct>& vKnives,
                       const CUTT_IntersectedEdges& mIntersectedEdges) {
    std::vector<Point2> vPoints;
    for (const CUTT_KnifeStruct& knife : vKnives) {
        vPoints.push_back(knife.src);
        vPoints.push_back(knife.trg);
        vPoints.insert(vPoints.end(), knife.vIntersections.begin(), knife.vIntersections.end());
    }
    oneInstance(vPoints);
    CUTT_turnConflictZoneIntoConstraints(vPoints);

    std::vector<Point2*> vEnds;
    for (const auto& [edge, intersected] : mIntersectedEdges) {
        vEnds.push_back(edge.getVtx0());
        vEnds.push_back(edge.getVtx1());
    }
    oneInstance(vEnds);
    std::vector<VertexPair2> vEdges;
    for (const Point2* pVtx : vEnds) {
        visitUmbrella(pVtx, [&](const Triangle2* pT) {
            appendEdgesOf(pT, vEdges);
            return false;
        });
    }
    oneInstance(vEdges);
    std::erase_if(vEdges, [&](const VertexPair2& edge) { return mIntersectedEdges.count(edge) != 0; });
    makeConstraintsOf(vEdges);
}

/// Makes records of the edges that have none.
void Dt2::makeConstraintsOf(const std::vector<VertexPair2>& vEdges) {
    std::vector<ConstraintMgr::PointPair> vPairs;
    for (const VertexPair2& edge : vEdges)
        if (!isConstraint(edge.getVtx0(), edge.getVtx1()))
            vPairs.emplace_back(edge.getVtx0(), edge.getVtx1());
    const MuteScope muted(progress);
    if (!vPairs.empty()) constraintMgr.createConstraint(vPairs, CIS_CONSTRAINED_DELAUNAY, false);
}

void Dt2::CUTT_turnConflictZoneIntoConstraints(const std::vector<Point2>& vPoints) {
    TriangleMarks conflictZone(trianglePool);
    std::vector<Triangle2*> vOpen, vZone;
    for (const Point2& point : vPoints) {
        Triangle2* const pStartT = locate(point);
        if (pStartT == nullptr) continue;
        TriangleSet sSeen({pStartT});
        vOpen.assign(1, pStartT);
        while (!vOpen.empty()) {
            const Triangle2* const pT = vOpen.back();
            vOpen.pop_back();
            conflictZone.insert(pT);
            for (int i = 0; i < 3; ++i) {
                Triangle2* const pNext = neighbour(pT, i);
                if (pNext != nullptr && sSeen.insert(pNext) &&
                    predicates.circleInc3state(pNext, &point) != CINC2_OUTCIRCLE)
                    vOpen.push_back(pNext);
            }
        }
    }
    conflictZone.appendTo(vZone);
    std::vector<VertexPair2> vEdges;
    for (const Triangle2* pT : vZone) appendEdgesOf(pT, vEdges);
    makeConstraintsOf(vEdges);
}

// --------------------------------------------------------------------------------------- vertices and chains

void Dt2::CUTT_roundAndInsertIsp(const Point2& isp, CUTT_RoundedPoints& mRoundedPoints) {
    // A vertex so close by would leave slivers (squared, and not scaled to the data).
    constexpr double squaredCloseness = 1e-10;
    std::vector<Point2*> vCandidates;
    if (const Triangle2* const pT = locate(isp)) {
        for (int i = 0; i < 3; ++i) vCandidates.push_back(corner(pT, i));
    } else {
        std::vector<Side> vHull;
        getConvexHull(vHull);
        for (const auto& [pHullT, edge] : vHull) vCandidates.push_back(corner(pHullT, ccw(edge)));
    }
    const auto same = std::find_if(vCandidates.begin(), vCandidates.end(),
                                   [&](const Point2* pVtx) { return *pVtx == isp; });
    if (same != vCandidates.end()) {
        mRoundedPoints[isp] = *same;
        return;
    }
    const auto nearest =
        std::min_element(vCandidates.begin(), vCandidates.end(), [&](const Point2* p, const Point2* q) {
            return squaredDistance(*p, isp) < squaredDistance(*q, isp);
        });
    mRoundedPoints[isp] = squaredDistance(**nearest, isp) < squaredCloseness ? *nearest : insert(isp);
}

void Dt2::CUTT_insertConstraintSegments(Point2* pStart, Point2* pEnd, std::vector<Point2*>& vInner,
                                        std::vector<Point2*>& vSorted) {
    if (ByAddress{}(pEnd, pStart)) std::swap(pStart, pEnd);
    oneInstance(vInner);
    // Scaled, so that squares of the largest and the smallest coordinates have an order too.
    const double extent = std::max(std::fabs(pEnd->x() - pStart->x()), std::fabs(pEnd->y() - pStart->y()));
    const int exponent = std::ilogb(std::min(extent, std::numeric_limits<double>::max()));
    const auto scaled = [&](double length) { return std::ldexp(length, -exponent); };
    std::vector<std::pair<double, Point2*>> vByDistance;
    for (Point2* pVtx : vInner) {
        if (pVtx == pStart || pVtx == pEnd) continue;
        const double dx = scaled(pVtx->x() - pStart->x()), dy = scaled(pVtx->y() - pStart->y());
        vByDistance.emplace_back(dx * dx + dy * dy, pVtx);
    }
    std::sort(vByDistance.begin(), vByDistance.end(), [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : ByAddress{}(a.second, b.second);
    });
    const auto first = static_cast<std::ptrdiff_t>(vSorted.size());
    vSorted.push_back(pStart);
    for (const auto& [squaredLength, pVtx] : vByDistance) vSorted.push_back(pVtx);
    vSorted.push_back(pEnd);

    const MuteScope muted(progress);
    ConstraintSegment2* const pCSeg = constraintMgr.getAliveConstraintSegment(pStart, pEnd);
    if (pCSeg != nullptr && divideAt(pCSeg, {vSorted.begin() + first + 1, vSorted.end() - 1}, pEnd)) return;
    std::vector<ConstraintMgr::PointPair> vChain;
    for (auto it = vSorted.begin() + first; it + 1 != vSorted.end(); ++it)
        vChain.emplace_back(*it, *(it + 1));
    constraintMgr.createConstraint(vChain, CIS_CONSTRAINED_DELAUNAY, true);
}

/// Divides the record of an edge at vertices in their order towards its end `pEnd`. False if that ends early, at a piece that
/// has existed before and is divided elsewhere.
bool Dt2::divideAt(ConstraintSegment2* pCSeg, const std::vector<Point2*>& vSplits, Point2* pEnd) {
    for (Point2* pSplit : vSplits) {
        if (!pCSeg->split_combinatorialOnly(pSplit)) return false;
        std::vector<ConstraintSegment2*> vChildren;
        pCSeg->getChildrenRec(vChildren);
        const auto rest =
            std::find_if(vChildren.begin(), vChildren.end(), [&](const ConstraintSegment2* pKid) {
                return VertexPair2(pKid->getSrc(), pKid->getTrg()) == VertexPair2(pSplit, pEnd);
            });
        if (rest == vChildren.end()) return pSplit == vSplits.back();
        pCSeg = *rest;
    }
    return true;
}

}  // namespace KELMAR_NORVIK2D
