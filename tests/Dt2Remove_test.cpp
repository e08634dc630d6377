#include <gtest/gtest.h>

#include <cmath>

#include "Dt2.h"
#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "meshLaws.h"
#include "triangleLinks.h"

using namespace KELMAR_NORVIK2D;

namespace {

std::string framedWarning(const std::string& text) {
    return "\n\033[0;93m      [Norvik2D-Message] " + text + "\033[m\n\n";
}

const std::string notThere =
    framedWarning("Dt2::remove(), WARNING: vertex does not belong to the triangulation, return");

}  // namespace

TEST(Dt2Remove, CountsAfterOneRemoval) {
    const std::vector<Point2> hexagon{{2, 0}, {1, 1.7}, {-1, 1.7}, {-2, 0}, {-1, -1.7}, {1, -1.7}};
    const struct {
        const char* removed;
        std::vector<Point2> points;  // the first one goes
        std::size_t numBefore, numAfter;
    } cases[] = {
        {"a vertex of degree three", {{1, 1}, {0, 0}, {4, 0}, {0, 4}}, 3, 1},
        {"a vertex on an inner edge", {{0, 0}, {-3, 0}, {3, 0}, {0, 2}, {0, -2}}, 4, 2},
        {"the centre of a hexagon",
         {{0, 0}, hexagon[0], hexagon[1], hexagon[2], hexagon[3], hexagon[4], hexagon[5]},
         6,
         4},
        {"the centre of a grid",
         {{1, 1}, {0, 0}, {1, 0}, {2, 0}, {0, 1}, {2, 1}, {0, 2}, {1, 2}, {2, 2}},
         8,
         6},
        {"a straight hull vertex", {{2, 0}, {0, 0}, {4, 0}, {2, 3}}, 2, 1},
        {"one of several on a straight hull edge", {{2, 0}, {0, 0}, {1, 0}, {3, 0}, {4, 0}, {2, 3}}, 4, 3},
        {"a corner before a straight chain", {{2, 3}, {0, 0}, {1, 0}, {3, 0}, {2, -3}}, 4, 2},
        {"a corner that leaves a notch to fill", {{5, 9}, {0, 0}, {10, 0}, {5, 1}, {3, 2}, {7, 2}}, 7, 4},
        {"a corner of a triangle", {{0, 0}, {4, 0}, {0, 4}}, 1, 0},
        {"the one off the line", {{2, 3}, {0, 0}, {1, 0}, {3, 0}, {4, 0}}, 3, 0},
        {"the one off a line on both sides", {{0, 3}, {-1, 0}, {0, 0}, {1, 0}, {0, -3}}, 4, 2},
    };
    for (const auto& [removed, points, numBefore, numAfter] : cases) {
        Norvik_2D mesh;
        const std::vector<Point2*> handles = insertEach(mesh, points);
        EXPECT_EQ(mesh.numberOfTriangles(), numBefore) << removed;
        mesh.remove(handles[0]);
        EXPECT_EQ(mesh.numberOfTriangles(), numAfter) << removed;
        EXPECT_EQ(mesh.is2D(), numAfter != 0) << removed;
        EXPECT_EQ(mesh.numberOfPoints(), points.size() - 1) << removed;
        EXPECT_EQ(handles[0]->getIncidentTriangle(), nullptr) << removed;
        EXPECT_EQ(*handles[0], points[0]) << removed;
        EXPECT_EQ(lawsBroken(mesh), "") << removed;

        Point2* pAgain = mesh.insert(points[0]);
        EXPECT_NE(pAgain, handles[0]) << "the same coordinates give a new vertex";
        EXPECT_EQ(mesh.numberOfTriangles(), numBefore) << removed;
        EXPECT_EQ(lawsBroken(mesh), "") << removed;
    }
}

TEST(Dt2Remove, OfStrangersIsWarnedAndChangesNothing) {
    for (const bool bTwoDimensional : {false, true}) {
        Norvik_2D mesh;
        const std::vector<Point2*> handles = insertEach(mesh, {{0, 0}, {1, 0}, {5, 0}});
        if (bTwoDimensional) insertEach(mesh, {{0, 7}, {3, 2}});
        mesh.remove(handles[1]);
        const CanonicalMesh before = canonicalMesh(mesh);
        const std::size_t numBefore = mesh.numberOfPoints();
        Point2 stranger(0, 0);
        CaptureOutput capture;
        mesh.remove(nullptr);
        mesh.remove(handles[1]);
        mesh.remove(&stranger);
        EXPECT_EQ(capture.out(), framedWarning("Dt2::remove(..), WARNING: pVtx==NULL, illegal, return.") +
                                     notThere + notThere);
        EXPECT_EQ(canonicalMesh(mesh), before);
        EXPECT_EQ(mesh.numberOfPoints(), numBefore);
        EXPECT_EQ(lawsBroken(mesh), "");
    }
}

