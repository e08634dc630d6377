// Triangles from elsewhere become a mesh as they are, and a mesh like any other.
#include <gtest/gtest.h>

#include <filesystem>

#include "Dt2.h"
#include "Norvik_2D.h"
#include "captureOutput.h"
#include "exactSigns.h"
#include "hardPoints.h"
#include "temporaryFolder.h"
#include "zoneLaws.h"

using namespace KELMAR_NORVIK2D;
using namespace zoneLaws;
using exactSigns::orientationSign;
using hardPoints::around0, hardPoints::below, hardPoints::Rng, hardPoints::uniformPoints, hardPoints::unit;

namespace {

/// Three corners a triangle.
Polygon soupOf(const Triangles& vTriangles) {
    Polygon soup;
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i) soup.push_back(*pT->getCorner(i));
    return soup;
}

CanonicalMesh canonical(const Polygon& soup) {
    CanonicalMesh result;
    for (std::size_t i = 0; i < soup.size(); i += 3) {
        std::array<Coordinates, 3> corners;
        for (std::size_t k = 0; k < 3; ++k) corners[k] = {soup[i + k].x(), soup[i + k].y()};
        std::sort(corners.begin(), corners.end());
        result.push_back(corners);
    }
    std::sort(result.begin(), result.end());
    return result;
}

/// The triangles in random order, each beginning at a random corner; some are turned clockwise if that is allowed.
Polygon shuffled(const Polygon& soup, bool bTurn, Rng& rng) {
    std::vector<std::array<Point2, 3>> vTriples;
    for (std::size_t i = 0; i < soup.size(); i += 3) vTriples.push_back({soup[i], soup[i + 1], soup[i + 2]});
    std::shuffle(vTriples.begin(), vTriples.end(), rng);
    Polygon result;
    for (auto& triple : vTriples) {
        std::rotate(triple.begin(), triple.begin() + below(rng, 3), triple.end());
        if (bTurn && below(rng, 3) == 0) std::swap(triple[0], triple[1]);
        result.insert(result.end(), triple.begin(), triple.end());
    }
    return result;
}

/// Imports sound triangles and tells what is wrong then; empty if nothing is.
std::string importFaults(Norvik_2D& mesh, const Polygon& given, bool bReorient, bool bKeepBox,
                         Zone2** ppZone = nullptr) {
    std::string faults;
    const auto expect = [&faults](bool bHolds, const std::string& fault) {
        if (!bHolds) faults += fault + "; ";
    };
    Polygon soup = given, turned = given;
    std::map<Coordinates, int> mIndex;
    Bbox2 box;
    for (std::size_t i = 0; i < soup.size(); ++i) {
        soup[i].setCustomIndex(static_cast<int>(i));
        mIndex.emplace(Coordinates(soup[i].x(), soup[i].y()), static_cast<int>(i));
        box.add(soup[i]);
        if (i % 3 == 2 && orientationSign(given[i - 2], given[i - 1], given[i]) < 0)
            std::swap(turned[i - 1], turned[i]);
    }
    CaptureOutput output;
    Zone2* const pZone = mesh.importTriangles(soup, bReorient, bKeepBox);
    expect(output.out() + output.err() == "", "something is told: " + output.out());
    if (pZone == nullptr) return faults + "no zone";
    if (ppZone != nullptr) *ppZone = pZone;
    expect(soup == turned, "not just clockwise triples are turned");

    std::vector<Point2*> vVertices;
    mesh.getVertexPointers(vVertices);
    expect(vVertices.size() == mIndex.size() + (bKeepBox ? 4 : 0), "equal points aren't one vertex");
    for (const Point2* pVtx : vVertices) {
        const auto found = mIndex.find({pVtx->x(), pVtx->y()});
        expect(pVtx->getCustomIndex() == (found == mIndex.end() ? -1 : found->second), "not the first index");
    }
    if (bKeepBox) {
        // Twice as large, and at least by one last place.
        constexpr double infinity = std::numeric_limits<double>::infinity();
        const Point2 below(std::nextafter(box.getMinX(), -infinity),
                           std::nextafter(box.getMinY(), -infinity));
        const Point2 above(std::nextafter(box.getMaxX(), infinity), std::nextafter(box.getMaxY(), infinity));
        box.doubleTheBox();
        box.add(below);
        box.add(above);
    }
    const Bbox2 told = mesh.computeBoundingBox();
    expect(told.getMinX() == box.getMinX() && told.getMinY() == box.getMinY() &&
               told.getMaxX() == box.getMaxX() && told.getMaxY() == box.getMaxY(),
           "the mesh doesn't fill its box");

    const Triangles vGiven = trianglesOf(pZone);
    expect(pZone->getZoneLocation() == ZL_INSIDE, "the zone is of another kind");
    expect(canonicalTriangles(vGiven) == canonical(given), "the zone isn't what was given");
    std::vector<Edge2> vBorder;
    pZone->getBorderEdges(vBorder);
    for (const Edge2& edge : vBorder)
        expect(mesh.isConstraint(edge.getTriangle(), edge.getIndex()), "a border is no constraint");
    MeshLaws laws(mesh);
    laws.allowAnyShapeOf(vGiven);
    faults += laws.check();
    if (told.getMaxX() - told.getMinX() < 1e70) faults += zoneFaults(mesh, pZone);  // areas may overflow
    expect(mesh.checkValidity(false, "import"), "not valid");
    return faults;
}

