#include "core/MeshStore.h"

#include <algorithm>

namespace TESK_KIVO2D {

MeshStore::MeshStore(unsigned int numExpectedVertices) {
    const std::int64_t num = std::max<std::int64_t>(3, numExpectedVertices);
    vertexPool.init(num);
    trianglePool.init(2 * num + 10);
}

VertexRecords MeshStore::takeVertices(std::size_t num) {
    const std::size_t numUsed = std::min(num, vFreeVtx.size());
    std::vector<Point2*> vUsed(vFreeVtx.rbegin(), vFreeVtx.rbegin() + static_cast<std::ptrdiff_t>(numUsed));
    vertexPool.reserve(num - numUsed);
    std::span<Point2> fresh = vertexPool.allocRun(num - numUsed);
    if (fresh.size() < num - numUsed) { // the pool has outgrown its first range of addresses
        vUsed.reserve(num);
        while (vUsed.size() < num)
            vUsed.push_back(vertexPool.alloc());
    }
    vFreeVtx.resize(vFreeVtx.size() - numUsed);
    return {std::move(vUsed), fresh};
}

} // namespace TESK_KIVO2D
