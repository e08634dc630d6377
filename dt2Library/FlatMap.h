#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace KELMAR_NORVIK2D {

/// Spreads addresses, but leaves up to eight records of 32 bytes that are neighbours in a pool beside each other: they tend to be
/// asked for together.
struct AddressHash {
    std::size_t operator()(const void* pRecord) const noexcept {
        constexpr unsigned bitsOfRecord = 5, bitsOfGroup = 3;
        const std::uint64_t number = reinterpret_cast<std::uintptr_t>(pRecord) >> bitsOfRecord;
        const std::uint64_t product = (number >> bitsOfGroup) * 0x9E3779B97F4A7C15U;
        return (product >> 32 ^ product >> 52) << bitsOfGroup | (number & ((1U << bitsOfGroup) - 1));
    }
};

struct NoValue {};

/// A hash table that lies in one piece of memory, for masses of small keys: a lookup costs one cache miss, and there is no
/// allocation per entry. Nothing is ever taken out. `Key()` marks free places and can't be a key.
template <class Key, class Value, class Hash = AddressHash>
class FlatMap {
public:
    bool empty() const noexcept { return numEntries == 0; }
    std::size_t size() const noexcept { return numEntries; }

    /// Room for that many entries in all.
    void reserve(std::size_t n) {
        if (n > capacity()) rehash(std::bit_ceil(2 * n));
    }

    /// The value of a key, null if there is none. Valid until something is inserted.
    Value* find(const Key& key) noexcept {
        if (empty()) return nullptr;
        Entry& entry = vEntries[placeOf(key)];
        return entry.key == Key() ? nullptr : &entry.value;
    }
    const Value* find(const Key& key) const noexcept { return const_cast<FlatMap*>(this)->find(key); }
    bool contains(const Key& key) const noexcept { return find(key) != nullptr; }

    /// The value of a key, and whether the key is new: its value is `Value()` then.
    std::pair<Value*, bool> insert(const Key& key) {
        if (numEntries >= capacity()) rehash(vEntries.empty() ? 16 : 2 * vEntries.size());
        Entry& entry = vEntries[placeOf(key)];
        const bool bNew = entry.key == Key();
        if (bNew) {
            entry.key = key;
            ++numEntries;
        }
        return {&entry.value, bNew};
    }
    Value& operator[](const Key& key) { return *insert(key).first; }

    template <class Visit>
    void visitKeys(Visit visit) const {
        for (const Entry& entry : vEntries)
            if (!(entry.key == Key())) visit(entry.key);
    }

    void clear() {
        vEntries.clear();
        numEntries = 0;
    }

private:
    struct Entry {
        Key key{};
        [[no_unique_address]] Value value{};
    };

    /// Half of the places: searches end after one or two steps.
    std::size_t capacity() const noexcept { return vEntries.size() / 2; }

    std::size_t placeOf(const Key& key) const noexcept {
        const std::size_t mask = vEntries.size() - 1;
        std::size_t place = Hash{}(key)&mask;
        while (!(vEntries[place].key == key) && !(vEntries[place].key == Key())) place = (place + 1) & mask;
        return place;
    }

    void rehash(std::size_t numPlaces) {
        std::vector<Entry> vOld(numPlaces);
        vOld.swap(vEntries);
        for (Entry& entry : vOld)
            if (!(entry.key == Key())) vEntries[placeOf(entry.key)] = std::move(entry);
    }

    std::vector<Entry> vEntries;  ///< as many as a power of two
    std::size_t numEntries = 0;
};

template <class Key, class Hash = AddressHash>
using FlatSet = FlatMap<Key, NoValue, Hash>;

}  // namespace KELMAR_NORVIK2D
