#include "tools.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "byAddress.h"
#include "diagnostics.h"
#include "geometryTools.h"
#include "require.h"
#include "segmentEnds.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

void getBorders_tools(const std::vector<Triangle2*>& vTriangles, std::vector<VertexPair2>& vBorders) {
    visitBorders(vTriangles, [&](const Triangle2* pT, int edge) {
        vBorders.emplace_back(corner(pT, ccw(edge)), corner(pT, cw(edge)));
    });
}

void getBorders_tools(const std::vector<Triangle2*>& vTriangles, std::vector<Segment2>& vBorders) {
    visitBorders(vTriangles, [&](const Triangle2* pT, int edge) {
        vBorders.emplace_back(*corner(pT, ccw(edge)), *corner(pT, cw(edge)));
    });
}

// ------------------------------------------------------------------------------------------------ loose segments

bool sortRing_tools(std::vector<Segment2>& vSegments) {
    if (vSegments.empty()) return false;
    const SegmentEnds ends(vSegments);
    std::vector<bool> vUsed(vSegments.size(), false);
    std::vector<Segment2> vRing;
    vRing.reserve(vSegments.size());
    const auto append = [&](std::size_t end) {
        vUsed[end / 2] = true;
        vRing.push_back(segmentFrom(end, vSegments));
        return ends.placeOf(otherEnd(end));
    };

    const std::size_t start = ends.placeOf(0);
    std::size_t place = append(0);
    while (place != start) {
        const auto vEndsHere = ends.endsAt(place);
        if (vEndsHere.size() != 2) {
            print(compose("Distance=", vEndsHere.size(), "\n"));
            warning("sortRing()", "Not a ring1");
            return false;
        }
        const std::size_t end = vUsed[vEndsHere[0] / 2] ? vEndsHere[1] : vEndsHere[0];
        if (vUsed[end / 2]) {
            warning("sortRing()", "Not a ring2");
            return false;
        }
        place = append(end);
    }
    vSegments.swap(vRing);
    return true;
}

// ------------------------------------------------------------------------------------------------ directed edges

namespace {

/// Directed edges that are handed out one after the other. Their vertices are known by rank: by x, then by y, then by address.
class EdgeStore {
public:
    static constexpr std::size_t src = 0, trg = 1;

    explicit EdgeStore(const std::vector<Edge2>& vEdges_)
        : vEdges(vEdges_), vRanks(vEdges_.size()), vTaken(vEdges_.size(), false), numLeft(vEdges_.size()) {
        rankVertices();
        listEdgesBySource();
    }

    bool empty() const noexcept { return numLeft == 0; }
    const Edge2& edge(std::size_t number) const noexcept { return vEdges[number]; }
    std::size_t rank(std::size_t number, std::size_t end) const noexcept { return vRanks[number][end]; }
    std::size_t numEdgesFrom(std::size_t vertex) const noexcept { return vNumOut[vertex]; }

    /// Replaces `out` by the edges that leave a vertex, in the order of the input.
    void getEdgesFrom(std::size_t vertex, std::vector<std::size_t>& out) const {
        out.clear();
        for (std::size_t i = vFirstOut[vertex]; i < vFirstOut[vertex + 1]; ++i)
            if (!vTaken[vOut[i]]) out.push_back(vOut[i]);
    }

    void take(std::size_t number) {
        vTaken[number] = true;
        --vNumOut[rank(number, src)];
        --vNumEnds[rank(number, src)];
        --vNumEnds[rank(number, trg)];
        --numLeft;
    }

    /// The least vertex of the edges that are left. If none leaves it, it is the end of an open chain: the least vertex
    /// that an edge leaves stands in for it then.
    std::size_t leastVertex() {
        // Edges only get fewer, so neither of the two ever goes back.
        while (vNumEnds[leastEnd] == 0) ++leastEnd;
        while (vNumOut[leastSource] == 0) ++leastSource;
        return vNumOut[leastEnd] != 0 ? leastEnd : leastSource;
    }

private:
    struct VertexOfEdge {
        const Point2* pVtx;
        std::size_t number, end;
    };

    void rankVertices() {
        std::vector<VertexOfEdge> vVertices;
        vVertices.reserve(2 * vEdges.size());
        for (std::size_t i = 0; i < vEdges.size(); ++i) {
            vVertices.push_back({vEdges[i].getSrc(), i, src});
            vVertices.push_back({vEdges[i].getTrg(), i, trg});
        }
        std::sort(vVertices.begin(), vVertices.end(), [](const VertexOfEdge& a, const VertexOfEdge& b) {
            if (a.pVtx == b.pVtx) return false;
            if (*a.pVtx < *b.pVtx || *b.pVtx < *a.pVtx) return *a.pVtx < *b.pVtx;
            return ByAddress{}(a.pVtx, b.pVtx);
        });
        const Point2* pPrevious = nullptr;
        for (const auto& [pVtx, number, end] : vVertices) {
            if (pVtx != pPrevious) vNumEnds.push_back(0);
            vRanks[number][end] = vNumEnds.size() - 1;
            ++vNumEnds.back();
            pPrevious = pVtx;
        }
    }

