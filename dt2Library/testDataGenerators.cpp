#include "testDataGenerators.h"

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "Vector2.h"
#include "diagnostics.h"
#include "geometryTools.h"
#include "require.h"
#include "roundingMode.h"

namespace KELMAR_NORVIK2D {

namespace {

void seedRandom(unsigned seed) {
    static unsigned numEarlierCalls = 0;
    if (seed != 0) {
        std::srand(seed);
    } else {
        // A step on for each earlier call, so that two calls within a second differ.
        std::srand(static_cast<unsigned>(std::time(nullptr)));
        for (unsigned i = 0; i < numEarlierCalls; ++i) std::srand(static_cast<unsigned>(std::rand()));
    }
    ++numEarlierCalls;
}

/// One of the points, by the next number of the sequence.
const Point2& randomPoint(const std::vector<Point2>& points) {
    return points[static_cast<std::size_t>(std::rand()) % points.size()];
}

/// One of three lengths, so that a set has short and long segments.
double randomLength(double maxLength) {
    switch (std::rand() % 3) {
        case 1:
            return 0.8 * maxLength;
        case 2:
            return 0.5 * maxLength;
        default:
            return maxLength;
    }
}

}  // namespace

void generateRandomNumbers(std::size_t n, double min, double max, std::vector<double>& numbers,
                           unsigned seed) {
    RoundToNearest nearest;
    require(min < max, "min<max");
    seedRandom(seed);
    constexpr double perRandMax = 4.656612873077393e-10;  // 2^-31
    numbers.resize(n);
    for (double& number : numbers) number = min + std::rand() * (max - min) * perRandMax;
}

void generateRandomPoints(std::size_t n, double min, double max, std::vector<Point2>& points, unsigned seed) {
    RoundToNearest nearest;
    require(min < max, "min<max");
    std::vector<double> numbers;
    generateRandomNumbers(2 * n, min, max, numbers, seed);
    points.reserve(points.size() + n);
    for (std::size_t i = 0; i < n; ++i) points.emplace_back(numbers[2 * i], numbers[2 * i + 1]);
}

void generateRandomSegments(std::size_t n, double min, double max, double maxLength,
                            std::vector<Segment2>& segments, unsigned seed) {
    RoundToNearest nearest;
    require(min < max, "min<max");
    require(maxLength > 0, "maxLength>0");
    std::vector<Point2> points;
    generateRandomPoints(2 * n + 100, min, max, points, seed);
    require(points.size() >= 2, "siz>=2");

    // The order of the draws is part of what a seed promises: source, target, then the length, which a pair
    // without direction doesn't draw.
    while (segments.size() < n) {
        const Point2& src = randomPoint(points);
        const Point2& trg = randomPoint(points);
        const Vector2 direction = trg - src;
        if (direction.length() == 0.0) continue;
        const double length = randomLength(maxLength);
        segments.emplace_back(src, src + normalize(direction) * length);
    }
}

void generateCircle(int numPoints, double x, double y, double radiusX, double radiusY,
                    std::vector<Point2>& points) {
    RoundToNearest nearest;
    if (numPoints == 0) {
        warning("generateCircle()", "numPoints=0");
        return;
    }
    // Five decimals by convention, not 2*pi: earlier data sets were made with this step.
    const double step = 6.28318 / numPoints;
    for (int i = 0; i < numPoints; ++i)
        points.emplace_back(x + radiusX * std::cos(i * step), y + radiusY * std::sin(i * step));
}

void generateSineSegments(int numSegments, int numPeriods, double xOffset, double yOffset, double xFactor,
                          double yFactor, bool bSwapXY, std::vector<Segment2>& segments) {
    RoundToNearest nearest;
    require(numSegments > 0, "numSegments>0");
    const double step = 2.0 * numPeriods * M_PI / numSegments;
    const auto pointAt = [&](int i) {
        const double t = i * step;
        const double x = t * xFactor + xOffset;
        double y = (yFactor == 0.0 ? std::fabs(std::sin(t)) : std::sin(t) * yFactor) + yOffset;
        // The zeros of the curve come out as rounding dust otherwise.
        if (std::fabs(y) < 1e-13) y = 0.0;
        return bSwapXY ? Point2(y, x) : Point2(x, y);
    };
    for (int i = 0; i < numSegments; ++i) segments.emplace_back(pointAt(i), pointAt(i + 1));
}

}  // namespace KELMAR_NORVIK2D
