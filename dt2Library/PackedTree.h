#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "SimplePool.h"
#include "hilbertCurve.h"
#include "radixSort.h"
#include "require.h"

namespace KELMAR_TOOLS {

struct PoolTexts {
    static constexpr const char* outOfMemory = "SimplePool::alloc(..), ERROR: Out of memory, sorry";
};

using KELMAR_NORVIK2D::radixSort;
using KELMAR_NORVIK2D::require;

template <class T>
using SimplePool = KELMAR_NORVIK2D::SimplePool<T, PoolTexts>;

/// The tree behind RTree: objects with boxes, sorted along a Hilbert curve and packed from the leaves up.
///
/// Laws:
///  1. Items lie in one stretch of memory in the order of the curve; a node's items are a stretch of these.
///  2. Nodes lie in one stretch of memory too, level by level from the leaves up; a node's children are neighbours.
///  3. A level is complete but for its end: leaves have two items, inner nodes eight children. A level whose nodes are filled by
///     the level below gets one more, empty node.
///
/// `Space` is a dimension: its records, and what their coordinates are.
template <class Space>
class PackedTree {
public:
    using Box = typename Space::Box;
    using Content = typename Space::Content;
    using Item = typename Space::Item;
    using Node = typename Space::Node;

    void reserve(std::size_t numObjects) {
        // At least doubled, so that many small additions don't copy all each time.
        if (pRoot == nullptr && numObjects > vContents.capacity())
            vContents.reserve(std::max(numObjects, 2 * vContents.capacity()));
    }
    /// The box isn't the wrong way round. Once the tree is built only the bounds grow.
    void addObject(const Content& content) {
        Space::grow(bounds, Space::boxOf(content));
        if (pRoot == nullptr) vContents.push_back(content);
    }
    const Box& getBounds() const noexcept { return bounds; }
    const Node* getRoot() const noexcept { return pRoot; }

    /// Builds the tree if there is none yet, and anything to build it of.
    void finish() {
        if (pRoot != nullptr || vContents.empty()) return;
        packItems();
        packNodes();
    }

    static void addChild(Node& node, Node& child) {
        require(node.numChildren < nodeCapacity, "numChildren<8");
        if (node.numChildren == 0) node.pFirstChild = &child;
        require(&child == node.pFirstChild + node.numChildren, "pChild==pFirstChild+numChildren");
        ++node.numChildren;
        child.distanceToParent = static_cast<int>(&node - &child);
        Space::grow(node.box, child.box);
        if (numItems(child) == 0) return;
        if (numItems(node) == 0) node.firstItem = child.firstItem;
        node.lastItem = child.lastItem;
        node.pItems = child.pItems;
    }

    /// Appends the items below a node whose boxes meet the given one, in the order of the curve.
    static void collect(const Node& node, const Box& box, std::vector<Item*>& out) {
        // The items themselves are tested faster than the boxes of leaves and then the items: they wait for memory once.
        if (numItems(node) <= leafCapacity * nodeCapacity) return collectOfFew(node, box, out);
        unsigned hits = 0;
        for (int i = 0; i < node.numChildren; ++i)
            hits |= static_cast<unsigned>(Space::meet(node.pFirstChild[i].box, box)) << i;
        forEachBit(hits, [&](unsigned i) { prefetchBelow(node.pFirstChild[i]); });
        forEachBit(hits, [&](unsigned i) { collect(node.pFirstChild[i], box, out); });
    }

private:
    static constexpr int leafCapacity = 2, nodeCapacity = 8;
    static constexpr unsigned keyBits = 30;

    /// A key, and the place of its object.
    struct KeyPlace {
        std::uint32_t key, place;
    };

    static int numItems(const Node& node) noexcept { return node.lastItem - node.firstItem; }

    template <class Visit>
    static void forEachBit(unsigned bits, Visit visit) {
        for (; bits != 0; bits &= bits - 1) visit(static_cast<unsigned>(__builtin_ctz(bits)));
    }

