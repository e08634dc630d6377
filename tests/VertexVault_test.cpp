#include "VertexVault.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Dt2.h"
#include "NorvikException.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "meshLaws.h"

using namespace KELMAR_NORVIK2D;

namespace {

bool isSorted(const VertexVault& vault) {
    return std::is_sorted(vault.getData()->begin(), vault.getData()->end(), func_ltDerefPtr{});
}

std::vector<Point2*> insertBulk(Dt2& dt2, const std::vector<Point2>& points) {
    std::vector<Point2*> handles;
    dt2.insertVector(points, &handles);
    return handles;
}

/// Points of the unit square in falling order of their keys, so that each one appended is out of order.
std::vector<Point2> againstTheCurve(std::size_t n, unsigned seed) {
    const HC2 hc(-0.5, -0.5, 1.5, 1.5, 30);
    std::vector<Point2> points = hardPoints::uniformPoints(n, seed);
    std::sort(points.begin(), points.end(),
              [&](const Point2& p, const Point2& q) { return hc.iReset(p) > hc.iReset(q); });
    return points;
}

/// Fails an assertion with this text.
template <class Action>
void expectCondition(const std::string& condition, Action action) {
    CaptureOutput capture;
    EXPECT_THROW(action(), NorvikException) << condition;
    EXPECT_TRUE(capture.told("Norvik, , ERROR: Condition [ " + condition + " failed ]")) << capture.out();
}

const std::vector<Point2> square{{0, 0}, {1, 0}, {1, 1}, {0, 1}};

}  // namespace

TEST(VertexVault, NewPointsAreOneSortedRunBehindTheOldOnes) {
    Dt2 dt2(3);
    VertexVault& vault = dt2.getVertexVault();
    insertBulk(dt2, hardPoints::uniformPoints(1000, 1));
    insertBulk(dt2, square);  // the box may have grown: all is sorted now, and won't be rekeyed from here on
    vault.sortIV(SORT_ALWAYS);
    const std::size_t numOld = vault.getSize();
    const std::vector<Point2*> handles = insertBulk(dt2, againstTheCurve(300, 2));
    EXPECT_FALSE(isSorted(vault));
    VertexVault::ItemIterator first, last;
    vault.getIterators(numOld, first, last);
    EXPECT_EQ(last - first, 300);
    EXPECT_TRUE(std::is_sorted(vault.getData()->begin(), vault.getData()->begin() + 1004, func_ltDerefPtr{}));
    EXPECT_TRUE(std::is_sorted(first, last, func_ltDerefPtr{}));
    for (const Point2* pVtx : handles) EXPECT_EQ(vault.getVertexPointer(*pVtx), pVtx);
    for (const IdxVtxAct* pItem : *vault.getData()) EXPECT_EQ(pItem->nic, dt2.getHC().iReset(*pItem->pVtx));
}

TEST(VertexVault, TheTailIsSortedInWhenItExceeds35Percent) {
    Dt2 dt2(3);
    insertBulk(dt2, square);
    insertBulk(dt2, hardPoints::uniformPoints(996, 1));
    VertexVault& vault = dt2.getVertexVault();
    vault.sortIV(SORT_ALWAYS);
    const std::vector<Point2> more = againstTheCurve(351, 2);
    for (std::size_t i = 0; i < more.size(); ++i) {
        EXPECT_EQ(isSorted(vault), i < 1) << i;
        dt2.insert(more[i]);
    }
    EXPECT_TRUE(isSorted(vault));
    EXPECT_EQ(vault.getSize(), 1351U);
}

