// Where segments meet, and points moved onto lines.
#include <gtest/gtest.h>

#include <limits>

#include "KelmarTest.h"
#include "NorvikException.h"
#include "Norvik_2D.h"
#include "captureOutput.h"
#include "exactSegments.h"
#include "exactSigns.h"
#include "geometryTools.h"
#include "hardPoints.h"
#include "tools.h"

using namespace KELMAR_NORVIK2D;
using exactSigns::orientationSign;
using hardPoints::around0, hardPoints::below, hardPoints::nudged, hardPoints::Rng, hardPoints::unit;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct TwoSegments {
    Point2 a, b, c, d;
};

Point2 withIndex(double x, double y, int customIndex) {
    Point2 point(x, y);
    point.customIndex = customIndex;
    return point;
}

/// Distance from the line through a and b.
long double distanceFrom(const Point2& a, const Point2& b, const Point2& q) {
    using Wide = long double;
    const Wide dx = Wide(b.x()) - a.x(), dy = Wide(b.y()) - a.y();
    return std::fabs(dx * (Wide(q.y()) - a.y()) - dy * (Wide(q.x()) - a.x())) / std::hypot(dx, dy);
}

bool isOnLineBetween(const Point2& a, const Point2& b, const Point2& q0, const Point2& q1) {
    return orientationSign(a, b, q0) * orientationSign(a, b, q1) <= 0;
}

}  // namespace

TEST(Intersections, TypeIsExactOnSmallIntegersWhateverTheOrder) {
    Rng rng(1);
    int numOf[3] = {0, 0, 0};
    ExactReference exact;
    KelmarTest engine;
    engine.setStaticBound(4.0);
    for (int i = 0; i < 20000; ++i) {
        Point2 p[4];
        for (Point2& point : p) point = Point2(below(rng, 5), below(rng, 5));
        if (p[0] == p[1] || p[2] == p[3]) continue;
        const IntersectionType expected = exactSegments::meeting(exact, {p[0], p[1]}, {p[2], p[3]});
        ++numOf[expected];
        ASSERT_EQ(engine.getIntersectionType(p[0], p[1], p[2], p[3]), expected)
            << p[0] << p[1] << p[2] << p[3];
        ASSERT_EQ(engine.getIntersectionType(p[3], p[2], p[0], p[1]), expected)
            << p[0] << p[1] << p[2] << p[3];
    }
    EXPECT_GT(std::min({numOf[0], numOf[1], numOf[2]}), 200);
}

TEST(Intersections, ArithmeticFollowsTheSlopes) {
    const struct {
        const char* name;
        TwoSegments s;
        double x, y;
    } cases[] = {
        {"slopes well apart: rounded to nearest", {{0, 0}, {3, 1}, {0, 1}, {2, 0}}, 1.2, 0.4},
        {"upright and level", {{1, -1}, {1, 2}, {0, 0.25}, {4, 0.25}}, 1.0, 0.25},
        {"slopes less than 0.01 apart: exact, then cut",
         {{0, 0}, {5000, 1}, {0, 1}, {5000, -3}},
         1000.0,
         0.19999999999999998},
        {"both steep: exact, then cut",
         {{0, 0}, {1, 1001}, {0.9, 0}, {0.2, 1001}},
         0.5294117647058824,
         529.9411764705882},
    };
    for (const auto& [name, s, x, y] : cases) {
        Point2 crossing;
        getIntersectionPointNoRounding(s.a, s.b, s.c, s.d, crossing);
        EXPECT_EQ(crossing.x(), x) << name;
        EXPECT_EQ(crossing.y(), y) << name;
        EXPECT_EQ(crossing.customIndex, -1) << name;
    }
    double x = 0.0, y = 0.0;
    KelmarTest().getIntersectionCoords_gmp({0, 0}, {3, 1}, {0, 1}, {2, 0}, x, y);
    EXPECT_EQ(x, 1.2);
    EXPECT_EQ(y, 0.39999999999999997) << "cut toward zero";
}

