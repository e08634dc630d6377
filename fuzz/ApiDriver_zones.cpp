// Zones, operations on them, and cuts.
#include <algorithm>
#include <cmath>
#include <set>

#include "ApiDriver.h"
#include "ApiTrace.h"
#include "zoneLaws.h"

using namespace KELMAR_NORVIK2D;
using zoneLaws::setOf, zoneLaws::trianglesOf;
using Set = zoneLaws::TriangleSet;

// -------------------------------------------------------------------------------------------------- keeping them

void ApiDriver::know(Zone2* pZone, std::optional<double> area, double slack) {
    KnownZone known{pZone};
    if (isExact()) known.area = area;
    known.slack = slack;
    vZones.push_back(known);
}

/// After a zone of triangles was made: its border has become constraints.
void ApiDriver::noteBorder(const Zone2* pZone) {
    std::vector<Graph*> vOwn;
    pZone->getConstraintGraphs(vOwn);
    for (const Graph* pGraph : vOwn) {
        std::vector<Record*> vPieces;
        if (pGraph != nullptr) pGraph->getAliveConstraintChain(vPieces);
        for (const Record* pPiece : vPieces) vGiven.emplace_back(*pPiece->getSrc(), *pPiece->getTrg());
    }
    pDemands->noteOthers();
    noteConstraints();
}

ApiDriver::Shape ApiDriver::shapeOf(const Triangles& vTriangles) const {
    Bbox2 box;
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i) box.add(*pT->getCorner(i));
    const double width = box.getMaxX() - box.getMinX(), height = box.getMaxY() - box.getMinY();
    const double rounding = vTriangles.empty() ? 0.0 : 1e-9 * (width * width + height * height);
    return {setOf(vTriangles), zoneLaws::areaOf(vTriangles),
            rounding + (mayCross() ? 1e-4 * (width + height) : 0.0)};
}

/// A zone that was made of triangles has these, but for slivers beside an edge that was a constraint before, and was divided at
/// a rounded point: its pieces are the walls.
void ApiDriver::expectShape(const Zone2* pZone, const Shape& shape) {
    const Triangles vTriangles = trianglesOf(pZone);
    if (!isExact()) return;
    if (!mayCross() && !bConforming)
        expect(setOf(vTriangles) == shape.sTriangles, "a zone has the triangles it is made of");
    expect(std::fabs(zoneLaws::areaOf(vTriangles) - shape.area) <= shape.slack,
           "a zone has the area of the triangles it is made of");
}

void ApiDriver::checkZone(const KnownZone& known) {
    const Triangles vTriangles = trianglesOf(known.pZone);
    const double area = known.area.has_value() && !isHugeOrTiny() ? zoneLaws::areaOf(vTriangles) : 0.0;
    if (known.area.has_value() && !isHugeOrTiny() && !(std::fabs(area - *known.area) <= known.slack))
        throw LawBroken("zones keep their area: " + std::to_string(*known.area) + " has become " +
                        std::to_string(area));
    if (known.pFirst == nullptr) return;
    const Set sFirst = setOf(trianglesOf(known.pFirst)), sSecond = setOf(trianglesOf(known.pSecond)),
              sTold = setOf(vTriangles);
    Set sEither = sFirst;
    sEither.insert(sSecond.begin(), sSecond.end());
    const ZoneLocation kind = known.pZone->getZoneLocation();
    for (Triangle2* pT : sEither) {
        const bool bIn0 = sFirst.count(pT) != 0, bIn1 = sSecond.count(pT) != 0;
        const bool bIn = kind == ZL_RESULT_UNION          ? bIn0 || bIn1
                         : kind == ZL_RESULT_INTERSECTION ? bIn0 && bIn1
                         : kind == ZL_RESULT_DIFFERENCE   ? bIn0 && !bIn1
                                                          : bIn0 != bIn1;
        expect(bIn == (sTold.count(pT) != 0), "a result has the triangles that its operands say");
    }
    expect(std::includes(sEither.begin(), sEither.end(), sTold.begin(), sTold.end(), std::less<>()),
           "a result has no other triangles than its operands");
}

void ApiDriver::dropZone() {
    if (vZones.empty()) return;
    const std::size_t at = from.below(static_cast<unsigned>(vZones.size()));
    Zone2* const pZone = vZones[at].pZone;
    for (const KnownZone& known : vZones)
        if (known.pFirst == pZone || known.pSecond == pZone) return;
    pMesh->deleteZone(pZone);
    vZones.erase(vZones.begin() + static_cast<std::ptrdiff_t>(at));
}