    static void collectOfFew(const Node& node, const Box& box, std::vector<Item*>& out) {
        Item* const pFirst = node.pItems + node.firstItem;
        unsigned hits = 0;
        for (int i = 0; i < numItems(node); ++i)
            hits |= static_cast<unsigned>(Space::meet(pFirst[i], box)) << i;
        forEachBit(hits, [&](unsigned i) { out.push_back(pFirst + i); });
    }

    /// Asks for what a question to the node will read.
    static void prefetchBelow(const Node& node) noexcept {
        if (numItems(node) <= leafCapacity * nodeCapacity)
            prefetch(node.pItems + node.firstItem, leafCapacity * nodeCapacity);
        else
            prefetch(node.pFirstChild, nodeCapacity);
    }
    template <class Record>
    static void prefetch(const Record* pRecords, std::size_t n) noexcept {
        constexpr std::size_t cacheLine = 64;
        const char* const pBytes = reinterpret_cast<const char*>(pRecords);
        for (std::size_t i = 0; i < n * sizeof(Record); i += cacheLine) __builtin_prefetch(pBytes + i);
    }

    void packItems() {
        const auto grid =
            KeyGrid<Space::dimension>::over(Space::least(bounds), Space::greatest(bounds), keyBits);
        std::vector<KeyPlace> vOrder, vScratch(vContents.size());
        vOrder.reserve(vContents.size());
        for (Content& content : vContents) {
            content.key = grid.keyOf(Space::center(content));
            vOrder.push_back({content.key, static_cast<std::uint32_t>(vOrder.size())});
        }
        radixSort(std::span(vOrder), std::span(vScratch), [](const KeyPlace& pair) { return pair.key; });

        // One block for all, for law 1.
        items.init(static_cast<int>(vOrder.size()), Space::maxItemsOfBlock);
        constexpr std::size_t distance = 12;
        for (std::size_t i = 0; i < vOrder.size(); ++i) {
            if (i + distance < vOrder.size()) __builtin_prefetch(&vContents[vOrder[i + distance].place]);
            *items.get() = Space::itemOf(vContents[vOrder[i].place]);
        }
        vContents = {};
    }

    void packNodes() {
        const auto n = static_cast<int>(items.numHandedOut());
        int numNodes = (n + leafCapacity - 1) / leafCapacity;
        int numInLevel = numNodes;
        do numNodes += numInLevel = numInLevel / nodeCapacity + 1;
        while (numInLevel > 1);
        nodes.init(numNodes, Space::maxNodesOfBlock);

        std::int64_t level = 0;
        for (int i = 0; i < n; i += leafCapacity) makeLeaf(i, std::min(i + leafCapacity, n));
        do level = packLevel(level);
        while (nodes.numHandedOut() - level > 1);
        pRoot = nodes.at(level);
    }

    Node* newNode() {
        Node* const pNode = nodes.get();
        *pNode = Node();
        return pNode;
    }

    void makeLeaf(int firstItem, int lastItem) {
        Node* const pLeaf = newNode();
        pLeaf->pItems = items.at(0);
        pLeaf->firstItem = firstItem;
        pLeaf->lastItem = lastItem;
        for (int i = firstItem; i < lastItem; ++i) Space::grow(pLeaf->box, Space::boxOf(pLeaf->pItems[i]));
    }

    /// Puts a level on top of the last one, which begins at the node given; returns where the new one begins.
    std::int64_t packLevel(std::int64_t level) {
        const std::int64_t nextLevel = nodes.numHandedOut();
        Node* const pLevel = nodes.at(level);
        Node* pParent = newNode();
        for (std::int64_t i = 0; i < nextLevel - level; ++i) {
            addChild(*pParent, pLevel[i]);
            if (pParent->numChildren == nodeCapacity) pParent = newNode();
        }
        return nextLevel;
    }

    std::vector<Content> vContents;  ///< until the tree is built
    Box bounds;
    SimplePool<Item> items;
    SimplePool<Node> nodes;
    Node* pRoot = nullptr;
};

}  // namespace KELMAR_TOOLS
