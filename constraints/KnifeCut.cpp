#include "constraints/KnifeCut.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TESK_KIVO2D {
namespace {

Point2* placeStop(const KnifeStop& stop, const Point2* pNear, SegmentSite& site, SegmentInserter& inserter) {
    if (stop.pVtx != nullptr) return stop.pVtx;
    if (stop.pCSeg != nullptr) return inserter.splitAt(stop.pCSeg, stop.point);
    return site.insertNear(stop.point, pNear->getIncidentTriangle());
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
    const auto before = [this](const Point2& p, const Point2& q) { return isBefore(p, q); };
    std::sort(vPoints.begin(), vPoints.end(), before);
    const std::vector<KnifeStop> vOnPath = std::move(vStops);
    vStops.clear();
    auto next = std::upper_bound(vPoints.begin(), vPoints.end(), vOnPath.front().point, before);
    for (const KnifeStop& stop : vOnPath) {
        for (; next != vPoints.end() && isBefore(*next, stop.point); ++next)
            vStops.push_back({*next, nullptr, nullptr, stop.pNear});
        vStops.push_back(stop);
    }
}

bool KnifeCut::isBefore(const Point2& p, const Point2& q) const {
    const Point2 src = knife.getSrc(), trg = knife.getTrg();
    const auto compare = [](double from, double to, double a, double b) {
        return a == b || from == to ? 0 : (a < b) == (from < to) ? -1 : 1;
    };
    const int inX = compare(src.x(), trg.x(), p.x(), q.x()), inY = compare(src.y(), trg.y(), p.y(), q.y());
    // Halves, since differences may overflow.
    const bool bMainlyX = std::fabs(trg.x() / 2 - src.x() / 2) >= std::fabs(trg.y() / 2 - src.y() / 2);
    const int first = bMainlyX ? inX : inY, second = bMainlyX ? inY : inX;
    return first < 0 || (first == 0 && second < 0);
}

std::vector<PointerPair> placeStops(const std::vector<KnifeCut>& vCuts, SegmentSite& site,
                                    SegmentInserter& inserter) {
    std::vector<PointerPair> vPieces;
    for (const KnifeCut& cut : vCuts) {
        Point2* pPrevious = nullptr;
        for (const KnifeStop& stop : cut.stops()) {
            const Point2* const pNear = pPrevious != nullptr ? pPrevious : stop.pNear;
            Point2* const pVtx = placeStop(stop, pNear, site, inserter);
            if (pPrevious != nullptr && pVtx != pPrevious) vPieces.emplace_back(pPrevious, pVtx);
            pPrevious = pVtx;
        }
    }
    return vPieces;
}

} // namespace TESK_KIVO2D
