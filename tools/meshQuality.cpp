#include "meshQuality.h"

#include <algorithm>
#include <cmath>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

// Angles and lengths measured twice may differ in their last places.
constexpr double angleTolerance = 1e-6;
constexpr double sizeTolerance = 1e-9;

constexpr int ccw(int i) { return (i + 1) % 3; }
constexpr int cw(int i) { return (i + 2) % 3; }

class Judge {
public:
    Judge(Norvik_2D& mesh_, MeshGenParams& params_) : mesh(mesh_), params(params_) {}

    void judge(Triangle2* pTriangle) {
        const double smallest = addAngles(pTriangle);
        const bool bAngle = params.minAngleDegree > smallest + angleTolerance;
        const bool bSize = isTooLarge(pTriangle);
        if (!bAngle && !bSize) return;
        if (!bSize && isAtSmallInputAngle(pTriangle))
            ++quality.numAtSmallInputAngle;
        else if (isAtWholeSegment(pTriangle))
            ++quality.numAtWholeSegment;
        else
            ++quality.numForOtherReasons;
    }

    const MeshQuality& getQuality() const { return quality; }

private:
    /// Returns the smallest.
    double addAngles(const Triangle2* pTriangle) {
        double smallest = 180.0;
        for (int i = 0; i < 3; ++i) {
            const double angle = pTriangle->getInteriorAngle2D(i);
            const auto bin = static_cast<std::size_t>(angle + angleTolerance) / MeshQuality::degreesPerBin;
            ++quality.numAngles[std::min(bin, quality.numAngles.size() - 1)];
            smallest = std::min(smallest, angle);
        }
        quality.smallestAngle = std::min(quality.smallestAngle, smallest);
        return smallest;
    }

    bool isTooLarge(Triangle2* pTriangle) {
        const double shrink = 1.0 - sizeTolerance;
        return std::sqrt(pTriangle->getMaxSqEdgeLen2D()) * shrink > params.getMaxEdgeLength(pTriangle) ||
               pTriangle->getArea2D() * shrink > params.getMaxTriangleArea(pTriangle);
    }

    bool isAtSmallInputAngle(Triangle2* pTriangle) {
        for (int i = 0; i < 3; ++i)
            if (mesh.isConstraint(pTriangle, ccw(i)) && mesh.isConstraint(pTriangle, cw(i)) &&
                pTriangle->getInteriorAngle2D(i) < params.minAngleDegree)
                return true;
        return false;
    }

    /// Walks from the corner opposite the longest edge straight to the circumcentre, as far as no constraint is in the way.
    bool isAtWholeSegment(Triangle2* pTriangle) {
        const Point2 centre = pTriangle->getDual().first;
        int i = pTriangle->getMaxIndex();
        const Point2 start = *pTriangle->getCorner(i);
        for (Triangle2* pAt = pTriangle; pAt != nullptr;) {
            Point2 *const pRight = pAt->getCorner(ccw(i)), *const pLeft = pAt->getCorner(cw(i));
            const Orientation2 side = mesh.getOrientation(*pRight, *pLeft, centre);
            if (side == ORIENTATION2_CCW) return false;
            if (mesh.isConstraint(pAt, i)) return staysWhole(std::sqrt(pAt->getSquaredEdgeLength2D(i)));
            Triangle2* const pNext = pAt->getOppositeTriangle(i);
            if (side == ORIENTATION2_COLLINEAR || pNext == nullptr) return false;
            const Point2& apex = *pNext->getCorner(pNext->getIntraTriangleIndex(pAt));
            const bool bApexOnLeft = mesh.getOrientation(start, centre, apex) == ORIENTATION2_CCW;
            i = pNext->getIntraTriangleIndex(bApexOnLeft ? pLeft : pRight);
            pAt = pNext;
        }
        return false;
    }

    bool staysWhole(double length) const {
        return !params.bAllowConstraintSplitting || 2.0 * params.minEdgeLength > length;
    }

    Norvik_2D& mesh;
    MeshGenParams& params;
    MeshQuality quality;
};

}  // namespace

MeshQuality measureQuality(Norvik_2D& mesh, MeshGenParams& params) {
    std::vector<Triangle2*> vTriangles;
    params.pZone->getTriangles(vTriangles);
    Judge judge(mesh, params);
    for (Triangle2* pTriangle : vTriangles) judge.judge(pTriangle);
    return judge.getQuality();
}
