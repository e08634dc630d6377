#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "BoxCollector.h"
#include "ConnectedComponent.h"
#include "Dt2.h"
#include "Norvik_2D.h"
#include "Partitioner.h"
#include "TriangleMarks.h"
#include "Visualizer2.h"
#include "diagnostics.h"
#include "distance.h"
#include "importTables.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

// Given triangles are linked by what they have in common: equal points, then equal edges. What lies around them, up to a box,
// comes from a second triangulation, in which their borders are constraints: its triangles outside are copied, beginning at the
// open edges.

namespace {

constexpr std::size_t numSidesOfBox = 4;
constexpr const char* hint = "\nYou may want to use the postscript visualization file to debug the data\n";

void linkToOpenEdges(Triangle2* pT, OpenEdges& mKeyMCH) {
    for (int edge = 0; edge < 3; ++edge) mKeyMCH.add(pT, edge);
}

bool hasNeighbours(const Triangle2* pT) {
    return neighbour(pT, 0) != nullptr || neighbour(pT, 1) != nullptr || neighbour(pT, 2) != nullptr;
}

/// Edges that nothing can close. Triangles that run counterclockwise, are linked at all edges, and have the box as their outline
/// lie beside each other; edges that got lost show where they don't. With one exception: a triangle without any neighbour, as one
/// that is given twice, takes part in nothing.
std::size_t countOpenEdges(const std::vector<Triangle2*>& vGivenT, const OpenEdges& mKeyMCH) {
    const std::size_t numOpen = mKeyMCH.size() + mKeyMCH.getNumLost();
    if (mKeyMCH.getNumLost() == 0 || mKeyMCH.size() != numSidesOfBox) return numOpen;
    const auto numLinked = std::count_if(vGivenT.begin(), vGivenT.end(), hasNeighbours);
    return numOpen - 3 * (vGivenT.size() - static_cast<std::size_t>(numLinked));
}

/// The failure to close all open edges.
class OpenEdgeReport {
public:
    explicit OpenEdgeReport(const OpenEdges& mKeyMCH) {
        text = "\nOpen edges (_possibly_ causing the problem) are\n";
        for (const CAT_MeshConnectionHelper& open : mKeyMCH.getSorted()) {
            text += compose("Edge(", *open.src, ",", *open.trg, "\n");
            vEdges.emplace_back(*open.src, *open.trg);
        }
    }
    OpenEdgeReport() = default;

    void send(Norvik_2D* pScratchMesh) const {
        error("CAT_createOuterTrianglesAndConnect()", "Invalid input data detected");
        print(text);
        print(hint);
        Visualizer2 visualizer("openEdges.ps");
        std::vector<Triangle2*> vScratchT;
        pScratchMesh->getTrianglePointers(vScratchT);
        visualizer.addObject(vScratchT, Color(0.7, 0.7, 0.7, 0.0001, false));
        for (const Segment2& edge : vEdges) {
            visualizer.addObject(edge, Color(1.0, 0.0, 0.0, 0.8, false));
            visualizer.addObject(edge.getSrc(), Color(0.0, 1.0, 0.0, 0.1, false));
            visualizer.addObject(edge.getTrg(), Color(0.0, 1.0, 0.0, 0.1, false));
        }
        visualizer.writeFile();
    }

private:
    std::string text;
    std::vector<Segment2> vEdges;
};

/// The failure that borders of the given triangles cross each other.
void reportAdditionalVertex(const Point2& vertex, const std::vector<Triangle2*>& vScratchT) {
    error("CAT_createOuterTrianglesAndConnect()", "Additional vertex (possibly due to a selfintersection)");
    print(compose("      ", vertex, hint));
    Visualizer2 visualizer("invalidInput.ps");
    visualizer.addObject(vScratchT, Color(0.9, 0.9, 0.9, 0.001, false));
    Bbox2 box;
    for (const Triangle2* pT : vScratchT)
        for (int i = 0; i < 3; ++i) box.add(*corner(pT, i));
    const double radius = (box.getMaxX() - box.getMinX()) / 70.0;
    visualizer.addObject(Circle2(vertex, radius * radius), Color(0.0, 0.0, 1.0, 2.0, false));
    visualizer.addObject(vertex, Color(1.0, 0.0, 0.0, 0.1, false));
    visualizer.writeFile();
}

}  // namespace

