#include "kelmar_locate3/Octree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>
#include <utility>

#include "diagnostics.h"
#include "distance3.h"
#include "require.h"
#include "roundingMode.h"
#include "toolsPool.h"

namespace KELMAR_OCTREE {

using KELMAR_NORVIK2D::require;
using KELMAR_NORVIK2D::RoundToNearest;
using KELMAR_TOOLS::compareLengths;
using KELMAR_TOOLS::Place3;
using KELMAR_TOOLS::SimplePool;
using KELMAR_TOOLS::Way3;

namespace {

constexpr std::size_t numAxes = 3, numOctants = 8;

Place3 placeOf(const OctItem& item) { return {item.x, item.y, item.z}; }

bool isFinite(const Place3& place) {
    return std::all_of(place.begin(), place.end(), [](double x) { return std::isfinite(x); });
}

struct Box {
    Place3 least, greatest;

    /// Of what a coordinate that isn't less belongs to the upper half.
    Place3 middle() const {
        Place3 middle;
        for (std::size_t axis = 0; axis < numAxes; ++axis) {
            middle[axis] = std::midpoint(least[axis], greatest[axis]);
            // Of neighbouring doubles either one may come out: the lower one would divide nothing.
            if (middle[axis] == least[axis]) middle[axis] = greatest[axis];
        }
        return middle;
    }
    bool contains(const Place3& place) const { return closestTo(place) == place; }
    Place3 closestTo(const Place3& place) const {
        Place3 closest;
        for (std::size_t axis = 0; axis < numAxes; ++axis)
            closest[axis] = std::clamp(place[axis], least[axis], greatest[axis]);
        return closest;
    }
    void grow(const Place3& place) {
        for (std::size_t axis = 0; axis < numAxes; ++axis) {
            least[axis] = std::min(least[axis], place[axis]);
            greatest[axis] = std::max(greatest[axis], place[axis]);
        }
    }
};

/// The first axis has the highest bit.
std::size_t octantOf(const Place3& place, const Place3& middle) {
    std::size_t octant = 0;
    for (std::size_t axis = 0; axis < numAxes; ++axis)
        octant = octant << 1 | static_cast<std::size_t>(place[axis] >= middle[axis]);
    return octant;
}

Box boxOfOctant(Box box, const Place3& middle, std::size_t octant) {
    for (std::size_t axis = 0; axis < numAxes; ++axis)
        ((octant >> (numAxes - 1 - axis) & 1U) != 0 ? box.least : box.greatest)[axis] = middle[axis];
    return box;
}

}  // namespace

/// A part of the box. Null are those children in which no point lies.
struct OctNode {
    explicit OctNode(const Place3& place) : box{place, place} {}

    bool hasOnePlace() const { return box.least == box.greatest; }

    void append(OctItem* pItem) {
        box.grow(placeOf(*pItem));
        pItem->pNext = nullptr;
        (pFirst == nullptr ? pFirst : pLast->pNext) = pItem;
        pLast = pItem;
        ++numItems;
    }

    Box box;  ///< the tight one of all points below
    bool bLeaf = true;
    int numItems = 0;  ///< of a leaf, as both pointers
    OctItem* pFirst = nullptr;
    OctItem* pLast = nullptr;
    std::array<OctNode*, numOctants> pChildren{};
};

/// What an Octree is inside.
class Octants {
public:
    Octants(const Box& box_, int maxItemsPerLeaf_, int maxDepth_)
        : box(box_), maxItemsPerLeaf(maxItemsPerLeaf_), maxDepth(maxDepth_) {
        items.init(firstSize, bytesOfBlock / static_cast<int>(sizeof(OctItem)));
        nodes.init(firstSize, bytesOfBlock / static_cast<int>(sizeof(OctNode)));
    }

    const Box& getBox() const { return box; }
    const OctNode* getRoot() const { return pRoot; }

    /// A place in the box. Where memory ends nothing is added.
    void add(void* pObject, const Place3& place) {
        OctNode* const pLeaf = leafFor(place);
        OctItem* const pItem = items.get();
        *pItem = {pObject, place[0], place[1], place[2], numAdded, nullptr};
        pLeaf->append(pItem);
        ++numAdded;
    }

private:
    static constexpr int firstSize = 64, bytesOfBlock = 100000000;

    OctNode* newNode(const Place3& place) { return new (nodes.get()) OctNode(place); }

    /// A leaf with room, after as many divisions as it takes.
    OctNode* leafFor(const Place3& place) {
        if (pRoot == nullptr) pRoot = newNode(place);
        OctNode* pNode = pRoot;
        Box part = box;
        for (int depth = 0;; ++depth) {
            pNode->box.grow(place);
            const bool bFull =
                pNode->numItems >= maxItemsPerLeaf && depth < maxDepth && !pNode->hasOnePlace();
            if (pNode->bLeaf && !bFull) return pNode;
            const Place3 middle = part.middle();
            if (pNode->bLeaf) divide(*pNode, middle);
            const std::size_t octant = octantOf(place, middle);
            part = boxOfOctant(part, middle, octant);
            OctNode*& pChild = pNode->pChildren[octant];
            if (pChild == nullptr) pChild = newNode(place);
            pNode = pChild;
        }
    }

