#pragma once

#include <Norvik_2D.h>

#include <cstddef>
#include <vector>

using Ring = std::vector<KELMAR_NORVIK2D::Segment2>;

/// The segments of a file, sorted out.
struct Rings {
    /// Closed rings in the order of their first segments. Each is in walking order, in the direction of its first segment, and
    /// has three corners or more that aren't all on one line.
    std::vector<Ring> vRings;
    /// All other segments.
    std::vector<KELMAR_NORVIK2D::Segment2> vLoose;
};

/// Groups segments, all of which have a length. First come runs in the order of the file, where each segment begins at the end of
/// the one before, up to the first return to the run's beginning: so rings may touch each other and have segments in common.
/// The rest may be in any order and direction; of that, without tails, a ring is what is joined end to end,
/// two by two.
Rings findRings(const std::vector<KELMAR_NORVIK2D::Segment2>& segments);
