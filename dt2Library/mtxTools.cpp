#include "mtxTools.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <numbers>
#include <utility>

#include "diagnostics.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

// The matrix

namespace {

/// The number of pixels, which is tested before memory is asked for.
std::size_t countPixels(int width, int height) {
    require(width >= 0 && height >= 0, "width>=0 && height>=0");
    const std::uint64_t numPixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    require(numPixels <= std::vector<float>().max_size(), "width*height<=max_size()");
    return static_cast<std::size_t>(numPixels);
}

}  // namespace

FloatMtx::FloatMtx(int width_, int height_, float value)
    : vPixels(countPixels(width_, height_), value), width(width_), height(height_) {}

FloatMtx::FloatMtx(FloatMtx&& other) noexcept { *this = std::move(other); }

FloatMtx& FloatMtx::operator=(FloatMtx&& other) noexcept {
    vPixels = std::exchange(other.vPixels, {});
    width = std::exchange(other.width, 0);
    height = std::exchange(other.height, 0);
    return *this;
}

std::size_t FloatMtx::indexOf(int x, int y) const {
    require(isInside(x, y), "isInside(x,y)");
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
}

float FloatMtx::get(int x, int y) const { return vPixels[indexOf(x, y)]; }

void FloatMtx::set(int x, int y, float value) { vPixels[indexOf(x, y)] = value; }

void FloatMtx::getMinMax(float& least, float& greatest) const {
    RoundToNearest nearest;
    least = std::numeric_limits<float>::infinity();
    greatest = -least;
    // Comparisons with NaN are false.
    for (const float value : vPixels) {
        if (value < least) least = value;
        if (value > greatest) greatest = value;
    }
    if (least > greatest) least = greatest = 0.0F;
}

bool FloatMtx::operator==(const FloatMtx& other) const {
    RoundToNearest nearest;
    return nearest.keep(width == other.width && height == other.height && vPixels == other.vPixels);
}

// Edges

namespace {

/// The differences of weighted sums of the three pixels on both sides.
struct Gradient {
    double x, y;
};

Gradient gradientAt(const FloatMtx& in, int x, int y) {
    const std::array vX{std::max(x - 1, 0), x, std::min(x + 1, in.getWidth() - 1)};
    const std::array vY{std::max(y - 1, 0), y, std::min(y + 1, in.getHeight() - 1)};
    const auto column = [&](int at) {
        return double{in.get(at, vY[0])} + 2.0 * double{in.get(at, vY[1])} + double{in.get(at, vY[2])};
    };
    const auto row = [&](int at) {
        return double{in.get(vX[0], at)} + 2.0 * double{in.get(vX[1], at)} + double{in.get(vX[2], at)};
    };
    return {column(vX[2]) - column(vX[0]), row(vY[2]) - row(vY[0])};
}

float directionOf(const Gradient& gradient) {
    if (gradient.x == 0.0 && gradient.y == 0.0) return 0.0F;
    return static_cast<float>(std::atan2(gradient.y, gradient.x) * (180.0 / std::numbers::pi));
}

}  // namespace

void sobelFilter(const FloatMtx& in, FloatMtx& magnitude, FloatMtx* pDirectionDegree) {
    RoundToNearest nearest;
    require(pDirectionDegree != &magnitude, "pDirectionDegree!=&magnitude");
    const int width = in.getWidth(), height = in.getHeight();
    FloatMtx lengths(width, height), directions;
    if (pDirectionDegree != nullptr) directions = lengths;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Gradient gradient = gradientAt(in, x, y);
            lengths.set(x, y, static_cast<float>(std::hypot(gradient.x, gradient.y)));
            if (pDirectionDegree != nullptr) directions.set(x, y, directionOf(gradient));
        }
    magnitude = std::move(lengths);
    if (pDirectionDegree != nullptr) *pDirectionDegree = std::move(directions);
}

