#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "Dt2.h"
#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "clientSettings.h"
#include "hardPoints.h"
#include "meshLaws.h"

using namespace KELMAR_NORVIK2D;

TEST(Facade, NumberOfThreadsInForce) {
    Norvik_2D mesh;
    EXPECT_EQ(mesh.setNumCPU(-3), 1);
    EXPECT_EQ(mesh.setNumCPU(7), 7);
    EXPECT_EQ(mesh.getImpl()->getNumCPU(), 7);
    EXPECT_GE(mesh.setNumCPU(0), 1);
    EXPECT_EQ(mesh.enableMultithreading(), mesh.setNumCPU(0));
    EXPECT_EQ(Norvik_2D().getImpl()->getNumCPU(), 1);
}

TEST(Facade, NamesVersionsAndReservedEntries) {
    Norvik_2D mesh;
    mesh.setName("a name");
    EXPECT_EQ(mesh.getName(), "a name");
    std::ostringstream version;
    version << "Norvik 2D, RELEASE, v" << getMajorVersionNumber() << "." << getMinorVersionNumber() << "."
            << getRevisionNumber();
    EXPECT_EQ(getNorvik2DVersion(), version.str());
    mesh.setDev("key", 1, 2.0);
    CaptureOutput capture;
    for (int i = -1; i < 4; ++i)
        for (int j = -1; j < 4; ++j) mesh.internal(i, j, "");
    const std::string told = "internal debug is disbled in your version\n";
    EXPECT_EQ(capture.out() + capture.err(), told + told);
}

TEST(Facade, MeasuringTimeLeavesTheMeshAlone) {
    Norvik_2D mesh;
    mesh.setNumCPU(2);
    insertEach(mesh, {{0, 0}, {1, 0}, {0, 1}});
    const CanonicalMesh before = canonicalMesh(mesh);
    std::vector<Point2> points = hardPoints::uniformPoints(1000, 1);
    CaptureOutput capture;
    for (int i = 0; i < 2; ++i) EXPECT_GE(mesh.measureTrianguluationTime(points), 0.0);
    EXPECT_EQ(capture.out(), "");
    EXPECT_EQ(canonicalMesh(mesh), before);
    EXPECT_EQ(mesh.numberOfPoints(), 3U);
    EXPECT_EQ(points.size(), 1000U);
    EXPECT_EQ(mesh.getImpl()->getNumCPU(), 2);
}

TEST(Facade, ShowingWithoutTrianglesIsAnErrorAndNoFile) {
    Norvik_2D mesh;
    insertEach(mesh, {{0, 0}, {1, 0}});
    CaptureOutput capture;
    mesh.show("facade_noMesh.ps");
    EXPECT_EQ(capture.out().find("\n\033[0;31m      [Norvik2D-Message] Dt2::show(), ERROR: "), 0U)
        << capture.out();
    EXPECT_FALSE(capture.told("Visualizer2:: Writing"));
    EXPECT_FALSE(std::ifstream("facade_noMesh.ps").good());
}

TEST(Facade, WorkersKnowNothingOfTheClientsSettings) {
    const std::vector<Point2> points = hardPoints::uniformPoints(100000, 9);
    const auto listOf = [&](int rounding) {
        Norvik_2D mesh;
        mesh.setNumCPU(4);
        const ClientSettings settings(rounding, true);
        mesh.insert(points);
        std::vector<Point2*> vVertices;
        mesh.getVertexPointers(vVertices);
        std::vector<Coordinates> result;
        for (const Point2* pVtx : vVertices) result.emplace_back(pVtx->x(), pVtx->y());
        return result;
    };
    EXPECT_TRUE(listOf(FE_UPWARD) == listOf(FE_TONEAREST));
}

TEST(Facade, SettingsReturnWhenASubscriberThrows) {
    struct Thrower : MsgBase {
        void update(MsgType, const std::string&, double value) override {
            EXPECT_TRUE(ClientSettings::areNormal());
            if (value > 0.4) throw std::runtime_error("enough");
        }
    } thrower;
    for (const int rounding : roundingModes)
        for (const int numCPU : {1, 2, 8}) {
            // The object is destroyed half made, its fake corners alive.
            Norvik_2D mesh;
            mesh.setNumCPU(numCPU);
            mesh.subscribe(MSGTYPE_PROGRESS, &thrower);
            const ClientSettings settings(rounding, true);
            EXPECT_THROW(mesh.insert(hardPoints::uniformPoints(1000, 1)), std::runtime_error);
            EXPECT_TRUE(settings.areKept());
        }
}
