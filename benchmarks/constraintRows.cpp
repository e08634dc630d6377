#include "constraintRows.h"

#include "ConstraintPeer.h"
#include "table.h"

namespace {

enum class Operation { total, enforcement };

struct Workload {
    const char* name;
    Operation operation;
    SegmentSet (*makeSegments)();
    int numRounds;
    double target;
    ConstraintPeerMaker makeOther;
    double tolerance = 0.0;
};

/// Ours takes a segment's end within 1e-6 of a crossing as the crossing, which makes a vertex and a piece less: of the random
/// segments these are 12 of 3,133 crossings. The other takes the rounded crossing as it is.
constexpr double snappedCrossings = 2e-4;

/// Some 3,000 crossings.
SegmentSet shortSegments() { return randomSegments(100000, 0.001); }

const Workload workloads[] = {
    {"constrain/ring/1e5", Operation::total, ringSegments, 21, 0.55, makeCgalOfPoints},
    {"enforce/ring/1e5", Operation::enforcement, ringSegments, 21, 0.6, makeCgalOfPoints},
    {"constrain/random/1e5", Operation::total, shortSegments, 15, 0.7, makeCgalOfSegments, snappedCrossings},
    {"constrain/coastline", Operation::total, coastline, 21, 0.6, makeCgalOfPoints},
};

void measureConstraints(benchmark::State& state, ConstraintPeer& peer, Operation operation,
                        std::size_t numSegments) {
    wakeMemory(2 * numSegments);
    if (operation == Operation::enforcement) peer.insertEnds();
    for (auto _ : state) {
        if (operation == Operation::enforcement)
            peer.enforce();
        else
            peer.constrain();
    }
    state.counters["vertices"] = static_cast<double>(peer.numberOfVertices());
    state.counters["pieces"] = static_cast<double>(peer.numberOfConstrainedEdges());
    peer.clear();
    returnMemory();
}

bool measure(const Workload& workload) {
    const SegmentSet segments = workload.makeSegments();
    const auto runOf = [&](ConstraintPeer* pPeer) -> Run {
        if (pPeer == nullptr) return {};
        pPeer->setInput(segments);
        return [&, pPeer](benchmark::State& state) {
            measureConstraints(state, *pPeer, workload.operation, segments.size());
        };
    };
    const std::unique_ptr<ConstraintPeer> pOurs = makeNorvik2dConstrained();
    const std::unique_ptr<ConstraintPeer> pOther = workload.makeOther();
    const Row row{.name = workload.name,
                  .count = segments.size(),
                  .numRounds = workload.numRounds,
                  .target = workload.target,
                  .tolerance = workload.tolerance};
    return measureRow(row, runOf(pOurs.get()), runOf(pOther.get()));
}

}  // namespace

std::vector<NamedRow> constraintRows() {
    std::vector<NamedRow> rows;
    for (const Workload& workload : workloads)
        rows.push_back({workload.name, [&workload] { return measure(workload); }});
    return rows;
}
