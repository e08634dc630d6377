#pragma once

#include <cstddef>
#include <vector>

#include "fileData.h"

/// The border of triangles that hang together by edges, and have the same region.
struct BorderPolygon {
    /// Corners in walking order, each once a ring. First the outer ring, counterclockwise, then the holes, clockwise. No ring
    /// touches itself; holes may touch each other and the outer ring at corners.
    std::vector<std::vector<std::size_t>> rings;
    double region = 0.0;
};

/// The polygons of an output mesh, in the order of their first triangles.
std::vector<BorderPolygon> findBorders(const IndexedMesh& mesh);
