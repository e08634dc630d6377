#include "freeFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "Norvik_2D.h"
#include "Partitioner.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "hardSegments.h"
#include "tools.h"

using namespace KELMAR_NORVIK2D;

namespace {

using Triangles = std::vector<Triangle2*>;
using hardPoints::Rng, hardSegments::chain;

/// A mesh and some of its triangles, shuffled: patches of all sizes with holes, islands and vertices where they touch.
struct RandomSet {
    explicit RandomSet(unsigned seed) : rng(seed) {
        mesh.insert(hardPoints::uniformPoints(20 + seed * 7 % 200, seed));
        Triangles vAll;
        mesh.getTrianglePointers(vAll);
        const unsigned shareLeftOut = seed % 6;
        for (Triangle2* pT : vAll)
            if (rng() % 8 >= shareLeftOut) vTriangles.push_back(pT);
        std::shuffle(vTriangles.begin(), vTriangles.end(), rng);
    }

    Rng rng;
    Norvik_2D mesh;
    Triangles vTriangles;
};

using Ends = std::pair<Point2*, Point2*>;
Ends endsOf(const Edge2& edge) { return {edge.getSrc(), edge.getTrg()}; }
Ends undirected(Ends ends) { return std::minmax(ends.first, ends.second); }

/// The borders, by the ends of edges instead of by links.
std::vector<Edge2> bordersByEnds(const Triangles& vTriangles) {
    std::vector<Edge2> vAll, vBorders;
    getDirectedEdges(vTriangles, vAll);
    std::set<Ends> sEnds;
    for (const Edge2& edge : vAll) sEnds.insert(endsOf(edge));
    for (const Edge2& edge : vAll)
        if (sEnds.count({edge.getTrg(), edge.getSrc()}) == 0) vBorders.push_back(edge);
    return vBorders;
}

/// Whether segments or edges follow each other and come back.
template <class Steps>
bool isRing(const Steps& steps) {
    for (std::size_t i = 0; i < steps.size(); ++i)
        if (steps[i].getTrg() != steps[(i + 1) % steps.size()].getSrc()) return false;
    return !steps.empty();
}

double doubleArea(const std::vector<Segment2>& vSegments) {
    double sum = 0;
    for (const Segment2& s : vSegments)
        sum += s.getSrc().x() * s.getTrg().y() - s.getTrg().x() * s.getSrc().y();
    return sum;
}

std::vector<Segment2> ring(const std::vector<Point2>& points) { return hardSegments::chain(points, true); }
/// In any order, each in any direction.
std::vector<Segment2> loose(std::vector<Segment2> vSegments, Rng& rng) {
    std::shuffle(vSegments.begin(), vSegments.end(), rng);
    for (Segment2& segment : vSegments)
        if (rng() % 2 == 0) segment.swapSrcTrg();
    return vSegments;
}

/// The polygons that edges become; those of no polygon are put into `vRemaining`.
std::vector<std::vector<Edge2>> polygonsOf(const std::vector<Edge2>& vEdges, std::vector<Edge2>& vRemaining) {
    std::vector<std::vector<Edge2>> vPolygons;
    vRemaining.clear();
    edgesToPolygons(vEdges, vPolygons, vRemaining);
    return vPolygons;
}

}  // namespace

TEST(FreeFunctions, EdgesAndVerticesAgreeWithSets) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        RandomSet set(seed);
        std::set<Ends> sPairs;
        std::set<Point2*> sVertices;
        std::vector<Edge2> vEdges;
        getDirectedEdges(set.vTriangles, vEdges);
        ASSERT_EQ(vEdges.size(), 3 * set.vTriangles.size());
        for (const Edge2& edge : vEdges) {
            sPairs.insert(undirected(endsOf(edge)));
            sVertices.insert(edge.getSrc());
        }

        std::vector<Segment2> vBorders{Segment2()};
        std::vector<VertexPair2> vBorderPairs(1, VertexPair2(nullptr, nullptr)), vPairs;
        getBorders(set.vTriangles, vBorders);
        getBorders_tools(set.vTriangles, vBorderPairs);
        const std::vector<Edge2> vExpected = bordersByEnds(set.vTriangles);
        ASSERT_EQ(vBorders.size(), vExpected.size() + 1);
        ASSERT_EQ(vBorderPairs.size(), vExpected.size() + 1);
        for (std::size_t i = 0; i < vExpected.size(); ++i) {
            const auto [pSrc, pTrg] = endsOf(vExpected[i]);
            EXPECT_TRUE(vBorders[i + 1].getSrc() == *pSrc && vBorders[i + 1].getTrg() == *pTrg);
            EXPECT_EQ(vBorderPairs[i + 1], VertexPair2(pSrc, pTrg));
        }

        // All of the output is ordered, also what it held before.
        std::vector<Point2*> vVertices{*sVertices.rbegin()};
        getVertices(set.vTriangles, vVertices);
        EXPECT_TRUE(std::equal(vVertices.begin(), vVertices.end(), sVertices.begin(), sVertices.end()));
        getVertexPairs(set.vTriangles, vPairs);
        getVertexPairs(set.vTriangles, vPairs);
        getUndirectedEdges(set.vTriangles, vEdges);
        ASSERT_EQ(vPairs.size(), sPairs.size());
        ASSERT_EQ(vEdges.size(), sPairs.size());
        std::size_t i = 0;
        for (const auto& [pLow, pHigh] : sPairs) {
            EXPECT_EQ(vPairs[i], VertexPair2(pLow, pHigh));
            EXPECT_EQ(undirected(endsOf(vEdges[i++])), Ends(pLow, pHigh));
        }
    }
}

