#include "meshing/SegmentOrigins.h"

#include "constraints/splitPoint.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TESK_KIVO2D {
namespace {

double distance(const Point2& p, const Point2& q) { return std::hypot(p.x() - q.x(), p.y() - q.y()); }

// Never outside the box of the two.
Point2 between(const Point2& p, const Point2& q, double share) {
    const auto mix = [share](double a, double b) {
        return std::clamp((1 - share) * a + share * b, std::min(a, b), std::max(a, b));
    };
    return Point2(mix(p.x(), q.x()), mix(p.y(), q.y()));
}

// The number in [low, high], both positive, that needs the fewest binary digits.
double roundestIn(double low, double high) {
    double step = std::ldexp(1.0, std::ilogb(high));
    while (std::floor(high / step) * step < low)
        step *= 0.5;
    return std::floor(high / step) * step;
}

// The end from which distances are to be round; null if there is none.
const Point2* apexFor(const Point2& p, const Point2& q, const WholeSegment& whole) {
    if (!whole.bAcuteAtA) return whole.bAcuteAtB ? whole.b : nullptr;
    if (!whole.bAcuteAtB) return whole.a;
    const double toA = distance(p, *whole.a) + distance(q, *whole.a);
    const double toB = distance(p, *whole.b) + distance(q, *whole.b);
    if (whole.hasEnd(&p) && whole.hasEnd(&q)) return nullptr; // each end gets a half
    return toA < toB ? whole.a : whole.b;
}

} // namespace

WholeSegment SegmentOrigins::wholeOf(const Point2* p, const Point2* q, const EdgeGuard& guard) const {
    // An end that a refinement made tells the whole segment, if the other end lies on it too.
    const WholeSegment *const pOfP = find(p), *const pOfQ = find(q);
    if (pOfP != nullptr && (pOfP->hasEnd(q) || (pOfQ != nullptr && pOfP->isSame(*pOfQ)))) return *pOfP;
    if (pOfQ != nullptr && pOfQ->hasEnd(p)) return *pOfQ;
    return {p, q, isAcute(p, q, guard), isAcute(q, p, guard)};
}

void SegmentOrigins::add(const Point2* pVtx, const WholeSegment& whole) {
    if (!filter.exists()) filter.build();
    mOrigins.insert_or_assign(pVtx, whole);
    filter.set(pVtx);
}

const WholeSegment* SegmentOrigins::find(const Point2* pVtx) const {
    if (mOrigins.empty() || filter.excludes(pVtx)) return nullptr;
    const auto it = mOrigins.find(pVtx);
    return it == mOrigins.end() ? nullptr : &it->second;
}

bool SegmentOrigins::spanSmallAngle(const Point2* p, const Point2* q) const {
    constexpr double tolerance = 0.001;  // of the distance: split points are rounded
    constexpr double chordOf45 = 0.7654; // between points at distance 1
    const WholeSegment *const pOfP = find(p), *const pOfQ = pOfP != nullptr ? find(q) : nullptr;
    if (pOfQ == nullptr || pOfP->isSame(*pOfQ)) return false;
    for (const Point2* pApex : {pOfP->a, pOfP->b}) {
        if (!pOfQ->hasEnd(pApex)) continue;
        const double toP = distance(*p, *pApex), toQ = distance(*q, *pApex);
        if (std::fabs(toP - toQ) <= tolerance * toP && distance(*p, *q) < chordOf45 * toP) return true;
    }
    return false;
}

Point2 roundSplitPointOf(const Point2& p, const Point2& q, const WholeSegment& whole, double minLength) {
    const Point2* const pApex = apexFor(p, q, whole);
    if (pApex == nullptr) return between(p, q, 0.5);
    const double toP = distance(p, *pApex), toQ = distance(q, *pApex);
    const double low = std::min(toP, toQ), length = std::fabs(toP - toQ);
    const bool bUsable = length > 0 && length < std::numeric_limits<double>::infinity();
    if (!bUsable || !(low + length / 3 > 0)) return between(p, q, 0.5);
    const double wanted = roundestIn(low + length / 3, low + length * 2 / 3);
    // Where doubles are too coarse for the distance they may still be fine enough for the middle.
    const double shorter = std::min(wanted - low, low + length - wanted);
    if (shorter < minLength || shorter < length / 4) return between(p, q, 0.5);
    return between(p, q, std::fabs(wanted - toP) / length);
}

} // namespace TESK_KIVO2D
