#include "Visualizer2.h"

#include "Circle2.h"
#include "Color.h"
#include "Edge2.h"
#include "KivoException.h"
#include "Label.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "output/PsWriter.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <locale>
#include <sstream>
#include <thread>

using namespace TESK_KIVO2D;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
const Color thinBlack(0, 0, 0, 0, false); // the colour that a page starts with
const Color red(1, 0, 0, 0.5, false);

int countOf(const std::string& part, const std::string& text) {
    int num = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++num;
    return num;
}

struct Drawn {
    std::string file;
    std::string messages;
};

// The whole file that the function's drawing makes, and what the library said.
template<class Draw>
Drawn draw(Draw drawOnto, const std::string& path = pathOf("drawing.ps")) {
    CapturedMessages messages;
    {
        Visualizer2 vis(path);
        drawOnto(vis);
        vis.writeFile();
    }
    return {readFile(path), messages.output()};
}

// The part behind the ranges, up to the trailer.
std::string bodyOf(const std::string& file) {
    const std::size_t begin = file.find(")\tshow\n", file.find("(y-Range")) + 7;
    const std::string trailer = "stroke\nshowpage\n%%Trailer\n";
    EXPECT_EQ(file.size() - trailer.size(), file.rfind(trailer));
    return file.substr(begin, file.size() - trailer.size() - begin);
}

template<class Draw>
std::string drawBody(Draw drawOnto) {
    return bodyOf(draw(drawOnto).file);
}

// Makes the transform simple: (x, y) is drawn at (50 + x, 200 + y).
void addFrame(Visualizer2& vis) { vis.addObject(Segment2({0, 0}, {480, 480}), thinBlack); }
const std::string frame = "50\t200\tmoveto\n530\t680\tlineto\n";

const std::string warning = "      [Kivo2D-Message] Visualizer2::";

} // namespace

TEST(Visualizer2, wholeFileByteForByte) {
    const std::string path = pathOf("whole(1).ps");
    const std::string escaped = testing::TempDir() + "whole\\(1\\).ps";
    Point2 a(0, 0), b(3, 0), c(0, 4);
    Triangle2 triangle;
    triangle.setProperties(&a, &b, &c);
    const Drawn drawn = draw(
        [&](Visualizer2& vis) {
            vis.addHeaderLine("first");
            vis.addHeaderLine("second (2)");
            vis.addObject(Label(Point2(1, 1), "up\n\\down", true, 12), Color(CBLUE, 1));
            vis.addObject(Point2(-1, 0), red);
            vis.addObject(Circle2(1, 1, 1), Color(CGREEN, 1, true));
            vis.addObject(Segment2({0, 0}, {1, 2}), Color(CRED, 1, true));
            vis.addObject(Edge2(&triangle, 0), red);
            vis.addObject(triangle, Color(0.94, 0.9, 0.55, 0.01, true));
        },
        path);
    EXPECT_EQ(
        "%!PS-Adobe-1.0\n\t%%Creator: TESK PostscriptWriter\n\t%%Title: " + path +
            "\n\t%%CreationDate: none\n\t%%DocumentMedia: A4 595 842 0 () ()\n\t%%Orientation: Portrait\n"
            "\t%%Pages: 1\t%%DocumentFonts: Times-Roman Helvetica\n\t%%EndComments\n\t%%BeginProlog\n"
            "\t%%EndProlog\n\t%%Page: Tesk PostscriptWriter 1\n"
            "0.05\tsetlinewidth\n\t0\t0\t0\tsetrgbcolor\n\t/Times-Roman findfont 17 scalefont\n\tsetfont\n"
            "40\t740\tmoveto\n\t(" +
            escaped +
            ")\tshow\n"
            "0.4\t0.4\t0.4\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n"
            "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n"
            "40\t705\tmoveto\n(x-Range: [-1 - 3] =4)\tshow\n"
            "40\t695\tmoveto\n(y-Range: [0 - 4] =4)\tshow\n"
            "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont 12 scalefont\n\tsetfont\n"
            "240\t709\tmoveto\n(first)\tshow\n"
            "240\t695\tmoveto\n(second \\(2\\))\tshow\n"
            "237\t692\tmoveto\n237\t723\tlineto\n237\t692\tmoveto\n570\t692\tlineto\n570\t692\tlineto\n"
            // the triangle
            "stroke\n0.94\t0.9\t0.55\tsetrgbcolor\n0.01\tsetlinewidth\n"
            "170\t200\tmoveto\n530\t200\tlineto\n170\t680\tlineto\nclosepath\n"
            "gsave\n  fill\ngrestore\n  0.3 0.3 .3 setrgbcolor\n0.01\tsetlinewidth\nstroke\n"
            "stroke\n0.94\t0.9\t0.55\tsetrgbcolor\n0.01\tsetlinewidth\n"
            // the segment, the edge, the marks of the segment
            "stroke\n1\t0\t0\tsetrgbcolor\n1\tsetlinewidth\n170\t200\tmoveto\n290\t440\tlineto\n"
            "stroke\n1\t0\t0\tsetrgbcolor\n0.5\tsetlinewidth\n530\t200\tmoveto\n170\t680\tlineto\n"
            "stroke\n1\t0\t0\tsetrgbcolor\n1\tsetlinewidth\n"
            "168\t198\tmoveto\n172\t202\tlineto\n168\t202\tmoveto\n172\t198\tlineto\n"
            "288\t438\tmoveto\n292\t442\tlineto\n288\t442\tmoveto\n292\t438\tlineto\n"
            // the circle
            "stroke\n0\t1\t0\tsetrgbcolor\n1\tsetlinewidth\n"
            "410\t320\tmoveto\n290\t320\t120\t0\t360\tarc\ngsave\n  fill\ngrestore\n"
            // the point
            "stroke\n1\t0\t0\tsetrgbcolor\n0.5\tsetlinewidth\n"
            "48.5\t198.5\tmoveto\n51.5\t201.5\tlineto\n48.5\t201.5\tmoveto\n51.5\t198.5\tlineto\n"
            // the label
            "stroke\n0\t0\t1\tsetrgbcolor\n1\tsetlinewidth\n"
            "/Arial findfont 12 scalefont\n setfont\n"
            "290\t320\tmoveto\n(up)\tshow\nstroke\n290\t308\tmoveto\n(\\\\down)\tshow\nstroke\n"
            "288.5\t318.5\tmoveto\n291.5\t321.5\tlineto\n288.5\t321.5\tmoveto\n291.5\t318.5\tlineto\n"
            "stroke\nshowpage\n%%Trailer\n",
        drawn.file);
    EXPECT_EQ("Visualizer2:: Writing " + path + "\n", drawn.messages);
}

