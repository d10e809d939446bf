#include "cli/geojsonWriter.h"

#include "cli/meshEdges.h"

namespace cli {

namespace {

using TESK_KIVO2D::Point2;

class FeatureWriter {
public:
    FeatureWriter(OutputFile& out_, const Mesh& mesh_) : out(out_), mesh(mesh_) {
        out << "{\"type\":\"FeatureCollection\",\"features\":[";
    }

    void writeTriangle(std::size_t triangle) {
        begin();
        out << "{\"triangle\":" << mesh.pTable->firstIndex + triangle;
        if (!mesh.vTriangleAttributes.empty()) out << ",\"region\":" << mesh.vTriangleAttributes[triangle];
        if (mesh.pieces.numParts > 0) out << ",\"piece\":" << mesh.pieces.vPartOf[triangle] + std::size_t{1};
        beginGeometry("Polygon");
        out << "[";
        for (std::size_t i = 0; i < 4; ++i) {
            if (i > 0) out << ",";
            writePosition(mesh.getCorner(triangle, i % 3));
        }
        out << "]";
        end();
    }

    void writePoints() {
        begin();
        out << "{\"points\":" << mesh.vVertices.size();
        beginGeometry("MultiPoint");
        for (std::size_t k = 0; k < mesh.vVertices.size(); ++k) {
            if (k > 0) out << ",";
            writePosition(*mesh.vVertices[k]);
        }
        end();
    }

    // Cuts, or the other ones.
    void writeConstraints(const char* name, bool bCuts) {
        const auto vLines = constraintLines(mesh, bCuts);
        if (vLines.empty()) return;
        std::size_t numEdges = 0;
        for (const auto& vLine : vLines)
            numEdges += vLine.size() - 1;
        begin();
        out << "{\"" << name << "\":" << numEdges;
        beginGeometry("MultiLineString");
        for (std::size_t k = 0; k < vLines.size(); ++k) {
            out << (k == 0 ? "[" : ",[");
            for (std::size_t i = 0; i < vLines[k].size(); ++i) {
                if (i > 0) out << ",";
                writePosition(mesh.pTable->vPoints[vLines[k][i]]);
            }
            out << "]";
        }
        end();
    }

    void finish() { out << "\n]}\n"; }

private:
    void begin() {
        out << (bFirst ? "\n" : ",\n") << "{\"type\":\"Feature\",\"properties\":";
        bFirst = false;
    }
    void beginGeometry(const char* type) {
        out << "},\"geometry\":{\"type\":\"" << type << "\",\"coordinates\":[";
    }
    void end() { out << "]}}"; }
    void writePosition(const Point2& point) {
        out << "[" << point.x() << "," << point.y();
        const auto position = static_cast<std::size_t>(point.getCustomIndex());
        if (mesh.pTable->numAttributes > 0) out << "," << mesh.pTable->getAttributes(position)[0];
        out << "]";
    }

    OutputFile& out;
    const Mesh& mesh;
    bool bFirst = true;
};

} // namespace

void writeGeoJson(OutputFile& out, const Mesh& mesh) {
    FeatureWriter features(out, mesh);
    for (std::size_t k = 0; k < mesh.numTriangles(); ++k)
        features.writeTriangle(k);
    if (mesh.numTriangles() == 0 && !mesh.vVertices.empty()) features.writePoints();
    features.writeConstraints("constraints", false);
    features.writeConstraints("cuts", true);
    features.finish();
}

} // namespace cli
