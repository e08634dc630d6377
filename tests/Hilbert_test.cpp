#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "HC2.h"
#include "NorvikException.h"
#include "captureOutput.h"
#include "hardPoints.h"
#include "hilbertOrder.h"

using namespace KELMAR_NORVIK2D;

namespace {

std::int64_t cellOf(double cell) {
    return cell >= -0x1p63 && cell < 0x1p63 ? static_cast<std::int64_t>(cell)
                                            : std::numeric_limits<std::int64_t>::min();
}

/// The curve one level at a time.
std::uint32_t plainKey(double minX, double minY, double maxX, double maxY, unsigned bitLength,
                       const Point2& point) {
    constexpr unsigned nextState[4][4] = {{1, 0, 2, 0}, {0, 3, 1, 1}, {2, 2, 0, 3}, {3, 1, 3, 2}};
    constexpr unsigned digit[4][4] = {{0, 1, 3, 2}, {0, 3, 1, 2}, {2, 1, 3, 0}, {2, 3, 1, 0}};
    const auto gridSize = static_cast<unsigned>(std::pow(2.0, bitLength >> 1));
    const std::int64_t ix = cellOf((point.x() - minX) * (gridSize / (maxX - minX)));
    const std::int64_t iy = cellOf((point.y() - minY) * (gridSize / (maxY - minY)));
    unsigned state = 0, key = 0, mask = gridSize;
    for (int shift = static_cast<int>(bitLength) - 2;; shift -= 2) {
        mask >>= 1;
        const unsigned quadrant = 2 * ((ix & mask) != 0) + ((iy & mask) != 0);
        key += digit[state][quadrant] << shift;
        if (shift == 0) return key;
        state = nextState[state][quadrant];
    }
}

std::vector<KeyIndex> sortedPairs(const HC2& hc, const std::vector<Point2>& points) {
    std::vector<KeyIndex> pairs;
    for (const Point2& point : points)
        pairs.emplace_back(hc.iReset(point), static_cast<std::uint32_t>(pairs.size()));
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

double tourLength(const std::vector<KeyIndex>& pairs, const std::vector<Point2>& points) {
    double sum = 0.0;
    for (std::size_t i = 1; i < pairs.size(); ++i) {
        const Point2 &p = points[pairs[i - 1].second], &q = points[pairs[i].second];
        sum += std::hypot(p.x() - q.x(), p.y() - q.y());
    }
    return sum;
}

}  // namespace

TEST(Hilbert, KeysOfTheTableAreThoseOfTheLoop) {
    constexpr double inf = std::numeric_limits<double>::infinity(), max = std::numeric_limits<double>::max();
    const double boxes[][4] = {{0, 0, 1, 1},           {-3, 7, 1e6, 7.5},           {0, 0, 0, 0},
                               {2, -1, 2, 4},          {-max, -max, max, max},      {0, 0, 1e-310, 1},
                               {-inf, -inf, inf, inf}, {1e15, 1e15, 1e15 + 1, 2e15}};
    hardPoints::Rng rng(1);
    for (unsigned bitLength = 2; bitLength <= 32; bitLength += 2)
        for (const auto& [minX, minY, maxX, maxY] : boxes) {
            const HC2 hc(minX, minY, maxX, maxY, bitLength);
            EXPECT_EQ(hc.getBitLength(), bitLength);
            const auto check = [&, x0 = minX, y0 = minY, x1 = maxX, y1 = maxY](const Point2& point) {
                ASSERT_EQ(hc.iReset(point), plainKey(x0, y0, x1, y1, bitLength, point))
                    << point << " " << bitLength;
            };
            for (const double x : {minX, maxX, std::nextafter(maxX, minX), -1.0, 1e300, -1e300, 0.3})
                for (const double y : {minY, maxY, std::nextafter(maxY, minY), -1.0, 5e-324, -max, 0.7})
                    check({x, y});
            const double width = std::min(maxX - minX, 1e10), height = std::min(maxY - minY, 1e10);
            for (int i = 0; i < 300; ++i)
                check({minX + (2.0 * hardPoints::unit(rng) - 0.5) * width,
                       minY + (2.0 * hardPoints::unit(rng) - 0.5) * height});
        }
}

TEST(Hilbert, TheCurveVisitsEachCellOnceAndOnlyStepsToNeighbours) {
    constexpr int size = 32;
    const HC2 hc(0, 0, size, size, 10);
    std::vector<Point2> cellOfKey(size * size);
    std::set<std::uint32_t> keys;
    for (int x = 0; x < size; ++x)
        for (int y = 0; y < size; ++y) {
            const std::uint32_t key = hc.iReset({x + 0.5, y + 0.5});
            keys.insert(key);
            cellOfKey.at(key) = Point2(x, y);
        }
    EXPECT_EQ(keys.size(), cellOfKey.size());
    for (std::size_t key = 1; key < cellOfKey.size(); ++key)
        EXPECT_EQ(std::fabs(cellOfKey[key].x() - cellOfKey[key - 1].x()) +
                      std::fabs(cellOfKey[key].y() - cellOfKey[key - 1].y()),
                  1.0);
}

TEST(Hilbert, OddOrTooLongKeysAreRefused) {
    for (const unsigned bitLength : {33U, 31U, 34U, 1U}) {
        CaptureOutput capture;
        EXPECT_THROW(HC2(0, 0, 1, 1, bitLength), NorvikException);
        EXPECT_TRUE(capture.told("HC2::HC2(..), ERROR: invalid bitlength"));
    }
}

TEST(Hilbert, RunsOfEqualKeysKeepTheirPlaceAndAreOrderedWithin) {
    // A dense cluster, equal points, points of one cell that no finer grid can tell apart, and others around.
    hardPoints::Rng rng(2);
    std::vector<Point2> points = hardPoints::uniformPoints(2000, 3);
    for (int i = 0; i < 6000; ++i)
        points.emplace_back(0.5 + 1e-7 * hardPoints::unit(rng), 0.5 + 1e-12 * hardPoints::unit(rng));
    for (int i = 0; i < 100; ++i) points.emplace_back(0.25, 0.75);
    for (int i = 0; i < 5000; ++i)
        points.emplace_back(5e-324 * hardPoints::below(rng, 100), 5e-324 * (i % 7));
    const HC2 hc(0, 0, 1, 1, 30);
    const std::vector<KeyIndex> before = sortedPairs(hc, points);
    std::vector<KeyIndex> after = before;
    orderEqualKeys(after, points);

    for (std::size_t i = 0; i < after.size(); ++i) ASSERT_EQ(after[i].first, before[i].first);
    std::vector<KeyIndex> again = after;
    orderEqualKeys(again, points);
    EXPECT_EQ(again.size(), after.size());
    EXPECT_NEAR(tourLength(again, points), tourLength(after, points), 1e-3);
    std::sort(again.begin(), again.end());
    EXPECT_EQ(again, before) << "each run is a permutation of what it was";

    // Along a curve the tour through n points is of length sqrt(n), in random order n.
    std::vector<Point2> cluster;
    for (int i = 0; i < 5000; ++i)
        cluster.emplace_back(0.5 + 1e-9 * hardPoints::unit(rng), 0.5 + 1e-9 * hardPoints::unit(rng));
    std::vector<KeyIndex> pairs = sortedPairs(hc, cluster);
    ASSERT_EQ(pairs.front().first, pairs.back().first);
    orderEqualKeys(pairs, cluster);
    EXPECT_LT(tourLength(pairs, cluster), 1e-9 * 2.0 * std::sqrt(5000.0));
}
