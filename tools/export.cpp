#include <array>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>
#include <utility>

#include "commands.h"
#include "exports.h"
#include "formats/geoJson.h"
#include "formats/svgFile.h"
#include "formats/triangleFiles.h"
#include "formats/vtuFile.h"
#include "outputMesh.h"

using namespace KELMAR_NORVIK2D;

namespace {

using Writer = void (*)(const IndexedMesh&, const std::string&);

constexpr std::array<std::pair<std::string_view, Writer>, 7> writers{{{".vtu", writeVtu},
                                                                      {".node", writeNode},
                                                                      {".ele", writeEle},
                                                                      {".poly", writePoly},
                                                                      {".geojson", writeGeoJson},
                                                                      {".json", writeGeoJson},
                                                                      {".svg", writeSvg}}};

/// Null if none has the ending.
Writer findWriter(const std::string& path) {
    const std::string ending = endingOf(path);
    for (const auto& [name, write] : writers)
        if (name == ending) return write;
    return nullptr;
}

bool isFolder(const std::string& path) { return path.ends_with('/') || endingOf(path).empty(); }

}  // namespace

std::string complaintAboutOutput(const std::string& path) {
    const std::string ending = endingOf(path);
    if (isFolder(path) || ending == ".obj" || ending == ".msh" || findWriter(path) != nullptr) return {};
    return path +
           ": a folder, or a name that ends in .obj, .msh, .vtu, .node, .ele, .poly, .geojson or .svg "
           "expected";
}

Exporter::Exporter(Norvik_2D& mesh_, const Subject& subject_)
    : mesh(mesh_), subject(subject_), triangles(takeMesh(mesh, subject)) {}

void Exporter::write(const std::string& path, MshVersion mshVersion) const {
    const std::string ending = endingOf(path);
    if (isFolder(path)) {
        writeScene(mesh, subject, path);
    } else if (ending == ".obj") {
        writeObj(mesh, subject.pZone, path);
    } else if (ending == ".msh") {
        writeMsh(triangles, mshVersion, path);
    } else {
        findWriter(path)(triangles, path);
    }
}

void writeScene(Norvik_2D& mesh, const Subject& subject, const std::string& folder) {
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    const std::string objFile = (std::filesystem::path(folder) / "3d.obj").string();
    ensureWritable(objFile);
    if (subject.pZone != nullptr)
        mesh.writeWebScene(folder.c_str(), subject.pZone);
    else
        mesh.writeWebScene(folder.c_str());
    ensureComplete(objFile);
}

namespace {

/// Nobody wants to lose what he has given. Files of elements bring a .node file with them.
void ensureInputStays(const Options& options) {
    for (std::filesystem::path path : options.vOutputs) {
        std::error_code failure;
        bool bSame = std::filesystem::equivalent(path, options.input, failure);
        if (endingOf(path.string()) == ".ele" || endingOf(path.string()) == ".poly")
            bSame |= std::filesystem::equivalent(path.replace_extension(".node"), options.input, failure);
        if (bSame) throw BadOutput(path.string() + ": not written, it is the input");
    }
}

void writeAll(const Exporter& exporter, const Options& options) {
    for (const std::string& path : options.vOutputs) {
        exporter.write(path, options.bOldMsh ? MshVersion::v2_2 : MshVersion::v4_1);
        std::cout << "written: " << path << std::endl;
    }
}

}  // namespace

void exportTo(Norvik_2D& mesh, const Subject& subject, const Options& options) {
    if (!options.vOutputs.empty()) writeAll(Exporter(mesh, subject), options);
}

int exportMesh(const Options& options) {
    ensureInputStays(options);
    Norvik_2D mesh;
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    Subject subject;
    const double seconds = doTimed(mesh, options, [&] { subject = makeSubject(mesh, options); });
    const Exporter exporter(mesh, subject);
    std::cout << "points: " << exporter.getTriangles().points.size()
              << "\ntriangles: " << exporter.getTriangles().triangles.size()
              << "\nholes: " << exporter.getTriangles().holes.size() << "\nseconds: " << seconds << std::endl;
    writeAll(exporter, options);
    return exitSuccess;
}
