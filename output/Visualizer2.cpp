#include "Visualizer2.h"

#include "Bbox2.h"
#include "Circle2.h"
#include "Color.h"
#include "Edge2.h"
#include "Label.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "output/OutputFile.h"
#include "output/PsWriter.h"

#include <cmath>
#include <cstdint>
#include <deque>
#include <map>
#include <type_traits>

namespace TESK_KIVO2D {
namespace {

constexpr std::size_t maxHeaderLines = 10;

// The colours in use, each once: an index takes less room in a million triangles.
class Palette {
public:
    std::uint32_t getIndex(const Color& color) {
        if (!vColors.empty() && vColors[latest] == color) return latest;
        const auto [it, bNew] = mIndices.try_emplace(color, static_cast<std::uint32_t>(vColors.size()));
        if (bNew) vColors.push_back(color);
        latest = it->second;
        return latest;
    }
    const Color& operator[](std::uint32_t index) const { return vColors[index]; }

private:
    std::vector<Color> vColors;
    std::map<Color, std::uint32_t> mIndices;
    std::uint32_t latest = 0;
};

template<class Shape>
struct Colored {
    Shape shape;
    std::uint32_t color;
};
// A deque grows without holding the old and the new copy at once.
template<class Shape>
using Shapes = std::deque<Colored<Shape>>;

PsPoint toShape(const Point2& p) { return {p.x(), p.y()}; }

} // namespace

class Visualizer2::Drawing {
public:
    explicit Drawing(const std::string& filename_) : filename(filename_), file(filename_.c_str()) {}

    // Takes the points into the extent of the drawing; false when one of them can't be drawn.
    template<class... Points>
    bool takePoints(const Points&... points) {
        if ((takeable(points) && ...)) {
            (box.add(points), ...);
            return true;
        }
        leaveOut();
        return false;
    }
    void leaveOut() { ++numLeftOut; }

    void write();

