#include "kelmar_locate2/RTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <limits>

#include "HC2.h"
#include "NorvikException.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "kelmar_locate2/GSS_HC2.h"

using namespace KELMAR_LOCATE2;
using hardPoints::Rng;
using KELMAR_NORVIK2D::NorvikException;
using KELMAR_TOOLS::GSS_HC2;

namespace {

using Boxes = std::vector<Bbox2>;

Bbox2 makeBox(const hardPoints::Kind& kind, Rng& rng) {
    const auto p = kind.make(rng), q = rng() % 3 == 0 ? p : kind.make(rng);
    return {std::min(p.x(), q.x()), std::min(p.y(), q.y()), std::max(p.x(), q.x()), std::max(p.y(), q.y())};
}

Boxes makeBoxes(const hardPoints::Kind& kind, std::size_t n, Rng& rng) {
    Boxes boxes;
    for (; n > 0; --n) boxes.push_back(makeBox(kind, rng));
    return boxes;
}

void addAll(RTree& tree, Boxes& boxes) {
    for (Bbox2& box : boxes) tree.addObject(&box, box.minX, box.minY, box.maxX, box.maxY);
}

bool meet(const Bbox2& a, const Bbox2& b) {
    return a.maxX >= b.minX && a.maxY >= b.minY && b.maxX >= a.minX && b.maxY >= a.minY;
}

/// The objects found, in order.
std::vector<const Bbox2*> query(RTree& tree, Bbox2 box) {
    Item before{};
    std::vector<Item*> found{&before};
    tree.getBBIntersectedItems(box, found);
    EXPECT_EQ(found.front(), &before) << "appended";
    std::vector<const Bbox2*> objects;
    for (auto it = found.begin() + 1; it != found.end(); ++it)
        objects.push_back(static_cast<const Bbox2*>((*it)->pObject));
    return objects;
}

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr Bbox2 everywhere{-infinity, -infinity, infinity, infinity};

/// How many nodes each level has, from the leaves up. Each level has all objects.
std::vector<std::size_t> shapeOf(const RTree& tree, std::size_t numObjects) {
    std::vector<std::size_t> shape;
    for (std::vector<const Node*> level{tree.getRoot()}, children; !level.empty(); level.swap(children)) {
        shape.insert(shape.begin(), level.size());
        children.clear();
        std::vector<Item*> found;
        for (const Node* pNode : level) {
            pNode->getIntersectedItems(found, everywhere);
            for (std::size_t i = 0; i < pNode->getNumberOfChildren(); ++i) {
                children.push_back(pNode->getChild(i));
                EXPECT_EQ(children.back()->getParent(), pNode);
            }
        }
        EXPECT_EQ(found.size(), numObjects);
    }
    return shape;
}

}  // namespace

TEST(RTree, FindsWhatMeetsABoxInHilbertOrder) {
    for (const hardPoints::Kind& kind : hardPoints::kinds)
        for (const std::size_t n : {1U, 2U, 17U, 300U}) {
            Rng rng(1);
            Boxes boxes = makeBoxes(kind, n, rng);
            RTree tree;
            addAll(tree, boxes);
            Bbox2 bounds;
            tree.getBounds(bounds.minX, bounds.minY, bounds.maxX, bounds.maxY);
            const std::vector<const Bbox2*> all = query(tree, bounds);
            ASSERT_EQ(all.size(), n) << kind;

            const GSS_HC2 curve(bounds.minX, bounds.minY, bounds.maxX, bounds.maxY, 30);
            std::vector<unsigned> keys;
            for (const Bbox2* p : all)
                keys.push_back(curve.getKey((p->minX + p->maxX) * 0.5, (p->minY + p->maxY) * 0.5));
            EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end())) << kind;
            for (std::size_t i = 0; i < 100; ++i) {
                Bbox2 box = i % 2 == 0 ? makeBox(kind, rng) : boxes[i % n];
                if (i % 2 == 1) box = {box.maxX, box.maxY, box.maxX, box.maxY};  // touched in a corner
                std::vector<const Bbox2*> expected;
                std::copy_if(all.begin(), all.end(), std::back_inserter(expected),
                             [&](const Bbox2* pBox) { return meet(*pBox, box); });
                ASSERT_EQ(query(tree, box), expected) << kind;
            }
        }
}

TEST(RTree, NodesArePackedFromTheLeavesUp) {
    // Behind a number of nodes that is divisible by eight there is an empty one above them.
    const std::pair<std::size_t, std::vector<std::size_t>> shapes[] = {
        {1, {1, 1}},     {2, {1, 1}},          {9, {5, 1}},         {16, {8, 2, 1}},
        {17, {9, 2, 1}}, {112, {56, 8, 2, 1}}, {128, {64, 9, 2, 1}}};
    for (const auto& [n, shape] : shapes) {
        Rng rng(2);
        Boxes boxes = makeBoxes(hardPoints::kinds[0], n, rng);
        RTree tree;
        addAll(tree, boxes);
        tree.finish();
        EXPECT_EQ(shapeOf(tree, n), shape) << n;
    }
}

TEST(RTree, IsBuiltByTheFirstQuestionOnce) {
    Boxes boxes{{0, 0, 1, 1}, {2, 2, 3, 3}};
    RTree tree;
    EXPECT_TRUE(query(tree, {0, 0, 9, 9}).empty());
    tree.addObject(&boxes[0], 0, 0, 1, 1);
    EXPECT_EQ(query(tree, {1, 1, 9, 9}).size(), 1U);
    tree.addObject(&boxes[1], 2, 2, 3, 3);
    tree.finish();
    EXPECT_EQ(query(tree, {0, 0, 9, 9}).size(), 1U);

    CaptureOutput output;
    EXPECT_THROW(tree.addObject(nullptr, 1, 0, 0, 1), NorvikException);
    EXPECT_THROW(tree.addObject(nullptr, 0, 1, 1, 0), NorvikException);
    EXPECT_TRUE(output.told("[ xmin<=xmax failed ]") && output.told("[ ymin<=ymax failed ]"));
}

TEST(HilbertKeys, OfTheTreeAreThoseOfTheTriangulation) {
    Rng rng(3);
    for (unsigned bitLength = 2; bitLength <= 32; bitLength += 2)
        for (const double maxX : {3.0, -1.0}) {
            const KELMAR_NORVIK2D::HC2 expected(-1, -2, maxX, 3, bitLength);
            GSS_HC2 keys;
            keys.setParams(-1, -2, maxX, 3, bitLength);
            for (int i = 0; i < 200; ++i) {
                const KELMAR_NORVIK2D::Point2 p(5.0 * hardPoints::around0(rng),
                                                hardPoints::below(rng, 7) - 2);
                ASSERT_EQ(keys.getKey(p.x(), p.y()), expected.iReset(p));
            }
        }
    const auto toStandardError = [](const auto& action) {
        std::cout.rdbuf(std::cerr.rdbuf());
        action();
    };
    const char* const told = "GSS_HC2, invalid parameters";
    for (const unsigned bitLength : {31U, 34U}) {
        const auto make = [&] { GSS_HC2(0, 0, 1, 1, bitLength); };
        EXPECT_EXIT(toStandardError(make), ::testing::ExitedWithCode(1), told);
        GSS_HC2 curve;
        curve.setParams(0, 0, 1, 1, bitLength);  // what is tested is the number before
        const auto setParamsAgain = [&] { curve.setParams(0, 0, 1, 1, 30); };
        EXPECT_EXIT(toStandardError(setParamsAgain), ::testing::ExitedWithCode(1), told);
    }
}
