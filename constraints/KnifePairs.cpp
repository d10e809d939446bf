#include "constraints/KnifePairs.h"

#include "Segment2.h"
#include "checker/SegmentQueries.h"
#include "constraints/DistinctList.h"
#include "kernel/TeskTest.h"
#include "kernel/tools.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <utility>

namespace TESK_KIVO2D {
namespace {

// Of each knife: the number of the first one with the same ends, in whatever order.
std::vector<std::uint32_t> firstEqual(const std::vector<KnifeCut>& vCuts) {
    const auto endsOf = [&](std::uint32_t i) {
        const Segment2& knife = vCuts[i].getKnife();
        const Point2 src = knife.getSrc(), trg = knife.getTrg();
        return std::pair(std::min(src, trg), std::max(src, trg));
    };
    std::vector<std::uint32_t> vOrder(vCuts.size()), vFirst(vCuts.size());
    std::iota(vOrder.begin(), vOrder.end(), 0U);
    std::stable_sort(vOrder.begin(), vOrder.end(),
                     [&](std::uint32_t i, std::uint32_t k) { return endsOf(i) < endsOf(k); });
    for (std::size_t n = 0; n < vOrder.size(); ++n) {
        const bool bAgain = n > 0 && endsOf(vOrder[n]) == endsOf(vOrder[n - 1]);
        vFirst[vOrder[n]] = bAgain ? vFirst[vOrder[n - 1]] : vOrder[n];
    }
    return vFirst;
}

// Finds where knives meet.
class KnifePairs {
public:
    explicit KnifePairs(const std::vector<KnifeCut>& vItsCuts) : vCuts(vItsCuts), vShared(vItsCuts.size()) {}

    // In this order, since crossings may be rounded by the order of the two.
    void meet(std::uint32_t i, std::uint32_t k, SegmentIntersectionType type) {
        const Segment2 &first = vCuts[i].getKnife(), &second = vCuts[k].getKnife();
        const Point2 a = first.getSrc(), b = first.getTrg(), c = second.getSrc(), d = second.getTrg();
        if (type == SIT_SEGMENT) {
            const CollinearPart part = collinearPart(a, b, c, d);
            add(i, k, part.first);
            add(i, k, part.last);
            return;
        }
        // Knives often meet in one point all of them.
        const std::vector<Point2>& vKnown = vShared[i].all();
        if (!vKnown.empty() && isOn(vKnown.back(), a, b) && isOn(vKnown.back(), c, d)) {
            add(i, k, Point2(vKnown.back()));
        } else if (const std::optional<Point2> point = getIntersectionCoordsNoRounding(a, b, c, d)) {
            const bool bEnd = *point == a || *point == b || *point == c || *point == d;
            add(i, k, bEnd ? *point : vCuts[i].toHull(vCuts[k].toHull(*point)));
        }
    }
    const std::vector<Point2>& of(std::uint32_t knife) const { return vShared[knife].all(); }

private:
    void add(std::uint32_t i, std::uint32_t k, const Point2& p) {
        vShared[i].add(p);
        vShared[k].add(p);
    }
    bool isOn(const Point2& p, const Point2& a, const Point2& b) {
        return isInBox(p, a, b) && tests.orientationUnbounded(a, b, p) == ORIENTATION2_COLLINEAR;
    }

    const std::vector<KnifeCut>& vCuts;
    std::vector<DistinctList<Point2>> vShared; // a knife
    TeskTest tests;
};

} // namespace

void addSharedStops(std::vector<KnifeCut>& vCuts) {
    if (vCuts.size() < 2) return;
    std::vector<Segment2> vKnives;
    for (const KnifeCut& cut : vCuts)
        vKnives.push_back(cut.getKnife());
    std::vector<Segment2*> vPointers;
    for (Segment2& knife : vKnives)
        vPointers.push_back(&knife);
    const std::vector<std::uint32_t> vFirst = firstEqual(vCuts);
    std::vector<std::uint32_t> vPlaces;
    for (std::uint32_t i = 0; i < vFirst.size(); ++i) {
        if (vFirst[i] == i) vPlaces.push_back(i);
    }
    KnifePairs pairs(vCuts);
    SegmentQueries queries(vPointers, vPlaces);
    queries.visitPairs([&](std::uint32_t i, std::uint32_t k, SegmentIntersectionType type) {
        pairs.meet(std::min(i, k), std::max(i, k), type);
    });
    for (std::uint32_t i = 0; i < vFirst.size(); ++i)
        vCuts[i].add(pairs.of(vFirst[i]));
}

} // namespace TESK_KIVO2D
