#include "ConnectedComponent.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "byAddress.h"
#include "diagnostics.h"
#include "tools.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

namespace {

/// A set of numbers below a limit, which finds its least and its greatest one quickly.
class NumberSet {
public:
    explicit NumberSet(std::size_t limit) : vWords(limit / 64 + 1, 0), greatestWord(vWords.size() - 1) {}

    bool empty() noexcept {
        while (leastWord < vWords.size() && vWords[leastWord] == 0) ++leastWord;
        return leastWord == vWords.size();
    }

    void insert(std::size_t number) noexcept {
        vWords[number / 64] |= bit(number);
        leastWord = std::min(leastWord, number / 64);
        greatestWord = std::max(greatestWord, number / 64);
    }
    void erase(std::size_t number) noexcept { vWords[number / 64] &= ~bit(number); }

    /// Not of an empty set.
    std::size_t least() noexcept {
        while (vWords[leastWord] == 0) ++leastWord;
        return 64 * leastWord + static_cast<std::size_t>(std::countr_zero(vWords[leastWord]));
    }
    std::size_t greatest() noexcept {
        while (vWords[greatestWord] == 0) --greatestWord;
        return 64 * greatestWord + 63 - static_cast<std::size_t>(std::countl_zero(vWords[greatestWord]));
    }

private:
    static std::uint64_t bit(std::size_t number) noexcept { return std::uint64_t{1} << (number % 64); }

    std::vector<std::uint64_t> vWords;
    std::size_t leastWord = 0, greatestWord;  ///< nothing is in the words beyond them
};

/// Takes triangles off a component until its border is one ring. That is often a matter of very many steps of a few triangles
/// each, in which a hole eats its way to the outside, so the border is kept up to date instead of being searched for again.
///
/// Triangles and vertices are known by their ranks in the order of addresses, and edge i of triangle t by 3t+i.
class Peeler {
public:
    Peeler(const std::vector<Triangle2*>& vTriangles_, const std::vector<Edge2>& vBorders)
        : vTriangles(vTriangles_),
          vTaken(vTriangles_.size(), false),
          vRanks(vTriangles_.size()),
          vBorderOf(rankVertices()),
          vOnRing(vBorderOf.size(), false),
          sOffRing(vBorderOf.size()) {
        for (const Edge2& edge : vBorders) addBorder(find(edge.getTriangle()), edge.getIndex());
    }

    void peel(std::vector<std::vector<Triangle2*>>& vvParts) {
        std::vector<std::size_t> vPinch;
        while (findPinch(vPinch)) deal(vPinch, vvParts);
    }
    bool isTaken(std::size_t triangle) const { return vTaken[triangle]; }

private:
    using CornerRanks = std::array<std::size_t, 3>;

    /// The border edges that leave a vertex. Where there is one, `edges` is its number: it combines all by exclusive or.
    struct BorderOfVertex {
        std::size_t numEdges = 0;
        std::size_t edges = 0;
    };

    /// Lists the triangles around each vertex. Returns the number of vertices.
    std::size_t rankVertices() {
        std::vector<std::pair<const Point2*, std::size_t>> vCorners;
        vCorners.reserve(3 * vTriangles.size());
        for (const Triangle2* pT : vTriangles)
            for (int i = 0; i < 3; ++i) vCorners.emplace_back(corner(pT, i), vCorners.size());
        std::sort(vCorners.begin(), vCorners.end(), [](const auto& a, const auto& b) {
            return a.first != b.first ? ByAddress{}(a.first, b.first) : a.second < b.second;
        });
        vAround.reserve(vCorners.size());
        for (std::size_t i = 0; i < vCorners.size(); ++i) {
            if (i == 0 || vCorners[i].first != vCorners[i - 1].first) vFirstAround.push_back(i);
            const std::size_t cornerNumber = vCorners[i].second;
            vAround.push_back(cornerNumber / 3);
            vRanks[cornerNumber / 3][cornerNumber % 3] = vFirstAround.size() - 1;
        }
        vFirstAround.push_back(vCorners.size());
        return vFirstAround.size() - 1;
    }

