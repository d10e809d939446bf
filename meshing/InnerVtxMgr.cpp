#include "meshing/InnerVtxMgr.h"

#include <algorithm>

namespace TESK_KIVO2D {

void InnerVtxMgr::reserve() {
    sInsertedInnerPoints.reserve(1);
    if (vInOrder.size() == vInOrder.capacity())
        vInOrder.reserve(std::max<std::size_t>(64, 2 * vInOrder.size()));
}

void InnerVtxMgr::clear() {
    sInsertedInnerPoints = {};
    vInOrder = {};
}

} // namespace TESK_KIVO2D
