#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Point2.h"
#include "equalKeys.h"

namespace KELMAR_NORVIK2D {

/// A Hilbert key and the index of the input point that it belongs to.
using KELMAR_TOOLS::KeyIndex;

/// Width of a triangulation's keys in bits, half of them for each axis.
constexpr unsigned hilbertKeyBits = 30;

/// Bulk insertion takes stretches of this length in list order without looking closer.
constexpr std::size_t shortStretch = 15;

/// Orders the points within each run of equal keys along the curve over the run's own box (see EqualKeys): without this the
/// points of a dense cluster would be inserted in random order, each with a walk across the cluster. The pairs are sorted by key.
void orderEqualKeys(std::span<KeyIndex> pairs, const std::vector<Point2>& points);

}  // namespace KELMAR_NORVIK2D
