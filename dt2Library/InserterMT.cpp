#include "InserterMT.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include "Dt2.h"
#include "MTCtrl.h"
#include "require.h"

namespace KELMAR_NORVIK2D {

InserterMT::InserterMT(Dt2* pDt2_) : pDt2(pDt2_), box(pDt2_->getBox()) {}

InserterMT::~InserterMT() {
    for (Chunk* pChunk : vChunks) std::destroy_at(pChunk);
}

void InserterMT::go(ItemSpan items) {
    const auto numChunks = static_cast<unsigned long>(2.0 * std::sqrt(static_cast<double>(items.size())));
    std::vector<IdxVtxAct*> vDenseVtx;
    splitSmallBig(5 * numChunks, items, vDenseVtx, vSparseVtx);
    require(vDenseVtx.size() + vSparseVtx.size() == items.size(),
            "vDenseVtx.size()+vSparseVtx.size()==(size_t)distance(start_it,end_it)");
    require(!vSparseVtx.empty(), "!vSparseVtx.empty()");
    Triangle2* pStartT = pDt2->getVertexVault().getFakeBoxCorner(0)->getIncidentTriangle();
    require(pStartT != nullptr, "pStartT!=__null");
    pDt2->triangulateRec(vSparseVtx, 0, vSparseVtx.size(), pStartT);

    std::vector<Chunk*> vNewChunks;
    createChunks(numChunks, vDenseVtx, vNewChunks);
    startWork(pDt2->getNumCPU());
    for (Chunk* pChunk : vChunks) pChunk->finalize();
    pDt2->getProgress().incProgress(vDenseVtx.size());
}

void InserterMT::splitSmallBig(unsigned long numSparse, ItemSpan items, std::vector<IdxVtxAct*>& vDenseVtx,
                               std::vector<IdxVtxAct*>& vSparseVtx) {
    const std::size_t numTaken = std::min<std::size_t>(items.size() / 2, numSparse);
    const std::size_t step = items.size() / std::max<std::size_t>(numTaken, 1);
    vDenseVtx.reserve(vDenseVtx.size() + items.size());
    while (items.size() > step) {
        vDenseVtx.insert(vDenseVtx.end(), items.begin(), items.begin() + static_cast<std::ptrdiff_t>(step));
        vSparseVtx.push_back(items[step]);
        items = items.subspan(step + 1);
    }
    vDenseVtx.insert(vDenseVtx.end(), items.begin(), items.end());
}

void InserterMT::createChunks(unsigned long numChunks, const std::vector<IdxVtxAct*>& vDenseVtx,
                              std::vector<Chunk*>& vChunks_) {
    const std::size_t numDense = vDenseVtx.size(),
                      size = std::max<std::size_t>(numDense / std::max(numChunks, 1UL), 1);
    const std::size_t greatestRest = std::min<std::size_t>(size / 3, 999);
    for (const IdxVtxAct* pItem : vSparseVtx) pointBox.add(*pItem->pVtx);
    // One block: their addresses are in the order of the labels.
    chunkPool.alloc(static_cast<int>(numDense / size) + 1);
    const std::size_t numOld = vChunks.size();
    // What is made has a place to be destroyed from.
    vChunks.reserve(numOld + numDense / size + 1);
    for (std::size_t first = 0; first < numDense;) {
        std::size_t last = std::min(first + size, numDense);
        if (numDense - last <= greatestRest) last = numDense;
        vChunks.push_back(::new (chunkPool.get()) Chunk(pDt2, box, static_cast<int>(vChunks.size() - numOld),
                                                        vDenseVtx, first, last, sparseVtxAt(first, numDense),
                                                        pointBox.isValid() ? &pointBox : nullptr));
        first = last;
    }
    const std::span<Chunk* const> newChunks = std::span(vChunks).subspan(numOld);
    vChunks_.insert(vChunks_.end(), newChunks.begin(), newChunks.end());
    determineAreas(newChunks);
}

/// A sparse vertex in the mesh that is close to a dense one: they alternate along the curve. Null if it is a duplicate, and
/// if there are none.
const Point2* InserterMT::sparseVtxAt(std::size_t denseIndex, std::size_t numDense) const {
    if (vSparseVtx.empty()) return nullptr;
    const std::size_t denseOfOneSparse = std::max<std::size_t>(numDense / vSparseVtx.size(), 1);
    const Point2* pVtx = vSparseVtx[std::min(denseIndex / denseOfOneSparse, vSparseVtx.size() - 1)]->pVtx;
    return pVtx->getIncidentTriangle() != nullptr ? pVtx : nullptr;
}

/// In stretches of neighbours, several for each thread, as some take longer than others.
void InserterMT::determineAreas(std::span<Chunk* const> chunks) {
    constexpr std::size_t stretchesOfThread = 8;
    const auto numThreads = static_cast<std::size_t>(pDt2->getNumCPU());
    const std::size_t length = chunks.size() / (stretchesOfThread * numThreads) + 1;
    std::vector<AreaTask> vTasks;
    for (; !chunks.empty(); chunks = chunks.subspan(std::min(length, chunks.size())))
        vTasks.push_back({chunks.first(std::min(length, chunks.size()))});
    MTCtrl<AreaTask>(vTasks).run(pDt2->getNumCPU(), &AreaTask::go);
}

/// The order in which chunks are taken: as many stretches of the curve as there are threads, the first chunk of each, then
/// the second ones. So threads are seldom in each other's way, and each finds in its own cache what it worked on last.
/// Chunks that run alone aren't among them.
void InserterMT::fillPending(std::size_t numThreads) {
    const std::size_t stretch = vChunks.size() / numThreads + 1;
    for (std::size_t i = 0; i < stretch; ++i)
        for (std::size_t k = i; k < vChunks.size(); k += stretch)
            if (!vChunks[k]->runsAlone()) vPending.push_back({vChunks[k]->getExtBox(), vChunks[k]});
    std::reverse(vPending.begin(), vPending.end());
}

/// Chunks that run alone come last, on the calling thread.
void InserterMT::startWork(int numThreads) {
    require(sStartedChunks.empty(), "sStartedChunks.empty()");
    fillPending(static_cast<std::size_t>(std::max(numThreads, 1)));
    std::vector<std::thread> vWorkers;
    try {
        vWorkers.reserve(static_cast<std::size_t>(std::max(numThreads, 1)));
        for (int i = 0; i < numThreads; ++i) vWorkers.emplace_back(startCPU, this);
    } catch (...) {
        // Where the system refuses to start a thread the job goes on with those that run and this one.
        startCPU(this);
    }
    for (std::thread& worker : vWorkers) worker.join();
    if (pFailure != nullptr) std::rethrow_exception(pFailure);
    for (Chunk* pChunk : vChunks)
        if (pChunk->runsAlone()) pChunk->insert();
}

Chunk* InserterMT::getWork() {
    const std::lock_guard lock(mutex);
    return takeFirstFree();
}

/// With no chunk started the first pending one is free: nobody waits for ever.
Chunk* InserterMT::waitForWork() {
    std::unique_lock lock(mutex);
    while (!vPending.empty()) {
        if (Chunk* pChunk = takeFirstFree()) return pChunk;
        chunkEnded.wait(lock);
    }
    return nullptr;
}

Chunk* InserterMT::takeFirstFree() {
    const auto isFree = [&](const Pending& pending) {
        return std::none_of(sStartedChunks.begin(), sStartedChunks.end(), [&](const Chunk* pStarted) {
            return pending.extBox.doIntersect(pStarted->getExtBox());
        });
    };
    const auto first = std::find_if(vPending.rbegin(), vPending.rend(), isFree);
    if (first == vPending.rend()) return nullptr;
    Chunk* const pChunk = first->pChunk;
    vPending.erase(std::next(first).base());
    sStartedChunks.push_back(pChunk);
    return pChunk;
}

void InserterMT::takeBack(Chunk* pChunk) {
    const std::lock_guard lock(mutex);
    std::erase(sStartedChunks, pChunk);
    chunkEnded.notify_all();
}

/// No chunk is begun any more, and nobody waits for one.
void InserterMT::giveUp(std::exception_ptr pReason) {
    const std::lock_guard lock(mutex);
    if (pFailure == nullptr) pFailure = std::move(pReason);
    vPending.clear();
    chunkEnded.notify_all();
}

void startCPU(void* pInserter) {
    auto* const pInserterMT = static_cast<InserterMT*>(pInserter);
    try {
        while (Chunk* pChunk = pInserterMT->waitForWork()) {
            pChunk->insert();
            pInserterMT->takeBack(pChunk);
        }
    } catch (...) {
        pInserterMT->giveUp(std::current_exception());
    }
}

void InserterMT::showActive(Visualizer2* pVisualizer) {
    const std::lock_guard lock(mutex);
    for (const Chunk* pChunk : sStartedChunks) pChunk->show(pVisualizer);
}

}  // namespace KELMAR_NORVIK2D