TEST(Visualizer2, linesAreStrokedAfter31Items) {
    const std::string one = "50\t200\tmoveto\n530\t680\tlineto\n";
    std::string expected;
    for (int i = 1; i <= 70; ++i)
        expected += i % 31 == 0 ? one + "stroke\n" : one;
    EXPECT_EQ(expected, drawBody([](Visualizer2& vis) {
                  vis.addObject(std::vector<Segment2>(70, Segment2({0, 0}, {1, 1})), thinBlack);
              }));
}

TEST(Visualizer2, colorsAreSwitchedOnlyWhereTheyDifferInAnyField) {
    const std::string body = drawBody([](Visualizer2& vis) {
        addFrame(vis);
        for (const Color& color : {red, red, Color(1, 0, 0, 0.5, true), Color(1, 0, 0, 0.25, true), red})
            vis.addObject(Point2(1, 1), color);
    });
    EXPECT_EQ(4, countOf("setrgbcolor", body));
    EXPECT_EQ(4, countOf("stroke\n1\t0\t0\tsetrgbcolor\n0.", body));
}

TEST(Visualizer2, everyFiftiethCircleIsStrokedAndTheNextDrawingCountsAnew) {
    const auto drawCircles = [](Visualizer2& vis) {
        for (int i = 0; i < 120; ++i)
            vis.addObject(Circle2(0, 0, 1), thinBlack);
    };
    const std::string circle = "530\t440\tmoveto\n290\t440\t240\t0\t360\tarc\n";
    std::string expected;
    for (int i = 1; i <= 120; ++i)
        expected += circle + (i % 50 == 0 ? "stroke\n" : "") + (i % 31 == 0 ? "stroke\n" : "");
    EXPECT_EQ(expected, drawBody(drawCircles));
    EXPECT_EQ(expected, drawBody(drawCircles));
}

