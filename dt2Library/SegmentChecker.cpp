#include "SegmentChecker.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

#include "AddressSet.h"
#include "CancelSwitch.h"
#include "FlatTable.h"
#include "KelmarTest.h"
#include "Progress.h"
#include "Visualizer2.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "distance.h"
#include "geometryTools.h"
#include "kelmar_locate2/RTree.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

namespace {

using Box = KELMAR_LOCATE2::Bbox2;
using KELMAR_LOCATE2::Item;

DoublePair pairOf(const Point2& point) { return DoublePair{point.x(), point.y()}; }

/// A segment in the tree. It is a diagonal of its box: a bit that tells which one spares most questions the way to the segment
/// itself, which lies anywhere in memory.
class TreeObject {
public:
    explicit TreeObject(Segment2* pSegment) noexcept {
        const DoublePair src = pairOf(pSegment->getSrc()), trg = pairOf(pSegment->getTrg());
        const bool bFalling = (src[0] < trg[0]) != (src[1] < trg[1]);
        bits = reinterpret_cast<std::uintptr_t>(pSegment) | (bFalling ? fallingBit : 0);
    }
    explicit TreeObject(const Item& item) noexcept : bits(reinterpret_cast<std::uintptr_t>(item.pObject)) {}

    void* get() const noexcept { return reinterpret_cast<void*>(bits); }
    Segment2* getSegment() const noexcept { return reinterpret_cast<Segment2*>(bits & ~fallingBit); }
    bool isFalling() const noexcept { return (bits & fallingBit) != 0; }

private:
    static constexpr std::uintptr_t fallingBit = 1;
    static_assert(alignof(Segment2) > fallingBit);

    std::uintptr_t bits;
};

/// A segment as the search sees it: its ends in any order.
struct Searched {
    Segment2* pSegment;
    DoublePair end0, end1;

    explicit Searched(Segment2* pSegment_) noexcept
        : pSegment(pSegment_), end0(pairOf(pSegment_->getSrc())), end1(pairOf(pSegment_->getTrg())) {}
    /// Without a branch: which diagonal it is nobody can predict.
    explicit Searched(const Item& item) noexcept : pSegment(TreeObject(item).getSegment()) {
        const auto least = reinterpret_cast<BitPair>(DoublePair{item.minX, item.minY});
        const auto greatest = reinterpret_cast<BitPair>(DoublePair{item.maxX, item.maxY});
        const BitPair exchange = (least ^ greatest) & BitPair{0, TreeObject(item).isFalling() ? -1 : 0};
        end0 = reinterpret_cast<DoublePair>(least ^ exchange);
        end1 = reinterpret_cast<DoublePair>(greatest ^ exchange);
    }

    Box getBox() const noexcept {
        return {std::min(end0[0], end1[0]), std::min(end0[1], end1[1]), std::max(end0[0], end1[0]),
                std::max(end0[1], end1[1])};
    }
};

/// The side of c, 1 to the left and -1 to the right of ab, where the filter with this bound can tell, otherwise 0.
int sideByFilter(DoublePair a, DoublePair b, DoublePair c, double bound) {
    const double det = crossProduct(a - c, b - c);
    return static_cast<int>(det > bound) - static_cast<int>(-bound > det);
}

/// The type of a pair that the filter can decide, as it can most; SIT_UNINITIALIZED otherwise. All four sides are computed: half
/// of the pairs are apart by the first two, which no processor can predict.
SegmentIntersectionType typeByFilter(const Searched& s1, const Searched& s2, double bound) {
    const int ends2 =
        sideByFilter(s1.end0, s1.end1, s2.end0, bound) * sideByFilter(s1.end0, s1.end1, s2.end1, bound);
    const int ends1 =
        sideByFilter(s2.end0, s2.end1, s1.end0, bound) * sideByFilter(s2.end0, s2.end1, s1.end1, bound);
    if (std::max(ends1, ends2) > 0) return SIT_NONE;
    return std::max(ends1, ends2) < 0 ? SIT_POINT : SIT_UNINITIALIZED;
}

/// Whether a partner of this type makes a segment illegal.
bool isIllegal(SegmentIntersectionType type, bool bAlsoEndPointIntersections) {
    switch (type) {
        case SIT_SEGMENT:
        case SIT_POINT:
            return true;
        case SIT_ENDPOINT:
            return bAlsoEndPointIntersections;
        case SIT_NONE:
            return false;
        default:
            error("getIntersectors()", "impossible case");
            require(false, "false");
            return false;
    }
}

/// What two ranges have in common, each of two numbers in any order. If that is nothing: false, a warning, and the range is the
/// wrong way round.
bool commonRange(double a, double b, double c, double d, double& lo, double& hi) {
    lo = std::max(std::min(a, b), std::min(c, d));
    hi = std::min(std::max(a, b), std::max(c, d));
    if (lo <= hi) return true;
    warning("commonRange()", "empty range, unexpected, returning +DBL_MAX,-DBL_MAX");
    lo = std::numeric_limits<double>::max();
    hi = -lo;
    return false;
}

/// A point mark without a text.
Label markAt(const Point2& point) { return {point, "", true, 8}; }

/// Draws what each two of these segments and their partners have in common, but for ends, once.
void drawIntersections(const SegmentChecker& checker, const std::vector<Segment2*>& vSegments,
                       Visualizer2& visualizer) {
    const Color color(COLORNAME_BLUE, 0.001F, false);
    std::vector<std::pair<Segment2*, SegmentIntersectionType>> vPartners;
    for (Segment2* pSegment : vSegments) {
        vPartners.clear();
        checker.getIntersectors(pSegment, false, vPartners);
        for (const auto& [pPartner, type] : vPartners) {
            if (ByAddress()(pPartner, pSegment)) continue;
            if (type == SIT_SEGMENT) {
                Segment2 common;
                checker.getIntersectionSegment(*pSegment, *pPartner, common);
                visualizer.addObject(common, color);
                visualizer.addObject(markAt(common.getSrc()), color);
                visualizer.addObject(markAt(common.getTrg()), color);
            } else {
                Point2 common;
                checker.getIntersectionPoint(type, *pSegment, *pPartner, common);
                visualizer.addObject(markAt(common), color);
            }
        }
    }
}

struct SegmentPlace {
    const Segment2* pSegment;
    std::size_t index;
};
struct SegmentOf {
    const Segment2* operator()(const SegmentPlace& place) const noexcept { return place.pSegment; }
};

}  // namespace

