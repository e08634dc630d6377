// Zones are filled with the points of a square grid before they are refined.
#include "GridMesher.h"

#include <gtest/gtest.h>

#include "captureOutput.h"
#include "meshDomains.h"

using namespace meshDomains;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// How far along an axis its grid lines are: evenly spaced, with margins of half to one step on both sides.
std::vector<double> gridLines(const Domain& domain, const Vector2& axis, double step) {
    double first = infinity, last = -infinity;
    for (const Segment2& side : domain.outline()) {
        const double at = (side.getSrc() - Point2(0, 0)) * axis;
        first = std::min(first, at), last = std::max(last, at);
    }
    const int numSteps = std::max(0, static_cast<int>(std::ceil((last - first) / step)) - 2);
    std::vector<double> lines;
    for (int k = 0; k <= numSteps && last - first >= step; ++k)
        lines.push_back(0.5 * (first + last) + (k - 0.5 * numSteps) * step);
    return lines;
}

bool meetsConstraint(const Domain& domain, const Point2& a, const Point2& b) {
    const auto isLeft = [](const Point2& p, const Point2& q, const Point2& r) {
        return (q - p).orthogonalVector() * (r - p) > 0;
    };
    const Segments segments = joined(domain.walls, domain.outline());
    return std::any_of(segments.begin(), segments.end(), [&](const Segment2& s) {
        return isLeft(a, b, s.getSrc()) != isLeft(a, b, s.getTrg()) &&
               isLeft(s.getSrc(), s.getTrg(), a) != isLeft(s.getSrc(), s.getTrg(), b);
    });
}

}  // namespace

TEST(GridMesher, PointsAreTheCrossingsThatAreHalfAStepOffTheBorder) {
    for (const Domain& domain : joined(bluntDomains(), sharpDomains()))
        for (const auto& [u, step] : {std::pair(Vector2(1, 0), 0.37), std::pair(Vector2(-0.6, 0.8), 0.91)}) {
            SCOPED_TRACE(domain.name);
            const Vector2 v(-u.y(), u.x()), halfU = u * (0.5 * step), halfV = v * (0.5 * step);
            std::vector<Point2> expected, told;
            for (const double along : gridLines(domain, u, step))
                for (const double across : gridLines(domain, v, step)) {
                    const Point2 p = Point2(0, 0) + u * along + v * across;
                    if (contains(domain, p) && !meetsConstraint(domain, p - halfU, p + halfU) &&
                        !meetsConstraint(domain, p - halfV, p + halfV))
                        expected.push_back(p);
                }
            Meshed meshed(domain);
            MeshGenParams params = meshed.paramsOf({.gridLength = step, .gridVector = u});
            std::vector<Segment2> vKnives;
            GridMesher(&params).getGridPoints(told, vKnives);
            EXPECT_EQ(told.size(), expected.size());
            for (const Point2& p : expected)
                EXPECT_TRUE(std::any_of(told.begin(), told.end(), [&](const Point2& q) {
                    return (p - q).length() < 1e-9;
                })) << p;
            meshed.mesh.refineAdvanced(&params);
            EXPECT_EQ(meshed.faults(), "");
        }
}

