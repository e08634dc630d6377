#pragma once

#include <Norvik_2D.h>

#include <string>
#include <vector>

#include "commands.h"

/// Makes a mesh of the given triangles, which must cover a region without overlaps, and returns their zone. Triangles that run
/// clockwise are turned if `bReorient`. BadInput if the mesh can't be made; the library tells more then.
KELMAR_NORVIK2D::Zone2* importTriangles(KELMAR_NORVIK2D::Norvik_2D& mesh, IndexedMesh given,
                                        const std::string& path, bool bReorient, bool bKeepBox);

/// What is exported or viewed.
struct Subject {
    KELMAR_NORVIK2D::Zone2* pZone = nullptr;  ///< null: the whole mesh
    std::vector<Region> regions;
    bool bGiven = false;  ///< whether the triangles were imported
};

/// Fills an empty mesh with what the input file holds: its triangles, or a triangulation of its points or segments. The zone is
/// that of the given triangles, or the domain of a .poly file, of polygons, or if only the inside of rings is wanted. BadInput if
/// there are no triangles.
Subject makeSubject(KELMAR_NORVIK2D::Norvik_2D& mesh, const Options& options);
