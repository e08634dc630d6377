// A header that Boost itself includes tells that it is deprecated.
#define BOOST_ALLOW_DEPRECATED_HEADERS
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>
#include <utility>

#include "CheckPeer.h"

namespace {

using namespace KELMAR_NORVIK2D;
namespace geometry = boost::geometry;

using Point = geometry::model::point<double, 2, geometry::cs::cartesian>;
using Box = geometry::model::box<Point>;
using Value = std::pair<Box, Segment2*>;
// Packed, the trees of all its algorithms are the same; 8 and 32 are a little slower than 16.
using Tree = geometry::index::rtree<Value, geometry::index::rstar<16>>;

Box boxOf(const Segment2& segment) {
    const Point2 src = segment.getSrc(), trg = segment.getTrg();
    return {Point(std::min(src.x(), trg.x()), std::min(src.y(), trg.y())),
            Point(std::max(src.x(), trg.x()), std::max(src.y(), trg.y()))};
}

class BoostChecker : public CheckPeer {
public:
    std::size_t findAll() override {
        std::vector<Value> vValues;
        vValues.reserve(vInput.size());
        for (Segment2& segment : vInput) vValues.emplace_back(boxOf(segment), &segment);
        const Tree tree(vValues);
        const ExactCrossing isCrossing(1.5);
        std::size_t numFound = 0;
        for (Segment2& segment : vInput) {
            const auto count = [&](const Value& value) {
                numFound += value.second != &segment && isCrossing(segment, *value.second);
            };
            tree.query(geometry::index::intersects(boxOf(segment)),
                       boost::make_function_output_iterator(count));
        }
        return numFound;
    }
};

}  // namespace

std::unique_ptr<CheckPeer> makeBoostChecker() { return std::make_unique<BoostChecker>(); }
