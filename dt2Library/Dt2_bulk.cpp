#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "Dt2.h"
#include "diagnostics.h"
#include "require.h"
#include "walk.h"

namespace KELMAR_NORVIK2D {

namespace {

/// Collects the box of many points, and whether all are finite.
class BoxCollector {
public:
    void add(double x, double y) {
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
        // 0 * x is 0 for finite numbers, NaN otherwise.
        poison += 0.0 * x + 0.0 * y;
    }
    bool areFinite() const { return poison == 0.0; }
    Bbox2 getBox() const {
        Bbox2 box;
        box.add(Point2(minX, minY));
        box.add(Point2(maxX, maxY));
        return box;
    }

private:
    static constexpr double infinity = std::numeric_limits<double>::infinity();
    double minX = infinity, minY = infinity, maxX = -infinity, maxY = -infinity;
    double poison = 0.0;
};

BoxCollector collectBox(const std::vector<Point2>& points) {
    BoxCollector collector;
    for (const Point2& point : points) collector.add(point.x(), point.y());
    return collector;
}

double squaredDistance(const Point2* pA, const Point2* pB) {
    const double dx = pA->x() - pB->x(), dy = pA->y() - pB->y();
    return dx * dx + dy * dy;
}

/// Of a triangle and the one at another vertex, which may be null or have none: where a walk to `pVtx` better
/// starts.
Triangle2* closerStart(const Point2* pVtx, Triangle2* pStartT, const Point2* pOther) {
    if (pOther == nullptr || pOther->getIncidentTriangle() == nullptr) return pStartT;
    const bool bOtherIsCloser = squaredDistance(pVtx, pOther) < squaredDistance(pVtx, corner(pStartT, 0));
    return bOtherIsCloser ? pOther->getIncidentTriangle() : pStartT;
}

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
/// give one, and neither can corners beyond the range of doubles: all goes on one thread then.
bool Dt2::wantsFakeBox() const {
    constexpr double greatest = std::numeric_limits<double>::max() / 4.0;
    return numCPU >= 2 && !bNoFlips && box.getMaxX() > box.getMinX() && box.getMaxY() > box.getMinY() &&
           box.getMinX() > -greatest && box.getMaxX() < greatest && box.getMinY() > -greatest &&
           box.getMaxY() < greatest;
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
        ItemIterator first, last;
        vertexVault.getIterators(numPreExistingVtx, first, last);
        triangulateGate(first, last, vertexVault.getCloseTriangle((*first)->nic));
    }
    vertexVault.treatDupsAndHandles(pHandles);
    require(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
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
    ItemIterator first, last;
    vertexVault.getIterators(0, first, last);
    require(numPreExistingVtx <= static_cast<std::size_t>(last - first),
            "numPreExistingVtx<=(size_t)distance(startIt,stopIt)");
    const ItemIterator split = first + static_cast<std::ptrdiff_t>(numPreExistingVtx);
    if (first != split) triangulateGate(first, split, pStartT);
    if (split != last) triangulateGate(split, last, pStartT);
}

void Dt2::triangulateGate(ItemIterator first, ItemIterator last, Triangle2* pStartT) {
    triangulateRec(first, last, pStartT);
}

/// The middle of a stretch first: early vertices spread over the whole area, and each walk starts next to its
/// end.
void Dt2::triangulateRec(ItemIterator first, ItemIterator last, Triangle2* pStartT) {
    // The vertex behind the stretch came in earlier, as the middle of a longer one. Where the curve jumps it
    // is the closer of both ends.
    const Point2* const pBehind = last == vertexVault.end() ? nullptr : (*last)->pVtx;
    if (last - first <= shortStretch) {
        for (; first != last; ++first) {
            if (!(*first)->bAct) continue;
            pStartT = insertItem(first, closerStart((*first)->pVtx, pStartT, pBehind));
        }
        return;
    }
    const ItemIterator mid = first + (last - first) / 2;
    Triangle2* pNearT = pStartT;
    if ((*mid)->bAct) pNearT = insertItem(mid, closerStart((*mid)->pVtx, pStartT, pBehind));
    triangulateRec(first, mid, pNearT);
    // A duplicate has no triangle of its own; the one where it was found is still alive, as insertion kills
    // none.
    Triangle2* pIncT = (*mid)->pVtx->getIncidentTriangle();
    if (pIncT == nullptr) pIncT = pNearT;
    require(pIncT != nullptr, "pIncT!=NULL");
    triangulateRec(mid + 1, last, pIncT);
}

/// Where the curve jumps along a fan of thin triangles, as between points on a circle, a walk may cross all of it.
/// Then it is cheaper to look for a closer start among the vertices that are in already.
Triangle2* Dt2::insertItem(ItemIterator item, Triangle2* pStartT) {
    constexpr int maxSteps = 64;
    Point2*& pVtx = (*item)->pVtx;
    int edge = -1;
    Triangle2* pT = pStartT;
    int code = walkToConflict(predicates, pVtx, pT, edge, maxSteps);
    if (code == LOCATE_TOO_FAR) {
        pT = closestInList(item, pT);
        code = walkToConflict(predicates, pVtx, pT, edge);
    }
    return insertLocated(pVtx, pT, code, edge);
}

/// A triangle at a vertex close to the item's, at least as close as corner 0 of `pT`. Looks at powers of two on both
/// sides in the list, goes to the closest of them, and on from there with smaller ones.
Triangle2* Dt2::closestInList(ItemIterator item, Triangle2* pT) {
    ItemIterator begin, end;
    vertexVault.getIterators(0, begin, end);
    const Point2* const pVtx = (*item)->pVtx;
    double least = squaredDistance(pVtx, corner(pT, 0));
    std::ptrdiff_t position = item - begin;
    auto reach = static_cast<std::ptrdiff_t>(std::bit_floor(static_cast<std::size_t>(end - begin)));
    for (bool bCloser = true; bCloser;) {
        bCloser = false;
        const std::ptrdiff_t center = position;
        for (std::ptrdiff_t offset = reach; offset > 0; offset /= 2) {
            for (const std::ptrdiff_t candidate : {center - offset, center + offset}) {
                if (candidate < 0 || candidate >= end - begin) continue;
                const Point2* pCandidate = begin[candidate]->pVtx;
                if (pCandidate->getIncidentTriangle() == nullptr) continue;
                const double distance = squaredDistance(pVtx, pCandidate);
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
