#include "meshing/InnerVtxMgr.h"

#include <algorithm>

namespace TESK_KIVO2D {

void InnerVtxMgr::reserve(std::size_t num) {
    sInsertedInnerPoints.reserve(num);
    if (vInOrder.capacity() - vInOrder.size() < num)
        vInOrder.reserve(std::max<std::size_t>(64, 2 * vInOrder.size() + num));
}

void InnerVtxMgr::clear() {
    sInsertedInnerPoints = {};
    vInOrder = {};
}

} // namespace TESK_KIVO2D
