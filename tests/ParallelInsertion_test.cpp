// Bulk insertion on several threads against the same on one: 100,000 points and more of every kind that is hard to divide.
#include <gtest/gtest.h>

#include <algorithm>

#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "manyPoints.h"

using namespace KELMAR_NORVIK2D;
using manyPoints::Kind, manyPoints::kinds, manyPoints::makePoints, manyPoints::Mesh, manyPoints::Rng;

namespace {

// Sanitizers take three times as long, and ten times.
#ifdef __SANITIZE_ADDRESS__
constexpr bool bAddressSanitizer = true;
#else
constexpr bool bAddressSanitizer = false;
#endif
#ifdef __SANITIZE_THREAD__
constexpr bool bThreadSanitizer = true;
#else
constexpr bool bThreadSanitizer = false;
#endif

constexpr std::size_t numPoints = 100000;

std::vector<Point2> makePoints(const Kind& kind, unsigned seed, std::size_t n = numPoints) {
    Rng rng(seed);
    return makePoints(kind, n, rng);
}

void expectSameMesh(Norvik_2D& mesh, Norvik_2D& onOneThread, Mesh uniqueness) {
    EXPECT_TRUE(mesh.checkValidity(true, "parallel"));
    EXPECT_EQ(mesh.numberOfPoints(), onOneThread.numberOfPoints());
    EXPECT_EQ(mesh.numberOfTriangles(), onOneThread.numberOfTriangles());
    std::vector<Point2*> vHull, vHullOfOne;
    mesh.getConvexHull(true, vHull);
    onOneThread.getConvexHull(true, vHullOfOne);
    EXPECT_TRUE(std::equal(vHull.begin(), vHull.end(), vHullOfOne.begin(), vHullOfOne.end(),
                           [](const Point2* a, const Point2* b) { return *a == *b; }));
    EXPECT_TRUE(uniqueness == Mesh::AMBIGUOUS || canonicalMesh(mesh) == canonicalMesh(onOneThread));
}

/// Equal points share one handle: that of the first of them, where both came in one call.
void expectGoodHandles(const std::vector<Point2>& points, const std::vector<Point2*>& handles,
                       const Norvik_2D& mesh) {
    ASSERT_EQ(handles.size(), points.size());
    std::vector<const Point2*> vDistinct(handles.begin(), handles.end());
    for (std::size_t i = 0; i < points.size(); ++i) {
        ASSERT_TRUE(*handles[i] == points[i]);
        ASSERT_NE(handles[i]->getIncidentTriangle(), nullptr);
        ASSERT_TRUE(handles[i]->getIncidentTriangle()->hasVertex(handles[i]));
    }
    std::sort(vDistinct.begin(), vDistinct.end());
    vDistinct.erase(std::unique(vDistinct.begin(), vDistinct.end()), vDistinct.end());
    EXPECT_EQ(vDistinct.size(), mesh.numberOfPoints());
}

class ParallelInsertion : public testing::TestWithParam<Kind> {};

}  // namespace

TEST_P(ParallelInsertion, GivesTheMeshOfOneThread) {
    const Kind& kind = GetParam();
    if (kind.bSlow && (bAddressSanitizer || bThreadSanitizer)) GTEST_SKIP();
    if (kind.mesh == Mesh::AMBIGUOUS && bThreadSanitizer) GTEST_SKIP();
    const std::vector<Point2> points = makePoints(kind, 1);
    CaptureOutput capture;  // remarks on circumcentres
    Norvik_2D onOneThread;
    onOneThread.insert(points);
    for (const int numCPU : {2, 3, 8}) {
        if ((kind.bSlow || bAddressSanitizer || bThreadSanitizer) && numCPU != 3) continue;
        SCOPED_TRACE(numCPU);
        Norvik_2D mesh;
        mesh.setNumCPU(numCPU);
        std::vector<Point2*> handles;
        mesh.insert(points, handles);
        expectSameMesh(mesh, onOneThread, kind.mesh);
        expectGoodHandles(points, handles, mesh);
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, ParallelInsertion, testing::ValuesIn(kinds),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ParallelInsertion, IntoAMeshThatExists) {
    constexpr std::pair<int, int> cases[] = {{0, 0}, {0, 6}, {5, 0}};
    for (const auto& [first, second] : cases) {
        if (bThreadSanitizer && first != 5) continue;
        SCOPED_TRACE(kinds[second].name);
        const std::vector<Point2> before = makePoints(kinds[first], 2, 150000);
        std::vector<Point2> points = makePoints(kinds[second], 3, 120000);
        points.insert(points.end(), before.begin(), before.begin() + 1000);
        Norvik_2D mesh, onOneThread;
        std::vector<Point2*> handlesBefore, handles;
        mesh.insert(before, handlesBefore);
        mesh.setNumCPU(4);
        mesh.insert(points, handles);
        onOneThread.insert(before);
        onOneThread.insert(points);
        expectSameMesh(mesh, onOneThread, kinds[second].mesh);
        for (std::size_t i = 0; i < 1000; ++i)
            EXPECT_EQ(handles[120000 + i], handlesBefore[i]) << "the older vertex stays";
    }
}

TEST(ParallelInsertion, AfterACollinearBeginning) {
    std::vector<Point2> line;
    for (int i = 0; i < 120000; ++i) line.emplace_back(i, -i);
    Norvik_2D mesh;
    std::vector<Point2*> handlesOfLine, handles;
    mesh.insert(line, handlesOfLine);
    mesh.setNumCPU(2);
    std::vector<Point2> points = makePoints(kinds[0], 4);
    points.push_back(line[77]);
    mesh.insert(points, handles);
    EXPECT_TRUE(mesh.checkValidity(true, "parallel"));
    EXPECT_EQ(mesh.numberOfPoints(), line.size() + points.size() - 1);
    EXPECT_EQ(handles.back(), handlesOfLine[77]);
}

TEST(ParallelInsertion, OfAFlatArrayTellsItsProgress) {
    const std::vector<Point2> points = makePoints(kinds[0], 5);
    std::vector<double> coordinates;
    for (const Point2& point : points) coordinates.insert(coordinates.end(), {point.x(), point.y()});
    struct Listener : MsgBase {
        void update(MsgType, const std::string&, double value) override { told.push_back(value); }
        std::vector<double> told;
    } listener;
    Norvik_2D mesh, onOneThread;
    mesh.setNumCPU(3);
    mesh.subscribe(MSGTYPE_PROGRESS, &listener);
    std::vector<Point2*> handles(points.size());
    mesh.insert(static_cast<int>(points.size()), coordinates.data(), handles.data());
    onOneThread.insert(points);
    expectSameMesh(mesh, onOneThread, Mesh::UNIQUE);
    expectGoodHandles(points, handles, mesh);
    ASSERT_FALSE(listener.told.empty());
    EXPECT_TRUE(std::is_sorted(listener.told.begin(), listener.told.end()));
    EXPECT_EQ(listener.told.back(), 1.0);
}
