#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <set>

#include "Dt2.h"
#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "meshLaws.h"
#include "triangleLinks.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// A square with its centre, and a point in the middle of the lower side.
std::vector<Point2*> insertSquare(Norvik_2D& mesh) {
    return insertEach(mesh, {{4, 4}, {0, 4}, {0, 0}, {2, 0}, {4, 0}, {2, 2}});
}

bool contains(const Triangle2* pT, const Point2& point) {
    for (int i = 0; i < 3; ++i)
        if (exactSigns::orientationSign(*pT->getCorner((i + 1) % 3), *pT->getCorner((i + 2) % 3), point) < 0)
            return false;
    return true;
}

bool isInHull(const std::vector<Point2*>& vHull, const Point2& point) {
    for (std::size_t i = 0; i < vHull.size(); ++i)
        if (exactSigns::orientationSign(*vHull[i], *vHull[(i + 1) % vHull.size()], point) < 0) return false;
    return true;
}

}  // namespace

TEST(Dt2Queries, LocateAgreesWithTheHullAndTheTriangleAndManyQuestionsWithSingleOnes) {
    for (const hardPoints::Kind& kind : hardPoints::kinds) {
        SCOPED_TRACE(kind.name);
        hardPoints::Rng rng(17);
        Norvik_2D mesh;
        mesh.insert(hardPoints::makePoints(kind, 300, rng));
        std::vector<Point2*> vHull, vVertices;
        if (mesh.is2D()) mesh.getConvexHull(true, vHull);
        mesh.getVertexPointers(vVertices);
        std::vector<Point2> queries{{std::nan(""), 0}};
        for (int i = 0; i < 200; ++i) {
            const Point2 &p = *vVertices[rng() % vVertices.size()], &q = *vVertices[rng() % vVertices.size()];
            queries.insert(queries.end(), {p,
                                           {0.5 * p.x() + 0.5 * q.x(), 0.5 * p.y() + 0.5 * q.y()},
                                           {p.x(), q.y()},
                                           {hardPoints::nudged(p.x(), rng), hardPoints::nudged(p.y(), rng)},
                                           kind.make(rng)});
        }
        for (const double far : {1.0, 1e18, 1e155, 1.7e308})
            for (const Point2& way : {Point2(1, 0), Point2(0, -1), Point2(-1, 1), Point2(-1, -0.5)})
                queries.emplace_back(far * way.x(), far * way.y());
        CaptureOutput output;
        std::vector<Triangle2*> vTold(3);
        mesh.locate(queries, vTold);
        EXPECT_EQ(countOf(output.out(), "WARNING"), 1) << "of the one that is no point";
        ASSERT_EQ(vTold.size(), queries.size());
        EXPECT_EQ(vTold[0], nullptr);
        for (std::size_t i = 1; i < queries.size(); ++i) {
            const Triangle2* const pT = mesh.locate(queries[i]);
            ASSERT_EQ(pT, vTold[i]) << queries[i];
            ASSERT_EQ(pT != nullptr, mesh.is2D() && isInHull(vHull, queries[i])) << queries[i];
            ASSERT_TRUE(pT == nullptr || contains(pT, queries[i])) << queries[i];
        }
        EXPECT_GE(mesh.getImpl()->getPredicates()->getBoundMagnitude(), mesh.is2D() ? 1.7e308 : 0.0);
        mesh.insert(hardPoints::makePoints(kind, 50, rng));  // the filter is right after far queries too
        EXPECT_EQ(lawsBroken(mesh), "");
    }
}

TEST(Dt2Queries, AdjacentTriangleIsOnTheLeft) {
    Norvik_2D mesh;
    const std::vector<Point2*> handles = insertSquare(mesh);
    std::vector<Triangle2*> vTriangles;
    mesh.getTrianglePointers(vTriangles);
    std::size_t numFound = 0;
    for (Point2* p : handles)
        for (Point2* q : handles) {
            if (p == q) continue;
            const Triangle2* pT = mesh.getAdjacentTriangle(p, q);
            if (pT == nullptr) continue;
            ++numFound;
            const int i = pT->getIntraTriangleIndex(p);
            EXPECT_EQ(pT->getCorner((i + 1) % 3), q);
        }
    EXPECT_EQ(numFound, 3 * vTriangles.size());
    EXPECT_NE(mesh.getAdjacentTriangle(handles[2], handles[3]), nullptr);  // hull edge
    EXPECT_EQ(mesh.getAdjacentTriangle(handles[3], handles[2]), nullptr);

    Norvik_2D line;
    const std::vector<Point2*> onLine = insertEach(line, {{0, 0}, {1, 1}});
    const struct {
        Point2 *p, *q;
        const char* told;
    } bad[] = {{nullptr, handles[0], "Condition [ p0!=__null failed ]"},
               {handles[0], nullptr, "Condition [ p1!=__null failed ]"},
               {handles[0], handles[0], "Condition [ p0!=p1 failed ]"},
               {onLine[0], onLine[1], ""}};
    for (const auto& [p, q, told] : bad) {
        CaptureOutput capture;
        EXPECT_THROW(mesh.getAdjacentTriangle(p, q), NorvikException);
        EXPECT_TRUE(capture.told(told));
    }
}

