#pragma once

#include <vector>

#include "pointSets.h"

/// Segments for the benchmarks; all sets are repeatable.
struct SegmentCoordinates {
    Coordinates from, to;
};

using SegmentSet = std::vector<SegmentCoordinates>;

/// A closed ring of 100,000 segments in the order of the ring. All of it can be seen from its centre; it has bays, and is rough,
/// so that every third segment isn't a Delaunay edge of its corners anyway.
SegmentSet ringSegments();

/// Segments of this length at random places of the unit square, in random directions.
SegmentSet randomSegments(std::size_t numSegments, double length);

/// The world's coastlines in the order of their file.
SegmentSet coastline();

/// A region with 500 segments around it: an outer ring of 300 with bays, some 100 away from the middle, and 8 holes of 25. Its
/// corners are uneven, but neighbouring segments make angles of 60 degrees and more.
struct MeshDomain {
    SegmentSet border;  ///< with the region on the left
    PointSet holes;     ///< a point inside of each
};

MeshDomain meshDomain();
