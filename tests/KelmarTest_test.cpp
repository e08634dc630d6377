#include "KelmarTest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "captureOutput.h"
#include "clientSettings.h"
#include "exactSigns.h"
#include "hardPoints.h"

using namespace KELMAR_NORVIK2D;
using hardPoints::around0, hardPoints::below, hardPoints::nudged, hardPoints::Rng, hardPoints::sign,
    hardPoints::unit;

namespace {

Orientation2 orientationOf(int sign) {
    return sign > 0 ? ORIENTATION2_CCW : sign < 0 ? ORIENTATION2_CW : ORIENTATION2_COLLINEAR;
}

struct Figure {
    Point2 a, b, c, q;

    double magnitude() const {
        double result = 0.0;
        for (const Point2* p : {&a, &b, &c, &q})
            result = std::max({result, std::fabs(p->x()), std::fabs(p->y())});
        return result;
    }
    Triangle2 triangle() {
        Triangle2 result;
        setCorners(&result, &a, &b, &c);
        return result;
    }
    bool isRectangle() const {
        const Point2* corners[] = {&a, &b, &c, &a, &b};
        for (int i = 0; i < 3; ++i) {
            const Point2& opposite = *corners[i];
            const Point2 besides[] = {{q.x(), opposite.y()}, {opposite.x(), q.y()}};
            if (opposite.x() == q.x() || opposite.y() == q.y()) continue;
            for (int j = 0; j < 2; ++j)
                if (*corners[i + 1] == besides[j] && *corners[i + 2] == besides[1 - j]) return true;
        }
        return false;
    }
};
std::ostream& operator<<(std::ostream& os, const Figure& figure) {
    os << std::hexfloat;
    for (const Point2* p : {&figure.a, &figure.b, &figure.c, &figure.q})
        os << "(" << p->x() << ", " << p->y() << ") ";
    return os;
}

/// Three points on a line at parameters of different magnitudes, moved by a few units in the last place. Where the
/// second is opposite to the first, the third may be much smaller than both.
Figure nearLine(Rng& rng, double scale) {
    const Point2 a(scale * around0(rng), scale * around0(rng));
    Point2 b(scale * around0(rng), scale * around0(rng));
    double t = std::ldexp(4.0 * around0(rng), -below(rng, 30));
    if (below(rng, 3) == 0) {
        b = {nudged(-a.x(), rng), nudged(-a.y(), rng)};
        t = 0.5 + std::ldexp(around0(rng), -below(rng, 30));
    }
    const auto between = [&](double from, double to) {
        constexpr double most = 1.7e308;
        return nudged(std::clamp(from + t * (to - from), -most, most), rng, 2);
    };
    return {a, b, {between(a.x(), b.x()), between(a.y(), b.y())}, a};
}

Figure mixedMagnitudes(Rng& rng) {
    const auto any = [&] { return sign(rng) * std::ldexp(1.0 + unit(rng), below(rng, 2090) - 1070); };
    Figure figure{{any(), any()}, {any(), any()}, {any(), any()}, {any(), any()}};
    if (below(rng, 2) == 0) figure.c = figure.a;
    if (below(rng, 2) == 0) figure.c = {figure.b.x(), nudged(figure.a.y(), rng)};
    return figure;
}

/// Points whose determinant is the difference of nearly equal products of unlike factors.
Figure unlikeFactors(Rng& rng) {
    const int one = below(rng, 2000) - 1000, two = below(rng, 1900) - 900, exponent = one + two;
    const int high = std::clamp(below(rng, 2000) - 1000, exponent - 1000, exponent + 1000);
    const auto nearOne = [&] { return nudged(1.0, rng, 3); };
    return {{std::ldexp(nearOne(), one), std::ldexp(nearOne(), high)},
            {std::ldexp(nearOne(), exponent - high), std::ldexp(nearOne(), two)},
            {0.0, 0.0},
            {0.0, 0.0}};
}

Figure integers(Rng& rng, int bits, double unitLength) {
    const auto any = [&] { return unitLength * (below(rng, 1 << bits) - (1 << (bits - 1))); };
    return {{any(), any()}, {any(), any()}, {any(), any()}, {any(), any()}};
}

/// Four points of a circle, moved by a few units in the last place.
Figure nearCircle(Rng& rng, double radius, double offset) {
    const auto on = [&] {
        const double angle = 6.2 * unit(rng);
        return Point2(nudged(offset + radius * std::cos(angle), rng),
                      nudged(offset + radius * std::sin(angle), rng));
    };
    return {on(), on(), on(), on()};
}

/// Four corners of rectangles with one common circle, scaled by an odd number, the last one moved by a unit or not.
Figure onWideCircle(Rng& rng, double factor) {
    const auto on = [&] {
        const Point2 p = hardPoints::onIntegerCircle(rng);
        return Point2(factor * p.x(), factor * p.y());
    };
    Figure figure{on(), on(), on(), on()};
    figure.q = {figure.q.x() + below(rng, 3) - 1, figure.q.y()};
    return figure;
}

void expectExactOrientations(KelmarTest& engine, const Figure& f) {
    const Orientation2 expected = orientationOf(exactSigns::orientationSign(f.a, f.b, f.c));
    engine.setStaticBound(f.magnitude());
    EXPECT_EQ(engine.getOrientation2(&f.a, &f.b, &f.c), expected) << f;
    EXPECT_EQ(engine.dynamicFilterOri2(&f.a, &f.b, &f.c), expected) << f;
    EXPECT_EQ(engine.exact_getOrientation2(&f.a, &f.b, &f.c), expected) << f;
    EXPECT_EQ(getOrientation2(&f.a, &f.b, &f.c), expected) << f;
    EXPECT_EQ(getOrientation2_mt(&f.a, &f.b, &f.c), expected) << f;
}

void expectExactCircles(KelmarTest& engine, Figure f) {
    const int turn = exactSigns::orientationSign(f.a, f.b, f.c);
    if (turn == 0) return;
    if (turn < 0) std::swap(f.a, f.b);
    const int expected = exactSigns::inCircleSign(f.a, f.b, f.c, f.q);
    const CINC2 expected3 = expected > 0 ? CINC2_INCIRCLE : expected < 0 ? CINC2_OUTCIRCLE : CINC2_ZERO;
    const Triangle2 triangle = f.triangle();
    EXPECT_EQ(engine.circleInc3state(&triangle, &f.q), expected3) << f;
    EXPECT_EQ(engine.exact_circleInc3state(&triangle, &f.q), expected3) << f;
    EXPECT_EQ(engine.exact_circleInc(&triangle, &f.q), expected > 0 || f.isRectangle()) << f;
    const CircleVerdict verdict = KelmarTest::inCircleFilter(&triangle, &f.q);
    if (verdict != CircleVerdict::UNDECIDED) {
        EXPECT_EQ(verdict, expected > 0 ? CircleVerdict::INSIDE : CircleVerdict::OUTSIDE) << f;
        EXPECT_NE(expected, 0) << f;
    }
}

constexpr double scales[] = {1.0,    1e-30,  1e-78, 1e-138, 1e-150, 1e-154, 1e-162,
                             1e-300, 1e-320, 1e75,  1e150,  1e300,  4e307};

std::string debugText(KelmarTest& engine, const Point2& a, const Point2& b, const Point2& c) {
    CaptureOutput capture;
    engine.debug(&a, &b, &c);
    return capture.out();
}

}  // namespace

