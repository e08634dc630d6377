#include "VertexVault.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Dt2.h"
#include "KelmarTest.h"
#include "MTCtrl.h"
#include "diagnostics.h"
#include "require.h"
#include "standardOutput.h"
#include "tasks.h"

namespace KELMAR_NORVIK2D {

namespace {

/// Below this many records a sort runs on the calling thread, and that of the list with fewer threads than this.
constexpr std::size_t parallelSortThreshold = 10000;
constexpr int numSortThreads = 4;

/// Mean of the keys of a sample of the positions [begin, end). A stretch of fewer than 100 has no stride: the
/// sample then runs down from `begin` to 0, as the stride wraps around.
template <class KeyAt>
std::uint32_t meanOfSample(std::size_t begin, std::size_t end, KeyAt keyAt) {
    if (end <= begin) return 0;
    const std::size_t hundredth = (end - begin) / 100;
    if (hundredth == 1) return keyAt(begin);
    const std::size_t stride = hundredth - 1;
    std::uint64_t sum = 0, count = 0;
    for (std::size_t i = begin; i < end; i += stride) {
        sum += keyAt(i);
        ++count;
    }
    return static_cast<std::uint32_t>(sum / count);
}

/// The inner borders of four ranges, each of which belongs before the next one whatever the order within.
struct FourRanges {
    std::size_t border1, border2, border3;
};

/// Parts a list by three sampled pivots into four ranges that can be sorted at the same time: on the left of a pivot come
/// smaller keys, and inactive items. The parting keeps the order of what it doesn't part, so that equal keys stay as they
/// were.
FourRanges partIntoFour(std::vector<IdxVtxAct*>& list) {
    const auto keyAt = [&](std::size_t i) { return list[i]->nic; };
    const auto part = [&](std::size_t begin, std::size_t end) {
        const std::uint32_t pivot = meanOfSample(begin, end, keyAt);
        const auto first = list.begin();
        const auto middle = std::stable_partition(
            first + static_cast<std::ptrdiff_t>(begin), first + static_cast<std::ptrdiff_t>(end),
            [&](const IdxVtxAct* pItem) { return pItem->nic < pivot || !pItem->bAct; });
        return static_cast<std::size_t>(middle - first);
    };
    const std::size_t half = part(0, list.size());
    return {part(0, half), half, part(half, list.size())};
}

std::vector<std::span<IdxVtxAct*>> rangesOf(std::vector<IdxVtxAct*>& list, const FourRanges& borders) {
    const std::span<IdxVtxAct*> all(list);
    return {all.first(borders.border1), all.subspan(borders.border1, borders.border2 - borders.border1),
            all.subspan(borders.border2, borders.border3 - borders.border2), all.subspan(borders.border3)};
}

/// Calls `take(first, last)` for equal shares of `n` records, one for each thread.
template <class Take>
void forEachShare(std::size_t n, int numThreads, Take take) {
    const std::size_t share = n / static_cast<std::size_t>(numThreads) + 1;
    for (std::size_t first = 0; first < n; first += share) take(first, std::min(first + share, n));
}

std::uint32_t wrappedDistance(std::uint32_t keyA, std::uint32_t keyB) {
    const auto difference = static_cast<std::int32_t>(keyA - keyB);
    return difference < 0 ? 0U - static_cast<std::uint32_t>(difference)
                          : static_cast<std::uint32_t>(difference);
}

}  // namespace

VertexVault::VertexVault(Dt2* pDt2_) : pDt2(pDt2_) { itemPool.init(3, 6250000); }

// ------------------------------------------------------------------------------------------------ lookup

/// Position of the first sorted item with this key or a greater one; the last sorted item if all keys are
/// smaller.
std::size_t VertexVault::searchKey(std::uint32_t key) const {
    if (maxSortedIndex == 0) return 0;
    if (!directory.isBuilt()) directory.build(std::span(vIdxVtxAct).first(maxSortedIndex));
    return std::min<std::size_t>(directory.lowerBound(key), maxSortedIndex - 1);
}

/// An active item of the sorted part with this key that matches.
template <class Matches>
unsigned VertexVault::findItem(std::uint32_t key, Matches matches) const {
    return maxSortedIndex == 0 ? notFound : findItemFrom(searchKey(key), key, matches);
}

/// The same where searchKey() has been asked for the key.
template <class Matches>
unsigned VertexVault::findItemFrom(std::size_t start, std::uint32_t key, Matches matches) const {
    const auto isMatch = [&](std::size_t i) {
        return vIdxVtxAct[i]->nic == key && vIdxVtxAct[i]->bAct && matches(vIdxVtxAct[i]->pVtx);
    };
    std::size_t i = start;
    while (i > 0 && vIdxVtxAct[i]->nic == key) --i;
    for (; i < maxSortedIndex; ++i) {
        if (isMatch(i)) return static_cast<unsigned>(i);
        if (vIdxVtxAct[i]->bAct && vIdxVtxAct[i]->nic > key) break;
    }
    return notFound;
}

/// The same in the whole list.
template <class Matches>
unsigned VertexVault::findAnywhere(std::uint32_t key, Matches matches) const {
    const unsigned index = findItem(key, matches);
    if (index != notFound) return index;
    // Last resort: the tail, and items that an unfortunate key or the sort in four ranges has put elsewhere.
    for (std::size_t i = vIdxVtxAct.size(); i-- > 0;)
        if (vIdxVtxAct[i]->bAct && matches(vIdxVtxAct[i]->pVtx)) return static_cast<unsigned>(i);
    return notFound;
}

unsigned VertexVault::getIdxOfPoint(const Point2& point) const {
    return findAnywhere(pDt2->getHC().iReset(point),
                        [&](const Point2* pVtx) { return samePoint(pVtx, &point); });
}

unsigned VertexVault::findVtx(const Point2* pVtx) const {
    return findAnywhere(pDt2->getHC().iReset(*pVtx), [&](const Point2* pOther) { return pOther == pVtx; });
}

/// The item of a vertex of this triangulation: both are made together, the n-th item with the n-th vertex. Null, or
/// another vertex's item, for other points, and after memory ran out between the two.
IdxVtxAct* VertexVault::itemOf(const Point2* pVtx) const {
    return itemPool.at(pDt2->getVertexPool().rankOf(pVtx));
}

unsigned VertexVault::getIdxOfActiveVtx(const Point2* pQuery) const {
    const unsigned index = findVtx(pQuery);
    if (index == notFound) error("VertexVault::getIdxOfActiveVtx", "pQuery not found");
    return index;
}

Point2* VertexVault::getVertexPointer(const Point2& point) const {
    if (empty()) return nullptr;
    const unsigned index = getIdxOfPoint(point);
    return index == notFound ? nullptr : vIdxVtxAct[index]->pVtx;
}

/// Step by step for a group of points at a time, so that they wait together for the memory that the next step reads.
void VertexVault::getSortedVertexPointers(std::span<const Point2> points, std::span<Point2*> vertices) const {
    constexpr std::size_t mostInGroup = 16;
    if (maxSortedIndex == 0) {
        std::fill(vertices.begin(), vertices.end(), nullptr);
        return;
    }
    std::array<std::uint32_t, mostInGroup> keys;
    std::array<std::size_t, mostInGroup> starts;
    for (std::size_t first = 0; first < points.size(); first += mostInGroup) {
        const std::size_t size = std::min(mostInGroup, points.size() - first);
        for (std::size_t i = 0; i < size; ++i) {
            keys[i] = pDt2->getHC().iReset(points[first + i]);
            directory.prefetch(keys[i]);
        }
        for (std::size_t i = 0; i < size; ++i) {
            starts[i] = searchKey(keys[i]);
            __builtin_prefetch(&vIdxVtxAct[starts[i]]);
        }
        for (std::size_t i = 0; i < size; ++i) __builtin_prefetch(vIdxVtxAct[starts[i]]);
        for (std::size_t i = 0; i < size; ++i) __builtin_prefetch(vIdxVtxAct[starts[i]]->pVtx);
        for (std::size_t i = 0; i < size; ++i) {
            const Point2& point = points[first + i];
            const unsigned index =
                findItemFrom(starts[i], keys[i], [&](const Point2* pVtx) { return samePoint(pVtx, &point); });
            vertices[first + i] = index == notFound ? nullptr : vIdxVtxAct[index]->pVtx;
        }
    }
}

Triangle2* VertexVault::getCloseTriangle(std::uint32_t key) const {
    require(bFullDimensional, "bFullDimensional");
    require(!vIdxVtxAct.empty() || hasFakeBox(), "!vIdxVtxAct.empty()");
    if (maxSortedIndex == 0 && hasFakeBox()) {
        const Point2* pFakeCorner = getFakeBoxCorner(0);
        require(pFakeCorner != nullptr, "pFakeCorner!=__null");
        Triangle2* pFakeT = pFakeCorner->getIncidentTriangle();
        require(pFakeT != nullptr, "pFakeT!=__null");
        return pFakeT;
    }
    if (maxSortedIndex == 0) {
        if (vIdxVtxAct[0]->bAct) return vIdxVtxAct[0]->pVtx->getIncidentTriangle();
    } else {
        const std::size_t index = searchKey(key);
        if (vIdxVtxAct[index]->bAct) [[likely]] {
            Triangle2* pT = vIdxVtxAct[index]->pVtx->getIncidentTriangle();
            if (pT == nullptr) [[unlikely]]
                reportLostTriangle(index);
            return pT;
        }
    }
    const IdxVtxAct* pItem = nearestActiveItem(key);
    if (pItem == nullptr) {
        error("Vault", "getCloT() failed");
        require(false, "false");
    }
    Triangle2* pT = pItem->pVtx->getIncidentTriangle();
    require(pT != nullptr, "pT!=__null");
    return pT;
}

/// The next active item of the sorted part, forwards first, then backwards; where it has none, one of the
/// tail.
const IdxVtxAct* VertexVault::nearestActiveItem(std::uint32_t key) const {
    const std::size_t start = searchKey(key);
    std::size_t i = start;
    while (i < maxSortedIndex && !vIdxVtxAct[i]->bAct) ++i;
    if (i == maxSortedIndex) {
        for (i = start; i-- > 0;)
            if (vIdxVtxAct[i]->bAct) return vIdxVtxAct[i];
        return nearestInTail(key);
    }
    // Where much was removed the steps add up. A fresh directory leads past inactive items.
    numScanned += i - start;
    if (numScanned > maxSortedIndex) {
        directory.clear();
        numScanned = 0;
    }
    return vIdxVtxAct[i];
}

const IdxVtxAct* VertexVault::nearestInTail(std::uint32_t key) const {
    const IdxVtxAct* pNearest = nullptr;
    for (std::size_t i = maxSortedIndex; i < vIdxVtxAct.size(); ++i) {
        const IdxVtxAct* pItem = vIdxVtxAct[i];
        if (!pItem->bAct) continue;
        if (pItem->pVtx->getIncidentTriangle() == nullptr) break;
        if (pNearest == nullptr || wrappedDistance(pItem->nic, key) < wrappedDistance(pNearest->nic, key))
            pNearest = pItem;
    }
    return pNearest;
}

void VertexVault::reportLostTriangle(std::size_t resultIndex) const {
    const Point2* pLost = vIdxVtxAct[resultIndex]->pVtx;
    std::string text =
        compose("HUH BUG\nAddress=", pLost, "\nresultIdx=", resultIndex, "\npVtx=", *pLost, "\n");
    for (std::size_t i = 0; i < vIdxVtxAct.size(); ++i)
        if (samePoint(vIdxVtxAct[i]->pVtx, pLost)) text += compose("found at index i=", i, "\n");
    print(text);
    conditionFailed("pT!=__null", __builtin_FILE(), __builtin_LINE());
}

Triangle2* VertexVault::getOneValidTriangle() const {
    if (!bFullDimensional) return nullptr;
    for (const IdxVtxAct* pItem : vIdxVtxAct)
        if (pItem->bAct) return pItem->pVtx->getIncidentTriangle();
    warning("getOneValidTriangle()", "No valid triangle found");
    return nullptr;
}

void VertexVault::getIterators(std::size_t first, ItemIterator& begin, ItemIterator& end) {
    begin = vIdxVtxAct.begin() + static_cast<std::ptrdiff_t>(first);
    end = vIdxVtxAct.end();
}

void VertexVault::getIterators(std::size_t first, ConstItemIterator& begin, ConstItemIterator& end) const {
    begin = vIdxVtxAct.begin() + static_cast<std::ptrdiff_t>(first);
    end = vIdxVtxAct.end();
}

std::size_t VertexVault::computeNumberOfPoints() const {
    return static_cast<std::size_t>(std::count_if(vIdxVtxAct.begin(), vIdxVtxAct.end(),
                                                  [](const IdxVtxAct* pItem) { return pItem->bAct; }));
}

void VertexVault::getVertexPointers(std::vector<Point2*>& out) const {
    out.clear();
    out.reserve(vIdxVtxAct.size());
    for (const IdxVtxAct* pItem : vIdxVtxAct)
        if (pItem->bAct) out.push_back(pItem->pVtx);
}

Bbox2 VertexVault::computeBoundingBox() const {
    std::vector<Point2*> vVertices;
    getVertexPointers(vVertices);
    return getBox(vVertices);
}

// ------------------------------------------------------------------------------------------------ filling

void VertexVault::addItem(std::uint32_t key, Point2* pVtx) {
    IdxVtxAct* pItem = itemPool.get();
    *pItem = {key, true, pVtx};
    vIdxVtxAct.push_back(pItem);
    ++numActPoints;
}

void VertexVault::iReset_vector(const std::vector<Point2>& points, std::vector<Point2*>* pHandles,
                                std::size_t& startIndex) {
    const auto numThreads = static_cast<std::size_t>(pDt2->getNumCPU());
    if (numThreads >= 2 && points.size() >= parallelFillThreshold && points.size() > 10 * numThreads) {
        iReset_vector_mt(points, pHandles, startIndex);
        return;
    }
    startIndex = vIdxVtxAct.size();
    std::vector<KeyIndex> vPairs(points.size());
    Task{vPairs, &points, &pDt2->getHC(), 0, points.size()}.go();
    sortVector(vPairs, points);

    reserveItems(startIndex + points.size());
    if (pHandles != nullptr) pHandles->resize(points.size());
    for (std::size_t rank = 0; rank < vPairs.size(); ++rank) {
        prefetchAhead(vPairs, rank, points);
        const auto [key, index] = vPairs[rank];
        Point2* pVtx = pDt2->newVertex(points[index]);
        IdxVtxAct* pItem = itemPool.get();
        *pItem = {key, true, pVtx};
        vIdxVtxAct.push_back(pItem);
        if (pHandles != nullptr) pHandles->at(index) = pVtx;
    }
}

/// Exact for a first insertion, and with room to spare for those that follow: many small ones must not copy
/// the list each.
void VertexVault::reserveItems(std::size_t n) {
    const std::size_t capacity = vIdxVtxAct.capacity();
    if (n > capacity) vIdxVtxAct.reserve(std::max(n, capacity + capacity / 2));
}

void VertexVault::iReset_vector_mt(const std::vector<Point2>& points, std::vector<Point2*>* pHandles,
                                   std::size_t& startIndex) {
    startIndex = vIdxVtxAct.size();
    const int numThreads = pDt2->getNumCPU();
    const std::size_t n = points.size();
    std::vector<KeyIndex> vPairs(n);
    std::vector<Task> vKeyTasks;
    forEachShare(n, numThreads, [&](std::size_t first, std::size_t last) {
        vKeyTasks.push_back({vPairs, &points, &pDt2->getHC(), first, last});
    });
    MTCtrl<Task>(vKeyTasks).run(numThreads, &Task::go);
    sortVector(vPairs, points);

    reserveItems(startIndex + n);
    if (pHandles != nullptr) pHandles->resize(n);
    // The pools know one thread only: records are taken here, and filled by the workers.
    const std::int64_t firstRank = pDt2->getVertexPool().numHandedOut();
    for (std::size_t i = 0; i < n; ++i) {
        pDt2->getRawVertex();
        vIdxVtxAct.push_back(itemPool.get());
    }
    std::vector<FTask> vFillTasks;
    forEachShare(n, numThreads, [&](std::size_t first, std::size_t last) {
        vFillTasks.push_back({vPairs, &points, &pDt2->getVertexPool(), firstRank,
                              std::span(vIdxVtxAct).subspan(startIndex), pHandles, first, last});
    });
    MTCtrl<FTask>(vFillTasks).run(numThreads, &FTask::go);
}

void VertexVault::iReset_array(int n, const double* coordinates, Point2** handles, std::size_t& startIndex) {
    std::vector<Point2> vPoints;
    vPoints.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) vPoints.emplace_back(coordinates[2 * i], coordinates[2 * i + 1]);
    std::vector<Point2*> vHandles;
    iReset_vector(vPoints, &vHandles, startIndex);
    std::copy(vHandles.begin(), vHandles.end(), handles);
    numActPoints = static_cast<std::uint32_t>(computeNumberOfPoints());
}