/// Triangles between two rings of as many corners; corners may be the same.
Polygon ringAround(const Polygon& hole, const Polygon& outline) {
    Polygon soup;
    const auto add = [&](const Point2& a, const Point2& b, const Point2& c) {
        if (a != b && b != c && c != a) soup.insert(soup.end(), {a, b, c});
    };
    for (std::size_t i = 0; i < hole.size(); ++i) {
        const std::size_t next = (i + 1) % hole.size();
        add(hole[i], outline[i], outline[next]);
        add(outline[next], hole[next], hole[i]);
    }
    return soup;
}

const Polygon single{{0, 0}, {4, 0}, {2, 3}};

/// Triangles of a random mesh, some of them turned against the Delaunay property, some left out.
Polygon randomSoup(const hardPoints::Kind& kind, int numPoints, Rng& rng) {
    Norvik_2D mesh;
    mesh.insert(makePoints(kind, static_cast<std::size_t>(numPoints), rng));
    Triangles vAll = trianglesOf(mesh), vKept;
    for (std::size_t n = 0; n < vAll.size(); ++n) {
        Triangle2* pT = vAll[rng() % vAll.size()];
        const int edge = below(rng, 3);
        if (pT->getOppositeTriangle(edge) != nullptr && mesh.getImpl()->canBeFlipped(pT, edge))
            mesh.getImpl()->flip(pT, edge);
    }
    const double share = unit(rng);
    std::copy_if(vAll.begin(), vAll.end(), std::back_inserter(vKept),
                 [&](Triangle2*) { return unit(rng) <= share || share < 0.2; });
    return soupOf(vKept);
}

}  // namespace