TEST(Dt2Remove, ALoserAmongEqualPointsIsNoVertex) {
    Dt2 dt2(3);
    insertEach(dt2, {{0, 0}, {4, 0}, {0, 4}});
    dt2.insert({4, 0});
    Point2* pLoser = dt2.getVertexVault().getData()->back()->pVtx;
    ASSERT_EQ(pLoser->getIncidentTriangle(), nullptr);
    CaptureOutput capture;
    dt2.remove(pLoser);
    EXPECT_EQ(capture.out(), notThere);
    EXPECT_EQ(dt2.numberOfPoints(), 3U);
}

TEST(Dt2Remove, VerticesOfHighDegreeGoQuickly) {
    // The hub of a wheel, and the tip of a fan: walks that begin anew with each flip would be quadratic.
    constexpr int numSpokes = 20000;
    for (const bool bWheel : {true, false}) {
        Norvik_2D mesh;
        std::vector<Point2> points{{0, 0}};
        for (int i = 0; i < numSpokes; ++i) {
            const double angle = (bWheel ? 6.283185307 : 3.0) * i / numSpokes, r = 1.0 + 1e-9 * (i % 7);
            points.emplace_back(r * std::cos(angle), r * std::sin(angle));
        }
        std::vector<Point2*> handles;
        mesh.insert(points, handles);
        std::vector<Triangle2*> vIncident;
        mesh.getIncidentTriangles(handles[0], vIncident);
        EXPECT_GT(vIncident.size(), numSpokes / 20U);
        mesh.remove(handles[0]);
        EXPECT_TRUE(mesh.checkValidity(true, ""));
        EXPECT_EQ(mesh.numberOfPoints(), static_cast<std::size_t>(numSpokes));
    }
}

TEST(Dt2Remove, DeadTrianglesAreClearedAndReusedFirst) {
    Dt2 dt2(3);
    const std::vector<Point2*> handles = insertEach(dt2, {{0, 0}, {9, 0}, {0, 9}, {2, 2}, {3, 1}, {20, 20}});
    std::vector<Triangle2*> vAll, vLive, vAgain;
    dt2.getTrianglePointers(vAll);
    dt2.remove(handles[3]);
    dt2.remove(handles[5]);
    dt2.getTrianglePointers(vLive);
    EXPECT_EQ(vLive.size(), dt2.numberOfTriangles());
    for (const Triangle2* pT : vAll) {
        const bool bLive = std::find(vLive.begin(), vLive.end(), pT) != vLive.end();
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(pT->getCorner(i) != nullptr, bLive);
            EXPECT_TRUE(bLive || pT->getOppositeTriangle(i) == nullptr);
        }
    }
    dt2.insert({2, 2});
    dt2.insert({20, 20});
    dt2.getTrianglePointers(vAgain);
    EXPECT_EQ(vAgain, vAll) << "in creation order again";
    EXPECT_EQ(lawsBroken(dt2), "");
}

TEST(Dt2Remove, WithoutTrianglesPointsGoOneByOne) {
    // Of many points on threads the losers and the removed stay in the list.
    for (const int n : {4, 12000}) {
        Norvik_2D mesh;
        mesh.setNumCPU(4);
        std::vector<Point2> points;
        for (int i = 0; i < n; ++i) points.emplace_back(i, 0);
        points.push_back(points[1]);
        std::vector<Point2*> handles;
        mesh.insert(points, handles);
        mesh.remove(handles[1]);
        const std::size_t numLeft = static_cast<std::size_t>(n) - 1;
        EXPECT_EQ(mesh.numberOfPoints(), numLeft);
        EXPECT_EQ(lawsBroken(mesh), "");
        EXPECT_TRUE(n > 4 || mesh.getImpl()->getVertexVault().getSize() == numLeft);
        EXPECT_NE(mesh.insert(points[1]), handles[1]);
        mesh.insert({5, 7});
        EXPECT_EQ(mesh.numberOfTriangles(), numLeft);
        EXPECT_EQ(handles[1]->getIncidentTriangle(), nullptr);
        EXPECT_EQ(lawsBroken(mesh), "");
    }
}

TEST(Dt2Remove, RepairRestoresEmptyCirclesAroundAVertex) {
    Dt2 dt2(3);
    const std::vector<Point2*> handles = insertEach(dt2, hardPoints::uniformPoints(60, 4));
    const CanonicalMesh before = canonicalMesh(dt2);
    int numSpoiled = 0;
    for (Point2* pVtx : handles) {
        Triangle2* pT = pVtx->getIncidentTriangle();
        const int i = indexOf(pT, pVtx);
        if (!dt2.canBeFlipped(pT, ccw(i))) continue;
        dt2.flip(pT, ccw(i));  // takes a spoke away: the edge that it leaves lies opposite the vertex
        ++numSpoiled;
        dt2.bfsFlipIncident(pVtx);
        ASSERT_TRUE(canonicalMesh(dt2) == before);
        ASSERT_EQ(lawsBroken(dt2), "");
    }
    EXPECT_GT(numSpoiled, 10);
}
