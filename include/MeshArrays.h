#pragma once

#include <cstdint>
#include <vector>

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// A mesh as plain arrays, for programs that compute with it. Points and triangles are known by their places, from 0.
///
/// Norvik_2D::exportMesh() tells their order, which is the same from run to run on the same input, as long as it is inserted by one
/// thread.
struct NORVIK2D_EXPORT MeshArrays {
    /// x and y of each point.
    std::vector<double> coordinates;
    /// Of each point.
    std::vector<int> customIndices;
    /// Three points of each triangle, counterclockwise.
    std::vector<std::int64_t> corners;
    /// Three triangles of each triangle: neighbour i lies opposite corner i. -1 where there is none among the exported ones.
    std::vector<std::int64_t> neighbours;
    /// In the order of `neighbours`: 1 if the edge opposite the corner is a constraint, otherwise 0.
    std::vector<std::uint8_t> constraintFlags;

    std::int64_t numberOfPoints() const noexcept { return static_cast<std::int64_t>(customIndices.size()); }
    std::int64_t numberOfTriangles() const noexcept { return static_cast<std::int64_t>(corners.size() / 3); }
    /// Empties all arrays.
    void clear();
};

}  // namespace KELMAR_NORVIK2D
