#include "constraints/KnifeCut.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace TESK_KIVO2D {
namespace {

Point2* placeStop(const KnifeStop& stop, const Point2* pNear, SegmentSite& site, SegmentInserter& inserter) {
    if (stop.pVtx != nullptr) return stop.pVtx;
    if (stop.pCSeg != nullptr) return inserter.splitAt(stop.pCSeg, stop.point);
    return site.insertNear(stop.point, pNear->getIncidentTriangle());
}

} // namespace

KnifeCut::KnifeCut(const Segment2& itsKnife, std::vector<KnifeStop> vItsStops)
    : knife(itsKnife), bAscending(knife.getSrc() < knife.getTrg()), vStops(std::move(vItsStops)) {
    sort();
}

void KnifeCut::add(const std::vector<Point2>& vPoints) {
    if (isPoint()) return;
    const KnifeStop first = vStops.front(), last = vStops.back();
    for (const Point2& p : vPoints) {
        if (isBefore(first.point, p) && isBefore(p, last.point))
            vStops.push_back({p, nullptr, nullptr, first.pNear});
    }
    sort();
}

void KnifeCut::sort() {
    // A vertex is as good as any other stop there; and where a constraint is crossed it has to be split.
    const auto rank = [](const KnifeStop& stop) {
        return stop.pVtx != nullptr ? 0 : stop.pCSeg != nullptr ? 1 : 2;
    };
    std::stable_sort(vStops.begin(), vStops.end(), [&](const KnifeStop& a, const KnifeStop& b) {
        return a.point == b.point ? rank(a) < rank(b) : isBefore(a.point, b.point);
    });
    const auto isSame = [](const KnifeStop& a, const KnifeStop& b) { return a.point == b.point; };
    vStops.erase(std::unique(vStops.begin(), vStops.end(), isSame), vStops.end());
}

std::vector<PointerPair> placeStops(const std::vector<KnifeCut>& vCuts, SegmentSite& site,
                                    SegmentInserter& inserter) {
    std::vector<PointerPair> vPieces;
    for (const KnifeCut& cut : vCuts) {
        Point2* pPrevious = nullptr;
        for (const KnifeStop& stop : cut.stops()) {
            const Point2* const pNear = pPrevious != nullptr ? pPrevious : stop.pNear;
            Point2* const pVtx = placeStop(stop, pNear, site, inserter);
            if (pPrevious != nullptr) vPieces.emplace_back(pPrevious, pVtx);
            pPrevious = pVtx;
        }
    }
    return vPieces;
}

} // namespace TESK_KIVO2D
