// Zones are the regions that they were made as, whatever happens to the mesh, and so is what they are combined to.
#include "Zone2.h"

#include <gtest/gtest.h>

#include "Norvik_2D.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "zoneLaws.h"

using namespace KELMAR_NORVIK2D;
using namespace zoneLaws;
using hardPoints::below, hardPoints::Rng, hardPoints::uniformPoints, hardPoints::unit;

namespace {

constexpr auto constrained = CIS_CONSTRAINED_DELAUNAY;

const struct Operation {
    std::string source;
    Zone2* (*combine)(Zone2*, Zone2*);
} operations[] = {{"Zone2::zoneUnion(...)", zoneUnion},
                  {"zoneUnion(...)", zoneIntersection},
                  {"zoneUnion(...)", zoneDifference},
                  {"zoneUnion(...)", zoneSymmetricDifference}};

/// A board of 20 by 20 with two squares that overlap.
struct Board {
    Norvik_2D mesh;
    ConstraintGraph2 *pA, *pB;
    Zone2 *pInA, *pInB, *pAll;
    Board() {
        mesh.insert(box(0, 0, 20, 20));
        pA = mesh.createConstraint(ring(box(4, 4, 10, 10)), constrained);
        pB = mesh.createConstraint(ring(reversed(box(8, 6, 14, 12))), constrained);
        pInA = mesh.createZone(pA, ZL_INSIDE);
        pInB = mesh.createZone(pB, ZL_INSIDE);
        pAll = mesh.createZone(nullptr, ZL_GLOBAL);
    }
    Zone2* grown(const Point2& seed) { return mesh.createZone({pA, pB}, ZL_GROW, seed); }
};

struct Predicate : UserPredicateT {
    std::function<bool(const Triangle2*)> answer;
    explicit Predicate(std::function<bool(const Triangle2*)> answer_) : answer(std::move(answer_)) {}
    bool operator()(Triangle2* pT) override { return answer(pT); }
};

}  // namespace