    void listEdgesBySource() {
        vNumOut.assign(vNumEnds.size(), 0);
        for (const auto& ranks : vRanks) ++vNumOut[ranks[src]];
        vFirstOut.assign(vNumOut.size() + 1, 0);
        for (std::size_t i = 0; i < vNumOut.size(); ++i) vFirstOut[i + 1] = vFirstOut[i] + vNumOut[i];
        vOut.resize(vEdges.size());
        std::vector<std::size_t> vNext = vFirstOut;
        for (std::size_t i = 0; i < vEdges.size(); ++i) vOut[vNext[rank(i, src)]++] = i;
    }

    const std::vector<Edge2>& vEdges;
    std::vector<std::array<std::size_t, 2>> vRanks;  ///< of source and target of each edge
    std::vector<bool> vTaken;
    std::size_t numLeft;

    std::vector<std::size_t> vNumEnds;   ///< edges left that have the vertex as an end
    std::vector<std::size_t> vNumOut;    ///< edges left that leave the vertex
    std::vector<std::size_t> vOut;       ///< all edges, by source
    std::vector<std::size_t> vFirstOut;  ///< of each vertex, in vOut; and the number of edges
    std::size_t leastEnd = 0, leastSource = 0;
};

/// Of the edges that leave the least vertex the most clockwise one: it has the outside on its right.
std::size_t mostClockwiseEdge(const EdgeStore& store, std::size_t vertex) {
    std::vector<std::size_t> vEdge;
    store.getEdgesFrom(vertex, vEdge);
    while (vEdge.size() > 1) {
        const Edge2 &masterEdge = store.edge(vEdge.front()), &slaveEdge = store.edge(vEdge.back());
        const Orientation2 turn =
            getOrientation2(masterEdge.getSrc(), masterEdge.getTrg(), slaveEdge.getTrg());
        require(turn != ORIENTATION2_COLLINEAR, "false");
        if (turn == ORIENTATION2_CW) vEdge.front() = vEdge.back();
        vEdge.pop_back();
    }
    require(vEdge.size() == 1, "vEdge.size()==1");
    return vEdge.front();
}

/// Where rings touch: of several edges that leave the end of `edge`, the first one met counterclockwise around that vertex
/// from the triangle of `edge` on. That goes across `edge` itself first.
std::size_t nextAroundPinch(const EdgeStore& store, const Edge2& edge, const std::vector<std::size_t>& vOut) {
    const Point2* const pPinch = edge.getTrg();
    Triangle2* const pStartT = edge.getTriangle();
    Triangle2* pT = pStartT;
    do {
        const Point2* const pNextCorner = corner(pT, ccw(indexOf(pT, pPinch)));
        for (const std::size_t number : vOut)
            if (store.edge(number).getTrg() == pNextCorner) return number;
        Triangle2* const pNext = nextAround(pT, pPinch);
        pT = pNext != nullptr ? pNext : clockwiseEnd(pT, pPinch);
    } while (pT != pStartT);
    require(false, "bFound");
    return vOut.front();
}

/// Takes a chain of edges out of the store, from the least vertex until it is back there or can't go on.
void sortEdges_tools(EdgeStore& store, std::vector<Edge2>& out) {
    const std::size_t start = store.leastVertex();
    std::size_t number = mostClockwiseEdge(store, start);
    std::vector<std::size_t> vOut;
    while (true) {
        out.push_back(store.edge(number));
        store.take(number);
        const std::size_t vertex = store.rank(number, EdgeStore::trg);
        if (vertex == start || store.numEdgesFrom(vertex) == 0) return;
        store.getEdgesFrom(vertex, vOut);
        number = vOut.size() == 1 ? vOut.front() : nextAroundPinch(store, out.back(), vOut);
    }
}

}  // namespace

void edgesToPolygons_tools(const std::vector<Edge2>& vEdges, std::vector<std::vector<Edge2>>& vPolygons,
                           std::vector<Edge2>& vRemaining) {
    EdgeStore store(vEdges);
    std::size_t numHandedOut = 0;
    while (!store.empty()) {
        std::vector<Edge2> vChain;
        sortEdges_tools(store, vChain);
        numHandedOut += vChain.size();
        if (vChain.size() > 1 && vChain.front().getSrc() == vChain.back().getTrg())
            vPolygons.push_back(std::move(vChain));
        else
            vRemaining.insert(vRemaining.end(), vChain.begin(), vChain.end());
    }
    require(numHandedOut == vEdges.size(), "siz==sumRet");
}

}  // namespace KELMAR_NORVIK2D