TEST(Intersections, ACommonEndIsGivenWithItsIndex) {
    const Point2 p0 = withIndex(0.1, 0.7, 4), p1 = withIndex(1e9, 3.3, 5), other = withIndex(-2.5, 8.1, 6);
    const auto twin = [](Point2 point) {
        point.customIndex += 10;
        return point;
    };
    const struct {
        TwoSegments s;
        const Point2& expected;
    } cases[] = {{{p0, p1, twin(p0), other}, p0},
                 {{p0, p1, other, twin(p0)}, p0},
                 {{p0, p1, twin(p1), other}, p1},
                 {{p0, p1, other, twin(p1)}, p1},
                 {{p0, p1, twin(p1), twin(p0)}, p0}};
    for (const auto& [s, expected] : cases) {
        Point2 crossing;
        getIntersectionPointNoRounding(s.a, s.b, s.c, s.d, crossing);
        EXPECT_EQ(crossing, expected);
        EXPECT_EQ(crossing.customIndex, expected.customIndex);
    }
}

TEST(Intersections, ParallelLinesHaveNoPoint) {
    CaptureOutput output;
    double x = 0.0, y = 0.0;
    EXPECT_THROW(KelmarTest().getIntersectionCoords_gmp({0, 0}, {3, 1}, {1, 1}, {7, 3}, x, y),
                 NorvikException);
    EXPECT_TRUE(output.told("KelmarTest::getIntersectionCoords(), ERROR: denom=0 -> parallel segments"));
    EXPECT_TRUE(output.told("Condition [ false failed ]"));
}

TEST(Intersections, AnEndWithinAMillionthTakesThePlaceOfTheCrossing) {
    const Point2 a = withIndex(0, 0, 1), b = withIndex(1, 0, 2), top = withIndex(0.5, 1, 3);
    const struct {
        const char* name;
        TwoSegments s;
        Point2 expected;
    } cases[] = {
        {"just within", {a, b, withIndex(0.5, -9e-7, 7), top}, withIndex(0.5, -9e-7, 7)},
        {"just beyond", {a, b, withIndex(0.5, -1.1e-6, 7), top}, withIndex(0.5, 0, -1)},
        {"the nearest of two",
         {withIndex(0.5 - 3e-7, 0, 8), b, top, withIndex(0.5, -5e-7, 7)},
         withIndex(0.5 - 3e-7, 0, 8)},
        {"the least of equally near ones, of segments that are too small for the threshold",
         {withIndex(1e-7, 0, 4), withIndex(0, 1e-7, 5), withIndex(1e-7, 1e-7, 6), withIndex(0, 0, 7)},
         withIndex(0, 0, 7)},
    };
    for (const auto& [name, s, expected] : cases) {
        Point2 crossing;
        EXPECT_TRUE(getIntersectionPoint(s.a, s.b, s.c, s.d, crossing)) << name;
        EXPECT_EQ(crossing, expected) << name;
        EXPECT_EQ(crossing.customIndex, expected.customIndex) << name;
    }
}

TEST(Intersections, SegmentsThatMeetHaveAPointNearBothAtAnyScale) {
    for (const double scale : {1e-3, 1.0, 1e6, 1e9, 1e12, 1e100})
        for (const double width : {2.0, 1e-2, 1e-7}) {
            Rng rng(5);
            KelmarTest engine;
            engine.setStaticBound(4.0 * scale);
            int numMet = 0;
            for (int i = 0; i < 4000; ++i) {
                const auto point = [&] { return Point2(scale * around0(rng), scale * width * around0(rng)); };
                const Point2 a = point(), b = point(), d = point();
                const double t = unit(rng);
                // An end that lies on the other segment but for rounding.
                const Point2 c(nudged(a.x() + t * (b.x() - a.x()), rng),
                               nudged(a.y() + t * (b.y() - a.y()), rng));
                if (engine.getIntersectionType(a, b, c, d) != IST_REGULAR) continue;
                ++numMet;
                Point2 crossing;
                ASSERT_NO_THROW(getIntersectionPoint(a, b, c, d, crossing)) << a << b << c << d;
                const long double tolerance = 1e-6L + 8.0L * std::numeric_limits<double>::epsilon() * scale;
                ASSERT_LE(distanceFrom(a, b, crossing), tolerance) << a << b << c << d << scale;
                ASSERT_LE(distanceFrom(c, d, crossing), tolerance) << a << b << c << d << scale;
                ASSERT_TRUE(approxHasOn(a, b, crossing) && approxHasOn(c, d, crossing));
            }
            EXPECT_GT(numMet, 1000);
        }
}

