// Zones become meshes of good triangles: what every run promises, the counts that the rules give, and that every run ends.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <stdexcept>

#include "Dt2.h"
#include "RefinementQueue.h"
#include "captureOutput.h"
#include "clientSettings.h"
#include "meshDomains.h"
#include "splitPoint.h"

using namespace meshDomains;
using hardPoints::below;

namespace {

// Circumcentres are beyond the long side.
const Domain flat{"flat", {{{0, 0}, {10, 0}, {9, 2}, {1, 2}}}};

}  // namespace

TEST(Refinement, LimitsGiveTheseCounts) {
    // Without symmetry everything counts: which triangle comes first, where walks end, what goes again.
    const Domain odd{"odd", {{{0, 0}, {61, -7}, {70, 43}, {33, 30}, {3, 51}}, {{13, 9}, {17, 20}, {29, 11}}}};
    const struct {
        const Domain& domain;
        Wish wish;
        const char* counts;
    } cases[] = {
        {square, {.maxEdge = 20}, "4/2"},
        {square, {.maxEdge = 10}, "5/4"},
        {square, {.maxEdge = 8}, "9/8"},
        {square, {.maxEdge = 5}, "13/16"},
        {square, {.maxEdge = 2}, "81/128"},
        {square, {.maxEdge = 1}, "289/512"},
        {square, {.maxEdge = 0.5}, "1089/2048"},
        {square, {.minEdge = 5, .maxEdge = 8}, "9/8"},  // sides of just twice the least length are split
        {square, {.minEdge = 5.01, .maxEdge = 8}, "5/4"},
        {equilateral, {.maxEdge = 10.1}, "3/1"},
        {equilateral, {.maxEdge = 5.1}, "6/4"},  // the first Steiner point, in the middle, is gone again
        {equilateral, {.maxEdge = 4.9}, "15/16"},
        {odd, {.minAngle = 30}, "14/15"},
        {odd, {.minAngle = 25, .maxEdge = 4}, "460/823"},
        {odd, {.minAngle = 0, .maxArea = 3}, "730/1373"},
        {odd, {.minAngle = 28, .maxEdge = 9, .growFactor = 1.8}, "152/254"},
    };
    for (const auto& [domain, wish, counts] : cases) {
        Meshed meshed(domain);
        meshed.refine(wish);
        EXPECT_EQ(meshed.counts(), counts) << domain.name << wish.maxEdge;
        EXPECT_EQ(meshed.faults(), "");
    }
}

TEST(Refinement, OnlyWhatNeedsItAndMayBeSplitIsRefined) {
    const Domain thin{"thin", {{{0, 0}, {10, -0.875}, {10, 0.875}}}};  // 10 degrees at the tip, area 8.75
    const struct {
        const char* what;
        Domain domain;
        Wish wish;
        bool bRefined;
        double areaBehindWalls = unlimited;
    } cases[] = {
        {"narrow input", thin, {.minAngle = 30}, false},
        {"narrow and long", thin, {.maxEdge = 9}, true},
        {"narrow and large", thin, {.maxArea = 8.7}, true},
        {"narrow and not too large", thin, {.maxArea = 8.8}, false},
        {"flat", flat, {}, true},
        {"flat with no angle", flat, {.minAngle = std::nan("")}, false},
        {"flat with a negative angle", flat, {.minAngle = -1}, false},
        {"flat and unsplittable", flat, {.bSplit = false}, false},
        {"great beside small", kite(1, 4, false), {.minAngle = 0, .growFactor = 3}, true},
        {"not so great", kite(1, 2.9, false), {.minAngle = 0, .growFactor = 3}, false},
        {"beside what is too small",
         kite(1, 4, false),
         {.minAngle = 0, .growFactor = 3, .growMinArea = 1.1},
         false},
        {"behind a wall", kite(1, 4, true), {.minAngle = 0, .growFactor = 3}, false},
        {"behind a wall with an area", kite(1, 4, true), {.minAngle = 0, .growFactor = 3}, true, 1.0},
        {"no factor", kite(1, 4, false), {.minAngle = 0, .growFactor = 0}, false},
    };
    for (const auto& [what, domain, wish, bRefined, areaBehindWalls] : cases) {
        Meshed meshed(domain);
        const std::size_t before = meshed.mesh.numberOfPoints();
        std::vector<ConstraintSegment2*> vWalls;
        meshed.mesh.getImpl()->getConstraintManager()->getAliveConstraintSegments(vWalls);
        for (ConstraintSegment2* pWall : vWalls) pWall->setAdjacentArea(areaBehindWalls);
        meshed.refine(wish);
        EXPECT_EQ(meshed.mesh.numberOfPoints() != before, bRefined) << what;
        EXPECT_EQ(meshed.faults(), "") << what;
    }
}