void VertexVault::sortIV(SortMode mode) {
    const double numSorted = maxSortedIndex;
    const bool bTailIsLong = static_cast<double>(vIdxVtxAct.size()) > 1.35 * numSorted;
    const bool bManyRemoved = numRemoved > 0.5 * numSorted && numRemoved >= 1001;
    if (mode == SORT_IF_NEEDED && !bTailIsLong && !bManyRemoved) return;

    numRemoved = 0;
    mtSort();
    while (!vIdxVtxAct.empty() && !vIdxVtxAct.back()->bAct) vIdxVtxAct.pop_back();
    maxSortedIndex = static_cast<std::uint32_t>(vIdxVtxAct.size());
    numActPoints = maxSortedIndex;
    directory.clear();
}

/// Sorts the list. In the form for four threads inactive items end up behind the first range, in the middle
/// of the list, and stay there until a sort on one thread; searches take them for equal to their predecessor.
void VertexVault::mtSort() {
    const bool bAllActive = vIdxVtxAct.empty() || vIdxVtxAct.back()->bAct;
    if (bAllActive && std::is_sorted(vIdxVtxAct.begin(), vIdxVtxAct.end(), func_ltDerefPtr{})) return;
    if (pDt2->getNumCPU() < numSortThreads || vIdxVtxAct.size() < parallelSortThreshold) {
        SortTask{vIdxVtxAct}.go();
        return;
    }
    std::vector<SortTask> vTasks;
    for (const std::span<IdxVtxAct*> range : rangesOf(vIdxVtxAct, partIntoFour(vIdxVtxAct)))
        vTasks.push_back({range});
    MTCtrl<SortTask>(vTasks).run(numSortThreads, &SortTask::go);
}

