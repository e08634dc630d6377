#include "Visualizer2.h"

#include <algorithm>
#include <atomic>
#include <locale>
#include <new>

#include "Vector2.h"
#include "diagnostics.h"
#include "norvikVersion.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

namespace {

// The plot's place on the page, in PostScript points.
constexpr double plotWidth = 480.0;
constexpr double plotLeft = 50.0;
constexpr double plotBottom = 200.0;

constexpr double pointSize = 1.5;
constexpr std::size_t maxHeaderLines = 10;
constexpr std::size_t maxHeaderLength = 120;

/// An interpreter's path is limited: it is stroked after so many objects.
constexpr int strokePeriod = 31;
constexpr unsigned circleStrokePeriod = 50;

/// Counts over all pictures of the process, so a picture's bytes depend on the circles drawn before.
std::atomic<unsigned> numCirclesWritten{0};

/// The lines of a text, of which there is always at least one.
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    lines.push_back(text.substr(start));
    return lines;
}

/// The size at which so many lines, the longest of this length, fit into their block.
int headerFontSize(int numLines, int maxLength) {
    // The block is about 100 points high, and 500 divided by the size of the font is what its width holds.
    const int heightLimit = std::min(100 / numLines - 2, 12);
    if (maxLength == 0 || 500 / maxLength >= heightLimit) return heightLimit;
    return std::max(500 / maxLength, 6);
}

}  // namespace

Visualizer2::Visualizer2(const std::string& fileName_) : out(fileName_), fileName(fileName_) {
    out.imbue(std::locale::classic());
    print("Visualizer2:: Writing \033[0;31m" + fileName + "\033[m\n");
}

Visualizer2::~Visualizer2() {
    try {
        if (!bFileClosed) writeFile();
    } catch (const std::bad_alloc&) {
        // A picture that isn't whole is better than a process that ends.
    }
}

void Visualizer2::addObject(const Point2& point, const Color& color) {
    require(!bFileClosed, "!bFileClosed");
    vPoints.emplace_back(point, color);
}

void Visualizer2::addObject(const Segment2& segment, const Color& color) {
    require(!bFileClosed, "!bFileClosed");
    vSegments.emplace_back(segment, color);
}

void Visualizer2::addObject(const Circle2& circle, const Color& color) {
    require(!bFileClosed, "!bFileClosed");
    vCircles.emplace_back(circle, color);
}

void Visualizer2::addObject(const Triangle2& triangle, const Color& color) {
    require(!bFileClosed, "!bFileClosed");
    if (!isDead(&triangle)) vTriangles.emplace_back(triangle, color);
}

void Visualizer2::addObject(const Edge2& edge, const Color& color) {
    addObject(Segment2(*edge.getSrc(), *edge.getTrg()), color);
}

void Visualizer2::addObject(const Label& label, const Color& color) {
    require(!bFileClosed, "!bFileClosed");
    vLabels.emplace_back(label, color);
}

void Visualizer2::addObject(const std::vector<Point2>& points, const Color& color) {
    for (const Point2& point : points) addObject(point, color);
}

void Visualizer2::addObject(const std::vector<Point2*>& points, const Color& color) {
    for (const Point2* pPoint : points)
        if (pPoint != nullptr) addObject(*pPoint, color);
}

void Visualizer2::addObject(const std::vector<Segment2>& segments, const Color& color) {
    for (const Segment2& segment : segments) addObject(segment, color);
}

void Visualizer2::addObject(const std::vector<Edge2>& edges, const Color& color) {
    for (const Edge2& edge : edges) addObject(edge, color);
}

void Visualizer2::addObject(const std::vector<Triangle2>& triangles, const Color& color) {
    for (const Triangle2& triangle : triangles) addObject(triangle, color);
}

void Visualizer2::addObject(const std::vector<Triangle2*>& triangles, const Color& color) {
    for (const Triangle2* pT : triangles)
        if (pT != nullptr) addObject(*pT, color);
}

void Visualizer2::addHeaderLine(const std::string& line) {
    require(!bFileClosed, "!bFileClosed");
    if (vHeaderLines.size() >= maxHeaderLines) {
        warning("Visualizer2::addHeaderLine()",
                "skipping text [\"" + line + "\"], maximum number of header lines reached");
        return;
    }
    vHeaderLines.push_back(line);
}

void Visualizer2::writeFile() {
    if (bFileClosed) {
        warning("Visualizer2::writeFile()", "No effect. File has already been closed");
        return;
    }
    RoundToNearest nearest;
    setRange();
    writeHeader();
    writeTriangles();
    writeSegments();
    writeCircles();
    writePoints();
    writeLabels();
    writeFooter();
    out.close();
    bFileClosed = true;
}