TEST(Refinement, DomainsWithoutSharpCornersMeetTheBoundEverywhere) {
    constexpr double bounds[] = {20.0, 25.0, 30.0};
    std::vector<std::pair<Domain, double>> cases;
    for (const Domain& domain : bluntDomains())
        for (const double bound : bounds) cases.emplace_back(domain, bound);
    Rng rng(1);
    for (int i = 0; i < 500; ++i)
        cases.emplace_back(Domain{"random " + std::to_string(i), {bluntStar(rng)}}, bounds[i % 3]);
    for (const auto& [domain, bound] : cases) {
        SCOPED_TRACE(domain.name);
        Meshed meshed(domain);
        CaptureOutput output;
        meshed.mesh.refine(meshed.pZone, bound, 0.001, unlimited, true);
        EXPECT_TRUE(meshed.mesh.checkZoneQuality(meshed.pZone, bound - 1e-6, "blunt", {}));
        EXPECT_EQ(output.out() + output.err(), "");
        EXPECT_EQ(meshed.faults(), "");
    }
}

TEST(Refinement, SharpCornersAndTinyFeaturesEndSoundly) {
    const std::pair<double, double> images[] = {{1, 0},     {1, 1e6},  {1e-4, 0}, {1e8, 0},
                                                {100, 4e7}, {1e18, 0}, {1e70, 0}};
    for (const Domain& domain : sharpDomains())
        for (const auto& [scale, offset] : images)
            for (const auto& [bound, minEdge] : {std::pair(20.0, 1e-3), std::pair(30.0, 1e-2)}) {
                Meshed meshed(transformed(domain, scale, offset));
                meshed.mesh.refine(meshed.pZone, bound, minEdge * scale, 3 * scale, true);
                EXPECT_EQ(meshed.faults(), "") << domain.name << " by " << scale << " to " << offset;
            }
}

TEST(Refinement, WallsALastPlaceApartAreNoHullEdges) {
    Norvik_2D mesh;
    const Point2 tip(-1, -6), upper(-0.4860897059712268, -0.0068005957184036347);
    mesh.insert({{upper.x(), -0.0068005957184038568}, {-4, -0.93599792885855315}, tip, upper});
    mesh.createConstraint({{upper, tip}}, CIS_CONSTRAINED_DELAUNAY);
    Zone2* const pZone = mesh.createZone(zoneLaws::trianglesOf(mesh))->convertToBoundedZone();
    const double area = areaOf(pZone);
    mesh.refine(pZone, 10, 0.0006, 0.6, true);
    EXPECT_EQ(zoneLaws::soundness(mesh, true), "");
    EXPECT_NEAR(areaOf(pZone), area, 1e-12);
}

TEST(Refinement, ConstraintsThatWaitAreAppliedFirst) {
    Meshed meshed(square);
    meshed.refine({.maxEdge = 2});
    meshed.mesh.createConstraint({Segment2({2, 5}, {7, 6})}, CIS_CONFORMING_DELAUNAY);
    CaptureOutput output;
    EXPECT_FALSE(meshed.mesh.checkValidity(true, "waiting")) << "or there is nothing to show";
    meshed.refine({});
    EXPECT_EQ(meshed.faults(), "");
}

