// Records of constraints, the graphs that know their directions, and the manager of both.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <limits>

#include "Dt2.h"
#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "constraintLaws.h"
#include "hardPoints.h"
#include "hardSegments.h"
#include "progressListener.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr auto conforming = CIS_CONFORMING_DELAUNAY;
constexpr auto constrained = CIS_CONSTRAINED_DELAUNAY;
using Records = std::vector<ConstraintSegment2*>;

/// A square with its middle. Its records are made of edges or cross them.
struct Square {
    Norvik_2D mesh;
    Demands demands{mesh};
    Point2 a{0, 0}, b{4, 0}, c{4, 4}, d{0, 4}, m{2, 2};
    Point2* pA = mesh.insert(a);
    Point2* pB = mesh.insert(b);
    Point2* pC = mesh.insert(c);
    Point2* pD = mesh.insert(d);
    Point2* pM = mesh.insert(m);

    ConstraintMgr& manager() { return *mesh.getImpl()->getConstraintManager(); }
    ConstraintSegment2* make(const Point2& p, const Point2& q) {
        demands.create({{p, q}}, constrained);
        return mesh.getConstraintSegment(mesh.insert(p), mesh.insert(q));
    }
};

template <class T>
std::string streamed(const T& value) {
    std::ostringstream os;
    os << value;
    return os.str();
}

}  // namespace

// ------------------------------------------------------------------------------------------------ records

TEST(ConstraintSegment2, WhatIsAskedOfADeadOrUnfitRecordFails) {
    const auto atEdge = [](const std::string& condition, auto action) {
        Square square;
        ConstraintSegment2* const pRecord = square.make(square.a, square.b);
        CaptureOutput output;
        EXPECT_THROW(action(square, *pRecord), NorvikException) << condition;
        EXPECT_TRUE(output.told("Condition [ " + condition + " failed ]")) << output.out();
    };
    atEdge("p0<p1", [](Square&, auto& r) { ConstraintSegment2(r.getTrg(), r.getSrc(), constrained); });
    atEdge("p0<p1", [](Square& s, auto&) { ConstraintSegment2(s.pA, s.pA, constrained); });
    atEdge("vChildren.size()==2", [](Square&, auto& r) {
        Records vLeaves;
        r.getChildrenRec(vLeaves);
    });
    atEdge("pSplit!=__null", [](Square&, auto& r) { r.split_combinatorialOnly(nullptr); });
    atEdge("isAlive()", [](Square& s, auto& r) {
        r.kill();
        r.split_combinatorialOnly(s.pA);
    });
    atEdge("p0!=pSplit && p1!=pSplit", [](Square& s, auto& r) { r.split_combinatorialOnly(s.pB); });
    atEdge("bAlive", [](Square&, auto& r) {
        r.kill();
        r.insertAndSplit({2, 0});
    });
    atEdge("vChildren.empty()", [](Square& s, auto& r) {
        r.split_combinatorialOnly(s.pM);
        r.insertAndSplit({1, 0});
    });
    atEdge("q_it!=mCSegReverse.end()", [](Square& s, auto& r) {
        s.demands.create({{s.c, s.d}}, constrained)->isReverse(&r);
    });
    for (const bool bInsert : {false, true})
        atEdge("!sOwners.empty()", [&](Square& s, auto&) {
            ConstraintSegment2* const pFree = s.manager().addConstraintSegment(s.pA, s.pM, constrained);
            if (bInsert)
                pFree->insertAndSplit({1, 1});
            else
                pFree->split_combinatorialOnly(s.pB);
        });
}

TEST(ConstraintSegment2, DividedRecordsNeverComeBack) {
    Square square;
    ConstraintSegment2* const pRecord = square.make(square.a, square.b);
    const auto tells = [&](const std::string& state) {
        return streamed(*pRecord).find(" [" + state + "]\nPoint2 ") != std::string::npos;
    };
    EXPECT_TRUE(tells("alive"));
    EXPECT_NE(streamed(*pRecord).find("\nlength=4"), std::string::npos);
    pRecord->kill();
    EXPECT_TRUE(tells("DEAD, numChildren=0"));
    pRecord->unkill();
    EXPECT_TRUE(pRecord->isAlive());
    pRecord->insertAndSplit({1, 0});
    pRecord->unkill();
    EXPECT_TRUE(tells("DEAD, numChildren=2"));
}

