#include "hilbertOrder.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "HC2.h"
#include "radixSort.h"

namespace KELMAR_NORVIK2D {

namespace {

/// Below this a comparison sort is faster than clearing the tables of the radix sort.
constexpr std::size_t radixThreshold = 4096;

/// Key calculator over the box of some points, a little wider so that no point lies on the upper side.
HC2 calculatorOver(std::span<const KeyIndex> run, const std::vector<Point2>& points) {
    constexpr double largest = std::numeric_limits<double>::max();
    double minX = largest, minY = largest, maxX = -largest, maxY = -largest;
    for (const auto& [key, index] : run) {
        const Point2& point = points[index];
        minX = std::min(minX, point.x());
        maxX = std::max(maxX, point.x());
        minY = std::min(minY, point.y());
        maxY = std::max(maxY, point.y());
    }
    constexpr double margin = 0x1p-14;
    return {minX, minY, maxX + margin * (maxX - minX), maxY + margin * (maxY - minY), hilbertKeyBits};
}

void sortByKey(std::span<KeyIndex> run, std::vector<KeyIndex>& scratch) {
    if (run.size() >= radixThreshold) {
        scratch.resize(std::max(scratch.size(), run.size()));
        radixSort(run, std::span(scratch).first(run.size()), [](const KeyIndex& pair) { return pair.first; });
        return;
    }
    std::sort(run.begin(), run.end());  // the indices make all pairs different
}

/// Calls `visit(first, length)` for each run of more than `shortStretch` equal keys.
template <class Visit>
void forEachLongRun(std::span<const KeyIndex> pairs, Visit visit) {
    for (std::size_t first = 0; first < pairs.size();) {
        std::size_t last = first + 1;
        while (last < pairs.size() && pairs[last].first == pairs[first].first) ++last;
        if (last - first > shortStretch) visit(first, last - first);
        first = last;
    }
}

}  // namespace

void orderEqualKeys(std::span<KeyIndex> pairs, const std::vector<Point2>& points) {
    std::vector<std::span<KeyIndex>> open;
    std::vector<KeyIndex> scratch;
    forEachLongRun(pairs, [&](std::size_t first, std::size_t length) {
        const std::uint32_t key = pairs[first].first;
        open.push_back(pairs.subspan(first, length));
        while (!open.empty()) {
            const std::span<KeyIndex> run = open.back();
            open.pop_back();
            const HC2 calculator = calculatorOver(run, points);
            for (auto& [runKey, index] : run) runKey = calculator.iReset(points[index]);
            sortByKey(run, scratch);
            // A run that doesn't fall apart consists of equal points.
            if (run.front().first == run.back().first) continue;
            forEachLongRun(run, [&](std::size_t subFirst, std::size_t subLength) {
                open.push_back(run.subspan(subFirst, subLength));
            });
        }
        for (auto& pair : pairs.subspan(first, length)) pair.first = key;
    });
}

}  // namespace KELMAR_NORVIK2D
