#include "subject.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>

#include "domain.h"
#include "inputFiles.h"

using namespace KELMAR_NORVIK2D;

namespace {

std::string nameOf(std::size_t triangle) { return "triangle " + std::to_string(triangle + 1); }

/// The library relies on what it is promised about directions.
void orient(Norvik_2D& mesh, IndexedMesh& given, const std::string& path, bool bReorient) {
    for (std::size_t i = 0; i < given.triangles.size(); ++i) {
        auto& [a, b, c] = given.triangles[i];
        const Orientation2 turn = mesh.getOrientation(given.points[a], given.points[b], given.points[c]);
        if (turn == ORIENTATION2_COLLINEAR) failFile(path, nameOf(i) + " has no area");
        if (turn != ORIENTATION2_CW) continue;
        if (!bReorient) failFile(path, nameOf(i) + " runs clockwise, see --reorient");
        std::swap(b, c);
    }
}

/// Of each point the number of one that has the same coordinates.
std::vector<std::uint64_t> numberByCoordinates(const std::vector<Point2>& points) {
    std::vector<std::size_t> vOrder(points.size());
    std::iota(vOrder.begin(), vOrder.end(), std::size_t{0});
    std::sort(vOrder.begin(), vOrder.end(),
              [&](std::size_t i, std::size_t j) { return points[i] < points[j]; });
    std::vector<std::uint64_t> vNumbers(points.size());
    for (std::size_t i = 0; i < vOrder.size(); ++i) {
        const bool bSame = i > 0 && points[vOrder[i]] == points[vOrder[i - 1]];
        vNumbers[vOrder[i]] = bSame ? vNumbers[vOrder[i - 1]] : i;
    }
    return vNumbers;
}

/// Triangles on the same side of an edge overlap. The library refuses them too, all but twins, but doesn't tell which they are.
void checkOverlaps(const IndexedMesh& given, const std::string& path) {
    const std::vector<std::uint64_t> vNumbers = numberByCoordinates(given.points);
    // Both ends of a directed edge in one number, and its triangle.
    std::vector<std::pair<std::uint64_t, std::size_t>> vEdges;
    vEdges.reserve(3 * given.triangles.size());
    for (std::size_t i = 0; i < given.triangles.size(); ++i)
        for (std::size_t k = 0; k < 3; ++k) {
            const auto& corners = given.triangles[i];
            vEdges.emplace_back(
                vNumbers[corners.at(k)] * given.points.size() + vNumbers[corners.at((k + 1) % 3)], i);
        }
    std::sort(vEdges.begin(), vEdges.end());
    const auto found = std::adjacent_find(vEdges.begin(), vEdges.end(),
                                          [](const auto& a, const auto& b) { return a.first == b.first; });
    if (found != vEdges.end())
        failFile(path, nameOf(found->second) + " and " + nameOf((found + 1)->second) +
                           " lie on the same side of an edge, they overlap");
}

}  // namespace

Zone2* importTriangles(Norvik_2D& mesh, IndexedMesh given, const std::string& path, bool bReorient,
                       bool bKeepBox) {
    orient(mesh, given, path, bReorient);
    checkOverlaps(given, path);
    std::vector<Point2> vCorners;
    vCorners.reserve(3 * given.triangles.size());
    for (const auto& triangle : given.triangles)
        for (const std::size_t corner : triangle) vCorners.push_back(given.points[corner]);
    Zone2* const pZone = mesh.importTriangles(vCorners, false, bKeepBox);
    if (pZone == nullptr)
        failFile(
            path,
            "the triangles make no mesh: they overlap, a vertex lies on the edge of another one, or there is "
            "no room around them");
    return pZone;
}

Subject makeSubject(Norvik_2D& mesh, const Options& options) {
    const std::string& path = options.input;
    if (holdsTriangles(path))
        return {importTriangles(mesh, readTriangles(path), path, true, false), {}, true};
    Input input;
    addDrawing(readDrawing(path), input);
    Rings rings;
    if (input.bEnclosed || input.bPolygons || options.bInside)
        return {makeDomain(mesh, input, rings, path), input.regions, false};
    rings.vLoose = input.segments;
    insertAll(mesh, input, rings);
    if (!mesh.is2D()) failFile(path, "there are no triangles");
    return {};
}
