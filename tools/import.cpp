#include <iostream>
#include <utility>

#include "commands.h"
#include "formats/borders.h"
#include "inputFiles.h"
#include "outputMesh.h"
#include "subject.h"

using namespace KELMAR_NORVIK2D;

namespace {

void printSummary(Norvik_2D& mesh, Zone2& zone, double seconds) {
    const IndexedMesh taken = takeMesh(mesh, {&zone, {}, true});
    const std::vector<BorderPolygon> vParts = findBorders(taken);
    std::size_t numRings = 0;
    for (const BorderPolygon& part : vParts) numRings += part.rings.size();
    std::cout << "mesh: " << describe(zone) << "\npoints: " << taken.points.size()
              << "\ncomponents: " << vParts.size() << "\nborder rings: " << numRings
              << "\npoints in all: " << mesh.numberOfPoints()
              << "\ntriangles in all: " << mesh.numberOfTriangles() << "\nseconds: " << seconds << std::endl;
}

}  // namespace

int importMesh(const Options& options) {
    IndexedMesh given = readTriangles(options.input);
    Norvik_2D mesh(static_cast<unsigned int>(given.points.size()));
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    Zone2* pZone = nullptr;
    const double seconds = doTimed(mesh, options, [&] {
        pZone = importTriangles(mesh, std::move(given), options.input, options.bReorient, options.bKeepBox);
    });
    printSummary(mesh, *pZone, seconds);
    writeOutputs(mesh, pZone, options, options.bKeepBox);
    return checkIfAsked(mesh, options, false);
}
