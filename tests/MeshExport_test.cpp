#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cfloat>
#include <filesystem>
#include <map>
#include <sstream>
#include <stdexcept>

#include "Norvik_2D.h"
#include "captureOutput.h"
#include "viewerFiles.h"
#include "webScene.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// A folder that is there, with nothing in it, as long as the test runs.
struct EmptyFolder {
    EmptyFolder() { std::filesystem::create_directories(path); }
    ~EmptyFolder() { std::filesystem::remove_all(path); }
    std::string operator/(const std::string& name) const { return path + "/" + name; }

    const std::string path = testing::TempDir() + "MeshExport_" + std::to_string(getpid());
};

/// The text as a stream writes it.
std::string textOf(const std::vector<Triangle2*>& vTriangles) {
    std::ostringstream vertices, faces;
    vertices.precision(20);
    std::map<Point2*, std::size_t> mNumber;
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i) {
            Point2* pVtx = pT->getCorner(i);
            const auto [number, bNew] = mNumber.emplace(pVtx, mNumber.size() + 1);
            if (bNew) vertices << "v " << pVtx->x() << " " << pVtx->y() << " 0 \n";
            faces << (i == 0 ? "f " : " ") << number->second << (i == 2 ? "\n" : "");
        }
    return vertices.str() + faces.str();
}

std::string objOf(Norvik_2D& mesh, Zone2* pZone) {
    const std::string path = testing::TempDir() + "MeshExport_" + std::to_string(getpid()) + ".obj";
    mesh.writeObj(path, pZone);
    std::string text = contentOf(path);
    std::filesystem::remove(path);
    return text;
}

/// A square with a triangle in its middle.
struct Square {
    Square() {
        std::vector<Point2> vPoints{{0, 0}, {9, 0}, {9, 9}, {0, 9}};
        mesh.insert(vPoints);
        const Point2 a(0.1, 4), b(5, 4), c(5, 8);
        pInside = mesh.createZone(
            mesh.createConstraint({Segment2(a, b), Segment2(b, c), Segment2(c, a)}, CIS_CONSTRAINED_DELAUNAY),
            ZL_INSIDE);
    }
    Norvik_2D mesh;
    Zone2* pInside;
};

}  // namespace

TEST(writeObj, NumbersCornersAsTheyAreMet) {
    Square square;
    const std::string inside = objOf(square.mesh, square.pInside);
    for (const char* line : {"v 0.10000000000000000555 4 0 \n", "v 5 4 0 \n", "v 5 8 0 \n"})
        EXPECT_EQ(countOf(inside, line), 1) << line;
    EXPECT_TRUE(inside.ends_with(" 0 \nf 1 2 3\n"));
    EXPECT_EQ(countOf(inside, "\n"), 4);
    std::vector<Triangle2*> vTriangles;
    square.mesh.getTrianglePointers(vTriangles);
    EXPECT_EQ(objOf(square.mesh, nullptr), textOf(vTriangles));
}

TEST(writeObj, WritesNumbersAsAStreamDoes) {
    // clang-format off
    constexpr double hard[] = {0.0, -0.0, 1.0, -1.0, 0.1, 1.0 / 3.0, 1e-4, 1e-5, 9.9999e-5, 12345678.9, 1e7 + 0.1, 4503599627370497.5,
                               9007199254740993.0, 1e19, 99999999999999999999.0, 1e20, 1e21, 1e22, -1e23, DBL_MIN, -DBL_TRUE_MIN,
                               1e-300, 1e100};
    // clang-format on
    Norvik_2D mesh;
    std::vector<Point2> vPoints;
    for (std::size_t i = 0; i < std::size(hard); ++i)
        for (const std::size_t j : {i, (5 * i + 3) % std::size(hard)}) vPoints.emplace_back(hard[i], hard[j]);
    for (int i = 0; i < 20000; ++i)
        vPoints.emplace_back(i, i * 0.7 / (i + 1.0));  // more than one piece of the file
    mesh.insert(vPoints);
    std::vector<Triangle2*> vTriangles;
    mesh.getTrianglePointers(vTriangles);
    ASSERT_GT(vTriangles.size(), 20000U);
    EXPECT_TRUE(objOf(mesh, nullptr) == textOf(vTriangles));
}

