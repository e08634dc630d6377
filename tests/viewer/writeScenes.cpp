// Writes the folders that the page test opens: writeScenes FOLDER
#include <Norvik_2D.h>

#include <random>
#include <string>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

void writeScene(const std::string& folder, std::vector<Point2> vPoints) {
    Norvik_2D mesh;
    mesh.insert(vPoints);
    mesh.writeWebScene(folder.c_str());
}

/// A rectangle of 4 by 3 with a vertex inside: four triangles.
std::vector<Point2> rectangleAt(double x, double y) {
    return {{x, y}, {x + 4, y}, {x + 4, y + 3}, {x, y + 3}, {x + 1, y + 1}};
}

std::vector<Point2> halfAMillionPoints() {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::vector<Point2> vPoints;
    for (int i = 0; i < 500000; ++i) {
        const double x = unit(random);
        vPoints.emplace_back(x, unit(random));
    }
    return vPoints;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::string folder = argv[1];
    writeScene(folder + "/rectangle", rectangleAt(0, 0));
    writeScene(folder + "/mapCoordinates", rectangleAt(1e7, 5e7));
    writeScene(folder + "/million", halfAMillionPoints());
    return 0;
}
