// Takes triangles from elsewhere as they are, with diagonals of their own; then goes on with them as with any mesh.
#include <Norvik_2D.h>

#include <array>
#include <iostream>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

void print(const char* when, const Zone2& zone) {
    std::cout << when << ": " << zone.getNumberOfTriangles() << " triangles, area " << zone.getArea2D()
              << '\n';
}

/// Its edges, moved to the right.
void draw(Visualizer2& picture, Zone2* pZone, double x) {
    std::vector<VertexPair2> edges;
    getVertexPairs(pZone, edges);
    for (const VertexPair2& edge : edges) {
        const Point2 &a = *edge.getVtx0(), &b = *edge.getVtx1();
        picture.addObject(Segment2(Point2(a.x() + x, a.y()), Point2(b.x() + x, b.y())), Color());
    }
}

}  // namespace

int main() {
    // As files have it: coordinates, and three indices a triangle.
    const std::vector<Point2> corners{{0, 0}, {90, 0}, {90, 60}, {45, 25}, {0, 60}, {30, 15}, {62, 18}};
    const std::vector<std::array<std::size_t, 3>> triangles{{0, 1, 5}, {1, 6, 5}, {1, 2, 6}, {2, 3, 6},
                                                            {3, 5, 6}, {3, 4, 5}, {4, 0, 5}};
    std::vector<Point2> threeEach;
    for (const auto& triangle : triangles)
        for (const std::size_t i : triangle)
            threeEach.emplace_back(corners[i].x(), corners[i].y(), static_cast<int>(i));

    Norvik_2D mesh;
    const bool bReorient = false;  // they run counterclockwise
    const bool bKeepBox = false;   // the triangulation ends at the convex hull
    Zone2* pGiven = mesh.importTriangles(threeEach, bReorient, bKeepBox);
    if (pGiven == nullptr) return 1;
    print("imported", *pGiven);
    std::cout << mesh.numberOfTriangles() << " triangles with those in the notch\n";
    Visualizer2 picture("importTriangles.ps");
    draw(picture, pGiven, 0);

    // What is inserted may change triangles, but not the zone.
    mesh.insert(Point2(45, 10));
    print("a point more", *pGiven);

    mesh.refine(pGiven, 28, 0.01, 12, true);
    print("refined", *pGiven);
    draw(picture, pGiven, 100);
}
