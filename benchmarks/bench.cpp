// Measures the library against another triangulator and prints a table of ratios; README.md tells how.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Peer.h"
#include "pointSets.h"

namespace {

enum class Operation { insertion, location, sortedLocation, removal };

/// The processor time of one thread suffers less from other processes; what more threads gain, only the clock
/// on the wall tells.
enum class Clock { cpu, wall };

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

/// Gives freed memory back to the system: each run pays for its own pages, as in a process that triangulates
/// once, and none inherits what runs before it left in the heap.
void cleanUp(Peer& peer) {
    peer.clear();
    malloc_trim(0);
}

void prepare(Peer& peer, const Workload& workload, const PointSet& points) {
    peer.setInput(points);
    if (workload.operation == Operation::insertion || workload.operation == Operation::removal) return;
    PointSet queries = uniformQueries(numQueries);
    if (workload.operation == Operation::sortedLocation) sortAlongCurve(queries);
    peer.setQueries(queries);
    peer.insert();
}

/// Virtual machines give pages that have been idle for some seconds back to their host, which makes the next touch ten
/// times as expensive and hits now one side, now the other. So the memory that a run may need is touched right before it:
/// its pages still cost the kernel's work, as on a machine of one's own.
void wakeMemory(std::size_t numPoints) {
    constexpr std::size_t bytesPerPoint = 256;
    const std::size_t numBytes = numPoints * bytesPerPoint;
    void* const pMemory = mmap(nullptr, numBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pMemory == MAP_FAILED) throw std::bad_alloc();
    madvise(pMemory, numBytes, MADV_HUGEPAGE);
    std::memset(pMemory, 1, numBytes);
    munmap(pMemory, numBytes);
}

/// The counter "work" is what both triangulators must agree about.
void measureInsertion(benchmark::State& state, Peer& peer, std::size_t numPoints) {
    wakeMemory(numPoints);
    for (auto _ : state) peer.insert();
    state.counters["work"] = static_cast<double>(peer.numberOfTriangles());
    cleanUp(peer);
}

void measureLocation(benchmark::State& state, Peer& peer) {
    std::size_t numInside = 0;
    for (auto _ : state) numInside = peer.locateQueries();
    state.counters["work"] = static_cast<double>(numInside);
}

void measureRemoval(benchmark::State& state, Peer& peer, const std::vector<std::size_t>& ranks) {
    peer.insert();
    peer.chooseVertices(ranks);
    for (auto _ : state) peer.removeChosen();
    state.counters["work"] = static_cast<double>(peer.numberOfTriangles());
    cleanUp(peer);
}

/// What the rounds of one triangulator gave.
struct Measurements {
    std::vector<double> vSeconds;
    double work = 0.0;
    bool bRepeatable = true;
};

/// Collects in place of printing.
class Collector : public benchmark::BenchmarkReporter {
public:
    explicit Collector(Clock clock_) : clock(clock_) {}

    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            Measurements& measurements = byName[run.run_name.function_name];
            const double work = run.counters.at("work");
            if (!measurements.vSeconds.empty() && work != measurements.work) measurements.bRepeatable = false;
            measurements.work = work;
            measurements.vSeconds.push_back(clock == Clock::cpu ? run.cpu_accumulated_time
                                                                : run.real_accumulated_time);
        }
    }

    const Measurements& get(const std::string& name) { return byName[name]; }

private:
    Clock clock;
    std::map<std::string, Measurements> byName;
};

void registerPeer(const char* name, Peer& peer, const Workload& workload,
                  const std::vector<std::size_t>& ranks) {
    auto run = [&](benchmark::State& state) {
        if (workload.operation == Operation::insertion)
            return measureInsertion(state, peer, workload.numPoints);
        if (workload.operation == Operation::removal) return measureRemoval(state, peer, ranks);
        measureLocation(state, peer);
    };
    benchmark::RegisterBenchmark(name, run)->Iterations(1);
}

/// Half of the values lie below the second quartile, the median.
double quartile(std::vector<double> values, std::size_t which) {
    const auto position = values.begin() + static_cast<std::ptrdiff_t>(values.size() * which / 4);
    std::nth_element(values.begin(), position, values.end());
    return *position;
}

