#include <algorithm>

#include "Circle2.h"
#include "Dt2.h"
#include "Histogram.h"
#include "Segment2.h"
#include "Visualizer2.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "require.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

namespace {

using VertexPair = std::pair<Point2*, Point2*>;

/// A failure of the empty circle property.
struct NonEmptyCircle {
    const Triangle2* pT;
    const Point2* pInside;
};

/// Says what is wrong between a triangle and its neighbour; null if nothing is.
const char* faultBetween(const Triangle2* pT, int edge) {
    const Triangle2* pU = neighbour(pT, edge);
    int numBackPointers = 0, j = -1;
    for (int i = 0; i < 3; ++i) {
        if (neighbour(pU, i) != pT) continue;
        ++numBackPointers;
        j = i;
    }
    if (numBackPointers != 1) return "Inconsistent neighborships:";
    const bool bSameEdge =
        corner(pT, ccw(edge)) == corner(pU, cw(j)) && corner(pT, cw(edge)) == corner(pU, ccw(j));
    return bSameEdge ? nullptr : "Neighbor found but inconsistent intra triangle indices:";
}

bool checkStructure(const std::vector<Triangle2*>& vTriangles, const std::string& source) {
    bool bOK = true;
    const auto report = [&](const std::string& text, const std::string& data) {
        error(source, text);
        print(data);
        bOK = false;
    };
    for (const Triangle2* pT : vTriangles) {
        if (corner(pT, 0) == corner(pT, 1) || corner(pT, 1) == corner(pT, 2) ||
            corner(pT, 2) == corner(pT, 0))
            report("Less than three different corners", compose(*pT, "\n"));
        for (int edge = 0; edge < 3; ++edge) {
            if (neighbour(pT, edge) == nullptr) continue;
            const char* const fault = faultBetween(pT, edge);
            if (fault != nullptr) report(fault, compose(*pT, "\n", *neighbour(pT, edge), "\n"));
        }
    }
    return bOK;
}

void plotFailures(Visualizer2& visualizer, const std::vector<NonEmptyCircle>& vFailures) {
    const Color triangleColor(COLORNAME_GREEN, 1.0F, false), circleColor(COLORNAME_GREEN, 0.1F, false),
        pointColor(COLORNAME_BLUE, 0.001F, false);
    for (const auto& [pT, pInside] : vFailures) {
        visualizer.addObject(*pT, triangleColor);
        const Point2 center = pT->getDual().first;
        const Circle2 circle(center, Segment2(center, *corner(pT, 0)).getSqLen2D());
        if (circle.getRadius() < 100.0) {
            visualizer.addObject(circle, circleColor);
            visualizer.addObject(center, circleColor);
        }
        visualizer.addObject(*pInside, pointColor);
    }
}

}  // namespace

void Dt2::show(const std::string& fileName, bool bWithConstraints) {
    if (!is2D()) {
        show(static_cast<Visualizer2*>(nullptr), bWithConstraints);
        return;
    }
    Visualizer2 visualizer(fileName);
    show(&visualizer, bWithConstraints);
    visualizer.writeFile();
}

void Dt2::show(Visualizer2* pVisualizer, bool bWithConstraints) {
    if (!is2D()) {
        error("Dt2::show()", "The triangulation is not 2D, no visualization");
        return;
    }
    if (pVisualizer == nullptr) {
        warning("Dt2::show()", "pVisualizer==NULL, nothing done");
        return;
    }
    std::vector<VertexPair> vEdges, vConstraints;
    visitTriangles([&](const Triangle2* pT) {
        for (int i = 0; i < 3; ++i) {
            const VertexPair ends = std::minmax({corner(pT, ccw(i)), corner(pT, cw(i))}, ByAddress{});
            (isConstraint(pT, i) ? vConstraints : vEdges).emplace_back(ends);
        }
        return false;
    });
    const auto addEdges = [&](std::vector<VertexPair>& vPairs, const Color& color) {
        oneInstance(vPairs);
        for (const auto& [pA, pB] : vPairs) pVisualizer->addObject(Segment2(*pA, *pB), color);
    };
    addEdges(vEdges, Color(COLORNAME_BLACK, 0.01F, false));
    addEdges(vConstraints,
             bWithConstraints ? Color(COLORNAME_RED, 0.5F, false) : Color(COLORNAME_BLACK, 0.001F, false));
}

