#include <Visualizer2.h>
#include <mtxTools.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "commands.h"
#include "formats/greyMap.h"

using namespace KELMAR_NORVIK2D;

namespace {

using Lines = std::vector<std::vector<Point2>>;

/// Draws the steps, if pictures are wanted.
class StepPictures {
public:
    explicit StepPictures(const std::string& prefix_) : prefix(prefix_) {}

    void draw(const std::string& step, const FloatMtx& mtx) const {
        if (prefix.empty()) return;
        const std::string path = prefix + step + ".bmp";
        ensureWritable(path);
        float least = 0.0F, greatest = 0.0F;
        mtx.getMinMax(least, greatest);
        if (!writeBMP(path, mtx, 0.0F, greatest)) throw BadOutput(path + ": couldn't be written to its end");
    }

    void draw(const std::string& step, const std::vector<Segment2>& segments) const {
        if (prefix.empty()) return;
        const std::string path = prefix + step + ".ps";
        ensureWritable(path);
        Visualizer2 picture(path);
        picture.addObject(segments, Color(COLORNAME_BLUE, 0.5F, false));
        picture.writeFile();
    }

private:
    std::string prefix;
};

std::size_t countSet(const FloatMtx& mtx) {
    std::size_t numSet = 0;
    for (int y = 0; y < mtx.getHeight(); ++y)
        for (int x = 0; x < mtx.getWidth(); ++x) numSet += mtx.get(x, y) != 0.0F;
    return numSet;
}

/// The edges in a picture, as pixels.
FloatMtx findEdges(const FloatMtx& image, const ImageOptions& options, const StepPictures& pictures) {
    FloatMtx mtx;
    sobelFilter(image, mtx);
    pictures.draw("magnitude", mtx);
    float least = 0.0F, greatest = 0.0F;
    mtx.getMinMax(least, greatest);
    // Where all pixels are equal there are no edges, and each threshold is 0.
    if (greatest == 0.0F) return {image.getWidth(), image.getHeight()};
    thresholdHysteresis(mtx, static_cast<float>(options.low) * greatest,
                        static_cast<float>(options.high) * greatest, mtx);
    pictures.draw("edges", mtx);
    return mtx;
}

/// What becomes of the edges.
struct Found {
    std::size_t numEdgePixels = 0, numLinePixels = 0;
    Lines lines;
    std::vector<Segment2> segments;
};

Found followLines(FloatMtx edges, const ImageOptions& options, const StepPictures& pictures) {
    Found found;
    found.numEdgePixels = countSet(edges);
    thinPixels(edges);
    pictures.draw("thin", edges);
    pruneChains(edges, options.minLength);
    pictures.draw("pruned", edges);
    found.numLinePixels = countSet(edges);
    traceChains(edges, found.lines);
    for (std::vector<Point2>& line : found.lines) simplifyPolyline(line, options.tolerance);
    polylinesToSegments(found.lines, found.segments);
    return found;
}

std::string summaryOf(const FloatMtx& image, const Found& found) {
    const auto isClosed = [](const std::vector<Point2>& line) { return line.front() == line.back(); };
    std::ostringstream text;
    text << "pixels: " << image.getWidth() << " x " << image.getHeight()
         << "\nedge pixels: " << found.numEdgePixels << "\nline pixels: " << found.numLinePixels
         << "\nlines: " << found.lines.size()
         << "\nclosed lines: " << std::count_if(found.lines.begin(), found.lines.end(), isClosed)
         << "\nsegments: " << found.segments.size() << '\n';
    return std::move(text).str();
}

}  // namespace

int meshImage(const Options& options) {
    const FloatMtx image = readGreyMap(options.input);
    const StepPictures pictures(options.image.prefix);
    const Found found = followLines(findEdges(image, options.image, pictures), options.image, pictures);
    if (found.segments.empty()) failFile(options.input, "no lines are found, there is no domain");
    pictures.draw("lines", found.segments);

    Input input;
    input.segments = found.segments;
    input.bEnclosed = !options.bInside;
    Options rest = options;
    if (rest.pictureFile.empty() && !options.image.prefix.empty())
        rest.pictureFile = options.image.prefix + "mesh.ps";
    return meshInput(input, rest, summaryOf(image, found));
}
