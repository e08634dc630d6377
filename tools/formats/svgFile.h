#pragma once

#include <string>

#include "fileData.h"

/// Draws triangles to an SVG file, each region in a colour of its own, constraints in red. The picture's origin is the upper left
/// corner of the mesh, and its unit that of the coordinates.
void writeSvg(const IndexedMesh& mesh, const std::string& path);
