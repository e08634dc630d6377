#include <algorithm>
#include <map>
#include <vector>

#include "mshFile.h"
#include "textFile.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr int elementLine = 1, elementTriangle = 2;

/// The triangles of each surface, in the order of the surfaces' numbers.
using Surfaces = std::vector<std::vector<std::size_t>>;

Surfaces sortBySurface(const IndexedMesh& mesh) {
    std::map<double, std::vector<std::size_t>> mSurfaces;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i)
        mSurfaces[mesh.regions.empty() ? 0.0 : mesh.regions[i]].push_back(i);
    Surfaces surfaces;
    for (auto& entry : mSurfaces) surfaces.push_back(std::move(entry.second));
    return surfaces;
}

class MshWriter {
public:
    MshWriter(const IndexedMesh& mesh_, const std::string& path)
        : mesh(mesh_), surfaces(sortBySurface(mesh)), out(path) {}

    void write2() {
        out << "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n" << mesh.points.size() << '\n';
        for (std::size_t i = 0; i < mesh.points.size(); ++i) {
            out << i + 1 << ' ';
            writePoint(mesh.points[i]);
        }
        out << "$EndNodes\n$Elements\n" << mesh.constraints.size() + mesh.triangles.size() << '\n';
        std::size_t number = 0;
        for (const auto& edge : mesh.constraints) {
            out << ++number << ' ' << elementLine << " 2 0 1";
            writeNodes(edge);
        }
        for (std::size_t surface = 0; surface < surfaces.size(); ++surface)
            for (const std::size_t i : surfaces[surface]) {
                out << ++number << ' ' << elementTriangle << " 2 0 " << surface + 1;
                writeNodes(mesh.triangles[i]);
            }
        out << "$EndElements\n";
        out.close();
    }

    void write4() {
        out << "$MeshFormat\n4.1 0 8\n$EndMeshFormat\n";
        writeEntities();
        const std::size_t numPoints = mesh.points.size();
        out << "$Nodes\n1 " << numPoints << " 1 " << numPoints << "\n2 1 0 " << numPoints << '\n';
        for (std::size_t i = 0; i < numPoints; ++i) out << i + 1 << '\n';
        for (const Point2& point : mesh.points) writePoint(point);
        out << "$EndNodes\n";
        writeElementBlocks();
        out.close();
    }

private:
    /// Each with the box of all, which may be larger than need be.
    void writeEntities() {
        const bool bCurve = !mesh.constraints.empty();
        out << "$Entities\n0 " << (bCurve ? 1 : 0) << ' ' << surfaces.size() << " 0\n";
        if (bCurve) {
            out << "1 ";
            writeBox();
            out << " 0 0\n";
        }
        for (std::size_t surface = 0; surface < surfaces.size(); ++surface) {
            out << surface + 1 << ' ';
            writeBox();
            out << " 0 0\n";
        }
        out << "$EndEntities\n";
    }

    void writeBox() {
        const auto byY = [](const Point2& a, const Point2& b) { return a.y() < b.y(); };
        const auto byX = [](const Point2& a, const Point2& b) { return a.x() < b.x(); };
        const auto [pLeft, pRight] = std::minmax_element(mesh.points.begin(), mesh.points.end(), byX);
        const auto [pBottom, pTop] = std::minmax_element(mesh.points.begin(), mesh.points.end(), byY);
        out << pLeft->x() << ' ' << pBottom->y() << " 0 " << pRight->x() << ' ' << pTop->y() << " 0";
    }

    void writeElementBlocks() {
        const std::size_t numLines = mesh.constraints.size(), numElements = numLines + mesh.triangles.size();
        out << "$Elements\n"
            << surfaces.size() + (numLines > 0 ? 1 : 0) << ' ' << numElements << " 1 " << numElements << '\n';
        std::size_t number = 0;
        if (numLines > 0) out << "1 1 " << elementLine << ' ' << numLines << '\n';
        for (const auto& edge : mesh.constraints) {
            out << ++number;
            writeNodes(edge);
        }
        for (std::size_t surface = 0; surface < surfaces.size(); ++surface) {
            out << "2 " << surface + 1 << ' ' << elementTriangle << ' ' << surfaces[surface].size() << '\n';
            for (const std::size_t i : surfaces[surface]) {
                out << ++number;
                writeNodes(mesh.triangles[i]);
            }
        }
        out << "$EndElements\n";
    }

    void writePoint(const Point2& point) { out << point.x() << ' ' << point.y() << " 0\n"; }

    template <class Nodes>
    void writeNodes(const Nodes& nodes) {
        for (const std::size_t node : nodes) out << ' ' << node + 1;
        out << '\n';
    }

    const IndexedMesh& mesh;
    Surfaces surfaces;
    TextWriter out;
};

}  // namespace

void writeMsh(const IndexedMesh& mesh, MshVersion version, const std::string& path) {
    MshWriter writer(mesh, path);
    version == MshVersion::v2_2 ? writer.write2() : writer.write4();
}
