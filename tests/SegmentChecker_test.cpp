#include "SegmentChecker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "NorvikException.h"
#include "captureOutput.h"
#include "clientSettings.h"
#include "exactSegments.h"
#include "hardPoints.h"
#include "hardSegments.h"

using namespace KELMAR_NORVIK2D;
using exactSegments::hasEnd, exactSegments::least, exactSegments::overlapOf;
using hardPoints::nudged, hardPoints::Rng;
using hardSegments::Segments;

namespace {

using Partners = std::map<Segment2*, SegmentIntersectionType>;

Segment2 reversed(const Segment2& s) { return {s.getTrg(), s.getSrc()}; }
std::vector<Segment2*> pointersTo(Segments& segments) {
    std::vector<Segment2*> pointers;
    for (Segment2& segment : segments) pointers.push_back(&segment);
    return pointers;
}

Partners partnersOf(const SegmentChecker& checker, Segment2& segment, bool bEnds) {
    std::vector<std::pair<Segment2*, SegmentIntersectionType>> found;
    checker.getIntersectors(&segment, bEnds, found);
    Partners partners(found.begin(), found.end());
    EXPECT_EQ(partners.size(), found.size()) << "a partner twice";
    return partners;
}

std::vector<Segment2*> illegalOf(const SegmentChecker& checker, bool bEnds) {
    std::vector<Segment2*> illegal{nullptr};  // which must not stay
    checker.getIllegalSegments(bEnds, illegal);
    return illegal;
}

/// The common part of segments that meet is told, and rightly as far as it is exact.
bool isCommonPartRight(const SegmentChecker& checker, const Segment2& s, const Segment2& t,
                       SegmentIntersectionType type) {
    Point2 point;
    Segment2 overlap;
    {
        const ClientSettings settings(FE_UPWARD, true);
        if (type == SIT_SEGMENT)
            checker.getIntersectionSegment(s, t, overlap);
        else
            checker.getIntersectionPoint(type, s, t, point);
    }
    const Segment2 rising = overlapOf(s, t), expected = s.getSrc() == least(s) ? rising : reversed(rising);
    if (type == SIT_SEGMENT)
        return overlap.getSrc() == expected.getSrc() && overlap.getTrg() == expected.getTrg() &&
               overlap.getSrc().customIndex == -1;
    return point != Point2() && (type == SIT_POINT || (hasEnd(s, point) && hasEnd(t, point)));
}

/// Segments between few points, and points next to them: they share ends, and end next to ends of others.
Segments hardPairs(const hardPoints::Kind& kind, Rng& rng) {
    std::vector<Point2> pool = hardPoints::makePoints(kind, 12, rng);
    for (std::size_t i = 0; i < 6; ++i) {
        pool.emplace_back(nudged(pool[i].x(), rng), pool[i].y());
        pool.emplace_back(pool[i].x(), nudged(pool[i].y(), rng));
    }
    const auto drawn = [&] { return pool[rng() % pool.size()]; };
    return hardSegments::times(60, [&] { return Segment2(drawn(), drawn()); });
}

}  // namespace

TEST(SegmentChecker, TypesAreExactInAllOrdersAndDirections) {
    int numOf[5] = {};
    ExactReference exact;
    const SegmentChecker common;  // its bounds are those of all that it has seen
    for (const hardPoints::Kind& kind : hardPoints::kinds) {
        Rng rng(1);
        Segments segments = hardPairs(kind, rng);
        const SegmentChecker checker(pointersTo(segments));
        for (Segment2& a : segments) {
            Partners partners;
            for (Segment2& b : segments) {
                if (&a == &b) continue;
                const SegmentIntersectionType expected = exactSegments::typeOf(exact, a, b);
                ++numOf[expected];
                if (expected != SIT_NONE) partners[&b] = expected;
                Segment2 a2 = reversed(a), b2 = reversed(b);
                const ClientSettings settings(roundingModes[rng() % 4], rng() % 2 == 0);
                ASSERT_EQ(checker.getIntersectionType(&a, &b), expected) << kind << a << b;
                ASSERT_EQ(checker.getIntersectionType(&a2, &b), expected) << kind << a << b;
                ASSERT_EQ(common.getIntersectionType(&a, &b2), expected) << kind << a << b;
                ASSERT_EQ(common.getIntersectionType(&a2, &b2), expected) << kind << a << b;
                ASSERT_TRUE(settings.areKept());
            }
            for (const auto& [pOther, type] : partners)
                ASSERT_TRUE(isCommonPartRight(checker, a, *pOther, type)) << kind << a << *pOther;
            const ClientSettings settings(roundingModes[rng() % 4], rng() % 2 == 0);
            ASSERT_EQ(partnersOf(checker, a, true), partners) << kind << a;
        }
    }
    for (const int type : {SIT_NONE, SIT_SEGMENT, SIT_POINT, SIT_ENDPOINT}) EXPECT_GT(numOf[type], 1000);
    Segment2 same(Point2(1, 1), Point2(1, 1));
    EXPECT_EQ(common.getIntersectionType(&same, &same), SIT_SEGMENT) << "even without length";
}

