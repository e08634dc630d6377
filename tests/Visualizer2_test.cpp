#include "Visualizer2.h"

#include <gtest/gtest.h>

#include "NorvikException.h"
#include "captureOutput.h"
#include "norvikVersion.h"
#include "triangleLinks.h"

using namespace KELMAR_NORVIK2D;

namespace {

const Color black(COLORNAME_BLACK, 0.5F, false);
const Color filling(COLORNAME_BLACK, 0.5F, true);

std::string picturePath() {
    return ::testing::TempDir() + "Visualizer2_" +
           ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".ps";
}

/// The file that results from some additions.
template <class Additions>
std::string pictureOf(const Additions& add) {
    CaptureOutput output;
    {
        Visualizer2 picture(picturePath());
        add(picture);
    }
    return contentOf(picturePath());
}

/// What follows the header.
template <class Additions>
std::string drawingOf(const Additions& add) {
    const std::string content = pictureOf(add);
    return content.substr(content.find("\n", content.find("(y-Range")) + 1);
}

const std::string blackPen = "stroke\n0\t0\t0\tsetrgbcolor\n0.5\tsetlinewidth\n";
const std::string footer = "stroke\nshowpage\n%%Trailer\n";

}  // namespace

TEST(Visualizer2, AOneSegmentFileHasItsExactBytes) {
    const std::string content = pictureOf(
        [](Visualizer2& picture) { picture.addObject(Segment2(Point2(0, 0), Point2(4, 2)), black); });
    EXPECT_EQ(
        content,
        "%!PS-Adobe-1.0\n\t%%Creator: KELMAR PostscriptWriter\n\t%%Title: " + picturePath() +
            "\n\t%%CreationDate: none\n"
            "\t%%DocumentMedia: A4 595 842 0 () ()\n\t%%Orientation: Portrait\n"
            "\t%%Pages: 1\t%%DocumentFonts: Times-Roman Helvetica\n"
            "\t%%EndComments\n\t%%BeginProlog\n\t%%EndProlog\n\t%%Page: Kelmar PostscriptWriter 1\n"
            "0.05\tsetlinewidth\n\t0\t0\t0\tsetrgbcolor\n\t/Times-Roman findfont 17 scalefont\n\tsetfont\n"
            "40\t740\tmoveto\n\t(" +
            picturePath() +
            ")\tshow\n"
            "0.4\t0.4\t0.4\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n"
            "40\t725\tmoveto\n(Kelmar Norvik 2D, " +
            getNorvik2DVersion() +
            ")\tshow\n"
            "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n"
            "40\t705\tmoveto\n(x-Range: [0 - 4] =4)\tshow\n"
            "40\t695\tmoveto\n(y-Range: [0 - 2] =2)\tshow\n" +
            blackPen + "50\t200\tmoveto\n530\t440\tlineto\n" + footer);
}

TEST(Visualizer2, WordsOfTheOtherObjects) {
    const auto drawn = [](const auto& object, const Color& color) {
        return drawingOf([&](Visualizer2& picture) { picture.addObject(object, color); });
    };
    EXPECT_EQ(drawn(Circle2(0, 0, 4), filling),
              blackPen + "530\t440\tmoveto\n290\t440\t240\t0\t360\tarc\ngsave\n  fill\ngrestore\n" + footer);

    Point2 a(0, 0), b(1, 0), c(0, 1);
    Triangle2 triangle;
    setCorners(&triangle, &a, &b, &c);
    const std::string path = "50\t200\tmoveto\n530\t200\tlineto\n50\t680\tlineto\nclosepath\n";
    EXPECT_EQ(drawn(triangle, black), blackPen + path + "stroke\n" + footer);
    EXPECT_EQ(drawn(triangle, filling), blackPen + path +
                                            "gsave\n  fill\ngrestore\n  0.3 0.3 .3 setrgbcolor\n"
                                            "0.5\tsetlinewidth\nstroke\n" +
                                            blackPen + footer);
    EXPECT_EQ(drawn(Edge2(&triangle, 2), black), drawn(Segment2(a, b), black));

    EXPECT_EQ(drawn(Label(Point2(0, 0), "a\nbcd", true, 10), black),
              blackPen +
                  "/Arial findfont 10 scalefont\n setfont\n50\t392\tmoveto\n(a)\tshow\nstroke\n"
                  "50\t382\tmoveto\n(bcd)\tshow\nstroke\n"
                  "48.5\t390.5\tmoveto\n51.5\t393.5\tlineto\n48.5\t393.5\tmoveto\n51.5\t390.5\tlineto\n" +
                  footer);
}

