#pragma once

#include <algorithm>

#include "ExactReference.h"
#include "Segment2.h"
#include "SegmentChecker.h"
#include "geometryTools.h"

/// What two segments have in common, by exact signs and the order of points, for comparison with the library's answers.
namespace exactSegments {

using namespace KELMAR_NORVIK2D;

inline Point2 least(const Segment2& s) { return std::min(s.getSrc(), s.getTrg()); }
inline Point2 greatest(const Segment2& s) { return std::max(s.getSrc(), s.getTrg()); }
inline bool hasEnd(const Segment2& s, const Point2& p) { return s.getSrc() == p || s.getTrg() == p; }
inline bool isPoint(const Segment2& s) { return s.getSrc() == s.getTrg(); }

/// Of collinear segments that meet, what they have in common, from its least point to its greatest.
inline Segment2 overlapOf(const Segment2& s, const Segment2& t) {
    return {std::max(least(s), least(t)), std::min(greatest(s), greatest(t))};
}

/// What segments have in common of which the first has a length.
inline IntersectionType meeting(ExactReference& exact, const Segment2& s, const Segment2& t) {
    const Point2 a = s.getSrc(), b = s.getTrg(), c = t.getSrc(), d = t.getTrg();
    const int sideC = exact.orientation(a, b, c), sideD = exact.orientation(a, b, d);
    if (sideC * sideD > 0) return IST_NOIS;
    if (sideC != 0 || sideD != 0)
        return exact.orientation(c, d, a) * exact.orientation(c, d, b) <= 0 ? IST_REGULAR : IST_NOIS;
    const Segment2 overlap = overlapOf(s, t);
    return overlap.getTrg() < overlap.getSrc() ? IST_NOIS : IST_COLLINEAR;
}

/// The type that a SegmentChecker tells of different objects.
inline SegmentIntersectionType typeOf(ExactReference& exact, const Segment2& s, const Segment2& t) {
    if (isPoint(s) && !isPoint(t)) return typeOf(exact, t, s);
    if (isPoint(s)) return s.getSrc() == t.getSrc() ? SIT_ENDPOINT : SIT_NONE;
    const IntersectionType type = meeting(exact, s, t);
    if (type == IST_NOIS) return SIT_NONE;
    if (type == IST_COLLINEAR && !isPoint(overlapOf(s, t))) return SIT_SEGMENT;
    return hasEnd(s, t.getSrc()) || hasEnd(s, t.getTrg()) ? SIT_ENDPOINT : SIT_POINT;
}

}  // namespace exactSegments
