#include "mtxTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "NorvikException.h"
#include "Norvik_2D.h"
#include "captureOutput.h"
#include "temporaryFolder.h"

using namespace KELMAR_NORVIK2D;

namespace {

using Drawing = std::vector<std::string>;
using Lines = std::vector<std::vector<Point2>>;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

/// The upper row comes first, as it is drawn. A digit is its value, anything but a point is 1.
FloatMtx mtxOf(const Drawing& drawing) {
    const int height = static_cast<int>(drawing.size());
    FloatMtx mtx(static_cast<int>(drawing[0].size()), height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < mtx.getWidth(); ++x) {
            const char c = drawing[static_cast<std::size_t>(height - 1 - y)][static_cast<std::size_t>(x)];
            if (c != '.') mtx.set(x, y, '0' <= c && c <= '9' ? static_cast<float>(c - '0') : 1.0F);
        }
    return mtx;
}

Drawing drawingOf(const FloatMtx& mtx) {
    Drawing drawing;
    for (int y = mtx.getHeight() - 1; y >= 0; --y) {
        drawing.emplace_back();
        for (int x = 0; x < mtx.getWidth(); ++x) drawing.back() += mtx.get(x, y) != 0.0F ? '#' : '.';
    }
    return drawing;
}

Drawing thinned(const Drawing& drawing) {
    FloatMtx mtx = mtxOf(drawing);
    thinPixels(mtx);
    return drawingOf(mtx);
}

Drawing pruned(const Drawing& drawing, int minLength) {
    FloatMtx mtx = mtxOf(drawing);
    pruneChains(mtx, minLength);
    return drawingOf(mtx);
}

Lines traced(const FloatMtx& mtx) {
    Lines lines;
    traceChains(mtx, lines);
    return lines;
}

/// How many parts the pixels have that are set, or aren't; a frame of others is around the picture.
int countParts(const FloatMtx& mtx, bool bSet) {
    FloatMtx left(mtx.getWidth() + 2, mtx.getHeight() + 2);
    for (int y = 0; y < left.getHeight(); ++y)
        for (int x = 0; x < left.getWidth(); ++x)
            if ((mtx.isInside(x - 1, y - 1) && mtx.get(x - 1, y - 1) != 0.0F) == bSet) left.set(x, y, 1.0F);
    const std::function<bool(int, int)> take = [&](int x, int y) {
        if (!left.isInside(x, y) || left.get(x, y) == 0.0F) return false;
        left.set(x, y, 0.0F);
        for (const int dy : {-1, 0, 1})
            for (const int dx : {-1, 0, 1})
                if (bSet || dx == 0 || dy == 0) take(x + dx, y + dy);
        return true;
    };
    int numParts = 0;
    for (int y = 0; y < left.getHeight(); ++y)
        for (int x = 0; x < left.getWidth(); ++x) numParts += take(x, y);
    return numParts;
}

int countAround(const FloatMtx& mtx, int x, int y) {
    int num = mtx.get(x, y) != 0.0F ? -1 : 0;
    for (const int dy : {-1, 0, 1})
        for (const int dx : {-1, 0, 1})
            num += mtx.isInside(x + dx, y + dy) && mtx.get(x + dx, y + dy) != 0.0F;
    return num;
}

/// Specks, or blots of a few pixels' radius.
FloatMtx randomPicture(std::mt19937& random) {
    FloatMtx mtx(1 + static_cast<int>(random() % 24), 1 + static_cast<int>(random() % 24));
    const int radius = static_cast<int>(random() % 4);
    const int numBlots = mtx.getWidth() * mtx.getHeight() / (2 + 3 * radius * radius);
    for (int i = 0; i < numBlots; ++i) {
        const int cx = static_cast<int>(random() % 24), cy = static_cast<int>(random() % 24);
        for (int y = cy - radius; y <= cy + radius; ++y)
            for (int x = cx - radius; x <= cx + radius; ++x)
                if (mtx.isInside(x, y) && (x - cx) * (x - cx) + (y - cy) * (y - cy) <= radius * radius)
                    mtx.set(x, y, 1.0F);
    }
    return mtx;
}

/// The outlines of a picture, as the program finds them.
Lines findOutlines(const FloatMtx& picture, double tolerance) {
    FloatMtx mtx;
    sobelFilter(picture, mtx);
    float least = 0.0F, greatest = 0.0F;
    mtx.getMinMax(least, greatest);
    thresholdHysteresis(mtx, 0.1F * greatest, 0.3F * greatest, mtx);
    thinPixels(mtx);
    pruneChains(mtx, 8);
    Lines lines = traced(mtx);
    for (std::vector<Point2>& line : lines) simplifyPolyline(line, tolerance);
    return lines;
}

}  // namespace