struct SegmentCheckerData {
    KELMAR_LOCATE2::RTree tree;  ///< of TreeObjects
    KelmarTest predicates;
    std::vector<Segment2*> vSegments;
    FlatTable<SegmentPlace, AddressHash, SegmentOf> mIndices;
    std::size_t numIndexed = 0;  ///< the segments that mIndices knows: it is filled when somebody asks
    std::unique_ptr<Progress> pProgress;
    CancelSwitch cancelSwitch;
    std::vector<Item*> vFound;  ///< by the last search

    SegmentCheckerData() { vFound.reserve(1000); }

    void add(const std::vector<Segment2*>& vNew);
    void fillIndices();

    Orientation2 getOrientation(const Point2& a, const Point2& b, const Point2& c) {
        return predicates.getOrientation2(&a, &b, &c);
    }
    /// Law 1 of the predicates.
    void cover(double magnitude) {
        if (magnitude > predicates.getBoundMagnitude()) predicates.setStaticBound(magnitude);
    }
    void cover(const Box& box) {
        cover(std::max(std::max(std::fabs(box.minX), std::fabs(box.maxX)),
                       std::max(std::fabs(box.minY), std::fabs(box.maxY))));
    }
    void cover(const Point2& point) { cover(std::max(std::fabs(point.x()), std::fabs(point.y()))); }

    SegmentIntersectionType typeOf(Segment2* pS1, Segment2* pS2);
    SegmentIntersectionType typeOfDegenerate(Segment2*& pS1, Segment2*& pS2, Point2& p1, Point2& p2,
                                             Point2& p3, Point2& p4);
    SegmentIntersectionType typeOfPointOn(const Point2& p1, const Point2& p2, const Point2& q);
    SegmentIntersectionType typeOfCollinear(const Point2& p1, const Point2& p2, const Point2& p3,
                                            const Point2& p4);

    template <class Visit>
    void visitSegments(Visit visit);
    template <class Visit>
    void visitNeighbours(const Searched& segment, Visit visit);
};

void SegmentCheckerData::add(const std::vector<Segment2*>& vNew) {
    tree.reserve(vSegments.size() + vNew.size());
    for (Segment2* pSegment : vNew) {
        const Box box = Searched(pSegment).getBox();
        tree.addObject(TreeObject(pSegment).get(), box.minX, box.minY, box.maxX, box.maxY);
    }
    vSegments.insert(vSegments.end(), vNew.begin(), vNew.end());
    if (vSegments.empty()) return;
    Box bounds;
    tree.getBounds(bounds.minX, bounds.minY, bounds.maxX, bounds.maxY);
    cover(bounds);
}

