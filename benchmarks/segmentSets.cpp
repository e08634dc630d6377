#include "segmentSets.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>
#include <random>
#include <stdexcept>

namespace {

constexpr double fullTurn = 2.0 * std::numbers::pi;

using Random = std::mt19937_64;
using Uniform = std::uniform_real_distribution<double>;

/// Corners around a middle, at uneven distances from it and from each other. `radiusAt` tells how far away a direction is.
template <class Radius>
PointSet unevenRing(const Coordinates& middle, std::size_t numCorners, Random& random, Radius radiusAt) {
    Uniform roughness(0.985, 1.015);
    Uniform shift(-0.4, 0.4);
    PointSet corners;
    for (std::size_t i = 0; i < numCorners; ++i) {
        const double phi =
            fullTurn * (static_cast<double>(i) + shift(random)) / static_cast<double>(numCorners);
        const double radius = radiusAt(phi) * roughness(random);
        corners.push_back({middle.x + radius * std::cos(phi), middle.y + radius * std::sin(phi)});
    }
    return corners;
}

void appendRing(const PointSet& corners, SegmentSet& out) {
    for (std::size_t i = 0; i < corners.size(); ++i)
        out.push_back({corners[i], corners[(i + 1) % corners.size()]});
}

}  // namespace

SegmentSet ringSegments() {
    constexpr std::size_t numSegments = 100000;
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

SegmentSet randomSegments(std::size_t numSegments, double length) {
    const double half = length / 2;
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

MeshDomain meshDomain() {
    constexpr std::size_t numOuter = 300, numHoles = 8, numOfHole = 25;
    Random random(9);
    Uniform phase(0.0, fullTurn);
    Uniform size(6.0, 15.0);
    MeshDomain domain;
    appendRing(
        unevenRing({0.0, 0.0}, numOuter, random,
                   [](double phi) { return 100.0 + 20.0 * std::sin(5 * phi) + 3.0 * std::sin(23 * phi); }),
        domain.border);
    for (std::size_t hole = 0; hole < numHoles; ++hole) {
        const double direction = fullTurn * static_cast<double>(hole) / numHoles;
        const Coordinates middle{50.0 * std::cos(direction), 50.0 * std::sin(direction)};
        const double turn = phase(random), radius = size(random);
        PointSet ring = unevenRing(middle, numOfHole, random, [=](double phi) {
            return radius * (1.0 + 0.2 * std::sin(3 * phi + turn));
        });
        std::reverse(ring.begin(), ring.end());
        appendRing(ring, domain.border);
        domain.holes.push_back(middle);
    }
    return domain;
}