TEST(ConstraintSegment2, PointsThatDivideBecomeVerticesBetweenEdges) {
    for (const Point2& point : {Point2(1, 0), Point2(2, 2), Point2(1, 3), Point2(2, -1), Point2(-3, 1)}) {
        Square square;
        ConstraintSegment2* const pRecord = square.make(square.a, square.b);
        square.make(square.d, square.c);
        pRecord->setAdjacentArea(7.0);
        Point2* const pSplit = pRecord->insertAndSplit(point);
        ASSERT_NE(pSplit, nullptr);
        EXPECT_EQ(*pSplit, point);
        EXPECT_EQ(lawsBroken(square.mesh), "") << point;
        EXPECT_TRUE(square.mesh.checkValidity(true, "divided"));
        if (point == Point2(1, 3)) continue;  // the pieces are divided by the far one
        for (Point2* pEnd : {square.pA, square.pB}) {
            const ConstraintSegment2* const pPiece = square.mesh.getConstraintSegment(pSplit, pEnd);
            ASSERT_NE(pPiece, nullptr) << point;
            EXPECT_EQ(pPiece->getCIS(), constrained);
            EXPECT_EQ(pPiece->getAdjacentArea(), std::numeric_limits<double>::max());
        }
    }
}

TEST(ConstraintSegment2, APointAtAnEndChangesNothing) {
    Square square;
    ConstraintSegment2* const pRecord = square.make(square.a, square.b);
    CaptureOutput output;
    for (const Point2& end : {square.a, square.b})
        EXPECT_TRUE(pRecord->insertAndSplit(end) == nullptr && !pRecord->splitAndRemovePrev(end));
    EXPECT_EQ(square.demands.check() + output.out(), "");
    EXPECT_EQ(square.demands.getNumPieces(), 1U);
}

TEST(ConstraintSegment2, DividingRemovesWhatRefinementPlacedWithinTheCircle) {
    Square square;
    ConstraintSegment2* const pRecord = square.make(square.a, square.b);
    InnerVtxMgr& inner = square.mesh.getImpl()->getInnerVtxMgr();
    Point2 *const pNear = square.mesh.insert({2, 1}), *const pFar = square.mesh.insert({2, 3}),
                  *const pClients = square.mesh.insert({1.5, 0.5}),
                  *const pOnCircle = square.mesh.insert({2, 1.9999999});
    square.make({2.5, 0.5}, square.c);
    Point2* const pWall = square.mesh.insert({2.5, 0.5});
    for (Point2* pVtx : {pNear, pFar, pWall, square.pM}) inner.addVtx(pVtx);
    EXPECT_TRUE(pRecord->splitAndRemovePrev({2, 0}));
    EXPECT_EQ(pNear->getIncidentTriangle(), nullptr);
    for (const Point2* pVtx : {pFar, pClients, pOnCircle, pWall, square.pM})
        EXPECT_NE(pVtx->getIncidentTriangle(), nullptr) << *pVtx;
    EXPECT_EQ(square.demands.check(), "");
}

TEST(ConstraintSegment2, AVertexThatASegmentPassesIsKeptFromRefinement) {
    Square square;
    square.mesh.getImpl()->getInnerVtxMgr().addVtx(square.mesh.insert({2, 1}));
    square.make({0, 1}, {4, 1});
    EXPECT_EQ(square.demands.check(), "");
    EXPECT_EQ(square.demands.getNumPieces(), 2U);
    ConstraintSegment2* const pSide = square.make(square.a, square.b);
    CaptureOutput output;
    EXPECT_THROW(pSide->splitAndRemovePrev({2, 0}), NorvikException) << "once kept it isn't in a circle";
    EXPECT_TRUE(output.told("Condition [ q_it!=sInsertedInnerPoints.end() failed ]"));
}

