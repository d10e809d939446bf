#include "cli/meshEdges.h"

#include <algorithm>

namespace cli {

namespace {

std::size_t indexOf(const Mesh& mesh, std::size_t triangle, std::size_t ith) {
    return static_cast<std::size_t>(mesh.getCorner(triangle, ith % 3).getCustomIndex());
}

// One flag for each constraint edge.
std::vector<bool> onTriangles(const Mesh& mesh) {
    std::vector<bool> vOnTriangles(mesh.vEdges.size(), !mesh.bOfZone);
    if (!mesh.bOfZone) return vOnTriangles;
    const ConstraintLookup constraints(mesh);
    forEachEdge(mesh, [&constraints, &vOnTriangles](const MeshEdge& edge) {
        const std::size_t position = constraints.find(edge);
        if (position != NO_CONSTRAINT) vOnTriangles[position] = true;
    });
    return vOnTriangles;
}

} // namespace

ConstraintLookup::ConstraintLookup(const Mesh& mesh_) : mesh(mesh_) {
    vEntries.reserve(mesh.vEdges.size());
    for (std::size_t i = 0; i < mesh.vEdges.size(); ++i)
        vEntries.push_back(entryOf(mesh.vEdges[i].source, mesh.vEdges[i].target, i));
    std::sort(vEntries.begin(), vEntries.end());
}

ConstraintLookup::Entry ConstraintLookup::entryOf(std::size_t p, std::size_t q, std::size_t position) {
    return {std::min(p, q), std::max(p, q), position};
}

std::size_t ConstraintLookup::find(const MeshEdge& edge) const {
    if (vEntries.empty()) return NO_CONSTRAINT;
    const Entry wanted =
        entryOf(indexOf(mesh, edge.triangle, edge.ith + 1), indexOf(mesh, edge.triangle, edge.ith + 2), 0);
    const auto it = std::lower_bound(vEntries.begin(), vEntries.end(), wanted);
    return it == vEntries.end() || wanted < *it ? NO_CONSTRAINT : it->position;
}

std::vector<std::vector<std::size_t>> constraintLines(const Mesh& mesh, bool bCuts) {
    const std::vector<bool> vShown = onTriangles(mesh);
    std::vector<std::vector<std::size_t>> vLines;
    for (std::size_t i = 0; i < mesh.vEdges.size(); ++i) {
        const ConstraintEdge& edge = mesh.vEdges[i];
        if (!vShown[i] || edge.bCut != bCuts) continue;
        if (vLines.empty() || vLines.back().back() != edge.source) vLines.push_back({edge.source});
        vLines.back().push_back(edge.target);
    }
    return vLines;
}

} // namespace cli