/// The box of all objects, which the scale is made from.
void Visualizer2::setRange() {
    for (const auto& [segment, color] : vSegments) {
        worldBox.add(segment.getSrc());
        worldBox.add(segment.getTrg());
    }
    for (const auto& [circle, color] : vCircles) {
        const Vector2 radius(circle.getRadius(), circle.getRadius());
        worldBox.add(circle.getCenter() - radius);
        worldBox.add(circle.getCenter() + radius);
    }
    for (const auto& [point, color] : vPoints) worldBox.add(point);
    for (const auto& [triangle, color] : vTriangles)
        for (int i = 0; i < 3; ++i) worldBox.add(*corner(&triangle, i));
    for (const auto& [label, color] : vLabels) {
        // The width of a text isn't known here; half a unit of the world for a letter is an estimate.
        const auto textLength = static_cast<double>(std::min<std::size_t>(label.getText().size(), 20));
        worldBox.add(label.getPosition());
        worldBox.add(label.getPosition() + Vector2(0.5 * textLength, 0.0));
    }
    if (!worldBox.isValid()) worldBox.add(Point2(0.0, 0.0));

    // Without an extent there is no scale. One step is enough but for coordinates that are so large that it
    // vanishes.
    for (const double step : {-1.0, 1.0})
        if (worldBox.getMaxX() - worldBox.getMinX() == 0.0)
            worldBox.add(Point2(worldBox.getMinX() + step, worldBox.getMinY()));
    for (const double step : {-1.0, 1.0})
        if (worldBox.getMaxY() - worldBox.getMinY() == 0.0)
            worldBox.add(Point2(worldBox.getMinX(), worldBox.getMinY() + step));
}

/// One factor for both axes, so that the plot keeps its proportions.
double Visualizer2::scaledDouble(double distance) const {
    const double range =
        std::max(worldBox.getMaxX() - worldBox.getMinX(), worldBox.getMaxY() - worldBox.getMinY());
    return range == 0.0 ? 0.0 : plotWidth * distance / range;
}

Point2 Visualizer2::scaledPoint(const Point2& point) const {
    return {scaledDouble(point.x() - worldBox.getMinX()) + plotLeft,
            scaledDouble(point.y() - worldBox.getMinY()) + plotBottom};
}

// The words, tabs and line ends below are the format of these files and compared byte by byte; the file name
// goes in unescaped.
void Visualizer2::writeHeader() {
    out << "%!PS-Adobe-1.0\n\t%%Creator: KELMAR PostscriptWriter\n\t%%Title: " << fileName << "\n"
        << "\t%%CreationDate: none\n"
        << "\t%%DocumentMedia: A4 595 842 0 () ()\n\t%%Orientation: Portrait\n"
        << "\t%%Pages: 1\t%%DocumentFonts: Times-Roman "
           "Helvetica\n\t%%EndComments\n\t%%BeginProlog\n\t%%EndProlog\n"
        << "\t%%Page: Kelmar PostscriptWriter 1\n"
        << "0.05\tsetlinewidth\n\t0\t0\t0\tsetrgbcolor\n\t/Times-Roman findfont 17 scalefont\n\tsetfont\n"
        << "40\t740\tmoveto\n\t(" << fileName << ")\tshow\n"
        << "0.4\t0.4\t0.4\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n"
        << "40\t725\tmoveto\n(Kelmar Norvik 2D, " << getNorvik2DVersion() << ")\tshow\n"
        << "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n";

    double minX, maxX, minY, maxY;
    worldBox.getBounds(minX, maxX, minY, maxY);
    out << "40\t705\tmoveto\n(x-Range: [" << minX << " - " << maxX << "] =" << maxX - minX << ")\tshow\n"
        << "40\t695\tmoveto\n(y-Range: [" << minY << " - " << maxY << "] =" << maxY - minY << ")\tshow\n";
    if (!vHeaderLines.empty()) writeHeaderLines();
}

void Visualizer2::writeHeaderLines() {
    std::size_t maxLength = 0;
    for (const std::string& line : vHeaderLines) maxLength = std::max(maxLength, line.size());
    const int numLines = static_cast<int>(vHeaderLines.size());
    const int fontSize = headerFontSize(numLines, static_cast<int>(maxLength));
    const int pitch = fontSize + 2;

    out << "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont " << fontSize << " scalefont\n\tsetfont\n";
    // From the top line down, so that the last one stands next to the ranges.
    int y = (numLines - 1) * pitch + 695;
    for (const std::string& line : vHeaderLines) {
        out << "240\t" << y << "\tmoveto\n(" << line.substr(0, maxHeaderLength) << ")\tshow\n";
        y -= pitch;
    }
    // A rule to the left of the block and one below it.
    out << "237\t692\tmoveto\n237\t" << numLines * pitch + 695 << "\tlineto\n"
        << "237\t692\tmoveto\n570\t692\tlineto\n";
}

void Visualizer2::writeTriangles() {
    for (const auto& [triangle, color] : vTriangles) {
        usePen(color);
        writeTriangle(triangle, bFill, color.width);
        periodicStroke();
    }
}

