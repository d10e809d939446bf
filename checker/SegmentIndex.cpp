#include "checker/SegmentIndex.h"

namespace TESK_KIVO2D {

SegmentIndex::SegmentIndex(const SegmentArray& segments) {
    axisX.set(segments.box().get_minX(), segments.box().get_maxX(), maxCell);
    axisY.set(segments.box().get_minY(), segments.box().get_maxY(), maxCell);
    tree.build(segments.size(), [&](std::size_t i) { return boxOf(segments[i]); });
}

} // namespace TESK_KIVO2D
