#include "meshing/SegmentOrigins.h"

#include <cmath>

namespace TESK_KIVO2D {

const SegmentOrigins::Ends* SegmentOrigins::find(const Point2* pVtx) const {
    const auto it = mOrigins.find(pVtx);
    return it == mOrigins.end() ? nullptr : &it->second;
}

void SegmentOrigins::add(const Point2* pVtx, const Point2* a, const Point2* b) {
    // An end that a refinement made tells the whole segment, if the other end lies on it too.
    Ends ends(a, b);
    for (const auto& [p, q] : {Ends(a, b), Ends(b, a)}) {
        const Ends* const pWhole = find(p);
        if (pWhole == nullptr) continue;
        const Ends* const pOther = find(q);
        if (pWhole->first == q || pWhole->second == q || (pOther != nullptr && *pOther == *pWhole))
            ends = *pWhole;
    }
    mOrigins.insert_or_assign(pVtx, ends);
}

bool SegmentOrigins::spanSmallAngle(const Point2* p, const Point2* q) const {
    constexpr double tolerance = 0.001; // of the distance: split points are rounded
    if (mOrigins.empty()) return false;
    const Ends *const pEnds = find(p), *const qEnds = pEnds != nullptr ? find(q) : nullptr;
    if (qEnds == nullptr || *pEnds == *qEnds) return false;
    for (const Point2* pApex : {pEnds->first, pEnds->second}) {
        if (pApex != qEnds->first && pApex != qEnds->second) continue;
        const double toP = std::hypot(p->x() - pApex->x(), p->y() - pApex->y());
        const double toQ = std::hypot(q->x() - pApex->x(), q->y() - pApex->y());
        const double between = std::hypot(p->x() - q->x(), p->y() - q->y());
        if (std::fabs(toP - toQ) <= tolerance * toP && between < toP) return true;
    }
    return false;
}

} // namespace TESK_KIVO2D