TEST(Visualizer2, DegenerateRangesAreWidened) {
    // A single point comes to lie at the upper right of its box.
    EXPECT_EQ(drawingOf([](Visualizer2& picture) {
                  picture.addObject(Point2(3, 3), black);
              }).rfind(blackPen + "528.5\t678.5\tmoveto\n531.5\t681.5\tlineto\n", 0),
              0U);
    EXPECT_EQ(countOf(pictureOf([](Visualizer2&) {}), "-Range: [-1 - 0] =1)"), 2);
    EXPECT_EQ(
        countOf(pictureOf([](Visualizer2& picture) { picture.addObject(Point2(1e300, 0), black); }), "nan"),
        0);
}

TEST(Visualizer2, PensChangeOnlyWhenNeededAndPathsAreStrokedEvery31Objects) {
    const std::string drawing = drawingOf([](Visualizer2& picture) {
        for (int i = 0; i < 62; ++i) picture.addObject(Point2(i, 0), i < 31 ? black : filling);
    });
    EXPECT_EQ(countOf(drawing, "setrgbcolor"), 2);
    EXPECT_EQ(countOf(drawing, "stroke\n"), 2 + 2 + 1);  // pens, periods, footer
}

TEST(Visualizer2, FilledSegmentsMarkEachEndOnce) {
    const std::string drawing = drawingOf([](Visualizer2& picture) {
        const Point2 a(0, 0), b(1, 0), c(1, 1);
        picture.addObject(std::vector<Segment2>{{a, b}, {b, c}, {c, a}}, filling);
        picture.addObject(Segment2(a, b), Color(COLORNAME_RED, 0.5F, true));
    });
    EXPECT_EQ(countOf(drawing, "lineto"), 4 + 3 * 2);
}

TEST(Visualizer2, HeaderLinesShrinkToFit) {
    const struct {
        int numLines;
        std::size_t length;
        const char *font, *rule;
    } cases[] = {{1, 121, "findfont 6 scalefont", "237\t703\tlineto"},
                 {1, 50, "findfont 10 scalefont", "237\t707\tlineto"},
                 {10, 10, "findfont 8 scalefont", "237\t795\tlineto"},
                 {2, 0, "findfont 12 scalefont", "237\t723\tlineto"}};
    for (const auto& expected : cases) {
        const std::string content = pictureOf([&](Visualizer2& picture) {
            for (int i = 0; i < expected.numLines; ++i)
                picture.addHeaderLine(std::string(expected.length, 'x'));
        });
        EXPECT_EQ(countOf(content, expected.rule), 1) << expected.rule;
        EXPECT_GE(countOf(content, expected.font), 1) << expected.font;
        EXPECT_EQ(countOf(content, std::string(121, 'x')), 0);
    }
}

TEST(Visualizer2, LifeCycle) {
    CaptureOutput output;
    Visualizer2 picture(picturePath());
    EXPECT_EQ(output.out(), "Visualizer2:: Writing \033[0;31m" + picturePath() + "\033[m\n");
    for (int i = 0; i < 11; ++i) picture.addHeaderLine("line " + std::to_string(i));
    EXPECT_TRUE(
        output.told("Visualizer2::addHeaderLine(), WARNING: skipping text [\"line 10\"], maximum number of "
                    "header lines reached"));
    picture.addObject(Triangle2(), black);  // a dead triangle
    picture.addObject(std::vector<Point2*>{nullptr}, black);
    picture.writeFile();
    EXPECT_THROW(picture.addObject(Point2(0, 0), black), NorvikException);
    EXPECT_THROW(picture.addHeaderLine(""), NorvikException);
    picture.writeFile();
    EXPECT_TRUE(output.told("Visualizer2::writeFile(), WARNING: No effect. File has already been closed"));
    EXPECT_NO_THROW(Visualizer2(::testing::TempDir() + "no/such/folder.ps").addObject(Point2(0, 0), black));
}
