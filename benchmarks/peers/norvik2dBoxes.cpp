#include <kelmar_locate3/RTree.h>

#include "BoxPeer.h"

namespace {

using namespace KELMAR_LOCATE3;

class Norvik2dBoxes : public BoxPeer {
public:
    void build(const SpatialBoxes& boxes) override {
        pTree = std::make_unique<RTree>();
        pTree->reserve(boxes.size());
        for (const auto& [min, max] : boxes)
            pTree->addObject(nullptr, min[0], min[1], min[2], max[0], max[1], max[2]);
        pTree->finish();
    }
    std::size_t countMeetings(const SpatialBoxes& queries) override {
        std::size_t numFound = 0;
        std::vector<Item*> vFound;
        for (const auto& [min, max] : queries) {
            vFound.clear();
            pTree->getBBIntersectedItems({min[0], min[1], min[2], max[0], max[1], max[2]}, vFound);
            numFound += vFound.size();
        }
        return numFound;
    }
    void clear() override { pTree.reset(); }

private:
    std::unique_ptr<RTree> pTree;
};

}  // namespace

std::unique_ptr<BoxPeer> makeNorvik2dBoxes() { return std::make_unique<Norvik2dBoxes>(); }
