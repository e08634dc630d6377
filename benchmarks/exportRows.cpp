#include "exportRows.h"

#include <Norvik_2D.h>

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
    std::vector<Point2> vPoints;
    for (const auto& [x, y] : uniformPoints(numPoints)) vPoints.emplace_back(x, y);
    mesh.insert(vPoints);
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

}  // namespace

std::vector<NamedRow> exportRows() {
    const char* const name = "obj/1e6";
    return {{name, [name] { return measureObj(name); }}};
}
