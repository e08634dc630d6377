#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "Norvik_2D.h"
#include "hardPoints.h"
#include "mtxTools.h"
#include "zoneLaws.h"

/// Small scenes that together call every operation of the public interface that computes. Each tells what came of it as a text:
/// equal texts are equal results, to the last bit.
namespace wholeInterface {

using namespace KELMAR_NORVIK2D;

using zoneLaws::ring, zoneLaws::Segments, zoneLaws::Triangles;

/// Numbers as they are in memory, whatever locale and rounding mode the host has set.
class Results {
public:
    Results& operator<<(double value) {
        char digits[16];
        const auto end = std::to_chars(digits, std::end(digits), std::bit_cast<std::uint64_t>(value), 16);
        text.append(digits, static_cast<std::size_t>(end.ptr - digits)).push_back(' ');
        return *this;
    }
    Results& operator<<(const Point2& point) { return *this << point.x() << point.y(); }
    Results& operator<<(const Segment2& segment) { return *this << segment.getSrc() << segment.getTrg(); }
    Results& operator<<(const std::string& word) {
        text += word + ' ';
        return *this;
    }
    template <class Value>
    Results& operator<<(const std::vector<Value>& values) {
        for (const Value& value : values) *this << value;
        return *this;
    }
    Results& operator<<(const Bbox2& box) {
        return *this << box.getMinX() << box.getMinY() << box.getMaxX() << box.getMaxY();
    }
    /// Ordered as points are, which know denormal coordinates apart whatever the host has set.
    Results& operator<<(const Triangles& vTriangles) {
        std::vector<std::array<Point2, 3>> sorted;
        for (const Triangle2* pT : vTriangles) {
            sorted.push_back({*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2)});
            std::sort(sorted.back().begin(), sorted.back().end());
        }
        std::sort(sorted.begin(), sorted.end());
        for (const auto& corners : sorted)
            for (const Point2& corner : corners) *this << corner;
        return *this;
    }
    Results& operator<<(Norvik_2D& mesh) { return *this << zoneLaws::trianglesOf(mesh); }
    Results& operator<<(const Zone2* pZone) {
        return *this << (pZone == nullptr ? Triangles() : zoneLaws::trianglesOf(pZone));
    }

    std::string text;
};

inline const Segments quad = ring({{0.1, 0.1}, {3.2, 0.4}, {2.9, 3.3}, {0.3, 2.7}});
inline const Segments otherQuad = ring({{1.1, 1.2}, {4.1, 1.5}, {3.8, 4.2}, {1.3, 3.9}});
inline const Segments apart{{{-1.1, 5.0}, {6.3, 4.8}}};
inline const Segments crossing{{{0.1, 0.7}, {4.3, 3.1}}, {{0.4, 3.3}, {4.1, 0.2}}};

/// A mesh of a few points around the quads.
struct Scene {
    Scene() {
        hardPoints::Rng rng(1);
        for (int i = 0; i < 8; ++i)
            points.emplace_back(5 * hardPoints::unit(rng), 5 * hardPoints::unit(rng), i);
        mesh.insert(points);
    }
    Zone2* zoneOf(const Segments& segments, ZoneLocation kind = ZL_INSIDE) {
        return mesh.createZone(mesh.createConstraint(segments, CIS_CONSTRAINED_DELAUNAY), kind);
    }
    Norvik_2D mesh{1000};  // one block: the order of addresses is that of making
    std::vector<Point2> points;
};

inline void insertAndAsk(Results& results) {
    Scene scene;
    Norvik_2D& mesh = scene.mesh;
    mesh.setName("a name that is too long to be kept without an allocation");
    std::vector<Point2*> handles(2);
    mesh.insert({1.1, 2.2});
    mesh.insert({{7.1, -1.3}, {1.1, 2.2}, {-2.1, 0.7}}, handles);
    mesh.remove(handles[0]);
    double coordinates[] = {0.3, 9.1, 0.3, 9.1};
    mesh.insert(2, coordinates, handles.data());
    std::vector<Triangle2*> vTriangles;
    mesh.getIncidentTriangles(handles[0], vTriangles);
    mesh.locate(scene.points, vTriangles);
    const Triangle2* const pT = mesh.locate({2.3, 2.4});
    mesh.getConvexHull(true, handles);
    for (const Point2* pVtx : handles) results << *pVtx;
    mesh.statistics("angles");
    results << mesh << mesh.computeBoundingBox() << mesh.checkValidity(true, "scene");
    results << pT->getBarycenter() << pT->getDual().first << pT->getInteriorAngle2D(0) << pT->getArea2D()
            << pT->getSquaredEdgeLength2D(1);
    MeshArrays arrays;
    mesh.exportMesh(arrays);
    mesh.initNorvik(3);
    mesh.measureTrianguluationTime(scene.points);
    results << arrays.coordinates << mesh.insert(scene.points[0])->x();
}

