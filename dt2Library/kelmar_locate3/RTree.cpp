#include "kelmar_locate3/RTree.h"

#include <cstddef>

#include "BoxRecords.h"
#include "PackedTree.h"
#include "require.h"
#include "roundingMode.h"

namespace KELMAR_LOCATE3 {

using KELMAR_NORVIK2D::require;
using KELMAR_NORVIK2D::RoundToNearest;

/// For the tree.
struct Space : KELMAR_TOOLS::BoxRecords<3, Bbox3, TempContent, Item> {
    using Node = KELMAR_LOCATE3::Node;
};

using Tree = KELMAR_TOOLS::PackedTree<Space>;

void Node::addChild(Node* pChild) { Tree::addChild(*this, *pChild); }

void Node::getIntersectedItems(std::vector<Item*>& out, const Bbox3& box) const {
    RoundToNearest nearest;
    pTree->collect(*this, box, out);
}

RTree::RTree() : pTree(std::make_unique<Tree>()) {}
RTree::~RTree() = default;

void RTree::reserve(std::size_t numObjects) { pTree->reserve(numObjects); }

void RTree::addObject(void* pObject, double xmin, double ymin, double zmin, double xmax, double ymax,
                      double zmax) {
    RoundToNearest nearest;
    require(xmin <= xmax, "xmin<=xmax");
    require(ymin <= ymax, "ymin<=ymax");
    require(zmin <= zmax, "zmin<=zmax");
    pTree->addObject({pObject, xmin, ymin, zmin, xmax, ymax, zmax, 0}, {xmin, ymin, zmin, xmax, ymax, zmax});
}

void RTree::getBounds(double& minX, double& minY, double& minZ, double& maxX, double& maxY,
                      double& maxZ) const {
    const Bbox3& bounds = pTree->getBounds();
    minX = bounds.minX;
    minY = bounds.minY;
    minZ = bounds.minZ;
    maxX = bounds.maxX;
    maxY = bounds.maxY;
    maxZ = bounds.maxZ;
}

void RTree::finish() {
    RoundToNearest nearest;
    pTree->finish();
}

void RTree::getBBIntersectedItems(const Bbox3& box, std::vector<Item*>& out) {
    RoundToNearest nearest;
    pTree->query(box, out);
}

const Node* RTree::getRoot() const noexcept { return pTree->getRoot(); }

}  // namespace KELMAR_LOCATE3
