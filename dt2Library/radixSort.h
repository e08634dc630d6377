#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace KELMAR_NORVIK2D {

/// Sorts records by an unsigned key, in passes from the lowest digit: three for keys of 33 bits at most, two if those above
/// 22 don't matter. Stable, thus repeatable. `scratch` has the size of `records`; nothing is allocated and nothing thrown.
template <class Record, class KeyOf>
void radixSort(std::span<Record> records, std::span<Record> scratch, KeyOf keyOf,
               std::size_t numPasses = 3) noexcept {
    constexpr std::size_t digitBits = 11, numBuckets = std::size_t{1} << digitBits;
    const auto digit = [&](const Record& record, std::size_t pass) {
        return (std::uint64_t{keyOf(record)} >> (pass * digitBits)) & (numBuckets - 1);
    };

    std::array<std::array<std::uint32_t, numBuckets>, 3> starts;
    for (std::size_t pass = 0; pass < numPasses; ++pass) starts[pass].fill(0);
    for (const Record& record : records)
        for (std::size_t pass = 0; pass < numPasses; ++pass) ++starts[pass][digit(record, pass)];

    std::span<Record> from = records, to = scratch;
    for (std::size_t pass = 0; pass < numPasses; ++pass) {
        std::uint32_t sum = 0;
        for (std::uint32_t& start : starts[pass]) sum += std::exchange(start, sum);
        for (const Record& record : from) to[starts[pass][digit(record, pass)]++] = record;
        std::swap(from, to);
    }
    if (numPasses % 2 != 0) std::copy(from.begin(), from.end(), records.begin());
}

}  // namespace KELMAR_NORVIK2D
