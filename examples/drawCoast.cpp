// Triangulates the ends of a file's segments (x1 y1 x2 y2 a line) on all processors, says how far it is, and draws
// the triangulation with the segments on top:   drawCoast data/coast_110m.seg coast.ps
#include <Norvik_2D.h>

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

/// Hears of the progress of long operations.
class Teller : public MsgBase {
public:
    void update(MsgType, const std::string& name, double value) override {
        const int tenths = static_cast<int>(value * 10);
        if (tenths == lastTenths) return;
        lastTenths = tenths;
        std::cout << name << ": " << tenths * 10 << "%\n";
    }

private:
    int lastTenths = -1;
};

std::vector<Segment2> readSegments(const std::string& path) {
    std::vector<Segment2> segments;
    std::ifstream in(path);
    for (double x1, y1, x2, y2; in >> x1 >> y1 >> x2 >> y2;)
        segments.emplace_back(Point2(x1, y1), Point2(x2, y2));
    return segments;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "drawCoast SEGMENTS.seg PICTURE.ps\n";
        return 2;
    }
    const std::vector<Segment2> coast = readSegments(argv[1]);
    std::vector<Point2> points;
    for (const Segment2& segment : coast) {
        points.push_back(segment.getSrc());
        points.push_back(segment.getTrg());
    }

    // Declared before the triangulation, because it must be there as long as that one may call it.
    Teller teller;
    Norvik_2D mesh(static_cast<unsigned int>(points.size()));
    mesh.setNumCPU(0);
    mesh.subscribe(MSGTYPE_PROGRESS, &teller);
    mesh.insert(points);
    if (!mesh.is2D()) {
        std::cerr << argv[1] << ": no triangles\n";
        return 1;
    }

    Visualizer2 picture(argv[2]);
    mesh.show(&picture);
    picture.addObject(coast, Color(COLORNAME_BLUE, 0.3F, false));
    picture.addHeaderLine(std::to_string(mesh.numberOfTriangles()) + " triangles");
    picture.writeFile();
}
