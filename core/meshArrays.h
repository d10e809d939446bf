#pragma once

#include "MeshArrays.h"
#include "Triangle2.h"
#include "core/MeshStore.h"

#include <vector>

namespace TESK_KIVO2D {

// Replaces the content by these triangles, all different ones of the store, in their order. False, with empty
// arrays, when 32 bits can't number them.
bool fillMeshArrays(const MeshStore& store, const std::vector<Triangle2*>& vTriangles, bool bNeighbours,
                    MeshArrays& arrays);

// The number of each vertex in the arrays, by its record; MeshArrays::noTriangle for those that are not in
// them.
class VertexNumbering {
public:
    VertexNumbering(const MeshStore& store, const MeshArrays& arrays);
    std::uint32_t operator[](const Point2* pVtx) const { return vNumbers[records.numberOf(pVtx)]; }

private:
    RecordNumbers<Point2> records;
    std::vector<std::uint32_t> vNumbers;
};

} // namespace TESK_KIVO2D
