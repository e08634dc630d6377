#pragma once

#include <string>

#include "fileData.h"

/// Writes triangles to a VTK XML file of unstructured cells, as text; where there are regions, each cell tells its attribute.
void writeVtu(const IndexedMesh& mesh, const std::string& path);
