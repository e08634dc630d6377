#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include "Circle2.h"
#include "Color.h"
#include "Edge2.h"
#include "KelmarTest.h"
#include "NorvikException.h"
#include "Segment2.h"
#include "TriangleAroundVertexIterator.h"
#include "captureOutput.h"
#include "clientSettings.h"
#include "geometryTools.h"
#include "triangleLinks.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double tiniest = std::numeric_limits<double>::denorm_min();

template <class T>
std::string textOf(const T& value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

/// A triangle with corners of its own.
struct Figure {
    Point2 a, b, c;
    Triangle2 t;

    Figure(Point2 a_, Point2 b_, Point2 c_) : a(a_), b(b_), c(c_) { setCorners(&t, &a, &b, &c); }
    Figure(const Figure&) = delete;
    Figure& operator=(const Figure&) = delete;
};

/// The square (0,0) to (1,1), cut into t = (a,b,c) and u = (a,c,d).
struct Square {
    Point2 a{0, 0}, b{1, 0}, c{1, 1}, d{0, 1};
    Triangle2 t, u;

    Square() {
        setCorners(&t, &a, &b, &c);
        setCorners(&u, &a, &c, &d);
        setNeighbour(&t, 1, &u);
        setNeighbour(&u, 2, &t);
        setIncidentTriangle(&a, &t);
    }
    Square(const Square&) = delete;
    Square& operator=(const Square&) = delete;
};

}  // namespace

TEST(Point2, CopiesAreCoordinatePairsOnly) {
    Square square;
    square.a.customIndex = 7;
    Point2 copy(square.a), target(5, 5);
    setIncidentTriangle(&target, &square.t);
    target = square.a;
    for (const Point2* pPoint : {&copy, &target}) {
        EXPECT_EQ(*pPoint, square.a);
        EXPECT_EQ(pPoint->customIndex, 7);
        EXPECT_EQ(pPoint->getIncidentTriangle(), nullptr);
    }
}

TEST(Point2, ComparesBothCoordinatesExactly) {
    EXPECT_EQ(Point2(-0.0, 1.0, 3), Point2(0.0, 1.0, 4));
    EXPECT_NE(Point2(1.0, 2.0), Point2(std::nextafter(1.0, 2.0), 2.0));
    EXPECT_NE(Point2(notANumber, 0), Point2(notANumber, 0));
    EXPECT_LT(Point2(1, 9), Point2(2, 0));
    EXPECT_LT(Point2(1, 1), Point2(1, 2));
    EXPECT_FALSE(Point2(1, 1) < Point2(1, 1));
}

TEST(Point2, DenormalCoordinatesDifferWhateverTheHostHasSet) {
    Bbox2 box;
    box.add(Point2(0, 0));
    const ClientSettings flushing(FE_TONEAREST, true);
    EXPECT_NE(Point2(tiniest, 0), Point2(0, 0));
    EXPECT_LT(Point2(0, 0), Point2(0, tiniest));
    EXPECT_TRUE(box.add(Point2(tiniest, 0)));
}

TEST(ValueTypes, StreamForms) {
    Square square;
    square.a.customIndex = 5;
    const std::string a = "Point2 (" + textOf(&square.a) + ",5): 0, 0",
                      b = "Point2 (" + textOf(&square.b) + ",-1): 1, 0",
                      text = "Triangle(" + textOf(&square.t) + "): area2D=0.5, 0: " + a +
                             "\t oppTriangle: 01: " + b + "\t oppTriangle: " + textOf(&square.u);
    EXPECT_EQ(textOf(Edge2(&square.t, 2)), "Edge(" + a + "," + b + ")");
    EXPECT_EQ(textOf(square.t), text + "2: " + textOf(square.c) + "\t oppTriangle: 0");
    EXPECT_NE(textOf(Segment2(Point2(1, 2, 3), Point2(4, 5))).find(",3): 1, 2,Point2 ("), std::string::npos);
    EXPECT_NE(textOf(Circle2(0, 0, 4)).find(",-1): 0, 0, r=2"), std::string::npos);
}

