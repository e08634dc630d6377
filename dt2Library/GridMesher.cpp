#include "GridMesher.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "Dt2.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "distance.h"
#include "geometryTools.h"
#include "require.h"

namespace KELMAR_NORVIK2D {

namespace {

/// A grid of more points would fill some 10 GB: it isn't meant.
constexpr std::size_t mostGridPoints = 50'000'000;

using Intersectors = std::vector<std::pair<Segment2*, SegmentIntersectionType>>;

/// For a checker, which doesn't own its segments: they must stay where they are while it is asked.
std::vector<Segment2*> pointersTo(std::vector<Segment2>& vSegments) {
    std::vector<Segment2*> vPointers;
    vPointers.reserve(vSegments.size());
    for (Segment2& segment : vSegments) vPointers.push_back(&segment);
    return vPointers;
}

Segment2 segmentOf(const ConstraintSegment2* pCSeg) { return {*pCSeg->getSrc(), *pCSeg->getTrg()}; }

/// A finite direction at length 1, also where its square is beyond the range of doubles.
Vector2 unitOf(const Vector2& dir) {
    const double greatest = std::max(std::fabs(dir.x()), std::fabs(dir.y()));
    return normalize(greatest > 1e150 || greatest < 1e-150 ? dir / greatest : dir);
}

Vector2 leftNormal(const Vector2& dir) { return normalize(dir.orthogonalVector()); }

// ------------------------------------------------------------------------------------------ extreme vertices

/// A vertex, and how far it lies to one side of a line in a direction, the same line for all.
struct SidewardVtx {
    double offset;
    const Point2* pVtx;

    /// The farthest first, by address where offsets are equal.
    bool operator<(const SidewardVtx& other) const noexcept {
        return offset != other.offset ? offset > other.offset : ByAddress{}(pVtx, other.pVtx);
    }
};

/// Vertices with their offsets to the left, ordered.
struct SidewardVertices {
    std::vector<SidewardVtx> vVertices;
    /// Where two offsets differ by more, the exact test agrees: the line through the one vertex has the other on that side.
    double tolerance;

