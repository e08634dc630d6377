#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

/// Memory for a block of records, null if there is none. Blocks of a megabyte and more are aligned to 2 MiB
/// and advised for huge pages, which spare most address translations of a large mesh; no page of them is
/// touched here.
void* allocateBlock(std::size_t numBytes) noexcept;
void freeBlock(void* pBlock) noexcept;

/// The words of a pool that differ between its users.
struct PoolTexts {
    /// Written as it is, since composing a text would take memory.
    static constexpr const char* outOfMemory = "SimplePool::alloc(..), ERROR: Out of memory\n";
};

/// A block allocator for masses of records, which never move and live as long as the pool: a mesh can
/// therefore be a net of plain pointers. Records are handed out one after the other and never given back one
/// at a time.
///
/// No constructor or destructor of T runs here: the owner assigns all fields of a record that it gets. Not
/// thread-safe.
template <class T, class Texts = PoolTexts>
class SimplePool {
public:
    SimplePool() noexcept = default;
    ~SimplePool() {
        if (vBlocks.size() > 1000) tellNumBlocks();
        freeBlocksBehind(0);
    }
    SimplePool(const SimplePool&) = delete;
    SimplePool& operator=(const SimplePool&) = delete;

    /// Allocates the first block of `firstSize_` records (at least 1). Later blocks get `growth_` records
    /// each; a negative `growth_` lets them grow by themselves, up to `maxSize_` records.
    void init(int firstSize_, int maxSize_, int growth_ = -1) {
        if (bInitialized) print("SimplePool::init(..), ERROR: This pool is already initialized\n");
        firstSize = std::max(firstSize_, 1);
        maxSize = std::max(maxSize_, 1);
        growth = growth_;
        alloc(firstSize);
        bInitialized = true;
    }

    /// The next record, with whatever the memory holds.
    T* get() {
        if (++last >= capacity) [[unlikely]]
            grow();
        return pCurrentBlock + last;
    }

    /// Adds a block and makes it the current one; a negative size lets the pool choose. When there is no
    /// memory a message is printed and std::bad_alloc thrown; the pool stays as it was.
    void alloc(int size) {
        if (size < 0) size = automaticSize();
        size = std::max(size, 1);
        vBlocks.push_back({nullptr, size, numHandedOut()});
        void* const pBlock = allocateBlock(static_cast<std::size_t>(size) * sizeof(T));
        if (pBlock == nullptr) {
            vBlocks.pop_back();
            print(Texts::outOfMemory);
            throw std::bad_alloc();
        }
        vBlocks.back().pRecords = static_cast<T*>(pBlock);
        useLastBlock();
    }

    /// Takes back all records at once: only the first block stays, empty.
    void reset() noexcept {
        if (vBlocks.empty()) return;
        freeBlocksBehind(1);
        useLastBlock();
        bNeverGrown = true;
    }

    /// The serial number of a record in the order of handing out; -1 if it isn't one of this pool.
    std::int64_t rankOf(const T* pRecord) const noexcept {
        // Integers, because pointers into different blocks can't be compared or subtracted.
        const auto address = reinterpret_cast<std::uintptr_t>(pRecord);
        std::int64_t rankBehind = numHandedOut();
        for (std::size_t i = vBlocks.size(); i-- > 0;) {
            const Block& block = vBlocks[i];
            const std::uintptr_t distance = address - reinterpret_cast<std::uintptr_t>(block.pRecords);
            const std::uintptr_t index = distance / sizeof(T);
            if (index < static_cast<std::uintptr_t>(rankBehind - block.firstRank) &&
                distance % sizeof(T) == 0)
                return block.firstRank + static_cast<std::int64_t>(index);
            rankBehind = block.firstRank;
        }
        return -1;
    }

    /// The record with that serial number; null if none has been handed out.
    T* at(std::int64_t rank) const noexcept {
        if (rank < 0 || rank >= numHandedOut()) return nullptr;
        std::size_t i = vBlocks.size() - 1;
        while (rank < vBlocks[i].firstRank) --i;
        return vBlocks[i].pRecords + (rank - vBlocks[i].firstRank);
    }

    /// The records handed out, in the order of handing out, one stretch of memory after the other.
    std::vector<std::span<T>> stretches() const {
        std::vector<std::span<T>> vStretches;
        vStretches.reserve(vBlocks.size());
        visitStretches([&](std::span<T> stretch) { vStretches.push_back(stretch); });
        return vStretches;
    }
    /// Visits the same. Takes no memory: it may be called where nothing may be thrown.
    template <class Visit>
    void visitStretches(Visit visit) const {
        for (std::size_t i = 0; i < vBlocks.size(); ++i) {
            const std::int64_t rankBehind =
                i + 1 < vBlocks.size() ? vBlocks[i + 1].firstRank : numHandedOut();
            visit(
                std::span(vBlocks[i].pRecords, static_cast<std::size_t>(rankBehind - vBlocks[i].firstRank)));
        }
    }

    std::int64_t numHandedOut() const noexcept {
        return vBlocks.empty() ? 0 : vBlocks.back().firstRank + last + 1;
    }
    /// Records that can be handed out before there is another block.
    int numLeftInBlock() const noexcept { return capacity - last - 1; }
    std::size_t numBlocks() const noexcept { return vBlocks.size(); }
    int blockSize(std::size_t index) const noexcept { return vBlocks[index].size; }
    /// Whether all records so far came from the blocks that were asked for.
    bool neverGrown() const noexcept { return bNeverGrown; }

private:
    static_assert(alignof(T) <= alignof(std::max_align_t), "blocks are aligned like any other memory");

    struct Block {
        T* pRecords;
        int size;
        std::int64_t firstRank;
    };

    void tellNumBlocks() const noexcept {
        try {
            print("SimplePool::~SimplePool: Number of containers to release: " +
                  std::to_string(vBlocks.size()) + "\n");
        } catch (const std::bad_alloc&) {
            // Not worth ending the process, which it would in a destructor.
        }
    }

    /// Out of line, so that get() stays a few instructions.
    [[gnu::noinline]] void grow() {
        // Back to the last record first: where alloc() throws the pool must be as before.
        --last;
        alloc(growth);
        bNeverGrown = false;
        last = 0;
    }

    /// The sizes go N, N/2, N, 2N, 4N ... up to the maximum. The halving at the second block is deliberate: a
    /// first block that was sized to the expectation is seldom exceeded by much.
    int automaticSize() const noexcept {
        if (vBlocks.empty()) return firstSize;
        const int lastSize = vBlocks.back().size;
        if (vBlocks.size() == 1) return std::min(lastSize > 1 ? lastSize / 2 : lastSize, maxSize);
        return lastSize > maxSize / 2 ? maxSize : 2 * lastSize;
    }

    void useLastBlock() noexcept {
        pCurrentBlock = vBlocks.back().pRecords;
        capacity = vBlocks.back().size;
        last = -1;
    }

    void freeBlocksBehind(std::size_t numKept) noexcept {
        for (std::size_t i = numKept; i < vBlocks.size(); ++i) freeBlock(vBlocks[i].pRecords);
        vBlocks.erase(vBlocks.begin() + static_cast<std::ptrdiff_t>(numKept), vBlocks.end());
    }

    std::vector<Block> vBlocks;
    T* pCurrentBlock = nullptr;
    int last = -1;
    int capacity = 0;
    int firstSize = 1;
    int growth = -1;
    int maxSize = 1;
    bool bInitialized = false;
    bool bNeverGrown = true;
};

}  // namespace KELMAR_NORVIK2D
