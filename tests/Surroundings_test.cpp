// Hosts with settings of their own: the library does the same in all of them, and leaves them as they are.
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <clocale>
#include <cmath>
#include <functional>
#include <locale>

#include "canonicalMesh.h"
#include "captureOutput.h"
#include "clientSettings.h"
#include "meshLaws.h"
#include "temporaryFolder.h"
#include "wholeInterface.h"

using namespace KELMAR_NORVIK2D;
using wholeInterface::Results, wholeInterface::Segments;

namespace {

/// Meshes of points that need every stage of the predicates, and all of the range of doubles.
void insertHardPoints(Results& results) {
    static const auto points = [] {
        std::vector<std::vector<Point2>> ofKinds;
        hardPoints::Rng rng(1);
        for (const auto& kind : hardPoints::kinds) ofKinds.push_back(hardPoints::makePoints(kind, 90, rng));
        return ofKinds;
    }();
    for (const std::vector<Point2>& ofKind : points) {
        Norvik_2D mesh;
        mesh.insert(std::vector<Point2>(ofKind.begin(), ofKind.begin() + 60));
        const std::vector<Point2*> handles = insertEach(mesh, ofKind);
        for (std::size_t i = 0; i < handles.size(); i += 5)
            if (handles[i]->getIncidentTriangle() != nullptr) mesh.remove(handles[i]);
        results << mesh;
    }
}

/// What comes of all scenes, files included.
std::map<std::string, std::string> resultsOfAll() {
    const TemporaryFolder folder;
    const CaptureOutput output;
    Results results;
    for (const wholeInterface::SceneFunction scene : wholeInterface::scenes) scene(results);
    insertHardPoints(results);
    wholeInterface::write(results, "scene");
    std::map<std::string, std::string> all = TemporaryFolder::files();
    // Circles are stroked by a count that goes on from picture to picture.
    for (auto& [name, content] : all)
        for (std::size_t at = 0; (at = content.find("stroke\n", at)) != std::string::npos;)
            content.erase(at, 7);
    all["results"] = results.text;
    all["output"] = output.out() + output.err();
    return all;
}

/// Names of those that differ.
std::string differing(const std::map<std::string, std::string>& expected) {
    std::string names;
    const std::map<std::string, std::string> found = resultsOfAll();
    for (const auto& [name, content] : expected)
        if (found.count(name) == 0 || found.at(name) != content) names += name + " ";
    return found.size() == expected.size() ? names : names + "other files";
}

/// Decimal commas, and points between thousands, in C and C++.
class GermanLocale {
public:
    GermanLocale() : before(std::locale::global(std::locale(std::locale::classic(), new Comma))) {
        bWholly = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    }
    ~GermanLocale() {
        std::setlocale(LC_ALL, "C");
        std::locale::global(before);
    }
    GermanLocale(const GermanLocale&) = delete;
    GermanLocale& operator=(const GermanLocale&) = delete;

