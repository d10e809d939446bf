#pragma once

#include "cli/Domain.h"
#include "cli/constraints.h"

#include <Kivo_2D.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cli {

// What hangs together by edges that are no barriers is one part.
struct Parts {
    std::size_t numParts = 0;
    std::vector<std::uint32_t> vPartOf; // by triangle, from 0 in the order of their first triangles
};

// A triangulation in the order of its input, ready for files: vertex k is the k-th different point of the
// table, and all files of one run use the same numbers. The triangles are those of a zone where there is one;
// vertices and constraint edges are those of the whole triangulation in any case. Refers to the input and the
// triangulation.
struct Mesh {
    const PointTable* pTable = nullptr;
    const Domain* pDomain = nullptr; // null for bare points
    std::vector<const TESK_KIVO2D::Point2*> vVertices;
    std::vector<std::size_t> vNumberOf; // by custom index: number in files
    bool bOfZone = false;
    TESK_KIVO2D::MeshArrays triangles;
    std::vector<double> vTriangleAttributes; // of each triangle; empty when the input has no regions
    std::vector<ConstraintEdge> vEdges;
    Parts pieces; // into which cuts divide the triangles; none where nothing was cut

    std::size_t numTriangles() const { return triangles.vCorners.size() / 3; }
    const TESK_KIVO2D::Point2& getCorner(std::size_t triangle, std::size_t ith) const {
        return *triangles.vVertices[triangles.vCorners[3 * triangle + ith]];
    }
    // The number in files.
    std::size_t getCornerNumber(std::size_t triangle, std::size_t ith) const {
        return vNumberOf[static_cast<std::size_t>(getCorner(triangle, ith).getCustomIndex())];
    }
};

// The points of the table as they stand, equal ones included, with no triangles.
Mesh meshOfPoints(const PointTable& table);
// The vertices; the caller adds the rest.
Mesh meshOf(const TESK_KIVO2D::Kivo_2D& triangulation, const Input& input);

} // namespace cli
