#include "exchangeRows.h"

#include <Norvik_2D.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <string>
#include <unordered_map>

#include "pointSets.h"
#include "table.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr std::size_t numPoints = 500000;  // of a million triangles
constexpr std::size_t numQueries = 1000000;

std::vector<Point2> toPoints(const PointSet& set) {
    std::vector<Point2> points;
    for (const auto& [x, y] : set) points.emplace_back(x, y);
    return points;
}

/// A mesh as a program has it that only writes: its vertices are numbered already.
struct NumberedMesh {
    std::vector<Point2> vVertices;
    std::vector<std::array<std::size_t, 3>> vFaces;
};

NumberedMesh numbered(Norvik_2D& mesh) {
    std::vector<Triangle2*> vTriangles;
    mesh.getTrianglePointers(vTriangles);
    NumberedMesh result;
    std::unordered_map<const Point2*, std::size_t> mNumbers;
    for (const Triangle2* pT : vTriangles) {
        std::array<std::size_t, 3> face{};
        for (std::size_t i = 0; i < 3; ++i) {
            const Point2* const pVtx = pT->getCorner(static_cast<int>(i));
            const auto [entry, bNew] = mNumbers.emplace(pVtx, mNumbers.size() + 1);
            if (bNew) result.vVertices.push_back(*pVtx);
            face[i] = entry->second;
        }
        result.vFaces.push_back(face);
    }
    return result;
}

/// As most programs write: a line at a time into a stream.
void writeByStream(const NumberedMesh& mesh, const std::string& path) {
    std::ofstream file(path);
    file << std::setprecision(20);
    for (const Point2& vertex : mesh.vVertices) file << "v " << vertex.x() << " " << vertex.y() << " 0 \n";
    for (const auto& [a, b, c] : mesh.vFaces) file << "f " << a << " " << b << " " << c << "\n";
}

/// Per triangle.
bool measureObj(const char* name) {
    Norvik_2D mesh;
    mesh.insert(toPoints(uniformPoints(numPoints)));
    const NumberedMesh copy = numbered(mesh);
    const std::string path = (std::filesystem::temp_directory_path() / "norvik2d_bench.obj").string();
    const auto runOf = [&](auto write) -> Run {
        return [&path, write](benchmark::State& state) {
            std::filesystem::remove(path);
            for (auto _ : state) write();
            state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(path));
        };
    };
    const Row row{.name = name, .count = copy.vFaces.size(), .numRounds = 7, .target = 0.5};
    const bool bSame =
        measureRow(row, runOf([&] { mesh.writeObj(path); }), runOf([&] { writeByStream(copy, path); }));
    std::filesystem::remove(path);
    return bSame;
}

/// Triangles that exist already, beside the insertion of their points. Per triangle.
bool measureImport(const char* name) {
    const std::vector<Point2> vPoints = toPoints(uniformPoints(numPoints));
    std::vector<Point2> vCorners;
    {
        Norvik_2D mesh(numPoints);
        mesh.insert(vPoints);
        std::vector<Triangle2*> vTriangles;
        mesh.getTrianglePointers(vTriangles);
        for (const Triangle2* pT : vTriangles)
            for (int i = 0; i < 3; ++i) vCorners.push_back(*pT->getCorner(i));
    }
    const auto runOf = [&](auto make) -> Run {
        return [make](benchmark::State& state) {
            Norvik_2D mesh(numPoints);
            for (auto _ : state) make(mesh);
            state.counters["triangles"] = static_cast<double>(mesh.numberOfTriangles());
        };
    };
    const Row row{.name = name, .count = vCorners.size() / 3, .numRounds = 11, .target = 1.5};
    return measureRow(row, runOf([&](Norvik_2D& mesh) { mesh.importTriangles(vCorners, false, false); }),
                      runOf([&](Norvik_2D& mesh) { mesh.insert(vPoints); }));
}

/// Many points at once, beside one after the other in random order. Per point.
bool measureLocation(const char* name) {
    Norvik_2D mesh;
    mesh.insert(toPoints(uniformPoints(2 * numPoints)));
    const std::vector<Point2> vQueries = toPoints(uniformQueries(numQueries));
    std::vector<Triangle2*> vFound(numQueries);
    const auto runOf = [&](auto locateAll) -> Run {
        return [&vFound, locateAll](benchmark::State& state) {
            for (auto _ : state) locateAll();
            const auto numOutside = std::count(vFound.begin(), vFound.end(), nullptr);
            state.counters["outside"] = static_cast<double>(numOutside);
        };
    };
    const auto oneByOne = [&] {
        for (std::size_t i = 0; i < numQueries; ++i) vFound[i] = mesh.locate(vQueries[i]);
    };
    const Row row{.name = name, .count = numQueries, .numRounds = 7, .target = 0.16};
    return measureRow(row, runOf([&] { mesh.locate(vQueries, vFound); }), runOf(oneByOne));
}

}  // namespace

std::vector<NamedRow> exchangeRows() {
    constexpr struct {
        const char* name;
        bool (*measure)(const char*);
    } workloads[] = {
        {"obj/1e6", measureObj}, {"import/1e6", measureImport}, {"locate/atOnce/1e6", measureLocation}};
    std::vector<NamedRow> rows;
    for (const auto& workload : workloads)
        rows.push_back({workload.name, [workload] { return workload.measure(workload.name); }});
    return rows;
}
