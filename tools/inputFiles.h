#pragma once

#include <Norvik_2D.h>

#include <stdexcept>
#include <string>
#include <vector>

/// An input file that can't be used; what() tells the file, the line where there is one, and the reason.
class BadInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the points of a file:
///   text       `x y` a line; of a file named .seg `x1 y1 x2 y2`, the ends of a segment. Numbers are separated by blanks
///              and tabs; empty lines count for nothing.
///   binary     a point file as the library writes it, known by its first bytes.
/// Unlike the library's own readers it takes nothing that is doubtful: a word that is no number, too few or too many
/// numbers, coordinates that aren't finite and files that end early throw BadInput.
std::vector<KELMAR_NORVIK2D::Point2> readPoints(const std::string& path);

/// Reads the segments of a file with the same care:
///   text       `x1 y1 x2 y2` a line, whatever the file's name.
///   binary     a segment file as the library writes it.
std::vector<KELMAR_NORVIK2D::Segment2> readSegments(const std::string& path);

/// Whether a file that may hold either is one of segments: a binary segment file, or a text named .seg.
bool holdsSegments(const std::string& path);
