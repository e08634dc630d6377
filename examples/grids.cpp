// Fills an L-shaped floor with a square grid that runs in a direction of its own; triangles fill the rest up to the walls.
#include <Norvik_2D.h>

#include <iostream>
#include <vector>

using namespace KELMAR_NORVIK2D;

int main() {
    const std::vector<Point2> corners{{0, 0}, {12, 0}, {12, 5}, {6, 5}, {6, 9}, {0, 9}};
    std::vector<Segment2> walls;
    for (std::size_t i = 0; i < corners.size(); ++i)
        walls.emplace_back(corners[i], corners[(i + 1) % corners.size()]);

    Norvik_2D mesh;
    Zone2* pFloor = mesh.createZone(mesh.createConstraint(walls, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);

    MeshGenParams params(pFloor);
    params.minAngleDegree = 25;
    params.gridVector = Vector2(4, 1);  // the direction; its length doesn't matter
    params.gridLength = 0.5;
    mesh.refineAdvanced(&params);
    pFloor->unifyGrid(1e-9);  // all diagonals of the cells in one direction

    // The squares of the grid are triangles with two sides of its spacing and a right angle between them.
    std::vector<Triangle2*> triangles;
    pFloor->getTriangles(triangles);
    double gridArea = 0;
    for (const Triangle2* pTriangle : triangles)
        if (pTriangle->getInteriorAngle2D(pTriangle->getMaxIndex()) > 89.99)
            gridArea += pTriangle->getArea2D();
    std::cout << "area " << pFloor->getArea2D() << ", most of it grid: " << std::boolalpha
              << (gridArea > 0.5 * pFloor->getArea2D()) << '\n';
    const bool bGood =
        mesh.checkZoneQuality(pFloor, params.minAngleDegree, "floor", AcceptExperimentalFeature());
    std::cout << "angles of 25 degrees everywhere: " << bGood << '\n';
    pFloor->show("grids.ps", false, true);
}
