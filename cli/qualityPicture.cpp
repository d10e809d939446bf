#include "cli/qualityPicture.h"

#include "cli/OutputFile.h"
#include "cli/meshEdges.h"
#include "cli/numbers.h"
#include "cli/qualityPanel.h"
#include "cli/smallestAngle.h"
#include "cli/svgShapes.h"
#include "cli/words.h"

#include <algorithm>
#include <filesystem>

namespace cli {

namespace {

// In hundredths of a unit, as the page.
constexpr double VISIBLE = 400.0; // edges of a finer mesh would make it a blot
constexpr int RING_RADIUS = 1200;
constexpr int MARGIN = 1500; // for rings at the border

// The triangles by class of colour.
using Classes = std::array<std::vector<std::uint32_t>, QUALITY_COLORS.size()>;
Classes classesOf(const Mesh& mesh) {
    Classes aClasses;
    for (std::size_t k = 0; k < mesh.numTriangles(); ++k)
        aClasses[colorClassOf(smallestAngleOf(mesh.triangles, k))].push_back(static_cast<std::uint32_t>(k));
    return aClasses;
}

void writeTriangles(OutputFile& out, const Page& page, const Mesh& mesh,
                    const std::vector<std::uint32_t>& vTriangles) {
    constexpr std::size_t NUM_OF_PATH = MAX_EDGES_OF_PATH / 3;
    for (std::size_t first = 0; first < vTriangles.size(); first += NUM_OF_PATH) {
        out << "<path d=\"";
        PathData path(out);
        const std::size_t end = std::min(first + NUM_OF_PATH, vTriangles.size());
        for (std::size_t i = first; i < end; ++i) {
            const std::uint32_t* const pCorners = &mesh.triangles.vCorners[std::size_t{3} * vTriangles[i]];
            path.moveTo(page[pCorners[0]]);
            path.lineTo(page[pCorners[1]]);
            path.lineTo(page[pCorners[2]]);
            path.close();
        }
        out << "\"/>\n";
    }
}

// The worst come last, on top. Bad triangles get a seam of their colour, without which small ones would not
// be seen.
void writeClasses(OutputFile& out, const Page& page, const Mesh& mesh, const Classes& aClasses) {
    constexpr std::size_t FIRST_GOOD = 4; // from 20 degrees

    for (std::size_t i = aClasses.size(); i-- > 0;) {
        if (aClasses[i].empty()) continue;
        out << "<g fill=\"" << QUALITY_COLORS[i] << "\"";
        if (i < FIRST_GOOD) out << " stroke=\"" << QUALITY_COLORS[i] << "\" stroke-width=\"" << 60 << "\"";
        out << ">\n";
        writeTriangles(out, page, mesh, aClasses[i]);
        out << "</g>\n";
    }
}

struct Lines {
    std::vector<Trails::Edge> vBorder;
    std::vector<Trails::Edge> vInner;
    double meanLength = 0.0;
};

Lines linesOf(const Mesh& mesh, const Page& page) {
    Lines lines;
    forEachEdge(mesh, [&](const MeshEdge& edge) {
        const auto* const pCorners = &mesh.triangles.vCorners[3 * edge.triangle];
        const Trails::Edge ends = {pCorners[(edge.ith + 1) % 3], pCorners[(edge.ith + 2) % 3]};
        (edge.bBorder ? lines.vBorder : lines.vInner).push_back(ends);
        lines.meanLength += page.lengthOf(ends);
    });
    lines.meanLength /= static_cast<double>(lines.vBorder.size() + lines.vInner.size());
    return lines;
}

void writeRings(OutputFile& out, const Page& page, const std::vector<WorstTriangle>& vRinged) {
    out << "<g class=\"worst\" fill=\"none\" stroke=\"" << RING_COLOR << "\" stroke-width=\"200\">\n";
    for (const WorstTriangle& triangle : vRinged) {
        int x = 0, y = 0;
        for (const TESK_KIVO2D::Point2& corner : triangle.aCorners) {
            x += page.at(corner).x / 3;
            y += page.at(corner).y / 3;
        }
        out << "<circle cx=\"" << x << "\" cy=\"" << y << "\" r=\"" << RING_RADIUS << "\"/>\n";
    }
    out << "</g>\n";
}

void writeMeshPart(OutputFile& out, const Page& page, const Mesh& mesh, const Classes& aClasses,
                   const std::vector<WorstTriangle>& vRinged) {
    const Lines lines = linesOf(mesh, page);
    // What shines through between neighbours is no background then.
    out << "<path class=\"area\" fill=\"" << QUALITY_COLORS[8] << "\" fill-rule=\"evenodd\" d=\"";
    writeArea(out, page, lines.vBorder);
    out << "\"/>\n";
    writeClasses(out, page, mesh, aClasses);
    const int width = std::clamp(static_cast<int>(lines.meanLength / 25.0), 20, 70);
    if (lines.meanLength >= VISIBLE) writeStrokes(out, page, {"mesh", LINE_COLOR, width}, lines.vInner);
    writeStrokes(out, page, {"border", LINE_COLOR, std::max(80, width)}, lines.vBorder);
    writeRings(out, page, vRinged);
}

} // namespace

void drawQuality(const std::string& filename, const Mesh& mesh, const Measurement& measurement,
                 const std::string& name) {
    constexpr std::size_t NUM_RINGED = 20;
    constexpr double GAP = 30.0;
    const Page page(mesh.triangles);
    const Classes aClasses = classesOf(mesh);
    std::vector<WorstTriangle> vRinged = measurement.vWorst;
    vRinged.resize(std::min(vRinged.size(), NUM_RINGED));
    const double panelLeft = (page.getWidth() + 2 * MARGIN) / 100.0 + GAP;
    const double height = std::max((page.getHeight() + 2 * MARGIN) / 100.0, QualityPanel::HEIGHT);
    OutputFile out(filename);
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"kivo2d-quality\" role=\"img\" viewBox=\"0 0 "
        << panelLeft + QualityPanel::WIDTH << " " << height << "\">\n<title>"
        << counted(mesh.numTriangles(), "triangle") << ", smallest angle "
        << rounded(measurement.figures.angles.smallest, 4) << " degrees</title>\n"
        << "<g transform=\"translate(15 15) scale(.01)\" stroke-linejoin=\"round\" "
           "stroke-linecap=\"round\">\n";
    writeMeshPart(out, page, mesh, aClasses, vRinged);
    out << "</g>\n";
    ColorCounts aCounts{};
    for (std::size_t i = 0; i < aClasses.size(); ++i)
        aCounts[i] = aClasses[i].size();
    QualityPanel(out, measurement.figures, aCounts)
        .write(panelLeft, std::filesystem::path(name).filename().string(), vRinged);
    out << "</svg>\n";
    out.close();
}

} // namespace cli
