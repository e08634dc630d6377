// The segment checker against all pairs of segments, by exact signs.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

#include "Decisions.h"
#include "SegmentChecker.h"
#include "clientSettings.h"
#include "diagnostics.h"
#include "exactSegments.h"
#include "fault.h"

using namespace KELMAR_NORVIK2D;
using exactSegments::hasEnd, exactSegments::isPoint;

namespace {

using Partners = std::map<Segment2*, SegmentIntersectionType>;

class Judge {
public:
    explicit Judge(Decisions& from) {
        using Magnitudes = HardPoints::Magnitudes;
        rounding = roundingModes[from.below(4)];
        bFlush = from.oneIn(2);
        numLater = from.oneIn(4) ? from.below(4) : 0;
        HardPoints points(from.oneIn(2) ? Magnitudes::ALL : Magnitudes::MODERATE);
        const unsigned numSegments = 1 + from.below(40);
        segments.reserve(numSegments);
        while (segments.size() < numSegments && !from.areOut()) {
            const Point2 src = points.next(from), trg = points.next(from);
            segments.emplace_back(src, trg);
            points.remember(segments.back());
        }
        fillTypes();
    }

    void judge() {
        const ClientSettings settings(rounding, bFlush);
        std::vector<Segment2*> first, later;
        for (Segment2& segment : segments)  // the index isn't built before there is a segment
            (first.empty() || first.size() + numLater < segments.size() ? first : later).push_back(&segment);
        const SegmentChecker checker(first);
        judgeTypes(checker);
        judgePartners(checker, first);
        if (!later.empty()) judgeLater(first, later);
        expect(settings.areKept(), "the client's settings are kept");
    }

private:
    void fillTypes() {
        for (const Segment2& s : segments)
            for (const Segment2& t : segments)
                types.push_back(&s == &t ? SIT_SEGMENT : exactSegments::typeOf(exact, s, t));
    }
    SegmentIntersectionType typeOf(const Segment2& s, const Segment2& t) const {
        const auto indexOf = [&](const Segment2& segment) {
            return static_cast<std::size_t>(&segment - segments.data());
        };
        return types[indexOf(s) * segments.size() + indexOf(t)];
    }

    static void expectPair(bool bHolds, const char* law, const Segment2& s, const Segment2& t) {
        if (bHolds) return;
        std::ostringstream text;
        text << law << std::hexfloat;
        for (const Point2& p : {s.getSrc(), s.getTrg(), t.getSrc(), t.getTrg()})
            text << " {" << p.x() << ", " << p.y() << "}";
        expect(false, text.str());
    }

    void judgeTypes(const SegmentChecker& checker) {
        for (Segment2& s : segments)
            for (Segment2& t : segments) {
                const SegmentIntersectionType type = typeOf(s, t);
                expectPair(checker.getIntersectionType(&s, &t) == type, "type", s, t);
                if (&s != &t && type != SIT_NONE) judgeCommonPart(checker, type, s, t);
            }
    }

    static void judgeCommonPart(const SegmentChecker& checker, SegmentIntersectionType type,
                                const Segment2& s, const Segment2& t) {
        if (type == SIT_SEGMENT) {
            Segment2 told, expected = exactSegments::overlapOf(s, t);
            if (s.getTrg() < s.getSrc()) expected.swapSrcTrg();
            checker.getIntersectionSegment(s, t, told);
            expectPair(told.getSrc() == expected.getSrc() && told.getTrg() == expected.getTrg(), "overlap", s,
                       t);
            return;
        }
        Point2 told;
        checker.getIntersectionPoint(type, s, t, told);
        if (type == SIT_ENDPOINT || isPoint(s) || isPoint(t))
            expectPair(hasEnd(s, told) || hasEnd(t, told), "common point is an end", s, t);
        else
            judgeCrossing(told, s, t);
    }