/// With several threads pairs are parted by the highest digit of their keys, into parts that mostly fit into a cache, and
/// then the parts are sorted.
void VertexVault::sortVector(std::vector<KeyIndex>& pairs, const std::vector<Point2>& points) const {
    std::vector<KeyIndex> vScratch(pairs.size());
    const int numThreads = pDt2->getNumCPU();
    if (numThreads < 2 || pairs.size() < parallelSortThreshold) {
        SortTask2{pairs, vScratch, &points}.go();
        return;
    }
    std::vector<PartTask> vPartTasks;
    forEachShare(pairs.size(), numThreads, [&](std::size_t first, std::size_t last) {
        vPartTasks.push_back({std::span(pairs).subspan(first, last - first), vScratch});
    });
    MTCtrl<PartTask>(vPartTasks).run(numThreads, &PartTask::count);
    std::vector<SortTask2> vSortTasks;
    std::uint32_t start = 0;
    for (std::size_t digit = 0; digit < PartTask::Counts().size(); ++digit) {
        const std::uint32_t firstStart = start;
        for (PartTask& task : vPartTasks) start += std::exchange(task.counts[digit], start);
        const std::size_t size = start - firstStart;
        if (size > 0)
            vSortTasks.push_back({std::span(vScratch).subspan(firstStart, size),
                                  std::span(pairs).subspan(firstStart, size), &points, true});
    }
    MTCtrl<PartTask>(vPartTasks).run(numThreads, &PartTask::part);
    MTCtrl<SortTask2>(vSortTasks).run(numThreads, &SortTask2::go);
    pairs.swap(vScratch);
}

