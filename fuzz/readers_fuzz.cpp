// The file readers of the library and of the command-line program. The first byte says which one; then comes the file, and behind
// a separator the file beside it, where the format has one. Or a face is made of the bytes, for the step that all formats of
// triangles share.
#include <stdlib.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics.h"
#include "fault.h"
#include "fileFunctions.h"
#include "formats/greyMap.h"
#include "formats/mshFile.h"
#include "formats/triangleFiles.h"
#include "inputFiles.h"
#include "judgeFace.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr std::string_view separator = "\n%%%\n";

/// A folder of this process in memory, as far as the system has one.
class Folder {
public:
    Folder() {
        const bool bMemory = std::filesystem::is_directory("/dev/shm");
        std::string name =
            (bMemory ? std::string("/dev/shm") : std::filesystem::temp_directory_path().string()) +
            "/norvik2dXXXXXX";
        expect(mkdtemp(name.data()) != nullptr, "a folder for files");
        path = name;
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string pathTo(const std::string& name) const { return path + '/' + name; }
    std::string write(const std::string& name, std::string_view content) const {
        std::ofstream(pathTo(name), std::ios::binary) << content;
        return pathTo(name);
    }

private:
    std::string path;
};

bool areSame(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}
bool areSame(const Point2& a, const Point2& b) { return areSame(a.x(), b.x()) && areSame(a.y(), b.y()); }
bool areSame(const Segment2& a, const Segment2& b) {
    return areSame(a.getSrc(), b.getSrc()) && areSame(a.getTrg(), b.getTrg());
}
template <class Record>
bool areSame(const std::vector<Record>& a, const std::vector<Record>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const Record& r, const Record& s) { return areSame(r, s); });
}

bool isFinite(const Point2& point) { return std::isfinite(point.x()) && std::isfinite(point.y()); }

// The library's own: they tell failures by false, and leave the vector alone then.

void readTextOfLibrary(const Folder& folder, std::string_view content) {
    std::vector<Point2> points, again;
    expect(readXY(folder.write("in.xy", content).c_str(), points), "readXY");
    expect(std::all_of(points.begin(), points.end(), isFinite), "text tells finite numbers");
    const std::string path = folder.pathTo("again.xy");
    expect(writePointsASCII(path.c_str(), points) && readXY(path.c_str(), again), "text again");
    expect(areSame(points, again), "points of a text come back");
}

void readPointsOfLibrary(const Folder& folder, std::string_view content) {
    std::vector<Point2> points, again;
    if (!readPointsBIN(folder.write("in.bin", content).c_str(), points))
        return expect(points.empty(), "a refused file leaves the points");
    expect(points.size() <= content.size() + 65536, "no more points than bytes, but for a block");
    const std::string path = folder.pathTo("again.bin");
    expect(writePointsBIN(path.c_str(), points) && readPointsBIN(path.c_str(), again), "points again");
    expect(areSame(points, again), "points come back");
}

void readSegmentsOfLibrary(const Folder& folder, std::string_view content) {
    std::vector<Segment2> segments, again;
    if (!readSegmentsBIN(folder.write("in.bin", content).c_str(), segments))
        return expect(segments.empty(), "a refused file leaves the segments");
    const std::string path = folder.pathTo("again.bin");
    expect(writeSegmentsBIN(path.c_str(), segments) && readSegmentsBIN(path.c_str(), again),
           "segments again");
    expect(areSame(segments, again), "segments come back");
}

// Those of the program: they tell failures by BadInput.

void checkDrawing(const Drawing& drawing) {
    expect(std::all_of(drawing.points.begin(), drawing.points.end(), isFinite), "finite points");
    expect(std::all_of(drawing.holes.begin(), drawing.holes.end(), isFinite), "finite holes");
    for (const Segment2& segment : drawing.segments)
        expect(isFinite(segment.getSrc()) && isFinite(segment.getTrg()), "finite segments");
}

void checkMesh(const IndexedMesh& mesh) {
    expect(!mesh.triangles.empty(), "a file without triangles is refused");
    for (const Point2& point : mesh.points) expect(isFinite(point), "finite vertices");
    for (const auto& corners : mesh.triangles)
        for (const std::size_t corner : corners) expect(corner < mesh.points.size(), "corners are vertices");
}

void expectSameMesh(const IndexedMesh& mesh, const IndexedMesh& again, const char* format) {
    expect(areSame(mesh.points, again.points), std::string("vertices come back from ") + format);
    expect(mesh.triangles == again.triangles, std::string("triangles come back from ") + format);
}

