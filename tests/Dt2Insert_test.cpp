#include <gtest/gtest.h>

#include <cmath>

#include "Dt2.h"
#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "meshLaws.h"

using namespace KELMAR_NORVIK2D;

namespace {

bool isEdge(Norvik_2D& mesh, Point2* p, Point2* q) {
    return mesh.getAdjacentTriangle(p, q) != nullptr || mesh.getAdjacentTriangle(q, p) != nullptr;
}

std::size_t degreeOf(Norvik_2D& mesh, Point2* pVtx) {
    std::vector<Triangle2*> vIncident;
    mesh.getIncidentTriangles(pVtx, vIncident);
    return vIncident.size();
}

}  // namespace

TEST(Dt2Insert, TriangleCountsOfSmallFigures) {
    const struct {
        const char* figure;
        std::vector<Point2> points;
        std::size_t numTriangles, degreeOfLast;
    } cases[] = {
        {"a triangle", {{0, 0}, {4, 0}, {0, 4}}, 1, 1},
        {"clockwise", {{0, 0}, {0, 4}, {4, 0}}, 1, 1},
        {"a point inside", {{0, 0}, {4, 0}, {0, 4}, {1, 1}}, 3, 3},
        {"on the edge of two triangles", {{0, -1}, {0, 1}, {-2, 0}, {2, 0}, {0, 0}}, 4, 4},
        {"a point on the hull", {{0, 0}, {4, 0}, {0, 4}, {2, 0}}, 2, 2},
        {"sees one edge", {{0, 0}, {4, 0}, {0, 4}, {2, -1}}, 2, 1},
        {"on the prolongation of a hull edge", {{0, 0}, {4, 0}, {0, 4}, {6, 0}}, 2, 1},
        {"on that of one with an inner vertex", {{0, 0}, {2, 0}, {4, 0}, {0, 4}, {-3, 0}}, 3, 1},
        {"sees all edges but one", {{-3, 0}, {3, 0}, {2, 1}, {0, 1.5}, {-2, 1}, {0, 100}}, 7, 4},
        {"corner of two prolongations", {{0, 0}, {1, 0}, {0, 1}, {1, 1}, {2, 0}, {0, 2}, {2, 2}}, 6, 2},
    };
    for (const auto& [figure, points, numTriangles, degreeOfLast] : cases) {
        Norvik_2D mesh;
        const std::vector<Point2*> handles = insertEach(mesh, points);
        EXPECT_EQ(mesh.numberOfTriangles(), numTriangles) << figure;
        EXPECT_EQ(degreeOf(mesh, handles.back()), degreeOfLast) << figure;
        EXPECT_EQ(lawsBroken(mesh), "") << figure;
    }
}

TEST(Dt2Insert, AVertexOfDegreeFourStandsOnAnInnerEdge) {
    // The edge that is split has an end with three triangles only: two of the four outer neighbours are one.
    Norvik_2D mesh;
    const auto handles =
        insertEach(mesh, {{0, 0}, {10, 0}, {5, 9}, {5, 3}, {5, 1}, {5, 2}, {5, 1.5}, {5, 2.5}, {5, 2.75}});
    EXPECT_EQ(lawsBroken(mesh), "");
    EXPECT_EQ(degreeOf(mesh, handles.back()), 4U);
}

TEST(Dt2Insert, TheLastOfFourCocircularPointsGetsADiagonalIfTheyAreARectangle) {
    const std::vector<Point2> rectangle{{0, 0}, {3, 0}, {3, 1}, {0, 1}},
        onItsTip{{0, -5}, {5, 0}, {0, 5}, {-5, 0}}, others{{-63, -16}, {16, -63}, {25, 60}, {-60, 25}};
    for (const std::vector<Point2>& corners : {rectangle, onItsTip, others})
        for (std::size_t last = 0; last < 4; ++last) {
            Norvik_2D mesh;
            std::vector<Point2*> handles(4);
            for (std::size_t i = 1; i <= 4; ++i)
                handles[(last + i) % 4] = mesh.insert(corners[(last + i) % 4]);
            const bool bRectangle = corners == rectangle;
            EXPECT_EQ(isEdge(mesh, handles[last], handles[(last + 2) % 4]), bRectangle) << last;
            EXPECT_EQ(isEdge(mesh, handles[(last + 1) % 4], handles[(last + 3) % 4]), !bRectangle) << last;
            EXPECT_EQ(lawsBroken(mesh), "");
        }
}

TEST(Dt2Insert, TheSameCoordinatesGiveTheSameVertex) {
    for (const bool bTwoDimensional : {false, true}) {
        Norvik_2D mesh;
        Point2* pFirst = mesh.insert({1, 0, 7});
        if (bTwoDimensional) insertEach(mesh, {{5, 5}, {0, 9}, {9, 0}, {3, 3}});
        const std::size_t numPoints = mesh.numberOfPoints();
        EXPECT_EQ(mesh.insert({1, -0.0, 8}), pFirst);
        EXPECT_EQ(pFirst->customIndex, 7);
        EXPECT_EQ(mesh.numberOfPoints(), numPoints);
        EXPECT_EQ(lawsBroken(mesh), "");
    }
}