TEST(SegmentChecker, FiltersKnowTheLargestCoordinateFromTheStart) {
    Rng rng(2);
    ExactReference exact;
    for (int i = 0; i < 2000; ++i) {
        const auto drawn = [&] {
            const double x = hardPoints::around0(rng) * (rng() % 2 == 0 ? 1.0 : 1e-6);
            return Point2(x, nudged(0.3 * x, rng));
        };
        Segment2 s(drawn(), drawn()), t(drawn(), drawn());
        const SegmentIntersectionType type = exactSegments::typeOf(exact, s, t);
        Partners partners;
        if (type != SIT_NONE) partners[&s] = type;
        ASSERT_EQ(SegmentChecker().getIntersectionType(&s, &t), type) << s << t;
        ASSERT_EQ(partnersOf(SegmentChecker({&s}), t, true), partners) << s << t;
    }
}

TEST(SegmentChecker, FindsWhatAllPairsFind) {
    Rng rng(3);
    Segments segments;
    for (const hardSegments::Kind& kind : hardSegments::kinds) {
        const Segments some = hardSegments::spoilt(kind.make(rng, 190), rng);
        segments.insert(segments.end(), some.begin(), some.end());
    }
    ASSERT_GT(segments.size(), 2000U);
    std::vector<Segment2*> pointers = pointersTo(segments);
    std::shuffle(pointers.begin(), pointers.end(), rng);
    const SegmentChecker checker(pointers);

    std::map<Segment2*, Partners> partners[2];
    for (Segment2& a : segments)
        for (Segment2& b : segments) {
            const SegmentIntersectionType type = &a == &b ? SIT_NONE : checker.getIntersectionType(&a, &b);
            for (const int bEnds : {0, 1})
                if (type != SIT_NONE && (bEnds || type != SIT_ENDPOINT)) partners[bEnds][&a][&b] = type;
        }
    EXPECT_LT(partners[0].size(), partners[1].size());
    for (const bool bEnds : {false, true}) {
        std::vector<Segment2*> illegal;
        for (const auto& entry : partners[bEnds]) illegal.push_back(entry.first);
        EXPECT_TRUE(illegalOf(checker, bEnds) == illegal) << "ascending by address";
        for (Segment2& segment : segments)
            ASSERT_EQ(partnersOf(checker, segment, bEnds), partners[bEnds][&segment]) << segment;
    }
}

TEST(SegmentChecker, SegmentsHaveTheirPlacesInTheOrderOfAdding) {
    Segments s = hardSegments::chain({{0, 0}, {4, 0}, {4, 4}, {1, -1}});
    SegmentChecker checker({&s[1], &s[0]});
    EXPECT_EQ(illegalOf(checker, true).size(), 2U);
    // After the first question: the last one finds, but isn't found.
    checker.addSegments({&s[0], &s[2]});
    EXPECT_EQ(partnersOf(checker, s[0], false), Partners());
    EXPECT_EQ(partnersOf(checker, s[2], false), (Partners{{&s[0], SIT_POINT}}));
    EXPECT_EQ(illegalOf(checker, false).size(), 2U);

    CaptureOutput output;
    ASSERT_EQ(checker.getNumberOfSegments(), 4U);
    EXPECT_EQ(checker.getSegment(3), &s[2]);
    EXPECT_EQ(checker.getIndex(&s[2]), 3U);
    EXPECT_EQ(checker.getIndex(&s[0]), 1U) << "the first of its places";
    EXPECT_EQ(output.out(), "");
    Segment2 foreign = s[0];
    EXPECT_EQ(checker.getIndex(&foreign), 4294967295U);
    EXPECT_THROW(checker.getSegment(4), NorvikException);
    EXPECT_TRUE(output.told("SegmentChecker::getIndex, WARNING: No such segment\033"));
    EXPECT_TRUE(output.told("Condition [ i<pSCD->vSegments.size() failed ]"));
    EXPECT_TRUE(illegalOf(SegmentChecker(), true).empty());
}

