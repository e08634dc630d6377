// Compares very many answers of the predicates with exact signs. Half of the figures are nearly degenerate, which the counts
// prove; callers take the four rounding modes in turn.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "Decisions.h"
#include "PredicateJudge.h"
#include "predicateFigures.h"

namespace {

using predicateFigures::Kind, predicateFigures::kinds;
using Counts = PredicateJudge::Counts;

constexpr std::size_t numKinds = std::size(kinds);

void add(Counts& sum, const Counts& counts) {
    sum.calls += counts.calls;
    sum.figures += counts.figures;
    sum.undecided += counts.undecided;
    sum.zeros += counts.zeros;
}

/// What one thread has found out.
struct Findings {
    Counts ofKind[numKinds];
    PredicateJudge::CountsOfFamily ofFamily[PredicateJudge::NUM_FAMILIES];
    std::string fault;

    void add(const Findings& other) {
        for (std::size_t i = 0; i < numKinds; ++i) ::add(ofKind[i], other.ofKind[i]);
        for (std::size_t i = 0; i < PredicateJudge::NUM_FAMILIES; ++i)
            for (unsigned j = 0; j < PredicateJudge::numRoundings; ++j)
                ::add(ofFamily[i][j], other.ofFamily[i][j]);
        if (fault.empty()) fault = other.fault;
    }
};

std::uint64_t numCalls(const PredicateJudge& judge) {
    std::uint64_t sum = 0;
    for (int family = 0; family < PredicateJudge::NUM_FAMILIES; ++family)
        for (const Counts& counts : judge.getCounts(static_cast<PredicateJudge::Family>(family)))
            sum += counts.calls;
    return sum;
}

/// Judges figures of one kind until this many calls are done, or one was wrong.
void judgeKind(const Kind& kind, std::uint64_t calls, Decisions& from, PredicateJudge& judge) {
    constexpr unsigned batch = 64;
    unsigned turn = 0;
    while (numCalls(judge) < calls && judge.getFault().empty())
        for (unsigned i = 0; i < batch && judge.getFault().empty(); ++i) {
            const Figure figure = kind.make(from);
            ++turn;
            for (unsigned family = 0; family < PredicateJudge::NUM_FAMILIES; ++family)
                if ((kind.families >> family & 1U) != 0)
                    judge.judge(static_cast<PredicateJudge::Family>(family), figure,
                                {turn % PredicateJudge::numRoundings, turn / 4 % 2 == 1});
        }
}

Findings run(std::uint64_t calls, std::uint64_t seed) {
    Findings findings;
    Decisions from(seed);
    for (std::size_t i = 0; i < numKinds && findings.fault.empty(); ++i) {
        PredicateJudge judge;
        judgeKind(kinds[i], static_cast<std::uint64_t>(static_cast<double>(calls) * kinds[i].share / 1000.0),
                  from, judge);
        if (!judge.getFault().empty()) findings.fault = kinds[i].name + (": " + judge.getFault());
        for (std::size_t j = 0; j < PredicateJudge::NUM_FAMILIES; ++j)
            for (unsigned k = 0; k < PredicateJudge::numRoundings; ++k) {
                const Counts& counts = judge.getCounts(static_cast<PredicateJudge::Family>(j))[k];
                add(findings.ofKind[i], counts);
                add(findings.ofFamily[j][k], counts);
            }
    }
    return findings;
}

void printRow(const std::string& name, const Counts& counts) {
    const auto percent = [&](std::uint64_t part) {
        return 100.0 * static_cast<double>(part) /
               static_cast<double>(std::max<std::uint64_t>(counts.figures, 1));
    };
    std::cout << std::left << std::setw(34) << name << std::right << std::setw(12) << counts.calls
              << std::fixed << std::setprecision(1) << std::setw(14) << percent(counts.undecided)
              << std::setw(14) << percent(counts.zeros) << '\n';
}

void print(const Findings& findings) {
    static constexpr const char* families[] = {"orientations", "circles", "segments"};
    static constexpr const char* roundings[] = {"to nearest", "upward", "downward", "toward zero"};
    Counts half[2], sum;
    std::cout << std::left << std::setw(34) << "figures" << std::right << std::setw(12) << "calls"
              << std::setw(14) << "undecided %" << std::setw(14) << "degenerate %" << '\n';
    for (std::size_t i = 0; i < numKinds; ++i) {
        printRow(kinds[i].name, findings.ofKind[i]);
        add(half[kinds[i].bNear ? 1 : 0], findings.ofKind[i]);
    }
    printRow("all nearly degenerate kinds", half[1]);
    printRow("all other kinds", half[0]);
    for (std::size_t i = 0; i < PredicateJudge::NUM_FAMILIES; ++i)
        for (unsigned j = 0; j < PredicateJudge::numRoundings; ++j) {
            printRow(std::string(families[i]) + ", rounding " + roundings[j], findings.ofFamily[i][j]);
            add(sum, findings.ofFamily[i][j]);
        }
    printRow("all", sum);
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Compares answers of the predicates with exact signs.");
    std::uint64_t calls = 100'000'000, seed = 1;
    unsigned numThreads = 1;
    app.add_option("--calls", calls, "how many answers (100000000)");
    app.add_option("--seed", seed, "of all that is random (1)");
    app.add_option("--threads", numThreads, "that share the calls (1)")->check(CLI::Range(1, 64));
    CLI11_PARSE(app, argc, argv);

    std::vector<Findings> findings(numThreads);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < numThreads; ++i)
        threads.emplace_back([&, i] { findings[i] = run(calls / numThreads, 1000 * seed + i); });
    for (std::thread& thread : threads) thread.join();
    for (unsigned i = 1; i < numThreads; ++i) findings[0].add(findings[i]);
    print(findings[0]);
    std::cout << (findings[0].fault.empty() ? "none wrong\n" : "WRONG: " + findings[0].fault + '\n');
    return findings[0].fault.empty() ? 0 : 1;
}
