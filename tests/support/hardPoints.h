#pragma once

#include <cmath>
#include <limits>
#include <ostream>
#include <random>
#include <vector>

#include "Point2.h"

/// Points that break triangulations. Everything is repeatable from the generator's seed.
namespace hardPoints {

using KELMAR_NORVIK2D::Point2;
using Rng = std::mt19937;

inline double unit(Rng& rng) { return static_cast<double>(rng()) * 0x1p-32; }
inline double around0(Rng& rng) { return 2.0 * unit(rng) - 1.0; }
inline int below(Rng& rng, int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); }
inline double sign(Rng& rng) { return rng() % 2 == 0 ? 1.0 : -1.0; }

inline double nudged(double value, int numUlps) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (; numUlps > 0; --numUlps) value = std::nextafter(value, infinity);
    for (; numUlps < 0; ++numUlps) value = std::nextafter(value, -infinity);
    return value;
}
/// The same or a next double.
inline double nudged(double value, Rng& rng, int most = 1) {
    return nudged(value, below(rng, 2 * most + 1) - most);
}

/// A corner of one of four rectangles with one circle, of radius 65.
inline Point2 onIntegerCircle(Rng& rng) {
    static constexpr int legs[][2] = {{16, 63}, {25, 60}, {33, 56}, {39, 52},
                                      {63, 16}, {60, 25}, {56, 33}, {52, 39}};
    const auto& [x, y] = legs[below(rng, 8)];
    return {sign(rng) * x, sign(rng) * y};
}

inline Point2 onCircle(Rng& rng, double radius) {
    const double angle = below(rng, 360) * 0.017453292519943295;
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

struct Kind {
    const char* name;
    Point2 (*make)(Rng&);
};
inline std::ostream& operator<<(std::ostream& os, const Kind& kind) { return os << kind.name; }

// clang-format off
inline const Kind kinds[] = {
    {"uniform", [](Rng& r) { return Point2(unit(r), unit(r)); }},
    {"grid", [](Rng& r) { return Point2(below(r, 12), below(r, 12)); }},
    {"tenths", [](Rng& r) { return Point2(0.1 * below(r, 12), 0.1 * below(r, 12)); }},
    {"horizontal", [](Rng& r) { return Point2(around0(r), 3.0); }},
    {"vertical", [](Rng& r) { return Point2(3.0, around0(r)); }},
    {"falling", [](Rng& r) { double t = below(r, 500); return Point2(t, -t); }},
    {"steep", [](Rng& r) { double t = below(r, 500); return Point2(t, 3.0 * t + (r() % 64 == 0)); }},
    {"nearlyCollinear", [](Rng& r) { double x = unit(r); return Point2(x, nudged(0.3 * x, r)); }},
    {"parabola", [](Rng& r) { double x = below(r, 300); return Point2(x, 1e-12 * x * x); }},
    {"integerCircle", onIntegerCircle},
    {"circle", [](Rng& r) { return onCircle(r, 1.0); }},
    {"oneUlpNeighbours", [](Rng& r) { return Point2(nudged(0.5 * below(r, 4), r), nudged(0.5 * below(r, 4), r)); }},
    {"duplicates", [](Rng& r) { return Point2(sign(r) * below(r, 3), sign(r) * below(r, 3)); }},
    {"huge", [](Rng& r) { return Point2(1e150 * around0(r), 1e150 * around0(r)); }},
    {"greatest", [](Rng& r) { return Point2((below(r, 7) - 3) * 5.9e307, (below(r, 7) - 3) * 5.9e307); }},
    {"halfOverflowing", [](Rng& r) { return Point2(5e307 * around0(r), 5e307 * around0(r)); }},
    {"tiny", [](Rng& r) { return Point2(1e-300 * around0(r), 1e-300 * around0(r)); }},
    {"denormal", [](Rng& r) { return Point2(5e-324 * below(r, 12), 5e-324 * below(r, 12)); }},
    {"underflowingCircle", [](Rng& r) { return onCircle(r, 1e-78); }},
    {"underflowing", [](Rng& r) { return Point2(1e-160 * around0(r), 1e-160 * nudged(0.5, r, 3)); }},
    {"mixed", [](Rng& r) { return Point2(std::ldexp(around0(r), below(r, 1040) - 540),
                                         std::ldexp(around0(r), below(r, 1040) - 540)); }},
    {"circlesInCircles", [](Rng& r) { static constexpr double radii[] = {1e-160, 1e-78, 1e-77, 1e-9, 1.0, 1e150};
                                      return onCircle(r, radii[below(r, 6)]); }},
    {"clusters", [](Rng& r) { return Point2(below(r, 3) + 1e-9 * unit(r), below(r, 3) + 1e-9 * unit(r)); }},
    {"offset", [](Rng& r) { return Point2(1e15 + 0.125 * below(r, 16), -1e15 + 0.125 * below(r, 16)); }},
    {"fineGrid", [](Rng& r) { return Point2(0x1p52 + below(r, 2000), 0x1p52 - 0.5 * below(r, 2000)); }},
};
// clang-format on

inline std::vector<Point2> makePoints(const Kind& kind, std::size_t n, Rng& rng) {
    std::vector<Point2> points;
    for (std::size_t i = 0; i < n; ++i) points.push_back(kind.make(rng));
    return points;
}
inline std::vector<Point2> uniformPoints(std::size_t n, unsigned seed) {
    Rng rng(seed);
    return makePoints(kinds[0], n, rng);
}

}  // namespace hardPoints
