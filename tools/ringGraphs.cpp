#include "ringGraphs.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// The library recognises a ring whose corners are all different; another one, which touches itself, gets its direction here.
ConstraintGraph2* constrainRing(Norvik_2D& mesh, Ring ring) {
    ConstraintGraph2* const pGraph = mesh.createConstraint(ring, CIS_CONSTRAINED_DELAUNAY);
    if (pGraph->isOriented()) return pGraph;
    double doubleArea = 0.0;
    const Point2 origin = ring[0].getSrc();
    for (const Segment2& segment : ring) {
        const Vector2 toSrc(origin, segment.getSrc()), toTrg(origin, segment.getTrg());
        doubleArea += toSrc.x() * toTrg.y() - toSrc.y() * toTrg.x();
    }
    if (doubleArea < 0.0)
        for (Segment2& segment : ring) segment.swapSrcTrg();
    return mesh.createConstraint(ring, CIS_CONSTRAINED_DELAUNAY, true);
}

}  // namespace

Graphs insertAll(Norvik_2D& mesh, const Input& input, const Rings& rings) {
    // All points at once are much faster than ring by ring.
    std::vector<Point2> points = input.points;
    for (const Segment2& segment : input.segments) {
        points.push_back(segment.getSrc());
        points.push_back(segment.getTrg());
    }
    mesh.insert(points);
    Graphs graphs;
    for (const Ring& ring : rings.vRings) graphs.vRings.push_back(constrainRing(mesh, ring));
    graphs.vAll = graphs.vRings;
    if (!rings.vLoose.empty())
        graphs.vAll.push_back(mesh.createConstraint(rings.vLoose, CIS_CONSTRAINED_DELAUNAY));
    if (mesh.is2D()) mesh.applyConstraintsAndZones();
    return graphs;
}

std::string crossesItself(std::size_t ringIndex) {
    return "ring " + std::to_string(ringIndex + 1) + " crosses itself, it has no inside";
}