void VertexVault::reconfiguration() {
    for (IdxVtxAct* pItem : vIdxVtxAct) pItem->nic = pDt2->getHC().iReset(*pItem->pVtx);
    sortIV(SORT_ALWAYS);
}

void VertexVault::prefetchItem(const Point2* pVtx) const { __builtin_prefetch(itemOf(pVtx)); }

void VertexVault::removeAndInvalidateVtx(Point2* pVtx) {
    IdxVtxAct* pItem = itemOf(pVtx);
    if (pItem == nullptr || pItem->pVtx != pVtx || !pItem->bAct) [[unlikely]] {
        const unsigned index = getIdxOfActiveVtx(pVtx);
        if (index == notFound) return;
        pItem = vIdxVtxAct[index];
    }
    ++numRemoved;
    setIncidentTriangle(pVtx, nullptr);
    makeInactive(pItem);
    if (!bFullDimensional) sortIV(SORT_ALWAYS);
}

void VertexVault::makeInactive(IdxVtxAct* pItem) {
    pItem->bAct = false;
    --numActPoints;
}

// ------------------------------------------------------------------------------------------------ duplicates

void VertexVault::registerDup(Point2* pDup, Point2* pVtx) {
    if (pDup == pVtx) return;
    const std::lock_guard lock(mutex);
    const bool bInserted = mRedundant2UniqueVtx.emplace(pDup, pVtx).second;
    require(bInserted, "bInserted");
}

