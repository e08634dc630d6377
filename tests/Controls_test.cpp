// What a program around the library needs beside geometry: messages, plain arrays, a way to stop, progress, many questions.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "MeshArrays.h"
#include "NorvikException.h"
#include "bulkInsertion.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "constraintLaws.h"
#include "meshDomains.h"
#include "progressListener.h"
#include "require.h"

using namespace meshDomains;
using hardPoints::below, hardPoints::uniformPoints;

namespace {

using Message = std::tuple<MessageKind, std::string, std::string>;

/// Hears of all messages during its lifetime.
struct Messages {
    std::vector<Message> vMessages;
    std::atomic<int> numInside{0};
    bool bTwoAtOnce = false;
    MessageHandler previous;

    Messages()
        : previous(
              setMessageHandler([this](MessageKind kind, const std::string& source, const std::string& text) {
                  if (++numInside > 1) bTwoAtOnce = true;
                  std::this_thread::yield();
                  vMessages.emplace_back(kind, source, text);
                  --numInside;
              })) {}
    ~Messages() { setMessageHandler(previous); }
};

/// All that goes to the two streams of the process, by whatever way.
template <class Action>
std::string processOutputOf(const Action& action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    std::cout.flush();
    const std::string out = testing::internal::GetCapturedStdout();
    return out + testing::internal::GetCapturedStderr();
}

/// Notes progress, and does something at one call.
struct Listener : MsgBase {
    std::vector<std::pair<std::string, double>> vHeard;
    std::size_t when = 0;
    std::function<void()> action;

    void update(MsgType, const std::string& name, double value) override {
        vHeard.emplace_back(name, value);
        if (vHeard.size() == when) action();
    }
};

/// Messages of all kinds, tables, files, and several threads.
void talk() {
    Meshed meshed(square);
    meshed.mesh.remove(nullptr);
    meshed.mesh.refine(nullptr, 20, 1, 2, true);
    meshed.pZone->statistics("title");
    meshed.mesh.checkZoneQuality(meshed.pZone, 59, "Controls", AcceptExperimentalFeature());
    meshed.mesh.writeObj("Controls.obj");
    Segments open{{Point2(0, 0), Point2(1, 0)}};
    sortRing(open);
    std::vector<std::thread> vThreads;
    for (int t = 0; t < 3; ++t)
        vThreads.emplace_back([] {
            for (int i = 0; i < 50; ++i) Norvik_2D().insert(Point2(std::nan(""), 0));
        });
    for (std::thread& thread : vThreads) thread.join();
    Norvik_2D many;
    Listener listener;
    many.setNumCPU(3);
    many.subscribe(MSGTYPE_PROGRESS, &listener);
    many.insert(uniformPoints(120000, 1));
    EXPECT_THROW(require(false, "condition"), NorvikException);
}

}  // namespace

TEST(MessageHandler, GetsAllThatWouldGoToTheStreams) {
    EXPECT_NE(processOutputOf(talk), "");
    {
        Messages messages;
        EXPECT_FALSE(messages.previous);
        EXPECT_EQ(processOutputOf(talk), "");
        EXPECT_FALSE(messages.bTwoAtOnce);
        EXPECT_EQ(std::count_if(messages.vMessages.begin(), messages.vMessages.end(),
                                [](const Message& m) { return countOf(std::get<2>(m), "finite") != 0; }),
                  150);
        setMessageHandler(silentMessageHandler());
        EXPECT_EQ(processOutputOf(talk), "");
    }
    EXPECT_NE(processOutputOf([] { warning("source", "text"); }), "");
}

