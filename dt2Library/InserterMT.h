#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <span>
#include <vector>

#include "Bbox2.h"
#include "Chunk.h"
#include "SimplePool.h"
#include "VertexVault.h"

namespace KELMAR_NORVIK2D {

class Dt2;
class Visualizer2;

/// Inserts many vertices with several threads. A few of them, evenly spread, go in first and give a coarse triangulation; the
/// others are cut into chunks, runs of the Hilbert order, and chunks whose areas of influence are apart run at the same time.
/// The fake box stands around everything, so that no thread ever meets the convex hull.
///
/// Serves one insertion.
class InserterMT {
public:
    using ItemSpan = VertexVault::ItemSpan;

    /// With fewer items one thread is faster.
    static constexpr std::size_t leastItems = 100000;

    explicit InserterMT(Dt2* pDt2_);
    ~InserterMT();
    InserterMT(const InserterMT&) = delete;
    InserterMT& operator=(const InserterMT&) = delete;

    /// The whole job for a stretch of the vault's list.
    void go(ItemSpan items);

    /// Divides the items, and appends them: `numSparse` of them, evenly along the curve, are sparse, at most half of all.
    static void splitSmallBig(unsigned long numSparse, ItemSpan items, std::vector<IdxVtxAct*>& vDenseVtx,
                              std::vector<IdxVtxAct*>& vSparseVtx);
    /// Makes chunks of equal size, determines their areas with all threads, and appends them to `vChunks_`. This object owns
    /// them, and startWork() inserts them. There is a fake box.
    void createChunks(unsigned long numChunks, const std::vector<IdxVtxAct*>& vDenseVtx,
                      std::vector<Chunk*>& vChunks_);
    /// Inserts all chunks and returns when that is done. The first exception out of a thread is thrown on here, when all have
    /// ended.
    void startWork(int numThreads);
    /// The first pending chunk whose area meets none of those being inserted, which it joins; null if there is none now.
    /// Chunks that run alone are never pending: startWork() inserts them in the end.
    Chunk* getWork();
    /// Draws the chunks that are being inserted.
    void showActive(Visualizer2* pVisualizer);

private:
    friend void startCPU(void* pInserter);

    const Point2* sparseVtxAt(std::size_t denseIndex, std::size_t numDense) const;
    void determineAreas(std::span<Chunk* const> chunks);
    void fillPending(std::size_t numThreads);
    Chunk* takeFirstFree();
    Chunk* waitForWork();
    void takeBack(Chunk* pChunk);
    void giveUp(std::exception_ptr pReason);

    /// The area lies beside the pointer, because it is all that most pending chunks are asked for.
    struct Pending {
        Bbox2 extBox;
        Chunk* pChunk;
    };

    Dt2* pDt2;
    Bbox2 box;       ///< the triangulation's
    Bbox2 pointBox;  ///< of the sparse vertices
    std::vector<IdxVtxAct*> vSparseVtx;
    SimplePool<Chunk> chunkPool;
    std::vector<Chunk*> vChunks;  ///< all

    std::mutex mutex;  ///< guards what follows
    std::condition_variable chunkEnded;
    std::vector<Pending> vPending;       ///< the first one last
    std::vector<Chunk*> sStartedChunks;  ///< being inserted now
    std::exception_ptr pFailure;         ///< the first one
};

/// A worker: inserts chunks of the InserterMT as long as there are any.
void startCPU(void* pInserter);

}  // namespace KELMAR_NORVIK2D
