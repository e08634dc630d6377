#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "Point2.h"
#include "Triangle2.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

class ConstraintSegment2;
class Dt2;
class MeshGenParams;
struct UniformLimits;

/// Where the walk from a triangle to its circumcentre ends. Other results are 0 to 2: the way is blocked there by that edge, a
/// constraint or a hull edge, which has to be split.
enum SplitIndex {
    SPLIT_NONE = -1,  ///< nothing is in the way
    SPLIT_NEVER = 4   ///< the circumcentre is a vertex already, or no point at all: nothing can be done
};

/// The judge of one triangle: whether it has to be refined, and where the new vertex goes. That is the circumcentre, or, where
/// a constraint lies in between, a point of the constraint.
///
/// Whether a triangle is good is cheap to say, and most are; only for the others the circumcentre is looked for, since a
/// triangle whose new vertex has no legal place is left alone, however bad it is.
class RefCand3 {
public:
    RefCand3(Dt2* pDt_, Triangle2* pTriangle_);

    /// Whether the record still is the triangle that the candidate was made for.
    bool isAlive() const noexcept {
        return corner(pTriangle, 0) == corners[0] && corner(pTriangle, 1) == corners[1] &&
               corner(pTriangle, 2) == corners[2];
    }

    /// The smallest angle of a triangle in degrees, which orders the queue: two angles are measured, and the third one is what
    /// remains of 180.
    static double minAngleOf(const Triangle2* pT);
    double getMinAngle() const { return minAngleOf(pTriangle); }
    /// Whether a triangle with this smallest angle meets limits that are the same for all: none of the steps below would refine
    /// it.
    static bool meetsLimits(const Triangle2* pT, double minAngle, const UniformLimits& limits);

    /// The decision. Afterwards, if it is true, the place of the new vertex is known.
    bool needRefinement(MeshGenParams* pParams);

    // The place of the new vertex

    /// The triangle where the walk to the circumcentre ended, and its result.
    std::pair<Triangle2*, int> getContainingTriangleAndIndex() const noexcept {
        return {pContainingT, splitIndex};
    }
    Point2 getSteiner() const noexcept { return steiner; }
    /// The alive record of an edge of the containing triangle; null if nothing is to be split.
    ConstraintSegment2* getAliveConstraintSegment(int index) const;

    // The steps of the decision

    /// Computes the circumcentre and walks there.
    void init();
    void computeSteiner();
    void computeMinMax();
    /// Walks from `pStartT` towards the circumcentre, along the straight line from the corner opposite the longest edge, up to
    /// the first constraint. `pStartT` becomes the triangle where the walk ends.
    int walkUntilConstraint(const Point2* pCircumcenter, Triangle2*& pStartT);
    /// Whether the new vertex has no legal place.
    bool highPriorityReject(MeshGenParams* pParams) const;
    bool illegalSplit(MeshGenParams* pParams) const;
    /// Whether a circumcentre of doubtful accuracy may be used.
    bool isSafe() const;
    /// Whether the triangle exceeds a limit of size or growth, whatever its angles.
    bool highPriorityAccept(MeshGenParams* pParams) { return reasonOfSize(pParams) != Reason::NONE; }
    bool needRefinementDueToGrowth(double factor, double minArea) const;
    /// Whether two constraints meet in a corner at a smaller angle: no refinement can repair that.
    bool hasNarrowConstraintAngle(double minAngle) const;

    // Properties

    Triangle2* getTriangle() const noexcept { return pTriangle; }
    Triangle2* getContainingTriangle() const noexcept { return pContainingT; }
    int getSplitIndex() const noexcept { return splitIndex; }
    double getRadius() const noexcept { return radius; }
    double getMinSqSideLength2D() const noexcept { return sqSideLengths[0]; }
    double getMaxSqSideLength2D() const noexcept { return sqSideLengths[2]; }
    /// The radius over the shortest side.
    double getQuality2D() const;
    /// Whether the edge is a constraint.
    bool isConstraint(int index) const;
    bool operator>(const RefCand3& other) const noexcept { return radius > other.radius; }

    // Debugging

    /// Draws the triangle in its triangulation, if the candidate is being debugged.
    void showT(const std::string& name) const;
    /// Prints the state to standard output.
    void debug() const;

    /// The label of the next candidate, and the number of the last picture, anywhere in the process.
    static std::atomic<std::int32_t> debug_runningLabel;
    static std::atomic<std::int32_t> needCtrDbg;

private:
    enum class Reason { NONE, SIDE_LENGTH, AREA, GROWTH, MIN_ANGLE };

    Reason reasonOfSize(MeshGenParams* pParams);
    Reason reasonToRefine(MeshGenParams* pParams);
    bool isOutOfRange() const;
    bool isAtPrecisionLimit() const;
    void explain(Reason reason, MeshGenParams* pParams) const;

    std::int32_t label;
    std::array<Point2*, 3> corners;
    Dt2* pDt;
    Triangle2* pTriangle;
    Triangle2* pContainingT = nullptr;
    Point2 steiner{-std::numeric_limits<double>::max(), -std::numeric_limits<double>::max()};
    double radius = -1.0;
    int splitIndex = SPLIT_NONE;
    bool bAccurateDual = true;
    bool bDebug = false;
    std::array<double, 3> sqSideLengths{-1.0, -1.0, -1.0};  ///< ascending
};

}  // namespace KELMAR_NORVIK2D
