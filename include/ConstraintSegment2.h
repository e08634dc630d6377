#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <map>
#include <memory>
#include <vector>

#include "Point2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

class ConstraintGraph2;
class ConstraintMgr;

/// How a segment becomes a chain of edges. The numbers are part of the interface.
enum ConstraintInsertionStrategy : int {
    /// The mesh stays Delaunay: a segment that isn't an edge is halved until its pieces are. Where two such segments cross
    /// they get no common vertex, unless halving happens to find one: crossing segments want the other strategy.
    CIS_CONFORMING_DELAUNAY = 0,
    /// The triangles that a segment crosses are replaced. Vertices are added only where it crosses other segments.
    CIS_CONSTRAINED_DELAUNAY = 1
};

/// The demand that the straight piece between two vertices be an edge, or a chain of edges, of the triangulation.
///
/// Records belong to their triangulation and live as long as it does. A piece that has to be divided stays behind as the
/// parent of two children: each segment that was ever asked for is the root of a tree whose alive leaves are the pieces that
/// have to be edges now. A record has no direction of its own; ConstraintGraph2 knows directions.
///
/// Laws:
///  1. The ends are different and stored in the order of their addresses. A triangulation has one record for each pair.
///  2. There are no children or two: child 0 joins getSrc() to the split vertex, child 1 joins getTrg() to it. A child's own
///     ends stand in the order of their addresses too.
///  3. All graphs that own a record own its children.
///
/// Broken laws end in a NorvikException.
class NORVIK2D_EXPORT ConstraintSegment2 {
public:
    /// An alive record without owners. `p0_` must have the lower address.
    ConstraintSegment2(Point2* p0_, Point2* p1_, ConstraintInsertionStrategy cis_);
    ConstraintSegment2(const ConstraintSegment2&) = delete;
    ConstraintSegment2& operator=(const ConstraintSegment2&) = delete;

    /// The end at the lower address.
    Point2* getSrc() const noexcept { return p0; }
    /// The end at the higher address.
    Point2* getTrg() const noexcept { return p1; }
    ConstraintInsertionStrategy getCIS() const noexcept { return cis; }
    std::size_t getNumberOfOwners() const { return getOwners().size(); }

    /// A limit for the growth of triangles next to the segment, which mesh generation reads; the largest double at first.
    /// Children don't inherit it.
    double getAdjacentArea() const noexcept { return adjacentArea; }
    void setAdjacentArea(double area) noexcept { adjacentArea = area; }

    /// Whether this very piece is to be an edge: it is neither divided nor suspended.
    bool isAlive() const noexcept { return bAlive && !isSplit(); }
    /// Suspend the demand and restore it, during surgery.
    void kill() noexcept { bAlive = false; }
    void unkill() noexcept { bAlive = true; }

    /// By the addresses of the ends, getSrc() first.
    bool operator<(const ConstraintSegment2& other) const noexcept;

    /// Makes the graph an owner of this record and of all below it.
    void addOwnerRecursive(ConstraintGraph2* pGraph);
    /// Takes the graph away from the owners of this record only.
    void removeOwner(ConstraintGraph2* pGraph);

    /// Appends the alive leaves below a divided record, those of child 0 first: not the order along the line (for that see
    /// ConstraintGraph2::getAliveConstraintChain).
    void getChildrenRec(std::vector<ConstraintSegment2*>& out) const;
    /// The same for a divided record; appends an alive one itself.
    void getAlivePieces(std::vector<ConstraintSegment2*>& out);
    /// The two children and the vertex that they share. For an alive record a warning, and the arguments stay.
    void getChildrenAndSplitPoint(ConstraintSegment2*& pChild0, ConstraintSegment2*& pChild1,
                                  Point2*& pSplit) const;

    /// Divides an alive record with owners at a vertex of the mesh, without touching a triangle. Children may be records that
    /// exist already. False, with a warning, and nothing has changed, if the record would become a piece of its own pieces.
    bool split_combinatorialOnly(Point2* pSplit);
    /// Inserts a vertex, divides the alive record there and makes the pieces edges. The point has to lie on the segment, as
    /// well as doubles allow. Returns the vertex; null, and nothing has changed, if the point coincides with an end, and (with
    /// a warning) if it isn't finite.
    Point2* insertAndSplit(const Point2& point);
    /// The same, and removes the vertices that refinement has placed closer to the new vertex than getSrc() is. False if
    /// the point coincides with an end.
    bool splitAndRemovePrev(const Point2& point);

    /// Prints whether each owner knows the direction of this record; returns whether all do.
    bool dbg_hasDirection() const;

    /// The label of the next record made, anywhere in the process. Labels serve messages only.
    static std::atomic<std::uint32_t> runningLabel;

private:
    friend NORVIK2D_EXPORT std::ostream& operator<<(std::ostream& os, const ConstraintSegment2& segment);

    friend class ConstraintGraph2;
    friend class ConstraintMgr;

    ConstraintSegment2(Point2* p0_, Point2* p1_, ConstraintInsertionStrategy cis_, std::uint32_t label_);

    /// What a graph has to do with the record. The direction stays when the graph ceases to be an owner.
    struct Role {
        enum Direction : std::uint8_t { UNKNOWN, FORWARD, REVERSE };

        bool bOwner = false;
        Direction direction = UNKNOWN;
    };
    using Roles = std::map<ConstraintGraph2*, Role>;

    bool isSplit() const noexcept { return vChildren[0] != nullptr; }
    /// The role of a graph, a new one if it has none.
    Role& roleOf(ConstraintGraph2* pGraph) {
        if (pFirstGraph == nullptr) pFirstGraph = pGraph;
        return pFirstGraph == pGraph ? firstRole : furtherRoleOf(pGraph);
    }
    Role& furtherRoleOf(ConstraintGraph2* pGraph);
    const Role* findRole(const ConstraintGraph2* pGraph) const noexcept;
    std::vector<ConstraintGraph2*> getOwners() const;
    ConstraintMgr* getManager() const;
    bool wouldContainItself(Point2* pSplit) const;
    void makeChildren(Point2* pSplit);
    void establishPieces();

    Point2* p0;
    Point2* p1;
    ConstraintGraph2* pFirstGraph = nullptr;  ///< nearly all records have one graph only
    Role firstRole;
    bool bAlive = true;
    ConstraintInsertionStrategy cis : 8;
    std::uint32_t label;
    std::array<ConstraintSegment2*, 2> vChildren{};  ///< both or none
    std::unique_ptr<Roles> pFurtherRoles;            ///< of the other graphs
    double adjacentArea = std::numeric_limits<double>::max();
};

static_assert(sizeof(ConstraintSegment2) == 64, "a record fills a cache line");

NORVIK2D_EXPORT std::ostream& operator<<(std::ostream& os, const ConstraintSegment2& segment);

}  // namespace KELMAR_NORVIK2D