TEST(KelmarTest, OrientationIsExactInEveryStage) {
    Rng rng(1);
    KelmarTest engine;
    for (const double scale : scales)
        for (int i = 0; i < 2500; ++i) expectExactOrientations(engine, nearLine(rng, scale));
    for (int i = 0; i < 10000; ++i) {
        expectExactOrientations(engine, mixedMagnitudes(rng));
        expectExactOrientations(engine, unlikeFactors(rng));
    }
    for (const int bits : {2, 4, 20, 30})
        for (int i = 0; i < 1000; ++i) expectExactOrientations(engine, integers(rng, bits, 1.0));
    for (int i = 0; i < 1000; ++i) expectExactOrientations(engine, integers(rng, 4, 5e-324));
}

TEST(KelmarTest, ProductsOfHugeAndTinyFactorsDifferInTheLastBit) {
    // The factor 2^1000 can't be split into halves without leaving the range of doubles, though the products are moderate.
    const Figure figure{
        {nudged(0x1p1000, 1), nudged(0x1p455, 3)}, {nudged(0x1p455, -4), 0x1p-90}, {0, 0}, {0, 0}};
    KelmarTest engine;
    expectExactOrientations(engine, figure);
}

TEST(KelmarTest, PointsOfAnAxisParallelLineAreCollinear) {
    KelmarTest engine;
    for (const double x : {0.0, -0.0, 1e-310, 0.1, 1e300}) {
        expectExactOrientations(engine, {{x, 0.1}, {x, 1e300}, {x, -1e-300}, {x, x}});
        expectExactOrientations(engine, {{0.1, x}, {1e300, x}, {-1e-300, x}, {x, x}});
        expectExactOrientations(engine, {{x, x}, {x, x}, {x, x}, {x, x}});
    }
}

