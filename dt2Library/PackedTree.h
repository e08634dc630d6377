#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <vector>

#include "BoxBlock.h"
#include "equalKeys.h"
#include "hilbertCurve.h"
#include "radixSort.h"
#include "require.h"
#include "toolsPool.h"

namespace KELMAR_TOOLS {

using KELMAR_NORVIK2D::radixSort;
using KELMAR_NORVIK2D::require;

/// The tree behind RTree: objects with boxes, sorted along a Hilbert curve and packed from the leaves up.
///
/// Laws:
///  1. Items lie in one stretch of memory in the order of the curve; a node's items are a stretch of these.
///  2. Nodes lie in one stretch of memory too, level by level from the leaves up; a node's children are neighbours.
///  3. A level is complete but for its end: leaves have two items, inner nodes eight children. A level whose nodes are filled by
///     the level below gets one more, empty node.
///  4. Of the nodes above the lowest inner ones, each has a block with the boxes of its children.
///
/// Nodes tell the structure, blocks answer: a question reads blocks and items, and no node. By law 3 the places of nodes in
/// their levels tell where their children and items are.
///
/// `Space` is a dimension: its records, and what their coordinates are (BoxRecords.h).
template <class Space>
class PackedTree {
public:
    using Box = typename Space::Box;
    using Content = typename Space::Content;
    using Item = typename Space::Item;
    using Node = typename Space::Node;

    PackedTree() = default;
    PackedTree(const PackedTree&) = delete;
    PackedTree& operator=(const PackedTree&) = delete;

    void reserve(std::size_t numObjects) {
        // At least doubled, so that many small additions don't copy all each time.
        if (pRoot == nullptr && numObjects > vContents.capacity())
            vContents.reserve(std::max(numObjects, 2 * vContents.capacity()));
    }
    /// The box, that of the content, isn't the wrong way round. Once the tree is built only the bounds grow.
    void addObject(const Content& content, const Box& box) {
        // Not from the content: that can be stored right from registers.
        Space::grow(bounds, box);
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
    }

    /// Builds the tree first, if need be, and asks all of it.
    void query(const Box& box, std::vector<Item*>& out) {
        finish();
        if (pRoot != nullptr) collect(*pRoot, box, out);
    }

    /// Appends the items below a node whose boxes meet the given one, in the order of the curve.
    void collect(const Node& node, const Box& box, std::vector<Item*>& out) const {
        if (numItems(node) <= itemsOfLowest)
            return collectOfFew(pItems + node.firstItem, pItems + node.lastItem, box, out);
        std::size_t level = vUpperLevels.size() - 1;
        while (&node < vUpperLevels[level].pFirst) --level;
        const Query query(cells.cellsOf(Space::least(box)), cells.cellsOf(Space::greatest(box)));
        search(level, static_cast<std::size_t>(&node - vUpperLevels[level].pFirst), query, box, out);
    }

private:
    static constexpr int leafCapacity = 2, nodeCapacity = 8;
    static constexpr int itemsOfLowest = leafCapacity * nodeCapacity;  ///< below a lowest inner node
    static constexpr unsigned keyBits = 30;
    /// In the plane such that a block has a hundred million bytes at most.
    static constexpr int maxItemsOfBlock = 2500000, maxNodesOfBlock = 1136363;

    using Block = BoxBlock<Space::dimension>;
    using Query = typename Block::Query;
    static_assert(Block::size == nodeCapacity);

    /// A level of nodes above the lowest inner ones, and a block for each.
    struct Level {
        const Node* pFirst;
        std::vector<Block> vBlocks;
    };

    static int numItems(const Node& node) noexcept { return node.lastItem - node.firstItem; }

    void search(std::size_t level, std::size_t place, const Query& query, const Box& box,
                std::vector<Item*>& out) const {
        const unsigned hits = vUpperLevels[level].vBlocks[place].hits(query);
        const std::size_t firstChild = place * nodeCapacity;
        // What is read next is asked for first, all at once.
        for (unsigned bits = hits; bits != 0; bits &= bits - 1) {
            const std::size_t child = firstChild + static_cast<unsigned>(std::countr_zero(bits));
            if (level == 0)
                prefetch(pItems + child * itemsOfLowest, itemsOfLowest);
            else
                prefetch(&vUpperLevels[level - 1].vBlocks[child], 1);
        }
        for (unsigned bits = hits; bits != 0; bits &= bits - 1) {
            const std::size_t child = firstChild + static_cast<unsigned>(std::countr_zero(bits));
            if (level == 0)
                collectOfLowest(child, box, out);
            else
                search(level - 1, child, query, box, out);
        }
    }

    /// The leaves aren't asked for their boxes: the items are tested in less time than it takes to wait for both.
    void collectOfLowest(std::size_t place, const Box& box, std::vector<Item*>& out) const {
        Item* const pFirst = pItems + place * itemsOfLowest;
        collectOfFew(pFirst, std::min(pFirst + itemsOfLowest, pItems + items.numHandedOut()), box, out);
    }

