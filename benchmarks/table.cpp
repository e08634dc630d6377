#include "table.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <new>
#include <string>
#include <vector>

namespace {

struct Range {
    double least, most;
};

/// What the rounds of one triangulator gave.
struct Measurements {
    std::vector<double> vSeconds;
    std::map<std::string, Range> mCounters;
};

/// Collects in place of printing.
class Collector : public benchmark::BenchmarkReporter {
public:
    explicit Collector(Clock clock_) : clock(clock_) {}

    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<benchmark::BenchmarkReporter::Run>& runs) override {
        for (const auto& run : runs) {
            Measurements& measurements = mMeasurements[run.run_name.function_name];
            measurements.vSeconds.push_back(clock == Clock::cpu ? run.cpu_accumulated_time
                                                                : run.real_accumulated_time);
            for (const auto& [name, counter] : run.counters) {
                const double value = counter.value;
                const auto place = measurements.mCounters.try_emplace(name, Range{value, value}).first;
                auto& [least, most] = place->second;
                least = std::min(least, value);
                most = std::max(most, value);
            }
        }
    }

    const Measurements& get(const char* name) { return mMeasurements[name]; }

private:
    Clock clock;
    std::map<std::string, Measurements> mMeasurements;
};

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

const char* verdict(bool bMet) { return bMet ? "met" : "MISSED"; }

double countOf(const Row& row, const Measurements& measurements) {
    return row.count > 0 ? static_cast<double>(row.count) : measurements.mCounters.at(row.countedBy).most;
}

/// Nanoseconds for each.
std::vector<double> timesOf(const Row& row, const Measurements& measurements) {
    std::vector<double> times = measurements.vSeconds;
    for (double& time : times) time *= 1e9 / countOf(row, measurements);
    return times;
}

void printTimes(const Row& row, const Measurements& ours, const Measurements* pOther) {
    const std::vector<double> ourTimes = timesOf(row, ours);
    const double ourTime = quartile(ourTimes, 2);
    std::printf("%-28s %9.0f %10.1f ", row.name, countOf(row, ours), ourTime);
    if (pOther == nullptr) {
        std::printf("%10s", "-");
        return;
    }
    const std::vector<double> otherTimes = timesOf(row, *pOther);
    const double otherTime = quartile(otherTimes, 2);
    const double ratio = ourTime / otherTime;
    const std::vector<double> pairs = ratiosOfPairs(ourTimes, otherTimes);
    std::printf("%10.1f %6.3f  %.3f - %.3f ", otherTime, ratio, quartile(pairs, 1), quartile(pairs, 3));
    if (row.target > 0.0)
        std::printf("%6.2f %s", row.target, verdict(ratio <= row.target));
    else
        std::printf("%6s", "-");
}

/// Over all rounds of both.
bool checkCounters(const Row& row, const Measurements& ours, const Measurements& other) {
    bool bSame = true;
    for (const auto& [name, our] : ours.mCounters) {
        const Range& their = other.mCounters.at(name);
        const double least = std::min(our.least, their.least);
        const double most = std::max(our.most, their.most);
        const double tolerance = name == row.countedBy ? row.countTolerance : row.tolerance;
        if (most - least <= tolerance * most) continue;
        std::printf("  DIFFERENT %s: %.0f to %.0f and %.0f to %.0f", name.c_str(), our.least, our.most,
                    their.least, their.most);
        bSame = false;
    }
    return bSame;
}

}  // namespace

void printHead() {
    std::printf("%-28s %9s %10s %10s %6s  %-13s %6s\n", "workload", "count", "norvik2d", "the other", "ratio",
                "middle half", "target");
    std::printf("%-28s %9s %10s %10s %6s  %-13s\n", "", "", "ns each", "ns each", "", "of pairs");
}

/// A round is one run of ours and one of the other, so that a disturbance of the machine hits both.
bool measureRow(const Row& row, const Run& ours, const Run& other) {
    benchmark::RegisterBenchmark("ours", ours)->Iterations(1);
    if (other) benchmark::RegisterBenchmark("other", other)->Iterations(1);
    Collector collector(row.clock);
    for (int round = 0; round < row.numRounds; ++round) benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::ClearRegisteredBenchmarks();

    const Measurements& our = collector.get("ours");
    const Measurements* const pTheir = other ? &collector.get("other") : nullptr;
    printTimes(row, our, pTheir);
    const bool bSame = checkCounters(row, our, pTheir != nullptr ? *pTheir : our);
    std::printf("\n");
    std::fflush(stdout);
    return bSame;
}

void printFigures(const FigureRow& row, double ours, double other) {
    const std::string count = row.count > 0 ? std::to_string(row.count) : "";
    std::printf("%-28s %9s %8.*f %s ", row.name, count.c_str(), row.digits, ours, row.unit);
    if (other >= 0.0)
        std::printf("%8.*f %s %6.3f  ", row.digits, other, row.unit, ours / other);
    else
        std::printf("%10s %6s  ", "-", "");
    if (row.target > 0.0)
        std::printf("%13s %4.0f %s %s\n", "", row.target, row.unit, verdict(ours <= row.target));
    else
        std::printf("%13s %6s\n", "", "-");
    std::fflush(stdout);
}

void wakeMemory(std::size_t numPoints) {
    constexpr std::size_t bytesPerPoint = 256;
    const std::size_t numBytes = numPoints * bytesPerPoint;
    void* const pMemory = mmap(nullptr, numBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pMemory == MAP_FAILED) throw std::bad_alloc();
    madvise(pMemory, numBytes, MADV_HUGEPAGE);
    std::memset(pMemory, 1, numBytes);
    munmap(pMemory, numBytes);
}

void returnMemory() { malloc_trim(0); }
