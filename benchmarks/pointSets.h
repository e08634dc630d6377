#pragma once

#include <cstddef>
#include <vector>

/// Input for the benchmarks. All sets are repeatable, and in an order that has nothing to do with their
/// geometry.
struct Coordinates {
    double x, y;
};

using PointSet = std::vector<Coordinates>;

/// Uniform in the unit square.
PointSet uniformPoints(std::size_t n);

/// Another uniform set, to be located among the first.
PointSet uniformQueries(std::size_t n);

/// 100 round Gaussian clusters in the unit square; the logarithms of their standard deviations are spread
/// evenly from 1e-6 to 1e-2.
PointSet clusteredPoints(std::size_t n);

/// A square grid of integers: the largest that has at most `n` points.
PointSet gridPoints(std::size_t n);

/// One half on the unit circle but for rounding, at the hull or next to it; the other half on ten straight
/// lines inside, five of them parallel to an axis.
PointSet circleAndLines(std::size_t n);

/// Brings points of the unit square into the order of a Hilbert curve.
void sortAlongCurve(PointSet& points);

/// `numChosen` different numbers below `n`, in random order.
std::vector<std::size_t> chooseNumbers(std::size_t numChosen, std::size_t n);
