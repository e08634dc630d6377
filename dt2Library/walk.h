#pragma once

#include <cstdint>
#include <limits>

#include "KelmarTest.h"

namespace KELMAR_NORVIK2D {

/// What the walk to a point ends with. Other results are 0 to 2: the point lies outside the convex hull
/// beyond that edge of the triangle, or on it.
enum LocateCode { LOCATE_INSIDE = -1, LOCATE_DUPLICATE = 4, LOCATE_TOO_FAR = 5 };

/// Edge indices at random, for walks that may cycle. Any thread may need them: the standard library's generator is one for all.
class RandomEdges {
public:
    int next() noexcept {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return static_cast<int>(state % 3);
    }

private:
    std::uint32_t state = 0x9E3779B9U;
};

/// Walks from `pT` to the triangle that contains the point, or to the hull edge that it lies beyond; `pT`
/// becomes that triangle. With LOCATE_INSIDE, `edgeIndex` is the edge of the triangle that the point lies on,
/// or -1. After more than `maxSteps` steps it stops with LOCATE_TOO_FAR where it is. Touches nothing but
/// triangles, and uses only the given predicates.
int walkToConflict(KelmarTest& predicates, const Point2* pVtx, Triangle2*& pT, int& edgeIndex,
                   int maxSteps = std::numeric_limits<int>::max());

/// The same, but straight along the line from corner 0 of the first triangle: all triangles on the way have a point of the
/// line between that corner and the point. The point lies inside the hull, so that the walk ends with LOCATE_INSIDE or
/// LOCATE_DUPLICATE. Other threads may be exchanging links of these triangles that don't lie on the way.
int walkAlongLine(KelmarTest& predicates, const Point2* pVtx, Triangle2*& pT, int& edgeIndex);

}  // namespace KELMAR_NORVIK2D
