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

using namespace KELMAR_NORVIK2D;

namespace {

constexpr int cpuCounts[] = {1, 2, 4, 8};

std::vector<Point2> line(int n, double dx, double dy) {
    std::vector<Point2> points;
    for (int i = 0; i < n; ++i) points.emplace_back(dx * (i * 7919 % n), dy * (i * 7919 % n), i);
    return points;
}

struct Listener : MsgBase {
    std::vector<double> values;
    std::vector<std::string> names;
    void update(MsgType, const std::string& name, double value) override {
        values.push_back(value);
        names.push_back(name);
    }
};

}  // namespace

TEST(Dt2Bulk, AHundredThousandPointsAndOneLessGiveTheSameMeshOnAnyNumberOfThreads) {
    const std::vector<Point2> all = hardPoints::uniformPoints(100000, 3);
    for (const std::size_t n : {all.size() - 1, all.size()}) {
        const std::vector<Point2> points(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(n));
        Norvik_2D one;
        one.insert(points);
        EXPECT_TRUE(isUnique(one));
        const CanonicalMesh expected = canonicalMesh(one);
        for (const int numCPU : {2, 8}) {
            Norvik_2D mesh;
            mesh.setNumCPU(numCPU);
            const auto insert = numCPU == 2 ? insertArray : insertBulk;
            EXPECT_EQ(handlesBroken(mesh, points, insert(mesh, points)), "");
            EXPECT_TRUE(canonicalMesh(mesh) == expected) << numCPU;
            EXPECT_EQ(lawsBroken(mesh), "");
        }
    }
}

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

TEST(Dt2Bulk, OldVerticesWinAndStay) {
    // Old points in the mesh, waiting on a line, or all removed again; new ones partly equal to them.
    const struct {
        const char* before;
        std::vector<Point2> old;
        bool bBulk;
    } cases[] = {{"two-dimensional", {{0, 0, 1}, {8, 0, 2}, {0, 8, 3}, {2, 3, 4}}, false},
                 {"one", {{2, 3, 1}}, false},
                 {"two singles", {{0, 0, 1}, {8, 8, 2}}, false},
                 {"a line of singles", {{0, 0, 1}, {8, 8, 2}, {4, 4, 3}, {1, 1, 4}}, false},
                 {"a line in bulk", {{0, 0, 1}, {8, 8, 2}, {4, 4, 3}, {1, 1, 4}, {4, 4, 5}}, true},
                 {"a falling line", {{0, 8, 1}, {8, 0, 2}, {4, 4, 3}}, true}};
    const std::vector<Point2> off{{8, 0, 70}, {0, 8, 71}, {4, 4, 72}, {0, 0, 73},
                                  {8, 8, 74}, {2, 3, 75}, {5, 1, 76}, {2, 3, 77}};
    const std::vector<Point2> onLine{{4, 4, 72}, {0, 0, 73}, {16, 16, 74}, {8, 8, 75}, {4, 4, 76}};
    for (const auto& [before, old, bBulk] : cases)
        for (const int numCPU : cpuCounts)
            for (const auto& added : {off, onLine})
                for (const auto insert : {insertBulk, insertArray}) {
                    SCOPED_TRACE(std::string(before) + " on " + std::to_string(numCPU));
                    Norvik_2D mesh;
                    mesh.setNumCPU(numCPU);
                    const std::vector<Point2*> oldHandles =
                        bBulk ? insertBulk(mesh, old) : insertEach(mesh, old);
                    const std::vector<Point2*> handles = insert(mesh, added);
                    ASSERT_EQ(lawsBroken(mesh), "");
                    for (std::size_t i = 0; i < added.size(); ++i) {
                        ASSERT_EQ(*handles[i], added[i]);
                        for (Point2* pOld : oldHandles) EXPECT_EQ(handles[i] == pOld, *pOld == added[i]);
                    }
                    for (const Point2* pOld : oldHandles) EXPECT_LT(pOld->customIndex, 70);
                    std::vector<Point2> all(old);
                    all.insert(all.end(), added.begin(), added.end());
                    std::vector<Point2*> allHandles(oldHandles);
                    allHandles.insert(allHandles.end(), handles.begin(), handles.end());
                    EXPECT_EQ(handlesBroken(mesh, all, allHandles), "");
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
    Listener listener;
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
    EXPECT_TRUE(listener.values.empty());
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
    const struct { std::size_t n, numUpdates; } cases[] = {{1, 2}, {9, 10}, {50, 51}, {1000, 0}, {20000, 0}};
    for (const auto& [n, numUpdates] : cases)
        for (const int numCPU : {1, 4})
            for (const auto insert : {insertBulk, insertArray}) {
                Norvik_2D mesh;
                mesh.setNumCPU(numCPU);
                // The first points don't count.
                if (n > 50) insertEach(mesh, {{-1, -1}, {2, 0}, {0, 2}});
                Listener listener;
                mesh.subscribe(MSGTYPE_PROGRESS, &listener);
                insert(mesh, hardPoints::uniformPoints(n, 5));
                SCOPED_TRACE(n);
                ASSERT_FALSE(listener.values.empty());
                EXPECT_TRUE(numUpdates == 0 || listener.values.size() == numUpdates)
                    << listener.values.size();
                EXPECT_LE(listener.values.size(), 103U);
                EXPECT_TRUE(n < 100 || listener.values.size() > 90U);
                EXPECT_TRUE(std::is_sorted(listener.values.begin(), listener.values.end()));
                EXPECT_EQ(std::count(listener.values.begin(), listener.values.end(), 1.0), 1);
                EXPECT_EQ(listener.values.back(), 1.0);
                const std::string name = insert == insertBulk ? "insert vertices" : "insert";
                EXPECT_EQ(listener.names, std::vector<std::string>(listener.names.size(), name));

                const std::size_t numBefore = listener.values.size();
                mesh.insert({0.5, 0.25});  // single insertions are silent
                mesh.unsubscribe(MSGTYPE_PROGRESS, &listener);
                insert(mesh, hardPoints::uniformPoints(n, 6));
                EXPECT_EQ(listener.values.size(), numBefore);
            }
}

TEST(Dt2Bulk, FakeCornersAreSeenByNobody) {
    // They stand at 1.01 of the doubled box, and are neither counted nor boxed in; progress passes while they are there.
    struct Watcher : Listener {
        Norvik_2D* pMesh = nullptr;
        std::size_t numPoints = 0;
        void update(MsgType, const std::string&, double value) override {
            if (value < 0.5 || value == 1.0) return;
            numPoints = pMesh->numberOfPoints();
            values = {pMesh->getImpl()->getVertexVault().getFakeBoxCorner(2)->x(),
                      pMesh->getImpl()->getVertexVault().getFakeBoxCorner(0)->y()};
        }
    } watcher;
    Norvik_2D mesh;
    watcher.pMesh = &mesh;
    mesh.setNumCPU(2);
    mesh.subscribe(MSGTYPE_PROGRESS, &watcher);
    std::vector<Point2> points = hardPoints::uniformPoints(500, 5);
    points.emplace_back(0, 0);
    points.emplace_back(1, 1);
    mesh.insert(points);
    EXPECT_EQ(watcher.numPoints, 502U);
    EXPECT_DOUBLE_EQ(watcher.values.at(0), 1.51);
    EXPECT_DOUBLE_EQ(watcher.values.at(1), -0.51);
    EXPECT_EQ(mesh.computeBoundingBox().getMaxX(), 1.0);
    EXPECT_FALSE(mesh.getImpl()->getVertexVault().hasFakeBox());
    EXPECT_EQ(lawsBroken(mesh), "");
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