Point2* VertexVault::treatOneDupGetHandle(const Point2* pDup) {
    require(bFullDimensional, "bFullDimensional");
    require(mRedundant2UniqueVtx.size() == 1, "mRedundant2UniqueVtx.size()==1");
    IdxVtxAct* pLastItem = vIdxVtxAct.back();
    require(pDup == pLastItem->pVtx, "pDup==pLastItem->pVtx");
    makeInactive(pLastItem);
    const auto q_it = mRedundant2UniqueVtx.find(pLastItem->pVtx);
    require(q_it != mRedundant2UniqueVtx.end(), "q_it!=mRedundant2UniqueVtx.end()");
    Point2* pUnique = q_it->second;
    // Not clear(): that goes through all places of the table, which a bulk insertion may have left large.
    mRedundant2UniqueVtx.erase(q_it);
    return pUnique;
}

void VertexVault::dropWaitingItems(std::size_t first) {
    for (std::size_t i = first; i < vIdxVtxAct.size(); ++i) {
        IdxVtxAct* const pItem = vIdxVtxAct[i];
        if (!pItem->bAct || pItem->pVtx->getIncidentTriangle() != nullptr) continue;
        if (mRedundant2UniqueVtx.count(pItem->pVtx) != 0) continue;
        ++numRemoved;
        makeInactive(pItem);
    }
}

