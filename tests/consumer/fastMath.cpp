// A client that gives up exact arithmetic for itself (-Ofast -march=native, which also makes the processor take denormals for
// zero) gets exact answers from the library all the same.
#include <Norvik_2D.h>

#include <iostream>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

double plainTurn(const Point2& a, const Point2& b, const Point2& c) {
    return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

/// Points next to the diagonal, a few ulps apart: wrong turns by the library, and by the client's own arithmetic.
void countWrongTurns(int& numByLibrary, int& numByClient) {
    constexpr int numSteps = 128;
    constexpr double ulp = 0x1p-53;
    const Point2 onDiagonal(12, 12);
    const Point2 farther(24, 24);
    for (int i = 0; i < numSteps; ++i) {
        for (int j = 0; j < numSteps; ++j) {
            const Point2 point(0.5 + i * ulp, 0.5 + j * ulp);
            const Orientation2 expected = i == j  ? ORIENTATION2_COLLINEAR
                                          : i < j ? ORIENTATION2_CCW
                                                  : ORIENTATION2_CW;
            numByLibrary += getOrientation2(&point, &onDiagonal, &farther) != expected;
            const double turn = plainTurn(point, onDiagonal, farther);
            numByClient += (turn > 0) != (i < j) || (turn < 0) != (i > j);
        }
    }
}

/// Three points of a circle and one that lies an ulp off it: whether the edge that divides the four is the one that the
/// empty circle asks for.
bool isDividedRightly(double radius, double distance) {
    Norvik_2D mesh;
    std::vector<Point2*> handles;
    mesh.insert({{radius, 0}, {0, radius}, {-radius, 0}, {0, -distance}}, handles);
    const bool bOutside = distance > radius;
    const bool bAcross = mesh.getAdjacentTriangle(handles[0], handles[2]) != nullptr;
    const bool bDown = mesh.getAdjacentTriangle(handles[1], handles[3]) != nullptr;
    return mesh.numberOfTriangles() == 2 && bAcross == bOutside && bDown != bOutside;
}

int countWrongDivisions() {
    constexpr double ulp = 0x1p-52;
    int numWrong = 0;
    for (const double scale : {1.0, 0x1p-500, 0x1p300})
        for (const double distance : {1 - ulp, 1 + ulp})
            numWrong += !isDividedRightly(scale, scale * distance);
    return numWrong;
}

/// A square whose side is a denormal.
bool isSquareKept() {
    constexpr double side = 0x1p-1070;
    Norvik_2D mesh;
    mesh.insert(std::vector<Point2>{{0, 0}, {side, 0}, {side, side}, {0, side}});
    return mesh.numberOfPoints() == 4 && mesh.numberOfTriangles() == 2;
}

}  // namespace

int main() {
    int numByLibrary = 0;
    int numByClient = 0;
    countWrongTurns(numByLibrary, numByClient);
    const int numDivisions = countWrongDivisions();
    const bool bSquareKept = isSquareKept();
    std::cout << "wrong turns: " << numByLibrary << ", by the client's arithmetic " << numByClient
              << "; wrong divisions: " << numDivisions << "; the smallest square is "
              << (bSquareKept ? "kept" : "lost") << '\n';
    // Facts that the client's arithmetic gets right would be no proof.
    return numByLibrary == 0 && numByClient > 0 && numDivisions == 0 && bSquareKept ? 0 : 1;
}
