#pragma once

namespace KELMAR_NORVIK2D {

/// Limits for triangles that are the same everywhere and at all times.
struct UniformLimits {
    double minAngleDegree, maxEdgeLength, maxTriangleArea;
};

}  // namespace KELMAR_NORVIK2D
