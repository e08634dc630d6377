#include "inputFiles.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <utility>

#include "formats/geoJson.h"
#include "formats/mshFile.h"
#include "formats/objFile.h"
#include "formats/shapeFile.h"
#include "formats/triangleFiles.h"
#include "numbers.h"

using namespace KELMAR_NORVIK2D;

namespace {

// Text

/// Appends the points of a text whose lines hold N numbers, two for each point.
template <std::size_t N>
void parseText(const std::string& path, std::string content, std::vector<Point2>& points) {
    LineReader in(path, std::move(content));
    while (in.next()) {
        std::array<double, N> numbers{};
        try {
            numbers = parseNumbers<N>(in.rest(), " \t\r");
        } catch (const BadNumber& reason) {
            in.fail(reason.what());
        }
        for (std::size_t i = 0; i < N; i += 2) points.emplace_back(numbers[i], numbers[i + 1]);
    }
}

// Binary files

constexpr std::int32_t filePoints = 20, filePoints3D = 30, fileSegments = 21, fileSegments3D = 31;

/// The first four bytes, in which no text has these small numbers.
std::int32_t fileTypeOf(const std::string& content) {
    std::int32_t type = 0;
    if (content.size() >= sizeof type) std::memcpy(&type, content.data(), sizeof type);
    return type;
}

/// The library completes a file that ends early by zeros; here its size must be what its header tells.
void checkBinarySize(const std::string& content, const std::string& path, std::size_t coordinates,
                     const char* records) {
    constexpr std::size_t headerSize = sizeof(std::int32_t) + sizeof(std::uint64_t);
    std::uint64_t count = 0;
    if (content.size() < headerSize) failFile(path, "ends within the header of a binary file");
    std::memcpy(&count, content.data() + sizeof(std::int32_t), sizeof count);
    const std::size_t recordSize = coordinates * sizeof(double);
    const std::size_t numRecords = (content.size() - headerSize) / recordSize;
    if (numRecords != count || (content.size() - headerSize) % recordSize != 0)
        failFile(path, "holds " + std::to_string(numRecords) + ' ' + records + ", its header tells " +
                           std::to_string(count));
}

bool isFinite(const Point2& point) { return std::isfinite(point.x()) && std::isfinite(point.y()); }

void readBinary(const std::string& content, const std::string& path, std::vector<Point2>& points) {
    checkBinarySize(content, path, fileTypeOf(content) == filePoints3D ? 3 : 2, "points");
    if (!readPointsBIN(path.c_str(), points)) failFile(path, "can't be read");
    for (std::size_t i = 0; i < points.size(); ++i)
        if (!isFinite(points[i])) failFile(path, "point " + std::to_string(i + 1) + " is not finite");
}

void readBinary(const std::string& content, const std::string& path, std::vector<Segment2>& segments) {
    checkBinarySize(content, path, fileTypeOf(content) == fileSegments3D ? 6 : 4, "segments");
    if (!readSegmentsBIN(path.c_str(), segments)) failFile(path, "can't be read");
    for (std::size_t i = 0; i < segments.size(); ++i)
        if (!isFinite(segments[i].getSrc()) || !isFinite(segments[i].getTrg()))
            failFile(path, "segment " + std::to_string(i + 1) + " is not finite");
}

bool isGeoJson(const std::string& path) {
    const std::string ending = endingOf(path);
    return ending == ".geojson" || ending == ".json";
}

/// Of the formats that may hold points and segments.
bool holdsBoth(const std::string& path) {
    const std::string ending = endingOf(path);
    return isGeoJson(path) || ending == ".poly" || ending == ".shp";
}

Drawing readBoth(const std::string& path) {
    if (isGeoJson(path)) return readGeoJson(path);
    return endingOf(path) == ".shp" ? readShape(path) : readPoly(path);
}

/// A binary segment file, or a text named .seg.
bool holdsSegments(const std::string& path) {
    std::array<char, sizeof(std::int32_t)> first{};
    std::ifstream(path, std::ios::binary).read(first.data(), first.size());
    const std::int32_t type = fileTypeOf(std::string(first.begin(), first.end()));
    if (type == filePoints || type == filePoints3D) return false;
    return type == fileSegments || type == fileSegments3D || path.ends_with(".seg");
}

std::vector<Point2> pointsAndEnds(Drawing drawing) {
    // Vertices of a .poly file are among the points anyway.
    if (drawing.bEnclosed) return std::move(drawing.points);
    for (const Segment2& segment : drawing.segments) {
        drawing.points.push_back(segment.getSrc());
        drawing.points.push_back(segment.getTrg());
    }
    return std::move(drawing.points);
}

}  // namespace

std::vector<Point2> readPoints(const std::string& path) {
    if (endingOf(path) == ".node") return readNode(path);
    if (holdsTriangles(path)) return readTriangles(path).points;
    if (holdsBoth(path)) return pointsAndEnds(readBoth(path));
    std::string content = contentOf(path);
    const std::int32_t type = fileTypeOf(content);
    std::vector<Point2> points;
    if (type == fileSegments || type == fileSegments3D) failFile(path, "holds segments, not points");
    if (type == filePoints || type == filePoints3D)
        readBinary(content, path, points);
    else if (path.ends_with(".seg"))
        parseText<4>(path, std::move(content), points);
    else
        parseText<2>(path, std::move(content), points);
    return points;
}

Drawing readSegments(const std::string& path) {
    if (holdsBoth(path)) return readBoth(path);
    if (holdsTriangles(path)) failFile(path, "holds triangles, not segments");
    std::string content = contentOf(path);
    const std::int32_t type = fileTypeOf(content);
    if (type == filePoints || type == filePoints3D || endingOf(path) == ".node")
        failFile(path, "holds points, not segments");
    Drawing drawing;
    if (type == fileSegments || type == fileSegments3D) {
        readBinary(content, path, drawing.segments);
        return drawing;
    }
    std::vector<Point2> ends;
    parseText<4>(path, std::move(content), ends);
    for (std::size_t i = 0; i < ends.size(); i += 2) drawing.segments.emplace_back(ends[i], ends[i + 1]);
    return drawing;
}

Drawing readDrawing(const std::string& path) {
    if (holdsBoth(path) || holdsSegments(path)) return readSegments(path);
    Drawing drawing;
    drawing.points = readPoints(path);
    return drawing;
}

bool holdsTriangles(const std::string& path) {
    const std::string ending = endingOf(path);
    return ending == ".obj" || ending == ".msh" || ending == ".ele";
}

IndexedMesh readTriangles(const std::string& path) {
    const std::string ending = endingOf(path);
    if (ending == ".obj") return readObj(path);
    if (ending == ".msh") return readMsh(path);
    if (ending == ".ele") return readEle(path);
    failFile(path, "triangles are read from .obj, .msh and .ele files");
}