std::vector<double> ratiosOfPairs(const std::vector<double>& a, const std::vector<double>& b) {
    std::vector<double> ratios(a.size());
    std::transform(a.begin(), a.end(), b.begin(), ratios.begin(), std::divides<>());
    return ratios;
}

void printHead() {
    std::printf("%-28s %9s %10s %10s %6s  %-13s %6s\n", "workload", "count", "norvik2d", "the other", "ratio",
                "middle half", "target");
    std::printf("%-28s %9s %10s %10s %6s  %-13s\n", "", "", "ns each", "ns each", "", "of pairs");
}

const char* verdict(bool bMet) { return bMet ? "met" : "MISSED"; }

/// Prints a row; returns whether both did the same, and the same in each round.
bool report(const Workload& workload, std::size_t count, const Measurements& ours,
            const Measurements* pOther) {
    const double perSecond = 1e9 / static_cast<double>(count);
    const double ourTime = quartile(ours.vSeconds, 2) * perSecond;
    std::printf("%-28s %9zu %10.1f ", workload.name, count, ourTime);
    if (pOther == nullptr) {
        std::printf("%10s\n", "-");
        return ours.bRepeatable;
    }
    const double otherTime = quartile(pOther->vSeconds, 2) * perSecond;
    const double ratio = ourTime / otherTime;
    const std::vector<double> pairs = ratiosOfPairs(ours.vSeconds, pOther->vSeconds);
    std::printf("%10.1f %6.3f  %.3f - %.3f ", otherTime, ratio, quartile(pairs, 1), quartile(pairs, 3));
    if (workload.target > 0.0) {
        std::printf("%6.2f %s", workload.target, verdict(ratio <= workload.target));
    } else {
        std::printf("%6s", "-");
    }
    const bool bSame = ours.bRepeatable && pOther->bRepeatable && ours.work == pOther->work;
    if (!bSame) std::printf("  DIFFERENT WORK: %.0f and %.0f", ours.work, pOther->work);
    std::printf("\n");
    return bSame;
}

/// A round is one run of ours and one of the other, so that a disturbance of the machine hits both.
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
    prepare(*pOurs, workload, points);
    registerPeer("ours", *pOurs, workload, ranks);
    if (pOther != nullptr) {
        prepare(*pOther, workload, points);
        registerPeer("other", *pOther, workload, ranks);
    }

    Collector collector(workload.clock);
    for (int round = 0; round < workload.numRounds; ++round) benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::ClearRegisteredBenchmarks();
    return report(workload, count, collector.get("ours"), pOther ? &collector.get("other") : nullptr);
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
    malloc_trim(0);
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

void reportMemory() {
    const double ours = measureMemoryElsewhere("--memory-of=norvik2d");
    const double other = measureMemoryElsewhere("--memory-of=CGAL");
    std::printf("%-28s %9zu %8.1f B ", memoryRow, million, ours);
    if (other > 0.0) {
        std::printf("%8.1f B %6.3f  ", other, ours / other);
    } else {
        std::printf("%10s %6s  ", "-", "");
    }
    std::printf("%13s %4.0f B %s\n", "", targetBytes, verdict(ours <= targetBytes));
}

/// No words choose everything.
bool isChosen(std::string_view row, const std::vector<std::string_view>& words) {
    const auto contains = [&](std::string_view word) { return row.find(word) != std::string_view::npos; };
    return words.empty() || std::any_of(words.begin(), words.end(), contains);
}

/// Returns whether there was something to measure, and all comparisons were fair.
bool makeTable(const std::vector<std::string_view>& words) {
    const auto isWanted = [&](const Workload& workload) { return isChosen(workload.name, words); };
    const bool bMemory = isChosen(memoryRow, words);
    if (!bMemory && std::none_of(std::begin(workloads), std::end(workloads), isWanted)) {
        throw std::invalid_argument("no workload has such a name");
    }
    bool bFair = true;
    printHead();
    for (const Workload& workload : workloads) {
        if (!isWanted(workload)) continue;
        bFair = measure(workload) && bFair;
        std::fflush(stdout);
    }
    if (bMemory) reportMemory();
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