TEST(writeObj, TellsOfAMeshWithoutTrianglesButNotOfFilesThatCantBeOpened) {
    EmptyFolder folder;
    Norvik_2D empty;
    CaptureOutput output;
    empty.writeObj(folder / "empty.obj");
    EXPECT_FALSE(std::filesystem::exists(folder / "empty.obj"));
    EXPECT_TRUE(
        output.told("Dt2::show(), ERROR: The triangulation is not full dimensional yet, no visualization"));
    CaptureOutput silence;
    Square().mesh.writeObj(folder / "nowhere/at/all.obj");
    EXPECT_EQ(silence.out() + silence.err(), "");
}

TEST(writeWebScene, MakesTheFoldersAndWritesOverWhatIsThere) {
    EmptyFolder folder;
    const std::string scene = folder / "three/new/levels";
    Square square;
    CaptureOutput output;
    square.mesh.writeWebScene(scene.c_str(), square.pInside);
    EXPECT_EQ(output.out(), "writeWebScene: Creating " + scene + "\n");
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(scene))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"3d.obj", "index.html", "jsc3d.ctm.js", "jsc3d.js",
                                               "jsc3d.touch.js"}));
    EXPECT_EQ(contentOf(scene + "/3d.obj"), objOf(square.mesh, square.pInside));
    const std::string page = contentOf(scene + "/index.html");
    std::ofstream(scene + "/index.html") << "old";
    square.mesh.writeWebScene(scene.c_str());
    EXPECT_EQ(contentOf(scene + "/3d.obj"), objOf(square.mesh, nullptr));
    EXPECT_EQ(contentOf(scene + "/index.html"), page);
}

TEST(writeWebScene, NeedsAFolderAndTriangles) {
    EmptyFolder folder;
    const std::string file = folder / "file", inFile = folder / "file/scene", flat = folder / "flat";
    std::ofstream(file) << "kept";
    Square square;
    CaptureOutput output;
    for (const std::string& path : {file, inFile}) {
        square.mesh.writeWebScene(path.c_str());
        EXPECT_TRUE(output.told("Dt2::writeWebScene(), WARNING: Can't create directory " + path));
    }
    EXPECT_FALSE(output.told("Creating"));
    EXPECT_EQ(contentOf(file), "kept");
    EXPECT_THROW(square.mesh.writeWebScene(nullptr), std::logic_error);

    Norvik_2D empty;
    empty.writeWebScene(flat.c_str());
    EXPECT_TRUE(output.told("not full dimensional yet"));
    EXPECT_TRUE(std::filesystem::exists(flat + "/index.html"));
    EXPECT_FALSE(std::filesystem::exists(flat + "/3d.obj"));
}

TEST(makePath, TakesWhatIsThereAndMakesWhatIsMissing) {
    EmptyFolder folder;
    EXPECT_TRUE(makePath(folder / "a/b/")) << "a slash at the end";
    EXPECT_TRUE(makePath(folder / "a/b"));
    EXPECT_TRUE(createDirectory((folder / "a//c/d").c_str()));
    EXPECT_TRUE(doesDirExist(folder / "a/c/d"));
    EXPECT_EQ(std::filesystem::status(folder / "a/c").permissions() & std::filesystem::perms::others_write,
              std::filesystem::perms::none);
    std::ofstream(folder / "file") << "kept";
    EXPECT_FALSE(doesDirExist(folder / "file"));
    EXPECT_FALSE(makePath(folder / "file"));
    EXPECT_FALSE(makePath(folder / "file/below"));
    EXPECT_FALSE(makePath(""));
}

TEST(fileReplicate, WritesTheFilesOfTheViewerAndNoOthers) {
    EmptyFolder folder;
    CaptureOutput output;
    for (const char* name : {"index.html", "jsc3d.js", "jsc3d.3ds.js", "jsc3d.console.js", "jsc3d.ctm.js",
                             "jsc3d.ie.js", "jsc3d.touch.js", "jsc3d.webgl.js"}) {
        fileReplicate(name, folder.path.c_str());
        const std::string text = contentOf(folder / name);
        EXPECT_FALSE(text.empty()) << name;
        EXPECT_EQ(text, contentOf(std::string(NORVIK2D_DATA "/../viewer/") + name)) << name;
    }
    EXPECT_EQ(output.out(), "");
    fileReplicate("jsc3d.css", folder.path.c_str());
    EXPECT_TRUE(output.told("unknown file"));
    EXPECT_FALSE(std::filesystem::exists(folder / "jsc3d.css"));
    fileReplicate("jsc3d.js", (folder / "missing").c_str());
    EXPECT_TRUE(output.told("Can't write " + folder / "missing" + "/jsc3d.js"));
}
