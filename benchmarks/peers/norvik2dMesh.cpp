#include <Norvik_2D.h>

#include <algorithm>
#include <vector>

#include "MeshPeer.h"

namespace {

using namespace KELMAR_NORVIK2D;

class Norvik2dMesh : public MeshPeer {
public:
    void setDomain(const MeshDomain& domain) override {
        std::vector<Segment2> border;
        for (const auto& [from, to] : domain.border)
            border.emplace_back(Point2(from.x, from.y), Point2(to.x, to.y));
        pMesh = std::make_unique<Norvik_2D>();
        ConstraintGraph2* const pGraph = pMesh->createConstraint(border, CIS_CONSTRAINED_DELAUNAY, true);
        std::vector<Triangle2*> vTriangles;
        pMesh->createZone(pGraph, ZL_INSIDE)->getTriangles(vTriangles);
        pZone = pMesh->createZone(vTriangles)->convertToBoundedZone();
    }

    void refine(const MeshLimits& limits) override {
        MeshGenParams params(pZone);
        params.minAngleDegree = limits.minAngleDegree;
        if (limits.maxArea > 0.0) params.maxTriangleArea = limits.maxArea;
        pMesh->refineAdvanced(&params);
    }

    std::size_t numberOfTriangles() override { return pZone->getNumberOfTriangles(); }

    std::size_t numberOfBadTriangles(double minAngleDegree) override {
        const double bound = minAngleDegree - 1e-6;
        const auto isBad = [=](const Triangle2* pTriangle) {
            return std::min({pTriangle->getInteriorAngle2D(0), pTriangle->getInteriorAngle2D(1),
                             pTriangle->getInteriorAngle2D(2)}) < bound;
        };
        std::vector<Triangle2*> vTriangles;
        pZone->getTriangles(vTriangles);
        return static_cast<std::size_t>(std::count_if(vTriangles.begin(), vTriangles.end(), isBad));
    }

    void clear() override { pMesh.reset(); }

private:
    std::unique_ptr<Norvik_2D> pMesh;
    Zone2* pZone = nullptr;  ///< the mesh's
};

}  // namespace

std::unique_ptr<MeshPeer> makeNorvik2dMesh() { return std::make_unique<Norvik2dMesh>(); }