    /// It is rounded, and may be beside a segment that is very short in comparison, but not out of the box of both.
    static void judgeCrossing(const Point2& told, const Segment2& s, const Segment2& t) {
        const Point2 ends[] = {s.getSrc(), s.getTrg(), t.getSrc(), t.getTrg()};
        const auto [left, right] = std::minmax_element(
            std::begin(ends), std::end(ends), [](const Point2& a, const Point2& b) { return a.x() < b.x(); });
        const auto [low, high] = std::minmax_element(
            std::begin(ends), std::end(ends), [](const Point2& a, const Point2& b) { return a.y() < b.y(); });
        expectPair(
            left->x() <= told.x() && told.x() <= right->x() && low->y() <= told.y() && told.y() <= high->y(),
            "crossing", s, t);
    }

    /// What a segment's partners among others have to be.
    Partners partnersAmong(const std::vector<Segment2*>& others, Segment2& segment, bool bEnds) const {
        Partners partners;
        for (Segment2* pOther : others) {
            if (pOther == &segment) continue;
            const SegmentIntersectionType type = typeOf(segment, *pOther);
            if (type != SIT_NONE && (bEnds || type != SIT_ENDPOINT)) partners[pOther] = type;
        }
        return partners;
    }

    static void expectPartners(const SegmentChecker& checker, Segment2& segment, bool bEnds,
                               const Partners& expected) {
        std::vector<std::pair<Segment2*, SegmentIntersectionType>> found;
        checker.getIntersectors(&segment, bEnds, found);
        const Partners partners(found.begin(), found.end());
        for (const auto& [pOther, type] : expected)
            expectPair(partners.count(pOther) == 1, "missing partner", segment, *pOther);
        for (const auto& [pOther, type] : partners) {
            const auto place = expected.find(pOther);
            expectPair(place != expected.end() && place->second == type, "partner", segment, *pOther);
        }
        expect(found.size() == expected.size(), "each partner once");
    }

    void judgePartners(const SegmentChecker& checker, const std::vector<Segment2*>& listed) {
        for (const bool bEnds : {false, true}) {
            std::vector<Segment2*> expected, illegal;
            for (Segment2& segment : segments) {  // those that aren't in the list can ask, too
                const Partners partners = partnersAmong(listed, segment, bEnds);
                expectPartners(checker, segment, bEnds, partners);
                const bool bListed = std::find(listed.begin(), listed.end(), &segment) != listed.end();
                if (bListed && !partners.empty()) expected.push_back(&segment);
            }
            checker.getIllegalSegments(bEnds, illegal);
            std::sort(expected.begin(), expected.end(), std::less<>());
            expect(illegal == expected, "illegal segments");
        }
    }

    /// Segments that come after the first question find partners, but aren't found.
    void judgeLater(const std::vector<Segment2*>& first, const std::vector<Segment2*>& later) {
        SegmentChecker checker(first);
        std::vector<Segment2*> illegal, expected;
        checker.getIllegalSegments(true, illegal);
        checker.addSegments(later);
        for (Segment2& segment : segments) {
            const Partners partners = partnersAmong(first, segment, true);
            expectPartners(checker, segment, true, partners);
            if (!partners.empty()) expected.push_back(&segment);
            for (const auto& partner : partners) expected.push_back(partner.first);
        }
        checker.getIllegalSegments(true, illegal);
        oneInstance(expected);
        expect(illegal == expected, "illegal segments after some were added");
        for (std::size_t i = 0; i < segments.size(); ++i)
            expect(checker.getIndex(checker.getSegment(i)) == i, "indices are places of the list");
    }

    int rounding;
    bool bFlush;
    unsigned numLater;  ///< segments that are added after the first question
    ExactReference exact;
    std::vector<Segment2> segments;
    std::vector<SegmentIntersectionType> types;  ///< of all pairs
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size) {
    setMessageHandler(silentMessageHandler());
    Decisions decisions(pData, size);
    Judge(decisions).judge();
    return 0;
}
