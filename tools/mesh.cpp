#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.h"
#include "domain.h"
#include "inputFiles.h"
#include "meshQuality.h"
#include "subject.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// Where no shortest edge is asked for, it is this share of the domain: the library's own is the same for all data, and too long
/// for those in small units.
constexpr double shareOfMinEdge = 1e-5;

MeshGenParams makeParams(Zone2* pDomain, const MeshOptions& options) {
    MeshGenParams params(pDomain);
    const Bbox2 box = pDomain->getBoundingBox();
    const double size = std::max(box.getMaxX() - box.getMinX(), box.getMaxY() - box.getMinY());
    params.minAngleDegree = options.minAngle;
    params.minEdgeLength = options.minEdge > 0.0 ? options.minEdge : shareOfMinEdge * size;
    params.maxEdgeLength = options.maxEdge;
    params.maxTriangleArea = options.maxArea;
    params.bAllowConstraintSplitting = options.bSplit;
    params.growFactor = options.growFactor;
    // Neighbours that are as small as segments that aren't split are there to stay.
    params.growFactorMinArea = params.minEdgeLength * params.minEdgeLength;
    params.gridVector = options.gridDirection;
    params.gridLength = options.gridLength;
    return params;
}

void printQuality(const MeshQuality& quality, const MeshOptions& options) {
    std::cout << "smallest angle: " << quality.smallestAngle << '\n';
    for (std::size_t bin = 0; bin < quality.numAngles.size(); ++bin) {
        if (quality.numAngles[bin] == 0) continue;
        const std::size_t from = bin * MeshQuality::degreesPerBin;
        std::cout << "angles of " << from << " to " << from + MeshQuality::degreesPerBin
                  << " degrees: " << quality.numAngles[bin] << '\n';
    }
    std::cout << "triangles that miss a limit: " << quality.numMissing()
              << "\nof these at a small angle of the input: " << quality.numAtSmallInputAngle
              << "\nof these at a segment "
              << (options.bSplit ? "too short to split" : "that must stay whole") << ": "
              << quality.numAtWholeSegment << "\nof these for other reasons: " << quality.numForOtherReasons
              << '\n';
}

void printSummary(Norvik_2D& mesh, MeshGenParams& params, const Options& options) {
    const Zone2& domain = *params.pZone;
    std::vector<Point2*> vVertices;
    domain.getVertices(vVertices);
    std::cout << "domain: " << describe(domain) << "\nvertices: " << vVertices.size()
              << "\ntriangles: " << domain.getNumberOfTriangles() << "\nmin edge: " << params.minEdgeLength
              << '\n';
    printQuality(measureQuality(mesh, params), options.mesh);
}

/// What the file holds, and the zone of what is meant by it.
Zone2* readDomain(Norvik_2D& mesh, Input& input, Rings& rings, const Options& options) {
    if (holdsTriangles(options.input))
        return importTriangles(mesh, readTriangles(options.input), options.input, true, false);
    addDrawing(readSegments(options.input), input);
    return makeDomain(mesh, input, rings, options.input);
}

/// Refinement asks for one graph around all of it. Zones of given triangles have one for each ring of their border.
Zone2* boundByOneGraph(Norvik_2D& mesh, Zone2* pDomain, const std::string& path) {
    if (pDomain->getZoneLocation() == ZL_INSIDE) {
        std::vector<Triangle2*> vTriangles;
        pDomain->getTriangles(vTriangles);
        pDomain = makeZone(mesh, vTriangles, path);
    }
    Zone2* const pBounded = pDomain->convertToBoundedZone();
    if (pBounded == nullptr) throw std::runtime_error(path + ": the domain is too thin for doubles");
    return pBounded;
}

}  // namespace

int makeMesh(const Options& options) {
    Norvik_2D mesh;
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    Input input;
    Rings rings;
    Zone2* const pDomain = boundByOneGraph(mesh, readDomain(mesh, input, rings, options), options.input);
    MeshGenParams params = makeParams(pDomain, options.mesh);
    const double seconds = doTimed(mesh, options, [&] { mesh.refineAdvanced(&params); });

    std::cout << "rings: " << rings.vRings.size() << "\nsegments in no ring: " << rings.vLoose.size()
              << "\ndegenerate: " << input.numDegenerate << '\n';
    printSummary(mesh, params, options);
    std::cout << "seconds: " << seconds << std::endl;
    writeOutputs(mesh, pDomain, options, false);
    return checkIfAsked(mesh, options);
}
