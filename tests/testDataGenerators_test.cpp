#include "testDataGenerators.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "NorvikException.h"
#include "captureOutput.h"
#include "freeFunctions.h"

using namespace KELMAR_NORVIK2D;

TEST(TestDataGenerators, ASeedRepeatsAndZeroDoesNot) {
    std::vector<double> numbers, others;
    std::vector<Point2> points{{9, 9}};
    generateRandomNumbers(20, -3, 5, numbers, 7);
    generateRandomPoints(10, -3, 5, points, 7);
    ASSERT_EQ(points.size(), 11U);
    for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(points[i + 1], Point2(numbers[2 * i], numbers[2 * i + 1]));
    for (const double value : numbers) EXPECT_TRUE(value >= -3 && value <= 5);
    std::srand(7);
    EXPECT_EQ(numbers[0], -3 + std::rand() * 8.0 * 4.656612873077393e-10);

    generateRandomNumbers(20, 0, 1, numbers, 0);
    generateRandomNumbers(20, 0, 1, others, 0);
    EXPECT_NE(numbers, others);
}

TEST(TestDataGenerators, SegmentsHaveOneOfThreeLengths) {
    std::vector<Segment2> segments(3);
    generateRandomSegments(100, 0, 1, 0.25, segments, 3);
    ASSERT_EQ(segments.size(), 100U);
    for (std::size_t i = 3; i < segments.size(); ++i) {
        const double share = std::sqrt(segments[i].getSqLen2D()) / 0.25;
        EXPECT_LT(std::min({std::fabs(share - 1.0), std::fabs(share - 0.8), std::fabs(share - 0.5)}), 1e-12);
    }
}

TEST(TestDataGenerators, CircleUsesItsRoundedStep) {
    std::vector<Point2> points;
    generateCircle(4, 1, 2, 3, 4, points);
    ASSERT_EQ(points.size(), 4U);
    EXPECT_EQ(points[0], Point2(4, 2));
    EXPECT_GT(std::fabs(points[3].x() - 1.0), 1e-6);
    EXPECT_NEAR(points[3].x(), 1.0, 1e-4);

    CaptureOutput output;
    generateCircle(0, 0, 0, 1, 1, points);
    EXPECT_EQ(points.size(), 4U);
    EXPECT_TRUE(output.told("generateCircle(), WARNING: numPoints=0"));
}

TEST(TestDataGenerators, SineIsAChain) {
    std::vector<Segment2> chain, swapped, folded;
    generateSineSegments(8, 1, 10, 0, 1, 2, false, chain);
    generateSineSegments(8, 1, 10, 0, 1, 2, true, swapped);
    generateSineSegments(8, 1, 0, 5, 1, 0, false, folded);
    ASSERT_EQ(chain.size(), 8U);
    for (std::size_t i = 0; i < chain.size(); ++i) {
        EXPECT_TRUE(i == 0 || chain[i].getSrc() == chain[i - 1].getTrg());
        EXPECT_EQ(chain[i].getSrc().x(), swapped[i].getSrc().y());
        EXPECT_GE(folded[i].getTrg().y(), 5.0);
    }
    EXPECT_EQ(chain[2].getSrc().y(), 2.0);
    EXPECT_EQ(chain[4].getSrc().y(), 0.0);  // rounded dust becomes 0
}

TEST(TestDataGenerators, PolygonsAreSimple) {
    for (const std::size_t n : {3U, 4U, 5U, 10U, 100U, 500U, 2000U})
        for (unsigned seed = 1; seed <= 200; ++seed) {
            std::vector<Segment2> polygon(1);
            generateRandomPolygon(n, -20, 50, polygon, seed);
            ASSERT_EQ(polygon.size(), n);
            for (std::size_t i = 0; i < n; ++i) {
                const Point2 src = polygon[i].getSrc();
                EXPECT_EQ(src, polygon[(i + n - 1) % n].getTrg());
                // Less than 2 percent of 70 off the range.
                EXPECT_TRUE(src.x() > -21.4 && src.x() < 51.4 && src.y() > -21.4 && src.y() < 51.4);
            }
            ASSERT_TRUE(isSimplePolygon(polygon)) << n << " segments, seed " << seed;
        }
}

TEST(TestDataGenerators, RangesThatNoPolygonFitsIntoAreTold) {
    constexpr double huge = 1.5e308;
    for (const auto& [min, max] : {std::pair(100.0, 101.0), {-101.0, -100.0}, {-huge, huge}}) {
        CaptureOutput output;
        std::vector<Segment2> polygon(1);
        generateRandomPolygon(10, min, max, polygon, 1);
        EXPECT_TRUE(polygon.empty());
        EXPECT_TRUE(output.told("generateRandomPolygon(), WARNING: ")) << output.out();
    }
    std::vector<Segment2> polygon;
    generateRandomPolygon(3, 100, 101, polygon, 1);  // a single triangle may lie anywhere
    EXPECT_EQ(polygon.size(), 3U);
}

TEST(TestDataGenerators, BadArgumentsFailTheirAssertions) {
    std::vector<Point2> points;
    std::vector<Segment2> segments;
    CaptureOutput output;
    EXPECT_THROW(generateRandomPoints(1, 2, 2, points, 1), NorvikException);
    EXPECT_THROW(generateRandomSegments(1, 0, 1, 0, segments, 1), NorvikException);
    EXPECT_THROW(generateRandomPolygon(2, 0, 1, segments, 1), NorvikException);
    EXPECT_THROW(generateSineSegments(0, 1, 0, 0, 1, 1, false, segments), NorvikException);
    EXPECT_TRUE(output.told("[ min<max failed ]") && output.told("[ maxLength>0 failed ]") &&
                output.told("[ numSegments>0 failed ]"));
}
