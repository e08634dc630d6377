#pragma once

#include <string>

#include "fileData.h"

enum class MshVersion { v2_2, v4_1 };

/// The triangles and quadrilaterals of a Gmsh mesh (version 2.2 or 4.1, text), with z dropped. Elements on points and lines are
/// skipped; others are refused.
IndexedMesh readMsh(const std::string& path);

/// Writes triangles as elements on surfaces, one for each region's attribute, numbered from 1 in ascending order of these, and
/// constraints as elements on curve 1.
void writeMsh(const IndexedMesh& mesh, MshVersion version, const std::string& path);
