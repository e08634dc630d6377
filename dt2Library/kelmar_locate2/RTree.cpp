#include "kelmar_locate2/RTree.h"

#include <cstddef>

#include "BoxRecords.h"
#include "PackedTree.h"
#include "require.h"
#include "roundingMode.h"

namespace KELMAR_LOCATE2 {

using KELMAR_NORVIK2D::require;
using KELMAR_NORVIK2D::RoundToNearest;

static_assert(sizeof(Node) == 64, "a node fills a cache line");

/// The plane, for the tree.
struct Plane : KELMAR_TOOLS::BoxRecords<2, Bbox2, TempContent, Item> {
    using Node = KELMAR_LOCATE2::Node;
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
    pTree->addObject({pObject, xmin, ymin, xmax, ymax, 0}, {xmin, ymin, xmax, ymax});
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
    pTree->query(box, out);
}

const Node* RTree::getRoot() const noexcept { return pTree->getRoot(); }

}  // namespace KELMAR_LOCATE2