// --------------------------------------------------------------------------------------------------- making them

void ApiDriver::makeZone() {
    constexpr std::size_t mostZones = 12;
    if (vZones.size() >= mostZones) return dropZone();
    const unsigned kind = from.below(5);
    if (kind == 0) {
        Zone2* const pZone = pMesh->createZone(nullptr, ZL_GLOBAL);
        expect((pZone != nullptr) == pMesh->is2D(), "a zone of all needs triangles only");
        if (pZone != nullptr) know(pZone);
    } else if (kind == 1) {
        const Point2 seed = somePoint();
        std::vector<Graph*> vWalls;
        for (Graph* pGraph : vGraphs)
            if (from.oneIn(2)) vWalls.push_back(pGraph);
        say("mesh.createZone(graphs, ZL_GROW, Point2", seed, ");");
        if (Zone2* const pZone = pMesh->createZone(vWalls, ZL_GROW, seed)) know(pZone);
    } else if (kind == 2 && !vGraphs.empty()) {
        Graph* const pGraph = from.oneOf(vGraphs);
        static constexpr ZoneLocation locations[] = {ZL_INSIDE, ZL_OUTSIDE, ZL_BOUNDED};
        Zone2* const pZone = pMesh->createZone(pGraph, locations[from.below(3)]);
        expect((pZone != nullptr) == (pMesh->is2D() && pGraph->isOriented()), "oriented graphs bound zones");
        if (pZone != nullptr) know(pZone);
    } else if (!vRings.empty() && pMesh->is2D()) {
        const Ring& ring = from.oneOf(vRings);
        Zone2* const pZone = pMesh->createZone(ring.pGraph, ZL_INSIDE);
        say("mesh.createZone(ring, ZL_INSIDE);");
        expect(pZone != nullptr, "a ring has an inside");
        // Crossings move the ring by their rounding.
        const double slack =
            1e-9 * (ring.area + ring.perimeter * ring.perimeter) + (mayCross() ? 2e-5 * ring.perimeter : 0.0);
        know(pZone, ring.area, slack);
        if (!isEnforced() || !isExact()) return;
        Zone2* const pOutside = pMesh->createZone(ring.pGraph, ZL_OUTSIDE);
        const Set sInside = setOf(trianglesOf(pZone)), sOutside = setOf(trianglesOf(pOutside));
        expect(sInside.size() + sOutside.size() == pMesh->numberOfTriangles(),
               "a triangle is in a ring or out of it");
        for (Triangle2* pT : sInside)
            expect(sOutside.count(pT) == 0, "no triangle is in a ring and out of it");
        pMesh->deleteZone(pOutside);
        const std::string faults = isHugeOrTiny() ? "" : zoneLaws::zoneFaults(*pMesh, pZone);
        if (!faults.empty()) throw LawBroken(faults);
    }
}

void ApiDriver::combineZones() {
    if (vZones.empty() || vZones.size() >= 12 || !pMesh->is2D()) return;
    static constexpr struct {
        Zone2* (*combine)(Zone2*, Zone2*);
        const char* name;
    } operations[] = {{zoneUnion, "zoneUnion"},
                      {zoneIntersection, "zoneIntersection"},
                      {zoneDifference, "zoneDifference"},
                      {zoneSymmetricDifference, "zoneSymmetricDifference"}};
    KnownZone known{};
    Zone2 *const pFirst = from.oneOf(vZones).pZone, *const pSecond = from.oneOf(vZones).pZone;
    const auto& [combine, name] = operations[from.below(4)];
    known.pZone = combine(pFirst, pSecond);
    say(name, "(zone, zone);");
    expect(known.pZone != nullptr, "zones can be combined");
    known.pFirst = pFirst;
    known.pSecond = pSecond;
    vZones.push_back(known);
}

