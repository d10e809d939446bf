#include "cli/checkPicture.h"

#include "cli/OutputFile.h"
#include "cli/checkPanel.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;

// In hundredths of a unit, as the page.
constexpr int MARK_CELL = 200;
constexpr int RING_CELL = 2400;
constexpr int RING_RADIUS = 1200;
constexpr int MARGIN = 3000; // for rings at the border
constexpr std::size_t MAX_RINGS = 400;
constexpr std::size_t MANY_MARKS = 20000;

SegmentGraph graphOf(const std::vector<Segment2>& vSegments, const std::vector<std::size_t>& vAtFault,
                     bool bFlipY) {
    SegmentGraph graph;
    for (const Segment2& segment : vSegments) {
        for (const Point2& end : {segment.getSrc(), segment.getTrg()})
            graph.vVertices.push_back(bFlipY ? upsideDown(end) : end);
    }
    const std::vector<Point2> vEnds = graph.vVertices;
    std::vector<Point2>& vVertices = graph.vVertices;
    std::sort(vVertices.begin(), vVertices.end());
    vVertices.erase(std::unique(vVertices.begin(), vVertices.end()), vVertices.end());
    const auto vertexOf = [&vVertices](const Point2& point) {
        const auto it = std::lower_bound(vVertices.begin(), vVertices.end(), point);
        return static_cast<std::uint32_t>(it - vVertices.begin());
    };
    auto itAtFault = vAtFault.begin();
    for (std::size_t i = 0; i < vSegments.size(); ++i) {
        const bool bAtFault = itAtFault != vAtFault.end() && *itAtFault == i;
        if (bAtFault) ++itAtFault;
        const Trails::Edge ends = {vertexOf(vEnds[2 * i]), vertexOf(vEnds[2 * i + 1])};
        if (ends[0] != ends[1]) (bAtFault ? graph.vAtFault : graph.vFaultless).push_back(ends);
    }
    return graph;
}

Page pageOf(std::vector<Point2>& vVertices) {
    TESK_KIVO2D::MeshArrays arrays;
    for (Point2& vertex : vVertices)
        arrays.vVertices.push_back(&vertex);
    return Page(arrays);
}

double meanLength(const Page& page, const SegmentGraph& graph) {
    double sum = 0.0;
    for (const auto* pEdges : {&graph.vFaultless, &graph.vAtFault}) {
        for (const Trails::Edge& edge : *pEdges)
            sum += page.lengthOf(edge);
    }
    return sum / static_cast<double>(graph.vFaultless.size() + graph.vAtFault.size());
}

} // namespace

// A difference, because that makes no negative zero.
Point2 upsideDown(const Point2& point) { return Point2(point.x(), 0.0 - point.y()); }

CheckPicture::CheckPicture(const std::vector<Segment2>& vSegments_, const std::vector<std::size_t>& vAtFault_,
                           bool bFlipY_)
    : vSegments(vSegments_), vAtFault(vAtFault_), bFlipY(bFlipY_),
      graph(graphOf(vSegments, vAtFault, bFlipY_)), page(pageOf(graph.vVertices)) {}

Pixel CheckPicture::pixelOf(const Point2& point) const { return page.at(bFlipY ? upsideDown(point) : point); }

void CheckPicture::add(const Fault& fault, const FaultPlace& place) {
    const auto cellOf = [](const Pixel& pixel, int size) { return Cell(pixel.x / size, pixel.y / size); };
    const Pixel from = pixelOf(place.from), to = pixelOf(place.to);
    aMarks[fault.kind].try_emplace({cellOf(from, MARK_CELL), cellOf(to, MARK_CELL)}, from, to);
    const Pixel middle{(from.x + to.x) / 2, (from.y + to.y) / 2};
    const auto [it, bNew] =
        mPlaces.try_emplace(cellOf(middle, RING_CELL), Place{middle, middle, mPlaces.size() + 1});
    Place& ringed = it->second;
    ringed.least = {std::min(ringed.least.x, middle.x), std::min(ringed.least.y, middle.y)};
    ringed.most = {std::max(ringed.most.x, middle.x), std::max(ringed.most.y, middle.y)};
    if (bNew && vInsets.size() < MAX_INSETS) vInsets.push_back({fault, place});
}

