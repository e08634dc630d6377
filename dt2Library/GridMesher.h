#pragma once

#include <vector>

#include "AddressSet.h"
#include "MeshGenParams.h"
#include "Point2.h"
#include "Segment2.h"
#include "SegmentChecker.h"
#include "Vector2.h"

namespace KELMAR_NORVIK2D {

class Dt2;
class Zone2;

/// Fills a zone with the points of a square grid of any direction before it is refined, so that most of the mesh is regular and
/// refinement only makes the transition to the border.
///
/// The grid is made of stripes, parallel lines across the zone in two directions. Constraints cut them into pieces that end half
/// a grid step away from each cut, and the crossings of the pieces that lie in the zone are the grid's points. Each cut leaves a
/// knife behind, a short segment on the stripe, where the constraint is to be split: so the border gets points that fit the grid.
///
/// Its parts can be called by themselves. Results are appended.
class GridMesher {
public:
    explicit GridMesher(MeshGenParams* pParams_);

    /// The whole procedure: scales the parameters' direction to length 1 and inserts the points. Fewer than 4 of them, and the
    /// mesh stays as it is. With `bChop` constraints are split at the knives.
    void insertGridPoints(bool bChop);

    /// The crossings of the pieces in the one direction with those in the other.
    void getGridPoints(std::vector<Point2>& points, std::vector<Segment2>& vKnives);

    /// The pieces in the zone along the grid's direction, and those orthogonal to it.
    void createGrid(std::vector<Segment2>& vPiecesA, std::vector<Segment2>& vPiecesB,
                    std::vector<Segment2>& vKnives);

    /// Lines along a unit vector, one grid step apart and centred in the zone's width, all longer than the zone. None where the
    /// zone is narrower than a grid step.
    void createStripes(const Vector2& dir, std::vector<Segment2>& vStripes);

    /// Cuts a stripe where it meets a segment in a single point; what lies behind the last cut is left out.
    void chopSegment(SegmentChecker* pChecker, Segment2* pStripe, double stripeHalfLength,
                     std::vector<Segment2>& vPieces, std::vector<Segment2>& vKnives);

    /// Keeps the pieces that begin in one of these triangles. Their ends needn't be tested: pieces cross no constraint.
    void dropNonZoneSegments(const TriangleSet& sZone, std::vector<Segment2>& vPieces);

    /// Removes an end of each edge in the zone that is shorter than that, if one is in `vHandles`: the one of lower address if
    /// both are. What is left in `vHandles` is ordered by address then.
    void avoidShortEdges(std::vector<Point2*>& vHandles, double minLength);

    /// Splits constraints at knives that are 0.7 grid steps or more away from both ends.
    void chopConstraints(std::vector<Segment2> vKnives);

private:
    Dt2& getDt() const;
    std::vector<Point2*> getConstraintPoints() const;
    void findExtremes(const std::vector<Point2*>& vConstraintPoints, const Vector2& dir);
    double farthestAlong(const std::vector<Point2*>& vConstraintPoints, const Vector2& toRight) const;
    bool findSplit(const SegmentChecker& checker, Segment2& constraint, Point2& split) const;

    MeshGenParams* pParams;
    Zone2* pZone;
    double usedTargetLength;  ///< the grid step
    /// The constraint points with the fewest others to the left, and to the right, of the last stripes' direction.
    Point2 extremeLeft, extremeRight;
};

}  // namespace KELMAR_NORVIK2D