TEST(FloatMtx, PixelsAreInsideOnly) {
    FloatMtx mtx(3, 2, 0.5F);
    mtx.set(2, 1, -1.0F);
    EXPECT_EQ(mtx.get(2, 1), -1.0F);
    EXPECT_EQ(mtx.get(1, 1), 0.5F);
    CaptureOutput output;
    for (const auto& [x, y] : {std::pair{3, 0}, {0, 2}, {-1, 0}, {0, -1}}) {
        EXPECT_THROW(mtx.get(x, y), NorvikException);
        EXPECT_THROW(mtx.set(x, y, 0.0F), NorvikException);
    }
    EXPECT_TRUE(output.told("isInside(x,y)"));
    constexpr int most = std::numeric_limits<int>::max();
    EXPECT_THROW(FloatMtx(-1, 5), NorvikException);
    EXPECT_THROW(FloatMtx(most, most), NorvikException);
    FloatMtx taken = std::move(mtx);
    EXPECT_EQ(mtx, FloatMtx());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(taken.getWidth(), 3);
}

TEST(FloatMtx, NaNIsNoValueAndEqualsNothing) {
    float least = 9.0F, greatest = 9.0F;
    const auto expectRange = [&](const FloatMtx& mtx, float a, float b) {
        mtx.getMinMax(least, greatest);
        EXPECT_EQ(std::pair(least, greatest), std::pair(a, b));
    };
    expectRange(FloatMtx(), 0.0F, 0.0F);
    expectRange(FloatMtx(2, 2, notANumber), 0.0F, 0.0F);
    FloatMtx mtx(2, 2, 3.0F);
    mtx.set(1, 0, notANumber);
    EXPECT_FALSE(mtx == mtx);
    expectRange(mtx, 3.0F, 3.0F);
    mtx.set(0, 0, -2.0F);
    expectRange(mtx, -2.0F, 3.0F);
    EXPECT_NE(FloatMtx(2, 3), FloatMtx(3, 2));
}

TEST(SobelFilter, GradientsPointUphill) {
    FloatMtx magnitude, direction;
    sobelFilter(mtxOf({"0011", "0011", "0011"}), magnitude, &direction);
    EXPECT_EQ(magnitude, mtxOf({"0440", "0440", "0440"}));
    EXPECT_EQ(direction, FloatMtx(4, 3));
    const FloatMtx corner = mtxOf({"111", "000", "000"});
    sobelFilter(corner, magnitude, &direction);
    EXPECT_EQ(direction.get(1, 1), 90.0F);
    sobelFilter(mtxOf({"100", "000", "000"}), magnitude, &direction);
    EXPECT_EQ(direction.get(1, 1), 135.0F);
    EXPECT_FLOAT_EQ(magnitude.get(1, 1), std::sqrt(2.0F));
    sobelFilter(mtxOf({"110", "110", "110"}), magnitude, &direction);
    EXPECT_EQ(direction.get(1, 1), 180.0F);
    // In place; one row, whose border is repeated on all sides.
    FloatMtx row = mtxOf({"0009"});
    sobelFilter(row, row);
    EXPECT_EQ(drawingOf(row), Drawing{"..##"});
    EXPECT_EQ(row.get(3, 0), 36.0F);
}

