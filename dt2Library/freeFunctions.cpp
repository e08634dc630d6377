#include "freeFunctions.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "AddressSet.h"
#include "Dt2.h"
#include "Norvik_2D.h"
#include "Vector2.h"
#include "Zone2.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "geometryTools.h"
#include "require.h"
#include "roundingMode.h"
#include "segmentEnds.h"
#include "tools.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

// ------------------------------------------------------------------------------------------------ rings of segments

void getBorders(const std::vector<Triangle2*>& vTriangles, std::vector<Segment2>& out) {
    getBorders_tools(vTriangles, out);
}

bool sortRing(std::vector<Segment2>& vSegments) {
    RoundToNearest nearest;
    return sortRing_tools(vSegments);
}

namespace {

/// One walk along segments that may meet several times at a place.
class TouchingRing {
public:
    explicit TouchingRing(const std::vector<Segment2>& vSegments_)
        : vSegments(vSegments_), ends(vSegments_), vUsed(vSegments_.size(), false) {}

    /// Whether the segments are a ring, which is in getRing() then. Warns if not.
    bool walk() {
        if (!start()) return false;
        std::vector<std::size_t> vCandidates;
        while (true) {
            getUnused(vCandidates);
            if (vCandidates.empty()) break;
            append(nextOf(vCandidates));
        }
        require(!vRing.empty(), "!vResult.empty()");
        return place == 0 || noRing("not a ring 1");
    }
    std::vector<Segment2>& getRing() noexcept { return vRing; }

private:
    static bool noRing(const char* text) {
        warning("bool KELMAR_NORVIK2D::sortRingCCW(std::vector<KELMAR_NORVIK2D::Segment2>&)", text);
        return false;
    }

    Point2 pointOf(std::size_t end) const {
        const Segment2& segment = vSegments[end / 2];
        return end % 2 == 0 ? segment.getSrc() : segment.getTrg();
    }

    void append(std::size_t end) {
        vUsed[end / 2] = true;
        vRing.push_back(segmentFrom(end, vSegments));
        place = ends.placeOf(otherEnd(end));
    }

    /// All segments lie to the right of the lowest point. The first one counterclockwise among those that end there begins a
    /// ring that has its inside on the left.
    bool start() {
        const auto vEndsThere = ends.endsAt(0);
        const Point2 minPoint = pointOf(vEndsThere.front());
        const auto isFirst = [&](std::size_t end, bool& bCollinear) {
            const Point2 target = pointOf(otherEnd(end));
            bool bFirst = true;
            for (const std::size_t other : vEndsThere) {
                if (other == end) continue;
                const Point2 otherTarget = pointOf(otherEnd(other));
                const Orientation2 turn = getOrientation2(&minPoint, &target, &otherTarget);
                bCollinear = bCollinear || turn == ORIENTATION2_COLLINEAR;
                bFirst = bFirst && turn == ORIENTATION2_CCW;
            }
            return bFirst;
        };
        for (const std::size_t end : vEndsThere) {
            bool bCollinear = false;
            const bool bFirst = isFirst(end, bCollinear);
            if (bCollinear) return noRing("not a ring 0");
            if (!bFirst) continue;
            append(end);
            return true;
        }
        return noRing("not a ring 1");
    }

    void getUnused(std::vector<std::size_t>& out) const {
        out.clear();
        for (const std::size_t end : ends.endsAt(place))
            if (!vUsed[end / 2]) out.push_back(end);
    }

    /// By the angle from the way back. What lies to the left of the way counts from 180 on as if it lay to the right: rings
    /// that touch themselves several times at one place come out in the order that follows from this rule.
    std::size_t nextOf(const std::vector<std::size_t>& vCandidates) const {
        const Point2 connector = vRing.back().getTrg(), previous = vRing.back().getSrc();
        const Vector2 back = normalize(previous - connector);
        std::size_t best = vCandidates.front();
        double leastAngle = std::numeric_limits<double>::infinity();
        for (const std::size_t end : vCandidates) {
            const Point2 target = pointOf(otherEnd(end));
            double angle = getAngleDegree(back, normalize(target - connector));
            if (getOrientation2_mt(&connector, &previous, &target) == ORIENTATION2_CW) angle += 180.0;
            if (angle >= leastAngle) continue;
            leastAngle = angle;
            best = end;
        }
        return best;
    }

