#include <algorithm>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <unordered_set>
#include <vector>

#include "commands.h"
#include "inputFiles.h"
#include "meshQuality.h"
#include "ringGraphs.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// Where no shortest edge is asked for, it is this share of the domain: the library's own is the same for all data, and too long
/// for those in small units.
constexpr double shareOfMinEdge = 1e-5;

void checkRings(const Options& options, const Rings& rings) {
    const auto fail = [&](const std::string& reason) { throw BadInput(options.input + ": " + reason); };
    if (rings.vRings.empty()) fail("no closed ring, there is no domain");
    for (std::size_t i = 0; i < rings.vRings.size(); ++i)
        if (!isSimplePolygon(rings.vRings[i])) fail(crossesItself(i));
}

/// What an odd number of rings contains. Refinement asks for one graph around all of it.
Zone2* makeDomain(Norvik_2D& mesh, const Graphs& graphs, const Options& options) {
    std::unordered_set<Triangle2*> sDomain;
    std::vector<Triangle2*> vInside;
    for (ConstraintGraph2* pRing : graphs.vRings) {
        Zone2* const pZone = mesh.createZone(pRing, ZL_INSIDE);
        if (pZone == nullptr) throw std::runtime_error(options.input + ": a ring has no inside");
        vInside.clear();
        pZone->getTriangles(vInside);
        mesh.deleteZone(pZone);
        for (Triangle2* pTriangle : vInside)
            if (!sDomain.insert(pTriangle).second) sDomain.erase(pTriangle);
    }
    if (sDomain.empty())
        throw BadInput(options.input + ": each ring is taken back by another, there is no domain");
    // Not in the order of a hash table, which would be another one in each run.
    std::vector<Triangle2*> vDomain(sDomain.begin(), sDomain.end());
    std::sort(vDomain.begin(), vDomain.end(), std::less<>());
    Zone2* const pZone = mesh.createZone(vDomain);
    Zone2* const pDomain = pZone != nullptr ? pZone->convertToBoundedZone() : nullptr;
    if (pDomain == nullptr) throw std::runtime_error(options.input + ": the domain is too thin for doubles");
    return pDomain;
}

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

}  // namespace

int makeMesh(const Options& options) {
    Input input;
    addDrawing(readSegments(options.input), input);
    const Rings rings = findRings(input.segments);
    checkRings(options, rings);

    Norvik_2D mesh(static_cast<unsigned int>(input.points.size() + input.segments.size()));
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    Zone2* const pDomain = makeDomain(mesh, insertAll(mesh, input, rings), options);
    MeshGenParams params = makeParams(pDomain, options.mesh);
    const double seconds = doTimed(mesh, options, [&] { mesh.refineAdvanced(&params); });

    std::cout << "rings: " << rings.vRings.size() << "\nsegments in no ring: " << rings.vLoose.size()
              << "\ndegenerate: " << input.numDegenerate << '\n';
    printSummary(mesh, params, options);
    std::cout << "seconds: " << seconds << std::endl;
    writeOutputs(mesh, pDomain, options, false);
    return checkIfAsked(mesh, options);
}
