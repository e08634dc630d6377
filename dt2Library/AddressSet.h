#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "FlatTable.h"
#include "Point2.h"
#include "Triangle2.h"

namespace KELMAR_NORVIK2D {

/// Which of many records of a pool are in a set: a bit for each place in memory where one may begin, in pages, so that the
/// bits of a million records stay in the cache. Null is in no set. For the triangles of a known mesh see TriangleMarks.
template <class Record>
class AddressSet {
public:
    AddressSet() = default;
    explicit AddressSet(const std::vector<Record*>& vRecords) {
        for (const Record* pRecord : vRecords) insert(pRecord);
    }

    bool contains(const Record* pRecord) const noexcept {
        const PageOfNumber* const pPage = sPages.find(pageOf(pRecord));
        return pPage != nullptr && (vPages[pPage->index][wordOf(pRecord)] & bitOf(pRecord)) != 0;
    }

    /// Whether the record wasn't there.
    bool insert(const Record* pRecord) {
        if (pageOf(pRecord) != lastPage.number || vPages.empty()) lastPage = findOrMakePage(pageOf(pRecord));
        std::uint64_t& word = vPages[lastPage.index][wordOf(pRecord)];
        const bool bWasThere = (word & bitOf(pRecord)) != 0;
        word |= bitOf(pRecord);
        return !bWasThere;
    }

    /// Whether the record was there.
    bool erase(const Record* pRecord) noexcept {
        const PageOfNumber* const pPage = sPages.find(pageOf(pRecord));
        if (pPage == nullptr) return false;
        std::uint64_t& word = vPages[pPage->index][wordOf(pRecord)];
        const bool bWasThere = (word & bitOf(pRecord)) != 0;
        word &= ~bitOf(pRecord);
        return bWasThere;
    }

private:
    // No two records begin in the same 16 bytes.
    static constexpr unsigned bitsOfPlace = 4, bitsOfPage = 10;
    static constexpr std::size_t wordsOfPage = (std::size_t{1} << bitsOfPage) / 64;
    static_assert(sizeof(Record) >= std::size_t{1} << bitsOfPlace);
    using Page = std::array<std::uint64_t, wordsOfPage>;

    struct PageOfNumber {
        std::uint64_t number = 0;
        std::size_t index = 0;
    };
    struct NumberOf {
        std::uint64_t operator()(const PageOfNumber& page) const noexcept { return page.number; }
    };
    struct PageHash {
        std::size_t operator()(std::uint64_t number) const noexcept {
            const std::uint64_t product = number * 0x9E3779B97F4A7C15U;
            return product ^ product >> 32;
        }
    };

    PageOfNumber findOrMakePage(std::uint64_t number) {
        const auto [pPage, bNew] = sPages.insert(number);
        if (bNew) {
            *pPage = {number, vPages.size()};
            vPages.emplace_back();
        }
        return *pPage;
    }

    static std::uint64_t placeOf(const Record* pRecord) noexcept {
        return reinterpret_cast<std::uintptr_t>(pRecord) >> bitsOfPlace;
    }
    static std::uint64_t pageOf(const Record* pRecord) noexcept { return placeOf(pRecord) >> bitsOfPage; }
    static std::size_t wordOf(const Record* pRecord) noexcept { return placeOf(pRecord) / 64 % wordsOfPage; }
    static std::uint64_t bitOf(const Record* pRecord) noexcept {
        return std::uint64_t{1} << placeOf(pRecord) % 64;
    }

    FlatTable<PageOfNumber, PageHash, NumberOf> sPages;
    std::vector<Page> vPages;
    PageOfNumber lastPage;  ///< of the last insertion: the next one is mostly there too
};

using TriangleSet = AddressSet<Triangle2>;
using VertexSet = AddressSet<Point2>;

}  // namespace KELMAR_NORVIK2D