TEST(Visualizer2, filledTrianglesWithoutWidthHaveNoOutlineAndUnfilledOnesAreStroked) {
    Point2 a(0, 0), b(480, 0), c(0, 480);
    Triangle2 t;
    t.setProperties(&a, &b, &c);
    const std::string path = "50\t200\tmoveto\n530\t200\tlineto\n50\t680\tlineto\nclosepath\n";
    EXPECT_EQ("stroke\n0\t0\t1\tsetrgbcolor\n0\tsetlinewidth\n" + path + "gsave\n  fill\ngrestore\nstroke\n" +
                  "0\t0\t0\tsetrgbcolor\n0\tsetlinewidth\n" + path + "stroke\n",
              drawBody([&](Visualizer2& vis) {
                  vis.addObject(t, Color(CBLUE, 0, true));
                  vis.addObject(t, thinBlack);
              }));
}

TEST(Visualizer2, marksOfThinSegmentsKeepAVisibleSize) {
    const std::string body = drawBody([](Visualizer2& vis) {
        vis.addObject(Segment2({0, 0}, {1, 1}), Color(0, 0, 0, 0.25, true));
    });
    EXPECT_EQ(1,
              countOf("48.5\t198.5\tmoveto\n51.5\t201.5\tlineto\n48.5\t201.5\tmoveto\n51.5\t198.5\tlineto\n",
                      body));
}

TEST(Visualizer2, sequencesAreDrawnLikeTheirElements) {
    Point2 a(0, 0), b(3, 0), c(0, 4);
    Triangle2 t;
    t.setProperties(&a, &b, &c);
    const std::string asSequences = drawBody([&](Visualizer2& vis) {
        vis.addObject(std::vector<Point2>{a, b}, red);
        vis.addObject(std::vector<Point2*>{&b, &c}, red);
        vis.addObject(std::vector<Segment2>{{a, b}, {b, c}}, red);
        vis.addObject(std::vector<Edge2>{{&t, 0}, {&t, 1}}, red);
        vis.addObject(std::vector<Triangle2>{t, t}, red);
        vis.addObject(std::vector<Triangle2*>{&t}, red);
    });
    const std::string oneByOne = drawBody([&](Visualizer2& vis) {
        for (const Point2& p : {a, b, b, c})
            vis.addObject(p, red);
        for (const Segment2& segment : {Segment2(a, b), Segment2(b, c)})
            vis.addObject(segment, red);
        for (const Edge2& edge : {Edge2(&t, 0), Edge2(&t, 1)})
            vis.addObject(edge, red);
        for (int i = 0; i < 3; ++i)
            vis.addObject(t, red);
    });
    EXPECT_EQ(oneByOne, asSequences);
    EXPECT_EQ(3, countOf("closepath", asSequences));
}

TEST(Visualizer2, anEleventhHeaderLineIsRefused) {
    const Drawn drawn = draw([](Visualizer2& vis) {
        for (int i = 1; i <= 11; ++i)
            vis.addHeaderLine("line " + std::to_string(i));
    });
    EXPECT_EQ(
        "Visualizer2:: Writing " + pathOf("drawing.ps") + "\n" + warning +
            "addHeaderLine(), WARNING: skipping text [\"line 11\"], maximum number of header lines reached\n",
        drawn.messages);
    EXPECT_EQ(10, countOf("(line ", drawn.file));
    // Ten lines share the height: 100 / 10 - 2.
    EXPECT_NE(std::string::npos,
              drawn.file.find("findfont 8 scalefont\n\tsetfont\n240\t785\tmoveto\n(line 1)\tshow\n"));
    EXPECT_NE(std::string::npos,
              drawn.file.find("240\t695\tmoveto\n(line 10)\tshow\n237\t692\tmoveto\n237\t795\tlineto\n"));
}

TEST(Visualizer2, headerLinesAreCutAndTheFontFitsTheLongest) {
    const auto drawLines = [](std::size_t length) {
        return draw([length](Visualizer2& vis) { vis.addHeaderLine(std::string(length, 'x')); }).file;
    };
    const std::string cut = drawLines(150);
    EXPECT_NE(std::string::npos, cut.find("(" + std::string(120, 'x') + ")\tshow\n"));
    EXPECT_NE(std::string::npos, cut.find("findfont 6 scalefont")); // 500 / 120 = 4 is unreadable
    EXPECT_NE(std::string::npos, drawLines(55).find("findfont 9 scalefont"));
    EXPECT_NE(std::string::npos,
              drawLines(0).find("findfont 12 scalefont\n\tsetfont\n240\t695\tmoveto\n()\tshow\n"));
}

