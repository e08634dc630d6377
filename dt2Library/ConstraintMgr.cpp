#include "ConstraintMgr.h"

#include <algorithm>
#include <array>
#include <bit>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <limits>
#include <locale>
#include <memory>
#include <new>
#include <span>

#include "Dt2.h"
#include "KelmarTest.h"
#include "diagnostics.h"
#include "fileFunctions.h"
#include "require.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

namespace {

/// The different points among many, in the order of their first appearance.
class DifferentPoints {
public:
    explicit DifferentPoints(std::size_t mostPoints) : vPlaces(std::bit_ceil(2 * mostPoints), none) {
        vPoints.reserve(mostPoints);
    }

    /// The rank of a point among the different ones.
    std::uint32_t rankOf(const Point2& point) {
        if (!vPoints.empty() && samePoint(&vPoints[lastRank], &point)) return lastRank;  // as in chains
        const std::size_t mask = vPlaces.size() - 1;
        std::size_t place = hashOf(point) & mask;
        for (; vPlaces[place] != none; place = (place + 1) & mask)
            if (samePoint(&vPoints[vPlaces[place]], &point)) return lastRank = vPlaces[place];
        vPlaces[place] = lastRank = static_cast<std::uint32_t>(vPoints.size());
        vPoints.push_back(point);
        return lastRank;
    }

    /// Asks for the memory that a later question for the point will read.
    [[gnu::always_inline]] void prefetch(const Point2& point) const noexcept {
        __builtin_prefetch(&vPlaces[hashOf(point) & (vPlaces.size() - 1)]);
    }

    const std::vector<Point2>& getPoints() const noexcept { return vPoints; }

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    static std::size_t hashOf(const Point2& point) {
        // Adding 0 makes one zero of both.
        const std::uint64_t x = std::bit_cast<std::uint64_t>(point.x() + 0.0);
        const std::uint64_t y = std::bit_cast<std::uint64_t>(point.y() + 0.0);
        const std::uint64_t product = (x ^ std::rotl(y, 32) * 31) * 0x9E3779B97F4A7C15U;
        return product ^ product >> 32;
    }

    std::vector<Point2> vPoints;
    std::vector<std::uint32_t> vPlaces;
    std::uint32_t lastRank = 0;
};

/// Whether a segment begins where the one before it ends.
bool isChained(const std::vector<Segment2>& vSegments, std::size_t i) {
    if (i == 0) return false;
    const Point2 end = vSegments[i - 1].getTrg(), begin = vSegments[i].getSrc();
    return samePoint(&end, &begin);
}

/// The triangles at the segments' sources, and what is around them, are asked for some time before they are read, step by step:
/// each step reads what the one before has asked for.
[[gnu::always_inline]] inline void prefetchAhead(const std::vector<ConstraintSegment2*>& vSegments,
                                                 std::size_t i) {
    constexpr std::size_t far = 24, near = 12, nearest = 6;
    if (i + far < vSegments.size()) __builtin_prefetch(vSegments[i + far]->getSrc());
    if (i + near < vSegments.size()) prefetchTriangle(vSegments[i + near]->getSrc()->getIncidentTriangle());
    if (i + nearest >= vSegments.size()) return;
    const Triangle2* const pT = vSegments[i + nearest]->getSrc()->getIncidentTriangle();
    if (pT == nullptr) return;
    for (int k = 0; k < 3; ++k) {
        __builtin_prefetch(corner(pT, k));
        prefetchTriangle(neighbour(pT, k));
    }
}

}  // namespace

/// Reports about a hundred times in a loop over `n` things that make up a part of an operation.
class ConstraintMgr::LoopProgress {
public:
    LoopProgress(Progress& progress_, std::size_t n)
        : progress(progress_), step(std::max<std::size_t>(n / 100, 1)) {
        progress.setStep(step);
    }
    void at(std::size_t index) {
        if (index % step == 0) progress.incProgress(step);
    }

private:
    Progress& progress;
    std::size_t step;
};