TEST(Refinement, GradedMeshesFollowThePlaceAndGrowSlowly) {
    struct Graded : MeshGenParams {
        using MeshGenParams::MeshGenParams;
        double getMaxEdgeLength(Triangle2* pT) override { return pT->getBarycenter().x() < 3 ? 0.5 : 4.0; }
        double getMaxTriangleArea(Triangle2* pT) override {
            return pT->getBarycenter().y() < 2 ? 0.2 : 100.0;
        }
    };
    for (const double factor : {unlimited, 2.5}) {
        Meshed meshed(square);
        Graded params(meshed.pZone);
        params.growFactor = factor;
        meshed.mesh.refineAdvanced(&params);
        EXPECT_EQ(meshed.faults(), "");
        double greatest = 0.0, growth = 0.0;
        for (Triangle2* pT : trianglesOf(meshed.pZone)) {
            EXPECT_LE(std::sqrt(pT->getMaxSqEdgeLen2D()), params.getMaxEdgeLength(pT));
            EXPECT_LE(pT->getArea2D(), params.getMaxTriangleArea(pT));
            greatest = std::max(greatest, pT->getArea2D());
            for (int i = 0; i < 3; ++i)
                if (const Triangle2* pOther = pT->getOppositeTriangle(i))
                    growth = std::max(growth, pT->getArea2D() / pOther->getArea2D());
        }
        EXPECT_GT(greatest, 1.0) << "only where it was asked for";
        EXPECT_EQ(growth > 2.5, factor == unlimited) << growth;
    }
}

TEST(Refinement, ImpossibleLimitsEndWithOneWarning) {
    const Domain farSquare{"far", {box(0x1p50, 0x1p50, 0x1p50 + 16, 0x1p50 + 16)}};  // 64 last places a side
    const Domain hugeSquare{"huge", {box(0, 0, 1e90, 1e90)}};  // the squares of its areas overflow
    // Halves of its sides are divided at once, by vertices a last place away.
    const Domain sliver{"sliver",
                        {{{-0.00039642109535634521, -0.00066186048649251458},
                          {0.00053852494480088355, 0.00070781291415914892},
                          {-0.0002442751144990325, -0.00040934938658028844}}}};
    const struct {
        Domain domain;
        Wish wish;
        std::size_t mostVertices;
    } cases[] = {
        {sliver, {.minAngle = 25, .minEdge = -1, .maxArea = 0}, 3000},
        {square, {.maxEdge = 0}, 1000},
        {square, {.minEdge = 0, .maxArea = 0}, 1000},
        {square, {.maxEdge = 5, .growFactor = 0.9, .growMinArea = 0}, 1000},
        {farSquare, {.minEdge = 0, .maxEdge = 0}, 50000000},
        {hugeSquare, {.minEdge = 1e88, .maxArea = 1e178}, 50000000},
    };
    for (const auto& [domain, wish, mostVertices] : cases) {
        Meshed meshed(domain);
        meshed.mesh.getImpl()->setMostRefinementVertices(mostVertices);
        for (int run = 0; run < 2; ++run) {
            CaptureOutput output;
            meshed.refine(wish);
            EXPECT_EQ(countOf(output.out(),
                              "Dt2::refineMain3(), WARNING: double precision limit reached, "
                              "the mesh limits can't be met everywhere"),
                      1);
        }
        EXPECT_EQ(zoneLaws::soundness(meshed.mesh, true), "");
        EXPECT_NEAR(areaOf(meshed.pZone), areaOf(domain.rings[0]), 1e-9 * areaOf(domain.rings[0]));
        EXPECT_LT(meshed.mesh.numberOfPoints(), 5000U);
    }
}

