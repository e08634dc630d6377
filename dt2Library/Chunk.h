#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Bbox2.h"
#include "KelmarTest.h"
#include "StarFlipper.h"
#include "VertexVault.h"

namespace KELMAR_NORVIK2D {

class Dt2;
class Visualizer2;

/// A run of vertices in Hilbert order that one thread inserts while others insert theirs, without any lock.
///
/// That goes well because of its area of influence, extBox, and three laws:
///  1. Only chunks whose areas are disjoint run at the same time (InserterMT sees to it).
///  2. A chunk makes and flips only triangles that lie in its area as a whole. What a new vertex changes lies in the circles
///     through it that are empty of other vertices; their union only shrinks while vertices come in, and the area encloses
///     the circles that reached the chunk's points before any chunk ran, and those of the triangles around them.
///     The triangles next to a changed region get one link written. Two of their corners lie in the area, so no other running
///     chunk changes them or writes another link of theirs.
///  3. Each walk begins at corner 0 of a triangle at a vertex in the area, which is in the area too, and follows the line from
///     there to a point in the area, as boxes are convex.
class Chunk {
public:
    using ItemSpan = VertexVault::ItemSpan;

    /// The items [first, last) of the dense ones; they must outlive the chunk, and so must the boxes: `box` is the
    /// triangulation's, `pointBox` that of all dense vertices. `pNearVtx` is a vertex in the mesh from which the walks to the
    /// chunk's area start.
    Chunk(Dt2* pDt2_, const Bbox2& box_, const Bbox2& pointBox_, int label_,
          const std::vector<IdxVtxAct*>& vDenseVtx, std::size_t first, std::size_t last,
          const Point2* pNearVtx_);
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;

    /// Takes the box of the points; by then all chunks exist.
    void takeBoxOfPoints();
    /// Finds the area of influence. Only reads the mesh and the box of all dense vertices: all chunks may do it at the same
    /// time.
    void determineExtBox();
    /// Inserts the vertices.
    void insert();
    /// Gives unused triangles back, when all threads have ended.
    void finalize();

    /// Whether all corners of the triangle lie in the area of influence.
    bool isInBox(const Triangle2* pT) const;
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
    struct CircleTable;

    void setBounds();
    Triangle2* walkTo(const Point2& point, Triangle2* pT);
    void grow(const Point2& a, const Point2& b, Triangle2* pStartT, int side, CircleTable& circles,
              Bbox2& circleBox);
    void addRing(CircleTable& circles, Bbox2& circleBox);
    void addCircle(Circle& circle, const char* remark, Bbox2& circleBox);

    Triangle2* localCreateTriangleMT();
    Triangle2* localInsertVertex(Point2*& pVtx, Triangle2* pStartT);
    int locateInsideConflictT(const Point2* pVtx, Triangle2*& pT, int& edgeIndex);
    void localSplitAndFlip(Triangle2* pT, Point2* pVtx);

    Dt2* pDt2;
    const Bbox2* pBox;       ///< the triangulation's
    const Bbox2* pPointBox;  ///< of all dense vertices
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

}  // namespace KELMAR_NORVIK2D
