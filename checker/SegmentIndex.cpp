#include "checker/SegmentIndex.h"

#include <algorithm>
#include <array>

namespace TESK_KIVO2D {
namespace {

struct Interval {
    double low, high;
};

// What of the extent gets cells. A few segments far away from all others, as one of a number that means "no
// value", would leave these in a few cells, where every box meets every other one: so the grid ends well
// beyond what most of a sample lies in.
Interval gridInterval(const SegmentArray& segments, double Ends::*pCoord, const Interval& extent) {
    constexpr std::size_t sampleSize = 1024;
    std::array<double, sampleSize> aSample;
    std::size_t num = 0;
    for (std::size_t i = 0; i < segments.size(); i += segments.size() / sampleSize + 1)
        aSample[num++] = segments[i].*pCoord;
    if (num == 0) return extent;
    std::sort(aSample.begin(), aSample.begin() + static_cast<std::ptrdiff_t>(num));
    const double low = aSample[num / 16], high = aSample[num - 1 - num / 16];
    constexpr double farAway = 1000;
    const double margin = (high - low) * farAway;
    if (margin == 0) return extent;
    return {std::max(extent.low, low - margin), std::min(extent.high, high + margin)};
}

} // namespace

SegmentIndex::SegmentIndex(const SegmentArray& segments) {
    const Bbox2& box = segments.box();
    const Interval x = gridInterval(segments, &Ends::srcX, {box.get_minX(), box.get_maxX()});
    const Interval y = gridInterval(segments, &Ends::srcY, {box.get_minY(), box.get_maxY()});
    grid.add(Point2(x.low, y.low));
    grid.add(Point2(x.high, y.high));
    axisX.set(x.low, x.high, maxCell);
    axisY.set(y.low, y.high, maxCell);
    tree.build(segments.size(), [&](std::size_t i) { return boxOf(segments[i]); });
}

} // namespace TESK_KIVO2D
