#include "InnerVtxMgr.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Dt2.h"
#include "distance.h"
#include "require.h"

namespace KELMAR_NORVIK2D {

void InnerVtxMgr::addVtx(Point2* pVtx) {
    sInsertedInnerPoints.insert(pVtx);
    xIndex.emplace(pVtx->x(), pVtx);
}

void InnerVtxMgr::eraseVtx(Point2* pVtx) { sInsertedInnerPoints.erase(pVtx); }

void InnerVtxMgr::clear() {
    sInsertedInnerPoints.clear();
    xIndex.clear();
}

void InnerVtxMgr::removePreviouslyInsertedVertices(Point2* pCenter, double sqRadius, Dt2* pDt) {
    const double radius = std::sqrt(sqRadius);
    const auto first = xIndex.lower_bound(pCenter->x() - radius);
    const auto last = xIndex.upper_bound(pCenter->x() + radius);
    std::vector<decltype(xIndex)::iterator> vInside;
    for (auto it = first; it != last; ++it)
        if (sqRadius > squaredDistance(*it->second, *pCenter)) vInside.push_back(it);
    for (const auto it : vInside) {
        Point2* const pVtx = it->second;
        require(sInsertedInnerPoints.erase(pVtx) == 1, "q_it!=sInsertedInnerPoints.end()");
        xIndex.erase(it);
        if (!pDt->isConstraintVertex(pVtx)) pDt->remove(pVtx);
    }
}

}  // namespace KELMAR_NORVIK2D
