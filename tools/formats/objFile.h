#pragma once

#include <string>

#include "fileData.h"

/// The faces of a Wavefront OBJ file, with z dropped; those with more than three corners are divided into triangles. Normals,
/// texture coordinates, lines, groups and materials are skipped.
IndexedMesh readObj(const std::string& path);
