#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <vector>

#include "Point2.h"
#include "Segment2.h"

/// Where a fuzz target gets its choices from: the bytes of an input, which end, or an endless random sequence. A byte more or less
/// in the input changes few choices, so that a fuzzer can learn: small choices take one byte.
class Decisions {
public:
    Decisions(const std::uint8_t* pData, std::size_t size) : bytes(pData, size) {}
    explicit Decisions(std::uint64_t seed) : state(seed), bEndless(true) {}

    /// Whether the bytes have come to their end: from now on all choices are 0. Never for a random sequence.
    bool areOut() const { return !bEndless && bytes.empty(); }

    std::uint8_t byte() {
        if (bEndless) return static_cast<std::uint8_t>(random() >> 56);
        if (bytes.empty()) return 0;
        const std::uint8_t first = bytes.front();
        bytes = bytes.subspan(1);
        return first;
    }

    std::uint64_t bits64() {
        if (bEndless) return random();
        std::uint64_t bits = 0;
        const std::size_t count = std::min(sizeof bits, bytes.size());
        if (count > 0) std::memcpy(&bits, bytes.data(), count);
        bytes = bytes.subspan(count);
        return bits;
    }

    /// 0 to n - 1, for n from 1 on.
    unsigned below(unsigned n) {
        if (bEndless) return static_cast<unsigned>((random() >> 32) * n >> 32);
        unsigned value = byte();
        for (std::uint64_t reach = 256; reach < n; reach *= 256) value = value << 8 | byte();
        return value % n;
    }
    /// -n to n.
    int around0(int n) { return static_cast<int>(below(2 * static_cast<unsigned>(n) + 1)) - n; }
    bool oneIn(unsigned n) { return below(n) == n - 1; }

    /// 0 to 1, without 1.
    double unit() { return static_cast<double>(bits64() >> 11) * 0x1p-53; }

    template <class T>
    T& oneOf(std::vector<T>& items) {
        return items[below(static_cast<unsigned>(items.size()))];
    }
    template <class T>
    const T& oneOf(const std::vector<T>& items) {
        return items[below(static_cast<unsigned>(items.size()))];
    }

private:
    std::uint64_t random() {  // splitmix64
        state += 0x9e3779b97f4a7c15U;
        std::uint64_t z = state;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
        return z ^ (z >> 31);
    }

    std::span<const std::uint8_t> bytes;
    std::uint64_t state = 0;
    bool bEndless = false;
};

/// Points that break triangulations, most of them made from earlier ones: next to them, between them, on their segments, lines
/// and circles. All are finite.
class HardPoints {
public:
    enum class Magnitudes {
        MODERATE,  ///< 0, and about 1e-12 to 1e7
        ALL        ///< and huge, tiny and denormal ones
    };
    explicit HardPoints(Magnitudes magnitudes_ = Magnitudes::ALL) : magnitudes(magnitudes_) {}

    /// Earlier points that the next ones are made from; the last 64 count. Those of next() are remembered anyway.
    void remember(const KELMAR_NORVIK2D::Point2& point) {
        if (isFinite(point)) keep(points, numPoints, point);
    }
    void remember(const KELMAR_NORVIK2D::Segment2& segment) {
        if (isFinite(segment.getSrc()) && isFinite(segment.getTrg())) keep(segments, numSegments, segment);
    }
    void clear() { *this = HardPoints(magnitudes); }

    KELMAR_NORVIK2D::Point2 next(Decisions& from) {
        const KELMAR_NORVIK2D::Point2 candidate = drawn(from);
        const KELMAR_NORVIK2D::Point2 point(allowed(candidate.x()), allowed(candidate.y()));
        remember(point);
        return point;
    }

    /// One of the neighbours of a double, up to 3 places away, or the double itself.
    static double nudged(double value, Decisions& from) {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        for (int ulps = from.around0(3); ulps != 0; ulps -= ulps > 0 ? 1 : -1)
            value = std::nextafter(value, ulps > 0 ? infinity : -infinity);
        return value;
    }

private:
    using Point2 = KELMAR_NORVIK2D::Point2;
    using Segment2 = KELMAR_NORVIK2D::Segment2;

    static constexpr std::size_t mostKept = 64;

