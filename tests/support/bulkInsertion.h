#pragma once

#include <string>
#include <vector>

#include "Norvik_2D.h"

/// The two ways to insert many points, and what their handles promise.

inline std::vector<KELMAR_NORVIK2D::Point2*> insertBulk(KELMAR_NORVIK2D::Norvik_2D& mesh,
                                                        const std::vector<KELMAR_NORVIK2D::Point2>& points) {
    std::vector<KELMAR_NORVIK2D::Point2*> handles;
    mesh.insert(points, handles);
    return handles;
}

inline std::vector<KELMAR_NORVIK2D::Point2*> insertArray(KELMAR_NORVIK2D::Norvik_2D& mesh,
                                                         const std::vector<KELMAR_NORVIK2D::Point2>& points) {
    std::vector<double> coordinates;
    for (const auto& point : points) coordinates.insert(coordinates.end(), {point.x(), point.y()});
    std::vector<KELMAR_NORVIK2D::Point2*> handles(points.size());
    mesh.insert(static_cast<int>(points.size()), coordinates.data(), handles.data());
    return handles;
}

/// What is wrong with the handles: each is the vertex of its point, and there are no other vertices. Empty if nothing is.
inline std::string handlesBroken(KELMAR_NORVIK2D::Norvik_2D& mesh,
                                 const std::vector<KELMAR_NORVIK2D::Point2>& points,
                                 const std::vector<KELMAR_NORVIK2D::Point2*>& handles) {
    if (handles.size() != points.size()) return "as many handles as points";
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto fault = [i](const char* law) { return law + (" at " + std::to_string(i)); };
        if (handles[i] == nullptr) return fault("handles aren't null");
        if (*handles[i] != points[i]) return fault("handles are at their points");
        if ((handles[i]->getIncidentTriangle() != nullptr) != mesh.is2D()) return fault("handles are alive");
    }
    std::vector<KELMAR_NORVIK2D::Point2*> vVertices, vHandled(handles);
    mesh.getVertexPointers(vVertices);
    KELMAR_NORVIK2D::oneInstance(vVertices);
    KELMAR_NORVIK2D::oneInstance(vHandled);
    return vVertices == vHandled ? "" : "the vertices are the handles";
}
