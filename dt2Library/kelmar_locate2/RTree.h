#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

#include "kelmar_locate2/TreeNode.h"
#include "norvikExport.h"

/// A spatial index of boxes in the plane.
namespace KELMAR_LOCATE2 {

struct Plane;

/// A closed box. By default it is empty, with its bounds the wrong way round, and meets nothing.
struct Bbox2 {
    double minX = std::numeric_limits<double>::max();
    double minY = std::numeric_limits<double>::max();
    double maxX = -std::numeric_limits<double>::max();
    double maxY = -std::numeric_limits<double>::max();
};

/// An object that waits for the tree to be built.
struct TempContent {
    void* pObject;
    double minX, minY, maxX, maxY;
    unsigned key;  ///< along the Hilbert curve, known when the tree is built
};

/// An object in the tree, with its box.
struct Item {
    void* pObject;
    double minX, minY, maxX, maxY;
};

/// A node of the tree.
class NORVIK2D_EXPORT Node : public KELMAR_TOOLS::TreeNode<Node, Bbox2, Plane> {
public:
    /// Gives this inner node one more child, and grows its box. The children of a node are neighbours in memory, in their order;
    /// any other child, and one behind the eighth, fails an assertion (NorvikException).
    void addChild(Node* pChild);

    /// Appends the items below this node whose boxes meet the given one, boundaries included, in the order of the curve.
    void getIntersectedItems(std::vector<Item*>& out, const Bbox2& box) const;

private:
    using TreeNode::TreeNode;
};

/// A static tree of boxes: objects are collected, and at the first question sorted along a Hilbert curve and packed from the
/// leaves up. Nothing can be taken out.
///
/// Objects that are added after the first question are never found. Once the tree is built, several threads may ask at once.
class NORVIK2D_EXPORT RTree {
public:
    RTree();
    ~RTree();
    RTree(const RTree&) = delete;
    RTree& operator=(const RTree&) = delete;

    /// Makes room for that many objects in all.
    void reserve(std::size_t numObjects);
    /// Adds an object with its closed box. A box with its bounds the wrong way round fails an assertion (NorvikException).
    void addObject(void* pObject, double xmin, double ymin, double xmax, double ymax);

    /// The tight box of all objects added so far; without any the bounds of an empty box.
    void getBounds(double& minX, double& minY, double& maxX, double& maxY) const;

    /// Builds the tree, as the first question does by itself. Without objects there is none; a second call has no effect.
    void finish();

    /// Appends the items whose boxes meet the given one, boundaries included, in the order of the curve. They belong to the tree.
    void getBBIntersectedItems(const Bbox2& box, std::vector<Item*>& out);

    /// The top of the tree, null before it is built.
    const Node* getRoot() const noexcept;

private:
    std::unique_ptr<KELMAR_TOOLS::PackedTree<Plane>> pTree;
};

}  // namespace KELMAR_LOCATE2
