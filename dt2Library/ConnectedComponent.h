#pragma once

#include <utility>
#include <vector>

#include "Edge2.h"
#include "Point2.h"
#include "Triangle2.h"

namespace KELMAR_NORVIK2D {

/// A set of triangles on its way to a border that is one simple ring.
class ConnectedComponent {
public:
    /// Triangles are kept in the order of their addresses, each once.
    explicit ConnectedComponent(std::vector<Triangle2*> vTriangles_);
    ConnectedComponent(const ConnectedComponent&) = delete;
    ConnectedComponent& operator=(const ConnectedComponent&) = delete;

    const std::vector<Triangle2*>& getTriangles() const noexcept { return vTriangles; }

    /// Collects the border edges, triangle by triangle; or takes over known ones.
    void setUnsortedBorders();
    void setUnsortedBorders(std::vector<Edge2> vBorders) { vUnsortedBorders = std::move(vBorders); }
    /// Walks along them, from the vertex of the highest address. Appends to `vPinch` the vertices that stop the border from
    /// being one ring: all at which it touches itself, or else one of a second ring. The ring is complete without these only.
    void sortBorders(std::vector<Point2*>& vPinch);

    /// False if the border is one ring. Otherwise takes triangles off until what is left here, if anything, has such a
    /// border, and appends them in parts. Parts need not be connected, and may have to be split themselves.
    ///
    /// Triangles around a vertex that stops the border from being one ring go to different parts each: the first by address
    /// to a first part, the next one to a second, and so on. That is repeated with what is left.
    bool splitIntoSimple(std::vector<std::vector<Triangle2*>>& vvParts);

    /// Replaces `out` by the border ring of a simple component. The edges are owned here.
    void getSortedBorders(std::vector<Edge2*>& out) const { out = vSortedBorders; }

private:
    std::vector<Triangle2*> vTriangles;
    std::vector<Edge2> vUnsortedBorders;
    std::vector<Edge2*> vSortedBorders;  ///< the same in the order of the ring
};

}  // namespace KELMAR_NORVIK2D
