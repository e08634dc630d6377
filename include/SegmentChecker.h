#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "MsgBase.h"
#include "Point2.h"
#include "Segment2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

struct SegmentCheckerData;

/// What two segments have in common.
enum SegmentIntersectionType {
    SIT_UNINITIALIZED = 0,  ///< never a result
    SIT_NONE = 1,           ///< nothing
    SIT_SEGMENT = 2,        ///< a stretch, or they are the same object
    SIT_POINT = 3,          ///< one point that isn't an end of both: they cross, or one ends on the other
    SIT_ENDPOINT = 4        ///< one end of each, and nothing else
};

/// Tells which of many segments cross or overlap, before they become constraints. It needs no triangulation. All decisions are
/// exact for the double coordinates; segments of length zero are points, and legal.
///
/// The segments belong to the client: they must outlive the checker and stay as they are. Null pointers and coordinates that
/// aren't finite are not allowed.
///
/// The checker is first filled, then asked. The first question builds the index in which partners are found. Segments that are
/// added later have a place in the list and find their partners, but the questions of others don't find them.
///
/// One thread at a time, for const members too: they use numbers and memory of the checker. An assertion that fails ends in a
/// NorvikException.
class NORVIK2D_EXPORT SegmentChecker {
public:
    /// What getIndex() says of an unknown segment.
    static constexpr std::size_t noIndex = 4294967295;

    SegmentChecker();
    /// With these segments added.
    explicit SegmentChecker(const std::vector<Segment2*>& vSegments);
    ~SegmentChecker();
    SegmentChecker(const SegmentChecker&) = delete;
    SegmentChecker& operator=(const SegmentChecker&) = delete;

    /// Appends to the list. A segment that is there already gets a second place; its index stays the first.
    void addSegments(const std::vector<Segment2*>& vSegments);
    std::size_t getNumberOfSegments() const;
    /// The segment at a place of the list; an assertion fails behind its end.
    Segment2* getSegment(std::size_t i) const;
    /// The place in the list. For an unknown segment a warning, and `noIndex`.
    std::size_t getIndex(Segment2* pSegment) const;

    /// Replaces `out` by all segments that have a crossing or an overlap with another one (SIT_POINT, SIT_SEGMENT), with
    /// `bAlsoEndPointIntersections` also by those that touch another one's end (SIT_ENDPOINT): each once, ordered by address.
    /// Reports progress under the name "getIllegalSegments".
    void getIllegalSegments(bool bAlsoEndPointIntersections, std::vector<Segment2*>& out) const;

    /// Appends the partners of one segment, which needn't be in the list, each with what they have in common: SIT_POINT and
    /// SIT_SEGMENT, with `bAlsoEndPointIntersections` also SIT_ENDPOINT. Their order is that of a Hilbert curve through the
    /// centres of their boxes. The segment itself is no partner, an equal one is.
    void getIntersectors(Segment2* pSegment, bool bAlsoEndPointIntersections,
                         std::vector<std::pair<Segment2*, SegmentIntersectionType>>& out) const;

    /// What two segments have in common; neither needs to be in the list. The same object twice is SIT_SEGMENT, two equal
    /// points are SIT_ENDPOINT.
    SegmentIntersectionType getIntersectionType(Segment2* pS1, Segment2* pS2) const;
    /// The first part of it, for points and for segments with a common end. `p1`, `p2` are the ends of the first segment, `p3`,
    /// `p4` those of the second. SIT_UNINITIALIZED if it is still undecided: then both have a length, the segments and
    /// points may have changed their roles, and a common end has become `p1` and `p3`.
    SegmentIntersectionType getIntersectionType_degeneratePart(Segment2*& pS1, Segment2*& pS2, Point2& p1,
                                                               Point2& p2, Point2& p3, Point2& p4) const;
    /// The enumerator's name, "UNKNOWN SIT" for any other value.
    std::string getIntersectionTypeString(SegmentIntersectionType type) const;

    /// Where segments of this type meet. For SIT_POINT the best doubles for the crossing, not moved to an end; if one segment is
    /// a point, that point. For SIT_ENDPOINT the common end, as `s1` has it. Any other type, and SIT_ENDPOINT without
    /// a common end, give a warning and leave `out` as it is. SIT_POINT for parallel segments ends in an error message and a
    /// NorvikException.
    void getIntersectionPoint(SegmentIntersectionType type, const Segment2& s1, const Segment2& s2,
                              Point2& out) const;
    /// The stretch that two segments of type SIT_SEGMENT share, in the direction of `s1`, without custom indices. Segments whose
    /// ranges of x or of y don't meet give warnings and leave `out` as it is.
    void getIntersectionSegment(const Segment2& s1, const Segment2& s2, Segment2& out) const;

    /// Draws all segments to a PostScript file.
    void showSegments(const std::string& fileName) const;
    /// Draws what getIllegalSegments() gives in red, the other segments in gray, crossings (as marks) and overlaps in blue.
    void showIllegalSegments(bool bAlsoEndPointIntersections, const std::string& fileName) const;

    /// Progress of getIllegalSegments(). The same pair may be subscribed several times, and is called as often; unsubscribing
    /// takes all of them away. Where nothing was ever subscribed, that gives a warning. Listeners aren't owned.
    void subscribe(MsgType type, MsgBase* pMsg);
    void unsubscribe(MsgType type, MsgBase* pMsg);

    /// Asks getIllegalSegments(), if it is running, to end at its next step with what it has found; from any thread, also from
    /// within MsgBase::update().
    void requestCancel();
    /// Whether the last getIllegalSegments() was cut short.
    bool wasCancelled() const;

private:
    std::unique_ptr<SegmentCheckerData> pSCD;
};

}  // namespace KELMAR_NORVIK2D
