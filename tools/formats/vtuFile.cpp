#include "vtuFile.h"

#include "textFile.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr const char* endOfArray = "</DataArray>\n";

void beginArray(TextWriter& out, const char* type, const char* name) {
    out << "<DataArray type=\"" << type << "\" Name=\"" << name << "\" format=\"ascii\">\n";
}

void writeCells(TextWriter& out, const IndexedMesh& mesh) {
    constexpr int cellTriangle = 5;
    out << "<Cells>\n";
    beginArray(out, "Int64", "connectivity");
    for (const auto& [a, b, c] : mesh.triangles) out << a << ' ' << b << ' ' << c << '\n';
    out << endOfArray;
    beginArray(out, "Int64", "offsets");
    for (std::size_t i = 1; i <= mesh.triangles.size(); ++i) out << 3 * i << '\n';
    out << endOfArray;
    beginArray(out, "UInt8", "types");
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) out << cellTriangle << '\n';
    out << endOfArray << "</Cells>\n";
}

}  // namespace

void writeVtu(const IndexedMesh& mesh, const std::string& path) {
    TextWriter out(path);
    out << "<?xml version=\"1.0\"?>\n"
           "<VTKFile type=\"UnstructuredGrid\" version=\"0.1\" byte_order=\"LittleEndian\">\n"
           "<UnstructuredGrid>\n<Piece NumberOfPoints=\""
        << mesh.points.size() << "\" NumberOfCells=\"" << mesh.triangles.size() << "\">\n<Points>\n"
        << "<DataArray type=\"Float64\" Name=\"Points\" NumberOfComponents=\"3\" format=\"ascii\">\n";
    for (const Point2& point : mesh.points) out << point.x() << ' ' << point.y() << " 0\n";
    out << endOfArray << "</Points>\n";
    writeCells(out, mesh);
    if (!mesh.regions.empty()) {
        out << "<CellData Scalars=\"region\">\n";
        beginArray(out, "Float64", "region");
        for (const double region : mesh.regions) out << region << '\n';
        out << endOfArray << "</CellData>\n";
    }
    out << "</Piece>\n</UnstructuredGrid>\n</VTKFile>\n";
    out.close();
}
