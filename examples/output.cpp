// What leaves the library: plain arrays, an OBJ file, a scene for the browser, and a picture of one's own making.
#include <Norvik_2D.h>

#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

/// From red, the thin ones, to green.
Color colorOf(const Triangle2& triangle) {
    const double angle = triangle.getInteriorAngle2D(triangle.getMinIndex());  // opposite the shortest edge
    const double share = angle / 60.0;
    return {1.0 - share, 0.3 + 0.6 * share, 0.3, 0.1, true};
}

/// How many lines of a file begin with which word.
std::map<std::string, int> countLines(const std::string& path) {
    std::map<std::string, int> counts;
    std::ifstream file(path);
    std::string word, rest;
    while (file >> word && std::getline(file, rest)) ++counts[word];
    return counts;
}

}  // namespace

int main() {
    Norvik_2D mesh;
    const std::vector<Point2> corners{{0, 0}, {60, 0}, {60, 40}, {30, 15}, {0, 40}};
    std::vector<Segment2> ring;
    for (std::size_t i = 0; i < corners.size(); ++i)
        ring.emplace_back(corners[i], corners[(i + 1) % corners.size()]);
    Zone2* pZone = mesh.createZone(mesh.createConstraint(ring, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
    mesh.insert(std::vector<Point2>{{15, 10}, {30, 8}, {44, 13}, {52, 26}, {9, 24}});

    // Arrays for programs that compute: here, which edges are the zone's border.
    MeshArrays arrays;
    mesh.exportMesh(pZone, arrays);
    int numBorderEdges = 0, numConstraints = 0;
    for (std::size_t i = 0; i < arrays.neighbours.size(); ++i) {
        numBorderEdges += arrays.neighbours[i] == -1;
        numConstraints += arrays.constraintFlags[i];
    }
    std::cout << "arrays: " << arrays.numberOfPoints() << " points, " << arrays.numberOfTriangles()
              << " triangles, " << numBorderEdges << " edges without a neighbour, " << numConstraints
              << " of them constraints\n";
    const auto first = static_cast<std::size_t>(arrays.corners[0]);
    std::cout << "first corner of the first triangle: point " << first << ", "
              << arrays.coordinates[2 * first] << ' ' << arrays.coordinates[2 * first + 1] << '\n';

    // Other programs open this: a line "v x y 0" for each vertex, then a line "f a b c" for each triangle.
    mesh.writeObj("output.obj", pZone);
    const std::map<std::string, int> counts = countLines("output.obj");
    std::cout << "OBJ: " << counts.at("v") << " vertices, " << counts.at("f") << " triangles\n";

    // A folder for a web server: python3 -m http.server --directory output_scene
    mesh.writeWebScene("output_scene", pZone);

    // A picture is made of any objects, and scaled to fit them all. Pens have a colour and a width in points, and fill or don't.
    Visualizer2 picture("output.ps");
    std::vector<Triangle2*> triangles;
    pZone->getTriangles(triangles);
    for (const Triangle2* pTriangle : triangles) picture.addObject(*pTriangle, colorOf(*pTriangle));
    picture.addObject(ring, Color(COLORNAME_BLACK, 1.5F, false));
    picture.addObject(Label(Point2(19, 37), "by smallest angle", false, 14),
                      Color(COLORNAME_BLACK, 1.0F, false));
    picture.addHeaderLine("Triangles by their smallest angle");
    picture.writeFile();  // or when it is destroyed; the vertices must still be there
}
