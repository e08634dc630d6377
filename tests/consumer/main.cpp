// A client as small as they come: it must compile as C++17 and link with nothing but what the package tells.
#include <Norvik_2D.h>
#include <kelmar_locate2/RTree.h>
#include <kelmar_locate3/Octree.h>
#include <kelmar_locate3/RTree.h>

#include <iostream>
#include <vector>

int main() {
    KELMAR_NORVIK2D::Norvik_2D mesh;
    mesh.insert(std::vector<KELMAR_NORVIK2D::Point2>{{0, 0}, {1, 0}, {0, 1}, {1, 1}});
    std::cout << KELMAR_NORVIK2D::getNorvik2DVersion() << ": " << mesh.numberOfTriangles() << " triangles\n";
    KELMAR_LOCATE2::RTree tree;
    std::vector<KELMAR_LOCATE2::Item*> found;
    tree.addObject(&mesh, 0, 0, 1, 1);
    tree.getBBIntersectedItems({1, 1, 2, 2}, found);
    KELMAR_LOCATE3::RTree tree3;
    std::vector<KELMAR_LOCATE3::Item*> found3;
    tree3.addObject(&mesh, 0, 0, 0, 1, 1, 1);
    tree3.getBBIntersectedItems({1, 1, 1, 2, 2, 2}, found3);
    const double min[] = {0, 0, 0}, max[] = {1, 1, 1};
    KELMAR_OCTREE::Octree octree(min, max);
    if (found3.size() != 1 || !octree.addPoint(&mesh, 0, 1, 0) || octree.getNearest(0, 0, 0) == nullptr)
        return 1;
    // An exception and a base class must have the same type on both sides of the library.
    try {
        mesh.getAdjacentTriangle(nullptr, nullptr);
    } catch (const KELMAR_NORVIK2D::NorvikException&) {
        return mesh.numberOfTriangles() == 2 && found.size() == 1 ? 0 : 1;
    }
    return 1;
}
