// Meshes a steel plate with two bores for a simulation: triangles are small next to the bores and grow with the distance from
// them. Coordinates are metres.
#include <Norvik_2D.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

constexpr double width = 0.2, height = 0.1, boreRadius = 0.01;
const Point2 boreCentres[] = {{0.05, 0.05}, {0.14, 0.06}};

std::vector<Segment2> ringOf(const std::vector<Point2>& corners) {
    std::vector<Segment2> ring;
    for (std::size_t i = 0; i < corners.size(); ++i)
        ring.emplace_back(corners[i], corners[(i + 1) % corners.size()]);
    return ring;
}

std::vector<Segment2> bore(const Point2& centre) {
    constexpr int numCorners = 32;
    constexpr double step = 2.0 * 3.14159265358979 / numCorners;
    std::vector<Point2> corners;
    for (int i = 0; i < numCorners; ++i)
        corners.emplace_back(centre.x() + boreRadius * std::cos(step * i),
                             centre.y() + boreRadius * std::sin(step * i));
    return ringOf(corners);
}

/// A derived class tells the limits by place. They are asked for each triangle that is judged.
class FineAtBores : public MeshGenParams {
public:
    explicit FineAtBores(Zone2* pPlate) : MeshGenParams(pPlate) {
        minAngleDegree = 28.0;
        // The limit for divided borders isn't scaled to the data: with the default, a millimetre, the bores would stay as coarse
        // as they are.
        minEdgeLength = 1e-5 * width;
    }

    double getMaxEdgeLength(Triangle2* pTriangle) override {
        const Point2 place = pTriangle->getBarycenter();
        double distance = width;
        for (const Point2& centre : boreCentres)
            distance =
                std::min(distance, std::hypot(place.x() - centre.x(), place.y() - centre.y()) - boreRadius);
        return 0.002 + 0.3 * distance;
    }
};

double smallestAngle(const Zone2& zone) {
    std::vector<Triangle2*> triangles;
    zone.getTriangles(triangles);
    double smallest = 180.0;
    for (const Triangle2* pTriangle : triangles)
        for (int i = 0; i < 3; ++i) smallest = std::min(smallest, pTriangle->getInteriorAngle2D(i));
    return smallest;
}

}  // namespace

int main() {
    Norvik_2D mesh;
    const auto createZone = [&](const std::vector<Segment2>& ring) {
        return mesh.createZone(mesh.createConstraint(ring, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
    };
    Zone2* pPlate = createZone(ringOf({{0, 0}, {width, 0}, {width, height}, {0, height}}));
    for (const Point2& centre : boreCentres) pPlate = zoneDifference(pPlate, createZone(bore(centre)));

    // Refinement asks for a zone with one graph around it.
    Zone2* pDomain = pPlate->convertToBoundedZone();

    FineAtBores params(pDomain);
    mesh.refineAdvanced(&params);
    std::cout << "area " << pDomain->getArea2D() << ", " << pDomain->getNumberOfTriangles()
              << " triangles, smallest angle " << smallestAngle(*pDomain) << '\n';
    const bool bGood =
        mesh.checkZoneQuality(pDomain, params.minAngleDegree, "plate", AcceptExperimentalFeature());
    std::cout << (bGood ? "all angles are met" : "some angles are missed") << '\n';
    pDomain->show("refinement.ps", false, true);
}
