#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

#include "hilbertCurve.h"
#include "radixSort.h"

namespace KELMAR_TOOLS {

/// A Hilbert key, and the index of what it belongs to.
using KeyIndex = std::pair<std::uint32_t, std::uint32_t>;

/// Orders what has equal keys along a curve of its own: the keys of everything have one fixed grid over the whole box, too coarse
/// for a dense cluster in it. `CoordinatesOf` gives the place of an index.
template <unsigned Dimension, class CoordinatesOf>
class EqualKeys {
public:
    explicit EqualKeys(CoordinatesOf coordinatesOf_) : coordinatesOf(coordinatesOf_) {}

    /// Orders each run of more than `longestKept` equal keys along the curve over the run's own box, and so on in what remains
    /// equal then. The pairs are sorted by key; keys stay as they are.
    void order(std::span<KeyIndex> pairs, std::size_t longestKept) {
        forEachLongRun(pairs, longestKept, [&](std::span<KeyIndex> all) {
            const std::uint32_t key = all.front().first;
            std::vector<std::span<KeyIndex>> open{all};
            while (!open.empty()) {
                const std::span<KeyIndex> run = open.back();
                open.pop_back();
                const Grid grid = gridOver(run);
                for (auto& [runKey, index] : run) runKey = grid.keyOf(coordinatesOf(index));
                sortByKey(run);
                // A run that doesn't fall apart consists of equal places.
                if (run.front().first == run.back().first) continue;
                forEachLongRun(run, longestKept, [&](std::span<KeyIndex> part) { open.push_back(part); });
            }
            for (auto& pair : all) pair.first = key;
        });
    }

private:
    using Grid = KeyGrid<Dimension>;
    using Coordinates = typename Grid::Coordinates;

    static constexpr unsigned keyBits = 30;
    /// Below this a comparison sort is faster than clearing the tables of the radix sort.
    static constexpr std::size_t radixThreshold = 4096;

    template <class Visit>
    static void forEachLongRun(std::span<KeyIndex> pairs, std::size_t longestKept, Visit visit) {
        for (std::size_t first = 0; first < pairs.size();) {
            std::size_t last = first + 1;
            while (last < pairs.size() && pairs[last].first == pairs[first].first) ++last;
            if (last - first > longestKept) visit(pairs.subspan(first, last - first));
            first = last;
        }
    }

    /// Over the box of a run, a little wider so that nothing lies on the upper side.
    Grid gridOver(std::span<const KeyIndex> run) const {
        constexpr double largest = std::numeric_limits<double>::max(), margin = 0x1p-14;
        Coordinates least, greatest;
        least.fill(largest);
        greatest.fill(-largest);
        for (const auto& [key, index] : run) {
            const Coordinates place = coordinatesOf(index);
            for (unsigned axis = 0; axis < Dimension; ++axis) {
                least[axis] = std::min(least[axis], place[axis]);
                greatest[axis] = std::max(greatest[axis], place[axis]);
            }
        }
        for (unsigned axis = 0; axis < Dimension; ++axis)
            greatest[axis] += margin * (greatest[axis] - least[axis]);
        return Grid::over(least, greatest, keyBits);
    }

    void sortByKey(std::span<KeyIndex> run) {
        if (run.size() >= radixThreshold) {
            vScratch.resize(std::max(vScratch.size(), run.size()));
            KELMAR_NORVIK2D::radixSort(run, std::span(vScratch).first(run.size()),
                                       [](const KeyIndex& pair) { return pair.first; });
            return;
        }
        std::sort(run.begin(), run.end());  // the indices make all pairs different
    }

    CoordinatesOf coordinatesOf;
    std::vector<KeyIndex> vScratch;
};

}  // namespace KELMAR_TOOLS