TEST(VertexVault, RemovalsAreSortedOutWhenThereAreManyOfThem) {
    const struct {
        std::size_t numPoints, numRemoved;
        bool bSorts;
    } cases[] = {{2000, 1000, false}, {2000, 1001, true}, {1900, 1000, false}, {1900, 1001, true},
                 {2100, 1050, false}, {2100, 1051, true}, {100, 90, false}};
    for (const auto& [numPoints, numRemoved, bSorts] : cases) {
        Dt2 dt2(3);
        const std::vector<Point2*> handles = insertBulk(dt2, hardPoints::uniformPoints(numPoints, 3));
        VertexVault& vault = dt2.getVertexVault();
        for (std::size_t i = 0; i < numRemoved; ++i) dt2.remove(handles[i]);
        EXPECT_EQ(vault.getSize(), numPoints);
        vault.sortIV(SORT_IF_NEEDED);
        EXPECT_EQ(vault.getSize(), bSorts ? numPoints - numRemoved : numPoints) << numPoints;
        EXPECT_EQ(vault.computeNumberOfPoints(), numPoints - numRemoved);
        vault.sortIV(SORT_ALWAYS);
        EXPECT_EQ(vault.getSize(), numPoints - numRemoved);
        EXPECT_EQ(lawsBroken(dt2), "");
    }
}

TEST(VertexVault, LookUpsFindActiveVerticesWhereverTheyAre) {
    // In the sorted part, in the tail, behind the first of four ranges; with one key for a whole cluster.
    for (const int numCPU : {1, 4}) {
        Dt2 dt2(3);
        dt2.setNumCPU(numCPU);
        VertexVault& vault = dt2.getVertexVault();
        std::vector<Point2> points = hardPoints::uniformPoints(12000, 5);
        for (int i = 0; i < 2000; ++i) points.emplace_back(0.5 + 1e-9 * i, 0.5);
        std::vector<Point2*> handles = insertBulk(dt2, points);
        for (std::size_t i = 0; i < handles.size(); i += 3) dt2.remove(handles[i]);
        vault.sortIV(SORT_ALWAYS);
        for (const Point2& point : againstTheCurve(500, 6)) handles.push_back(dt2.insert(point));
        for (std::size_t i = 0; i < handles.size(); ++i) {
            Point2* pVtx = handles[i];
            const bool bThere = i % 3 != 0 || i >= points.size();
            if (!bThere && i % 30 != 0) continue;  // each look-up of what isn't there is a scan
            ASSERT_EQ(vault.isActive(pVtx), bThere);
            const unsigned index = vault.getIdxOfPoint(*pVtx);
            ASSERT_EQ(index, bThere ? vault.getIdxOfActiveVtx(pVtx) : VertexVault::notFound);
            if (bThere) {
                ASSERT_EQ((*vault.getData())[index]->pVtx, pVtx);
            }
        }
        EXPECT_EQ(vault.getVertexPointer({7, 7}), nullptr);
        EXPECT_EQ(lawsBroken(dt2), "");
    }
}

TEST(VertexVault, AnUnknownVertexIsAnError) {
    Dt2 dt2(3);
    VertexVault& vault = dt2.getVertexVault();
    EXPECT_TRUE(vault.empty());
    EXPECT_EQ(vault.getVertexPointer({0, 0}), nullptr);
    EXPECT_EQ(vault.getIdxOfPoint({0, 0}), 2147483647U);
    insertEach(dt2, square);
    Point2 stranger(0, 0);
    CaptureOutput capture;
    EXPECT_EQ(vault.getIdxOfActiveVtx(&stranger), 2147483647U);
    vault.removeAndInvalidateVtx(&stranger);
    const std::string told =
        "\n\033[0;31m      [Norvik2D-Message] VertexVault::getIdxOfActiveVtx, ERROR: pQuery not "
        "found\033[m\n\n";
    EXPECT_EQ(capture.out(), told + told);
    EXPECT_EQ(vault.computeNumberOfPoints(), 4U);
}

