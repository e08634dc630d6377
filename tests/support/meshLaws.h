#pragma once

#include <algorithm>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include "Point2.h"
#include "Triangle2.h"
#include "exactSigns.h"

/// Checks all that a mesh promises, exactly and by other means than the library's own: its links are read with the
/// public getters only, and coordinates are compared as integers.
class MeshLaws {
public:
    using Point2 = KELMAR_NORVIK2D::Point2;
    using Triangle2 = KELMAR_NORVIK2D::Triangle2;

    /// `Mesh` is a Norvik_2D or a Dt2.
    template <class Mesh>
    explicit MeshLaws(Mesh& mesh)
        : bIs2D(mesh.is2D()),
          numPoints(mesh.numberOfPoints()),
          numTriangles(mesh.numberOfTriangles()),
          isWall([&mesh](Triangle2* pT, int edge) { return mesh.isConstraint(pT, edge); }) {
        mesh.getVertexPointers(vVertices);
        mesh.getTrianglePointers(vTriangles);
        if (bIs2D) mesh.getConvexHull(true, vHullTold);
        for (const Point2* pVtx : vVertices) scale.note(*pVtx);
        for (const Point2* pVtx : vVertices) mExact.emplace(pVtx, scale.exact(*pVtx));
        for (const Triangle2* pT : vTriangles) mLive.emplace(pT, true);
    }

    /// An edge between two of these triangles needn't be Delaunay.
    void allowAnyShapeOf(const std::vector<Triangle2*>& vFree) {
        isWall = [wasWall = isWall, sFree = std::set<const Triangle2*>(vFree.begin(), vFree.end())](
                     Triangle2* pT, int edge) {
            return (sFree.count(pT) != 0 && sFree.count(pT->getOppositeTriangle(edge)) != 0) ||
                   wasWall(pT, edge);
        };
    }

    /// What is wrong; empty if nothing is.
    std::string check() {
        checkVertices();
        if (!bIs2D) {
            checkDegenerate();
            return faults.str();
        }
        for (const Triangle2* pT : vTriangles) checkCorners(pT);
        // Corners and links that aren't sound can't be followed any further.
        if (numFaults == 0)
            for (const Triangle2* pT : vTriangles) checkLinks(pT);
        if (numFaults == 0) checkIncidentTriangles();
        if (numFaults == 0) checkHullAndArea();
        if (numFaults == 0) checkCircles();
        return faults.str();
    }

    /// Inner edges, but constraints, with exactly cocircular triangles, after a check: with none the mesh is the only one of its points.
    std::size_t getNumCocircular() const { return numCocircular; }

private:
    void expect(bool bHolds, const char* law, const Point2* pWhere = nullptr) {
        constexpr int mostFaultsTold = 5;
        if (bHolds || ++numFaults > mostFaultsTold) return;
        faults.precision(17);
        faults << law;
        if (pWhere != nullptr) faults << " at (" << pWhere->x() << ", " << pWhere->y() << ")";
        faults << "; ";
    }

    const exactSigns::ExactPoint& exact(const Point2* pVtx) const { return mExact.at(pVtx); }
    bool isLive(const Triangle2* pT) const { return mLive.count(pT) != 0; }
    static Point2* first(const Triangle2* pT, int edge) { return pT->getCorner((edge + 1) % 3); }
    static Point2* second(const Triangle2* pT, int edge) { return pT->getCorner((edge + 2) % 3); }

    void checkVertices() {
        expect(numPoints == vVertices.size(), "numberOfPoints is the number of vertices");
        expect(numTriangles == vTriangles.size(), "numberOfTriangles is the number of triangles");
        expect(mExact.size() == vVertices.size() && mLive.size() == vTriangles.size(),
               "nothing is delivered twice");
        vSorted.assign(vVertices.begin(), vVertices.end());
        std::sort(vSorted.begin(), vSorted.end(),
                  [](const Point2* pA, const Point2* pB) { return *pA < *pB; });
        for (std::size_t i = 1; i < vSorted.size(); ++i)
            expect(*vSorted[i - 1] != *vSorted[i], "vertices have different coordinates", vSorted[i]);
    }

    void checkDegenerate() {
        expect(vTriangles.empty(), "without a dimension there are no triangles");
        for (const Point2* pVtx : vSorted) {
            expect(pVtx->getIncidentTriangle() == nullptr, "without triangles none is incident", pVtx);
            expect(doubleArea(exact(vSorted.front()), exact(vSorted.back()), exact(pVtx)) == 0,
                   "without triangles all is collinear", pVtx);
        }
    }

    void checkCorners(const Triangle2* pT) {
        for (int i = 0; i < 3; ++i) {
            const Point2* pCorner = pT->getCorner(i);
            expect(pCorner != nullptr && mExact.count(pCorner) != 0, "corners are vertices", pCorner);
            if (numFaults != 0) return;
            mDegree[pCorner]++;
        }
        const mpz_class area =
            doubleArea(exact(pT->getCorner(0)), exact(pT->getCorner(1)), exact(pT->getCorner(2)));
        expect(area > 0, "triangles run counterclockwise", pT->getCorner(0));
        areaSum += area;
    }