TEST(Zone2, TwoSquaresAndWhatIsMadeOfThem) {
    Board board;
    Norvik_2D& mesh = board.mesh;
    Zone2 *const pInA = board.pInA, *const pInB = board.pInB;
    EXPECT_EQ(mesh.numberOfPoints(), 14U);
    ConstraintGraph2* pNoGraph = nullptr;
    const struct {
        const char* name;
        Zone2* pZone;
        ZoneLocation kind;
        double area;
        std::size_t numTriangles, numBorders;
    } cases[] = {
        {"A", pInA, ZL_INSIDE, 36, 6, 6},
        {"B", pInB, ZL_INSIDE, 36, 6, 6},
        {"bounded A", mesh.createZone(board.pA, ZL_BOUNDED), ZL_BOUNDED, 36, 6, 6},
        {"outside A", mesh.createZone(board.pA, ZL_OUTSIDE), ZL_OUTSIDE, 364, 16, 10},
        {"all", board.pAll, ZL_GLOBAL, 400, 22, 4},
        {"union", zoneUnion(pInA, pInB), ZL_RESULT_UNION, 64, 10, 8},
        {"intersection", zoneIntersection(pInA, pInB), ZL_RESULT_INTERSECTION, 8, 2, 4},
        {"difference", zoneDifference(pInA, pInB), ZL_RESULT_DIFFERENCE, 28, 4, 6},
        {"in one", zoneSymmetricDifference(pInA, pInB), ZL_RESULT_SYM_DIFFERENCE, 56, 8, 12},
        {"A without A", zoneDifference(pInA, pInA), ZL_RESULT_DIFFERENCE, 0, 0, 0},
        {"no operands", mesh.createZone(nullptr, ZL_RESULT_UNION), ZL_RESULT_UNION, 0, 0, 0},
        {"grown in A", board.grown({5, 5}), ZL_GROW, 28, 4, 6},
        {"grown in both", board.grown({9.5, 7}), ZL_GROW, 8, 2, 4},
        {"grown from a corner", board.grown({0, 0}), ZL_GROW, 336, 12, 12},
        {"grown from the hull", board.grown({7, 0}), ZL_GROW, 0, 0, 0},
        {"grown from without", board.grown({25, 5}), ZL_GROW, 0, 0, 0},
        {"one wall", mesh.createZone(board.pA, ZL_GROW, Point2(9.5, 7)), ZL_GROW, 36, 6, 6},
        {"no wall", mesh.createZone(pNoGraph, ZL_GROW, Point2(9.5, 7)), ZL_GROW, 400, 22, 4},
    };
    std::vector<Zone2*> vBounded;
    for (const auto& [name, pZone, kind, area, numTriangles, numBorders] : cases) {
        SCOPED_TRACE(name);
        ASSERT_NE(pZone, nullptr);
        EXPECT_EQ(pZone->getZoneLocation(), kind);
        EXPECT_NEAR(pZone->getArea2D(), area, 1e-9);
        EXPECT_EQ(pZone->getNumberOfTriangles(), numTriangles);
        std::vector<Edge2> vBorders;
        pZone->getBorderEdges(vBorders);
        EXPECT_EQ(vBorders.size(), numBorders);
        CaptureOutput output;
        vBounded.push_back(pZone->convertToBoundedZone());
        EXPECT_EQ(vBounded.back() == pZone, kind == ZL_INSIDE);
        EXPECT_EQ(vBounded.back() == nullptr, area == 0);
        EXPECT_EQ(
            output.told("Zone2::convertToBoundedZone(), WARNING: No triangles available, returning NULL"),
            area == 0);
    }
    EXPECT_EQ(mesh.numberOfPoints(), 14U) << "zones don't change the mesh";
    Polygon points;
    for (const Point2& p : uniformPoints(600, 1)) points.emplace_back(20 * p.x(), 20 * p.y());
    mesh.setNumCPU(4);
    mesh.insert(points);
    EXPECT_EQ(soundness(mesh, true), "");
    for (std::size_t i = 0; i < std::size(cases); ++i)
        for (const Zone2* pZone : {cases[i].pZone, vBounded[i]}) {
            if (pZone == nullptr) continue;
            EXPECT_NEAR(areaOf(pZone), cases[i].area, 4e-9) << cases[i].name;
            EXPECT_EQ(zoneFaults(mesh, pZone), "") << cases[i].name;
            EXPECT_TRUE(pZone == cases[i].pZone || pZone->getZoneLocation() == ZL_BOUNDED);
        }
    EXPECT_EQ(pInA->getConstraintGraph(), board.pA);
    EXPECT_EQ(board.pAll->getConstraintGraph(), nullptr);
    CaptureOutput output;
    EXPECT_EQ(board.grown({5, 5})->getConstraintGraph(), nullptr);
    EXPECT_TRUE(
        output.told("Zone2::getConstraintGraph(), WARNING: There is more than one constraint graph, "
                    "use Zone2::getConstraintGraphs() instead. Returning NULL"));
}

