// Constraints and their records.
#include <algorithm>
#include <cmath>
#include <set>

#include "ApiDriver.h"
#include "ApiListener.h"
#include "ApiTrace.h"
#include "zoneLaws.h"

using namespace KELMAR_NORVIK2D;

// ------------------------------------------------------------------------------------------------ making them

/// Whether a segment may come to those that are there: crossings are rounded, which characters that want exactness can't have.
/// Those at very small angles go on and on, and halving needs as many pieces as segments side by side are longer than distant.
bool ApiDriver::isAcceptable(const Segment2& segment, Strategy cis) const {
    constexpr std::size_t mostSegments = 40;
    if (vGiven.size() >= mostSegments) return false;
    const bool bHalving = bConforming || cis == CIS_CONFORMING_DELAUNAY;
    if (bHalving && isHugeOrTiny() && !vGiven.empty()) return false;
    const Point2 a = segment.getSrc(), b = segment.getTrg();
    for (const Segment2& given : vGiven) {
        const Point2 c = given.getSrc(), d = given.getTrg();
        const auto side = [this](const Point2& p, const Point2& q, const Point2& r) {
            const Orientation2 orientation = pMesh->getOrientation(p, q, r);
            return orientation == ORIENTATION2_CCW ? 1 : orientation == ORIENTATION2_CW ? -1 : 0;
        };
        const Vector2 u = b - a, v = d - c, w = c - a;
        const double lengths = std::sqrt((u * u) * (v * v));
        const double sine = std::fabs(u.x() * v.y() - u.y() * v.x()) / lengths;
        if (bHalving && !(sine > 0.02)) return false;
        const bool bOnLine = side(a, b, c) == 0 && side(a, b, d) == 0;
        const double distance = std::fabs(u.x() * w.y() - u.y() * w.x()) / std::sqrt(u * u);
        if (mayCross() && !bOnLine && !(sine > 1e-3) && distance < 0.01) return false;
        const bool bCross = side(a, b, c) * side(a, b, d) < 0 && side(c, d, a) * side(c, d, b) < 0;
        if (bCross && (!mayCross() || (character == Character::MESSY && !(sine > 1e-3)))) return false;
    }
    return true;
}

bool ApiDriver::areAcceptable(const Segments& segments, Strategy cis) {
    const std::size_t numBefore = vGiven.size();
    bool bAcceptable = true;
    for (const Segment2& segment : segments) {
        bAcceptable = bAcceptable && isAcceptable(segment, cis);
        // Those that are halved mustn't be side by side among each other either.
        if (cis == CIS_CONFORMING_DELAUNAY) vGiven.push_back(segment);
    }
    vGiven.resize(numBefore);
    return bAcceptable;
}

ApiDriver::Graph* ApiDriver::create(const Segments& segments, Strategy cis, bool bOriented) {
    say("mesh.createConstraint(std::vector<Segment2>", segments,
        cis == CIS_CONFORMING_DELAUNAY ? ", CIS_CONFORMING_DELAUNAY, " : ", CIS_CONSTRAINED_DELAUNAY, ",
        bOriented, ");");
    const ApiListener listener(*pMesh, ApiListener::never);
    Graph* const pGraph = pDemands->create(segments, cis, bOriented);
    expect(pGraph != nullptr, "segments have a graph");
    expect(listener.isContent(), "progress rises to 1");
    vGraphs.push_back(pGraph);
    for (const Segment2& segment : segments) {
        vGiven.push_back(segment);
        hardPoints.remember(segment);
        for (const Point2& end : {segment.getSrc(), segment.getTrg()}) {
            Point2* const pVtx = pMesh->insert(end);
            if (mVertices.emplace(Coordinates(end.x(), end.y()), pVtx).second) vHandles.push_back(pVtx);
        }
    }
    bConforming |= cis == CIS_CONFORMING_DELAUNAY;
    noteConstraints();
    return pGraph;
}

/// After constraints have come to the mesh, of the client or by a cut.
void ApiDriver::noteConstraints() {
    bWaiting |= !pMesh->is2D() || bConforming;
    bDrawnSince |= bRefined;
    noteApplied();
}

/// What is given up is given up with a word.
void ApiDriver::noteApplied() {
    bLacking |= Hearing::heard("giving up. Incorrect result!") ||
                Hearing::heard("need to skip last insertions") ||
                Hearing::heard("insufficient numeric accuracy");
    const bool bMayAdd = mayCross() || bConforming;
    readVertices(bMayAdd ? Growth::ALLOWED : Growth::NONE, Loss::NONE);
}

void ApiDriver::addSegments() {
    // Conforming segments have no common vertex where they cross: a few are enough.
    const bool bHalved = from.oneIn(5) && (!mayCross() || from.oneIn(8));
    const Strategy cis = bHalved ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY;
    Segments segments;
    for (unsigned n = 1 + from.below(3); n > 0; --n) {
        const Segment2 segment = someSegment();
        if (!isAcceptable(segment, cis)) continue;
        segments.push_back(segment);
        vGiven.push_back(segment);  // so that the next one is compared with it
    }
    if (segments.empty()) return;
    vGiven.resize(vGiven.size() - segments.size());
    create(segments, cis, from.oneIn(2));
}