void SegmentCheckerData::fillIndices() {
    mIndices.reserve(vSegments.size());
    for (; numIndexed < vSegments.size(); ++numIndexed) {
        const auto [pPlace, bNew] = mIndices.insert(vSegments[numIndexed]);
        if (bNew) *pPlace = {vSegments[numIndexed], numIndexed};
    }
}

/// Visits each place of the list once, in the order of the tree as far as they are in it: then one search finds in the cache
/// what the last one has read.
template <class Visit>
void SegmentCheckerData::visitSegments(Visit visit) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    std::vector<Item*> vInTree;
    tree.getBBIntersectedItems({-infinity, -infinity, infinity, infinity}, vInTree);
    for (const Item* pItem : vInTree) visit(Searched(*pItem));
    // The tree was made of the list as it was then.
    for (std::size_t i = vInTree.size(); i < vSegments.size(); ++i) visit(Searched(vSegments[i]));
}

/// Visits the other segments of the tree whose boxes meet this one's, as pointer and type, in the order of the tree.
template <class Visit>
void SegmentCheckerData::visitNeighbours(const Searched& segment, Visit visit) {
    const Box box = segment.getBox();
    cover(box);
    vFound.clear();
    tree.getBBIntersectedItems(box, vFound);
    for (const Item* pItem : vFound) {
        const Searched other(*pItem);
        if (other.pSegment == segment.pSegment) continue;
        SegmentIntersectionType type = typeByFilter(segment, other, predicates.getStaticBound());
        if (type == SIT_UNINITIALIZED) type = typeOf(segment.pSegment, other.pSegment);
        visit(other.pSegment, type);
    }
}

SegmentIntersectionType SegmentCheckerData::typeOf(Segment2* pS1, Segment2* pS2) {
    Point2 p1 = pS1->getSrc(), p2 = pS1->getTrg(), p3 = pS2->getSrc(), p4 = pS2->getTrg();
    const SegmentIntersectionType type = typeOfDegenerate(pS1, pS2, p1, p2, p3, p4);
    if (type != SIT_UNINITIALIZED) return type;
    if (p1 == p3) {
        if (getOrientation(p1, p2, p4) != ORIENTATION2_COLLINEAR) return SIT_ENDPOINT;
        return isBetween(p1, p2, p4) || isBetween(p3, p4, p2) ? SIT_SEGMENT : SIT_ENDPOINT;
    }
    require(p1 != p3 && p1 != p4 && p2 != p3 && p2 != p4, "p1!=p3 && p1!=p4 && p2!=p3 && p2!=p4");

    const Orientation2 ori123 = getOrientation(p1, p2, p3), ori124 = getOrientation(p1, p2, p4);
    if (ori123 == ORIENTATION2_COLLINEAR && ori124 == ORIENTATION2_COLLINEAR)
        return typeOfCollinear(p1, p2, p3, p4);
    if (ori123 == ORIENTATION2_COLLINEAR) return isBetween(p1, p2, p3) ? SIT_POINT : SIT_NONE;
    if (ori124 == ORIENTATION2_COLLINEAR) return isBetween(p1, p2, p4) ? SIT_POINT : SIT_NONE;
    if (ori123 == ori124) return SIT_NONE;

    const Orientation2 ori341 = getOrientation(p3, p4, p1), ori342 = getOrientation(p3, p4, p2);
    if (ori341 != ori342) return SIT_POINT;
    require(ori341 != ORIENTATION2_COLLINEAR, "ori341!=ORIENTATION2_COLLINEAR");
    return SIT_NONE;
}

SegmentIntersectionType SegmentCheckerData::typeOfDegenerate(Segment2*& pS1, Segment2*& pS2, Point2& p1,
                                                             Point2& p2, Point2& p3, Point2& p4) {
    if (pS1 == pS2) return SIT_SEGMENT;
    for (const Point2* pEnd : {&p1, &p2, &p3, &p4}) cover(*pEnd);
    if (p1 == p2) {
        std::swap(p1, p3);
        std::swap(p2, p4);
        std::swap(pS1, pS2);
        if (p1 == p2) return p1 == p3 ? SIT_ENDPOINT : SIT_NONE;
    }
    if (p3 == p4) return typeOfPointOn(p1, p2, p3);

    // A common end comes to the front of both.
    if (p1 != p4 && (p2 == p3 || p2 == p4)) std::swap(p1, p2);
    if (p1 == p4) std::swap(p3, p4);
    return p1 == p3 && p2 == p4 ? SIT_SEGMENT : SIT_UNINITIALIZED;
}

