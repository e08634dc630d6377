#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "IdxVtxAct.h"

namespace KELMAR_NORVIK2D {

/// The keys of the vault's sorted items side by side, with a directory over their leading bits: a search
/// touches two places of memory instead of twenty items all over it. A copy of what the list holds, built
/// when a search first wants it and dropped at the next sort.
class KeyDirectory {
public:
    bool isBuilt() const noexcept { return !vKeys.empty(); }
    void clear() noexcept;
    void build(std::span<IdxVtxAct* const> items);

    /// Index of the first item whose key isn't below `key`; the number of items if there is none.
    std::size_t lowerBound(std::uint32_t key) const noexcept;

    /// Asks for the memory that the search will read first.
    [[gnu::always_inline]] void prefetch(std::uint32_t key) const noexcept {
        const std::size_t bucket = key >> bucketShift;
        if (bucket < vBucketStarts.size()) __builtin_prefetch(vKeys.data() + vBucketStarts[bucket]);
    }

private:
    std::vector<std::uint32_t> vKeys;
    std::vector<std::uint32_t> vBucketStarts;  ///< per value of the leading bits; one more at the end
    int bucketShift = 0;
};

}  // namespace KELMAR_NORVIK2D
