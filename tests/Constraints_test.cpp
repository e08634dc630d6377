// Segments of all kinds become chains of edges, whatever happens to the mesh between.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "Dt2.h"
#include "Norvik_2D.h"
#include "captureOutput.h"
#include "constraintLaws.h"
#include "hardPoints.h"
#include "hardSegments.h"

using namespace KELMAR_NORVIK2D;
using hardPoints::below, hardPoints::Rng, hardPoints::uniformPoints;
using hardSegments::Kind, hardSegments::Segments;

namespace {

constexpr auto conforming = CIS_CONFORMING_DELAUNAY;
constexpr auto constrained = CIS_CONSTRAINED_DELAUNAY;

/// A mesh under random changes, with all that was asked of it.
class History {
public:
    History(const Kind& kind_, bool bMixed_, unsigned seed) : kind(kind_), bMixed(bMixed_), rng(seed) {}

    void step(int size) {
        constexpr int threads[] = {1, 2, 4};
        mesh.setNumCPU(threads[below(rng, 3)]);
        switch (below(rng, 8)) {
            case 0:
                for (const Point2& point : somePoints(5)) note(mesh.insert(point));
                break;
            case 1:
            case 2: {
                std::vector<Point2*> handles;
                mesh.insert(somePoints(size), handles);
                for (Point2* pVtx : handles) note(pVtx);
                break;
            }
            case 3:
            case 4:
                remove(rng() % 2 == 0);
                break;
            case 5:
                if (mesh.is2D()) mesh.applyConstraintsAndZones();
                break;
            default: {
                const auto cis = bMixed && rng() % 2 == 0 ? conforming : constrained;
                bGivenUp |= cis == conforming && kind.bSetsCross;
                demands.create(hardSegments::spoilt(kind.make(rng, 1 + below(rng, size)), rng), cis,
                               rng() % 2 == 0);
            }
        }
    }

    void check() {
        if (mesh.is2D()) mesh.applyConstraintsAndZones();
        const bool bEnforced = mesh.is2D() && !bGivenUp;
        ASSERT_EQ(demands.check(bEnforced), "");
        CaptureOutput output;
        ASSERT_TRUE(!bEnforced || mesh.checkValidity(true, kind.name)) << output.out();
        for (const Point2* pVtx : sFree)
            ASSERT_EQ(pVtx->getIncidentTriangle() != nullptr, mesh.is2D()) << *pVtx;
    }

    /// Some pieces were given up with a warning.
    void giveUp() { bGivenUp = true; }

private:
    /// Ends of segments of the kind, and points on their way.
    std::vector<Point2> somePoints(int n) {
        std::vector<Point2> points;
        for (const Segment2& segment : kind.make(rng, 1 + below(rng, n))) {
            const Point2 src = segment.getSrc(), trg = segment.getTrg();
            points.push_back(src);
            points.emplace_back(0.5 * (src.x() + trg.x()), 0.5 * (src.y() + trg.y()));
        }
        return points;
    }

    void note(Point2* pVtx) {
        if (!mesh.isConstraint(pVtx)) sFree.insert(pVtx);
    }

    void remove(bool bFromHull) {
        std::vector<Point2*> vCandidates;
        if (bFromHull && mesh.is2D())
            mesh.getConvexHull(true, vCandidates);
        else
            mesh.getVertexPointers(vCandidates);
        int numLeft = 1 + below(rng, static_cast<int>(vCandidates.size()) + 1) / 2;
        for (Point2* pVtx : vCandidates) {
            if (mesh.isConstraint(pVtx) || --numLeft < 0) continue;
            sFree.erase(pVtx);
            mesh.remove(pVtx);
        }
    }

    const Kind& kind;
    bool bMixed, bGivenUp = false;
    Rng rng;
    Norvik_2D mesh;
    Demands demands{mesh};
    std::set<Point2*> sFree;
};

class RandomConstraints : public testing::TestWithParam<std::tuple<int, bool>> {};

}  // namespace

TEST_P(RandomConstraints, KeepAllLaws) {
    const auto [kindIndex, bMixed] = GetParam();
    const Kind& kind = hardSegments::kinds[kindIndex];
    for (unsigned seed = 1; seed <= (bMixed ? 6U : 9U); ++seed) {
        CaptureOutput output;
        History history(kind, bMixed, seed);
        for (int i = 1; i <= 24; ++i) {
            history.step(bMixed && kind.bSetsCross ? 3 : seed % 3 == 0 ? 40 : 8);
            if (i % 4 != 0) continue;
            // What was given up is given up with a word, and by halving only.
            const bool bTold =
                output.told("giving up. Incorrect result!") || output.told("need to skip last insertions");
            ASSERT_TRUE(bMixed || !bTold) << kind << ", seed " << seed << ", step " << i;
            if (bTold) history.giveUp();
            history.check();
            ASSERT_FALSE(HasFatalFailure()) << kind << ", seed " << seed << ", step " << i;
        }
    }
}

