#include <algorithm>
#include <cmath>
#include <iostream>
#include <vector>

#include "commands.h"
#include "inputFiles.h"
#include "subject.h"

using namespace KELMAR_NORVIK2D;

namespace {

struct Result {
    std::size_t numTrianglesBefore = 0;
    std::size_t numPointsBefore = 0;
    double seconds = 0.0;
    Zone2* pCookie = nullptr;
};

/// What the knives have become.
struct Chains {
    std::size_t numPieces = 0;
    std::size_t numBroken = 0;
};

/// Makes what is to be cut; the zone of the given triangles, null if there are other things in the file.
Zone2* makeUncut(Norvik_2D& mesh, const Options& options) {
    if (holdsTriangles(options.input))
        return importTriangles(mesh, readTriangles(options.input), options.input, true, false);
    Input input;
    addDrawing(readDrawing(options.input), input);
    mesh.insert(input.points);
    if (!input.segments.empty()) mesh.createConstraint(input.segments, CIS_CONSTRAINED_DELAUNAY);
    if (!mesh.is2D()) failFile(options.input, "nothing to cut, there are no triangles");
    mesh.applyConstraintsAndZones();
    return nullptr;
}

/// The vertex at the point, or null.
Point2* findVertex(Norvik_2D& mesh, const Point2& point) {
    const Triangle2* const pTriangle = mesh.locate(point);
    if (pTriangle == nullptr) return nullptr;
    for (int i = 0; i < 3; ++i)
        if (*pTriangle->getCorner(i) == point) return pTriangle->getCorner(i);
    return nullptr;
}

/// Of the vertices behind constraint edges at `pAt` that are nearer to `pTo`, the one that lies most nearly in its direction; null
/// if there is none.
Point2* followConstraint(Norvik_2D& mesh, Point2* pAt, const Point2* pTo) {
    std::vector<Triangle2*> vTriangles;
    mesh.getIncidentTriangles(pAt, vTriangles);
    const Vector2 way(*pAt, *pTo);
    Point2* pBest = nullptr;
    double best = -1.0;
    for (const Triangle2* pTriangle : vTriangles)
        for (int i = 0; i < 3; ++i) {
            Point2* const pNext = pTriangle->getCorner(i);
            if (pNext == pAt || !mesh.isConstraint(pAt, pNext)) continue;
            const Vector2 step(*pAt, *pNext), rest(*pNext, *pTo);
            const double cosine = (step.x() * way.x() + step.y() * way.y()) /
                                  (std::hypot(step.x(), step.y()) * std::hypot(way.x(), way.y()));
            // Each step leads nearer: so the walk ends.
            if (cosine <= best || std::hypot(rest.x(), rest.y()) >= std::hypot(way.x(), way.y())) continue;
            best = cosine;
            pBest = pNext;
        }
    return pBest;
}

/// A knife is a chain of constraints, from vertex to vertex next to its line (crossings are rounded). Walks along it.
void followKnife(Norvik_2D& mesh, const Segment2& knife, Chains& chains) {
    Point2* pAt = findVertex(mesh, knife.getSrc());
    const Point2* const pEnd = findVertex(mesh, knife.getTrg());
    while (pAt != nullptr && pEnd != nullptr && pAt != pEnd) {
        pAt = followConstraint(mesh, pAt, pEnd);
        if (pAt != nullptr) ++chains.numPieces;
    }
    if (pAt == nullptr || pEnd == nullptr) ++chains.numBroken;
}

Result cutAll(Norvik_2D& mesh, const Options& options, const std::vector<Segment2>& cookieCutter) {
    Result result;
    result.numTrianglesBefore = mesh.numberOfTriangles();
    result.numPointsBefore = mesh.numberOfPoints();
    result.seconds = doTimed(mesh, options, [&] {
        if (!options.vKnives.empty()) mesh.cutTriangles(options.vKnives, options.bKeepShape);
        if (!cookieCutter.empty())
            result.pCookie = mesh.createZone_cookieCutter(cookieCutter, options.bKeepShape);
    });
    return result;
}

void printSummary(Norvik_2D& mesh, const Options& options, const Result& result) {
    Chains chains;
    for (const Segment2& knife : options.vKnives) followKnife(mesh, knife, chains);
    std::cout << "knives: " << options.vKnives.size()
              << "\nconstraint pieces along them: " << chains.numPieces
              << "\nnot enforced: " << chains.numBroken
              << "\nvertices added: " << mesh.numberOfPoints() - result.numPointsBefore
              << "\npoints: " << mesh.numberOfPoints() << "\ntriangles before: " << result.numTrianglesBefore
              << "\ntriangles: " << mesh.numberOfTriangles() << '\n';
    if (result.pCookie != nullptr) std::cout << "cut out: " << describe(*result.pCookie) << '\n';
    std::cout << "seconds: " << result.seconds << std::endl;
}

/// Empty if none is asked for. Segments of no length don't count.
std::vector<Segment2> readCookieCutter(const Options& options) {
    Input polygon;
    if (options.cookieCutterFile.empty()) return {};
    addDrawing(readSegments(options.cookieCutterFile), polygon);
    if (polygon.segments.empty() || !isSimplePolygon(polygon.segments))
        throw BadInput(options.cookieCutterFile + ": no simple polygon");
    return polygon.segments;
}

}  // namespace

int cut(const Options& options) {
    const std::vector<Segment2> cookieCutter = readCookieCutter(options);
    Norvik_2D mesh;
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    Zone2* const pGiven = makeUncut(mesh, options);
    Result result = cutAll(mesh, options, cookieCutter);
    const bool bNoCookie = !cookieCutter.empty() && result.pCookie == nullptr;
    // Around given triangles there are others, up to the hull.
    if (pGiven != nullptr && result.pCookie != nullptr)
        result.pCookie = zoneIntersection(result.pCookie, pGiven);
    printSummary(mesh, options, result);
    if (pGiven != nullptr) std::cout << "mesh: " << describe(*pGiven) << std::endl;
    if (bNoCookie)
        failFile(options.cookieCutterFile, "nothing is cut out, the polygon touches itself or " +
                                               options.input + " has nothing inside of it");
    writeOutputs(mesh, result.pCookie != nullptr ? result.pCookie : pGiven, options);
    return checkIfAsked(mesh, options, !options.bKeepShape && pGiven == nullptr);
}
