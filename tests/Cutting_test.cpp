// Knives become chains of constraints, and polygons are cut out of the mesh, with or without regard to its triangles.
#include <gtest/gtest.h>

#include "Norvik_2D.h"
#include "captureOutput.h"
#include "exactSegments.h"
#include "exactSigns.h"
#include "hardPoints.h"
#include "hardSegments.h"
#include "zoneLaws.h"

using namespace KELMAR_NORVIK2D;
using namespace zoneLaws;
using exactSigns::orientationSign;
using hardPoints::below, hardPoints::Rng, hardPoints::uniformPoints, hardPoints::unit;

namespace {

/// The edges of a mesh, for walks along straight lines.
class EdgeGraph {
public:
    explicit EdgeGraph(Norvik_2D& mesh) {
        for (Triangle2* pT : trianglesOf(mesh))
            for (int i = 0; i < 3; ++i) {
                const Coordinates p = at(*pT->getCorner((i + 1) % 3)), q = at(*pT->getCorner((i + 2) % 3));
                mNext[p][q] = mNext[q][p] = mesh.isConstraint(pT, i);
            }
    }

    static Coordinates at(const Point2& point) { return {point.x(), point.y()}; }

    /// Whether edges, or constraints, lead from p to q, no further off the straight line than crossings are moved.
    bool leads(const Point2& p, const Point2& q, bool bConstraints) const {
        std::set<Coordinates> sSeen{at(p)};
        for (std::vector<Coordinates> vOpen{at(p)}; !vOpen.empty();) {
            const auto next = mNext.find(vOpen.back());
            vOpen.pop_back();
            if (next == mNext.end()) return false;
            if (next->first == at(q)) return true;
            for (const auto& [to, bConstraint] : next->second)
                if (bConstraint >= bConstraints && distance(p, q, to) < 3e-5 && sSeen.insert(to).second)
                    vOpen.push_back(to);
        }
        return false;
    }

private:
    static double distance(const Point2& p, const Point2& q, const Coordinates& to) {
        const double dx = q.x() - p.x(), dy = q.y() - p.y(), x = to.first - p.x(), y = to.second - p.y();
        const double t = std::clamp((x * dx + y * dy) / (dx * dx + dy * dy), 0.0, 1.0);
        return std::hypot(x - t * dx, y - t * dy);
    }

    std::map<Coordinates, std::map<Coordinates, bool>> mNext;
};

/// Cuts a mesh; what is wrong then, empty if nothing is: each knife must be a chain of constraints and, if triangles keep their
/// shape, those that are met must be walled by constraints, and the others be as they were. Where lines all but coincide that
/// holds up to rounding only, `bExactly` is false then.
std::string cutFaults(Norvik_2D& mesh, const Segments& knives, bool bWithConstraints, bool bDelaunay,
                      bool bExactly = true) {
    std::ostringstream faults;
    faults.precision(17);
    const CanonicalMesh before = canonicalMesh(mesh);
    mesh.cutTriangles(knives, bWithConstraints);
    const CanonicalMesh after = canonicalMesh(mesh);
    const EdgeGraph edges(mesh);
    ExactReference exact;
    for (const Segment2& knife : knives)
        if (knife.getSrc() != knife.getTrg() && !edges.leads(knife.getSrc(), knife.getTrg(), true))
            faults << "no chain along " << knife.getSrc() << "-" << knife.getTrg() << "; ";
    for (std::size_t n = 0; bWithConstraints && n < before.size(); ++n) {
        Polygon c;
        for (const Coordinates& corner : before[n]) c.emplace_back(corner.first, corner.second);
        bool bMet = false;
        for (const Segment2& knife : knives) {
            const Point2 p = knife.getSrc(), q = knife.getTrg();
            if (p == q) continue;
            bMet |= orientationSign(c[0], c[1], p) == orientationSign(c[1], c[2], p) &&
                    orientationSign(c[1], c[2], p) == orientationSign(c[2], c[0], p);
            for (std::size_t i = 0; i < 3; ++i)
                bMet |= exactSegments::meeting(exact, {c[i], c[(i + 1) % 3]}, knife) != IST_NOIS;
        }
        if (bExactly && !bMet && !std::binary_search(after.begin(), after.end(), before[n]))
            faults << "no longer a triangle: " << c[0] << c[1] << c[2] << "; ";
        for (std::size_t i = 0; i < 3; ++i)
            if (!edges.leads(c[i], c[(i + 1) % 3], bMet))
                faults << "not kept: " << c[i] << "-" << c[(i + 1) % 3] << "; ";
    }
    return faults.str() + soundness(mesh, bDelaunay);
}

}  // namespace

