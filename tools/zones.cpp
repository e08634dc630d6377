#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "commands.h"
#include "inputFiles.h"
#include "ringGraphs.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// Of so many rings at most the areas are listed.
constexpr std::size_t maxListed = 20;

/// A zone that was asked for, or the result.
struct NamedZone {
    std::string name;
    Zone2* pZone;
};

std::size_t countRingZones(const Options& options) {
    return static_cast<std::size_t>(std::count_if(options.vZones.begin(), options.vZones.end(),
                                                  [](const ZoneRequest& r) { return r.kind != ZL_GROW; }));
}

/// Refuses what has no answer, before anything is made of it.
void checkRequests(const Options& options, const Rings& rings) {
    const auto fail = [&](const std::string& reason) { throw BadInput(options.input + ": " + reason); };
    const std::size_t numRingZones = countRingZones(options);
    const std::size_t numRings = rings.vRings.size();
    if (numRingZones > numRings)
        fail("no ring " + std::to_string(numRings + 1) + " for a zone; " + std::to_string(numRings) +
             " are closed, " + std::to_string(rings.vLoose.size()) + " segments are in none");
    for (std::size_t i = 0; i < numRingZones; ++i)
        if (!isSimplePolygon(rings.vRings[i])) fail(crossesItself(i));
}

std::vector<NamedZone> makeZones(Norvik_2D& mesh, const Graphs& graphs, const Options& options) {
    if (!options.vZones.empty() && !mesh.is2D())
        throw BadInput(options.input + ": no zones, there are no triangles");
    std::vector<NamedZone> vZones;
    std::size_t numRings = 0;
    for (const ZoneRequest& request : options.vZones) {
        const std::string number = "zone " + std::to_string(vZones.size() + 1) + ", ";
        if (request.kind == ZL_GROW) {
            vZones.push_back({number + "around a seed", mesh.createZone(graphs.vAll, ZL_GROW, request.seed)});
            continue;
        }
        const std::string side = request.kind == ZL_INSIDE ? "inside" : "outside";
        Zone2* const pZone = mesh.createZone(graphs.vRings[numRings], request.kind);
        vZones.push_back({number + side + " of ring " + std::to_string(++numRings), pZone});
    }
    if (options.pOperation == nullptr) return vZones;
    const auto& [name, combine] = *options.pOperation;
    vZones.push_back({name, combine(vZones.at(0).pZone, vZones.at(1).pZone)});
    return vZones;
}

void listRings(Norvik_2D& mesh, const Rings& rings, const Graphs& graphs) {
    for (std::size_t i = 0; i < rings.vRings.size(); ++i) {
        if (i == maxListed) {
            std::cout << "and " << rings.vRings.size() - maxListed << " more rings\n";
            return;
        }
        std::cout << "ring " << i + 1 << ": segments " << rings.vRings[i].size() << ", ";
        if (isSimplePolygon(rings.vRings[i]))
            std::cout << describe(*mesh.createZone(graphs.vRings[i], ZL_INSIDE)) << '\n';
        else
            std::cout << "crosses itself\n";
    }
}

}  // namespace

int zones(const Options& options) {
    Input input;
    if (!options.pointsInput.empty()) input.points = readPoints(options.pointsInput);
    addDrawing(readSegments(options.input), input);
    const Rings rings = findRings(input.segments);
    checkRequests(options, rings);

    Norvik_2D mesh(static_cast<unsigned int>(input.points.size() + input.segments.size()));
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    Graphs graphs;
    const double seconds = doTimed(mesh, options, [&] { graphs = insertAll(mesh, input, rings); });
    const std::vector<NamedZone> vZones = makeZones(mesh, graphs, options);
    for (const auto& [name, pZone] : vZones)
        if (pZone == nullptr) throw std::runtime_error(options.input + ": " + name + ": can't be made");

    std::cout << "rings: " << rings.vRings.size() << "\nsegments in no ring: " << rings.vLoose.size()
              << "\ndegenerate: " << input.numDegenerate << "\npoints: " << mesh.numberOfPoints()
              << "\ntriangles: " << mesh.numberOfTriangles() << '\n';
    if (vZones.empty()) listRings(mesh, rings, graphs);
    for (const auto& [name, pZone] : vZones) std::cout << name << ": " << describe(*pZone) << '\n';
    std::cout << "seconds: " << seconds << std::endl;
    writeOutputs(mesh, vZones.empty() ? nullptr : vZones.back().pZone, options);
    return checkIfAsked(mesh, options);
}
