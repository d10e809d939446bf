#include "checker/SegmentIndex.h"

namespace TESK_KIVO2D {

SegmentIndex::SegmentIndex(const SegmentArray& segments) : extent(segments.box()) {
    axisX.set(extent.get_minX(), extent.get_maxX(), maxCell);
    axisY.set(extent.get_minY(), extent.get_maxY(), maxCell);
    tree.build(segments.size(), [&](std::size_t i) { return boxOf(segments[i]); });
}

} // namespace TESK_KIVO2D