std::vector<CAT_MeshConnectionHelper> OpenEdges::getSorted() const {
    std::vector<CAT_MeshConnectionHelper> vSorted;
    mEdges.visit([&](const CAT_MeshConnectionHelper& open) { vSorted.push_back(open); });
    std::sort(vSorted.begin(), vSorted.end(), [](const auto& a, const auto& b) {
        return a.src != b.src ? ByAddress{}(a.src, b.src) : ByAddress{}(a.trg, b.trg);
    });
    return vSorted;
}

Zone2* Dt2::CAT_importTriangles(std::vector<Point2>& vPoints, bool bReorient, bool bKeepBox) {
    Bbox2 givenBox;
    if (!CAT_expectedPoints(vPoints, givenBox)) return nullptr;
    ProgressPhase phase(progress, "importTriangles", vPoints.size() / 3);
    Zone2* const pZone = importExpected(vPoints, givenBox, bReorient, bKeepBox, phase);
    phase.finish();
    return pZone;
}

Zone2* Dt2::importExpected(std::vector<Point2>& vPoints, const Bbox2& givenBox, bool bReorient, bool bKeepBox,
                           ProgressPhase& phase) {
    PointMap mPoints(vPoints.size() / 6);
    CAT_treatPointsCreateMap(vPoints, givenBox, mPoints);
    if (bReorient && !CAT_reorient(vPoints, mPoints)) return nullptr;
    OpenEdges mKeyMCH;
    std::vector<Triangle2*> vGivenT;
    if (!CAT_createAndConnectGivenTriangles(mPoints, mKeyMCH, vGivenT, phase)) return nullptr;

    std::vector<ConstraintGraph2*> vGraphs;
    std::vector<Segment2> vBorder;
    if (!makeBorderConstraints(vGivenT, mKeyMCH, vGraphs, vBorder)) return nullptr;
    Zone2* const pZone = createZone(vGraphs, ZL_INSIDE);
    std::vector<Point2*> vBoxVertices;
    if (!closeWithOuterTriangles(vGivenT, vBorder, mPoints, mKeyMCH, vBoxVertices)) return nullptr;
    if (!bKeepBox) {
        TriangleMarks givenTriangles(trianglePool);
        for (const Triangle2* pT : vGivenT) givenTriangles.insert(pT);
        for (Point2* pVtx : vBoxVertices) CAT_removeBoxPoint(pVtx, givenTriangles);
    }
    vertexVault.sortIV(SORT_ALWAYS);
    applyConstraintsAndZones();
    return pZone;
}

// --------------------------------------------------------------------------------------- the given triangles

bool Dt2::CAT_expectedPoints(const std::vector<Point2>& vPoints, Bbox2& givenBox) const {
    const char* const source = "Dt2::createArbitraryTriangles(..)";
    if (!vertexVault.empty()) {
        error(source, "This method requires an empty triangulation");
        return false;
    }
    if (vPoints.empty() || vPoints.size() % 3 != 0) {
        error(source, "3 points per triangle please!");
        return false;
    }
    const BoxCollector collector = collectBox(vPoints);
    if (!collector.areFinite()) {
        error(source, "non-finite coordinates, nothing done");
        return false;
    }
    givenBox = collector.getBox();
    // There is a box around them, too, which gets vertices.
    Bbox2 outerBox = givenBox;
    outerBox.doubleTheBox();
    if (isFinite({outerBox.getMinX(), outerBox.getMinY()}) &&
        isFinite({outerBox.getMaxX(), outerBox.getMaxY()}))
        return true;
    error(source, "coordinates too large, nothing done");
    return false;
}

void Dt2::CAT_treatPointsCreateMap(const std::vector<Point2>& vPoints, const Bbox2& givenBox,
                                   PointMap& mPoints) {
    constexpr std::size_t ahead = 16;
    mPoints.reserveCorners(vPoints.size());
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        if (i + ahead < vPoints.size()) mPoints.prefetch(vPoints[i + ahead]);
        mPoints.addCorner(vPoints[i]);
    }
    takeIntoBox(givenBox);
    std::size_t startIndex = 0;
    vertexVault.iReset_vector(mPoints.getPoints(), &mPoints.getVertices(), startIndex);
}

