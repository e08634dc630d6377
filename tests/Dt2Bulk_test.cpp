#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Dt2.h"
#include "Norvik_2D.h"
#include "bulkInsertion.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "meshLaws.h"
#include "progressListener.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr int cpuCounts[] = {1, 2, 4, 8};

std::vector<Point2> line(int n, double dx, double dy) {
    std::vector<Point2> points;
    for (int i = 0; i < n; ++i) points.emplace_back(dx * (i * 7919 % n), dy * (i * 7919 % n), i);
    return points;
}

}  // namespace

TEST(Dt2Bulk, HandlesOfEqualPointsAreTheOneThatStays) {
    for (const int numCPU : cpuCounts)
        for (const std::vector<Point2>& others :
             {std::vector<Point2>{}, std::vector<Point2>{{9, 1}, {2, 7}}}) {
            Norvik_2D mesh;
            mesh.setNumCPU(numCPU);
            std::vector<Point2> points{{1, 2, 5}, {3, 4, 6}, {1, 2, 7}, {-0.0, 0, 8}, {0, -0.0, 9}};
            points.insert(points.end(), others.begin(), others.end());
            std::vector<Point2*> handles(99, nullptr);
            mesh.insert(points, handles);
            EXPECT_EQ(handlesBroken(mesh, points, handles), "");
            EXPECT_EQ(handles[0], handles[2]);
            EXPECT_EQ(handles[3], handles[4]);
            EXPECT_EQ(mesh.numberOfPoints(), 3 + others.size());
            EXPECT_EQ(handles[1]->customIndex, 6);
            EXPECT_EQ(lawsBroken(mesh), "");
        }
}

TEST(Dt2Bulk, CollinearPointsEndWithoutTriangles) {
    // On horizontal and vertical lines there is no box to put corners around; on the falling line the last corner of the box
    // is collinear with all points when its turn comes.
    const Point2 steps[] = {{0, 0}, {1, 0},  {0, 1e-9},         {1, 1},        {1, -1},
                            {1, 3}, {-2, 1}, {1e-300, -1e-300}, {1e150, 1e150}};
    for (const Point2& step : steps)
        for (const int n : {1, 2, 3, 50})
            for (const int numCPU : cpuCounts) {
                SCOPED_TRACE(numCPU);
                Norvik_2D mesh;
                mesh.setNumCPU(numCPU);
                const std::vector<Point2> points = line(n, step.x(), step.y());
                const std::vector<Point2*> handles = insertBulk(mesh, points);
                EXPECT_FALSE(mesh.is2D());
                EXPECT_EQ(handlesBroken(mesh, points, handles), "");
                EXPECT_EQ(lawsBroken(mesh), "");
                insertBulk(mesh, {{step.x(), -7 * step.y() - 1}, {-9, 6}, {step.y(), 8}});
                EXPECT_TRUE(mesh.is2D());
                EXPECT_EQ(lawsBroken(mesh), "");
            }
}

TEST(Dt2Bulk, OneSinglePointTriangulatesALongLineOnManyThreads) {
    Norvik_2D mesh;
    std::vector<Point2> points;
    for (int i = 0; i < 100000; ++i) points.emplace_back(i, 2.0 * i);
    const std::vector<Point2*> handles = insertArray(mesh, points);
    EXPECT_FALSE(mesh.is2D());
    mesh.setNumCPU(2);
    mesh.insert({0, 1});
    EXPECT_EQ(mesh.numberOfTriangles(), 99999U);
    for (const Point2* pVtx : handles) ASSERT_NE(pVtx->getIncidentTriangle(), nullptr);
    EXPECT_TRUE(mesh.checkValidity(true, "line"));
}

TEST(Dt2Bulk, ABoxThatRoundingCannotEnlargeStillGetsCorners) {
    for (const double offset : {1e15, 1e15 + 0.125, 4e15, 4e15 + 0.5, -1e15})
        for (const int numCPU : cpuCounts) {
            Norvik_2D mesh;
            mesh.setNumCPU(numCPU);
            const double next = hardPoints::nudged(offset, 1);
            const std::vector<Point2> points{{offset, offset}, {next, offset}, {offset, next}, {next, next}};
            EXPECT_EQ(handlesBroken(mesh, points, insertBulk(mesh, points)), "");
            EXPECT_EQ(mesh.numberOfTriangles(), 2U);
            EXPECT_EQ(lawsBroken(mesh), "");
        }
}

