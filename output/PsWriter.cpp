#include "output/PsWriter.h"

#include "kernel/messages.h"
#include "kernel/valueText.h"

#include <algorithm>
#include <cmath>

namespace TESK_KIVO2D {
namespace {

constexpr double extentOnPage = 480;
constexpr double markHalfSize = 1.5;
constexpr int maxItemsPerStroke = 30;
constexpr int maxCirclesPerStroke = 50;
constexpr std::size_t maxHeaderLines = 10;
constexpr std::size_t maxHeaderLineLength = 120;

bool isPrintable(char c) { return c >= ' ' && c <= '~'; }

// A comment ends with its line: what could end it is replaced.
std::string commentText(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
    }
    return text;
}

// maximum - minimum, also where that is beyond the largest double.
std::string rangeText(double minimum, double maximum) {
    if (std::isfinite(maximum - minimum)) return numberText(maximum - minimum);
    // Such a difference has the exponent 308; three hundred of it are taken off and put back as text.
    std::string text = numberText(maximum / 1e300 - minimum / 1e300);
    return text.replace(text.find("e+08"), 4, "e+308");
}

int getHeaderFontSize(const std::vector<std::string>& vLines, int numLines) {
    std::size_t longest = 0;
    for (int i = 0; i < numLines; ++i)
        longest =
            std::max(longest, std::min(vLines[static_cast<std::size_t>(i)].size(), maxHeaderLineLength));
    const int sizeForWidth = longest == 0 ? 12 : 500 / static_cast<int>(longest);
    const int sizeForHeight = 100 / numLines - 2;
    return std::max(6, std::min({sizeForHeight, 12, sizeForWidth}));
}

} // namespace

std::string escapePs(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '(' || c == ')' || c == '\\') {
            escaped += {'\\', c};
        } else if (isPrintable(c)) {
            escaped += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            const auto digit = [byte](int shift) { return static_cast<char>('0' + ((byte >> shift) & 7)); };
            escaped += {'\\', digit(6), digit(3), digit(0)};
        }
    }
    return escaped;
}

PageTransform::PageTransform(const Bbox2& box) : minX(box.get_minX()), minY(box.get_minY()) {
    const double range = box.getMaxRange();
    if (!(range > 0)) return; // also the empty box
    if (!std::isfinite(range)) shrink = 0.5;
    if (range < 1e-300) grow = 0x1p600;
    minX *= shrink;
    minY *= shrink;
    scale = extentOnPage / (std::max(box.get_maxX() * shrink - minX, box.get_maxY() * shrink - minY) * grow);
}

void PsWriter::item(double value) { file.number(std::isfinite(value) ? value : 0, 6); }

void PsWriter::beginPage(const std::string& title, const Bbox2& box,
                         const std::vector<std::string>& vHeaderLines) {
    writeTitle(title);
    const bool bEmpty = box.get_maxX() < box.get_minX();
    writeRange("x", 705, bEmpty ? 0 : box.get_minX(), bEmpty ? 0 : box.get_maxX());
    writeRange("y", 695, bEmpty ? 0 : box.get_minY(), bEmpty ? 0 : box.get_maxY());
    if (!vHeaderLines.empty()) writeHeader(vHeaderLines);
}

void PsWriter::endPage() { file.text("stroke\nshowpage\n%%Trailer\n"); }

void PsWriter::writeTitle(const std::string& title) {
    file.text("%!PS-Adobe-1.0\n\t%%Creator: TESK PostscriptWriter\n\t%%Title: ");
    file.text(commentText(title));
    // Deliberate: the tab before "%%DocumentFonts" where a newline would be expected.
    file.text("\n\t%%CreationDate: none\n\t%%DocumentMedia: A4 595 842 0 () ()\n\t%%Orientation: Portrait\n"
              "\t%%Pages: 1\t%%DocumentFonts: Times-Roman Helvetica\n\t%%EndComments\n\t%%BeginProlog\n"
              "\t%%EndProlog\n\t%%Page: Tesk PostscriptWriter 1\n"
              "0.05\tsetlinewidth\n\t0\t0\t0\tsetrgbcolor\n\t/Times-Roman findfont 17 scalefont\n\tsetfont\n"
              "40\t740\tmoveto\n\t(");
    file.text(escapePs(title));
    file.text(")\tshow\n"
              "0.4\t0.4\t0.4\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n"
              "0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont 10 scalefont\n\tsetfont\n");
}