TEST(Refinement, OlderSteinerPointsAreRemovedOnDemandOnly) {
    // Without splits the first Steiner point of the triangle stays.
    const Wish middleOnly{.maxEdge = 6, .bSplit = false};
    Meshed first(equilateral);
    first.refine(middleOnly);
    EXPECT_EQ(first.counts(), "4/3");
    const Point2 middle = *trianglesOf(first.pZone)[0]->getCorner(0);
    EXPECT_NEAR(middle.y(), std::sqrt(25.0 / 3.0), 1e-12);

    using Action = std::function<void(Meshed&)>;
    const auto fail = [](bool bProtect) {
        return [=](Meshed& meshed) { meshed.refine({.minAngle = 31, .bProtect = bProtect}); };
    };
    const auto constrainTo = [](const Point2& end) {
        return [=](Meshed& meshed) {
            meshed.mesh.createConstraint({Segment2(equilateral.rings[0][2], end)}, CIS_CONSTRAINED_DELAUNAY);
        };
    };
    const Action nothing = [](Meshed&) {};
    const Action remove = [&](Meshed& meshed) { meshed.mesh.remove(meshed.mesh.insert(middle)); };
    const struct {
        const char* what;
        bool bOfClient;
        Action meanwhile;
        bool bProtect, bStays, bThrows;
    } cases[] = {
        {"protected", false, nothing, true, true, false},
        {"unprotected", false, nothing, false, false, false},
        {"protected by a run that fails", false, fail(true), false, true, false},
        {"not protected by it", false, fail(false), false, false, false},
        {"of the client", true, nothing, false, true, false},
        {"removed by the client", false, remove, false, false, false},
        {"end of a constraint", false, constrainTo(middle), false, true, false},
        {"in a constraint", false, constrainTo({5, 1}), false, true, true},
        {"in a constraint, protected", false, constrainTo({5, 1}), true, true, false},
    };
    for (const auto& [what, bOfClient, meanwhile, bProtect, bStays, bThrows] : cases) {
        SCOPED_TRACE(what);
        Meshed meshed(equilateral);
        CaptureOutput output;
        if (bOfClient) meshed.mesh.insert(middle);
        if (!bOfClient) meshed.refine(middleOnly);
        meanwhile(meshed);
        const Wish wish{.maxEdge = 5.8, .bProtect = bProtect};
        if (bThrows) {
            EXPECT_THROW(meshed.refine(wish), NorvikException);
            EXPECT_TRUE(output.told("Condition [ q_it!=sInsertedInnerPoints.end() failed ]"));
            continue;
        }
        EXPECT_NO_THROW(meshed.refine(wish)) << output.out();
        const std::size_t before = meshed.mesh.numberOfPoints();
        meshed.mesh.insert(middle);
        EXPECT_EQ(meshed.mesh.numberOfPoints() == before, bStays);
        EXPECT_EQ(meshed.faults(), "");
    }
}

TEST(Refinement, RequestsThatCantBeMetAreToldAndChangeNothing) {
    Meshed meshed(square);
    Zone2* const pOutside = meshed.mesh.createZone(meshed.pZone->getConstraintGraph(), ZL_OUTSIDE);
    const CanonicalMesh before = canonicalMesh(meshed.mesh);
    const std::string kind =
        "The zoneLocation must be ZL_INSIDE or ZL_BOUNDED. Please convert the zone using "
        "pZone->convertToBoundedZone(..)";
    const auto plain = [&](Zone2* pZone, double minAngle) {
        meshed.mesh.refine(pZone, minAngle, 1, 20, true);
    };
    const auto advanced = [&](Zone2* pZone, double minAngle) {
        MeshGenParams params(pZone);
        params.minAngleDegree = minAngle;
        meshed.mesh.refineAdvanced(&params);
    };
    const struct {
        std::function<void()> call;
        std::string out, err;
    } cases[] = {
        {[&] { plain(nullptr, 40); }, "",
         "\nWarning: Norvik_2D::refine(..) has been called with pZone==NULL\n\n"},
        {[&] { plain(meshed.pZone, 30.0000001); }, "",
         "\nWarning: Norvik_2D::refine(..), minAngleDegree can't be >30\n\n"},
        {[&] { plain(meshed.pZone, 30); }, "", ""},
        {[&] { meshed.mesh.refineAdvanced(nullptr); }, "Dt2::refineAdvanced(), WARNING: pParameters==NULL",
         ""},
        {[&] { advanced(nullptr, 40); }, "Dt2::refineMain2(..), ERROR: pZone==NULL", ""},
        {[&] { advanced(pOutside, 40); }, "Dt2::refineMain2(), ERROR: " + kind,
         "\n\n\nMeshGenParams::MeshGenParams(..), ERROR: \n\tbehavior since Norvik 1.39: " + kind + "\n\n\n"},
        {[&] { advanced(meshed.pZone, 31); }, "Dt2::refine(..), ERROR: minAngleDegree must be <=30.0, return",
         ""},
    };
    for (const auto& [call, out, err] : cases) {
        CaptureOutput output;
        call();
        EXPECT_EQ(output.err(), err);
        EXPECT_TRUE(output.told(out) && countOf(output.out(), "[Norvik2D-Message]") == (out.empty() ? 0 : 1))
            << output.out();
        EXPECT_EQ(canonicalMesh(meshed.mesh), before);
    }
}

