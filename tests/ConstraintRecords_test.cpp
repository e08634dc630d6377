// Records of constraints, the graphs that know their directions, and the manager of both.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <limits>

#include "Dt2.h"
#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "constraintLaws.h"
#include "hardPoints.h"

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

template <class Action>
void expectFails(const std::string& condition, Action action) {
    CaptureOutput output;
    EXPECT_THROW(action(), NorvikException) << condition;
    EXPECT_TRUE(output.told("Condition [ " + condition + " failed ]")) << output.out();
}

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
        expectFails(condition, [&] { action(square, *pRecord); });
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
    for (const bool bInsert : {false, true})
        atEdge("!sOwners.empty()", [&](Square& s, auto&) {
            ConstraintSegment2* const pFree = s.manager().addConstraintSegment(s.pA, s.pM, constrained);
            if (bInsert)
                pFree->insertAndSplit({1, 1});
            else
                pFree->split_combinatorialOnly(s.pB);
        });
}

TEST(ConstraintSegment2, StreamForm) {
    Square square;
    ConstraintSegment2* const pRecord = square.make(square.a, square.b);
    // The last record made took the last label.
    const auto form = [&](const std::string& state) {
        std::ostringstream os;
        os << "ConstraintSegment2 label " << ConstraintSegment2::runningLabel - 1 << ", " << pRecord << ": ("
           << pRecord->getSrc() << "," << pRecord->getTrg() << ")" << state << "\n"
           << *pRecord->getSrc() << "\n"
           << *pRecord->getTrg() << "\nlength=4";
        return os.str();
    };
    EXPECT_EQ(streamed(*pRecord), form(" [alive]"));
    pRecord->kill();
    EXPECT_EQ(streamed(*pRecord), form(" [DEAD, numChildren=0]"));
    pRecord->unkill();
    EXPECT_TRUE(pRecord->isAlive());
    pRecord->insertAndSplit({1, 0});
    EXPECT_NE(streamed(*pRecord).find(" [DEAD, numChildren=2]\n"), std::string::npos);
    pRecord->unkill();
    EXPECT_FALSE(pRecord->isAlive()) << "a divided record never comes back";
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
        for (Point2* pEnd : {square.pA, square.pB}) {
            const ConstraintSegment2* const pPiece = square.mesh.getConstraintSegment(pSplit, pEnd);
            ASSERT_TRUE(pPiece != nullptr || point == Point2(1, 3)) << "divided by the far one";
            if (pPiece == nullptr) continue;
            EXPECT_EQ(pPiece->getCIS(), constrained);
            EXPECT_EQ(pPiece->getAdjacentArea(), std::numeric_limits<double>::max());
        }
        EXPECT_EQ(lawsBroken(square.mesh), "") << point;
        EXPECT_TRUE(square.mesh.checkValidity(true, "divided"));
        EXPECT_EQ(pRecord->getAdjacentArea(), 7.0);
    }
}

TEST(ConstraintSegment2, APointAtAnEndChangesNothing) {
    Square square;
    ConstraintSegment2* const pRecord = square.make(square.a, square.b);
    CaptureOutput output;
    for (const Point2& end : {square.a, square.b}) {
        EXPECT_EQ(pRecord->insertAndSplit(end), nullptr);
        EXPECT_FALSE(pRecord->splitAndRemovePrev(end));
    }
    EXPECT_EQ(output.out(), "");
    EXPECT_EQ(square.demands.check(), "");
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
    // Once kept it must not come into a circle.
    expectFails("q_it!=sInsertedInnerPoints.end()", [&] { pSide->splitAndRemovePrev({2, 0}); });
}

TEST(ConstraintSegment2, SharedPiecesHaveBothOwners) {
    Square square;
    const ConstraintGraph2* const pHalf = square.demands.create({{square.a, square.m}}, constrained);
    const ConstraintGraph2* const pWhole = square.demands.create({{square.c, square.a}}, constrained, true);
    const ConstraintGraph2* const pCross = square.demands.create({{square.d, square.b}}, constrained);
    ConstraintSegment2* const pShared = square.mesh.getConstraintSegment(square.pA, square.pM);
    EXPECT_EQ(pShared->getNumberOfOwners(), 2U);
    EXPECT_TRUE(pHalf->isConstraint(pShared) && pWhole->isConstraint(square.pM, square.pA));
    EXPECT_FALSE(pCross->isConstraint(pShared) || pCross->isConstraint(square.pM, square.pA));
    CaptureOutput output;
    EXPECT_TRUE(pShared->dbg_hasDirection());
    EXPECT_TRUE(output.told(", alive, numOwners=2\n")) << output.out();
    EXPECT_TRUE(output.told(" has Direction, true"));
    EXPECT_EQ(square.demands.check(), "");
    EXPECT_EQ(square.demands.getNumPieces(), 4U);
    pShared->removeOwner(const_cast<ConstraintGraph2*>(pHalf));
    EXPECT_EQ(pShared->getNumberOfOwners(), 1U);
}