    void checkLinks(const Triangle2* pT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* pU = pT->getOppositeTriangle(i);
            if (pU == nullptr) {
                expect(mHullNext.emplace(first(pT, i), second(pT, i)).second,
                       "the hull passes each vertex once");
                continue;
            }
            expect(isLive(pU), "neighbours are alive", first(pT, i));
            if (!isLive(pU)) continue;
            int numBack = 0;
            for (int j = 0; j < 3; ++j) {
                if (pU->getOppositeTriangle(j) != pT) continue;
                ++numBack;
                expect(first(pU, j) == second(pT, i) && second(pU, j) == first(pT, i),
                       "neighbours share their edge", first(pT, i));
            }
            expect(numBack == 1, "neighbours point back once", first(pT, i));
        }
    }

    void checkIncidentTriangles() {
        for (const Point2* pVtx : vVertices) {
            const Triangle2* pT = pVtx->getIncidentTriangle();
            expect(mDegree.count(pVtx) != 0, "vertices are in triangles", pVtx);
            expect(isLive(pT) && pT->hasVertex(pVtx), "incident triangles are alive and incident", pVtx);
        }
    }

    /// The convex hull of all vertices with those on its edges, counterclockwise from the least.
    std::vector<const Point2*> exactHull() const {
        const auto chain = [&](auto begin, auto end) {
            std::vector<const Point2*> result;
            for (auto it = begin; it != end; ++it) {
                while (result.size() >= 2 &&
                       doubleArea(exact(result[result.size() - 2]), exact(result.back()), exact(*it)) < 0)
                    result.pop_back();
                result.push_back(*it);
            }
            result.pop_back();
            return result;
        };
        std::vector<const Point2*> hull = chain(vSorted.begin(), vSorted.end());
        const std::vector<const Point2*> upper = chain(vSorted.rbegin(), vSorted.rend());
        hull.insert(hull.end(), upper.begin(), upper.end());
        return hull;
    }

    void checkHullAndArea() {
        const std::vector<const Point2*> vHull = exactHull();
        expect(mHullNext.size() == vHull.size(), "as many hull edges as hull vertices");
        expect(vHull == std::vector<const Point2*>(vHullTold.begin(), vHullTold.end()),
               "getConvexHull is the hull");
        expect(vTriangles.size() + 2 + vHull.size() == 2 * vVertices.size(), "T = 2n - 2 - h");
        mpz_class hullArea = 0;
        for (std::size_t i = 0; i < vHull.size(); ++i) {
            const Point2* pNext = vHull[(i + 1) % vHull.size()];
            const auto next = mHullNext.find(vHull[i]);
            expect(next != mHullNext.end() && next->second == pNext, "the outline is the hull", vHull[i]);
            hullArea += doubleArea(exact(vHull[0]), exact(vHull[i]), exact(pNext));
        }
        expect(areaSum == hullArea, "the areas add up to the hull's");
    }

    void checkCircles() {
        for (Triangle2* pT : vTriangles) {
            for (int i = 0; i < 3; ++i) {
                const Triangle2* pU = pT->getOppositeTriangle(i);
                if (pU == nullptr || std::less<>()(pU, pT)) continue;
                const Point2* pFar = pU->getCorner(pU->getIntraTriangleIndex(pT));
                const Point2 *a = pT->getCorner(0), *b = pT->getCorner(1), *c = pT->getCorner(2);
                int sign = exactSigns::fastInCircleSign(*a, *b, *c, *pFar);
                if (sign == exactSigns::unsure)
                    sign = exactSigns::inCircle(exact(a), exact(b), exact(c), exact(pFar));
                if (sign < 0 || isWall(pT, i)) continue;
                expect(sign == 0, "circumcircles are empty", pFar);
                if (sign == 0) ++numCocircular;
            }
        }
    }

    bool bIs2D;
    std::size_t numPoints, numTriangles;
    std::function<bool(Triangle2*, int)> isWall;
    std::vector<Point2*> vVertices, vHullTold;
    std::vector<Triangle2*> vTriangles;
    std::vector<const Point2*> vSorted;
    exactSigns::CommonScale scale;
    std::unordered_map<const Point2*, exactSigns::ExactPoint> mExact;
    std::unordered_map<const Triangle2*, bool> mLive;
    std::unordered_map<const Point2*, int> mDegree;
    std::unordered_map<const Point2*, const Point2*> mHullNext;
    mpz_class areaSum = 0;
    std::size_t numCocircular = 0;
    int numFaults = 0;
    std::ostringstream faults;
};

/// What is wrong with a mesh; empty if nothing is.
template <class Mesh>
std::string lawsBroken(Mesh& mesh) {
    return MeshLaws(mesh).check();
}

/// Whether the mesh is sound and the only Delaunay triangulation of its points.
template <class Mesh>
bool isUnique(Mesh& mesh) {
    MeshLaws laws(mesh);
    return laws.check().empty() && laws.getNumCocircular() == 0;
}
