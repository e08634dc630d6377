#include "MTCtrl.h"

#include <gtest/gtest.h>

#include <atomic>

#include "Dt2.h"
#include "hardPoints.h"

using namespace KELMAR_NORVIK2D;

namespace {

struct CountingTask {
    std::atomic<int> numRuns{0};
    int place = -1;
    static inline std::atomic<int> numStarted{0};

    void go() {
        place = numStarted++;
        ++numRuns;
    }
};

/// The vault's active items after the points have been stored by this many threads: keys, coordinates and custom indices.
/// Losers among equal points may stay in the list behind the first of four ranges.
std::vector<std::tuple<std::uint32_t, double, double, int>> storedList(const std::vector<Point2>& points,
                                                                       int numCPU) {
    Dt2 dt2(3);
    dt2.setNumCPU(numCPU);
    std::vector<Point2*> handles;
    dt2.insertToVVault(points, &handles);
    for (std::size_t i = 0; i < points.size(); ++i)
        EXPECT_TRUE(*handles[i] == points[i] &&
                    (i % 50 == 0 || handles[i]->customIndex == static_cast<int>(i)));
    std::vector<std::tuple<std::uint32_t, double, double, int>> result;
    for (const IdxVtxAct* pItem : *dt2.getVertexVault().getData()) {
        if (pItem->bAct)
            result.emplace_back(pItem->nic, pItem->pVtx->x(), pItem->pVtx->y(), pItem->pVtx->customIndex);
    }
    return result;
}

}  // namespace

TEST(MTCtrl, RunsEachTaskOnceWhateverTheNumberOfThreads) {
    for (const std::size_t numTasks : {0U, 1U, 3U, 100U})
        for (const int numThreads : {1, 2, 8}) {
            std::vector<CountingTask> tasks(numTasks);
            MTCtrl<CountingTask>(tasks).run(numThreads, &CountingTask::go);
            for (const CountingTask& task : tasks) EXPECT_EQ(task.numRuns, 1);
        }
}

TEST(MTCtrl, TasksStartInTheOrderOfTheirAddresses) {
    CountingTask::numStarted = 0;
    std::vector<CountingTask> tasks(20);
    MTCtrl<CountingTask>(tasks).run(1, &CountingTask::go);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(tasks[static_cast<std::size_t>(i)].place, i);
}

TEST(MTCtrl, TheFirstExceptionOfATaskEndsTheJobAndReachesTheCaller) {
    struct FailingTask {
        int number = 0;
        bool bRan = false;
        void go() {
            bRan = true;
            if (number >= 3) throw std::bad_alloc();
        }
    };
    for (const int numThreads : {1, 2, 8}) {
        std::vector<FailingTask> tasks(100);
        for (int i = 0; i < 100; ++i) tasks[static_cast<std::size_t>(i)].number = i;
        EXPECT_THROW(MTCtrl<FailingTask>(tasks).run(numThreads, &FailingTask::go), std::bad_alloc);
        const auto numRun =
            std::count_if(tasks.begin(), tasks.end(), [](const FailingTask& task) { return task.bRan; });
        EXPECT_LE(numRun, 3 + numThreads) << "each thread ends with the task that fails";
        EXPECT_TRUE(tasks[3].bRan);
    }
}

TEST(MTCtrl, ManyThreadsPrepareTheListOfOne) {
    // Sizes at the limits from which keys, sorts and filling go to threads; clustered, with equal keys and equal points.
    hardPoints::Rng rng(1);
    for (const std::size_t n : {9999U, 10000U, 10001U, 99999U, 100000U, 100003U}) {
        std::vector<Point2> points;
        for (std::size_t i = 0; i < n; ++i) {
            const double center = hardPoints::below(rng, 5), spread = i % 3 == 0 ? 1.0 : 1e-7;
            points.emplace_back(center + spread * hardPoints::unit(rng),
                                center * spread + hardPoints::unit(rng), static_cast<int>(i));
            if (i % 50 == 0) points.back() = Point2(center, center, -2);
        }
        const auto list = storedList(points, 1);
        EXPECT_TRUE(std::is_sorted(list.begin(), list.end(),
                                   [](const auto& a, const auto& b) { return get<0>(a) < get<0>(b); }));
        for (const int numCPU : {3, 4, 8})
            EXPECT_TRUE(storedList(points, numCPU) == list) << n << " on " << numCPU;
    }
}

TEST(MTCtrl, FewKeysLeaveSomeOfTheFourRangesEmpty) {
    for (const int numKeys : {1, 2, 3}) {
        std::vector<Point2> points{{-1, -1, 0}, {10, 10, 1}};
        for (int i = 2; i < 12000; ++i) points.emplace_back(i % numKeys, 1e-9 * i, i);
        EXPECT_TRUE(storedList(points, 4) == storedList(points, 1)) << numKeys;
    }
}
