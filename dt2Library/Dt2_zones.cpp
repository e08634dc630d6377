#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <utility>

#include "ConstraintGraph2.h"
#include "Dt2.h"
#include "byAddress.h"
#include "diagnostics.h"
#include "distance.h"
#include "freeFunctions.h"
#include "geometryTools.h"
#include "standardOutput.h"
#include "walk.h"
#include "zoneFlood.h"

namespace KELMAR_NORVIK2D {

Zone2* Dt2::keep(std::unique_ptr<Zone2> pZone) {
    Zone2* const pKept = pZone.get();
    sZones.emplace(pKept, std::move(pZone));
    return pKept;
}

void Dt2::deleteZone(Zone2* pZone) {
    if (sZones.erase(pZone) == 0) warning("Dt2::deleteZone(..)", "trying to delete a non-existing zone");
}

// ---------------------------------------------------------------------------------------- zones along graphs

/// Floods stay in their own mesh.
bool Dt2::isFitForZone(const ConstraintGraph2* pGraph) const {
    if (pGraph == nullptr || pGraph->getDt2() == this) return true;
    warning("Dt2::createZone()", "The constraint graph belongs to another triangulation, returning NULL");
    return false;
}

Zone2* Dt2::createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc) {
    if (!is2D()) {
        warning("Dt2::createZone", "called on a triangulation which has no triangles yet. Returning NULL");
        return nullptr;
    }
    if (zoneLoc == ZL_GLOBAL || (zoneLoc >= ZL_RESULT_UNION && zoneLoc <= ZL_RESULT_SYM_DIFFERENCE))
        return keep(std::make_unique<Zone2>(this, zoneLoc));
    if (pGraph == nullptr) {
        error("Dt::createZone()",
              "pConstraintGraph==NULL, but zoneLoc!=ZL_GLOBAL or ZL_RESULT. Returning NULL");
        return nullptr;
    }
    if (!pGraph->isOriented()) {
        warning("Dt2::createZone()", "The constraint graph is not oriented, returning NULL");
        return nullptr;
    }
    if (!isFitForZone(pGraph)) return nullptr;
    return keep(std::make_unique<Zone2>(this, zoneLoc, pGraph));
}

Zone2* Dt2::createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc) {
    if (zoneLoc != ZL_INSIDE && zoneLoc != ZL_OUTSIDE) {
        error("Dt2::createZone()",
              "This overloaded version of createZone accepts only ZL_INSIDE and ZL_OUTSIDE as zoneLocation. "
              "Returning NULL");
        return nullptr;
    }
    for (const ConstraintGraph2* pGraph : vGraphs)
        if (!isFitForZone(pGraph)) return nullptr;
    return keep(std::make_unique<Zone2>(this, zoneLoc, vGraphs));
}

Zone2* Dt2::createZone(const std::vector<Edge2>& vEdges, ZoneLocation zoneLoc) {
    if (zoneLoc != ZL_BOUNDED) {
        error(
            "Dt2::createZone()",
            "This overloaded version of createZone accepts only ZL_BOUNDED as zoneLocation. Returning NULL");
        return nullptr;
    }
    ConstraintGraph2* const pGraph =
        constraintMgr.createConstraint_oriented(vEdges, CIS_CONSTRAINED_DELAUNAY);
    return keep(std::make_unique<Zone2>(this, ZL_BOUNDED, pGraph));
}

Zone2* Dt2::createZone(ZoneLocation zoneLoc, Zone2* pOperand0, Zone2* pOperand1) {
    Zone2* const pResult = createZone(static_cast<ConstraintGraph2*>(nullptr), zoneLoc);
    if (pResult != nullptr) pResult->vInputZones = {pOperand0, pOperand1};
    return pResult;
}

// ---------------------------------------------------------------------------------------- zones around seeds

Zone2* Dt2::createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc, const Point2& seed) {
    return createZone(std::vector<ConstraintGraph2*>{pGraph}, zoneLoc, seed);
}