ConstraintMgr::ConstraintMgr(Dt2* pDt_) : pDt(pDt_) {
    constexpr int firstRecords = 8, mostRecords = 65536;
    segmentPool.init(firstRecords, mostRecords);
}

ConstraintMgr::~ConstraintMgr() {
    vConstraintGraphs.clear();
    segmentPool.visitStretches(
        [](std::span<ConstraintSegment2> stretch) { std::destroy(stretch.begin(), stretch.end()); });
}

// ----------------------------------------------------------------------------------------------- questions

bool ConstraintMgr::isConstraintVertex(const Point2* pVtx) const {
    for (; numWithVertices < segmentPool.numHandedOut(); ++numWithVertices) {
        const ConstraintSegment2* const pSegment = segmentPool.at(numWithVertices);
        for (const Point2* pEnd : {pSegment->getSrc(), pSegment->getTrg()})
            *sConstraintVertices.insert(pEnd).first = pEnd;
    }
    return sConstraintVertices.contains(pVtx);
}

ConstraintSegment2* ConstraintMgr::getAliveConstraintSegment(Point2* p, Point2* q) const {
    ConstraintSegment2* const pSegment = findConstraintSegment(p, q);
    return pSegment != nullptr && pSegment->isAlive() ? pSegment : nullptr;
}

ConstraintSegment2* ConstraintMgr::findConstraintSegment(Point2* p, Point2* q) const {
    ConstraintSegment2* const* const ppSegment = mConstraintSegments.find(VertexPair2(p, q));
    return ppSegment == nullptr ? nullptr : *ppSegment;
}

void ConstraintMgr::getAliveConstraintSegments(Segments& out) const {
    const auto isBefore = [](const ConstraintSegment2* pA, const ConstraintSegment2* pB) {
        return *pA < *pB;
    };
    const std::size_t numSorted = vByEnds.size();
    for (std::int64_t rank = static_cast<std::int64_t>(numSorted); rank < segmentPool.numHandedOut(); ++rank)
        vByEnds.push_back(segmentPool.at(rank));
    const auto middle = vByEnds.begin() + static_cast<std::ptrdiff_t>(numSorted);
    std::sort(middle, vByEnds.end(), isBefore);
    std::inplace_merge(vByEnds.begin(), middle, vByEnds.end(), isBefore);
    std::copy_if(vByEnds.begin(), vByEnds.end(), std::back_inserter(out),
                 [](const ConstraintSegment2* pSegment) { return pSegment->isAlive(); });
}

// ------------------------------------------------------------------------------------------------- records

/// The labels of records that are about to be made, taken at once: an atomic count waits until all that was written before has
/// arrived in the cache, and of masses of records that is their fresh memory. What isn't used goes back, unless another
/// thread has taken labels meanwhile.
class ConstraintMgr::Labels {
public:
    explicit Labels(std::size_t mostRecords)
        : next(ConstraintSegment2::runningLabel.fetch_add(static_cast<std::uint32_t>(mostRecords),
                                                          std::memory_order_relaxed)),
          behind(next + static_cast<std::uint32_t>(mostRecords)) {}
    ~Labels() {
        ConstraintSegment2::runningLabel.compare_exchange_strong(behind, next, std::memory_order_relaxed);
    }
    Labels(const Labels&) = delete;
    Labels& operator=(const Labels&) = delete;

    std::uint32_t take() noexcept { return next++; }

private:
    std::uint32_t next, behind;
};

ConstraintSegment2* ConstraintMgr::addConstraintSegment(Point2* p, Point2* q,
                                                        ConstraintInsertionStrategy cis) {
    Labels labels(1);
    return addConstraintSegment(p, q, cis, labels);
}

