#include "constraints/splitPoint.h"

#include "Vector2.h"
#include "core/edgeSearch.h"
#include "kernel/tools.h"

#include <cmath>
#include <limits>

namespace TESK_KIVO2D {

bool isAcute(const Point2* pApex, const Point2* pOther, const EdgeGuard& guard) {
    constexpr int many = 64; // spokes: then some are close to each other
    const Vector2 direction = *pOther - *pApex;
    int num = 0;
    bool bAcute = false;
    forEachSpoke(pApex, [&](const Point2* pEnd) {
        if (++num > many) bAcute = true;
        if (bAcute || pEnd == pOther || !guard.isFixed(pApex, pEnd)) return !bAcute;
        const Vector2 spoke = *pEnd - *pApex;
        bAcute = spoke * direction > 0.5 * spoke.length() * direction.length();
        return !bAcute;
    });
    return bAcute;
}

Point2 splitPointOf(const Point2* a, const Point2* b, const EdgeGuard& guard) {
    const bool bAcuteAtA = isAcute(a, b, guard), bAcuteAtB = isAcute(b, a, guard);
    if (bAcuteAtA == bAcuteAtB) return centerWithShift(*a, *b);
    const Point2 &apex = bAcuteAtA ? *a : *b, &other = bAcuteAtA ? *b : *a;
    const Vector2 way = other - apex;
    const double length = way.length();
    if (!(length > 0 && length < std::numeric_limits<double>::infinity())) return centerWithShift(*a, *b);
    const double share = std::ldexp(1.0, std::ilogb(length * (2.0 / 3))) / length; // between 1/3 and 2/3
    return Point2(apex.x() + share * way.x(), apex.y() + share * way.y());
}

} // namespace TESK_KIVO2D
