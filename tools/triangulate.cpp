#include <iostream>
#include <vector>

#include "commands.h"
#include "inputFiles.h"

using namespace KELMAR_NORVIK2D;

namespace {

void printSummary(Norvik_2D& mesh, std::size_t numInput, double seconds) {
    // Of collinear points there is no hull, and asking for it would be told as a mistake.
    std::vector<Point2*> hull;
    if (mesh.is2D()) mesh.getConvexHull(true, hull);
    const std::size_t numPoints = mesh.numberOfPoints();
    std::cout << "points: " << numPoints << "\nduplicates: " << numInput - numPoints
              << "\ntriangles: " << mesh.numberOfTriangles() << "\nhull vertices: " << hull.size()
              << "\nseconds: " << seconds << std::endl;
}

void writePoints(Norvik_2D& mesh, const std::string& path) {
    std::vector<Point2*> vertices;
    mesh.getVertexPointers(vertices);
    const bool bWritten = path.ends_with(".bin") ? writePointsBIN(path.c_str(), vertices)
                                                 : writePointsASCII(path.c_str(), vertices);
    if (!bWritten) throw BadOutput(path + ": can't be written");
}

}  // namespace

int triangulate(const Options& options) {
    const std::vector<Point2> points = readPoints(options.input);
    Norvik_2D mesh(static_cast<unsigned int>(points.size()));
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    const double seconds = doTimed(mesh, options, [&] { mesh.insert(points); });
    printSummary(mesh, points.size(), seconds);
    writeOutputs(mesh, nullptr, options);
    if (!options.pointsFile.empty()) writePoints(mesh, options.pointsFile);
    return checkIfAsked(mesh, options);
}