TEST(Cutting, MakesVerticesWhereKnivesEndAndCross) {
    const Segments across{{{-1, 1}, {5, 1}}};
    const struct {
        const char* name;
        Segments knives;
        std::size_t numNewPoints;
    } cases[] = {
        {"inside a triangle", {{{1.5, 0.5}, {2.5, 0.5}}}, 2},
        {"across two edges", {{{0.5, 1}, {3.5, 1}}}, 4},
        {"inside an edge", {{{0.5, 0.5}, {1, 1}}}, 2},
        {"just an edge", {{{0, 0}, {2, 2}}}, 0},
        {"along two edges", {{{4, 4}, {0, 0}}}, 0},
        {"from edge to edge along them", {{{1, 1}, {3, 3}}}, 2},
        {"beyond an edge", {{{-1, -1}, {1, 1}}}, 2},
        {"through a vertex", {{{2, 0.5}, {2, 3}}}, 2},
        {"from vertex to hull", {{{2, 2}, {4, 3}}}, 1},
        {"inside a hull edge", {{{1, 0}, {3, 0}}}, 2},
        {"beyond a hull edge", {{{-1, 4}, {5, 4}}}, 2},
        {"from hull to hull", {{{2, 4}, {2, 0}}}, 2},
        {"all across from without", across, 6},
        {"touching a corner from without", {{{4, 4}, {6, 5}}}, 1},
        {"past a corner", {{{3, 5}, {5, 3}}}, 2},
        {"without", {{{5, 1}, {5, 3}}}, 2},
        {"out of sight", {{{5000, 1}, {5000, 3}}}, 2},
        {"crossing each other", {{{1.5, 0.5}, {2.5, 0.5}}, {{2, 0.25}, {2, 1}}}, 5},
        {"crossing on an edge", {{{1, 0.5}, {1, 1.5}}, {{0.5, 1}, {1.5, 1}}}, 5},
        {"crossing at a vertex", {{{1, 2}, {3, 2}}, {{2, 1}, {2, 3}}}, 4},
        {"ending on each other", {{{1.5, 0.5}, {2.5, 0.5}}, {{2, 0.5}, {2, 1}}}, 4},
        {"overlapping", {{{0.5, 1}, {2.5, 1}}, {{3.5, 1}, {1.5, 1}}}, 6},
        {"the same and reversed", joined(across, {across[0], {{5, 1}, {-1, 1}}}), 6},
        {"with one of no length", joined(across, {{{2, 3}, {2, 3}}}), 6},
    };
    for (const auto& [name, knives, numNewPoints] : cases)
        for (const bool bWithConstraints : {false, true}) {
            SCOPED_TRACE(std::string(name) + (bWithConstraints ? ", keeping shapes" : ""));
            Norvik_2D mesh;
            mesh.insert(joined(Polygon{{2, 2}}, box(0, 0, 4, 4)));
            EXPECT_EQ(cutFaults(mesh, knives, bWithConstraints, !bWithConstraints), "");
            EXPECT_EQ(mesh.numberOfPoints(), 5 + numNewPoints);
            EXPECT_EQ(cutFaults(mesh, knives, bWithConstraints, !bWithConstraints), "");
            EXPECT_EQ(mesh.numberOfPoints(), 5 + numNewPoints) << "once more changes nothing";
        }
}

TEST(Cutting, TakesVerticesVeryNearForCrossings) {
    for (const auto& [offset, numNewPoints] : {std::pair(1e-6, 2U), std::pair(1e-4, 4U)}) {
        Norvik_2D mesh;
        mesh.insert(box(0, 0, 4, 4));
        Point2* pNear = mesh.insert(Point2(2, 2));
        mesh.cutTriangles(Point2(1, 2 + offset), Point2(3, 2 + offset), true);
        EXPECT_EQ(mesh.numberOfPoints(), 5 + numNewPoints);
        EXPECT_EQ(mesh.isConstraint(mesh.insert(Point2(1, 2 + offset)), pNear), numNewPoints == 2);
    }
}

