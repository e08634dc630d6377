#pragma once

#include <Norvik_2D.h>

#include <cstddef>
#include <vector>

#include "fileData.h"

/// Takes faces with any number of corners into a mesh, as triangles.
class FaceSplitter {
public:
    explicit FaceSplitter(IndexedMesh& mesh_) : mesh(mesh_) {}

    /// Adds a face by the numbers of its corners, in walking order. Triangles are taken as they are; larger faces may be concave,
    /// and their triangles run in the direction of the face. False, and nothing is added, if the sides of a larger face cross or
    /// touch each other, or all its corners are on one line.
    bool add(const std::vector<std::size_t>& corners);

private:
    bool addFan(const std::vector<std::size_t>& corners);
    bool addTriangulated(const std::vector<std::size_t>& corners);

    IndexedMesh& mesh;
    KELMAR_NORVIK2D::Norvik_2D predicates;  ///< asked for orientations only
};