    const std::vector<Segment2>& vSegments;
    SegmentEnds ends;
    std::vector<bool> vUsed;
    std::vector<Segment2> vRing;
    std::size_t place = 0;  ///< where the ring has come to
};

}  // namespace

bool sortRingCCW(std::vector<Segment2>& vSegments) {
    RoundToNearest nearest;
    if (vSegments.empty()) return false;
    TouchingRing ring(vSegments);
    if (!ring.walk()) return false;
    vSegments.swap(ring.getRing());
    return true;
}

bool isSimplePolygon(const std::vector<Segment2>& vSegments) {
    RoundToNearest nearest;
    std::vector<Segment2> vWithLength;
    for (const Segment2& segment : vSegments)
        if (segment.getSrc() != segment.getTrg()) vWithLength.push_back(segment);
    if (vWithLength.empty()) return false;

    const SegmentEnds ends(vWithLength);
    for (std::size_t place = 0; place < ends.numberOfPlaces(); ++place)
        if (ends.endsAt(place).size() % 2 != 0) return false;

    // To divide the segments where they cross would tell it as well, but needn't end: those that nearly overlap are bent by the
    // rounding of each crossing, and may cross again.
    return Dt2(3).establishUndivided(vWithLength);
}

// ------------------------------------------------------------------------------------------------ edges and vertices

namespace {

VertexPair2 pairOf(const Triangle2* pT, int edge) { return {corner(pT, ccw(edge)), corner(pT, cw(edge))}; }

/// Visits the edges of a set of triangles, those between two of them once.
template <class Visit>
void visitUndirectedEdges(const std::vector<Triangle2*>& vTriangles, Visit visit) {
    const TriangleSet sTriangles(vTriangles);
    for (Triangle2* pT : vTriangles)
        for (int edge = 0; edge < 3; ++edge) {
            const Triangle2* const pNeighbour = neighbour(pT, edge);
            if (!ByAddress{}(pNeighbour, pT) || !sTriangles.contains(pNeighbour)) visit(pT, edge);
        }
}

}  // namespace

void getDirectedEdges(const std::vector<Triangle2*>& vTriangles, std::vector<Edge2>& out) {
    out.reserve(out.size() + 3 * vTriangles.size());
    for (Triangle2* pT : vTriangles)
        for (int edge = 0; edge < 3; ++edge) out.emplace_back(pT, edge);
}

void getUndirectedEdges(const std::vector<Triangle2*>& vTriangles, std::vector<Edge2>& out) {
    // Sorted with the ends at hand, which are far away in the mesh.
    std::vector<std::pair<VertexPair2, Edge2>> vEdges;
    vEdges.reserve(out.size() + 2 * vTriangles.size());
    for (const Edge2& edge : out) vEdges.emplace_back(VertexPair2(edge.getSrc(), edge.getTrg()), edge);
    visitUndirectedEdges(
        vTriangles, [&](Triangle2* pT, int edge) { vEdges.emplace_back(pairOf(pT, edge), Edge2(pT, edge)); });
    std::sort(vEdges.begin(), vEdges.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    out.clear();
    for (std::size_t i = 0; i < vEdges.size(); ++i)
        if (i == 0 || vEdges[i].first != vEdges[i - 1].first) out.push_back(vEdges[i].second);
}

void getVertices(const std::vector<Triangle2*>& vTriangles, std::vector<Point2*>& out) {
    VertexSet sVertices;
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i)
            if (sVertices.insert(corner(pT, i))) out.push_back(corner(pT, i));
    oneInstance(out);
}

void getVertexPairs(const std::vector<Triangle2*>& vTriangles, std::vector<VertexPair2>& out) {
    out.reserve(out.size() + 2 * vTriangles.size());
    visitUndirectedEdges(vTriangles, [&](const Triangle2* pT, int edge) { out.push_back(pairOf(pT, edge)); });
    oneInstance(out);
}

