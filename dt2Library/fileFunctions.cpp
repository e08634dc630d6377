#include "fileFunctions.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iomanip>
#include <locale>
#include <string>

#include "roundingMode.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

namespace {

/// Files are read and written in blocks of so many records.
constexpr std::size_t blockSize = 65536;

/// Tells why a file was given up; always false, as the result of the function that fails.
bool failed(const char* path, const std::string& reason) {
    print(path + reason + "\n");
    return false;
}

/// The points behind the pointers. Handles of refused points are null: these are left out.
std::vector<Point2> copyOf(const std::vector<Point2*>& points) {
    std::vector<Point2> copies;
    copies.reserve(points.size());
    for (const Point2* pPoint : points)
        if (pPoint != nullptr) copies.push_back(*pPoint);
    return copies;
}

// Header fields are written one by one: as a record the compiler would pad them to 16 bytes.

template <class T>
void writeValue(std::ofstream& out, const T& value) {
    out.write(reinterpret_cast<const char*>(&value), sizeof(T));
}

template <class T>
bool readValue(std::ifstream& in, T& value) {
    return static_cast<bool>(in.read(reinterpret_cast<char*>(&value), sizeof(T)));
}

void appendNumbers(std::vector<double>& numbers, const Point2& point) {
    numbers.push_back(point.x());
    numbers.push_back(point.y());
}

void appendNumbers(std::vector<double>& numbers, const Segment2& segment) {
    appendNumbers(numbers, segment.getSrc());
    appendNumbers(numbers, segment.getTrg());
}

template <class Record>
bool writeBinary(const char* path, std::int32_t fileType, const std::vector<Record>& records) {
    std::ofstream out(path, std::ios::binary);
    writeValue(out, fileType);
    writeValue(out, static_cast<std::uint64_t>(records.size()));

    // Through a buffer of plain numbers, because points have more fields than the file.
    std::vector<double> numbers;
    for (std::size_t first = 0; first < records.size() && out; first += blockSize) {
        numbers.clear();
        const std::size_t last = std::min(first + blockSize, records.size());
        for (std::size_t i = first; i < last; ++i) appendNumbers(numbers, records[i]);
        out.write(reinterpret_cast<const char*>(numbers.data()),
                  static_cast<std::streamsize>(numbers.size() * sizeof(double)));
    }
    // Closing writes what is still buffered: a full disk may only show here.
    out.close();
    return out ? true : failed(path, " can't be written");
}

/// The first two coordinates of the position at `index`.
Point2 positionAt(const std::vector<double>& numbers, std::size_t index) {
    return {numbers[index], numbers[index + 1]};
}

/// How the numbers of a file make a record: positions of two or three coordinates, the third of which is
/// dropped.
struct PointReader {
    std::size_t dimension;

    std::size_t numbersPerRecord() const { return dimension; }
    Point2 operator()(const std::vector<double>& numbers, std::size_t index) const {
        return positionAt(numbers, index);
    }
};

struct SegmentReader {
    std::size_t dimension;

    std::size_t numbersPerRecord() const { return 2 * dimension; }
    Segment2 operator()(const std::vector<double>& numbers, std::size_t index) const {
        return {positionAt(numbers, index), positionAt(numbers, index + dimension)};
    }
};

/// Appends up to `count` records and returns their number, which is less if the file ends before.
template <class Record, class Reader>
std::uint64_t readRecords(std::ifstream& in, std::uint64_t count, const Reader& reader,
                          std::vector<Record>& records) {
    const std::size_t width = reader.numbersPerRecord();
    std::vector<double> numbers(blockSize * width);
    std::uint64_t numRead = 0;
    while (numRead < count && in) {
        const std::uint64_t numWanted = std::min<std::uint64_t>(blockSize, count - numRead);
        in.read(reinterpret_cast<char*>(numbers.data()),
                static_cast<std::streamsize>(numWanted * width * sizeof(double)));
        // A record that is cut off at the end of the file counts as missing.
        const std::size_t numGot = static_cast<std::size_t>(in.gcount()) / (width * sizeof(double));
        for (std::size_t i = 0; i < numGot; ++i) records.push_back(reader(numbers, i * width));
        numRead += numGot;
    }
    return numRead;
}

/// Reads what follows the file type. Memory never grows by the told number of records alone, which comes from
/// a file that may be damaged.
template <class Record, class Reader>
bool readBinary(std::ifstream& in, const char* path, const Reader& reader, std::vector<Record>& records) {
    const std::size_t oldSize = records.size();
    std::uint64_t count = 0;
    if (!readValue(in, count)) return failed(path, " can't be read");
    const std::uint64_t numRead = readRecords(in, count, reader, records);
    // What little is missing becomes zeros; a number far beyond the data is damage.
    if (in.bad() || count > 2 * numRead + blockSize) {
        records.resize(oldSize);
        return failed(path, " can't be read");
    }
    const std::vector<double> zeros(reader.numbersPerRecord());
    records.resize(oldSize + static_cast<std::size_t>(count), reader(zeros, 0));
    return true;
}

}  // namespace

bool writePointsASCII(const char* path, const std::vector<Point2>& points) {
    RoundToNearest nearest;
    std::ofstream out(path);
    out.imbue(std::locale::classic());
    // One more digit than a round trip needs; the files of others look the same.
    out << std::setprecision(18);
    for (const Point2& point : points) out << point.x() << ' ' << point.y() << '\n';
    out.close();
    return out ? true : failed(path, " can't be written");
}

bool writePointsASCII(const char* path, const std::vector<Point2*>& points) {
    return writePointsASCII(path, copyOf(points));
}

bool writePointsBIN(const char* path, std::vector<Point2*>& points) {
    return writeBinary(path, 20, copyOf(points));
}

bool writePointsBIN(const char* path, std::vector<Point2>& points) { return writeBinary(path, 20, points); }

bool writeSegmentsBIN(const char* path, std::vector<Segment2>& segments) {
    return writeBinary(path, 21, segments);
}

bool readPointsBIN(const char* path, std::vector<Point2>& points) {
    std::ifstream in(path, std::ios::binary);
    std::int32_t fileType = 0;
    if (!readValue(in, fileType)) return failed(path, " can't be read");
    if (fileType != 20 && fileType != 30)
        return failed(path, " has wrong filetype " + std::to_string(fileType) + ", expected: 30 or 20");
    return readBinary(in, path, PointReader{fileType == 20 ? 2U : 3U}, points);
}

bool readSegmentsBIN(const char* path, std::vector<Segment2>& segments) {
    std::ifstream in(path, std::ios::binary);
    std::int32_t fileType = 0;
    if (!readValue(in, fileType)) return failed(path, " can't be read");
    if (fileType != 21 && fileType != 31)
        return failed(path, " has wrong file type: " + std::to_string(fileType) + " instead of 31 or 21");
    return readBinary(in, path, SegmentReader{fileType == 21 ? 2U : 3U}, segments);
}

bool readXY(const char* path, std::vector<Point2>& points) {
    RoundToNearest nearest;
    std::ifstream in(path);
    in.imbue(std::locale::classic());
    if (!in) return failed(path, " is unreadable");
    const std::size_t oldSize = points.size();
    for (double x, y; in >> x >> y;) points.emplace_back(x, y);
    // A word that is no number ends the points; so must not what can't be read, such as a folder.
    if (!in.bad()) return true;
    points.resize(oldSize);
    return failed(path, " is unreadable");
}

}  // namespace KELMAR_NORVIK2D
