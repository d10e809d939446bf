#include "meshing/RefCand3.h"

#include "meshing/SegmentSplitter.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace TESK_KIVO2D {

bool RefCand3::isExemptFromAngle() const {
    const int s = shape.getMinIndex(); // the smallest angle is that at corner s
    const HalfEdge shortest{pT, s};
    const int next = Triangle2::incIndexBy1(s), previous = Triangle2::incIndexBy2(s);
    if (site.marks.isClosed({pT, next}) && site.marks.isClosed({pT, previous})) return true;
    return site.origins.spanSmallAngle(shortest.source(), shortest.target());
}

bool RefCand3::isOfRounding() const {
    return splitIndex == insertInside ? shape.hasTinyEdge(*pT) : shape.isFlat(*pT);
}

double RefCand3::getKey() const {
    if (shape.scale == site.limits.scale()) return shape.sqShortest();
    const double unit = site.limits.scale() / shape.scale;
    return std::max(shape.sqShortest() * unit * unit, DBL_TRUE_MIN);
}

// The circumcentre; or, where that is further away from the shortest edge, the off-centre: the point from
// which the edge is seen under an angle that is large enough by a margin. So the new triangle on this edge is
// as large as it may be, and fewer are needed (Uengoer 2004).
Point2 RefCand3::computePoint() const {
    const int s = shape.getMinIndex();
    const HalfEdge edge{pT, s};
    const Point2 &o = *edge.source(), &d = *edge.target(), &apex = *pT->getCorner(s);
    const double scale = shape.scale, x = o.x() * scale, y = o.y() * scale;
    const double bx = d.x() * scale - x, by = d.y() * scale - y;
    const double cx = apex.x() * scale - x, cy = apex.y() * scale - y;
    const double sqB = bx * bx + by * by, sqC = cx * cx + cy * cy;
    const double twiceCross = 2 * (bx * cy - by * cx);
    // From the middle of the edge, as a multiple of its length turned by 90 degrees.
    const double height = (sqC - (bx * cx + by * cy)) / twiceCross;
    const double offHeight = site.limits.offCentreHeight();
    if (height <= offHeight && std::fabs(height) < 1e100) {
        const double ux = (cy * sqB - by * sqC) / twiceCross, uy = (bx * sqC - cx * sqB) / twiceCross;
        return Point2((x + ux) / scale, (y + uy) / scale);
    }
    const double h = std::min(offHeight, 1e100);
    return Point2((x + 0.5 * bx - h * by) / scale, (y + 0.5 * by + h * bx) / scale);
}

void RefCand3::update() {
    point = computePoint();
    splitIndex = leave;
    obstacle = MeshObstacle::ARITHMETIC;
    if (!std::isfinite(point.x()) || !std::isfinite(point.y())) return;
    // Seen from the largest angle, the point lies in the triangle or straight across the longest edge.
    sight = look(pT, shape.getMaxIndex(), point, site.tests, site.marks);
    if (sight.end == Sight::INSIDE || sight.end == Sight::ON_EDGE) {
        splitIndex = insertInside;
    } else if (sight.end == Sight::BLOCKED) {
        const std::optional<MeshObstacle> found = SegmentSplitter::obstacleAt(sight.edge, site);
        if (found) {
            obstacle = *found;
        } else {
            splitIndex = sight.edge.ith;
        }
    }
}

} // namespace TESK_KIVO2D