    static bool isFinite(const Point2& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

    /// Sums grow, and differences shrink, out of every range after some time.
    double allowed(double value) const {
        if (!std::isfinite(value)) return 1.0;
        if (magnitudes == Magnitudes::ALL || value == 0.0) return value;
        return std::abs(value) < 1e-12 ? 0.0 : std::abs(value) > 1e7 ? 1.0 : value;
    }

    template <class T>
    static void keep(std::vector<T>& items, std::size_t& count, const T& item) {
        if (items.size() < mostKept)
            items.push_back(item);
        else
            items[count % mostKept] = item;
        ++count;
    }

    // Each choice is an expression of its own, or stands in braces: arguments of a call are evaluated in any order.

    static double scaled(double value, int exponent, int spread, Decisions& from) {
        return std::ldexp(value, exponent + from.around0(spread));
    }

    double coordinate(Decisions& from) const {
        switch (from.below(magnitudes == Magnitudes::ALL ? 14 : 9)) {
            case 0:
            case 1:
            case 2:
                return from.around0(8);
            case 3:
            case 4:
                return 0.5 * from.around0(16);
            case 5:
            case 6:
                return 2.0 * from.unit() - 1.0;
            case 7:
                return -0.0;
            case 8:
                return scaled(from.around0(100), 0, 12, from);
            case 9:
                return scaled(from.around0(4), 495, 10, from);  // around 1e150
            case 10:
                return scaled(from.around0(4), -495, 10, from);
            case 11:
                return from.around0(12) * 5e-324;
            case 12:
                return scaled(2.0 * from.unit() - 1.0, 0, 530, from);
            default:
                return anyBits(from);
        }
    }

    /// The full range of doubles. Those that differences would overflow with are left out.
    static double anyBits(Decisions& from) {
        const double value = std::bit_cast<double>(from.bits64());
        return std::abs(value) < 0x1p1000 ? value : 0x1p1000;
    }

    Point2 drawn(Decisions& from) {
        if (points.size() < 3) return {coordinate(from), coordinate(from)};
        const Point2 a = from.oneOf(points), b = from.oneOf(points);
        switch (from.below(12)) {
            case 0:
                return a;
            case 1:
                return {nudged(a.x(), from), nudged(a.y(), from)};
            case 2:
                return {a.x(), b.y()};
            case 3:
                return {0.5 * a.x() + 0.5 * b.x(), 0.5 * a.y() + 0.5 * b.y()};
            case 4: {  // a parallelogram's fourth corner, a mirror image
                const Point2& c = from.oneOf(points);
                return {a.x() + (b.x() - c.x()), a.y() + (b.y() - c.y())};
            }
            case 5:  // a square's third corner
                return {b.x() - (b.y() - a.y()), b.y() + (b.x() - a.x())};
            case 6:
            case 7:
                return onLine(a, b, from);
            case 8:
                if (segments.empty()) return onIntegerCircle(from);
                return onSegment(from.oneOf(segments), from);
            default:
                return {coordinate(from), coordinate(from)};
        }
    }

    static Point2 onSegment(const Segment2& segment, Decisions& from) {
        return onLine(segment.getSrc(), segment.getTrg(), from);
    }

    /// On the line, or as near as doubles come, or next to that.
    static Point2 onLine(const Point2& a, const Point2& b, Decisions& from) {
        const unsigned way = from.below(3);
        const double t = way == 0 ? from.unit() : from.around0(8) / (way == 1 ? 4.0 : 7.0);
        const Point2 on(a.x() + t * (b.x() - a.x()), a.y() + t * (b.y() - a.y()));
        return from.oneIn(2) ? Point2{nudged(on.x(), from), nudged(on.y(), from)} : on;
    }

    /// One of 32 points of the circle with radius 65.
    static Point2 onIntegerCircle(Decisions& from) {
        static constexpr double legs[][2] = {{16, 63}, {25, 60}, {33, 56}, {39, 52},
                                             {63, 16}, {60, 25}, {56, 33}, {52, 39}};
        const unsigned which = from.below(32);
        const auto& [x, y] = legs[which % 8];
        return Point2(which & 8 ? -x : x, which & 16 ? -y : y);
    }

    Magnitudes magnitudes;
    std::vector<Point2> points;
    std::vector<Segment2> segments;
    std::size_t numPoints = 0, numSegments = 0;
};
