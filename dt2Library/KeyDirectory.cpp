#include "KeyDirectory.h"

#include <algorithm>
#include <bit>

namespace KELMAR_NORVIK2D {

void KeyDirectory::clear() noexcept {
    vKeys.clear();
    vBucketStarts.clear();
}

void KeyDirectory::build(std::span<IdxVtxAct* const> items) {
    // Two to four keys a bucket: they share a cache line, and the directory takes one or two bytes for each
    // item.
    constexpr std::size_t keysPerBucket = 4;

    vKeys.resize(items.size());
    std::uint32_t greatest = 0;
    // Inactive items may lie in the middle, out of order; they count as equal to their predecessor.
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i]->bAct) greatest = std::max(greatest, items[i]->nic);
        vKeys[i] = greatest;
    }
    const auto keyBits = static_cast<int>(std::bit_width(greatest));
    const int bucketBits = std::min(static_cast<int>(std::bit_width(items.size() / keysPerBucket)), keyBits);
    bucketShift = keyBits - bucketBits;

    vBucketStarts.assign((std::size_t{greatest} >> bucketShift) + 2, 0);
    std::size_t bucket = 0;
    for (std::size_t i = 0; i < vKeys.size(); ++i)
        while (bucket <= vKeys[i] >> bucketShift) vBucketStarts[bucket++] = static_cast<std::uint32_t>(i);
    vBucketStarts.back() = static_cast<std::uint32_t>(vKeys.size());
}

std::size_t KeyDirectory::lowerBound(std::uint32_t key) const noexcept {
    const std::size_t bucket = key >> bucketShift;
    if (bucket + 1 >= vBucketStarts.size()) return vKeys.size();
    // Keys of earlier buckets are smaller, and the first one of the next bucket is not.
    std::size_t first = vBucketStarts[bucket];
    // Branch-free halving: which half it is can't be predicted, and where points lie along lines buckets are full.
    for (std::size_t size = vBucketStarts[bucket + 1] - first; size > 0;) {
        const std::size_t half = (size + 1) / 2;
        first += vKeys[first + half - 1] < key ? half : 0;
        size -= half;
    }
    return first;
}

}  // namespace KELMAR_NORVIK2D
