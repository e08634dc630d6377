#include "fileFunctions.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>

#include "captureOutput.h"

using namespace KELMAR_NORVIK2D;

namespace {

std::string pathTo(const std::string& name) {
    return ::testing::TempDir() + ::testing::UnitTest::GetInstance()->current_test_info()->name() + "_" +
           name;
}

std::string fileWith(const std::string& name, const std::string& content) {
    std::ofstream(pathTo(name), std::ios::binary) << content;
    return pathTo(name);
}

/// The bytes of a binary file that tells of `count` records.
std::string binary(std::int32_t fileType, std::uint64_t count, const std::vector<double>& numbers) {
    std::string bytes(12 + 8 * numbers.size(), '\0');
    std::memcpy(bytes.data(), &fileType, 4);
    std::memcpy(bytes.data() + 4, &count, 8);
    if (!numbers.empty()) std::memcpy(bytes.data() + 12, numbers.data(), 8 * numbers.size());
    return bytes;
}

}  // namespace

TEST(FileFunctions, BinaryFilesHaveTheirExactBytes) {
    std::vector<Point2> points{{0.1, -2.0, 7}, {1e300, 5e-324}};
    const std::string path = pathTo("bytes");
    ASSERT_TRUE(writePointsBIN(path.c_str(), points));
    EXPECT_EQ(contentOf(path), binary(20, 2, {0.1, -2.0, 1e300, 5e-324}));

    std::vector<Point2*> pointers{&points[1], nullptr};
    ASSERT_TRUE(writePointsBIN(path.c_str(), pointers));
    EXPECT_EQ(contentOf(path), binary(20, 1, {1e300, 5e-324}));

    std::vector<Segment2> segments{{Point2(1, 2), Point2(3, 4)}};
    ASSERT_TRUE(writeSegmentsBIN(path.c_str(), segments));
    EXPECT_EQ(contentOf(path), binary(21, 1, {1, 2, 3, 4}));

    std::vector<Point2> many, back;
    for (int i = 0; i < 200000; ++i) many.emplace_back(i / 3.0, -i / 7.0);  // several blocks
    ASSERT_TRUE(writePointsBIN(path.c_str(), many));
    ASSERT_TRUE(readPointsBIN(path.c_str(), back));
    EXPECT_EQ(back, many);
}

TEST(FileFunctions, ReadingAppendsAndDropsTheThirdCoordinate) {
    std::vector<Point2> points{{9, 9}}, none;
    EXPECT_TRUE(writePointsBIN(pathTo("none").c_str(), none));
    EXPECT_TRUE(readPointsBIN(pathTo("none").c_str(), points));
    EXPECT_TRUE(readPointsBIN(fileWith("flat", binary(20, 2, {1, 2, 3, 4})).c_str(), points));
    EXPECT_TRUE(readPointsBIN(fileWith("spatial", binary(30, 2, {5, 6, 0, 7, 8, 0})).c_str(), points));
    EXPECT_EQ(points, (std::vector<Point2>{{9, 9}, {1, 2}, {3, 4}, {5, 6}, {7, 8}}));
    std::vector<Segment2> segments;
    EXPECT_TRUE(readSegmentsBIN(fileWith("flat", binary(21, 1, {1, 2, 3, 4})).c_str(), segments));
    EXPECT_TRUE(readSegmentsBIN(fileWith("spatial", binary(31, 1, {1, 2, 0, 3, 4, 0})).c_str(), segments));
    EXPECT_EQ(segments, std::vector<Segment2>(2, Segment2(Point2(1, 2), Point2(3, 4))));
}

TEST(FileFunctions, RecordsMissingFromAShortFileAreZerosUpToALimit) {
    std::vector<Point2> points{{9, 9}};
    EXPECT_TRUE(readPointsBIN(fileWith("short", binary(20, 4, {1, 2, 3, 4, 5})).c_str(), points));
    EXPECT_EQ(points, (std::vector<Point2>{{9, 9}, {1, 2}, {3, 4}, {0, 0}, {0, 0}}));

    const std::uint64_t limit = 2 * 2 + 65536;
    points.resize(1);
    EXPECT_TRUE(readPointsBIN(fileWith("limit", binary(20, limit, {1, 2, 3, 4})).c_str(), points));
    EXPECT_EQ(points.size(), 1 + limit);

    points.resize(1);
    for (const std::uint64_t count : {limit + 1, std::numeric_limits<std::uint64_t>::max()}) {
        const std::string path = fileWith("damaged", binary(20, count, {1, 2, 3, 4}));
        CaptureOutput output;
        EXPECT_FALSE(readPointsBIN(path.c_str(), points));
        EXPECT_EQ(output.out(), path + " can't be read\n");
        EXPECT_EQ(points.size(), 1U);
    }
}

TEST(FileFunctions, FailuresAreToldAndChangeNothing) {
    std::vector<Point2> points;
    std::vector<Segment2> segments;
    const std::string asSegments = fileWith("asSegments", binary(21, 1, {1, 2, 3, 4}));
    const std::string asPoints = fileWith("asPoints", binary(20, 1, {1, 2}));
    const std::string header = fileWith("header", binary(20, 1, {}).substr(0, 11));
    const std::string nowhere = pathTo("no/such/folder");
    CaptureOutput output;
    EXPECT_FALSE(readPointsBIN(asSegments.c_str(), points));
    EXPECT_FALSE(readSegmentsBIN(asPoints.c_str(), segments));
    EXPECT_FALSE(readPointsBIN(header.c_str(), points));
    EXPECT_FALSE(readSegmentsBIN(nowhere.c_str(), segments));
    EXPECT_FALSE(readXY(nowhere.c_str(), points));
    EXPECT_FALSE(writePointsASCII(nowhere.c_str(), points));
    std::vector<Point2> some(1);  // needs a disk
    EXPECT_FALSE(writePointsBIN("/dev/full", some));
    EXPECT_EQ(output.out(), asSegments + " has wrong filetype 21, expected: 30 or 20\n" +  //
                                asPoints + " has wrong file type: 20 instead of 31 or 21\n" + header +
                                " can't be read\n" + nowhere + " can't be read\n" +  //
                                nowhere + " is unreadable\n" + nowhere + " can't be written\n" +
                                "/dev/full can't be written\n");
    EXPECT_TRUE(points.empty() && segments.empty());
}

TEST(FileFunctions, TextFilesRoundTrip) {
    std::vector<Point2> points{{0.1, -5e-324}, {1e300, 0.3}}, back;
    const std::string path = pathTo("text");
    ASSERT_TRUE(writePointsASCII(path.c_str(), std::vector<Point2*>{&points[0], &points[1]}));
    EXPECT_EQ(contentOf(path).rfind("0.100000000000000006 ", 0), 0U);
    ASSERT_TRUE(readXY(path.c_str(), back));
    EXPECT_EQ(back, points);
}

TEST(FileFunctions, ReadXYTakesAnyWhiteSpaceAndStopsAtAWord) {
    const std::pair<const char*, std::vector<Point2>> cases[] = {
        {"\n\n 1\t2\n\n3\n4 ", {{1, 2}, {3, 4}}}, {"1 2 3", {{1, 2}}}, {"1 2\nx 3 4", {{1, 2}}}, {"", {}}};
    for (const auto& [text, expected] : cases) {
        std::vector<Point2> points;
        EXPECT_TRUE(readXY(fileWith("words", text).c_str(), points));
        EXPECT_EQ(points, expected) << text;
    }
}
