#include "testDataGenerators.h"

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "FlatTable.h"
#include "Norvik_2D.h"
#include "Vector2.h"
#include "diagnostics.h"
#include "freeFunctions.h"
#include "geometryTools.h"
#include "require.h"
#include "roundingMode.h"
#include "triangleLinks.h"

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

/// A region of a triangulation that grows by one vertex, and thus by one border edge, at a time: so it never touches itself.
class GrowingRegion {
public:
    GrowingRegion(double min, double max) : minX(min), maxX(max), minY(0.98 * min), maxY(0.98 * max) {}

    /// Begins with any triangle, and grows until the border has that many edges. False if that isn't possible.
    bool grow(const std::vector<Triangle2*>& vMesh, std::size_t numSegments) {
        if (vMesh.empty()) return false;
        add(vMesh[static_cast<std::size_t>(std::rand()) % vMesh.size()]);
        while (numBorders() < numSegments) {
            if (vStack.empty()) return false;
            const Triangle2* const pT = vStack.back();
            vStack.pop_back();
            // A neighbour off the band ends this triangle's turn: a seed's polygon rests on that.
            bool bOffBand = false;
            for (int i = 0; i < 3 && numBorders() < numSegments; ++i) {
                Triangle2* const pNeighbour = neighbour(pT, i);
                if (pNeighbour == nullptr || isAtHull(pNeighbour)) continue;
                bOffBand = bOffBand || isOffBand(pNeighbour);
                if (!bOffBand && hasNewCorner(pNeighbour)) add(pNeighbour);
            }
        }
        return true;
    }
    const std::vector<Triangle2*>& getTriangles() const noexcept { return vTriangles; }

private:
    std::size_t numBorders() const noexcept { return vTriangles.size() + 2; }

    static bool isAtHull(const Triangle2* pT) {
        return neighbour(pT, 0) == nullptr || neighbour(pT, 1) == nullptr || neighbour(pT, 2) == nullptr;
    }
    bool isOffBand(const Triangle2* pT) const {
        for (int i = 0; i < 3; ++i) {
            const Point2* const pVtx = corner(pT, i);
            if (pVtx->x() < minX || pVtx->x() > maxX || pVtx->y() < minY || pVtx->y() > maxY) return true;
        }
        return false;
    }
    bool hasNewCorner(const Triangle2* pT) const {
        return !sVertices.contains(corner(pT, 0)) || !sVertices.contains(corner(pT, 1)) ||
               !sVertices.contains(corner(pT, 2));
    }
    void add(Triangle2* pT) {
        vTriangles.push_back(pT);
        vStack.push_back(pT);
        for (int i = 0; i < 3; ++i) *sVertices.insert(corner(pT, i)).first = corner(pT, i);
    }

    double minX, maxX, minY, maxY;
    std::vector<Triangle2*> vTriangles, vStack;
    FlatTable<const Point2*> sVertices;
};

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

void generateRandomPolygon(std::size_t numSegments, double min, double max, std::vector<Segment2>& segments,
                           unsigned seed) {
    RoundToNearest nearest;
    require(numSegments > 2, "numSegments>2");
    require(min < max, "min<max");
    require(max - min > 0, "range>0");
    segments.clear();
    const double low = max - 1.02 * (max - min), high = min + 1.02 * (max - min);
    // So written that a range without a finite size is refused too. A single triangle needs no band.
    const bool bBandIsMet = 0.98 * max > low && 0.98 * min < high && high - low < HUGE_VAL;
    if (!bBandIsMet && numSegments > 3) {
        warning("generateRandomPolygon()", "no vertices can lie in the range, nothing done");
        return;
    }

    // Each attempt has more points; where it takes so many, there is no room for the polygon.
    constexpr unsigned mostAttempts = 1000;
    for (unsigned numAttempts = 0; numAttempts < mostAttempts; ++numAttempts) {
        std::vector<Point2> points;
        generateRandomPoints(4 * numSegments + std::size_t{50} * numAttempts, low, high, points,
                             seed + numAttempts);
        Norvik_2D mesh;
        mesh.insert(points);
        std::vector<Triangle2*> vMesh;
        mesh.getTrianglePointers(vMesh);
        GrowingRegion region(min, max);
        if (!region.grow(vMesh, numSegments)) continue;
        getBorders(region.getTriangles(), segments);
        sortRing(segments);
        return;
    }
    warning("generateRandomPolygon()", "no polygon of that many segments found in the range, nothing done");
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
