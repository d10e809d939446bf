#include "cli/soupPicture.h"

#include "cli/OutputFile.h"
#include "cli/svgShapes.h"
#include "cli/words.h"

#include <algorithm>
#include <cmath>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;

constexpr const char* AT_FAULT_COLOR = "#e03131";
constexpr int MARGIN = 3000; // for rings at the border

Page pageOf(Input& input) {
    TESK_KIVO2D::MeshArrays arrays;
    for (Point2& point : input.table.vPoints)
        arrays.vVertices.push_back(&point);
    return Page(arrays);
}

std::vector<Trails::Edge> edgesOf(const Input& input) {
    std::vector<Trails::Edge> vEdges;
    for (const auto& aCorners : input.vTriangles) {
        for (std::size_t i = 0; i < 3; ++i) {
            const auto [low, high] = std::minmax(aCorners[i], aCorners[(i + 1) % 3]);
            if (low != high) vEdges.push_back({low, high});
        }
    }
    std::sort(vEdges.begin(), vEdges.end());
    vEdges.erase(std::unique(vEdges.begin(), vEdges.end()), vEdges.end());
    return vEdges;
}

// A corner is a line of no length with round ends.
void writeShapes(OutputFile& out, const Page& page, const SoupFaults& faults) {
    out << "<g class=\"at-fault\" fill=\"" << AT_FAULT_COLOR << "\" fill-opacity=\".3\" stroke=\""
        << AT_FAULT_COLOR << "\" stroke-width=\"120\">\n";
    for (const std::vector<Shape>& vShapes : faults.getShapes()) {
        for (const Shape& shape : vShapes) {
            out << "<path" << (shape.size() == 1 ? " stroke-width=\"600\"" : "") << " d=\"";
            PathData path(out);
            path.moveTo(page.at(shape[0]));
            for (std::size_t i = 1; i < shape.size(); ++i)
                path.lineTo(page.at(shape[i]));
            path.close();
            out << "\"/>\n";
        }
    }
    out << "</g>\n";
}

int perimeterOf(const Page& page, const Shape& shape) {
    double length = 0.0;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        const Pixel from = page.at(shape[i]), to = page.at(shape[(i + 1) % shape.size()]);
        length += std::hypot(to.x - from.x, to.y - from.y);
    }
    return static_cast<int>(length);
}

// Around the smallest shape that a fault names.
void writeRings(OutputFile& out, const Page& page, const SoupFaults& faults) {
    constexpr int RADIUS = 1200;
    out << "<g class=\"places\" fill=\"none\" stroke=\"#7048e8\" stroke-width=\"200\">\n";
    for (const std::vector<Shape>& vShapes : faults.getShapes()) {
        const Shape& shape =
            *std::min_element(vShapes.begin(), vShapes.end(), [&page](const Shape& a, const Shape& b) {
                return perimeterOf(page, a) < perimeterOf(page, b);
            });
        int x = 0, y = 0;
        for (const Point2& point : shape) {
            x += page.at(point).x / static_cast<int>(shape.size());
            y += page.at(point).y / static_cast<int>(shape.size());
        }
        out << "<circle cx=\"" << x << "\" cy=\"" << y << "\" r=\"" << RADIUS << "\"/>\n";
    }
    out << "</g>\n";
}

} // namespace

void drawFaults(const std::string& filename, Input& input, const SoupFaults& faults) {
    const Page page = pageOf(input);
    OutputFile out(filename);
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"kivo2d-faults\" role=\"img\" viewBox=\"0 0 "
        << (page.getWidth() + 2 * MARGIN) / 100.0 << " " << (page.getHeight() + 2 * MARGIN) / 100.0
        << "\">\n<title>" << counted(input.vTriangles.size(), "triangle") << ", "
        << counted(faults.getShapes().size(), "fault") << " shown</title>\n"
        << "<g transform=\"translate(30 30) scale(.01)\" stroke-linejoin=\"round\" "
           "stroke-linecap=\"round\">\n";
    writeStrokes(out, page, {"mesh", "#6f869d", 60}, edgesOf(input));
    writeShapes(out, page, faults);
    writeRings(out, page, faults);
    out << "</g>\n</svg>\n";
    out.close();
}

} // namespace cli
