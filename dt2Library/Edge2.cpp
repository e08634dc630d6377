#include "Edge2.h"

#include <ostream>
#include <utility>

#include "Vector2.h"
#include "byAddress.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

namespace {

/// The same pair for both sides of an edge.
std::pair<const Point2*, const Point2*> endsByAddress(const Edge2& edge) {
    const Point2* pSrc = edge.getSrc();
    const Point2* pTrg = edge.getTrg();
    return ByAddress()(pTrg, pSrc) ? std::pair(pTrg, pSrc) : std::pair(pSrc, pTrg);
}

}  // namespace

void Edge2::getPoints(Point2*& pSrc, Point2*& pTrg) const noexcept {
    pSrc = getSrc();
    pTrg = getTrg();
}

void Edge2::getTriangles(Triangle2*& pT0, Triangle2*& pT1, int& index0, int& index1) const noexcept {
    pT0 = pTriangle;
    index0 = index;
    pT1 = neighbour(pTriangle, index);
    index1 = pT1 != nullptr ? indexOf(pT1, pTriangle) : -1;
}

double Edge2::getLength2D() const { return Vector2(*getSrc(), *getTrg()).sqLength(); }

bool Edge2::operator<(const Edge2& other) const noexcept {
    const auto [pLow, pHigh] = endsByAddress(*this);
    const auto [pOtherLow, pOtherHigh] = endsByAddress(other);
    return pLow == pOtherLow ? ByAddress()(pHigh, pOtherHigh) : ByAddress()(pLow, pOtherLow);
}

std::ostream& operator<<(std::ostream& os, const Edge2& edge) {
    return os << "Edge(" << *edge.getSrc() << "," << *edge.getTrg() << ")";
}

}  // namespace KELMAR_NORVIK2D