TEST(PsWriter, headerLinesWithoutRoomAreNamed) {
    CapturedMessages messages;
    OutputFile file(pathOf("writer.ps").c_str());
    PsWriter writer(file, PageTransform(Bbox2()));
    writer.beginPage("t", Bbox2(), std::vector<std::string>(12, "text"));
    EXPECT_TRUE(file.close());
    const std::string line = "Visualizer2::writeHeader(), no space for line text - skipped!\n";
    EXPECT_EQ(line + line, messages.output());
    EXPECT_EQ(10, countOf("(text)", readFile(pathOf("writer.ps"))));
}

TEST(Visualizer2, textCannotBreakOutOfItsStringNorATitleOutOfItsComment) {
    EXPECT_EQ("a\\(\\)\\\\ ~\\011\\177\\303\\274\\000b",
              escapePs(std::string("a()\\ ~\t\x7f\xc3\xbc\0b", 12)));
    const Drawn drawn =
        draw([](Visualizer2& vis) { vis.addObject(Point2(0, 0), red); }, pathOf("a\nquit.ps"));
    EXPECT_NE(std::string::npos, drawn.file.find("a?quit.ps\n\t%%CreationDate"));
    EXPECT_NE(std::string::npos, drawn.file.find("a\\012quit.ps)\tshow"));
}

TEST(Visualizer2, aDrawingIsWrittenOnceAndTakesNothingAfterwards) {
    CapturedMessages messages;
    const std::string path = pathOf("once.ps");
    Visualizer2 vis(path);
    vis.addObject(Point2(1, 2), red);
    vis.writeFile();
    const std::string written = readFile(path);
    vis.writeFile();
    EXPECT_EQ("Visualizer2:: Writing " + path + "\n" + warning +
                  "writeFile(), WARNING: No effect. File has already been closed\n",
              messages.output());
    EXPECT_THROW(vis.addObject(Point2(1, 2), red), KivoException);
    EXPECT_THROW(vis.addObject(std::vector<Triangle2*>(), red), KivoException);
    EXPECT_NE(std::string::npos, messages.output().find("Condition [ !bFileClosed failed ]"));
    EXPECT_EQ(written, readFile(path));
}

TEST(Visualizer2, theDestructorCompletesTheFile) {
    CapturedMessages messages;
    const std::string path = pathOf("unfinished.ps");
    Visualizer2(path).addObject(Point2(1, 2), red);
    EXPECT_EQ("Visualizer2:: Writing " + path +
                  "\nCalling Visualizer2::writeFile() to complete an unfinished visualization [" + path +
                  "]\n",
              messages.output());
    EXPECT_EQ(draw([](Visualizer2& vis) { vis.addObject(Point2(1, 2), red); }).file.size(),
              readFile(path).size() + 2 * std::string("drawing").size() -
                  2 * std::string("unfinished").size());
}

TEST(Visualizer2, anUnopenableFileIsSilentAndAFullDiskIsNot) {
    const std::string unopenable = pathOf("missing/directory/x.ps");
    const auto addPoint = [](Visualizer2& vis) { vis.addObject(Point2(1, 2), red); };
    EXPECT_EQ("Visualizer2:: Writing " + unopenable + "\n", draw(addPoint, unopenable).messages);
    CapturedMessages messages;
    Visualizer2 vis("/dev/full");
    vis.writeFile();
    EXPECT_EQ("Visualizer2:: Writing /dev/full\n" + warning +
                  "writeFile(), WARNING: /dev/full can't be written\n",
              messages.output());
}

TEST(Visualizer2, aDrawingWithoutExtentKeepsItsSize) {
    EXPECT_EQ("48.5\t198.5\tmoveto\n51.5\t201.5\tlineto\n48.5\t201.5\tmoveto\n51.5\t198.5\tlineto\n",
              drawBody([](Visualizer2& vis) { vis.addObject(Point2(1e300, -7), thinBlack); }));
    const Drawn empty = draw([](Visualizer2&) {});
    EXPECT_EQ("", bodyOf(empty.file));
    EXPECT_NE(std::string::npos, empty.file.find("(x-Range: [0 - 0] =0)"));
}

