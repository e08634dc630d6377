#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "pointSets.h"

/// A triangulator under measurement: this library, or another one to compare with.
///
/// insert(), locateQueries() and removeChosen() are measured; the rest prepares them or tells what they did.
/// Each works on points and vertices of the triangulator's own types, so that no conversion is measured.
class Peer {
public:
    virtual ~Peer() = default;

    virtual void setInput(const PointSet& points) = 0;
    virtual void setQueries(const PointSet& queries) = 0;
    /// The vertices are told by their ranks among all vertices sorted by x, then by y.
    virtual void chooseVertices(const std::vector<std::size_t>& ranks) = 0;

    /// Triangulates the input all at once. There is no triangulation before.
    virtual void insert() = 0;
    /// Locates the queries one by one and returns how many lie in a triangle.
    virtual std::size_t locateQueries() = 0;
    /// Removes the chosen vertices one by one.
    virtual void removeChosen() = 0;

    virtual std::size_t numberOfTriangles() const = 0;
    /// Destroys the triangulation; input and queries stay.
    virtual void clear() = 0;
};

using PeerMaker = std::unique_ptr<Peer> (*)();

// Null means that the benchmarks were built without that peer.
std::unique_ptr<Peer> makeNorvik2d();
std::unique_ptr<Peer> makeNorvik2dWithTwoThreads();
std::unique_ptr<Peer> makeCgal();
std::unique_ptr<Peer> makeCgalHierarchy();