bool Dt2::CAT_reorient(std::vector<Point2>& vPoints, PointMap& mPoints) {
    for (std::size_t i = 0; i < vPoints.size(); i += 3) {
        switch (predicates.getOrientation2(&vPoints[i], &vPoints[i + 1], &vPoints[i + 2])) {
            case ORIENTATION2_CCW:
                break;
            case ORIENTATION2_CW:
                std::swap(vPoints[i + 1], vPoints[i + 2]);
                mPoints.swapCorners(i + 1, i + 2);
                break;
            default:
                warning("Dt2::CAT_reorient()", compose("collinear triangle no. ", i / 3));
                return false;
        }
    }
    return true;
}

bool Dt2::CAT_createAndConnectGivenTriangles(const PointMap& mPoints, OpenEdges& mKeyMCH,
                                             std::vector<Triangle2*>& vGivenT, ProgressPhase& phase) {
    constexpr std::size_t ahead = 12;
    const std::size_t numTriangles = mPoints.numCorners() / 3;
    vGivenT.reserve(numTriangles);
    for (std::size_t i = 0; i < numTriangles; ++i) {
        if (i + ahead < numTriangles) {
            const auto [p, q, r] = mPoints.verticesOf(i + ahead);
            for (Point2* pVtx : {p, q, r}) __builtin_prefetch(pVtx, 1);
            mKeyMCH.prefetch(q, r);
            mKeyMCH.prefetch(r, p);
            mKeyMCH.prefetch(p, q);
        }
        const auto [a, b, c] = mPoints.verticesOf(i);
        if (a == b || b == c || c == a) {
            error("Dt2::CAT_importTriangles()", compose("two equal corners, triangle no. ", i));
            return false;
        }
        Triangle2* const pT = createTriangle(a, b, c);
        vGivenT.push_back(pT);
        linkToOpenEdges(pT, mKeyMCH);
        phase.advance(1);
    }
    vertexVault.bFullDimensional = true;
    bMayLackDelaunay = true;
    return true;
}

/// Makes a graph of each border ring, and appends all borders as segments too.
bool Dt2::makeBorderConstraints(const std::vector<Triangle2*>& vGivenT, const OpenEdges& mKeyMCH,
                                std::vector<ConstraintGraph2*>& vGraphs, std::vector<Segment2>& vBorder) {
    ConnectedComponent all({});
    if (isOneRing(vGivenT, mKeyMCH, all)) return makeGraphOfRing(all, vGraphs, vBorder);
    const Partitioner partitioner(vGivenT);
    for (std::size_t i = 0; i < partitioner.numberOfCCs(); ++i)
        if (!makeGraphOfRing(*partitioner.getCC(i), vGraphs, vBorder)) return false;
    return true;
}

/// Whether all triangles are one component with one border ring, which is told without looking at them one by one: a component
/// without border would need triangles of both directions, and each other one has rings of its own.
bool Dt2::isOneRing(const std::vector<Triangle2*>& vGivenT, const OpenEdges& mKeyMCH,
                    ConnectedComponent& all) {
    if (mKeyMCH.getNumLost() != 0) return false;
    std::vector<Edge2> vBorder;
    for (const CAT_MeshConnectionHelper& open : mKeyMCH.getSorted()) vBorder.emplace_back(open.pT, open.edge);
    all.setUnsortedBorders(std::move(vBorder));
    std::vector<Point2*> vPinch;
    all.sortBorders(vPinch);
    return vPinch.empty() && std::all_of(vGivenT.begin(), vGivenT.end(), [&](const Triangle2* pT) {
               return predicates.getOrientation2(corner(pT, 0), corner(pT, 1), corner(pT, 2)) ==
                      ORIENTATION2_CCW;
           });
}

bool Dt2::makeGraphOfRing(const ConnectedComponent& component, std::vector<ConstraintGraph2*>& vGraphs,
                          std::vector<Segment2>& vBorder) {
    std::vector<Edge2*> vRing;
    component.getSortedBorders(vRing);
    ConstraintGraph2* const pGraph = constraintMgr.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY, false);
    // Triangles without any border lie on both sides of each other.
    if (pGraph == nullptr || !pGraph->isPolygon()) {
        error("CAT_importTriangles()", "BUG: Not a simple polygon! Returning NULL");
        return false;
    }
    vGraphs.push_back(pGraph);
    for (const Edge2* pEdge : vRing) vBorder.emplace_back(*pEdge->getSrc(), *pEdge->getTrg());
    return true;
}

// --------------------------------------------------------------------------------- the space around them