    const std::string filename;
    OutputFile file;
    bool bFileClosed = false;
    std::vector<std::string> vHeaderLines;
    Bbox2 box;
    std::size_t numLeftOut = 0;
    Palette palette;
    Shapes<PsTriangle> triangles;
    Shapes<PsSegment> segments;
    Shapes<PsCircle> circles;
    Shapes<PsPoint> points;
    Shapes<Label> labels;

private:
    static bool takeable(const Point2& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

    template<class Shape>
    void writeAll(PsWriter& writer, const Shapes<Shape>& shapes,
                  void (PsWriter::*write)(const Shape&)) const {
        for (const Colored<Shape>& item : shapes) {
            writer.useColor(palette[item.color]);
            (writer.*write)(item.shape);
        }
    }
    void writeEndpointMarks(PsWriter& writer) const;
};

void Visualizer2::Drawing::write() {
    const bool bOpened = file.isOpen();
    PsWriter writer(file, PageTransform(box));
    writer.beginPage(filename, box, vHeaderLines);
    writeAll(writer, triangles, &PsWriter::triangle);
    writeAll(writer, segments, &PsWriter::segment);
    writeEndpointMarks(writer);
    writeAll(writer, circles, &PsWriter::circle);
    writeAll(writer, points, &PsWriter::point);
    writeAll(writer, labels, &PsWriter::label);
    writer.endPage();
    const bool bWritten = file.close();
    bFileClosed = true;
    if (bOpened && !bWritten) reportWarning("Visualizer2::writeFile()", filename + " can't be written");
    if (numLeftOut > 0)
        reportWarning("Visualizer2::writeFile()",
                      "objects left out because of a null pointer or a coordinate that "
                      "is not finite: " +
                          std::to_string(numLeftOut));
}

void Visualizer2::Drawing::writeEndpointMarks(PsWriter& writer) const {
    for (const Colored<PsSegment>& item : segments) {
        const Color& color = palette[item.color];
        if (!color.bFill) continue;
        writer.useColor(color);
        writer.endpointMark(item.shape.source);
        writer.endpointMark(item.shape.target);
    }
}

Visualizer2::Visualizer2(const std::string& filename) : pDrawing(new Drawing(filename)) {
    printText("Visualizer2:: Writing " + filename + "\n");
}

Visualizer2::~Visualizer2() {
    if (pDrawing->bFileClosed) return;
    try {
        printText("Calling Visualizer2::writeFile() to complete an unfinished visualization [" +
                  pDrawing->filename + "]\n");
        writeFile();
    } catch (...) { // NOLINT(bugprone-empty-catch): a destructor has nobody to tell
    }
}

void Visualizer2::checkOpen() const { KIVO_ASSERT(!pDrawing->bFileClosed, "!bFileClosed"); }

void Visualizer2::addObject(const Point2& point, const Color& color) {
    checkOpen();
    if (!pDrawing->takePoints(point)) return;
    pDrawing->points.push_back({toShape(point), pDrawing->palette.getIndex(color)});
}

void Visualizer2::addObject(const Segment2& segment, const Color& color) {
    checkOpen();
    const Point2 source = segment.getSrc();
    const Point2 target = segment.getTrg();
    if (!pDrawing->takePoints(source, target)) return;
    pDrawing->segments.push_back({{toShape(source), toShape(target)}, pDrawing->palette.getIndex(color)});
}

void Visualizer2::addObject(const Edge2& edge, const Color& color) {
    checkOpen();
    const Point2* const pSource = edge.getTriangle() == nullptr ? nullptr : edge.getSrc();
    const Point2* const pTarget = edge.getTriangle() == nullptr ? nullptr : edge.getTrg();
    if (pSource == nullptr || pTarget == nullptr) return pDrawing->leaveOut();
    addObject(Segment2(*pSource, *pTarget), color);
}

void Visualizer2::addObject(const Triangle2& triangle, const Color& color) {
    checkOpen();
    const Point2* const pA = triangle.getCorner(0);
    const Point2* const pB = triangle.getCorner(1);
    const Point2* const pC = triangle.getCorner(2);
    if (pA == nullptr || pB == nullptr || pC == nullptr) return pDrawing->leaveOut();
    if (!pDrawing->takePoints(*pA, *pB, *pC)) return;
    pDrawing->triangles.push_back(
        {{{toShape(*pA), toShape(*pB), toShape(*pC)}}, pDrawing->palette.getIndex(color)});
}

void Visualizer2::addObject(const Circle2& circle, const Color& color) {
    checkOpen();
    const Point2 center = circle.getCenter();
    const double radius = circle.getRadius();
    const Point2 lowerLeft(center.x() - radius, center.y() - radius);
    const Point2 upperRight(center.x() + radius, center.y() + radius);
    if (!pDrawing->takePoints(center, lowerLeft, upperRight)) return;
    pDrawing->circles.push_back({{toShape(center), radius}, pDrawing->palette.getIndex(color)});
}

void Visualizer2::addObject(const Label& label, const Color& color) {
    checkOpen();
    if (!pDrawing->takePoints(label.position)) return;
    pDrawing->labels.push_back({label, pDrawing->palette.getIndex(color)});
}

template<class Element>
void Visualizer2::addEach(const std::vector<Element>& vElements, const Color& color) {
    checkOpen();
    for (const Element& element : vElements) {
        if constexpr (!std::is_pointer_v<Element>)
            addObject(element, color);
        else if (element != nullptr)
            addObject(*element, color);
        else
            pDrawing->leaveOut();
    }
}

void Visualizer2::addObject(const std::vector<Point2>& vPoints, const Color& color) {
    addEach(vPoints, color);
}

void Visualizer2::addObject(const std::vector<Point2*>& vPoints, const Color& color) {
    addEach(vPoints, color);
}

void Visualizer2::addObject(const std::vector<Segment2>& vSegments, const Color& color) {
    addEach(vSegments, color);
}

void Visualizer2::addObject(const std::vector<Edge2>& vEdges, const Color& color) { addEach(vEdges, color); }

void Visualizer2::addObject(const std::vector<Triangle2>& vTriangles, const Color& color) {
    addEach(vTriangles, color);
}

void Visualizer2::addObject(const std::vector<Triangle2*>& vTriangles, const Color& color) {
    addEach(vTriangles, color);
}

void Visualizer2::addHeaderLine(const std::string& text) {
    if (pDrawing->vHeaderLines.size() >= maxHeaderLines) {
        reportWarning("Visualizer2::addHeaderLine()",
                      "skipping text [\"" + text + "\"], maximum number of header lines reached");
        return;
    }
    pDrawing->vHeaderLines.push_back(text);
}

void Visualizer2::writeFile() {
    if (pDrawing->bFileClosed) {
        reportWarning("Visualizer2::writeFile()", "No effect. File has already been closed");
        return;
    }
    pDrawing->write();
}

} // namespace TESK_KIVO2D
