#include "boxRows.h"

#include <random>

#include "BoxPeer.h"
#include "table.h"

namespace {

constexpr std::size_t numBoxes = 1000000, numQueries = 100000;

enum class Measured { building, questions, both };

struct Workload {
    const char* name;
    Measured measured;
    double target;
};

const Workload workloads[] = {
    {"boxes/build/1e6", Measured::building, 0.0},
    {"boxes/ask/1e5of1e6", Measured::questions, 0.0},
    {"boxes/build+ask/1e6", Measured::both, 1.0},
};

/// At random places of the unit cube, with sides of any length up to this.
SpatialBoxes randomBoxes(std::size_t n, double longestSide, unsigned seed) {
    std::mt19937_64 random(seed);
    const auto unit = [&] { return static_cast<double>(random() >> 11) * 0x1p-53; };
    SpatialBoxes boxes(n);
    for (auto& [min, max] : boxes)
        for (int axis = 0; axis < 3; ++axis) {
            min[axis] = unit();
            max[axis] = min[axis] + longestSide * unit();
        }
    return boxes;
}

Run runOf(BoxPeer* pPeer, Measured measured, const SpatialBoxes& boxes, const SpatialBoxes& queries) {
    if (pPeer == nullptr) return {};
    return [&, pPeer, measured](benchmark::State& state) {
        wakeMemory(boxes.size());
        if (measured == Measured::questions) pPeer->build(boxes);
        std::size_t numFound = 0;
        for (auto _ : state) {
            if (measured != Measured::questions) pPeer->build(boxes);
            if (measured != Measured::building) numFound = pPeer->countMeetings(queries);
        }
        state.counters["found"] = static_cast<double>(numFound);
        pPeer->clear();
        returnMemory();
    };
}

bool measure(const Workload& workload) {
    const SpatialBoxes boxes = randomBoxes(numBoxes, 0.01, 1), queries = randomBoxes(numQueries, 0.03, 2);
    const std::unique_ptr<BoxPeer> pOurs = makeNorvik2dBoxes(), pOther = makeBoostBoxes();
    const Row row{.name = workload.name,
                  .count = workload.measured == Measured::questions ? queries.size() : boxes.size(),
                  .numRounds = 9,
                  .target = workload.target};
    return measureRow(row, runOf(pOurs.get(), workload.measured, boxes, queries),
                      runOf(pOther.get(), workload.measured, boxes, queries));
}

}  // namespace

std::vector<NamedRow> boxRows() {
    std::vector<NamedRow> rows;
    for (const Workload& workload : workloads)
        rows.push_back({workload.name, [&workload] { return measure(workload); }});
    return rows;
}
