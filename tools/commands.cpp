#include "commands.h"

#include <SegmentChecker.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iostream>
#include <sstream>

#include "ProgressBar.h"

using namespace KELMAR_NORVIK2D;

namespace {

void writePicture(Norvik_2D& mesh, const Zone2* pZone, bool bShowFull, const std::string& path) {
    if (!mesh.is2D()) throw BadOutput(path + ": no picture, there are no triangles");
    ensureWritable(path);
    if (pZone != nullptr)
        pZone->show(path, bShowFull, true);
    else
        mesh.show(path);
}

}  // namespace

void addDrawing(Drawing drawing, Input& input) {
    input.points.insert(input.points.end(), drawing.points.begin(), drawing.points.end());
    for (const Segment2& segment : drawing.segments) {
        const bool bDegenerate = segment.getSrc() == segment.getTrg();
        if (bDegenerate)
            input.points.push_back(segment.getSrc());
        else
            input.segments.push_back(segment);
        input.numDegenerate += bDegenerate;
    }
    input.bPolygons |= drawing.bPolygons;
    input.bEnclosed |= drawing.bEnclosed;
    input.holes.insert(input.holes.end(), drawing.holes.begin(), drawing.holes.end());
    input.regions.insert(input.regions.end(), drawing.regions.begin(), drawing.regions.end());
}

void ensureWritable(const std::string& path) {
    if (!std::ofstream(path)) throw BadOutput(path + ": can't be written");
}

void writeObj(Norvik_2D& mesh, Zone2* pZone, const std::string& path) {
    const bool bEmpty = pZone != nullptr ? pZone->getNumberOfTriangles() == 0 : !mesh.is2D();
    if (bEmpty) throw BadOutput(path + ": not written, there are no triangles");
    ensureWritable(path);
    mesh.writeObj(path, pZone);
    ensureComplete(path);
}

void ensureComplete(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(-1, std::ios::end);
    if (file.get() != '\n') throw BadOutput(path + ": couldn't be written to its end");
}

template <class Publisher>
double doTimed(Publisher& publisher, const Options& options, const std::function<void()>& work) {
    ProgressBar bar;
    const bool bShowBar = options.bProgress && isatty(STDERR_FILENO) == 1;
    if (bShowBar) publisher.subscribe(MSGTYPE_PROGRESS, &bar);
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    if (bShowBar) publisher.unsubscribe(MSGTYPE_PROGRESS, &bar);
    return seconds.count();
}
template double doTimed(Norvik_2D&, const Options&, const std::function<void()>&);
template double doTimed(SegmentChecker&, const Options&, const std::function<void()>&);

std::string describe(const Zone2& zone) {
    // Less than a double has, so that the rounding of a long sum isn't shown.
    constexpr int digits = 12;
    std::vector<Edge2> vBorder;
    zone.getBoundaryEdges(vBorder);
    std::ostringstream text;
    text.precision(digits);
    text << "area " << zone.getArea2D() << ", triangles " << zone.getNumberOfTriangles() << ", border edges "
         << vBorder.size();
    return std::move(text).str();
}

void writeOutputs(Norvik_2D& mesh, Zone2* pZone, const Options& options, bool bShowFull) {
    if (!options.pictureFile.empty()) writePicture(mesh, pZone, bShowFull, options.pictureFile);
    if (!options.objFile.empty()) writeObj(mesh, pZone, options.objFile);
}

int checkIfAsked(Norvik_2D& mesh, const Options& options, bool bDelaunay) {
    if (!options.bCheck || mesh.checkValidity(bDelaunay, options.input)) return exitSuccess;
    std::cerr << options.input << ": the triangulation is not valid" << std::endl;
    return exitFailure;
}
