#include "core/MeshStore.h"

#include <algorithm>

namespace TESK_KIVO2D {

MeshStore::MeshStore(unsigned int numExpectedVertices) {
    const std::int64_t num = std::max<std::int64_t>(3, numExpectedVertices);
    vertexPool.init(num);
    trianglePool.init(2 * num + 10);
}

Point2* MeshStore::createVertex(const Point2& p) {
    if (vFreeVtx.empty()) return new (vertexPool.alloc()) Point2(p);
    Point2* pVtx = vFreeVtx.back();
    vFreeVtx.pop_back();
    *pVtx = p;
    return pVtx;
}

} // namespace TESK_KIVO2D