TEST(Vector2, OrthogonalVectorIsTheLeftUnitVector) {
    CaptureOutput output;
    const struct {
        Vector2 v;
        double x, y;
    } cases[] = {{{1, 0}, 0, 1}, {{0, 1}, -1, 0}, {{-3, 0}, 0, -1}, {{0, 0}, 0, 0}, {{tiniest, 0}, 0, 1}};
    for (const auto& [v, x, y] : cases) {
        EXPECT_EQ(v.orthogonalVector().x(), x);
        EXPECT_EQ(v.orthogonalVector().y(), y);
    }
    EXPECT_EQ(output.out(), "");
    EXPECT_EQ(normalize(Vector2(0, 0)).length(), 0.0);
    EXPECT_EQ(output.out(), "warning: normalize(const Vector2& other), Null length vector!\n");
    EXPECT_THROW(Vector2(notANumber, 1).orthogonalVector(), NorvikException);

    std::mt19937 random(1);
    std::uniform_real_distribution<double> coordinate(-1, 1);
    for (int i = 0; i < 1000; ++i) {
        const Vector2 v(coordinate(random), coordinate(random));
        const Vector2 left = v.orthogonalVector();
        EXPECT_NEAR(left.length(), 1.0, 1e-15);
        EXPECT_NEAR(left * v, 0.0, 1e-15);
        EXPECT_GT(v.x() * left.y() - v.y() * left.x(), 0.0);
    }
}

TEST(Segment2, EqualInEitherDirectionAndSwappedWithIndices) {
    Segment2 segment(Point2(0, 0, 1), Point2(3, 4, 2));
    EXPECT_EQ(segment, Segment2(Point2(3, 4), Point2(0, 0)));
    EXPECT_NE(segment, Segment2(Point2(0, 0), Point2(0, 0)));
    segment.swapSrcTrg();
    EXPECT_EQ(segment.getSrc(), Point2(3, 4));
    EXPECT_TRUE(segment.getSrc().customIndex == 2 && segment.getTrg().customIndex == 1);
    EXPECT_EQ(segment.getSqLen2D(), 25.0);
}

TEST(Bbox2, AddTellsWhetherTheBoxChanged) {
    Bbox2 box;
    std::vector<Point2> points, corners;
    EXPECT_FALSE(box.add(points.begin(), points.end()) || box.isValid() || box.isInBox(Point2(0, 0)));
    EXPECT_TRUE(box.add(Point2(1, 1)));
    EXPECT_FALSE(box.add(Point2(1, 1)));
    points = {{1, 2}, {3, 0}};
    EXPECT_TRUE(box.add(points.begin(), points.end()));
    const std::vector<Point2*> pointers{&points[0], &points[1]};
    EXPECT_FALSE(box.add(pointers.begin(), pointers.end()));
    EXPECT_TRUE(box.isInBox(Point2(3, 2)));
    box.getCorners(corners);
    box.getOffsetCorners(1, corners);
    EXPECT_EQ(corners,
              (std::vector<Point2>{{1, 0}, {3, 0}, {3, 2}, {1, 2}, {0, -1}, {4, -1}, {4, 3}, {0, 3}}));
}

TEST(Bbox2, WideningKeepsTheCentreAndTellsThePredicates) {
    KelmarTest predicates;
    Bbox2 box;
    box.setPredicates(&predicates);
    box.add(Point2(-4, 0));
    box.add(Point2(2, 1));
    box.doubleTheBox();
    EXPECT_TRUE(box.isInBox(Point2(-7, -0.5)) && box.isInBox(Point2(5, 1.5)));
    EXPECT_EQ(predicates.getBoundMagnitude(), 7.0);
    Bbox2 copy = box;
    copy.enlargeRanges(1.5);
    EXPECT_EQ(copy.getMaxX(), 8.0);
    EXPECT_EQ(predicates.getBoundMagnitude(), 10.0);
}

TEST(Bbox2, MergingChangesTheLeftSide) {
    Bbox2 left, right, empty;
    right.add(Point2(0, 0));
    right.add(Point2(1, 1));
    EXPECT_TRUE((left + right).isValid());
    CaptureOutput output;
    EXPECT_TRUE(left.doIntersect(right) && (left + empty).getMaxX() == 1.0);
    EXPECT_TRUE(output.told("Box2::operator+(), WARNING: trying to add an invalid Bbox2"));
    EXPECT_FALSE(left.doIntersect(empty));
    EXPECT_TRUE(output.told("Bbox2::doIntersect(), WARNING: bbox invalid"));
    EXPECT_EQ(empty.computeCenter(), Point2(0, 0));
    EXPECT_TRUE(output.told("Bbox2::computeCenter(), WARNING: Bbox2 is invalid"));
}

