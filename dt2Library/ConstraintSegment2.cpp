#include "ConstraintSegment2.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <set>

#include "ConstraintGraph2.h"
#include "ConstraintMgr.h"
#include "Dt2.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "distance.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

std::atomic<std::uint32_t> ConstraintSegment2::runningLabel{0};

ConstraintSegment2::ConstraintSegment2(Point2* p0_, Point2* p1_, ConstraintInsertionStrategy cis_)
    : ConstraintSegment2(p0_, p1_, cis_, runningLabel.fetch_add(1, std::memory_order_relaxed)) {}

ConstraintSegment2::ConstraintSegment2(Point2* p0_, Point2* p1_, ConstraintInsertionStrategy cis_,
                                       std::uint32_t label_)
    : p0(p0_), p1(p1_), cis(cis_), label(label_) {
    require(ByAddress{}(p0, p1), "p0<p1");
}

bool ConstraintSegment2::operator<(const ConstraintSegment2& other) const noexcept {
    return p0 != other.p0 ? ByAddress{}(p0, other.p0) : ByAddress{}(p1, other.p1);
}

// -------------------------------------------------------------------------------------------------- owners

ConstraintSegment2::Role& ConstraintSegment2::furtherRoleOf(ConstraintGraph2* pGraph) {
    if (pFurtherRoles == nullptr) pFurtherRoles = std::make_unique<Roles>();
    return (*pFurtherRoles)[pGraph];
}

/// Null if the graph has none.
const ConstraintSegment2::Role* ConstraintSegment2::findRole(const ConstraintGraph2* pGraph) const noexcept {
    if (pFirstGraph == pGraph) return &firstRole;
    if (pFurtherRoles == nullptr) return nullptr;
    const auto entry = pFurtherRoles->find(const_cast<ConstraintGraph2*>(pGraph));
    return entry == pFurtherRoles->end() ? nullptr : &entry->second;
}

/// By address.
std::vector<ConstraintGraph2*> ConstraintSegment2::getOwners() const {
    std::vector<ConstraintGraph2*> vOwners;
    if (firstRole.bOwner) vOwners.push_back(pFirstGraph);
    if (pFurtherRoles == nullptr) return vOwners;
    for (const auto& [pGraph, role] : *pFurtherRoles)
        if (role.bOwner) vOwners.push_back(pGraph);
    std::sort(vOwners.begin(), vOwners.end(), ByAddress{});
    return vOwners;
}

/// The first owner's; there must be one.
ConstraintMgr* ConstraintSegment2::getManager() const {
    return getOwners().front()->getDt2()->getConstraintManager();
}

// Trees may be as deep as a segment has pieces: they are walked without recursion.

void ConstraintSegment2::addOwnerRecursive(ConstraintGraph2* pGraph) {
    roleOf(pGraph).bOwner = true;
    if (isAlive()) return;
    std::vector<ConstraintSegment2*> vOpen{this};
    while (!vOpen.empty()) {
        ConstraintSegment2* const pSegment = vOpen.back();
        vOpen.pop_back();
        pSegment->roleOf(pGraph).bOwner = true;
        if (pSegment->isAlive()) continue;
        require(pSegment->isSplit(), "pKid0!=__null && pKid1!=__null");
        vOpen.insert(vOpen.end(), pSegment->vChildren.begin(), pSegment->vChildren.end());
    }
}

void ConstraintSegment2::removeOwner(ConstraintGraph2* pGraph) {
    if (findRole(pGraph) != nullptr) roleOf(pGraph).bOwner = false;
}

bool ConstraintSegment2::dbg_hasDirection() const {
    std::string text = compose("ConstraintSegment2::dbg_hasDirection(), label ", label, ", ",
                               isAlive() ? "alive" : "dead", ", numOwners=", getNumberOfOwners(), "\n");
    bool bAllKnow = true;
    for (const ConstraintGraph2* pGraph : getOwners()) {
        const bool bKnows = pGraph->dbg_hasDirection(this);
        text += compose("For one owner CG2: ", static_cast<const void*>(pGraph),
                        bKnows ? " has Direction, true" : " NO Direction, NOK NOK NOK", "\n");
        bAllKnow = bAllKnow && bKnows;
    }
    print(text);
    return bAllKnow;
}

// ------------------------------------------------------------------------------------------------ division

void ConstraintSegment2::getChildrenRec(std::vector<ConstraintSegment2*>& out) const {
    std::vector<ConstraintSegment2*> vOpen;
    const auto pushChildren = [&](const ConstraintSegment2* pSegment) {
        require(pSegment->isSplit(), "vChildren.size()==2");
        vOpen.insert(vOpen.end(), pSegment->vChildren.rbegin(), pSegment->vChildren.rend());
    };
    for (pushChildren(this); !vOpen.empty();) {
        ConstraintSegment2* const pKid = vOpen.back();
        vOpen.pop_back();
        if (pKid->isAlive())
            out.push_back(pKid);
        else
            pushChildren(pKid);
    }
}

void ConstraintSegment2::getAlivePieces(std::vector<ConstraintSegment2*>& out) {
    if (isAlive())
        out.push_back(this);
    else
        getChildrenRec(out);
}

void ConstraintSegment2::getChildrenAndSplitPoint(ConstraintSegment2*& pChild0, ConstraintSegment2*& pChild1,
                                                  Point2*& pSplit) const {
    if (isAlive()) {
        warning("ConstraintSegment2::getChildrenAndSplitPoint()", "*this is still alive!");
        return;
    }
    pChild0 = vChildren[0];
    pChild1 = vChildren[1];
    pSplit = nullptr;
    if (!isSplit()) return;
    for (Point2* pEnd : {pChild0->p0, pChild0->p1})
        if (pEnd == pChild1->p0 || pEnd == pChild1->p1) pSplit = pEnd;
}

