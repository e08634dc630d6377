#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Point2.h"
#include "SimplePool.h"

namespace KELMAR_NORVIK2D {

/// A set of vertices of one triangulation, with a bit for each: their ranks in the pool are the places. Vertices that lie
/// together in the mesh mostly share a word.
class VertexSet {
public:
    explicit VertexSet(const SimplePool<Point2>& pool_) : pool(pool_) {}

    /// False also for points that aren't of the pool.
    bool contains(const Point2* pVtx) const noexcept {
        const std::int64_t rank = pool.rankOf(pVtx);
        return rank >= 0 && wordOf(rank) < vWords.size() && (vWords[wordOf(rank)] & bitOf(rank)) != 0;
    }

    /// Takes in a vertex; nothing if it isn't of the pool.
    void insert(const Point2* pVtx) {
        const std::int64_t rank = pool.rankOf(pVtx);
        if (rank < 0) return;
        if (wordOf(rank) >= vWords.size()) vWords.resize(wordOf(pool.numHandedOut()) + 1);
        vWords[wordOf(rank)] |= bitOf(rank);
    }

private:
    static constexpr int bitsOfWord = 64;

    static std::size_t wordOf(std::int64_t rank) noexcept {
        return static_cast<std::size_t>(rank) / bitsOfWord;
    }
    static std::uint64_t bitOf(std::int64_t rank) noexcept { return std::uint64_t{1} << rank % bitsOfWord; }

    const SimplePool<Point2>& pool;
    std::vector<std::uint64_t> vWords;
};

}  // namespace KELMAR_NORVIK2D
