#include "ApiDriver.h"

#include <algorithm>
#include <cmath>

#include "ApiTrace.h"
#include "clientSettings.h"
#include "meshLaws.h"
#include "zoneLaws.h"

using namespace KELMAR_NORVIK2D;

// ------------------------------------------------------------------------------------------------- hearing

namespace {

thread_local std::string heardText;

void hear(MessageKind /*kind*/, const std::string& source, const std::string& text) {
    constexpr std::size_t mostKept = 20000;
    if (heardText.size() < mostKept) heardText.append(source).append(": ").append(text).append("\n");
}

}  // namespace

void Hearing::begin() {
    [[maybe_unused]] static const MessageHandler before = setMessageHandler(hear);
    heardText.clear();
}

bool Hearing::heard(const std::string& text) { return heardText.find(text) != std::string::npos; }
const std::string& Hearing::all() { return heardText; }

// ------------------------------------------------------------------------------------------------- actions

struct ApiDriver::Action {
    unsigned share;
    void (ApiDriver::*act)();
    bool bLong = false;  ///< takes much longer than others, or adds much
};

ApiDriver::ApiDriver(Decisions& from_, const Options& options_) : from(from_), options(options_) {
    static constexpr Character characters[] = {Character::CLEAN,    Character::CLEAN,   Character::CLEAN,
                                               Character::MODERATE, Character::EXTREME, Character::MESSY};
    character = characters[from.below(6)];
    rounding = roundingModes[from.below(4)];
    hardPoints = HardPoints(isHugeOrTiny() ? HardPoints::Magnitudes::ALL : HardPoints::Magnitudes::MODERATE);
    Hearing::begin();
    begin();
}

void ApiDriver::begin() {
    // A new object, or the old one made new.
    if (pMesh == nullptr || from.oneIn(2))
        pMesh = std::make_unique<Norvik_2D>(from.below(100));
    else
        pMesh->initNorvik(from.below(100));
    say("// ---- a new mesh");
    mVertices.clear();
    vHandles.clear();
    vRemoved.clear();
    sOnceAlive.clear();
    vGiven.clear();
    vGraphs.clear();
    vRings.clear();
    vZones.clear();
    pDemands = std::make_unique<Demands>(*pMesh);
    // Many crossings add up, and pieces of messy segments go astray.
    pDemands->setSlack(character == Character::MESSY ? HUGE_VAL : 2e-5);
    bDelaunay = true;
    bWaiting = bLacking = bConforming = bRefined = bDrawnSince = bFull = false;
    numFutileRemovals = 0;
    constexpr std::size_t large = 500;
    if (options.mostVertices > large) fill(options.mostVertices / 10 * 9);
}

/// A large mesh begins with many vertices.
void ApiDriver::fill(std::size_t numPoints) {
    std::vector<Point2> points;
    for (; numPoints > 0; --numPoints)
        points.push_back(character == Character::CLEAN
                             ? Point2(from.around0(4096) / 512.0, from.around0(4096) / 512.0)
                             : hardPoints.next(from));
    say("mesh.insert(std::vector<Point2>", points, ");");
    std::vector<Point2*> handles;
    pMesh->insert(points, handles);
    for (std::size_t i = 0; i < points.size(); ++i) noteInserted(points[i], handles[i]);
}

void ApiDriver::beginAnew() {
    if (from.oneIn(4)) begin();
}

void ApiDriver::step() {
    using D = ApiDriver;
    static constexpr Action actions[] = {
        {70, &D::insertOne},
        {12, &D::insertMany},
        {3, &D::insertArray},
        {3, &D::insertAndCancel},
        {55, &D::removeOne},
        {10, &D::locateOne},
        {5, &D::locateMany},
        {14, &D::addSegments},
        {6, &D::addRing},
        {6, &D::apply},
        {2, &D::applyAndCancel},
        {3, &D::splitPiece, true},
        {3, &D::askGraph},
        {10, &D::makeZone},
        {8, &D::combineZones},
        {6, &D::dropZone},
        {5, &D::askMesh},
        {6, &D::askVertex},
        {4, &D::mistake},
        {2, &D::control},
        {1, &D::beginAnew},
        {3, &D::zoneOfTriangles, true},
        {3, &D::boundZone, true},
        {2, &D::peelZone, true},
        {2, &D::unifyZone, true},
        {4, &D::cut, true},
        {3, &D::cutCookie, true},
        {5, &D::refine, true},
        {3, &D::importElsewhere, true},
        {2, &D::exportArrays, true},
        {1, &D::insertVeryMany, true},
    };
    static const unsigned sum = [] {
        unsigned total = 0;
        for (const Action& action : actions) total += action.share;
        return total;
    }();
    Hearing::begin();
    unsigned drawn = from.below(sum);
    const Action* pAction = actions;
    for (; drawn >= pAction->share; ++pAction) drawn -= pAction->share;
    const bool bDone = !pAction->bLong || options.rarity == 1 || from.oneIn(options.rarity);
    const ClientSettings settings(rounding, false);
    if (mVertices.size() > options.mostVertices)
        shrink();
    else
        (this->*(bDone ? pAction->act : &D::insertOne))();
    expect(settings.areKept(), "the caller's rounding mode is left as it was");
}