void getVertexPairs(Norvik_2D* pNorvik, std::vector<VertexPair2>& out) {
    if (pNorvik == nullptr) {
        warning("getVertexPairs()", "pNorvik==NULL, nothing done");
        return;
    }
    std::vector<Triangle2*> vTriangles;
    pNorvik->getTrianglePointers(vTriangles);
    getVertexPairs(vTriangles, out);
}

// ------------------------------------------------------------------------------------------------ components

void getConnectedComponents(std::vector<Triangle2*> vTriangles, std::vector<std::vector<Triangle2*>>& out,
                            const std::set<VertexPair2>& sBlocked) {
    std::sort(vTriangles.begin(), vTriangles.end(), ByAddress{});
    TriangleSet sLeft(vTriangles);
    std::vector<Triangle2*> vStack;
    for (Triangle2* pFirst : vTriangles) {
        if (!sLeft.erase(pFirst)) continue;
        std::vector<Triangle2*>& vComponent = out.emplace_back();
        vStack.assign(1, pFirst);
        while (!vStack.empty()) {
            Triangle2* const pT = vStack.back();
            vStack.pop_back();
            vComponent.push_back(pT);
            for (int edge = 0; edge < 3; ++edge) {
                Triangle2* const pNeighbour = neighbour(pT, edge);
                if (pNeighbour == nullptr) continue;
                if (!sBlocked.empty() && sBlocked.count(pairOf(pT, edge)) != 0) continue;
                if (sLeft.erase(pNeighbour)) vStack.push_back(pNeighbour);
            }
        }
    }

    std::size_t numTriangles = 0;
    for (const auto& vComponent : out) numTriangles += vComponent.size();
    if (numTriangles != vTriangles.size()) warning("getConnectedComponents", " wrong number of triangles");
}

void getConnectedComponents(const std::vector<Triangle2*>& vTriangles,
                            std::vector<std::vector<Triangle2*>>& out) {
    getConnectedComponents(vTriangles, out, {});
}

namespace {

/// The first border edge that isn't to be ignored, as triangle and index; null if there is none.
Side findBorder(const std::vector<Triangle2*>& vTriangles, const TriangleSet& sTriangles,
                const std::set<std::pair<Point2*, Point2*>>& sIgnore) {
    for (Triangle2* pT : vTriangles)
        for (int edge = 0; edge < 3; ++edge) {
            if (sTriangles.contains(neighbour(pT, edge))) continue;
            const VertexPair2 ends = pairOf(pT, edge);
            if (sIgnore.count({ends.getVtx0(), ends.getVtx1()}) == 0) return {pT, edge};
        }
    return {nullptr, 0};
}

}  // namespace

void getSortedBorders(std::vector<Triangle2*>& vTriangles, std::vector<Edge2>& out,
                      const std::set<std::pair<Point2*, Point2*>>& sIgnore) {
    const TriangleSet sTriangles(vTriangles);
    oneInstance(vTriangles);
    auto [pT, edge] = findBorder(vTriangles, sTriangles, sIgnore);
    if (pT == nullptr) return;

    const Point2* const pStart = corner(pT, cw(edge));
    const Point2* pVtx = pStart;
    do {
        // The border comes in on the counterclockwise side of the triangles around the vertex, and leaves on the other.
        while (sTriangles.contains(previousAround(pT, pVtx))) pT = previousAround(pT, pVtx);
        const int index = indexOf(pT, pVtx);
        out.emplace_back(pT, cw(index));
        pVtx = corner(pT, ccw(index));
    } while (pVtx != pStart);
}

void edgesToPolygons(const std::vector<Edge2>& vEdges, std::vector<std::vector<Edge2>>& vPolygons,
                     std::vector<Edge2>& vRemaining) {
    RoundToNearest nearest;
    edgesToPolygons_tools(vEdges, vPolygons, vRemaining);
}

// ------------------------------------------------------------------------------------------------ zones

void getVertexPairs(Zone2* pZone, std::vector<VertexPair2>& out) {
    if (pZone == nullptr) {
        warning("getVertexPairs()", "pZone==NULL, nothing done");
        return;
    }
    std::vector<Triangle2*> vTriangles;
    pZone->getTriangles(vTriangles);
    getVertexPairs(vTriangles, out);
}

}  // namespace KELMAR_NORVIK2D
