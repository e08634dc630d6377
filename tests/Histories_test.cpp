// Long random use of the whole interface, all laws checked every few steps; the same with more points than one thread sorts and
// inserts; images of hard points.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "ApiDriver.h"
#include "bulkInsertion.h"
#include "hardPoints.h"
#include "meshLaws.h"

using namespace KELMAR_NORVIK2D;
using hardPoints::below, hardPoints::Kind, hardPoints::makePoints, hardPoints::Rng;

namespace {

/// Operations of one object, as many as its number says; what was wrong then, empty if nothing was.
std::string faultIn(std::uint64_t life, int mostSteps) {
    int step = 0;
    try {
        Decisions from(life);
        ApiDriver driver(from, {});
        for (; step < mostSteps && !driver.isFull(); ++step) {
            driver.step();
            if (step % 5 == 0) driver.check();
        }
        driver.check();
        return "";
    } catch (const std::exception& exception) {
        return "life " + std::to_string(life) + ", step " + std::to_string(step) + ": " + exception.what() +
               "\n" + Hearing::all();
    }
}

/// As long as one lives messages go to the driver.
class Listening {
public:
    Listening() {
        static const MessageHandler hear = [] {
            Hearing::begin();
            return setMessageHandler(nullptr);
        }();
        setMessageHandler(hear);
    }
    ~Listening() { setMessageHandler(nullptr); }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
};

class Histories : public testing::TestWithParam<std::uint64_t> {};
INSTANTIATE_TEST_SUITE_P(Lives, Histories, testing::Range(std::uint64_t{0}, std::uint64_t{10}));

/// Motions of the plane that are exact in doubles.
constexpr Point2 (*motions[])(const Point2&) = {[](const Point2& p) { return p; },
                                                [](const Point2& p) { return Point2(-p.y(), p.x()); },
                                                [](const Point2& p) { return Point2(-p.x(), p.y()); },
                                                [](const Point2& p) { return Point2(p.y(), p.x()); }};

}  // namespace

TEST_P(Histories, KeepAllLaws) {
    const Listening listening;
    for (std::uint64_t life = 0; life < 20; ++life) ASSERT_EQ(faultIn(20 * GetParam() + life, 300), "");
}

TEST(LargeHistories, OfTwoObjectsAtTheSameTimeKeepAllLaws) {
    const Listening listening;
    std::string faults[2];
    std::vector<std::thread> threads;
    for (std::uint64_t i = 0; i < 2; ++i)
        threads.emplace_back([i, &own = faults[i]] {
            for (std::uint64_t life = 0; life < 10 && own.empty(); ++life)
                own = faultIn(1000 + 100 * i + life, 200);
        });
    for (std::thread& thread : threads) thread.join();
    for (const std::string& fault : faults) EXPECT_EQ(fault, "");
}

TEST(LargeHistories, KeepAllLawsWhereSortsGoToThreads) {
    for (const char* name : {"uniform", "clusters", "nearlyCollinear", "fineGrid"}) {
        SCOPED_TRACE(name);
        const Kind* const pKind =
            std::find_if(std::begin(hardPoints::kinds), std::end(hardPoints::kinds),
                         [&](const Kind& kind) { return kind.name == std::string(name); });
        Rng rng(3);
        Norvik_2D mesh;
        mesh.setNumCPU(4);
        for (int i = 0; i < 4; ++i) {
            std::vector<Point2*> vOld;
            mesh.getVertexPointers(vOld);
            std::vector<Point2> points;
            for (const Point2* pVtx : vOld) points.push_back(*pVtx);
            for (int n = 2000 + below(rng, 13000); n > 0; --n) points.push_back(pKind->make(rng));
            const std::vector<Point2*> handles = insertBulk(mesh, points);
            ASSERT_EQ(handlesBroken(mesh, points, handles), "");
            ASSERT_TRUE(std::equal(vOld.begin(), vOld.end(), handles.begin())) << "old vertices stay";
            mesh.getVertexPointers(vOld);
            for (Point2* pVtx : vOld)
                if (below(rng, 2) == 0) mesh.remove(pVtx);
            ASSERT_EQ(lawsBroken(mesh), "");
        }
    }
}

TEST(Symmetry, ImagesOfHardPointsHaveMeshesOnAnyNumberOfThreads) {
    for (const Kind& kind : hardPoints::kinds)
        for (const auto motion : motions) {
            Rng rng(1);
            std::vector<Point2> points = makePoints(kind, 120, rng);
            std::transform(points.begin(), points.end(), points.begin(), motion);
            std::size_t numTriangles = 0;
            for (const int numCPU : {1, 2, 4, 8}) {
                Norvik_2D mesh;
                mesh.setNumCPU(numCPU);
                EXPECT_EQ(handlesBroken(mesh, points, insertBulk(mesh, points)), "") << kind << numCPU;
                EXPECT_EQ(lawsBroken(mesh), "") << kind << numCPU;
                EXPECT_TRUE(numCPU == 1 || mesh.numberOfTriangles() == numTriangles) << kind << numCPU;
                numTriangles = mesh.numberOfTriangles();
                std::shuffle(points.begin(), points.end(), rng);
            }
        }
}
