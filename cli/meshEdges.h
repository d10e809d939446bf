#pragma once

#include "cli/Mesh.h"

#include <cstddef>
#include <vector>

namespace cli {

// The edge of a triangle opposite corner ith. It runs counter-clockwise around the triangle.
struct MeshEdge {
    std::size_t triangle;
    std::size_t ith;
    bool bBorder; // of the triangles of the mesh
};

// Calls visit(MeshEdge) for each edge of the triangles once, named by the first triangle that has it.
template<class Visit>
void forEachEdge(const Mesh& mesh, const Visit& visit) {
    constexpr auto noTriangle = TESK_KIVO2D::MeshArrays::noTriangle; // larger than all numbers
    for (std::size_t k = 0; k < mesh.numTriangles(); ++k) {
        for (std::size_t i = 0; i < 3; ++i) {
            const auto neighbour = mesh.triangles.vNeighbours[3 * k + i];
            if (k < neighbour) visit(MeshEdge{k, i, neighbour == noTriangle});
        }
    }
}

constexpr std::size_t NO_CONSTRAINT = static_cast<std::size_t>(-1);

// Which edges are constraints.
class ConstraintLookup {
public:
    explicit ConstraintLookup(const Mesh& mesh_);

    // Position among the mesh's constraint edges, or NO_CONSTRAINT.
    std::size_t find(const MeshEdge& edge) const;

private:
    // Ends by their custom indices, the lower one first.
    struct Entry {
        std::size_t low, high, position;

        bool operator<(const Entry& other) const {
            return low < other.low || (low == other.low && high < other.high);
        }
    };
    static Entry entryOf(std::size_t p, std::size_t q, std::size_t position);

    const Mesh& mesh;
    std::vector<Entry> vEntries;
};

// The cuts, or the other constraint edges, that are to be drawn with the triangles: those on a triangle of
// the mesh, or all where it is not of a zone. In their order; pieces that follow each other are one line.
// Lines of custom indices.
std::vector<std::vector<std::size_t>> constraintLines(const Mesh& mesh, bool bCuts);

} // namespace cli