inline void constrain(Results& results) {
    for (const ConstraintInsertionStrategy cis : {CIS_CONSTRAINED_DELAUNAY, CIS_CONFORMING_DELAUNAY}) {
        Scene scene;
        scene.mesh.createConstraint(quad, cis);
        ConstraintGraph2* const pGraph =
            scene.mesh.createConstraint(cis == CIS_CONSTRAINED_DELAUNAY ? crossing : apart, cis, true);
        scene.mesh.applyConstraintsAndZones();
        std::vector<ConstraintSegment2*> vPieces, vOriginals;
        pGraph->getAliveConstraintChain(vPieces);
        for (ConstraintSegment2* pPiece : vPieces) {
            results << *pPiece->getSrc() << *pPiece->getTrg();
            pGraph->getOriginalSegments(pPiece, vOriginals);
            results << scene.mesh.isConstraint(pPiece->getSrc(), pPiece->getTrg());
        }
        results << scene.mesh << scene.mesh.checkValidity(true, "constraints");
    }
}

inline void combineZones(Results& results) {
    struct Small : UserPredicateT {
        bool operator()(Triangle2* pT) override { return pT->getArea2D() < 1.5; }
    } small;
    Scene scene;
    Zone2 *pA = scene.zoneOf(quad), *pB = scene.zoneOf(otherQuad, ZL_OUTSIDE);
    for (auto* pOperation : {zoneUnion, zoneIntersection, zoneDifference, zoneSymmetricDifference})
        results << pOperation(pA, pB) << pOperation(pA, pB)->getArea2D();
    Zone2* const pGrown = scene.mesh.createZone(pA->getConstraintGraph(), ZL_GROW, {1.0, 1.0});
    pGrown->unifyGrid(0.1);
    results << pGrown << peelOffIf(pGrown, &small, true) << zoneUnion(pA, pB)->convertToBoundedZone();
    Segments border;
    pB->getBoundarySegments(border);
    std::vector<Triangle2*> vTriangles;
    pB->getTriangles(vTriangles);
    std::vector<std::vector<Triangle2*>> vComponents;
    getConnectedComponents(vTriangles, vComponents);
    std::vector<Edge2> vEdges, vRest;
    std::vector<std::vector<Edge2>> vRings;
    pB->getBorderEdges(vEdges);
    edgesToPolygons(vEdges, vRings, vRest);
    std::vector<VertexPair2> vPairs;
    getVertexPairs(pA, vPairs);
    Segments shuffled = quad;
    std::swap(shuffled[1], shuffled[2]);
    results << sortRingCCW(shuffled) << shuffled << isSimplePolygon(otherQuad) << isSimplePolygon(crossing);
    results << static_cast<double>(border.size() + vComponents.size() + vRings.size() + vPairs.size());
    scene.mesh.deleteZone(pGrown);
    results << scene.mesh;
}

inline void refine(Results& results) {
    for (const bool bGrid : {false, true}) {
        Scene scene;
        Zone2* const pZone = scene.zoneOf(quad);
        MeshGenParams params(pZone);
        params.minAngleDegree = 28.0;
        params.maxEdgeLength = 1.7;
        params.growFactor = 4.0;
        params.gridLength = bGrid ? 0.9 : 0.0;
        params.gridVector = {2.0, 1.0};
        scene.mesh.refineAdvanced(&params);
        scene.mesh.refine(pZone, 20.0, 0.01, 1.3, true);
        results << scene.mesh << scene.mesh.checkZoneQuality(pZone, 10.0, "scene", {});
    }
}

inline void importAndCut(Results& results) {
    Norvik_2D imported(1000);
    std::vector<Point2> corners{{0.1, 0.1}, {3, 0}, {1, 2.3}, {3, 0}, {1, 2.3},
                                {4.1, 3.3}, {7, 7}, {8, 7.1}, {7, 9}};
    results << imported.importTriangles(corners, true, true) << imported;
    for (const bool bKeepShape : {false, true}) {
        Scene scene;
        scene.mesh.cutTriangles(crossing, bKeepShape);
        results << scene.mesh.createZone_cookieCutter(otherQuad, bKeepShape) << scene.mesh;
    }
}

inline void checkSegments(Results& results) {
    Segments segments = crossing;
    for (const Segments& more : {quad, otherQuad}) segments.insert(segments.end(), more.begin(), more.end());
    std::vector<Segment2*> vSegments, vIllegal;
    for (Segment2& segment : segments) vSegments.push_back(&segment);
    SegmentChecker checker;
    checker.addSegments(vSegments);
    checker.getIllegalSegments(true, vIllegal);
    for (Segment2* pSegment : vSegments) {
        std::vector<std::pair<Segment2*, SegmentIntersectionType>> vPartners;
        checker.getIntersectors(pSegment, false, vPartners);
        for (const auto& [pPartner, type] : vPartners) {
            Point2 point;
            checker.getIntersectionPoint(type, *pSegment, *pPartner, point);
            results << point;
        }
    }
    results << static_cast<double>(vIllegal.size());
}

