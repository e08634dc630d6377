// Uses triangulations at random for as long as it is told: many short lives of objects, each repeatable by its number.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <mutex>
#include <thread>
#include <vector>

#include "ApiDriver.h"

namespace {

struct Wish {
    double seconds = 0.0;
    std::uint64_t numOperations = 0;
    unsigned numThreads = 1;
    std::size_t mostVertices = 60;
    unsigned checkEvery = 10;
    unsigned rarity = 20;
    std::uint64_t seed = 1;
    std::uint64_t onlyLife = 0;
    double hangsAfter = 120.0;
};

/// In megabytes.
double residentMemory() {
    std::ifstream file("/proc/self/statm");
    double total = 0.0, resident = 0.0;
    file >> total >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

class Soak {
public:
    explicit Soak(const Wish& wish_) : wish(wish_), start(Clock::now()) {}

    /// Whether all went well.
    bool run() {
        std::vector<std::thread> vThreads;
        std::vector<Current> vCurrent(wish.numThreads);
        for (Current& current : vCurrent) vThreads.emplace_back([this, &current] { work(current); });
        while (!isOver(vCurrent)) std::this_thread::sleep_for(std::chrono::milliseconds(100));
        for (std::thread& thread : vThreads) thread.join();
        const double memory = residentMemory();
        std::cout << numDone << " operations, " << numChecks << " checks, " << numLives << " objects, "
                  << seconds() << " s\nresident memory: " << memoryAtHalf << " MB at half, " << memory
                  << " MB at the end\n";
        if (bFailed) return false;
        if (memoryAtHalf > 0.0 && memory > 1.1 * memoryAtHalf + 32.0) {
            std::cout << "the memory grows" << std::endl;
            return false;
        }
        return true;
    }

    /// One life, with all its operations told. Whether all went well.
    bool repeat() { return live(wish.onlyLife, &std::cout); }

private:
    using Clock = std::chrono::steady_clock;

    double seconds() const { return std::chrono::duration<double>(Clock::now() - start).count(); }
    double progress() const {
        return std::max(wish.numOperations == 0
                            ? 0.0
                            : static_cast<double>(numDone) / static_cast<double>(wish.numOperations),
                        wish.seconds == 0.0 ? 0.0 : seconds() / wish.seconds);
    }

    /// What a thread is at.
    struct Current {
        std::atomic<std::uint64_t> life{0};
        std::atomic<double> began{0.0};
        std::atomic<bool> bOver{false};
    };

    /// Whether all threads have come to their end. One that never does ends the program.
    bool isOver(const std::vector<Current>& vCurrent) const {
        bool bOver = true;
        for (const Current& current : vCurrent) {
            bOver &= current.bOver;
            if (current.bOver || seconds() - current.began < wish.hangsAfter) continue;
            std::cout << "seed " << wish.seed << ", life " << current.life << " hangs" << std::endl;
            std::_Exit(1);
        }
        return bOver;
    }

    void work(Current& current) {
        while (!bFailed && progress() < 1.0) {
            const std::uint64_t life = ++numLives;
            current.life = life;
            current.began = seconds();
            if (!live(life, nullptr)) bFailed = true;
            if (progress() < 0.5) continue;
            const std::lock_guard guard(mutex);
            if (memoryAtHalf == 0.0) memoryAtHalf = residentMemory();
        }
        current.bOver = true;
    }

    bool live(std::uint64_t life, std::ostream* pTrace) {
        constexpr int mostSteps = 500;
        ApiDriver::Options options;
        options.mostVertices = wish.mostVertices;
        options.rarity = wish.rarity;
        options.bManyPoints = life % 512 == 0;
        options.pTrace = pTrace;
        Decisions from(wish.seed * 1000003 + life);
        int step = 0;
        try {
            ApiDriver driver(from, options);
            for (; step < mostSteps && !driver.isFull(); ++step) {
                driver.step();
                if (step % wish.checkEvery != 0) continue;
                driver.check();
                ++numChecks;
            }
            driver.check();
            ++numChecks;
        } catch (const std::exception& exception) {
            const std::lock_guard guard(mutex);
            std::cout << "seed " << wish.seed << ", life " << life << ", step " << step << ": "
                      << exception.what() << "\n"
                      << Hearing::all() << std::endl;
            return false;
        }
        numDone += static_cast<std::uint64_t>(step);
        return true;
    }

    Wish wish;
    Clock::time_point start;
    std::atomic<std::uint64_t> numDone{0}, numChecks{0}, numLives{0};
    std::atomic<bool> bFailed{false};
    std::mutex mutex;
    double memoryAtHalf = 0.0;
};

}  // namespace

int main(int argc, char** argv) {
    Wish wish;
    CLI::App app("Uses triangulations at random, and checks what they promise.");
    app.add_option("--seconds", wish.seconds, "How long");
    app.add_option("--operations", wish.numOperations, "How many operations in all");
    app.add_option("--threads", wish.numThreads, "Threads, each with an object of its own")
        ->capture_default_str();
    app.add_option("--vertices", wish.mostVertices, "How many vertices a mesh has at most")
        ->capture_default_str();
    app.add_option("--check-every", wish.checkEvery, "All laws are checked after so many operations")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--rarity", wish.rarity, "Of refinement, cuts and the like one in so many is done")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--seed", wish.seed, "Another one, other operations")->capture_default_str();
    app.add_option("--life", wish.onlyLife, "Repeat this life of an object only, and tell its operations");
    app.add_option("--hangs-after", wish.hangsAfter, "Seconds after which a life counts as endless")
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    if (wish.seconds == 0.0 && wish.numOperations == 0) wish.seconds = 60.0;
    Soak soak(wish);
    return (wish.onlyLife != 0 ? soak.repeat() : soak.run()) ? 0 : 1;
}
