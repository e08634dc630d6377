#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "Bbox2.h"
#include "IdxVtxAct.h"
#include "KeyDirectory.h"
#include "Point2.h"
#include "SimplePool.h"
#include "hilbertOrder.h"

namespace KELMAR_NORVIK2D {

class Dt2;

enum SortMode { SORT_ALWAYS = 0, SORT_IF_NEEDED = 1 };

/// The point store of one triangulation: all its vertices in Hilbert order, which of them are active,
/// duplicates that wait for treatment, and the corners of the fake box that multithreaded insertion works in.
///
/// Laws:
///  1. The items below maxSortedIndex are the sorted part. The items behind it, the tail, are in the order of
///     their making, and so are their vertices in the vertex pool.
///  2. After a sort the sorted part is the whole list, and the list ends with an active item.
///  3. Each waiting duplicate lost against another vertex with the same coordinates.
class VertexVault {
public:
    using ItemList = std::vector<IdxVtxAct*>;
    using ItemSpan = std::span<IdxVtxAct* const>;
    using ItemIterator = ItemList::iterator;
    using ConstItemIterator = ItemList::const_iterator;

    /// What index lookups answer when there is nothing.
    static constexpr unsigned notFound = 2147483647;

    /// Below this many points a bulk insertion is prepared on the calling thread.
    static constexpr std::size_t parallelFillThreshold = 100000;

    explicit VertexVault(Dt2* pDt2);
    VertexVault(const VertexVault&) = delete;
    VertexVault& operator=(const VertexVault&) = delete;

    // Lookup

    /// Index of the active item with these coordinates, or notFound.
    unsigned getIdxOfPoint(const Point2& point) const;
    /// Index of the active item of this very vertex; reports an error and gives notFound if there is none.
    unsigned getIdxOfActiveVtx(const Point2* pQuery) const;
    bool isActive(const Point2* pVtx) const { return findVtx(pVtx) != notFound; }
    /// The vertex at these coordinates, or null.
    Point2* getVertexPointer(const Point2& point) const;
    /// The same for many points, but only where the vertex is in the sorted part under its key: quick also for points that
    /// aren't there. `vertices` has room for one of each point.
    void getSortedVertexPointers(std::span<const Point2> points, std::span<Point2*> vertices) const;
    /// A live triangle to start a walk to a point with this key from.
    Triangle2* getCloseTriangle(std::uint32_t key) const;
    /// The incident triangle of the first active item; null if not full-dimensional or (with a warning) none
    /// is active.
    Triangle2* getOneValidTriangle() const;

    const ItemList* getData() const noexcept { return &vIdxVtxAct; }
    void getIterators(std::size_t first, ItemIterator& begin, ItemIterator& end);
    void getIterators(std::size_t first, ConstItemIterator& begin, ConstItemIterator& end) const;
    ItemSpan getItems() noexcept { return vIdxVtxAct; }
    std::size_t getSize() const noexcept { return vIdxVtxAct.size(); }
    bool empty() const noexcept { return vIdxVtxAct.empty(); }
    std::size_t computeNumberOfPoints() const;
    /// The active vertices in list order; `out` is replaced.
    void getVertexPointers(std::vector<Point2*>& out) const;
    Bbox2 computeBoundingBox() const;

    // Filling

    void addItem(std::uint32_t key, Point2* pVtx);
    /// Makes a vertex for each point and appends the new items as one sorted run. `startIndex` is the list's
    /// size before. With `pHandles` given, it is resized, and handle i is the vertex of point i.
    void iReset_vector(const std::vector<Point2>& points, std::vector<Point2*>* pHandles,
                       std::size_t& startIndex);
    void iReset_vector_mt(const std::vector<Point2>& points, std::vector<Point2*>* pHandles,
                          std::size_t& startIndex);
    /// The same for `n` interleaved coordinates and an array of `n` handles.
    void iReset_array(int n, const double* coordinates, Point2** handles, std::size_t& startIndex);
    void sortIV(SortMode mode);
    /// Rekeys all items after the key calculator has changed.
    void reconfiguration();
    /// Asks for the memory that the removal of the vertex will need in the end.
    void prefetchItem(const Point2* pVtx) const;
    /// Makes the item of a vertex inactive and takes its incident triangle away. A vertex without an active
    /// item changes nothing beyond the error message.
    void removeAndInvalidateVtx(Point2* pVtx);

