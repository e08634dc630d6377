// The program of the README: triangles between five points, and a segment that becomes an edge.
#include <Norvik_2D.h>

#include <iostream>

using namespace KELMAR_NORVIK2D;

int main() {
    Norvik_2D mesh;
    mesh.insert(std::vector<Point2>{{0, 0}, {4, 0}, {4, 3}, {0, 3}, {1, 1}});
    mesh.createConstraint({{Point2(0, 0), Point2(3.5, 3)}}, CIS_CONSTRAINED_DELAUNAY);  // an edge from now on

    std::vector<Triangle2*> triangles;
    mesh.getTrianglePointers(triangles);
    for (const Triangle2* pTriangle : triangles) std::cout << "area " << pTriangle->getArea2D() << '\n';
    mesh.show("firstTriangles.ps");
}
