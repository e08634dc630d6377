#pragma once

#include <algorithm>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "byAddress.h"

namespace KELMAR_NORVIK2D {

/// Hands the tasks of one job to a fixed number of threads, in the order of the tasks' addresses, and joins
/// them. The tasks belong to the caller; each writes only where no other one does, so they need no lock.
template <class T>
class MTCtrl {
public:
    explicit MTCtrl(std::vector<T*> vTasks) : vPending(std::move(vTasks)) {
        std::sort(vPending.begin(), vPending.end(),
                  [](const T* pA, const T* pB) { return ByAddress{}(pB, pA); });
    }
    explicit MTCtrl(std::vector<T>& vTasks) : MTCtrl(pointersTo(vTasks)) {}

    /// Runs `method` of every task on `numThreads` threads and returns when all are done. Where the system
    /// refuses to start a thread the job goes on with those that run, in the end with the caller's own. The first exception
    /// that leaves a task is thrown on here, when all threads have ended; tasks that haven't started by then never do.
    void run(int numThreads, void (T::*method)()) {
        std::vector<std::thread> vWorkers;
        vWorkers.reserve(static_cast<std::size_t>(numThreads));
        try {
            for (int i = 0; i < numThreads; ++i) vWorkers.emplace_back([this, method] { startCPU(method); });
        } catch (...) {
            startCPU(method);
        }
        for (std::thread& worker : vWorkers) worker.join();
        if (pFailure != nullptr) std::rethrow_exception(pFailure);
    }

private:
    static std::vector<T*> pointersTo(std::vector<T>& vTasks) {
        std::vector<T*> vPointers;
        for (T& task : vTasks) vPointers.push_back(&task);
        return vPointers;
    }

    void startCPU(void (T::*method)()) noexcept {
        try {
            while (T* pTask = takeTask()) (pTask->*method)();
        } catch (...) {
            giveUp(std::current_exception());
        }
    }

    void giveUp(std::exception_ptr pReason) {
        const std::lock_guard lock(mutex);
        if (pFailure == nullptr) pFailure = std::move(pReason);
        vPending.clear();
    }

    T* takeTask() {
        const std::lock_guard lock(mutex);
        if (vPending.empty()) return nullptr;
        T* pTask = vPending.back();
        vPending.pop_back();
        return pTask;
    }

    std::mutex mutex;
    std::vector<T*> vPending;  ///< greatest address first: taken from the back
    std::exception_ptr pFailure;
};

}  // namespace KELMAR_NORVIK2D
