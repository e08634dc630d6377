#include "kelmar_locate3/Octree.h"

#include <gmpxx.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>

#include "NorvikException.h"
#include "captureOutput.h"
#include "hardPoints.h"

using namespace KELMAR_OCTREE;
using hardPoints::Rng;
using KELMAR_NORVIK2D::NorvikException;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double largest = std::numeric_limits<double>::max();

using Place = std::array<double, 3>;
using Places = std::vector<Place>;

Place makePlace(const hardPoints::Kind& kind, Rng& rng) {
    const auto p = kind.make(rng), q = kind.make(rng);
    return {p.x(), p.y(), q.y()};
}

/// A tree over the tight box.
struct FilledTree {
    FilledTree(const Places& places, int maxItemsPerLeaf, int maxDepth)
        : least(extreme(places, 0)),
          most(extreme(places, 1)),
          tree(least.data(), most.data(), maxItemsPerLeaf, maxDepth) {
        for (const Place& place : places) EXPECT_TRUE(tree.addPoint(nullptr, place[0], place[1], place[2]));
    }
    static Place extreme(const Places& places, int which) {
        Place result = places.front();
        for (const Place& place : places)
            for (std::size_t i = 0; i < 3; ++i)
                result[i] = which == 0 ? std::min(result[i], place[i]) : std::max(result[i], place[i]);
        return result;
    }

    Place least, most;
    Octree tree;
};

/// The ranks of what is found, in that order.
std::vector<std::size_t> inSphere(const Octree& tree, const Place& center, double r) {
    OctItem before{};
    std::vector<OctItem*> found{&before};
    tree.getItemsInSphere(center[0], center[1], center[2], r, found);
    EXPECT_EQ(found.front(), &before) << "appended";
    std::vector<std::size_t> ranks;
    for (auto it = found.begin() + 1; it != found.end(); ++it) ranks.push_back((*it)->rank);
    return ranks;
}

mpq_class exactSquare(const Place& a, const Place& b) {
    mpq_class sum = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const mpq_class difference = mpq_class(a[i]) - mpq_class(b[i]);
        sum += difference * difference;
    }
    return sum;
}

/// All places are asked one by one.
void check(const FilledTree (&trees)[4], const Places& places, const Place& center, double r) {
    std::vector<std::size_t> expected;
    std::vector<mpq_class> squares;
    for (const Place& place : places) {
        squares.push_back(exactSquare(center, place));
        if (squares.back() <= mpq_class(r) * mpq_class(r)) expected.push_back(squares.size() - 1);
    }
    // Of equally near ones the first.
    const auto nearest = std::min_element(squares.begin(), squares.end()) - squares.begin();
    for (const auto& [least, most, tree] : trees) {
        std::vector<std::size_t> found = inSphere(tree, center, r);
        std::sort(found.begin(), found.end());
        ASSERT_EQ(found, expected);
        ASSERT_EQ(tree.getNearest(center[0], center[1], center[2])->rank, static_cast<std::size_t>(nearest));
    }
}

}  // namespace

TEST(Octree, FindsWhatLiesInASphereAndWhatIsNearest) {
    for (const hardPoints::Kind& kind : hardPoints::kinds) {
        SCOPED_TRACE(kind.name);
        Rng rng(1);
        Places places;
        for (int i = 0; i < 60; ++i)
            places.push_back(rng() % 4 == 0 && i > 0 ? places[rng() % places.size()] : makePlace(kind, rng));
        const FilledTree trees[] = {{places, 8, 20}, {places, 1, INT_MAX}, {places, 2, 3}, {places, 1, 0}};
        for (int i = 0; i < 20; ++i) {
            const Place center = i % 2 == 0 ? makePlace(kind, rng) : places[rng() % places.size()];
            const Place& other = places[rng() % places.size()];
            const double r = std::hypot(other[0] - center[0], other[1] - center[1], other[2] - center[2]);
            for (const double radius : {0.0, hardPoints::nudged(r, rng), hardPoints::nudged(r, -1)})
                if (radius >= 0.0) check(trees, places, center, std::min(radius, largest));
        }
    }
}

TEST(Octree, TheSurfaceOfASphereBelongsToIt) {
    // 1, 2 and 2 make a length of 3, wherever squares overflow or underflow, too.
    for (const int exponent : {-1074, -1022, -539, -500, 0, 30, 500, 511, 1020}) {
        const double one = std::ldexp(1, exponent), two = 2 * one;
        Places places;
        for (int corner = 0; corner < 8; ++corner)
            places.push_back({corner & 1 ? one : -one, corner & 2 ? two : -two, corner & 4 ? two : -two});
        const FilledTree filled(places, 1, 20);
        const double r = std::ldexp(3, exponent);
        EXPECT_EQ(inSphere(filled.tree, {0, 0, 0}, r).size(), 8U) << exponent;
        EXPECT_EQ(inSphere(filled.tree, {0, 0, 0}, hardPoints::nudged(r, -1)).size(), 0U) << exponent;
        // From a little to one side four are nearer and four are farther.
        EXPECT_EQ(inSphere(filled.tree, {5e-324, 0, 0}, r).size(), 4U) << exponent;
        EXPECT_EQ(filled.tree.getNearest(0, 0, 0)->rank, 0U);
        EXPECT_EQ(filled.tree.getNearest(5e-324, 0, 0)->rank, 1U);
    }
}

