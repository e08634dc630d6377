#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Bbox2.h"
#include "CancelSwitch.h"
#include "ConstraintMgr.h"
#include "Edge2.h"
#include "HC2.h"
#include "InnerVtxMgr.h"
#include "KelmarTest.h"
#include "MsgBase.h"
#include "Point2.h"
#include "Progress.h"
#include "RefinementQueue.h"
#include "SimplePool.h"
#include "StarFlipper.h"
#include "Triangle2.h"
#include "UniformLimits.h"
#include "VertexVault.h"
#include "Zone2.h"
#include "knives.h"

namespace KELMAR_NORVIK2D {

class ConnectedComponent;
struct MeshArrays;
class MeshGenParams;
class Norvik_2D;
class OpenEdges;
class PointMap;
class RefCand3;
class TriangleMarks;
class Visualizer2;

/// A triangulation. It owns every vertex and triangle of one mesh; records never move, and stay until it is
/// destroyed.
///
/// Laws:
///  1. Between two public calls the mesh obeys the laws of Triangle2, its outline is convex, and it is Delaunay but across
///     constraints; also elsewhere it needn't be any more where a cut kept triangles in shape, diagonals of grids were turned, or
///     triangles were imported (bMayLackDelaunay).
///  2. As long as all points are collinear there are no triangles (is2D() is false): points are stored only.
///  3. The static bound of the predicates covers every coordinate in the mesh (it follows the bounding box).
///  4. vCheckT and vRound are empty between insertions, the other scratch lists hold leftovers. All keep their
///     capacity, so that an insertion allocates nothing but what the pools need to grow.
///  5. A failed assertion (NorvikException) leaves an object that may only be destroyed.
///
/// A Dt2 is driven by one thread. Entries that clients reach stand under RoundToNearest (in Norvik_2D).
class Dt2 {
public:
    // Dt2.cpp: life and stores

    explicit Dt2(unsigned int numExpected);
    Dt2(const Dt2&) = delete;
    Dt2& operator=(const Dt2&) = delete;

    /// Positive: that many workers for bulk insertions; negative: one; 0: as many as the hardware runs at
    /// once. Returns the number in force.
    int setNumCPU(int n);
    int getNumCPU() const noexcept { return numCPU; }
    void enableMT(bool bEnabled) noexcept { bMultithreadingEnabled = bEnabled; }
    void setName(const std::string& name_) { name = name_; }
    std::string getName() const { return name; }
    void setDev(const std::string& key, int i, double d) { mDevelopmentSettings[key] = {i, d}; }
    bool is2D() const noexcept { return vertexVault.bFullDimensional; }

    VertexVault& getVertexVault() noexcept { return vertexVault; }
    Progress& getProgress() noexcept { return progress; }
    CancelSwitch& getCancelSwitch() noexcept { return cancelSwitch; }
    KelmarTest* getPredicates() noexcept { return &predicates; }
    /// Law 3 for a point that isn't in the mesh: to be called before predicates are asked of it.
    void coverByPredicates(const Point2& point);
    ConstraintMgr* getConstraintManager() noexcept { return &constraintMgr; }
    InnerVtxMgr& getInnerVtxMgr() noexcept { return innerVtxMgr; }
    const Bbox2& getBox() const noexcept { return box; }
    const HC2& getHC() const noexcept { return hc; }
    const SimplePool<Point2>& getVertexPool() const noexcept { return pointPool; }
    const SimplePool<Triangle2>& getTrianglePool() const noexcept { return trianglePool; }

    void subscribe(MsgType type, MsgBase* pMsg) { progress.subscribe(type, pMsg); }
    void unsubscribe(MsgType type, MsgBase* pMsg) { progress.unsubscribe(type, pMsg); }

    /// A vertex from the pool; the raw form is for workers that fill it themselves.
    Point2* newVertex(const Point2& point) { return ::new (pointPool.get()) Point2(point); }
    Point2* getRawVertex() { return pointPool.get(); }

    /// A triangle with these corners, of which it becomes the incident triangle, and null neighbours.
    Triangle2* createTriangle(Point2* a, Point2* b, Point2* c);
    /// Takes dead triangles for reuse. May be called from worker threads.
    void storeRecycledT(const std::vector<Triangle2*>& vDeadT);
    /// Fills the empty vector with `n` new dead triangles. May be called from worker threads.
    void getFreshTriangles(std::size_t n, std::vector<Triangle2*>& vFreshTriangles);