inline void compute(Results& results) {
    const Point2 a(0.1, 0.2), b(3.3, 1.7), c(1.9, 4.1), d(2.2, -0.3);
    Point2 meeting;
    getIntersectionPoint(a, b, c, d, meeting);
    results << meeting << barycenter(a, b, c) << getFootPoint(a, b, c) << centerWithShift(a, b);
    getIntersectionPointNoRounding(a, b, c, d, meeting);
    results << meeting << adaptPointToSegment(a, b, meeting) << getArea2D(a, b, c) << getUlp(0.7);
    results << getPointLineDistance2D(a, b, c) << computeArea(3.1, 4.2, 5.3) << getBetterX(a, b, c, 0.1);
    results << getAngleDegree(Vector2(a, b), Vector2(a, c)) << normalize(Vector2(a, b)).x();
    results << (Vector2(a, b) + Vector2(0.1, 0.3) * 0.7 / 1.3).y() << Vector2(a, b) * Vector2(c, d);
    results << Vector2(a, b).orthogonalVector().x() << (a + Vector2(c, d)) << Circle2(a, 0.3).getRadius();
    Bbox2 box = getBox(std::vector<Point2>{a, b, c, d});
    std::vector<Point2> corners;
    box.getOffsetCorners(0.1, corners);
    box.enlargeRanges(1.01);
    results << box << box.computeCenter() << corners << Segment2(a, b).getSqLen2D();
    box.doubleTheBox();
    std::vector<Point2> points;
    Segments segments;
    generateRandomPoints(5, 0.1, 0.9, points, 3);
    generateCircle(7, 0.1, 0.2, 1.3, 2.1, points);
    generateRandomSegments(4, 0.1, 0.9, 0.3, segments, 3);
    generateSineSegments(5, 2, 0.1, 0.2, 0.3, 0.4, false, segments);
    results << box << points << segments << double2string(0.1) << magentaString("m");
    generateRandomPolygon(6, 0.1, 0.9, segments, 3);
    results << segments;
}

/// A slanted ellipse, by whole numbers: it must be the same whatever the rounding mode.
inline FloatMtx drawPicture() {
    FloatMtx picture(40, 30, 0.1F);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            if (const int u = 10 * x - 173, v = 13 * y - 3 * x - 140; u * u + v * v < 9400)
                picture.set(x, y, 0.7F);
    return picture;
}

inline void followLines(Results& results) {
    FloatMtx edges, directions;
    sobelFilter(drawPicture(), edges, &directions);
    for (int x = 0; x < 40; ++x) results << edges.get(x, 15) << directions.get(x, 15);
    float least = 0.0F, greatest = 0.0F;
    edges.getMinMax(least, greatest);
    thresholdHysteresis(edges, 0.125F * greatest, 0.25F * greatest, edges);
    thinPixels(edges);
    pruneChains(edges, 5);
    std::vector<std::vector<Point2>> vvLines;
    traceChains(edges, vvLines);
    for (std::vector<Point2>& line : vvLines) {
        simplifyPolyline(line, 0.0);
        simplifyPolyline(line, 0.7);
        results << line;
    }
    Segments segments;
    polylinesToSegments(vvLines, segments);
    results << segments << static_cast<double>(edges == directions);
}

/// Files in the working directory whose names begin with `prefix`, appended to what came of it.
inline void write(Results& results, const std::string& prefix) {
    Scene scene;
    const Zone2* const pZone = scene.zoneOf(quad);
    std::vector<Point2> back;
    Segments segments = crossing, segmentsBack;
    results << writePointsASCII((prefix + ".xy").c_str(), scene.points)
            << readXY((prefix + ".xy").c_str(), back)
            << writePointsBIN((prefix + ".bin").c_str(), scene.points)
            << readPointsBIN((prefix + ".bin").c_str(), back)
            << writeSegmentsBIN((prefix + "_seg.bin").c_str(), segments)
            << readSegmentsBIN((prefix + "_seg.bin").c_str(), segmentsBack);
    results << back << segmentsBack;
    scene.mesh.writeObj(prefix + ".obj");
    scene.mesh.show(prefix + ".ps");
    pZone->show(prefix + "_zone.ps", true, true);
    pZone->getConstraintGraph()->show(prefix + "_graph.ps");
    scene.mesh.writeWebScene((prefix + "_web").c_str());
    for (const double minAngle : {60.0, -999.0, -1000.0})
        scene.mesh.checkZoneQuality(const_cast<Zone2*>(pZone), minAngle, prefix, {});
    results << writeBMP(prefix + ".bmp", drawPicture(), 0.05F, 0.8F);
    Visualizer2 picture(prefix + "_all.ps");
    picture.addObject(scene.points, Color(COLORNAME_BLUE, 0.1F, true));
    picture.addObject(Circle2(0.1, 0.2, 0.3), Color(0.1, 0.2, 0.3, 0.4, false));
    picture.addObject(Label(Point2(1.1, 0.1), "label", true, 9), Color(COLORNAME_RED, 0.1F, false));
    picture.addHeaderLine("a line above the picture that takes memory");
    picture.writeFile();
}

using SceneFunction = void (*)(Results&);
inline constexpr SceneFunction scenes[] = {insertAndAsk, constrain,     combineZones, refine,
                                           importAndCut, checkSegments, compute,      followLines};

}  // namespace wholeInterface
