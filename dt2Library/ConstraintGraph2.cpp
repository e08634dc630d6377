#include "ConstraintGraph2.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

#include "AddressSet.h"
#include "Color.h"
#include "Dt2.h"
#include "FlatTable.h"
#include "Segment2.h"
#include "Visualizer2.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

namespace {

Point2* otherEnd(const ConstraintSegment2* pSegment, const Point2* pEnd) {
    return pSegment->getSrc() == pEnd ? pSegment->getTrg() : pSegment->getSrc();
}

/// By x, then by y. The points' own comparison would enter the guard of public functions each time.
bool isBefore(const Point2* pA, const Point2* pB) {
    return pA->x() != pB->x() ? pA->x() < pB->x() : pA->y() < pB->y();
}

/// The end that comes first by x, then by y.
Point2* lowerEnd(const ConstraintSegment2* pSegment) {
    return isBefore(pSegment->getTrg(), pSegment->getSrc()) ? pSegment->getTrg() : pSegment->getSrc();
}

/// Without branches: which end of two segments is the common one can't be predicted.
bool touches(const ConstraintSegment2* pSegment, const Point2* pVtx) {
    const bool bAtSrc = pSegment->getSrc() == pVtx, bAtTrg = pSegment->getTrg() == pVtx;
    return static_cast<int>(bAtSrc) + static_cast<int>(bAtTrg) != 0;
}

constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

std::size_t sideOf(const ConstraintSegment2* pSegment, const Point2* pEnd) {
    return pSegment->getSrc() == pEnd ? 0 : 1;
}
Point2* endOf(const ConstraintSegment2* pSegment, std::size_t side) {
    return side == 0 ? pSegment->getSrc() : pSegment->getTrg();
}

/// Whether segments follow each other around a ring in their order, as they mostly do, and meet in a vertex once only. Gives the
/// rank of a segment at the vertex that comes first by x, then by y.
bool formRingInOrder(const std::vector<ConstraintSegment2*>& vSegments, std::uint32_t& lowestRank) {
    VertexSet sVertices;
    const ConstraintSegment2* pSegment = vSegments.back();
    const Point2* pLowest = nullptr;
    for (std::uint32_t i = 0; i < vSegments.size(); ++i) {
        const ConstraintSegment2* const pNext = vSegments[i];
        const Point2* const pShared =
            touches(pNext, pSegment->getSrc()) ? pSegment->getSrc() : pSegment->getTrg();
        if (!touches(pNext, pShared) || !sVertices.insert(pShared)) return false;
        if (pLowest == nullptr || isBefore(pShared, pLowest)) {
            pLowest = pShared;
            lowestRank = i;
        }
        pSegment = pNext;
    }
    return true;
}

/// The rank of a segment at the vertex that comes first.
std::uint32_t lowestRankOf(const std::vector<ConstraintSegment2*>& vSegments) {
    const auto pLowest = std::min_element(vSegments.begin(), vSegments.end(), [](auto* pA, auto* pB) {
        return isBefore(lowerEnd(pA), lowerEnd(pB));
    });
    return static_cast<std::uint32_t>(pLowest - vSegments.begin());
}

/// For each of many segments, by rank, the other one at its source and at its target; none where there isn't exactly one.
using RingLinks = std::vector<std::array<std::uint32_t, 2>>;

/// The first two segments at a vertex.
struct SegmentsAtVertex {
    const Point2* pVtx = nullptr;
    std::uint32_t first = none;
    std::uint32_t second = none;
};

struct VertexOf {
    const Point2* operator()(const SegmentsAtVertex& segments) const { return segments.pVtx; }
};

RingLinks linksOf(const std::vector<ConstraintSegment2*>& vSegments) {
    RingLinks vLinks(vSegments.size(), {none, none});
    FlatTable<SegmentsAtVertex, AddressHash, VertexOf> mVtx2Segments;
    mVtx2Segments.reserve(vSegments.size());
    for (std::uint32_t i = 0; i < vSegments.size(); ++i)
        for (const Point2* pEnd : {vSegments[i]->getSrc(), vSegments[i]->getTrg()}) {
            const auto [pAtEnd, bNew] = mVtx2Segments.insert(pEnd);
            if (bNew) {
                *pAtEnd = {pEnd, i, none};
                continue;
            }
            const bool bIsSecond = pAtEnd->second == none;
            if (bIsSecond) pAtEnd->second = i;
            const std::uint32_t first = pAtEnd->first, second = pAtEnd->second;
            vLinks[first][sideOf(vSegments[first], pEnd)] = bIsSecond ? second : none;
            vLinks[second][sideOf(vSegments[second], pEnd)] = bIsSecond ? first : none;
        }
    return vLinks;
}

/// Tells which segments are neighbours, and where to begin, at least three segments given.
class RingNeighbours {
public:
    explicit RingNeighbours(const std::vector<ConstraintSegment2*>& vSegments_) : vSegments(vSegments_) {
        if (formRingInOrder(vSegments, lowestRank)) return;
        vLinks = linksOf(vSegments);
        lowestRank = lowestRankOf(vSegments);
    }

