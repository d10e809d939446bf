#pragma once

#include "cli/Domain.h"
#include "cli/constraints.h"

#include <Kivo_2D.h>

#include <cstddef>
#include <vector>

namespace cli {

// A triangulation in the order of its input, ready for files: vertex k is the k-th different point of the
// table, and all files of one run use the same numbers. Refers to the input and the triangulation.
struct Mesh {
    const PointTable* pTable = nullptr;
    const Domain* pDomain = nullptr; // null for bare points
    std::vector<const TESK_KIVO2D::Point2*> vVertices;
    std::vector<std::size_t> vNumberOf; // by custom index: number in files
    std::vector<TESK_KIVO2D::Triangle2*> vTriangles;
    std::vector<double> vTriangleAttributes; // of each triangle; empty when the input has no regions
    std::vector<ConstraintEdge> vEdges;

    std::size_t getNumberOf(const TESK_KIVO2D::Point2* pVertex) const {
        return vNumberOf[static_cast<std::size_t>(pVertex->getCustomIndex())];
    }
};

// The points of the table as they stand, equal ones included, with no triangles.
Mesh meshOfPoints(const PointTable& table);
// Vertices and triangles; the caller adds the rest.
Mesh meshOf(const TESK_KIVO2D::Kivo_2D& triangulation, const Input& input);

} // namespace cli