ConstraintSegment2* ConstraintMgr::addConstraintSegment(Point2* p, Point2* q, ConstraintInsertionStrategy cis,
                                                        Labels& labels) {
    require(p != q, "p0<p1");
    const VertexPair2 ends(p, q);
    const auto [ppSegment, bNew] = mConstraintSegments.insert(ends);
    if (!bNew) return *ppSegment;
    *ppSegment =
        ::new (segmentPool.get()) ConstraintSegment2(ends.getVtx0(), ends.getVtx1(), cis, labels.take());
    manageHash(*ppSegment);
    return *ppSegment;
}

void ConstraintMgr::updateConstraintSegment(ConstraintSegment2* pParent, ConstraintSegment2* pChild0,
                                            ConstraintSegment2* pChild1) {
    require(!pParent->isAlive(), "!pParentCSeg->isAlive()");
    require(pChild0 != pChild1, "pCSeg0!=pCSeg1");
    // Children are in the books from their making on.
    require(findConstraintSegment(pChild0->getSrc(), pChild0->getTrg()) == pChild0, "key0.first<key0.second");
    require(findConstraintSegment(pChild1->getSrc(), pChild1->getTrg()) == pChild1, "key1.first<key1.second");
}

void ConstraintMgr::manageHash(const ConstraintSegment2* pSegment) {
    constexpr std::size_t mostWithoutFilter = 9999;
    const auto markEnds = [&](const ConstraintSegment2& segment) {
        for (const Point2* pVtx : {segment.getSrc(), segment.getTrg()})
            wordOf(*pVertexFilter, pVtx) |= bitOf(pVtx);
    };
    if (pVertexFilter == nullptr) {
        if (pDt->getApproxNumPoints() <= mostWithoutFilter) return;
        pVertexFilter = std::make_unique<VertexFilter>();
        for (const std::span<ConstraintSegment2> stretch : segmentPool.stretches())
            for (const ConstraintSegment2& segment : stretch) markEnds(segment);
    }
    if (pSegment != nullptr) markEnds(*pSegment);
}

// --------------------------------------------------------------------------------------------- enforcement

void ConstraintMgr::applyOneSegment(ConstraintSegment2* pSegment) {
    if (!pDt->is2D()) return;
    if (!pSegment->isAlive()) {
        Segments vLeaves;
        pSegment->getChildrenRec(vLeaves);
        for (ConstraintSegment2* pLeaf : vLeaves) applyOneSegment(pLeaf);
        return;
    }
    switch (pSegment->getCIS()) {
        case CIS_CONFORMING_DELAUNAY:
            pDt->insertSegmentConformingDelaunay(pSegment);
            break;
        case CIS_CONSTRAINED_DELAUNAY:
            pDt->newCDT_applyOneCS(pSegment);
            break;
        default:
            error("ConstraintMgr::apply()", "Unknown CIS");
    }
}

/// To enforce one record may divide others: the records are gone through until a whole pass has divided none.
void ConstraintMgr::apply() {
    constexpr int mostPasses = 499;
    Progress& progress = pDt->getProgress();
    Segments vCurrent, vNext;
    getAliveConstraintSegments(vCurrent);
    progress.start("apply", vCurrent.size());
    for (int numPasses = 1; !vCurrent.empty(); ++numPasses) {
        if (!applyOnce(vCurrent, vNext)) break;
        vCurrent.swap(vNext);
        vNext.clear();
        if (numPasses < mostPasses) continue;
        warning("ConstraintMgr::apply()", "insufficient numeric accuracy, need to skip last insertions");
        break;
    }
    progress.finish();
}

