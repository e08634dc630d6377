#include "greyMap.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "../numbers.h"
#include "textFile.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr std::string_view blanks = " \t\n\v\f\r";
constexpr int greatestValue = 65535;

class GreyMapReader {
public:
    explicit GreyMapReader(const std::string& path_) : path(path_), content(contentOf(path)), left(content) {}

    FloatMtx read() {
        const bool bBinary = left.starts_with("P5");
        if (!bBinary && !left.starts_with("P2")) failFile(path, "is no portable greymap, P2 or P5");
        left.remove_prefix(2);
        width = number("width", 1, std::numeric_limits<int>::max());
        height = number("height", 1, std::numeric_limits<int>::max());
        maxValue = number("greatest value", 1, greatestValue);
        return bBinary ? readBytes() : readText();
    }

private:
    /// The next word, behind comments; empty at the end.
    std::string_view word() {
        for (;;) {
            left.remove_prefix(std::min(left.find_first_not_of(blanks), left.size()));
            if (!left.starts_with('#')) break;
            left.remove_prefix(std::min(left.find('\n'), left.size()));
        }
        const std::string_view found = left.substr(0, left.find_first_of(" \t\n\v\f\r#"));
        left.remove_prefix(found.size());
        return found;
    }

    int number(const std::string& name, int least, int greatest) {
        const std::string_view found = word();
        if (found.empty()) failFile(path, "ends where its " + name + " should follow");
        try {
            const std::int64_t value = parseInteger(found);
            if (least <= value && value <= greatest) return static_cast<int>(value);
        } catch (const BadNumber& reason) {
            failFile(path, "its " + name + ": " + reason.what());
        }
        failFile(path, "its " + name + " is " + std::string(found) + ", which isn't from " +
                           std::to_string(least) + " to " + std::to_string(greatest));
    }

    std::uint64_t countPixels() const {
        return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    }

    /// Memory isn't asked for on the word of a header alone.
    [[noreturn]] void failShort(std::uint64_t numHeld) const {
        failFile(path, "holds " + std::to_string(numHeld) + " pixels, its header tells " +
                           std::to_string(countPixels()));
    }

    template <class NextPixel>
    FloatMtx fill(NextPixel next) const {
        FloatMtx mtx(width, height);
        for (int y = height - 1; y >= 0; --y)
            for (int x = 0; x < width; ++x) mtx.set(x, y, static_cast<float>(next()));
        return mtx;
    }

    FloatMtx readText() {
        // A blank and a digit a pixel at least.
        if (countPixels() > left.size() / 2) failShort(countWords());
        FloatMtx mtx = fill([this] { return number("next pixel", 0, maxValue); });
        if (!word().empty()) failFile(path, "goes on behind its last pixel");
        return mtx;
    }

    std::uint64_t countWords() {
        std::uint64_t numWords = 0;
        while (!word().empty()) ++numWords;
        return numWords;
    }

    FloatMtx readBytes() {
        // One blank, and no comment: what follows may be any bytes.
        if (!left.empty()) left.remove_prefix(1);
        const std::size_t pixelSize = maxValue > 255 ? 2 : 1;
        if (countPixels() > left.size() / pixelSize) failShort(left.size() / pixelSize);
        if (countPixels() * pixelSize < left.size()) failFile(path, "goes on behind its last pixel");
        return fill([this, pixelSize] { return takePixel(pixelSize); });
    }

    /// Of two bytes the higher one comes first.
    int takePixel(std::size_t pixelSize) {
        int value = 0;
        for (const char byte : left.substr(0, pixelSize))
            value = value * 256 + static_cast<unsigned char>(byte);
        left.remove_prefix(pixelSize);
        if (value > maxValue)
            failFile(path, "a pixel is " + std::to_string(value) + ", more than its greatest value, " +
                               std::to_string(maxValue));
        return value;
    }

    std::string path;
    std::string content;
    std::string_view left;
    int width = 0, height = 0, maxValue = 0;
};

}  // namespace

FloatMtx readGreyMap(const std::string& path) { return GreyMapReader(path).read(); }