TEST(Zone2, LiesToTheLeftOfItsGraphs) {
    const Polygon square = box(4, 4, 10, 10);
    const auto spike = [](double end) { return Segments{{{10, 10}, {end, end}}, {{end, end}, {10, 10}}}; };
    const struct {
        const char* name;
        Segments segments;
        bool bOriented;
        double inside, outside;
    } cases[] = {
        {"ring", ring(square), false, 36, 364},
        {"clockwise ring", ring(reversed(square)), false, 36, 364},
        {"directed ring", ring(square), true, 36, 364},
        {"clockwise and directed", ring(reversed(square)), true, 364, 36},
        {"hull", ring(box(0, 0, 20, 20)), false, 400, 0},
        {"hull, clockwise and directed", ring(reversed(box(0, 0, 20, 20))), true, 0, 400},
        {"four pieces outside", ring({{10, 0}, {20, 10}, {10, 20}, {0, 10}}), false, 200, 200},
        {"leaks", hardSegments::chain({{4, 4}, {16, 4}, {16, 16}}), true, 400, 400},
        {"from hull to hull", hardSegments::chain({{5, 0}, {5, 20}}), true, 100, 300},
        {"spike outwards", joined(ring(square), spike(12)), true, 36, 364},
        {"spike inwards, with a right side", joined(ring(square), spike(8)), true, 36, 400},
        {"two rings", joined(ring(box(2, 2, 6, 6)), ring(box(10, 10, 16, 16))), true, 52, 348},
        {"hole", joined(ring(box(2, 2, 12, 12)), ring(reversed(box(4, 4, 8, 8)))), true, 84, 316},
    };
    for (const auto& [name, segments, bOriented, inside, outside] : cases) {
        SCOPED_TRACE(name);
        Norvik_2D mesh;
        mesh.insert(box(0, 0, 20, 20));
        mesh.createConstraint({{Point2(1, 1), Point2(19, 12)}}, constrained);
        ConstraintGraph2* pGraph = mesh.createConstraint(segments, constrained, bOriented);
        const Zone2 *pIn = mesh.createZone(pGraph, ZL_INSIDE), *pOut = mesh.createZone(pGraph, ZL_OUTSIDE);
        for (const Zone2* pZone : {pIn, pOut}) ASSERT_NE(pZone, nullptr);
        EXPECT_NEAR(areaOf(pIn), inside, 1e-9);
        EXPECT_NEAR(areaOf(pOut), outside, 1e-9);
        EXPECT_EQ(trianglesOf(mesh.createZone(pGraph, ZL_BOUNDED)), trianglesOf(pIn));
        for (const Zone2* pZone : {pIn, pOut}) EXPECT_EQ(zoneFaults(mesh, pZone), "");
    }
}

// Halving waits for the whole set of constraints: until then the wall has gaps.
TEST(Zone2, ConvertingClosesWallsFirst) {
    Norvik_2D mesh;
    mesh.insert(uniformPoints(400, 1));
    mesh.insert(box(0, 0, 1, 1));
    Rng rng(2);
    const Polygon polygon = star(rng, 12, {0.5, 0.5}, 0.2, 0.45);
    ConstraintGraph2* pGraph = mesh.createConstraint(ring(polygon), CIS_CONFORMING_DELAUNAY);
    Zone2* pOutside = mesh.createZone(pGraph, ZL_OUTSIDE);
    EXPECT_NEAR(areaOf(pOutside->convertToBoundedZone()), 1 - areaOf(polygon), 1e-9);
    EXPECT_EQ(zoneFaults(mesh, pOutside) + soundness(mesh, true), "");
}

TEST(Zone2, WhatSeveralSeedsReachIsBoundedOnce) {
    Norvik_2D mesh;
    mesh.insert(box(0, 0, 20, 20));
    ConstraintGraph2* const pGraph = mesh.createConstraint(ring(box(4, 4, 10, 10)), CIS_CONSTRAINED_DELAUNAY);
    Zone2 zone(mesh.getImpl(), {pGraph}, ZL_GROW, {Point2(5, 6), Point2(9, 8)});
    EXPECT_NEAR(zone.getArea2D(), 72.0, 1e-9) << "twice";
    EXPECT_NEAR(zone.convertToBoundedZone()->getArea2D(), 36.0, 1e-9);
}