void VertexVault::treatDupsAndHandles(std::vector<Point2*>* pHandles) {
    if (!bFullDimensional) findDuplicatesByCoordinates();
    if (dupIsClean()) return;
    if (pHandles != nullptr) redirectHandles(*pHandles);
    if (!bFullDimensional) {
        mRedundant2UniqueVtx.clear();
        sortIV(SORT_ALWAYS);
        return;
    }

    std::size_t numFoundInIdxVtxAct = 0;
    for (std::size_t i = maxSortedIndex; i < vIdxVtxAct.size(); ++i) {
        IdxVtxAct* pItem = vIdxVtxAct[i];
        if (!pItem->bAct || pItem->pVtx->getIncidentTriangle() != nullptr) continue;
        require(mRedundant2UniqueVtx.find(pItem->pVtx) != mRedundant2UniqueVtx.end(),
                "mRedundant2UniqueVtx.find(vIdxVtxAct[i]->pVtx)!=mRedundant2UniqueVtx.end()");
        makeInactive(pItem);
        ++numFoundInIdxVtxAct;
    }
    if (mRedundant2UniqueVtx.size() != numFoundInIdxVtxAct)
        print(compose("     numFoundInIdxVtxAct=", numFoundInIdxVtxAct, "\n"));
    require(mRedundant2UniqueVtx.size() == numFoundInIdxVtxAct,
            "mRedundant2UniqueVtx.size()==numFoundInIdxVtxAct");
    mRedundant2UniqueVtx.clear();
}

