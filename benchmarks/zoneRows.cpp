#include "zoneRows.h"

#include <Norvik_2D.h>

#include <cmath>
#include <memory>
#include <numbers>

#include "PlainFlood.h"
#include "pointSets.h"
#include "table.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr std::size_t million = 1000000;
constexpr std::size_t numCorners = 2500;
constexpr std::size_t numKnives = 1000;
constexpr double radius = 0.4;

/// Half of the unit square, about.
std::vector<Segment2> circle(double x, double y, std::size_t numSegments) {
    const auto cornerAt = [&](std::size_t i) {
        const double phi =
            2.0 * std::numbers::pi * static_cast<double>(i % numSegments) / static_cast<double>(numSegments);
        return Point2(x + radius * std::cos(phi), y + radius * std::sin(phi));
    };
    std::vector<Segment2> segments;
    for (std::size_t i = 0; i < numSegments; ++i) segments.emplace_back(cornerAt(i), cornerAt(i + 1));
    return segments;
}

std::unique_ptr<Norvik_2D> makeMesh(std::size_t numPoints) {
    std::vector<Point2> points;
    for (const auto& [x, y] : uniformPoints(numPoints)) points.emplace_back(x, y);
    // Room for the vertices of circles and cuts too: all triangles come to lie in one block of memory, so that the plain flood
    // can number them by their addresses.
    auto pMesh = std::make_unique<Norvik_2D>(static_cast<unsigned int>(numPoints + numPoints / 8));
    pMesh->insert(points);
    return pMesh;
}

/// A million points, and two circles with about a million triangles in each, which overlap.
struct Scene {
    Scene()
        : pMesh(makeMesh(million)),
          pGraph0(pMesh->createConstraint(circle(0.45, 0.5, numCorners), CIS_CONSTRAINED_DELAUNAY)),
          pGraph1(pMesh->createConstraint(circle(0.55, 0.5, numCorners), CIS_CONSTRAINED_DELAUNAY)),
          pZone0(pMesh->createZone(pGraph0, ZL_INSIDE)),
          pZone1(pMesh->createZone(pGraph1, ZL_INSIDE)),
          flood0(*pMesh, *pGraph0),
          flood1(*pMesh, *pGraph1),
          pCommon(pMesh->locate(Point2(0.5, 0.5))) {}

    std::unique_ptr<Norvik_2D> pMesh;
    ConstraintGraph2 *pGraph0, *pGraph1;
    Zone2 *pZone0, *pZone1;
    PlainFlood flood0, flood1;
    Triangle2* pCommon;  ///< within both
};

/// How many triangles, or edges, one run has found.
using Query = std::size_t (*)(Scene&);

std::size_t insideByZone(Scene& scene) {
    std::vector<Triangle2*> vTriangles;
    scene.pZone0->getTriangles(vTriangles);
    return vTriangles.size();
}

std::size_t insideByFlood(Scene& scene) {
    std::vector<Triangle2*> vTriangles;
    scene.flood0.flood(scene.pCommon, vTriangles);
    return vTriangles.size();
}

std::size_t unionByZone(Scene& scene) {
    Zone2* const pUnion = zoneUnion(scene.pZone0, scene.pZone1);
    std::vector<Triangle2*> vTriangles;
    pUnion->getTriangles(vTriangles);
    scene.pMesh->deleteZone(pUnion);
    return vTriangles.size();
}

std::size_t unionByFlood(Scene& scene) {
    std::vector<Triangle2*> vTriangles, vOthers;
    scene.flood0.flood(scene.pCommon, vTriangles);
    scene.flood1.flood(scene.pCommon, vOthers);
    for (Triangle2* pTriangle : vOthers)
        if (!scene.flood0.hasReached(pTriangle)) vTriangles.push_back(pTriangle);
    return vTriangles.size();
}

std::size_t borderByZone(Scene& scene) {
    std::vector<Edge2> vEdges;
    scene.pZone0->getBoundaryEdges(vEdges);
    return vEdges.size();
}

std::size_t borderByFlood(Scene& scene) {
    std::vector<Triangle2*> vTriangles;
    scene.flood0.flood(scene.pCommon, vTriangles);
    std::vector<Edge2> vEdges;
    for (Triangle2* pTriangle : vTriangles)
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pNext = pTriangle->getOppositeTriangle(i);
            if (pNext == nullptr || !scene.flood0.hasReached(pNext)) vEdges.emplace_back(pTriangle, i);
        }
    return vEdges.size();
}

struct Workload {
    const char* name;
    Query ours;
    Query other;
    double target;
};

const Workload workloads[] = {
    {"zone/inside/1e6", insideByZone, insideByFlood, 3.0},
    {"zone/union/1e6", unionByZone, unionByFlood, 3.0},
    {"zone/border/1e6", borderByZone, borderByFlood, 3.0},
};

/// Per triangle of the first zone.
bool measure(const Workload& workload) {
    Scene scene;
    const auto runOf = [&](Query query) -> Run {
        return [&scene, query](benchmark::State& state) {
            std::size_t numFound = 0;
            for (auto _ : state) numFound = query(scene);
            state.counters["found"] = static_cast<double>(numFound);
        };
    };
    const Row row{.name = workload.name,
                  .count = scene.pZone0->getNumberOfTriangles(),
                  .numRounds = 15,
                  .target = workload.target};
    return measureRow(row, runOf(workload.ours), runOf(workload.other));
}

bool measureCut(const char* name, bool bKeepShape) {
    const std::vector<Segment2> vKnives = circle(0.5, 0.5, numKnives);
    const auto cut = [&](benchmark::State& state) {
        const std::unique_ptr<Norvik_2D> pMesh = makeMesh(million / 2);
        const std::size_t numBefore = pMesh->numberOfPoints();
        for (auto _ : state) pMesh->cutTriangles(vKnives, bKeepShape);
        state.counters["vertices added"] = static_cast<double>(pMesh->numberOfPoints() - numBefore);
    };
    return measureRow({.name = name, .count = numKnives, .numRounds = 7, .target = 0.0}, cut, {});
}

}  // namespace

std::vector<NamedRow> zoneRows() {
    std::vector<NamedRow> rows;
    for (const Workload& workload : workloads)
        rows.push_back({workload.name, [&workload] { return measure(workload); }});
    for (const bool bKeepShape : {false, true}) {
        const char* const name = bKeepShape ? "cut/ring/1e3/keepShape" : "cut/ring/1e3";
        rows.push_back({name, [=] { return measureCut(name, bKeepShape); }});
    }
    return rows;
}