void thresholdHysteresis(const FloatMtx& in, float low, float high, FloatMtx& out) {
    RoundToNearest nearest;
    // What has `low` then has `high` as well.
    if (low > high) warning("thresholdHysteresis()", "low exceeds high, high counts for both");
    FloatMtx edges(in.getWidth(), in.getHeight());
    std::vector<std::pair<int, int>> vOpen;
    const auto take = [&](int x, int y, float least) {
        if (!in.isInside(x, y) || edges.get(x, y) != 0.0F || !(in.get(x, y) >= least)) return;
        edges.set(x, y, 1.0F);
        vOpen.emplace_back(x, y);
    };
    for (int y = 0; y < in.getHeight(); ++y)
        for (int x = 0; x < in.getWidth(); ++x) {
            take(x, y, high);
            while (!vOpen.empty()) {
                const std::pair<int, int> at = vOpen.back();
                vOpen.pop_back();
                for (const int dy : {-1, 0, 1})
                    for (const int dx : {-1, 0, 1}) take(at.first + dx, at.second + dy, low);
            }
        }
    out = std::move(edges);
}

// Bitmaps

namespace {

constexpr std::uint32_t headerSize = 54;

/// Fields are written byte by byte, least first, on any machine.
void append(std::string& bytes, std::uint32_t value, int numBytes) {
    for (int i = 0; i < numBytes; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
}

std::string makeHeader(const FloatMtx& mtx, std::uint32_t numPixelBytes) {
    constexpr std::uint32_t pixelsPerMetre = 2835;  // 72 an inch
    std::string header = "BM";
    append(header, headerSize + numPixelBytes, 4);
    append(header, 0, 4);
    append(header, headerSize, 4);
    append(header, 40, 4);  // the rest of the header
    append(header, static_cast<std::uint32_t>(mtx.getWidth()), 4);
    append(header, static_cast<std::uint32_t>(mtx.getHeight()), 4);  // positive: the lowest row comes first
    append(header, 1, 2);                                            // planes
    append(header, 24, 2);
    append(header, 0, 4);  // not compressed
    append(header, numPixelBytes, 4);
    append(header, pixelsPerMetre, 4);
    append(header, pixelsPerMetre, 4);
    append(header, 0, 4);  // no palette
    append(header, 0, 4);
    return header;
}

char greyOf(float value, float minVal, float maxVal) {
    if (minVal == maxVal) return static_cast<char>(value > minVal ? 255 : 0);
    const double share = (double{value} - double{minVal}) / (double{maxVal} - double{minVal});
    if (!(share > 0.0)) return 0;
    return static_cast<char>(std::lround(std::min(share, 1.0) * 255.0));
}

bool writePixels(const std::string& path, const FloatMtx& mtx, float minVal, float maxVal) {
    const std::uint64_t rowSize = (3 * static_cast<std::uint64_t>(mtx.getWidth()) + 3) / 4 * 4;
    const std::uint64_t numPixelBytes = rowSize * static_cast<std::uint64_t>(mtx.getHeight());
    if (numPixelBytes > std::numeric_limits<std::uint32_t>::max() - headerSize) return false;
    std::ofstream out(path, std::ios::binary);
    out << makeHeader(mtx, static_cast<std::uint32_t>(numPixelBytes));
    std::string row(static_cast<std::size_t>(rowSize), '\0');
    for (int y = 0; y < mtx.getHeight() && out; ++y) {
        for (int x = 0; x < mtx.getWidth(); ++x)
            std::fill_n(row.begin() + std::ptrdiff_t{3} * x, 3, greyOf(mtx.get(x, y), minVal, maxVal));
        out << row;
    }
    // Closing writes what is still buffered: a full disk may only show here.
    out.close();
    return static_cast<bool>(out);
}

}  // namespace

bool writeBMP(const std::string& path, const FloatMtx& mtx, float minVal, float maxVal) {
    RoundToNearest nearest;
    if (writePixels(path, mtx, minVal, maxVal)) return true;
    print(path + " can't be written\n");
    return false;
}

}  // namespace KELMAR_NORVIK2D