TEST(Edge2, RunsOppositeItsCornerAndKnowsBothSides) {
    Square square;
    const Edge2 diagonal(&square.t, 1), otherSide(&square.u, 2), border(&square.t, 0);
    EXPECT_TRUE(diagonal.getSrc() == &square.c && diagonal.getTrg() == &square.a);
    EXPECT_EQ(diagonal.getLength2D(), 2.0);
    EXPECT_FALSE(diagonal < otherSide || otherSide < diagonal);
    EXPECT_NE(diagonal < border, border < diagonal);

    Triangle2 *pT, *pU;
    int index, indexInU;
    diagonal.getTriangles(pT, pU, index, indexInU);
    EXPECT_TRUE(pT == &square.t && pU == &square.u && index == 1 && indexInU == 2);
    border.getTriangles(pT, pU, index, indexInU);
    EXPECT_TRUE(pU == nullptr && indexInU == -1);
}

TEST(Triangle2, CheckedIndicesFailOnStrangers) {
    Square square;
    EXPECT_EQ(square.t.getIntraTriangleIndex(&square.u), 1);
    EXPECT_EQ(square.u.getIntraTriangleIndex(&square.d), 2);
    CaptureOutput output;
    EXPECT_THROW(square.t.getIntraTriangleIndex(&square.d), NorvikException);
    EXPECT_THROW(square.t.getIntraTriangleIndex(&square.t), NorvikException);
    EXPECT_EQ(output.out().rfind("BUG: Triangle2::getIntraTriangleIndex failed for", 0), 0U);
}

TEST(Triangle2, Measures) {
    Figure right({0, 0}, {4, 0}, {0, 3});
    EXPECT_EQ(right.t.getMaxSqEdgeLen2D(), 25.0);
    EXPECT_TRUE(right.t.getMaxIndex() == 0 && right.t.getMinIndex() == 1);
    EXPECT_EQ(right.t.getArea2D(), 6.0);
    EXPECT_EQ(right.t.getInteriorAngle2D(0), 89.999999999870681);
    EXPECT_EQ(getAngleDegree(Vector2(1, 0), Vector2(1 + 1e-15, 0)), 0.0);
    EXPECT_EQ(computeArea(1, 1, 3), 0.0);
    EXPECT_EQ(Square().t.getMinIndex(), 0);  // the lowest of equals
}

TEST(Triangle2, AreaBeyondTheDoublesFailsButPrints) {
    Figure huge({-1e308, -1e308}, {1e308, 0}, {0, 1e308});
    CaptureOutput output;
    EXPECT_THROW(huge.t.getArea2D(), NorvikException);
    EXPECT_TRUE(output.told("Triangle2::computeArea(), WARNING: invalid value, no area for this triangle"));
    for (const char* text : {"ownHalfCircf=inf", "Corners are: ", "len0=", "len1=", "len2="})
        EXPECT_TRUE(output.told(text)) << text;
    EXPECT_NE(textOf(huge.t).find("area2D=nan, "), std::string::npos);
    EXPECT_NO_THROW(textOf(Triangle2()));
}

TEST(Triangle2, HasOnEdgeTakesTheClosedEdgeOnly) {
    Figure right({0, 0}, {4, 0}, {0, 3});
    for (const Point2& on : {Point2(1, 0), right.a, right.b}) EXPECT_TRUE(right.t.hasOnEdge(2, on));
    for (const Point2& off : {Point2(std::nextafter(4.0, 5.0), 0), Point2(-tiniest, 0), Point2(1, tiniest),
                              Point2(notANumber, 0)})
        EXPECT_FALSE(right.t.hasOnEdge(2, off));
}