TEST(FreeFunctions, VertexPairsOfMeshes) {
    Norvik_2D mesh;
    std::vector<VertexPair2> vPairs;
    getVertexPairs(&mesh, vPairs);
    EXPECT_TRUE(vPairs.empty());
    mesh.insert({{0, 0}, {1, 0}, {0, 1}, {1, 1}});
    getVertexPairs(&mesh, vPairs);
    EXPECT_EQ(vPairs.size(), 5U);

    CaptureOutput output;
    getVertexPairs(static_cast<Norvik_2D*>(nullptr), vPairs);
    getVertexPairs(static_cast<Zone2*>(nullptr), vPairs);
    EXPECT_TRUE(output.told("getVertexPairs(), WARNING: pNorvik==NULL, nothing done"));
    EXPECT_TRUE(output.told("getVertexPairs(), WARNING: pZone==NULL, nothing done"));
    EXPECT_EQ(vPairs.size(), 5U);
}

TEST(FreeFunctions, ComponentsAgreeWithMerging) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        RandomSet set(seed);
        std::set<VertexPair2> sBlocked;
        std::vector<VertexPair2> vPairs;
        getVertexPairs(set.vTriangles, vPairs);
        for (const VertexPair2& pair : vPairs)
            if (seed % 2 == 0 && set.rng() % 3 == 0) sBlocked.insert(pair);

        std::vector<Triangles> vvComponents;
        getConnectedComponents(set.vTriangles, vvComponents, sBlocked);
        std::set<Triangle2*> sLeft(set.vTriangles.begin(), set.vTriangles.end());
        for (const Triangles& vComponent : vvComponents) {
            ASSERT_FALSE(sLeft.empty());
            Triangles vExpected{*sLeft.begin()};
            EXPECT_EQ(vComponent.front(), vExpected.front());
            sLeft.erase(sLeft.begin());
            for (std::size_t n = 0; n < vExpected.size(); ++n)
                for (int i = 0; i < 3; ++i) {
                    const Edge2 edge(vExpected[n], i);
                    Triangle2* const pNext = vExpected[n]->getOppositeTriangle(i);
                    const bool bBlocked = sBlocked.count({edge.getSrc(), edge.getTrg()}) != 0;
                    if (!bBlocked && sLeft.erase(pNext) != 0) vExpected.push_back(pNext);
                }
            EXPECT_TRUE(std::is_permutation(vComponent.begin(), vComponent.end(), vExpected.begin(),
                                            vExpected.end()));
        }
        EXPECT_TRUE(sLeft.empty());
    }
}

TEST(FreeFunctions, RepeatedTrianglesAreTold) {
    RandomSet set(6);
    std::vector<Triangles> vvComponents;
    CaptureOutput output;
    getConnectedComponents(set.vTriangles, vvComponents);
    EXPECT_EQ(output.out(), "");
    vvComponents.clear();
    set.vTriangles.push_back(set.vTriangles.front());
    getConnectedComponents(set.vTriangles, vvComponents);
    EXPECT_TRUE(output.told("getConnectedComponents, WARNING:  wrong number of triangles"));
    EXPECT_EQ(vvComponents.size(), 1U);
    EXPECT_EQ(vvComponents[0].size() + 1, set.vTriangles.size());
}

