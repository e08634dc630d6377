#include "segmentSets.h"

#include <cmath>
#include <fstream>
#include <numbers>
#include <random>
#include <stdexcept>

namespace {

constexpr std::size_t numSegments = 100000;
constexpr double fullTurn = 2.0 * std::numbers::pi;

using Random = std::mt19937_64;
using Uniform = std::uniform_real_distribution<double>;

}  // namespace

SegmentSet ringSegments() {
    Random random(7);
    constexpr double step = fullTurn / numSegments;
    Uniform roughness(-10 * step, 10 * step);
    PointSet corners(numSegments);
    for (std::size_t i = 0; i < numSegments; ++i) {
        const double phi = step * static_cast<double>(i);
        const double radius = 1.0 + 0.3 * std::sin(5 * phi) + 0.03 * std::sin(97 * phi) + roughness(random);
        corners[i] = {radius * std::cos(phi), radius * std::sin(phi)};
    }
    SegmentSet segments(numSegments);
    for (std::size_t i = 0; i < numSegments; ++i) segments[i] = {corners[i], corners[(i + 1) % numSegments]};
    return segments;
}

SegmentSet randomSegments() {
    constexpr double half = 0.001 / 2;
    Random random(8);
    Uniform unit(0.0, 1.0);
    Uniform angle(0.0, fullTurn);
    SegmentSet segments(numSegments);
    for (auto& [from, to] : segments) {
        const Coordinates middle{unit(random), unit(random)};
        const double phi = angle(random);
        const Coordinates offset{half * std::cos(phi), half * std::sin(phi)};
        from = {middle.x - offset.x, middle.y - offset.y};
        to = {middle.x + offset.x, middle.y + offset.y};
    }
    return segments;
}

SegmentSet coastline() {
    std::ifstream in(NORVIK2D_DATA "/coast_50m.seg");
    SegmentSet segments;
    for (SegmentCoordinates s{}; in >> s.from.x >> s.from.y >> s.to.x >> s.to.y;) segments.push_back(s);
    if (segments.empty()) throw std::runtime_error("can't read " NORVIK2D_DATA "/coast_50m.seg");
    return segments;
}