TEST(Octree, OctantsComeByXThenYThenZAndTheItemsOfALeafAsAdded) {
    const double least[] = {0, 0, 0}, most[] = {2, 2, 2};
    Octree divided(least, most, 15), whole(least, most, 16), undivided(least, most, 1, 0);
    std::vector<std::size_t> inOrder, byOctants;
    for (int octant = 7; octant >= 0; --octant)
        for (int i = 0; i < 2; ++i) {
            inOrder.push_back(inOrder.size());
            byOctants.insert(byOctants.begin() + i, inOrder.back());
            for (Octree* pTree : {&divided, &whole, &undivided})
                pTree->addPoint(pTree, octant / 4 + 0.5 * i, octant / 2 % 2 + 0.5 * i, octant % 2 + 0.5 * i);
        }
    EXPECT_EQ(inSphere(divided, {1, 1, 1}, infinity), byOctants);
    EXPECT_EQ(inSphere(whole, {1, 1, 1}, infinity), inOrder);
    EXPECT_EQ(inSphere(undivided, {1, 1, 1}, infinity), inOrder);
    // Neighbouring doubles are divided as well.
    const FilledTree neighbours({{hardPoints::nudged(1, 1), 0, 0}, {1, 0, 0}}, 1, INT_MAX);
    EXPECT_EQ(inSphere(neighbours.tree, {1, 1, 1}, infinity), (std::vector<std::size_t>{1, 0}));

    const OctItem* const pItem = divided.getNearest(2, 2, 2);
    Rng rng(2);
    for (int i = 0; i < 5000; ++i) divided.addPoint(nullptr, 2, hardPoints::unit(rng), hardPoints::unit(rng));
    EXPECT_EQ(divided.getNearest(1.5, 1.5, 1.5), pItem) << "items stay where they are";
    EXPECT_TRUE(pItem->pObject == &divided && pItem->rank == 1 && pItem->x == 1.5);
}

TEST(Octree, RefusesWhatIsOutsideOrNoNumber) {
    const double least[] = {-largest, 0, 0}, most[] = {largest, 1, 0};
    Octree tree(least, most, 1);
    EXPECT_EQ(tree.getNearest(0, 0, 0), nullptr);
    EXPECT_TRUE(inSphere(tree, {0, 0, 0}, infinity).empty());
    CaptureOutput output;
    EXPECT_TRUE(tree.addPoint(nullptr, largest, 1, 0) && tree.addPoint(nullptr, -largest, 0, -0.0));
    EXPECT_EQ(output.out(), "");
    int numTold = 0;
    for (const Place& place :
         {Place{0, 1.5, 0}, {0, 0, 5e-324}, {noNumber, 0, 0}, {0, noNumber, 0}, {infinity, 0, 0}}) {
        EXPECT_FALSE(tree.addPoint(nullptr, place[0], place[1], place[2]));
        EXPECT_EQ(countOf(output.out(), "point outside of the box, nothing done"), ++numTold);
    }
    EXPECT_EQ(inSphere(tree, {0, 0, 0}, infinity).size(), 2U);
    for (const double r : {-1.0, noNumber, -infinity})
        EXPECT_TRUE(inSphere(tree, {largest, 1, 0}, r).empty());
    for (const double x : {noNumber, infinity}) {
        EXPECT_TRUE(inSphere(tree, {x, 0, 0}, infinity).empty());
        EXPECT_EQ(tree.getNearest(0, 0, x), nullptr);
    }

    const auto make = [&](double min, double max, int maxItemsPerLeaf, int maxDepth) {
        const double from[] = {0, min, 0}, to[] = {0, max, 0};
        Octree(from, to, maxItemsPerLeaf, maxDepth);
    };
    EXPECT_THROW(make(1, 0, 8, 20), NorvikException);
    EXPECT_THROW(make(0, noNumber, 8, 20), NorvikException);
    EXPECT_THROW(make(-infinity, 0, 8, 20), NorvikException);
    EXPECT_THROW(make(0, 0, 0, 20), NorvikException);
    EXPECT_THROW(make(0, 0, 8, -1), NorvikException);
    for (const char* told :
         {"min<=max", "isFinite(min) && isFinite(max)", "maxItemsPerLeaf>0", "maxDepth>=0"})
        EXPECT_TRUE(output.told(std::string("[ ") + told + " failed ]")) << told;
}
