#include "inputFiles.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>

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

/// The word in quotes, cut and without control characters: it may be anything, and goes to a terminal.
std::string quoted(std::string_view word) {
    constexpr std::size_t maxLength = 40;
    std::string text(word.substr(0, maxLength));
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    return '"' + text + (word.size() > maxLength ? "...\"" : "\"");
}

double parseNumber(std::string_view word, const Place& place) {
    std::string_view digits = word;
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-') digits.remove_prefix(1);
    double value = 0.0;
    const auto [pEnd, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (failure == std::errc::result_out_of_range)
        place.fail(quoted(word) + " is outside of the range of a double");
    if (failure != std::errc() || pEnd != digits.data() + digits.size())
        place.fail(quoted(word) + " is not a number");
    if (!std::isfinite(value)) place.fail(quoted(word) + " is not finite");
    return value;
}

/// Takes the next word off the line; empty if there is none.
std::string_view takeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(blanks));
    line.remove_prefix(word.size());
    return word;
}

template <std::size_t N>
std::array<double, N> parseNumbers(std::string_view line, const Place& place) {
    std::array<double, N> numbers{};
    std::size_t numFound = 0;
    for (std::string_view word = takeWord(line); !word.empty(); word = takeWord(line)) {
        if (numFound < N) numbers[numFound] = parseNumber(word, place);
        ++numFound;
    }
    if (numFound != N)
        place.fail(std::to_string(N) + " numbers expected, " + std::to_string(numFound) + " found");
    return numbers;
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
        const std::array<double, N> numbers = parseNumbers<N>(line, place);
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
