// Insertion, removal and location of points.
#include <algorithm>
#include <cmath>
#include <limits>

#include "ApiDriver.h"
#include "ApiListener.h"
#include "ApiTrace.h"
#include "exactSigns.h"
#include "hardPoints.h"
#include "meshLaws.h"

using namespace KELMAR_NORVIK2D;

// --------------------------------------------------------------------------------------------- insertion

/// A vertex that was there before must be the handle, otherwise the handle becomes the vertex.
void ApiDriver::noteInserted(const Point2& point, Point2* pVtx) {
    expect(pVtx != nullptr && *pVtx == point, "handles have the coordinates of their points");
    const auto [there, bNew] = mVertices.emplace(Coordinates(point.x(), point.y()), pVtx);
    expect(there->second == pVtx, "handles are the vertices that were there before");
    if (!bNew) return;
    vHandles.push_back(pVtx);
    hardPoints.remember(point);
}

void ApiDriver::insertOne() {
    const Point2 point = somePoint();
    say("mesh.insert(Point2", point, ");");
    noteInserted(point, pMesh->insert(point));
}

void ApiDriver::insertMany() {
    std::vector<Point2> points;
    for (unsigned n = from.below(24); n > 0; --n) {
        points.push_back(somePoint());
        points.back().setCustomIndex(static_cast<int>(n));
    }
    say("mesh.insert(std::vector<Point2>", points, ");");
    std::vector<Point2*> handles(3);
    pMesh->insert(points, handles);
    expect(points.empty() || handles.size() == points.size(), "each point has a handle");
    for (std::size_t i = 0; i < points.size(); ++i) noteInserted(points[i], handles[i]);
}

void ApiDriver::insertArray() {
    std::vector<double> coordinates;
    for (unsigned n = 1 + from.below(8); n > 0; --n) {
        const Point2 point = somePoint();
        coordinates.insert(coordinates.end(), {point.x(), point.y()});
        say("mesh.insert(Point2", point, ");  // all at once");
    }
    std::vector<Point2*> handles(coordinates.size() / 2);
    pMesh->insert(static_cast<int>(handles.size()), coordinates.data(), handles.data());
    for (std::size_t i = 0; i < handles.size(); ++i)
        noteInserted({coordinates[2 * i], coordinates[2 * i + 1]}, handles[i]);
}

/// Handles of points that weren't inserted any more are null, and others those of vertices.
void ApiDriver::insertAndCancel() {
    std::vector<Point2> points;
    for (unsigned n = 1 + from.below(30); n > 0; --n) points.push_back(somePoint());
    ApiListener listener(*pMesh, static_cast<int>(from.below(20)));
    say("mesh.insert(std::vector<Point2>", points, ");  // cancelled");
    std::vector<Point2*> handles;
    pMesh->insert(points, handles);
    expect(listener.isContent(), "progress rises to 1");
    expect(handles.size() == points.size(), "each point has a handle, null or not");
    for (std::size_t i = 0; i < points.size(); ++i) {
        expect(handles[i] != nullptr || pMesh->wasCancelled(),
               "handles are null where an insertion was cancelled");
        if (handles[i] != nullptr) noteInserted(points[i], handles[i]);
    }
    readVertices(Growth::NONE, Loss::NONE);
}

/// So many that they go to several threads; the mesh is full then.
void ApiDriver::insertVeryMany() {
    if (!options.bManyPoints || character == Character::MESSY) return;
    const auto& kind = hardPoints::kinds[from.below(static_cast<unsigned>(std::size(hardPoints::kinds)))];
    hardPoints::Rng rng(from.below(1000000));
    const std::vector<Point2> points = hardPoints::makePoints(kind, 100000 + from.below(2000), rng);
    const int numCPU = pMesh->setNumCPU(1 + static_cast<int>(from.below(4)));
    say("mesh.insert(", points.size(), " points of kind ", kind.name, " on ", numCPU, ");");
    Norvik_2D other;
    other.setNumCPU(numCPU);
    std::vector<Point2*> handles;
    other.insert(points, handles);
    for (std::size_t i = 0; i < points.size(); ++i)
        expect(handles[i] != nullptr && *handles[i] == points[i],
               "handles have the coordinates of their points");
    expect(other.checkValidity(true, "many"), "a mesh of many points is valid");
}

// ---------------------------------------------------------------------------------------------- removal

