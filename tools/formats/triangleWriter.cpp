#include <algorithm>

#include "textFile.h"
#include "triangleFiles.h"

using namespace KELMAR_NORVIK2D;

namespace {

void writeVertices(TextWriter& out, const IndexedMesh& mesh) {
    const bool bMarks = std::any_of(mesh.points.begin(), mesh.points.end(),
                                    [](const Point2& point) { return point.getCustomIndex() > 0; });
    out << mesh.points.size() << " 2 0 " << (bMarks ? 1 : 0) << '\n';
    for (std::size_t i = 0; i < mesh.points.size(); ++i) {
        const Point2& point = mesh.points[i];
        out << i + 1 << ' ' << point.x() << ' ' << point.y();
        if (bMarks) out << ' ' << std::max(point.getCustomIndex(), 0);
        out << '\n';
    }
}

}  // namespace

void writeNode(const IndexedMesh& mesh, const std::string& path) {
    TextWriter out(path);
    writeVertices(out, mesh);
    out.close();
}

void writeEle(const IndexedMesh& mesh, const std::string& path) {
    writeNode(mesh, withEnding(path, ".node"));
    TextWriter out(path);
    out << mesh.triangles.size() << " 3 " << (mesh.regions.empty() ? 0 : 1) << '\n';
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const auto& [a, b, c] = mesh.triangles[i];
        out << i + 1 << ' ' << a + 1 << ' ' << b + 1 << ' ' << c + 1;
        if (!mesh.regions.empty()) out << ' ' << mesh.regions[i];
        out << '\n';
    }
    out.close();
}

void writePoly(const IndexedMesh& mesh, const std::string& path) {
    TextWriter out(path);
    writeVertices(out, mesh);
    out << mesh.constraints.size() << " 0\n";
    for (std::size_t i = 0; i < mesh.constraints.size(); ++i)
        out << i + 1 << ' ' << mesh.constraints[i][0] + 1 << ' ' << mesh.constraints[i][1] + 1 << '\n';
    out << mesh.holes.size() << '\n';
    for (std::size_t i = 0; i < mesh.holes.size(); ++i)
        out << i + 1 << ' ' << mesh.holes[i].x() << ' ' << mesh.holes[i].y() << '\n';
    out.close();
}