    bool bWholly = false;  ///< also C's functions

private:
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale before;
};

/// Runs it in a thread with a stack of 256 KiB, which ends the process where it overflows.
void runOnSmallStack(std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{256} << 10);
    pthread_t thread{};
    const auto start = [](void* pWork) -> void* {
        (*static_cast<std::function<void()>*>(pWork))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

constexpr int numMany = 100000;

/// A strip between two arms of a spiral.
Segments spiral() {
    std::vector<Point2> corners;
    for (int i = 0; i < numMany; ++i) {
        const int step = std::min(i, numMany - 1 - i);
        const double angle = 1e-2 * step, radius = 10.0 + angle + (2 * i < numMany ? 0.0 : 1.0);
        corners.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
    }
    return wholeInterface::ring(corners);
}

Segments fan() {
    Segments segments;
    for (int i = 0; i < numMany; ++i)
        segments.emplace_back(Point2(0, 0), Point2(i - numMany / 2, 1e-6 * i * (numMany - i) - 1e5));
    return segments;
}

/// Pieces of one line, the last one all along it.
Segments line() {
    Segments segments;
    for (int i = 0; i + 2 < numMany; ++i)
        segments.emplace_back(Point2(i, 3.0 * i), Point2(i + 2, 3.0 * i + 6));
    segments.emplace_back(segments.front().getSrc(), segments.back().getTrg());
    return segments;
}

}  // namespace

TEST(Surroundings, FloatingPointSettingsMakeNoDifferenceAndAreKept) {
    const auto expected = resultsOfAll();
    for (const int rounding : roundingModes)
        for (const bool bFlush : {false, true}) {
            const ClientSettings settings(rounding, bFlush);
            EXPECT_EQ(differing(expected), "") << rounding << bFlush;
            EXPECT_TRUE(settings.areKept());
        }
}

TEST(Surroundings, NumbersKeepTheirPointUnderADecimalComma) {
    const auto expected = resultsOfAll();
    const GermanLocale german;
    if (!german.bWholly) std::cout << "C's functions keep to the C locale: de_DE.UTF-8 isn't installed\n";
    EXPECT_EQ(differing(expected), "");
}

TEST(Surroundings, FilesThatCantBeWrittenEndNothing) {
    const std::string names = [] {
        const TemporaryFolder folder;
        Results results;
        wholeInterface::write(results, "scene");
        std::string list;
        for (const auto& [name, content] : TemporaryFolder::files()) list += name + "\n";
        return list;
    }();
    for (const bool bFullDisk : {false, true}) {
        const TemporaryFolder folder;
        std::filesystem::create_directory("scene_web");
        std::istringstream all(names);
        for (std::string name; std::getline(all, name);)
            if (bFullDisk)
                std::filesystem::create_symlink("/dev/full", name);
            else
                std::filesystem::create_directory(name);
        Results results, expected;
        CaptureOutput output;
        wholeInterface::write(results, "scene");
        // A full disk can be read, and holds no number.
        expected << false << bFullDisk << false << false << false << false << false;
        EXPECT_EQ(results.text, expected.text);
        EXPECT_EQ(countOf(output.out(), " can't be written\n"), 5) << "the constraints' too";
        EXPECT_EQ(countOf(output.out(), "fileReplicate(), WARNING: Can't write scene_web/"), 4);
    }
}

TEST(Surroundings, ClosedOrFullStandardOutputIsNotMissed) {
    const auto expected = resultsOfAll();
    const auto run = [&] {
        Results results;
        for (const wholeInterface::SceneFunction scene : wholeInterface::scenes) scene(results);
        std::_Exit(results.text == expected.at("results").substr(0, results.text.size()) ? 0 : 1);
    };
    EXPECT_EXIT((close(STDOUT_FILENO), run()), testing::ExitedWithCode(0), "");
    EXPECT_EXIT((std::freopen("/dev/full", "w", stdout), run()), testing::ExitedWithCode(0), "");
}

TEST(Surroundings, StacksStaySmallHoweverLongTheInputIs) {
    for (const Segments& segments : {spiral(), fan(), line()})
        runOnSmallStack([&] {
            const CaptureOutput output;
            Norvik_2D mesh;
            mesh.insert({{-3e5, -3e5}, {3e5, -2e5}, {1e5, 4e5}});
            ConstraintGraph2* const pGraph = mesh.createConstraint(segments, CIS_CONSTRAINED_DELAUNAY);
            Zone2* const pZone = pGraph->isPolygon() ? mesh.createZone(pGraph, ZL_INSIDE)
                                                     : mesh.createZone(nullptr, ZL_GLOBAL);
            std::vector<Triangle2*> vTriangles;
            pZone->getTriangles(vTriangles);
            EXPECT_GE(vTriangles.size(), static_cast<std::size_t>(numMany - 2));
            std::vector<Point2> corners;
            for (const Triangle2* pT : vTriangles)
                for (int i = 0; i < 3; ++i) corners.push_back(*pT->getCorner(i));
            Zone2* const pBounded = pZone->convertToBoundedZone();
            // The others would take minutes for their very thin triangles.
            if (pGraph->isPolygon()) {
                mesh.refine(pBounded, 5.0, 0.5, 1e9, true);
                mesh.cutTriangles({-1e5, 1.5}, {1e5, 2.5}, false);
            }
            Norvik_2D imported;
            EXPECT_NE(imported.importTriangles(corners, false, false), nullptr);
            Segments sorted = segments;
            EXPECT_EQ(sortRingCCW(sorted), pGraph->isPolygon());
            EXPECT_TRUE(mesh.checkValidity(false, "small stack"));
        });
}
