// Inserts five points and prints the triangles between them.
#include <Norvik_2D.h>

#include <iostream>
#include <vector>

using namespace KELMAR_NORVIK2D;

int main() {
    Norvik_2D mesh;
    mesh.insert(std::vector<Point2>{{0, 0}, {4, 0}, {4, 3}, {0, 3}, {1, 1}});

    std::vector<Triangle2*> triangles;
    mesh.getTrianglePointers(triangles);
    for (const Triangle2* pTriangle : triangles) {
        for (int i = 0; i < 3; ++i) {
            const Point2& corner = *pTriangle->getCorner(i);
            std::cout << '(' << corner.x() << ", " << corner.y() << ") ";
        }
        std::cout << "area " << pTriangle->getArea2D() << '\n';
    }
}
