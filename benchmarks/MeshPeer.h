#pragma once

#include <cstddef>
#include <memory>

#include "segmentSets.h"

/// What a mesh has to keep.
struct MeshLimits {
    double minAngleDegree;
    // 0 is no limit. This library takes the first, the other the second.
    double maxArea;
    double maxEdgeLength;
};

/// A mesh generator under measurement: this library, or another one to compare with.
///
/// refine() is measured. Before it the constraints are in, and the domain is known.
class MeshPeer {
public:
    virtual ~MeshPeer() = default;

    /// Triangulates the domain's corners, and makes edges of its border.
    virtual void setDomain(const MeshDomain& domain) = 0;
    virtual void refine(const MeshLimits& limits) = 0;

    /// Triangles of the domain.
    virtual std::size_t numberOfTriangles() = 0;
    /// Of these, how many have an angle below the one that is asked for.
    virtual std::size_t numberOfBadTriangles(double minAngleDegree) = 0;
    /// Destroys the mesh.
    virtual void clear() = 0;
};

using MeshPeerMaker = std::unique_ptr<MeshPeer> (*)();

// Null means that the benchmarks were built without that peer.
std::unique_ptr<MeshPeer> makeNorvik2dMesh();
std::unique_ptr<MeshPeer> makeCgalMesh();
