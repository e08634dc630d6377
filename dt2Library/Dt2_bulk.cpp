#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "BoxCollector.h"
#include "Dt2.h"
#include "InserterMT.h"
#include "diagnostics.h"
#include "distance.h"
#include "insertMiddleFirst.h"
#include "require.h"
#include "walk.h"

namespace KELMAR_NORVIK2D {

namespace {

void warnNonFinite() { warning("Dt2::insert()", "non-finite coordinates, nothing done"); }

}  // namespace

void Dt2::insertVector(const std::vector<Point2>& points, std::vector<Point2*>* pHandles) {
    if (points.empty()) return;
    const BoxCollector collector = collectBox(points);
    if (!collector.areFinite()) {
        warnNonFinite();
        if (pHandles != nullptr) pHandles->assign(points.size(), nullptr);
        return;
    }
    require(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    takeIntoBox(collector.getBox());

    const bool bFakeBox = wantsFakeBox();
    const bool bOldOnesWait = bFakeBox && !is2D();
    if (bFakeBox) vertexVault.createFakeBox(box);
    startProgress("insert vertices", points.size());
    std::size_t numPreExistingVtx = 0;
    vertexVault.iReset_vector(points, pHandles, numPreExistingVtx);
    triangulateNew(points.size(), numPreExistingVtx, bOldOnesWait, pHandles);
    if (bFakeBox) vertexVault.removeFakeBox();
}

void Dt2::insert(int n, const double* coordinates, Point2** handles) {
    require(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    if (n <= 0) return;
    if (coordinates == nullptr || handles == nullptr) {
        warning("Dt2::insert()", "no coordinates or no handles given, nothing done");
        return;
    }
    BoxCollector collector;
    for (int i = 0; i < n; ++i) collector.add(coordinates[2 * i], coordinates[2 * i + 1]);
    if (!collector.areFinite()) {
        warnNonFinite();
        std::fill_n(handles, n, nullptr);
        return;
    }
    const auto numPoints = static_cast<std::size_t>(n);
    std::vector<Point2*> vHandles;
    if (numCPU >= 2 && numPoints >= VertexVault::parallelFillThreshold) {
        std::vector<Point2> vPoints;
        vPoints.reserve(numPoints);
        for (int i = 0; i < n; ++i) vPoints.emplace_back(coordinates[2 * i], coordinates[2 * i + 1]);
        insertVector(vPoints, &vHandles);
    } else {
        takeIntoBox(collector.getBox());
        startProgress("insert", numPoints);
        std::size_t numPreExistingVtx = 0;
        vertexVault.iReset_array(n, coordinates, handles, numPreExistingVtx);
        vHandles.assign(handles, handles + n);
        triangulateNew(numPoints, numPreExistingVtx, false, &vHandles);
    }
    std::copy(vHandles.begin(), vHandles.end(), handles);
}

void Dt2::insertToVVault(const std::vector<Point2>& points, std::vector<Point2*>* pHandles) {
    require(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    if (points.empty()) return;
    takeIntoBox(collectBox(points).getBox());
    std::size_t numPreExistingVtx = 0;
    vertexVault.iReset_vector(points, pHandles, numPreExistingVtx);
    vertexVault.treatDupsAndHandles(pHandles);
    require(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    vertexVault.sortIV(SORT_ALWAYS);
}

void Dt2::takeIntoBox(const Bbox2& newPoints) {
    const bool bGrew = box.add(Point2(newPoints.getMinX(), newPoints.getMinY()));
    if (box.add(Point2(newPoints.getMaxX(), newPoints.getMaxY())) || bGrew) hReconfiguration();
}

/// Multithreaded insertion works in a two-dimensional mesh that holds all points. A box without extent can't
/// give one, and neither can corners beyond the range of doubles: all goes on one thread then, as it does where there are
/// constraints, which several threads couldn't divide at once.
bool Dt2::wantsFakeBox() const {
    constexpr double greatest = std::numeric_limits<double>::max() / 4.0;
    return numCPU >= 2 && !bNoFlips && !constraintMgr.hasConstraints() && box.getMaxX() > box.getMinX() &&
           box.getMaxY() > box.getMinY() && box.getMinX() > -greatest && box.getMaxX() < greatest &&
           box.getMinY() > -greatest && box.getMaxY() < greatest;
}

/// Sorting counts as a tenth of the work.
void Dt2::startProgress(const char* title, std::size_t numPoints) {
    progress.start(title, static_cast<std::uint64_t>(static_cast<double>(numPoints) * 1.1));
}

/// Triangulates the items from `numPreExistingVtx` on and settles duplicates and handles. `bOldOnesWait`
/// tells that the fake box has made the mesh two-dimensional and that the older items have no triangles yet
/// either.
void Dt2::triangulateNew(std::size_t numPoints, std::size_t numPreExistingVtx, bool bOldOnesWait,
                         std::vector<Point2*>* pHandles) {
    progress.incProgress(static_cast<unsigned long>(static_cast<double>(numPoints) * 0.1));
    if (!is2D()) {
        createFullDimTriangle(numPreExistingVtx);
    } else if (bOldOnesWait) {
        triangulateOldThenNew(numPreExistingVtx, vertexVault.getFakeBoxCorner(0)->getIncidentTriangle());
    } else {
        const ItemSpan items = vertexVault.getItems();
        triangulateGate(items, numPreExistingVtx, items.size(),
                        vertexVault.getCloseTriangle(items[numPreExistingVtx]->nic));
    }
    if (cancelSwitch.isCutShort()) vertexVault.dropWaitingItems(numPreExistingVtx);
    vertexVault.treatDupsAndHandles(pHandles);
    require(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    if (cancelSwitch.isCutShort() && pHandles != nullptr)
        std::replace_if(
            pHandles->begin(), pHandles->end(),
            [](const Point2* pVtx) { return pVtx->getIncidentTriangle() == nullptr; }, nullptr);
    vertexVault.sortIV(SORT_IF_NEEDED);
    progress.finish();
}

bool Dt2::createFullDimTriangle(std::size_t numPreExistingVtx) {
    require(!is2D(), "!vertexVault.bFullDimensional");
    Point2 *p0, *p1, *p2;
    if (!vertexVault.getThreeInitialPoints(p0, p1, p2)) return false;
    vertexVault.bFullDimensional = true;
    triangulateOldThenNew(numPreExistingVtx, createTriangle(p0, p1, p2));
    return true;
}

/// Older vertices enter first, because of two equal points the earlier one is to stay. The first triangle's
/// own corners are found as duplicates of themselves, which registers nothing.
void Dt2::triangulateOldThenNew(std::size_t numPreExistingVtx, Triangle2* pStartT) {
    const ItemSpan items = vertexVault.getItems();
    require(numPreExistingVtx <= items.size(), "numPreExistingVtx<=(size_t)distance(startIt,stopIt)");
    if (numPreExistingVtx > 0) {
        // These were in before: whoever cancels the insertion of others doesn't mean them.
        const CancelSwitch::Pause pause(cancelSwitch);
        triangulateGate(items, 0, numPreExistingVtx, pStartT);
    }
    if (numPreExistingVtx < items.size()) triangulateGate(items, numPreExistingVtx, items.size(), pStartT);
}

/// Many items go to several threads, where a fake box stands around all of them.
void Dt2::triangulateGate(ItemSpan items, std::size_t first, std::size_t last, Triangle2* pStartT) {
    if (numCPU >= 2 && last - first >= InserterMT::leastItems && vertexVault.hasFakeBox()) {
        // Nobody could tell what its threads have left undone.
        const CancelSwitch::Pause pause(cancelSwitch);
        InserterMT(this).go(items.subspan(first, last - first));
    } else {
        triangulateRec(items, first, last, pStartT);
    }
}

void Dt2::triangulateRec(ItemSpan items, std::size_t first, std::size_t last, Triangle2* pStartT) {
    insertMiddleFirst(items, first, last, pStartT,
                      [&](std::size_t i, Triangle2* pNearT) { return insertItem(items, i, pNearT); });
}

/// Where the curve jumps along a fan of thin triangles, as between points on a circle, a walk may cross all of it.
/// Then it is cheaper to look for a closer start among the vertices that are in already.
Triangle2* Dt2::insertItem(ItemSpan items, std::size_t index, Triangle2* pStartT) {
    constexpr int maxSteps = 64;
    if (cancelSwitch.shouldStop()) return pStartT;
    Point2*& pVtx = items[index]->pVtx;
    int edge = -1;
    Triangle2* pT = pStartT;
    int code = walkToConflict(predicates, pVtx, pT, edge, maxSteps);
    if (code == LOCATE_TOO_FAR) {
        pT = closestInList(items, index, pT);
        code = walkToConflict(predicates, pVtx, pT, edge);
    }
    return insertLocated(pVtx, pT, code, edge);
}

/// A triangle at a vertex close to the item's, at least as close as corner 0 of `pT`. Looks at powers of two on both
/// sides in the list, goes to the closest of them, and on from there with smaller ones.
Triangle2* Dt2::closestInList(ItemSpan items, std::size_t index, Triangle2* pT) {
    const Point2* const pVtx = items[index]->pVtx;
    double least = squaredDistance(*pVtx, *corner(pT, 0));
    const auto size = static_cast<std::ptrdiff_t>(items.size());
    auto position = static_cast<std::ptrdiff_t>(index);
    auto reach = static_cast<std::ptrdiff_t>(std::bit_floor(items.size()));
    for (bool bCloser = true; bCloser;) {
        bCloser = false;
        const std::ptrdiff_t center = position;
        for (std::ptrdiff_t offset = reach; offset > 0; offset /= 2) {
            for (const std::ptrdiff_t candidate : {center - offset, center + offset}) {
                if (candidate < 0 || candidate >= size) continue;
                const Point2* pCandidate = items[static_cast<std::size_t>(candidate)]->pVtx;
                if (pCandidate->getIncidentTriangle() == nullptr) continue;
                const double distance = squaredDistance(*pVtx, *pCandidate);
                if (!(distance < least)) continue;
                least = distance;
                pT = pCandidate->getIncidentTriangle();
                position = candidate;
                reach = offset;
                bCloser = true;
            }
        }
    }
    return pT;
}

double Dt2::measureTrianguluationTime(int numCPU_, const std::vector<Point2>& points) {
    const std::string timerName = "[quiet] Delaunay point insertion";
    timer(timerName);
    setNumCPU(numCPU_);
    insertVector(points, nullptr);
    return timer(timerName);
}

}  // namespace KELMAR_NORVIK2D
