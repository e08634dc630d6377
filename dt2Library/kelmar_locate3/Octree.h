#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "norvikExport.h"

/// A spatial index of points in space.
namespace KELMAR_OCTREE {

class Octants;

/// A point in the tree. It belongs to the tree, and stays where it is as long as that lives.
struct OctItem {
    void* pObject;
    double x, y, z;
    std::size_t rank;  ///< how many were added before
    OctItem* pNext;    ///< the tree's own
};

/// A tree of points in a box, which is divided into eight where there are many. Points can be added at any time, also between
/// questions; none can be taken out.
///
/// Distances are compared exactly for the coordinates given. Nobody may add points while others ask; several threads may ask at
/// once.
class NORVIK2D_EXPORT Octree {
public:
    /// Over the closed box from `min` to `max`, which may be flat. A leaf with more than `maxItemsPerLeaf` points is divided, unless all
    /// lie at one place, or it is `maxDepth` divisions deep; there may be any number of points then. A box that isn't finite or
    /// has its bounds the wrong way round, no items in a leaf and a negative depth fail an assertion (NorvikException).
    Octree(const double min[3], const double max[3], int maxItemsPerLeaf = 8, int maxDepth = 20);
    ~Octree();
    Octree(const Octree&) = delete;
    Octree& operator=(const Octree&) = delete;

    /// Adds an object that is at this point. Outside of the box nothing is added: a warning, and false.
    bool addPoint(void* pObject, double x, double y, double z);

    /// Appends the points whose distance from the centre isn't greater than the radius. Those of one leaf come in the order in which
    /// they were added. Leaves come in the order of their octants: by the lower and upper half in x of the box that was divided,
    /// then in y, then in z.
    ///
    /// Around a centre that isn't finite, or with a radius that is negative or NaN, there is nothing; with an infinite one, all.
    void getItemsInSphere(double x, double y, double z, double r, std::vector<OctItem*>& out) const;

    /// The point closest to this place, of several equally close ones the one that was added first. Null if the tree is empty or
    /// the place isn't finite.
    OctItem* getNearest(double x, double y, double z) const;

private:
    std::unique_ptr<Octants> pOctants;
};

}  // namespace KELMAR_OCTREE
