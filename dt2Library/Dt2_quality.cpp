#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "AddressSet.h"
#include "Circle2.h"
#include "Dt2.h"
#include "TriangleAroundVertexIterator.h"
#include "Visualizer2.h"
#include "diagnostics.h"
#include "distance.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

namespace {

constexpr const char* functionName = "Dt2::checkZoneQuality()";

// Values of the limit that ask for something else.
constexpr double writesConstraintsOnly = -1000.0;
constexpr double drawsZoneFirst = -999.0;
constexpr double testsGrowth = std::numeric_limits<double>::max();

// ----------------------------------------------------------------------------------------------------- growth

/// Tells of a triangle and the neighbour beside which it is too large. Across a constraint refinement compares with the area that
/// the constraint was given, which may explain the pair.
void reportGrowth(const ConstraintMgr& constraints, const Triangle2* pT, int edge, double area,
                  double neighbourArea) {
    warning(functionName, compose("Bad grow factor, area=", area, ", neigArea=", neighbourArea,
                                  ", grow=", area / neighbourArea));
    print(compose(*pT, "\n", *neighbour(pT, edge), "\n"));
    const ConstraintSegment2* const pCSeg =
        constraints.getAliveConstraintSegment(corner(pT, ccw(edge)), corner(pT, cw(edge)));
    print(pCSeg == nullptr ? "Have no pCSeg there\n"
                           : compose("Area in associated pCSeg is: ", pCSeg->getAdjacentArea(), "\n"));
}

/// Whether no neighbour within the zone is much smaller; reports those that are.
bool growsSlowly(const ConstraintMgr& constraints, const TriangleSet& sZone, const Triangle2* pT) {
    constexpr double greatestRatio = 3.0;
    constexpr double leastNeighbourArea = 0.25;  // absolute: smaller neighbours aren't compared
    bool bSlow = true;
    const double area = pT->getArea2D();
    for (int edge = 0; edge < 3; ++edge) {
        const Triangle2* const pNeighbour = neighbour(pT, edge);
        if (!sZone.contains(pNeighbour)) continue;
        const double neighbourArea = pNeighbour->getArea2D();
        if (leastNeighbourArea > neighbourArea || !(area / neighbourArea > greatestRatio)) continue;
        reportGrowth(constraints, pT, edge, area, neighbourArea);
        bSlow = false;
    }
    return bSlow;
}

bool checkGrowth(Dt2& dt, const std::vector<Triangle2*>& vTriangles, const std::string& name) {
    const TriangleSet sZone(vTriangles);
    std::vector<const Triangle2*> vBad;
    for (const Triangle2* pT : vTriangles)
        if (!growsSlowly(*dt.getConstraintManager(), sZone, pT)) vBad.push_back(pT);
    if (vBad.empty()) return true;

    Visualizer2 visualizer("badZone" + name + ".ps");
    dt.show(&visualizer, true);
    for (const Triangle2* pT : vBad)
        visualizer.addObject(pT->getBarycenter(), Color(1.0, 0.0, 0.0, 0.5, true));
    visualizer.writeFile();
    return false;
}

// ------------------------------------------------------------------------------------------ angles and aspects

/// What the test of angles and aspects has found.
struct AngleFindings {
    double worstAngle = std::numeric_limits<double>::max();
    std::vector<const Point2*> vBadCorners;
};

/// A bad aspect counts against all three corners.
void judgeAngles(const Triangle2* pT, double minAngleDegree, const std::string& name,
                 AngleFindings& findings) {
    constexpr double greatestAspect = 10.0;
    std::array<double, 3> lengths{};
    for (int i = 0; i < 3; ++i)
        lengths[static_cast<std::size_t>(i)] = distance(*corner(pT, ccw(i)), *corner(pT, cw(i)));
    const auto [shortest, longest] = std::minmax_element(lengths.begin(), lengths.end());
    const double aspect = *longest / *shortest;
    const bool bBadAspect = aspect > greatestAspect;
    if (bBadAspect) print(compose("HHH: Bad Aspect ", aspect, " for triangle ", *pT, "\n"));

    for (int i = 0; i < 3; ++i) {
        const double angle = pT->getInteriorAngle2D(i);
        findings.worstAngle = std::min(findings.worstAngle, angle);
        if (!(minAngleDegree > angle) && !bBadAspect) continue;
        findings.vBadCorners.push_back(corner(pT, i));
        print(compose("HHH, Norvik2D::checkZoneQuality(", name, "): angle(", i, ")=", angle,
                      ", oppLen=", lengths[static_cast<std::size_t>(i)], " (aspect=", aspect, ")\n"));
    }
}

/// A circle that stays clear of the vertices around, so that circles of neighbours can be told apart.
Circle2 markOf(const Point2* pVtx) {
    double nearest = std::numeric_limits<double>::max();
    TriangleAroundVertexIterator it(pVtx);
    const TriangleAroundVertexIterator start = it;
    do {
        if (const Triangle2* const pT = *it)
            nearest = std::min(nearest, distance(*pVtx, *corner(pT, ccw(indexOf(pT, pVtx)))));
        ++it;
    } while (it != start);
    const double radius = nearest / 3.0;
    return {*pVtx, radius * radius};
}

void drawBadCorners(Dt2& dt, const std::vector<const Point2*>& vBadCorners, const std::string& name) {
    Visualizer2 visualizer("Dt2_checkZoneQuality_" + name + ".ps");
    dt.show(&visualizer, true);
    for (const Point2* pVtx : vBadCorners)
        visualizer.addObject(markOf(pVtx), Color(0.0, 0.0, 1.0, 0.1, false));
    visualizer.writeFile();
}

bool checkAngles(Dt2& dt, const std::vector<Triangle2*>& vTriangles, double minAngleDegree,
                 const std::string& name) {
    AngleFindings findings;
    for (const Triangle2* pT : vTriangles) judgeAngles(pT, minAngleDegree, name, findings);
    if (findings.vBadCorners.empty()) return true;

    print("Norvik2D writes constraints to " + name + "[constraintnumber].con\n");
    dt.getConstraintManager()->writeConstraints(name);
    drawBadCorners(dt, findings.vBadCorners, name);
    print(compose("Norvik2D::checkZoneQuality() message: numTriangles: ", vTriangles.size(),
                  ", worst degree=", findings.worstAngle, "\n---------------------------------------\n"));
    return false;
}

}  // namespace

bool Dt2::checkZoneQuality(Zone2* pZone, double minAngleDegree, const std::string& fileName) {
    if (minAngleDegree == writesConstraintsOnly) {
        constraintMgr.writeConstraintsBIN(fileName);
        return true;
    }
    if (pZone == nullptr) {
        warning(functionName, "pZone==NULL, returning false");
        return false;
    }
    if (pZone->getDelaunayTriangulation() != this) {
        warning(functionName, "the zone belongs to another triangulation, returning false");
        return false;
    }
    if (minAngleDegree == drawsZoneFirst) pZone->debug(fileName + ".ps");
    applyConstraintsAndZones();
    std::vector<Triangle2*> vTriangles;
    pZone->getTriangles(vTriangles);
    return minAngleDegree == testsGrowth ? checkGrowth(*this, vTriangles, fileName)
                                         : checkAngles(*this, vTriangles, minAngleDegree, fileName);
}

}  // namespace KELMAR_NORVIK2D