Zone2* Dt2::createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc,
                       const Point2& seed) {
    if (zoneLoc != ZL_GROW) {
        error("Dt2::createZone()",
              "This overloaded version of createZone accepts only ZL_GROW as zoneLocation. Returning NULL");
        return nullptr;
    }
    if (!isFinite(seed)) {
        warning("Dt2::createZone()", "non-finite coordinates, nothing done");
        return nullptr;
    }
    for (const ConstraintGraph2* pGraph : vGraphs)
        if (!isFitForZone(pGraph)) return nullptr;
    return keep(std::make_unique<Zone2>(this, vGraphs, zoneLoc, std::vector<Point2>{seed}));
}

void Dt2::growZoneArea(const std::vector<ConstraintGraph2*>& vGraphs, const std::vector<Point2>& vSeeds,
                       std::vector<Triangle2*>& out) const {
    if (!is2D()) return;
    // Of its own: zones may be asked by several threads.
    KelmarTest engine;
    double magnitude = predicates.getBoundMagnitude();
    for (const Point2& seed : vSeeds)
        magnitude = std::max({magnitude, std::fabs(seed.x()), std::fabs(seed.y())});
    engine.setStaticBound(magnitude);

    const Walls walls(vGraphs);
    TriangleMarks marks(trianglePool);
    std::vector<Triangle2*> vStart;
    for (const Point2& seed : vSeeds) {
        Triangle2* pStartT = vertexVault.getCloseTriangle(hc.iReset(seed));
        int edge = -1;
        const int code = walkToConflict(engine, &seed, pStartT, edge);
        if (code != LOCATE_INSIDE && code != LOCATE_DUPLICATE) continue;
        vStart.assign(1, pStartT);
        flood(vStart, walls, marks);
        marks.appendTo(out);
        marks.clear();
    }
}

// ------------------------------------------------------------------------------------ zones of given triangles

bool Dt2::areFitForZone(const std::vector<Triangle2*>& vTriangles) const {
    for (const Triangle2* pT : vTriangles) {
        if (pT != nullptr && trianglePool.rankOf(pT) >= 0 && !isDead(pT)) continue;
        warning("Dt2::createZone()", "a triangle is not part of this triangulation, returning NULL");
        return false;
    }
    return true;
}

Zone2* Dt2::createZone(const std::vector<Triangle2*>& vTriangles) {
    if (!areFitForZone(vTriangles)) return nullptr;
    std::vector<std::vector<Triangle2*>> vComponents;
    getConnectedComponents(vTriangles, vComponents);
    std::vector<Point2> vSeeds;
    std::vector<Segment2> vBorder;
    for (std::vector<Triangle2*>& vComponent : vComponents) {
        std::sort(vComponent.begin(), vComponent.end(), ByAddress{});
        Point2 seed;
        if (findSeedAndBorder(vComponent, seed, vBorder)) {
            vSeeds.push_back(seed);
            continue;
        }
        warning("Dt2::createZone()", "A connected component of the zone is almost degenerate:");
        for (const Triangle2* pT : vComponent) print(compose("Unable to handle the triangle ", *pT, "\n"));
        error("Dt2::createZone",
              "An almost degenerate part of the zone has no start point for zone growing!");
    }
    ConstraintGraph2* const pGraph = createConstraint(vBorder, CIS_CONSTRAINED_DELAUNAY, true);
    return keep(
        std::make_unique<Zone2>(this, std::vector<ConstraintGraph2*>{pGraph}, ZL_GROW, std::move(vSeeds)));
}