TEST(Visualizer2, extentsBeyondTheDoublesAndBelowTheirScaleFillThePage) {
    const std::string square = "50\t200\tmoveto\n530\t680\tlineto\n290\t440\tmoveto\n530\t200\tlineto\n";
    for (const double size : {std::numeric_limits<double>::max(), 1e308, 1.0, 1e-300, 1e-310,
                              4 * std::numeric_limits<double>::denorm_min()}) {
        const Drawn drawn = draw([size](Visualizer2& vis) {
            vis.addObject(Segment2({-size, -size}, {size, size}), thinBlack);
            vis.addObject(Segment2({0, 0}, {size, -size}), thinBlack);
        });
        EXPECT_EQ(square, bodyOf(drawn.file)) << size;
        EXPECT_EQ(std::string::npos, drawn.file.find("inf")) << size;
    }
    const double huge = std::numeric_limits<double>::max();
    const Drawn drawn = draw([huge](Visualizer2& vis) {
        vis.addObject(Segment2({-huge, 0}, {huge, 1}), thinBlack);
    });
    EXPECT_NE(std::string::npos, drawn.file.find("(x-Range: [-1.79769e+308 - 1.79769e+308] =3.59539e+308)"));
    // The one axis is flat and far away, the other one tiny.
    EXPECT_EQ("50\t200\tmoveto\n50\t680\tlineto\n", drawBody([](Visualizer2& vis) {
                  vis.addObject(Segment2({1e300, 0}, {1e300, 1e-310}), thinBlack);
              }));
}

TEST(Visualizer2, whatCannotBeDrawnIsLeftOutWithOneWarning) {
    const double nan = std::nan("");
    Triangle2 cornerless;
    Point2 p(1, 1);
    const Drawn drawn = draw([&](Visualizer2& vis) {
        addFrame(vis);
        vis.addObject(Point2(nan, 0), thinBlack);
        vis.addObject(Segment2({0, 0}, {-infinity, 0}), thinBlack);
        vis.addObject(Circle2(0, 0, -1), thinBlack);
        vis.addObject(Circle2(0, 0, infinity), thinBlack);
        vis.addObject(Label(Point2(0, nan), "text", true, 10), thinBlack);
        vis.addObject(cornerless, thinBlack);
        vis.addObject(Edge2(), thinBlack);
        vis.addObject(Edge2(&cornerless, 1), thinBlack);
        vis.addObject(std::vector<Triangle2*>{nullptr, &cornerless}, thinBlack);
        vis.addObject(std::vector<Point2*>{nullptr}, thinBlack);
    });
    EXPECT_EQ(frame, bodyOf(drawn.file));
    EXPECT_EQ(
        "Visualizer2:: Writing " + pathOf("drawing.ps") + "\n" + warning +
            "writeFile(), WARNING: objects left out because of a null pointer or a coordinate that is not "
            "finite: 11\n",
        drawn.messages);
    const std::string body = drawBody([](Visualizer2& vis) {
        addFrame(vis);
        vis.addObject(Label(Point2(0, 0), "", false, 0),
                      Color(std::nan(""), infinity, 1, std::nan(""), false));
    });
    EXPECT_EQ(frame + "stroke\n0\t0\t1\tsetrgbcolor\n0\tsetlinewidth\n/Arial findfont 1 scalefont\n setfont\n"
                      "50\t200\tmoveto\n()\tshow\nstroke\n",
              body);
}

TEST(Visualizer2, theExtentTakesInWholeCircles) {
    EXPECT_EQ("530\t440\tmoveto\n290\t440\t240\t0\t360\tarc\n",
              drawBody([](Visualizer2& vis) { vis.addObject(Circle2(3, 3, 4), thinBlack); }));
}

TEST(Visualizer2, theGlobalLocaleChangesNoByte) {
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const auto drawOnto = [](Visualizer2& vis) {
        addFrame(vis);
        vis.addObject(Point2(100.25, 400000.5), red);
    };
    const std::string before = draw(drawOnto).file;
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new Comma));
    const std::string after = draw(drawOnto).file;
    std::locale::global(old);
    EXPECT_EQ(before, after);
}

TEST(Visualizer2, drawingsOfTwoThreadsDoNotTouchEachOther) {
    CapturedMessages messages;
    const auto drawFile = [](const std::string& name) {
        Visualizer2 vis(pathOf(name));
        for (int i = 0; i < 2000; ++i) {
            vis.addObject(Circle2(i, i, i), Color(i % 3 / 2.0, 0, 0, 1, false));
            vis.addObject(Segment2({0, 0}, {1.0 * i, 1}), Color(CBLUE, 1, i % 2 == 0));
        }
        vis.writeFile();
    };
    std::thread other(drawFile, "thread1.ps");
    drawFile("thread2.ps");
    other.join();
    EXPECT_LT(100000U, readFile(pathOf("thread1.ps")).size());
    EXPECT_EQ(bodyOf(readFile(pathOf("thread1.ps"))), bodyOf(readFile(pathOf("thread2.ps"))));
}