    // Duplicates

    /// Notes that a vertex lost against another one; nothing if both are the same. May be called from worker
    /// threads.
    void registerDup(Point2* pDup, Point2* pVtx);
    bool dupIsClean() const noexcept { return mRedundant2UniqueVtx.empty(); }
    /// Settles the duplicate that a single insertion has just made, and returns the vertex that survives.
    Point2* treatOneDupGetHandle(const Point2* pDup);
    /// Makes items from `first` on inactive whose vertices have neither a triangle nor lost against another one: their insertion
    /// was cancelled.
    void dropWaitingItems(std::size_t first);
    /// Settles the duplicates of a bulk insertion; handles of losers are redirected.
    void treatDupsAndHandles(std::vector<Point2*>* pHandles);

    // Beginning and fake box

    /// Three active vertices in counterclockwise order, the first active one among them; false if all are
    /// collinear.
    bool getThreeInitialPoints(Point2*& pA, Point2*& pB, Point2*& pC) const;
    /// Puts four corners around the box into the mesh, making it two-dimensional where it isn't.
    void createFakeBox(const Bbox2& box);
    void removeFakeBox();
    bool hasFakeBox() const noexcept { return vFakeBoxHandles.size() == 4; }
    Point2* getFakeBoxCorner(std::size_t index) const;
    bool isFakeBoxCorner(const Point2* pVtx) const noexcept {
        return std::any_of(vFakeBoxHandles.begin(), vFakeBoxHandles.end(),
                           [pVtx](const auto& pCorner) { return pCorner.get() == pVtx; });
    }

    // Diagnostics

    void showData(const std::string& name) const;
    void checkVault() const;
    void debugDups() const;

    /// A first triangle exists.
    bool bFullDimensional = false;

private:
    std::size_t searchKey(std::uint32_t key) const;
    template <class Matches>
    unsigned findItem(std::uint32_t key, Matches matches) const;
    template <class Matches>
    unsigned findItemFrom(std::size_t start, std::uint32_t key, Matches matches) const;
    template <class Matches>
    unsigned findAnywhere(std::uint32_t key, Matches matches) const;
    unsigned findVtx(const Point2* pVtx) const;
    IdxVtxAct* itemOf(const Point2* pVtx) const;
    const IdxVtxAct* nearestActiveItem(std::uint32_t key) const;
    const IdxVtxAct* nearestInTail(std::uint32_t key) const;
    [[noreturn]] void reportLostTriangle(std::size_t resultIndex) const;

    void reserveItems(std::size_t n);
    void mtSort();
    void sortVector(std::vector<KeyIndex>& pairs, const std::vector<Point2>& points) const;
    void makeInactive(IdxVtxAct* pItem);
    void findDuplicatesByCoordinates();
    void redirectHandles(std::vector<Point2*>& handles) const;

    ItemList vIdxVtxAct;
    std::uint32_t maxSortedIndex = 0;
    Dt2* pDt2;
    SimplePool<IdxVtxAct> itemPool;
    std::unordered_map<Point2*, Point2*> mRedundant2UniqueVtx;  ///< loser to survivor
    std::uint32_t numRemoved = 0;                               ///< since the last sort
    std::uint32_t numActPoints = 0;                             ///< an estimate between sorts
    std::vector<std::unique_ptr<Point2>> vFakeBoxHandles;       ///< none or four
    mutable std::size_t numScanned =
        0;  ///< inactive items that searches stepped over since the directory was built
    mutable KeyDirectory directory;  ///< of the sorted part
    std::mutex mutex;                ///< guards mRedundant2UniqueVtx
};

}  // namespace KELMAR_NORVIK2D