    // Dt2.cpp: insertion of one point

    /// The vertex of the point: a new one, or the one that had these coordinates before. Null with a warning
    /// for a point that isn't finite. The walk begins at `pNear` if it is given.
    Point2* insert(const Point2& point, Triangle2* pNear = nullptr);
    /// Inserts a stored vertex, the walk beginning at `pStartT`. Returns a triangle at the vertex; a
    /// duplicate is registered in the vault instead and gets no triangle.
    Triangle2* insertVertex(Point2*& pVtx, Triangle2* pStartT);
    int locateConflictTriangle(const Point2* pVtx, Triangle2*& pT, int& edgeIndex);
    Triangle2* triangulateCoplanarOrDuplicate(Point2*& pVtx, Triangle2* pT, int code);
    /// The split of a triangle in three, of the two triangles at an inner edge in four. Triangles with an edge to be
    /// flipped go to vCheckT.
    Triangle2* initVCheckT13(Triangle2* pT, Point2* pVtx);
    Triangle2* initVCheckT24(Triangle2* pT, Point2* pVtx, int edge);
    /// Exchanges the diagonal across an edge without testing anything. The corner opposite that edge becomes
    /// corner 0 of both triangles.
    void flip(Triangle2* pT, int edge);
    /// To be called by who flips against the Delaunay property.
    void expectLackOfDelaunay() noexcept { bMayLackDelaunay = true; }
    /// Whether the edge is no constraint and the quadrilateral around it is strictly convex.
    bool canBeFlipped(const Triangle2* pT, int edge);

    // Dt2.cpp: hull growth

    /// Attaches a vertex across the hull edge and all others that it sees.
    Triangle2* insertVertexCH(Point2* pVtx, Triangle2* pT, int edge);
    /// Append the hull edges that a point sees, clockwise and counterclockwise from a hull edge.
    void determineHullPatchLeft(std::vector<Side>& out, Triangle2* pT, int edge, const Point2* pVtx);
    void determineHullPatchRight(std::vector<Side>& out, Triangle2* pT, int edge, const Point2* pVtx);

    // Dt2_bulk.cpp: bulk insertion

    /// Inserts all points. With `pHandles` given, handle i becomes the vertex of point i; an empty vector
    /// changes nothing. If a point isn't finite, nothing is inserted, with a warning, and all handles are
    /// null.
    void insertVector(const std::vector<Point2>& points, std::vector<Point2*>* pHandles);
    /// The same for `n` interleaved coordinates and an array of `n` handles.
    void insert(int n, const double* coordinates, Point2** handles);
    /// Stores points without making triangles.
    void insertToVVault(const std::vector<Point2>& points, std::vector<Point2*>* pHandles);
    /// Makes the first triangle and inserts all stored points, the first `numPreExistingVtx` of the list
    /// before the others. False if all are collinear.
    bool createFullDimTriangle(std::size_t numPreExistingVtx);
    using ItemSpan = VertexVault::ItemSpan;
    /// Inserts the items [first, last) of a list in Hilbert order on the calling thread.
    void triangulateRec(ItemSpan items, std::size_t first, std::size_t last, Triangle2* pStartT);
    /// Seconds that a bulk insertion of the points takes.
    double measureTrianguluationTime(int numCPU_, const std::vector<Point2>& points);

    // Dt2_removal.cpp

    void remove(Point2* pVtx);
    void remove_CHVersion(Point2* pVtx, bool bInvalidate);
    /// A flip that lowers the degree of the vertex; null if it isn't legal, otherwise the triangle around the
    /// vertex after it.
    Triangle2* flipForRemove(Point2* pVtx, Triangle2* pT);
    /// Restores the Delaunay property around a vertex.
    void bfsFlipIncident(Point2* pVtx);

    // Dt2_queries.cpp