TEST(TriangleImport, KeepsTrianglesAsTheyAre) {
    const Polygon ring = ringAround(box(2, 2, 4, 4), box(0, 0, 6, 6));
    const struct {
        const char* name;
        Polygon soup;
        std::size_t numGraphs;  ///< 0: as many as it takes
        std::size_t numTriangles;
    } cases[] = {
        {"one", single, 1, 1},
        {"sharing an edge", {{0, 0}, {2, -1}, {4, 0}, {4, 0}, {2, 3}, {0, 0}}, 1, 2},
        {"sharing both zeros", {{-0.0, 0}, {2, -1}, {4, -0.0}, {4, 0}, {2, 3}, {0, -0.0}}, 1, 2},
        {"with the longer diagonal", {{0, 0}, {9, -1}, {18, 0}, {18, 0}, {9, 1}, {0, 0}}, 1, 2},
        {"not convex", joined(single, {{2, 3}, {4, 0}, {3, 6}}), 1, 3},
        {"apart", joined(single, {{5, 0}, {9, 0}, {7, 3}}), 2, 4},
        {"touching at a vertex", joined(single, {{4, 0}, {8, 0}, {6, 3}}), 2, 3},
        {"touching around a hole", joined(single, {{4, 0}, {8, 0}, {6, 3}, {2, 3}, {6, 3}, {4, 6}}), 3, 4},
        {"around a hole", ring, 0, 10},
        {"around a hole that touches the outline",
         ringAround({{0, 0}, {4, 2}, {4, 4}, {2, 4}}, box(0, 0, 6, 6)), 0, 8},
        {"in a hole", joined(ring, {{2, 2}, {3, 2.5}, {2.5, 3}, {3.5, 3.5}, {3, 3.25}, {3.25, 3}}), 0, 20},
        {"in a line",
         {{1, 0}, {2, 0}, {1, 1e-9}, {3, 0}, {4, 0}, {3, 1e-9}, {5, 0}, {6, 0}, {5, 1e-9}},
         3,
         7},
        {"large", {{-4e307, 0}, {4e307, 0}, {0, 4e307}}, 1, 1},
        {"small", {{0, 0}, {4e-323, 0}, {0, 4e-323}}, 1, 1},
    };
    Rng rng(1);
    for (const auto& [name, soup, numGraphs, numTriangles] : cases)
        for (const bool bKeepBox : {false, true})
            for (const bool bReorient : {false, true}) {
                SCOPED_TRACE(std::string(name) + (bKeepBox ? ", boxed" : "") + (bReorient ? ", turned" : ""));
                Norvik_2D mesh;
                Zone2* pZone = nullptr;
                ASSERT_EQ(importFaults(mesh, shuffled(soup, bReorient, rng), bReorient, bKeepBox, &pZone),
                          "");
                EXPECT_TRUE(bKeepBox || mesh.numberOfTriangles() == numTriangles);
                if (numGraphs == 0) continue;
                EXPECT_EQ(pZone->numberOfConstraintGraphs(), numGraphs);
                for (Triangle2* pT : trianglesOf(pZone))
                    for (int i = 0; i < 3; ++i)
                        EXPECT_TRUE(setOf(trianglesOf(pZone)).count(pT->getOppositeTriangle(i)) == 0 ||
                                    !mesh.isConstraint(pT, i))
                            << "edges within are free";
            }
}

class RandomImports : public testing::TestWithParam<int> {};

TEST_P(RandomImports, ObeyAllLaws) {
    const hardPoints::Kind& kind = hardPoints::kinds[GetParam()];
    for (unsigned seed = 1; seed <= 30; ++seed) {
        Rng rng(seed);
        const bool bReorient = below(rng, 2) == 0, bKeepBox = below(rng, 2) == 0;
        const Polygon soup = shuffled(randomSoup(kind, 4 + below(rng, 80), rng), bReorient, rng);
        if (soup.empty() || kind.name == std::string("greatest")) continue;  // no double is beyond them
        Norvik_2D mesh;
        ASSERT_EQ(importFaults(mesh, soup, bReorient, bKeepBox), "") << kind << ", seed " << seed;
    }
}
INSTANTIATE_TEST_SUITE_P(Kinds, RandomImports,
                         testing::Range(0, static_cast<int>(std::size(hardPoints::kinds))),
                         [](const auto& paramInfo) {
                             return std::string(hardPoints::kinds[paramInfo.param].name);
                         });

