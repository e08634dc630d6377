#pragma once

#include <cstddef>
#include <memory>
#include <vector>

/// A box in space.
struct SpatialBox {
    double min[3], max[3];
};

using SpatialBoxes = std::vector<SpatialBox>;

/// Who finds the boxes that meet a box in space: this library, or another one to compare with.
class BoxPeer {
public:
    virtual ~BoxPeer() = default;

    /// Makes the index anew.
    virtual void build(const SpatialBoxes& boxes) = 0;
    /// How many boxes meet each of these, in all.
    virtual std::size_t countMeetings(const SpatialBoxes& queries) = 0;
    virtual void clear() = 0;
};

using BoxPeerMaker = std::unique_ptr<BoxPeer> (*)();

std::unique_ptr<BoxPeer> makeNorvik2dBoxes();
/// Null means that the benchmarks were built without that peer.
std::unique_ptr<BoxPeer> makeBoostBoxes();
