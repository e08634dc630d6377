#include <utility>

#include "CheckPeer.h"

namespace {

using namespace KELMAR_NORVIK2D;

class Norvik2dChecker : public CheckPeer {
public:
    void setInput(const SegmentSet& segments) override {
        CheckPeer::setInput(segments);
        for (Segment2& segment : vInput) vPointers.push_back(&segment);
    }

    std::size_t findAll() override {
        const SegmentChecker checker(vPointers);
        std::size_t numFound = 0;
        std::vector<std::pair<Segment2*, SegmentIntersectionType>> vPartners;
        for (Segment2* pSegment : vPointers) {
            vPartners.clear();
            checker.getIntersectors(pSegment, false, vPartners);
            numFound += vPartners.size();
        }
        return numFound;
    }

private:
    std::vector<Segment2*> vPointers;
};

}  // namespace

std::unique_ptr<CheckPeer> makeNorvik2dChecker() { return std::make_unique<Norvik2dChecker>(); }
