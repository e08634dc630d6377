#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "MeshAccess.h"

/// The links between triangles and vertices. Nothing here knows coordinates or calls a predicate.
namespace KELMAR_NORVIK2D {

/// The next index counterclockwise, and the next one clockwise. From tables, for the index can't be
/// predicted.
inline int ccw(int index) noexcept {
    static constexpr int next[3] = {1, 2, 0};
    return next[index];
}
inline int cw(int index) noexcept {
    static constexpr int previous[3] = {2, 0, 1};
    return previous[index];
}

inline Point2* corner(const Triangle2* pT, int index) noexcept { return pT->getCorner(index); }
inline Triangle2* neighbour(const Triangle2* pT, int index) noexcept {
    return pT->getOppositeTriangle(index);
}

/// The same while another thread may be writing one of the triangle's links: each is read and written as a whole. Which
/// of two threads comes first doesn't matter then, so they wait for nothing, and it costs nothing.
inline Triangle2* sharedNeighbour(Triangle2* pT, int index) noexcept {
    return std::atomic_ref(MeshAccess::neighbour(pT, index)).load(std::memory_order_relaxed);
}
inline void setSharedNeighbour(Triangle2* pT, int index, Triangle2* pNeighbour) noexcept {
    std::atomic_ref(MeshAccess::neighbour(pT, index)).store(pNeighbour, std::memory_order_relaxed);
}

/// Of three things the second, the third, or else the first. Branch-free: which of them it is can't be
/// predicted.
inline int indexOfThree(bool bIsSecond, bool bIsThird) noexcept {
    const int index = static_cast<int>(bIsSecond) + 2 * static_cast<int>(bIsThird);
    if (index == 3) __builtin_unreachable();
    return index;
}

/// Index of a neighbour or a corner. What isn't there silently gives 0, and nothing may be there twice: only
/// for use where law 2 or 3 of Triangle2 guarantees a hit.
inline int indexOf(const Triangle2* pT, const Triangle2* pNeighbour) noexcept {
    return indexOfThree(neighbour(pT, 1) == pNeighbour, neighbour(pT, 2) == pNeighbour);
}
inline int sharedIndexOf(Triangle2* pT, const Triangle2* pNeighbour) noexcept {
    return indexOfThree(sharedNeighbour(pT, 1) == pNeighbour, sharedNeighbour(pT, 2) == pNeighbour);
}
inline int indexOf(const Triangle2* pT, const Point2* pVtx) noexcept {
    return indexOfThree(corner(pT, 1) == pVtx, corner(pT, 2) == pVtx);
}

/// The corner of neighbour `index` of `pT` that `pT` doesn't have.
inline Point2* farCorner(const Triangle2* pT, int index) noexcept {
    const Triangle2* pU = neighbour(pT, index);
    return corner(pU, indexOf(pU, pT));
}

/// The corner of `pU` opposite its edge to `pT`; null if `pU` is, the outside of the hull.
inline Point2* farCornerOrNull(const Triangle2* pU, const Triangle2* pT) noexcept {
    return pU == nullptr ? nullptr : corner(pU, indexOf(pU, pT));
}

/// The next triangle counterclockwise around a corner, and the next one clockwise; null across the hull.
inline Triangle2* nextAround(const Triangle2* pT, const Point2* pVtx) noexcept {
    return neighbour(pT, ccw(indexOf(pT, pVtx)));
}
inline Triangle2* previousAround(const Triangle2* pT, const Point2* pVtx) noexcept {
    return neighbour(pT, cw(indexOf(pT, pVtx)));
}

/// The clockwise end of the triangles around a hull vertex.
inline Triangle2* clockwiseEnd(Triangle2* pT, const Point2* pVtx) noexcept {
    while (Triangle2* pNext = previousAround(pT, pVtx)) pT = pNext;
    return pT;
}

/// Visits the triangles around a vertex counterclockwise from its incident triangle, across the hull gap,
/// until `visit` answers true. Returns whether it did.
template <class Visit>
bool visitUmbrella(const Point2* pVtx, Visit visit) {
    Triangle2* const pStart = pVtx->getIncidentTriangle();
    Triangle2* pT = pStart;
    do {
        if (visit(pT)) return true;
        Triangle2* pNext = nextAround(pT, pVtx);
        pT = pNext != nullptr ? pNext : clockwiseEnd(pT, pVtx);
    } while (pT != pStart);
    return false;
}

/// An edge as its triangle and the index of the opposite corner.
using Side = std::pair<Triangle2*, int>;

/// The next hull edge counterclockwise, and the next one clockwise.
inline Side nextHullSide(Side side) noexcept {
    auto [pT, edge] = side;
    const Point2* pPivot = corner(pT, cw(edge));
    edge = ccw(edge);
    while (Triangle2* pNext = neighbour(pT, edge)) {
        pT = pNext;
        edge = cw(indexOf(pT, pPivot));
    }
    return {pT, edge};
}
inline Side previousHullSide(Side side) noexcept {
    auto [pT, edge] = side;
    const Point2* pPivot = corner(pT, ccw(edge));
    edge = cw(edge);
    while (Triangle2* pNext = neighbour(pT, edge)) {
        pT = pNext;
        edge = ccw(indexOf(pT, pPivot));
    }
    return {pT, edge};
}

/// Asks for the memory of a triangle, which may lie in two cache lines. Null does no harm.
[[gnu::always_inline]] inline void prefetchTriangle(const Triangle2* pT) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(pT);
    __builtin_prefetch(pT);
    __builtin_prefetch(reinterpret_cast<const void*>(address + sizeof(Triangle2) - 1));
}