/// One pass over the records; appends those that are alive behind it to `vNext`. Whether one of them was divided.
bool ConstraintMgr::applyOnce(const Segments& vCurrent, Segments& vNext) {
    Progress& progress = pDt->getProgress();
    bool bChanged = false;
    for (std::size_t i = 0; i < vCurrent.size(); ++i) {
        if (pDt->getCancelSwitch().shouldStop()) return false;
        ConstraintSegment2* const pSegment = vCurrent[i];
        prefetchAhead(vCurrent, i);
        progress.incProgress(1);
        const bool bWasAlive = pSegment->isAlive();
        if (bWasAlive) {
            const MuteScope muted(progress);
            applyOneSegment(pSegment);
        }
        if (pSegment->isAlive()) {
            vNext.push_back(pSegment);
            progress.addToTotal(1);
            continue;
        }
        pSegment->getChildrenRec(vNext);
        if (bWasAlive) progress.addToTotal(4);
        bChanged = true;
    }
    return bChanged;
}

// --------------------------------------------------------------------------------------------------- input

ConstraintGraph2* ConstraintMgr::keep(std::unique_ptr<ConstraintGraph2> pGraph) {
    vConstraintGraphs.push_back(std::move(pGraph));
    return vConstraintGraphs.back().get();
}

/// Room for that many new records. Very many get a block of their own: the pool's growing blocks would touch half as much memory
/// again, for the first time, which costs more than what is done with it.
void ConstraintMgr::reserve(std::size_t numRecords) {
    constexpr std::size_t veryMany = 32768;  // two megabytes
    const bool bHasRoom = numRecords <= static_cast<std::size_t>(segmentPool.numLeftInBlock());
    if (!bHasRoom && numRecords >= veryMany && numRecords <= std::size_t{std::numeric_limits<int>::max()})
        segmentPool.alloc(static_cast<int>(numRecords));
    mConstraintSegments.reserve(mConstraintSegments.size() + numRecords);
}

/// The records of the pairs, made or existing; a pair of one vertex has none.
ConstraintMgr::Segments ConstraintMgr::makeRecords(const std::vector<PointPair>& vPairs,
                                                   ConstraintInsertionStrategy cis,
                                                   LoopProgress& loopProgress) {
    reserve(vPairs.size());
    Labels labels(vPairs.size());
    Segments vSegments;
    vSegments.reserve(vPairs.size());
    for (std::size_t i = 0; i < vPairs.size(); ++i) {
        constexpr std::size_t ahead = 8;
        loopProgress.at(i);
        const auto [p, q] = vPairs[i];
        if (i + ahead < vPairs.size())
            mConstraintSegments.prefetch(VertexPair2(vPairs[i + ahead].first, vPairs[i + ahead].second));
        if (p != q) {
            vSegments.push_back(addConstraintSegment(p, q, cis, labels));
            continue;
        }
        warning("ConstraingMgr::createConstraint",
                "(0) Identical source and endpoint, a constraint segment has been skipped.");
        print(compose(*p, " <-> ", *q, "\n"));
    }
    return vSegments;
}

ConstraintGraph2* ConstraintMgr::createConstraint(const std::vector<PointPair>& vPairs,
                                                  ConstraintInsertionStrategy cis, bool bApply) {
    Progress& progress = pDt->getProgress();
    // Making, and enforcing, which counts twice.
    progress.start("establish constraints", 3 * vPairs.size());
    LoopProgress loopProgress(progress, vPairs.size());
    Segments vSegments = makeRecords(vPairs, cis, loopProgress);
    // Before anything is enforced: what is divided needs an owner.
    ConstraintGraph2* const pGraph = keep(std::make_unique<ConstraintGraph2>(pDt, vSegments, cis));
    for (std::size_t i = 0; bApply && i < vSegments.size(); ++i) {
        loopProgress.at(i);
        prefetchAhead(vSegments, i);
        const MuteScope muted(progress);
        applyOneSegment(vSegments[i]);
    }
    progress.finish();
    return pGraph;
}

ConstraintGraph2* ConstraintMgr::createConstraint(const std::vector<Edge2*>& vEdges,
                                                  ConstraintInsertionStrategy cis, bool bApply) {
    if (vEdges.empty()) return nullptr;
    std::vector<PointPair> vPairs(vEdges.size());
    for (std::size_t i = 0; i < vEdges.size(); ++i) vEdges[i]->getPoints(vPairs[i].first, vPairs[i].second);
    return createConstraint(vPairs, cis, bApply);
}