    /// The rank of a segment at the vertex that comes first by x, then by y.
    std::uint32_t getLowestRank() const noexcept { return lowestRank; }

    /// The rank of the other segment at one end of a segment; none if there isn't exactly one.
    std::uint32_t at(std::uint32_t rank, std::size_t side) const {
        if (!vLinks.empty()) return vLinks[rank][side];
        const auto last = static_cast<std::uint32_t>(vSegments.size() - 1);
        const std::uint32_t next = rank == last ? 0 : rank + 1;
        if (touches(vSegments[next], endOf(vSegments[rank], side))) return next;
        return rank == 0 ? last : rank - 1;
    }

private:
    const std::vector<ConstraintSegment2*>& vSegments;
    RingLinks vLinks;  ///< empty if the segments follow each other in their order
    std::uint32_t lowestRank = 0;
};

}  // namespace

ConstraintGraph2::ConstraintGraph2(Dt2* pDt_, Segments& parents, ConstraintInsertionStrategy cis_)
    : pDt(pDt_), cis(cis_) {
    RoundToNearest nearest;
    init(parents);
    bIsOriented = bIsPolygon;
    if (!bIsPolygon) takeUndirected(parents);
}

ConstraintGraph2::ConstraintGraph2(Dt2* pDt_, Segments& parents, const PairReverse& mPPReverse,
                                   ConstraintInsertionStrategy cis_)
    : pDt(pDt_), cis(cis_), bIsOriented(true) {
    RoundToNearest nearest;
    init(parents);
    takeDirected(parents, mPPReverse);
}

void ConstraintGraph2::init(Segments& parents) {
    bool bAllAlive = true;
    std::erase_if(parents, [&](ConstraintSegment2* pParent) {
        pParent->addOwnerRecursive(this);
        bAllAlive = bAllAlive && pParent->isAlive();
        const bool bDegenerate = pParent->getSrc() == pParent->getTrg();
        if (bDegenerate)
            warning("ConstraintGraph2::ConstraintGraph2()", "Ignoring a degenerate constraint segment");
        return bDegenerate;
    });
    bIsPolygon = checkAndSortPolygon(parents, bAllAlive);
    if (!bIsPolygon) vCSegParents.clear();
}

// ------------------------------------------------------------------------------------------------ the ring

bool ConstraintGraph2::checkAndSortPolygon(const Segments& parents, bool bAllAlive) {
    if (!checkAndSortPolygonSub(parents)) return false;
    if (bAllAlive) return true;
    Segments vDivided;
    std::copy_if(parents.begin(), parents.end(), std::back_inserter(vDivided),
                 [](const ConstraintSegment2* pParent) { return !pParent->isAlive(); });
    setDirectionsRecursive(std::move(vDivided));
    return true;
}

/// Follows the ring counterclockwise from its lexicographically smallest vertex, which is a convex corner of any simple ring.
/// Crossings aren't looked for.
bool ConstraintGraph2::checkAndSortPolygonSub(const Segments& parents) {
    if (parents.size() < 3) return false;
    const RingNeighbours neighbours(parents);

    const std::uint32_t start = neighbours.getLowestRank();
    const Point2* const pStart = lowerEnd(parents[start]);
    const std::uint32_t other = neighbours.at(start, sideOf(parents[start], pStart));
    if (other == none) return false;
    std::uint32_t current = start;
    switch (pDt->getPredicates()->getOrientation2(pStart, otherEnd(parents[start], pStart),
                                                  otherEnd(parents[other], pStart))) {
        case ORIENTATION2_CCW:
            break;
        case ORIENTATION2_CW:
            current = other;
            break;
        default:
            return false;
    }
    vCSegParents.reserve(parents.size());
    const Point2* pTail = pStart;
    for (;;) {
        ConstraintSegment2* const pCurrent = parents[current];
        const std::size_t headSide = 1 - sideOf(pCurrent, pTail);
        vCSegParents.push_back(pCurrent);
        setDirection(pCurrent, headSide == 0);
        pTail = endOf(pCurrent, headSide);
        if (pTail == pStart) return parents.size() == vCSegParents.size();
        current = neighbours.at(current, headSide);
        if (current == none) return false;
    }
}

