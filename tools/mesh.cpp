#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "commands.h"
#include "domain.h"
#include "exports.h"
#include "inputFiles.h"
#include "meshQuality.h"
#include "outputMesh.h"
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

/// The vertices and the outline of given triangles. They are not refined as they are imported: then some of their inner edges are
/// constraints where they have holes.
void addGivenTriangles(const std::string& path, Input& input) {
    Norvik_2D given;
    const Subject subject{importTriangles(given, readTriangles(path), path, true, false), {}, true};
    IndexedMesh taken = takeMesh(given, subject);
    for (const auto& [src, trg] : taken.constraints)
        input.segments.emplace_back(taken.points[src], taken.points[trg]);
    input.points = std::move(taken.points);
    input.holes = std::move(taken.holes);
    input.bEnclosed = true;
}

}  // namespace

int meshInput(const Input& input, const Options& options, const std::string& about) {
    Norvik_2D mesh(static_cast<unsigned int>(input.points.size() + input.segments.size()));
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    Rings rings;
    // Refinement asks for one graph around all of it.
    Zone2* const pDomain = makeDomain(mesh, input, rings, options.input)->convertToBoundedZone();
    if (pDomain == nullptr) throw std::runtime_error(options.input + ": the domain is too thin for doubles");
    MeshGenParams params = makeParams(pDomain, options.mesh);
    const double seconds = doTimed(mesh, options, [&] { mesh.refineAdvanced(&params); });

    std::cout << about << "rings: " << rings.vRings.size() << "\nsegments in no ring: " << rings.vLoose.size()
              << "\ndegenerate: " << input.numDegenerate << '\n';
    printSummary(mesh, params, options);
    std::cout << "seconds: " << seconds << std::endl;
    writeOutputs(mesh, pDomain, options, false);
    exportTo(mesh, Subject{pDomain, {}, false}, options);
    return checkIfAsked(mesh, options);
}

int makeMesh(const Options& options) {
    Input input;
    if (holdsTriangles(options.input))
        addGivenTriangles(options.input, input);
    else
        addDrawing(readSegments(options.input), input);
    return meshInput(input, options);
}