ConstraintGraph2* ConstraintMgr::createConstraint(const std::vector<Segment2>& vSegments,
                                                  ConstraintInsertionStrategy cis) {
    if (vSegments.empty()) return nullptr;
    std::vector<PointPair> vPairs = findVertices(vSegments);
    insertMissing(vSegments, vPairs);
    return createConstraint(vPairs, cis, true);
}

/// The vertices of the segments' ends. Null where there is none, or it isn't found quickly.
std::vector<ConstraintMgr::PointPair> ConstraintMgr::findVertices(
    const std::vector<Segment2>& vSegments) const {
    std::vector<PointPair> vPairs(vSegments.size());
    const VertexVault& vault = pDt->getVertexVault();
    if (vault.empty()) return vPairs;
    constexpr std::size_t segmentsAtOnce = 16;
    std::vector<Point2> vEnds;
    std::array<Point2*, 2 * segmentsAtOnce> vertices;
    for (std::size_t first = 0; first < vSegments.size(); first += segmentsAtOnce) {
        const std::size_t behind = std::min(first + segmentsAtOnce, vSegments.size());
        vEnds.clear();
        for (std::size_t i = first; i < behind; ++i) {
            if (!isChained(vSegments, i)) vEnds.push_back(vSegments[i].getSrc());
            vEnds.push_back(vSegments[i].getTrg());
        }
        vault.getSortedVertexPointers(vEnds, vertices);
        auto nextVertex = vertices.begin();
        for (std::size_t i = first; i < behind; ++i) {
            vPairs[i].first = isChained(vSegments, i) ? vPairs[i - 1].second : *nextVertex++;
            vPairs[i].second = *nextVertex++;
        }
    }
    return vPairs;
}

/// Gives vertices to the ends that have none: all in one bulk insertion, each once.
void ConstraintMgr::insertMissing(const std::vector<Segment2>& vSegments, std::vector<PointPair>& vPairs) {
    std::size_t numMissing = 0;
    for (std::size_t i = 0; i < vSegments.size(); ++i) {
        numMissing += vPairs[i].first == nullptr && !isChained(vSegments, i);
        numMissing += vPairs[i].second == nullptr;
    }
    if (numMissing == 0) return;

    const MuteScope muted(pDt->getProgress());
    DifferentPoints newPoints(numMissing);
    std::vector<std::uint32_t> vRanks;
    vRanks.reserve(2 * numMissing);
    for (std::size_t i = 0; i < vSegments.size(); ++i) {
        constexpr std::size_t ahead = 8;
        if (i + ahead < vSegments.size()) {
            newPoints.prefetch(vSegments[i + ahead].getSrc());
            newPoints.prefetch(vSegments[i + ahead].getTrg());
        }
        if (vPairs[i].first == nullptr) vRanks.push_back(newPoints.rankOf(vSegments[i].getSrc()));
        if (vPairs[i].second == nullptr) vRanks.push_back(newPoints.rankOf(vSegments[i].getTrg()));
    }
    std::vector<Point2*> vHandles;
    pDt->insertVector(newPoints.getPoints(), &vHandles);
    auto nextRank = vRanks.begin();
    for (auto& [pSrc, pTrg] : vPairs) {
        if (pSrc == nullptr) pSrc = vHandles[*nextRank++];
        if (pTrg == nullptr) pTrg = vHandles[*nextRank++];
    }
}

ConstraintGraph2* ConstraintMgr::createConstraint_oriented(const std::vector<Segment2>& vSegments,
                                                           ConstraintInsertionStrategy cis) {
    std::vector<PointPair> vPairs;
    vPairs.reserve(vSegments.size());
    for (const Segment2& segment : vSegments) {
        Point2* const pSrc = pDt->insert(segment.getSrc());
        vPairs.emplace_back(pSrc, pDt->insert(segment.getTrg()));
    }
    return createDirected(vPairs, cis);
}

