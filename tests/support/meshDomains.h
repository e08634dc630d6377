#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "MeshGenParams.h"
#include "Norvik_2D.h"
#include "zoneLaws.h"

/// Regions to be meshed, and what every mesh of them has to keep.
namespace meshDomains {

using namespace KELMAR_NORVIK2D;
using hardPoints::Rng, hardPoints::unit, hardSegments::Segments;
using zoneLaws::areaOf, zoneLaws::box, zoneLaws::joined, zoneLaws::Polygon, zoneLaws::Triangles,
    zoneLaws::trianglesOf;

constexpr double unlimited = std::numeric_limits<double>::max();

struct Domain {
    std::string name;
    std::vector<Polygon> rings;  ///< the outline and the holes
    Segments walls = {};         ///< constraints inside

    Segments outline() const {
        Segments segments;
        for (const Polygon& ring : rings) segments = joined(segments, zoneLaws::ring(ring));
        return segments;
    }
};

inline Domain transformed(Domain domain, double scale, double offset) {
    const auto image = [&](const Point2& p) {
        return Point2(scale * p.x() + offset, scale * p.y() - 0.7 * offset);
    };
    for (Polygon& ring : domain.rings)
        for (Point2& p : ring) p = image(p);
    for (Segment2& wall : domain.walls) wall = Segment2(image(wall.getSrc()), image(wall.getTrg()));
    return domain;
}

/// Whether a ray from the point crosses the rings an odd number of times.
inline bool contains(const Domain& domain, const Point2& point) {
    bool bInside = false;
    for (const Segment2& side : domain.outline()) {
        const Point2 p = side.getSrc(), q = side.getTrg();
        if ((p.y() > point.y()) != (q.y() > point.y()))
            bInside ^= point.x() < p.x() + (q.x() - p.x()) * (point.y() - p.y()) / (q.y() - p.y());
    }
    return bInside;
}

/// The angle at corner q, from r counterclockwise to p, in degrees; a full circle at most.
inline double cornerAngle(const Point2& p, const Point2& q, const Point2& r) {
    const double px = p.x() - q.x(), py = p.y() - q.y(), rx = r.x() - q.x(), ry = r.y() - q.y();
    const double angle = std::atan2(rx * py - ry * px, rx * px + ry * py) * 57.29577951308232;
    return angle < 0.0 ? angle + 360.0 : angle;
}

/// Every other corner is closer to the centre by this factor.
inline Polygon regular(int n, double radius, double innerShare = 1.0) {
    Polygon polygon;
    for (int i = 0; i < n; ++i) {
        const double angle = 6.283185307179586 * i / n, r = radius * (i % 2 == 0 ? 1.0 : innerShare);
        polygon.emplace_back(r * std::cos(angle), r * std::sin(angle));
    }
    return polygon;
}

/// A random polygon without corners below 60 degrees: what is sharper is cut off.
inline Polygon bluntStar(Rng& rng) {
    for (;;) {
        Polygon p = zoneLaws::star(rng, 8 + hardPoints::below(rng, 12), {0, 0}, 3.0, 10.0);
        for (std::size_t i = 0, numGood = 0; p.size() > 3 && numGood < p.size(); ++i) {
            const std::size_t n = p.size(), at = i % n;
            const bool bGood = cornerAngle(p[(at + n - 1) % n], p[at], p[(at + 1) % n]) >= 60.0;
            numGood = bGood ? numGood + 1 : 0;
            if (!bGood) p.erase(p.begin() + static_cast<std::ptrdiff_t>(at));
        }
        // The centre must still be inside, for the edges not to cross.
        if (p.size() > 3 && contains({"", {p}}, {0, 0})) return p;
    }
}

inline const Domain square{"square", {box(0, 0, 10, 10)}};
inline const Domain equilateral{"equilateral", {{{0, 0}, {10, 0}, {5, 10 * std::sqrt(0.75)}}}};
/// Two triangles of these areas on both sides of the edge from (0,-1) to (0,1), which is a wall or none.
inline Domain kite(double left, double right, bool bWall) {
    return {"kite",
            {{{0, -1}, {right, 0}, {0, 1}, {-left, 0}}},
            bWall ? Segments{Segment2({0, -1}, {0, 1})} : Segments()};
}

/// No corner below 60 degrees: every bound up to 30 degrees can be met.
inline std::vector<Domain> bluntDomains() {
    Polygon halfDisc = regular(600, 10);
    halfDisc.resize(301);  // a split of its diameter is seen by more than a hundred vertices
    return {
        {"bar", {box(0, 0, 100, 1)}},
        {"comb",
         {{{0, 0}, {5, 0}, {5, 5}, {4, 5}, {4, 1}, {3, 1}, {3, 5}, {2, 5}, {2, 1}, {1, 1}, {1, 9}, {0, 9}}}},
        {"star", {regular(10, 10, 0.6)}},
        {"halfDisc", {halfDisc}},
        {"ring", {regular(12, 10), regular(6, 5)}},
        {"holes", {box(0, 0, 20, 10), box(2, 2, 4, 7), box(4.2, 2, 6, 7), box(12, 0.1, 19.5, 9)}},
    };
}

inline std::vector<Domain> sharpDomains() {
    Rng rng(7);
    return {
        {"needles", {zoneLaws::star(rng, 24, {0, 0}, 0.3, 10.0)}},
        {"hair", {{{0, 0}, {10, 0.005}, {10, 0.02}, {4, 0.015}}}},
        {"slit",
         {{{0, 0}, {10, 0}, {10, 10}, {5.30001, 10}, {5.30001, 4}, {5.3, 4.1}, {5.3, 10}, {0, 10}}},
         {{{1, 1}, {4, 2}}, {{0, 5}, {2, 5}}}},
        {"touchingHoles",
         {box(0, 0, 10, 10), {{0, 5}, {3, 6}, {3, 4}}, {{3, 6}, {7, 6}, {6, 9}}, {{10, 10}, {9, 8}, {8, 9}}}},
        {"step", {{{0, 0}, {10, 0}, {10, 10}, {5, 10}, {5, 10 + 1e-6}, {0, 10 + 1e-6}}}},
        {"strip", {box(0, 0, 100, 0.1)}},
    };
}

/// What a run is asked for.
struct Wish {
    double minAngle = 20, minEdge = 0.001, maxEdge = unlimited, maxArea = unlimited;
    bool bSplit = true, bProtect = true;
    double growFactor = unlimited, growMinArea = 0.001, gridLength = 0;
    Vector2 gridVector = {};
    int debugCommand = 0;
};

/// A mesh with the zone of a domain.
struct Meshed {
    Domain domain;
    Norvik_2D mesh;
    Zone2* pZone;

