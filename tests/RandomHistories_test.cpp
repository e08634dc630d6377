// Long random sequences of insertions and removals over all kinds of hard points. A model of what should be there is kept
// beside the mesh, and every few steps all laws are checked exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "meshLaws.h"

using namespace KELMAR_NORVIK2D;
using hardPoints::below, hardPoints::Kind, hardPoints::makePoints, hardPoints::Rng;

namespace {

class History {
public:
    History(const Kind& kind_, int numCPU_, unsigned seed) : kind(kind_), numCPU(numCPU_), rng(seed) {}

    /// One random step; `size` is the greatest number of points of a bulk insertion.
    void step(int size) {
        // 0 stands for another number at each step.
        constexpr int some[] = {1, 2, 4, 8};
        mesh.setNumCPU(numCPU != 0 ? numCPU : some[below(rng, 4)]);
        switch (below(rng, 6)) {
            case 0:
                insertSingles(1 + below(rng, 20));
                break;
            case 1:
            case 2:
                insertBulk(makePoints(kind, static_cast<std::size_t>(1 + below(rng, size)), rng),
                           below(rng, 3));
                break;
            case 3:
                insertBulk(oldAndNew(size), below(rng, 3));
                break;
            case 4:
                remove(below(rng, 10));
                break;
            default:
                remove(below(rng, 8) == 0 ? static_cast<int>(mVertices.size())
                                          : static_cast<int>(mVertices.size()) / 2);
        }
    }

    void check() {
        ASSERT_EQ(lawsBroken(mesh), "");
        ASSERT_EQ(mesh.numberOfPoints(), mVertices.size());
        for (const auto& [xy, pVtx] : mVertices) {
            ASSERT_TRUE(pVtx->x() == xy.first && pVtx->y() == xy.second);
            ASSERT_EQ(pVtx->getIncidentTriangle() != nullptr, mesh.is2D());
        }
        for (const Point2* pVtx : vRemoved) ASSERT_EQ(pVtx->getIncidentTriangle(), nullptr);
    }

private:
    /// A vertex that was there before must be the handle, otherwise the handle becomes the vertex.
    void note(const Point2& point, Point2* pHandle) {
        ASSERT_NE(pHandle, nullptr);
        ASSERT_EQ(mVertices.emplace(Coordinates(point.x(), point.y()), pHandle).first->second, pHandle);
    }

    void insertSingles(int n) {
        for (; n > 0; --n) {
            const Point2 point = kind.make(rng);
            note(point, mesh.insert(point));
        }
    }

    std::vector<Point2> oldAndNew(int size) {
        std::vector<Point2> points = makePoints(kind, static_cast<std::size_t>(1 + below(rng, size)), rng);
        for (const auto& [xy, pVtx] : mVertices)
            if (below(rng, 4) == 0) points.emplace_back(xy.first, xy.second);
        std::shuffle(points.begin(), points.end(), rng);
        return points;
    }

    void insertBulk(const std::vector<Point2>& points, int way) {
        std::vector<Point2*> handles(points.size());
        std::vector<double> coordinates;
        for (const Point2& point : points) coordinates.insert(coordinates.end(), {point.x(), point.y()});
        if (way == 0) mesh.insert(points, handles);
        if (way == 1) mesh.insert(static_cast<int>(points.size()), coordinates.data(), handles.data());
        if (way == 2) {
            mesh.insert(points);
            for (std::size_t i = 0; i < points.size(); ++i) handles[i] = mesh.insert(points[i]);
        }
        for (std::size_t i = 0; i < points.size(); ++i) note(points[i], handles[i]);
    }

    void remove(int n) {
        std::vector<Coordinates> vThere;
        for (const auto& [xy, pVtx] : mVertices) vThere.push_back(xy);
        std::shuffle(vThere.begin(), vThere.end(), rng);
        vThere.resize(std::min(vThere.size(), static_cast<std::size_t>(n)));
        for (const Coordinates& xy : vThere) {
            vRemoved.push_back(mVertices.at(xy));
            mesh.remove(vRemoved.back());
            mVertices.erase(xy);
        }
    }