inline bool isDead(const Triangle2* pT) noexcept { return corner(pT, 0) == nullptr; }

inline void setCorners(Triangle2* pT, Point2* a, Point2* b, Point2* c) noexcept {
    MeshAccess::corner(pT, 0) = a;
    MeshAccess::corner(pT, 1) = b;
    MeshAccess::corner(pT, 2) = c;
}
inline void setCorner(Triangle2* pT, int index, Point2* pCorner) noexcept {
    MeshAccess::corner(pT, index) = pCorner;
}
inline void setNeighbours(Triangle2* pT, Triangle2* a, Triangle2* b, Triangle2* c) noexcept {
    MeshAccess::neighbour(pT, 0) = a;
    MeshAccess::neighbour(pT, 1) = b;
    MeshAccess::neighbour(pT, 2) = c;
}
inline void setNeighbour(Triangle2* pT, int index, Triangle2* pNeighbour) noexcept {
    MeshAccess::neighbour(pT, index) = pNeighbour;
}

/// Lets the back pointer of a neighbour follow: where `pT` points to `pOld` it points to `pNew` then. Returns the corner
/// opposite that edge. A null `pT`, the outside of the hull, is left alone, and gives null. `pT` may lie beyond what the
/// calling thread has to itself, where others only walk.
inline Point2* replaceNeighbour(Triangle2* pT, const Triangle2* pOld, Triangle2* pNew) noexcept {
    if (pT == nullptr) [[unlikely]]
        return nullptr;
    const int index = indexOf(pT, pOld);
    setSharedNeighbour(pT, index, pNew);
    return corner(pT, index);
}

inline void setIncidentTriangle(Point2* pVtx, Triangle2* pT) noexcept {
    MeshAccess::incidentTriangle(pVtx) = pT;
}

/// What a flip leaves, in the names of the drawing below. The last two are the corners that the triangles across b-w and
/// w-c don't share with T and U, null where there is no triangle.
struct FlippedEdge {
    Triangle2* pU;
    Point2 *b, *w, *c;
    Point2 *pFarBW, *pFarWC;
};

/// Exchanges the diagonal across an edge; both triangles survive.
///
///        a                 a
///      /   \             / | \        a is corner `edge` of T, w the far corner of U;
///     b --- c    ->     b  |  c       T becomes (a,b,w), U becomes (a,w,c)
///      \   /             \ | /
///        w                 w
[[gnu::always_inline]] inline FlippedEdge flipEdge(Triangle2* pT, int edge) noexcept {
    Triangle2* const pU = neighbour(pT, edge);
    const int j = indexOf(pU, pT);
    Point2* const a = corner(pT, edge);
    Point2* const b = corner(pT, ccw(edge));
    Point2* const c = corner(pT, cw(edge));
    Point2* const w = corner(pU, j);
    Triangle2* const pAcrossCA = neighbour(pT, ccw(edge));
    Triangle2* const pAcrossAB = neighbour(pT, cw(edge));
    Triangle2* const pAcrossBW = neighbour(pU, ccw(j));
    Triangle2* const pAcrossWC = neighbour(pU, cw(j));

    setIncidentTriangle(b, pT);
    setIncidentTriangle(a, pU);
    setIncidentTriangle(w, pU);
    setIncidentTriangle(c, pU);
    setCorners(pT, a, b, w);
    setNeighbours(pT, pAcrossBW, pU, pAcrossAB);
    setCorners(pU, a, w, c);
    setNeighbours(pU, pAcrossWC, pAcrossCA, pT);
    replaceNeighbour(pAcrossCA, pT, pU);
    Point2* const pFarBW = replaceNeighbour(pAcrossBW, pU, pT);
    return {pU, b, w, c, pFarBW, farCornerOrNull(pAcrossWC, pU)};
}

inline void makeDead(Triangle2* pT) noexcept {
    setCorners(pT, nullptr, nullptr, nullptr);
    setNeighbours(pT, nullptr, nullptr, nullptr);
}

}  // namespace KELMAR_NORVIK2D
