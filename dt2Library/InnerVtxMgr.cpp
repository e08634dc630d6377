#include "InnerVtxMgr.h"

#include <algorithm>
#include <cmath>

#include "Dt2.h"
#include "distance.h"
#include "require.h"

namespace KELMAR_NORVIK2D {

void InnerVtxMgr::addVtx(Point2* pVtx) {
    sInsertedInnerPoints.insert(pVtx);
    xIndex.push_back({pVtx->x(), pVtx});
}

void InnerVtxMgr::clear() {
    sInsertedInnerPoints = {};
    xIndex.clear();
    vRunEnds.clear();
}

/// Makes a run of what was added since, and merges runs that have become too short for their predecessors.
void InnerVtxMgr::putInOrder() {
    const std::size_t first = vRunEnds.empty() ? 0 : vRunEnds.back();
    if (first == xIndex.size()) return;
    std::stable_sort(xIndex.begin() + static_cast<std::ptrdiff_t>(first), xIndex.end(),
                     [](const Entry& a, const Entry& b) { return a.x < b.x; });
    vRunEnds.push_back(xIndex.size());
    mergeLastRuns();
}

void InnerVtxMgr::mergeLastRuns() {
    const auto endOf = [&](std::size_t run) { return run == 0 ? 0 : vRunEnds[run - 1]; };
    const auto at = [&](std::size_t index) { return xIndex.begin() + static_cast<std::ptrdiff_t>(index); };
    while (vRunEnds.size() >= 2) {
        const std::size_t last = vRunEnds.size() - 1;
        const std::size_t beforeFirst = endOf(last - 1), middle = endOf(last), end = endOf(last + 1);
        if (middle - beforeFirst >= 2 * (end - middle)) return;
        std::inplace_merge(at(beforeFirst), at(middle), at(end),
                           [](const Entry& a, const Entry& b) { return a.x < b.x; });
        vRunEnds.erase(vRunEnds.end() - 2);
    }
}

void InnerVtxMgr::removePreviouslyInsertedVertices(Point2* pCenter, double sqRadius, Dt2* pDt) {
    putInOrder();
    const double radius = std::sqrt(sqRadius);
    vInside.clear();
    auto runBegin = xIndex.begin();
    for (const std::size_t runEnd : vRunEnds) {
        const auto end = xIndex.begin() + static_cast<std::ptrdiff_t>(runEnd);
        auto it = std::lower_bound(runBegin, end, pCenter->x() - radius,
                                   [](const Entry& entry, double x) { return entry.x < x; });
        for (; it != end && it->x <= pCenter->x() + radius; ++it)
            if (it->pVtx != nullptr && sqRadius > squaredDistance(*it->pVtx, *pCenter))
                vInside.push_back(&*it);
        runBegin = end;
    }
    // Runs follow one another in the order of adding.
    std::stable_sort(vInside.begin(), vInside.end(),
                     [](const Entry* pA, const Entry* pB) { return pA->x < pB->x; });
    for (Entry* pEntry : vInside) {
        Point2* const pVtx = pEntry->pVtx;
        require(sInsertedInnerPoints.erase(pVtx), "q_it!=sInsertedInnerPoints.end()");
        pEntry->pVtx = nullptr;
        if (!pDt->isConstraintVertex(pVtx)) pDt->remove(pVtx);
    }
}

}  // namespace KELMAR_NORVIK2D