// ------------------------------------------------------------------------------------------------- graphs

TEST(ConstraintGraph2, OneRingIsAPolygonWhateverItsOrderAndDirections) {
    const std::vector<Point2> v{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {1, 2}, {9, 9}, {12, 9}, {10, 12}, {2, 0}};
    const struct {
        const char* name;
        std::vector<std::pair<int, int>> segments;
        std::vector<int> ring;  // empty: no polygon
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
            for (const auto& [i, j] : pairs)
                segments.emplace_back(v[static_cast<std::size_t>(i)], v[static_cast<std::size_t>(j)]);
            CaptureOutput output;
            const ConstraintGraph2* const pGraph = demands.create(segments, constrained, bOriented);
            EXPECT_EQ(pGraph->isPolygon(), !ring.empty());
            EXPECT_EQ(pGraph->getInsertionStrategy(), constrained);
            EXPECT_EQ(pGraph->getDt2(), mesh.getImpl());
            EXPECT_EQ(demands.check(), "");
            EXPECT_EQ(output.out(), "");
            Records vSides;
            pGraph->getOriginalConstraintSegments(vSides);
            for (std::size_t i = 0; i < ring.size(); ++i) {
                const auto corner = [&, &rRing = ring](std::size_t k) {
                    return handles[static_cast<std::size_t>(rRing[k % rRing.size()])];
                };
                EXPECT_EQ(VertexPair2(vSides[i]->getSrc(), vSides[i]->getTrg()),
                          VertexPair2(corner(i), corner(i + 1)));
                EXPECT_TRUE(bOriented || Demands::directedEnds(pGraph, vSides[i]).first == corner(i));
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
        square.mesh.insert({1, 0});
        square.demands.create({{{3, -1}, {3, 5}}, {{-1, 1}, {5, 1}}}, constrained);
        square.mesh.insert({4, 3});
        EXPECT_EQ(square.demands.check(), "");
        EXPECT_TRUE(pRing->isPolygon() && pRing->isOriented());
        const std::vector<Coordinates> counterclockwise{
            {0, 0}, {1, 0}, {1, 0}, {3, 0}, {3, 0}, {4, 0}, {4, 0}, {4, 1}, {4, 1}, {4, 3},
            {4, 3}, {4, 4}, {4, 4}, {3, 4}, {3, 4}, {0, 4}, {0, 4}, {0, 1}, {0, 1}, {0, 0}};
        std::vector<Point2*> vPolygon;
        pRing->getPolygonVertices(vPolygon);
        std::vector<Coordinates> told;
        for (const Point2* pVtx : vPolygon) told.emplace_back(pVtx->x(), pVtx->y());
        if (!bOriented) {
            EXPECT_EQ(told, counterclockwise);
        } else {
            // The ring's order of segments stays, but each runs as the client said.
            EXPECT_EQ(std::vector<Coordinates>(told.begin(), told.begin() + 6),
                      (std::vector<Coordinates>{{4, 0}, {3, 0}, {3, 0}, {1, 0}, {1, 0}, {0, 0}}));
        }
        // Shared pieces run from a to b here, and as said above there.
        Point2* const pMiddle = square.mesh.insert({1, 0});
        const ConstraintSegment2* const pPiece = square.mesh.getConstraintSegment(square.pA, pMiddle);
        ASSERT_NE(pPiece, nullptr);
        EXPECT_EQ(pRing->isReverse(pPiece) != pOther->isReverse(pPiece), bOriented);
    }
}

TEST(ConstraintGraph2, ResultsReplaceOrAppendAndRepeatsComeOnce) {
    Square square;
    const Segment2 ab(square.a, square.b), ba(square.b, square.a), cd(square.c, square.d);
    const ConstraintGraph2* const pGraph = square.demands.create({cd, ab, ba}, constrained);
    ConstraintSegment2* const pCD = square.mesh.getConstraintSegment(square.pC, square.pD);
    ConstraintSegment2* const pAB = square.mesh.getConstraintSegment(square.pA, square.pB);
    Records vSorted{pCD, pAB};
    oneInstance(vSorted);
    Records vChain{pAB}, vOriginal{pAB}, vChildren{pCD};
    pGraph->getAliveConstraintChain(vChain);
    EXPECT_EQ(vChain, (Records{pCD, pAB, pAB}));
    pGraph->getOriginalConstraintSegments(vOriginal);
    EXPECT_EQ(vOriginal, vSorted);
    pGraph->getChildConstraintSegments(vChildren);
    EXPECT_EQ(vChildren, vSorted);
    std::vector<Point2*> vPolygon{nullptr};
    pGraph->getPolygonVertices(vPolygon);
    EXPECT_EQ(vPolygon.size(), 7U);
    EXPECT_EQ(vPolygon[0], nullptr);
    pAB->insertAndSplit({1, 0});
    Records vLeaves{pCD};
    pAB->getChildrenRec(vLeaves);
    EXPECT_EQ(vLeaves.size(), 3U);
    square.manager().getAliveConstraintSegments(vLeaves);
    EXPECT_EQ(vLeaves.size(), 6U);
}

TEST(ConstraintGraph2, ARecordOfAnotherGraphHasNoDirection) {
    Square square;
    const ConstraintGraph2* const pGraph = square.demands.create({{square.a, square.b}}, constrained);
    const ConstraintSegment2* const pOther = square.make(square.c, square.d);
    EXPECT_FALSE(pGraph->dbg_hasDirection(pOther));
    expectFails("q_it!=mCSegReverse.end()", [&] { pGraph->isReverse(pOther); });
}

// ------------------------------------------------------------------------------------------------ manager

TEST(ConstraintMgr, RefusesWhatIsNoInput) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const bool bOriented : {false, true}) {
        Square square;
        CaptureOutput output;
        EXPECT_EQ(square.mesh.createConstraint({}, constrained, bOriented), nullptr);
        EXPECT_TRUE(output.told(
            "Norvik_2D::createConstraint(), WARNING: You have not supplied any segments. Returning NULL!"));
        EXPECT_EQ(square.mesh.getImpl()->createConstraint(std::vector<Segment2>(), constrained, bOriented),
                  nullptr);
        EXPECT_TRUE(output.told("Dt2::createConstraint(..), WARNING: vSegments is empty, returning NULL"));
        EXPECT_EQ(square.mesh.getImpl()->createConstraint(std::vector<Edge2*>(), constrained), nullptr);
        EXPECT_TRUE(output.told("Dt2::createConstraint(..), WARNING: vEdges is empty, returning NULL"));
        for (const double bad : {infinity, -infinity, std::nan("")})
            for (const Point2& point : {Point2(bad, 1), Point2(1, bad)}) {
                const std::size_t numTold = output.out().size();
                EXPECT_EQ(
                    square.mesh.createConstraint({{{1, 1}, {3, 1}}, {point, {1, 1}}}, constrained, bOriented),
                    nullptr);
                EXPECT_NE(output.out().find("WARNING", numTold), std::string::npos);
            }
        EXPECT_EQ(square.mesh.numberOfPoints(), 5U);
        EXPECT_FALSE(square.manager().hasConstraints());
        EXPECT_EQ(square.demands.check(), "");
    }
}