TEST(ConstraintSegment2, SharedPiecesHaveBothOwners) {
    Square square;
    ConstraintGraph2* const pHalf = square.demands.create({{square.a, square.m}}, constrained);
    square.demands.create({{square.c, square.a}}, constrained, true);
    square.demands.create({{square.d, square.b}}, constrained);
    EXPECT_EQ(square.demands.check(), "");
    EXPECT_EQ(square.demands.getNumPieces(), 4U);
    ConstraintSegment2* const pShared = square.mesh.getConstraintSegment(square.pA, square.pM);
    CaptureOutput output;
    EXPECT_TRUE(pShared->dbg_hasDirection());
    EXPECT_TRUE(output.told(", alive, numOwners=2\n")) << output.out();
    EXPECT_TRUE(output.told(" has Direction, true"));
    pShared->removeOwner(pHalf);
    EXPECT_EQ(pShared->getNumberOfOwners(), 1U);
}

// ------------------------------------------------------------------------------------------------- graphs

TEST(ConstraintGraph2, OneRingIsAPolygonWhateverItsOrderAndDirections) {
    const std::vector<Point2> v{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {1, 2}, {9, 9}, {12, 9}, {10, 12}, {2, 0}};
    const struct {
        const char* name;
        std::vector<std::pair<std::size_t, std::size_t>> segments;
        std::vector<std::size_t> ring;  // empty: no polygon
    } cases[] = {
        {"a triangle given clockwise", {{0, 3}, {3, 1}, {1, 0}}, {0, 1, 3}},
        {"a square, shuffled", {{2, 1}, {3, 0}, {1, 0}, {2, 3}}, {0, 1, 2, 3}},
        {"a concave ring", {{4, 0}, {0, 1}, {1, 2}, {2, 3}, {3, 4}}, {0, 1, 2, 3, 4}},
        {"the least vertex is in the middle of the list", {{6, 7}, {7, 5}, {5, 6}}, {5, 6, 7}},
        {"a ring that crosses itself", {{0, 2}, {2, 3}, {3, 1}, {1, 0}}, {0, 1, 3, 2}},
        {"a spike", {{0, 1}, {1, 2}, {2, 0}, {2, 3}}, {}},
        {"a spike at the first corner", {{0, 1}, {1, 2}, {2, 0}, {0, 3}}, {}},
        {"a segment twice", {{0, 1}, {1, 2}, {2, 0}, {1, 0}}, {}},
        {"two rings", {{0, 1}, {1, 2}, {2, 0}, {5, 6}, {6, 7}, {7, 5}}, {}},
        {"two segments", {{0, 1}, {1, 2}}, {}},
        {"an open chain", {{0, 1}, {1, 2}, {2, 3}}, {}},
        {"an open chain from the least vertex's neighbour", {{1, 0}, {0, 3}, {3, 2}}, {}},
        {"nothing but a line", {{0, 8}, {8, 1}, {1, 0}}, {}},
    };
    for (const auto& [name, pairs, ring] : cases)
        for (const bool bOriented : {false, true}) {
            SCOPED_TRACE(name);
            Norvik_2D mesh;
            Demands demands(mesh);
            const std::vector<Point2*> handles = insertEach(mesh, v);
            std::vector<Segment2> segments;
            for (const auto& [i, j] : pairs) segments.emplace_back(v[i], v[j]);
            CaptureOutput output;
            const ConstraintGraph2* const pGraph = demands.create(segments, constrained, bOriented);
            EXPECT_EQ(pGraph->isPolygon(), !ring.empty());
            EXPECT_EQ(demands.check() + output.out(), "");
            Records vSides;
            pGraph->getOriginalConstraintSegments(vSides);
            for (std::size_t i = 0; i < ring.size(); ++i) {
                Point2 *const pSrc = handles[ring[i]], *const pTrg = handles[ring[(i + 1) % ring.size()]];
                EXPECT_EQ(VertexPair2(vSides[i]->getSrc(), vSides[i]->getTrg()), VertexPair2(pSrc, pTrg));
                EXPECT_TRUE(bOriented || Demands::directedEnds(pGraph, vSides[i]).first == pSrc);
            }
        }
}