// ---------------------------------------------------------------------------------------------- directions

// A record keeps its direction for each graph: reading it there costs nothing beyond what reading the record costs.
void ConstraintGraph2::setDirection(ConstraintSegment2* pSegment, bool bReverse) {
    using Role = ConstraintSegment2::Role;
    pSegment->roleOf(this).direction = bReverse ? Role::REVERSE : Role::FORWARD;
}

void ConstraintGraph2::takeUndirected(const Segments& parents) {
    require(vCSegParents.empty(), "vCSegParents.empty()");
    vCSegParents = parents;
    Segments vOpen;
    for (ConstraintSegment2* pParent : parents) {
        for (vOpen.assign(1, pParent); !vOpen.empty();) {
            ConstraintSegment2* const pSegment = vOpen.back();
            vOpen.pop_back();
            setDirection(pSegment, false);
            if (pSegment->isAlive()) continue;
            ConstraintSegment2 *pKid0, *pKid1;
            Point2* pSplit;
            pSegment->getChildrenAndSplitPoint(pKid0, pKid1, pSplit);
            require(pKid0 != nullptr && pKid1 != nullptr, "pKid0!=__null && pKid1!=__null");
            vOpen.push_back(pKid0);
            vOpen.push_back(pKid1);
        }
    }
}

/// The client's directions stand, also against the turn of the ring; a polygon keeps the order of the ring.
void ConstraintGraph2::takeDirected(const Segments& parents, const PairReverse& mPPReverse) {
    if (!bIsPolygon) vCSegParents = parents;
    for (ConstraintSegment2* pParent : parents) {
        require(ByAddress{}(pParent->getSrc(), pParent->getTrg()), "p0<p1");
        const auto entry = mPPReverse.find({pParent->getSrc(), pParent->getTrg()});
        require(entry != mPPReverse.end(), "q_it!=mPPReverse.end()");
        setDirection(pParent, entry->second);
    }
    setDirectionsRecursive(parents);
}

std::pair<Point2*, Point2*> ConstraintGraph2::directedEnds(const ConstraintSegment2* pSegment) const {
    if (isReverse(pSegment)) return {pSegment->getTrg(), pSegment->getSrc()};
    return {pSegment->getSrc(), pSegment->getTrg()};
}

void ConstraintGraph2::getDirectChildren(const ConstraintSegment2* pSegment, ConstraintSegment2*& pChild0,
                                         ConstraintSegment2*& pChild1) const {
    pChild0 = pChild1 = nullptr;
    if (pSegment->isAlive()) return;
    const auto [pSrc, pTrg] = directedEnds(pSegment);
    Point2* pSplit;
    pSegment->getChildrenAndSplitPoint(pChild0, pChild1, pSplit);
    if (pChild1 != nullptr && touches(pChild1, pSrc)) std::swap(pChild0, pChild1);
    // A suspended record has no children.
    require(pChild0 != nullptr && touches(pChild0, pSrc),
            "pChild0->getSrc()==pSrc || pChild0->getTrg()==pSrc");
    require(pChild1 != nullptr && touches(pChild1, pTrg),
            "pChild1->getSrc()==pTrg || pChild1->getTrg()==pTrg");
}

/// Hands the directions of the records down to all below them.
void ConstraintGraph2::setDirectionsRecursive(Segments vOpen) {
    while (!vOpen.empty()) {
        const ConstraintSegment2* const pParent = vOpen.back();
        vOpen.pop_back();
        if (pParent->isAlive()) continue;
        const bool bReverse = isReverse(pParent);
        ConstraintSegment2 *pChild0, *pChild1;
        getDirectChildren(pParent, pChild0, pChild1);
        for (ConstraintSegment2* pChild : {pChild0, pChild1}) {
            // An end in the same place means the same sense of addresses.
            const bool bSameSense =
                pChild->getSrc() == pParent->getSrc() || pChild->getTrg() == pParent->getTrg();
            setDirection(pChild, bReverse == bSameSense);
            vOpen.push_back(pChild);
        }
        const auto [pParentSrc, pParentTrg] = directedEnds(pParent);
        const auto [pSrc0, pTrg0] = directedEnds(pChild0);
        const auto [pSrc1, pTrg1] = directedEnds(pChild1);
        require(pSrc0 == pParentSrc || pSrc1 == pParentSrc,
                "pChild0Src==pParentSrc || pChild1Src==pParentSrc");
        require(pTrg0 == pParentTrg || pTrg1 == pParentTrg,
                "pChild0Trg==pParentTrg || pChild1Trg==pParentTrg");
        require(pTrg0 == pSrc1 || pTrg1 == pSrc0, "pChild0Trg==pChild1Src || pChild1Trg==pChild0Src");
    }
}

