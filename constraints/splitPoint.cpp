#include "constraints/splitPoint.h"

#include "Vector2.h"
#include "core/edgeSearch.h"
#include "kernel/tools.h"

#include <cmath>
#include <limits>

namespace TESK_KIVO2D {
namespace {

// The direction from p to q, of length 1 if they differ. Whatever the coordinates, nothing overflows.
Vector2 directionTo(const Point2& p, const Point2& q) {
    const double dx = 0.5 * q.x() - 0.5 * p.x(), dy = 0.5 * q.y() - 0.5 * p.y();
    const double extent = std::fmax(std::fabs(dx), std::fabs(dy));
    if (!(extent > 0)) return Vector2();
    const double length = std::hypot(dx / extent, dy / extent);
    return Vector2(dx / extent / length, dy / extent / length);
}

} // namespace

bool isAcute(const Point2* pApex, const Point2* pOther, const EdgeGuard& guard) {
    constexpr int many = 64; // spokes: then some are close to each other
    const Vector2 direction = directionTo(*pApex, *pOther);
    int num = 0;
    bool bAcute = false;
    forEachSpoke(pApex, [&](const Point2* pEnd) {
        if (++num > many) bAcute = true;
        if (bAcute || pEnd == pOther || !guard.isFixed(pApex, pEnd)) return !bAcute;
        bAcute = directionTo(*pApex, *pEnd) * direction > 0.5;
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
