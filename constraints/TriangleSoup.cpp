#include "constraints/TriangleSoup.h"

#include "Bbox2.h"
#include "core/HC2.h"
#include "core/hilbertOrder.h"
#include "core/prefetch.h"
#include "kernel/finite.h"

#include <bit>
#include <cmath>
#include <utility>

namespace TESK_KIVO2D {
TriangleSoup::TriangleSoup(const std::vector<Point2>& vCorners) : vGiven(vCorners) {
    // Never more than three quarters full.
    vSlots.assign(std::bit_ceil(vCorners.size() + vCorners.size() / 3 + 1), none);
    const Index numGiven = static_cast<Index>(vCorners.size() / 3);
    vTriangles.reserve(numGiven);
    TeskTest tests;
    // So many triangles ahead, the slots of the corners are fetched, and then the points that these name.
    constexpr Index aheadSlots = 12, aheadPoints = 5;
    for (Index given = 0; given < numGiven; ++given) {
        if (given + aheadSlots < numGiven) {
            for (const Point2& corner : givenCorners(given + aheadSlots))
                prefetch(static_cast<const void*>(&vSlots[firstSlotOf(corner)]));
        }
        if (given + aheadPoints < numGiven) {
            for (const Point2& corner : givenCorners(given + aheadPoints)) {
                const Index p = vSlots[firstSlotOf(corner)];
                if (p != none) prefetch(static_cast<const void*>(&vPoints[p]));
            }
        }
        add(given, tests);
    }
    sortAlongCurve();
    sortTriangles();
    collectEdges();
}

void TriangleSoup::add(Index given, TeskTest& tests) {
    const std::span<const Point2, 3> corners = givenCorners(given);
    if (!std::all_of(corners.begin(), corners.end(), [](const Point2& p) { return isFinite(p); })) {
        vNotFinite.push_back(given);
        return;
    }
    const Orientation2 orientation = tests.orientationUnbounded(corners[0], corners[1], corners[2]);
    if (orientation == ORIENTATION2_COLLINEAR) {
        vDegenerate.push_back(given);
        return;
    }
    Triangle triangle = {{indexOf(corners[0]), indexOf(corners[1]), indexOf(corners[2])}, given};
    if (orientation == ORIENTATION2_CW) {
        std::swap(triangle.aPoints[1], triangle.aPoints[2]);
        ++numTurnedRound;
    }
    vTriangles.push_back(triangle);
}

TriangleSoup::Index TriangleSoup::indexOf(const Point2& p) {
    Index& slot = vSlots[slotOf(p)];
    if (slot == none) {
        slot = static_cast<Index>(vPoints.size());
        vPoints.push_back(p);
    }
    return slot;
}

// Where the search for the point's slot begins.
std::size_t TriangleSoup::firstSlotOf(const Point2& p) const {
    // Zeros of either sign are equal, so they must have one hash.
    const std::uint64_t x = std::bit_cast<std::uint64_t>(p.x() + 0.0);
    const std::uint64_t y = std::bit_cast<std::uint64_t>(p.y() + 0.0);
    std::uint64_t hash = (x * 0x9E3779B97F4A7C15u) ^ (std::rotl(y, 32) * 0xD6E8FEB86659FD93u);
    hash = (hash ^ (hash >> 29)) * 0xBF58476D1CE4E5B9u;
    return static_cast<std::size_t>(hash ^ (hash >> 32)) & (vSlots.size() - 1);
}

// The slot of the point, or the empty one where it would be.
std::size_t TriangleSoup::slotOf(const Point2& p) const {
    std::size_t i = firstSlotOf(p);
    while (vSlots[i] != none && vPoints[vSlots[i]] != p)
        i = (i + 1) & (vSlots.size() - 1);
    return i;
}

void TriangleSoup::sortAlongCurve() {
    HC2 hc;
    hc.setBox(Bbox2(vPoints.begin(), vPoints.end()));
    const HilbertOrder order(PointSource(vPoints.data(), vPoints.size()), hc);
    std::vector<Point2> vSorted;
    vSorted.reserve(vPoints.size());
    std::vector<Index> vNewIndex(vPoints.size());
    for (const KeyedIndex& entry : order.entries()) {
        vNewIndex[entry.index] = static_cast<Index>(vSorted.size());
        vSorted.push_back(vPoints[entry.index]);
    }
    vPoints.swap(vSorted);
    for (Index& slot : vSlots) {
        if (slot != none) slot = vNewIndex[slot];
    }
    for (Triangle& triangle : vTriangles) {
        for (Index& p : triangle.aPoints)
            p = vNewIndex[p];
    }
}

void TriangleSoup::sortTriangles() {
    const auto lowest = [](const Triangle& triangle) { return std::ranges::min(triangle.aPoints); };
    std::vector<Index> vNext(vPoints.size() + 1, 0);
    for (const Triangle& triangle : vTriangles)
        ++vNext[lowest(triangle) + 1];
    for (std::size_t i = 1; i < vNext.size(); ++i)
        vNext[i] += vNext[i - 1];
    std::vector<Triangle> vSorted(vTriangles.size());
    for (const Triangle& triangle : vTriangles)
        vSorted[vNext[lowest(triangle)]++] = triangle;
    vTriangles.swap(vSorted);
}

void TriangleSoup::collectEdges() {
    const auto forEachHalf = [this](auto f) {
        for (std::size_t t = 0; t < vTriangles.size(); ++t) {
            for (std::size_t i = 0; i < 3; ++i) {
                const Index p = vTriangles[t].aPoints[i], q = vTriangles[t].aPoints[(i + 1) % 3];
                f(std::min(p, q), std::max(p, q), 3 * t + i);
            }
        }
    };
    vFirst.assign(vPoints.size() + 2, 0);
    forEachHalf([&](Index lower, Index, std::size_t) { ++vFirst[lower + 2]; });
    for (std::size_t i = 1; i < vFirst.size(); ++i)
        vFirst[i] += vFirst[i - 1];
    vHalves.resize(3 * vTriangles.size());
    forEachHalf([&](Index lower, Index upper, std::size_t half) {
        vHalves[vFirst[lower + 1]++] = std::uint64_t{upper} << 32 | half;
    });
    vFirst.pop_back();
    const auto at = [this](std::size_t i) { return vHalves.begin() + static_cast<std::ptrdiff_t>(i); };
    for (std::size_t p = 0; p < vPoints.size(); ++p)
        std::sort(at(vFirst[p]), at(vFirst[p + 1]));
}

TriangleSoup::Halves TriangleSoup::halvesBetween(Index p, Index q) const {
    const Index lower = std::min(p, q), upper = std::max(p, q);
    const Halves all(vHalves.data() + vFirst[lower], vFirst[lower + 1] - vFirst[lower]);
    const auto first = std::partition_point(all.begin(), all.end(),
                                            [=](std::uint64_t half) { return upperOf(half) < upper; });
    auto last = first;
    while (last != all.end() && upperOf(*last) == upper)
        ++last;
    return {first, last};
}

} // namespace TESK_KIVO2D