SegmentIntersectionType SegmentCheckerData::typeOfPointOn(const Point2& p1, const Point2& p2,
                                                          const Point2& q) {
    if (q == p1 || q == p2) return SIT_ENDPOINT;
    if (getOrientation(p1, p2, q) != ORIENTATION2_COLLINEAR) return SIT_NONE;
    return isBetween(p1, p2, q) ? SIT_POINT : SIT_NONE;
}

/// Of segments on one line without a common end.
SegmentIntersectionType SegmentCheckerData::typeOfCollinear(const Point2& p1, const Point2& p2,
                                                            const Point2& p3, const Point2& p4) {
    const bool bOverlap =
        isBetween(p1, p2, p3) || isBetween(p1, p2, p4) || isBetween(p3, p4, p1) || isBetween(p3, p4, p2);
    return bOverlap ? SIT_SEGMENT : SIT_NONE;
}

SegmentChecker::SegmentChecker() : pSCD(std::make_unique<SegmentCheckerData>()) {}
SegmentChecker::SegmentChecker(const std::vector<Segment2*>& vSegments) : SegmentChecker() {
    addSegments(vSegments);
}
SegmentChecker::~SegmentChecker() = default;

void SegmentChecker::addSegments(const std::vector<Segment2*>& vSegments) {
    RoundToNearest nearest;
    pSCD->add(vSegments);
}

std::size_t SegmentChecker::getNumberOfSegments() const { return pSCD->vSegments.size(); }

Segment2* SegmentChecker::getSegment(std::size_t i) const {
    require(i < pSCD->vSegments.size(), "i<pSCD->vSegments.size()");
    return pSCD->vSegments[i];
}

std::size_t SegmentChecker::getIndex(Segment2* pSegment) const {
    pSCD->fillIndices();
    if (const SegmentPlace* pPlace = pSCD->mIndices.find(pSegment)) return pPlace->index;
    warning("SegmentChecker::getIndex", "No such segment");
    return noIndex;
}

void SegmentChecker::getIllegalSegments(bool bAlsoEndPointIntersections, std::vector<Segment2*>& out) const {
    RoundToNearest nearest;
    Progress* const pProgress = pSCD->pProgress.get();
    if (pProgress != nullptr) pProgress->start("getIllegalSegments", pSCD->vSegments.size());
    AddressSet<Segment2> sIllegal;
    std::vector<Segment2*> vIllegal;
    const auto insert = [&](Segment2* pSegment) {
        if (sIllegal.insert(pSegment)) vIllegal.push_back(pSegment);
    };
    const CancelSwitch::Scope cancellable(pSCD->cancelSwitch);
    pSCD->visitSegments([&](const Searched& segment) {
        if (pSCD->cancelSwitch.shouldStop()) return;
        if (pProgress != nullptr) pProgress->incProgress(1);
        // The partners of a segment that is known to be illegal see it when it is their turn.
        if (sIllegal.contains(segment.pSegment)) return;
        bool bIllegal = false;
        pSCD->visitNeighbours(segment, [&](Segment2* pOther, SegmentIntersectionType type) {
            if (!isIllegal(type, bAlsoEndPointIntersections)) return;
            insert(pOther);
            bIllegal = true;
        });
        if (bIllegal) insert(segment.pSegment);
    });
    std::sort(vIllegal.begin(), vIllegal.end(), ByAddress());
    out = std::move(vIllegal);
    if (pProgress != nullptr) pProgress->finish();
}

void SegmentChecker::getIntersectors(Segment2* pSegment, bool bAlsoEndPointIntersections,
                                     std::vector<std::pair<Segment2*, SegmentIntersectionType>>& out) const {
    RoundToNearest nearest;
    pSCD->visitNeighbours(Searched(pSegment), [&](Segment2* pOther, SegmentIntersectionType type) {
        if (isIllegal(type, bAlsoEndPointIntersections)) out.emplace_back(pOther, type);
    });
}

SegmentIntersectionType SegmentChecker::getIntersectionType(Segment2* pS1, Segment2* pS2) const {
    RoundToNearest nearest;
    return pSCD->typeOf(pS1, pS2);
}

SegmentIntersectionType SegmentChecker::getIntersectionType_degeneratePart(Segment2*& pS1, Segment2*& pS2,
                                                                           Point2& p1, Point2& p2, Point2& p3,
                                                                           Point2& p4) const {
    RoundToNearest nearest;
    return pSCD->typeOfDegenerate(pS1, pS2, p1, p2, p3, p4);
}

std::string SegmentChecker::getIntersectionTypeString(SegmentIntersectionType type) const {
    static constexpr const char* names[] = {"SIT_UNINITIALIZED", "SIT_NONE", "SIT_SEGMENT", "SIT_POINT",
                                            "SIT_ENDPOINT"};
    const auto index = static_cast<std::size_t>(type);
    return index < std::size(names) ? names[index] : "UNKNOWN SIT";
}