void Visualizer2::writeSegments() {
    Colored<Point2> ends;
    for (const auto& [segment, color] : vSegments) {
        usePen(color);
        writeLine(segment.getSrc(), segment.getTrg());
        periodicStroke();
        if (!color.fill) continue;
        ends.emplace_back(segment.getSrc(), color);
        ends.emplace_back(segment.getTrg(), color);
    }
    writeSegmentEnds(ends);
}

/// One mark for each position, in the least of the pens that meet there.
void Visualizer2::writeSegmentEnds(Colored<Point2>& ends) {
    const auto isSamePosition = [](const auto& a, const auto& b) { return a.first == b.first; };
    std::sort(ends.begin(), ends.end());
    ends.erase(std::unique(ends.begin(), ends.end(), isSamePosition), ends.end());
    for (const auto& [point, color] : ends) {
        usePen(color);
        writePoint(point, std::max(pointSize, 2.0 * static_cast<double>(color.width)));
        periodicStroke();
    }
}

void Visualizer2::writeCircles() {
    for (const auto& [circle, color] : vCircles) {
        usePen(color);
        writeCircle(circle.getCenter(), circle.getRadius(), color.fill);
        periodicStroke();
    }
}

void Visualizer2::writePoints() {
    for (const auto& [point, color] : vPoints) {
        usePen(color);
        writePoint(point, pointSize);
        periodicStroke();
    }
}

void Visualizer2::writeLabels() {
    for (const auto& [label, color] : vLabels) {
        usePen(color);
        writeLabel(label);
        periodicStroke();
    }
}

void Visualizer2::writeFooter() { out << "stroke\nshowpage\n%%Trailer\n"; }

void Visualizer2::writePosition(double x, double y, const char* word) {
    out << x << "\t" << y << "\t" << word << "\n";
}

void Visualizer2::writeLine(const Point2& src, const Point2& trg) {
    const Point2 from = scaledPoint(src);
    const Point2 to = scaledPoint(trg);
    writePosition(from.x(), from.y(), "moveto");
    writePosition(to.x(), to.y(), "lineto");
}

/// A cross of two diagonals.
void Visualizer2::writePoint(const Point2& point, double size) {
    const Point2 position = scaledPoint(point);
    const double x = position.x(), y = position.y();
    writePosition(x - size, y - size, "moveto");
    writePosition(x + size, y + size, "lineto");
    writePosition(x - size, y + size, "moveto");
    writePosition(x + size, y - size, "lineto");
}

/// The path begins at the arc's start: from the current point a line would be drawn to it otherwise.
void Visualizer2::writeCircle(const Point2& center, double radius, bool bFilled) {
    const Point2 position = scaledPoint(center);
    const double r = scaledDouble(radius);
    writePosition(position.x() + r, position.y(), "moveto");
    out << position.x() << "\t" << position.y() << "\t" << r << "\t0\t360\tarc\n";
    if (bFilled) writeFilling();
    if (++numCirclesWritten % circleStrokePeriod == 0) out << "stroke\n";
}

void Visualizer2::writeTriangle(const Triangle2& triangle, bool bFilled, float width) {
    for (int i = 0; i < 3; ++i) {
        const Point2 position = scaledPoint(*corner(&triangle, i));
        writePosition(position.x(), position.y(), i == 0 ? "moveto" : "lineto");
    }
    out << "closepath\n";
    if (!bFilled) {
        out << "stroke\n";
        return;
    }
    writeFilling();
    if (width == 0.0F) return;
    // A gray outline around the filling; the pen is set anew behind it.
    out << "  0.3 0.3 .3 setrgbcolor\n" << width << "\tsetlinewidth\nstroke\n";
    changeColor(currentPen);
}

/// Fills the current path and keeps it for the outline.
void Visualizer2::writeFilling() { out << "gsave\n  fill\ngrestore\n"; }

/// Each line one font size below the one before.
void Visualizer2::writeLabel(const Label& label) {
    out << "/Arial findfont " << label.getFontSize() << " scalefont\n setfont\n";
    const Point2 position = scaledPoint(label.getPosition());
    double y = position.y();
    for (const std::string& line : linesOf(label.getText())) {
        writePosition(position.x(), y, "moveto");
        out << "(" << line << ")\tshow\nstroke\n";
        y -= label.getFontSize();
    }
    if (label.hasMark()) writePoint(label.getPosition(), pointSize);
}

void Visualizer2::usePen(const Color& color) {
    if (color != currentPen) changeColor(color);
}

/// What was drawn so far is stroked first: the page takes the colour in force when a path is stroked.
void Visualizer2::changeColor(const Color& color) {
    out << "stroke\n"
        << color.red << "\t" << color.green << "\t" << color.blue << "\tsetrgbcolor\n"
        << color.width << "\tsetlinewidth\n";
    currentPen = color;
    bFill = color.fill;
}

/// Counts an object.
void Visualizer2::periodicStroke() {
    if (++strokeCounter < strokePeriod) return;
    strokeCounter = 0;
    out << "stroke\n";
}

}  // namespace KELMAR_NORVIK2D