TEST(Dt2Bulk, EmptyInputChangesNothing) {
    Norvik_2D mesh;
    ProgressListener listener;
    mesh.subscribe(MSGTYPE_PROGRESS, &listener);
    Point2 stranger;
    for (const int numCPU : cpuCounts) {
        mesh.setNumCPU(numCPU);
        std::vector<Point2*> handles{&stranger};
        mesh.insert(std::vector<Point2>{}, handles);
        mesh.insert(std::vector<Point2>{});
        EXPECT_EQ(handles, std::vector<Point2*>{&stranger});
        double coordinates[] = {1, 2};
        for (const int n : {0, -1, -100000, std::numeric_limits<int>::min()})
            mesh.insert(n, coordinates, handles.data());
        EXPECT_EQ(handles, std::vector<Point2*>{&stranger});
    }
    EXPECT_EQ(mesh.numberOfPoints(), 0U);
    EXPECT_TRUE(listener.mTold.empty());
    EXPECT_EQ(lawsBroken(mesh), "");
}

TEST(Dt2Bulk, OneNonFinitePointKeepsAllOut) {
    constexpr double inf = std::numeric_limits<double>::infinity(),
                     nan = std::numeric_limits<double>::quiet_NaN();
    const auto framed = [](const std::string& source) {
        return "\n\033[0;93m      [Norvik2D-Message] " + source +
               ", WARNING: non-finite coordinates, nothing done\033[m\n\n";
    };
    for (const Point2& bad : {Point2(inf, 0), Point2(0, -inf), Point2(nan, 1), Point2(1, nan)})
        for (const int numCPU : {1, 4})
            for (const int numBefore : {0, 2, 4})
                for (const auto insert : {insertBulk, insertArray}) {
                    Norvik_2D mesh;
                    mesh.setNumCPU(numCPU);
                    const Point2 some[] = {{0, 0}, {4, 0}, {0, 4}, {1, 1}};
                    for (int i = 0; i < numBefore; ++i) mesh.insert(some[i]);
                    const CanonicalMesh before = canonicalMesh(mesh);
                    std::vector<Point2> points = hardPoints::uniformPoints(50, 1);
                    points[25] = bad;
                    {
                        CaptureOutput capture;
                        EXPECT_EQ(insert(mesh, points), std::vector<Point2*>(50, nullptr));
                        EXPECT_EQ(mesh.insert(bad), nullptr);
                        EXPECT_EQ(mesh.locate(bad), nullptr);
                        EXPECT_EQ(capture.out(), framed("Dt2::insert()") + framed("Dt2::insert()") +
                                                     framed("Dt2::locate()"));
                    }
                    EXPECT_EQ(mesh.numberOfPoints(), static_cast<std::size_t>(numBefore));
                    EXPECT_EQ(canonicalMesh(mesh), before);
                    EXPECT_EQ(mesh.computeBoundingBox().isValid(), numBefore != 0);
                    points[25] = {0.5, 0.5};
                    insert(mesh, points);
                    EXPECT_EQ(lawsBroken(mesh), "");
                }
}

TEST(Dt2Bulk, ProgressRisesToOneInAboutAHundredSteps) {
    const struct {
        std::size_t n, leastUpdates, mostUpdates;
    } cases[] = {{1, 2, 2}, {9, 10, 10}, {50, 51, 51}, {1000, 91, 103}, {20000, 91, 103}};
    for (const auto& [n, leastUpdates, mostUpdates] : cases)
        for (const int numCPU : {1, 4})
            for (const auto insert : {insertBulk, insertArray}) {
                SCOPED_TRACE(n);
                Norvik_2D mesh;
                mesh.setNumCPU(numCPU);
                // The first points don't count.
                if (n > 50) insertEach(mesh, {{-1, -1}, {2, 0}, {0, 2}});
                ProgressListener listener;
                mesh.subscribe(MSGTYPE_PROGRESS, &listener);
                insert(mesh, hardPoints::uniformPoints(n, 5));
                const std::string name = insert == insertBulk ? "insert vertices" : "insert";
                const std::size_t numUpdates = listener.numTold(name);
                ASSERT_TRUE(leastUpdates <= numUpdates && numUpdates <= mostUpdates) << numUpdates;
                mesh.insert({0.5, 0.25});  // single insertions are silent
                mesh.unsubscribe(MSGTYPE_PROGRESS, &listener);
                insert(mesh, hardPoints::uniformPoints(n, 6));
                EXPECT_EQ(listener.numTold(name), numUpdates);
            }
}

TEST(Dt2Bulk, StoringOnlyMakesNoTriangles) {
    Dt2 dt2(3);
    std::vector<Point2*> handles;
    dt2.insertToVVault({{3, 1, 0}, {1, 2, 1}, {3, 1, 2}, {5, 5, 3}}, &handles);
    EXPECT_FALSE(dt2.is2D());
    EXPECT_EQ(dt2.numberOfPoints(), 3U);
    EXPECT_EQ(dt2.numberOfTriangles(), 0U);
    EXPECT_EQ(handles[0], handles[2]);
    dt2.insert({0, 0});
    EXPECT_EQ(dt2.numberOfPoints(), 4U);
    EXPECT_EQ(lawsBroken(dt2), "");
}
