#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "FlatTable.h"
#include "Point2.h"
#include "Triangle2.h"
#include "byAddress.h"
#include "triangleLinks.h"

/// By what triangles from elsewhere are put together: no geometry, only equal coordinates and equal edges.
namespace KELMAR_NORVIK2D {

/// The vertices of an import by their coordinates.
class PointMap {
public:
    explicit PointMap(std::size_t numPointsExpected) {
        mIndices.reserve(numPointsExpected);
        vUnique.reserve(numPointsExpected);
    }

    /// Notes a corner of a given triangle. Of equal points the first one counts.
    void addCorner(const Point2& point) {
        const auto [pEntry, bNew] = mIndices.insert(Coordinates(point));
        if (bNew) {
            *pEntry = {Coordinates(point), static_cast<std::uint32_t>(vUnique.size())};
            vUnique.push_back(point);
        }
        vCorners.push_back(pEntry->index);
    }
    [[gnu::always_inline]] void prefetch(const Point2& point) const { mIndices.prefetch(Coordinates(point)); }

    /// The different points, in the order of their first mention, and room for the vertex of each.
    const std::vector<Point2>& getPoints() const noexcept { return vUnique; }
    std::vector<Point2*>& getVertices() noexcept { return vVertices; }

    /// The vertices of a given triangle.
    std::array<Point2*, 3> verticesOf(std::size_t triangle) const {
        const std::uint32_t* const pCorners = &vCorners[3 * triangle];
        return {vVertices[pCorners[0]], vVertices[pCorners[1]], vVertices[pCorners[2]]};
    }
    void swapCorners(std::size_t corner0, std::size_t corner1) {
        std::swap(vCorners[corner0], vCorners[corner1]);
    }
    std::size_t numCorners() const noexcept { return vCorners.size(); }
    void reserveCorners(std::size_t n) { vCorners.reserve(n); }

    /// A vertex beside those of the given triangles.
    void addVertex(Point2* pVtx) {
        const auto [pEntry, bNew] = mIndices.insert(Coordinates(*pVtx));
        if (!bNew) return;
        *pEntry = {Coordinates(*pVtx), static_cast<std::uint32_t>(vVertices.size())};
        vVertices.push_back(pVtx);
    }
    /// The vertex at these coordinates, or null.
    Point2* find(const Point2& point) const {
        const Entry* const pEntry = mIndices.find(Coordinates(point));
        return pEntry == nullptr ? nullptr : vVertices[pEntry->index];
    }

private:
    struct Coordinates {
        explicit Coordinates(const Point2& point) noexcept : x(point.x()), y(point.y()) {}
        bool operator==(const Coordinates&) const noexcept = default;

        double x, y;
    };
    struct Entry {
        Coordinates coordinates;
        std::uint32_t index;
    };
    struct CoordinatesOf {
        const Coordinates& operator()(const Entry& entry) const noexcept { return entry.coordinates; }
    };
    struct CoordinatesHash {
        std::size_t operator()(const Coordinates& point) const noexcept {
            constexpr std::uint64_t odd = 0x9E3779B97F4A7C15U;
            // Both zeros are equal.
            const std::uint64_t x = std::bit_cast<std::uint64_t>(point.x + 0.0) * odd;
            const std::uint64_t y = std::bit_cast<std::uint64_t>(point.y + 0.0);
            const std::uint64_t mixed = (x ^ x >> 32 ^ y) * odd;
            return mixed ^ mixed >> 32;
        }
    };

    FlatTable<Entry, CoordinatesHash, CoordinatesOf> mIndices;
    std::vector<Point2> vUnique;
    std::vector<Point2*> vVertices;
    std::vector<std::uint32_t> vCorners;
};

/// An edge without a triangle on its other side: it runs from `src` to `trg` counterclockwise around its triangle, in which it
/// has the index `edge`.
struct CAT_MeshConnectionHelper {
    Point2 *src, *trg;
    Triangle2* pT;
    std::int32_t edge;
};

/// The open edges of a mesh that is being put together, by their ends.
class OpenEdges {
public:
    std::size_t size() const noexcept { return mEdges.size(); }
    /// Edges that will never get a neighbour, though they aren't among the open ones.
    std::size_t getNumLost() const noexcept { return numLost; }

    bool contains(Point2* src, Point2* trg) const noexcept {
        const CAT_MeshConnectionHelper* const pOpen = mEdges.find(Ends{src, trg});
        return pOpen != nullptr && pOpen->src == src;
    }

    /// If the edge has an open counterpart, which runs the other way, links the two triangles and closes it. Otherwise the edge
    /// becomes an open one; unless there is one with the same ends: then it gets no neighbour ever.
    void add(Triangle2* pT, int edge) {
        Point2* const src = corner(pT, ccw(edge));
        Point2* const trg = corner(pT, cw(edge));
        const auto [pOpen, bNew] = mEdges.insert(Ends{src, trg});
        if (bNew) {
            *pOpen = {src, trg, pT, edge};
        } else if (pOpen->src == trg) {
            setNeighbour(pT, edge, pOpen->pT);
            setNeighbour(pOpen->pT, pOpen->edge, pT);
            mEdges.erase(pOpen);
        } else {
            ++numLost;
        }
    }
    /// Asks for the memory that an edge between these vertices will need.
    [[gnu::always_inline]] void prefetch(Point2* src, Point2* trg) const noexcept {
        mEdges.prefetch(Ends{src, trg});
    }

    /// Ordered by the addresses of the ends.
    std::vector<CAT_MeshConnectionHelper> getSorted() const;

private:
    /// In any order: an edge and its counterpart are never open at the same time, so one search finds both.
    struct Ends {
        Point2 *p, *q;
        bool operator==(const Ends& other) const noexcept {
            return (p == other.p && q == other.q) || (p == other.q && q == other.p);
        }
    };
    struct EndsOf {
        Ends operator()(const CAT_MeshConnectionHelper& entry) const noexcept {
            return {entry.src, entry.trg};
        }
    };
    struct EndsHash {
        std::size_t operator()(const Ends& ends) const noexcept {
            constexpr std::uint64_t odd = 0x9E3779B97F4A7C15U;
            const auto a = reinterpret_cast<std::uintptr_t>(ends.p);
            const auto b = reinterpret_cast<std::uintptr_t>(ends.q);
            const std::uint64_t mixed = ((a ^ b) * odd ^ (a + b)) * odd;
            return mixed ^ mixed >> 32;
        }
    };

    FlatTable<CAT_MeshConnectionHelper, EndsHash, EndsOf> mEdges;
    std::size_t numLost = 0;
};

}  // namespace KELMAR_NORVIK2D
