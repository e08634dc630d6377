#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>
#include <vector>

#include "SimplePool.h"
#include "Triangle2.h"
#include "byAddress.h"

namespace KELMAR_NORVIK2D {

/// A set of triangles of one mesh that is read in the order of addresses: one bit for each record of the pool. Where the mesh
/// isn't known, AddressSet does the same at a somewhat higher price, without an order.
///
/// Memory that nobody has touched yet costs nothing, and a word above tells which words may hold bits: so a set of a few
/// triangles in a large mesh is cheap too.
class TriangleMarks {
public:
    explicit TriangleMarks(const SimplePool<Triangle2>& pool) {
        for (const std::span<Triangle2> records : pool.stretches())
            vStretches.push_back({records.data(), records.size(), 0});
        std::sort(vStretches.begin(), vStretches.end(),
                  [](const Stretch& a, const Stretch& b) { return ByAddress{}(a.pFirst, b.pFirst); });
        std::size_t numBits = 0;
        for (Stretch& stretch : vStretches) {
            stretch.firstBit = numBits;
            numBits += stretch.numRecords;
        }
        for (const Stretch& stretch : vStretches)
            if (stretch.numRecords > largest.numRecords) largest = stretch;
        pWords = zeros(numWordsFor(numBits));
        numSummaryWords = numWordsFor(numWordsFor(numBits));
        pSummary = zeros(numSummaryWords);
    }

    std::size_t size() const noexcept { return numMarked; }

    bool contains(const Triangle2* pT) const noexcept {
        const std::size_t bit = bitOf(pT);
        return (pWords[bit / wordSize] & maskOf(bit)) != 0;
    }

    /// Whether it is new.
    bool insert(const Triangle2* pT) noexcept {
        const std::size_t bit = bitOf(pT);
        std::uint64_t& word = pWords[bit / wordSize];
        if ((word & maskOf(bit)) != 0) return false;
        pSummary[bit / wordSize / wordSize] |= maskOf(bit / wordSize);
        word |= maskOf(bit);
        ++numMarked;
        return true;
    }

    /// Of a triangle that is in the set.
    void erase(const Triangle2* pT) noexcept {
        const std::size_t bit = bitOf(pT);
        pWords[bit / wordSize] &= ~maskOf(bit);
        --numMarked;
    }

    /// Appends the triangles, ordered by address.
    void appendTo(std::vector<Triangle2*>& out) const {
        out.reserve(out.size() + numMarked);
        auto stretch = vStretches.begin();
        visitUsedWords([&](std::size_t word) {
            for (std::uint64_t marks = pWords[word]; marks != 0; marks &= marks - 1) {
                const std::size_t bit = word * wordSize + firstBitOf(marks);
                while (bit - stretch->firstBit >= stretch->numRecords) ++stretch;
                out.push_back(stretch->pFirst + (bit - stretch->firstBit));
            }
        });
    }

    void clear() noexcept {
        visitUsedWords([&](std::size_t word) { pWords[word] = 0; });
        std::fill_n(pSummary.get(), numSummaryWords, 0);
        numMarked = 0;
    }

private:
    struct Stretch {
        Triangle2* pFirst;
        std::size_t numRecords, firstBit;
    };
    struct Free {
        void operator()(void* pMemory) const noexcept { std::free(pMemory); }
    };
    using Words = std::unique_ptr<std::uint64_t[], Free>;

    static constexpr std::size_t wordSize = 64;

    static std::size_t numWordsFor(std::size_t numBits) noexcept {
        return (numBits + wordSize - 1) / wordSize;
    }
    static std::uint64_t maskOf(std::size_t bit) noexcept { return std::uint64_t{1} << bit % wordSize; }
    static std::size_t firstBitOf(std::uint64_t word) noexcept {
        return static_cast<std::size_t>(std::countr_zero(word));
    }
    /// Zeros that become memory when they are touched.
    static Words zeros(std::size_t numWords) {
        Words pZeros(static_cast<std::uint64_t*>(std::calloc(numWords + 1, sizeof(std::uint64_t))));
        if (pZeros == nullptr) throw std::bad_alloc();
        return pZeros;
    }

    template <class Visit>
    void visitUsedWords(Visit visit) const {
        for (std::size_t i = 0; i < numSummaryWords; ++i)
            for (std::uint64_t used = pSummary[i]; used != 0; used &= used - 1)
                visit(i * wordSize + firstBitOf(used));
    }

    /// Of a triangle of the pool.
    std::size_t bitOf(const Triangle2* pT) const noexcept {
        const std::size_t index = indexIn(largest, pT);
        if (index < largest.numRecords) return largest.firstBit + index;
        const auto isBefore = [](const Triangle2* p, const Stretch& stretch) {
            return ByAddress{}(p, stretch.pFirst);
        };
        const Stretch& stretch = *(std::upper_bound(vStretches.begin(), vStretches.end(), pT, isBefore) - 1);
        return stretch.firstBit + indexIn(stretch, pT);
    }

    static std::size_t indexIn(const Stretch& stretch, const Triangle2* pT) noexcept {
        // Integers, because pointers into different blocks can't be subtracted.
        return (reinterpret_cast<std::uintptr_t>(pT) - reinterpret_cast<std::uintptr_t>(stretch.pFirst)) /
               sizeof(Triangle2);
    }

    std::vector<Stretch> vStretches;  ///< the pool's records, ordered by address
    Stretch largest{};                ///< of them: most questions end here
    Words pWords;
    Words pSummary;  ///< a bit for each word that has, or had, bits
    std::size_t numSummaryWords = 0;
    std::size_t numMarked = 0;
};

}  // namespace KELMAR_NORVIK2D
