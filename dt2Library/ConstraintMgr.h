#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "Edge2.h"
#include "FlatTable.h"
#include "Point2.h"
#include "Segment2.h"
#include "SimplePool.h"
#include "VertexPair2.h"

namespace KELMAR_NORVIK2D {

class Dt2;

/// All constraint segments and graphs of one triangulation, of which it is a part. It makes and owns the records, says which
/// edges are constraints, and drives the records into the mesh.
///
/// A triangle carries no mark: whether an edge is a constraint is asked here by its two vertices.
///
/// Laws:
///  1. There is one record for each pair of vertices that ever was a constraint or a piece of one.
///  2. Records and graphs stay until the triangulation is destroyed.
///  3. The filter, once it exists, has the bits of all constraint vertices set: a clear bit proves that a vertex is none.
class ConstraintMgr {
public:
    using Segments = std::vector<ConstraintSegment2*>;
    using PointPair = std::pair<Point2*, Point2*>;

    explicit ConstraintMgr(Dt2* pDt_);
    ~ConstraintMgr();
    ConstraintMgr(const ConstraintMgr&) = delete;
    ConstraintMgr& operator=(const ConstraintMgr&) = delete;

    // Questions

    bool hasConstraints() const noexcept { return !mConstraintSegments.empty(); }
    /// Whether the vertex is, or ever was, the end of a constraint.
    bool isConstraintVertex(const Point2* pVtx) const;
    /// Whether the two vertices have an alive record.
    bool isConstraint(Point2* p, Point2* q) const { return getAliveConstraintSegment(p, q) != nullptr; }
    /// The same for the loops that ask it of many edges, nearly all of which are none.
    bool isConstraint_performanceVersion(Point2* p, Point2* q) {
        return hasConstraints() && mayBeConstraint(p, q) && isConstraint(p, q);
    }
    ConstraintSegment2* getAliveConstraintSegment(Point2* p, Point2* q) const;
    /// The record of two vertices, alive or not; null if there is none.
    ConstraintSegment2* findConstraintSegment(Point2* p, Point2* q) const;
    /// Appends the alive records, ordered by the addresses of their ends.
    void getAliveConstraintSegments(Segments& out) const;
    /// Of all records, divided ones included.
    std::size_t getNumberOfRecords() const noexcept { return mConstraintSegments.size(); }

    // Records

    /// The record of two different vertices, made if there is none. An existing one keeps its strategy.
    ConstraintSegment2* addConstraintSegment(Point2* p, Point2* q, ConstraintInsertionStrategy cis);
    /// Enters the children of a divided record.
    void updateConstraintSegment(ConstraintSegment2* pParent, ConstraintSegment2* pChild0,
                                 ConstraintSegment2* pChild1);
    /// Makes the filter once the triangulation is large enough, and enters the ends of a record.
    void manageHash(const ConstraintSegment2* pSegment);

    // Enforcement

    /// Drives a record, or its alive leaves, into the mesh. As long as there are no triangles it waits for apply().
    void applyOneSegment(ConstraintSegment2* pSegment);
    /// Drives all records into the mesh, until nothing changes any more.
    void apply();

    // Input. Graphs stay the manager's; without segments there is none.

    ConstraintGraph2* createConstraint(const std::vector<PointPair>& vPairs, ConstraintInsertionStrategy cis,
                                       bool bApply);
    ConstraintGraph2* createConstraint(const std::vector<Edge2*>& vEdges, ConstraintInsertionStrategy cis,
                                       bool bApply);
    ConstraintGraph2* createConstraint(const std::vector<Segment2>& vSegments,
                                       ConstraintInsertionStrategy cis);
    /// The segments' directions count.
    ConstraintGraph2* createConstraint_oriented(const std::vector<Segment2>& vSegments,
                                                ConstraintInsertionStrategy cis);
    ConstraintGraph2* createConstraint_oriented(const std::vector<Edge2>& vEdges,
                                                ConstraintInsertionStrategy cis);

    // Diagnostics

    /// Write the alive pieces of each graph, in the order of their ends' addresses: a text file for each, name_c0.con and so
    /// on, or a segment file, name_c0_con.bin.
    void writeConstraints(const std::string& name) const;
    void writeConstraintsBIN(const std::string& name) const;

private:
    /// One bit for each vertex, by its address; they wrap around in large triangulations.
    using VertexFilter = std::array<std::uint64_t, 4096>;

    static std::uint64_t& wordOf(VertexFilter& filter, const Point2* pVtx) noexcept {
        return filter[reinterpret_cast<std::uintptr_t>(pVtx) >> 11 & 0xFFF];
    }
    /// Neighbours in the pool, 32 bytes apart, have neighbouring bits.
    static std::uint64_t bitOf(const Point2* pVtx) noexcept {
        return std::uint64_t{1} << (reinterpret_cast<std::uintptr_t>(pVtx) >> 5 & 63);
    }
    /// What the filter says. It may come into being with the question, once the triangulation has grown.
    bool mayBeConstraint(const Point2* p, const Point2* q) {
        if (pVertexFilter == nullptr) manageHash(nullptr);
        return pVertexFilter == nullptr ||
               ((wordOf(*pVertexFilter, p) & bitOf(p)) != 0 && (wordOf(*pVertexFilter, q) & bitOf(q)) != 0);
    }

    class Labels;
    class LoopProgress;
    ConstraintSegment2* addConstraintSegment(Point2* p, Point2* q, ConstraintInsertionStrategy cis,
                                             Labels& labels);
    void reserve(std::size_t numRecords);
    Segments makeRecords(const std::vector<PointPair>& vPairs, ConstraintInsertionStrategy cis,
                         LoopProgress& loopProgress);
    std::vector<PointPair> findVertices(const std::vector<Segment2>& vSegments) const;
    void insertMissing(const std::vector<Segment2>& vSegments, std::vector<PointPair>& vPairs);
    ConstraintGraph2* createDirected(const std::vector<PointPair>& vPairs, ConstraintInsertionStrategy cis);
    bool applyOnce(const Segments& vCurrent, Segments& vNext);
    ConstraintGraph2* keep(std::unique_ptr<ConstraintGraph2> pGraph);

    struct EndsOf {
        VertexPair2 operator()(const ConstraintSegment2* pSegment) const noexcept {
            return {pSegment->getSrc(), pSegment->getTrg()};
        }
    };
    struct PairHash {
        std::size_t operator()(const VertexPair2& pair) const noexcept {
            return AddressHash{}(pair.getVtx0(), pair.getVtx1());
        }
    };

    Dt2* pDt;
    SimplePool<ConstraintSegment2> segmentPool;
    FlatTable<ConstraintSegment2*, PairHash, EndsOf> mConstraintSegments;
    // Made when they are asked for, of the records that there are then.
    mutable FlatTable<const Point2*> sConstraintVertices;
    mutable std::int64_t numWithVertices = 0;  ///< records whose ends are in sConstraintVertices
    mutable Segments vByEnds;                  ///< records in order
    std::vector<std::unique_ptr<ConstraintGraph2>> vConstraintGraphs;
    std::unique_ptr<VertexFilter> pVertexFilter;
};

}  // namespace KELMAR_NORVIK2D