TEST(ThresholdHysteresis, WeakPixelsNeedAStrongOne) {
    FloatMtx out;
    FloatMtx in = mtxOf({"5.2..", ".2.2.", "....2", "2....", ".21.5"});
    in.set(3, 1, notANumber);
    thresholdHysteresis(in, 2.0F, 5.0F, out);
    EXPECT_EQ(drawingOf(out), (Drawing{"#.#..", ".#.#.", "....#", ".....", "....#"}));
    CaptureOutput output;
    thresholdHysteresis(in, 6.0F, 5.0F, out);
    EXPECT_EQ(drawingOf(out), (Drawing{"#....", ".....", ".....", ".....", "....#"}));
    EXPECT_TRUE(output.told("WARNING"));
    // Far longer than a stack is deep.
    FloatMtx large(600, 500, 1.0F);
    large.set(0, 0, 2.0F);
    thresholdHysteresis(large, 1.0F, 2.0F, large);
    EXPECT_EQ(large, FloatMtx(600, 500, 1.0F));
}

TEST(ThinPixels, ThickLinesBecomeThin) {
    EXPECT_EQ(thinned({".......", ".#####.", ".#####.", ".#####.", "......."}),
              (Drawing{".......", ".......", "..###..", ".......", "......."}));
    // Stairs lose their corners, ends stay.
    EXPECT_EQ(thinned({"##...", ".##..", "..##.", "...##"}), (Drawing{"#....", ".#...", "..#..", "...##"}));
    EXPECT_EQ(thinned({"#....", "#....", "#####"}), (Drawing{"#....", "#....", ".####"}));
    // Something thick keeps its middle.
    FloatMtx bar(40, 21, 1.0F);
    thinPixels(bar);
    EXPECT_EQ(countParts(bar, true), 1);
    for (int x = 0; x < 40; ++x)
        for (int y = 0; y < 21; ++y) EXPECT_TRUE(bar.get(x, y) == 0.0F || std::abs(y - 10) <= 1) << y;
    // Nothing vanishes.
    EXPECT_EQ(thinned({"##", "##"}), (Drawing{"..", "#."}));
    const Drawing ring{".#.", "#.#", ".#."};
    EXPECT_EQ(thinned(ring), ring);
}

TEST(ThinPixels, WhatHangsTogetherStaysSo) {
    std::mt19937 random(20261122);
    for (int round = 0; round < 400; ++round) {
        const FloatMtx before = randomPicture(random);
        FloatMtx after = before;
        thinPixels(after);
        ASSERT_EQ(countParts(after, true), countParts(before, true)) << round;
        ASSERT_EQ(countParts(after, false), countParts(before, false)) << round;
        FloatMtx again = after;
        thinPixels(again);
        ASSERT_EQ(again, after) << round;
        for (int y = 0; y < before.getHeight(); ++y)
            for (int x = 0; x < before.getWidth(); ++x) {
                ASSERT_LE(after.get(x, y), before.get(x, y));
                const bool bEnd = before.get(x, y) != 0.0F && countAround(before, x, y) <= 1;
                ASSERT_TRUE(!bEnd || after.get(x, y) != 0.0F) << round;
                // Of what is left nothing can go but ends; that takes long to find out.
                if (round % 20 != 0 || after.get(x, y) == 0.0F || countAround(after, x, y) < 3) continue;
                FloatMtx without = after;
                without.set(x, y, 0.0F);
                ASSERT_TRUE(countParts(without, true) != countParts(after, true) ||
                            countParts(without, false) != countParts(after, false))
                    << round;
            }
    }
}

TEST(PruneChains, ShortBranchesGo) {
    const Drawing tree{"..#......#", "...#....#.", "....####..", "......#...", "......#...", ".#........"};
    EXPECT_EQ(pruned(tree, 1), tree);
    EXPECT_EQ(pruned(tree, 2), (Drawing{tree[0], tree[1], tree[2], tree[3], tree[4], ".........."}));
    // Of a fork on either side both arms go: the next round judges what is left.
    const Drawing trunk{"#......#", ".#....#.", "..####..", ".#....#.", "#......#"};
    EXPECT_EQ(pruned(trunk, 3), (Drawing{"........", "........", "..####..", "........", "........"}));
    EXPECT_EQ(countParts(mtxOf(pruned(trunk, 5)), true), 0);
    // What joined them: a square has no ends, but is no loop.
    const Drawing knot{"#..#", ".##.", ".##.", "#..#"};
    EXPECT_EQ(thinned(knot), knot);
    EXPECT_EQ(countParts(mtxOf(pruned(knot, 3)), true), 0);
    const Drawing loop{".#...", "#.##.", ".#..#"};
    EXPECT_EQ(pruned(loop, 9), (Drawing{".#...", "#.#..", ".#..."}));
}

