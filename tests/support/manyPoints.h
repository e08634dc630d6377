#pragma once

#include <cmath>
#include <numbers>
#include <ostream>
#include <vector>

#include "hardPoints.h"

/// Sets of very many points that are hard to divide among threads.
namespace manyPoints {

using hardPoints::around0, hardPoints::below, hardPoints::nudged, hardPoints::Rng, hardPoints::unit;
using KELMAR_NORVIK2D::Point2;

/// Whether only one Delaunay triangulation exists: no cocircular points, at least none that matter.
enum class Mesh { UNIQUE, AMBIGUOUS };

struct Kind {
    const char* name;
    Point2 (*make)(Rng&);
    Mesh mesh = Mesh::UNIQUE;
    bool bSlow = false;  ///< exact arithmetic all over
};
inline std::ostream& operator<<(std::ostream& os, const Kind& kind) { return os << kind.name; }

inline Point2 onCircle(Rng& rng, double radius) {
    const double angle = 2.0 * std::numbers::pi * unit(rng);
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

/// On one of five vertical lines.
inline Point2 onLine(Rng& rng, double spacing) { return {spacing * below(rng, 5), unit(rng)}; }

// clang-format off
inline const Kind kinds[] = {
    {"uniform", [](Rng& r) { return Point2(unit(r), unit(r)); }},
    {"duplicates", [](Rng& r) { return Point2(below(r, 300) / 7.0, below(r, 200) / 7.0); }, Mesh::AMBIGUOUS},
    {"nearlyAllEqual", [](Rng& r) { return below(r, 100) != 0 ? Point2(0.5, 0.5) : Point2(unit(r), unit(r)); }},
    {"lines1e8", [](Rng& r) { return onLine(r, 1e-8); }},
    {"lines1e3", [](Rng& r) { return onLine(r, 1e-3); }},
    {"lines1", [](Rng& r) { return onLine(r, 1.0); }},
    {"grid", [](Rng& r) { return Point2(below(r, 400), below(r, 400)); }, Mesh::AMBIGUOUS},
    {"farGrid", [](Rng& r) { return Point2(1e12 + below(r, 400), 1e12 + below(r, 400)); }, Mesh::AMBIGUOUS},
    {"tightClusters", [](Rng& r) { return Point2(below(r, 10) + 1e-9 * around0(r), 1e-9 * around0(r)); }},
    {"circle", [](Rng& r) { return onCircle(r, 1.0); }},
    {"circle1e6", [](Rng& r) { return onCircle(r, 1e6); }},
    {"circle1e78", [](Rng& r) { return onCircle(r, 1e-78); }, Mesh::UNIQUE, true},
    {"outlier", [](Rng& r) { return r() < 200000 ? Point2(1e12, 1e12) : Point2(unit(r), unit(r)); }},
    {"band", [](Rng& r) { double x = unit(r); return Point2(x, x + 1e-6 * unit(r)); }},
    // Their magnitude lies in the least coordinates, and all turns are decided at the last place.
    {"negativeQuadrant", [](Rng& r) { double x = -2e6 + 1e6 * unit(r); return Point2(x, nudged(x, r)); }},
    {"small", [](Rng& r) { return Point2(1e-8 * unit(r), 1e-8 * unit(r)); }},
    {"huge", [](Rng& r) { return Point2(1e150 * around0(r), 1e150 * around0(r)); }, Mesh::UNIQUE, true},
};
// clang-format on

inline std::vector<Point2> makePoints(const Kind& kind, std::size_t n, Rng& rng) {
    std::vector<Point2> points;
    for (std::size_t i = 0; i < n; ++i) points.push_back(kind.make(rng));
    return points;
}

}  // namespace manyPoints
