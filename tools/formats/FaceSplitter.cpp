#include "FaceSplitter.h"

#include <algorithm>
#include <set>
#include <utility>

using namespace KELMAR_NORVIK2D;

bool FaceSplitter::add(const std::vector<std::size_t>& corners) {
    if (corners.size() == 3) {
        mesh.triangles.push_back({corners[0], corners[1], corners[2]});
        return true;
    }
    return addFan(corners) || addTriangulated(corners);
}

/// Triangles that all have the first corner, which is what most faces can be divided to. They don't overlap if all turn alike
/// and all other corners lie to one side of the first edge: then these are seen from the first corner in their order.
bool FaceSplitter::addFan(const std::vector<std::size_t>& corners) {
    const auto orientation = [&](std::size_t i, std::size_t j) {
        return predicates.getOrientation(mesh.points[corners[0]], mesh.points[corners[i]],
                                         mesh.points[corners[j]]);
    };
    const Orientation2 turn = orientation(1, 2);
    if (turn == ORIENTATION2_COLLINEAR) return false;
    for (std::size_t i = 2; i + 1 < corners.size(); ++i)
        if (orientation(i, i + 1) != turn || orientation(1, i + 1) != turn) return false;
    for (std::size_t i = 1; i + 1 < corners.size(); ++i)
        mesh.triangles.push_back({corners[0], corners[i], corners[i + 1]});
    return true;
}

bool FaceSplitter::addTriangulated(const std::vector<std::size_t>& corners) {
    std::vector<Point2> ring;
    std::set<Point2> sDifferent;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Point2& point = mesh.points[corners[i]];
        ring.emplace_back(point.x(), point.y(), static_cast<int>(i));
        sDifferent.insert(ring.back());
    }
    if (sDifferent.size() != corners.size()) return false;

    Norvik_2D inside;
    inside.insert(ring);
    std::vector<Segment2> sides;
    for (std::size_t i = 0; i < ring.size(); ++i) sides.emplace_back(ring[i], ring[(i + 1) % ring.size()]);
    if (!inside.is2D() || !isSimplePolygon(sides)) return false;
    ConstraintGraph2* const pGraph = inside.createConstraint(sides, CIS_CONSTRAINED_DELAUNAY);
    Zone2* const pZone = inside.createZone(pGraph, ZL_INSIDE);
    if (pZone == nullptr) return false;

    std::vector<Triangle2*> vTriangles;
    pZone->getTriangles(vTriangles);
    // The leftmost corner, the lowest of these, is one of the hull, where the polygon turns as it does in all.
    const auto least = static_cast<std::size_t>(std::min_element(ring.begin(), ring.end()) - ring.begin());
    const Point2& before = ring[(least + ring.size() - 1) % ring.size()];
    const Point2& after = ring[(least + 1) % ring.size()];
    const bool bClockwise = predicates.getOrientation(before, ring[least], after) == ORIENTATION2_CW;
    for (const Triangle2* pTriangle : vTriangles) {
        IndexedMesh::Triangle triangle{};
        for (int i = 0; i < 3; ++i)
            triangle.at(static_cast<std::size_t>(i)) =
                corners[static_cast<std::size_t>(pTriangle->getCorner(i)->getCustomIndex())];
        if (bClockwise) std::swap(triangle[1], triangle[2]);
        mesh.triangles.push_back(triangle);
    }
    return true;
}
