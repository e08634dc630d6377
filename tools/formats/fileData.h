#pragma once

#include <Norvik_2D.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// What files hold, whatever their format. The custom index of a point is the number that the file gives it as a mark, -1 if it
// gives none.

/// A part of the plane that is named by a point in it.
struct Region {
    KELMAR_NORVIK2D::Point2 seed;
    double attribute = 0.0;
};

/// Points and segments.
struct Drawing {
    std::vector<KELMAR_NORVIK2D::Point2> points;  ///< those that aren't just ends of segments
    std::vector<KELMAR_NORVIK2D::Segment2> segments;
    /// Whether the segments are the sides of polygons, whose inside is meant.
    bool bPolygons = false;
    /// Whether all is meant that the segments enclose, but for what can be reached from the holes.
    bool bEnclosed = false;
    std::vector<KELMAR_NORVIK2D::Point2> holes;
    std::vector<Region> regions;
};

/// Triangles by the numbers of their corners, which count from 0.
struct IndexedMesh {
    using Edge = std::array<std::size_t, 2>;
    using Triangle = std::array<std::size_t, 3>;

    std::vector<KELMAR_NORVIK2D::Point2> points;
    std::vector<Triangle> triangles;

    // For output only. Triangles run counterclockwise there.

    /// The triangle across the edge opposite of each corner, -1 where there is none.
    std::vector<std::array<std::int64_t, 3>> neighbours;
    std::vector<double> regions;  ///< the attribute of each triangle's region; empty if there are none
    std::vector<Edge> constraints;
    std::vector<KELMAR_NORVIK2D::Point2> holes;  ///< a point in each part that is enclosed by the mesh
};