TEST(TraceChains, LinesBeginAtEndsAndJunctions) {
    const auto at = [](int x, int y) { return Point2(x + 0.5, y + 0.5); };
    Lines lines = traced(mtxOf({"#...#", ".#.#.", "..#..", "..#..", "#...."}));
    EXPECT_EQ(lines,
              (Lines{{at(2, 1), at(2, 2)}, {at(2, 2), at(3, 3), at(4, 4)}, {at(2, 2), at(1, 3), at(0, 4)}}));
    // A loop after lines, the corner of stairs not cut short, and what was there before.
    traceChains(mtxOf({".#....", "#.#...", ".#..##", "....#."}), lines);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[3], (std::vector{at(4, 0), at(4, 1), at(5, 1)}));
    EXPECT_EQ(lines[4], (std::vector{at(1, 1), at(2, 2), at(1, 3), at(0, 2), at(1, 1)}));
}

TEST(TraceChains, EachLinkComesOnce) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        const FloatMtx mtx = randomPicture(random);
        std::set<std::pair<Point2, Point2>> sLinks;
        std::size_t numSteps = 0, numLinks = 0;
        for (const std::vector<Point2>& line : traced(mtx))
            for (std::size_t i = 1; i < line.size(); ++i, ++numSteps)
                sLinks.insert(std::minmax(line[i - 1], line[i]));
        const auto isSet = [&](int x, int y) { return mtx.isInside(x, y) && mtx.get(x, y) != 0.0F; };
        for (int y = 0; y < mtx.getHeight(); ++y)
            for (int x = 0; x < mtx.getWidth(); ++x) {
                if (!isSet(x, y)) continue;
                numLinks += isSet(x + 1, y) + isSet(x, y + 1);
                for (const int dx : {-1, 1})
                    numLinks += isSet(x + dx, y + 1) && !isSet(x + dx, y) && !isSet(x, y + 1);
            }
        ASSERT_EQ(sLinks.size(), numLinks) << round;
        ASSERT_EQ(numSteps, numLinks) << round;
    }
}

TEST(SimplifyPolyline, StaysWithinTheTolerance) {
    std::vector<Point2> line{{0, 0}, {1, 0.4}, {2, -0.4}, {3, 0}, {4, 2}, {5, 0}, {9, 0.25}, {12, 0}};
    simplifyPolyline(line, 0.5);
    EXPECT_EQ(line, (std::vector<Point2>{{0, 0}, {3, 0}, {4, 2}, {5, 0}, {12, 0}}));
    // Back on itself beyond the end: far from the segment, though not from its line.
    line = {{0, 0}, {9, 0}, {4, 0}};
    simplifyPolyline(line, 1.0);
    EXPECT_EQ(line.size(), 3U);
    line = {{0, 0}, {1, 0}, {2, 1}, {2, 2}, {1, 3}, {0, 3}, {-1, 2}, {-1, 1}, {0, 0}};
    simplifyPolyline(line, 100.0);
    EXPECT_EQ(line, (std::vector<Point2>{{0, 0}, {2, 1}, {1, 3}, {0, 0}}));
    // Differences overflow.
    const double h = std::numeric_limits<double>::max();
    line = {{-h, -h}, {h, -h}, {h, h}, {-h, h}, {-h, 0}, {-h, -h}};
    simplifyPolyline(line, 1.0);
    EXPECT_EQ(line, (std::vector<Point2>{{-h, -h}, {h, -h}, {h, h}, {-h, h}, {-h, -h}}));
}