TEST(Zone2, WhatCantBeMadeIsNullWithAMessage) {
    Board board, other;
    Norvik_2D empty, &mesh = board.mesh;
    ConstraintGraph2* pLoose = mesh.createConstraint({{Point2(1, 1), Point2(3, 1)}}, constrained);
    ConstraintGraph2* pNoGraph = nullptr;
    Zone2 *const pUnborn = empty.createZone(pNoGraph, ZL_GROW, Point2(0, 0)), *const pA = board.pInA,
                 *const pNothing = board.grown({25, 5});
    ASSERT_NE(pUnborn, nullptr) << "seeds can be named before there are triangles";
    Predicate never([](const Triangle2*) { return false; });
    const std::string
        not2D = "Dt2::createZone, WARNING: called on a triangulation which has no triangles yet. ",
        loose = "Dt2::createZone(), WARNING: The constraint graph is not oriented, ",
        noGraph = "Dt::createZone(), ERROR: pConstraintGraph==NULL, but zoneLoc!=ZL_GLOBAL or ZL_RESULT. ",
        onlyGrow =
            "Dt2::createZone(), ERROR: This overloaded version of createZone accepts only ZL_GROW as "
            "zoneLocation. ",
        strange = ", ERROR: The zones must belong to the same triangulation! Returning NULL",
        null = ", WARNING: called with a NULL zone! Returning NULL", peel = "peelOffIf(), WARNING: Input ";
    const auto expectNull = [](const std::string& told, const std::function<Zone2*()>& make) {
        CaptureOutput output;
        EXPECT_EQ(make(), nullptr) << told;
        EXPECT_TRUE(output.told(told)) << output.out() << "instead of " << told;
    };
    expectNull(not2D + "Returning NULL", [&] { return empty.createZone(nullptr, ZL_GLOBAL); });
    expectNull(not2D, [&] { return empty.createZone(board.pA, ZL_INSIDE); });
    expectNull(not2D, [&] { return zoneUnion(pUnborn, pUnborn); });
    expectNull(noGraph + "Returning NULL", [&] { return mesh.createZone(nullptr, ZL_INSIDE); });
    expectNull(noGraph, [&] { return mesh.createZone(nullptr, ZL_GROW); });
    expectNull(loose + "returning NULL", [&] { return mesh.createZone(pLoose, ZL_OUTSIDE); });
    expectNull(loose, [&] { return mesh.createZone(pLoose, ZL_GROW); });
    expectNull(onlyGrow + "Returning NULL", [&] { return mesh.createZone(board.pA, ZL_INSIDE, {5, 5}); });
    expectNull(peel + "zone is NULL, returning NULL", [&] { return peelOffIf(nullptr, &never); });
    expectNull(peel + "zone is empty, returning NULL", [&] { return peelOffIf(pNothing, &never); });
    expectNull("peelOffIf(), WARNING: The predicate is NULL, returning NULL",
               [&] { return peelOffIf(pA, nullptr); });
    expectNull("Norvik_2D::createZone(..), WARNING: No zone created, returning NULL (bVerbose==true)",
               [&] { return mesh.createZone(nullptr, ZL_INSIDE, true); });
    for (const Operation& operation : operations) {
        expectNull(operation.source + strange, [&] { return operation.combine(pA, other.pInA); });
        expectNull(operation.source + null, [&] { return operation.combine(pA, nullptr); });
        expectNull(operation.source + null, [&] { return operation.combine(nullptr, pA); });
    }
    for (const ZoneLocation kind : {ZL_GROW, static_cast<ZoneLocation>(9)}) {
        CaptureOutput output;
        EXPECT_THROW(other.mesh.createZone(other.pA, kind), NorvikException);
        for (const std::string& told :
             {"zoneLoc=" + std::to_string(kind) + "\n", std::string("Condition [ false failed ]"),
              std::string("The ZoneLocation for this constructor can only be one of ZL_INSIDE, ZL_OUTSIDE, "
                          "ZL_BOUNDED")})
            EXPECT_TRUE(output.told(told)) << output.out();
    }
    CaptureOutput output;
    Triangles vNone;
    Zone2* pOfNone = mesh.createZone(vNone);
    ASSERT_NE(pOfNone, nullptr) << "only its questions have no answers";
    EXPECT_EQ(pOfNone->getNumberOfTriangles(), 0U);
    pOfNone->debug("nothing.ps");
    EXPECT_FALSE(pUnborn->getBoundingBox().isValid());
    pUnborn->statistics("unborn");
    for (const char* told : {"Dt2::createConstraint(..), WARNING: vSegments is empty, returning NULL",
                             "Zone2::getTriangles(), WARNING: is2D() is false, nothing to return",
                             "Number of triangles: 0\n", "Empty histogram [ INTERIOR ANGLES ]"})
        EXPECT_TRUE(output.told(told)) << told;
    empty.insert(box(-1, -1, 1, 1));
    EXPECT_DOUBLE_EQ(pUnborn->getArea2D(), 4.0);
}