    SidewardVertices(const std::vector<Point2*>& vPoints, const Vector2& dir);
    void turnRight();
};

/// The exact test's line leads from a vertex p to p + dir. That sum is rounded by u = 2^-53 of its coordinates, so the line is
/// turned by up to 2 u (M + m), and what is at a distance of up to D from p moves by that times D. M, m and D are the greatest
/// coordinates of the points, of the direction and of differences of points. The offsets' own roundings add less than 12 u m D.
SidewardVertices::SidewardVertices(const std::vector<Point2*>& vPoints, const Vector2& dir) {
    const Point2& origin = *vPoints.front();
    double greatest = 0.0, extent = 0.0;
    for (const Point2* pVtx : vPoints) {
        greatest = std::max({greatest, std::fabs(pVtx->x()), std::fabs(pVtx->y())});
        extent = std::max({extent, std::fabs(pVtx->x() - origin.x()), std::fabs(pVtx->y() - origin.y())});
    }
    greatest += std::max(std::fabs(dir.x()), std::fabs(dir.y()));
    tolerance = 16.0 * (2.0 * extent) * greatest * (std::numeric_limits<double>::epsilon() / 2.0) +
                std::numeric_limits<double>::min();

    vVertices.reserve(vPoints.size());
    for (const Point2* pVtx : vPoints) {
        const double offset = dir.x() * (pVtx->y() - origin.y()) - dir.y() * (pVtx->x() - origin.x());
        // Beyond the range of doubles offsets tell nothing.
        vVertices.push_back({std::isfinite(tolerance) ? offset : 0.0, pVtx});
    }
    std::sort(vVertices.begin(), vVertices.end());
}

void SidewardVertices::turnRight() {
    for (SidewardVtx& vtx : vVertices) vtx.offset = -vtx.offset;
    std::sort(vVertices.begin(), vVertices.end());
}

/// The vertex with the fewest others strictly to that side of the line from it along `dir`; the first by address of several.
/// Exact tests decide; offsets spare most of them.
const Point2* findExtreme(const SidewardVertices& sideward, const Vector2& dir, Orientation2 side, Dt2& dt) {
    const std::vector<SidewardVtx>& v = sideward.vVertices;
    const Point2* pExtreme = nullptr;
    std::size_t fewest = v.size();
    // The stretch that the tolerance leaves open. All before it are on that side, and none behind it.
    std::size_t first = 0, behind = 0;
    for (const auto& [offset, pVtx] : v) {
        while (v[first].offset - offset > sideward.tolerance) ++first;
        while (behind < v.size() && offset - v[behind].offset <= sideward.tolerance) ++behind;
        if (first > fewest) break;
        const bool bWinsTies = pExtreme == nullptr || ByAddress{}(pVtx, pExtreme);
        const std::size_t tooMany = bWinsTies ? fewest + 1 : fewest;
        const Point2 ahead = *pVtx + dir;
        dt.coverByPredicates(ahead);
        std::size_t number = first;
        for (std::size_t i = first; i < behind && number < tooMany; ++i)
            if (dt.getPredicates()->getOrientation2(pVtx, &ahead, v[i].pVtx) == side) ++number;
        if (number >= tooMany) continue;
        fewest = number;
        pExtreme = pVtx;
    }
    return pExtreme;
}

// -------------------------------------------------------------------------------------------------- stripes

constexpr const char* createStripesName = "GridMesher::createStripes()";

/// Divides a width into steps and a rest of one to two steps, half of which stays free on either side. False, with a warning,
/// if the steps are too many.
bool divideWidth(double width, double step, std::size_t& numSteps, double& rest) {
    constexpr std::size_t mostStripes = 10'000'000;
    numSteps = 0;
    // Step by step, because the roundings decide which grid it is where the width is a multiple of the step.
    for (rest = width; rest > 2.0 * step; ++numSteps) {
        const double next = rest - step;
        if (next == rest || numSteps + 2 > mostStripes) {
            warning(createStripesName, "gridLength is too small for the zone");
            return false;
        }
        rest = next;
    }
    return true;
}

}  // namespace

GridMesher::GridMesher(MeshGenParams* pParams_)
    : pParams(pParams_), pZone(pParams->pZone), usedTargetLength(pParams->gridLength) {}

Dt2& GridMesher::getDt() const { return *pZone->getDelaunayTriangulation(); }

void GridMesher::insertGridPoints(bool bChop) {
    pParams->gridVector = unitOf(pParams->gridVector);
    std::vector<Point2> points;
    std::vector<Segment2> vKnives;
    getGridPoints(points, vKnives);
    if (points.size() < 4) return;

    // Refinement isn't told of these vertices: it never removes them.
    std::vector<Point2*> vHandles;
    getDt().insertVector(points, &vHandles);
    avoidShortEdges(vHandles, 0.5 * usedTargetLength);
    if (!bChop) return;
    getDt().applyConstraintsAndZones();
    chopConstraints(std::move(vKnives));
    getDt().applyConstraintsAndZones();
}

void GridMesher::getGridPoints(std::vector<Point2>& points, std::vector<Segment2>& vKnives) {
    std::vector<Segment2> vPiecesA, vPiecesB;
    createGrid(vPiecesA, vPiecesB, vKnives);
    const SegmentChecker checker(pointersTo(vPiecesA));
    const std::size_t numBefore = points.size();
    Intersectors vCrossing;
    for (Segment2& piece : vPiecesB) {
        vCrossing.clear();
        checker.getIntersectors(&piece, false, vCrossing);
        for (const auto& [pOther, type] : vCrossing) {
            // Orthogonal pieces meet in points only: something is wrong with the direction.
            if (type != SIT_POINT) return;
            checker.getIntersectionPoint(SIT_POINT, piece, *pOther, points.emplace_back());
        }
        if (points.size() - numBefore > mostGridPoints) {
            warning("GridMesher::getGridPoints()", "gridLength is too small for the zone");
            points.resize(numBefore);
            return;
        }
    }
}

void GridMesher::createGrid(std::vector<Segment2>& vPiecesA, std::vector<Segment2>& vPiecesB,
                            std::vector<Segment2>& vKnives) {
    std::vector<Segment2> vStripesA, vStripesB;
    createStripes(pParams->gridVector, vStripesA);
    createStripes(leftNormal(pParams->gridVector), vStripesB);

    // Not only the zone's: others may lie in it, and grid points too close to them would make bad triangles.
    std::vector<ConstraintSegment2*> vAlive;
    getDt().getConstraintManager()->getAliveConstraintSegments(vAlive);
    std::vector<Segment2> vConstraints;
    vConstraints.reserve(vAlive.size());
    for (const ConstraintSegment2* pCSeg : vAlive) vConstraints.push_back(segmentOf(pCSeg));
    SegmentChecker checker(pointersTo(vConstraints));
    const double half = 0.5 * usedTargetLength;
    for (Segment2& stripe : vStripesA) chopSegment(&checker, &stripe, half, vPiecesA, vKnives);
    for (Segment2& stripe : vStripesB) chopSegment(&checker, &stripe, half, vPiecesB, vKnives);

    std::vector<Triangle2*> vTriangles;
    pZone->getTriangles(vTriangles);
    const TriangleSet sZone(vTriangles);
    dropNonZoneSegments(sZone, vPiecesA);
    dropNonZoneSegments(sZone, vPiecesB);
}

/// The ends of the zone's walls, each once, ordered by address.
std::vector<Point2*> GridMesher::getConstraintPoints() const {
    std::vector<ConstraintGraph2*> vGraphs;
    pZone->getConstraintGraphs(vGraphs);
    std::vector<Point2*> vConstraintPoints;
    for (const ConstraintGraph2* pGraph : vGraphs)
        if (pGraph != nullptr) pGraph->getPolygonVertices(vConstraintPoints);
    oneInstance(vConstraintPoints);
    return vConstraintPoints;
}

void GridMesher::findExtremes(const std::vector<Point2*>& vConstraintPoints, const Vector2& dir) {
    SidewardVertices sideward(vConstraintPoints, dir);
    extremeLeft = *findExtreme(sideward, dir, ORIENTATION2_CCW, getDt());
    sideward.turnRight();
    extremeRight = *findExtreme(sideward, dir, ORIENTATION2_CW, getDt());
}

/// The greatest distance from the line that leads from `extremeLeft` across the zone: so far stripes have to reach both ways,
/// for which of its ends the vertex is closer to isn't known.
double GridMesher::farthestAlong(const std::vector<Point2*>& vConstraintPoints,
                                 const Vector2& toRight) const {
    const Point2 beside = extremeLeft + toRight;
    double farthest = 0.0;
    for (const Point2* pVtx : vConstraintPoints)
        farthest = std::max(farthest, getPointLineDistance2D(extremeLeft, beside, *pVtx));
    return farthest;
}

void GridMesher::createStripes(const Vector2& dir, std::vector<Segment2>& vStripes) {
    require(usedTargetLength > 0, "usedTargetLength>0");
    const std::vector<Point2*> vConstraintPoints = getConstraintPoints();
    require(!vConstraintPoints.empty(), "!vConstraintPoints.empty()");
    findExtremes(vConstraintPoints, dir);
    const double width = getPointLineDistance2D(extremeLeft, extremeLeft + dir, extremeRight);
    if (!std::isfinite(width)) {
        warning(createStripesName, "orthLen is invalid");
        return;
    }
    // No line through the zone keeps half a step away from both sides. Refinement does without a grid then.
    if (usedTargetLength > width) return;
    std::size_t numSteps;
    double rest;
    if (!divideWidth(width, usedTargetLength, numSteps, rest)) return;
    const double margin = 0.5 * rest;
    require(margin < 1.01 * usedTargetLength, "stopStripeSpace<1.01*usedTargetLength");
    require(margin > 0.49 * usedTargetLength, "stopStripeSpace>0.49*usedTargetLength");

    const Vector2 toRight = -leftNormal(dir);
    const double reach = 1.1 * farthestAlong(vConstraintPoints, toRight);  // all ends are well outside
    if (!std::isfinite(reach)) {
        // Predicates take finite coordinates only.
        warning(createStripesName, "the zone is too long for stripes");
        return;
    }
    const Point2 start = extremeLeft - dir * reach + toRight * margin;
    const Vector2 along = dir * 2.0 * reach;
    for (std::size_t k = 0; k <= numSteps; ++k) {
        const Point2 src = start + toRight * usedTargetLength * static_cast<double>(k);
        vStripes.emplace_back(src, src + along);
    }
}

void GridMesher::chopSegment(SegmentChecker* pChecker, Segment2* pStripe, double stripeHalfLength,
                             std::vector<Segment2>& vPieces, std::vector<Segment2>& vKnives) {
    Intersectors vConstraints;
    pChecker->getIntersectors(pStripe, false, vConstraints);
    const Point2 src = pStripe->getSrc();
    std::vector<std::pair<double, Point2>> vCuts;
    for (const auto& [pConstraint, type] : vConstraints) {
        if (type != SIT_POINT) continue;
        Point2 cut;
        pChecker->getIntersectionPoint(SIT_POINT, *pStripe, *pConstraint, cut);
        vCuts.emplace_back(squaredDistance(src, cut), cut);
    }
    if (vCuts.empty()) return;
    // Where constraints share a vertex on the stripe equal cuts stand together, with no piece between.
    std::sort(vCuts.begin(), vCuts.end());

    const Vector2 dir = normalize(Vector2(src, pStripe->getTrg()));
    const Vector2 margin = dir * stripeHalfLength, halfKnife = dir * (stripeHalfLength / 10.0);
    // What comes before the first cut is outside of all constraints too, or in a zone that leaks: its source tells, later.
    Point2 previous = src;
    for (const auto& [sqDistance, cut] : vCuts) {
        vKnives.emplace_back(cut - halfKnife, cut + halfKnife);
        if (distance(previous, cut) > 2.0 * stripeHalfLength)
            vPieces.emplace_back(previous + margin, cut - margin);
        previous = cut;
    }
}

void GridMesher::dropNonZoneSegments(const TriangleSet& sZone, std::vector<Segment2>& vPieces) {
    std::erase_if(vPieces,
                  [&](const Segment2& piece) { return !sZone.contains(getDt().locate(piece.getSrc())); });
}

void GridMesher::avoidShortEdges(std::vector<Point2*>& vHandles, double minLength) {
    Dt2& dt = getDt();
    dt.applyConstraintsAndZones();
    std::vector<Triangle2*> vTriangles;
    pZone->getTriangles(vTriangles);
    const VertexSet sGrid(vHandles);
    // Collected first: a vertex that goes still drives out others, whichever edge comes first. What removals leave isn't looked
    // at again, that is refinement's matter.
    std::vector<Point2*> vRemoved;
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            const auto [pLow, pHigh] = std::minmax({corner(pT, ccw(i)), corner(pT, cw(i))}, ByAddress{});
            if (squaredDistance(*pLow, *pHigh) >= minLength * minLength) continue;
            if (sGrid.contains(pLow))
                vRemoved.push_back(pLow);
            else if (sGrid.contains(pHigh))
                vRemoved.push_back(pHigh);
        }
    }
    oneInstance(vRemoved);
    for (Point2* pVtx : vRemoved) dt.remove(pVtx);
    oneInstance(vHandles);
    std::erase_if(vHandles, [&](const Point2* pVtx) {
        return std::binary_search(vRemoved.begin(), vRemoved.end(), pVtx, ByAddress{});
    });
}