/// Triangles around a random one, at most that many.
ApiDriver::Triangles ApiDriver::somePatch(std::size_t most) {
    Triangles vAll, vPatch;
    pMesh->getTrianglePointers(vAll);
    if (vAll.empty()) return vAll;
    Set sPatch;
    const auto add = [&](Triangle2* pT) {
        if (pT != nullptr && vPatch.size() < most && sPatch.insert(pT).second) vPatch.push_back(pT);
    };
    add(from.oneOf(vAll));
    if (from.oneIn(3)) add(from.oneOf(vAll));
    for (std::size_t i = 0; i < vPatch.size(); ++i)
        for (int k = 0; k < 3; ++k)
            if (!from.oneIn(4)) add(vPatch[i]->getOppositeTriangle(k));
    return vPatch;
}

void ApiDriver::zoneOfTriangles() {
    const Triangles vPatch = somePatch(1 + from.below(20));
    if (vPatch.empty() || !isUsable() || isHugeOrTiny()) return;
    const Shape shape = shapeOf(vPatch);
    say("mesh.createZone(patch of ", vPatch.size(), ");  // at ", vPatch[0]->getBarycenter());
    Zone2* const pZone = pMesh->createZone(vPatch);
    expect(pZone != nullptr, "triangles make a zone");
    const bool bComplete = !Hearing::heard("almost degenerate");
    noteBorder(pZone);
    know(pZone);
    if (!bComplete || !isExact()) return;
    expectShape(pZone, shape);
    vZones.back().area = shape.area;
    vZones.back().slack = shape.slack;
}

void ApiDriver::boundZone() {
    if (vZones.empty() || !isUsable() || isHugeOrTiny()) return;
    const KnownZone known = from.oneOf(vZones);
    const Shape shape = shapeOf(trianglesOf(known.pZone));
    say("zone->convertToBoundedZone();");
    Zone2* const pZone = known.pZone->convertToBoundedZone();
    expect((pZone != nullptr) == (!shape.sTriangles.empty() || known.pZone->getZoneLocation() == ZL_INSIDE),
           "zones with triangles have a border");
    if (pZone == known.pZone) return;
    noteApplied();
    if (pZone == nullptr) return;
    noteBorder(pZone);
    expectShape(pZone, shape);
    know(pZone, shape.area, shape.slack);
}

void ApiDriver::peelZone() {
    class IsLarge : public UserPredicateT {
    public:
        bool operator()(Triangle2* pT) override { return pT->getMaxSqEdgeLen2D() > 16.0; }
    } isLarge;
    if (vZones.empty() || !isUsable() || isHugeOrTiny()) return;
    const Zone2* const pBefore = from.oneOf(vZones).pZone;
    const Set sBefore = setOf(trianglesOf(pBefore));
    if (sBefore.empty() || sBefore.size() > 200) return;
    say("peelOffIf(zone, isLarge);");
    Zone2* const pZone = peelOffIf(const_cast<Zone2*>(pBefore), &isLarge);
    if (pZone == nullptr) return;
    noteBorder(pZone);
    const Set sAfter = setOf(trianglesOf(pZone));
    expect(std::includes(sBefore.begin(), sBefore.end(), sAfter.begin(), sAfter.end(), std::less<>()),
           "peeling adds no triangles");
    know(pZone);
}

void ApiDriver::unifyZone() {
    if (vZones.empty() || !pMesh->is2D() || isHugeOrTiny()) return;
    const Zone2* const pZone = from.oneOf(vZones).pZone;
    const double tolerance = from.oneIn(2) ? 0.0 : 0.05;
    if (tolerance != 0.0) bDelaunay = false;
    say("zone->unifyGrid(", tolerance, ");");
    const_cast<Zone2*>(pZone)->unifyGrid(tolerance);
}

// ------------------------------------------------------------------------------------------------------ cuts

/// Constraints have to lead from one end to the other, no further off the straight line than crossings are moved.
void ApiDriver::expectChain(const Segment2& knife) {
    std::map<Coordinates, std::vector<Coordinates>> mNext;
    const auto at = [](const Point2* p) { return Coordinates(p->x(), p->y()); };
    for (Triangle2* pT : trianglesOf(*pMesh))
        for (int i = 0; i < 3; ++i)
            if (pMesh->isConstraint(pT, i)) {
                const Point2 *const p = pT->getCorner((i + 1) % 3), *const q = pT->getCorner((i + 2) % 3);
                mNext[at(p)].push_back(at(q));
                mNext[at(q)].push_back(at(p));
            }
    const Point2 src = knife.getSrc(), trg = knife.getTrg();
    const auto isNear = [&](const Coordinates& to) {
        const double dx = trg.x() - src.x(), dy = trg.y() - src.y(), x = to.first - src.x(),
                     y = to.second - src.y();
        const double t = std::clamp((x * dx + y * dy) / (dx * dx + dy * dy), 0.0, 1.0);
        return std::hypot(x - t * dx, y - t * dy) < 1e-4;
    };
    std::set<Coordinates> sSeen{at(&src)};
    for (std::vector<Coordinates> vOpen{at(&src)}; !vOpen.empty();) {
        const Coordinates here = vOpen.back();
        vOpen.pop_back();
        if (here == at(&trg)) return;
        for (const Coordinates& to : mNext[here])
            if (isNear(to) && sSeen.insert(to).second) vOpen.push_back(to);
    }
    throw LawBroken("knives are chains of constraints");
}

