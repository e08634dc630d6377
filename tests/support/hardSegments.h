#pragma once

#include <algorithm>
#include <cmath>
#include <ostream>
#include <vector>

#include "Segment2.h"
#include "hardPoints.h"

/// Sets of segments that break constrained triangulations. Everything is repeatable from the generator's seed.
namespace hardSegments {

using hardPoints::around0, hardPoints::below, hardPoints::nudged, hardPoints::Point2, hardPoints::Rng,
    hardPoints::unit;
using KELMAR_NORVIK2D::Segment2;
using Segments = std::vector<Segment2>;

inline Segments chain(const std::vector<Point2>& points, bool bClosed = false) {
    Segments segments;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) segments.emplace_back(points[i], points[i + 1]);
    if (bClosed) segments.emplace_back(points.back(), points.front());
    return segments;
}

/// From one hub to points around it: however large or small, they don't cross.
inline Segments fan(Rng& r, int n, double scale) {
    const Point2 hub(scale * around0(r), scale * around0(r));
    Segments segments;
    for (; n > 0; --n) segments.emplace_back(hub, Point2(scale * around0(r), scale * around0(r)));
    return segments;
}

/// A ring of two windings at a distance of 1.
inline Segments spiral(int n) {
    std::vector<Point2> ring;
    for (int i = 0; i < 2 * n; ++i) {
        const int k = i < n ? i : 2 * n - 1 - i;
        const double angle = 0.3 * k, radius = 0.1 * k + (i < n ? 1.0 : 1.6);
        ring.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
    }
    return chain(ring, true);
}

/// Thin triangles whose tips cross beyond the centre.
inline Segments needles(Rng& r, int n) {
    Segments segments;
    for (; n > 0; --n) {
        const double angle = 6.283185307179586 * unit(r), width = 0.02 * unit(r);
        const auto at = [](double radius, double direction) {
            return Point2(radius * std::cos(direction), radius * std::sin(direction));
        };
        const Segments needle =
            chain({at(-200.0, angle), at(1000.0, angle - width), at(1000.0, angle + width)}, true);
        segments.insert(segments.end(), needle.begin(), needle.end());
    }
    return segments;
}

/// Along one line and along lines next to it: their ends are off it by a last place.
inline Segments nearlyParallel(Rng& r, int n) {
    Segments segments;
    for (; n > 0; --n) {
        const double x = around0(r), length = around0(r);
        segments.emplace_back(Point2(x, nudged(0.37 * x, r)),
                              Point2(x + length, nudged(0.37 * (x + length), r)));
    }
    return segments;
}

/// Those that cross are so large that crossings seldom are within 1e-6 of each other: there each would move its segments by
/// as much.
struct Kind {
    const char* name;
    /// About `n` segments.
    Segments (*make)(Rng&, int n);
    /// Segments of one set or of two cross.
    bool bSetsCross;
};
inline std::ostream& operator<<(std::ostream& os, const Kind& kind) { return os << kind.name; }

template <class Make>
Segments times(int n, Make make) {
    Segments segments;
    for (; n > 0; --n) segments.push_back(make());
    return segments;
}

// clang-format off
inline const Kind kinds[] = {
    {"random", [](Rng& r, int n) { return times(n, [&] { return Segment2({1000.0 * unit(r), 1000.0 * unit(r)}, {1000.0 * unit(r), 1000.0 * unit(r)}); }); }, true},
    {"grid", [](Rng& r, int n) { return times(n, [&] { return Segment2(Point2(below(r, 9), below(r, 9)), Point2(below(r, 9), below(r, 9))); }); }, true},
    {"tenths", [](Rng& r, int n) { return times(n, [&] { return Segment2(Point2(0.1 * below(r, 9), 0.1 * below(r, 9)), Point2(0.1 * below(r, 9), 0.1 * below(r, 9))); }); }, true},
    {"upright", [](Rng& r, int n) { return times(n, [&] { const double x = below(r, 9), y = below(r, 9); return r() % 2 == 0 ? Segment2({x, y}, {double(below(r, 9)), y}) : Segment2({x, y}, {x, double(below(r, 9))}); }); }, true},
    {"collinear", [](Rng& r, int n) { return times(n, [&] { const int line = below(r, 3), s = below(r, 30), t = below(r, 30); return Segment2(Point2(s, 3 * s + line), Point2(t, 3 * t + line)); }); }, false},
    {"alongHull", [](Rng& r, int n) { return times(n, [&] { const double s = below(r, 30), t = below(r, 30), w = 29.0 * below(r, 2); return r() % 2 == 0 ? Segment2({s, w}, {t, w}) : Segment2({w, s}, {w, t}); }); }, false},
    {"needles", [](Rng& r, int n) { return needles(r, 1 + n / 3); }, true},
    {"spiral", [](Rng&, int n) { return spiral(2 + n / 2); }, true},
    {"fan", [](Rng& r, int n) { return fan(r, n, 1000.0); }, true},
    {"far", [](Rng& r, int n) { return times(n, [&] { return Segment2({3e9 + 1e6 * unit(r), 1e6 * unit(r)}, {3e9 + 1e6 * unit(r), 1e6 * unit(r)}); }); }, true},
    // The last one: halving would divide these into pieces as short as their distances. Cutting goes deep, too: few at once.
    {"nearlyParallel", [](Rng& r, int n) { return nearlyParallel(r, std::min(n, 3)); }, true},
};
// clang-format on

/// The same and some of them again, some reversed, some without length.
inline Segments spoilt(Segments segments, Rng& r) {
    const std::size_t n = segments.size();
    for (std::size_t i = 0; i < n; ++i) {
        const Segment2 segment = segments[i];
        if (below(r, 20) == 0) segments.push_back(segment);
        if (below(r, 20) == 0) segments.emplace_back(segment.getTrg(), segment.getSrc());
        if (below(r, 30) == 0) segments.emplace_back(segment.getSrc(), segment.getSrc());
    }
    return segments;
}

}  // namespace hardSegments