TEST(Dt2Queries, IncidentTrianglesRunCounterclockwiseAndAreAppended) {
    Norvik_2D mesh;
    mesh.insert(hardPoints::uniformPoints(200, 6));
    std::vector<Point2*> vVertices, vHull;
    mesh.getVertexPointers(vVertices);
    mesh.getConvexHull(true, vHull);
    for (Point2* pVtx : vVertices) {
        std::vector<Triangle2*> vIncident{nullptr};
        mesh.getIncidentTriangles(pVtx, vIncident);
        ASSERT_EQ(vIncident[0], nullptr);
        EXPECT_EQ(vIncident[1], pVtx->getIncidentTriangle());
        int numGaps = 0;
        for (std::size_t i = 1; i < vIncident.size(); ++i) {
            const Triangle2* pNext = nextAround(vIncident[i], pVtx);
            EXPECT_TRUE(pNext == nullptr || pNext == vIncident[i % (vIncident.size() - 1) + 1]);
            numGaps += pNext == nullptr;
            EXPECT_TRUE(mesh.getImpl()->isEdge(pVtx, corner(vIncident[i], ccw(indexOf(vIncident[i], pVtx)))));
        }
        EXPECT_EQ(numGaps, std::count(vHull.begin(), vHull.end(), pVtx));
        EXPECT_EQ(std::set<Triangle2*>(vIncident.begin(), vIncident.end()).size(), vIncident.size());
    }
    Point2 stranger;
    std::vector<Triangle2*> out;
    CaptureOutput capture;
    EXPECT_THROW(mesh.getIncidentTriangles(&stranger, out), NorvikException);
    EXPECT_THROW(mesh.getImpl()->isEdge(&stranger, vVertices[0]), NorvikException);
}

TEST(Dt2Queries, ConvexHullBeginsWithTheLeastAndMaySkipStraightVertices) {
    Norvik_2D mesh;
    const std::vector<Point2*> h = insertSquare(mesh);
    std::vector<Point2*> out{nullptr, nullptr};
    mesh.getConvexHull(true, out);
    EXPECT_EQ(out, (std::vector<Point2*>{h[2], h[3], h[4], h[0], h[1]}));
    mesh.getConvexHull(false, out);
    EXPECT_EQ(out, (std::vector<Point2*>{h[2], h[4], h[0], h[1]}));
    // The first one may itself be followed, and preceded, by long straight stretches.
    Norvik_2D grid;
    std::vector<Point2> points;
    for (int i = 0; i < 49; ++i) points.emplace_back(i % 7, i / 7);
    grid.insert(points);
    grid.getConvexHull(true, out);
    EXPECT_EQ(out.size(), 24U);
    grid.getConvexHull(false, out);
    ASSERT_EQ(out.size(), 4U);
    EXPECT_TRUE(*out[0] == Point2(0, 0) && *out[1] == Point2(6, 0) && *out[2] == Point2(6, 6) &&
                *out[3] == Point2(0, 6));

    Norvik_2D line;
    insertEach(line, {{0, 0}, {1, 1}, {2, 2}});
    CaptureOutput capture;
    out = h;
    line.getConvexHull(true, out);
    EXPECT_EQ(out, h);
    EXPECT_EQ(capture.out(),
              "\n\033[0;93m      [Norvik2D-Message] Dt2::getConvexHull(), WARNING: is2D() is false, the "
              "triangulation is not full dimensional yet\033[m\n\n");
}

TEST(Dt2Queries, TrianglePointersReplaceUntilOneHasDiedAndAppendThen) {
    Norvik_2D mesh;
    std::vector<Triangle2*> out{nullptr};
    mesh.getTrianglePointers(out);
    EXPECT_EQ(out.size(), 1U);  // not two-dimensional: untouched
    const std::vector<Point2*> h = insertSquare(mesh);
    mesh.getTrianglePointers(out);
    EXPECT_EQ(out.size(), mesh.numberOfTriangles());
    mesh.remove(h[5]);
    const std::size_t numBefore = out.size();
    mesh.getTrianglePointers(out);
    EXPECT_EQ(out.size(), numBefore + mesh.numberOfTriangles());
    std::vector<Point2*> vVertices(50, nullptr);
    mesh.getVertexPointers(vVertices);
    EXPECT_EQ(vVertices.size(), 5U);  // always replaced
}

