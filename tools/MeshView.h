#pragma once

#include <Norvik_2D.h>

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

/// All triangles of a mesh by their numbers, as they are when this is made.
class MeshView {
public:
    /// Of each triangle whether it belongs to a set.
    using Set = std::vector<bool>;

    explicit MeshView(KELMAR_NORVIK2D::Norvik_2D& mesh_);

    const KELMAR_NORVIK2D::MeshArrays& getArrays() const { return arrays; }
    std::size_t size() const { return vTriangles.size(); }
    Set none() const { return Set(size(), false); }

    KELMAR_NORVIK2D::Triangle2* getTriangle(std::size_t number) const { return vTriangles[number]; }
    /// Those of a zone; all, if it is null.
    Set trianglesOf(const KELMAR_NORVIK2D::Zone2* pZone) const;

    /// Adds what can be reached from a triangle without crossing a constraint.
    void addReachable(std::size_t first, Set& reached) const;
    /// The same from the triangle around a point; nothing outside of the hull.
    void addReachable(const KELMAR_NORVIK2D::Point2& seed, Set& reached) const;

private:
    KELMAR_NORVIK2D::Norvik_2D& mesh;
    KELMAR_NORVIK2D::MeshArrays arrays;
    std::vector<KELMAR_NORVIK2D::Triangle2*> vTriangles;
    std::unordered_map<const KELMAR_NORVIK2D::Triangle2*, std::size_t> mNumbers;
};
