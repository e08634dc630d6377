// Hears how far a long operation is.
#include <Norvik_2D.h>

#include <iostream>
#include <string>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

/// Tells each tenth of each operation.
class Teller : public MsgBase {
public:
    void update(MsgType, const std::string& name, double value) override {
        const int tenths = static_cast<int>(value * 10);
        if (name == lastName && tenths == lastTenths) return;
        lastName = name;
        lastTenths = tenths;
        std::cout << name << ": " << tenths * 10 << "%\n";
    }

private:
    std::string lastName;
    int lastTenths = -1;
};

}  // namespace

int main() {
    std::vector<Point2> points;
    generateRandomPoints(20000, 0, 100, points, 1);

    Teller teller;  // before the triangulation: it must be there as long as that one may call it
    Norvik_2D mesh;
    mesh.subscribe(MSGTYPE_PROGRESS, &teller);
    mesh.insert(points);
    mesh.unsubscribe(MSGTYPE_PROGRESS, &teller);
    std::cout << mesh.numberOfTriangles() << " triangles\n";
    mesh.show("progress.ps");
}
