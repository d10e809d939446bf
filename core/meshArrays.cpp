#include "core/meshArrays.h"

#include <algorithm>

namespace TESK_KIVO2D {
namespace {

constexpr std::uint32_t none = MeshArrays::noTriangle;

void fillVertices(const MeshStore& store, const std::vector<Triangle2*>& vTriangles, MeshArrays& arrays) {
    const RecordNumbers<Point2> records = store.vertexNumbers();
    std::vector<std::uint32_t> vNumbers(records.size(), none);
    arrays.vCorners.reserve(3 * vTriangles.size());
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            Point2* const pVtx = pT->getCorner(i);
            std::uint32_t& number = vNumbers[records.numberOf(pVtx)];
            if (number == none) {
                number = static_cast<std::uint32_t>(arrays.vVertices.size());
                arrays.vVertices.push_back(pVtx);
            }
            arrays.vCorners.push_back(number);
        }
    }
    arrays.vCoordinates.reserve(2 * arrays.vVertices.size());
    for (const Point2* pVtx : arrays.vVertices)
        arrays.vCoordinates.insert(arrays.vCoordinates.end(), {pVtx->x(), pVtx->y()});
}

void fillNeighbours(const MeshStore& store, const std::vector<Triangle2*>& vTriangles, MeshArrays& arrays) {
    const RecordNumbers<Triangle2> records = store.triangleNumbers();
    std::vector<std::uint32_t> vNumbers(records.size(), none);
    for (std::size_t i = 0; i < vTriangles.size(); ++i)
        vNumbers[records.numberOf(vTriangles[i])] = static_cast<std::uint32_t>(i);
    arrays.vNeighbours.reserve(3 * vTriangles.size());
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            arrays.vNeighbours.push_back(pN == nullptr ? none : vNumbers[records.numberOf(pN)]);
        }
    }
}

} // namespace

bool fillMeshArrays(const MeshStore& store, const std::vector<Triangle2*>& vTriangles, bool bNeighbours,
                    MeshArrays& arrays) {
    arrays = {};
    // No more vertices than three a triangle.
    if (vTriangles.size() >= none || std::min(store.vertexNumbers().size(), 3 * vTriangles.size()) >= none)
        return false;
    fillVertices(store, vTriangles, arrays);
    if (bNeighbours) fillNeighbours(store, vTriangles, arrays);
    return true;
}

VertexNumbering::VertexNumbering(const MeshStore& store, const MeshArrays& arrays)
    : records(store.vertexNumbers()), vNumbers(records.size(), none) {
    for (std::size_t i = 0; i < arrays.vVertices.size(); ++i)
        vNumbers[records.numberOf(arrays.vVertices[i])] = static_cast<std::uint32_t>(i);
}

} // namespace TESK_KIVO2D
