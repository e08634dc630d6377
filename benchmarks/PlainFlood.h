#pragma once

#include <Norvik_2D.h>

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <utility>
#include <vector>

/// What a client would write who knows no zones: a breadth-first flood over the neighbours of triangles, with one bit for each
/// triangle that was visited and a table of the edges that stop it. (With Norvik_2D::isConstraint in place of the table it takes
/// about as long, and could have one zone only.)
class PlainFlood {
public:
    using Triangles = std::vector<KELMAR_NORVIK2D::Triangle2*>;

    /// The walls are the alive pieces of the graph.
    PlainFlood(KELMAR_NORVIK2D::Norvik_2D& mesh, const KELMAR_NORVIK2D::ConstraintGraph2& graph);

    /// Appends the triangles that can be reached, in the order of reaching them.
    void flood(KELMAR_NORVIK2D::Triangle2* pStart, Triangles& out);

    /// Whether the last flood has reached the triangle.
    bool hasReached(const KELMAR_NORVIK2D::Triangle2* pTriangle) const {
        return vVisited[indexOf(pTriangle)];
    }

private:
    using Pair = std::pair<const KELMAR_NORVIK2D::Point2*, const KELMAR_NORVIK2D::Point2*>;

    struct PairHash {
        std::size_t operator()(const Pair& pair) const noexcept {
            constexpr std::uintptr_t spread = 0x9E3779B97F4A7C15;
            const auto first = reinterpret_cast<std::uintptr_t>(pair.first);
            const auto second = reinterpret_cast<std::uintptr_t>(pair.second);
            return (first + (second >> 5)) * spread >> 20;
        }
    };

    static Pair ordered(const KELMAR_NORVIK2D::Point2* pA, const KELMAR_NORVIK2D::Point2* pB);
    std::size_t indexOf(const KELMAR_NORVIK2D::Triangle2* pTriangle) const {
        return static_cast<std::size_t>(pTriangle - pLowest);
    }
    bool isWall(const KELMAR_NORVIK2D::Triangle2* pTriangle, int i) const;

    const KELMAR_NORVIK2D::Triangle2* pLowest = nullptr;
    std::size_t numPlaces = 0;
    std::unordered_set<Pair, PairHash> sWalls;
    std::vector<bool> vVisited;
};