TEST(ConstraintGraph2, PiecesOfADividedSegmentTakeItsPlaceInTheRing) {
    for (const bool bOriented : {false, true}) {
        Square square;
        // Clockwise: unoriented it is turned.
        const ConstraintGraph2* const pRing = square.demands.create(
            {{square.a, square.d}, {square.d, square.c}, {square.c, square.b}, {square.b, square.a}},
            constrained, bOriented);
        const ConstraintGraph2* const pOther =
            square.demands.create({{square.a, square.b}, {square.c, square.b}}, constrained, true);
        Point2* const pMiddle = square.mesh.insert({1, 0});
        square.demands.create({{{3, -1}, {3, 5}}, {{-1, 1}, {5, 1}}}, constrained);
        square.mesh.insert({4, 3});
        EXPECT_EQ(square.demands.check(), "");
        std::vector<Point2*> vPolygon;
        pRing->getPolygonVertices(vPolygon);
        ASSERT_EQ(vPolygon.size(), 20U);
        // The ring's order of segments stays, but each runs as the client said.
        const Point2 first[] = {{0, 0}, {1, 0}, {1, 0}, {3, 0}, {3, 0}, {4, 0}};
        for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(*vPolygon[i], first[bOriented ? 5 - i : i]);
        // Shared pieces run from a to b here, and as said above there.
        const ConstraintSegment2* const pPiece = square.mesh.getConstraintSegment(square.pA, pMiddle);
        EXPECT_EQ(pRing->isReverse(pPiece) != pOther->isReverse(pPiece), bOriented);
    }
}

TEST(ConstraintGraph2, ResultsReplaceOrAppendAndRepeatsComeOnce) {
    Square square;
    const Segment2 ab(square.a, square.b), ba(square.b, square.a), cd(square.c, square.d);
    const ConstraintGraph2* const pGraph = square.demands.create({cd, ab, ba}, constrained);
    ConstraintSegment2* const pCD = square.mesh.getConstraintSegment(square.pC, square.pD);
    ConstraintSegment2* const pAB = square.mesh.getConstraintSegment(square.pA, square.pB);
    Records vSorted{pCD, pAB}, vChain{pAB}, vOriginal{pAB}, vChildren{pCD}, vLeaves{pCD};
    oneInstance(vSorted);
    pGraph->getAliveConstraintChain(vChain);
    EXPECT_EQ(vChain, (Records{pCD, pAB, pAB}));
    pGraph->getOriginalConstraintSegments(vOriginal);
    EXPECT_EQ(vOriginal, vSorted);
    pGraph->getChildConstraintSegments(vChildren);
    EXPECT_EQ(vChildren, vSorted);
    std::vector<Point2*> vPolygon{nullptr};
    pGraph->getPolygonVertices(vPolygon);
    EXPECT_EQ(vPolygon.size(), 7U);
    pAB->insertAndSplit({1, 0});
    pAB->getChildrenRec(vLeaves);
    EXPECT_EQ(vLeaves.size(), 3U);
    square.manager().getAliveConstraintSegments(vLeaves);
    EXPECT_EQ(vLeaves.size(), 6U);
    CaptureOutput output;
    pGraph->getOriginalSegments(nullptr, vLeaves);
    EXPECT_TRUE(vLeaves.size() == 6 && output.told("WARNING"));
}

// ------------------------------------------------------------------------------------------------ manager