TEST(MessageHandler, GetsKindSourceAndBareText) {
    const struct {
        std::function<void()> action;
        std::vector<Message> vExpected;
    } cases[] = {
        {[] { warning("source", "text"); }, {{MK_WARNING, "source", "text"}}},
        {[] { error("source", "text"); }, {{MK_ERROR, "source", "text"}}},
        {[] { info("source", "text"); }, {{MK_INFO, "source", "text"}}},
        {[] { info("", "text"); }, {{MK_INFO, "", "text"}}},
        {[] { timer("t"); }, {{MK_PLAIN, "", "...Timer [t] start\n"}}},
        {[] { Norvik_2D().refine(nullptr, 20, 1, 2, true); },
         {{MK_PLAIN, "", "\nWarning: Norvik_2D::refine(..) has been called with pZone==NULL\n\n"}}},
        {[] { EXPECT_THROW(require(false, "c", "/x/dt2Library/f.cpp", 7), NorvikException); },
         {{MK_ERROR, "Norvik, ", "Condition [ c failed ]"}, {MK_PLAIN, "", "      dt2Library/f.cpp:7\n"}}},
    };
    for (const auto& [action, vExpected] : cases) {
        Messages messages;
        action();
        EXPECT_EQ(messages.vMessages, vExpected);
    }
}

namespace {

bool operator==(const MeshArrays& a, const MeshArrays& b) {
    return a.coordinates == b.coordinates && a.customIndices == b.customIndices && a.corners == b.corners &&
           a.neighbours == b.neighbours && a.constraintFlags == b.constraintFlags;
}

/// What the pointers say of a mesh, or of a zone.
MeshArrays expectedArrays(Norvik_2D& mesh, const Zone2* pZone) {
    MeshArrays result;
    Triangles vTriangles = trianglesOf(mesh);
    const auto sKept = zoneLaws::setOf(pZone != nullptr ? trianglesOf(pZone) : vTriangles);
    vTriangles.erase(std::remove_if(vTriangles.begin(), vTriangles.end(),
                                    [&](Triangle2* pT) { return sKept.count(pT) == 0; }),
                     vTriangles.end());
    std::vector<Point2*> vPoints;
    if (pZone == nullptr) mesh.getVertexPointers(vPoints);
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3 && pZone != nullptr; ++i) vPoints.push_back(pT->getCorner(i));
    std::map<const void*, std::int64_t> mNumber;
    for (const Point2* pVtx : vPoints) {
        if (!mNumber.emplace(pVtx, mNumber.size()).second) continue;
        result.coordinates.insert(result.coordinates.end(), {pVtx->x(), pVtx->y()});
        result.customIndices.push_back(pVtx->getCustomIndex());
    }
    for (std::size_t t = 0; t < vTriangles.size(); ++t) mNumber[vTriangles[t]] = static_cast<std::int64_t>(t);
    for (Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i) {
            const auto neighbour = mNumber.find(pT->getOppositeTriangle(i));
            result.corners.push_back(mNumber.at(pT->getCorner(i)));
            result.neighbours.push_back(neighbour == mNumber.end() ? -1 : neighbour->second);
            result.constraintFlags.push_back(mesh.isConstraint(pT, i) ? 1 : 0);
        }
    return result;
}

}  // namespace

TEST(MeshArrays, SayWhatThePointersSay) {
    MeshArrays runs[2], ofZone;
    for (MeshArrays& run : runs) {
        Meshed meshed({"walled", {box(0, 0, 10, 10)}, {{{2, 2}, {8, 3}}}});
        Polygon points = uniformPoints(200, 1);
        for (std::size_t i = 0; i < points.size(); ++i) points[i].setCustomIndex(static_cast<int>(i));
        const auto handles = insertBulk(meshed.mesh, points);
        for (std::size_t i = 0; i < 50; ++i) meshed.mesh.remove(handles[i]);
        meshed.mesh.insert(Polygon{{20, 5}, {-20, 5}});
        for (int i = 0; i < 2; ++i) meshed.mesh.exportMesh(run);  // replaced, not appended
        EXPECT_TRUE(run == expectedArrays(meshed.mesh, nullptr));
        meshed.mesh.exportMesh(meshed.pZone, ofZone);
        EXPECT_TRUE(ofZone == expectedArrays(meshed.mesh, meshed.pZone));
        EXPECT_EQ(run.numberOfPoints(), 4 + 2 + 150 + 2);
        EXPECT_LT(ofZone.numberOfTriangles(), run.numberOfTriangles());
    }
    EXPECT_TRUE(runs[0] == runs[1]);

    Norvik_2D collinear;
    collinear.insert(Polygon{{0, 0}, {1, 1}});
    Meshed meshed(square);
    const std::function<void(MeshArrays&)> mistakes[] = {
        [&](MeshArrays& out) { collinear.exportMesh(out); },
        [&](MeshArrays& out) { collinear.exportMesh(meshed.pZone, out); },
        [&](MeshArrays& out) { meshed.mesh.exportMesh(nullptr, out); }};
    for (const auto& mistake : mistakes) {
        Messages messages;
        mistake(runs[0]);
        EXPECT_TRUE(runs[0] == MeshArrays());
        EXPECT_TRUE(messages.vMessages.size() == 1 && std::get<0>(messages.vMessages[0]) == MK_WARNING);
        runs[0] = runs[1];
    }
}

