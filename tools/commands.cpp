#include "commands.h"

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iostream>

#include "ProgressBar.h"

using namespace KELMAR_NORVIK2D;

double doTimed(Norvik_2D& mesh, const Options& options, const std::function<void()>& work) {
    ProgressBar bar;
    const bool bShowBar = options.bProgress && isatty(STDERR_FILENO) == 1;
    if (bShowBar) mesh.subscribe(MSGTYPE_PROGRESS, &bar);
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    if (bShowBar) mesh.unsubscribe(MSGTYPE_PROGRESS, &bar);
    return seconds.count();
}

void writePicture(Norvik_2D& mesh, const std::string& path) {
    if (!mesh.is2D()) throw BadOutput(path + ": no picture, there are no triangles");
    // The library doesn't report a picture that can't be written.
    if (!std::ofstream(path)) throw BadOutput(path + ": can't be written");
    mesh.show(path);
}

int checkIfAsked(Norvik_2D& mesh, const Options& options) {
    if (!options.bCheck || mesh.checkValidity(true, options.input)) return exitSuccess;
    std::cerr << options.input << ": the triangulation is not valid" << std::endl;
    return exitFailure;
}