TEST(ConstraintMgr, RefusesWhatIsNoInput) {
    for (const bool bOriented : {false, true}) {
        Square square;
        Dt2& dt2 = *square.mesh.getImpl();
        CaptureOutput output;
        EXPECT_EQ(square.mesh.createConstraint({}, constrained, bOriented), nullptr);
        EXPECT_EQ(dt2.createConstraint(std::vector<Segment2>(), constrained, bOriented), nullptr);
        EXPECT_EQ(dt2.createConstraint(std::vector<Edge2*>(), constrained), nullptr);
        for (const char* told : {"Norvik_2D::createConstraint(), WARNING: You have "
                                 "not supplied any segments. Returning NULL!",
                                 "Dt2::createConstraint(..), WARNING: vSegments is "
                                 "empty, returning NULL",
                                 "Dt2::createConstraint(..), WARNING: vEdges is "
                                 "empty, returning NULL"})
            EXPECT_TRUE(output.told(told)) << told;
        for (const double bad : {HUGE_VAL, -HUGE_VAL, std::nan("")})
            for (const Point2& point : {Point2(bad, 1), Point2(1, bad)}) {
                CaptureOutput warned;
                EXPECT_EQ(
                    square.mesh.createConstraint({{{1, 1}, {3, 1}}, {point, {1, 1}}}, constrained, bOriented),
                    nullptr);
                EXPECT_TRUE(warned.told("WARNING"));
            }
        EXPECT_EQ(square.mesh.numberOfPoints(), 5U);
        EXPECT_EQ(square.demands.check(), "");
    }
}

TEST(ConstraintMgr, DegenerateSegmentsAreLeftOutAndToldUnlessDirectionsCount) {
    for (const bool bOriented : {false, true}) {
        Square square;
        CaptureOutput output;
        const Segment2 nothing(square.m, square.m);
        square.demands.create({nothing, {square.a, square.b}, nothing}, constrained, bOriented);
        EXPECT_EQ(output.out().empty(), bOriented);
        for (const std::string& told : {std::string("ConstraingMgr::createConstraint, WARNING: (0) Identical "
                                                    "source and endpoint, a "
                                                    "constraint segment has been skipped."),
                                        streamed(*square.pM) + " <-> " + streamed(*square.pM)})
            EXPECT_NE(output.told(told), bOriented) << output.out();
        EXPECT_EQ(square.demands.check(), "");
        EXPECT_EQ(square.demands.getNumPieces(), 1U);
        EXPECT_FALSE(square.mesh.isConstraint(square.pM));
        ConstraintGraph2* const pEmpty = square.mesh.createConstraint({nothing}, constrained, bOriented);
        ASSERT_NE(pEmpty, nullptr);
        std::vector<Point2*> vPolygon;
        pEmpty->getPolygonVertices(vPolygon);
        EXPECT_TRUE(vPolygon.empty());
    }
}

TEST(ConstraintMgr, WaitsForTrianglesAndForApply) {
    Norvik_2D mesh;
    Demands demands(mesh);
    CaptureOutput warned;
    mesh.applyConstraintsAndZones();
    mesh.getImpl()->applyConstraintsAndZones();
    for (const char* told :
         {"Norvik2D::applyConstraintsAndZones(), WARNING: The triangulation is not 2D yet, can't apply the "
          "constraints",
          "Dt2::applyConstraintsAndZones(), WARNING: The triangulation is not full dimensional yet. "
          "Nothing to do"})
        EXPECT_TRUE(warned.told(told)) << told;
    CaptureOutput output;
    demands.create({{{0, 0}, {9, 0}}, {{3, 0}, {6, 0}}}, constrained);
    demands.create({{{9, 0}, {0, 0}}}, conforming, true);
    demands.create({{{7, 0}, {4, 0}}}, conforming);
    EXPECT_EQ(demands.check(false), "");
    EXPECT_EQ(demands.getNumPieces(), 3U);
    mesh.insert({{5, 1}, {5, -1}, {1, 3}});
    EXPECT_EQ(demands.check(false), "");
    mesh.applyConstraintsAndZones();
    EXPECT_EQ(demands.check(), "");
    EXPECT_EQ(demands.getNumPieces(), 5U);
    EXPECT_EQ(mesh.getConstraintSegment(mesh.insert({3, 0}), mesh.insert({4, 0}))->getCIS(), constrained)
        << "the first strategy stands";
    EXPECT_EQ(output.out(), "");
}

