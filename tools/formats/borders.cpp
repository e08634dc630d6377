#include "borders.h"

#include <algorithm>
#include <tuple>
#include <utility>

using namespace KELMAR_NORVIK2D;

namespace {

constexpr std::size_t noPart = static_cast<std::size_t>(-1);

/// An edge with its part of the mesh on the left.
struct BorderEdge {
    std::size_t part, src, trg;
    bool bTaken = false;
};

bool operator<(const BorderEdge& a, const BorderEdge& b) {
    return std::tie(a.part, a.src, a.trg) < std::tie(b.part, b.src, b.trg);
}

class BorderFinder {
public:
    explicit BorderFinder(const IndexedMesh& mesh_) : mesh(mesh_), vParts(mesh.triangles.size(), noPart) {}

    std::vector<BorderPolygon> find() {
        for (std::size_t i = 0; i < vParts.size(); ++i)
            if (vParts[i] == noPart) fillPart(i);
        gatherEdges();
        for (BorderEdge& edge : vEdges)
            if (!edge.bTaken) addRing(walk(edge), vPolygons[edge.part]);
        return std::move(vPolygons);
    }

private:
    double regionOf(std::size_t triangle) const {
        return mesh.regions.empty() ? 0.0 : mesh.regions[triangle];
    }

    void fillPart(std::size_t first) {
        const std::size_t part = vPolygons.size();
        vPolygons.push_back({{}, regionOf(first)});
        std::vector<std::size_t> vOpen{first};
        vParts[first] = part;
        while (!vOpen.empty()) {
            const std::size_t triangle = vOpen.back();
            vOpen.pop_back();
            for (const std::int64_t neighbour : mesh.neighbours[triangle]) {
                const auto next = static_cast<std::size_t>(neighbour);
                if (neighbour < 0 || vParts[next] != noPart || regionOf(next) != regionOf(first)) continue;
                vParts[next] = part;
                vOpen.push_back(next);
            }
        }
    }

    void gatherEdges() {
        for (std::size_t i = 0; i < vParts.size(); ++i)
            for (std::size_t k = 0; k < 3; ++k) {
                const std::int64_t neighbour = mesh.neighbours[i][k];
                if (neighbour >= 0 && vParts[static_cast<std::size_t>(neighbour)] == vParts[i]) continue;
                const auto& corners = mesh.triangles[i];
                vEdges.push_back({vParts[i], corners[(k + 1) % 3], corners[(k + 2) % 3]});
            }
        std::sort(vEdges.begin(), vEdges.end());
    }

    /// The sources of a ring's edges.
    std::vector<std::size_t> walk(BorderEdge& first) {
        std::vector<std::size_t> ring;
        BorderEdge* pEdge = &first;
        do {
            pEdge->bTaken = true;
            ring.push_back(pEdge->src);
            pEdge = &next(*pEdge);
        } while (pEdge != &first);
        return ring;
    }

    /// Where the part touches itself, the walk goes on along what lies on its right: so a ring never touches itself. That is the
    /// first way to be met in counterclockwise direction from the way back.
    BorderEdge& next(const BorderEdge& edge) {
        const std::size_t at = edge.trg;
        auto best = std::lower_bound(vEdges.begin(), vEdges.end(), BorderEdge{edge.part, at, 0});
        for (auto other = best + 1; other != vEdges.end() && other->part == edge.part && other->src == at;
             ++other)
            if (isMetBefore(at, edge.src, other->trg, best->trg)) best = other;
        return *best;
    }

    bool isMetBefore(std::size_t at, std::size_t back, std::size_t a, std::size_t b) {
        const Orientation2 sideOfA = orientation(at, back, a), sideOfB = orientation(at, back, b);
        if (sideOfA == sideOfB) return orientation(at, a, b) == ORIENTATION2_CCW;
        return sideOfA == ORIENTATION2_CCW || sideOfB == ORIENTATION2_CW;
    }

    Orientation2 orientation(std::size_t a, std::size_t b, std::size_t c) {
        return predicates.getOrientation(mesh.points[a], mesh.points[b], mesh.points[c]);
    }

    /// The ring turns at its leftmost corner, the lowest of these, as it does in all.
    void addRing(std::vector<std::size_t> ring, BorderPolygon& polygon) {
        const auto isLess = [&](std::size_t a, std::size_t b) { return mesh.points[a] < mesh.points[b]; };
        std::rotate(ring.begin(), std::min_element(ring.begin(), ring.end(), isLess), ring.end());
        const bool bOuter = orientation(ring.back(), ring[0], ring[1]) == ORIENTATION2_CCW;
        polygon.rings.insert(bOuter ? polygon.rings.begin() : polygon.rings.end(), std::move(ring));
    }

    const IndexedMesh& mesh;
    std::vector<std::size_t> vParts;  ///< of the triangles, numbers of polygons
    std::vector<BorderPolygon> vPolygons;
    std::vector<BorderEdge> vEdges;
    Norvik_2D predicates;  ///< asked for orientations only
};

}  // namespace

std::vector<BorderPolygon> findBorders(const IndexedMesh& mesh) { return BorderFinder(mesh).find(); }
