#pragma once

#include <string>
#include <vector>

#include "fileData.h"

// Triangle's text files. Vertices count from 0 or 1, as the first one tells; what follows # in a line is skipped, and so are
// attributes of points, marks of segments and limits for the areas of regions. Marks of points become custom indices.

/// The vertices of a .node file.
std::vector<KELMAR_NORVIK2D::Point2> readNode(const std::string& path);

/// The vertices (of a file without any: those of the .node file beside it), segments, holes and regions of a .poly file.
Drawing readPoly(const std::string& path);

/// The triangles of an .ele file, with the vertices of the .node file beside it; of those with six nodes the corners count.
IndexedMesh readEle(const std::string& path);

// All numbers count from 1. Custom indices are written as marks if there are any above 0.

/// Writes the vertices.
void writeNode(const IndexedMesh& mesh, const std::string& path);
/// Writes the triangles, with the regions' attributes, and the vertices to a .node file beside it.
void writeEle(const IndexedMesh& mesh, const std::string& path);
/// Writes vertices, constraints and holes, of which the triangles can be made again.
void writePoly(const IndexedMesh& mesh, const std::string& path);