TEST(ConstraintMgr, ConformingSegmentsAreCompletedByApply) {
    Norvik_2D mesh;
    Demands demands(mesh);
    const std::vector<Point2> beside = hardPoints::uniformPoints(300, 4);
    mesh.insert(beside);
    demands.create({{{-1, 0.5}, {2, 0.53}}, {{-1.1, 0.7}, {2.3, 0.72}}}, conforming);
    EXPECT_EQ(demands.check(false), "");
    EXPECT_EQ(demands.getNumPieces(), 4U) << "one middle each";
    CaptureOutput output;
    EXPECT_FALSE(mesh.checkValidity(true, "pieces wait"));
    EXPECT_TRUE(output.told("\n* ConstraintSegments (alive): 4, contained: 0, missing: 4"));
    mesh.applyConstraintsAndZones();
    EXPECT_EQ(demands.check(), "");
    // No wall is needed to explain the mesh.
    Norvik_2D plain;
    std::vector<Point2*> vVertices;
    mesh.getVertexPointers(vVertices);
    for (const Point2* pVtx : vVertices) plain.insert(*pVtx);
    ASSERT_TRUE(isUnique(plain));
    EXPECT_TRUE(canonicalMesh(mesh) == canonicalMesh(plain));
}

TEST(ConstraintMgr, PiecesTooShortForDoublesAreGivenUpWithAWarning) {
    Norvik_2D mesh;
    Demands demands(mesh);
    mesh.insert({{-1, -1}, {1, -1}, {1, 1}, {-1, 1}, {0x1p-53, 0x1p-54}, {0x1p-54, 0x1p-53}});
    CaptureOutput output;
    demands.create({{{0, 0}, {0x1p-52, 0x1p-52}}}, conforming);
    mesh.applyConstraintsAndZones();
    EXPECT_TRUE(
        output.told("Dt2::insertSegmentConformingDelaunay(), WARNING: Double "
                    "precision arithmetic does not allow "
                    "to split a segment further, giving up. Incorrect result!"));
    EXPECT_EQ(demands.check(false), "");
    EXPECT_EQ(demands.getNumPieces(), 1U);
}

TEST(ConstraintMgr, ConstraintVerticesStayForGood) {
    Square square;
    square.make(square.a, square.b)->insertAndSplit({1, 0});
    for (Point2* pVtx : {square.pA, square.pB, square.mesh.insert({1, 0})}) {
        CaptureOutput output;
        square.mesh.remove(pVtx);
        EXPECT_TRUE(output.told("Dt2::remove(), WARNING: Illegal: Can't remove a constraint vertex"));
    }
    EXPECT_FALSE(square.mesh.isConstraint(square.pA, square.pB)) << "the pair is divided";
    EXPECT_EQ(square.demands.check(), "");
}

TEST(ConstraintMgr, FilterOfLargeMeshesKnowsEarlyAndLateConstraints) {
    Norvik_2D mesh;
    Demands demands(mesh);
    hardPoints::Rng rng(6);
    const auto createSome = [&](bool bOriented) {
        const auto make = [&] {
            const Point2 p = hardPoints::kinds[0].make(rng);
            return Segment2(p, {p.x() + 0.1 * hardPoints::unit(rng), p.y() - 0.1 * hardPoints::unit(rng)});
        };
        demands.create(hardSegments::times(60, make), constrained, bOriented);
    };
    mesh.insert(hardPoints::uniformPoints(5000, 7));
    createSome(false);
    mesh.insert(hardPoints::uniformPoints(4700, 8));
    createSome(true);
    // One at a time past the number at which the filter comes into being.
    for (const Point2& point : hardPoints::uniformPoints(400, 9)) mesh.insert(point);
    EXPECT_EQ(demands.check(), "");
    createSome(true);
    mesh.insert(hardPoints::uniformPoints(2000, 10));
    EXPECT_EQ(demands.check(), "");
    EXPECT_TRUE(mesh.checkValidity(true, "filter"));
}