TEST(Zone2, DiesOnceOnly) {
    Board board, other;
    Zone2* pUnion = zoneUnion(board.pInA, board.pInB);
    CaptureOutput output;
    board.mesh.deleteZone(pUnion);
    EXPECT_EQ(board.pInA->getNumberOfTriangles(), 6U) << "operands stay";
    board.mesh.deleteZone(board.pInA);
    EXPECT_EQ(board.mesh.createZone(board.pA, ZL_INSIDE)->getNumberOfTriangles(), 6U) << "graphs stay";
    EXPECT_EQ(output.out(), "");
    for (Zone2* pWrong : {pUnion, other.pInA, static_cast<Zone2*>(nullptr)}) {
        CaptureOutput warned;
        board.mesh.deleteZone(pWrong);
        EXPECT_TRUE(warned.told("Dt2::deleteZone(..), WARNING: trying to delete a non-existing zone"));
    }
}

TEST(Zone2, PeelsLikeOneTriangleAtATime) {
    int numSplit = 0;
    for (unsigned seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Norvik_2D mesh;
        mesh.insert(uniformPoints(150, seed));
        ConstraintGraph2* pGraph =
            mesh.createConstraint(ring(star(rng, 7, {0.5, 0.5}, 0.2, 0.5)), constrained);
        Zone2* pZone = mesh.createZone(pGraph, static_cast<ZoneLocation>(seed % 3));
        const Triangles vBefore = trianglesOf(pZone);
        const double share = std::clamp(1.4 * unit(rng) - 0.2, 0.0, 1.0);
        Predicate mayGo([share](const Triangle2* pT) {
            const Point2 at = pT->getBarycenter();
            return std::fmod(std::fabs(7919 * at.x() + 104729 * at.y()), 1.0) < share;
        });
        TriangleSet sLeft = setOf(vBefore);
        const auto hasFreeEdge = [&sLeft](const Triangle2* pT) {
            for (int i = 0; i < 3; ++i)
                if (sLeft.count(pT->getOppositeTriangle(i)) == 0) return true;
            return false;
        };
        for (std::size_t n = 0; n != sLeft.size();) {
            n = sLeft.size();
            for (Triangle2* pT : vBefore)
                if (sLeft.count(pT) != 0 && hasFreeEdge(pT) && mayGo(pT)) sLeft.erase(pT);
        }
        CaptureOutput output;
        const Zone2* pPeeled = peelOffIf(pZone, &mayGo);
        EXPECT_EQ(output.out(), "");
        EXPECT_EQ(trianglesOf(pZone), vBefore) << "the zone itself stays";
        ASSERT_EQ(pPeeled == nullptr, sLeft.empty());
        if (pPeeled == nullptr) continue;
        EXPECT_EQ(pPeeled->getZoneLocation(), ZL_GROW);
        ASSERT_EQ(setOf(trianglesOf(pPeeled)), sLeft);
        std::vector<Triangles> vComponents;
        getConnectedComponents(trianglesOf(pPeeled), vComponents);
        numSplit += vComponents.size() > 1;
        EXPECT_EQ(zoneFaults(mesh, pPeeled) + soundness(mesh, true), "");
    }
    EXPECT_GT(numSplit, 5);
    Board board;
    Predicate never([](const Triangle2*) { return false; });
    CaptureOutput output;
    peelOffIf(board.pInA, &never, true);
    EXPECT_TRUE(output.told("\nZone2::peelOffIf(), original Zone:\n numT=6\n area2D=36\n"));
    EXPECT_TRUE(output.told("Output Zone:\n numT=6\n area2D=36\n"));
}