// Lines as thin as the segments are short, so that they do not become a blot.
void CheckPicture::writeSegments(OutputFile& out) const {
    const int width = std::clamp(static_cast<int>(meanLength(page, graph) / 20.0), 40, 100);
    writeStrokes(out, page, {"segments", SEGMENT_COLOR, width}, graph.vFaultless);
    for (const FaultKind kind : {FAULT_OVERLAP, FAULT_DUPLICATE})
        writeMarks(out, kind);
    writeStrokes(out, page, {"at-fault", AT_FAULT_COLOR, std::max(2 * width, 100)}, graph.vAtFault);
    for (const FaultKind kind : {FAULT_SHARED_END, FAULT_TOUCH, FAULT_CROSSING})
        writeMarks(out, kind);
}

// Lines along overlaps, and dots, which are lines of no length with round ends.
void CheckPicture::writeMarks(OutputFile& out, FaultKind kind) const {
    if (aMarks[kind].empty()) return;
    const FaultStyle& style = FAULT_STYLES[kind];
    out << "<g class=\"" << style.name << "\" fill=\"none\" stroke=\"" << style.color << "\" stroke-width=\""
        << (aMarks[kind].size() < MANY_MARKS ? style.width : style.width / 3) << "\">\n";
    std::size_t numLeft = 0;
    std::optional<PathData> path;
    for (const auto& [cells, ends] : aMarks[kind]) {
        if (numLeft-- == 0) {
            out << (path ? "\"/>\n<path d=\"" : "<path d=\"");
            path.emplace(out);
            numLeft = MAX_EDGES_OF_PATH;
        }
        path->moveTo(ends.first);
        path->lineTo(ends.second);
        path->close();
    }
    out << "\"/>\n</g>\n";
}

// All of them, unless they would hide everything else.
std::size_t CheckPicture::numRings() const {
    return mPlaces.size() <= MAX_RINGS ? mPlaces.size() : vInsets.size();
}

void CheckPicture::writeRings(OutputFile& out) const {
    if (mPlaces.empty()) return;
    out << "<g class=\"places\" fill=\"none\" stroke=\"" << PLACE_COLOR
        << "\" stroke-width=\"200\" font-family=\"sans-serif\" font-size=\"1900\" "
           "font-weight=\"bold\">\n";
    for (const auto& [cell, place] : mPlaces) {
        if (place.number > numRings()) continue;
        const int width = place.most.x - place.least.x, height = place.most.y - place.least.y;
        const int x = place.least.x + width / 2, y = place.least.y + height / 2;
        const int radius = RING_RADIUS + static_cast<int>(std::hypot(width, height)) / 2;
        out << "<circle cx=\"" << x << "\" cy=\"" << y << "\" r=\"" << radius << "\"/>\n";
        if (place.number > vInsets.size()) continue;
        out << "<text x=\"" << x + radius * 3 / 4 + 200 << "\" y=\"" << y - radius * 3 / 4 << "\" fill=\""
            << PLACE_COLOR << "\" stroke=\"none\">" << place.number << "</text>\n";
    }
    out << "</g>\n";
}

void CheckPicture::write(const std::string& filename, const CheckReport& report) const {
    constexpr double GAP = 30.0;
    const double panelLeft = (page.getWidth() + 2 * MARGIN) / 100.0 + GAP;
    const double height = std::max((page.getHeight() + 2 * MARGIN) / 100.0,
                                   CHECK_LEGEND_HEIGHT + heightOfInsets(vInsets.size()));
    OutputFile out(filename);
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"kivo2d-check\" role=\"img\" viewBox=\"0 0 "
        << panelLeft + CHECK_PANEL_WIDTH << " " << height << "\">\n<title>" << titleOf(report)
        << "</title>\n<g transform=\"translate(30 30) scale(.01)\" stroke-linejoin=\"round\" "
           "stroke-linecap=\"round\">\n";
    writeSegments(out);
    writeRings(out);
    out << "</g>\n";
    out << "<g class=\"panel\" transform=\"translate(" << panelLeft << " 15)\" fill=\"" << TEXT_COLOR
        << "\" font-family=\"sans-serif\" font-size=\"16\">\n";
    writeLegend(out, report, mPlaces.size(), numRings());
    writeInsets(out, CHECK_LEGEND_HEIGHT, vInsets, {vSegments, vAtFault, report.firstNumber, bFlipY});
    out << "</g>\n";
    out << "</svg>\n";
    out.close();
}

} // namespace cli