TEST(Intersections, LensesComprehendEndsButOnlyInnerPointsLieBetween) {
    const Point2 a(1, 1), b(3, 3);
    const struct {
        Point2 q;
        bool bInLens, bBetween;
    } cases[] = {{a, true, false},           {b, true, false},
                 {{2, 2}, true, true},       {{1.0000000001, 1.0000000001}, true, true},
                 {{0.9, 0.9}, false, false}, {{3.1, 3.1}, false, false},
                 {{2.2, 1.8}, true, true},   {{4, 0}, false, false}};
    for (const auto& [q, bInLens, bBetween] : cases) {
        EXPECT_EQ(approxHasOn(a, b, q), bInLens) << q;
        EXPECT_EQ(hasOnCollinearPoint(b, a, q), bBetween) << q;
    }
    EXPECT_TRUE(approxHasOn(a, a, a));
    EXPECT_FALSE(samePoint({notANumber, 0}, {notANumber, 0}));
    EXPECT_TRUE(samePoint({-0.0, 5e-324}, {0.0, 5e-324}));
}

TEST(LastPlace, IsTheLeastPowerOfTwoThatCountsUpToOne) {
    constexpr double tiniest = std::numeric_limits<double>::denorm_min();
    const std::pair<double, double> cases[] = {{0.0, tiniest},         {1.0, 0x1p-52}, {-1.0, 0x1p-53},
                                               {1 + 0x1p-52, 0x1p-53}, {0x1p52, 1.0},  {0x1p53, 1.0},
                                               {-1e300, 1.0},          {HUGE_VAL, 1.0}};
    for (const auto& [value, ulp] : cases) EXPECT_EQ(getUlp(value), ulp) << value;
    CaptureOutput output;
    EXPECT_TRUE(std::isnan(getUlp(notANumber)));
    EXPECT_TRUE(output.told("getUlp, WARNING: ulp is nan for "));
}

TEST(PointsOnLines, BisectionEndsWithinTwoPlacesOfTheLine) {
    Rng rng(7);
    for (const double scale : {1e-200, 1e-3, 1.0, 1e5, 1e200})
        for (int i = 0; i < 500; ++i) {
            const Point2 p0(scale * around0(rng), scale * around0(rng)),
                p1(scale * around0(rng), scale * around0(rng));
            const double t = unit(rng), range = scale * 1e-3;
            const Point2 q(p0.x() + t * (p1.x() - p0.x()) + 0.9 * range * around0(rng),
                           p0.y() + t * (p1.y() - p0.y()));
            const double x = getBetterX(p0, p1, q, range), y = getBetterY(p0, p1, {q.y(), q.x()}, range);
            ASSERT_LE(std::fabs(x - q.x()), range);
            ASSERT_LE(std::fabs(y - q.x()), range);
            ASSERT_TRUE(isOnLineBetween(p0, p1, {nudged(x, -2), q.y()}, {nudged(x, 2), q.y()}))
                << p0 << p1 << q;
            ASSERT_EQ(getBetterY({p0.y(), p0.x()}, {p1.y(), p1.x()}, {q.y(), q.x()}, range), x)
                << "mirrored " << p0 << p1 << q;
        }
}

TEST(PointsOnLines, BisectionLeavesWhatItCannotImprove) {
    const struct {
        const char* name;
        Point2 p0, p1, q;
        double range, expected;
    } cases[] = {
        {"the line is out of reach", {0, 0}, {0, 1}, {5, 0.5}, 4.9, 5.0},
        {"the lower end of the range is on the line", {0, 0}, {0, 1}, {5, 0.5}, 5.0, 5.0},
        {"no range", {0, 0}, {1, 1}, {0.5, 0.25}, 0.0, 0.5},
        {"a range below the last place", {0, 0}, {1, 1}, {1e17, 1e17 + 64}, 1.0, 1e17},
        {"a level line", {0, 0}, {1, 0}, {5, 0.5}, 4.0, 5.0},
        {"found", {0, 0}, {1, 1}, {0.25, 0.5}, 1.0, 0.5},
    };
    for (const auto& [name, p0, p1, q, range, expected] : cases)
        EXPECT_NEAR(getBetterX(p0, p1, q, range), expected, 1e-300) << name;
}

