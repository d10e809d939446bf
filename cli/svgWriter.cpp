#include "cli/svgWriter.h"

#include "cli/meshEdges.h"
#include "cli/svgShapes.h"
#include "cli/words.h"

#include <algorithm>

namespace cli {

namespace {

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
        sum += page.lengthOf(ends);
        ++numEdges;
    });
    lists.meanLength = sum / static_cast<double>(numEdges);
    return lists;
}

void writeHead(OutputFile& out, const Mesh& mesh, const Page& page, std::size_t numConstraints) {
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"kivo2d\" role=\"img\" viewBox=\"0 0 "
        << (page.getWidth() + 2 * Page::MARGIN) / 100.0 << " "
        << (page.getHeight() + 2 * Page::MARGIN) / 100.0 << "\">\n<title>"
        << counted(mesh.numTriangles(), "triangle") << ", " << counted(numConstraints, "constraint edge")
        << "</title>\n";
    out << "<g transform=\"translate(10 10) scale(.01)\" stroke-linejoin=\"round\" "
           "stroke-linecap=\"round\">\n";
}

} // namespace

void writeSvg(OutputFile& out, const Mesh& mesh) {
    const Page page(mesh.triangles);
    const EdgeLists lists = listEdges(mesh, page);
    writeHead(out, mesh, page, lists.vConstraints.size());
    // Lines as thin as the mesh is fine, so that it does not become a blot.
    const int width = std::clamp(static_cast<int>(lists.meanLength / 20.0), 20, 100);
    out << "<path class=\"" << (mesh.bOfZone ? "zone" : "area") << "\" fill=\""
        << (mesh.bOfZone ? "#3b82d6" : "#8296ab") << "\" fill-opacity=\"" << (mesh.bOfZone ? ".25" : ".12")
        << "\" fill-rule=\"evenodd\" d=\"";
    writeArea(out, page, lists.vBorder);
    out << "\"/>\n";
    writeStrokes(out, page, {"mesh", "#6f869d", width}, lists.vInner);
    writeStrokes(out, page, {"hull", "#64748b", 2 * width}, lists.vHull);
    writeStrokes(out, page, {"constraints", "#e8590c", std::max(2 * width, 70)}, lists.vConstraints);
    out << "</g>\n</svg>\n";
}

} // namespace cli
