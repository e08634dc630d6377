#pragma once

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

class Point2;
class Triangle2;

/// Walks the triangles around a vertex counterclockwise, for ever. Around a vertex of the convex hull each
/// round yields one null, which stands for the outside; the next step then goes on behind the gap.
///
///     TriangleAroundVertexIterator it(pVertex);
///     const TriangleAroundVertexIterator start = it;
///     do {
///         if (*it != nullptr) ...
///         ++it;
///     } while (it != start);
///
/// Any change of the mesh around the vertex ends the iterator's usefulness.
class NORVIK2D_EXPORT TriangleAroundVertexIterator {
public:
    /// Starts at the incident triangle of a vertex. A point that is no vertex of a mesh gives a message on
    /// standard error and a NorvikException.
    explicit TriangleAroundVertexIterator(const Point2* pVertex_);

    TriangleAroundVertexIterator& operator++();
    Triangle2* operator*() const noexcept { return pCurrent; }

    /// Whether both are around the same vertex and at the same triangle.
    bool operator==(const TriangleAroundVertexIterator& other) const noexcept {
        return pVertex == other.pVertex && pCurrent == other.pCurrent;
    }
    bool operator!=(const TriangleAroundVertexIterator& other) const noexcept { return !(*this == other); }

private:
    void loop();

    const Point2* pVertex;
    Triangle2* pCurrent;
    Triangle2* pPrevious = nullptr;
};

}  // namespace KELMAR_NORVIK2D