/// Sides of triangles as segments, vertices as holes.
void roundTripPoly(const Folder& folder, IndexedMesh mesh) {
    std::vector<Segment2> sides;
    for (const auto& [a, b, c] : mesh.triangles) {
        mesh.constraints.push_back({a, b});
        sides.emplace_back(mesh.points[a], mesh.points[b]);
    }
    mesh.holes = mesh.points;
    const std::string path = folder.pathTo("again.poly");
    writePoly(mesh, path);
    const Drawing drawing = readPoly(path);
    expect(areSame(drawing.points, mesh.points) && areSame(drawing.holes, mesh.holes) &&
               areSame(drawing.segments, sides),
           "points and segments come back from .poly");
}

void roundTrip(const Folder& folder, const IndexedMesh& mesh) {
    const std::string msh = folder.pathTo("again.msh"), ele = folder.pathTo("again.ele");
    for (const MshVersion version : {MshVersion::v2_2, MshVersion::v4_1}) {
        writeMsh(mesh, version, msh);
        expectSameMesh(mesh, readMsh(msh), ".msh");
    }
    writeEle(mesh, ele);
    expectSameMesh(mesh, readEle(ele), ".ele");
    roundTripPoly(folder, mesh);
}

template <class Read>
void readOrRefuse(Read read) {
    try {
        read();
    } catch (const BadInput&) {
    }
}

void readByProgram(const Folder& folder, const char* ending, const char* endingBeside,
                   std::string_view content) {
    const std::size_t end = content.find(separator);
    const std::string path = folder.write(std::string("in") + ending, content.substr(0, end));
    if (endingBeside != nullptr && end != std::string_view::npos)
        folder.write(std::string("in") + endingBeside, content.substr(end + separator.size()));
    readOrRefuse([&] { checkDrawing({readPoints(path), {}, false, false, {}, {}}); });
    readOrRefuse([&] { checkDrawing(readSegments(path)); });
    readOrRefuse([&] { checkDrawing(readDrawing(path)); });
    IndexedMesh mesh;
    readOrRefuse([&] {
        mesh = readTriangles(path);
        checkMesh(mesh);
    });
    if (!mesh.triangles.empty()) roundTrip(folder, mesh);
    if (endingBeside != nullptr) std::filesystem::remove(folder.pathTo(std::string("in") + endingBeside));
}

void readPicture(const Folder& folder, std::string_view content) {
    readOrRefuse([&] {
        const FloatMtx mtx = readGreyMap(folder.write("in.pgm", content));
        float least = 0.0F, greatest = 0.0F;
        mtx.getMinMax(least, greatest);
        expect(least >= 0.0F && greatest <= 65535.0F, "pixels are in their range");
        const auto numPixels =
            static_cast<std::size_t>(mtx.getWidth()) * static_cast<std::size_t>(mtx.getHeight());
        expect(0 < numPixels && numPixels < content.size(), "no more pixels than bytes");
    });
}

struct Format {
    const char *ending, *endingBeside;
};
constexpr Format formats[] = {{".xy", nullptr},      {".seg", nullptr}, {".bin", nullptr}, {".node", nullptr},
                              {".poly", ".node"},    {".ele", ".node"}, {".obj", nullptr}, {".msh", nullptr},
                              {".geojson", nullptr}, {".shp", ".shx"}};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size) {
    static const Folder folder;
    setMessageHandler(silentMessageHandler());
    if (size == 0) return 0;
    const std::string_view content(reinterpret_cast<const char*>(pData) + 1, size - 1);
    // Printable ones, so that an input can be written by hand: x, p and s for the library's readers, digits and g for the program's,
    // f for faces with many corners as these take them.
    switch (pData[0]) {
        case 'x':
            readTextOfLibrary(folder, content);
            break;
        case 'p':
            readPointsOfLibrary(folder, content);
            break;
        case 's':
            readSegmentsOfLibrary(folder, content);
            break;
        case 'g':
            readPicture(folder, content);
            break;
        case 'f': {
            Decisions decisions(pData + 1, size - 1);
            FaceJudge(decisions).judge();
            break;
        }
        default:
            const auto& [ending, endingBeside] = formats[(pData[0] - '0' + 250U) % std::size(formats)];
            readByProgram(folder, ending, endingBeside, content);
    }
    return 0;
}
