#include <array>
#include <charconv>
#include <cstddef>
#include <fstream>
#include <string_view>

#include "Dt2.h"
#include "FlatTable.h"
#include "diagnostics.h"

namespace KELMAR_NORVIK2D {

namespace {

/// A vertex and its place in a file.
struct NumberedVertex {
    const Point2* pVtx = nullptr;
    std::size_t number = 0;
};

struct VertexOf {
    const Point2* operator()(const NumberedVertex& entry) const noexcept { return entry.pVtx; }
};

/// Gathers a file's text and hands it over in large pieces. Numbers look as a stream of this precision in the "C" locale
/// writes them, but for most of the time that takes.
class TextFile {
public:
    explicit TextFile(const std::string& path) : file(path), buffer(capacity, '\0') {}

    bool isOpen() const { return file.is_open(); }

    TextFile& operator<<(std::string_view text) {
        reserve(text.size());
        used += text.copy(&buffer[used], text.size());
        return *this;
    }
    TextFile& operator<<(double value) {
        constexpr int digits = 20;  // more than any double needs to come back the same
        return append(value, std::chars_format::general, digits);
    }
    TextFile& operator<<(std::size_t value) { return append(value); }

    void flush() {
        file.write(buffer.data(), static_cast<std::streamsize>(used));
        used = 0;
    }

private:
    static constexpr std::size_t capacity = 1U << 20;
    /// A sign, 20 digits, a point and "e-308"; leading zeros are four at most.
    static constexpr std::size_t longestNumber = 32;

    template <class Value, class... Format>
    TextFile& append(Value value, Format... format) {
        reserve(longestNumber);
        char* const pBegin = &buffer[used];
        used += static_cast<std::size_t>(std::to_chars(pBegin, pBegin + longestNumber, value, format...).ptr -
                                         pBegin);
        return *this;
    }

    void reserve(std::size_t length) {
        if (used + length > capacity) flush();
    }

    std::ofstream file;
    std::string buffer;
    std::size_t used = 0;
};

}  // namespace

void Dt2::writeObj(const std::string& fileName, const Zone2* pZone) const {
    if (!is2D()) {
        error("Dt2::show()", "The triangulation is not full dimensional yet, no visualization");
        return;
    }
    std::vector<Triangle2*> vTriangles;
    if (pZone != nullptr)
        pZone->getTriangles(vTriangles);
    else
        getTrianglePointers(vTriangles);

    TextFile file(fileName);
    if (!file.isOpen()) return;
    // Vertices are numbered from 1 as the triangles name them. A mesh has about half as many of them as triangles.
    FlatTable<NumberedVertex, AddressHash, VertexOf> mNumbers;
    mNumbers.reserve(vTriangles.size() / 2 + vTriangles.size() / 16);
    std::vector<std::array<std::size_t, 3>> vFaces(vTriangles.size());
    constexpr std::size_t ahead = 8;
    for (std::size_t t = 0; t < vTriangles.size(); ++t) {
        if (t + ahead < vTriangles.size())
            for (int i = 0; i < 3; ++i) mNumbers.prefetch(corner(vTriangles[t + ahead], i));
        for (int i = 0; i < 3; ++i) {
            const Point2* const pVtx = corner(vTriangles[t], i);
            const auto [pEntry, bNew] = mNumbers.insert(pVtx);
            if (bNew) {
                *pEntry = {pVtx, mNumbers.size()};
                file << "v " << pVtx->x() << " " << pVtx->y() << " 0 \n";
            }
            vFaces[t][static_cast<std::size_t>(i)] = pEntry->number;
        }
    }
    for (const auto& [number0, number1, number2] : vFaces)
        file << "f " << number0 << " " << number1 << " " << number2 << "\n";
    file.flush();
}

}  // namespace KELMAR_NORVIK2D
