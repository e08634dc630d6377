#pragma once

#include <Norvik_2D.h>

#include <array>
#include <cstddef>

/// What the triangles of a refined zone are like.
struct MeshQuality {
    static constexpr std::size_t degreesPerBin = 10;

    double smallestAngle = 180.0;
    /// How many angles there are in each ten degrees.
    std::array<std::size_t, 180 / degreesPerBin> numAngles{};

    // Triangles that miss a limit for the angle, the edge length or the area, by what keeps them from being refined. The first
    // reason that applies counts.
    std::size_t numAtSmallInputAngle = 0;  ///< between two constraints at a smaller angle than is asked for
    std::size_t numAtWholeSegment =
        0;  ///< a constraint is in the way that is too short to split, or mustn't be
    std::size_t numForOtherReasons = 0;  ///< details too small for doubles, say

    std::size_t numMissing() const { return numAtSmallInputAngle + numAtWholeSegment + numForOtherReasons; }
};

/// Measures the triangles of the zone that was refined so.
MeshQuality measureQuality(KELMAR_NORVIK2D::Norvik_2D& mesh, KELMAR_NORVIK2D::MeshGenParams& params);
