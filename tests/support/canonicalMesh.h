#pragma once

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "Point2.h"
#include "Triangle2.h"

using Coordinates = std::pair<double, double>;
using CanonicalMesh = std::vector<std::array<Coordinates, 3>>;

/// Triangles as coordinates, sorted: equal for equal ones, whatever the order and the addresses. `image` maps each corner first.
template <class Image>
CanonicalMesh canonicalTriangles(const std::vector<KELMAR_NORVIK2D::Triangle2*>& vTriangles, Image image) {
    CanonicalMesh result;
    result.reserve(vTriangles.size());
    for (const auto* pT : vTriangles) {
        std::array<Coordinates, 3> corners;
        for (int i = 0; i < 3; ++i) {
            const KELMAR_NORVIK2D::Point2 corner = image(*pT->getCorner(i));
            corners[static_cast<std::size_t>(i)] = {corner.x(), corner.y()};
        }
        std::sort(corners.begin(), corners.end());
        result.push_back(corners);
    }
    std::sort(result.begin(), result.end());
    return result;
}
inline CanonicalMesh canonicalTriangles(const std::vector<KELMAR_NORVIK2D::Triangle2*>& vTriangles) {
    return canonicalTriangles(vTriangles, [](const KELMAR_NORVIK2D::Point2& point) { return point; });
}
/// All triangles of a mesh.
template <class Mesh, class... Image>
CanonicalMesh canonicalMesh(Mesh& mesh, Image... image) {
    std::vector<KELMAR_NORVIK2D::Triangle2*> vTriangles;
    mesh.getTrianglePointers(vTriangles);
    return canonicalTriangles(vTriangles, image...);
}

/// Inserts the points one at a time and returns their vertices.
template <class Mesh>
std::vector<KELMAR_NORVIK2D::Point2*> insertEach(Mesh& mesh,
                                                 const std::vector<KELMAR_NORVIK2D::Point2>& points) {
    std::vector<KELMAR_NORVIK2D::Point2*> handles;
    for (const auto& point : points) handles.push_back(mesh.insert(point));
    return handles;
}
