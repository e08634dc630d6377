#pragma once

#include <SegmentChecker.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

#include "segmentSets.h"

/// Who finds the pairs of segments that cross or overlap: this library, or another one to compare with.
class CheckPeer {
public:
    using Segments = std::vector<KELMAR_NORVIK2D::Segment2>;

    virtual ~CheckPeer() = default;

    virtual void setInput(const SegmentSet& segments) {
        for (const auto& [from, to] : segments)
            vInput.emplace_back(KELMAR_NORVIK2D::Point2(from.x, from.y), KELMAR_NORVIK2D::Point2(to.x, to.y));
    }
    /// What is measured: all of it, from the segments to the number of partners that they have, each for itself.
    virtual std::size_t findAll() = 0;

protected:
    Segments vInput;
};

using CheckPeerMaker = std::unique_ptr<CheckPeer> (*)();

// Null means that the benchmarks were built without that peer.
std::unique_ptr<CheckPeer> makeNorvik2dChecker();
std::unique_ptr<CheckPeer> makeBoostChecker();
std::unique_ptr<CheckPeer> makeGridChecker();

/// Whether two segments cross or overlap: the same exact predicate for all, by a filter that needs no call, and for what that
/// leaves undecided by the library.
class ExactCrossing {
public:
    /// No coordinate is greater than `magnitude`.
    explicit ExactCrossing(double magnitude) : bound(0x3p-50 * magnitude * magnitude) {}

    bool operator()(KELMAR_NORVIK2D::Segment2& s, KELMAR_NORVIK2D::Segment2& t) const {
        const auto a = s.getSrc(), b = s.getTrg(), c = t.getSrc(), d = t.getTrg();
        const int ends1 = side(a, b, c) * side(a, b, d);
        if (ends1 > 0) return false;
        const int ends2 = side(c, d, a) * side(c, d, b);
        if (ends2 > 0) return false;
        if (ends1 < 0 && ends2 < 0) return true;
        const auto type = checker.getIntersectionType(&s, &t);
        return type == KELMAR_NORVIK2D::SIT_POINT || type == KELMAR_NORVIK2D::SIT_SEGMENT;
    }

private:
    /// 0 where the filter can't tell.
    int side(const KELMAR_NORVIK2D::Point2& a, const KELMAR_NORVIK2D::Point2& b,
             const KELMAR_NORVIK2D::Point2& c) const {
        const double det = (a.x() - c.x()) * (b.y() - c.y()) - (a.y() - c.y()) * (b.x() - c.x());
        return static_cast<int>(det > bound) - static_cast<int>(-bound > det);
    }

    double bound;
    KELMAR_NORVIK2D::SegmentChecker checker;
};
