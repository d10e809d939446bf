#include "meshing/RowSweep.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// A range of the row, empty when low is above high.
struct Range {
    double low = -infinity;
    double high = infinity;

    void include(double lowest, double highest) {
        low = std::min(low, lowest);
        high = std::max(high, highest);
    }
    // To where factor * x lies between the two values.
    void narrow(double factor, double lowest, double highest) {
        if (factor == 0) {
            if (lowest > 0 || highest < 0) *this = {infinity, -infinity};
            return;
        }
        const auto [least, greatest] = std::minmax({lowest / factor, highest / factor}); // by value
        low = std::max(low, least);
        high = std::min(high, greatest);
    }
};

// Of the row at height t above the middle of a disc.
double halfChord(double t) {
    const double square = RowSweep::clearance * RowSweep::clearance - t * t;
    return square >= 0 ? std::sqrt(square) : -1;
}

// What is nearer to a segment than the clearance is two discs and the rectangle between them; where a row
// meets these is one range.
Range rangeNear(const GridSpot& a, const GridSpot& b, double t) {
    constexpr double r = RowSweep::clearance;
    Range all{infinity, -infinity};
    for (const GridSpot& end : {a, b}) {
        const double half = halfChord(t - end.t);
        if (half >= 0) all.include(end.s - half, end.s + half);
    }
    const double ds = b.s - a.s, dt = b.t - a.t, length = std::hypot(ds, dt), h = t - a.t;
    if (!(length > 0)) return all;
    Range rectangle; // from a
    rectangle.narrow(ds, -dt * h, length * length - dt * h);
    rectangle.narrow(dt, ds * h - r * length, ds * h + r * length);
    if (rectangle.low <= rectangle.high) {
        all.include(std::max(a.s + rectangle.low, std::min(a.s, b.s) - r),
                    std::min(a.s + rectangle.high, std::max(a.s, b.s) + r));
    }
    return all;
}

} // namespace

RowSweep::RowSweep(std::vector<GridObstacle> obstacles) : vObstacles(std::move(obstacles)) {
    vRows.reserve(vObstacles.size());
    for (std::size_t i = 0; i < vObstacles.size(); ++i) {
        const auto [low, high] = std::minmax(vObstacles[i].from.t, vObstacles[i].to.t);
        const auto first = static_cast<std::int64_t>(std::ceil(low - clearance));
        const auto last = static_cast<std::int64_t>(std::floor(high + clearance));
        if (first > last) continue;
        vRows.push_back({first, last, i});
        work += static_cast<double>(last - first) + 1;
    }
    std::stable_sort(vRows.begin(), vRows.end(),
                     [](const Rows& r0, const Rows& r1) { return r0.first < r1.first; });
}

std::int64_t RowSweep::nextRow() {
    if (row != noRow) ++row;
    std::erase_if(vActive, [this](const Rows& rows) { return rows.last < row; });
    if (vActive.empty()) row = idxNext < vRows.size() ? vRows[idxNext].first : noRow;
    for (; idxNext < vRows.size() && vRows[idxNext].first <= row; ++idxNext)
        vActive.push_back(vRows[idxNext]);
    return row;
}

void RowSweep::findBlocked() {
    vBlocked.clear();
    for (const Rows& rows : vActive) {
        const Blocked blocked = blockedBy(vObstacles[rows.index]);
        if (blocked.low <= blocked.high) vBlocked.push_back(blocked);
    }
    // What begins at one place may come in any order.
    std::sort(vBlocked.begin(), vBlocked.end(),
              [](const Blocked& b0, const Blocked& b1) { return b0.low < b1.low; });
    vBlocked.push_back({infinity, infinity, 0, nullptr});
}

RowSweep::Blocked RowSweep::blockedBy(const GridObstacle& obstacle) const {
    const GridSpot &a = obstacle.from, &b = obstacle.to;
    const double t = static_cast<double>(row);
    Range range = rangeNear(a, b, t);
    int turn = 0;
    if (obstacle.bBorder && (a.t <= t) != (b.t <= t)) {
        turn = a.t <= t ? -1 : 1;
        const double s = a.s + (t - a.t) / (b.t - a.t) * (b.s - a.s);
        range.include(s, s);
    }
    return {range.low, range.high, turn, &obstacle};
}

} // namespace TESK_KIVO2D
