// Takes the library's messages, and shows three kinds of trouble: a mistake of the caller, a question without an answer, and a
// broken condition.
#include <Norvik_2D.h>

#include <cmath>
#include <iostream>
#include <string>
#include <vector>

using namespace KELMAR_NORVIK2D;

int main() {
    // From now on the library writes nothing to the standard streams. silentMessageHandler() would drop all.
    setMessageHandler([](MessageKind kind, const std::string& source, const std::string& text) {
        if (kind == MK_WARNING) std::cout << "warning from " << source << ": " << text << '\n';
        if (kind == MK_ERROR) std::cout << "error: " << text << '\n';
    });
    Norvik_2D mesh;
    mesh.insert(std::vector<Point2>{{0, 0}, {4, 0}, {4, 3}, {0, 3}});

    // A mistake is told, nothing is changed, and the result is a neutral one.
    const Point2* pVertex = mesh.insert(Point2(std::nan(""), 1));
    std::cout << "handle of a point that is none: " << (pVertex == nullptr ? "null" : "a vertex") << '\n';

    // No mistake, no message: there is nothing outside of the convex hull.
    std::cout << "triangle around (9, 9): " << (mesh.locate(Point2(9, 9)) == nullptr ? "null" : "one")
              << '\n';
    mesh.show("errors.ps");  // as if nothing had happened

    // What can't be gone on with ends in an exception. Afterwards the object may only be destroyed.
    try {
        mesh.getAdjacentTriangle(nullptr, nullptr);
    } catch (const NorvikException& exception) {
        std::cout << "exception: " << exception.what() << '\n';
    }
}