namespace {

/// Bulk insertion into a mesh that may hold points already, with or without triangles.
template <int numCPU, bool bArray, int numOld>
struct Insertion {
    Norvik_2D subject;
    Polygon points = uniformPoints(2000, 1);
    std::vector<Point2*> vOld, handles;

    Insertion() {
        points.insert(points.begin(), points.begin() + 300, points.begin() + 600);
        for (int i = 0; i < numOld; ++i)
            points[static_cast<std::size_t>(i)] = Point2(i, numOld < 99 ? 0 : i % 7);
        subject.setNumCPU(numCPU);
        vOld = insertEach(subject, Polygon(points.begin(), points.begin() + numOld));
    }
    void operate() { handles = bArray ? insertArray(subject, points) : insertBulk(subject, points); }

    std::string faults(bool bCancelled) {
        if (!bCancelled) return lawsBroken(subject) + handlesBroken(subject, points, handles);
        Polygon inserted(points.begin(), points.begin() + numOld);
        std::vector<Point2*> vInserted = vOld;
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (handles[i] == nullptr) continue;
            inserted.push_back(points[i]);
            vInserted.push_back(handles[i]);
        }
        if (inserted.size() == points.size() + numOld) return "nothing is left out";
        return lawsBroken(subject) + handlesBroken(subject, inserted, vInserted);
    }
};

struct Application {
    Norvik_2D subject;
    Demands demands{subject};

    Application() {
        Rng rng(1);
        demands.create(zoneLaws::ring(zoneLaws::star(rng, 150, {0, 0}, 3, 10)), CIS_CONFORMING_DELAUNAY);
    }
    void operate() { subject.applyConstraintsAndZones(); }
    std::string faults(bool bCancelled) { return demands.check(!bCancelled); }
};

struct Refining {
    Meshed meshed{square};
    Norvik_2D& subject = meshed.mesh;

    void operate() { meshed.refine({.maxEdge = 0.5}); }
    std::string faults(bool bCancelled) {
        double longest = 0;
        for (const Triangle2* pT : trianglesOf(meshed.pZone))
            for (int i = 0; i < 3; ++i)
                longest =
                    std::max(longest, Segment2(*pT->getCorner(i), *pT->getCorner((i + 1) % 3)).getSqLen2D());
        return meshed.faults() + (bCancelled || longest <= 0.25 ? "" : "not done");
    }
};

struct Checking {
    Segments segments;
    std::vector<Segment2*> vPointers, vIllegal, vAllIllegal;
    SegmentChecker subject;

    Checking() {
        Rng rng(1);
        segments = hardSegments::fan(rng, 500, 1.0);
        for (const Segment2& crossing : hardSegments::kinds[0].make(rng, 50)) segments.push_back(crossing);
        for (Segment2& segment : segments) vPointers.push_back(&segment);
        subject.addSegments(vPointers);
        SegmentChecker(vPointers).getIllegalSegments(true, vAllIllegal);
    }
    void operate() { subject.getIllegalSegments(true, vIllegal); }
    std::string faults(bool bCancelled) {
        if (!bCancelled) return vIllegal == vAllIllegal ? "" : "not all";
        return std::includes(vAllIllegal.begin(), vAllIllegal.end(), vIllegal.begin(), vIllegal.end(),
                             std::less<>())
                   ? ""
                   : "others";
    }
};

}  // namespace