TEST(KelmarTest, StaticBoundIsThreeTimesTwoToMinusFiftyOfTheSquare) {
    const Point2 origin(0, 0);
    const struct {
        double magnitude;
        const char* told;
    } cases[] = {{1.0, "STATIC BOUND=2.66454e-15 resp. -2.66454e-15\n"},
                 {-1000.0, "STATIC BOUND=2.66454e-09 resp. -2.66454e-09\n"},
                 {2e-138, "STATIC BOUND=1.06581e-290 resp. -1.06581e-290\n"},
                 {1.9e-138, "STATIC BOUND=inf resp. -inf\n"},
                 {1e-200, "STATIC BOUND=inf resp. -inf\n"},
                 {1e200, "STATIC BOUND=inf resp. -inf\n"},
                 {0.0, "STATIC BOUND=0 resp. -0\n"}};
    KelmarTest engine;
    EXPECT_EQ(engine.getBoundMagnitude(), 0.0);
    for (const auto& [magnitude, told] : cases) {
        engine.setStaticBound(magnitude);
        EXPECT_EQ(engine.getBoundMagnitude(), std::fabs(magnitude));
        const std::string text = debugText(engine, origin, origin, origin);
        EXPECT_NE(text.find(told), std::string::npos) << text;
    }
}

TEST(KelmarTest, InCircleIsExactInEveryStage) {
    Rng rng(2);
    KelmarTest engine;
    for (const double scale : scales)
        for (const double offset : {0.0, scale})
            for (int i = 0; i < 700; ++i) expectExactCircles(engine, nearCircle(rng, scale, offset));
    for (const double factor : {1.0, 5.0, 33554393.0, 137438953447.0})
        for (int i = 0; i < 1000; ++i) expectExactCircles(engine, onWideCircle(rng, factor));
    for (const int bits : {2, 3, 20, 30})
        for (const double unitLength : {1.0, 0x1p-31, 0x1p500, 0x1p-860, 5e-324})
            for (int i = 0; i < 500; ++i) expectExactCircles(engine, integers(rng, bits, unitLength));
    for (int i = 0; i < 5000; ++i) expectExactCircles(engine, mixedMagnitudes(rng));
    // Clusters of unlike magnitudes: a bound that only knows its own size is fooled.
    for (int i = 0; i < 5000; ++i) {
        Figure f = nearCircle(rng, scales[below(rng, 11)], 0.0);
        const Figure other = nearCircle(rng, scales[below(rng, 11)], 0.0);
        f.c = other.c;
        if (below(rng, 2) == 0) f.q = other.q;
        expectExactCircles(engine, f);
    }
}

TEST(KelmarTest, TheCircleFilterBearsLargeErrors) {
    // Found by a search for determinants with the wrong sign that are as large as possible beside their permanents.
    const Figure figures[] = {{{-0x1.d9ad3941f3c0bp-1, -0x1.84b67f930d634p-2},
                               {-0x1.a3bf75ff74967p-1, -0x1.252e99cdb34fdp-1},
                               {-0x1.fe1e5799785f2p-1, 0x1.5ed313b915fd1p-4},
                               {-0x1.fc1b43c058a51p-1, 0x1.f82d362deccbcp-4}},
                              {{-0x1.9caba2325d144p-1, -0x1.2f10186fd69e4p-1},
                               {-0x1.a4169ca34df9bp-2, -0x1.d2ee948220ac6p-1},
                               {-0x1.fff8bf83c079dp-1, 0x1.58b0dae36ed14p-7},
                               {-0x1.b767e42a520fp-1, 0x1.06ce1b0ca8ffdp-1}}};
    KelmarTest engine;
    for (const Figure& figure : figures) expectExactCircles(engine, figure);
}

TEST(KelmarTest, GridsAtTheEdgeOfThirtyBitsAreDecidedRight) {
    KelmarTest engine;
    for (const double last : {0x1p29 - 1, 0x1p29, 0x1p30 - 1, 0x1p30, 0x1p30 + 1, 0x1p31 - 1})
        for (const double moved : {-1.0, 0.0, 1.0}) {
            expectExactCircles(engine, {{-last, 0}, {0, -last}, {last, 0}, {0, last + moved}});
            expectExactCircles(engine, {{-last, -last}, {last, -last}, {last, last}, {-last, last + moved}});
            expectExactCircles(engine, {{0, 0}, {last, 1}, {last - 1, last + 1}, {-1, last + moved}});
        }
}