TEST(TriangleImport, LeavesAMeshLikeAnyOther) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        const Polygon soup = randomSoup(hardPoints::kinds[seed % 2], 60, rng);
        if (soup.empty()) continue;
        Norvik_2D mesh;
        Zone2* pZone = nullptr;
        ASSERT_EQ(importFaults(mesh, soup, true, seed % 4 < 2, &pZone), "");
        const double area = areaOf(pZone);
        const auto expectKept = [&](const char* after) {
            EXPECT_EQ(soundness(mesh, false), "") << after;
            EXPECT_NEAR(areaOf(pZone), area, 1e-9 * area) << after;
        };
        CaptureOutput output;
        mesh.insert(uniformPoints(seed % 3 == 0 ? 0 : 30, seed));
        for (int i = 0; i < 5; ++i) mesh.remove(mesh.insert(Point2(2 * around0(rng), 2 * around0(rng))));
        expectKept("insertion and removal");
        mesh.cutTriangles(Point2(unit(rng), -1), Point2(unit(rng), 2), true);
        expectKept("cut");
        Zone2* pBounded = mesh.createZone(trianglesOf(pZone))->convertToBoundedZone();
        const std::size_t numBefore = pBounded->getNumberOfTriangles();
        mesh.refine(pBounded, 20, 0.05 * std::sqrt(area), 0.2 * std::sqrt(area), true);
        expectKept("refinement");
        EXPECT_GT(pBounded->getNumberOfTriangles(), numBefore);
    }
}

TEST(TriangleImport, RemovalsRepairWhatTheyTouch) {
    // Of the rectangle around the first point the upper side isn't Delaunay, neither before nor after its removal.
    const Point2 v(0, 0), a(-2, -2), b(2, -2), p(2, 1), q(-2, 1), w(0, 1.5);
    Polygon soup{v, a, b, v, b, p, v, p, q, v, q, a, p, w, q};
    Norvik_2D mesh;
    CaptureOutput output;
    ASSERT_NE(mesh.importTriangles(soup, false, false), nullptr);
    EXPECT_FALSE(mesh.checkValidity(true, "given"));
    mesh.remove(mesh.insert(v));
    EXPECT_EQ(mesh.numberOfTriangles(), 3U);
    EXPECT_TRUE(mesh.checkValidity(true, "repaired"));
}

/// Failures draw pictures into the working directory.
class FailingImport : public testing::Test {
    const TemporaryFolder folder;
};

TEST_F(FailingImport, SaysWhyAndDrawsIt) {
    using Words = std::map<std::string, int>;
    const std::string notThree = "Dt2::createArbitraryTriangles(..), ERROR: 3 points per triangle please!";
    const std::string size =
        "Dt2::CAT_importTriangles(), ERROR: size!=4, sorry, invalid input data or bug. If your data is "
        "clean, "
        "please report this incident";
    const std::string outer = "CAT_createOuterTrianglesAndConnect(), ERROR: ";
    const std::string advice = "\nYou may want to use the postscript visualization file to debug the data\n";
    const auto pen = [](const std::string& width) { return "\tsetrgbcolor\n" + width + "\tsetlinewidth"; };
    // clang-format off
    const struct {
        const char* name;
        Polygon soup;
        bool bReorient;
        std::string picture;
        Words told, drawn;  ///< and how often
    } cases[] = {
        {"no points", {}, true, "", {{notThree, 1}}, {}},
        {"four points", box(0, 0, 1, 1), true, "", {{notThree, 1}}, {}},
        {"flat", joined(single, {{0, 0}, {1, 1}, {2, 2}}), true, "",
         {{"Dt2::CAT_reorient(), WARNING: collinear triangle no. 1\033", 1}}, {}},
        {"clockwise", reversed(single), false, "bug.ps",
         {{"mKeyMCH.size()=0\n", 1}, {size, 1}}, {{"lineto", 3}}},
        {"crossing", joined(single, {{2, 1}, {6, 1}, {4, 4}}), true, "invalidInput.ps",
         {{outer + "Additional vertex (possibly due to a selfintersection)", 1}, {"      Point2 (", 1}, {advice, 1}},
         {{"closepath", 18}, {"\tarc\n", 1}, {"0.9\t0.9\t0.9" + pen("0.001"), 1}, {"0\t0\t1" + pen("2"), 1},
          {"1\t0\t0" + pen("0.1"), 1}}},
        {"T-junction", joined(single, {{4, 0}, {2, 0}, {3, -2}, {2, 0}, {0, 0}, {1, -2}}), false, "openEdges.ps",
         {{outer + "Invalid input data detected", 1}, {advice, 1},
          {"\nOpen edges (_possibly_ causing the problem) are\nEdge(", 1}},
         {{"0.7\t0.7\t0.7" + pen("0.0001"), 1}, {"1\t0\t0" + pen("0.8"), 1}, {"0\t1\t0" + pen("0.1"), 1}}},
    };
    // clang-format on
    for (const auto& [name, soup, bReorient, picture, told, drawn] : cases) {
        SCOPED_TRACE(name);
        CaptureOutput output;
        Norvik_2D mesh;
        Polygon points = soup;
        EXPECT_EQ(mesh.importTriangles(points, bReorient, false), nullptr);
        for (const auto& [word, count] : told) EXPECT_EQ(countOf(output.out(), word), count) << word;
        for (const auto& [word, count] : drawn) EXPECT_EQ(countOf(contentOf(picture), word), count) << word;
        EXPECT_EQ(std::filesystem::remove(picture), !picture.empty());
        EXPECT_TRUE(std::filesystem::is_empty(".")) << "no other pictures";
    }
}