void SegmentChecker::getIntersectionPoint(SegmentIntersectionType type, const Segment2& s1,
                                          const Segment2& s2, Point2& out) const {
    RoundToNearest nearest;
    constexpr const char* here = "SegmentChecker::getIntersectionPoint()";
    const Point2 p1 = s1.getSrc(), p2 = s1.getTrg(), p3 = s2.getSrc(), p4 = s2.getTrg();
    switch (type) {
        case SIT_POINT:
            // A point has no direction that lines could be crossed by.
            if (p1 == p2)
                out = p1;
            else if (p3 == p4)
                out = p3;
            else
                getIntersectionPointNoRounding(p1, p2, p3, p4, out);
            return;
        case SIT_ENDPOINT:
            if (p1 == p3 || p1 == p4)
                out = p1;
            else if (p2 == p3 || p2 == p4)
                out = p2;
            else
                warning(here, "SIT_ENDPOINT is a wrong SegmentIntersectionType for the preset segments");
            return;
        default:
            warning(here, "wrong SegmentIntersectionType provided");
    }
}

void SegmentChecker::getIntersectionSegment(const Segment2& s1, const Segment2& s2, Segment2& out) const {
    RoundToNearest nearest;
    const Point2 p1 = s1.getSrc(), p2 = s1.getTrg(), p3 = s2.getSrc(), p4 = s2.getTrg();
    double beginX, endX, beginY, endY;
    if (!commonRange(p1.x(), p2.x(), p3.x(), p4.x(), beginX, endX) ||
        !commonRange(p1.y(), p2.y(), p3.y(), p4.y(), beginY, endY)) {
        warning("SegmentChecker::getIntersectionPoint()", "segments seem to be non-collinear");
        return;
    }
    if (p1.x() > p2.x()) std::swap(beginX, endX);
    if (p1.y() > p2.y()) std::swap(beginY, endY);
    out = Segment2(Point2(beginX, beginY), Point2(endX, endY));
}

void SegmentChecker::showSegments(const std::string& fileName) const {
    print(compose("SegmentChecker::showSegments(), numSegments=", getNumberOfSegments(), "\n"));
    Visualizer2 visualizer(fileName);
    for (const Segment2* pSegment : pSCD->vSegments) visualizer.addObject(*pSegment, Color());
    visualizer.writeFile();
}

void SegmentChecker::showIllegalSegments(bool bAlsoEndPointIntersections, const std::string& fileName) const {
    std::vector<Segment2*> vIllegal, vAll = pSCD->vSegments, vLegal;
    getIllegalSegments(bAlsoEndPointIntersections, vIllegal);
    std::sort(vAll.begin(), vAll.end(), ByAddress());
    std::set_difference(vAll.begin(), vAll.end(), vIllegal.begin(), vIllegal.end(),
                        std::back_inserter(vLegal), ByAddress());

    constexpr float width = 0.001F;
    const Color legalColor(COLORNAME_GRAY, width, false), illegalColor(COLORNAME_RED, width, false);
    Visualizer2 visualizer(fileName);
    visualizer.addHeaderLine("SegmentChecker::showIllegalSegments()");
    visualizer.addHeaderLine(compose("Number of segments: ", vAll.size()));
    visualizer.addHeaderLine(compose("Legal segments: ", vLegal.size()));
    visualizer.addHeaderLine(compose("Illegal segments: ", vIllegal.size()));
    for (const Segment2* pSegment : vLegal) visualizer.addObject(*pSegment, legalColor);
    for (const Segment2* pSegment : vIllegal) visualizer.addObject(*pSegment, illegalColor);
    drawIntersections(*this, vIllegal, visualizer);
    visualizer.writeFile();
}

void SegmentChecker::requestCancel() { pSCD->cancelSwitch.request(); }
bool SegmentChecker::wasCancelled() const { return pSCD->cancelSwitch.wasCancelled(); }

void SegmentChecker::subscribe(MsgType type, MsgBase* pMsg) {
    if (pSCD->pProgress == nullptr) pSCD->pProgress = std::make_unique<Progress>();
    pSCD->pProgress->subscribe(type, pMsg);
}

void SegmentChecker::unsubscribe(MsgType type, MsgBase* pMsg) {
    if (pSCD->pProgress == nullptr) {
        warning("SegmentChecker::unsubscribe()", "No publisher present");
        return;
    }
    pSCD->pProgress->unsubscribe(type, pMsg);
}

}  // namespace KELMAR_NORVIK2D