/// The first crossing with a knife that is far enough from both ends, in the order of the checker. Pieces shorter than that make
/// triangles worse than a border that doesn't fit the grid.
bool GridMesher::findSplit(const SegmentChecker& checker, Segment2& constraint, Point2& split) const {
    const double leastDistance = 0.7 * usedTargetLength;
    const double limit = leastDistance * leastDistance;
    Intersectors vMet;
    checker.getIntersectors(&constraint, false, vMet);
    for (const auto& [pKnife, type] : vMet) {
        if (type != SIT_POINT) continue;
        checker.getIntersectionPoint(SIT_POINT, constraint, *pKnife, split);
        if (squaredDistance(split, constraint.getSrc()) >= limit &&
            squaredDistance(split, constraint.getTrg()) >= limit)
            return true;
    }
    return false;
}

void GridMesher::chopConstraints(std::vector<Segment2> vKnives) {
    const SegmentChecker checker(pointersTo(vKnives));
    std::vector<ConstraintSegment2*> vOpen;
    getDt().getConstraintManager()->getAliveConstraintSegments(vOpen);
    while (!vOpen.empty()) {
        ConstraintSegment2* const pCSeg = vOpen.back();
        vOpen.pop_back();
        if (!pCSeg->isAlive()) {
            // Divided meanwhile: a piece of another one was this very segment, or a rounded split came to lie on it.
            pCSeg->getChildrenRec(vOpen);
            continue;
        }
        Segment2 constraint = segmentOf(pCSeg);
        Point2 split;
        if (!findSplit(checker, constraint, split)) continue;
        if (pCSeg->insertAndSplit(split) == nullptr) continue;
        // What became of it may meet further knives: two halves, and more where a conforming half had to be divided at once. It
        // ends, as each is shorter by 0.7 grid steps.
        pCSeg->getChildrenRec(vOpen);
    }
}

void Dt2::preMeshing(MeshGenParams* pParams) {
    GridMesher(pParams).insertGridPoints(true);
    applyConstraintsAndZones();
}

}  // namespace KELMAR_NORVIK2D
