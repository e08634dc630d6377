// The same two walls among the same points, with both strategies: constrained on the left, conforming on the right.
#include <Norvik_2D.h>

#include <iostream>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

void build(const char* name, double x, ConstraintInsertionStrategy strategy, Visualizer2& picture) {
    std::vector<Point2> points;
    generateRandomPoints(60, 0, 100, points, 3);
    for (Point2& point : points) point = Point2(x + point.x(), point.y());
    const std::vector<Segment2> walls{{Point2(x + 2, 20), Point2(x + 98, 40)},
                                      {Point2(x + 2, 90), Point2(x + 98, 60)}};

    Norvik_2D mesh;
    mesh.insert(points);
    const ConstraintGraph2* pWalls = mesh.createConstraint(walls, strategy);
    mesh.applyConstraintsAndZones();  // conforming segments wait for this

    std::vector<ConstraintSegment2*> pieces;
    pWalls->getAliveConstraintChain(pieces);
    const std::size_t numGiven = points.size() + 2 * walls.size();
    std::cout << name << ": " << mesh.numberOfPoints() - numGiven << " vertices added, the " << walls.size()
              << " walls are " << pieces.size() << " edges\n";
    mesh.show(&picture);
}

}  // namespace

int main() {
    Visualizer2 picture("strategies.ps");
    build("constrained", 0, CIS_CONSTRAINED_DELAUNAY, picture);
    build("conforming", 110, CIS_CONFORMING_DELAUNAY, picture);
}
