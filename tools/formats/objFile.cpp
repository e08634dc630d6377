#include "objFile.h"

#include <charconv>
#include <system_error>

#include "FaceSplitter.h"
#include "textFile.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// `7`, `7/2`, `7//3` or `7/2/3`: the first number tells the vertex, counted from 1, or backwards from -1.
std::size_t parseCorner(std::string_view word, std::size_t numPoints, const LineReader& in) {
    const std::string_view number = word.substr(0, word.find('/'));
    std::int64_t index = 0;
    const auto [pEnd, failure] = std::from_chars(number.data(), number.data() + number.size(), index);
    if (failure != std::errc() || pEnd != number.data() + number.size()) in.fail("a corner is no number");
    const auto last = static_cast<std::int64_t>(numPoints);
    if (index < 0) index += last + 1;
    if (index < 1 || index > last)
        in.fail("a corner isn't among the " + std::to_string(numPoints) + " vertices so far");
    return static_cast<std::size_t>(index - 1);
}

}  // namespace

IndexedMesh readObj(const std::string& path) {
    LineReader in(path, contentOf(path), '#');
    IndexedMesh mesh;
    FaceSplitter splitter(mesh);
    std::vector<std::size_t> corners;
    while (in.next()) {
        const std::string_view keyword = in.word();
        if (keyword == "v") {
            const double x = in.number(), y = in.number();
            mesh.points.emplace_back(x, y);
        }
        if (keyword != "f") continue;
        corners.clear();
        for (std::string_view word = in.word(); !word.empty(); word = in.word())
            corners.push_back(parseCorner(word, mesh.points.size(), in));
        if (corners.size() < 3) in.fail("a face has three corners or more");
        if (!splitter.add(corners)) in.fail("the face has no inside, or its sides cross or touch each other");
    }
    if (mesh.triangles.empty()) failFile(path, "holds no faces");
    return mesh;
}
