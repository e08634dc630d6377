#include "zoneFlood.h"

#include "ConstraintGraph2.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

Walls::Walls(const std::vector<ConstraintGraph2*>& vGraphs) {
    std::vector<ConstraintSegment2*> vOriginals, vPieces;
    for (const ConstraintGraph2* pGraph : vGraphs) {
        if (pGraph == nullptr) continue;
        pGraph->getOriginalConstraintSegments(vOriginals);
        for (ConstraintSegment2* pOriginal : vOriginals) pOriginal->getAlivePieces(vPieces);
    }
    sPieces.reserve(vPieces.size());
    for (const ConstraintSegment2* pPiece : vPieces) {
        const Ends ends(pPiece->getSrc(), pPiece->getTrg());
        *sPieces.insert(ends).first = ends;
    }
}

/// In rounds, so that the memory of a triangle is asked for long before it is read.
void flood(std::vector<Triangle2*>& vStart, const Walls& walls, TriangleMarks& marks) {
    for (const Triangle2* pT : vStart) marks.insert(pT);
    std::vector<Triangle2*> vNextRound;
    while (!vStart.empty()) {
        vNextRound.clear();
        for (const Triangle2* pT : vStart) {
            for (int i = 0; i < 3; ++i) {
                Triangle2* const pNext = neighbour(pT, i);
                if (pNext == nullptr || marks.contains(pNext) ||
                    walls.stop(corner(pT, ccw(i)), corner(pT, cw(i))))
                    continue;
                prefetchTriangle(pNext);
                marks.insert(pNext);
                vNextRound.push_back(pNext);
            }
        }
        vStart.swap(vNextRound);
    }
}

}  // namespace KELMAR_NORVIK2D
