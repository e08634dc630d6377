#include "checkRows.h"

#include "CheckPeer.h"
#include "table.h"

namespace {

struct Workload {
    const char* name;
    std::size_t numSegments;
    double length;
    int numRounds;
    double target;
    CheckPeerMaker makeOther;
};

const Workload workloads[] = {
    {"check/random/1e5", 100000, 0.005, 21, 0.8, makeBoostChecker},
    {"check/random/1e6", 1000000, 0.0005, 9, 0.8, makeBoostChecker},
    {"check/random/1e5/grid", 100000, 0.005, 21, 0.0, makeGridChecker},
    {"check/random/1e6/grid", 1000000, 0.0005, 9, 0.0, makeGridChecker},
};

bool measure(const Workload& workload) {
    const SegmentSet segments = randomSegments(workload.numSegments, workload.length);
    const auto runOf = [&](CheckPeer* pPeer) -> Run {
        if (pPeer == nullptr) return {};
        pPeer->setInput(segments);
        return [&, pPeer](benchmark::State& state) {
            wakeMemory(segments.size());
            std::size_t numFound = 0;
            for (auto _ : state) numFound = pPeer->findAll();
            state.counters["partners"] = static_cast<double>(numFound);
            returnMemory();
        };
    };
    const std::unique_ptr<CheckPeer> pOurs = makeNorvik2dChecker();
    const std::unique_ptr<CheckPeer> pOther = workload.makeOther();
    const Row row{.name = workload.name,
                  .count = segments.size(),
                  .numRounds = workload.numRounds,
                  .target = workload.target};
    return measureRow(row, runOf(pOurs.get()), runOf(pOther.get()));
}

}  // namespace

std::vector<NamedRow> checkRows() {
    std::vector<NamedRow> rows;
    for (const Workload& workload : workloads)
        rows.push_back({workload.name, [&workload] { return measure(workload); }});
    return rows;
}