/// Operations that can be stopped, each on a state of its own.
template <class State>
class Cancel : public testing::Test {};
using CancellableOperations =
    testing::Types<Insertion<1, false, 0>, Insertion<1, false, 80>, Insertion<1, true, 300>,
                   Insertion<2, false, 0>, Insertion<2, false, 80>, Insertion<2, false, 300>, Application,
                   Refining, Checking>;
TYPED_TEST_SUITE(Cancel, CancellableOperations);

TYPED_TEST(Cancel, AtEveryTenthStepLeavesAValidStateFromWhichWorkGoesOn) {
    bool bReached = true;
    std::size_t numCancelled = 0;
    for (std::size_t when = 1; bReached; when += 10) {
        SCOPED_TRACE(when);
        TypeParam state;
        Listener listener;
        listener.when = when;
        listener.action = [&] { std::thread([&] { state.subject.requestCancel(); }).join(); };
        state.subject.requestCancel();  // too early to matter
        state.subject.subscribe(MSGTYPE_PROGRESS, &listener);
        state.operate();
        state.subject.unsubscribe(MSGTYPE_PROGRESS, &listener);
        bReached = listener.vHeard.size() >= when;
        const bool bCancelled = state.subject.wasCancelled();
        EXPECT_TRUE(bReached || !bCancelled);
        const bool bEndsSoon = listener.vHeard.size() <= when + 5;
        EXPECT_TRUE(!bCancelled || bEndsSoon) << "cancelled, and late";
        // How far progress is at the last step depends on how many divisions were expected.
        EXPECT_TRUE(bCancelled || !bReached || bEndsSoon || listener.vHeard[when - 1].second > 0.9);
        ASSERT_EQ(state.faults(bCancelled), "");
        numCancelled += bCancelled ? 1 : 0;
        state.operate();
        EXPECT_FALSE(state.subject.wasCancelled());
        ASSERT_EQ(state.faults(false), "");
    }
    EXPECT_GT(numCancelled, 2U);
}

TEST(ProgressPhases, CutImportRefinementAndCheckingHaveOneEach) {
    Norvik_2D mesh;
    mesh.insert(uniformPoints(20000, 1));
    Polygon soup;
    for (const Triangle2* pT : trianglesOf(mesh))
        for (int i = 0; i < 3; ++i) soup.push_back(*pT->getCorner(i));
    Rng rng(1);
    const auto expectOnePhase = [](auto& subject, const char* name, const auto& operation,
                                   bool bRising = true) {
        ProgressListener listener;
        subject.subscribe(MSGTYPE_PROGRESS, &listener);
        operation();
        subject.unsubscribe(MSGTYPE_PROGRESS, &listener);
        const std::size_t numTold = listener.numTold(name, bRising);
        EXPECT_TRUE(numTold > 5 && numTold < 1000) << name << ", about a hundred in each of few passes";
    };
    for (const bool bAll : {true, false}) {
        Norvik_2D imported;
        if (!bAll) soup.resize(soup.size() / 6 * 3);
        expectOnePhase(imported, "importTriangles", [&] { imported.importTriangles(soup, true, false); });
        EXPECT_EQ(canonicalMesh(imported) == canonicalMesh(mesh), bAll);
    }
    for (const bool bWithConstraints : {false, true})
        expectOnePhase(mesh, "cutTriangles",
                       [&] { mesh.cutTriangles(hardSegments::fan(rng, 50, 1.0), bWithConstraints); });
    Meshed meshed(square);
    expectOnePhase(
        meshed.mesh, "refine", [&] { meshed.refine({.maxEdge = 0.3}); }, false);
    Checking checking;
    expectOnePhase(checking.subject, "getIllegalSegments", [&] { checking.operate(); });
    CaptureOutput output;
    SegmentChecker().unsubscribe(MSGTYPE_PROGRESS, nullptr);
    EXPECT_TRUE(output.told("SegmentChecker::unsubscribe(), WARNING: No publisher present\033"));
}