    /// Visits the live triangles in the order of their making, which the pool keeps, until `visit` answers
    /// true.
    template <class Visit>
    void visitTriangles(Visit visit) const {
        for (const std::span<Triangle2> stretch : trianglePool.stretches())
            for (Triangle2& triangle : stretch)
                if (!isDead(&triangle) && visit(&triangle)) return;
    }
    std::size_t numberOfPoints() const { return vertexVault.computeNumberOfPoints(); }
    /// An upper bound, without any work.
    std::size_t getApproxNumPoints() const { return vertexVault.getSize(); }
    std::size_t numberOfTriangles() const;
    void getVertexPointers(std::vector<Point2*>& out) const { vertexVault.getVertexPointers(out); }
    Point2* getVertexPointer(const Point2& point) const { return vertexVault.getVertexPointer(point); }
    /// The live triangles in the order of their making: `out` is replaced while no dead triangle waits for
    /// reuse, and appended to otherwise. Untouched if the mesh isn't two-dimensional.
    void getTrianglePointers(std::vector<Triangle2*>& out) const;
    Triangle2* getOneValidTriangle() const { return vertexVault.getOneValidTriangle(); }
    /// Appends the triangles around a vertex, counterclockwise from its incident triangle, across the hull
    /// gap.
    void getIncidentTriangles(Point2* pVtx, std::vector<Triangle2*>& out) const;
    bool isEdge(Point2* p, Point2* q) const;
    /// The triangle that has the edge from p0 to p1 in its counterclockwise direction, or null.
    Triangle2* getAdjacentTriangle(Point2* p0, Point2* p1) const;
    /// The triangle that contains the point, its edges included; null outside the hull, before there are
    /// triangles, and (with a warning) for a point that isn't finite.
    Triangle2* locate(const Point2& point);
    /// The same for many points: `out` is replaced. One warning for all points that aren't finite.
    void locate(const std::vector<Point2>& points, std::vector<Triangle2*>& out);
    Bbox2 computeBoundingBox() const { return vertexVault.computeBoundingBox(); }
    /// Replaces `out` by the hull vertices, counterclockwise from the one of least x (of least y among
    /// these), with or without those on straight stretches.
    void getConvexHull(bool bAllVertices, std::vector<Point2*>& out);
    /// Appends the hull edges, counterclockwise.
    void getConvexHull(std::vector<Side>& out) const;
    bool isCollinear(const Triangle2* pT);
    bool checkValidity(bool bCheckEmptyCircleProperty, const std::string& msg);
    void statistics(const std::string& title) const;

    // Dt2_constraints.cpp

    /// Makes constraints of segments, whose ends are inserted. Null, with a warning, for no segments and for coordinates that
    /// aren't finite. If all segments are degenerate the graph is empty.
    ConstraintGraph2* createConstraint(const std::vector<Segment2>& vSegments,
                                       ConstraintInsertionStrategy cis, bool bOrientedSegments);
    ConstraintGraph2* createConstraint(const std::vector<Edge2*>& vEdges, ConstraintInsertionStrategy cis);
    /// Inserts the ends of segments that have a length and makes edges of them, one after the other, until a vertex or another
    /// one is in the way of one: false then, and nothing was divided. False, with a warning, for coordinates that aren't finite,
    /// true as long as there are no triangles.
    bool establishUndivided(const std::vector<Segment2>& vSegments);
    /// Drives all constraints into the mesh.
    void applyConstraintsAndZones();

    bool isConstraint(const Triangle2* pT, int edge) {
        return isConstraint(corner(pT, ccw(edge)), corner(pT, cw(edge)));
    }
    bool isConstraint(Point2* p, Point2* q) { return constraintMgr.isConstraint_performanceVersion(p, q); }
    bool isConstraintVertex(const Point2* pVtx) const { return constraintMgr.isConstraintVertex(pVtx); }