/// Whether the polygon neither crosses nor touches itself.
bool ApiDriver::isSimple(const Polygon& polygon) const {
    std::set<Coordinates> sCorners;
    for (const Point2& p : polygon)
        if (!sCorners.emplace(p.x(), p.y()).second) return false;
    return isSimplePolygon(zoneLaws::ring(polygon));
}

void ApiDriver::addRing() {
    const Polygon polygon = somePolygon();
    const Segments ring = zoneLaws::ring(polygon);
    const bool bHalved = !mayCross() && from.oneIn(4), bOriented = from.oneIn(3);
    const Strategy cis = bHalved ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY;
    if (!areAcceptable(ring, cis) || (!mayCross() && !isSimplePolygon(ring))) return;
    Graph* const pGraph = create(ring, cis, bOriented);
    const bool bSimple = isSimple(polygon) && zoneLaws::areaOf(polygon) != 0.0;
    expect(!bSimple || pGraph->isPolygon() || pGraph->isOriented(), "a simple ring is a polygon");
    // With directions that count a clockwise ring has its inside without.
    if (!bSimple || !pGraph->isPolygon() || (bOriented && zoneLaws::areaOf(polygon) < 0.0)) return;
    double perimeter = 0.0;
    for (const Segment2& side : ring) perimeter += std::sqrt(side.getSqLen2D());
    vRings.push_back({pGraph, std::fabs(zoneLaws::areaOf(polygon)), perimeter});
}

// --------------------------------------------------------------------------------------------- applying them

void ApiDriver::apply() {
    say("mesh.applyConstraintsAndZones();");
    pMesh->applyConstraintsAndZones();
    expect(pMesh->is2D() || !Hearing::all().empty(), "a warning tells that there are no triangles");
    if (!pMesh->is2D()) return;
    bWaiting = false;
    noteApplied();
}

void ApiDriver::applyAndCancel() {
    if (!pMesh->is2D()) return;
    ApiListener listener(*pMesh, static_cast<int>(from.below(4)));
    say("mesh.applyConstraintsAndZones();  // cancelled");
    pMesh->applyConstraintsAndZones();
    expect(listener.isContent(), "progress rises to 1");
    bWaiting &= pMesh->wasCancelled();
    noteApplied();
}

// --------------------------------------------------------------------------------------------------- records

/// Divides a piece at its middle, by its own operations.
void ApiDriver::splitPiece() {
    if (!mayCross() || !isUsable() || vGraphs.empty()) return;
    std::vector<Record*> vChain;
    from.oneOf(vGraphs)->getAliveConstraintChain(vChain);
    if (vChain.empty()) return;
    Record* const pRecord = from.oneOf(vChain);
    const Point2 src = *pRecord->getSrc(), trg = *pRecord->getTrg(), middle = centerWithShift(src, trg);
    const bool bRemoving = from.oneIn(2);
    say("mesh.getConstraintSegment(mesh.insert(Point2", src, "), mesh.insert(Point2", trg, "))->",
        bRemoving ? "splitAndRemovePrev" : "insertAndSplit", "(Point2", middle, ");");
    if (bRemoving) {
        const bool bSplit = pRecord->splitAndRemovePrev(middle);
        expect(bSplit != pRecord->isAlive(), "a divided record isn't alive");
    } else {
        const Point2* const pSplit = pRecord->insertAndSplit(middle);
        expect((pSplit != nullptr) != pRecord->isAlive(), "a divided record isn't alive");
        expect(pSplit == nullptr || *pSplit == middle, "records are divided where they should be");
    }
    bWaiting |= bConforming;
    readVertices(Growth::ALLOWED, Loss::OF_FREE_VERTICES);
    noteApplied();
}

/// Pieces know of what they are a part.
void ApiDriver::askGraph() {
    if (vGraphs.empty()) return;
    Graph* const pGraph = from.oneOf(vGraphs);
    std::vector<Record*> vOriginal, vChain;
    pGraph->getOriginalConstraintSegments(vOriginal);
    pGraph->getAliveConstraintChain(vChain);
    if (vChain.empty()) return;
    Record* const pPiece = from.oneOf(vChain);
    std::vector<Record*> vParents;
    pGraph->getOriginalSegments(pPiece, vParents);
    expect(!vParents.empty(), "each piece is part of a segment");
    for (Record* pParent : vParents) {
        std::vector<Record*> vPieces;
        pParent->getAlivePieces(vPieces);
        expect(std::count(vOriginal.begin(), vOriginal.end(), pParent) != 0,
               "parents are segments of the graph");
        expect(std::count(vPieces.begin(), vPieces.end(), pPiece) != 0, "parents have their pieces");
    }
    pPiece->setAdjacentArea(1.0 + from.below(4));
}
