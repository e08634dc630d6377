#include "RefinementQueue.h"

namespace KELMAR_NORVIK2D {

namespace {

/// Asks for what will be read of a triangle that is to be served soon: neighbours in the order of angles are far apart in
/// memory. Inline by force: to GCC a function that does nothing else has no effect, and it keeps no call of it.
[[gnu::always_inline]] inline void prefetchAhead(const std::vector<WaitingTriangle>& vWaiting) {
    constexpr std::size_t ahead = 6;
    if (vWaiting.size() < ahead) return;
    const WaitingTriangle& waiting = vWaiting[vWaiting.size() - ahead];
    prefetchTriangle(waiting.pTriangle);
    for (const Point2* pCorner : waiting.corners) __builtin_prefetch(pCorner);
}

}  // namespace

WaitingTriangle RefinementQueue::pop() {
    std::size_t word = 0;
    while (used[word] == 0) ++word;
    const std::size_t index = word * bitsOfWord + static_cast<std::size_t>(std::countr_zero(used[word]));
    Bucket& bucket = buckets[index];
    if (!bucket.bOpen) {
        std::sort(bucket.vWaiting.begin(), bucket.vWaiting.end(), std::greater<>());
        bucket.bOpen = true;
    }
    const bool bLate =
        bucket.vWaiting.empty() || (!bucket.vLate.empty() && bucket.vWaiting.back() > bucket.vLate.front());
    if (bLate) std::pop_heap(bucket.vLate.begin(), bucket.vLate.end(), std::greater<>());
    std::vector<WaitingTriangle>& vFrom = bLate ? bucket.vLate : bucket.vWaiting;
    const WaitingTriangle first = vFrom.back();
    vFrom.pop_back();
    --numWaiting;
    if (bucket.vWaiting.empty() && bucket.vLate.empty()) {
        bucket.bOpen = false;
        used[word] &= used[word] - 1;
    } else {
        prefetchAhead(bucket.vWaiting);
    }
    return first;
}

}  // namespace KELMAR_NORVIK2D
