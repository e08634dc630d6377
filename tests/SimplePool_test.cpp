#include "SimplePool.h"

#include <gtest/gtest.h>

#include <limits>

#include "captureOutput.h"

using KELMAR_NORVIK2D::SimplePool;

/// Sanitizers would end the program where an allocation fails.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

namespace {

struct Record {
    std::int64_t fields[6];
};

/// Hands out records until the pool has so many blocks, and returns their sizes.
std::vector<int> blockSizes(SimplePool<Record>& pool, std::size_t numBlocks) {
    while (pool.numBlocks() < numBlocks) pool.get();
    std::vector<int> sizes;
    for (std::size_t i = 0; i < pool.numBlocks(); ++i) sizes.push_back(pool.blockSize(i));
    return sizes;
}

}  // namespace

TEST(SimplePool, BlocksGrowByTheirLaw) {
    const struct {
        int firstSize, maxSize, growth;
        std::vector<int> sizes;
    } cases[] = {{10, 100, -1, {10, 5, 10, 20, 40, 80, 100, 100}},
                 {1, 100, -1, {1, 1, 2, 4, 8}},
                 {0, 100, -1, {1, 1, 2, 4}},
                 {300, 100, -1, {300, 100, 100}},
                 {4, 100, 3, {4, 3, 3, 3}},
                 {4, 100, 0, {4, 1, 1}}};
    for (const auto& expected : cases) {
        SimplePool<Record> pool;
        pool.init(expected.firstSize, expected.maxSize, expected.growth);
        EXPECT_EQ(blockSizes(pool, expected.sizes.size()), expected.sizes);
    }
}

TEST(SimplePool, RecordsStayAndKnowTheirRank) {
    SimplePool<Record> pool;
    pool.init(7, 50);
    EXPECT_TRUE(pool.neverGrown());
    std::vector<const Record*> records;
    for (std::int64_t i = 0; i < 1000; ++i) {
        if (i == 20) pool.alloc(100);  // leaves a block partly used
        Record* const pRecord = pool.get();
        pRecord->fields[5] = i;
        records.push_back(pRecord);
    }
    EXPECT_FALSE(pool.neverGrown());
    for (std::int64_t i = 0; i < 1000; ++i) {
        EXPECT_EQ(records[static_cast<std::size_t>(i)]->fields[5], i);
        EXPECT_EQ(pool.rankOf(records[static_cast<std::size_t>(i)]), i);
        EXPECT_EQ(pool.at(i), records[static_cast<std::size_t>(i)]);
    }
    for (const std::int64_t rank : {-1, 1000}) EXPECT_EQ(pool.at(rank), nullptr);
    const Record stranger{};
    for (const Record* pRecord : {&stranger, static_cast<const Record*>(nullptr), records.back() + 1})
        EXPECT_EQ(pool.rankOf(pRecord), -1);

    pool.alloc(2000000);  // large blocks are aligned for huge pages
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pool.get()) % (std::uintptr_t{1} << 21), 0U);
}

TEST(SimplePool, ResetKeepsTheFirstBlockOnly) {
    SimplePool<Record> pool;
    pool.reset();
    pool.init(4, 100);
    Record* const pFirst = pool.get();
    const std::vector<int> sizes = blockSizes(pool, 5);
    pool.reset();
    EXPECT_TRUE(pool.numBlocks() == 1 && pool.numHandedOut() == 0 && pool.neverGrown());
    EXPECT_EQ(pool.get(), pFirst);
    EXPECT_EQ(blockSizes(pool, 5), sizes);
}

TEST(SimplePool, TellsASecondInitAndManyBlocks) {
    CaptureOutput output;
    {
        SimplePool<Record> pool;
        pool.init(1, 1);
        pool.init(1, 1);
        blockSizes(pool, 1001);
    }
    EXPECT_EQ(output.out(),
              "SimplePool::init(..), ERROR: This pool is already initialized\n"
              "SimplePool::~SimplePool: Number of containers to release: 1001\n");
}

TEST(SimplePool, AFailedAllocationIsToldThrownAndLeavesThePoolUsable) {
    struct Monster {
        char bytes[std::size_t{1} << 44];
    };
    CaptureOutput output;
    SimplePool<Monster> pool;
    EXPECT_THROW(pool.init(std::numeric_limits<int>::max(), std::numeric_limits<int>::max()), std::bad_alloc);
    EXPECT_THROW(pool.get(), std::bad_alloc);
    EXPECT_TRUE(pool.numBlocks() == 0 && pool.numHandedOut() == 0);
    EXPECT_EQ(output.out().rfind("SimplePool::alloc(..), ERROR: Out of memory\n", 0), 0U);
}
