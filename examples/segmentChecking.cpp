// Roads that were drawn by hand: tells which of them cross, touch or overlap, and where, before any becomes a constraint.
#include <SegmentChecker.h>

#include <iostream>
#include <utility>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

void print(const Point2& point) { std::cout << point.x() << ',' << point.y(); }

/// The pair's numbers, and what the two have in common.
void print(const SegmentChecker& checker, Segment2* pA, Segment2* pB, SegmentIntersectionType type) {
    std::cout << checker.getIndex(pA) << " and " << checker.getIndex(pB);
    if (type == SIT_SEGMENT) {
        Segment2 overlap;
        checker.getIntersectionSegment(*pA, *pB, overlap);
        std::cout << " overlap from ";
        print(overlap.getSrc());
        std::cout << " to ";
        print(overlap.getTrg());
    } else {
        Point2 point;
        checker.getIntersectionPoint(type, *pA, *pB, point);
        std::cout << " meet at ";
        print(point);
    }
    std::cout << '\n';
}

}  // namespace

int main() {
    std::vector<Segment2> roads{
        {Point2(0, 0), Point2(8, 0)},   // 0
        {Point2(8, 0), Point2(8, 6)},   // 1 begins where 0 ends, which is legal
        {Point2(2, 3), Point2(2, 0)},   // 2 ends on 0
        {Point2(1, 1), Point2(9, 5)},   // 3 crosses 1 and 2
        {Point2(8, 5), Point2(8, 9)},   // 4 begins on 1 and goes the same way
        {Point2(8, 9), Point2(12, 9)},  // 5 is legal
    };
    // The segments stay the client's, and mustn't move while the checker is used.
    std::vector<Segment2*> pointers;
    for (Segment2& road : roads) pointers.push_back(&road);
    const SegmentChecker checker(pointers);

    const bool bEnds = false;  // true: common ends would be illegal, too
    std::vector<Segment2*> illegal;
    checker.getIllegalSegments(bEnds, illegal);
    std::cout << illegal.size() << " of " << roads.size() << " roads are illegal\n";
    for (Segment2* pRoad : illegal) {
        std::vector<std::pair<Segment2*, SegmentIntersectionType>> partners;
        checker.getIntersectors(pRoad, bEnds, partners);
        for (const auto& [pOther, type] : partners)
            if (pRoad < pOther) print(checker, pRoad, pOther, type);  // each pair once
    }
    checker.showIllegalSegments(bEnds, "segmentChecking.ps");
}
