#include "cli/interpolation.h"

#include <algorithm>
#include <cmath>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;

struct Xy {
    double x, y;
};

// Halves, since the whole difference of two finite numbers may be infinite.
Xy halfDifference(const Point2& to, const Point2& from) {
    return {to.x() * 0.5 - from.x() * 0.5, to.y() * 0.5 - from.y() * 0.5};
}

double shareOf(double part, double whole) { return whole == 0.0 ? 0.0 : std::clamp(part / whole, 0.0, 1.0); }

double cross(const Xy& a, const Xy& b) { return a.x * b.y - a.y * b.x; }

} // namespace

void interpolateAlong(PointTable& table, std::size_t position, std::size_t source, std::size_t target) {
    const Point2& from = table.vPoints[source];
    const Xy part = halfDifference(table.vPoints[position], from);
    const Xy whole = halfDifference(table.vPoints[target], from);
    // The longer coordinate alone: the point is on the line but for its rounding.
    const double share =
        std::fabs(whole.x) < std::fabs(whole.y) ? shareOf(part.y, whole.y) : shareOf(part.x, whole.x);
    for (std::size_t i = 0; i < table.numAttributes; ++i) {
        table.vAttributes[position * table.numAttributes + i] =
            std::lerp(table.getAttributes(source)[i], table.getAttributes(target)[i], share);
    }
}

void interpolateWithin(PointTable& table, std::size_t position, const TESK_KIVO2D::Triangle2& triangle) {
    const Point2& corner = *triangle.getCorner(0);
    Xy to1 = halfDifference(*triangle.getCorner(1), corner);
    Xy to2 = halfDifference(*triangle.getCorner(2), corner);
    Xy toPoint = halfDifference(table.vPoints[position], corner);
    const double scale = std::max({std::fabs(to1.x), std::fabs(to1.y), std::fabs(to2.x), std::fabs(to2.y)});
    for (Xy* p : {&to1, &to2, &toPoint}) { // products then neither overflow nor vanish
        p->x /= scale;
        p->y /= scale;
    }
    const double area = cross(to1, to2);
    const double share1 = shareOf(cross(toPoint, to2), area);
    const double share2 = std::min(shareOf(cross(to1, toPoint), area), 1.0 - share1);
    const double aShares[] = {1.0 - share1 - share2, share1, share2};
    for (std::size_t i = 0; i < table.numAttributes; ++i) {
        double value = 0.0;
        for (int k = 0; k < 3; ++k) {
            const auto cornerPosition = static_cast<std::size_t>(triangle.getCorner(k)->getCustomIndex());
            value += aShares[k] * table.getAttributes(cornerPosition)[i];
        }
        table.vAttributes[position * table.numAttributes + i] = value;
    }
}

} // namespace cli
