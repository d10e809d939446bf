#include "core/MeshStore.h"

#include <algorithm>

namespace TESK_KIVO2D {

MeshStore::MeshStore(unsigned int numExpectedVertices) {
    const std::int64_t num = std::max<std::int64_t>(3, numExpectedVertices);
    vertexPool.init(num);
    trianglePool.init(2 * num + 10);
}

} // namespace TESK_KIVO2D
