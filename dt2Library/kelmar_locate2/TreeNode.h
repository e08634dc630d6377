#pragma once

#include <cstddef>

namespace KELMAR_TOOLS {

template <class Space>
class PackedTree;

/// A node of a tree of boxes, in the plane (KELMAR_LOCATE2::Node) or in space (KELMAR_LOCATE3::Node): a leaf has up to two items,
/// an inner node up to eight children. Nodes belong to their tree, which alone makes them.
template <class Node, class Box, class Space>
class TreeNode {
public:
    /// The half-open range of items that an inner node has.
    static constexpr int noItems = 2147483647;

    TreeNode(const TreeNode&) = delete;
    TreeNode& operator=(const TreeNode&) = delete;

    /// Without children; an inner node that got none, too.
    bool isLeaf() const noexcept { return numChildren == 0; }
    std::size_t getNumberOfChildren() const noexcept { return static_cast<std::size_t>(numChildren); }
    const Node* getChild(std::size_t i) const noexcept { return pFirstChild + i; }
    /// Null at the top.
    const Node* getParent() const noexcept {
        return distanceToParent == 0 ? nullptr : static_cast<const Node*>(this) + distanceToParent;
    }
    /// The items of a leaf: the first one's place in the order of the curve, and the place behind the last one.
    int getFirstItem() const noexcept { return hasItems() ? firstItem : noItems; }
    int getLastItem() const noexcept { return hasItems() ? lastItem : noItems; }
    /// The tight box of all items below, empty if there are none.
    const Box& getBox() const noexcept { return box; }

private:
    friend Node;
    friend PackedTree<Space>;

    explicit TreeNode(const PackedTree<Space>* pTree_) noexcept : pTree(pTree_) {}

    bool hasItems() const noexcept { return isLeaf() && firstItem != lastItem; }

    Box box;
    const PackedTree<Space>* pTree;
    Node* pFirstChild = nullptr;
    int firstItem = 0;  ///< of an inner node, too: of all those below
    int lastItem = 0;
    int distanceToParent = 0;  ///< in nodes
    int numChildren = 0;
};

}  // namespace KELMAR_TOOLS