TEST(ConstraintMgr, DegenerateSegmentsAreLeftOutAndToldUnlessDirectionsCount) {
    for (const bool bOriented : {false, true}) {
        Square square;
        CaptureOutput output;
        const Segment2 nothing(square.m, square.m);
        square.demands.create({nothing, {square.a, square.b}, nothing}, constrained, bOriented);
        EXPECT_EQ(
            output.told("ConstraingMgr::createConstraint, WARNING: (0) Identical source and endpoint, a "
                        "constraint segment has been skipped."),
            !bOriented);
        EXPECT_EQ(output.told(streamed(*square.pM) + " <-> " + streamed(*square.pM)), !bOriented)
            << output.out();
        EXPECT_EQ(output.out().empty(), bOriented);
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
    CaptureOutput output;
    mesh.applyConstraintsAndZones();
    EXPECT_TRUE(
        output.told("Norvik2D::applyConstraintsAndZones(), WARNING: The triangulation is not 2D yet, can't "
                    "apply the constraints"));
    mesh.getImpl()->applyConstraintsAndZones();
    EXPECT_TRUE(output.told(
        "Dt2::applyConstraintsAndZones(), WARNING: The triangulation is not full dimensional yet. "
        "Nothing to do"));
    const std::size_t numTold = output.out().size();
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
    EXPECT_EQ(output.out().size(), numTold);
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
    EXPECT_TRUE(output.told(
        "Dt2::insertSegmentConformingDelaunay(), WARNING: Double precision arithmetic does not allow "
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
        std::vector<Segment2> segments;
        for (int i = 0; i < 60; ++i) {
            const Point2 p = hardPoints::kinds[0].make(rng);
            segments.emplace_back(
                p, Point2(p.x() + 0.1 * hardPoints::around0(rng), p.y() + 0.1 * hardPoints::around0(rng)));
        }
        demands.create(segments, constrained, bOriented);
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
    struct Listener : MsgBase {
        std::vector<std::pair<std::string, double>> told;
        void update(MsgType, const std::string& name, double value) override {
            told.emplace_back(name, value);
        }
    } listener;
    Norvik_2D mesh;
    mesh.insert(hardPoints::uniformPoints(50, 11));
    mesh.subscribe(MSGTYPE_PROGRESS, &listener);
    mesh.applyConstraintsAndZones();
    EXPECT_EQ(listener.told, (decltype(listener.told){{"apply", 1.0}})) << "without constraints";
    for (const std::size_t n : {1U, 50U, 250U}) {
        std::vector<Segment2> segments;
        const std::vector<Point2> ends = hardPoints::uniformPoints(n + 1, 12);
        for (std::size_t i = 0; i < n; ++i) segments.emplace_back(ends[i], ends[i + 1]);
        listener.told.clear();
        mesh.createConstraint(segments, constrained);
        ASSERT_GE(listener.told.size(), 3U);
        EXPECT_LE(listener.told.size(), 301U);
        for (std::size_t i = 0; i < listener.told.size(); ++i) {
            EXPECT_EQ(listener.told[i].first, "establish constraints");
            EXPECT_TRUE(i == 0 || listener.told[i - 1].second < listener.told[i].second);
        }
        EXPECT_EQ(listener.told.rbegin()[0].second, 1.0);
        EXPECT_DOUBLE_EQ(listener.told.rbegin()[1].second, 2.0 / 3.0) << "enforcement counts twice";
    }
    listener.told.clear();
    mesh.applyConstraintsAndZones();
    for (const auto& [name, value] : listener.told) EXPECT_EQ(name, "apply");
    EXPECT_EQ(listener.told.back().second, 1.0);
    EXPECT_EQ(
        std::count(listener.told.begin(), listener.told.end(), std::pair<std::string, double>("apply", 1.0)),
        1);
}

TEST(ConstraintMgr, DumpsHoldThePiecesOfEachGraph) {
    Square square;
    square.demands.create({{square.a, square.b}, {square.c, square.d}}, constrained);
    square.demands.create({{{1, 5}, {1, -1}}}, constrained);
    CaptureOutput output;
    square.manager().writeConstraints("dump");
    square.manager().writeConstraintsBIN("dump");
    EXPECT_TRUE(
        output.told("ConstraintMgr::writeConstraints(), INFO: writes 4 child segments to dump_c0.con"));
    EXPECT_TRUE(output.told(
        "ConstraintMgr::writeConstraintsBIN(), INFO: writes 3 child segments to dump_c1_con.bin"));
    std::set<std::pair<Coordinates, Coordinates>> expected, text, binary;
    ASSERT_EQ(square.demands.check(), "");
    for (const VertexPair2& piece : square.demands.getPieces())
        expected.emplace(Coordinates(piece.getVtx0()->x(), piece.getVtx0()->y()),
                         Coordinates(piece.getVtx1()->x(), piece.getVtx1()->y()));
    for (const char* graph : {"dump_c0", "dump_c1"}) {
        std::ifstream file(graph + std::string(".con"));
        for (std::string line; std::getline(file, line);) {
            double x0, y0, x1, y1;
            ASSERT_EQ(std::sscanf(line.c_str(), "%lf\t%lf\t%lf\t%lf", &x0, &y0, &x1, &y1), 4) << line;
            EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 3);
            text.emplace(Coordinates(x0, y0), Coordinates(x1, y1));
        }
        std::vector<Segment2> segments;
        EXPECT_TRUE(readSegmentsBIN((graph + std::string("_con.bin")).c_str(), segments));
        for (const Segment2& segment : segments)
            binary.emplace(Coordinates(segment.getSrc().x(), segment.getSrc().y()),
                           Coordinates(segment.getTrg().x(), segment.getTrg().y()));
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
        const std::string page{std::istreambuf_iterator<char>(file), {}};
        const auto begin = page.find("1\t0\t0\tsetrgbcolor\n0.5\tsetlinewidth\n");
        if (begin == std::string::npos) return 0;
        int numLines = 0;
        const auto end = page.find("stroke", begin);
        for (auto at = page.find("lineto", begin); at < end; at = page.find("lineto", at + 1)) ++numLines;
        return numLines;
    };
    EXPECT_EQ(square.demands.check(), "");
    const int numPieces = static_cast<int>(square.demands.getNumPieces());
    EXPECT_GT(numPieces, 3);
    EXPECT_EQ(numRed("pieces_graph.ps"), numPieces);
    EXPECT_EQ(numRed("pieces_mesh.ps"), numPieces);
    EXPECT_EQ(numRed("pieces_without.ps"), 0);
}