/// The books of a division: children, their owners, and what the owners know of directions.
void ConstraintSegment2::makeChildren(Point2* pSplit) {
    const std::vector<ConstraintGraph2*> vOwners = getOwners();
    ConstraintMgr* const pMgr = getManager();
    ConstraintSegment2* const pChild0 = pMgr->addConstraintSegment(p0, pSplit, cis);
    ConstraintSegment2* const pChild1 = pMgr->addConstraintSegment(p1, pSplit, cis);
    vChildren = {pChild0, pChild1};
    for (ConstraintGraph2* pGraph : vOwners)
        for (ConstraintSegment2* pKid : vChildren) pKid->addOwnerRecursive(pGraph);
    for (ConstraintGraph2* pGraph : vOwners)
        pGraph->updateSplittedConstraintSegment(this, pGraph == vOwners.front());
}

/// Whether a piece of a division at a vertex was divided before, into pieces of which this record is one. That can only be where
/// crossings are rounded as far as segments are long; the tree of records would have no end.
bool ConstraintSegment2::wouldContainItself(Point2* pSplit) const {
    std::set<const ConstraintSegment2*> sSeen;
    std::vector<const ConstraintSegment2*> vOpen;
    const auto visit = [&](const ConstraintSegment2* pSegment) {
        if (pSegment != nullptr && !pSegment->isAlive() && sSeen.insert(pSegment).second)
            vOpen.push_back(pSegment);
    };
    for (Point2* pEnd : {p0, p1}) visit(getManager()->findConstraintSegment(pEnd, pSplit));
    while (!vOpen.empty()) {
        const ConstraintSegment2* const pSegment = vOpen.back();
        vOpen.pop_back();
        for (const ConstraintSegment2* pKid : pSegment->vChildren) {
            if (pKid == this) return true;
            visit(pKid);
        }
    }
    return false;
}

bool ConstraintSegment2::split_combinatorialOnly(Point2* pSplit) {
    require(pSplit != nullptr, "pSplit!=__null");
    require(isAlive(), "isAlive()");
    require(p0 != pSplit && p1 != pSplit, "p0!=pSplit && p1!=pSplit");
    require(getNumberOfOwners() != 0, "!sOwners.empty()");
    if (wouldContainItself(pSplit)) {
        warning("ConstraintSegment2::split_combinatorialOnly()",
                "a piece would contain the segment that it is a piece of (insufficient numeric accuracy), "
                "nothing done");
        return false;
    }
    makeChildren(pSplit);
    return true;
}

Point2* ConstraintSegment2::insertAndSplit(const Point2& point) {
    RoundToNearest nearest;
    if (!isFinite(point)) {
        warning("Dt2::insertAndSplit()", "non-finite coordinates, nothing done");
        return nullptr;
    }
    require(bAlive, "bAlive");
    require(!isSplit(), "vChildren.empty()");
    require(getNumberOfOwners() != 0, "!sOwners.empty()");
    Dt2* const pOwnerDt = getOwners().front()->getDt2();
    require(pOwnerDt != nullptr, "pOwnerDt!=__null");

    // Suspended, so that the insertion doesn't divide this record when the vertex comes to lie on its edge.
    bAlive = false;
    Point2* const pSplit = pOwnerDt->insert(point);
    require(pSplit != nullptr, "pSplit!=__null");
    bAlive = true;
    if (pSplit == p0 || pSplit == p1 || !split_combinatorialOnly(pSplit)) return nullptr;
    // Vertices closer to the edge that this was may keep the new one out of its triangles. Then the insertion hasn't looked at
    // that edge, which isn't a constraint any more.
    if (pOwnerDt->is2D()) pOwnerDt->legaliseEdge(p0, p1);
    establishPieces();
    if (pOwnerDt->is2D()) pOwnerDt->bfsFlipIncident(pSplit);
    return pSplit;
}

/// Makes the pieces of a divided record edges, each by one step of its strategy.
void ConstraintSegment2::establishPieces() {
    ConstraintMgr* const pMgr = getManager();
    std::vector<ConstraintSegment2*> vOpen(vChildren.begin(), vChildren.end());
    while (!vOpen.empty()) {
        ConstraintSegment2* const pSegment = vOpen.back();
        vOpen.pop_back();
        if (pSegment->isAlive())
            pMgr->applyOneSegment(pSegment);
        else
            pSegment->getChildrenRec(vOpen);
    }
}

bool ConstraintSegment2::splitAndRemovePrev(const Point2& point) {
    RoundToNearest nearest;
    Point2* const pSplit = insertAndSplit(point);
    if (pSplit == nullptr) return false;
    require(getNumberOfOwners() != 0, "!sOwners.empty()");
    Dt2* const pDt = getOwners().front()->getDt2();
    pDt->getInnerVtxMgr().removePreviouslyInsertedVertices(pSplit, squaredDistance(*pSplit, *p0), pDt);
    return true;
}

std::ostream& operator<<(std::ostream& os, const ConstraintSegment2& segment) {
    RoundToNearest nearest;
    os << "ConstraintSegment2 label " << segment.label << ", " << static_cast<const void*>(&segment) << ": ("
       << static_cast<const void*>(segment.p0) << "," << static_cast<const void*>(segment.p1) << ")";
    if (segment.isAlive())
        os << " [alive]\n";
    else
        os << " [DEAD, numChildren=" << (segment.isSplit() ? 2 : 0) << "]\n";
    return os << *segment.p0 << "\n"
              << *segment.p1 << "\n"
              << "length=" << distance(*segment.p0, *segment.p1);
}

}  // namespace KELMAR_NORVIK2D
