#include "checker/SegmentArray.h"

#include "core/HC2.h"
#include "core/hilbertOrder.h"
#include "core/prefetch.h"

namespace TESK_KIVO2D {
namespace {

Point2 middle(const Segment2& segment) {
    const Ends ends(segment);
    return Point2(ends.srcX * 0.5 + ends.trgX * 0.5, ends.srcY * 0.5 + ends.trgY * 0.5);
}

// It may straddle two cache lines.
void prefetchSegment(const Segment2* pSegment) {
    const auto* const pBytes = reinterpret_cast<const char*>(pSegment);
    prefetch(pBytes);
    prefetch(pBytes + sizeof(Segment2) - 1);
}

} // namespace

SegmentArray::SegmentArray(const std::vector<Segment2*>& vSegments, const std::vector<std::uint32_t>& vPlaces)
    : numAll(vSegments.size()) {
    std::vector<Point2> vMiddles;
    vMiddles.reserve(vPlaces.size());
    for (const std::uint32_t place : vPlaces) {
        const Segment2& segment = *vSegments[place];
        extent.add(segment.getSrc());
        extent.add(segment.getTrg());
        vMiddles.push_back(middle(segment));
    }
    const HilbertOrder order({vMiddles.data(), vMiddles.size()}, HC2(extent));
    const std::span<const KeyedIndex> entries = order.entries();
    vEnds.reserve(vPlaces.size());
    vPlace.reserve(vPlaces.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        // Each step needs the memory that the one before has fetched.
        constexpr std::size_t ahead = 16;
        if (i + 3 * ahead < entries.size()) {
            prefetch(&vPlaces[entries[i + 3 * ahead].index]);
            prefetch(static_cast<const void*>(&vSegments[vPlaces[entries[i + 2 * ahead].index]]));
            prefetchSegment(vSegments[vPlaces[entries[i + ahead].index]]);
        }
        vPlace.push_back(vPlaces[entries[i].index]);
        vEnds.emplace_back(*vSegments[vPlace.back()]);
    }
}

} // namespace TESK_KIVO2D
