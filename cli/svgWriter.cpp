#include "cli/svgWriter.h"

#include "cli/meshEdges.h"
#include "cli/parts.h"
#include "cli/svgShapes.h"
#include "cli/words.h"

#include <algorithm>
#include <array>

namespace cli {

namespace {

struct EdgeLists {
    std::vector<Trails::Edge> vBorder; // of the area; the others are strokes, and have each edge once
    std::vector<Trails::Edge> vConstraints;
    std::vector<Trails::Edge> vCuts;
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
        const std::size_t constraint = constraints.find(edge);
        if (edge.bBorder) lists.vBorder.push_back(ends);
        std::vector<Trails::Edge>& vOther = edge.bBorder ? lists.vHull : lists.vInner;
        (constraint == NO_CONSTRAINT    ? vOther
         : mesh.vEdges[constraint].bCut ? lists.vCuts
                                        : lists.vConstraints)
            .push_back(ends);
        sum += page.lengthOf(ends);
        ++numEdges;
    });
    lists.meanLength = sum / static_cast<double>(numEdges);
    return lists;
}

void writeHead(OutputFile& out, const Mesh& mesh, const Page& page, const EdgeLists& lists) {
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"kivo2d\" role=\"img\" viewBox=\"0 0 "
        << (page.getWidth() + 2 * Page::MARGIN) / 100.0 << " "
        << (page.getHeight() + 2 * Page::MARGIN) / 100.0 << "\">\n<title>"
        << counted(mesh.numTriangles(), "triangle") << ", "
        << counted(lists.vConstraints.size(), "constraint edge")
        << (lists.vCuts.empty() ? "" : ", " + counted(lists.vCuts.size(), "cut edge")) << "</title>\n";
    out << "<g transform=\"translate(10 10) scale(.01)\" stroke-linejoin=\"round\" "
           "stroke-linecap=\"round\">\n";
}

struct Fill {
    const char* name;
    const char* color;
    const char* opacity;
};

void writeFill(OutputFile& out, const Page& page, const Fill& fill,
               const std::vector<Trails::Edge>& vBorder) {
    out << "<path class=\"" << fill.name << "\" fill=\"" << fill.color << "\" fill-opacity=\"" << fill.opacity
        << "\" fill-rule=\"evenodd\" d=\"";
    writeArea(out, page, vBorder);
    out << "\"/>\n";
}

// One path a colour.
void writePieces(OutputFile& out, const Mesh& mesh, const Page& page) {
    constexpr std::array<const char*, 6> COLORS{"#3b82d6", "#5fb56a", "#f2a33a",
                                                "#a678d8", "#3fb8c0", "#e2726b"};
    const std::vector<std::size_t> vColors = colorsOf(mesh.pieces, mesh.triangles, COLORS.size());
    std::array<std::vector<Trails::Edge>, COLORS.size()> aBorders;
    const std::vector<std::uint32_t>& vPartOf = mesh.pieces.vPartOf;
    for (std::size_t i = 0; i < mesh.triangles.vNeighbours.size(); ++i) {
        const std::uint32_t neighbour = mesh.triangles.vNeighbours[i];
        const std::size_t triangle = i / 3;
        if (neighbour != TESK_KIVO2D::MeshArrays::noTriangle && vPartOf[neighbour] == vPartOf[triangle])
            continue;
        const auto* const pCorners = &mesh.triangles.vCorners[3 * triangle];
        aBorders[vColors[vPartOf[triangle]]].push_back({pCorners[(i + 1) % 3], pCorners[(i + 2) % 3]});
    }
    for (std::size_t color = 0; color < COLORS.size(); ++color) {
        if (!aBorders[color].empty()) writeFill(out, page, {"pieces", COLORS[color], ".4"}, aBorders[color]);
    }
}

} // namespace

void writeSvg(OutputFile& out, const Mesh& mesh) {
    const Page page(mesh.triangles);
    const EdgeLists lists = listEdges(mesh, page);
    writeHead(out, mesh, page, lists);
    // Lines as thin as the mesh is fine, so that it does not become a blot.
    const int width = std::clamp(static_cast<int>(lists.meanLength / 20.0), 20, 100);
    if (mesh.pieces.numParts > 1)
        writePieces(out, mesh, page);
    else if (mesh.bOfZone)
        writeFill(out, page, {"zone", "#3b82d6", ".25"}, lists.vBorder);
    else
        writeFill(out, page, {"area", "#8296ab", ".12"}, lists.vBorder);
    writeStrokes(out, page, {"mesh", "#6f869d", width}, lists.vInner);
    writeStrokes(out, page, {"hull", "#64748b", 2 * width}, lists.vHull);
    writeStrokes(out, page, {"constraints", "#e8590c", std::max(2 * width, 70)}, lists.vConstraints);
    writeStrokes(out, page, {"cuts", "#c2255c", std::max(3 * width, 100)}, lists.vCuts);
    out << "</g>\n</svg>\n";
}

} // namespace cli
