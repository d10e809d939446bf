#include "cli/svgShapes.h"

#include "cli/OutputFile.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace cli {

using TESK_KIVO2D::Point2;

Page::Page(const TESK_KIVO2D::MeshArrays& arrays) {
    TESK_KIVO2D::Bbox2 box;
    for (const Point2* pVertex : arrays.vVertices)
        box.add(*pVertex);
    // Of halves, where the whole difference is infinite.
    if (!std::isfinite(box.get_maxX() - box.get_minX()) || !std::isfinite(box.get_maxY() - box.get_minY()))
        factor = 0.5;
    left = box.get_minX();
    top = box.get_maxY();
    const double lengthX = difference(box.get_maxX(), left);
    const double lengthY = difference(top, box.get_minY());
    longSide = std::max(lengthX, lengthY);
    width = onPage(lengthX);
    height = onPage(lengthY);
    vPixels.reserve(arrays.vVertices.size());
    for (const Point2* pVertex : arrays.vVertices)
        vPixels.push_back(at(*pVertex));
}

Pixel Page::at(const Point2& point) const {
    return {onPage(difference(point.x(), left)), onPage(difference(top, point.y()))};
}

double Page::lengthOf(const Trails::Edge& edge) const {
    return std::hypot(vPixels[edge[1]].x - vPixels[edge[0]].x, vPixels[edge[1]].y - vPixels[edge[0]].y);
}

// A quotient, since the reciprocal of a tiny length is infinite.
int Page::onPage(double length) const { return static_cast<int>(std::lround(length / longSide * LONG_SIDE)); }

void PathData::moveTo(const Pixel& pixel) {
    out << "m";
    bSeparated = true;
    step(pixel);
    subpathStart = pixel;
}

void PathData::close() {
    out << "z";
    at = subpathStart;
}

void PathData::step(const Pixel& pixel) {
    number(pixel.x - at.x);
    number(pixel.y - at.y);
    at = pixel;
}

void PathData::number(int value) {
    if (!bSeparated && value >= 0) out << " ";
    out << value;
    bSeparated = false;
}

void writeArea(OutputFile& out, const Page& page, const std::vector<Trails::Edge>& vBorder) {
    Trails trails(page.numVertices(), vBorder);
    PathData path(out);
    std::vector<std::uint32_t> vTrail;
    while (trails.next(vTrail)) {
        path.moveTo(page[vTrail[0]]);
        for (std::size_t i = 1; i + 1 < vTrail.size(); ++i)
            path.lineTo(page[vTrail[i]]);
        path.close();
    }
}

namespace {

void writePaths(OutputFile& out, const Page& page, const std::vector<Trails::Edge>& vEdges) {
    Trails trails(page.numVertices(), vEdges);
    std::vector<std::uint32_t> vTrail;
    std::optional<PathData> path;
    std::size_t numLeft = 0;
    while (trails.next(vTrail)) {
        for (std::size_t i = 1; i < vTrail.size(); ++i, --numLeft) {
            const bool bNewPath = numLeft == 0;
            if (bNewPath) {
                out << (path ? "\"/>\n<path d=\"" : "<path d=\"");
                path.emplace(out);
                numLeft = MAX_EDGES_OF_PATH;
            }
            if (bNewPath || i == 1) path->moveTo(page[vTrail[i - 1]]);
            path->lineTo(page[vTrail[i]]);
        }
    }
    if (path) out << "\"/>\n";
}

} // namespace

void writeStrokes(OutputFile& out, const Page& page, const Stroke& stroke,
                  const std::vector<Trails::Edge>& vEdges) {
    if (vEdges.empty()) return;
    out << "<g class=\"" << stroke.name << "\" fill=\"none\" stroke=\"" << stroke.color
        << "\" stroke-width=\"" << stroke.width << "\">\n";
    writePaths(out, page, vEdges);
    out << "</g>\n";
}

} // namespace cli
