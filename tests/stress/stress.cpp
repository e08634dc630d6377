// Many insertions of 100,000 random points on a random number of threads: stress [SEED] [ROUNDS]. A fault in how the work
// is divided shows by chance only, so this runs for minutes, by itself, and tells the seed.
#include <cstdio>
#include <cstdlib>
#include <random>

#include "Norvik_2D.h"
#include "captureOutput.h"
#include "manyPoints.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// What is wrong with the mesh, or null.
const char* faultOf(Norvik_2D& mesh, const std::vector<Point2>& points, const std::vector<Point2*>& handles) {
    CaptureOutput capture;
    if (!mesh.checkValidity(true, "stress")) return "the mesh is not valid";
    std::vector<Point2*> vHull;
    mesh.getConvexHull(true, vHull);
    if (mesh.numberOfTriangles() != 2 * mesh.numberOfPoints() - 2 - vHull.size())
        return "the number of triangles is wrong";
    for (std::size_t i = 0; i < points.size(); ++i)
        if (*handles[i] != points[i] || handles[i]->getIncidentTriangle() == nullptr)
            return "a handle is wrong";
    return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    const auto seed = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : std::random_device()();
    const int numRounds = argc > 2 ? std::atoi(argv[2]) : 200;
    constexpr int numPoints = 100000;
    std::printf("stress: seed %u, %d rounds\n", seed, numRounds);
    for (int round = 0; round < numRounds; ++round) {
        manyPoints::Rng rng(seed + static_cast<unsigned>(round));
        const auto randomKind = [&] {
            const manyPoints::Kind* pKind;
            do
                pKind = &manyPoints::kinds[hardPoints::below(rng,
                                                             static_cast<int>(std::size(manyPoints::kinds)))];
            while (pKind->bSlow);
            return pKind;
        };
        // Two kinds at the same place.
        const manyPoints::Kind *pKind = randomKind(), *pOther = randomKind();
        std::vector<Point2> points = manyPoints::makePoints(*pKind, numPoints, rng);
        for (const Point2& point : manyPoints::makePoints(
                 *pOther, static_cast<std::size_t>(hardPoints::below(rng, numPoints)), rng))
            points.push_back(point);
        const int numCPU = 2 + hardPoints::below(rng, 7);
        Norvik_2D mesh;
        mesh.setNumCPU(numCPU);
        std::vector<Point2*> handles;
        {
            CaptureOutput capture;  // remarks on circumcentres
            mesh.insert(points, handles);
        }
        if (const char* fault = faultOf(mesh, points, handles)) {
            std::printf("seed %u: %s and %s with %d threads: %s\n", seed + static_cast<unsigned>(round),
                        pKind->name, pOther->name, numCPU, fault);
            return 1;
        }
    }
    std::printf("stress: all good\n");
    return 0;
}
