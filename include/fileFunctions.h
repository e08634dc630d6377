#pragma once

#include <vector>

#include "Point2.h"
#include "Segment2.h"
#include "norvikExport.h"

/// Points and segments in plain files. All functions return whether they succeeded; a failure is told on
/// standard output and leaves the vector unchanged. Null pointers among points are left out.
///
/// Text: one point a line, x and y with 18 significant digits, so that a double survives the round trip.
///
/// Binary, without padding, in the byte order of the machine: the file type (32-bit), the number of records
/// (unsigned 64-bit), then the records in 64-bit floats:
///   20  points x y                            30  points x y z
///   21  segments, source x y, target x y      31  segments, source x y z, target x y z
/// Types 20 and 21 are written, all four are read; a third coordinate is dropped. Custom indices aren't
/// stored.
namespace KELMAR_NORVIK2D {

/// Write the points as text, over a file that is there.
NORVIK2D_EXPORT bool writePointsASCII(const char* path, const std::vector<Point2>& points);
NORVIK2D_EXPORT bool writePointsASCII(const char* path, const std::vector<Point2*>& points);

/// Write a binary file, over one that is there.
NORVIK2D_EXPORT bool writePointsBIN(const char* path, std::vector<Point2*>& points);
NORVIK2D_EXPORT bool writePointsBIN(const char* path, std::vector<Point2>& points);
NORVIK2D_EXPORT bool writeSegmentsBIN(const char* path, std::vector<Segment2>& segments);

/// Append the records of a binary file. Of a file that ends early the missing records are appended as zeros;
/// where the number it tells exceeds twice the records present plus 65,536 it counts as unreadable.
NORVIK2D_EXPORT bool readPointsBIN(const char* path, std::vector<Point2>& points);
NORVIK2D_EXPORT bool readSegmentsBIN(const char* path, std::vector<Segment2>& segments);

/// Appends a point for each pair of numbers of a text file, separated by any white space. Ends at the first
/// word that is no number, without a message; the single number of an incomplete pair is dropped.
NORVIK2D_EXPORT bool readXY(const char* path, std::vector<Point2>& points);

}  // namespace KELMAR_NORVIK2D
