#include "cli/svgWriter.h"

#include "cli/Trails.h"
#include "cli/meshEdges.h"
#include "cli/words.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace cli {

namespace {

using TESK_KIVO2D::Bbox2;
using TESK_KIVO2D::Point2;

// Coordinates are written in hundredths of a unit: whole numbers are short.
constexpr int LONG_SIDE = 100000;
constexpr int MARGIN = 1000; // for the width of strokes
// A browser draws many short paths faster than one long one, since it passes over those out of sight.
constexpr std::size_t MAX_EDGES_OF_PATH = 1000;

struct Pixel {
    int x = 0;
    int y = 0;
};

// The vertices of the triangles on the page, y downwards.
class Page {
public:
    explicit Page(const Mesh& mesh) {
        Bbox2 box;
        for (const Point2* pVertex : mesh.triangles.vVertices)
            box.add(*pVertex);
        // Of halves, where the whole difference is infinite.
        if (!std::isfinite(box.get_maxX() - box.get_minX()) ||
            !std::isfinite(box.get_maxY() - box.get_minY())) {
            factor = 0.5;
        }
        const double lengthX = difference(box.get_maxX(), box.get_minX());
        const double lengthY = difference(box.get_maxY(), box.get_minY());
        const double longSide = std::max(lengthX, lengthY);
        width = onPage(lengthX, longSide);
        height = onPage(lengthY, longSide);
        vPixels.reserve(mesh.triangles.vVertices.size());
        for (const Point2* pVertex : mesh.triangles.vVertices)
            vPixels.push_back({onPage(difference(pVertex->x(), box.get_minX()), longSide),
                               onPage(difference(box.get_maxY(), pVertex->y()), longSide)});
    }

    int getWidth() const { return width; }
    int getHeight() const { return height; }
    std::size_t numVertices() const { return vPixels.size(); }
    const Pixel& operator[](std::uint32_t vertex) const { return vPixels[vertex]; }

private:
    double difference(double a, double b) const { return a * factor - b * factor; }
    // A quotient, since the reciprocal of a tiny length is infinite.
    static int onPage(double length, double longSide) {
        return static_cast<int>(std::lround(length / longSide * LONG_SIDE));
    }

    double factor = 1.0;
    int width = 0;
    int height = 0;
    std::vector<Pixel> vPixels;
};

struct EdgeLists {
    std::vector<Trails::Edge> vBorder; // of the area; the others are strokes, and have each edge once
    std::vector<Trails::Edge> vConstraints;
    std::vector<Trails::Edge> vHull; // what of the border is no constraint
    std::vector<Trails::Edge> vInner;
    double meanLength = 0.0;
};

EdgeLists listEdges(const Mesh& mesh, const Page& page) {
    EdgeLists lists;
    const ConstraintLookup constraints(mesh);
    std::size_t numEdges = 0;
    double sum = 0.0;
    forEachEdge(mesh, [&](const MeshEdge& edge) {
        const auto* const pCorners = &mesh.triangles.vCorners[3 * edge.triangle];
        const Trails::Edge ends = {pCorners[(edge.ith + 1) % 3], pCorners[(edge.ith + 2) % 3]};
        const bool bConstraint = constraints.find(edge) != NO_CONSTRAINT;
        if (edge.bBorder) lists.vBorder.push_back(ends);
        std::vector<Trails::Edge>& vOther = edge.bBorder ? lists.vHull : lists.vInner;
        (bConstraint ? lists.vConstraints : vOther).push_back(ends);
        sum += std::hypot(page[ends[1]].x - page[ends[0]].x, page[ends[1]].y - page[ends[0]].y);
        ++numEdges;
    });
    lists.meanLength = sum / static_cast<double>(numEdges);
    return lists;
}

struct Style {
    const char* name;
    const char* stroke;
    int width;
};

// The data of one path, each point relative to the one before: that makes small numbers.
class PathData {
public:
    explicit PathData(OutputFile& out_) : out(out_) {}

    void moveTo(const Pixel& pixel) {
        out << "m";
        bSeparated = true;
        step(pixel);
        subpathStart = pixel;
    }
    void lineTo(const Pixel& pixel) {
        if (pixel.x != at.x || pixel.y != at.y) step(pixel);
    }
    void close() {
        out << "z";
        at = subpathStart;
    }

private:
    void step(const Pixel& pixel) {
        number(pixel.x - at.x);
        number(pixel.y - at.y);
        at = pixel;
    }
    // A minus sign separates too.
    void number(int value) {
        if (!bSeparated && value >= 0) out << " ";
        out << value;
        bSeparated = false;
    }

    OutputFile& out;
    bool bSeparated = true;
    Pixel at;
    Pixel subpathStart;
};

// All in one path: what lies inside an odd number of rings is filled.
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

void writeStrokes(OutputFile& out, const Page& page, const std::vector<Trails::Edge>& vEdges) {
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

void writeGroup(OutputFile& out, const Page& page, const Style& style,
                const std::vector<Trails::Edge>& vEdges) {
    if (vEdges.empty()) return;
    out << "<g class=\"" << style.name << "\" fill=\"none\" stroke=\"" << style.stroke << "\" stroke-width=\""
        << style.width << "\">\n";
    writeStrokes(out, page, vEdges);
    out << "</g>\n";
}

void writeHead(OutputFile& out, const Mesh& mesh, const Page& page, std::size_t numConstraints) {
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"kivo2d\" role=\"img\" viewBox=\"0 0 "
        << (page.getWidth() + 2 * MARGIN) / 100.0 << " " << (page.getHeight() + 2 * MARGIN) / 100.0
        << "\">\n<title>" << counted(mesh.numTriangles(), "triangle") << ", "
        << counted(numConstraints, "constraint edge") << "</title>\n";
    out << "<g transform=\"translate(10 10) scale(.01)\" stroke-linejoin=\"round\" "
           "stroke-linecap=\"round\">\n";
}

} // namespace

void writeSvg(OutputFile& out, const Mesh& mesh) {
    const Page page(mesh);
    const EdgeLists lists = listEdges(mesh, page);
    writeHead(out, mesh, page, lists.vConstraints.size());
    // Lines as thin as the mesh is fine, so that it does not become a blot.
    const int width = std::clamp(static_cast<int>(lists.meanLength / 20.0), 20, 100);
    out << "<path class=\"" << (mesh.bOfZone ? "zone" : "area") << "\" fill=\""
        << (mesh.bOfZone ? "#3b82d6" : "#8296ab") << "\" fill-opacity=\"" << (mesh.bOfZone ? ".25" : ".12")
        << "\" fill-rule=\"evenodd\" d=\"";
    writeArea(out, page, lists.vBorder);
    out << "\"/>\n";
    writeGroup(out, page, {"mesh", "#6f869d", width}, lists.vInner);
    writeGroup(out, page, {"hull", "#64748b", 2 * width}, lists.vHull);
    writeGroup(out, page, {"constraints", "#e8590c", std::max(2 * width, 70)}, lists.vConstraints);
    out << "</g>\n</svg>\n";
}

} // namespace cli
