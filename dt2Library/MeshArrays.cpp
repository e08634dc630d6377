#include "MeshArrays.h"

#include <algorithm>

#include "Dt2.h"
#include "diagnostics.h"

namespace KELMAR_NORVIK2D {

namespace {

constexpr std::int64_t noPlace = -1;

/// Places in an array by the records of a pool.
template <class Record>
class Places {
public:
    explicit Places(const SimplePool<Record>& pool_)
        : pool(pool_), vPlaces(static_cast<std::size_t>(pool_.numHandedOut()), noPlace) {}

    std::int64_t& operator[](const Record* pRecord) {
        return vPlaces[static_cast<std::size_t>(pool.rankOf(pRecord))];
    }

private:
    const SimplePool<Record>& pool;
    std::vector<std::int64_t> vPlaces;  ///< in the order of the pool
};

}  // namespace

void MeshArrays::clear() {
    coordinates.clear();
    customIndices.clear();
    corners.clear();
    neighbours.clear();
    constraintFlags.clear();
}

void Dt2::exportMesh(MeshArrays& out) {
    if (!is2D()) {
        out.clear();
        warning("Dt2::exportMesh()", "The triangulation is not 2D yet, nothing to export");
        return;
    }
    std::vector<Triangle2*> vTriangles;
    visitTriangles([&](Triangle2* pT) {
        vTriangles.push_back(pT);
        return false;
    });
    std::vector<Point2*> vVertices;
    getVertexPointers(vVertices);
    exportTriangles(vTriangles, vVertices, out);
}

void Dt2::exportMesh(const Zone2* pZone, MeshArrays& out) {
    if (pZone == nullptr || sZones.count(pZone) == 0) {
        out.clear();
        warning("Dt2::exportMesh()", "no zone of this triangulation, nothing to export");
        return;
    }
    std::vector<Triangle2*> vTriangles;
    pZone->getTriangles(vTriangles);
    std::sort(vTriangles.begin(), vTriangles.end(), [&](const Triangle2* pT, const Triangle2* pU) {
        return trianglePool.rankOf(pT) < trianglePool.rankOf(pU);
    });
    exportTriangles(vTriangles, {}, out);
}

/// The vertices get places as they stand in the list, and further ones as triangles mention them.
void Dt2::exportTriangles(const std::vector<Triangle2*>& vTriangles, const std::vector<Point2*>& vVertices,
                          MeshArrays& out) {
    out.clear();
    Places<Point2> mPoints(pointPool);
    Places<Triangle2> mTriangles(trianglePool);
    const auto placeOf = [&](const Point2* pVtx) {
        std::int64_t& place = mPoints[pVtx];
        if (place == noPlace) {
            place = out.numberOfPoints();
            out.coordinates.insert(out.coordinates.end(), {pVtx->x(), pVtx->y()});
            out.customIndices.push_back(pVtx->getCustomIndex());
        }
        return place;
    };
    out.coordinates.reserve(2 * vVertices.size());
    out.customIndices.reserve(vVertices.size());
    for (const Point2* pVtx : vVertices) placeOf(pVtx);
    std::int64_t numTriangles = 0;
    for (const Triangle2* pT : vTriangles) mTriangles[pT] = numTriangles++;

    out.corners.reserve(3 * vTriangles.size());
    out.neighbours.reserve(3 * vTriangles.size());
    out.constraintFlags.reserve(3 * vTriangles.size());
    const bool bConstraints = constraintMgr.hasConstraints();
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pU = neighbour(pT, i);
            out.corners.push_back(placeOf(corner(pT, i)));
            out.neighbours.push_back(pU == nullptr ? noPlace : mTriangles[pU]);
            out.constraintFlags.push_back(bConstraints && isConstraint(pT, i) ? 1 : 0);
        }
    }
}

}  // namespace KELMAR_NORVIK2D
