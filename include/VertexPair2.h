#pragma once

#include <functional>
#include <utility>

#include "Point2.h"

namespace KELMAR_NORVIK2D {

/// An undirected edge as its two vertices, the one with the lower address first. Pairs are ordered by these addresses.
class VertexPair2 {
public:
    VertexPair2(Point2* pA, Point2* pB) noexcept : pVtx0(pA), pVtx1(pB) {
        if (std::less<>()(pVtx1, pVtx0)) std::swap(pVtx0, pVtx1);
    }

    Point2* getVtx0() const noexcept { return pVtx0; }
    Point2* getVtx1() const noexcept { return pVtx1; }

    bool operator<(const VertexPair2& other) const noexcept {
        if (pVtx0 != other.pVtx0) return std::less<>()(pVtx0, other.pVtx0);
        return std::less<>()(pVtx1, other.pVtx1);
    }
    bool operator==(const VertexPair2& other) const noexcept {
        return pVtx0 == other.pVtx0 && pVtx1 == other.pVtx1;
    }
    bool operator!=(const VertexPair2& other) const noexcept { return !(*this == other); }

private:
    Point2* pVtx0;
    Point2* pVtx1;
};

}  // namespace KELMAR_NORVIK2D
