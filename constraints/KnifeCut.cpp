#include "constraints/KnifeCut.h"

#include "kernel/tools.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace TESK_KIVO2D {
namespace {

// Calls f with each number below num: the one in the middle first, then those in the middle of the halves,
// and so on. Vertices that come one after the other along a line may each take over all triangles of the one
// before, and a segment that is split from one end to the other makes a tree as deep as it has pieces.
template<class F>
void forEachMiddleFirst(std::size_t num, F f) {
    for (std::size_t step = std::bit_floor(num); step > 0; step /= 2) {
        for (std::size_t i = step; i <= num; i += 2 * step)
            f(i - 1);
    }
}

Point2* placeStop(const KnifeStop& stop, SegmentSite& site, SegmentInserter& inserter) {
    if (stop.pCSeg != nullptr) return inserter.splitAt(stop.pCSeg, stop.point);
    return site.insertNear(stop.point, stop.pNear->getIncidentTriangle());
}

} // namespace

Point2 KnifeCut::toHull(const Point2& p) const {
    const auto isNear = [](double a, double b) { return a == b || std::nextafter(a, b) == b; };
    for (const KnifeStop& stop : {vStops.front(), vStops.back()}) {
        if (stop.bLeavesHull && isNear(p.x(), stop.point.x()) && isNear(p.y(), stop.point.y()))
            return stop.point;
    }
    return p;
}

void KnifeCut::add(std::vector<Point2> vPoints) {
    if (isPoint()) return;
    const Point2 src = knife.getSrc(), trg = knife.getTrg();
    const auto before = [&](const Point2& p, const Point2& q) { return isBefore(p, q, src, trg); };
    std::sort(vPoints.begin(), vPoints.end(), before);
    const std::vector<KnifeStop> vOnPath = std::move(vStops);
    vStops.clear();
    auto next = std::upper_bound(vPoints.begin(), vPoints.end(), vOnPath.front().point, before);
    for (const KnifeStop& stop : vOnPath) {
        for (; next != vPoints.end() && before(*next, stop.point); ++next)
            vStops.push_back({*next, nullptr, nullptr, stop.pNear});
        vStops.push_back(stop);
    }
}

void KnifeCut::place(SegmentSite& site, SegmentInserter& inserter) {
    forEachMiddleFirst(vStops.size(), [&](std::size_t i) {
        if (vStops[i].pVtx == nullptr) vStops[i].pVtx = placeStop(vStops[i], site, inserter);
    });
}

std::vector<PointerPair> placeStops(std::vector<KnifeCut>& vCuts, SegmentSite& site,
                                    SegmentInserter& inserter) {
    forEachMiddleFirst(vCuts.size(), [&](std::size_t i) { vCuts[i].place(site, inserter); });
    std::vector<PointerPair> vPieces;
    for (const KnifeCut& cut : vCuts) {
        const std::vector<KnifeStop>& vStops = cut.stops();
        for (std::size_t i = 1; i < vStops.size(); ++i) {
            if (vStops[i - 1].pVtx != vStops[i].pVtx)
                vPieces.emplace_back(vStops[i - 1].pVtx, vStops[i].pVtx);
        }
    }
    return vPieces;
}

} // namespace TESK_KIVO2D
