#include "kelmar_locate2/RTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <numeric>

#include "HC2.h"
#include "NorvikException.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "kelmar_locate2/GSS_HC2.h"
#include "kelmar_locate3/GSS_HC3.h"
#include "kelmar_locate3/RTree.h"

using hardPoints::Rng;
using KELMAR_NORVIK2D::NorvikException;
using KELMAR_TOOLS::GSS_HC2;
using KELMAR_TOOLS::GSS_HC3;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct InPlane {
    static constexpr std::size_t dimension = 2;
    using Tree = KELMAR_LOCATE2::RTree;
    using Node = KELMAR_LOCATE2::Node;
    using Item = KELMAR_LOCATE2::Item;
    using Box = KELMAR_LOCATE2::Bbox2;
    using Curve = GSS_HC2;
};

struct InSpace {
    static constexpr std::size_t dimension = 3;
    using Tree = KELMAR_LOCATE3::RTree;
    using Node = KELMAR_LOCATE3::Node;
    using Item = KELMAR_LOCATE3::Item;
    using Box = KELMAR_LOCATE3::Bbox3;
    using Curve = GSS_HC3;
};

}  // namespace

/// The laws of both trees.
template <class Dimension>
class RTree : public ::testing::Test {
protected:
    using Tree = typename Dimension::Tree;
    using Node = typename Dimension::Node;
    using Item = typename Dimension::Item;
    static constexpr std::size_t dimension = Dimension::dimension;

    /// The least coordinates, then the greatest ones.
    using Box = std::array<double, 2 * dimension>;
    using Boxes = std::vector<Box>;

    static Box filled(double least, double greatest) {
        Box box;
        std::fill_n(box.begin(), dimension, least);
        std::fill_n(box.begin() + dimension, dimension, greatest);
        return box;
    }
    static Box makeBox(const hardPoints::Kind& kind, Rng& rng) {
        const bool bPoint = rng() % 3 == 0;
        Box box;
        for (std::size_t axis = 0; axis < dimension; axis += 2) {
            const auto p = kind.make(rng), q = bPoint ? p : kind.make(rng);
            const double ends[2][2] = {{p.x(), q.x()}, {p.y(), q.y()}};
            for (std::size_t i = axis; i < std::min(axis + 2, dimension); ++i)
                std::tie(box[i], box[dimension + i]) = std::minmax(ends[i - axis][0], ends[i - axis][1]);
        }
        return box;
    }
    static Boxes makeBoxes(const hardPoints::Kind& kind, std::size_t n, Rng& rng) {
        Boxes boxes;
        for (; n > 0; --n) boxes.push_back(makeBox(kind, rng));
        return boxes;
    }

    static void add(Tree& tree, Box& box) {
        std::apply([&](auto... corners) { tree.addObject(&box, corners...); }, box);
    }
    static void addAll(Tree& tree, Boxes& boxes) {
        for (Box& box : boxes) add(tree, box);
    }

    static bool meet(const Box& a, const Box& b) {
        bool bMeet = true;
        for (std::size_t i = 0; i < dimension; ++i)
            bMeet = bMeet && a[dimension + i] >= b[i] && b[dimension + i] >= a[i];
        return bMeet;
    }
    static unsigned keyOfCenter(const typename Dimension::Curve& curve, const Box& box) {
        std::array<double, dimension> center;
        for (std::size_t i = 0; i < dimension; ++i) center[i] = (box[i] + box[dimension + i]) * 0.5;
        return std::apply([&](auto... coordinates) { return curve.getKey(coordinates...); }, center);
    }

    /// The objects found, in order.
    static std::vector<const Box*> query(Tree& tree, const Box& box) {
        Item before{};
        std::vector<Item*> found{&before};
        tree.getBBIntersectedItems(std::bit_cast<typename Dimension::Box>(box), found);
        EXPECT_EQ(found.front(), &before) << "appended";
        std::vector<const Box*> objects;
        for (auto it = found.begin() + 1; it != found.end(); ++it)
            objects.push_back(static_cast<const Box*>((*it)->pObject));
        return objects;
    }

    /// How many nodes each level has, from the leaves up. Each level has all objects.
    static std::vector<std::size_t> shapeOf(const Tree& tree, std::size_t numObjects) {
        const auto everywhere = std::bit_cast<typename Dimension::Box>(filled(-infinity, infinity));
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
};

using BothDimensions = ::testing::Types<InPlane, InSpace>;
TYPED_TEST_SUITE(RTree, BothDimensions);

TYPED_TEST(RTree, FindsWhatMeetsABoxInHilbertOrder) {
    using Box = typename TestFixture::Box;
    for (const hardPoints::Kind& kind : hardPoints::kinds)
        for (const std::size_t n : {1U, 2U, 17U, 300U}) {
            Rng rng(1);
            std::vector<Box> boxes = this->makeBoxes(kind, n, rng);
            typename TypeParam::Tree tree;
            this->addAll(tree, boxes);
            Box bounds;
            std::apply([&](auto&... corners) { tree.getBounds(corners...); }, bounds);
            const std::vector<const Box*> all = this->query(tree, bounds);
            ASSERT_EQ(all.size(), n) << kind;

            const auto curve =
                std::apply([](auto... corners) { return typename TypeParam::Curve(corners..., 30); }, bounds);
            std::vector<unsigned> keys;
            for (const Box* pBox : all) keys.push_back(this->keyOfCenter(curve, *pBox));
            EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end())) << kind;
            for (std::size_t i = 0; i < 100; ++i) {
                Box box = i % 2 == 0 ? this->makeBox(kind, rng) : boxes[i % n];
                if (i % 2 == 1)  // touched in a corner
                    std::copy_n(box.begin() + TypeParam::dimension, TypeParam::dimension, box.begin());
                std::vector<const Box*> expected;
                std::copy_if(all.begin(), all.end(), std::back_inserter(expected),
                             [&](const Box* pBox) { return this->meet(*pBox, box); });
                ASSERT_EQ(this->query(tree, box), expected) << kind;
            }
        }
}