/// Without triangles nothing has sorted out equal points yet: of each group the first one in the list stays.
void VertexVault::findDuplicatesByCoordinates() {
    require(mRedundant2UniqueVtx.empty(), "mRedundant2UniqueVtx.empty()");
    std::vector<IdxVtxAct*> vByCoordinates;
    std::copy_if(vIdxVtxAct.begin(), vIdxVtxAct.end(), std::back_inserter(vByCoordinates),
                 [](const IdxVtxAct* pItem) { return pItem->bAct; });
    std::stable_sort(vByCoordinates.begin(), vByCoordinates.end(),
                     [](const IdxVtxAct* pA, const IdxVtxAct* pB) { return *pA->pVtx < *pB->pVtx; });
    Point2* pUnique = nullptr;
    for (IdxVtxAct* pItem : vByCoordinates) {
        if (pUnique == nullptr || !samePoint(pUnique, pItem->pVtx)) {
            pUnique = pItem->pVtx;
            continue;
        }
        makeInactive(pItem);
        mRedundant2UniqueVtx.emplace(pItem->pVtx, pUnique);
    }
}

/// Only vertices without a triangle can have lost, so most handles need no look into the map.
void VertexVault::redirectHandles(std::vector<Point2*>& handles) const {
    std::size_t numFoundInHandles = 0;
    for (Point2*& pHandle : handles) {
        if (pHandle->getIncidentTriangle() != nullptr) continue;
        const auto found = mRedundant2UniqueVtx.find(pHandle);
        if (found == mRedundant2UniqueVtx.end()) continue;
        require(samePoint(pHandle, found->second), "**it==*pExistingVtx");
        pHandle = found->second;
        ++numFoundInHandles;
    }
    if (mRedundant2UniqueVtx.size() != numFoundInHandles)
        print(compose("BUG: mRedundant2UniqueVtx.size()=", mRedundant2UniqueVtx.size(),
                      ", numFoundInHandles=", numFoundInHandles, "\n"));
    require(mRedundant2UniqueVtx.size() == numFoundInHandles,
            "mRedundant2UniqueVtx.size()==numFoundInHandles");
}

// ---------------------------------------------------------------------------- beginning and fake box
bool VertexVault::getThreeInitialPoints(Point2*& pA, Point2*& pB, Point2*& pC) const {
    require(!vIdxVtxAct.empty(), "!vIdxVtxAct.empty()");
    require(!bFullDimensional, "!bFullDimensional");
    if (vIdxVtxAct.size() < 3) return false;

    auto it = vIdxVtxAct.begin();
    const auto findNext = [&](auto isWanted) -> Point2* {
        it = std::find_if(it, vIdxVtxAct.end(),
                          [&](const IdxVtxAct* pItem) { return pItem->bAct && isWanted(pItem->pVtx); });
        return it == vIdxVtxAct.end() ? nullptr : (*it++)->pVtx;
    };
    KelmarTest* pPredicates = pDt2->getPredicates();
    pA = findNext([](const Point2*) { return true; });
    pB = pA == nullptr ? nullptr : findNext([&](const Point2* pVtx) { return !samePoint(pVtx, pA); });
    if (pB == nullptr) return false;
    pC = findNext(
        [&](Point2* pVtx) { return pPredicates->getOrientation2(pA, pB, pVtx) != ORIENTATION2_COLLINEAR; });
    if (pC == nullptr) return false;
    if (pPredicates->getOrientation2(pA, pB, pC) == ORIENTATION2_CW) std::swap(pB, pC);
    return true;
}

