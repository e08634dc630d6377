#include <algorithm>
#include <cmath>

#include "Dt2.h"
#include "TriangleAroundVertexIterator.h"
#include "UmbrellaWalk.h"
#include "diagnostics.h"
#include "distance.h"
#include "require.h"
#include "tasks.h"
#include "walk.h"

namespace KELMAR_NORVIK2D {

namespace {

/// A vertex without a triangle ends in the exception of the iterator, as it does for clients.
void requireInMesh(Point2* pVtx) {
    if (pVtx == nullptr || pVtx->getIncidentTriangle() == nullptr) TriangleAroundVertexIterator invalid(pVtx);
}

/// Whether a walk from the triangle to the point is sure to be short: the distance is a few of its edges, the
/// shortest one counts. Null and dead triangles are close to nothing.
bool isCloseTo(const Triangle2* pT, const Point2& point) {
    constexpr double numEdges = 4.0;
    if (pT == nullptr || isDead(pT)) return false;
    const auto squaredLength = [](DoublePair vector) {
        return vector[0] * vector[0] + vector[1] * vector[1];
    };
    const DoublePair a = coordinatesOf(corner(pT, 0)), b = coordinatesOf(corner(pT, 1)),
                     c = coordinatesOf(corner(pT, 2));
    const double shortest = std::min({squaredLength(a - b), squaredLength(b - c), squaredLength(c - a)});
    return squaredLength(coordinatesOf(&point) - a) < numEdges * numEdges * shortest;
}

}  // namespace

std::size_t Dt2::numberOfTriangles() const {
    const auto numAllT = static_cast<std::size_t>(trianglePool.numHandedOut());
    const std::size_t numDeadT = recycledTriangles.size();
    require(numDeadT <= numAllT, "numDeadT<=numAllT");
    return numAllT - numDeadT;
}

void Dt2::getTrianglePointers(std::vector<Triangle2*>& out) const {
    if (!is2D()) return;
    if (recycledTriangles.empty()) out.clear();
    out.reserve(out.size() + numberOfTriangles());
    visitTriangles([&](Triangle2* pT) {
        out.push_back(pT);
        return false;
    });
}

void Dt2::getIncidentTriangles(Point2* pVtx, std::vector<Triangle2*>& out) const {
    requireInMesh(pVtx);
    visitUmbrella(pVtx, [&](Triangle2* pT) {
        out.push_back(pT);
        return false;
    });
}

bool Dt2::isEdge(Point2* p, Point2* q) const {
    requireInMesh(p);
    return visitUmbrella(p, [&](const Triangle2* pT) { return pT->hasVertex(q); });
}

Triangle2* Dt2::getAdjacentTriangle(Point2* p0, Point2* p1) const {
    require(p0 != nullptr, "p0!=__null");
    require(p1 != nullptr, "p1!=__null");
    require(p0 != p1, "p0!=p1");
    requireInMesh(p0);
    if (p1->getIncidentTriangle() == nullptr) return nullptr;
    // Around both vertices at once: one of them may have very many triangles.
    UmbrellaWalk around0(p0), around1(p1);
    do {
        Triangle2* const pT0 = around0.getTriangle();
        if (corner(pT0, ccw(indexOf(pT0, p0))) == p1) return pT0;
        Triangle2* const pT1 = around1.getTriangle();
        if (corner(pT1, cw(indexOf(pT1, p1))) == p0) return pT1;
    } while (around0.advance() && around1.advance());
    return nullptr;
}

void Dt2::coverByPredicates(const Point2& point) {
    const double magnitude = std::max(std::fabs(point.x()), std::fabs(point.y()));
    if (magnitude > predicates.getBoundMagnitude()) predicates.setStaticBound(magnitude);
}

Triangle2* Dt2::locate(const Point2& point) {
    if (!isFinite(point)) {
        warning("Dt2::locate()", "non-finite coordinates, nothing done");
        return nullptr;
    }
    if (!is2D()) return nullptr;
    coverByPredicates(point);
    int edge = -1;
    if (isCloseTo(pLastLocated, point)) {
        const int code = walkToConflict(predicates, &point, pLastLocated, edge);
        if (code == LOCATE_INSIDE && edge < 0) return pLastLocated;
        // Several triangles share the point: which of them is told doesn't depend on earlier queries.
    }
    Triangle2* pT = vertexVault.getCloseTriangle(hc.iReset(point));
    const int code = walkToConflict(predicates, &point, pT, edge);
    pLastLocated = pT;
    if (code == LOCATE_INSIDE || code == LOCATE_DUPLICATE) return pT;
    return sees(&point, {pT, code}) ? nullptr : pT;
}

/// In the order of the curve, where each point is close to the one before.
void Dt2::locate(const std::vector<Point2>& points, std::vector<Triangle2*>& out) {
    out.assign(points.size(), nullptr);
    std::vector<KeyIndex> vPairs;
    vPairs.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        if (isFinite(points[i])) vPairs.emplace_back(hc.iReset(points[i]), static_cast<std::uint32_t>(i));
    if (vPairs.size() < points.size()) warning("Dt2::locate()", "non-finite coordinates, these are nowhere");
    if (!is2D()) return;
    std::vector<KeyIndex> vScratch(vPairs.size());
    SortTask2{vPairs, vScratch, &points}.go();
    for (std::size_t rank = 0; rank < vPairs.size(); ++rank) {
        prefetchAhead(vPairs, rank, points);
        const std::uint32_t index = vPairs[rank].second;
        out[index] = locate(points[index]);
    }
}

bool Dt2::isCollinear(const Triangle2* pT) {
    return predicates.getOrientation2(corner(pT, 0), corner(pT, 1), corner(pT, 2)) == ORIENTATION2_COLLINEAR;
}

void Dt2::getConvexHull(std::vector<Side>& out) const {
    if (!is2D()) return;
    Side start{nullptr, -1};
    visitTriangles([&](Triangle2* pT) {
        for (int edge = 0; edge < 3; ++edge)
            if (neighbour(pT, edge) == nullptr) start = {pT, edge};
        return start.first != nullptr;
    });
    require(start.first != nullptr, "pStartT!=__null");
    Side side = start;
    do {
        out.push_back(side);
        side = nextHullSide(side);
    } while (side != start);
}

void Dt2::getConvexHull(bool bAllVertices, std::vector<Point2*>& out) {
    if (!is2D()) {
        warning("Dt2::getConvexHull()", "is2D() is false, the triangulation is not full dimensional yet");
        return;
    }
    std::vector<Side> vHullSides;
    getConvexHull(vHullSides);
    std::vector<Point2*> vConvexHullPoints;
    for (const auto& [pT, edge] : vHullSides) vConvexHullPoints.push_back(corner(pT, ccw(edge)));
    require(!vConvexHullPoints.empty(), "!vConvexHullPoints.empty()");
    const auto least = std::min_element(vConvexHullPoints.begin(), vConvexHullPoints.end(),
                                        [](const Point2* pA, const Point2* pB) { return *pA < *pB; });
    std::rotate(vConvexHullPoints.begin(), least, vConvexHullPoints.end());
    if (bAllVertices) {
        out = std::move(vConvexHullPoints);
        return;
    }

    vConvexHullPoints.push_back(vConvexHullPoints.front());
    std::vector<Point2*> vSimplified{vConvexHullPoints.front()};
    for (std::size_t next = 1; next < vConvexHullPoints.size(); ++next) {
        while (next + 1 < vConvexHullPoints.size() &&
               predicates.getOrientation2(vSimplified.back(), vConvexHullPoints[next],
                                          vConvexHullPoints[next + 1]) == ORIENTATION2_COLLINEAR)
            ++next;
        vSimplified.push_back(vConvexHullPoints[next]);
    }
    require(vSimplified[0] == vSimplified.back(), "vSimplified[0]==vSimplified.back()");
    vSimplified.pop_back();
    out = std::move(vSimplified);
}

}  // namespace KELMAR_NORVIK2D
