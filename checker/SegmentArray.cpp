#include "checker/SegmentArray.h"

#include "core/HC2.h"
#include "core/hilbertOrder.h"

namespace TESK_KIVO2D {
namespace {

Point2 middle(const Segment2& segment) {
    const Ends ends(segment);
    return Point2(ends.srcX * 0.5 + ends.trgX * 0.5, ends.srcY * 0.5 + ends.trgY * 0.5);
}

} // namespace

SegmentArray::SegmentArray(const std::vector<Segment2*>& vSegments,
                           const std::vector<std::uint32_t>& vPlaces) {
    std::vector<Point2> vMiddles;
    vMiddles.reserve(vPlaces.size());
    for (const std::uint32_t place : vPlaces) {
        const Segment2& segment = *vSegments[place];
        extent.add(segment.getSrc());
        extent.add(segment.getTrg());
        vMiddles.push_back(middle(segment));
    }
    const HilbertOrder order({vMiddles.data(), vMiddles.size()}, HC2(extent));
    vEnds.reserve(vPlaces.size());
    vPlace.reserve(vPlaces.size());
    for (const KeyedIndex& entry : order.entries()) {
        vPlace.push_back(vPlaces[entry.index]);
        vEnds.emplace_back(*vSegments[vPlace.back()]);
    }
}

} // namespace TESK_KIVO2D