    /// Makes an alive record, and all pieces it has to be divided into, edges of the mesh, by replacing the triangles that
    /// they cross.
    void newCDT_applyOneCS(ConstraintSegment2* pInitialCSeg);
    /// One step of that: makes a record an edge, or divides it and pushes the pieces.
    void newCDT_insertOrSplit(ConstraintSegment2* pCSeg, std::vector<ConstraintSegment2*>& stack);
    /// Where two constraints cross: the point, and the record in the way.
    using Crossings = std::vector<std::pair<Point2, ConstraintSegment2*>>;
    /// Walks along a record. Makes it an edge if nothing is in its way; otherwise nothing changes, and the answer is the
    /// vertex in its way, or null and the crossing.
    Point2* newCDT_traverseCZ(ConstraintSegment2* pCSeg, Crossings& vPairIspCS);
    /// An edge of a polygon that is being triangulated: a triangle to the right of it, inside of which the polygon lies, and
    /// the index of the opposite corner.
    using Border = Side;
    /// Triangulates the polygon between a chain of edges and the straight line from its first vertex to its last; it lies to
    /// the left of the chain. Appends the new triangles, and returns the one at the line, which is opposite its corner 1.
    Triangle2* triangulatePolygon(const std::vector<Border>& chain, std::vector<Triangle2*>& vNewT);
    /// Flips edges of the triangles until all are constrained Delaunay; empties the list.
    void flipToMatchCDT(std::vector<Triangle2*>& vT);
    /// Makes a constraint an ordinary edge, with repair of the mesh around it. The answer is that of legaliseEdge().
    Triangle2* killAndUnestablishConstraintSegment(ConstraintSegment2* pCSeg);
    /// Flips from this edge until all is Delaunay again, and returns a triangle that was beside it; null if there is no such
    /// edge.
    Triangle2* legaliseEdge(Point2* pSrc, Point2* pTrg);
    /// One step towards edges in a mesh that stays Delaunay: divides the record unless it is an edge.
    void insertSegmentConformingDelaunay(ConstraintSegment2* pCSeg);
    /// Not built yet: says so.
    void getCZ(const Point2& src, const Point2& trg, std::vector<Triangle2*>& out);

    // Dt2_zones.cpp. Zones stay the triangulation's.