TEST(PointsOnLines, BisectionTowardsZeroIsGivenUpAfterAThousandTurns) {
    CaptureOutput output;
    EXPECT_NEAR(getBetterX({0, 0}, {0, 1}, {3, 0.5}, 5.0), 0.0, 1e-300);
    for (const char* told : {"getBetterX, WARNING: unexpected behavior, observe!", "searchCtr=1001",
                             "searchCtr=1006", "xMax-currentX=", "currentX<xMax: "})
        EXPECT_TRUE(output.told(told)) << told;
    EXPECT_FALSE(output.told("searchCtr=1007"));
}

TEST(PointsOnLines, PointsMoveByAHundredthOfTheExtentAndAThousandthAtMost) {
    const struct {
        const char* name;
        Point2 p0, p1, q, expected;
    } cases[] = {
        {"steep: x first", {0, 0}, {1, 2}, {0.5005, 1.0}, {0.5, 1.0}},
        {"flat: y first", {0, 0}, {2, 1}, {1.0, 0.5005}, {1.0, 0.5}},
        {"as long as wide: y first", {0, 0}, {1, 1}, {0.5005, 0.5}, {0.5005, 0.5005}},
        {"further than 0.001", {0, 0}, {0, 1000}, {0.0011, 500}, {0.0011, 500}},
        {"further than a hundredth", {0, 0}, {0.01, 0.02}, {0.0052, 0.01}, {0.0052, 0.01}},
        {"a level segment has no height to move in", {0, 1}, {4, 1}, {2, 1.0001}, {2, 1.0001}},
    };
    for (const auto& [name, p0, p1, q, expected] : cases) {
        const Point2 adapted = adaptPointToSegment(p0, p1, q);
        EXPECT_NEAR(adapted.x(), expected.x(), 1e-15) << name;
        EXPECT_NEAR(adapted.y(), expected.y(), 1e-15) << name;
    }
}

TEST(PointsOnLines, MiddlesAreOnTheSegmentButForRounding) {
    Rng rng(9);
    for (const double scale : {1e-150, 1.0, 1e9, 1e15, 1e150})
        for (int i = 0; i < 300; ++i) {
            const Point2 a(scale * around0(rng), scale * around0(rng)),
                b(i % 5 == 0 ? a.x() : scale * around0(rng), i % 5 == 1 ? a.y() : scale * around0(rng));
            const Point2 middle = centerWithShift(a, b);
            const double place = scale * std::numeric_limits<double>::epsilon();
            ASSERT_LE(distanceFrom(a, b, middle), place) << a << b;
            ASSERT_TRUE(hasOnCollinearPoint(a, b, middle)) << a << b;
            ASSERT_NEAR(middle.x(), 0.5 * (a.x() + b.x()), std::max(0.0011, 2 * place)) << a << b;
            ASSERT_EQ(centerWithShift(b, a), middle) << a << b;
        }
    EXPECT_EQ(centerWithShift({0x1.2p1023, 0}, {0x1.6p1023, 0}), Point2(0x1.4p1023, 0))
        << "sums aren't doubles";
}

TEST(PointsOnLines, SplitPointsOfHullEdgesAreNotInside) {
    Rng rng(11);
    for (int i = 0; i < 300; ++i) {
        const std::vector<Point2> corners = hardPoints::makePoints(hardPoints::kinds[0], 3, rng);
        Norvik_2D mesh;
        mesh.insert(corners);
        std::vector<Triangle2*> vTriangles;
        mesh.getTrianglePointers(vTriangles);
        ASSERT_EQ(vTriangles.size(), 1U);
        KelmarTest engine;
        engine.setStaticBound(1.0);
        for (int edge = 0; edge < 3; ++edge) {
            const Point2 &a = *vTriangles[0]->getCorner((edge + 1) % 3),
                         &b = *vTriangles[0]->getCorner((edge + 2) % 3);
            const Point2 split = getOuterSplitPoint(vTriangles[0], edge, &engine);
            ASSERT_LE(orientationSign(a, b, split), 0) << a << b;
            ASSERT_LE(distanceFrom(a, b, split), 1e-14L) << a << b;
        }
    }
}