TEST(SimplifyPolyline, WithoutToleranceOnlyExactlyCollinearPointsGo) {
    const double aboveHalf = std::nextafter(0.5, 1.0);
    std::vector<Point2> line{{0, 0}, {0, 0}, {0.1, 0.1}, {0.1, 0.1}, {0.3, 0.3}, {0.5, aboveHalf}, {1, 1}};
    simplifyPolyline(line, 0.0);
    EXPECT_EQ(line, (std::vector<Point2>{{0, 0}, {0.3, 0.3}, {0.5, aboveHalf}, {1, 1}}));
    std::vector<Segment2> segments;
    polylinesToSegments({{{0, 0}, {0, 0}, {1, 0}}, {{5, 5}}, {}}, segments);
    EXPECT_EQ(segments, (std::vector<Segment2>{{Point2(0, 0), Point2(1, 0)}}));
    // Tips of spikes.
    line = {{0, 0}, {4, 0}, {2, 0}, {3, 0}, {1, 0}};
    simplifyPolyline(line, -1.0);
    EXPECT_EQ(line, (std::vector<Point2>{{0, 0}, {4, 0}, {2, 0}, {3, 0}, {1, 0}}));
    line = {{0, 0}, {1, 0}, {2, 0}, {1, 0}, {0, 0}};
    simplifyPolyline(line, 0.0);
    EXPECT_EQ(line.size(), 4U);
}

TEST(WriteBMP, BytesAreAsTheFormatWantsThem) {
    const TemporaryFolder folder;
    FloatMtx mtx = mtxOf({"123", "045"});
    mtx.set(2, 1, notANumber);
    ASSERT_TRUE(writeBMP("grey.bmp", mtx, 1.0F, 4.0F));
    const std::string bytes = contentOf("grey.bmp");
    const std::string header(
        "BM\x4e\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x03\0\0\0\x02\0\0\0\x01\0\x18\0\0\0\0\0\x18\0\0\0", 38);
    EXPECT_EQ(bytes.substr(0, 38), header);
    EXPECT_EQ(bytes.substr(46), std::string(8, '\0') + std::string(3, '\0') + std::string(6, '\xff') +
                                    std::string(6, '\0') + std::string(3, '\x55') + std::string(6, '\0'));
    const auto lowestRow = [&](float minVal, float maxVal) {
        writeBMP("grey.bmp", mtx, minVal, maxVal);
        const std::string row = contentOf("grey.bmp").substr(54);
        return std::string{row[0], row[3], row[6]};
    };
    EXPECT_EQ(lowestRow(4.0F, 0.0F), std::string("\xff\0\0", 3));
    EXPECT_EQ(lowestRow(4.0F, 4.0F), std::string("\0\0\xff", 3));

    CaptureOutput output;
    EXPECT_FALSE(writeBMP("no/such/folder.bmp", mtx, 0.0F, 1.0F));
    EXPECT_TRUE(output.told("no/such/folder.bmp can't be written"));
    if (std::ofstream("/dev/full")) {
        EXPECT_FALSE(writeBMP("/dev/full", mtx, 0.0F, 1.0F));
    }
}

TEST(ImageToMesh, ADiscIsOnePolygonThatCanBeMeshed) {
    for (const double radius : {12.0, 30.5, 90.0}) {
        const int size = static_cast<int>(2.4 * radius);
        const double centre = 0.5 * size + 0.3;
        FloatMtx picture(size, size);
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                if (std::hypot(x + 0.5 - centre, y + 0.5 - centre) < radius) picture.set(x, y, 1.0F);
        const Lines lines = findOutlines(picture, 0.5);
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0].front(), lines[0].back());
        std::vector<Segment2> ring;
        polylinesToSegments(lines, ring);
        ASSERT_TRUE(isSimplePolygon(ring));

        Norvik_2D mesh;
        Zone2* const pDisc =
            mesh.createZone(mesh.createConstraint(ring, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
        const double area = std::acos(-1.0) * radius * radius;
        EXPECT_NEAR(pDisc->getArea2D(), area, 0.05 * area);
        mesh.refine(pDisc, 20.0, 0.01, 1e9, true);
        std::vector<Triangle2*> vTriangles;
        pDisc->getTriangles(vTriangles);
        for (const Triangle2* pTriangle : vTriangles)
            for (int i = 0; i < 3; ++i) EXPECT_GE(pTriangle->getInteriorAngle2D(i), 20.0);
    }
}
