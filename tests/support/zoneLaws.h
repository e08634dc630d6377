#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "hardSegments.h"
#include "meshLaws.h"

/// Regions and cuts by other means than the library's own: plain coordinates, and triangles by public getters only.
namespace zoneLaws {

using hardSegments::Segments;
using KELMAR_NORVIK2D::Edge2, KELMAR_NORVIK2D::Norvik_2D, KELMAR_NORVIK2D::Point2, KELMAR_NORVIK2D::Segment2,
    KELMAR_NORVIK2D::Triangle2, KELMAR_NORVIK2D::Zone2;
using Polygon = std::vector<Point2>;
using Triangles = std::vector<Triangle2*>;
using TriangleSet = std::set<Triangle2*, std::less<>>;

inline Polygon box(double minX, double minY, double maxX, double maxY) {
    return {{minX, minY}, {maxX, minY}, {maxX, maxY}, {minX, maxY}};
}
inline Polygon reversed(const Polygon& polygon) { return {polygon.rbegin(), polygon.rend()}; }
inline Segments ring(const Polygon& polygon) { return hardSegments::chain(polygon, true); }
template <class T>
std::vector<T> joined(std::vector<T> items, const std::vector<T>& more) {
    items.insert(items.end(), more.begin(), more.end());
    return items;
}

/// A random simple polygon, counterclockwise.
inline Polygon star(hardPoints::Rng& rng, int n, const Point2& center, double minRadius, double maxRadius) {
    Polygon polygon;
    for (int i = 0; i < n; ++i) {
        const double angle = 6.283185307179586 * (i + 0.8 * hardPoints::unit(rng)) / n;
        const double radius = minRadius + (maxRadius - minRadius) * hardPoints::unit(rng);
        polygon.emplace_back(center.x() + radius * std::cos(angle), center.y() + radius * std::sin(angle));
    }
    return polygon;
}

inline double areaOf(const Polygon& polygon) {
    double twice = 0.0;
    for (std::size_t i = 2; i < polygon.size(); ++i) {
        const Point2 &o = polygon[0], &p = polygon[i - 1], &q = polygon[i];
        twice += (p.x() - o.x()) * (q.y() - o.y()) - (p.y() - o.y()) * (q.x() - o.x());
    }
    return 0.5 * twice;
}
/// Triangle2::getArea2D() knows side lengths only, and can be far off where a triangle is a sliver.
inline double areaOf(const Triangles& vTriangles) {
    double sum = 0.0;
    for (const Triangle2* pT : vTriangles)
        sum += areaOf(Polygon{*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2)});
    return sum;
}

inline Triangles trianglesOf(const Zone2* pZone) {
    Triangles vTriangles;
    pZone->getTriangles(vTriangles);
    return vTriangles;
}
inline Triangles trianglesOf(Norvik_2D& mesh) {
    Triangles vTriangles;
    mesh.getTrianglePointers(vTriangles);
    return vTriangles;
}
inline double areaOf(const Zone2* pZone) { return areaOf(trianglesOf(pZone)); }
inline TriangleSet setOf(const Triangles& vTriangles) { return {vTriangles.begin(), vTriangles.end()}; }

/// What is wrong with a mesh, which needn't be Delaunay off its constraints; empty if nothing is.
inline std::string soundness(Norvik_2D& mesh, bool bDelaunay) {
    const std::string faults = lawsBroken(mesh);
    if (!mesh.checkValidity(bDelaunay, "soundness")) return "not valid; " + faults;
    // Circles are looked at last, when all else is well.
    return !bDelaunay && faults.rfind("circumcircles are empty", 0) == 0 ? "" : faults;
}

/// Whether all answers of a zone without repeats agree with its triangles; what is wrong, empty if nothing is.
inline std::string zoneFaults(Norvik_2D& mesh, const Zone2* pZone) {
    std::string faults;
    const auto expect = [&faults](bool bHolds, const char* law) {
        if (!bHolds) faults += std::string(law) + "; ";
    };
    const Triangles vTriangles = trianglesOf(pZone);
    const TriangleSet sZone = setOf(vTriangles), sMesh = setOf(trianglesOf(mesh));
    const Triangles vByAddress(sZone.begin(), sZone.end());
    expect(std::includes(sMesh.begin(), sMesh.end(), sZone.begin(), sZone.end()), "triangles are alive");
    expect(vByAddress.size() == vTriangles.size(), "each triangle comes once");
    expect(vByAddress == vTriangles || pZone->getZoneLocation() == KELMAR_NORVIK2D::ZL_GROW,
           "triangles come by address");
    Triangles vTwice = vTriangles;
    pZone->getTriangles(vTwice);
    expect(vTwice == joined(vTriangles, vTriangles), "triangles are appended, and the same as before");
    double area = 0.0;
    std::set<Point2*, std::less<>> sVertices;
    for (const Triangle2* pT : vTriangles) {
        area += pT->getArea2D();
        for (int i = 0; i < 3; ++i) sVertices.insert(pT->getCorner(i));
    }
    expect(std::fabs(pZone->getArea2D() - area) <= 1e-12 * area, "the area is theirs");
    expect(pZone->getNumberOfTriangles() == vTriangles.size(), "the number is theirs");

    std::vector<Point2*> vVertices, vAll;
    pZone->getVertices(vVertices);
    expect(vVertices == std::vector<Point2*>(sVertices.begin(), sVertices.end()), "vertices are the corners");
    mesh.getVertexPointers(vAll);
    vVertices = vAll;
    pZone->getVertices(vVertices);
    std::sort(vAll.begin(), vAll.end(), std::less<>());
    expect(vVertices == vAll, "vertices are appended, and then all are sorted");
    KELMAR_NORVIK2D::Bbox2 bounds;
    for (const Point2* pVtx : sVertices) bounds.add(*pVtx);
    const auto told = pZone->getBoundingBox();
    expect(told.getMinX() == bounds.getMinX() && told.getMaxY() == bounds.getMaxY(), "the box is theirs");

    using Sides = std::vector<std::pair<Triangle2*, int>>;
    const auto expectBorder = [&](const std::vector<Edge2>& vEdges, const Triangles& vOrdered) {
        Sides vToldSides, vSides;
        for (const Edge2& edge : vEdges) vToldSides.emplace_back(edge.getTriangle(), edge.getIndex());
        for (Triangle2* pT : vOrdered)
            for (int i = 0; i < 3; ++i)
                if (sZone.count(pT->getOppositeTriangle(i)) == 0) vSides.emplace_back(pT, i);
        expect(vToldSides == vSides, "the border has all edges to the outside, in order");
    };
    std::vector<Edge2> vBoundary, vBorder;
    std::vector<Segment2> vSegments;
    pZone->getBoundaryEdges(vBoundary);
    pZone->getBorderEdges(vBorder);
    pZone->getBoundarySegments(vSegments);
    expectBorder(vBoundary, vTriangles);
    expectBorder(vBorder, vByAddress);
    const auto sameEnds = [](const Edge2& e, const Segment2& s) {
        return *e.getSrc() == s.getSrc() && *e.getTrg() == s.getTrg();
    };
    expect(std::equal(vBoundary.begin(), vBoundary.end(), vSegments.begin(), vSegments.end(), sameEnds),
           "segments are the edges' values");
    return faults;
}

}  // namespace zoneLaws