ConstraintGraph2* ConstraintMgr::createConstraint_oriented(const std::vector<Edge2>& vEdges,
                                                           ConstraintInsertionStrategy cis) {
    std::vector<PointPair> vPairs(vEdges.size());
    for (std::size_t i = 0; i < vEdges.size(); ++i) vEdges[i].getPoints(vPairs[i].first, vPairs[i].second);
    return createDirected(vPairs, cis);
}

/// Of a pair that comes repeatedly the first direction stands.
ConstraintGraph2* ConstraintMgr::createDirected(const std::vector<PointPair>& vPairs,
                                                ConstraintInsertionStrategy cis) {
    if (vPairs.empty()) return nullptr;
    ConstraintGraph2::PairReverse mPPReverse;
    Segments vSegments;
    for (const auto& [pSrc, pTrg] : vPairs) {
        if (pSrc == pTrg) continue;
        vSegments.push_back(addConstraintSegment(pSrc, pTrg, cis));
        mPPReverse.emplace(PointPair(vSegments.back()->getSrc(), vSegments.back()->getTrg()),
                           vSegments.back()->getSrc() != pSrc);
    }
    ConstraintGraph2* const pGraph =
        keep(std::make_unique<ConstraintGraph2>(pDt, vSegments, mPPReverse, cis));
    for (ConstraintSegment2* pSegment : vSegments) applyOneSegment(pSegment);
    return pGraph;
}

// --------------------------------------------------------------------------------------------- diagnostics

namespace {

/// The alive pieces of the segments that a graph was made of.
std::vector<ConstraintSegment2*> alivePiecesOf(const ConstraintGraph2& graph) {
    std::vector<ConstraintSegment2*> vSegments, vPieces;
    graph.getOriginalConstraintSegments(vSegments);
    for (ConstraintSegment2* pSegment : vSegments) pSegment->getAlivePieces(vPieces);
    return vPieces;
}

void announceFile(const char* source, std::size_t numPieces, const std::string& fileName) {
    info(source, compose("writes ", numPieces, " child segments to ", fileName));
}

}  // namespace

void ConstraintMgr::writeConstraints(const std::string& name) const {
    constexpr int digits = 70;  // all that a double may have, in practice
    for (std::size_t i = 0; i < vConstraintGraphs.size(); ++i) {
        const Segments vPieces = alivePiecesOf(*vConstraintGraphs[i]);
        const std::string fileName = name + "_c" + std::to_string(i) + ".con";
        announceFile("ConstraintMgr::writeConstraints()", vPieces.size(), fileName);
        std::ofstream file(fileName);
        file.imbue(std::locale::classic());
        file << std::setprecision(digits);
        for (const ConstraintSegment2* pPiece : vPieces)
            file << pPiece->getSrc()->x() << "\t" << pPiece->getSrc()->y() << "\t" << pPiece->getTrg()->x()
                 << "\t" << pPiece->getTrg()->y() << "\n";
    }
}

void ConstraintMgr::writeConstraintsBIN(const std::string& name) const {
    for (std::size_t i = 0; i < vConstraintGraphs.size(); ++i) {
        const Segments vPieces = alivePiecesOf(*vConstraintGraphs[i]);
        const std::string fileName = name + "_c" + std::to_string(i) + "_con.bin";
        announceFile("ConstraintMgr::writeConstraintsBIN()", vPieces.size(), fileName);
        std::vector<Segment2> vSegments;
        for (const ConstraintSegment2* pPiece : vPieces)
            vSegments.emplace_back(*pPiece->getSrc(), *pPiece->getTrg());
        writeSegmentsBIN(fileName.c_str(), vSegments);
    }
}

}  // namespace KELMAR_NORVIK2D
