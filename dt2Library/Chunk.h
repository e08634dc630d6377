#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "Bbox2.h"
#include "KelmarTest.h"
#include "StarFlipper.h"
#include "VertexVault.h"

namespace KELMAR_NORVIK2D {

class Dt2;
class Visualizer2;

enum ChunkState { CHUNK_NEW = 0, CHUNK_STARTED = 1, CHUNK_FINISHED = 2 };

/// A run of vertices in Hilbert order that one thread inserts while others insert theirs, without any lock.
///
/// That goes well because of its area of influence, extBox, and three laws:
///  1. Only chunks whose areas are disjoint run at the same time (InserterMT sees to it).
///  2. A chunk makes and flips only triangles that lie in its area as a whole. What a new vertex changes lies in the circles
///     through it that are empty of other vertices; their union only shrinks while vertices come in, and the area encloses
///     the circles that reached the chunk's points before any chunk ran, and those of all triangles at their corners, but for
///     the corners of the fake box.
///     The triangles next to a changed region get one link written. Both ends of that edge lie in the area, and so does one
///     end of each of the other two: no other running chunk changes the triangle or writes a link of it. But it may stick
///     out into the area of another chunk, which then walks across it.
///  3. Walks stay in triangles that reach into the area. Each goes straight along the line to a point of the chunk from
///     corner 0 of a triangle at a vertex in the area: one at the place of a point of the chunk, or for the first walk a
///     corner of the triangle where the first point lay, none of the fake box's. All circles of the triangles at such a
///     vertex were among those that the area encloses, so corner 0 is in it as well, and so is the line, as boxes are convex.
///     No other running chunk changes a triangle on the line. It may write the link across an edge of it, but only of one in
///     its own area, which the line doesn't cross: walks look at such links in search of the way they came, and so links are
///     read and written as a whole (sharedNeighbour).
class Chunk {
public:
    using ItemSpan = VertexVault::ItemSpan;

    /// The items [first, last) of the dense ones; they must outlive the chunk, and so must the triangulation's box. Walks to
    /// the chunk's area start at a vertex in the mesh, better a close one. With null for it, they start at a corner of the
    /// fake box. `pPointBox` is where most vertices are; with null it is the triangulation's box.
    Chunk(Dt2* pDt2_, const Bbox2& box_, int label_, const std::vector<IdxVtxAct*>& vDenseVtx,
          std::size_t first, std::size_t last, const Point2* pNearVtx_ = nullptr,
          const Bbox2* pPointBox_ = nullptr);
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;

    class CircleTable;

    /// Finds the area of influence. Only reads the mesh: all chunks may do it at the same time. Chunks that lie close to each
    /// other look at the same circles, which a common table saves from being computed again.
    void determineExtBox();
    void determineExtBox(CircleTable& circles);
    /// Inserts the vertices.
    void insert();
    /// Gives unused triangles back, when all threads have ended.
    void finalize();

    /// Whether all corners of the triangle lie in the area of influence.
    bool isInBox(const Triangle2* pT) const;
    ChunkState getState() const noexcept { return state; }
    int getLabel() const noexcept { return label; }
    std::size_t getSize() const noexcept { return items.size(); }
    const Bbox2& getBox() const noexcept { return box; }
    const Bbox2& getExtBox() const noexcept { return extBox; }
    /// Whether the area is so large, or so uncertain, that nothing is to run beside this chunk.
    bool runsAlone() const noexcept { return bRunsAlone; }

    /// Draws the points, their box and the area of influence.
    void show(Visualizer2* pVisualizer) const;
    void show(const std::string& fileName) const;

private:
    struct Circle;

    void setBounds();
    void takeBoxOfPoints();
    void takeStartVtx(const Triangle2* pT);
    Triangle2* walkTo(const Point2& point, Triangle2* pT, const char* condition);
    void grow(Triangle2* pStartT, CircleTable& circles, Bbox2& circleBox);
    void addRing(CircleTable& circles, Bbox2& circleBox);
    void addCircle(const Circle& circle, const char* remark, Bbox2& circleBox);

    Triangle2* localCreateTriangleMT();
    Triangle2* localInsertVertex(Point2*& pVtx, Triangle2* pStartT);
    int locateInsideConflictT(const Point2* pVtx, Triangle2*& pT, int& edgeIndex);
    void localInitVCheckT13(Triangle2* pT, Point2* pVtx);
    void localSplitAndFlip(Triangle2* pT, Point2* pVtx);

    ChunkState state = CHUNK_NEW;
    Dt2* pDt2;
    const Bbox2* pBox;       ///< the triangulation's
    const Bbox2* pPointBox;  ///< where most vertices are
    int label;
    ItemSpan items;
    const Point2* pNearVtx;
    Bbox2 box;     ///< of the points
    Bbox2 extBox;  ///< nothing outside is touched
    bool bRunsAlone = false;
    std::vector<Triangle2*> vTriangles;  ///< scratch of determineExtBox
    KelmarTest predicates;
    StarFlipper flipper{predicates};
    bool bFirstSupply = true;
    std::vector<Triangle2*> vSupply;    ///< fresh triangles
    const Point2* pStartVtx = nullptr;  ///< where the first walk begins: triangles may be gone by then
};

/// Chunks that follow one another along the curve, as a task for MTCtrl.
struct AreaTask {
    std::span<Chunk* const> chunks;

    /// Finds their areas.
    void go();
};

}  // namespace KELMAR_NORVIK2D
