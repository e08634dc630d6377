#include "rings.h"

#include <algorithm>
#include <map>
#include <utility>

using namespace KELMAR_NORVIK2D;

namespace {

class RingFinder {
public:
    explicit RingFinder(const std::vector<Segment2>& vSegments_)
        : vSegments(vSegments_), vTaken(vSegments.size(), false) {}

    Rings find() {
        takeRuns();
        takeJoined();
        // The rings of both kinds in one order.
        std::sort(vFound.begin(), vFound.end(),
                  [](const Found& a, const Found& b) { return a.first < b.first; });
        Rings result;
        for (Found& found : vFound) result.vRings.push_back(std::move(found.second));
        for (std::size_t i = 0; i < vSegments.size(); ++i)
            if (!vTaken[i]) result.vLoose.push_back(vSegments[i]);
        return result;
    }

private:
    using Numbers = std::vector<std::size_t>;
    using Found = std::pair<std::size_t, Ring>;

    void takeRuns() {
        for (std::size_t first = 0; first < vSegments.size();) {
            const Point2 start = vSegments[first].getSrc();
            std::size_t last = first;
            while (vSegments[last].getTrg() != start && last + 1 < vSegments.size() &&
                   vSegments[last + 1].getSrc() == vSegments[last].getTrg())
                ++last;
            Numbers vRun;
            for (std::size_t i = first; i <= last; ++i) vRun.push_back(i);
            first = last + 1;
            if (vSegments[last].getTrg() == start) takeIfRing(vRun);
        }
    }

    void takeJoined() {
        for (std::size_t i = 0; i < vSegments.size(); ++i) {
            if (vTaken[i]) continue;
            mEnds[vSegments[i].getSrc()].push_back(i);
            mEnds[vSegments[i].getTrg()].push_back(i);
        }
        std::vector<bool> vTried = vTaken;
        dropTails(vTried);
        for (std::size_t i = 0; i < vSegments.size(); ++i) {
            if (vTried[i]) continue;
            Numbers vWalk;
            const bool bClosed = walk(i, vWalk);
            for (const std::size_t walked : vWalk) vTried[walked] = true;
            if (bClosed) takeIfRing(vWalk);
        }
    }

    /// Segments with a free end, and those that have one without them, would hide the ring that they join.
    void dropTails(std::vector<bool>& vTried) {
        for (const auto& [end, vJoined] : mEnds) {
            Point2 at = end;
            while (mEnds[at].size() == 1) {
                const std::size_t tail = mEnds[at].front();
                const Segment2& segment = vSegments[tail];
                vTried[tail] = true;
                mEnds[at].clear();
                at = segment.getSrc() == at ? segment.getTrg() : segment.getSrc();
                std::erase(mEnds[at], tail);
            }
        }
    }

    /// Goes on from the target of a segment as long as just one other segment is there. Whether that leads back to its source.
    bool walk(std::size_t first, Numbers& vWalk) const {
        Point2 at = vSegments[first].getTrg();
        vWalk.push_back(first);
        while (at != vSegments[first].getSrc()) {
            const Numbers& vJoined = mEnds.at(at);
            if (vJoined.size() != 2) return false;
            const std::size_t next = vJoined[0] == vWalk.back() ? vJoined[1] : vJoined[0];
            at = vSegments[next].getSrc() == at ? vSegments[next].getTrg() : vSegments[next].getSrc();
            vWalk.push_back(next);
        }
        return mEnds.at(at).size() == 2;
    }

    /// `vNumbers` tells a closed walk.
    void takeIfRing(const Numbers& vNumbers) {
        Ring ring;
        for (const std::size_t number : vNumbers) ring.push_back(vSegments[number]);
        for (std::size_t i = 1; i < ring.size(); ++i)
            if (ring[i].getSrc() != ring[i - 1].getTrg()) ring[i].swapSrcTrg();
        if (isFlat(ring)) return;
        for (const std::size_t number : vNumbers) vTaken[number] = true;
        vFound.emplace_back(*std::min_element(vNumbers.begin(), vNumbers.end()), std::move(ring));
    }

    bool isFlat(const Ring& ring) {
        const Point2 from = ring[0].getSrc(), to = ring[0].getTrg();
        return std::all_of(ring.begin(), ring.end(), [&](const Segment2& segment) {
            return predicates.getOrientation(from, to, segment.getTrg()) == ORIENTATION2_COLLINEAR;
        });
    }

    const std::vector<Segment2>& vSegments;
    std::vector<bool> vTaken;
    std::vector<Found> vFound;
    std::map<Point2, Numbers> mEnds;
    Norvik_2D predicates;  ///< asked for orientations only
};

}  // namespace

Rings findRings(const std::vector<Segment2>& segments) { return RingFinder(segments).find(); }