void VertexVault::createFakeBox(const Bbox2& box) {
    // The copy tells the predicates of its new magnitude, as the box does.
    Bbox2 fakeBox = box;
    fakeBox.enlargeRanges(1.01);
    // Where rounding has eaten the margin, the next double has to do: a corner never coincides with a point.
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double minX = std::min(fakeBox.getMinX(), std::nextafter(box.getMinX(), -infinity));
    const double minY = std::min(fakeBox.getMinY(), std::nextafter(box.getMinY(), -infinity));
    const double maxX = std::max(fakeBox.getMaxX(), std::nextafter(box.getMaxX(), infinity));
    const double maxY = std::max(fakeBox.getMaxY(), std::nextafter(box.getMaxY(), infinity));
    const double magnitude = std::max({std::fabs(minX), std::fabs(minY), std::fabs(maxX), std::fabs(maxY)});
    if (magnitude > pDt2->getPredicates()->getBoundMagnitude())
        pDt2->getPredicates()->setStaticBound(magnitude);

    std::vector<std::unique_ptr<Point2>> vCorners;
    for (const Point2& corner :
         {Point2(minX, minY), Point2(maxX, minY), Point2(maxX, maxY), Point2(minX, maxY)})
        vCorners.push_back(std::make_unique<Point2>(corner));
    if (bFullDimensional) {
        for (const auto& pCorner : vCorners) {
            Point2* pVtx = pCorner.get();
            pDt2->insertVertex(pVtx, getCloseTriangle(pDt2->getHC().iReset(*pVtx)));
        }
    } else {
        bFullDimensional = true;
        Triangle2* pFirst = pDt2->createTriangle(vCorners[0].get(), vCorners[1].get(), vCorners[2].get());
        Triangle2* pSecond = pDt2->createTriangle(vCorners[0].get(), vCorners[2].get(), vCorners[3].get());
        setNeighbour(pFirst, 1, pSecond);
        setNeighbour(pSecond, 2, pFirst);
    }
    // Not before they are in the mesh: from here on searches start at them.
    vFakeBoxHandles = std::move(vCorners);
}

void VertexVault::removeFakeBox() {
    require(hasFakeBox(), "vFakeBoxHandles.size()==4");
    for (const auto& pCorner : vFakeBoxHandles) pDt2->remove_CHVersion(pCorner.get(), false);
    vFakeBoxHandles.clear();
}

Point2* VertexVault::getFakeBoxCorner(std::size_t index) const {
    require(vFakeBoxHandles.size() > index, "vFakeBoxHandles.size()>i");
    return vFakeBoxHandles[index].get();
}

// ------------------------------------------------------------------------------------------- diagnostics

void VertexVault::showData(const std::string& name) const {
    std::string text = compose("Vault data [", name, "]\n");
    for (std::size_t i = 0; i < vIdxVtxAct.size(); ++i) {
        const IdxVtxAct* pItem = vIdxVtxAct[i];
        text += compose("i=", i, " \tnic=", pItem->nic, "\t bAct=", pItem->bAct, "\t pVtx=", pItem->pVtx,
                        ", ", *pItem->pVtx, ", incT=", pItem->pVtx->getIncidentTriangle(), "\n");
    }
    text += compose("sum active: ", computeNumberOfPoints(), "\nmaxSortedIndex=", maxSortedIndex,
                    ", vVtxAct.size()=", vIdxVtxAct.size(), ", fullDim=", bFullDimensional,
                    "\nmRedundant2Unique: \n");
    for (const auto& [pDup, pUnique] : mRedundant2UniqueVtx)
        text += compose("Redundant: ", pDup, " -> unique: ", pUnique, "\n");
    print(text);
}

void VertexVault::checkVault() const {
    std::string text = "VertexVault::checkVault(): This is a debug check\n";
    for (const IdxVtxAct* pItem : vIdxVtxAct)
        if (bFullDimensional && pItem->bAct && pItem->pVtx->getIncidentTriangle() == nullptr)
            text += compose("pVtx without triangle: ", *pItem->pVtx, "\n");
    print(text + "VertexVault::checkVault() survived\n");
}

void VertexVault::debugDups() const {
    for (const auto& [pDup, pUnique] : mRedundant2UniqueVtx)
        if (!samePoint(pDup, pUnique))
            print(compose("debugDups has found a bug: ", *pDup, " -> ", *pUnique, "\n"));
}

}  // namespace KELMAR_NORVIK2D