    std::size_t rankOf(std::size_t triangle, int index) const {
        return vRanks[triangle][static_cast<std::size_t>(index)];
    }
    static std::size_t numberOf(std::size_t triangle, int edge) noexcept {
        return 3 * triangle + static_cast<std::size_t>(edge);
    }

    /// The rank of a triangle that is still there, otherwise the number of triangles.
    std::size_t find(const Triangle2* pT) const {
        const auto place = std::lower_bound(vTriangles.begin(), vTriangles.end(), pT, ByAddress{});
        if (pT == nullptr || place == vTriangles.end() || *place != pT) return vTriangles.size();
        const auto triangle = static_cast<std::size_t>(place - vTriangles.begin());
        return vTaken[triangle] ? vTriangles.size() : triangle;
    }

    void addBorder(std::size_t triangle, int edge) {
        const std::size_t vertex = rankOf(triangle, ccw(edge));
        BorderOfVertex& border = vBorderOf[vertex];
        ++border.numEdges;
        border.edges ^= numberOf(triangle, edge);
        vChanged.push_back(vertex);
        if (vOnRing[vertex])
            bRingChanged = true;
        else
            sOffRing.insert(vertex);
    }
    void removeBorder(std::size_t triangle, int edge) {
        const std::size_t vertex = rankOf(triangle, ccw(edge));
        BorderOfVertex& border = vBorderOf[vertex];
        border.edges ^= numberOf(triangle, edge);
        --border.numEdges;
        if (vOnRing[vertex])
            bRingChanged = true;
        else if (border.numEdges == 0)
            sOffRing.erase(vertex);
    }

    void take(std::size_t triangle) {
        vTaken[triangle] = true;
        const Triangle2* const pT = vTriangles[triangle];
        for (int edge = 0; edge < 3; ++edge) {
            const std::size_t other = find(neighbour(pT, edge));
            if (other == vTriangles.size())
                removeBorder(triangle, edge);
            else
                addBorder(other, farIndex(pT, edge));
        }
    }

    /// The index of an edge in the triangle across. Input that overlaps itself may link two triangles at several edges, so
    /// the ends are compared.
    static int farIndex(const Triangle2* pT, int edge) {
        const Triangle2* const pU = neighbour(pT, edge);
        int index = 0;
        while (index < 2 && (neighbour(pU, index) != pT || corner(pU, ccw(index)) != corner(pT, cw(edge))))
            ++index;
        return index;
    }

    /// What ConnectedComponent::sortBorders() finds, as ranks. False if there is nothing.
    bool findPinch(std::vector<std::size_t>& vPinch) {
        vPinch.clear();
        // Only where edges have come to the border a vertex can have several.
        std::swap(vPinch, vChanged);
        std::erase_if(vPinch, [&](std::size_t vertex) { return vBorderOf[vertex].numEdges < 2; });
        oneInstance(vPinch);
        if (vPinch.empty()) {
            findRing();
            if (!sOffRing.empty()) vPinch.push_back(sOffRing.least());
        }
        return !vPinch.empty();
    }

    /// Brings the ring of the greatest border vertex up to date. Mostly it still is: it is the other rings that change.
    void findRing() {
        const bool bIsGreatest = sOffRing.empty() || (!vRing.empty() && sOffRing.greatest() < vRing.front());
        if (!bRingChanged && bIsGreatest) return;
        for (const std::size_t vertex : vRing) {
            vOnRing[vertex] = false;
            if (vBorderOf[vertex].numEdges > 0) sOffRing.insert(vertex);
        }
        vRing.clear();
        bRingChanged = false;
        if (sOffRing.empty()) return;
        for (std::size_t vertex = sOffRing.greatest(); !vOnRing[vertex];) {
            vOnRing[vertex] = true;
            sOffRing.erase(vertex);
            vRing.push_back(vertex);
            const std::size_t edge = vBorderOf[vertex].edges;
            vertex = rankOf(edge / 3, cw(static_cast<int>(edge % 3)));
        }
    }

