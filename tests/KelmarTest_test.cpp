#include "KelmarTest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "PredicateJudge.h"
#include "captureOutput.h"
#include "exactSigns.h"
#include "hardPoints.h"
#include "predicateFigures.h"
#include "triangleLinks.h"

using namespace KELMAR_NORVIK2D;
using hardPoints::nudged, predicateFigures::nudged;

namespace {

Orientation2 orientationOf(int sign) {
    return sign > 0 ? ORIENTATION2_CCW : sign < 0 ? ORIENTATION2_CW : ORIENTATION2_COLLINEAR;
}

/// Points whose determinant is the difference of nearly equal products of unlike factors.
Figure unlikeFactors(Decisions& from) {
    const int one = from.around0(1000), two = from.around0(900), exponent = one + two;
    const int high = std::clamp(from.around0(1000), exponent - 1000, exponent + 1000);
    const auto nearOne = [&] { return HardPoints::nudged(1.0, from); };
    return {{std::ldexp(nearOne(), one), std::ldexp(nearOne(), high)},
            {std::ldexp(nearOne(), exponent - high), std::ldexp(nearOne(), two)},
            {0.0, 0.0},
            {0.0, 0.0}};
}

/// Three points on a line through the middle of the first two, the third much closer to it than they are.
Figure nearMiddle(Decisions& from, double scale) {
    const Point2 a = predicateFigures::anywhere(from, scale);
    const double t = std::ldexp(predicateFigures::around0(from), -static_cast<int>(from.below(30)));
    return {a, nudged({-a.x(), -a.y()}, from), nudged({t * a.x(), t * a.y()}, from), a};
}

/// Judges figures, each as another client would ask.
class Clients {
public:
    void expectRight(PredicateJudge::Family family, const Figure& figure) {
        if (testing::Test::HasFatalFailure()) return;
        ++number;
        judge.judge(family, figure, {number % PredicateJudge::numRoundings, number / 4 % 2 == 0});
        ASSERT_EQ(judge.getFault(), "");
        if (family == PredicateJudge::TURN) expectRightInEachStage(figure);
    }

private:
    void expectRightInEachStage(const Figure& f) {
        const Orientation2 expected = orientationOf(exactSigns::orientationSign(f.a, f.b, f.c));
        engine.setStaticBound(f.magnitude());
        EXPECT_EQ(engine.getOrientation2(&f.a, &f.b, &f.c), expected) << f;
        EXPECT_EQ(engine.dynamicFilterOri2(&f.a, &f.b, &f.c), expected) << f;
        EXPECT_EQ(engine.exact_getOrientation2(&f.a, &f.b, &f.c), expected) << f;
    }

    PredicateJudge judge;
    KelmarTest engine;
    unsigned number = 0;
};
constexpr auto turn = PredicateJudge::TURN, circle = PredicateJudge::CIRCLE;

constexpr double scales[] = {1.0,    1e-30,  1e-78, 1e-138, 1e-150, 1e-154, 1e-162,
                             1e-300, 1e-320, 1e75,  1e150,  1e300,  2e307};

std::string debugText(KelmarTest& engine, const Point2& a, const Point2& b, const Point2& c) {
    CaptureOutput capture;
    engine.debug(&a, &b, &c);
    return capture.out();
}

}  // namespace

TEST(KelmarTest, AnswersAreExactForFiguresOfAllKinds) {
    Decisions from(1);
    Clients clients;
    for (const predicateFigures::Kind& kind : predicateFigures::kinds)
        for (int i = 0; i < 1000; ++i)
            for (const auto family : {turn, circle, PredicateJudge::SEGMENTS})
                if (kind.families >> family & 1U) clients.expectRight(family, kind.make(from));
}

TEST(KelmarTest, OrientationIsExactInEveryStage) {
    Decisions from(2);
    Clients clients;
    for (const double scale : scales)
        for (int i = 0; i < 1000; ++i) {
            clients.expectRight(turn, predicateFigures::onLine(from, scale));
            clients.expectRight(turn, nearMiddle(from, scale));
        }
    for (int i = 0; i < 10000; ++i) clients.expectRight(turn, unlikeFactors(from));
}

TEST(KelmarTest, ProductsOfHugeAndTinyFactorsDifferInTheLastBit) {
    // The factor 2^1000 can't be split into halves without leaving the range of doubles, though the products are moderate.
    const Figure figure{
        {nudged(0x1p1000, 1), nudged(0x1p455, 3)}, {nudged(0x1p455, -4), 0x1p-90}, {0, 0}, {0, 0}};
    Clients clients;
    clients.expectRight(turn, figure);
}

TEST(KelmarTest, PointsOfAnAxisParallelLineAreCollinear) {
    Clients clients;
    for (const double x : {0.0, -0.0, 1e-310, 0.1, 1e300}) {
        clients.expectRight(turn, {{x, 0.1}, {x, 1e300}, {x, -1e-300}, {x, x}});
        clients.expectRight(turn, {{0.1, x}, {1e300, x}, {-1e-300, x}, {x, x}});
        clients.expectRight(turn, {{x, x}, {x, x}, {x, x}, {x, x}});
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
    using predicateFigures::onCircle;
    Decisions from(3);
    Clients clients;
    for (const double scale : scales)
        for (int i = 0; i < 700; ++i) {
            clients.expectRight(circle, onCircle(from, scale, from.oneIn(2) ? scale : 0.0));
            // Clusters of unlike magnitudes: a bound that only knows its own size is fooled.
            Figure f = onCircle(from, scale, 0.0);
            const Figure other = onCircle(from, scales[from.below(11)], 0.0);
            f.c = other.c;
            if (from.oneIn(2)) f.q = other.q;
            clients.expectRight(circle, f);
        }
    for (const double factor : {1.0, 5.0, 33554393.0, 137438953447.0})
        for (int i = 0; i < 1000; ++i)
            clients.expectRight(circle, predicateFigures::onIntegerCircle(from, factor));
    for (const int most : {2, 4, 1 << 19, 1 << 29})
        for (const double unitLength : {1.0, 0x1p-31, 0x1p500, 0x1p-860, 5e-324})
            for (int i = 0; i < 500; ++i)
                clients.expectRight(circle, predicateFigures::integers(from, most, unitLength));
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
    Clients clients;
    for (const Figure& figure : figures) clients.expectRight(circle, figure);
}

TEST(KelmarTest, GridsAtTheEdgeOfThirtyBitsAreDecidedRight) {
    Clients clients;
    for (const double last : {0x1p29 - 1, 0x1p29, 0x1p30 - 1, 0x1p30, 0x1p30 + 1, 0x1p31 - 1})
        for (const double moved : {-1.0, 0.0, 1.0}) {
            clients.expectRight(circle, {{-last, 0}, {0, -last}, {last, 0}, {0, last + moved}});
            clients.expectRight(circle, {{-last, -last}, {last, -last}, {last, last}, {-last, last + moved}});
            clients.expectRight(circle, {{0, 0}, {last, 1}, {last - 1, last + 1}, {-1, last + moved}});
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
        Triangle2 triangle;
        setCorners(&triangle, &f.a, &f.b, &f.c);
        ASSERT_EQ(ExactReference().inCircle(f.a, f.b, f.c, f.q), 0) << f;
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
