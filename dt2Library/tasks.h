#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "HC2.h"
#include "IdxVtxAct.h"
#include "Point2.h"
#include "hilbertOrder.h"

/// The pieces into which MTCtrl cuts the preparation of a bulk insertion. None throws.
namespace KELMAR_NORVIK2D {

/// Puts the input points into list order: key and index of each point in [first, last).
struct Task {
    std::span<KeyIndex> pairs;
    const std::vector<Point2>* pPoints;
    const HC2* pHC;
    std::size_t first, last;

    void go() noexcept;
};

/// The input lies in another order than the list: its points are asked for some time before they are read.
inline void prefetchAhead(std::span<const KeyIndex> pairs, std::size_t rank,
                          const std::vector<Point2>& points) noexcept {
    constexpr std::size_t distance = 16;
    if (rank + distance < pairs.size()) __builtin_prefetch(&points[pairs[rank + distance].second]);
}

/// Fills the vertices and items of the sorted pairs in [first, last).
struct FTask {
    std::span<const KeyIndex> pairs;
    const std::vector<Point2>* pPoints;
    std::span<Point2* const> vertices;
    std::span<IdxVtxAct* const> items;
    std::vector<Point2*>* pHandles;  ///< may be null
    std::size_t first, last;

    void go() noexcept;
};

/// Sorts a range of the vault's list by func_ltDerefPtr.
struct SortTask {
    std::span<IdxVtxAct*> items;

    void go() noexcept;
};

/// Sorts a range of pairs by key; pairs of equal key keep their order.
struct SortTask2 {
    std::span<KeyIndex> pairs;
    std::span<KeyIndex> scratch;

    void go() noexcept;
};

}  // namespace KELMAR_NORVIK2D
