#include "svgFile.h"

#include <algorithm>
#include <array>
#include <map>

#include "textFile.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr std::array colours{"#cfe3f1", "#f6dfc0", "#d6ebcb", "#ead3e6", "#f2efb8", "#d9d9d9"};

class SvgWriter {
public:
    SvgWriter(const IndexedMesh& mesh_, const std::string& path) : mesh(mesh_), out(path) {
        for (const Point2& point : mesh.points) {
            minX = std::min(minX, point.x());
            maxX = std::max(maxX, point.x());
            minY = std::min(minY, point.y());
            maxY = std::max(maxY, point.y());
        }
    }

    void write() {
        const double width = maxX - minX, height = maxY - minY, margin = 0.01 * std::max(width, height);
        out << R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox=")" << -margin << ' ' << -margin << ' '
            << width + 2.0 * margin << ' ' << height + 2.0 * margin << "\">\n"
            << "<style>path { stroke: #445; stroke-width: 0.5; stroke-linejoin: round; "
               "vector-effect: non-scaling-stroke } .constraint { stroke: #d00; fill: none }</style>\n";
        writeTriangles();
        if (!mesh.constraints.empty()) writeConstraints();
        out << "</svg>\n";
        out.close();
    }

private:
    void writeTriangles() {
        std::map<double, std::vector<std::size_t>> mRegions;
        for (std::size_t i = 0; i < mesh.triangles.size(); ++i)
            mRegions[mesh.regions.empty() ? 0.0 : mesh.regions[i]].push_back(i);
        std::size_t number = 0;
        for (const auto& [region, vTriangles] : mRegions) {
            out << "<path fill=\"" << colours.at(number++ % colours.size()) << "\" d=\"";
            for (const std::size_t i : vTriangles) {
                const auto& [a, b, c] = mesh.triangles[i];
                writePoint('M', a);
                writePoint('L', b);
                writePoint('L', c);
                out << "Z\n";
            }
            out << "\"/>\n";
        }
    }

    void writeConstraints() {
        out << R"(<path class="constraint" d=")";
        for (const auto& [src, trg] : mesh.constraints) {
            writePoint('M', src);
            writePoint('L', trg);
            out << '\n';
        }
        out << "\"/>\n";
    }

    /// Relative to the corner: programs that show pictures often know floats only.
    void writePoint(char command, std::size_t index) {
        out << command << mesh.points[index].x() - minX << ' ' << maxY - mesh.points[index].y();
    }

    const IndexedMesh& mesh;
    TextWriter out;
    double minX = std::numeric_limits<double>::infinity(), maxX = -minX, minY = minX, maxY = -minX;
};

}  // namespace

void writeSvg(const IndexedMesh& mesh, const std::string& path) { SvgWriter(mesh, path).write(); }