namespace {

/// Whether diagonals rise, and in how many triangles, left and right of x = 5.
std::map<std::pair<bool, bool>, int> countDiagonals(Norvik_2D& mesh) {
    std::map<std::pair<bool, bool>, int> mCount;
    for (const Triangle2* pT : trianglesOf(mesh)) {
        const int i = pT->getMaxIndex();
        const Point2 *p = pT->getCorner((i + 1) % 3), *q = pT->getCorner((i + 2) % 3);
        mCount[{(q->x() - p->x()) * (q->y() - p->y()) > 0, (p->x() + q->x()) / 2 < 5}]++;
    }
    return mCount;
}

}  // namespace

TEST(Zone2, UnifiesTheDiagonalsOfAGrid) {
    // The two diagonals of sheared cells differ by 1/128, their squares by 1/64.
    for (const auto& [shear, tolerance] : {std::pair(0.0, 0.0), std::pair(1.0 / 128, 0.009)}) {
        const auto at = [shear = shear](double x, double y) { return Point2(x + shear * y, y); };
        Norvik_2D mesh;
        for (int i = 0; i < 121; ++i) mesh.insert(at(i % 11, i / 11));
        mesh.createConstraint({{at(2, 4), at(3, 3)}}, constrained);
        ConstraintGraph2* pMiddle = mesh.createConstraint({{at(5, 0), at(5, 10)}}, constrained, true);
        Zone2 *pLeft = mesh.createZone(pMiddle, ZL_INSIDE), *pAll = mesh.createZone(nullptr, ZL_GLOBAL);
        const CanonicalMesh before = canonicalMesh(mesh);
        for (const double tooLittle : {-1.0, 0.0, 0.007})
            if (shear != 0) pAll->unifyGrid(tooLittle);
        EXPECT_TRUE(canonicalMesh(mesh) == before);
        const int numRight = countDiagonals(mesh)[{true, false}];
        pLeft->unifyGrid(tolerance);
        auto mCount = countDiagonals(mesh);
        EXPECT_EQ((mCount[{false, true}]), 2) << "the constraint stays";
        EXPECT_EQ((mCount[{true, true}]), 98);
        EXPECT_EQ((mCount[{true, false}]), numRight) << "what isn't in the zone stays";
        for (int i = 0; i < 2; ++i) {
            pAll->unifyGrid(tolerance);
            EXPECT_EQ((countDiagonals(mesh)[{true, false}]), 100);
        }
        EXPECT_EQ(soundness(mesh, shear == 0), "");
    }
}

TEST(Zone2, IsDrawnAndCounted) {
    Board board;
    const std::string path = testing::TempDir() + "Zone2_drawn.ps";
    CaptureOutput output;
    {
        Visualizer2 expected(path);
        expected.addObject(trianglesOf(board.pInA), Color(0.94, 0.9, 0.55, 0.01, true));
        board.mesh.show(&expected, true);
    }
    const std::string expected = contentOf(path);
    board.pInA->show(path, true, true);
    EXPECT_EQ(contentOf(path), expected);
    board.pInA->show(path, false, true);
    EXPECT_LT(contentOf(path).size(), expected.size()) << "less edges";
    board.pInA->debug("");
    EXPECT_NE(contentOf("debug.ps").find("showpage"), std::string::npos);
    board.pInA->statistics("A");
    for (const char* told : {"This is Zone2::debug()", "Number of triangles: 6\n", "INTERIOR ANGLES",
                             "\n\n\n********* ZONE STATISTICS (A) **********\n\n"})
        EXPECT_TRUE(output.told(told)) << told;
}
