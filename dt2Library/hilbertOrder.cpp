#include "hilbertOrder.h"

#include <array>

namespace KELMAR_NORVIK2D {

void orderEqualKeys(std::span<KeyIndex> pairs, const std::vector<Point2>& points) {
    const auto coordinatesOf = [&](std::uint32_t index) {
        return std::array{points[index].x(), points[index].y()};
    };
    KELMAR_TOOLS::EqualKeys<2, decltype(coordinatesOf)>(coordinatesOf).order(pairs, shortStretch);
}

}  // namespace KELMAR_NORVIK2D
