// Fences a garden with a polygon of constraints and lays two paths through it that cross. Pieces of constraints are edges of
// the triangulation, whatever is inserted later.
#include <Norvik_2D.h>

#include <iostream>
#include <utility>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

/// The alive pieces of the graph in their order, each from where to where the graph runs it.
void print(const char* title, const ConstraintGraph2& graph) {
    std::vector<ConstraintSegment2*> pieces;
    graph.getAliveConstraintChain(pieces);
    std::cout << title << ':';
    for (const ConstraintSegment2* pPiece : pieces) {
        const Point2 *pFrom = pPiece->getSrc(), *pTo = pPiece->getTrg();
        if (graph.isReverse(pPiece)) std::swap(pFrom, pTo);
        std::cout << "  " << pFrom->x() << ',' << pFrom->y() << " - " << pTo->x() << ',' << pTo->y();
    }
    std::cout << '\n';
}

}  // namespace

int main() {
    Norvik_2D garden;
    garden.insert(std::vector<Point2>{{2, 2}, {7, 4}, {4, 6}});  // trees

    // Four segments in any order and direction. They are one ring, and that is recognised.
    const Point2 sw(0, 0), se(10, 0), ne(10, 8), nw(0, 8);
    const ConstraintGraph2* pFence =
        garden.createConstraint({{sw, nw}, {se, ne}, {se, sw}, {ne, nw}}, CIS_CONSTRAINED_DELAUNAY);
    std::cout << std::boolalpha << "a polygon: " << pFence->isPolygon() << '\n';
    print("fence", *pFence);

    // The paths cross, and the second one leads from fence to fence. `true` says that their directions count.
    const ConstraintGraph2* pPaths =
        garden.createConstraint({{nw, se}, {Point2(10, 5), Point2(0, 3)}}, CIS_CONSTRAINED_DELAUNAY, true);
    print("paths", *pPaths);
    print("fence", *pFence);

    // A constraint that was divided is none any more; its pieces are.
    Point2* pNw = garden.insert(nw);
    Point2* pSe = garden.insert(se);
    Point2* pCrossing = garden.insert(Point2(5, 4));
    std::cout << "all of the path: " << garden.isConstraint(pNw, pSe)
              << ", its pieces: " << garden.isConstraint(pNw, pCrossing) << " and "
              << garden.isConstraint(pCrossing, pSe) << '\n';

    garden.insert(Point2(2.5, 3.5));  // a bush on the second path
    print("paths", *pPaths);

    garden.show("constraints.ps");  // constraints are red
}