void ApiDriver::cut() {
    if (!mayCross() || !isUsable()) return;
    Segments knives;
    for (unsigned n = 1 + from.below(2); n > 0; --n) knives.push_back(someSegment());
    if (!areAcceptable(knives, CIS_CONSTRAINED_DELAUNAY)) return;
    if (std::any_of(knives.begin(), knives.end(),
                    [](const Segment2& knife) { return knife.getSqLen2D() == 0.0; }))
        return;
    const bool bWithConstraints = from.oneIn(2);
    bDelaunay &= !bWithConstraints;
    say("mesh.cutTriangles(std::vector<Segment2>", knives, ", ", bWithConstraints, ");");
    pMesh->cutTriangles(knives, bWithConstraints);
    pDemands->noteOthers();
    for (const Segment2& knife : knives) vGiven.push_back(knife);
    noteConstraints();
    if (isExact() && isEnforced())
        for (const Segment2& knife : knives) expectChain(knife);
}

namespace {

/// The area of what a polygon has in common with a convex one, which runs counterclockwise.
double clippedArea(std::vector<Point2> polygon, const std::vector<Point2*>& vHull) {
    for (std::size_t i = 0; i < vHull.size(); ++i) {
        const Point2 &p = *vHull[i], &q = *vHull[(i + 1) % vHull.size()];
        const auto height = [&](const Point2& r) {
            return (q.x() - p.x()) * (r.y() - p.y()) - (q.y() - p.y()) * (r.x() - p.x());
        };
        std::vector<Point2> kept;
        for (std::size_t k = 0; k < polygon.size(); ++k) {
            const Point2 &r = polygon[k], &s = polygon[(k + 1) % polygon.size()];
            const double hr = height(r), hs = height(s);
            if (hr >= 0.0) kept.push_back(r);
            if ((hr < 0.0) == (hs < 0.0)) continue;
            const double t = hr / (hr - hs);
            kept.emplace_back(r.x() + t * (s.x() - r.x()), r.y() + t * (s.y() - r.y()));
        }
        polygon.swap(kept);
    }
    return std::fabs(zoneLaws::areaOf(polygon));
}

}  // namespace

void ApiDriver::cutCookie() {
    if (!mayCross() || !isUsable()) return;
    const Polygon polygon = somePolygon();
    const Segments ring = zoneLaws::ring(polygon);
    if (!areAcceptable(ring, CIS_CONSTRAINED_DELAUNAY)) return;
    std::vector<Point2*> vHull;
    pMesh->getConvexHull(false, vHull);
    const double area = clippedArea(polygon, vHull);
    const bool bClosed = isSimplePolygon(ring), bSimple = isSimple(polygon), bWithConstraints = from.oneIn(2);
    say("mesh.createZone_cookieCutter(std::vector<Segment2>", ring, ", ", bWithConstraints, ");");
    Zone2* const pZone = pMesh->createZone_cookieCutter(ring, bWithConstraints);
    bDelaunay &= !bWithConstraints;
    pDemands->noteOthers();
    for (const Segment2& side : ring) vGiven.push_back(side);
    noteConstraints();
    if (!bClosed) expect(pZone == nullptr, "only simple polygons cut cookies");
    if (isExact() && bSimple && isEnforced() && area > 1e-2)
        expect(pZone != nullptr, "a polygon over the mesh cuts a cookie");
    if (pZone == nullptr) return;
    double perimeter = 0.0;
    for (const Segment2& side : ring) perimeter += std::sqrt(side.getSqLen2D());
    know(pZone, area, 1e-4 * (1.0 + perimeter));
}
