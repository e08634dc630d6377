// Measures the library against another triangulator and prints a table of ratios; README.md tells how.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Peer.h"
#include "boxRows.h"
#include "checkRows.h"
#include "constraintRows.h"
#include "exchangeRows.h"
#include "meshRows.h"
#include "pointSets.h"
#include "table.h"
#include "zoneRows.h"

namespace {

enum class Operation { insertion, location, sortedLocation, removal };

/// One row of the table.
struct Workload {
    const char* name;
    Operation operation;
    PointSet (*makePoints)(std::size_t);
    std::size_t numPoints;
    int numRounds;
    /// The highest ratio of our time to the other's that satisfies us; 0 if the row is for information.
    double target;
    PeerMaker makeOurs = makeNorvik2d;
    PeerMaker makeOther = makeCgal;
    Clock clock = Clock::cpu;
};

constexpr std::size_t million = 1000000;
constexpr std::size_t numQueries = million;
constexpr double targetBytes = 190.0;

const Workload workloads[] = {
    {"insert/uniform/1e5", Operation::insertion, uniformPoints, million / 10, 21, 0.0},
    {"insert/uniform/1e6", Operation::insertion, uniformPoints, million, 11, 0.45},
    {"insert/clustered/1e5", Operation::insertion, clusteredPoints, million / 10, 21, 0.0},
    {"insert/clustered/1e6", Operation::insertion, clusteredPoints, million, 11, 0.60},
    {"insert/grid/1e5", Operation::insertion, gridPoints, million / 10, 21, 0.0},
    {"insert/grid/1e6", Operation::insertion, gridPoints, million, 11, 0.55},
    {"insert/circle+lines/1e5", Operation::insertion, circleAndLines, million / 10, 21, 0.0},
    {"insert/circle+lines/1e6", Operation::insertion, circleAndLines, million, 11, 1.1},
    {"2threads/uniform/1e6", Operation::insertion, uniformPoints, million, 11, 0.31,
     makeNorvik2dWithTwoThreads, makeCgal, Clock::wall},
    {"2threads/clustered/1e6", Operation::insertion, clusteredPoints, million, 11, 0.45,
     makeNorvik2dWithTwoThreads, makeCgal, Clock::wall},
    {"2of1threads/uniform/1e6", Operation::insertion, uniformPoints, million, 11, 0.68,
     makeNorvik2dWithTwoThreads, makeNorvik2d, Clock::wall},
    {"2of1threads/uniform/5e6", Operation::insertion, uniformPoints, 5 * million, 5, 0.68,
     makeNorvik2dWithTwoThreads, makeNorvik2d, Clock::wall},
    {"locate/random/1e6", Operation::location, uniformPoints, million, 7, 0.5, makeNorvik2d,
     makeCgalHierarchy},
    {"locate/sorted/1e6", Operation::sortedLocation, uniformPoints, million, 15, 1.0},
    {"remove/1e5of1e6", Operation::removal, uniformPoints, million, 7, 0.6},
};

constexpr const char* memoryRow = "memory/uniform/1e6";

void cleanUp(Peer& peer) {
    peer.clear();
    returnMemory();
}

void prepare(Peer& peer, const Workload& workload, const PointSet& points) {
    peer.setInput(points);
    if (workload.operation == Operation::insertion || workload.operation == Operation::removal) return;
    PointSet queries = uniformQueries(numQueries);
    if (workload.operation == Operation::sortedLocation) sortAlongCurve(queries);
    peer.setQueries(queries);
    peer.insert();
}

void measureInsertion(benchmark::State& state, Peer& peer, std::size_t numPoints) {
    wakeMemory(numPoints);
    for (auto _ : state) peer.insert();
    state.counters["triangles"] = static_cast<double>(peer.numberOfTriangles());
    cleanUp(peer);
}

void measureLocation(benchmark::State& state, Peer& peer) {
    std::size_t numInside = 0;
    for (auto _ : state) numInside = peer.locateQueries();
    state.counters["queries inside"] = static_cast<double>(numInside);
}

void measureRemoval(benchmark::State& state, Peer& peer, const std::vector<std::size_t>& ranks) {
    peer.insert();
    peer.chooseVertices(ranks);
    for (auto _ : state) peer.removeChosen();
    state.counters["triangles"] = static_cast<double>(peer.numberOfTriangles());
    cleanUp(peer);
}

/// Empty without that peer.
Run prepareRun(Peer* pPeer, const Workload& workload, const PointSet& points,
               const std::vector<std::size_t>& ranks) {
    if (pPeer == nullptr) return {};
    prepare(*pPeer, workload, points);
    return [&, pPeer](benchmark::State& state) {
        if (workload.operation == Operation::insertion)
            return measureInsertion(state, *pPeer, workload.numPoints);
        if (workload.operation == Operation::removal) return measureRemoval(state, *pPeer, ranks);
        measureLocation(state, *pPeer);
    };
}

bool measure(const Workload& workload) {
    const PointSet points = workload.makePoints(workload.numPoints);
    std::vector<std::size_t> ranks;
    std::size_t count = points.size();
    if (workload.operation == Operation::removal) {
        count = points.size() / 10;
        ranks = chooseNumbers(count, points.size());
    } else if (workload.operation != Operation::insertion) {
        count = numQueries;
    }
    const std::unique_ptr<Peer> pOurs = workload.makeOurs();
    const std::unique_ptr<Peer> pOther = workload.makeOther();
    const Row row{.name = workload.name,
                  .count = count,
                  .numRounds = workload.numRounds,
                  .target = workload.target,
                  .clock = workload.clock};
    return measureRow(row, prepareRun(pOurs.get(), workload, points, ranks),
                      prepareRun(pOther.get(), workload, points, ranks));
}

// Memory

/// A figure of this process's status, in bytes; "VmRSS:" is resident now, "VmHWM:" was resident at most.
double processStatus(const std::string& key) {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word != key) continue;
        double kibibytes = 0.0;
        status >> kibibytes;
        return kibibytes * 1024.0;
    }
    throw std::runtime_error("/proc/self/status has no " + key);
}