/// Makes the triangles between the borders and a box. False, with a report, if not all open edges can be closed.
bool Dt2::closeWithOuterTriangles(const std::vector<Triangle2*>& vGivenT,
                                  const std::vector<Segment2>& vBorder, PointMap& mPoints, OpenEdges& mKeyMCH,
                                  std::vector<Point2*>& vBoxVertices) {
    Norvik_2D scratchMesh(3);
    CAT_insertBoxPoints(mPoints, &scratchMesh, vBoxVertices);
    scratchMesh.createConstraint(vBorder, CIS_CONSTRAINED_DELAUNAY, false);
    scratchMesh.applyConstraintsAndZones();
    if (!CAT_createOuterTrianglesAndConnect(&scratchMesh, mKeyMCH, mPoints)) return false;
    const std::size_t numOpen = countOpenEdges(vGivenT, mKeyMCH);
    if (numOpen == numSidesOfBox) return true;
    reportOpenEdges(mKeyMCH, numOpen);
    return false;
}

void Dt2::CAT_insertBoxPoints(PointMap& mPoints, Norvik_2D* pScratchMesh,
                              std::vector<Point2*>& vBoxVertices) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const Bbox2 tightBox = vertexVault.computeBoundingBox();
    Bbox2 outerBox = tightBox;
    outerBox.doubleTheBox();
    // Where coordinates are large beside the box, or close to the smallest doubles, its margins may get lost.
    outerBox.add(
        Point2(std::nextafter(tightBox.getMinX(), -infinity), std::nextafter(tightBox.getMinY(), -infinity)));
    outerBox.add(
        Point2(std::nextafter(tightBox.getMaxX(), infinity), std::nextafter(tightBox.getMaxY(), infinity)));
    takeIntoBox(outerBox);
    const double minX = outerBox.getMinX(), maxX = outerBox.getMaxX();
    const double minY = outerBox.getMinY(), maxY = outerBox.getMaxY();
    for (const Point2& point :
         {Point2(minX, minY), Point2(minX, maxY), Point2(maxX, minY), Point2(maxX, maxY)}) {
        pScratchMesh->insert(point);
        Point2* const pVtx = newVertex(point);
        vertexVault.addItem(hc.iReset(point), pVtx);
        mPoints.addVertex(pVtx);
        vBoxVertices.push_back(pVtx);
    }
}

bool Dt2::CAT_createOuterTrianglesAndConnect(Norvik_2D* pScratchMesh, OpenEdges& mKeyMCH,
                                             const PointMap& mPoints) {
    constexpr int firstTooManyPasses = 31, reportingPass = 3;
    OpenEdgeReport report;
    std::vector<Triangle2*> vScratchT;
    pScratchMesh->getTrianglePointers(vScratchT);
    for (int pass = 1;; ++pass) {
        if (pass == firstTooManyPasses) {
            report.send(pScratchMesh);
            return false;
        }
        if (pass == reportingPass && mKeyMCH.size() > numSidesOfBox) report = OpenEdgeReport(mKeyMCH);
        bool bCreated = false;
        for (const Triangle2* pScratchT : vScratchT) {
            Point2* corners[3];
            for (int i = 0; i < 3; ++i) {
                corners[i] = mPoints.find(*corner(pScratchT, i));
                if (corners[i] != nullptr) continue;
                reportAdditionalVertex(*corner(pScratchT, i), vScratchT);
                return false;
            }
            const auto [a, b, c] = corners;
            if (!mKeyMCH.contains(c, b) && !mKeyMCH.contains(a, c) && !mKeyMCH.contains(b, a)) continue;
            linkToOpenEdges(createTriangle(a, b, c), mKeyMCH);
            bCreated = true;
        }
        if (!bCreated) return true;
    }
}

void Dt2::reportOpenEdges(const OpenEdges& mKeyMCH, std::size_t numOpen) {
    print(compose("mKeyMCH.size()=", numOpen, "\n"));
    error("Dt2::CAT_importTriangles()",
          "size!=4, sorry, invalid input data or bug. If your data is clean, please report this incident");
    Visualizer2 visualizer("bug.ps");
    show(&visualizer, true);
    for (const CAT_MeshConnectionHelper& open : mKeyMCH.getSorted())
        for (const Point2* pVtx : {open.src, open.trg})
            visualizer.addObject(*pVtx, Color(COLORNAME_BLUE, 0.001F, false));
    visualizer.writeFile();
}

}  // namespace KELMAR_NORVIK2D
