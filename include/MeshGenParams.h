#pragma once

#include <limits>

#include "Vector2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

class Triangle2;
class Zone2;

/// An admission by the caller of a development tool: it may change, or go away.
struct AcceptExperimentalFeature {};

/// What a good mesh of a zone is, for Norvik_2D::refineAdvanced. Lengths, areas and coordinates have the unit of the data.
///
/// A client may derive from it, to grade the mesh by place: the two operations are asked for each triangle that is judged, in
/// the middle of the run, and must not change the mesh.
class NORVIK2D_EXPORT MeshGenParams {
public:
    /// The zone has to be of kind ZL_INSIDE or ZL_BOUNDED with a single constraint graph. Of any other such a zone is made by
    /// Norvik_2D::createZone of its triangles and Zone2::convertToBoundedZone of that. For other kinds a message goes to standard
    /// error. The record doesn't own the zone.
    explicit MeshGenParams(Zone2* pZone_);
    virtual ~MeshGenParams();

    /// The limits for the size of this triangle: `maxTriangleArea` and `maxEdgeLength`, whatever the triangle.
    virtual double getMaxTriangleArea(Triangle2* pTriangle);
    virtual double getMaxEdgeLength(Triangle2* pTriangle);

    Zone2* pZone;
    /// Triangles with a smaller angle are refined, except where two constraints meet at a smaller one. At most 30; 0 or less, and
    /// the angle doesn't count.
    double minAngleDegree = 20.0;
    /// Constraints shorter than twice this length aren't split, which is what makes refinement end at sharp corners: with 0 it
    /// may go on there until 50 million vertices are made. It is not scaled to the data: for coordinates in small units make it
    /// smaller. Edges inside the zone may get shorter.
    double minEdgeLength = 0.001;
    /// Triangles with a longer edge, or a greater area, are refined. The largest double is no limit.
    double maxEdgeLength = std::numeric_limits<double>::max();
    double maxTriangleArea = std::numeric_limits<double>::max();
    /// Without it constraints stay whole; triangles for which one would have to be split stay as they are.
    bool bAllowConstraintSplitting = true;
    /// The greatest ratio of a triangle's area to that of a neighbour; the largest double for no limit. Limits below about 2 can't
    /// be met: the mesh becomes as fine as growFactorMinArea allows. Across a constraint nothing is compared, unless
    /// ConstraintSegment2::setAdjacentArea gave it an area.
    double growFactor = std::numeric_limits<double>::max();
    /// Smaller neighbours don't count for growFactor.
    double growFactorMinArea = 0.001;
    /// Kept here, and read by nothing.
    double aspectLimit = 10.0;
    /// With a direction other than (0,0) and a positive length the zone is filled first with the points of a square grid of that
    /// spacing. The vector is scaled to length 1 when the grid is made. Constraints that the grid's lines meet are split there,
    /// also those of other zones, and even without bAllowConstraintSplitting; grid points within half a spacing of other vertices
    /// are removed again, also where a vertex stood there before, unless it is the end of a constraint.
    Vector2 gridVector;
    double gridLength = 0.0;
    /// Without it this run may remove what earlier runs have inserted inside of zones, also of others, which aren't repaired. That
    /// fails (NorvikException) where a constraint was drawn through such a vertex since. With it they are safe for good, even if
    /// the run is refused.
    bool bProtectOlderSteiners = true;
    /// 1: each triangle that is refined is explained on standard output, and drawn to a file.
    int debugCommand = 0;
};

}  // namespace KELMAR_NORVIK2D