TEST(FreeFunctions, SortedBordersWalkOneRing) {
    // All triangles but those around an inner vertex: an outer ring and a hole.
    Norvik_2D mesh;
    mesh.insert(hardPoints::uniformPoints(300, 5));
    Point2* const pCentre = mesh.insert({0.5, 0.5});
    Triangles vTriangles;
    mesh.getTrianglePointers(vTriangles);
    std::erase_if(vTriangles, [&](const Triangle2* pT) { return pT->hasVertex(pCentre); });
    vTriangles.push_back(vTriangles.front());
    std::reverse(vTriangles.begin(), vTriangles.end());

    std::set<Ends> sAll, sWalked, sIgnore;
    for (const Edge2& edge : bordersByEnds(vTriangles)) sAll.insert(endsOf(edge));
    for (int numRings = 0; numRings < 2; ++numRings) {
        std::vector<Edge2> vRing;
        getSortedBorders(vTriangles, vRing, sIgnore);
        ASSERT_TRUE(isRing(vRing));
        for (const Edge2& edge : vRing) {
            EXPECT_TRUE(sWalked.insert(endsOf(edge)).second);
            sIgnore.insert(undirected(endsOf(edge)));
        }
    }
    EXPECT_EQ(sWalked, sAll);
    EXPECT_TRUE(std::is_sorted(vTriangles.begin(), vTriangles.end(), std::less<>()));
    EXPECT_EQ(std::adjacent_find(vTriangles.begin(), vTriangles.end()), vTriangles.end());
    std::vector<Edge2> vNone;
    getSortedBorders(vTriangles, vNone, sIgnore);
    EXPECT_TRUE(vNone.empty());
}

TEST(FreeFunctions, LooseRingsAreSorted) {
    Rng rng(3);
    for (std::size_t n = 3; n < 60; ++n) {
        std::vector<Segment2> vPolygon;
        generateRandomPolygon(n, 0, 10, vPolygon, static_cast<unsigned>(n));
        std::vector<Segment2> vSorted = loose(vPolygon, rng), vCCW = loose(vPolygon, rng);
        const Segment2 first = vSorted.front();
        ASSERT_TRUE(sortRing(vSorted));
        EXPECT_TRUE(isRing(vSorted) && vSorted.size() == n);
        EXPECT_TRUE(vSorted.front().getSrc() == first.getSrc() && vSorted.front().getTrg() == first.getTrg());

        ASSERT_TRUE(sortRingCCW(vCCW));
        EXPECT_TRUE(isRing(vCCW) && vCCW.size() == n);
        EXPECT_GT(doubleArea(vCCW), 0);
        for (const Segment2& segment : vPolygon) EXPECT_FALSE(segment.getSrc() < vCCW.front().getSrc());
    }
}

TEST(FreeFunctions, WhatIsNoRingStaysAsItIs) {
    CaptureOutput output;
    std::vector<Segment2> vNone;
    EXPECT_FALSE(sortRing(vNone) || sortRingCCW(vNone) || isSimplePolygon(vNone));
    EXPECT_EQ(output.out(), "");

    const std::string ccw =
        "bool KELMAR_NORVIK2D::sortRingCCW(std::vector<KELMAR_NORVIK2D::Segment2>&), WARNING: ";
    const std::vector<Segment2> vOpen = chain({{0, 0}, {1, 0}, {1, 1}});
    const struct {
        std::vector<Segment2> vSegments;
        bool (*sort)(std::vector<Segment2>&);
        std::string message;
    } cases[] = {
        {vOpen, sortRing, "Distance=1\n"},
        {vOpen, sortRing, "sortRing(), WARNING: Not a ring1"},
        {ring({{0, 0}, {2, 2}, {4, 4}, {4, 0}, {2, 2}, {0, 4}}), sortRing, "Distance=4\n"},
        {vOpen, sortRingCCW, ccw + "not a ring 1"},
        {ring({{0, 0}, {2, 0}, {1, 0}}), sortRingCCW, ccw + "not a ring 0"},
    };
    for (const auto& [vSegments, sort, message] : cases) {
        std::vector<Segment2> vSame = vSegments;
        CaptureOutput told;
        EXPECT_FALSE(sort(vSame));
        EXPECT_TRUE(std::equal(vSame.begin(), vSame.end(), vSegments.begin(), vSegments.end()));
        EXPECT_TRUE(told.told(message)) << told.out();
    }
}