/// Whatever comes first, they are neither taken nor do they break anything.
TEST_F(FailingImport, RefusesTrianglesThatLieOnEachOther) {
    const std::array<Polygon, 3> groups[] = {
        {single, {{0, 0}, {2, -3}, {4, 0}}, {{0, 0}, {4, 0}, {2, 1}}},  // three at an edge
        {single, {{0, 0}, {2, -3}, {4, 0}}, {{0, 0}, {4, 0}, {2, 6}}},
        {single, {{0, 0}, {4, 0}, {2, 1}}, {}},  // two on the same side of one
        {single, {{0, 0}, {2, 1}, {2, 3}}, {}},
    };
    for (const auto& group : groups) {
        std::array<std::size_t, 3> order{0, 1, 2};
        do
            for (const bool bKeepBox : {false, true}) {
                Polygon points = joined(group[order[0]], joined(group[order[1]], group[order[2]]));
                Norvik_2D mesh;
                CaptureOutput output;
                EXPECT_EQ(mesh.importTriangles(points, false, bKeepBox), nullptr) << order[0] << order[1];
                EXPECT_TRUE(output.told("ERROR"));
            }
        while (std::next_permutation(order.begin(), order.end()));
    }
}

TEST_F(FailingImport, NeedsAnEmptyMeshAndABoxAroundAll) {
    Norvik_2D mesh;
    Polygon points = single;
    CaptureOutput output;
    for (const double bad : {std::nan(""), HUGE_VAL, 1.7e308}) {
        Polygon infinite = points;
        infinite[1] = Point2(bad, 0);
        EXPECT_EQ(mesh.importTriangles(infinite, true, true), nullptr);
    }
    EXPECT_EQ(countOf(output.out(), "ERROR"), 3);
    EXPECT_EQ(mesh.numberOfPoints(), 0U);
    mesh.insert(Point2(7, 7));
    EXPECT_EQ(mesh.importTriangles(points, true, true), nullptr);
    EXPECT_TRUE(
        output.told("Dt2::createArbitraryTriangles(..), ERROR: This method requires an empty triangulation"));
    EXPECT_EQ(mesh.numberOfPoints(), 1U);
}

/// The second one has no neighbours: nothing but the number of triangles tells of it.
TEST(TriangleImport, TakesATriangleGivenTwice) {
    Norvik_2D mesh;
    Polygon points = joined(single, single);
    EXPECT_NE(mesh.importTriangles(points, true, true), nullptr);
    EXPECT_EQ(mesh.numberOfTriangles(), 8U + 1U);
}
