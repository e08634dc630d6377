#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>

/// The processor time of one thread suffers less from other processes; what more threads gain, only the clock
/// on the wall tells.
enum class Clock { cpu, wall };

/// One row of the table.
struct Row {
    const char* name;
    /// Of what the time is told for each; where each side has a number of its own, 0.
    std::size_t count = 0;
    int numRounds = 1;
    /// The highest ratio of our time to the other's that satisfies us; 0 if the row is for information.
    double target;
    Clock clock = Clock::cpu;
    /// How much the counters may differ, as a share of themselves.
    double tolerance = 0.0;
    /// Without `count`: the counter that tells each side's number, and how much these may differ, as a share of themselves.
    const char* countedBy = "";
    double countTolerance = 0.0;
};

/// A row of figures in place of times.
struct FigureRow {
    const char* name;
    const char* unit;       ///< one letter
    int digits = 1;         ///< behind the point
    std::size_t count = 0;  ///< 0 isn't shown
    double target = 0.0;    ///< the highest of our figures that satisfies us; 0 if the row is for information
};

/// What is measured, in one iteration. Its counters tell what it did; ours and the other must agree about them.
using Run = std::function<void(benchmark::State&)>;

void printHead();

/// Measures and prints a row; a missing `other` is empty. Returns whether both did the same, and the same in each round.
bool measureRow(const Row& row, const Run& ours, const Run& other);

/// A negative `other` is missing.
void printFigures(const FigureRow& row, double ours, double other);

/// Virtual machines give pages that have been idle for some seconds back to their host, which makes the next touch ten
/// times as expensive and hits now one side, now the other. So the memory that a run may need is touched right before it:
/// its pages still cost the kernel's work, as on a machine of one's own.
void wakeMemory(std::size_t numPoints);

/// Gives freed memory back to the system: each run pays for its own pages, as in a process that triangulates
/// once, and none inherits what runs before it left in the heap.
void returnMemory();