void PsWriter::writeRange(const char* name, int height, double minimum, double maximum) {
    line(40, height, "moveto");
    line("(" + std::string(name) + "-Range: [" + numberText(minimum) + " - " + numberText(maximum) +
             "] =" + rangeText(minimum, maximum) + ")",
         "show");
}

void PsWriter::writeHeader(const std::vector<std::string>& vLines) {
    const int numLines = static_cast<int>(std::min(vLines.size(), maxHeaderLines));
    const int fontSize = getHeaderFontSize(vLines, numLines);
    file.text("0.0\t0.0\t0.0\tsetrgbcolor\n\t/Times-Roman findfont ");
    file.integer(fontSize);
    file.text(" scalefont\n\tsetfont\n");
    int i = 0;
    for (const std::string& text : vLines) {
        if (i == numLines) {
            printText("Visualizer2::writeHeader(), no space for line " + text + " - skipped!\n");
            continue;
        }
        line(240, (numLines - i - 1) * (fontSize + 2) + 695, "moveto");
        line("(" + escapePs(std::string_view(text).substr(0, maxHeaderLineLength)) + ")", "show");
        ++i;
    }
    line(237, 692, "moveto");
    line(237, (fontSize + 2) * numLines + 695, "lineto");
    line(237, 692, "moveto");
    line(570, 692, "lineto");
    line(570, 692, "lineto"); // Deliberate: twice
}

void PsWriter::writeColor(const Color& color) {
    currentColor = color;
    line("stroke");
    line(color.r, color.g, color.b, "setrgbcolor");
    line(color.width, "setlinewidth");
}

void PsWriter::triangle(const PsTriangle& triangle) {
    moveTo(triangle.corners[0]);
    lineTo(triangle.corners[1]);
    lineTo(triangle.corners[2]);
    line("closepath");
    if (!currentColor.bFill) {
        line("stroke");
    } else {
        writeFill();
        if (currentColor.width != 0) {
            line("  0.3 0.3 .3 setrgbcolor");
            line(currentColor.width, "setlinewidth");
            line("stroke");
            writeColor(currentColor);
        }
    }
    countItem();
}

void PsWriter::segment(const PsSegment& segment) {
    moveTo(segment.source);
    lineTo(segment.target);
    countItem();
}

void PsWriter::endpointMark(const PsPoint& point) {
    writeCross(point, std::max(markHalfSize, 2.0 * static_cast<double>(currentColor.width)));
    countItem();
}

void PsWriter::point(const PsPoint& point) {
    writeCross(point, markHalfSize);
    countItem();
}

void PsWriter::circle(const PsCircle& circle) {
    const double x = transform.x(circle.center.x);
    const double y = transform.y(circle.center.y);
    const double radius = transform.length(circle.radius);
    line(x + radius, y, "moveto");
    line(x, y, radius, 0, 360, "arc");
    if (currentColor.bFill) writeFill();
    if (++numCircles % maxCirclesPerStroke == 0) line("stroke");
    countItem();
}

void PsWriter::label(const Label& label) {
    const double x = transform.x(label.position.x());
    const double y = transform.y(label.position.y());
    const int fontSize =
        label.fontSize == 0 ? 1 : label.fontSize; // an interpreter refuses letters without size
    file.text("/Arial findfont ");
    file.integer(fontSize);
    file.text(" scalefont\n setfont\n");
    const std::string_view text = label.text;
    std::size_t begin = 0;
    for (int i = 0; begin <= text.size(); ++i) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        line(x, y - static_cast<double>(i) * fontSize, "moveto");
        line("(" + escapePs(text.substr(begin, end - begin)) + ")", "show");
        line("stroke");
        begin = end + 1;
    }
    if (label.bWithMark) writeCross({label.position.x(), label.position.y()}, markHalfSize);
    countItem();
}

void PsWriter::writeCross(const PsPoint& point, double halfSize) {
    const double x = transform.x(point.x);
    const double y = transform.y(point.y);
    line(x - halfSize, y - halfSize, "moveto");
    line(x + halfSize, y + halfSize, "lineto");
    line(x - halfSize, y + halfSize, "moveto");
    line(x + halfSize, y - halfSize, "lineto");
}

void PsWriter::writeFill() { file.text("gsave\n  fill\ngrestore\n"); }

void PsWriter::moveTo(const PsPoint& point) { line(transform.x(point.x), transform.y(point.y), "moveto"); }

void PsWriter::lineTo(const PsPoint& point) { line(transform.x(point.x), transform.y(point.y), "lineto"); }

void PsWriter::countItem() {
    if (++numItems <= maxItemsPerStroke) return;
    line("stroke");
    numItems = 0;
}

} // namespace TESK_KIVO2D
