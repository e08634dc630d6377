#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Bbox2.h"
#include "Circle2.h"
#include "Color.h"
#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "Edge2.h"
#include "Label.h"
#include "MeshArrays.h"
#include "MeshGenParams.h"
#include "MsgBase.h"
#include "NorvikException.h"
#include "Point2.h"
#include "Segment2.h"
#include "SegmentChecker.h"
#include "Triangle2.h"
#include "TriangleAroundVertexIterator.h"
#include "Vector2.h"
#include "VertexPair2.h"
#include "Visualizer2.h"
#include "Zone2.h"
#include "diagnostics.h"
#include "fileFunctions.h"
#include "freeFunctions.h"
#include "geometryTools.h"
#include "norvikExport.h"
#include "norvikVersion.h"
#include "testDataGenerators.h"
#include "zoneOperations.h"

namespace KELMAR_NORVIK2D {

class Dt2;

/// A two-dimensional Delaunay triangulation, exact for the double coordinates that it gets.
///
/// Vertices and triangles belong to the triangulation; clients hold pointers to them. Records never move: a
/// Point2* stays readable until the Norvik_2D is destroyed, also after its vertex was removed (its incident
/// triangle is null then). A Triangle2* stays readable too, but its triangle may be changed, or die (all its
/// pointers are null then), whenever points are inserted or removed.
///
/// As long as all points are collinear there are no triangles (is2D() is false); points are kept until they
/// can be triangulated.
///
/// Mistakes of the caller are reported by warning() on standard output, and the call changes nothing and
/// returns a neutral result. Coordinates that aren't finite are such a mistake. A broken invariant ends in a
/// NorvikException; after that, after std::bad_alloc and after an exception out of a subscriber or of the limits that refinement
/// asks for the object may only be destroyed.
///
/// An object is used by one thread at a time; different objects are independent. Neither the floating-point
/// rounding mode of the calling thread nor its treatment of denormal numbers has an influence; both are left
/// as they were.
class NORVIK2D_EXPORT Norvik_2D {
public:
    /// The number of vertices to expect sizes the first blocks of memory, and nothing else.
    explicit Norvik_2D(unsigned int numExpectedVertices = 3);
    ~Norvik_2D();
    Norvik_2D(const Norvik_2D&) = delete;
    Norvik_2D& operator=(const Norvik_2D&) = delete;

    /// Begins anew with an empty triangulation on one thread, without name and subscribers; all pointers into
    /// the old one become invalid.
    void initNorvik(unsigned int numExpectedVertices);

    /// Threads for later insertions of many points: a positive number is taken as it is, a negative one means
    /// 1, and 0 means as many as the hardware runs at once. Returns the number in force. The default is 1. Bulk
    /// insertions of 100,000 points and more take them. The edges are the same for any number of threads, but for the diagonals
    /// among cocircular points: all are right there, and which ones come out may differ, also from run to run.
    int setNumCPU(int numCPU);
    /// The same as setNumCPU(0).
    int enableMultithreading();

    /// The name is used in messages about this triangulation.
    void setName(const std::string& name);
    std::string getName() const;

    // Insertion and removal

    /// Inserts a point and returns its vertex. If a vertex has the same coordinates already, that one is
    /// returned; its custom index stays. Null, with a warning, if the coordinates aren't finite.
    Point2* insert(const Point2& point);

    /// Inserts many points, much faster than one at a time. Nothing is inserted, with a warning, if one of
    /// them isn't finite.
    void insert(const std::vector<Point2>& points);

    /// The same, and replaces `handles`: handle i is the vertex of point i, of equal points the one that
    /// stays. A vertex that existed before wins against a new one. All handles are null if nothing was
    /// inserted because of a point that isn't finite; an empty `points` leaves `handles` alone.
    void insert(const std::vector<Point2>& points, std::vector<Point2*>& handles);

    /// The same for `numPoints` interleaved coordinates (x, y) and an array of as many handles. Custom
    /// indices are -1.
    void insert(int numPoints, double* coordinates, Point2** handles);

    /// Removes a vertex. Null, a vertex that isn't in the triangulation (any more), and one that is or was the end of a
    /// constraint give a warning.
    void remove(Point2* pVertex);

    // Constraints

