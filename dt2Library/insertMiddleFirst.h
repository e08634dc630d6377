#pragma once

#include <cstddef>
#include <span>

#include "IdxVtxAct.h"
#include "distance.h"
#include "hilbertOrder.h"
#include "require.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

/// Of a triangle and the one at another vertex, which may be null or have none: where a walk to `pVtx` better starts.
inline Triangle2* closerStart(const Point2* pVtx, Triangle2* pStartT, const Point2* pOther) noexcept {
    if (pOther == nullptr || pOther->getIncidentTriangle() == nullptr) return pStartT;
    const bool bOtherIsCloser = squaredDistance(*pVtx, *pOther) < squaredDistance(*pVtx, *corner(pStartT, 0));
    return bOtherIsCloser ? pOther->getIncidentTriangle() : pStartT;
}

/// Inserts the stretch [first, last) of items in Hilbert order, the middle first: early vertices spread over the whole area,
/// and each walk starts next to its end. `insertItem(index, pStartT)` inserts one from a triangle close to it and returns a
/// triangle at the new vertex; of a duplicate, the triangle where it was found. Inactive items are left out.
template <class InsertItem>
void insertMiddleFirst(std::span<IdxVtxAct* const> items, std::size_t first, std::size_t last,
                       Triangle2* pStartT, const InsertItem& insertItem) {
    // The vertex behind the stretch came in earlier, as the middle of a longer one. Where the curve jumps it
    // is the closer of both ends.
    const Point2* const pBehind = last == items.size() ? nullptr : items[last]->pVtx;
    if (last - first <= shortStretch) {
        for (; first != last; ++first) {
            if (!items[first]->bAct) continue;
            pStartT = insertItem(first, closerStart(items[first]->pVtx, pStartT, pBehind));
        }
        return;
    }
    const std::size_t mid = first + (last - first) / 2;
    Triangle2* pNearT = pStartT;
    if (items[mid]->bAct) pNearT = insertItem(mid, closerStart(items[mid]->pVtx, pStartT, pBehind));
    insertMiddleFirst(items, first, mid, pNearT, insertItem);
    // A duplicate has no triangle of its own; the one where it was found is still alive, as insertion kills
    // none.
    Triangle2* pIncT = items[mid]->pVtx->getIncidentTriangle();
    if (pIncT == nullptr) pIncT = pNearT;
    require(pIncT != nullptr, "pIncT!=NULL");
    insertMiddleFirst(items, mid + 1, last, pIncT, insertItem);
}

}  // namespace KELMAR_NORVIK2D