TEST(Triangle2, DualIsTheCircumcentre) {
    Figure right({0, 0}, {4, 0}, {0, 2});
    EXPECT_EQ(right.t.getDual(), std::pair(Point2(2, 1), true));
    Figure huge({0, 0}, {1e300, 0}, {0, 1e300});  // no strategy has a finite result
    EXPECT_FALSE(huge.t.getDual().second);

    std::mt19937 random(2);
    std::uniform_real_distribution<double> coordinate(0, 1);
    const auto randomPoint = [&] { return Point2(coordinate(random) + 1e6, coordinate(random)); };
    for (int i = 0; i < 1000; ++i) {
        Figure figure(randomPoint(), randomPoint(), randomPoint());
        if (getOrientation2(&figure.a, &figure.b, &figure.c) != ORIENTATION2_CCW)
            setCorners(&figure.t, &figure.a, &figure.c, &figure.b);
        const auto [center, bAccurate] = figure.t.getDual();
        const double radius = Vector2(center, figure.a).length();
        EXPECT_TRUE(bAccurate || radius > 10.0);
        EXPECT_TRUE(!bAccurate || std::fabs(radius - Vector2(center, figure.b).length()) < 1e-6);
    }
}

TEST(Triangle2, BisectionAgreesWithTheFormula) {
    for (const double height : {2.0, 0.2}) {  // an acute and an obtuse angle
        Figure figure({0.4, height}, {0, 0}, {1, 0});
        Point2 byFormula, byBisection;
        ASSERT_TRUE(figure.t.getCC_strategy1(0.3, 0.1, byFormula));
        figure.t.getCC_strategy2(0, 0.3, 0.1, byBisection);
        EXPECT_NEAR(byFormula.x(), byBisection.x(), 1e-9);
        EXPECT_NEAR(byFormula.y(), byBisection.y(), 1e-9);
    }
}

TEST(TriangleAroundVertexIterator, YieldsOneNullInEachRoundAroundAHullVertex) {
    Square square;
    TriangleAroundVertexIterator it(&square.a);
    const TriangleAroundVertexIterator start = it;
    for (int round = 0; round < 2; ++round) {
        for (Triangle2* pExpected : {&square.t, &square.u, static_cast<Triangle2*>(nullptr)}) {
            EXPECT_EQ(*it, pExpected);
            ++it;
        }
        EXPECT_EQ(it, start);
    }
    CaptureOutput output;
    EXPECT_THROW(TriangleAroundVertexIterator{&square.b}, NorvikException);
    EXPECT_EQ(
        output.err(),
        "TriangleAroundVertexIterator::TriangleAroundVertexIterator(), created from an invalid point\n");
}

TEST(GeometryTools, FootPointsAndDistancesFromALine) {
    const Point2 a(1, 1), b(4, 5), beside(-3, 4);
    const Point2 foot = getFootPoint(a, b, beside);
    EXPECT_DOUBLE_EQ(foot.x(), 1.0);
    EXPECT_DOUBLE_EQ(foot.y(), 1.0);
    EXPECT_DOUBLE_EQ(getPointLineDistance2D(a, b, beside), 5.0);
    EXPECT_EQ(getPointLineDistance2D(a, b, b), 0.0);
    CaptureOutput capture;
    EXPECT_EQ(getFootPoint(a, a, b), Point2(-999, -999));
    EXPECT_EQ(getPointLineDistance2D(a, a, b), 0.0);
    for (const char* text :
         {"getFootPoint(), WARNING: len2d==0", "getFootPoint(), WARNING: p0==p1, invalid parameters",
          "getPointLineDistance2D(..), ERROR: p0==p1"})
        EXPECT_TRUE(capture.told(text)) << capture.out();
}

TEST(Color, IsAPenAndHasACycleOfNames) {
    const Color thin(COLORNAME_ORANGE, 0.1F, false), filling(COLORNAME_ORANGE, 0.1F, true);
    EXPECT_TRUE(thin != filling && thin < filling);
    EXPECT_EQ(thin, Color(1.0, 0.627, 0.0, 0.1, false));
    for (int i = 0, last = Color::getNextColorName(); i < 30; ++i) {
        const int next = Color::getNextColorName();
        EXPECT_EQ(next, last % COLORNAME_CYAN + 1);  // never red, yellow, white
        last = next;
    }
    CaptureOutput output;
    EXPECT_EQ(Color(static_cast<Colorname>(17), 0.1F, false), Color());
    EXPECT_TRUE(output.told("Color::Color, WARNING: Colorname unknown, returning black"));
}
