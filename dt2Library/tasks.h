#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "HC2.h"
#include "IdxVtxAct.h"
#include "Point2.h"
#include "SimplePool.h"
#include "hilbertOrder.h"

/// The pieces into which MTCtrl cuts the preparation of a bulk insertion. None throws, unless memory runs out.
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
[[gnu::always_inline]] inline void prefetchAhead(std::span<const KeyIndex> pairs, std::size_t rank,
                                                 const std::vector<Point2>& points) noexcept {
    constexpr std::size_t distance = 16;
    if (rank + distance < pairs.size()) __builtin_prefetch(&points[pairs[rank + distance].second]);
}

/// Fills the vertices and items of the sorted pairs in [first, last).
struct FTask {
    std::span<const KeyIndex> pairs;
    const std::vector<Point2>* pPoints;
    const SimplePool<Point2>* pVertices;
    std::int64_t firstRank;  ///< of the vertices, in the pool
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

/// Parts pairs by the highest digit of their keys: each of several tasks counts its own share, and when all know where their
/// parts begin, puts it there. Pairs of equal digit keep their order, within a task and from one to the next.
struct PartTask {
    static constexpr unsigned numLowBits = 22;
    using Counts = std::array<std::uint32_t, std::size_t{1} << (32 - numLowBits)>;

    std::span<const KeyIndex> share;
    std::span<KeyIndex> out;  ///< for all shares
    Counts counts{};          ///< later where the next pair of each digit goes

    void count() noexcept;
    void part() noexcept;
};

/// Puts a range of pairs into list order: by key, or by the lower digits where the highest one is the same, and within long
/// runs of equal keys by orderEqualKeys().
struct SortTask2 {
    std::span<KeyIndex> pairs;
    std::span<KeyIndex> scratch;
    const std::vector<Point2>* pPoints;
    bool bSameDigit = false;

    void go();
};

}  // namespace KELMAR_NORVIK2D