    explicit Meshed(const Domain& domain_) : domain(domain_) {
        ConstraintGraph2* pGraph =
            mesh.createConstraint(joined(domain.walls, domain.outline()), CIS_CONSTRAINED_DELAUNAY);
        if (pGraph->isPolygon()) {
            pZone = mesh.createZone(pGraph, ZL_INSIDE);
            return;
        }
        Triangles vInside;
        for (Triangle2* pT : trianglesOf(mesh))
            if (contains(domain, pT->getBarycenter())) vInside.push_back(pT);
        pZone = mesh.createZone(vInside)->convertToBoundedZone();
    }

    MeshGenParams paramsOf(const Wish& wish) const {
        MeshGenParams p(pZone);
        p.minAngleDegree = wish.minAngle;
        p.minEdgeLength = wish.minEdge;
        p.maxEdgeLength = wish.maxEdge;
        p.maxTriangleArea = wish.maxArea;
        p.bAllowConstraintSplitting = wish.bSplit;
        p.bProtectOlderSteiners = wish.bProtect;
        p.growFactor = wish.growFactor;
        p.growFactorMinArea = wish.growMinArea;
        p.gridLength = wish.gridLength;
        p.gridVector = wish.gridVector;
        p.debugCommand = wish.debugCommand;
        return p;
    }
    void refine(const Wish& wish) {
        MeshGenParams params = paramsOf(wish);
        mesh.refineAdvanced(&params);
    }

    /// The vertices of the mesh and the triangles of the zone.
    std::string counts() const {
        return std::to_string(mesh.numberOfPoints()) + "/" + std::to_string(pZone->getNumberOfTriangles());
    }

    /// What is wrong, whatever was asked for: the mesh has to be valid, and the zone what it was. Empty if nothing is.
    std::string faults() {
        std::string result = zoneLaws::soundness(mesh, true);
        double area = 0.0, length = 0.0, greatest = 0.0;
        for (const Polygon& ring : domain.rings)
            area += (&ring == &domain.rings[0] ? 1.0 : -1.0) * std::fabs(areaOf(ring));
        const Segments sides = domain.outline();
        for (const Segment2& side : sides) {
            length += std::sqrt(side.getSqLen2D());
            greatest = std::max({greatest, std::fabs(side.getSrc().x()), std::fabs(side.getSrc().y())});
        }
        const double perimeter = length;
        // Splits are rounded, and bend thin domains.
        if (!(std::fabs(areaOf(pZone) - area) <= 1e-9 * area + 1e-15 * greatest * perimeter))
            result += "area isn't kept; ";
        std::vector<Segment2> vBorder;
        pZone->getBoundarySegments(vBorder);
        for (const Segment2& piece : vBorder) {
            length -= std::sqrt(piece.getSqLen2D());
            if (std::none_of(sides.begin(), sides.end(), [&](const Segment2& side) {
                    return isNear(side, piece.getSrc(), 1e-14 * greatest) &&
                           isNear(side, piece.getTrg(), 1e-14 * greatest);
                }))
                result += "a border edge is off the outline; ";
        }
        if (!(std::fabs(length) <= 1e-9 * perimeter)) result += "the border isn't complete; ";
        return result;
    }

private:
    static bool isNear(const Segment2& side, const Point2& point, double tolerance) {
        const Vector2 along = normalize(side.getTrg() - side.getSrc()), there = point - side.getSrc();
        const double at = there * along, length = std::sqrt(side.getSqLen2D());
        return std::fabs(there * along.orthogonalVector()) <= tolerance && at >= -tolerance &&
               at <= length + tolerance;
    }
};

}  // namespace meshDomains
