#pragma once

#include "Bbox2.h"
#include "Color.h"
#include "Label.h"
#include "output/OutputFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace TESK_KIVO2D {

// Maps the drawing's extent to the page: its longer side takes 480 units. Any finite extent will do; one of
// zero width and height keeps its size.
class PageTransform {
public:
    explicit PageTransform(const Bbox2& box);

    double x(double worldX) const { return 50 + (worldX * shrink - minX) * grow * scale; }
    double y(double worldY) const { return 200 + (worldY * shrink - minY) * grow * scale; }
    double length(double worldLength) const { return worldLength * shrink * grow * scale; }

private:
    // Powers of two, so no bit of a result depends on them. They are 1 unless the difference of huge
    // coordinates or the scale of a tiny extent would leave the range of the doubles.
    double shrink = 1;
    double grow = 1;
    double minX; // shrunk
    double minY;
    double scale = 1;
};

// Shapes in the coordinates of the drawing.
struct PsPoint {
    double x, y;
};
struct PsSegment {
    PsPoint source, target;
};
struct PsTriangle {
    PsPoint corners[3];
};
struct PsCircle {
    PsPoint center;
    double radius;
};

// Writes a page of PostScript: beginPage, then shapes, each after its colour, then endPage.
//
// Lines share paths, which are stroked when the colour changes, after 31 shapes and at every 50th circle: an
// interpreter is fast on paths of a moderate length.
class PsWriter {
public:
    PsWriter(OutputFile& file_, const PageTransform& transform_) : file(file_), transform(transform_) {}

    // Title, ranges and the block of header lines. An invalid box is that of an empty drawing.
    void beginPage(const std::string& title, const Bbox2& box, const std::vector<std::string>& vHeaderLines);
    void endPage();

    // Shapes drawn from now on have this colour.
    void useColor(const Color& color) {
        if (color != currentColor) writeColor(color);
    }
    void triangle(const PsTriangle& triangle);
    void segment(const PsSegment& segment);
    // A cross that grows with the line width.
    void endpointMark(const PsPoint& point);
    void point(const PsPoint& point);
    void circle(const PsCircle& circle);
    void label(const Label& label);

private:
    void writeTitle(const std::string& title);
    void writeRange(const char* name, int height, double minimum, double maximum);
    void writeHeader(const std::vector<std::string>& vLines);
    void writeColor(const Color& color);
    void writeCross(const PsPoint& point, double halfSize);
    void writeFill();
    void moveTo(const PsPoint& point);
    void lineTo(const PsPoint& point);
    void countItem();

    // The items with a tab between them.
    template<class First, class... Others>
    void line(const First& first, const Others&... others) {
        item(first);
        ((file.character('\t'), item(others)), ...);
        file.character('\n');
    }
    void item(double value);
    void item(int value) { file.integer(value); }
    void item(std::string_view text) { file.text(text); }

    OutputFile& file;
    const PageTransform transform;
    Color currentColor;
    int numItems = 0; // since countItem stroked
    int numCircles =
        0; // Deliberate: of this page, not of the process, so that equal drawings give equal files
};

// The text as the inside of a PostScript string: parentheses, backslashes and whatever is not printable ASCII
// are escaped.
std::string escapePs(std::string_view text);

} // namespace TESK_KIVO2D