TEST(Refinement, ARunThatFailsIsTheLastOfItsMesh) {
    struct Thrower : MeshGenParams {
        using MeshGenParams::MeshGenParams;
        int numCalls = 0;
        double getMaxEdgeLength(Triangle2*) override {
            EXPECT_TRUE(ClientSettings::areNormal());
            if (++numCalls > 50) throw std::runtime_error("enough");
            return 0.5;
        }
    };
    Meshed meshed(square);
    Thrower params(meshed.pZone);
    const ClientSettings settings(FE_UPWARD, true);
    EXPECT_THROW(meshed.mesh.refineAdvanced(&params), std::runtime_error);
    EXPECT_TRUE(settings.areKept());
    CaptureOutput output;
    EXPECT_THROW(meshed.refine({}), NorvikException);
    EXPECT_TRUE(output.told("Condition [ pmmAng2RC==__null failed ]"));

    Meshed several(square);
    std::vector<ConstraintGraph2*> vGraphs{several.pZone->getConstraintGraph()};
    vGraphs.push_back(several.mesh.createConstraint(zoneLaws::ring(zoneLaws::reversed(box(4, 4, 6, 6))),
                                                    CIS_CONSTRAINED_DELAUNAY, true));
    several.pZone = several.mesh.getImpl()->createZone(vGraphs, ZL_INSIDE);
    EXPECT_THROW(several.refine({.maxEdge = 1}), NorvikException);
    EXPECT_TRUE(output.told("Condition [ pCG!=__null failed ]"));
}

TEST(Refinement, WhatIsWorstIsServedFirstAndEqualsInTurn) {
    Rng rng(1);
    Triangle2 triangle;
    RefinementQueue queue;
    std::multimap<double, std::uint32_t> mWaiting;
    for (std::uint32_t numPushed = 0; numPushed < 5000;) {
        ASSERT_EQ(queue.size(), mWaiting.size());
        if (queue.empty() || below(rng, 7) < 4) {
            const double angle = 10.0 + 0.01 * below(rng, 50);  // several of them in a bucket
            queue.push(angle, &triangle);
            mWaiting.emplace(angle, numPushed++);
        } else {
            ASSERT_EQ(queue.pop().order, mWaiting.begin()->second);
            mWaiting.erase(mWaiting.begin());
        }
    }
}

TEST(Refinement, DebuggingExplainsAndDrawsWhatIsRefined) {
    const std::tuple<Domain, Wish, const char*, const char*> cases[] = {
        {square, {.maxEdge = 12, .debugCommand = 1}, "RefC: sidelength is 14.1421 > 12\n", "_sidelen.ps"},
        {square, {.maxArea = 40, .debugCommand = 1}, "RefC: area\n", "_area.ps"},
        {kite(1, 4, false), {.growFactor = 3.5, .debugCommand = 1}, "RefC: growth\n", "_growth.ps"},
        {flat, {.debugCommand = 1}, "RefC: minAngle, current=12.5288\n", "_quality25.ps"},
    };
    for (const auto& [domain, wish, reason, ending] : cases) {
        CaptureOutput output;
        Meshed(domain).refine(wish);
        EXPECT_TRUE(output.told(reason) && output.told("need_") && output.told(ending)) << output.out();
    }
}