void ApiDriver::noteRemoved(Point2* pVtx) {
    mVertices.erase({pVtx->x(), pVtx->y()});
    const auto found = std::find(vHandles.begin(), vHandles.end(), pVtx);
    *found = vHandles.back();
    vHandles.pop_back();
    if (vRemoved.size() < 100) vRemoved.push_back(pVtx);
}

void ApiDriver::removeOne() {
    Point2* const pVtx = someHandle();
    if (pVtx == nullptr) return;
    const Point2 point = *pVtx;
    const bool bStays = pMesh->isConstraint(pVtx);
    say("mesh.remove(mesh.insert(Point2", point, "));  // ", bStays ? "stays" : "");
    Hearing::begin();
    pMesh->remove(pVtx);
    expect(*pVtx == point, "removed vertices can still be read");
    expect(bStays == !Hearing::all().empty(), "a warning tells whether a vertex can't be removed");
    numFutileRemovals = bStays ? numFutileRemovals + 1 : 0;
    if (bStays) return;
    expect(pVtx->getIncidentTriangle() == nullptr, "removed vertices have no triangle");
    noteRemoved(pVtx);
    // Waiting conforming segments may become edges by chance, and are divided then, or divide others.
    if (bConforming) readVertices(Growth::ALLOWED, Loss::NONE);
    // Constraints on a line wait for a point off it.
    if (!vGiven.empty() && !pMesh->is2D()) bWaiting = true;
    if (!from.oneIn(8)) return;
    pMesh->remove(pVtx);
    expect(!Hearing::all().empty(), "a vertex can't be removed twice");
}

void ApiDriver::shrink() {
    constexpr int mostFutile = 8;
    for (int i = 0; i < 4; ++i) removeOne();
    bFull = numFutileRemovals > mostFutile || mVertices.size() > 8 * options.mostVertices + 200;
}

/// After operations that insert or remove vertices of their own.
void ApiDriver::readVertices(Growth growth, Loss loss) {
    std::vector<Point2*> vVertices;
    pMesh->getVertexPointers(vVertices);
    std::map<Coordinates, Point2*> mNow;
    for (Point2* pVtx : vVertices) mNow.emplace(Coordinates(pVtx->x(), pVtx->y()), pVtx);
    expect(mNow.size() == vVertices.size(), "vertices have different coordinates");
    for (const auto& [xy, pVtx] : mVertices) {
        const auto now = mNow.find(xy);
        const bool bThere = now != mNow.end() && now->second == pVtx;
        expect(bThere || loss != Loss::NONE, "vertices stay");
        expect(bThere || !pMesh->isConstraint(pVtx), "ends of constraints stay");
        if (!bThere && vRemoved.size() < 100) vRemoved.push_back(pVtx);
    }
    if (growth == Growth::NONE)
        expect(mNow.size() <= mVertices.size(), "there are no vertices but those inserted");
    mVertices.swap(mNow);
    vHandles.swap(vVertices);
}

// --------------------------------------------------------------------------------------------- location

void ApiDriver::locateOne() {
    const Point2 point = somePoint();
    say("mesh.locate(Point2", point, ");");
    expectLocated(point, pMesh->locate(point));
}

void ApiDriver::locateMany() {
    std::vector<Point2> points;
    for (unsigned n = from.below(12); n > 0; --n) points.push_back(somePoint());
    std::vector<Triangle2*> vFound(2);
    pMesh->locate(points, vFound);
    expect(vFound.size() == points.size(), "each point is located");
    for (std::size_t i = 0; i < points.size(); ++i) expectLocated(points[i], vFound[i]);
}

void ApiDriver::expectLocated(const Point2& point, Triangle2* pT) {
    const auto isLeftOf = [&](const Point2* pA, const Point2* pB) {
        return exactSigns::orientationSign(*pA, *pB, point) >= 0;
    };
    if (pT != nullptr) {
        for (int i = 0; i < 3; ++i)
            expect(isLeftOf(pT->getCorner(i), pT->getCorner((i + 1) % 3)),
                   "points are located where they are");
        return;
    }
    if (!pMesh->is2D()) return;
    std::vector<Point2*> vHull;
    pMesh->getConvexHull(false, vHull);
    bool bOutside = false;
    for (std::size_t i = 0; i < vHull.size(); ++i)
        bOutside |= !isLeftOf(vHull[i], vHull[(i + 1) % vHull.size()]);
    expect(bOutside, "only points outside of the hull are in no triangle");
}