    /// Makes the segments constraints: their ends are inserted, and the straight pieces between become edges, or chains of
    /// edges where there are vertices on them or other constraints in their way. What is there already isn't made twice, and
    /// keeps the strategy that it had. Segments of no length are left out, with a warning unless directions count.
    ///
    /// The graph stays the triangulation's. It remembers the segments in their directions if `bOrientedSegments` is true;
    /// otherwise it looks for one closed ring, and turns that counterclockwise. Null, with a warning, for no segments, and for
    /// coordinates that aren't finite, when nothing is inserted.
    ///
    /// With CIS_CONSTRAINED_DELAUNAY all pieces are edges on return. Conforming segments, and all as long as the points are
    /// collinear, need applyConstraintsAndZones() as well. Without crossings everything is exact for all finite coordinates.
    /// A crossing is a new vertex, rounded to doubles: this is faithful for coordinates up to 4e9 in magnitude and details of
    /// 1e-3 and more, since ends within 1e-6 of a crossing are taken as the crossing (a segment with many crossings may add
    /// some of these up). A bundle of segments that overlap all but exactly cross each other again and again, and may get very
    /// many vertices; where these get out of hand, a warning tells that crossing constraints stay out from then on.
    ConstraintGraph2* createConstraint(const std::vector<Segment2>& vSegments,
                                       ConstraintInsertionStrategy cis, bool bOrientedSegments = false);

    /// Makes edges of all constraint pieces that aren't yet. A warning if there are no triangles. Pieces too short for doubles
    /// to be divided, and those of sets that don't come to rest, stay out, with a warning; the mesh is valid all the same.
    void applyConstraintsAndZones();

    /// Whether the edge between two vertices, or the edge opposite a triangle's corner, has to stay: it is an alive constraint
    /// or piece of one.
    bool isConstraint(Point2* p0, Point2* p1);
    bool isConstraint(Triangle2* pTriangle, int index);
    /// Whether the vertex is, or ever was, an end of a constraint piece; it can't be removed.
    bool isConstraint(Point2* pVertex);

    /// The alive constraint piece between two vertices, or null.
    ConstraintSegment2* getConstraintSegment(Point2* p0, Point2* p1);

    // Zones