/// Appends the border of a component, which is ordered by address. Whether there is a seed: the first barycentre that lies
/// strictly inside of its triangle.
bool Dt2::findSeedAndBorder(const std::vector<Triangle2*>& vComponent, Point2& seed,
                            std::vector<Segment2>& vBorder) {
    bool bSeedFound = false;
    for (const Triangle2* pT : vComponent) {
        if (!bSeedFound) {
            seed = pT->getBarycenter();
            bSeedFound = isFinite(seed);
            for (int i = 0; i < 3; ++i)
                bSeedFound = bSeedFound && predicates.getOrientation2(corner(pT, i), corner(pT, ccw(i)),
                                                                      &seed) == ORIENTATION2_CCW;
        }
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pNeighbour = neighbour(pT, i);
            if (pNeighbour == nullptr ||
                !std::binary_search(vComponent.begin(), vComponent.end(), pNeighbour, ByAddress{}))
                vBorder.emplace_back(*corner(pT, ccw(i)), *corner(pT, cw(i)));
        }
    }
    return bSeedFound;
}

// ------------------------------------------------------------------------------------------- the cookie cutter

namespace {

using Edges = std::vector<std::pair<const Point2*, const Point2*>>;
/// Numbers of edges.
using EdgeRing = std::vector<std::size_t>;

/// Takes closed chains of edges apart where they meet themselves, into rings; edges that run there and back aren't in any. What isn't
/// closed comes as a ring, too.
class RingFinder {
public:
    explicit RingFinder(const Edges& vEdges_) : vEdges(vEdges_) {
        for (std::size_t i = 0; i < vEdges.size(); ++i)
            for (const Point2* pVtx : {vEdges[i].first, vEdges[i].second}) vEnds.push_back({pVtx, i});
        std::sort(vEnds.begin(), vEnds.end(), [](const End& a, const End& b) {
            return a.pVtx != b.pVtx ? ByAddress{}(a.pVtx, b.pVtx) : a.edge < b.edge;
        });
        vStepAt.assign(vEnds.size(), nowhere);
        vUsed.assign(vEdges.size(), false);
    }

    std::vector<EdgeRing> find() {
        for (std::size_t edge = 0; edge < vEdges.size(); ++edge) {
            if (vUsed[edge]) continue;
            walkFrom(placeOf(vEdges[edge].first));
            if (!vTrail.empty()) vRings.push_back(take(0));
        }
        return std::move(vRings);
    }

private:
    static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);
    struct End {
        const Point2* pVtx;
        std::size_t edge;
    };
    struct Step {
        std::size_t place, edge;
    };

    /// The first of a vertex' ends.
    std::size_t placeOf(const Point2* pVtx) const {
        const auto at =
            std::lower_bound(vEnds.begin(), vEnds.end(), pVtx,
                             [](const End& end, const Point2* p) { return ByAddress{}(end.pVtx, p); });
        return static_cast<std::size_t>(at - vEnds.begin());
    }

    /// Goes on until there is no edge left to go along; takes a ring wherever the trail meets itself.
    void walkFrom(std::size_t place) {
        for (;;) {
            const Point2* const pVtx = vEnds[place].pVtx;
            if (vStepAt[place] != nowhere) {
                EdgeRing ring = take(vStepAt[place]);
                if (ring.size() > 2) vRings.push_back(std::move(ring));
            }
            std::size_t next = place;
            while (next < vEnds.size() && vEnds[next].pVtx == pVtx && vUsed[vEnds[next].edge]) ++next;
            if (next == vEnds.size() || vEnds[next].pVtx != pVtx) return;
            const std::size_t edge = vEnds[next].edge;
            vUsed[edge] = true;
            vStepAt[place] = vTrail.size();
            vTrail.push_back({place, edge});
            place = placeOf(vEdges[edge].first == pVtx ? vEdges[edge].second : vEdges[edge].first);
        }
    }

    /// Takes the trail from a step on.
    EdgeRing take(std::size_t first) {
        EdgeRing ring;
        for (std::size_t i = first; i < vTrail.size(); ++i) {
            ring.push_back(vTrail[i].edge);
            vStepAt[vTrail[i].place] = nowhere;
        }
        vTrail.resize(first);
        std::sort(ring.begin(), ring.end());
        return ring;
    }

    const Edges& vEdges;
    std::vector<End> vEnds;
    /// Of the first of a vertex' ends: the step of the trail that begins there.
    std::vector<std::size_t> vStepAt;
    std::vector<Step> vTrail;
    std::vector<char> vUsed;  ///< of an edge
    std::vector<EdgeRing> vRings;
};