constexpr int numKinds = static_cast<int>(std::size(hardSegments::kinds));
std::string nameOf(const testing::TestParamInfo<std::tuple<int, bool>>& paramInfo) {
    return hardSegments::kinds[std::get<0>(paramInfo.param)].name;
}
INSTANTIATE_TEST_SUITE_P(Constrained, RandomConstraints,
                         testing::Combine(testing::Range(0, numKinds), testing::Values(false)), nameOf);
INSTANTIATE_TEST_SUITE_P(BothStrategies, RandomConstraints,
                         testing::Combine(testing::Range(0, numKinds - 1), testing::Values(true)), nameOf);

TEST(Constraints, EnforcementChangesWhatItMust) {
    const std::vector<Point2> grid{{0, 0}, {2, 0}, {4, 0}, {0, 2}, {2, 2}, {4, 2}, {0, 4}, {2, 4}, {4, 4}};
    const struct {
        const char* name;
        Segments segments;
        std::size_t numNewPoints, numPieces;
    } cases[] = {
        {"an edge", {{{0, 0}, {2, 0}}}, 0, 1},
        {"along the hull, through a vertex", {{{4, 0}, {4, 4}}}, 0, 2},
        {"through a vertex", {{{0, 0}, {4, 4}}}, 0, 2},
        {"past all others", {{{0, 0}, {4, 2}}}, 0, 1},
        {"two that cross", {{{0, 0}, {4, 2}}, {{2, 0}, {2, 4}}}, 1, 5},
        {"two that cross at a vertex", {{{0, 0}, {4, 4}}, {{4, 0}, {0, 4}}}, 0, 4},
        {"one that ends on the other", {{{0, 0}, {4, 2}}, {{2, 1}, {3, 4}}}, 2, 3},
        {"the same in the other order", {{{2, 1}, {3, 4}}, {{0, 0}, {4, 2}}}, 2, 3},
        {"overlapping on a line", {{{0, 2}, {3, 2}}, {{1, 2}, {4, 2}}}, 2, 4},
    };
    for (const auto& [name, segments, numNewPoints, numPieces] : cases) {
        SCOPED_TRACE(name);
        Norvik_2D mesh;
        Demands demands(mesh);
        mesh.insert(grid);
        demands.create(segments, constrained);
        EXPECT_EQ(demands.check(), "");
        EXPECT_EQ(demands.getNumPieces(), numPieces);
        EXPECT_EQ(mesh.numberOfPoints(), grid.size() + numNewPoints) << "new ends count too";
        const std::size_t numTriangles = mesh.numberOfTriangles();
        for (const ConstraintInsertionStrategy cis : {constrained, conforming})
            demands.create(segments, cis, true);
        mesh.applyConstraintsAndZones();
        EXPECT_EQ(mesh.numberOfTriangles(), numTriangles) << "once more changes nothing";
        EXPECT_EQ(demands.getNumPieces(), numPieces);
        EXPECT_EQ(demands.check(), "");
    }
}

TEST(Constraints, HalvingCompletesWhatDoesNotCross) {
    const std::vector<Point2> beside = uniformPoints(400, 3);
    Rng rng(4);
    Segments across;
    for (int i = 0; i < 12; ++i)
        across.emplace_back(Point2(-0.5, 0.08 * i), Point2(1.5, 0.08 * i + 0.01 * (i - 6)));
    for (const Segments& segments : {across, hardSegments::spiral(150), hardSegments::fan(rng, 12, 1.0)}) {
        Norvik_2D mesh;
        Demands demands(mesh);
        mesh.insert(beside);
        CaptureOutput output;
        demands.create(segments, conforming);
        mesh.applyConstraintsAndZones();
        EXPECT_EQ(output.out(), "");
        EXPECT_EQ(demands.check(), "");
        EXPECT_GT(demands.getNumPieces(), segments.size());
    }
}

TEST(Constraints, WithoutCrossingsAllMagnitudesAreExact) {
    for (const double scale : {5e-324, 1e-300, 1e-160, 1e-30, 1e30, 1e150, 8e307}) {
        Norvik_2D mesh;
        Demands demands(mesh);
        Rng rng(5);
        Segments segments = hardSegments::fan(rng, 60, scale);
        if (scale < 1e-320)
            for (Segment2& segment : segments)
                segment = Segment2({0, 0}, Point2(scale * below(rng, 12), scale * below(rng, 12)));
        std::vector<Point2> points;
        for (const Segment2& segment : segments)
            points.emplace_back(0.5 * segment.getTrg().x(), scale * below(rng, 2));
        mesh.insert(points);
        demands.create(segments, constrained, true);
        EXPECT_EQ(demands.check(), "") << scale;
        EXPECT_TRUE(mesh.checkValidity(true, "scale")) << scale;
    }
}

