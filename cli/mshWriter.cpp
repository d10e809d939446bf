#include "cli/mshWriter.h"

#include "cli/UsedVertices.h"
#include "cli/meshEdges.h"
#include "cli/numbers.h"

#include <cmath>
#include <limits>
#include <map>

namespace cli {

namespace {

// Physical groups of one dimension.
class Groups {
public:
    void add(double value) { mTagOf.emplace(value, 0); }
    // After all were added.
    void giveTags() {
        mTagOf.erase(0.0);
        int last = 0;
        for (auto& [value, tag] : mTagOf) {
            if (canBeTag(value)) tag = last = static_cast<int>(value);
        }
        if (last == std::numeric_limits<int>::max()) last = 0; // there is room below
        for (auto& [value, tag] : mTagOf) {
            if (tag == 0) tag = nextFree(last);
        }
    }
    // 0 for none.
    int tagOf(double value) const {
        const auto it = mTagOf.find(value);
        return it == mTagOf.end() ? 0 : it->second;
    }
    std::size_t size() const { return mTagOf.size(); }
    void writeNames(OutputFile& out, int dimension, const char* noun) const {
        for (const auto& [value, tag] : mTagOf)
            out << dimension << " " << tag << " \"" << noun << " " << shortest(value) << "\"\n";
    }

private:
    static bool canBeTag(double value) {
        return value >= 1.0 && value <= std::numeric_limits<int>::max() && value == std::floor(value);
    }
    int nextFree(int& last) const {
        do
            ++last;
        while (mTagOf.count(last) > 0);
        return last;
    }

    std::map<double, int> mTagOf; // by marker or attribute
};

struct Line {
    MeshEdge edge;
    int marker;
};

std::vector<Line> linesOf(const Mesh& mesh) {
    std::vector<Line> vLines;
    const ConstraintLookup constraints(mesh);
    forEachEdge(mesh, [&](const MeshEdge& edge) {
        const std::size_t position = constraints.find(edge);
        if (position != NO_CONSTRAINT) vLines.push_back({edge, mesh.vEdges[position].marker});
    });
    return vLines;
}

// Number, kind, two tags: the physical group, and the piece of geometry, which must lie in one group only.
void writeElementHead(OutputFile& out, std::size_t number, int kind, int group) {
    out << number << " " << kind << " 2 " << group << " " << static_cast<std::size_t>(group) + 1;
}

} // namespace

void writeMsh(OutputFile& out, const Mesh& mesh) {
    constexpr int LINE = 1, TRIANGLE = 2; // as Gmsh numbers kinds of elements, and dimensions
    const UsedVertices vertices(mesh);
    const std::vector<Line> vLines = linesOf(mesh);
    Groups markers, regions;
    for (const Line& line : vLines)
        markers.add(line.marker);
    for (const double attribute : mesh.vTriangleAttributes)
        regions.add(attribute);
    markers.giveTags();
    regions.giveTags();
    out << "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n";
    if (markers.size() + regions.size() > 0) {
        out << "$PhysicalNames\n" << markers.size() + regions.size() << "\n";
        markers.writeNames(out, LINE, "marker");
        regions.writeNames(out, TRIANGLE, "region");
        out << "$EndPhysicalNames\n";
    }
    out << "$Nodes\n" << vertices.size() << "\n";
    for (std::size_t i = 0; i < vertices.size(); ++i)
        out << i + 1 << " " << vertices[i].x() << " " << vertices[i].y() << " 0\n";
    out << "$EndNodes\n$Elements\n" << vLines.size() + mesh.numTriangles() << "\n";
    const auto writeCorner = [&](std::size_t triangle, std::size_t ith) {
        out << " " << vertices.numberOf(mesh.triangles.vCorners[3 * triangle + ith % 3]) + 1;
    };
    std::size_t number = 0;
    for (const Line& line : vLines) {
        writeElementHead(out, ++number, LINE, markers.tagOf(line.marker));
        writeCorner(line.edge.triangle, line.edge.ith + 1);
        writeCorner(line.edge.triangle, line.edge.ith + 2);
        out << "\n";
    }
    for (std::size_t k = 0; k < mesh.numTriangles(); ++k) {
        writeElementHead(out, ++number, TRIANGLE,
                         mesh.vTriangleAttributes.empty() ? 0 : regions.tagOf(mesh.vTriangleAttributes[k]));
        for (std::size_t i = 0; i < 3; ++i)
            writeCorner(k, i);
        out << "\n";
    }
    out << "$EndElements\n";
}

} // namespace cli