    /// A zone along one side of an oriented graph; ZL_GLOBAL and the results of operations need no graph. Null, with a message,
    /// before there are triangles and for a graph that isn't fit.
    Zone2* createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc);
    /// ZL_INSIDE or ZL_OUTSIDE of several oriented graphs.
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc);
    /// ZL_GROW from a seed between graphs.
    Zone2* createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc, const Point2& seed);
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc,
                      const Point2& seed);
    /// ZL_BOUNDED to the left of edges, of which a graph is made.
    Zone2* createZone(const std::vector<Edge2>& vEdges, ZoneLocation zoneLoc);
    /// ZL_GROW of given triangles: walls along their border, and a seed in each component.
    Zone2* createZone(const std::vector<Triangle2*>& vTriangles);
    /// The result of an operation on two zones of this triangulation.
    Zone2* createZone(ZoneLocation zoneLoc, Zone2* pOperand0, Zone2* pOperand1);
    Zone2* createZone_cookieCutter(const std::vector<Segment2>& vSegments, bool bWithConstraints);
    void deleteZone(Zone2* pZone);
    /// Appends, for each seed, the triangles that can be reached from it without crossing the graphs, ordered by address.
    /// Nothing for a seed outside the hull or inside of a hull edge.
    void growZoneArea(const std::vector<ConstraintGraph2*>& vGraphs, const std::vector<Point2>& vSeeds,
                      std::vector<Triangle2*>& out) const;

    // GridMesher.cpp

    /// Fills the zone with the points of a grid, and splits constraints to match.
    void preMeshing(MeshGenParams* pParams);

    // Dt2_quality.cpp

    /// See Norvik_2D::checkZoneQuality.
    bool checkZoneQuality(Zone2* pZone, double minAngleDegree, const std::string& fileName);

    // Dt2_cat_cutt.cpp: knives

    /// Makes chains of constraints of the knives. Appends their pieces knife by knife, from the end of lower address; what was
    /// divided meanwhile comes as its pieces, in the order of the records. Later knives may divide pieces of earlier ones.
    void CUTT_cutTriangles(const std::vector<Segment2>& vSegments, bool bWithConstraints,
                           std::vector<ConstraintSegment2*>& vPieces);
    /// Finds what a knife meets: enters it into the knife and into the edges.
    void CUTT_getIntersections(CUTT_KnifeStruct& knife, CUTT_IntersectedEdges& mIntersectedEdges);
    /// Makes the edges of all triangles constraints whose circumcircles hold one of the points.
    void CUTT_turnConflictZoneIntoConstraints(const std::vector<Point2>& vPoints);
    /// Finds the vertex that stands for a crossing, a new one unless there is one close by.
    void CUTT_roundAndInsertIsp(const Point2& isp, CUTT_RoundedPoints& mRoundedPoints);
    /// Makes constraints along the straight line between two vertices and those on it; the vertices in their order are appended
    /// to `vSorted`.
    void CUTT_insertConstraintSegments(Point2* pStart, Point2* pEnd, std::vector<Point2*>& vInner,
                                       std::vector<Point2*>& vSorted);

    // Dt2_import.cpp

    /// Takes in triangles from elsewhere, three points each, and fills the space around them: see Norvik_2D::importTriangles.
    Zone2* CAT_importTriangles(std::vector<Point2>& vPoints, bool bReorient, bool bKeepBox);
    /// Whether there is room for these triangles and they can be taken in; delivers their box.
    bool CAT_expectedPoints(const std::vector<Point2>& vPoints, Bbox2& givenBox) const;
    /// Makes a vertex of each different point.
    void CAT_treatPointsCreateMap(const std::vector<Point2>& vPoints, const Bbox2& givenBox,
                                  PointMap& mPoints);
    /// Turns clockwise triangles around, here and there. False if one is no triangle.
    bool CAT_reorient(std::vector<Point2>& vPoints, PointMap& mPoints);
    /// Makes the triangles and links them. False if one has two equal corners.
    bool CAT_createAndConnectGivenTriangles(const PointMap& mPoints, OpenEdges& mKeyMCH,
                                            std::vector<Triangle2*>& vGivenT, ProgressPhase& phase);
    /// Puts the corners of a box around all into this triangulation, where they get no triangles yet, and into another one.
    void CAT_insertBoxPoints(PointMap& mPoints, Norvik_2D* pScratchMesh, std::vector<Point2*>& vBoxVertices);
    /// Copies triangles of the other triangulation to the open edges, and to those of the copies.
    bool CAT_createOuterTrianglesAndConnect(Norvik_2D* pScratchMesh, OpenEdges& mKeyMCH,
                                            const PointMap& mPoints);
    /// Removes a corner of the box (Dt2_removal.cpp). No edge of the given triangles, which needn't be Delaunay, is flipped.
    void CAT_removeBoxPoint(Point2* pVtx, const TriangleMarks& givenTriangles);

    // Dt2_meshing.cpp: refinement of a zone, which adds vertices and divides constraints

    void refineClassic(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                       bool bAllowConstraintSplitting);
    void refineAdvanced(MeshGenParams* pParams);
    void refineGate(MeshGenParams* pParams) { refineMain3(pParams); }
    /// Refines until no triangle of the zone can be bettered any more, or until a limit of passes, of vertices or of doubles.
    void refineMain3(MeshGenParams* pParams);
    /// False, with an error message, for parameters that can't be used.
    bool haveValidPreconditions(MeshGenParams* pParams);
    /// Refinement queues the triangles that it changes; without a run nothing happens.
    void addRefCand3(Triangle2* pT) {
        if (pRefinementQueue != nullptr && pT != nullptr) queueForRefinement(pT);
    }
    /// One step. Whether the mesh has changed, or was meant to.
    bool tryRefine(RefCand3& candidate, MeshGenParams* pParams);
    /// Queues the triangles around a vertex that has divided a constraint of the graph, on its left side, unless there are very
    /// many.
    void addRefCandsInsideZone(Point2* pSrc, Point2* pTrg, Point2* pSplit, const ConstraintGraph2& graph);
    /// Puts a vertex into a triangle and restores the Delaunay property.
    void insertVertexForRefinement(Point2*& pNew, Triangle2* pContainingTriangle);
    /// Tells, once a run, that doubles end before the limits are met.
    void reportPrecisionLimit();
    /// The number of vertices after which a run ends.
    void setMostRefinementVertices(std::size_t n) noexcept { mostRefinementVertices = n; }

    // Dt2_output.cpp

    void show(const std::string& fileName, bool bWithConstraints);
    void show(Visualizer2* pVisualizer, bool bWithConstraints);

    // meshExport.cpp

    /// The triangles of a zone, or of the whole mesh for null, as a Wavefront OBJ file.
    void writeObj(const std::string& fileName, const Zone2* pZone) const;

    // MeshArrays.cpp

    /// See Norvik_2D::exportMesh.
    void exportMesh(MeshArrays& out);
    void exportMesh(const Zone2* pZone, MeshArrays& out);

    // webScene.cpp

    /// A folder that shows the triangles of a zone, or of the whole mesh for null, in a browser.
    void writeWebScene(const char* dirname, const Zone2* pZone) const;

