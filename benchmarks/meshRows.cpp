#include "meshRows.h"

#include <memory>

#include "MeshPeer.h"
#include "table.h"

namespace {

// The other is limited by the length of edges, at which, found by trial, it makes as many triangles.
constexpr MeshLimits angle20{20.0, 0.0, 0.0};
constexpr MeshLimits angle30{30.0, 0.0, 0.0};
constexpr MeshLimits area1e5{20.0, 0.46, 1.21};
constexpr MeshLimits area1e6{20.0, 0.046, 0.383};

/// How much the numbers of triangles of both may differ where they are meant to be the same.
constexpr double sameCount = 0.03;
constexpr double anyCount = 1.0;

struct Workload {
    const char* name;
    MeshLimits ours, other;
    int numRounds;
    double target;
    double countTolerance;
    MeshPeerMaker makeOther = makeCgalMesh;
};

const Workload workloads[] = {
    {"mesh/angle20", angle20, angle20, 21, 0.0, anyCount},
    {"mesh/angle30", angle30, angle30, 21, 0.0, anyCount},
    {"mesh/area/1e5", area1e5, area1e5, 7, 0.6, sameCount},
    {"mesh/area/1e6", area1e6, area1e6, 3, 0.25, sameCount},
    {"mesh/area/1e6of1e5", area1e6, area1e5, 3, 1.5, anyCount, makeNorvik2dMesh},
};

struct Comparison {
    const char* name;
    MeshLimits limits;
};

const Comparison comparisons[] = {{"mesh/count/angle20", angle20}, {"mesh/count/angle30", angle30}};

void measureRefinement(benchmark::State& state, MeshPeer& peer, const MeshLimits& limits) {
    constexpr std::size_t somePoints = 500000;
    peer.setDomain(meshDomain());
    wakeMemory(somePoints);
    for (auto _ : state) peer.refine(limits);
    state.counters["triangles"] = static_cast<double>(peer.numberOfTriangles());
    state.counters["bad triangles"] = static_cast<double>(peer.numberOfBadTriangles(limits.minAngleDegree));
    peer.clear();
    returnMemory();
}

bool measure(const Workload& workload) {
    const auto runOf = [](MeshPeer* pPeer, const MeshLimits& limits) -> Run {
        if (pPeer == nullptr) return {};
        return [=](benchmark::State& state) { measureRefinement(state, *pPeer, limits); };
    };
    const std::unique_ptr<MeshPeer> pOurs = makeNorvik2dMesh();
    const std::unique_ptr<MeshPeer> pOther = workload.makeOther();
    const Row row{.name = workload.name,
                  .numRounds = workload.numRounds,
                  .target = workload.target,
                  .countedBy = "triangles",
                  .countTolerance = workload.countTolerance};
    return measureRow(row, runOf(pOurs.get(), workload.ours), runOf(pOther.get(), workload.other));
}

/// How many triangles each makes of the domain; -1 without that peer.
double countTriangles(MeshPeerMaker makePeer, const MeshLimits& limits) {
    const std::unique_ptr<MeshPeer> pPeer = makePeer();
    if (pPeer == nullptr) return -1.0;
    pPeer->setDomain(meshDomain());
    pPeer->refine(limits);
    return static_cast<double>(pPeer->numberOfTriangles());
}

bool compare(const Comparison& comparison) {
    printFigures({.name = comparison.name, .unit = "T", .digits = 0},
                 countTriangles(makeNorvik2dMesh, comparison.limits),
                 countTriangles(makeCgalMesh, comparison.limits));
    return true;
}

}  // namespace

std::vector<NamedRow> meshRows() {
    std::vector<NamedRow> rows;
    for (const Workload& workload : workloads)
        rows.push_back({workload.name, [&workload] { return measure(workload); }});
    for (const Comparison& comparison : comparisons)
        rows.push_back({comparison.name, [&comparison] { return compare(comparison); }});
    return rows;
}
