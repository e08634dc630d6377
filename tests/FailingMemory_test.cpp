// Memory that is refused at each place in turn. A program of its own, since all its allocations go through here.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>
#include <streambuf>

#include "SimplePool.h"
#include "manyPoints.h"
#include "temporaryFolder.h"
#include "wholeInterface.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// While one lives, the allocation with this number fails, and with `bLasting` all that follow.
class Shortage {
public:
    Shortage(long number, bool bLasting_) {
        count = 0;
        bLasting = bLasting_;
        first = number;
    }
    ~Shortage() { first = 0; }
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;

    static bool hasBegun() { return count >= first; }
    static bool refuses() {
        if (first == 0) return false;
        const long number = ++count;
        return number == first || (bLasting && number > first);
    }

private:
    static inline std::atomic<long> count{0}, first{0};
    static inline std::atomic<bool> bLasting{false};
};

}  // namespace

// The linker leads calls of these functions to the ones named __wrap_, and calls of __real_ to what they were.
extern "C" {
void* __real_malloc(std::size_t numBytes);
void* __real_calloc(std::size_t number, std::size_t numBytes);
void* __real_aligned_alloc(std::size_t alignment, std::size_t numBytes);

void* __wrap_malloc(std::size_t numBytes) { return Shortage::refuses() ? nullptr : __real_malloc(numBytes); }
void* __wrap_calloc(std::size_t number, std::size_t numBytes) {
    return Shortage::refuses() ? nullptr : __real_calloc(number, numBytes);
}
void* __wrap_aligned_alloc(std::size_t alignment, std::size_t numBytes) {
    return Shortage::refuses() ? nullptr : __real_aligned_alloc(alignment, numBytes);
}
}

// Out of line, where GCC would see new answered by free() and take it for a mistake.
[[gnu::noinline]] void* operator new(std::size_t numBytes, const std::nothrow_t& /*tag*/) noexcept {
    return std::malloc(numBytes);
}
[[gnu::noinline]] void* operator new[](std::size_t numBytes, const std::nothrow_t& /*tag*/) noexcept {
    return std::malloc(numBytes);
}
[[gnu::noinline]] void* operator new(std::size_t numBytes) {
    if (void* const pMemory = std::malloc(numBytes)) return pMemory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new[](std::size_t numBytes) { return operator new(numBytes); }
[[gnu::noinline]] void operator delete(void* pMemory) noexcept { std::free(pMemory); }
[[gnu::noinline]] void operator delete[](void* pMemory) noexcept { std::free(pMemory); }
[[gnu::noinline]] void operator delete(void* pMemory, std::size_t /*numBytes*/) noexcept {
    std::free(pMemory);
}
[[gnu::noinline]] void operator delete[](void* pMemory, std::size_t /*numBytes*/) noexcept {
    std::free(pMemory);
}

namespace {

/// Standard output as it lives: in a fixed place, that takes no memory.
class FixedOutput : std::streambuf {
public:
    FixedOutput() : pBefore(std::cout.rdbuf(this)) {}
    ~FixedOutput() override { std::cout.rdbuf(pBefore); }
    std::string_view text() const { return {place.data(), used}; }

private:
    int_type overflow(int_type c) override {
        if (used < place.size()) place[used++] = static_cast<char>(c);
        return traits_type::not_eof(c);
    }
    std::array<char, 1000> place{};
    std::size_t used = 0;
    std::streambuf* pBefore;
};

/// The scene with the n-th allocation refused: its result, or none if it ended in std::bad_alloc. Whatever else it throws
/// is a fault, as is what the sanitizers find. Objects die while the shortage lasts.
template <class Scene>
std::optional<std::string> resultOf(Scene scene, long number, bool bLasting, bool& bBegun) {
    const FixedOutput output;
    const Shortage shortage(number, bLasting);
    std::optional<std::string> text;
    try {
        wholeInterface::Results results;
        scene(results);
        text = std::move(results.text);
    } catch (const std::bad_alloc&) {
    }
    bBegun = Shortage::hasBegun();
    return text;
}

/// Each of the first hundred, then each hundredth of what has been: the later ones repeat the earlier ones.
long next(long number) { return number + 1 + number / 100; }

class FailingMemory : public testing::TestWithParam<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(Scene, FailingMemory,
                         testing::Range(std::size_t{0}, std::size(wholeInterface::scenes)));

}  // namespace

TEST_P(FailingMemory, EndsInBadAllocOrMakesNoDifference) {
    const wholeInterface::SceneFunction scene = wholeInterface::scenes[GetParam()];
    bool bBegun = false;
    const std::optional<std::string> expected = resultOf(scene, 1000000000, false, bBegun);
    for (const bool bLasting : {false, true})
        for (long number = 1;; number = next(number)) {
            const std::optional<std::string> result = resultOf(scene, number, bLasting, bBegun);
            if (!bBegun) break;
            ASSERT_TRUE(!result || *result == *expected) << number << bLasting;
        }
}

TEST(FailingMemory, FilesAreWrittenReadOrToldUnreadable) {
    const TemporaryFolder folder;
    bool bBegun = false;
    for (const bool bLasting : {false, true}) {
        long number = 0;
        do
            resultOf([](auto& results) { wholeInterface::write(results, "scene"); }, ++number, bLasting,
                     bBegun);
        while (bBegun);
    }
}

TEST(FailingMemory, OfAThreadIsThrownInTheCallersThread) {
    hardPoints::Rng rng(1);
    const std::vector<Point2> points =
        manyPoints::makePoints(manyPoints::kinds[0], manyPoints::enoughForThreads, rng);
    bool bBegun = true;
    int numThrown = 0;
    for (long number = 1; bBegun; number += 1 + number / 8)
        numThrown += !resultOf(
            [&](auto&) {
                Norvik_2D mesh;
                mesh.setNumCPU(2);
                mesh.insert(points);
            },
            number, true, bBegun);
    EXPECT_GT(numThrown, 10);
}

TEST(FailingMemory, OfAPoolIsToldWithoutFurtherMemory) {
    SimplePool<double> pool;
    pool.init(4, 4);
    const FixedOutput output;
    bool bThrown = false;
    try {
        const Shortage shortage(2, true);  // the first one is for the list of blocks
        pool.alloc(4);
    } catch (const std::bad_alloc&) {
        bThrown = true;
    }
    EXPECT_TRUE(bThrown);
    EXPECT_EQ(output.text(), "SimplePool::alloc(..), ERROR: Out of memory\n");
    EXPECT_EQ(pool.numBlocks(), 1U);
}
