#pragma once

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "Bbox2.h"
#include "Circle2.h"
#include "Color.h"
#include "Edge2.h"
#include "Label.h"
#include "Point2.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// Writes one PostScript page (A4): a plot of objects in world coordinates under a heading, with up to ten
/// lines of text on top. Objects are collected and all written at once, because the scale depends on all of
/// them. Triangles are drawn first, then segments, circles, points and labels, each in the order of adding.
///
/// A path that can't be written isn't reported: a picture never stops the algorithm that draws it.
class NORVIK2D_EXPORT Visualizer2 {
public:
    /// Opens the file and tells its name on standard output.
    explicit Visualizer2(const std::string& fileName_);
    /// Writes the file if that hasn't been done yet.
    ~Visualizer2();
    Visualizer2(const Visualizer2&) = delete;
    Visualizer2& operator=(const Visualizer2&) = delete;

    /// Each adds a copy of the object. A triangle's corners stay pointers: the points must outlive
    /// writeFile(). Dead triangles and null pointers are left out. A segment or edge whose pen fills gets
    /// point marks at its ends. After writeFile() an assertion fails (NorvikException).
    void addObject(const Point2& point, const Color& color);
    void addObject(const Segment2& segment, const Color& color);
    void addObject(const Circle2& circle, const Color& color);
    void addObject(const Triangle2& triangle, const Color& color);
    void addObject(const Edge2& edge, const Color& color);
    void addObject(const Label& label, const Color& color);
    void addObject(const std::vector<Point2>& points, const Color& color);
    void addObject(const std::vector<Point2*>& points, const Color& color);
    void addObject(const std::vector<Segment2>& segments, const Color& color);
    void addObject(const std::vector<Edge2>& edges, const Color& color);
    void addObject(const std::vector<Triangle2>& triangles, const Color& color);
    void addObject(const std::vector<Triangle2*>& triangles, const Color& color);

    /// Adds a line of text above the plot, cut to 120 characters; an eleventh one is refused with a warning.
    /// After writeFile() an assertion fails (NorvikException).
    void addHeaderLine(const std::string& line);

    /// Writes and closes the file. A second call only gives a warning.
    void writeFile();

private:
    template <class T>
    using Colored = std::vector<std::pair<T, Color>>;

    // World coordinates to page coordinates.
    void setRange();
    double scaledDouble(double distance) const;
    Point2 scaledPoint(const Point2& point) const;

    // The parts of the file in the order of writing.
    void writeHeader();
    void writeHeaderLines();
    void writeTriangles();
    void writeSegments();
    void writeSegmentEnds(Colored<Point2>& ends);
    void writeCircles();
    void writePoints();
    void writeLabels();
    void writeFooter();

    // The drawing words.
    void writePosition(double x, double y, const char* word);
    void writeLine(const Point2& src, const Point2& trg);
    void writePoint(const Point2& point, double size);
    void writeCircle(const Point2& center, double radius, bool bFilled);
    void writeTriangle(const Triangle2& triangle, bool bFilled, float width);
    void writeLabel(const Label& label);
    void writeFilling();
    void usePen(const Color& color);
    void changeColor(const Color& color);
    void periodicStroke();

    std::ofstream out;
    Colored<Segment2> vSegments;
    Colored<Circle2> vCircles;
    Colored<Point2> vPoints;
    Colored<Triangle2> vTriangles;
    Colored<Label> vLabels;
    int strokeCounter = 0;
    Bbox2 worldBox;
    bool bFill = false;
    /// Starts as a pen that no object has, so that the first object always writes its colour.
    Color currentPen{-1.0, -1.0, 1.0, -1.0, false};
    std::string fileName;
    std::vector<std::string> vHeaderLines;
    bool bFileClosed = false;
};

}  // namespace KELMAR_NORVIK2D