TEST(Dt2Queries, TheBoundingBoxIsTight) {
    Norvik_2D mesh;
    EXPECT_FALSE(mesh.computeBoundingBox().isValid());
    const std::vector<Point2*> h = insertEach(mesh, {{-3, 1}, {10, 2}, {4, 900}, {5, 4}});
    mesh.remove(h[2]);
    double bounds[4];
    mesh.computeBoundingBox().getBounds(bounds[0], bounds[1], bounds[2], bounds[3]);
    EXPECT_TRUE(bounds[0] == -3 && bounds[1] == 10 && bounds[2] == 1 && bounds[3] == 4);
}

TEST(Dt2Queries, CheckValidityTellsWhatIsBroken) {
    const auto spoiled = [](const std::function<void(Norvik_2D&, Triangle2*)>& spoil) {
        Norvik_2D mesh;
        mesh.setName("spoiled");
        insertEach(mesh, {{0, 0}, {9, 0}, {10, 9}, {-1, 8}, {4, 5}});
        CaptureOutput capture;
        EXPECT_TRUE(mesh.checkValidity(true, "before"));
        EXPECT_EQ(capture.out(), "");
        std::vector<Triangle2*> vTriangles;
        mesh.getTrianglePointers(vTriangles);
        Triangle2* pT = vTriangles[0];
        spoil(mesh, pT);
        EXPECT_FALSE(mesh.checkValidity(true, "msg"));
        EXPECT_TRUE(capture.told("\ncheckValidity, bug, name=spoiled\n"));
        return capture.out();
    };
    // The triangle's neighbours 0 and 1, one of which is on the other side of an inner edge.
    const auto loseOne = [](Norvik_2D&, Triangle2* pT) {
        Triangle2* pU = neighbour(pT, 0) != nullptr ? neighbour(pT, 0) : neighbour(pT, 1);
        setNeighbour(pU, indexOf(pU, pT), nullptr);
    };
    const auto confuse = [](Norvik_2D&, Triangle2* pT) {
        Triangle2* const pFirst = neighbour(pT, 0);
        setNeighbour(pT, 0, neighbour(pT, 1));
        setNeighbour(pT, 1, pFirst);
    };
    const auto collapse = [](Norvik_2D&, Triangle2* pT) {
        setCorners(pT, corner(pT, 0), corner(pT, 0), corner(pT, 2));
    };
    const std::string source = "      [Norvik2D-Message] Norvik_2D::CheckValidity(msg), ERROR: ";
    const auto tells = [&](const std::string& output, const char* text) {
        return output.find(source + text) != std::string::npos;
    };
    EXPECT_TRUE(tells(spoiled(loseOne), "Inconsistent neighborships:"));
    EXPECT_TRUE(tells(spoiled(confuse), "Neighbor found but inconsistent intra triangle indices:"));
    EXPECT_TRUE(tells(spoiled(collapse), "Less than three different corners"));
    const std::string told = spoiled([&](Norvik_2D& mesh, Triangle2*) {
        std::vector<Triangle2*> vTriangles;
        mesh.getTrianglePointers(vTriangles);
        for (Triangle2* pT : vTriangles)
            for (int i = 0; i < 3; ++i)
                if (mesh.getImpl()->canBeFlipped(pT, i)) {
                    mesh.getImpl()->flip(pT, i);
                    EXPECT_TRUE(mesh.checkValidity(false, "structure only"));
                    EXPECT_NE(lawsBroken(mesh), "");
                    return;
                }
    });
    EXPECT_TRUE(tells(told, "Sphere inclusion test failed "));
    EXPECT_TRUE(std::ifstream(globalPrefixNoInc() + "badEmptyCircle.ps").good());
}

TEST(Dt2Queries, CheckValidityWithoutTrianglesIsTrueAndWarns) {
    Norvik_2D mesh;
    CaptureOutput capture;
    EXPECT_TRUE(mesh.checkValidity(true, "here"));
    EXPECT_EQ(capture.out(),
              "\n\033[0;93m      [Norvik2D-Message] checkValidity(here), WARNING: not fulldimensional yet "
              "(empty or all points collinear), Returning true\033[m\n\n");
}

TEST(Dt2Queries, StatisticsCountTheAngles) {
    Norvik_2D mesh;
    insertEach(mesh, {{0, 0}, {1, 0}, {0, 1}, {1, 1}});
    CaptureOutput capture;
    mesh.statistics("two");
    EXPECT_EQ(capture.out().find(
                  "\n\n\n********* MESH STATISTICS (two) **********\n\nNumber of triangles: 2\n   INTERIOR "
                  "ANGLES (avg=60 , min=45, max=90):\n"),
              0U)
        << capture.out();
    EXPECT_TRUE(capture.told("40 - 50: 4\n"));
    EXPECT_TRUE(capture.told("80 - 90: 2\n"));
}
