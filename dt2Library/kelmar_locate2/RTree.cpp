#include "kelmar_locate2/RTree.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "PackedTree.h"
#include "doublePair.h"
#include "require.h"
#include "roundingMode.h"

namespace KELMAR_LOCATE2 {

using KELMAR_NORVIK2D::bitsOf;
using KELMAR_NORVIK2D::DoublePair;
using KELMAR_NORVIK2D::require;
using KELMAR_NORVIK2D::RoundToNearest;

static_assert(sizeof(Node) == 64, "a node fills a cache line");

/// The plane, for the tree.
struct Plane {
    using Box = Bbox2;
    using Content = TempContent;
    using Item = KELMAR_LOCATE2::Item;
    using Node = KELMAR_LOCATE2::Node;
    using Coordinates = std::array<double, 2>;

    static constexpr unsigned dimension = 2;
    // Such that a block has a hundred million bytes at most.
    static constexpr int maxItemsOfBlock = 2500000, maxNodesOfBlock = 1136363;

    static Coordinates least(const Box& box) { return {box.minX, box.minY}; }
    static Coordinates greatest(const Box& box) { return {box.maxX, box.maxY}; }
    static Coordinates center(const Content& content) {
        return {(content.minX + content.maxX) * 0.5, (content.minY + content.maxY) * 0.5};
    }

    template <class Record>
    static Box boxOf(const Record& record) {
        return {record.minX, record.minY, record.maxX, record.maxY};
    }
    static Item itemOf(const Content& content) {
        return {content.pObject, content.minX, content.minY, content.maxX, content.maxY};
    }

    static void grow(Box& box, const Box& other) {
        box.minX = std::min(box.minX, other.minX);
        box.minY = std::min(box.minY, other.minY);
        box.maxX = std::max(box.maxX, other.maxX);
        box.maxY = std::max(box.maxY, other.maxY);
    }

    /// Whether the closed boxes have a point in common: without branches, for there is no telling.
    static bool meet(const Item& item, const Box& box) {
        const unsigned begins =
            bitsOf(pairAt(item, offsetof(Item, minX)) <= pairAt(box, offsetof(Box, maxX)));
        const unsigned ends = bitsOf(pairAt(box, offsetof(Box, minX)) <= pairAt(item, offsetof(Item, maxX)));
        return (begins & ends) == 3U;
    }

private:
    /// Of one of the records, whose coordinates lie in this order: least and greatest x and y.
    template <class Record>
    static DoublePair pairAt(const Record& record, std::size_t offset) {
        static_assert(offsetof(Record, minY) == offsetof(Record, minX) + sizeof(double) &&
                      offsetof(Record, maxY) == offsetof(Record, maxX) + sizeof(double));
        DoublePair xy;
        std::memcpy(&xy, reinterpret_cast<const char*>(&record) + offset, sizeof(xy));
        return xy;
    }
};

using Tree = KELMAR_TOOLS::PackedTree<Plane>;

void Node::addChild(Node* pChild) { Tree::addChild(*this, *pChild); }

void Node::getIntersectedItems(std::vector<Item*>& out, const Bbox2& box) const {
    RoundToNearest nearest;
    pTree->collect(*this, box, out);
}

RTree::RTree() : pTree(std::make_unique<Tree>()) {}
RTree::~RTree() = default;

void RTree::reserve(std::size_t numObjects) { pTree->reserve(numObjects); }

void RTree::addObject(void* pObject, double xmin, double ymin, double xmax, double ymax) {
    RoundToNearest nearest;
    require(xmin <= xmax, "xmin<=xmax");
    require(ymin <= ymax, "ymin<=ymax");
    pTree->addObject({pObject, xmin, ymin, xmax, ymax, 0});
}

void RTree::getBounds(double& minX, double& minY, double& maxX, double& maxY) const {
    const Bbox2& bounds = pTree->getBounds();
    minX = bounds.minX;
    minY = bounds.minY;
    maxX = bounds.maxX;
    maxY = bounds.maxY;
}

void RTree::finish() {
    RoundToNearest nearest;
    pTree->finish();
}

void RTree::getBBIntersectedItems(const Bbox2& box, std::vector<Item*>& out) {
    RoundToNearest nearest;
    pTree->finish();
    if (pTree->getRoot() != nullptr) pTree->collect(*pTree->getRoot(), box, out);
}

const Node* RTree::getRoot() const noexcept { return pTree->getRoot(); }

}  // namespace KELMAR_LOCATE2