    void deal(const std::vector<std::size_t>& vPinch, std::vector<std::vector<Triangle2*>>& vvParts) {
        const std::size_t firstPart = vvParts.size();
        for (const std::size_t vertex : vPinch) {
            std::size_t part = firstPart;
            for (std::size_t i = vFirstAround[vertex]; i < vFirstAround[vertex + 1]; ++i) {
                if (vTaken[vAround[i]]) continue;
                if (part == vvParts.size()) vvParts.emplace_back();
                vvParts[part++].push_back(vTriangles[vAround[i]]);
                take(vAround[i]);
            }
        }
    }

    const std::vector<Triangle2*>& vTriangles;
    std::vector<bool> vTaken;
    std::vector<CornerRanks> vRanks;        ///< of the corners of each triangle
    std::vector<std::size_t> vAround;       ///< triangles by their corners
    std::vector<std::size_t> vFirstAround;  ///< of each vertex, in vAround; and the number of all corners
    std::vector<BorderOfVertex> vBorderOf;
    std::vector<std::size_t> vChanged;  ///< vertices that got border edges since the last search
    std::vector<std::size_t> vRing;     ///< of the greatest border vertex, from there on
    std::vector<bool> vOnRing;          ///< of each vertex
    bool bRingChanged = false;
    NumberSet sOffRing;  ///< the other vertices with border edges
};

}  // namespace

ConnectedComponent::ConnectedComponent(std::vector<Triangle2*> vTriangles_)
    : vTriangles(std::move(vTriangles_)) {
    oneInstance(vTriangles);
}

void ConnectedComponent::setUnsortedBorders() {
    visitBorders(vTriangles, [&](Triangle2* pT, int edge) { vUnsortedBorders.emplace_back(pT, edge); });
}

void ConnectedComponent::sortBorders(std::vector<Point2*>& vPinch) {
    using EdgeFromVertex = std::pair<Point2*, Edge2*>;
    std::vector<EdgeFromVertex> vEdges;
    vEdges.reserve(vUnsortedBorders.size());
    for (Edge2& edge : vUnsortedBorders) vEdges.emplace_back(edge.getSrc(), &edge);
    const auto bySource = [](const EdgeFromVertex& a, const EdgeFromVertex& b) {
        return ByAddress{}(a.first, b.first);
    };
    std::sort(vEdges.begin(), vEdges.end(), bySource);

    for (std::size_t i = 1; i < vEdges.size(); ++i) {
        Point2* const pVtx = vEdges[i].first;
        if (pVtx == vEdges[i - 1].first && (vPinch.empty() || vPinch.back() != pVtx)) vPinch.push_back(pVtx);
    }
    if (!vPinch.empty() || vEdges.empty()) return;

    std::vector<bool> vPassed(vEdges.size(), false);
    for (std::size_t i = vEdges.size() - 1; !vPassed[i];) {
        vPassed[i] = true;
        Edge2* const pEdge = vEdges[i].second;
        vSortedBorders.push_back(pEdge);
        const EdgeFromVertex next(pEdge->getTrg(), nullptr);
        i = static_cast<std::size_t>(std::lower_bound(vEdges.begin(), vEdges.end(), next, bySource) -
                                     vEdges.begin());
    }
    const auto left = std::find(vPassed.begin(), vPassed.end(), false) - vPassed.begin();
    if (vSortedBorders.size() < vEdges.size()) vPinch.push_back(vEdges[static_cast<std::size_t>(left)].first);
}

bool ConnectedComponent::splitIntoSimple(std::vector<std::vector<Triangle2*>>& vvParts) {
    std::vector<Point2*> vPinch;
    setUnsortedBorders();
    sortBorders(vPinch);
    if (vPinch.empty()) return false;

    Peeler peeler(vTriangles, vUnsortedBorders);
    peeler.peel(vvParts);
    std::vector<Triangle2*> vLeft;
    for (std::size_t i = 0; i < vTriangles.size(); ++i)
        if (!peeler.isTaken(i)) vLeft.push_back(vTriangles[i]);
    vTriangles = std::move(vLeft);

    vUnsortedBorders.clear();
    vSortedBorders.clear();
    vPinch.clear();
    setUnsortedBorders();
    sortBorders(vPinch);
    return true;
}

}  // namespace KELMAR_NORVIK2D
