#include "pointSets.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>
#include <random>
#include <utility>

namespace {

using Random = std::mt19937_64;
using Uniform = std::uniform_real_distribution<double>;

PointSet uniformWithSeed(std::size_t n, Random::result_type seed) {
    Random random(seed);
    Uniform unit(0.0, 1.0);
    PointSet points(n);
    for (Coordinates& point : points) point = {unit(random), unit(random)};
    return points;
}

struct Cluster {
    Coordinates centre;
    double sigma;
};

std::vector<Cluster> makeClusters(std::size_t n, Random& random) {
    Uniform unit(0.0, 1.0);
    Uniform exponent(-6.0, -2.0);
    std::vector<Cluster> clusters(n);
    for (Cluster& cluster : clusters) {
        cluster = {{unit(random), unit(random)}, std::pow(10.0, exponent(random))};
    }
    return clusters;
}

struct Line {
    Coordinates from, to;
};

/// Horizontal, oblique, vertical, oblique, ...
std::vector<Line> makeLines(std::size_t n, Random& random) {
    Uniform inside(-0.7, 0.7);
    std::vector<Line> lines(n);
    for (std::size_t i = 0; i < n; ++i) {
        Line& line = lines[i];
        line = {{inside(random), inside(random)}, {inside(random), inside(random)}};
        if (i % 4 == 0) line.to.y = line.from.y;
        if (i % 4 == 2) line.to.x = line.from.x;
    }
    return lines;
}

/// The position of a cell along the Hilbert curve through 2^levels by 2^levels cells.
std::uint64_t hilbertKey(std::uint32_t x, std::uint32_t y, int levels) {
    std::uint64_t key = 0;
    for (int level = levels - 1; level >= 0; --level) {
        const std::uint32_t right = (x >> level) & 1U;
        const std::uint32_t upper = (y >> level) & 1U;
        key = key * 4 + ((3 * right) ^ upper);
        // The curve inside the two lower quarters is turned: mirrored at one of the diagonals.
        if (upper != 0) continue;
        if (right != 0) {
            x = ~x;
            y = ~y;
        }
        std::swap(x, y);
    }
    return key;
}

}  // namespace

PointSet uniformPoints(std::size_t n) { return uniformWithSeed(n, 1); }
PointSet uniformQueries(std::size_t n) { return uniformWithSeed(n, 2); }

PointSet clusteredPoints(std::size_t n) {
    Random random(3);
    const std::vector<Cluster> clusters = makeClusters(100, random);
    std::uniform_int_distribution<std::size_t> choice(0, clusters.size() - 1);
    std::normal_distribution<double> normal;
    PointSet points(n);
    for (Coordinates& point : points) {
        const auto& [centre, sigma] = clusters[choice(random)];
        point = {centre.x + sigma * normal(random), centre.y + sigma * normal(random)};
    }
    return points;
}

PointSet gridPoints(std::size_t n) {
    const auto side = static_cast<std::size_t>(std::sqrt(static_cast<double>(n)));
    PointSet points;
    points.reserve(side * side);
    for (std::size_t i = 0; i < side; ++i) {
        for (std::size_t j = 0; j < side; ++j) {
            points.push_back({static_cast<double>(i), static_cast<double>(j)});
        }
    }
    std::shuffle(points.begin(), points.end(), Random(4));
    return points;
}

PointSet circleAndLines(std::size_t n) {
    Random random(5);
    const std::vector<Line> lines = makeLines(10, random);
    Uniform angle(0.0, 2.0 * std::numbers::pi);
    Uniform unit(0.0, 1.0);
    PointSet points;
    points.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        if (i % 2 == 0) {
            const double phi = angle(random);
            points.push_back({std::cos(phi), std::sin(phi)});
            continue;
        }
        const auto& [from, to] = lines[(i / 2) % lines.size()];
        const double t = unit(random);
        points.push_back({from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)});
    }
    return points;
}

void sortAlongCurve(PointSet& points) {
    constexpr int levels = 24;
    constexpr double numCells = 1 << levels;
    std::vector<std::pair<std::uint64_t, Coordinates>> keyed;
    keyed.reserve(points.size());
    for (const Coordinates& point : points) {
        const auto column = static_cast<std::uint32_t>(point.x * numCells);
        const auto row = static_cast<std::uint32_t>(point.y * numCells);
        keyed.emplace_back(hilbertKey(column, row, levels), point);
    }
    std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::transform(keyed.begin(), keyed.end(), points.begin(),
                   [](const auto& entry) { return entry.second; });
}

std::vector<std::size_t> chooseNumbers(std::size_t numChosen, std::size_t n) {
    std::vector<std::size_t> numbers(n);
    std::iota(numbers.begin(), numbers.end(), std::size_t{0});
    std::shuffle(numbers.begin(), numbers.end(), Random(6));
    numbers.resize(numChosen);
    return numbers;
}