/// Whether all alive constraints are edges.
bool Dt2::checkConstraints() {
    std::vector<ConstraintSegment2*> vAlive, vContained, vMissing;
    constraintMgr.getAliveConstraintSegments(vAlive);
    for (ConstraintSegment2* pCSeg : vAlive) {
        Point2* const p0 = pCSeg->getSrc();
        Point2* const p1 = pCSeg->getTrg();
        const bool bContained =
            p0->getIncidentTriangle() != nullptr && p1->getIncidentTriangle() != nullptr &&
            (getAdjacentTriangle(p0, p1) != nullptr || getAdjacentTriangle(p1, p0) != nullptr);
        (bContained ? vContained : vMissing).push_back(pCSeg);
    }
    if (vMissing.empty()) return true;

    print(compose("\n* ConstraintSegments (alive): ", vAlive.size(), ", contained: ", vContained.size(),
                  ", missing: ", vMissing.size(), "\n"));
    Visualizer2 visualizer(globalPrefix() + "checkValidityFail_" + getName() + ".ps");
    show(&visualizer, true);
    const auto addSegments = [&](const std::vector<ConstraintSegment2*>& vSegments, Colorname colorName) {
        const Color color(colorName, 1.0F, false);
        for (const ConstraintSegment2* pCSeg : vSegments)
            visualizer.addObject(Segment2(*pCSeg->getSrc(), *pCSeg->getTrg()), color);
    };
    addSegments(vContained, COLORNAME_GREEN);
    addSegments(vMissing, COLORNAME_RED);
    visualizer.writeFile();
    for (const ConstraintSegment2* pCSeg : vMissing) print(compose("Not contained: ", *pCSeg, "\n"));
    return false;
}

bool Dt2::checkValidity(bool bCheckEmptyCircleProperty, const std::string& msg) {
    if (!is2D()) {
        warning("checkValidity(" + msg + ")",
                "not fulldimensional yet (empty or all points collinear), Returning true");
        return true;
    }
    const std::string source = "Norvik_2D::CheckValidity(" + msg + ")";
    std::vector<Triangle2*> vTriangles;
    getTrianglePointers(vTriangles);
    const bool bConstraintsOK = checkConstraints();
    const bool bStructureOK = checkStructure(vTriangles, source);

    std::vector<NonEmptyCircle> vFailures;
    for (std::size_t i = 0; bCheckEmptyCircleProperty && i < vTriangles.size(); ++i) {
        const Triangle2* pT = vTriangles[i];
        for (int edge = 0; edge < 3; ++edge) {
            if (neighbour(pT, edge) == nullptr || isConstraint(pT, edge)) continue;
            // Across a broken link there is no circle to check; it has been reported.
            if (faultBetween(pT, edge) != nullptr) continue;
            const Point2* pFar = farCorner(pT, edge);
            if (predicates.exact_circleInc3state(pT, pFar) != CINC2_INCIRCLE) continue;
            error(source, "Sphere inclusion test failed ");
            print(compose(*pT, "\n", *pFar, "\n"));
            vFailures.push_back({pT, pFar});
        }
    }
    if (bStructureOK && vFailures.empty()) return bConstraintsOK;

    print("\ncheckValidity, bug, name=" + getName() + "\n");
    show(globalPrefix() + "currentState.ps", true);
    Visualizer2 visualizer(globalPrefix() + "badEmptyCircle.ps");
    show(&visualizer, true);
    plotFailures(visualizer, vFailures);
    visualizer.writeFile();
    return false;
}

void Dt2::statistics(const std::string& title) const {
    print("\n\n\n********* MESH STATISTICS (" + title + ") **********\n\n");
    Histogram histogram = Histogram::ofAngles();
    print(compose("Number of triangles: ", numberOfTriangles(), "\n"));
    visitTriangles([&](const Triangle2* pT) {
        histogram.addAnglesOf(pT);
        return false;
    });
    histogram.show();
}

}  // namespace KELMAR_NORVIK2D