// ------------------------------------------------------------------------------------------ what to choose from

Point2 ApiDriver::somePoint() {
    if (character != Character::CLEAN) return hardPoints.next(from);
    const auto coordinate = [this] {
        return from.oneIn(4) ? 0.0625 * from.around0(127) : 0.5 * from.around0(16);
    };
    if (vHandles.empty() || !from.oneIn(6)) return {coordinate(), coordinate()};
    const Point2& earlier = *from.oneOf(vHandles);
    return from.oneIn(2) ? Point2(earlier.x(), coordinate()) : earlier;
}

Segment2 ApiDriver::someSegment() {
    const bool bBetweenOld = !vHandles.empty() && from.oneIn(3);
    const Point2 src = bBetweenOld ? Point2(*from.oneOf(vHandles)) : somePoint();
    return {src, bBetweenOld ? Point2(*from.oneOf(vHandles)) : somePoint()};
}

/// Mostly a simple one: points in their order around a centre.
ApiDriver::Polygon ApiDriver::somePolygon() {
    Polygon polygon;
    for (unsigned n = 3 + (isHugeOrTiny() ? 0 : from.below(6)); n > 0; --n) polygon.push_back(somePoint());
    Point2 center = polygon[0];
    for (const Point2& p : polygon) center = Point2(0.5 * (center.x() + p.x()), 0.5 * (center.y() + p.y()));
    const auto angle = [&](const Point2& p) { return std::atan2(p.y() - center.y(), p.x() - center.x()); };
    if (polygon.size() > 3)
        std::sort(polygon.begin(), polygon.end(),
                  [&](const Point2& p, const Point2& q) { return angle(p) < angle(q); });
    if (from.oneIn(2)) std::reverse(polygon.begin(), polygon.end());
    return polygon;
}

Point2* ApiDriver::someHandle() { return vHandles.empty() ? nullptr : from.oneOf(vHandles); }

// ---------------------------------------------------------------------------------------------------- laws

void ApiDriver::check() {
    Hearing::begin();
    const bool bConstraints = !vGiven.empty();
    std::string faults = bConstraints ? pDemands->check(isEnforced()) : lawsBroken(*pMesh);
    // Circles are looked at last, when all else is well.
    if (!bDelaunay && faults.rfind("circumcircles are empty", 0) == 0) faults.clear();
    if (!faults.empty()) throw LawBroken(faults);
    // The library's exact stage takes its time with circles, which have been looked at already.
    const bool bCircles = bDelaunay && numChecks++ % 8 == 0;
    if (isEnforced()) expect(pMesh->checkValidity(bCircles, "check"), "the mesh is valid");
    checkVertices();
    checkTriangles();
    if (!isEnforced()) return;
    for (const KnownZone& known : vZones) checkZone(known);
}

void ApiDriver::checkVertices() {
    expect(pMesh->numberOfPoints() == mVertices.size(), "there are the vertices that there should be");
    for (const auto& [xy, pVtx] : mVertices) {
        expect(pVtx->x() == xy.first && pVtx->y() == xy.second, "vertices keep their coordinates");
        expect((pVtx->getIncidentTriangle() != nullptr) == pMesh->is2D(), "vertices have a triangle");
    }
    for (const Point2* pVtx : vRemoved)
        expect(pVtx->getIncidentTriangle() == nullptr, "removed vertices have no triangle");
}

/// Dead triangles wait in the pool with nothing in them.
void ApiDriver::checkTriangles() {
    const Triangles vAlive = zoneLaws::trianglesOf(*pMesh);
    const zoneLaws::TriangleSet sAlive = zoneLaws::setOf(vAlive);
    for (Triangle2* pT : sOnceAlive)
        for (int i = 0; i < 3 && sAlive.count(pT) == 0; ++i)
            expect(pT->getCorner(i) == nullptr && pT->getOppositeTriangle(i) == nullptr,
                   "dead triangles have no corners and no neighbours");
    sOnceAlive.insert(vAlive.begin(), vAlive.end());
}
