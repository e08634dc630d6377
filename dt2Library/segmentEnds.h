#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <tuple>
#include <vector>

#include "Segment2.h"

namespace KELMAR_NORVIK2D {

/// Which ends of loose segments have the same coordinates. End 2i is the source of segment i, end 2i+1 its target. Each place
/// where there are ends has a number; places are numbered by x, then by y.
class SegmentEnds {
public:
    explicit SegmentEnds(const std::vector<Segment2>& vSegments) {
        std::vector<Entry> vEntries;
        vEntries.reserve(2 * vSegments.size());
        for (const Segment2& segment : vSegments)
            for (const Point2& point : {segment.getSrc(), segment.getTrg()})
                vEntries.push_back({point.x(), point.y(), vEntries.size()});
        // Stable, so that ends at one place stay in the order of their segments.
        std::stable_sort(vEntries.begin(), vEntries.end());

        vEnds.reserve(vEntries.size());
        vPlaces.resize(vEntries.size());
        for (const Entry& entry : vEntries) {
            if (vEnds.empty() || vEntries[vEnds.size() - 1] < entry) vFirstEnds.push_back(vEnds.size());
            vPlaces[entry.end] = vFirstEnds.size() - 1;
            vEnds.push_back(entry.end);
        }
        vFirstEnds.push_back(vEnds.size());
    }

    std::size_t numberOfPlaces() const noexcept { return vFirstEnds.size() - 1; }
    std::size_t placeOf(std::size_t end) const noexcept { return vPlaces[end]; }
    std::span<const std::size_t> endsAt(std::size_t place) const noexcept {
        return std::span(vEnds).subspan(vFirstEnds[place], vFirstEnds[place + 1] - vFirstEnds[place]);
    }

private:
    struct Entry {
        double x, y;
        std::size_t end;

        bool operator<(const Entry& other) const noexcept {
            return std::tie(x, y) < std::tie(other.x, other.y);
        }
    };

    std::vector<std::size_t> vPlaces;     ///< of each end
    std::vector<std::size_t> vEnds;       ///< ordered by place
    std::vector<std::size_t> vFirstEnds;  ///< of each place, in vEnds; and the number of ends
};

/// The segment of an end, turned around if necessary, so that it begins with that end.
inline Segment2 segmentFrom(std::size_t end, const std::vector<Segment2>& vSegments) {
    Segment2 segment = vSegments[end / 2];
    if (end % 2 != 0) segment.swapSrcTrg();
    return segment;
}
inline std::size_t otherEnd(std::size_t end) { return end ^ 1; }

}  // namespace KELMAR_NORVIK2D
