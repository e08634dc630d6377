#include <SegmentChecker.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iostream>
#include <limits>
#include <utility>
#include <vector>

#include "commands.h"
#include "inputFiles.h"

using namespace KELMAR_NORVIK2D;

namespace {

using Partner = std::pair<std::size_t, SegmentIntersectionType>;

/// Of each kind of meeting the number of pairs.
using Counts = std::array<std::size_t, SIT_ENDPOINT + 1>;

std::vector<Segment2*> pointersTo(std::vector<Segment2>& segments) {
    std::vector<Segment2*> pointers;
    pointers.reserve(segments.size());
    for (Segment2& segment : segments) pointers.push_back(&segment);
    return pointers;
}

/// The later segments that meet segment `i`, in their order.
void findPartners(const SegmentChecker& checker, std::size_t i, std::vector<Partner>& vPartners) {
    std::vector<std::pair<Segment2*, SegmentIntersectionType>> vFound;
    checker.getIntersectors(checker.getSegment(i), true, vFound);
    vPartners.clear();
    for (const auto& [pSegment, type] : vFound) {
        const std::size_t index = checker.getIndex(pSegment);
        if (index > i) vPartners.emplace_back(index, type);
    }
    std::sort(vPartners.begin(), vPartners.end());
}

void writePair(const SegmentChecker& checker, std::size_t i, const Partner& partner, std::ostream& out) {
    const auto [j, type] = partner;
    const Segment2 &first = *checker.getSegment(i), &second = *checker.getSegment(j);
    out << i + 1 << ' ' << j + 1;
    if (type == SIT_SEGMENT) {
        Segment2 overlap;
        checker.getIntersectionSegment(first, second, overlap);
        const Point2 src = overlap.getSrc(), trg = overlap.getTrg();
        out << " overlap " << src.x() << ' ' << src.y() << ' ' << trg.x() << ' ' << trg.y() << '\n';
        return;
    }
    Point2 point;
    checker.getIntersectionPoint(type, first, second, point);
    out << (type == SIT_POINT ? " point " : " end ") << point.x() << ' ' << point.y() << '\n';
}

/// Counts all pairs that meet, and lists those that are illegal if there is a list.
Counts countPairs(const SegmentChecker& checker, const Options& options, std::ostream* pList) {
    Counts counts{};
    std::vector<Partner> vPartners;
    for (std::size_t i = 0; i < checker.getNumberOfSegments(); ++i) {
        findPartners(checker, i, vPartners);
        for (const Partner& partner : vPartners) {
            ++counts.at(partner.second);
            if (pList != nullptr && (options.bEndpoints || partner.second != SIT_ENDPOINT))
                writePair(checker, i, partner, *pList);
        }
    }
    return counts;
}

Counts countAndList(const SegmentChecker& checker, const Options& options) {
    if (options.listFile.empty()) return countPairs(checker, options, nullptr);
    std::ofstream list(options.listFile);
    list.precision(std::numeric_limits<double>::max_digits10);
    const Counts counts = countPairs(checker, options, &list);
    list.close();
    if (!list) throw BadOutput(options.listFile + ": can't be written");
    return counts;
}

}  // namespace

int check(const Options& options) {
    std::vector<Segment2> segments = readSegments(options.input).segments;
    SegmentChecker checker(pointersTo(segments));
    std::vector<Segment2*> vIllegal;
    const double seconds =
        doTimed(checker, options, [&] { checker.getIllegalSegments(options.bEndpoints, vIllegal); });
    const Counts counts = countAndList(checker, options);
    const auto isDegenerate = [](const Segment2& segment) { return segment.getSrc() == segment.getTrg(); };
    std::cout << "segments: " << segments.size()
              << "\ndegenerate: " << std::count_if(segments.begin(), segments.end(), isDegenerate)
              << "\nillegal segments: " << vIllegal.size()
              << "\npairs that cross or touch: " << counts[SIT_POINT]
              << "\npairs that overlap: " << counts[SIT_SEGMENT]
              << "\npairs with a common end: " << counts[SIT_ENDPOINT] << "\nseconds: " << seconds
              << std::endl;
    if (!options.pictureFile.empty()) {
        ensureWritable(options.pictureFile);
        checker.showIllegalSegments(options.bEndpoints, options.pictureFile);
    }
    return vIllegal.empty() ? exitSuccess : exitIllegal;
}
