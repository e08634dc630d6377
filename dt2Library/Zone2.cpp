#include "Zone2.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "Dt2.h"
#include "Histogram.h"
#include "TriangleMarks.h"
#include "VertexPair2.h"
#include "Visualizer2.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "distance.h"
#include "freeFunctions.h"
#include "geometryTools.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"
#include "tools.h"
#include "zoneFlood.h"

namespace KELMAR_NORVIK2D {

// ----------------------------------------------------------------------------------------------------- life

namespace {

void requireLocation(bool bHolds, ZoneLocation zoneLoc, const char* text) {
    if (bHolds) return;
    print(compose("zoneLoc=", static_cast<int>(zoneLoc), "\n"));
    error("Zone2::Zone2(..)", text);
    require(false, "false");
}

}  // namespace

Zone2::Zone2(Dt2* pDt_, ZoneLocation zoneLoc_) : pDt(pDt_), zoneLoc(zoneLoc_) {}

Zone2::Zone2(Dt2* pDt_, ZoneLocation zoneLoc_, ConstraintGraph2* pGraph)
    : pDt(pDt_), zoneLoc(zoneLoc_), vConstraintGraphs{pGraph} {
    if (pGraph == nullptr)
        error("Zone2::Zone2(..)", "The ConstraintGraph is NULL");
    else if (!pGraph->isOriented())
        error("Zone2::Zone2(..)", "The ConstraintGraph is not oriented");
    requireLocation(
        zoneLoc == ZL_INSIDE || zoneLoc == ZL_OUTSIDE || zoneLoc == ZL_BOUNDED, zoneLoc,
        "The ZoneLocation for this constructor can only be one of ZL_INSIDE, ZL_OUTSIDE, ZL_BOUNDED");
}

Zone2::Zone2(Dt2* pDt_, ZoneLocation zoneLoc_, const std::vector<ConstraintGraph2*>& vGraphs)
    : pDt(pDt_), zoneLoc(zoneLoc_), vConstraintGraphs(vGraphs) {
    requireLocation(zoneLoc == ZL_INSIDE || zoneLoc == ZL_OUTSIDE, zoneLoc,
                    "ZoneLocation for this constructor must be ZL_INSIDE or ZL_OUTSIDE!");
    if (vGraphs.empty()) error("Zone2::Zone2(..)", "vConstraintGraphs is empty");
    for (const ConstraintGraph2* pGraph : vGraphs)
        if (pGraph == nullptr || !pGraph->isOriented())
            error("Zone2::Zone2(..)", "One of the ConstraintGraphs is not oriented!");
}

Zone2::Zone2(Dt2* pDt_, const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc_,
             const std::vector<Point2>& vSeeds)
    : pDt(pDt_), zoneLoc(zoneLoc_), vConstraintGraphs(vGraphs), vStartPoints(vSeeds) {}

ConstraintGraph2* Zone2::getConstraintGraph() const {
    if (vConstraintGraphs.size() > 1) {
        warning("Zone2::getConstraintGraph()",
                "There is more than one constraint graph, use Zone2::getConstraintGraphs() instead. "
                "Returning NULL");
        return nullptr;
    }
    return vConstraintGraphs.empty() ? nullptr : vConstraintGraphs.front();
}

void Zone2::getConstraintGraphs(std::vector<ConstraintGraph2*>& out) const {
    out.insert(out.end(), vConstraintGraphs.begin(), vConstraintGraphs.end());
}

// ------------------------------------------------------------------------------------------------ triangles

void Zone2::getTriangles(std::vector<Triangle2*>& out) const {
    RoundToNearest nearest;
    if (!pDt->is2D()) {
        warning("Zone2::getTriangles()", "is2D() is false, nothing to return");
        return;
    }
    std::vector<Triangle2*> vWorkspace;
    switch (zoneLoc) {
        case ZL_GLOBAL:
            vWorkspace.push_back(pDt->getOneValidTriangle());
            bfsFromWorkspace(vWorkspace, out);
            break;
        case ZL_INSIDE:
        case ZL_BOUNDED:
            initWorkspace(true, vWorkspace);
            bfsFromWorkspace(vWorkspace, out);
            break;
        case ZL_OUTSIDE:
            initWorkspace(false, vWorkspace);
            bfsFromWorkspace(vWorkspace, out);
            break;
        case ZL_GROW:
            pDt->growZoneArea(vConstraintGraphs, vStartPoints, out);
            break;
        case ZL_RESULT_UNION:
        case ZL_RESULT_INTERSECTION:
        case ZL_RESULT_DIFFERENCE:
        case ZL_RESULT_SYM_DIFFERENCE:
            getTriangles_RESULT(out);
            break;
        default:
            error("Zone2::getTriangles()", "unknown zoneLoc value");
    }
}

/// Finds the triangles along the graphs on the wanted side.
void Zone2::initWorkspace(bool bInside, std::vector<Triangle2*>& vWorkspace) const {
    if (zoneLoc != ZL_INSIDE && zoneLoc != ZL_OUTSIDE && zoneLoc != ZL_BOUNDED)
        error("Zone2::initWorkspace", "Wrong zoneLocation");
    std::vector<Point2*> vEnds;
    std::vector<VertexPair2> vPairs, vSorted;
    for (const ConstraintGraph2* pGraph : vConstraintGraphs) {
        if (pGraph == nullptr) continue;
        vEnds.clear();
        pGraph->getPolygonVertices(vEnds);
        vPairs.clear();
        for (std::size_t i = 0; i + 1 < vEnds.size(); i += 2) vPairs.emplace_back(vEnds[i], vEnds[i + 1]);
        vSorted = vPairs;
        std::sort(vSorted.begin(), vSorted.end());
        for (std::size_t i = 0; i < vPairs.size(); ++i) {
            Point2* const a = vEnds[2 * i];
            Point2* const b = vEnds[2 * i + 1];
            // An edge that is used repeatedly is a spike in the border, with no inside to start from.
            const auto [first, behind] = std::equal_range(vSorted.begin(), vSorted.end(), vPairs[i]);
            if (bInside && behind - first > 1) continue;
            Triangle2* const pStartT =
                bInside ? pDt->getAdjacentTriangle(a, b) : pDt->getAdjacentTriangle(b, a);
            if (pStartT != nullptr) vWorkspace.push_back(pStartT);
        }
    }
}

void Zone2::bfsFromWorkspace(std::vector<Triangle2*>& vWorkspace, std::vector<Triangle2*>& out) const {
    require(zoneLoc == ZL_GLOBAL || zoneLoc == ZL_INSIDE || zoneLoc == ZL_OUTSIDE || zoneLoc == ZL_BOUNDED,
            "zoneLoc==ZL_GLOBAL || zoneLoc==ZL_INSIDE || zoneLoc==ZL_OUTSIDE || zoneLoc==ZL_BOUNDED");
    TriangleMarks marks(pDt->getTrianglePool());
    flood(vWorkspace, Walls(vConstraintGraphs), marks);
    marks.appendTo(out);
}

/// Results may be made of results to any depth, and a zone be an operand of many: operands are computed before what is made of
/// them, each once, and forgotten when nobody needs them any more.
void Zone2::getTriangles_RESULT(std::vector<Triangle2*>& out) const {
    struct Operand {
        std::size_t numUses = 0;
        std::vector<Triangle2*> vTriangles;
    };
    std::map<const Zone2*, Operand> mOperands;
    std::vector<const Zone2*> vInOrder;
    std::vector<std::pair<const Zone2*, bool>> vOpen{{this, false}};  // and whether its operands are in order
    while (!vOpen.empty()) {
        const auto [pZone, bReady] = vOpen.back();
        vOpen.pop_back();
        if (bReady) {
            vInOrder.push_back(pZone);
            continue;
        }
        if (mOperands[pZone].numUses++ != 0) continue;
        vOpen.emplace_back(pZone, true);
        for (const Zone2* pInput : pZone->vInputZones) vOpen.emplace_back(pInput, false);
    }
    for (const Zone2* pZone : vInOrder) {
        std::vector<Triangle2*>& vTriangles = mOperands[pZone].vTriangles;
        if (!pZone->isResult()) {
            pZone->getTriangles(vTriangles);
            if (!std::is_sorted(vTriangles.begin(), vTriangles.end(), ByAddress{}))
                std::sort(vTriangles.begin(), vTriangles.end(), ByAddress{});
        } else if (pZone->vInputZones.size() == 2) {
            Operand& operand0 = mOperands[pZone->vInputZones[0]];
            Operand& operand1 = mOperands[pZone->vInputZones[1]];
            pZone->combine(operand0.vTriangles, operand1.vTriangles, vTriangles);
            for (Operand* pOperand : {&operand0, &operand1})
                if (--pOperand->numUses == 0) pOperand->vTriangles = {};
        }
        // One made for an operation that was never carried out combines nothing.
    }
    const std::vector<Triangle2*>& vResult = mOperands[this].vTriangles;
    out.insert(out.end(), vResult.begin(), vResult.end());
}

/// Carries out the operation on ordered triangles.
void Zone2::combine(const std::vector<Triangle2*>& v0, const std::vector<Triangle2*>& v1,
                    std::vector<Triangle2*>& out) const {
    const auto result = std::back_inserter(out);
    switch (zoneLoc) {
        case ZL_RESULT_UNION:
            std::set_union(v0.begin(), v0.end(), v1.begin(), v1.end(), result, ByAddress{});
            break;
        case ZL_RESULT_INTERSECTION:
            std::set_intersection(v0.begin(), v0.end(), v1.begin(), v1.end(), result, ByAddress{});
            break;
        case ZL_RESULT_DIFFERENCE:
            std::set_difference(v0.begin(), v0.end(), v1.begin(), v1.end(), result, ByAddress{});
            break;
        case ZL_RESULT_SYM_DIFFERENCE:
            std::set_symmetric_difference(v0.begin(), v0.end(), v1.begin(), v1.end(), result, ByAddress{});
            break;
        default:
            error("Zone2::getTriangles_RESULT", "Unexpected value");
            require(false, "false");
    }
}

std::size_t Zone2::getNumberOfTriangles() const {
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    return vTriangles.size();
}

double Zone2::getArea2D() const {
    RoundToNearest nearest;
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    double area = 0.0;
    for (const Triangle2* pT : vTriangles) area += pT->getArea2D();
    return area;
}

void Zone2::getVertices(std::vector<Point2*>& out) const {
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    KELMAR_NORVIK2D::getVertices(vTriangles, out);
}

Bbox2 Zone2::getBoundingBox() const {
    std::vector<Point2*> vVertices;
    getVertices(vVertices);
    return getBox(vVertices);
}

// --------------------------------------------------------------------------------------------------- border

void Zone2::getBoundaryEdges(std::vector<Edge2>& out) const {
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    visitBorders(vTriangles, [&](Triangle2* pT, int i) { out.emplace_back(pT, i); });
}

void Zone2::getBorderEdges(std::vector<Edge2>& out) const {
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    std::sort(vTriangles.begin(), vTriangles.end(), ByAddress{});
    visitBorders(vTriangles, [&](Triangle2* pT, int i) { out.emplace_back(pT, i); });
}

void Zone2::getBoundarySegments(std::vector<Segment2>& out) const {
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    getBorders_tools(vTriangles, out);
}

Zone2* Zone2::convertToBoundedZone() {
    RoundToNearest nearest;
    if (zoneLoc == ZL_INSIDE) return this;
    pDt->applyConstraintsAndZones();
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    if (vTriangles.empty()) {
        warning("Zone2::convertToBoundedZone()", "No triangles available, returning NULL");
        return nullptr;
    }
    // What several seeds reach counts once: an edge that is given twice bounds nothing.
    TriangleMarks marks(pDt->getTrianglePool());
    std::erase_if(vTriangles, [&](const Triangle2* pT) { return !marks.insert(pT); });
    std::vector<Edge2> vEdges;
    visitBorders(vTriangles, [&](Triangle2* pT, int i) { vEdges.emplace_back(pT, i); });
    return pDt->createZone(vEdges, ZL_BOUNDED);
}

// ---------------------------------------------------------------------------------------------------- grids

namespace {

/// Whether a segment runs down to the right. A vertical one counts, a horizontal one doesn't.
bool falls(const Point2& a, const Point2& b) {
    if (a.x() == b.x()) return true;
    return a.x() < b.x() ? b.y() < a.y() : b.y() > a.y();
}

/// The longest edge of each triangle, longest first, by the lengths that they have now.
std::vector<Edge2> longestEdges(const std::vector<Triangle2*>& vTriangles) {
    std::vector<std::pair<double, Edge2>> vByLength;
    vByLength.reserve(vTriangles.size());
    for (Triangle2* pT : vTriangles) {
        const Edge2 edge(pT, pT->getMaxIndex());
        vByLength.emplace_back(edge.getLength2D(), edge);
    }
    std::stable_sort(vByLength.begin(), vByLength.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<Edge2> vEdges;
    vEdges.reserve(vByLength.size());
    for (const auto& [squaredLength, edge] : vByLength) vEdges.push_back(edge);
    return vEdges;
}

}  // namespace

void Zone2::unifyGrid(double tolerance) {
    //           a
    //         /   \            a and b are the ends of the edge of T0 opposite d and of T1 opposite c;
    //        d     c           c-d is to replace a-b
    //         \   /
    //           b
    RoundToNearest nearest;
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    TriangleMarks marks(pDt->getTrianglePool());
    for (const Triangle2* pT : vTriangles) marks.insert(pT);
    KelmarTest& predicates = *pDt->getPredicates();
    std::set<VertexPair2> sFlippedDiagonals;
    for (const Edge2& edge : longestEdges(vTriangles)) {
        Triangle2 *pT0, *pT1;
        int i0, i1;
        edge.getTriangles(pT0, pT1, i0, i1);
        if (pT1 == nullptr) continue;
        Point2* const a = edge.getSrc();
        Point2* const b = edge.getTrg();
        Point2* const c = corner(pT1, i1);
        Point2* const d = corner(pT0, i0);
        if (!falls(*a, *b) || sFlippedDiagonals.count({a, b}) != 0 || !marks.contains(pT0) ||
            !marks.contains(pT1) || pDt->isConstraint(a, b))
            continue;
        if (tolerance > 0) {
            const double length = distance(*a, *b), otherLength = distance(*c, *d);
            if (std::fabs(length - otherLength) / std::max(length, otherLength) > tolerance) continue;
        } else if (predicates.circleInc3state(pT0, c) != CINC2_ZERO) {
            continue;
        }
        const Orientation2 sideOfA = predicates.getOrientation2(d, c, a);
        const Orientation2 sideOfB = predicates.getOrientation2(d, c, b);
        if (sideOfA == sideOfB || sideOfA == ORIENTATION2_COLLINEAR || sideOfB == ORIENTATION2_COLLINEAR)
            continue;
        sFlippedDiagonals.insert({c, d});
        pDt->flip(pT0, i0);
        if (tolerance > 0) pDt->expectLackOfDelaunay();
    }
}

// -------------------------------------------------------------------------------------- reports and pictures

void Zone2::statistics(const std::string& name) const {
    RoundToNearest nearest;
    print("\n\n\n********* ZONE STATISTICS (" + name + ") **********\n\n");
    Histogram histogram = Histogram::ofAngles();
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    print(compose("Number of triangles: ", vTriangles.size(), "\n"));
    for (const Triangle2* pT : vTriangles) histogram.addAnglesOf(pT);
    histogram.show();
}

void Zone2::show(const std::string& fileName, bool bShowFull, bool bWithConstraints) const {
    Visualizer2 visualizer(fileName);
    show(&visualizer, bShowFull, bWithConstraints);
    visualizer.writeFile();
}

void Zone2::show(Visualizer2* pVisualizer, bool bShowFull, bool bWithConstraints) const {
    RoundToNearest nearest;
    if (pVisualizer == nullptr) {
        warning("Zone2::show()", "pVisualizer==NULL, nothing done");
        return;
    }
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    for (const Triangle2* pT : vTriangles) pVisualizer->addObject(*pT, Color(0.94, 0.9, 0.55, 0.01, true));
    if (bShowFull) {
        pDt->show(pVisualizer, bWithConstraints);
        return;
    }
    const ConstraintMgr& constraints = *pDt->getConstraintManager();
    std::vector<VertexPair2> vPairs;
    getVertexPairs(vTriangles, vPairs);
    for (const VertexPair2& pair : vPairs) {
        const bool bRed = bWithConstraints && constraints.isConstraint(pair.getVtx0(), pair.getVtx1());
        pVisualizer->addObject(
            Segment2(*pair.getVtx0(), *pair.getVtx1()),
            bRed ? Color(COLORNAME_RED, 0.5F, false) : Color(COLORNAME_BLACK, 0.001F, false));
    }
}

void Zone2::debug(const std::string& name) const {
    RoundToNearest nearest;
    print("This is Zone2::debug()\n");
    Visualizer2 visualizer(name.empty() ? "debug.ps" : name);
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    for (const Triangle2* pT : vTriangles) visualizer.addObject(*pT, Color(0.3, 0.3, 0.3, 0.05, false));
    for (const ConstraintGraph2* pGraph : vConstraintGraphs)
        if (pGraph != nullptr) pGraph->show(&visualizer, Color(1.0, 0.0, 0.0, 0.5, false));
    visualizer.writeFile();
}

}  // namespace KELMAR_NORVIK2D
