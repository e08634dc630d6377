#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace KELMAR_NORVIK2D {

/// Sorts records by an unsigned key of 33 bits at most, in three passes from the lowest digit. Stable, thus
/// repeatable. `scratch` has the size of `records`; nothing is allocated and nothing thrown.
template <class Record, class KeyOf>
void radixSort(std::span<Record> records, std::span<Record> scratch, KeyOf keyOf) noexcept {
    constexpr int digitBits = 11;
    constexpr std::size_t numBuckets = std::size_t{1} << digitBits;
    constexpr std::uint64_t digitMask = numBuckets - 1;

    std::array<std::array<std::uint32_t, numBuckets>, 3> starts{};
    for (const Record& record : records) {
        const std::uint64_t key = keyOf(record);
        ++starts[0][key & digitMask];
        ++starts[1][(key >> digitBits) & digitMask];
        ++starts[2][key >> (2 * digitBits)];
    }
    for (auto& digitStarts : starts) {
        std::uint32_t sum = 0;
        for (std::uint32_t& start : digitStarts) sum += std::exchange(start, sum);
    }

    std::span<Record> from = records, to = scratch;
    for (int pass = 0; pass < 3; ++pass) {
        auto& digitStarts = starts[static_cast<std::size_t>(pass)];
        for (const Record& record : from)
            to[digitStarts[(keyOf(record) >> (pass * digitBits)) & digitMask]++] = record;
        std::swap(from, to);
    }
    for (std::size_t i = 0; i < records.size(); ++i) records[i] = scratch[i];
}

}  // namespace KELMAR_NORVIK2D