TEST(ConstraintMgr, ProgressOfEachPhaseEndsWithOne) {
    ProgressListener listener;
    Norvik_2D mesh;
    mesh.insert(hardPoints::uniformPoints(50, 11));
    mesh.subscribe(MSGTYPE_PROGRESS, &listener);
    mesh.applyConstraintsAndZones();
    EXPECT_EQ(listener.mTold, (decltype(listener.mTold){{"apply", {1.0}}})) << "without constraints";
    for (const std::size_t n : {1U, 50U, 250U}) {
        listener.mTold.clear();
        mesh.createConstraint(hardSegments::chain(hardPoints::uniformPoints(n + 1, 12)), constrained);
        mesh.applyConstraintsAndZones();
        ASSERT_EQ(listener.mTold.size(), 2U);
        for (const auto& [name, values] : listener.mTold)
            EXPECT_TRUE(ProgressListener::rises(values)) << name;
        const std::vector<double>& values = listener.mTold["establish constraints"];
        ASSERT_TRUE(values.size() >= 3 && values.size() <= 301);
        EXPECT_DOUBLE_EQ(values.rbegin()[1], 2.0 / 3.0) << "enforcement counts twice";
    }
}

TEST(ConstraintMgr, DumpsHoldThePiecesOfEachGraph) {
    Square square;
    square.demands.create({{square.a, square.b}, {square.c, square.d}}, constrained);
    square.demands.create({{{1, 5}, {1, -1}}}, constrained);
    CaptureOutput output;
    square.manager().writeConstraints("dump");
    square.manager().writeConstraintsBIN("dump");
    EXPECT_TRUE(
        output.told("ConstraintMgr::writeConstraints(), INFO: writes 4 "
                    "child segments to dump_c0.con"));
    EXPECT_TRUE(
        output.told("ConstraintMgr::writeConstraintsBIN(), INFO: writes "
                    "3 child segments to dump_c1_con.bin"));
    std::set<std::array<double, 4>> expected, text, binary;
    ASSERT_EQ(square.demands.check(), "");
    for (const VertexPair2& piece : square.demands.getPieces())
        expected.insert(
            {piece.getVtx0()->x(), piece.getVtx0()->y(), piece.getVtx1()->x(), piece.getVtx1()->y()});
    for (const std::string graph : {"dump_c0", "dump_c1"}) {
        std::ifstream file(graph + ".con");
        std::array<double, 4> c;
        for (std::string line; std::getline(file, line); text.insert(c)) {
            ASSERT_EQ(std::sscanf(line.c_str(), "%lf\t%lf\t%lf\t%lf", &c[0], &c[1], &c[2], &c[3]), 4) << line;
            EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 3);
        }
        std::vector<Segment2> segments;
        EXPECT_TRUE(readSegmentsBIN((graph + "_con.bin").c_str(), segments));
        for (const Segment2& s : segments)
            binary.insert({s.getSrc().x(), s.getSrc().y(), s.getTrg().x(), s.getTrg().y()});
    }
    EXPECT_EQ(text, expected);
    EXPECT_EQ(binary, expected);
}

TEST(ConstraintPictures, PiecesAreRedInPicturesOfGraphsAndMeshes) {
    Square square;
    const ConstraintGraph2* const pGraph =
        square.demands.create({{square.a, square.b}, {{1, -1}, {1, 5}}}, constrained);
    CaptureOutput output;
    pGraph->show("pieces_graph.ps");
    square.mesh.show("pieces_mesh.ps");
    square.mesh.show("pieces_without.ps", false);
    const auto numRed = [](const char* fileName) {
        std::ifstream file(fileName);
        std::size_t numLines = 0;
        bool bRed = false;
        for (std::string line; std::getline(file, line);) {
            if (line.find("setrgbcolor") != std::string::npos) bRed = line == "1\t0\t0\tsetrgbcolor";
            if (bRed && line.find("lineto") != std::string::npos) ++numLines;
        }
        return numLines;
    };
    EXPECT_EQ(square.demands.check(), "");
    EXPECT_EQ(square.demands.getNumPieces(), 4U);
    EXPECT_EQ(numRed("pieces_graph.ps"), 4U);
    EXPECT_EQ(numRed("pieces_mesh.ps"), 4U);
    EXPECT_EQ(numRed("pieces_without.ps"), 0U);
}
