// A header that Boost itself includes tells that it is deprecated.
#define BOOST_ALLOW_DEPRECATED_HEADERS
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <optional>
#include <utility>

#include "BoxPeer.h"

namespace {

namespace geometry = boost::geometry;

using Point = geometry::model::point<double, 3, geometry::cs::cartesian>;
using Box = geometry::model::box<Point>;
using Value = std::pair<Box, void*>;
// Packed, the trees of all its algorithms are the same.
using Tree = geometry::index::rtree<Value, geometry::index::rstar<16>>;

Box boxOf(const SpatialBox& box) {
    return {Point(box.min[0], box.min[1], box.min[2]), Point(box.max[0], box.max[1], box.max[2])};
}

class BoostBoxes : public BoxPeer {
public:
    void build(const SpatialBoxes& boxes) override {
        std::vector<Value> vValues;
        vValues.reserve(boxes.size());
        for (const SpatialBox& box : boxes) vValues.emplace_back(boxOf(box), nullptr);
        tree.emplace(vValues);
    }
    std::size_t countMeetings(const SpatialBoxes& queries) override {
        std::size_t numFound = 0;
        std::vector<Value> vFound;
        for (const SpatialBox& box : queries) {
            vFound.clear();
            tree->query(geometry::index::intersects(boxOf(box)), std::back_inserter(vFound));
            numFound += vFound.size();
        }
        return numFound;
    }
    void clear() override { tree.reset(); }

private:
    std::optional<Tree> tree;
};

}  // namespace

std::unique_ptr<BoxPeer> makeBoostBoxes() { return std::make_unique<BoostBoxes>(); }
