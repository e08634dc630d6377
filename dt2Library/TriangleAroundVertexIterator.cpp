#include "TriangleAroundVertexIterator.h"

#include "NorvikException.h"
#include "standardOutput.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

TriangleAroundVertexIterator::TriangleAroundVertexIterator(const Point2* pVertex_)
    : pVertex(pVertex_), pCurrent(pVertex_ != nullptr ? pVertex_->getIncidentTriangle() : nullptr) {
    if (pCurrent != nullptr) return;
    printToStandardError(
        "TriangleAroundVertexIterator::TriangleAroundVertexIterator(), created from an invalid point\n");
    throw NorvikException();
}

TriangleAroundVertexIterator& TriangleAroundVertexIterator::operator++() {
    if (pCurrent == nullptr) {
        loop();
    } else {
        // Counterclockwise around corner i the next triangle is the one across the edge cw(i) -> i.
        pPrevious = pCurrent;
        pCurrent = neighbour(pCurrent, ccw(indexOf(pCurrent, pVertex)));
    }
    return *this;
}

/// From the counterclockwise end of the fan back to its clockwise end, behind the gap.
void TriangleAroundVertexIterator::loop() {
    pCurrent = pPrevious;
    while (Triangle2* pNext = neighbour(pCurrent, cw(indexOf(pCurrent, pVertex)))) pCurrent = pNext;
}

}  // namespace KELMAR_NORVIK2D