/// Bytes a point beyond the input, at the insertion's peak; -1 without that peer.
double measureMemory(PeerMaker makePeer) {
    const std::unique_ptr<Peer> pPeer = makePeer();
    if (pPeer == nullptr) return -1.0;
    pPeer->setInput(uniformPoints(million));
    returnMemory();
    const double before = processStatus("VmRSS:");
    pPeer->insert();
    return (processStatus("VmHWM:") - before) / static_cast<double>(million);
}

/// Runs this program anew to measure in a process of its own.
double measureMemoryElsewhere(const std::string& option) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    FILE* pPipe = popen(("'" + self + "' " + option).c_str(), "r");
    if (pPipe == nullptr) throw std::runtime_error("can't start " + self);
    double bytes = std::numeric_limits<double>::quiet_NaN();
    const int numRead = std::fscanf(pPipe, "%lf", &bytes);
    if (pclose(pPipe) != 0 || numRead != 1) throw std::runtime_error(self + " " + option + " failed");
    return bytes;
}

/// There is nothing that both could disagree about.
bool reportMemory() {
    const double ours = measureMemoryElsewhere("--memory-of=norvik2d");
    const double other = measureMemoryElsewhere("--memory-of=CGAL");
    printFigures({.name = memoryRow, .unit = "B", .count = million, .target = targetBytes}, ours, other);
    return true;
}

/// No words choose everything.
bool isChosen(std::string_view row, const std::vector<std::string_view>& words) {
    const auto contains = [&](std::string_view word) { return row.find(word) != std::string_view::npos; };
    return words.empty() || std::any_of(words.begin(), words.end(), contains);
}

std::vector<NamedRow> allRows() {
    std::vector<NamedRow> rows;
    for (const Workload& workload : workloads)
        rows.push_back({workload.name, [&workload] { return measure(workload); }});
    for (const std::vector<NamedRow>& more :
         {constraintRows(), zoneRows(), checkRows(), boxRows(), meshRows(), exchangeRows()})
        rows.insert(rows.end(), more.begin(), more.end());
    rows.push_back({memoryRow, reportMemory});
    return rows;
}

/// Returns whether all comparisons were fair.
bool makeTable(const std::vector<std::string_view>& words) {
    std::vector<NamedRow> rows = allRows();
    std::erase_if(rows, [&](const NamedRow& row) { return !isChosen(row.name, words); });
    if (rows.empty()) throw std::invalid_argument("no workload has such a name");
    bool bFair = true;
    printHead();
    for (const NamedRow& row : rows) bFair = row.measure() && bFair;
    return bFair;
}

}  // namespace

/// Arguments choose the rows whose names contain one of them.
int main(int argc, char** argv) {
    try {
        benchmark::Initialize(&argc, argv);
        const std::vector<std::string_view> words(argv + 1, argv + argc);
        if (words.size() == 1 && words[0].starts_with("--memory-of=")) {
            std::printf("%f\n", measureMemory(words[0].ends_with("CGAL") ? makeCgal : makeNorvik2d));
            return 0;
        }
        return makeTable(words) ? 0 : 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "norvik2d_bench: %s\n", e.what());
        return 1;
    }
}