TEST(Dt2Insert, CollinearPointsWaitForTheFirstOneOffTheirLine) {
    for (const Point2& step :
         {Point2(1, 0), Point2(0, 1), Point2(1, 3), Point2(-1, 1), Point2(1e-300, 1e-300)}) {
        Norvik_2D mesh;
        std::vector<Point2*> handles;
        for (const int t : {3, 7, 0, -5, 3, 2, 11, 0})
            handles.push_back(mesh.insert({t * step.x(), t * step.y(), t}));
        EXPECT_FALSE(mesh.is2D());
        EXPECT_EQ(mesh.numberOfPoints(), 6U);
        EXPECT_TRUE(handles[4] == handles[0] && handles[7] == handles[2]);
        EXPECT_EQ(mesh.locate({0, 0}), nullptr);
        EXPECT_EQ(lawsBroken(mesh), "");

        Point2* pOff = mesh.insert({5 * step.y() + 0.5 * step.x(), -7 * step.x()});
        EXPECT_TRUE(mesh.is2D());
        EXPECT_EQ(mesh.numberOfTriangles(), 5U);
        for (const Point2* pVtx : handles) EXPECT_NE(pVtx->getIncidentTriangle(), nullptr);
        EXPECT_EQ(pOff->customIndex, -1);
        EXPECT_EQ(handles[1]->customIndex, 7);
        EXPECT_EQ(lawsBroken(mesh), "");
    }
}

TEST(Dt2Insert, TheBoxGrowsWithPointsFarAway) {
    Norvik_2D mesh;
    std::vector<Point2*> handles;
    for (int i = 0; i < 200; ++i) {
        const double r = std::ldexp(1.0, 5 * i - 500), angle = 2.4 * i;
        handles.push_back(mesh.insert({r * std::cos(angle), r * std::sin(angle), i}));
        if (i % 20 == 0) {
            EXPECT_EQ(lawsBroken(mesh), "") << i;
        }
    }
    EXPECT_EQ(lawsBroken(mesh), "");
    for (Point2* pVtx : handles) EXPECT_EQ(mesh.insert(*pVtx), pVtx);
    EXPECT_EQ(mesh.numberOfPoints(), 200U);
}

TEST(Dt2Insert, AWalkFromAnywhereFindsItsTriangle) {
    // Also along hull lines, where the walk is a long one and begins anew in each triangle.
    Dt2 dt2(3);
    for (int i = 0; i <= 3000; ++i) dt2.insert({static_cast<double>(i), 0});
    dt2.insert({1500, 1e-3});
    dt2.insert({1500, -1000});
    EXPECT_EQ(lawsBroken(dt2), "");
    std::vector<Triangle2*> vTriangles;
    dt2.getTrianglePointers(vTriangles);
    const Point2 beside(-7, 0), vertex(1234, 0), below(1500, -999);
    for (Triangle2* pStart : {vTriangles.front(), vTriangles[vTriangles.size() / 2], vTriangles.back()}) {
        Triangle2* pT = pStart;
        int edge = -1;
        EXPECT_EQ(dt2.locateConflictTriangle(&vertex, pT, edge), 4);
        EXPECT_EQ(dt2.locateConflictTriangle(&below, pT = pStart, edge), -1);
        const int hullEdge = dt2.locateConflictTriangle(&beside, pT = pStart, edge);
        ASSERT_TRUE(hullEdge >= 0 && hullEdge <= 2);
        EXPECT_EQ(pT->getOppositeTriangle(hullEdge), nullptr);
    }
    Point2* pVtx = dt2.insert({-7, 0});
    EXPECT_EQ(lawsBroken(dt2), "");
    EXPECT_NE(pVtx->getIncidentTriangle(), nullptr);
}

TEST(Dt2Insert, FlipsAreOnlyAllowedInStrictlyConvexQuadrilaterals) {
    const struct {
        std::vector<Point2> points;
        bool bAllowed;
    } cases[] = {{{{0, 0}, {4, 0}, {2, 3}, {2, -9}}, true},
                 {{{0, 0}, {4, 0}, {0, 3}, {0, -9}}, false},    // a straight corner
                 {{{0, 0}, {4, 0}, {0, 3}, {-1, -9}}, false}};  // a reflex corner
    for (const auto& [points, bAllowed] : cases) {
        Dt2 dt2(3);
        Point2* const pA = dt2.insert(points[0]);
        Point2* const pB = dt2.insert(points[1]);
        dt2.insert(points[2]);
        dt2.insert(points[3]);
        Triangle2* pT = dt2.getAdjacentTriangle(pA, pB);
        if (pT == nullptr) pT = dt2.getAdjacentTriangle(pB, pA);
        ASSERT_NE(pT, nullptr);
        for (int i = 0; i < 3; ++i) {
            const Triangle2* pU = pT->getOppositeTriangle(i);
            EXPECT_EQ(dt2.canBeFlipped(pT, i), pU != nullptr && bAllowed);
        }
    }
}
