#include "tasks.h"

#include <algorithm>
#include <new>

#include "radixSort.h"

namespace KELMAR_NORVIK2D {

void Task::go() noexcept {
    for (std::size_t i = first; i < last; ++i)
        pairs[i] = {pHC->iReset((*pPoints)[i]), static_cast<std::uint32_t>(i)};
}

void FTask::go() noexcept {
    for (std::size_t rank = first; rank < last; ++rank) {
        prefetchAhead(pairs, rank, *pPoints);
        const auto [key, index] = pairs[rank];
        Point2* pVtx =
            ::new (pVertices->at(firstRank + static_cast<std::int64_t>(rank))) Point2((*pPoints)[index]);
        *items[rank] = {key, true, pVtx};
        if (pHandles != nullptr) (*pHandles)[index] = pVtx;
    }
}

void SortTask::go() noexcept {
    // Usually most of the range is in order already, and only a tail of new items isn't.
    const auto middle = std::is_sorted_until(items.begin(), items.end(), func_ltDerefPtr{});
    std::stable_sort(middle, items.end(), func_ltDerefPtr{});
    std::inplace_merge(items.begin(), middle, items.end(), func_ltDerefPtr{});
}

void PartTask::count() noexcept {
    for (const KeyIndex& pair : share) ++counts[pair.first >> numLowBits];
}

void PartTask::part() noexcept {
    for (const KeyIndex& pair : share) out[counts[pair.first >> numLowBits]++] = pair;
}

void SortTask2::go() {
    radixSort(
        pairs, scratch, [](const KeyIndex& pair) { return pair.first; }, bSameDigit ? 2 : 3);
    orderEqualKeys(pairs, *pPoints);
}

}  // namespace KELMAR_NORVIK2D