TEST(GridMesher, SquaresBecomeSquares) {
    const Domain turned{"turned", {{{0, 0}, {6, 8}, {-2, 14}, {-8, 6}}}};
    const double notANumber = std::nan("");
    const std::string tooSmall = "GridMesher::createStripes(), WARNING: gridLength is too small for the zone";
    const struct {
        const Domain& domain;
        Vector2 direction;
        double step;
        std::string counts, warning;
    } cases[] = {
        {square, {1, 0}, 1, "121/200", ""},      {square, {0, 1}, 1, "121/200", ""},
        {square, {-7, 0}, 3, "17/24", ""},       {turned, {3, 4}, 3, "17/24", ""},
        {square, {1, 0}, 4, "16/18", ""},        {square, {1, 0}, 7, "4/2", ""},  // one point is no grid
        {square, {1, 0}, 11, "4/2", ""},         {square, {1, 0}, 0, "4/2", ""},
        {square, {1, 0}, -1, "4/2", ""},         {square, {0, 0}, 1, "4/2", ""},
        {square, {1, 0}, infinity, "4/2", ""},   {square, {1, 0}, notANumber, "4/2", ""},
        {square, {notANumber, 1}, 1, "4/2", ""}, {square, {1, infinity}, 1, "4/2", ""},
        {square, {1, 0}, 1e-7, "4/2", tooSmall}, {square, {1, 0}, 1e-20, "4/2", tooSmall},
    };
    for (const auto& [domain, direction, step, counts, warning] : cases) {
        SCOPED_TRACE(step);
        Meshed meshed(domain);
        MeshGenParams params = meshed.paramsOf({.gridLength = step, .gridVector = direction});
        CaptureOutput output;
        meshed.mesh.refineAdvanced(&params);
        EXPECT_EQ(meshed.counts(), counts);
        EXPECT_EQ(meshed.faults(), "");
        EXPECT_TRUE(output.told(warning) && output.out().empty() == warning.empty()) << output.out();
        EXPECT_TRUE(direction.x() != 3 || (params.gridVector.x() == 0.6 && params.gridVector.y() == 0.8));
    }
}

TEST(GridMesher, HolesAreSpared) {
    // Of 81 crossings 4 are in the hole, 8 closer than half a step to its sides, and 4 so close to its corners.
    for (const bool bChop : {false, true}) {
        Meshed meshed({"hole", {box(0, 0, 10, 10), box(5.25, 5.25, 7.75, 7.75)}});
        MeshGenParams params = meshed.paramsOf({.gridLength = 1, .gridVector = {1, 0}});
        GridMesher(&params).insertGridPoints(bChop);
        EXPECT_EQ(meshed.mesh.numberOfPoints(), 8U + 65U + (bChop ? 36U + 8U : 0U));
        EXPECT_EQ(meshed.faults(), "");
    }
}

TEST(GridMesher, ChoppedConformingSegmentsMayBeInMoreThanHalves) {
    Meshed meshed({"square", {box(0, 0, 20, 20)}});
    const Segments crossing = {
        {{16, 2}, {4, 15}}, {{18, 5}, {3, 13}}, {{2, 9}, {4, 15}}, {{18, 13}, {12, 9}}};
    CaptureOutput output;  // that conforming segments which cross can't be divided for ever is told
    meshed.mesh.createConstraint(crossing, CIS_CONFORMING_DELAUNAY);
    MeshGenParams params = meshed.paramsOf({.gridLength = 2, .gridVector = {1, 0}});
    meshed.mesh.refineAdvanced(&params);
    EXPECT_EQ(lawsBroken(meshed.mesh), "");
    EXPECT_NEAR(zoneLaws::areaOf(meshed.pZone), 400.0, 1e-9);
}

TEST(GridMesher, AChoppedSegmentMayHaveAnotherOneAsItsPiece) {
    // Crossings with the grid are rounded, so that a segment from an end to one of them isn't a part of the longer one.
    const Segment2 wall({1, 2}, {18, 9});
    const auto chopped = [&](const Segments& segments) {
        Meshed meshed({"square", {box(0, 0, 20, 20)}});
        meshed.mesh.createConstraint(segments, CIS_CONSTRAINED_DELAUNAY);
        MeshGenParams params = meshed.paramsOf({.gridLength = 2, .gridVector = {1, 0}});
        GridMesher(&params).insertGridPoints(true);
        EXPECT_EQ(lawsBroken(meshed.mesh), "");
        std::vector<Point2> points;
        std::vector<Point2*> vVertices;
        meshed.mesh.getVertexPointers(vVertices);
        for (Point2* pVtx : vVertices)
            if (meshed.mesh.isConstraint(pVtx)) points.push_back(*pVtx);
        return points;
    };
    const Vector2 across = normalize(wall.getTrg() - wall.getSrc()).orthogonalVector();
    for (const Point2& split : chopped({wall}))
        if (std::fabs((split - wall.getSrc()) * across) < 1e-9 && split != wall.getSrc())
            chopped({{wall.getSrc(), split}, wall});
}