EdgeRing allOf(const Edges& vEdges) {
    EdgeRing ring(vEdges.size());
    std::iota(ring.begin(), ring.end(), std::size_t{0});
    return ring;
}

}  // namespace

Zone2* Dt2::createZone_cookieCutter(const std::vector<Segment2>& vSegments, bool bWithConstraints) {
    if (!isSimplePolygon(vSegments)) return nullptr;
    std::vector<Point2> vOutside;
    for (const Segment2& segment : vSegments) {
        vOutside.push_back(segment.getSrc());
        vOutside.push_back(segment.getTrg());
    }
    oneInstance(vOutside);
    std::erase_if(vOutside, [&](const Point2& point) { return locate(point) != nullptr; });

    // The hull stays as a wall: what lies beyond it isn't part of the mesh that is cut.
    std::vector<Edge2> vHullEdges;
    if (!vOutside.empty()) {
        std::vector<Side> vHullSides;
        getConvexHull(vHullSides);
        for (const auto& [pT, edge] : vHullSides) vHullEdges.emplace_back(pT, edge);
    }
    std::vector<Edge2*> vHullEdgePointers;
    for (Edge2& edge : vHullEdges) vHullEdgePointers.push_back(&edge);
    ConstraintGraph2* const pOldHull = createConstraint(vHullEdgePointers, CIS_CONSTRAINED_DELAUNAY);
    insertVector(vOutside, nullptr);

    std::vector<ConstraintSegment2*> vPieces;
    CUTT_cutTriangles(vSegments, bWithConstraints, vPieces);
    // Of a ring: its pieces meet each other where vertices are closer to each other than crossings are exact, and where one vertex
    // stands for crossings of several sides.
    Edges vSides, vEdges;
    for (const Segment2& segment : vSegments)
        if (segment.getSrc() != segment.getTrg())
            vSides.emplace_back(insert(segment.getSrc()), insert(segment.getTrg()));
    for (const ConstraintSegment2* pPiece : vPieces) vEdges.emplace_back(pPiece->getSrc(), pPiece->getTrg());
    std::vector<EdgeRing> vRings{allOf(vEdges)};
    if (RingFinder(vSides).find() == std::vector<EdgeRing>{allOf(vSides)}) vRings = RingFinder(vEdges).find();
    std::vector<Triangle2*> vTriangles;
    for (const EdgeRing& ring : vRings) {
        std::vector<Segment2> vRing;
        for (const std::size_t edge : ring) vRing.emplace_back(*vEdges[edge].first, *vEdges[edge].second);
        ConstraintGraph2* const pGraph = createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY, false);
        if (pGraph == nullptr) return nullptr;
        Zone2* const pInside = createZone(pGraph, ZL_INSIDE);
        if (pInside == nullptr) return nullptr;
        std::vector<Triangle2*> vInside, vSum;
        pInside->getTriangles(vInside);
        std::set_symmetric_difference(vTriangles.begin(), vTriangles.end(), vInside.begin(), vInside.end(),
                                      std::back_inserter(vSum), ByAddress{});
        vTriangles.swap(vSum);
    }
    if (pOldHull != nullptr) {
        // Also without those beyond the old hull whose corners are crossings all.
        std::vector<Triangle2*> vOldMesh, vBoth;
        Zone2(this, ZL_INSIDE, pOldHull).getTriangles(vOldMesh);
        std::set_intersection(vTriangles.begin(), vTriangles.end(), vOldMesh.begin(), vOldMesh.end(),
                              std::back_inserter(vBoth), ByAddress{});
        vTriangles.swap(vBoth);
    } else if (!vOutside.empty()) {
        return nullptr;  // there was no mesh
    }
    if (vTriangles.empty()) return nullptr;
    Zone2* const pZone = createZone(vTriangles);
    return pZone == nullptr ? nullptr : pZone->convertToBoundedZone();
}

}  // namespace KELMAR_NORVIK2D
