// Hears how far long operations are, and cuts one short.
#include <Norvik_2D.h>

#include <iostream>
#include <string>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

/// Tells each quarter of each operation, and asks for the end of a refinement when that is half done.
class Listener : public MsgBase {
public:
    Norvik_2D* pToCancel = nullptr;

    void update(MsgType, const std::string& name, double value) override {
        const int quarters = static_cast<int>(4 * value);
        if (name != lastName || quarters != lastQuarters) std::cout << name << ' ' << 25 * quarters << "%\n";
        lastName = name;
        lastQuarters = quarters;
        if (pToCancel != nullptr && name == "refine" && value > 0.5) pToCancel->requestCancel();
    }

private:
    std::string lastName;
    int lastQuarters = 0;
};

}  // namespace

int main() {
    std::vector<Point2> points;
    generateRandomPoints(300, 5, 95, points, 1);
    const std::vector<Segment2> ring{{Point2(0, 0), Point2(100, 0)},
                                     {Point2(100, 0), Point2(100, 100)},
                                     {Point2(100, 100), Point2(0, 100)},
                                     {Point2(0, 100), Point2(0, 0)}};

    Listener listener;  // before the triangulation: it must be there as long as that one may call it
    Norvik_2D mesh;
    mesh.subscribe(MSGTYPE_PROGRESS, &listener);
    mesh.insert(points);
    Zone2* pZone = mesh.createZone(mesh.createConstraint(ring, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);

    listener.pToCancel = &mesh;
    mesh.refine(pZone, 28, 0.01, 10, true);
    std::cout << std::boolalpha << "cancelled: " << mesh.wasCancelled() << '\n';

    // What is there is a mesh, only not good everywhere. A second run goes on.
    std::cout << "valid: " << mesh.checkValidity(true, "cancelled") << '\n';
    pZone->show("progress.ps", false, false);
    listener.pToCancel = nullptr;
    mesh.refine(pZone, 28, 0.01, 10, true);
    std::cout << "cancelled: " << mesh.wasCancelled() << '\n';
}