void ConstraintGraph2::updateSplittedConstraintSegment(ConstraintSegment2* pParent, bool bUpdateMgr) {
    require(!pParent->isAlive(), "!pParentCSeg->isAlive()");
    require(dbg_hasDirection(pParent), "q_it!=mCSegReverse.end()");
    setDirectionsRecursive({pParent});
    pAncestry.reset();
    ConstraintSegment2 *pChild0, *pChild1;
    Point2* pSplit = nullptr;
    pParent->getChildrenAndSplitPoint(pChild0, pChild1, pSplit);
    require(pSplit != nullptr, "pSplit!=__null");
    if (bUpdateMgr) pDt->getConstraintManager()->updateConstraintSegment(pParent, pChild0, pChild1);
}

// ----------------------------------------------------------------------------------------------- questions

/// A client's own record of the same ends counts as the triangulation's.
ConstraintSegment2::Role::Direction ConstraintGraph2::findDirection(
    const ConstraintSegment2* pSegment) const {
    if (pSegment == nullptr) return ConstraintSegment2::Role::UNKNOWN;
    const ConstraintSegment2::Role* pRole = pSegment->findRole(this);
    if (pRole == nullptr) {
        const ConstraintSegment2* const pOwn =
            pDt->getConstraintManager()->findConstraintSegment(pSegment->getSrc(), pSegment->getTrg());
        if (pOwn != nullptr) pRole = pOwn->findRole(this);
    }
    return pRole == nullptr ? ConstraintSegment2::Role::UNKNOWN : pRole->direction;
}

bool ConstraintGraph2::dbg_hasDirection(const ConstraintSegment2* pSegment) const {
    return findDirection(pSegment) != ConstraintSegment2::Role::UNKNOWN;
}

bool ConstraintGraph2::isConstraint(const ConstraintSegment2* pSegment) const {
    return dbg_hasDirection(pSegment) && pSegment->isAlive();
}

bool ConstraintGraph2::isConstraint(Point2* p, Point2* q) const {
    return isConstraint(pDt->getConstraintManager()->getAliveConstraintSegment(p, q));
}

bool ConstraintGraph2::isReverse(const ConstraintSegment2* pSegment) const {
    const auto direction = findDirection(pSegment);
    require(direction != ConstraintSegment2::Role::UNKNOWN, "q_it!=mCSegReverse.end()");
    return direction == ConstraintSegment2::Role::REVERSE;
}

void ConstraintGraph2::getAliveConstraintChain(Segments& out) const {
    out.clear();
    Segments vOpen;
    for (ConstraintSegment2* pParent : vCSegParents) {
        for (vOpen.assign(1, pParent); !vOpen.empty();) {
            ConstraintSegment2* const pSegment = vOpen.back();
            vOpen.pop_back();
            if (pSegment->isAlive()) {
                out.push_back(pSegment);
                continue;
            }
            ConstraintSegment2 *pKid0, *pKid1;
            getDirectChildren(pSegment, pKid0, pKid1);
            require(pKid0 != nullptr && pKid1 != nullptr, "pKid0!=__null && pKid1!=__null");
            vOpen.push_back(pKid1);
            vOpen.push_back(pKid0);
        }
    }
}

void ConstraintGraph2::getPolygonVertices(std::vector<Point2*>& out) const {
    Segments vChain;
    getAliveConstraintChain(vChain);
    for (const ConstraintSegment2* pPiece : vChain) {
        require(pPiece->isAlive(), "pCSeg->isAlive()");
        if (!dbg_hasDirection(pPiece)) {
            print(compose(
                "BUG in ConstraintGraph2::getPolygonVertices\nownerCG=", static_cast<const void*>(this),
                "\nFor constraint segment pCSeg: ", static_cast<const void*>(pPiece), "\n"));
            require(false, "q_it!=mCSegReverse.end()");
        }
        const auto [pSrc, pTrg] = directedEnds(pPiece);
        out.push_back(pSrc);
        out.push_back(pTrg);
    }
}

