#include "PlainFlood.h"

#include <algorithm>
#include <functional>

using namespace KELMAR_NORVIK2D;

PlainFlood::Pair PlainFlood::ordered(const Point2* pA, const Point2* pB) {
    return std::less<>()(pA, pB) ? Pair(pA, pB) : Pair(pB, pA);
}

PlainFlood::PlainFlood(Norvik_2D& mesh, const ConstraintGraph2& graph) {
    Triangles vAll;
    mesh.getTrianglePointers(vAll);
    const auto [least, greatest] = std::minmax_element(vAll.begin(), vAll.end(), std::less<>());
    pLowest = *least;
    numPlaces = indexOf(*greatest) + 1;
    std::vector<ConstraintSegment2*> vPieces;
    graph.getChildConstraintSegments(vPieces);
    // Nearly all questions are about edges that are no walls: most end at an empty place then.
    sWalls.max_load_factor(0.125F);
    for (const ConstraintSegment2* pPiece : vPieces)
        sWalls.insert(ordered(pPiece->getSrc(), pPiece->getTrg()));
}

bool PlainFlood::isWall(const Triangle2* pTriangle, int i) const {
    return sWalls.count(ordered(pTriangle->getCorner((i + 1) % 3), pTriangle->getCorner((i + 2) % 3))) != 0;
}

void PlainFlood::flood(Triangle2* pStart, Triangles& out) {
    vVisited.assign(numPlaces, false);
    // What was reached and isn't done yet is the end of the result.
    std::size_t numDone = out.size();
    out.push_back(pStart);
    vVisited[indexOf(pStart)] = true;
    for (; numDone < out.size(); ++numDone) {
        const Triangle2* const pTriangle = out[numDone];
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pNext = pTriangle->getOppositeTriangle(i);
            // The bit first: it is cheaper than the table, and answers for two of three.
            if (pNext == nullptr || vVisited[indexOf(pNext)] || isWall(pTriangle, i)) continue;
            vVisited[indexOf(pNext)] = true;
            out.push_back(pNext);
        }
    }
}