// ------------------------------------------------------------------------------------- the point of a split

TEST(SplitPoint, IsOnTheLineWhereDoublesAreAndOtherwiseTheMiddle) {
    Rng rng(3);
    int numMiddle = 0, numMoved = 0, numOffLine = 0;
    for (int i = 0; i < 1000; ++i) {
        // Middles of such segments in direction (3,1) are rounded off the line, next to doubles that are on it.
        const double s = 0x1p51 + std::floor(0x1p49 * unit(rng)) + hardPoints::below(rng, 4);
        const double t = 0x1p51 + std::floor(0x1p49 * unit(rng)) + hardPoints::below(rng, 4);
        const Point2 p = i % 2 == 0 ? Point2(3 * s, s) : Point2(s / 3, t / 7);
        const Point2 q = i % 2 == 0 ? Point2(3 * t, t) : Point2(2 * t, -s / 9);
        const Point2 middle((p.x() + q.x()) * 0.5, (p.y() + q.y()) * 0.5);
        Point2 expected = middle;
        for (const int dx : {1, -1, 0})
            for (const int dy : {1, -1, 0}) {
                const Point2 next(middle.x() + dx * getUlp(middle.x()), middle.y() + dy * getUlp(middle.y()));
                if (exactSigns::orientationSign(p, q, next) == 0) expected = next;
            }
        Norvik_2D mesh;
        Point2* const pApex = insertEach(mesh, {{0x1p52, 0x1p54}, p, q})[0];
        Triangle2* const pT = trianglesOf(mesh).front();
        Point2 split;
        EXPECT_TRUE(computeCenterWithoutConflict(mesh.getImpl(), mesh.getImpl()->getPredicates(), pT,
                                                 pT->getIntraTriangleIndex(pApex), split));
        EXPECT_EQ(split, expected);
        ++(expected != middle                               ? numMoved
           : exactSigns::orientationSign(p, q, middle) == 0 ? numMiddle
                                                            : numOffLine);
    }
    EXPECT_GT(std::min({numMiddle, numMoved, numOffLine}), 20)
        << numMiddle << " " << numMoved << " " << numOffLine;
}

TEST(SplitPoint, SightIsFreeOfConstraintsAndVertices) {
    Norvik_2D mesh;
    CaptureOutput output;
    EXPECT_FALSE(isVisible(mesh.getImpl(), {0, 0}, {1, 1}));
    EXPECT_TRUE(output.told("isVisible, WARNING: !pDt->is2D(), returning false"));
    insertEach(mesh, {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {2, 2}, {1, 3}, {2, 7}});
    mesh.createConstraint({Segment2({4, 0}, {2, 2})}, CIS_CONSTRAINED_DELAUNAY);
    const struct {
        const char* what;
        Point2 a, b;
        bool bVisible;
    } cases[] = {
        {"ends of an edge", {0, 0}, {2, 2}, true},
        {"ends of a constraint", {2, 2}, {4, 0}, true},
        {"across an edge", {1, 0.5}, {0.5, 1}, true},
        {"across a constraint", {3, 0.5}, {3.5, 3}, false},
        {"past the constraint's end", {2.5, 1}, {0.5, 2.5}, true},
        {"past a vertex", {0.5, 3.25}, {1.5, 2.75}, false},
        {"along edges past a vertex", {0, 0}, {4, 4}, false},
        {"from outside", {2, -1}, {2, 1}, true},
        {"from outside across a constraint", {3, -1}, {3.2, 2}, false},
    };
    for (const auto& [what, a, b, bVisible] : cases) {
        EXPECT_EQ(isVisible(mesh.getImpl(), a, b), bVisible) << what;
        EXPECT_EQ(isVisible(mesh.getImpl(), b, a), bVisible) << what << ", back";
    }
    EXPECT_FALSE(isVisible(mesh.getImpl(), {-1, -1}, {5, -1}));
    EXPECT_TRUE(output.told("isVisible, WARNING: start and stop not in triangulation area"));
}