TEST(Cutting, WithoutKnivesOrTrianglesChangesNothing) {
    Norvik_2D mesh;
    mesh.insert(Polygon{{0, 0}, {4, 0}});
    const auto told = [&mesh](const Segments& knives, const std::string& text) {
        CaptureOutput output;
        mesh.cutTriangles(knives, true);
        return text.empty() ? output.out().empty()
                            : output.told("Dt2::CUTT_cutTriangles(..), WARNING: " + text);
    };
    EXPECT_TRUE(told({}, ""));
    EXPECT_TRUE(told({{{1, 1}, {2, 1}}}, "The triangulation is not 2D yet, nothing to do"));
    mesh.insert(Point2(0, 4));
    EXPECT_TRUE(told({{{1, 1}, {1, 1}}}, "No or only degenerate segments, nothing to do"));
    EXPECT_EQ(mesh.numberOfPoints(), 3U);
}

class RandomCuts : public testing::TestWithParam<int> {};

TEST_P(RandomCuts, KeepAllLaws) {
    const hardSegments::Kind& kind = hardSegments::kinds[GetParam()];
    for (unsigned seed = 1; seed <= 12; ++seed) {
        CaptureOutput output;
        Rng rng(seed);
        Norvik_2D mesh;
        Polygon points;
        for (const Segment2& segment : kind.make(rng, 60))
            points.insert(points.end(), {segment.getSrc(), segment.getTrg()});
        mesh.insert(points);
        if (!mesh.is2D()) continue;
        if (seed % 3 == 0) mesh.createConstraint(kind.make(rng, 6), CIS_CONSTRAINED_DELAUNAY);
        bool bDelaunay = true;
        for (int i = 0; i < 3; ++i) {
            const bool bWithConstraints = below(rng, 2) == 0;
            bDelaunay &= !bWithConstraints;
            const Segments knives = hardSegments::spoilt(kind.make(rng, 1 + below(rng, 8)), rng);
            const bool bExactly = kind.name != std::string("tenths");
            ASSERT_EQ(cutFaults(mesh, knives, bWithConstraints, bDelaunay, bExactly), "")
                << kind << ", seed " << seed << ", cut " << i << output.out();
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Kinds, RandomCuts,
                         testing::Range(0, static_cast<int>(std::size(hardSegments::kinds)) - 1),
                         [](const auto& paramInfo) {
                             return std::string(hardSegments::kinds[paramInfo.param].name);
                         });

/// Crossings are moved to ends that are within 1e-6: here that is farther than anything is long.
TEST(Cutting, ComesToAnEndWhereEverythingIsSmallerThanItsRounding) {
    for (const double scale : {1e-8, 1e-200})
        for (unsigned seed = 0; seed < 40; ++seed) {
            Polygon points = uniformPoints(64, seed);
            for (Point2& point : points) point = Point2(point.x() * scale, point.y() * scale);
            Segments knives;
            for (; points.size() > 50; points.resize(points.size() - 2))
                knives.emplace_back(points.back(), points[points.size() - 2]);
            Norvik_2D mesh;
            mesh.insert(points);
            CaptureOutput output;
            mesh.cutTriangles(knives, seed % 2 == 0);
            EXPECT_TRUE(output.told("a piece would contain the segment that it is a piece of") ||
                        mesh.checkValidity(false, "tiny"))
                << scale << ", " << seed;
        }
}

namespace {

/// Cuts a polygon out and checks all that is left.
void expectCookie(Norvik_2D& mesh, const Polygon& polygon, bool bWithConstraints, double area) {
    CaptureOutput output;
    const Zone2* pZone = mesh.createZone_cookieCutter(ring(polygon), bWithConstraints);
    EXPECT_EQ(soundness(mesh, !bWithConstraints), "");
    EXPECT_EQ(pZone == nullptr, area == 0);
    if (pZone == nullptr) return;
    EXPECT_EQ(pZone->getZoneLocation(), ZL_BOUNDED);
    EXPECT_NEAR(areaOf(pZone), area, 1e-9 * area);
    EXPECT_EQ(zoneFaults(mesh, pZone), "");
    mesh.insert(uniformPoints(50, 1));
    EXPECT_NEAR(areaOf(pZone), area, 1e-9 * area) << "later";
}

}  // namespace

TEST(CookieCutter, CutsWhatIsInsideOfPolygonAndHull) {
    const struct {
        const char* name;
        Polygon polygon;
        double area;
    } cases[] = {
        {"inside", box(2, 2, 4, 4), 4},
        {"over a vertex", box(4, 3, 7, 6), 9},
        {"around a corner", box(8, 8, 14, 14), 4},
        {"over an edge", box(8, 3, 14, 6), 6},
        {"through", box(-2, 4, 12, 6), 20},
        {"the hull", box(0, 0, 10, 10), 100},
        {"around all", box(-1, -1, 11, 11), 100},
        {"touching from within", box(6, 2, 10, 6), 16},
        {"touching from without", box(10, 2, 14, 6), 0},
        {"beside", box(12, 0, 14, 4), 0},
        {"two pieces", {{6, 2}, {14, 2}, {14, 8}, {6, 8}, {6, 6}, {12, 6}, {12, 4}, {6, 4}}, 16},
        {"a corner bent around", {{9, -1}, {11, -1}, {11, 11}, {-1, 11}, {-1, 9}, {9, 9}}, 19},
    };
    for (const auto& [name, polygon, area] : cases)
        for (const bool bWithConstraints : {false, true})
            for (const Polygon& direction : {polygon, reversed(polygon)}) {
                SCOPED_TRACE(std::string(name) + (bWithConstraints ? ", keeping shapes" : ""));
                Norvik_2D mesh;
                mesh.insert(joined(Polygon{{5, 5}}, box(0, 0, 10, 10)));
                expectCookie(mesh, direction, bWithConstraints, area);
            }
}

// One vertex stands for the crossings of several sides then: pieces from a corner to it run there and back, or the ring meets itself.
TEST(CookieCutter, CutsWhereAnEdgePassesACornerClosely) {
    const struct {
        const char* name;
        Polygon points, polygon;
        double area;
    } cases[] = {
        {"a spike", {{0, 5}, {10, 5}, {5, 12}, {5, 0}}, {{5, 5 - 1e-6}, {7, 7}, {3, 7}}, 4},
        {"a neck",
         {{3.0000001, 0}, {3.0000001, 8}, {-9, 4}, {9, 4}},
         {{2, 2}, {4, 2}, {4, 4}, {3, 2 + 1e-6}, {2, 4}},
         2},
    };
    for (const auto& [name, points, polygon, area] : cases)
        for (const bool bWithConstraints : {false, true}) {
            SCOPED_TRACE(name);
            Norvik_2D mesh;
            mesh.insert(points);
            CaptureOutput output;
            const Zone2* const pZone = mesh.createZone_cookieCutter(ring(polygon), bWithConstraints);
            ASSERT_NE(pZone, nullptr);
            EXPECT_NEAR(areaOf(pZone), area, 1e-5);
            EXPECT_EQ(zoneFaults(mesh, pZone), "");
        }
}

TEST(CookieCutter, CutsNoOtherShapes) {
    const struct {
        const char* name;
        Segments segments;
        bool bCut;
        std::size_t numPoints;
    } cases[] = {
        {"a square", ring(box(2, 2, 4, 4)), true, 8},
        {"crosses itself", ring({{2, 2}, {4, 4}, {4, 2}, {2, 4}}), false, 4},
        {"open", hardSegments::chain(box(2, 2, 4, 4)), false, 4},
        {"touches itself", ring({{2, 2}, {4, 2}, {3, 3}, {4, 4}, {2, 4}, {3, 3}}), false, 9},
    };
    for (const auto& [name, segments, bCut, numPoints] : cases) {
        SCOPED_TRACE(name);
        Norvik_2D mesh;
        mesh.insert(box(0, 0, 10, 10));
        CaptureOutput output;
        EXPECT_EQ(mesh.createZone_cookieCutter(segments, true) != nullptr, bCut);
        EXPECT_EQ(mesh.numberOfPoints(), numPoints);
        EXPECT_EQ(output.told("Dt2::createConstraint(..), WARNING: vEdges is empty, returning NULL"),
                  numPoints > 4)
            << "said of the wall around the mesh, which isn't needed here";
    }
}