TEST(FreeFunctions, RingsThatTouch) {
    Rng rng(8);
    const std::vector<Segment2> vEight = ring({{0, 0}, {2, 2}, {4, 0}, {4, 4}, {2, 2}, {0, 4}});
    for (int i = 0; i < 20; ++i) {
        std::vector<Segment2> vSorted = loose(vEight, rng);
        ASSERT_TRUE(sortRingCCW(vSorted));
        ASSERT_EQ(vSorted.size(), 6U);
        EXPECT_TRUE(isRing(vSorted));
        EXPECT_EQ(vSorted[0], Segment2({0, 0}, {2, 2}));
        EXPECT_EQ(vSorted[1], Segment2({2, 2}, {4, 0}));  // 90 degrees from the way back, on the right
        EXPECT_EQ(doubleArea(vSorted), 16);
    }
    // The walk ends with the first ring.
    std::vector<Segment2> vTwo = ring({{0, 0}, {1, 0}, {0, 1}});
    const std::vector<Segment2> vSecond = ring({{5, 5}, {6, 5}, {5, 6}});
    vTwo.insert(vTwo.end(), vSecond.begin(), vSecond.end());
    EXPECT_TRUE(sortRing(vTwo));
    EXPECT_EQ(vTwo.size(), 3U);
}

TEST(FreeFunctions, SimplePolygonsHaveNoCrossings) {
    const std::vector<Point2> square{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    std::vector<Segment2> vSquare = ring(square);
    EXPECT_TRUE(isSimplePolygon(vSquare));
    vSquare.emplace_back(Point2(1, 1), Point2(1, 1));
    EXPECT_TRUE(isSimplePolygon(vSquare));
    EXPECT_FALSE(isSimplePolygon(chain(square)));
    EXPECT_FALSE(isSimplePolygon({{Point2(1, 1), Point2(1, 1)}}));
    EXPECT_FALSE(isSimplePolygon(ring({{0, 0}, {4, 4}, {4, 0}, {0, 4}})));
    // A vertex on another side, exactly and all but exactly.
    EXPECT_FALSE(isSimplePolygon(ring({{0, 0}, {4, 0}, {4, 4}, {2, 0}, {0, 4}})));
    EXPECT_TRUE(isSimplePolygon(ring({{0, 0}, {4, 0}, {4, 4}, {2, 1e-300}, {0, 4}})));
}

TEST(FreeFunctions, CrossingsOfSidesThatNearlyOverlapEndTheQuestion) {
    // Divided where they cross, the sides would cross again and again.
    EXPECT_FALSE(isSimplePolygon(ring({{0.59955212427068072, 1.0715086071862673e+301},
                                       {0.15590475234869514, 2.7863012618974646e+300},
                                       {0.37772843830968794, 6.7506936668800686e+300},
                                       {-4.5, 0}})));
}

TEST(FreeFunctions, BordersBecomePolygons) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        RandomSet set(seed);
        const std::vector<Edge2> vBorders = bordersByEnds(set.vTriangles);
        std::vector<Edge2> vRemaining;
        std::set<Ends> sExpected, sFound;
        for (const Edge2& edge : vBorders) sExpected.insert(endsOf(edge));
        for (const auto& vPolygon : polygonsOf(vBorders, vRemaining)) {
            EXPECT_TRUE(isRing(vPolygon));
            for (const Edge2& edge : vPolygon) EXPECT_TRUE(sFound.insert(endsOf(edge)).second);
        }
        EXPECT_TRUE(vRemaining.empty());
        EXPECT_EQ(sFound, sExpected);
    }
}

TEST(FreeFunctions, PolygonsThatTouchFollowTheTriangles) {
    Norvik_2D mesh;
    const std::vector<Point2> rim{{4, 0}, {2, 4}, {-2, 4}, {-4, 0}, {-2, -4}, {2, -4}};
    Point2* const pHub = mesh.insert({0, 0});
    std::vector<Point2*> vRim;
    mesh.insert(rim, vRim);
    std::vector<Edge2> vRemaining;
    const auto polygonsAt = [&](const std::vector<std::size_t>& vSpokes) {
        Triangles vTriangles;
        for (const std::size_t spoke : vSpokes)
            vTriangles.push_back(mesh.getAdjacentTriangle(pHub, vRim[spoke]));
        return polygonsOf(bordersByEnds(vTriangles), vRemaining);
    };
    // One triangle fills its wedge, and the walk comes out of it at the hub; out of two it goes on across the way in.
    EXPECT_EQ(polygonsAt({2, 5}).size(), 2U);
    ASSERT_EQ(polygonsAt({2, 3, 5}).size(), 1U);
    EXPECT_EQ(polygonsAt({2, 3, 5})[0].size(), 7U);

    // Where several edges leave the least vertex the most clockwise one begins.
    Norvik_2D fan;
    Point2* const pTip = fan.insert({0, 0});
    std::vector<Point2*> vEnds;
    fan.insert({{4, -4}, {4, -1}, {4, 1}, {4, 4}}, vEnds);
    const Triangles vTwo{fan.getAdjacentTriangle(pTip, vEnds[2]), fan.getAdjacentTriangle(pTip, vEnds[0])};
    const auto vPolygons = polygonsOf(bordersByEnds(vTwo), vRemaining);
    ASSERT_EQ(vPolygons.size(), 2U);
    EXPECT_EQ(endsOf(vPolygons[0][0]), Ends(pTip, vEnds[0]));
    EXPECT_EQ(endsOf(vPolygons[1][0]), Ends(pTip, vEnds[2]));
}