void ConstraintGraph2::getOriginalConstraintSegments(Segments& out) const {
    out = vCSegParents;
    std::sort(out.begin(), out.end(), ByAddress{});
    out.erase(std::unique(out.begin(), out.end()), out.end());
    if (out.size() == vCSegParents.size()) out = vCSegParents;
}

/// The records of a graph by their children.
struct ConstraintGraph2::Ancestry {
    explicit Ancestry(const Segments& vOriginals_) : vOriginals(vOriginals_) {
        oneInstance(vOriginals);
        Segments vOpen = vOriginals;
        AddressSet<ConstraintSegment2> sSeen(vOpen);
        while (!vOpen.empty()) {
            ConstraintSegment2* const pParent = vOpen.back();
            vOpen.pop_back();
            if (!pParent->isSplit()) continue;
            for (ConstraintSegment2* pChild : pParent->vChildren) {
                vChildAndParent.emplace_back(pChild, pParent);
                if (sSeen.insert(pChild)) vOpen.push_back(pChild);
            }
        }
        std::sort(vChildAndParent.begin(), vChildAndParent.end());
    }

    bool isOriginal(ConstraintSegment2* pSegment) const {
        return std::binary_search(vOriginals.begin(), vOriginals.end(), pSegment, ByAddress{});
    }
    template <class Visit>
    void visitParents(ConstraintSegment2* pChild, Visit visit) const {
        const auto isBelow = [](const auto& pair, const ConstraintSegment2* p) {
            return ByAddress{}(pair.first, p);
        };
        auto it = std::lower_bound(vChildAndParent.begin(), vChildAndParent.end(), pChild, isBelow);
        for (; it != vChildAndParent.end() && it->first == pChild; ++it) visit(it->second);
    }

    Segments vOriginals;
    std::vector<std::pair<ConstraintSegment2*, ConstraintSegment2*>> vChildAndParent;
};

ConstraintGraph2::~ConstraintGraph2() = default;

void ConstraintGraph2::getOriginalSegments(ConstraintSegment2* pPiece, Segments& out) const {
    if (pPiece == nullptr) {
        warning("ConstraintGraph2::getOriginalSegments()", "null pointer given, nothing done");
        return;
    }
    if (pAncestry == nullptr) pAncestry = std::make_unique<Ancestry>(vCSegParents);
    Segments vFound, vOpen = {pPiece};
    AddressSet<ConstraintSegment2> sSeen(vOpen);
    while (!vOpen.empty()) {
        ConstraintSegment2* const pSegment = vOpen.back();
        vOpen.pop_back();
        if (pAncestry->isOriginal(pSegment)) vFound.push_back(pSegment);
        pAncestry->visitParents(pSegment, [&](ConstraintSegment2* pParent) {
            if (sSeen.insert(pParent)) vOpen.push_back(pParent);
        });
    }
    std::sort(vFound.begin(), vFound.end(), ByAddress{});
    out.insert(out.end(), vFound.begin(), vFound.end());
}

void ConstraintGraph2::getChildConstraintSegments(Segments& out) const {
    for (ConstraintSegment2* pParent : vCSegParents) pParent->getAlivePieces(out);
    std::sort(out.begin(), out.end(), ByAddress{});
    out.erase(std::unique(out.begin(), out.end()), out.end());
}

// ------------------------------------------------------------------------------------------------- pictures

void ConstraintGraph2::show(const std::string& fileName) const {
    Visualizer2 visualizer(fileName);
    show(&visualizer, Color(1.0, 0.0, 0.0, 0.5, false));
    visualizer.writeFile();
}

void ConstraintGraph2::show(Visualizer2* pVisualizer, const Color& color) const {
    RoundToNearest nearest;
    if (pVisualizer == nullptr) {
        warning("ConstraintGraph2::show()", "pVisualizer==NULL, nothing done");
        return;
    }
    std::vector<Point2*> vEnds;
    getPolygonVertices(vEnds);
    for (std::size_t i = 0; i + 1 < vEnds.size(); i += 2)
        pVisualizer->addObject(Segment2(*vEnds[i], *vEnds[i + 1]), color);
}

}  // namespace KELMAR_NORVIK2D