TEST(SegmentChecker, CommonPointsAreThoseOfTheFirstWhereTheyAreGiven) {
    const Segment2 level(Point2(0, 0, 1), Point2(4, 0, 2)), point(Point2(3, 0, 7), Point2(3, 0, 8));
    const struct {
        SegmentIntersectionType type;
        Segment2 s, t;
        Point2 expected;
    } cases[] = {
        {SIT_POINT, level, {Point2(1, -1, 7), Point2(2, 1, 8)}, {1.5, 0}},
        {SIT_POINT, level, point, {3, 0, 7}},
        {SIT_POINT, point, level, {3, 0, 7}},
        {SIT_ENDPOINT, level, {Point2(4, 0, 7), Point2(2, 1, 8)}, {4, 0, 2}},
        {SIT_ENDPOINT, level, reversed(level), {0, 0, 1}},  // its source first
    };
    for (const auto& [type, s, t, expected] : cases) {
        Point2 found;
        SegmentChecker().getIntersectionPoint(type, s, t, found);
        EXPECT_TRUE(found == expected && found.customIndex == expected.customIndex) << s << t << found;
    }
}

TEST(SegmentChecker, WhatHasNoCommonPartIsToldAndLeavesTheResult) {
    CaptureOutput output;
    const SegmentChecker checker;
    const Segment2 level(Point2(0, 0), Point2(4, 0)), above(Point2(0, 1), Point2(4, 1));
    Point2 point(7, 7, 7);
    Segment2 overlap(point, point);
    checker.getIntersectionPoint(SIT_ENDPOINT, level, above, point);
    checker.getIntersectionPoint(SIT_SEGMENT, level, level, point);
    checker.getIntersectionSegment(level, above, overlap);
    EXPECT_TRUE(point == Point2(7, 7) && overlap.getSrc() == point && overlap.getTrg() == point);
    for (const char* text :
         {"SegmentChecker::getIntersectionPoint(), WARNING: SIT_ENDPOINT is a wrong SegmentIntersectionType "
          "for the preset segments\033",
          "SegmentChecker::getIntersectionPoint(), WARNING: wrong SegmentIntersectionType provided\033",
          "commonRange(), WARNING: empty range, unexpected, returning +DBL_MAX,-DBL_MAX\033",
          "SegmentChecker::getIntersectionPoint(), WARNING: segments seem to be non-collinear\033"})
        EXPECT_TRUE(output.told(text)) << text;
    const char* const names[] = {"SIT_UNINITIALIZED", "SIT_NONE",     "SIT_SEGMENT",
                                 "SIT_POINT",         "SIT_ENDPOINT", "UNKNOWN SIT"};
    for (int type = 0; type < 6; ++type)
        EXPECT_EQ(checker.getIntersectionTypeString(static_cast<SegmentIntersectionType>(type)), names[type]);
}

TEST(SegmentChecker, PicturesMarkWhereIllegalSegmentsMeet) {
    Segments s{{Point2(0, 0), Point2(4, 4)},
               {Point2(0, 4), Point2(4, 0)},
               {Point2(7, 7), Point2(9, 9)},
               {Point2(8, 8), Point2(6, 6)},
               {Point2(4, 0), Point2(6, 0)}};
    const SegmentChecker checker(pointersTo(s));
    const std::string path = ::testing::TempDir() + "SegmentChecker.ps";
    CaptureOutput output;
    checker.showSegments(path);
    EXPECT_TRUE(output.told("SegmentChecker::showSegments(), numSegments=5\n"));
    EXPECT_EQ(countOf(contentOf(path), "lineto"), 5);
    for (const int bEnds : {0, 1}) {
        checker.showIllegalSegments(bEnds, path);
        const std::string content = contentOf(path), pen = "\tsetrgbcolor\n0.001\tsetlinewidth";
        for (const auto& [word, count] : std::vector<std::pair<std::string, int>>{
                 {"(SegmentChecker::showIllegalSegments())\tshow", 1},
                 {"(Number of segments: 5)\tshow", 1},
                 {"(Legal segments: " + std::to_string(1 - bEnds) + ")\tshow", 1},
                 {"(Illegal segments: " + std::to_string(4 + bEnds) + ")\tshow", 1},
                 {"0.3\t0.3\t0.3" + pen, 1 - bEnds},
                 {"1\t0\t0" + pen, 1},
                 // Beside the heading; segments; the overlap; crosses at its ends and at the crossing.
                 {"lineto", 2 + 5 + 1 + 3 * 2}})
            EXPECT_EQ(countOf(content, word), count) << word;
        const std::string blue = content.substr(content.find("0\t0\t1" + pen));
        EXPECT_EQ(countOf(blue, "lineto"), 1 + 3 * 2);
        EXPECT_EQ(countOf(blue, "setrgbcolor"), 1);
    }
}
