#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "SimplePool.h"

namespace KELMAR_NORVIK2D {

/// Addresses of records in a pool, or pairs of them, as places in a table: what lies together in the pool and is asked for
/// together stays together in the table, in groups that are spread at random.
struct AddressHash {
    std::size_t operator()(const void* pRecord) const noexcept {
        return spread(groupOf(pRecord)) << bitsOfGroup | (numberOf(pRecord) & (groupSize - 1));
    }
    std::size_t operator()(const void* pRecord0, const void* pRecord1) const noexcept {
        const std::uint64_t group = spread(groupOf(pRecord0) * odd ^ groupOf(pRecord1));
        return group << (bitsOfGroup + 1) |
               ((2 * numberOf(pRecord0) + numberOf(pRecord1)) & (2 * groupSize - 1));
    }

private:
    static constexpr unsigned bitsOfRecord = 5, bitsOfGroup = 3;
    static constexpr std::uint64_t groupSize = 1U << bitsOfGroup, odd = 0x9E3779B97F4A7C15U;

    static std::uint64_t numberOf(const void* pRecord) noexcept {
        return reinterpret_cast<std::uintptr_t>(pRecord) >> bitsOfRecord;
    }
    static std::uint64_t groupOf(const void* pRecord) noexcept { return numberOf(pRecord) >> bitsOfGroup; }
    static std::uint64_t spread(std::uint64_t group) noexcept {
        const std::uint64_t product = group * odd;
        return product ^ product >> 32;
    }
};

/// The key of an entry that is its own key.
struct OwnKey {
    template <class Entry>
    const Entry& operator()(const Entry& entry) const noexcept {
        return entry;
    }
};

/// A hash table for masses of small entries, without an allocation for each. Beside the entries stands one byte for each place,
/// which answers nearly all questions for keys that aren't there: these bytes stay in the cache where the entries don't.
///
/// The lower bits of `Hash` are the place. `KeyOf` reads the key out of an entry.
template <class Entry, class Hash = AddressHash, class KeyOf = OwnKey>
class FlatTable {
public:
    bool empty() const noexcept { return numEntries == 0; }
    std::size_t size() const noexcept { return numEntries; }

    /// Room for that many entries in all.
    void reserve(std::size_t n) {
        if (n > capacity()) rehash(std::bit_ceil(2 * n));
    }

    /// The entry of a key, null if there is none. Valid until something is inserted.
    template <class Key>
    Entry* find(const Key& key) noexcept {
        if (empty()) return nullptr;
        const std::size_t place = placeOf(key, Hash{}(key));
        return vMarks[place] == freePlace ? nullptr : &pEntries[place];
    }
    template <class Key>
    const Entry* find(const Key& key) const noexcept {
        return const_cast<FlatTable*>(this)->find(key);
    }
    template <class Key>
    bool contains(const Key& key) const noexcept {
        return find(key) != nullptr;
    }

    /// The entry of a key, and whether it is new: then it is to be given a value with this key at once.
    template <class Key>
    std::pair<Entry*, bool> insert(const Key& key) {
        if (numEntries >= capacity()) rehash(vMarks.empty() ? 16 : 2 * vMarks.size());
        const std::size_t hash = Hash{}(key);
        const std::size_t place = placeOf(key, hash);
        const bool bNew = vMarks[place] == freePlace;
        if (bNew) {
            vMarks[place] = markOf(hash);
            ++numEntries;
        }
        return {&pEntries[place], bNew};
    }

    /// Takes out an entry that find() has given. Others may move to other places.
    void erase(Entry* pEntry) noexcept {
        const std::size_t mask = vMarks.size() - 1;
        auto hole = static_cast<std::size_t>(pEntry - pEntries.get());
        // Whatever stands behind the hole, up to the next free place, moves into it unless it belongs behind it.
        for (std::size_t place = (hole + 1) & mask; vMarks[place] != freePlace; place = (place + 1) & mask) {
            const std::size_t home = Hash{}(KeyOf{}(pEntries[place]));
            if (((place - home) & mask) < ((place - hole) & mask)) continue;
            vMarks[hole] = vMarks[place];
            pEntries[hole] = pEntries[place];
            hole = place;
        }
        vMarks[hole] = freePlace;
        --numEntries;
    }

    /// Visits all entries, in no order.
    template <class Visit>
    void visit(Visit visitEntry) const {
        for (std::size_t place = 0; place < vMarks.size(); ++place)
            if (vMarks[place] != freePlace) visitEntry(pEntries[place]);
    }

    /// Asks for the memory that a later question for the key will read. Inline by force, like all functions that do nothing
    /// else: to GCC they have no effect, and it drops calls of them.
    template <class Key>
    [[gnu::always_inline]] void prefetch(const Key& key) const noexcept {
        if (vMarks.empty()) return;
        const std::size_t place = Hash{}(key) & (vMarks.size() - 1);
        __builtin_prefetch(&vMarks[place]);
        __builtin_prefetch(&pEntries[place]);
    }

private:
    static constexpr std::uint8_t freePlace = 0;

    /// Half of the places: searches end after one or two steps.
    std::size_t capacity() const noexcept { return vMarks.size() / 2; }

    static std::uint8_t markOf(std::size_t hash) noexcept {
        return static_cast<std::uint8_t>((hash >> 32 ^ hash) | 1);
    }

    template <class Key>
    std::size_t placeOf(const Key& key, std::size_t hash) const noexcept {
        const std::uint8_t mark = markOf(hash);
        const std::size_t mask = vMarks.size() - 1;
        std::size_t place = hash & mask;
        while (vMarks[place] != freePlace && (vMarks[place] != mark || KeyOf{}(pEntries[place]) != key))
            place = (place + 1) & mask;
        return place;
    }

    struct FreeBlock {
        void operator()(Entry* pBlock) const noexcept { freeBlock(pBlock); }
    };
    using Entries = std::unique_ptr<Entry[], FreeBlock>;

    void rehash(std::size_t numPlaces) {
        std::vector<std::uint8_t> vOldMarks(numPlaces, freePlace);
        // NOLINTNEXTLINE(bugprone-sizeof-expression): entries may be pointers.
        Entries pOld(static_cast<Entry*>(allocateBlock(numPlaces * sizeof(Entry))));
        if (pOld == nullptr) throw std::bad_alloc();
        vOldMarks.swap(vMarks);
        pOld.swap(pEntries);
        for (std::size_t i = 0; i < vOldMarks.size(); ++i) {
            if (vOldMarks[i] == freePlace) continue;
            const std::size_t hash = Hash{}(KeyOf{}(pOld[i]));
            const std::size_t place = placeOf(KeyOf{}(pOld[i]), hash);
            vMarks[place] = markOf(hash);
            pEntries[place] = pOld[i];
        }
    }

    static_assert(std::is_trivially_copyable_v<Entry>, "entries live in memory that nothing has initialised");

    std::vector<std::uint8_t>
        vMarks;        ///< of each place, as many as a power of two; never 0 where there is an entry
    Entries pEntries;  ///< only those with a mark have a value
    std::size_t numEntries = 0;
};

}  // namespace KELMAR_NORVIK2D
