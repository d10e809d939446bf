#include "meshing/InnerVtxMgr.h"

#include "Triangle2.h"
#include "core/HalfEdge.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <unordered_set>

namespace TESK_KIVO2D {
namespace {

// An open disk, in units of a power of two that make its radius about 1, so that squares neither overflow nor
// vanish.
class Disk {
public:
    Disk(const Point2& itsCenter, const Point2& rim) : center(itsCenter) {
        const double extent = std::max(std::fabs(rim.x() - center.x()), std::fabs(rim.y() - center.y()));
        if (extent > 0 && std::isfinite(extent)) exponent = -std::ilogb(extent);
        sqRadius = sqDistanceTo(rim);
    }

    bool contains(const Point2& p) const { return sqDistanceTo(p) < sqRadius; }
    // May be true of an edge that misses it by little.
    bool mayTouch(const Point2& a, const Point2& b) const {
        constexpr double reserve = 1 + 1e-6;
        const Offset u = offsetOf(a), v = offsetOf(b);
        const double dx = v.x - u.x, dy = v.y - u.y;
        const double share = std::clamp(-(u.x * dx + u.y * dy) / (dx * dx + dy * dy), 0.0, 1.0);
        const double x = u.x + share * dx, y = u.y + share * dy;
        return !(x * x + y * y > reserve * sqRadius); // also of what is not a number
    }

private:
    struct Offset {
        double x, y;
    };
    Offset offsetOf(const Point2& p) const {
        return {std::ldexp(p.x() - center.x(), exponent), std::ldexp(p.y() - center.y(), exponent)};
    }
    double sqDistanceTo(const Point2& p) const {
        const Offset offset = offsetOf(p);
        return offset.x * offset.x + offset.y * offset.y;
    }

    const Point2& center;
    int exponent = 0;
    double sqRadius = 0;
};

} // namespace

std::vector<Point2*> InnerVtxMgr::findAround(const Point2* pCenter, const Point2& rim) const {
    const Disk disk(*pCenter, rim);
    // The triangles that touch the disk hang together.
    std::vector<Triangle2*> vMet{pCenter->getIncidentTriangle()};
    std::unordered_set<const Triangle2*> sMet(vMet.begin(), vMet.end());
    std::vector<Point2*> vFound;
    for (std::size_t num = 0; num < vMet.size(); ++num) {
        Triangle2* const pT = vMet[num];
        for (int i = 0; i < 3; ++i) {
            Point2* const pCorner = pT->getCorner(i);
            if (contains(pCorner) && disk.contains(*pCorner)) vFound.push_back(pCorner);
            const HalfEdge edge{pT, i};
            Triangle2* const pN = edge.opposite();
            if (pN != nullptr && disk.mayTouch(*edge.source(), *edge.target()) && sMet.insert(pN).second)
                vMet.push_back(pN);
        }
    }
    std::sort(vFound.begin(), vFound.end(), std::less<>{});
    vFound.erase(std::unique(vFound.begin(), vFound.end()), vFound.end());
    return vFound;
}

} // namespace TESK_KIVO2D