TEST(VertexVault, CloseTrianglesAreAliveWhateverWasRemoved) {
    for (const bool bSortedPartDies : {false, true}) {
        Dt2 dt2(3);
        insertBulk(dt2, square);
        const std::vector<Point2*> handles = insertBulk(dt2, hardPoints::uniformPoints(96, 7));
        VertexVault& vault = dt2.getVertexVault();
        vault.sortIV(SORT_ALWAYS);
        std::vector<Point2*> vSorted;
        vault.getVertexPointers(vSorted);
        const std::vector<Point2*> tail = insertEach(dt2, againstTheCurve(30, 8));
        for (std::size_t i = 0; i < vSorted.size(); ++i)
            if (bSortedPartDies || i % 10 != 5) dt2.remove(vSorted[i]);
        ASSERT_EQ(lawsBroken(dt2), "");
        std::vector<Triangle2*> vTriangles;
        dt2.getTrianglePointers(vTriangles);
        for (std::uint32_t key = 0; key < 1U << 30; key += (1U << 30) / 500) {
            Triangle2* pT = vault.getCloseTriangle(key);
            EXPECT_NE(std::find(vTriangles.begin(), vTriangles.end(), pT), vTriangles.end());
        }
        for (const Point2* pVtx : tail) {
            Triangle2* pT = vault.getCloseTriangle(dt2.getHC().iReset(*pVtx));
            EXPECT_TRUE(!bSortedPartDies || pT == pVtx->getIncidentTriangle())
                << "of the tail the nearest one by key";
        }
        insertEach(dt2, hardPoints::uniformPoints(100, 9));
        EXPECT_EQ(lawsBroken(dt2), "");
        EXPECT_TRUE(vault.getOneValidTriangle()->getCorner(0) != nullptr);
    }
    Dt2 empty(3);
    EXPECT_EQ(empty.getVertexVault().getOneValidTriangle(), nullptr);
    expectCondition("bFullDimensional", [&] { empty.getVertexVault().getCloseTriangle(0); });
}

TEST(VertexVault, TheFakeBoxEnclosesAndVanishes) {
    for (const bool bTwoDimensional : {false, true}) {
        Dt2 dt2(3);
        VertexVault& vault = dt2.getVertexVault();
        expectCondition("vFakeBoxHandles.size()>i", [&] { vault.getFakeBoxCorner(0); });
        expectCondition("vFakeBoxHandles.size()==4", [&] { vault.removeFakeBox(); });
        if (bTwoDimensional) insertEach(dt2, {{0, 0}, {100, 0}, {0, 10}, {30, 5}, {50, 2}});
        const CanonicalMesh before = canonicalMesh(dt2);
        Bbox2 box;
        box.add(Point2(0, 0));
        box.add(Point2(100, 10));
        vault.createFakeBox(box);
        EXPECT_TRUE(dt2.is2D());
        const double expected[4][2] = {{-0.5, -0.05}, {100.5, -0.05}, {100.5, 10.05}, {-0.5, 10.05}};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(vault.getFakeBoxCorner(i)->x(), expected[i][0], 1e-12);
            EXPECT_NEAR(vault.getFakeBoxCorner(i)->y(), expected[i][1], 1e-12);
            EXPECT_NE(vault.getFakeBoxCorner(i)->getIncidentTriangle(), nullptr);
        }
        EXPECT_EQ(dt2.numberOfTriangles(), bTwoDimensional ? 2 * 9U - 2 - 4 : 2U);
        EXPECT_EQ(dt2.numberOfPoints(), bTwoDimensional ? 5U : 0U);
        vault.removeFakeBox();
        EXPECT_EQ(dt2.is2D(), bTwoDimensional);
        EXPECT_TRUE(canonicalMesh(dt2) == before);
        EXPECT_EQ(lawsBroken(dt2), "");
    }
}

TEST(VertexVault, DebugPrintsNameTheirData) {
    Dt2 dt2(3);
    insertEach(dt2, {{0, 0}, {1, 0}, {0, 1}, {0, 0}});
    CaptureOutput capture;
    dt2.getVertexVault().showData("here");
    dt2.getVertexVault().checkVault();
    dt2.getVertexVault().debugDups();
    for (const char* words :
         {"Vault data [here", "i=0", " \tnic=", "\t bAct=0", "\t pVtx=", ", incT=", "sum active: 3",
          "maxSortedIndex=", ", vVtxAct.size()=4", ", fullDim=1",
          "mRedundant2Unique: ", "VertexVault::checkVault(): This is a debug check", "checkVault() survived"})
        EXPECT_TRUE(capture.told(words)) << words;
}
