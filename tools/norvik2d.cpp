// The command-line program norvik2d.
#include <Norvik_2D.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ProgressBar.h"
#include "pointInput.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr int exitSuccess = 0;
constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

struct Options {
    std::string input;
    std::string pictureFile;
    std::string pointsFile;
    int numThreads = 1;
    bool bCheck = false;
    bool bProgress = false;
};

/// An output file that can't be made; what() tells the file and the reason.
class BadOutput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Inserts the points and returns the seconds that it took.
double insertTimed(Norvik_2D& mesh, const std::vector<Point2>& points, const Options& options) {
    ProgressBar bar;
    const bool bShowBar = options.bProgress && isatty(STDERR_FILENO) == 1;
    if (bShowBar) mesh.subscribe(MSGTYPE_PROGRESS, &bar);
    const auto start = std::chrono::steady_clock::now();
    mesh.insert(points);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    if (bShowBar) mesh.unsubscribe(MSGTYPE_PROGRESS, &bar);
    return seconds.count();
}

void printSummary(Norvik_2D& mesh, std::size_t numInput, double seconds) {
    // Of collinear points there is no hull, and asking for it would be told as a mistake.
    std::vector<Point2*> hull;
    if (mesh.is2D()) mesh.getConvexHull(true, hull);
    const std::size_t numPoints = mesh.numberOfPoints();
    std::cout << "points: " << numPoints << "\nduplicates: " << numInput - numPoints
              << "\ntriangles: " << mesh.numberOfTriangles() << "\nhull vertices: " << hull.size()
              << "\nseconds: " << seconds << std::endl;
}

void writePicture(Norvik_2D& mesh, const std::string& path) {
    if (!mesh.is2D()) throw BadOutput(path + ": no picture, there are no triangles");
    // The library doesn't report a picture that can't be written.
    if (!std::ofstream(path)) throw BadOutput(path + ": can't be written");
    mesh.show(path);
}

void writePoints(Norvik_2D& mesh, const std::string& path) {
    std::vector<Point2*> vertices;
    mesh.getVertexPointers(vertices);
    const bool bWritten = path.ends_with(".bin") ? writePointsBIN(path.c_str(), vertices)
                                                 : writePointsASCII(path.c_str(), vertices);
    if (!bWritten) throw BadOutput(path + ": can't be written");
}

int triangulate(const Options& options) {
    const std::vector<Point2> points = readPoints(options.input);
    Norvik_2D mesh(static_cast<unsigned int>(points.size()));
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    const double seconds = insertTimed(mesh, points, options);
    printSummary(mesh, points.size(), seconds);
    if (!options.pictureFile.empty()) writePicture(mesh, options.pictureFile);
    if (!options.pointsFile.empty()) writePoints(mesh, options.pointsFile);
    if (options.bCheck && !mesh.checkValidity(true, options.input)) {
        std::cerr << options.input << ": the triangulation is not valid" << std::endl;
        return exitFailure;
    }
    return exitSuccess;
}

void addTriangulate(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand("triangulate", "Triangulate the points of a file");
    pCommand
        ->add_option(
            "INPUT", options.input,
            "Text with `x y` a line, or a binary point file; of a .seg file (`x1 y1 x2 y2` a line) the ends")
        ->required();
    pCommand->add_option("--ps", options.pictureFile, "Draw the triangulation to a PostScript file");
    pCommand->add_option("--points-out", options.pointsFile,
                         "Write the points, each once, as text, or binary if the file is named .bin");
    pCommand
        ->add_option("--threads", options.numThreads, "Threads; 0 means as many as the hardware runs at once")
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
    pCommand->add_flag("--check", options.bCheck, "Check the result: links and empty circles");
    pCommand->add_flag("--progress", options.bProgress, "Show the progress if standard error is a terminal");
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Exact two-dimensional Delaunay triangulation");
    app.set_version_flag("--version", getNorvik2DVersion());
    app.require_subcommand(1);
    addTriangulate(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& reason) {
        return app.exit(reason) == 0 ? exitSuccess : exitUsage;
    }
    try {
        return triangulate(options);
    } catch (const std::exception& reason) {
        std::cerr << reason.what() << std::endl;
        return exitFailure;
    }
}