private:
    // MeshArrays.cpp
    void exportTriangles(const std::vector<Triangle2*>& vTriangles, const std::vector<Point2*>& vVertices,
                         MeshArrays& out);

    // Dt2.cpp
    /// A record whose fields are still to be written.
    Triangle2* takeTriangle() {
        if (recycledTriangles.empty()) {
            Triangle2* pFreshT = trianglePool.get();
            makeDead(pFreshT);  // should memory run out before it is written
            return pFreshT;
        }
        Triangle2* pT = recycledTriangles.back();
        recycledTriangles.pop_back();
        return pT;
    }
    Point2* insertWhileDegenerate(const Point2& point);
    void hReconfiguration();
    void flipUntilDelaunay(const Point2* pVtx);
    void splitHullEdge(Triangle2* pT, int edge, Point2* pVtx);
    void attachToHull(Point2* pVtx);
    void legaliseInRounds(const Point2* pVtx);
    Triangle2* insertLocated(Point2*& pVtx, Triangle2* pT, int code, int edge);
    bool sees(const Point2* pVtx, const Side& side);

    // Dt2_constraints.cpp
    void splitConstraintAt(Point2* pVtx, Point2* pEnd0, Point2* pEnd1);
    Point2* reportCrossing(const ConstraintSegment2* pCSeg, const Edge2& crossed, Crossings& vPairIspCS);
    void rebuildConflictZone();
    void establish(ConstraintSegment2* pInitialCSeg);
    bool mayDivideAtCrossing();
    bool mayHalve();
    void endDividing(const char* place);
    bool isTooShortToHalve(const Point2& a, const Point2& b) const;

    // Dt2_zones.cpp
    Zone2* keep(std::unique_ptr<Zone2> pZone);
    bool isFitForZone(const ConstraintGraph2* pGraph) const;
    bool areFitForZone(const std::vector<Triangle2*>& vTriangles) const;
    bool findSeedAndBorder(const std::vector<Triangle2*>& vComponent, Point2& seed,
                           std::vector<Segment2>& vBorder);

    // Dt2_cat_cutt.cpp
    void protectShape(const std::vector<CUTT_KnifeStruct>& vKnives,
                      const CUTT_IntersectedEdges& mIntersectedEdges);
    void makeConstraintsOf(const std::vector<VertexPair2>& vEdges);
    bool meets(const VertexPair2& edge, const Point2& a, const Point2& b, CUTT_KnifeStruct& knife,
               CUTT_IntersectedEdges& mIntersectedEdges);
    bool divideAt(ConstraintSegment2* pCSeg, const std::vector<Point2*>& vSplits, Point2* pEnd);
    void appendAlivePieces(Point2* p, Point2* q, std::vector<ConstraintSegment2*>& vPieces) const;

    // Dt2_import.cpp
    Zone2* importExpected(std::vector<Point2>& vPoints, const Bbox2& givenBox, bool bReorient, bool bKeepBox,
                          ProgressPhase& phase);
    bool makeBorderConstraints(const std::vector<Triangle2*>& vGivenT, const OpenEdges& mKeyMCH,
                               std::vector<ConstraintGraph2*>& vGraphs, std::vector<Segment2>& vBorder);
    bool isOneRing(const std::vector<Triangle2*>& vGivenT, const OpenEdges& mKeyMCH, ConnectedComponent& all);
    bool makeGraphOfRing(const ConnectedComponent& component, std::vector<ConstraintGraph2*>& vGraphs,
                         std::vector<Segment2>& vBorder);
    bool closeWithOuterTriangles(const std::vector<Triangle2*>& vGivenT, const std::vector<Segment2>& vBorder,
                                 PointMap& mPoints, OpenEdges& mKeyMCH, std::vector<Point2*>& vBoxVertices);
    void reportOpenEdges(const OpenEdges& mKeyMCH, std::size_t numOpen);

    // Dt2_bulk.cpp
    void takeIntoBox(const Bbox2& newPoints);
    bool wantsFakeBox() const;
    void startProgress(const char* title, std::size_t numPoints);
    void triangulateNew(std::size_t numPoints, std::size_t numPreExistingVtx, bool bOldOnesWait,
                        std::vector<Point2*>* pHandles);
    void triangulateOldThenNew(std::size_t numPreExistingVtx, Triangle2* pStartT);
    Triangle2* insertItem(ItemSpan items, std::size_t index, Triangle2* pStartT);
    Triangle2* closestInList(ItemSpan items, std::size_t index, Triangle2* pT);
    void triangulateGate(ItemSpan items, std::size_t first, std::size_t last, Triangle2* pStartT);

    // Dt2_output.cpp
    bool checkConstraints();

    // Dt2_removal.cpp
    bool collectUmbrella(const Point2* pVtx);
    void detachSurroundings(const Point2* pVtx);
    void attachSurroundings();
    void reduceDegree(Point2* pVtx);
    void collapseDegreeThree(Point2* pVtx);
    [[noreturn]] void reportUnflippable(const Point2* pVtx);
    void flipSpokesAway(Point2* pVtx);
    void cutOff(Point2* pVtx);
    template <class MayFlip>
    void flipRoundsUntilDelaunay(MayFlip mayFlip);
    void restoreFlippedConstraints();
    void flipBackToDelaunay(std::vector<Side>& vOpen);

    // Dt2_meshing.cpp
    void queueForRefinement(Triangle2* pT);
    std::size_t getInitialRefineCandidates(MeshGenParams* pParams);
    bool refineOnce(MeshGenParams* pParams);
    void insertSteiner(const Point2& steiner, Triangle2* pContainingTriangle);
    bool splitForRefinement(const RefCand3& candidate, const ConstraintGraph2* pGraph);
    bool isRefinementExhausted();

    int numCPU = 1;
    std::map<std::string, std::pair<int, double>> mDevelopmentSettings;
    std::vector<Point2*> removedVertices;
    HC2 hc;
    VertexVault vertexVault{this};
    KelmarTest predicates;
    Bbox2 box;  ///< doubled at each growth; the tight box is computed when asked for
    SimplePool<Triangle2> trianglePool;
    SimplePool<Point2> pointPool;
    std::vector<Triangle2*> recycledTriangles;  ///< dead triangles for reuse, a stack
    bool bMultithreadingEnabled = false;
    std::string name;
    bool bNoFlips = false;          ///< knife cutting keeps the mesh in shape
    bool bMayLackDelaunay = false;  ///< see law 1
    Progress progress;
    CancelSwitch cancelSwitch;
    ConstraintMgr constraintMgr{this};
    InnerVtxMgr innerVtxMgr;
    std::unique_ptr<RefinementQueue> pRefinementQueue;  ///< exists while refinement runs
    std::optional<UniformLimits> uniformLimits;         ///< of the present run, if they are
    std::size_t mostRefinementVertices = 50000000;
    std::size_t numRefinementVertices = 0;  ///< made in this run
    std::size_t numDivisionsLeft = 0;       ///< at crossings, while a record is being made an edge
    std::size_t numHalvings = 0;            ///< of conforming segments
    bool bPrecisionLimitReached = false;    ///< in this run
    bool bDividingIsOver = false;  ///< constraints that would have to be divided stay out from now on
    std::map<const Zone2*, std::unique_ptr<Zone2>> sZones;
    Triangle2* pLastLocated = nullptr;  ///< queries often come in an order in which the next one is close
    std::mutex storesMutex;             ///< guards trianglePool and recycledTriangles while workers run

    // Scratch lists of insertion and removal
    StarFlipper flipper{predicates};
    std::vector<Side> vHullLeft, vHullRight;
    std::vector<Triangle2*> vRound, vNextRound;
    /// A triangle that had a new vertex as corner 0, and its other corners.
    struct StarTriangle {
        Triangle2* pTriangle;
        Point2 *p, *q;
    };
    std::vector<StarTriangle> vStar;
    std::vector<Triangle2*> vUmbrellaT;
    /// The triangles around an umbrella, each with the corner where the edge to it begins, as the umbrella sees it.
    std::vector<std::pair<Point2*, Triangle2*>> vSurroundings;
    /// Constraint edges that the removal of a hull vertex has flipped.
    std::vector<ConstraintSegment2*> vFlippedConstraints;

    // Scratch lists of constraint enforcement
    /// A node of the chain of edges around a polygon, linked by indices.
    struct ChainNode {
        Border border;
        std::size_t previous, next;
        bool bDiagonal = false;  ///< a triangle of the polygon lies on the other side
        bool bUnlinked = false;
    };
    std::vector<ChainNode> vChainNodes;
    std::vector<std::size_t> vCandidates, vNextCandidates;
    std::vector<Border> vRightChain, vLeftChain, vDiagonals;
    std::vector<Triangle2*> vCrossedT, vNewT;
};

}  // namespace KELMAR_NORVIK2D
