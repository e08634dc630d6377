#include <iostream>
#include <string>

#include "commands.h"
#include "exports.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// A word that a shell takes as it is.
std::string quotedForShell(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace

int view(const Options& options) {
    Norvik_2D mesh;
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    Subject subject;
    doTimed(mesh, options, [&] { subject = makeSubject(mesh, options); });
    writeScene(mesh, subject, options.sceneFolder);
    const std::size_t numTriangles =
        subject.pZone != nullptr ? subject.pZone->getNumberOfTriangles() : mesh.numberOfTriangles();
    std::cout << "triangles: " << numTriangles
              << "\nserve it: python3 -m http.server --bind 127.0.0.1 --directory "
              << quotedForShell(options.sceneFolder) << " 8000\nopen: http://127.0.0.1:8000/" << std::endl;
    return exitSuccess;
}