    /// Of at most `itemsOfLowest` items.
    static void collectOfFew(Item* pFirst, const Item* pLast, const Box& box, std::vector<Item*>& out) {
        unsigned hits = 0;
        for (int i = 0; i < pLast - pFirst; ++i)
            hits |= static_cast<unsigned>(Space::meet(pFirst[i], box)) << i;
        for (; hits != 0; hits &= hits - 1) out.push_back(pFirst + std::countr_zero(hits));
    }

    /// Inline by force: to GCC a function that does nothing else has no effect, and it keeps no call of it.
    template <class Record>
    [[gnu::always_inline]] static void prefetch(const Record* pRecords, std::size_t n) noexcept {
        constexpr std::size_t cacheLine = 64;
        const char* const pBytes = reinterpret_cast<const char*>(pRecords);
        for (std::size_t i = 0; i < n * sizeof(Record); i += cacheLine) __builtin_prefetch(pBytes + i);
    }

    void packItems() {
        const std::vector<KeyIndex> vOrder = sortedContents();
        // One block of memory for all, for law 1.
        items.init(static_cast<int>(vOrder.size()), maxItemsOfBlock);
        constexpr std::size_t distance = 12;
        for (std::size_t i = 0; i < vOrder.size(); ++i) {
            if (i + distance < vOrder.size()) __builtin_prefetch(&vContents[vOrder[i + distance].second]);
            *items.get() = Space::itemOf(vContents[vOrder[i].second]);
        }
        pItems = items.at(0);
        vContents = {};
    }

    /// The order of equal keys is free: what lies in one cell of the curve's grid, as a cluster far from everything else does, is
    /// ordered by finer ones.
    std::vector<KeyIndex> sortedContents() {
        const auto grid =
            KeyGrid<Space::dimension>::over(Space::least(bounds), Space::greatest(bounds), keyBits);
        std::vector<KeyIndex> vOrder, vScratch(vContents.size());
        vOrder.reserve(vContents.size());
        for (Content& content : vContents) {
            content.key = grid.keyOf(Space::center(content));
            vOrder.emplace_back(content.key, static_cast<std::uint32_t>(vOrder.size()));
        }
        radixSort(std::span(vOrder), std::span(vScratch), [](const KeyIndex& pair) { return pair.first; });
        const auto centerOf = [&](std::uint32_t index) { return Space::center(vContents[index]); };
        EqualKeys<Space::dimension, decltype(centerOf)>(centerOf).order(vOrder, itemsOfLowest);
        return vOrder;
    }

    void packNodes() {
        const auto n = static_cast<int>(items.numHandedOut());
        cells = CellGrid<Space::dimension>(Space::least(bounds), Space::greatest(bounds));
        nodes.init(numNodesFor(n), maxNodesOfBlock);
        for (int i = 0; i < n; i += leafCapacity) makeLeaf(i, std::min(i + leafCapacity, n));
        // Also a single leaf has an inner node above it.
        std::int64_t level = packLevel(0);
        while (nodes.numHandedOut() - level > 1) {
            level = packLevel(level);
            makeBlocks(level);
        }
        pRoot = nodes.at(level);
    }

    static int numNodesFor(int numItems) noexcept {
        int numInLevel = (numItems + leafCapacity - 1) / leafCapacity;
        int numNodes = numInLevel;
        do {
            numInLevel = numInLevel / nodeCapacity + 1;
            numNodes += numInLevel;
        } while (numInLevel > 1);
        return numNodes;
    }

    Node* newNode() { return new (nodes.get()) Node(this); }

    void makeLeaf(int firstItem, int lastItem) {
        Node* const pLeaf = newNode();
        pLeaf->firstItem = firstItem;
        pLeaf->lastItem = lastItem;
        for (int i = firstItem; i < lastItem; ++i) Space::grow(pLeaf->box, pItems[i]);
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

    /// Of the last level, which begins at the node given.
    void makeBlocks(std::int64_t level) {
        const Node* const pFirst = nodes.at(level);
        const auto numInLevel = static_cast<std::size_t>(nodes.numHandedOut() - level);
        vUpperLevels.push_back({pFirst, std::vector<Block>(numInLevel)});
        for (std::size_t i = 0; i < numInLevel; ++i)
            for (std::size_t child = 0; child < pFirst[i].getNumberOfChildren(); ++child) {
                const Node& node = *pFirst[i].getChild(child);
                if (numItems(node) == 0) continue;  // meets nothing, however large
                vUpperLevels.back().vBlocks[i].set(child, cells.cellsOf(Space::least(node.box)),
                                                   cells.cellsOf(Space::greatest(node.box)));
            }
    }

    std::vector<Content> vContents;  ///< until the tree is built
    Box bounds;
    CellGrid<Space::dimension> cells;  ///< over the bounds when the tree is built
    SimplePool<Item> items;
    Item* pItems = nullptr;
    SimplePool<Node> nodes;
    Node* pRoot = nullptr;
    std::vector<Level> vUpperLevels;  ///< from below
};

}  // namespace KELMAR_TOOLS
