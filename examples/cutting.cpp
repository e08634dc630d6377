// Cuts a ditch through a mesh, twice: on the left triangles next to it may change, on the right they keep their shape, as a
// surface wants it whose heights hang on its triangles. Then a field is cut out.
#include <Norvik_2D.h>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

std::vector<VertexPair2> edgesOf(Norvik_2D& mesh) {
    std::vector<VertexPair2> edges;
    getVertexPairs(&mesh, edges);  // ordered
    return edges;
}

/// The same mesh each time, moved by x.
void cut(const char* name, double x, bool bKeepShape, Norvik_2D& mesh, Visualizer2& picture) {
    std::vector<Point2> points;
    generateRandomPoints(100, 0, 100, points, 5);
    for (Point2& point : points) point = Point2(x + point.x(), point.y());
    mesh.insert(points);

    const std::vector<VertexPair2> before = edgesOf(mesh);
    mesh.cutTriangles(Point2(x + 25, 20), Point2(x + 75, 50), bKeepShape);
    const std::vector<VertexPair2> after = edgesOf(mesh);

    // All vertices that came but the ends of the ditch are where it crosses an edge.
    const std::size_t numCrossings = mesh.numberOfPoints() - points.size() - 2;
    std::vector<VertexPair2> gone;
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(), std::back_inserter(gone));
    std::cout << name << ": " << numCrossings << " edges are crossed, " << gone.size() - numCrossings
              << " others are gone\n";

    const std::vector<Point2> corners{{x + 30, 70}, {x + 45, 70}, {x + 45, 90}, {x + 30, 90}};
    std::vector<Segment2> fence;
    for (std::size_t i = 0; i < 4; ++i) fence.emplace_back(corners[i], corners[(i + 1) % 4]);
    const Zone2* pField = mesh.createZone_cookieCutter(fence, bKeepShape);
    std::cout << "    field cut out: area " << pField->getArea2D() << '\n';
    pField->show(&picture, true, true);  // the zone in yellow, the whole mesh, constraints in red
}

}  // namespace

int main() {
    Norvik_2D left,
        right;  // they outlive the picture, which is written at its end and reads the vertices then
    Visualizer2 picture("cutting.ps");
    cut("may change", 0, false, left, picture);
    cut("keep shape", 110, true, right, picture);
}