    /// All children are there before the first item moves: memory may end.
    void divide(OctNode& node, const Place3& middle) {
        const auto childOf = [&](const OctItem& item) -> OctNode*& {
            return node.pChildren[octantOf(placeOf(item), middle)];
        };
        for (const OctItem* pItem = node.pFirst; pItem != nullptr; pItem = pItem->pNext)
            if (childOf(*pItem) == nullptr) childOf(*pItem) = newNode(placeOf(*pItem));
        for (OctItem *pItem = node.pFirst, *pNext; pItem != nullptr; pItem = pNext) {
            pNext = pItem->pNext;
            childOf(*pItem)->append(pItem);
        }
        node.bLeaf = false;
        node.pFirst = node.pLast = nullptr;
    }

    Box box;
    int maxItemsPerLeaf;
    int maxDepth;
    std::size_t numAdded = 0;
    SimplePool<OctItem> items;
    SimplePool<OctNode> nodes;
    OctNode* pRoot = nullptr;
};

namespace {

class Ball {
public:
    Ball(const Place3& center_, double radius)
        : center(center_),
          bEverything(std::isinf(radius)),
          way({0, 0, 0}, {bEverything ? 0.0 : radius, 0, 0}) {}

    void collect(const OctNode& node, std::vector<OctItem*>& out) const {
        if (!contains(node.box.closestTo(center))) return;
        for (OctItem* pItem = node.pFirst; pItem != nullptr; pItem = pItem->pNext)
            if (contains(placeOf(*pItem))) out.push_back(pItem);
        for (const OctNode* pChild : node.pChildren)
            if (pChild != nullptr) collect(*pChild, out);
    }

private:
    bool contains(const Place3& place) const {
        return bEverything || compareLengths(Way3(center, place), way) <= 0;
    }

    Place3 center;
    bool bEverything;
    Way3 way;  ///< as long as the radius
};

/// The closest item so far.
class Nearest {
public:
    explicit Nearest(const Place3& place_) : place(place_), way(place_, place_) {}

    OctItem* get() const { return pNearest; }

    void search(const OctNode& node) {
        for (OctItem* pItem = node.pFirst; pItem != nullptr; pItem = pItem->pNext) consider(pItem);
        if (node.bLeaf) return;
        // Those that seem closest come first, and mostly make the others needless.
        std::array<std::pair<double, const OctNode*>, numOctants> order;
        std::size_t numChildren = 0;
        for (const OctNode* pChild : node.pChildren) {
            if (pChild == nullptr) continue;
            const double square = wayTo(*pChild).square;
            std::size_t i = numChildren++;
            for (; i > 0 && order[i - 1].first > square; --i) order[i] = order[i - 1];
            order[i] = {square, pChild};
        }
        for (std::size_t i = 0; i < numChildren; ++i)
            // In one that is as close there may be an item that was added earlier.
            if (pNearest == nullptr || compareLengths(wayTo(*order[i].second), way) <= 0)
                search(*order[i].second);
    }

private:
    Way3 wayTo(const OctNode& node) const { return {place, node.box.closestTo(place)}; }

    void consider(OctItem* pItem) {
        const Way3 other(place, placeOf(*pItem));
        const int order = pNearest == nullptr ? -1 : compareLengths(other, way);
        if (order > 0 || (order == 0 && pItem->rank > pNearest->rank)) return;
        pNearest = pItem;
        way = other;
    }

    Place3 place;
    OctItem* pNearest = nullptr;
    Way3 way;
};

}  // namespace

Octree::Octree(const double min[3], const double max[3], int maxItemsPerLeaf, int maxDepth) {
    RoundToNearest nearest;
    const Box box{{min[0], min[1], min[2]}, {max[0], max[1], max[2]}};
    require(isFinite(box.least) && isFinite(box.greatest), "isFinite(min) && isFinite(max)");
    for (std::size_t axis = 0; axis < numAxes; ++axis) require(min[axis] <= max[axis], "min<=max");
    require(maxItemsPerLeaf > 0, "maxItemsPerLeaf>0");
    require(maxDepth >= 0, "maxDepth>=0");
    pOctants = std::make_unique<Octants>(box, maxItemsPerLeaf, maxDepth);
}

Octree::~Octree() = default;

bool Octree::addPoint(void* pObject, double x, double y, double z) {
    RoundToNearest nearest;
    const Place3 place{x, y, z};
    if (!pOctants->getBox().contains(place)) {
        KELMAR_NORVIK2D::warning("Octree::addPoint(..)", "point outside of the box, nothing done");
        return false;
    }
    pOctants->add(pObject, place);
    return true;
}

void Octree::getItemsInSphere(double x, double y, double z, double r, std::vector<OctItem*>& out) const {
    RoundToNearest nearest;
    const OctNode* const pRoot = pOctants->getRoot();
    const Place3 center{x, y, z};
    if (pRoot != nullptr && isFinite(center) && r >= 0.0) Ball(center, r).collect(*pRoot, out);
}

OctItem* Octree::getNearest(double x, double y, double z) const {
    RoundToNearest nearest;
    const OctNode* const pRoot = pOctants->getRoot();
    const Place3 place{x, y, z};
    if (pRoot == nullptr || !isFinite(place)) return nullptr;
    Nearest search(place);
    search.search(*pRoot);
    return search.get();
}

}  // namespace KELMAR_OCTREE
