#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ConstraintSegment2.h"
#include "Point2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

class Color;
class Dt2;
class Visualizer2;

/// Constraint segments that were inserted together, and in which direction each of their pieces runs.
///
/// Segments that form one closed ring are recognised as a polygon when the graph is made, and turned counterclockwise. A graph
/// is oriented if it is a polygon, or was made from segments whose direction counts; only an oriented one can bound a zone,
/// which lies to the left of it. Both answers never change, also if pieces are divided later.
///
/// Graphs belong to their triangulation and live as long as it does. Only Norvik_2D::createConstraint makes them.
class NORVIK2D_EXPORT ConstraintGraph2 {
public:
    /// By the two vertices, the lower address first: whether the segment runs from the higher to the lower address.
    using PairReverse = std::map<std::pair<Point2*, Point2*>, bool>;

    /// From segments whose direction doesn't count. Degenerate ones are taken out of `parents`, with a warning.
    ConstraintGraph2(Dt2* pDt_, std::vector<ConstraintSegment2*>& parents, ConstraintInsertionStrategy cis_);
    /// From segments whose direction counts.
    ConstraintGraph2(Dt2* pDt_, std::vector<ConstraintSegment2*>& parents, const PairReverse& mPPReverse,
                     ConstraintInsertionStrategy cis_);
    ~ConstraintGraph2();
    ConstraintGraph2(const ConstraintGraph2&) = delete;
    ConstraintGraph2& operator=(const ConstraintGraph2&) = delete;

    bool isPolygon() const noexcept { return bIsPolygon; }
    bool isOriented() const noexcept { return bIsOriented; }
    ConstraintInsertionStrategy getInsertionStrategy() const noexcept { return cis; }
    Dt2* getDt2() const noexcept { return pDt; }

    /// Whether the record is alive and a segment of this graph, or a piece of one.
    bool isConstraint(const ConstraintSegment2* pSegment) const;
    /// The same for the record of two vertices.
    bool isConstraint(Point2* p, Point2* q) const;
    /// Whether the graph runs the record from getTrg() to getSrc(). A record that isn't of this graph ends in a
    /// NorvikException.
    bool isReverse(const ConstraintSegment2* pSegment) const;
    /// Whether the record is a segment of this graph, or a piece of one, alive or not.
    bool dbg_hasDirection(const ConstraintSegment2* pSegment) const;

    /// The two children of a divided record in the direction of travel; both null for an alive one.
    void getDirectChildren(const ConstraintSegment2* pSegment, ConstraintSegment2*& pChild0,
                           ConstraintSegment2*& pChild1) const;
    /// Replaces `out` by the alive pieces, in the order of the ring (counterclockwise) or of the input, those of one
    /// segment in the direction of travel.
    void getAliveConstraintChain(std::vector<ConstraintSegment2*>& out) const;
    /// Appends the two ends of each alive piece, in the order and direction of the chain: each inner vertex comes twice.
    void getPolygonVertices(std::vector<Point2*>& out) const;
    /// Replaces `out` by the segments as they were given (a polygon's in the order of the ring). If one was given
    /// repeatedly, each comes once, ordered by address.
    void getOriginalConstraintSegments(std::vector<ConstraintSegment2*>& out) const;
    /// Appends the segments as they were given of which the record is a piece, ordered by address; the record itself if it was
    /// given. Nothing for a record that isn't of this graph; a null pointer gives a warning.
    void getOriginalSegments(ConstraintSegment2* pPiece, std::vector<ConstraintSegment2*>& out) const;
    /// Appends the alive pieces, and orders all that `out` holds then by address, each once.
    void getChildConstraintSegments(std::vector<ConstraintSegment2*>& out) const;

    /// Takes in the children of a record of this graph that has been divided. The first owner that hears of it sees to the
    /// triangulation's books too.
    void updateSplittedConstraintSegment(ConstraintSegment2* pParent, bool bUpdateMgr);

    /// Draws the alive pieces to a PostScript file.
    void show(const std::string& fileName) const;
    /// Adds them to a plot.
    void show(Visualizer2* pVisualizer, const Color& color) const;

private:
    using Segments = std::vector<ConstraintSegment2*>;

    void init(Segments& parents);
    bool checkAndSortPolygon(const Segments& parents, bool bAllAlive);
    bool checkAndSortPolygonSub(const Segments& parents);
    ConstraintSegment2::Role::Direction findDirection(const ConstraintSegment2* pSegment) const;
    void setDirection(ConstraintSegment2* pSegment, bool bReverse);
    void takeUndirected(const Segments& parents);
    void takeDirected(const Segments& parents, const PairReverse& mPPReverse);
    void setDirectionsRecursive(Segments vOpen);
    std::pair<Point2*, Point2*> directedEnds(const ConstraintSegment2* pSegment) const;

    Dt2* pDt;
    ConstraintInsertionStrategy cis;
    Segments vCSegParents;
    /// Who was divided into whom, as getOriginalSegments() wants it: made when it is asked, dropped at the next division.
    struct Ancestry;
    mutable std::unique_ptr<Ancestry> pAncestry;
    bool bIsPolygon = false;
    bool bIsOriented = false;
};

}  // namespace KELMAR_NORVIK2D
