#include <limits>

#include "textFile.h"
#include "triangleFiles.h"

using namespace KELMAR_NORVIK2D;

namespace {

struct Vertices {
    std::vector<Point2> points;
    std::int64_t first = 1;  ///< the number of the first vertex

    /// The next word of the line tells a vertex.
    std::size_t readIndex(LineReader& in) const {
        const std::int64_t number = in.integer();
        if (number < first || number - first >= static_cast<std::int64_t>(points.size()))
            in.fail("there is no vertex " + std::to_string(number));
        return static_cast<std::size_t>(number - first);
    }
};

/// The word, if the line has one more, as a count; otherwise what is meant by leaving it out.
std::size_t countOr(LineReader& in, std::size_t other) {
    return in.rest().find_first_not_of(" \t\r") == std::string_view::npos ? other : in.count();
}

/// Number, coordinates, attributes and mark of a vertex.
Point2 readVertex(LineReader& in, std::size_t numAttributes, bool bMarks) {
    const double x = in.number(), y = in.number();
    if (!bMarks) return {x, y};
    for (std::size_t i = 0; i < numAttributes; ++i) in.number();
    const std::int64_t mark = in.integer();
    if (mark < std::numeric_limits<int>::min() || mark > std::numeric_limits<int>::max())
        in.fail("the mark is too large");
    return {x, y, static_cast<int>(mark)};
}

/// The header, in the line that has been begun, and the lines of the vertices.
Vertices readVertices(LineReader& in) {
    Vertices vertices;
    const std::size_t numVertices = in.count();
    if (countOr(in, 2) != 2) in.fail("vertices have two coordinates");
    const std::size_t numAttributes = countOr(in, 0);
    const bool bMarks = countOr(in, 0) != 0;
    while (vertices.points.size() < numVertices) {
        in.need("a vertex");
        const std::int64_t number = in.integer();
        if (vertices.points.empty()) {
            if (number != 0 && number != 1) in.fail("the first vertex is 0 or 1");
            vertices.first = number;
        }
        const auto expected = vertices.first + static_cast<std::int64_t>(vertices.points.size());
        if (number != expected) in.fail("vertex " + std::to_string(expected) + " expected");
        vertices.points.push_back(readVertex(in, numAttributes, bMarks));
    }
    return vertices;
}

Vertices readNodeFile(const std::string& path) {
    LineReader in(path, contentOf(path), '#');
    in.need("the number of vertices");
    return readVertices(in);
}

}  // namespace

std::vector<Point2> readNode(const std::string& path) { return readNodeFile(path).points; }

Drawing readPoly(const std::string& path) {
    LineReader in(path, contentOf(path), '#');
    in.need("the number of vertices");
    Vertices vertices = readVertices(in);
    if (vertices.points.empty()) vertices = readNodeFile(withEnding(path, ".node"));

    Drawing drawing;
    drawing.bEnclosed = true;
    in.need("the number of segments");
    for (std::size_t left = in.count(); left > 0; --left) {
        in.need("a segment");
        in.integer();
        const std::size_t src = vertices.readIndex(in), trg = vertices.readIndex(in);
        drawing.segments.emplace_back(vertices.points[src], vertices.points[trg]);
    }
    in.need("the number of holes");
    for (std::size_t left = in.count(); left > 0; --left) {
        in.need("a hole");
        in.integer();
        drawing.holes.push_back(readVertex(in, 0, false));
    }
    if (in.next())
        for (std::size_t left = in.count(); left > 0; --left) {
            in.need("a region");
            in.integer();
            const Point2 seed = readVertex(in, 0, false);
            drawing.regions.push_back({seed, in.number()});
        }
    drawing.points = std::move(vertices.points);
    return drawing;
}

IndexedMesh readEle(const std::string& path) {
    LineReader in(path, contentOf(path), '#');
    in.need("the number of triangles");
    const std::size_t numTriangles = in.count(), numNodes = countOr(in, 3);
    if (numNodes != 3 && numNodes != 6) in.fail("triangles have three or six nodes");
    const Vertices vertices = readNodeFile(withEnding(path, ".node"));
    IndexedMesh mesh;
    while (mesh.triangles.size() < numTriangles) {
        in.need("a triangle");
        in.integer();
        const std::size_t a = vertices.readIndex(in), b = vertices.readIndex(in), c = vertices.readIndex(in);
        mesh.triangles.push_back({a, b, c});
    }
    if (mesh.triangles.empty()) failFile(path, "holds no triangles");
    mesh.points = vertices.points;
    return mesh;
}