TYPED_TEST(RTree, NodesArePackedFromTheLeavesUp) {
    // Behind a number of nodes that is divisible by eight there is an empty one above them.
    const std::pair<std::size_t, std::vector<std::size_t>> shapes[] = {
        {1, {1, 1}},     {2, {1, 1}},          {9, {5, 1}},         {16, {8, 2, 1}},
        {17, {9, 2, 1}}, {112, {56, 8, 2, 1}}, {128, {64, 9, 2, 1}}};
    for (const auto& [n, shape] : shapes) {
        Rng rng(2);
        auto boxes = this->makeBoxes(hardPoints::kinds[0], n, rng);
        typename TypeParam::Tree tree;
        this->addAll(tree, boxes);
        tree.finish();
        EXPECT_EQ(this->shapeOf(tree, n), shape) << n;
    }
}

TYPED_TEST(RTree, IsBuiltByTheFirstQuestionOnce) {
    auto near = this->filled(0, 1), far = this->filled(2, 3);
    typename TypeParam::Tree tree;
    EXPECT_TRUE(this->query(tree, this->filled(0, 9)).empty());
    this->add(tree, near);
    EXPECT_EQ(this->query(tree, this->filled(1, 9)).size(), 1U);
    this->add(tree, far);
    tree.finish();
    EXPECT_EQ(this->query(tree, this->filled(0, 9)).size(), 1U);

    CaptureOutput output;
    for (std::size_t axis = 0; axis < TypeParam::dimension; ++axis) {
        auto wrong = near;
        wrong[axis] = 2;
        EXPECT_THROW(this->add(tree, wrong), NorvikException);
        const std::string name(1, "xyz"[axis]);
        EXPECT_TRUE(output.told("[ " + name + "min<=" + name + "max failed ]"));
    }
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
}

TEST(HilbertKeys, InSpaceVisitEachCellOnceAndOnlyStepToNeighbours) {
    const GSS_HC3 curve(-8, 16, 0, 0, 32, 2, 9);
    std::vector<std::array<int, 3>> cellOfKey(512, {-99, -99, -99});
    for (int cell = 0; cell < 512; ++cell) {
        const int x = cell / 64, y = cell / 8 % 8, z = cell % 8;
        cellOfKey.at(curve.getKey(x - 8 + 0.5, 2 * y + 17, 0.25 * z)) = {x, y, z};
    }
    for (std::size_t key = 1; key < cellOfKey.size(); ++key) {
        int numSteps = 0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            numSteps += std::abs(cellOfKey[key][axis] - cellOfKey[key - 1][axis]);
        EXPECT_EQ(numSteps, 1) << key;
    }
}

TEST(HilbertKeys, InSpaceAreTheSameForEachPlaceOnAnAxisWithoutExtent) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        std::array<double, 3> most{8, 8, 8}, place{3, 5, 6};
        most[axis] = 0;
        const GSS_HC3 flat(0, 0, 0, most[0], most[1], most[2], 30), full(0, 0, 0, 8, 8, 8, 30);
        const unsigned key = flat.getKey(place[0], place[1], place[2]);
        place[axis] = 0;
        EXPECT_EQ(flat.getKey(place[0], place[1], place[2]), key);
        EXPECT_EQ(full.getKey(place[0], place[1], place[2]), key);
    }
}

TEST(HilbertKeys, OfWrongLengthsEndTheProcess) {
    const auto end = [](const auto& action, const char* told) {
        const auto toStandardError = [&] {
            std::cout.rdbuf(std::cerr.rdbuf());
            action();
        };
        EXPECT_EXIT(toStandardError(), ::testing::ExitedWithCode(1), told);
    };
    const std::pair<unsigned, unsigned> wrongLengths[] = {{31, 29}, {34, 33}};
    for (const auto& [length2, length3] : wrongLengths) {
        end([n = length2] { GSS_HC2(0, 0, 1, 1, n); }, "GSS_HC2, invalid parameters");
        end([n = length3] { GSS_HC3(0, 0, 0, 1, 1, 1, n); }, "GSS_HC3, invalid parameters");
        // What is tested is the number before.
        GSS_HC2 curve2;
        curve2.setParams(0, 0, 1, 1, length2);
        end([&] { curve2.setParams(0, 0, 1, 1, 30); }, "GSS_HC2, invalid parameters");
        GSS_HC3 curve3;
        curve3.setParams(0, 0, 0, 1, 1, 1, length3);
        end([&] { curve3.setParams(0, 0, 0, 1, 1, 1, 30); }, "GSS_HC3, invalid parameters");
    }
}