TEST(FreeFunctions, OpenChainsRemain) {
    RandomSet set(6);
    std::vector<Edge2> vRing, vRemaining;
    getSortedBorders(set.vTriangles, vRing, {});
    // Whichever edge is missing: also if the chain ends at the vertex where walks begin.
    for (std::size_t i = 0; i < vRing.size(); ++i) {
        std::vector<Edge2> vChain = vRing;
        vChain.erase(vChain.begin() + static_cast<std::ptrdiff_t>(i));
        EXPECT_TRUE(polygonsOf(vChain, vRemaining).empty());
        EXPECT_EQ(vRemaining.size(), vChain.size());
    }
}

namespace {

/// Vertices that stop a border from being one ring; empty if it is one, which is in `vRing` then.
std::set<Point2*> findPinch(const Triangles& vTriangles, std::vector<Ends>& vRing) {
    std::multimap<Point2*, Point2*> mSteps;
    for (const Edge2& edge : bordersByEnds(vTriangles)) mSteps.insert(endsOf(edge));
    std::set<Point2*> sPinch;
    for (const auto& step : mSteps)
        if (mSteps.count(step.first) > 1) sPinch.insert(step.first);
    if (!sPinch.empty()) return sPinch;
    vRing.clear();
    for (auto step = std::prev(mSteps.end()); step != mSteps.end(); step = mSteps.find(vRing.back().second)) {
        vRing.push_back(*step);
        mSteps.erase(step);
    }
    if (!mSteps.empty()) sPinch.insert(mSteps.begin()->first);
    return sPinch;
}

std::vector<Triangles> split(const Triangles& vTriangles, const std::set<Point2*>& sPinch) {
    std::vector<Triangles> vvParts;
    std::set<Triangle2*> sLeft(vTriangles.begin(), vTriangles.end());
    for (const Point2* pVtx : sPinch) {
        std::size_t part = 0;
        for (Triangle2* pT : std::set<Triangle2*>(sLeft)) {
            if (!pT->hasVertex(pVtx)) continue;
            if (part == vvParts.size()) vvParts.emplace_back();
            vvParts[part++].push_back(pT);
            sLeft.erase(pT);
        }
    }
    if (!sLeft.empty()) vvParts.emplace_back(sLeft.begin(), sLeft.end());
    return vvParts;
}

}  // namespace

TEST(Partitioner, AgreesWithSplittingAgainAndAgain) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        RandomSet set(seed);
        const Partitioner partitioner(set.vTriangles);
        std::size_t numComponents = 0;
        std::vector<Triangles> vStack;
        getConnectedComponents(set.vTriangles, vStack);
        while (!vStack.empty()) {
            const std::set<Triangle2*> sTriangles(vStack.back().begin(), vStack.back().end());
            const Triangles vTriangles(sTriangles.begin(), sTriangles.end());
            vStack.pop_back();
            std::vector<Ends> vRing;
            const std::set<Point2*> sPinch = findPinch(vTriangles, vRing);
            for (Triangles& vPart : split(vTriangles, sPinch))
                if (!sPinch.empty()) vStack.push_back(std::move(vPart));
            if (!sPinch.empty()) continue;

            ASSERT_LT(numComponents, partitioner.numberOfCCs());
            const ConnectedComponent* const pCC = partitioner.getCC(numComponents++);
            ASSERT_EQ(pCC->getTriangles(), vTriangles);
            std::vector<Edge2*> vBorders;
            pCC->getSortedBorders(vBorders);
            ASSERT_EQ(vBorders.size(), vRing.size());
            for (std::size_t i = 0; i < vRing.size(); ++i) EXPECT_EQ(endsOf(*vBorders[i]), vRing[i]);
        }
        EXPECT_EQ(numComponents, partitioner.numberOfCCs());
    }
}
