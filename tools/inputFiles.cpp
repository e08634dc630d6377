#include "inputFiles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include "numbers.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr std::string_view blanks = " \t\r";

/// A place in the input, for messages.
struct Place {
    const std::string& path;
    std::size_t line;

    [[noreturn]] void fail(const std::string& reason) const {
        throw BadInput(path + ":" + std::to_string(line) + ": " + reason);
    }
};

[[noreturn]] void failFile(const std::string& path, const std::string& reason) {
    throw BadInput(path + ": " + reason);
}

std::string contentOf(const std::string& path) {
    if (std::filesystem::is_directory(path)) failFile(path, "is a folder");
    std::ifstream in(path, std::ios::binary);
    if (!in) failFile(path, "can't be read");
    std::ostringstream content;
    content << in.rdbuf();
    if (in.bad()) failFile(path, "can't be read");
    return std::move(content).str();
}

// Text

template <std::size_t N>
std::array<double, N> parseLine(std::string_view line, const Place& place) {
    try {
        return parseNumbers<N>(line, blanks);
    } catch (const BadNumber& reason) {
        place.fail(reason.what());
    }
}

/// Appends the points of a text whose lines hold N numbers, two for each point.
template <std::size_t N>
void parseText(std::string_view content, const std::string& path, std::vector<Point2>& points) {
    Place place{path, 0};
    while (!content.empty()) {
        const std::string_view line = content.substr(0, content.find('\n'));
        content.remove_prefix(std::min(line.size() + 1, content.size()));
        ++place.line;
        if (line.find_first_not_of(blanks) == std::string_view::npos) continue;
        const std::array<double, N> numbers = parseLine<N>(line, place);
        for (std::size_t i = 0; i < N; i += 2) points.emplace_back(numbers[i], numbers[i + 1]);
    }
}

// Binary files

constexpr std::int32_t filePoints = 20, filePoints3D = 30, fileSegments = 21, fileSegments3D = 31;

/// The first four bytes, in which no text has these small numbers.
std::int32_t fileTypeOf(const std::string& content) {
    std::int32_t type = 0;
    if (content.size() >= sizeof type) std::memcpy(&type, content.data(), sizeof type);
    return type;
}

/// The library completes a file that ends early by zeros; here its size must be what its header tells.
void checkBinarySize(const std::string& content, const std::string& path, std::size_t coordinates,
                     const char* records) {
    constexpr std::size_t headerSize = sizeof(std::int32_t) + sizeof(std::uint64_t);
    std::uint64_t count = 0;
    if (content.size() < headerSize) failFile(path, "ends within the header of a binary file");
    std::memcpy(&count, content.data() + sizeof(std::int32_t), sizeof count);
    const std::size_t recordSize = coordinates * sizeof(double);
    const std::size_t numRecords = (content.size() - headerSize) / recordSize;
    if (numRecords != count || (content.size() - headerSize) % recordSize != 0)
        failFile(path, "holds " + std::to_string(numRecords) + ' ' + records + ", its header tells " +
                           std::to_string(count));
}

bool isFinite(const Point2& point) { return std::isfinite(point.x()) && std::isfinite(point.y()); }

void readBinary(const std::string& content, const std::string& path, std::vector<Point2>& points) {
    checkBinarySize(content, path, fileTypeOf(content) == filePoints3D ? 3 : 2, "points");
    if (!readPointsBIN(path.c_str(), points)) failFile(path, "can't be read");
    for (std::size_t i = 0; i < points.size(); ++i)
        if (!isFinite(points[i])) failFile(path, "point " + std::to_string(i + 1) + " is not finite");
}

void readBinary(const std::string& content, const std::string& path, std::vector<Segment2>& segments) {
    checkBinarySize(content, path, fileTypeOf(content) == fileSegments3D ? 6 : 4, "segments");
    if (!readSegmentsBIN(path.c_str(), segments)) failFile(path, "can't be read");
    for (std::size_t i = 0; i < segments.size(); ++i)
        if (!isFinite(segments[i].getSrc()) || !isFinite(segments[i].getTrg()))
            failFile(path, "segment " + std::to_string(i + 1) + " is not finite");
}

}  // namespace

bool holdsSegments(const std::string& path) {
    std::array<char, sizeof(std::int32_t)> first{};
    std::ifstream(path, std::ios::binary).read(first.data(), first.size());
    const std::int32_t type = fileTypeOf(std::string(first.begin(), first.end()));
    if (type == filePoints || type == filePoints3D) return false;
    return type == fileSegments || type == fileSegments3D || path.ends_with(".seg");
}

std::vector<Point2> readPoints(const std::string& path) {
    const std::string content = contentOf(path);
    const std::int32_t type = fileTypeOf(content);
    std::vector<Point2> points;
    if (type == fileSegments || type == fileSegments3D) failFile(path, "holds segments, not points");
    if (type == filePoints || type == filePoints3D)
        readBinary(content, path, points);
    else if (path.ends_with(".seg"))
        parseText<4>(content, path, points);
    else
        parseText<2>(content, path, points);
    return points;
}

std::vector<Segment2> readSegments(const std::string& path) {
    const std::string content = contentOf(path);
    const std::int32_t type = fileTypeOf(content);
    std::vector<Segment2> segments;
    if (type == filePoints || type == filePoints3D) failFile(path, "holds points, not segments");
    if (type == fileSegments || type == fileSegments3D) {
        readBinary(content, path, segments);
        return segments;
    }
    std::vector<Point2> ends;
    parseText<4>(content, path, ends);
    for (std::size_t i = 0; i < ends.size(); i += 2) segments.emplace_back(ends[i], ends[i + 1]);
    return segments;
}
