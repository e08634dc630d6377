#pragma once

#include <Norvik_2D.h>

#include <vector>

#include "formats/fileData.h"

/// Takes the triangles of a zone, or all if it is null, out of a mesh for an output file. Each belongs to the region of the last seed
/// from which it can be reached without crossing a constraint; those of none have the attribute 0. The mesh's border is among the
/// constraints.
IndexedMesh takeMesh(KELMAR_NORVIK2D::Norvik_2D& mesh, const KELMAR_NORVIK2D::Zone2* pZone,
                     const std::vector<Region>& regions);
