#include "SimplePool.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>

namespace KELMAR_NORVIK2D {

void* allocateBlock(std::size_t numBytes) noexcept {
    constexpr std::size_t hugePage = std::size_t{1} << 21;
    // Below half a huge page the advice would waste more memory than it saves time.
    if (numBytes < hugePage / 2) return std::malloc(numBytes);

    if (numBytes > std::size_t{PTRDIFF_MAX} / 2) return nullptr;
    // Whole pages, so that no other memory shares the last one.
    const std::size_t numPageBytes = (numBytes + hugePage - 1) / hugePage * hugePage;
    void* const pBlock = std::aligned_alloc(hugePage, numPageBytes);
    if (pBlock == nullptr) return std::malloc(numBytes);
#ifdef MADV_HUGEPAGE
    // Advice only: a system without huge pages refuses it, and nothing is lost.
    static_cast<void>(madvise(pBlock, numPageBytes, MADV_HUGEPAGE));
#endif
    return pBlock;
}

void freeBlock(void* pBlock) noexcept { std::free(pBlock); }

}  // namespace KELMAR_NORVIK2D