    /// A zone to the left (ZL_INSIDE, ZL_BOUNDED) or to the right (ZL_OUTSIDE) of an oriented graph. ZL_GLOBAL needs no graph.
    /// Null, with a message, if there are no triangles, for a null graph and for one without orientation; ZL_GROW, which needs
    /// a seed, ends in a NorvikException. `bVerbose` adds a warning to a null result, here and below.
    ///
    /// All zones stay the triangulation's.
    Zone2* createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc, bool bVerbose = true);
    /// A zone of kind ZL_GROW (others give a message and null): what can be reached from the triangle around the seed without
    /// crossing a piece of the graphs, whatever their direction. A seed outside the hull, or inside of a hull edge, reaches
    /// nothing.
    Zone2* createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc, const Point2& seed,
                      bool bVerbose = true);
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc, const Point2& seed,
                      bool bVerbose = true);
    /// A zone of these triangles, of kind ZL_GROW: their border becomes a constraint graph, and each of their components gets a
    /// seed. A component of triangles all too thin for one is lost, with an error message.
    Zone2* createZone(const std::vector<Triangle2*>& vTriangles, bool bVerbose = true);

    /// Cuts a simple polygon, in any direction, out of the triangulation: a zone of kind ZL_BOUNDED of what lies inside of both the
    /// polygon and the convex hull as it was. With `bWithConstraints` the triangles keep their shape, see cutTriangles().
    /// Vertices of the polygon outside the hull are inserted, and the old hull becomes a constraint then; otherwise a warning
    /// tells that it doesn't. Null if the segments cross or aren't closed, when nothing is changed, and if they are several
    /// rings or nothing is inside, when they are cut into the mesh all the same.
    Zone2* createZone_cookieCutter(const std::vector<Segment2>& vSegments, bool bWithConstraints);

    /// Destroys a zone. Its graphs, its operands and the mesh stay. A pointer that is no zone of this triangulation (any more)
    /// gives a warning.
    void deleteZone(Zone2* pZone);

    // Quality meshes

    /// Makes a good mesh of a zone by adding vertices, inside the zone and on its constraints, see MeshGenParams for the limits.
    /// The zone must be of kind ZL_INSIDE or ZL_BOUNDED with a single graph: make one of any other by
    /// createZone(zone's triangles) and Zone2::convertToBoundedZone(). With several graphs it ends in a NorvikException.
    ///
    /// Limits that can't be met, as at sharp corners of the input, are missed, with a warning only where doubles end: see
    /// checkZoneQuality(). A null zone, or an angle above 30, is told on standard error, and other mistakes by an error message;
    /// nothing is done then. A zone that isn't closed and reaches the hull ends in a NorvikException. Subscribers hear of a phase
    /// "refine", which begins anew with each pass over the zone.
    void refine(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                bool bAllowConstraintSplitting);
    /// The same with all parameters. Mistakes are told by error messages.
    void refineAdvanced(MeshGenParams* pParameters);

    /// Whether no angle of the zone's triangles is below the limit and no edge more than 10 times as long as the shortest one of
    /// its triangle; an empty zone passes. Applies constraints first, and changes nothing else. If the zone fails, standard
    /// output tells each bad corner, the constraints are written to text files (`name`_c0.con and so on) and the mesh is drawn to
    /// Dt2_checkZoneQuality_`name`.ps, all in the working directory.
    ///
    /// Three limits ask for something else. The largest double: whether no triangle has more than 3 times the area of a
    /// neighbour in the zone, where neighbours of less than 0.25 don't count; failures are drawn to badZone`name`.ps.
    /// -999: the zone is drawn to `name`.ps as well (angles can't fail then). -1000: the constraints are written to binary
    /// segment files (`name`_c0_con.bin and so on), nothing is tested, and the zone may be null.
    ///
    /// Otherwise a null zone, and one of another triangulation, give a warning, and false.
    bool checkZoneQuality(Zone2* pZone, double minAngleDegree, const std::string& name,
                          const AcceptExperimentalFeature& accept);

    // Import and cutting

    /// Takes triangles from elsewhere into an empty triangulation as they are, Delaunay or not, and returns the zone of kind
    /// ZL_INSIDE that holds exactly them. Three points in a row are a triangle; equal coordinates mean the same vertex, which
    /// gets the custom index of the first of them. The triangles may have several components and holes. The space around them,
    /// holes included, is filled with further triangles, up to a box twice as large as theirs, whose corners are vertices too;
    /// without `bKeepBox` these are removed in the end, and the outline is the convex hull. Borders become constraints: a
    /// graph for each component, if its border is one ring that doesn't touch itself. Others, such as those with holes, are
    /// divided into many parts like that, so edges between given triangles become constraints there too.
    ///
    /// Triangles must run counterclockwise; with `bReorient` they needn't, and clockwise ones are turned around in `vPoints`.
    /// Other inner edges are no constraints, and later insertions nearby may flip them.
    ///
    /// Null, with a message, if the triangulation isn't empty, for no points or a number not divisible by 3, for coordinates
    /// that aren't finite, and for triangles without area (without `bReorient` only if two corners are equal). Null too if
    /// borders cross or an edge has more than two triangles; a picture of the fault (openEdges.ps, invalidInput.ps, bug.ps) is
    /// written to the working directory then, and the triangulation may only be destroyed or begun anew. A
    /// triangle that is given twice isn't noticed.
    Zone2* importTriangles(std::vector<Point2>& vPoints, bool bReorient, bool bKeepBox);

    /// Draws segments into the mesh: on return each is a chain of constraints. With `bWithConstraints` existing triangles keep
    /// their shape: edges that are crossed are split at the crossings, and edges around the cut become constraints, which
    /// ensures that none of them moves. Otherwise the crossings are inserted as vertices like any others. Crossings within 1e-5
    /// of a vertex fall on it. A warning, and
    /// nothing is cut, if there are no triangles or no segments with a length.
    void cutTriangles(const std::vector<Segment2>& vSegments, bool bWithConstraints);
    /// The same with one segment.
    void cutTriangles(const Point2& p0, const Point2& p1, bool bWithConstraints);

    // Queries

    /// The triangle that contains the point; any of those that share it if it lies on an edge or vertex. Null
    /// outside the convex hull, if there are no triangles yet, and (with a warning) for coordinates that
    /// aren't finite.
    Triangle2* locate(const Point2& point);

    /// The same for many points, much faster than one at a time in any order: `out` is replaced, and triangle i contains point
    /// i or is null. One warning if some aren't finite.
    void locate(const std::vector<Point2>& points, std::vector<Triangle2*>& out);

    /// The triangle that has the edge from p0 to p1 in its counterclockwise direction, or null. Null or equal
    /// arguments, and a p0 without triangles, end in a NorvikException.
    Triangle2* getAdjacentTriangle(Point2* p0, Point2* p1);

    /// Appends the triangles around a vertex, counterclockwise from its incident triangle; around a hull
    /// vertex that may jump across the gap. A vertex without triangles ends in a NorvikException.
    void getIncidentTriangles(Point2* pVertex, std::vector<Triangle2*>& out);

    /// Delivers all triangles, in the order of their making. `out` is replaced while no dead triangle waits
    /// for reuse, and appended to otherwise (removal, and insertion with several threads, leave dead ones):
    /// clear it first if that matters. Nothing happens if there are no triangles yet.
    void getTrianglePointers(std::vector<Triangle2*>& out);

    /// Replaces `out` by all vertices, in an order that keeps neighbours close.
    void getVertexPointers(std::vector<Point2*>& out);

    /// Different points in the triangulation, or its triangles; counted afresh.
    std::size_t numberOfPoints() const;
    std::size_t numberOfTriangles() const;

    /// Whether there are triangles: three points that aren't collinear have come in.
    bool is2D() const;

    /// The tight box of all vertices, invalid if there are none.
    Bbox2 computeBoundingBox();

    /// Replaces `out` by the vertices of the convex hull, counterclockwise, beginning with the one of least
    /// x, among these of least y. Vertices on straight stretches are included if `bAllVertices` is true. If
    /// there are no triangles: a warning, and `out` stays as it is.
    void getConvexHull(bool bAllVertices, std::vector<Point2*>& out);

    /// Self-test: the constraints, the links between triangles and, if `bCheckEmptyCircleProperty` is true, the Delaunay
    /// property off the constraints. Faults are reported on standard output, marked with `msg`, and plotted to PostScript
    /// files in the working directory.
    bool checkValidity(bool bCheckEmptyCircleProperty, const std::string& msg);

    /// Prints the distribution of the interior angles to standard output.
    void statistics(const std::string& title);

    /// Orientation of three points with finite coordinates; independent of this object's state.
    Orientation2 getOrientation(const Point2& p0, const Point2& p1, const Point2& p2);

    /// Seconds for the insertion of the points into a triangulation of their own, with this object's number
    /// of threads.
    double measureTrianguluationTime(std::vector<Point2>& points);

    // Pictures and messages

    /// Draws the triangulation to a PostScript file. If there are no triangles: an error message, and no
    /// file.
    void show(const std::string& fileName, bool bWithConstraints = true);
    /// Adds the triangulation's edges to a plot. If there are no triangles: an error message.
    void show(Visualizer2* pVisualizer, bool bWithConstraints = true);

    /// Writes the triangles of the triangulation, or of a zone, as a Wavefront OBJ file with all z 0. An error message, and no
    /// file, if there are no triangles.
    void writeObj(const std::string& fileName);
    void writeObj(const std::string& fileName, Zone2* pZone);

    /// Writes a folder that shows the triangles of the triangulation, or of a zone, in a web browser: a page "index.html", its
    /// scripts, and the triangles in "3d.obj" as `writeObj` writes them. Makes the folder and those above it where they are
    /// missing, and writes over files of an earlier scene. A warning, and nothing written, if the folder can't be made; an error
    /// message, and no "3d.obj", if there are no triangles. Throws std::logic_error for a null name.
    void writeWebScene(const char* dirname);
    void writeWebScene(const char* dirname, Zone2* pZone);

    /// Replaces the arrays by the whole mesh: the points in the order of getVertexPointers(), the triangles in that of
    /// getTrianglePointers(). If there are no triangles: a warning, and the arrays are empty.
    void exportMesh(MeshArrays& out);
    /// The same of a zone: its triangles in the same order, their corners in the order in which triangles mention them first. For
    /// null and a zone of another triangulation: a warning, and the arrays are empty.
    void exportMesh(Zone2* pZone, MeshArrays& out);

    // Control of long operations

    /// Asks the operation that is running to end at its next step; from any thread, also from within MsgBase::update(). The
    /// insertion of many points by one thread, applyConstraintsAndZones(), refine() and refineAdvanced() heed it; refinement
    /// not while it lays out a grid. Points that aren't in yet are given up then, and their handles are null, also if an equal point is in; constraint pieces
    /// that aren't edges yet stay waiting; a mesh is left as far as it is refined. All else is as if the operation had come to its
    /// end, progress messages included. Where nothing is running nothing happens.
    void requestCancel();
    /// Whether the last of these operations was cut short.
    bool wasCancelled() const;

    /// The subscriber hears of the progress of long operations, from 0.0 to 1.0. It isn't owned, and must
    /// stay alive until it is unsubscribed or the triangulation destroyed.
    void subscribe(MsgType type, MsgBase* pSubscriber);
    /// Takes back all subscriptions of this pair.
    void unsubscribe(MsgType type, MsgBase* pSubscriber);

    // Reserved for the development of the library

    /// Switches for experiments; programs don't need them.
    void setDev(const std::string& key, int i, double d);
    /// A door for debugging, which releases keep shut.
    void internal(int i, int j, std::string text);
    Dt2* getImpl();

private:
    Dt2* pImpl = nullptr;
};

}  // namespace KELMAR_NORVIK2D
