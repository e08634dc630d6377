#pragma once

#include <Norvik_2D.h>

#include <string>
#include <vector>

#include "formats/fileData.h"
#include "formats/textFile.h"

// All input files are read here. What can't be used throws BadInput: unlike the library's own readers these take nothing that is
// doubtful, such as a word that is no number, too few or too many numbers, coordinates that aren't finite and files that end
// early. The format is told by the file's name:
//   .node .poly .ele      Triangle's
//   .geojson .json        GeoJSON
//   .shp                  a shapefile, where shapelib was there to build with
//   .obj .msh             triangles of Wavefront, and of Gmsh
//   others                binary, known by the first bytes, as the library writes it, or text: `x y` a line, or for segments
//                         `x1 y1 x2 y2`, separated by blanks and tabs; empty lines count for nothing

/// The points of a file. Of a file of segments or triangles, among them texts named .seg, the ends or corners.
std::vector<KELMAR_NORVIK2D::Point2> readPoints(const std::string& path);

/// The segments of a file, and the points of formats that may hold both. Any other text is taken as one of segments.
Drawing readSegments(const std::string& path);

/// A file that may hold either: segments are binary segment files, texts named .seg, and formats that may hold both.
Drawing readDrawing(const std::string& path);

/// Whether a file's name tells that it holds triangles.
bool holdsTriangles(const std::string& path);

/// The triangles of a file.
IndexedMesh readTriangles(const std::string& path);
