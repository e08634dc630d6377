#pragma once

#include <cstddef>
#include <vector>

#include "Point2.h"
#include "Segment2.h"
#include "norvikExport.h"

/// Repeatable input for experiments, made with rand(): the same seed gives the same data on the same
/// platform. With a seed of 0 each call differs. Minima must lie below maxima, otherwise an assertion fails
/// (NorvikException).
namespace KELMAR_NORVIK2D {

/// Replaces the content of `numbers` by `n` values in [min, max].
NORVIK2D_EXPORT void generateRandomNumbers(std::size_t n, double min, double max,
                                           std::vector<double>& numbers, unsigned seed);

/// Appends `n` points of the square [min, max] x [min, max].
NORVIK2D_EXPORT void generateRandomPoints(std::size_t n, double min, double max, std::vector<Point2>& points,
                                          unsigned seed);

/// Appends segments until `segments` holds `n`. Each starts in the square, has the length `maxLength`, 0.8 or
/// 0.5 of it, and may leave the square. `maxLength` must be positive (assertion).
NORVIK2D_EXPORT void generateRandomSegments(std::size_t n, double min, double max, double maxLength,
                                            std::vector<Segment2>& segments, unsigned seed);

/// Replaces `segments` by a simple polygon of that many segments (at least three, by assertion) in walking order, with its
/// inside on the left: the border of a region grown in a random triangulation. Its x lies in [min, max], its y between 0.98
/// of these, but for up to three vertices that may lie 2 percent of the range outside; where such a band doesn't meet the
/// random points, as in 100 to 101, a warning, and `segments` is empty.
NORVIK2D_EXPORT void generateRandomPolygon(std::size_t numSegments, double min, double max,
                                           std::vector<Segment2>& segments, unsigned seed);

/// Appends the points of an axis-parallel ellipse counterclockwise from (x + radiusX, y). No points give a
/// warning.
NORVIK2D_EXPORT void generateCircle(int numPoints, double x, double y, double radiusX, double radiusY,
                                    std::vector<Point2>& points);

/// Appends a sine curve as a chain of `numSegments` segments (at least one, by assertion): x is the angle in
/// radians, y its sine, each scaled and moved; with a `yFactor` of 0 y is the sine's absolute value, only
/// moved. `bSwapXY` exchanges the coordinates.
NORVIK2D_EXPORT void generateSineSegments(int numSegments, int numPeriods, double xOffset, double yOffset,
                                          double xFactor, double yFactor, bool bSwapXY,
                                          std::vector<Segment2>& segments);

}  // namespace KELMAR_NORVIK2D
