#pragma once

#include <cmath>
#include <ostream>
#include <vector>

#include "hardPoints.h"

/// Points for meshes of a hundred thousand and more vertices, where insertion goes to threads: kinds on which areas of
/// influence are large, thin, empty or next to each other. Few of them have equal coordinates, unless that is the point.
namespace manyPoints {

using hardPoints::Point2, hardPoints::Rng, hardPoints::unit, hardPoints::around0, hardPoints::below,
    hardPoints::nudged;

constexpr int enoughForThreads = 100000;

struct Kind {
    const char* name;
    /// Point i of the sequence.
    Point2 (*make)(Rng&, int i);
    /// Squares leave the range of doubles, so that every decision is made by rationals.
    bool bSlow = false;
};
inline std::ostream& operator<<(std::ostream& os, const Kind& kind) { return os << kind.name; }

inline Point2 square(Rng& r) { return {unit(r), unit(r)}; }
inline Point2 onLines(Rng& r, double spacing, double length, double offset = 0.0) {
    return {offset + spacing * below(r, 5), length * unit(r)};
}
inline Point2 onCircle(Rng& r, double radius) {
    const double angle = 6.283185307179586 * unit(r);
    return {radius * std::cos(angle), radius * std::sin(angle)};
}
/// About one of 64 points, with nearly normal distances.
inline Point2 inCluster(Rng& r) {
    const auto spread = [&] { return 1e-9 * (around0(r) + around0(r) + around0(r)); };
    const double x = below(r, 8), y = below(r, 8);
    return {x + spread(), y + spread()};
}
/// On or next to one of 50 parallel lines.
inline Point2 negative(Rng& r, double center, double reach) {
    const double x = center + reach * around0(r);
    const double y = center + 0.5 * (x - center) + reach * 0.02 * (below(r, 50) - 25);
    return {x, nudged(y, r)};
}

// clang-format off
inline const Kind kinds[] = {
    {"uniform", [](Rng& r, int) { return square(r); }},
    {"duplicates", [](Rng& r, int) { const int k = below(r, 30000);
                                     return Point2(std::fmod(k * 0.7548776662, 1.0), std::fmod(k * 0.5698402910, 1.0)); }},
    {"clusters", [](Rng& r, int) { return inCluster(r); }},
    {"linesAt1e_8", [](Rng& r, int) { return onLines(r, 1e-8, 4e-8); }},
    {"linesAt1e_3", [](Rng& r, int) { return onLines(r, 1e-3, 1.0); }},
    {"linesAt1", [](Rng& r, int) { return onLines(r, 1.0, 2.0); }},
    {"farLines", [](Rng& r, int) { return onLines(r, 1e3, 4e3, 1e15); }},
    // Neighbouring doubles: on the left the box can't be made any larger.
    {"closeFarLines", [](Rng& r, int) { return Point2(4e15 + 0.5 * below(r, 2), 1e5 * unit(r)); }},
    {"grid", [](Rng& r, int) { return Point2(below(r, 400), below(r, 400)); }},
    {"circle1", [](Rng& r, int) { return onCircle(r, 1.0); }},
    {"circle1e6", [](Rng& r, int) { return onCircle(r, 1e6); }},
    {"circle1e_78", [](Rng& r, int) { return onCircle(r, 1e-78); }, true},
    {"oneOutlier", [](Rng& r, int i) { return i == 777 ? Point2(1e9, -1e7) : square(r); }},
    {"nearlyAllEqual", [](Rng& r, int i) { return i % 100 == 0 ? square(r) : Point2(0.3, 0.7); }},
    {"negative", [](Rng& r, int) { return negative(r, -1.5e6, 5e5); }},
    // Twice this box ends at 0: no upper bound of it tells how large its coordinates are.
    {"negativeTo0", [](Rng& r, int) { return negative(r, -3.2, 1.6); }},
    {"huge", [](Rng& r, int) { return Point2(1e150 * around0(r), 1e150 * around0(r)); }, true},
    {"farGrid", [](Rng& r, int) { return Point2(1e12 + below(r, 400), 1e12 - below(r, 400)); }},
    {"thinBand", [](Rng& r, int) { const double x = unit(r); return Point2(x, x + 1e-5 * unit(r)); }},
};
// clang-format on

inline std::vector<Point2> makePoints(const Kind& kind, int n, Rng& rng) {
    std::vector<Point2> points;
    for (int i = 0; i < n; ++i) points.push_back(kind.make(rng, i));
    return points;
}

}  // namespace manyPoints