TEST(KelmarTest, CocircularPointsAreZeroAndOnlyTheCornerOfARectangleIsInside) {
    KelmarTest engine;
    Figure figures[] = {{{0.7, 0.2}, {0.7, 1e9}, {0.1, 1e9}, {0.1, 0.2}},
                        {{0.1, 1e9}, {0.1, 0.2}, {0.7, 0.2}, {0.7, 1e9}},
                        {{1, 0}, {0, 1}, {-1, 0}, {0, -1}},         // a square on its tip
                        {{65, 0}, {0, 65}, {-63, 16}, {-16, -63}},  // four points of a circle
                        {{0, 0}, {4, 0}, {0, 3}, {4, 0}},           // the point is a corner
                        {{0, 0}, {4, 1}, {0, 3}, {0, 0}},           // the same, sharing x with a second one
                        {{-25, -60}, {25, -60}, {16, 63}, {-16, 63}}};  // a trapezium
    for (Figure& f : figures) {
        const Triangle2 triangle = f.triangle();
        ASSERT_EQ(exactSigns::inCircleSign(f.a, f.b, f.c, f.q), 0) << f;
        EXPECT_EQ(engine.circleInc3state(&triangle, &f.q), CINC2_ZERO) << f;
        EXPECT_EQ(engine.exact_circleInc3state(&triangle, &f.q), CINC2_ZERO) << f;
        EXPECT_EQ(engine.exact_circleInc(&triangle, &f.q), &f < figures + 2) << f;
    }
}

TEST(KelmarTest, WordsOfTheEnumerators) {
    const char* const words[4][4] = {{"ORIENTATION2_COLLINEAR", "CINC2_ZERO", "IST_NOIS", "COL"},
                                     {"ORIENTATION2_CCW", "CINC2_INCIRCLE", "IST_COLLINEAR", "CCW"},
                                     {"ORIENTATION2_CW", "CINC2_OUTCIRCLE", "IST_REGULAR", "CW"},
                                     {"UNKNOWN", "UNKNOWN", "UNKNOWN", "unknown, this is a bug"}};
    for (int value = 0; value < 4; ++value) {
        EXPECT_EQ(getString(static_cast<Orientation2>(value)), words[value][0]);
        EXPECT_EQ(KelmarTest::getString(static_cast<CINC2>(value)), words[value][1]);
        EXPECT_EQ(KelmarTest::getString(static_cast<IntersectionType>(value)), words[value][2]);
        EXPECT_EQ(KelmarTest::getUserFriendlyOrientation(static_cast<Orientation2>(value)), words[value][3]);
    }
}

TEST(KelmarTest, PublicOrientationsAreExactUnderAnySettingsAndKeepThem) {
    Rng rng(3);
    std::vector<Figure> figures{{{1, 0}, {0, 1}, {-1, -1}, {}}, {{0, 0}, {1, 1}, {2, 2}, {}}};
    for (const double scale : {1.0, 1e-154, 1e-162, 1e-310, 1e300})
        for (int i = 0; i < 200; ++i) figures.push_back(nearLine(rng, scale));
    for (int i = 0; i < 400; ++i) figures.push_back(integers(rng, 3, 5e-324));
    for (const Figure& f : figures) {
        const Orientation2 expected = orientationOf(exactSigns::orientationSign(f.a, f.b, f.c));
        for (const int rounding : roundingModes)
            for (const bool bFlush : {false, true}) {
                ClientSettings settings(rounding, bFlush);
                const Orientation2 shared = getOrientation2(&f.a, &f.b, &f.c);
                const Orientation2 own = getOrientation2_mt(&f.a, &f.b, &f.c);
                EXPECT_TRUE(settings.areKept());
                EXPECT_TRUE(shared == expected && own == expected) << rounding << bFlush << f;
            }
    }
}

TEST(KelmarTest, DebugTellsWhatEachStageSays) {
    KelmarTest engine;
    engine.setStaticBound(1.0);
    const struct {
        Point2 c;
        const char *simple, *exact;
    } cases[] = {{{0, 1}, "simple test says positive", "exact test says POSITIVE"},
                 {{0, -1}, "simple test says negative", "exact test says NEGATIVE"},
                 {{2, 0}, "simple test says 'no idea'", "exact test says ZERO"},
                 {{2, 1e-30}, "simple test says 'no idea'", "exact test says POSITIVE"}};
    for (const auto& [c, simple, exact] : cases) {
        const std::string text = debugText(engine, {0, 0}, {1, 0}, c);
        for (const char* words : {"KelmarTest::debug(", "STATIC BOUND=", " resp. ", "simple result=", simple,
                                  "Result of dynamic ub: ", "Result of dynamic lb: ", exact})
            EXPECT_NE(text.find(words), std::string::npos) << words << " in\n" << text;
    }
}