    const Kind& kind;
    int numCPU;
    Rng rng;
    Norvik_2D mesh;
    std::map<Coordinates, Point2*> mVertices;
    std::vector<Point2*> vRemoved;
};

class RandomHistories : public testing::TestWithParam<std::tuple<int, int>> {};

/// A motion of the plane that is exact in doubles.
struct Image {
    const char* name;
    Point2 (*map)(const Point2&);
};
const Image images[] = {{"rotated", [](const Point2& p) { return Point2(-p.y(), p.x()); }},
                        {"mirrored", [](const Point2& p) { return Point2(-p.x(), p.y()); }},
                        {"transposed", [](const Point2& p) { return Point2(p.y(), p.x()); }},
                        {"doubled", [](const Point2& p) { return Point2(2.0 * p.x(), 2.0 * p.y()); }},
                        {"shrunk", [](const Point2& p) { return Point2(0x1p-20 * p.x(), 0x1p-20 * p.y()); }}};

}  // namespace

TEST_P(RandomHistories, KeepAllLaws) {
    const auto [kindIndex, numCPU] = GetParam();
    const Kind& kind = hardPoints::kinds[kindIndex];
    for (unsigned seed = 1; seed <= 2; ++seed) {
        CaptureOutput capture;
        History history(kind, numCPU, seed);
        for (int i = 1; i <= 60; ++i) {
            history.step(seed == 1 ? 10 : 60);
            if (i % 3 == 0) history.check();
            ASSERT_FALSE(HasFatalFailure())
                << kind << " on " << numCPU << ", seed " << seed << ", step " << i;
        }
        EXPECT_EQ(capture.out() + capture.err(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(All, RandomHistories,
                         testing::Combine(testing::Range(0, static_cast<int>(std::size(hardPoints::kinds))),
                                          testing::Values(0, 1, 2, 4, 8)),
                         [](const auto& paramInfo) {
                             return std::string(hardPoints::kinds[std::get<0>(paramInfo.param)].name) + "_" +
                                    std::to_string(std::get<1>(paramInfo.param));
                         });

TEST(LargeHistories, KeepAllLawsWhereSortsAndRemovalsGoToThreads) {
    for (const char* name : {"uniform", "clusters", "nearlyCollinear", "fineGrid"}) {
        const Kind* pKind = std::find_if(std::begin(hardPoints::kinds), std::end(hardPoints::kinds),
                                         [&](const Kind& kind) { return std::string(kind.name) == name; });
        History history(*pKind, 4, 3);
        for (int i = 1; i <= 12; ++i) {
            history.step(15000);
            if (i % 4 == 0) history.check();
            ASSERT_FALSE(HasFatalFailure()) << name << ", step " << i;
        }
    }
}

TEST(Symmetry, ImagesOfPointsHaveTheImageOfTheMesh) {
    int numUnique = 0;
    for (const Kind& kind : hardPoints::kinds)
        for (unsigned seed = 1; seed <= 3; ++seed) {
            Rng rng(seed);
            std::vector<Point2> points = makePoints(kind, seed * 60, rng);
            Norvik_2D mesh;
            mesh.insert(points);
            if (!mesh.is2D() || !isUnique(mesh)) continue;
            ++numUnique;
            for (const auto& [name, map] : images) {
                const CanonicalMesh expected = canonicalMesh(mesh, map);
                std::vector<Point2> mapped;
                std::transform(points.begin(), points.end(), std::back_inserter(mapped), map);
                // Scaling is exact but for denormals and overflow.
                const bool bExact = std::all_of(mapped.begin(), mapped.end(), [&](const Point2& p) {
                    const auto isNormal = [](double value) { return value == 0.0 || std::isnormal(value); };
                    return isNormal(p.x()) && isNormal(p.y());
                });
                if (!bExact) continue;
                std::shuffle(mapped.begin(), mapped.end(), rng);
                for (const int numCPU : {0, 1, 2, 8}) {  // 0: one at a time
                    Norvik_2D image;
                    image.setNumCPU(numCPU);
                    if (numCPU == 0)
                        insertEach(image, mapped);
                    else
                        image.insert(mapped);
                    EXPECT_TRUE(canonicalMesh(image) == expected) << kind << " " << name << " on " << numCPU;
                }
            }
        }
    EXPECT_GT(numUnique, 10);
}
