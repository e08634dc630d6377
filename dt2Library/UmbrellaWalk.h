#pragma once

#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

/// Goes through the triangles around a vertex one at a time, counterclockwise from its incident triangle, across the hull
/// gap.
class UmbrellaWalk {
public:
    explicit UmbrellaWalk(const Point2* pVtx_)
        : pVtx(pVtx_), pStartT(pVtx_->getIncidentTriangle()), pT(pStartT) {}

    Triangle2* getTriangle() const noexcept { return pT; }

    /// False if that leads back to the first triangle.
    bool advance() {
        Triangle2* const pNext = nextAround(pT, pVtx);
        pT = pNext != nullptr ? pNext : clockwiseEnd(pT, pVtx);
        return pT != pStartT;
    }

private:
    const Point2* pVtx;
    Triangle2* pStartT;
    Triangle2* pT;
};

}  // namespace KELMAR_NORVIK2D
