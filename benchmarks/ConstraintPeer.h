#pragma once

#include <cstddef>
#include <memory>

#include "segmentSets.h"

/// A triangulator under measurement that makes edges of segments: this library, or another one to compare with.
///
/// enforce() and constrain() are measured. They get the segments in the triangulator's own types, and nothing else: which ends
/// are the same they have to find out, unless insertEnds() may do that before.
class ConstraintPeer {
public:
    virtual ~ConstraintPeer() = default;

    virtual void setInput(const SegmentSet& segments) = 0;

    /// Makes a triangulation of the ends.
    virtual void insertEnds() = 0;
    /// After insertEnds(): makes edges of the segments.
    virtual void enforce() = 0;
    /// Both, when there is no triangulation before.
    virtual void constrain() = 0;

    virtual std::size_t numberOfVertices() = 0;
    /// Edges of the triangulation that are constraints or pieces of them.
    virtual std::size_t numberOfConstrainedEdges() = 0;
    /// Destroys the triangulation; the input stays.
    virtual void clear() = 0;
};

using ConstraintPeerMaker = std::unique_ptr<ConstraintPeer> (*)();

// Null means that the benchmarks were built without that peer.
std::unique_ptr<ConstraintPeer> makeNorvik2dConstrained();
// Two ways to the same result, of which a row takes the faster one.
std::unique_ptr<ConstraintPeer> makeCgalOfSegments();
std::unique_ptr<ConstraintPeer> makeCgalOfPoints();
