// Handles lead from the points that were given to the vertices of the triangulation, also where points coincide.
#include <Norvik_2D.h>

#include <iostream>
#include <string>
#include <vector>

using namespace KELMAR_NORVIK2D;

int main() {
    // The third number is the client's own: here the index of a town's name.
    const std::vector<std::string> towns{"Arnum", "Brekke", "Celle", "Dokka", "Arnum again"};
    const std::vector<Point2> places{{0, 0, 0}, {100, 10, 1}, {40, 80, 2}, {50, 30, 3}, {0, 0, 4}};

    Norvik_2D mesh;
    std::vector<Point2*> handles;
    mesh.insert(places, handles);
    std::cout << places.size() << " places, " << mesh.numberOfPoints() << " different ones\n";
    std::cout << "one vertex for both Arnums: " << std::boolalpha << (handles[0] == handles[4]) << '\n';

    // A single insertion returns the handle, of an equal point the one that is there already.
    Point2* pBrekke = mesh.insert(Point2(100, 10));
    std::cout << "Brekke is found again: " << (pBrekke == handles[1]) << '\n';

    std::vector<Triangle2*> aroundDokka;
    mesh.getIncidentTriangles(handles[3], aroundDokka);
    std::cout << "triangles around Dokka: " << aroundDokka.size() << '\n';

    const Triangle2* pTriangle = mesh.locate(Point2(50, 10));
    std::cout << "(50, 10) lies between";
    for (int i = 0; i < 3; ++i)
        std::cout << ' ' << towns[static_cast<std::size_t>(pTriangle->getCorner(i)->getCustomIndex())];
    std::cout << '\n';

    Visualizer2 picture("insertion.ps");
    mesh.show(&picture);
    std::vector<Point2*> vertices;
    mesh.getVertexPointers(vertices);
    for (const Point2* pVertex : vertices) {
        const std::string& name = towns[static_cast<std::size_t>(pVertex->getCustomIndex())];
        picture.addObject(Label(*pVertex, name, true, 14), Color(COLORNAME_BLUE, 1.0F, false));
    }
    picture.writeFile();

    mesh.remove(handles[3]);
    std::cout << "without Dokka: " << mesh.numberOfTriangles() << " triangle\n";
}