TEST(Constraints, CrossingsBeyondTheFaithfulDomainLeaveAValidMesh) {
    for (const double scale : {5e-324, 1e-300, 1e-20, 1e12, 1e100, 1e200, 8e307}) {
        Norvik_2D mesh;
        Rng rng(6);
        CaptureOutput output;
        const auto point = [&] {
            return Point2(scale * (below(rng, 21) - 10) * 0.1, scale * (below(rng, 21) - 10) * 0.1);
        };
        for (int i = 0; i < 12; ++i) {
            ASSERT_NO_THROW(mesh.createConstraint({{point(), point()}}, constrained))
                << scale << output.out();
            ASSERT_EQ(lawsBroken(mesh), "") << scale;
        }
    }
}

namespace {

/// Off a line by last places, within 1e6 units of the origin.
Point2 besideLine(Rng& rng, double unit) {
    double x = unit * 100.0 * (below(rng, 20001) - 10000), y = 0.37 * x;
    for (double* pCoordinate : {&x, &y})
        for (int i = below(rng, 4); i > 0; --i) *pCoordinate = std::nextafter(*pCoordinate, 1e9);
    return {x, y};
}

}  // namespace

// Rounded pieces of lines that are nearly the same cross again and again.
TEST(Constraints, DividingABundleComesToAnEnd) {
    Rng rng(5);
    Segments bundle;
    for (int i = 0; i < 30; ++i) bundle.emplace_back(besideLine(rng, 1.0), besideLine(rng, 1.0));
    Norvik_2D mesh;
    CaptureOutput output;
    mesh.createConstraint(bundle, constrained);
    EXPECT_EQ(countOf(output.out(), "insufficient numeric accuracy, need to skip last insertions"), 1);
    const std::size_t numPoints = mesh.numberOfPoints();
    EXPECT_LT(numPoints, 100000U);
    mesh.applyConstraintsAndZones();
    EXPECT_EQ(lawsBroken(mesh), "");
    // What crosses nothing is a constraint as before, what crosses stays out.
    const Segment2 apart(Point2(0, -2e6), Point2(1e6, -2e6)), across(Point2(-9e5, 9e5), Point2(9e5, -9e5));
    mesh.createConstraint({apart, across}, constrained);
    EXPECT_EQ(mesh.numberOfPoints(), numPoints + 4);
    EXPECT_TRUE(mesh.isConstraint(mesh.insert(apart.getSrc()), mesh.insert(apart.getTrg())));
    EXPECT_EQ(lawsBroken(mesh), "");
}

// Pieces would have to be halved some fifty times, and there are twice as many of them each time.
TEST(Constraints, HalvingABundleComesToAnEnd) {
    Rng rng(1);
    Norvik_2D mesh;
    mesh.insert(std::vector<Point2>{{-1, 2}, {1, -1}});
    CaptureOutput output;
    Segments bundle;
    for (int i = 0; i < 10; ++i) bundle.emplace_back(besideLine(rng, 1e-6), besideLine(rng, 1e-6));
    mesh.createConstraint(bundle, CIS_CONFORMING_DELAUNAY);
    mesh.applyConstraintsAndZones();
    EXPECT_EQ(countOf(output.out(), "insufficient numeric accuracy, need to skip last insertions"), 1);
    const std::size_t numPoints = mesh.numberOfPoints();
    EXPECT_LT(numPoints, 110000U);
    mesh.applyConstraintsAndZones();
    EXPECT_EQ(mesh.numberOfPoints(), numPoints);
    EXPECT_EQ(lawsBroken(mesh), "");
}

TEST(Constraints, AHubOfManySegments) {
    Norvik_2D mesh;
    Demands demands(mesh);
    Rng rng(7);
    mesh.insert(uniformPoints(500, 8));
    demands.create(hardSegments::fan(rng, 10000, 1.0), constrained);
    EXPECT_EQ(demands.check(), "");
    EXPECT_GE(demands.getNumPieces(), 10000U);
    // Rays from the hub share no vertex but the hub.
    EXPECT_EQ(mesh.numberOfPoints(), 10501U);
}

TEST(Constraints, SurviveTheBoxOfABulkInsertionAndTheRemovalOfHullVertices) {
    const struct {
        std::vector<Point2> points;
        Segment2 segment;
        Point2 last;
        bool bRemoved;
    } cases[] = {{{{11, 10}, {8, 1}, {10, 9}, {4, 5}, {9, 3}}, {{4, 5}, {11, 10}}, {1, 5}, false},
                 {{{9, 5}, {7, 2}, {3, 6}, {4, 3}, {5, 0}}, {{9, 5}, {5, 0}}, {4, 3}, true}};
    for (const auto& [points, segment, last, bRemoved] : cases) {
        Norvik_2D mesh;
        Demands demands(mesh);
        mesh.insert(points);
        demands.create({segment}, constrained);
        mesh.setNumCPU(2);
        if (bRemoved)
            mesh.remove(mesh.insert(last));
        else
            mesh.insert(std::vector<Point2>{last});
        EXPECT_EQ(demands.check(), "");
        EXPECT_TRUE(mesh.checkValidity(true, "repaired"));
    }
}

TEST(Constraints, ObjectsDieCleanlyAfterAnExceptionAtAnyTime) {
    struct Thrower : MsgBase {
        int numLeft;
        explicit Thrower(int n) : numLeft(n) {}
        void update(MsgType, const std::string&, double) override {
            if (numLeft-- == 0) throw std::runtime_error("enough");
        }
    };
    Rng rng(9);
    const Segments segments = hardSegments::kinds[0].make(rng, 30);
    int numThrown = 0;
    for (int n = 0; n < 90; n += 3) {
        Thrower thrower(n);
        Norvik_2D mesh;
        mesh.subscribe(MSGTYPE_PROGRESS, &thrower);
        try {
            mesh.createConstraint(segments, n % 2 == 0 ? constrained : conforming);
            mesh.applyConstraintsAndZones();
        } catch (const std::runtime_error&) {
            ++numThrown;
        }
    }
    EXPECT_GT(numThrown, 20);
}

TEST(Constraints, AllOfTheWorldsCoastline) {
    std::ifstream file(NORVIK2D_DATA "/coast_50m.seg");
    Segments segments;
    for (double x0, y0, x1, y1; file >> x0 >> y0 >> x1 >> y1;)
        segments.emplace_back(Point2(x0, y0), Point2(x1, y1));
    ASSERT_EQ(segments.size(), 59202U);
    Norvik_2D mesh;
    Demands demands(mesh);
    CaptureOutput output;
    demands.create(segments, constrained);
    EXPECT_EQ(demands.check(), "");
    EXPECT_GE(demands.getNumPieces(), 59000U);
    EXPECT_TRUE(mesh.checkValidity(true, "coast"));
}

TEST(Constraints, CanBeDividedBeforeThereAreTriangles) {
    Norvik_2D mesh;
    mesh.createConstraint({{Point2(0, 0), Point2(2, 0)}}, constrained);
    std::vector<Point2*> vEnds;
    mesh.getVertexPointers(vEnds);
    ConstraintSegment2* pSegment = mesh.getConstraintSegment(vEnds[0], vEnds[1]);
    ASSERT_NE(pSegment, nullptr);
    Point2* pMiddle = pSegment->insertAndSplit(Point2(1, 0));
    ASSERT_NE(pMiddle, nullptr);
    mesh.insert(Point2(1, 1));
    mesh.applyConstraintsAndZones();
    for (Point2* pEnd : vEnds) EXPECT_TRUE(mesh.isConstraint(pEnd, pMiddle));
    EXPECT_TRUE(mesh.checkValidity(true, "divided"));
}

// The fans of hull vertices are rebuilt without regard to constraints, which come back then.
TEST(Constraints, ConformingOnesSurviveTheRemovalOfAHullVertex) {
    Norvik_2D mesh;
    mesh.insert(std::vector<Point2>{{1, 5}, {0, 0}});
    Point2* pRemoved = mesh.insert(Point2(0, 3));
    mesh.createConstraint({{Point2(4, 5), Point2(0, 2)}, {Point2(0, 2), Point2(5, 5)}}, conforming);
    mesh.applyConstraintsAndZones();
    const std::size_t numPoints = mesh.numberOfPoints();
    mesh.remove(pRemoved);
    EXPECT_TRUE(mesh.checkValidity(true, "removed"));
    EXPECT_EQ(mesh.numberOfPoints(), numPoints - 1) << "nothing is added";
}

// Between neighbouring doubles there is no middle.
TEST(Constraints, ConformingDiagonalsOfTheSmallestSquareAreGivenUp) {
    constexpr double e = std::numeric_limits<double>::denorm_min();
    Norvik_2D mesh;
    mesh.insert(std::vector<Point2>{{0, 0}, {e, e}, {e, 0}, {0, e}});
    CaptureOutput output;
    mesh.createConstraint({{Point2(0, 0), Point2(e, e)}}, conforming);
    mesh.createConstraint({{Point2(e, 0), Point2(0, e)}}, conforming);
    EXPECT_TRUE(output.told("giving up. Incorrect result!"));
    EXPECT_EQ(mesh.numberOfPoints(), 4U);
}
