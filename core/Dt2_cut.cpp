// Knives through the triangles.
#include "core/Dt2.h"

#include "checker/SegmentQueries.h"
#include "constraints/ConstraintMgr.h"
#include "constraints/KnifeCut.h"
#include "constraints/KnifePath.h"
#include "constraints/SegmentInserter.h"
#include "kernel/finite.h"
#include "kernel/messages.h"
#include "kernel/tools.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <string>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr const char* location = "Dt2::cutTriangles(..)";

// A set of points that come again and again.
class PointCollector {
public:
    void add(const Point2& p) {
        if (vPoints.size() >= numOfNextLook) unite();
        vPoints.push_back(p);
    }
    const std::vector<Point2>& points() const { return vPoints; }

private:
    void unite() {
        std::sort(vPoints.begin(), vPoints.end());
        vPoints.erase(std::unique(vPoints.begin(), vPoints.end()), vPoints.end());
        numOfNextLook = std::max<std::size_t>(64, 2 * vPoints.size());
    }

    std::vector<Point2> vPoints;
    std::size_t numOfNextLook = 64;
};

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

// The points that two cuts share, but for a common end: an end that lies on the other one, the crossing, or
// the ends of what they have in common.
template<class F>
void forEachShared(const KnifeCut& cut, const KnifeCut& other, SegmentIntersectionType type, F f) {
    const Point2 a = cut.getKnife().getSrc(), b = cut.getKnife().getTrg();
    const Point2 c = other.getKnife().getSrc(), d = other.getKnife().getTrg();
    if (type == SIT_SEGMENT) {
        const CollinearPart part = collinearPart(a, b, c, d);
        f(part.first);
        f(part.last);
    } else if (const std::optional<Point2> point = getIntersectionCoordsNoRounding(a, b, c, d)) {
        const bool bEnd = *point == a || *point == b || *point == c || *point == d;
        f(bEnd ? *point : cut.toHull(other.toHull(*point)));
    }
}

// Where two knives have points in common, both get them as stops: the same points, since each pair is looked
// at once.
void addShared(std::vector<KnifeCut>& vCuts) {
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
    std::vector<PointCollector> vShared(vCuts.size());
    SegmentQueries queries(vPointers, vPlaces);
    queries.visitPairs([&](std::uint32_t i, std::uint32_t k, SegmentIntersectionType type) {
        const auto [first, second] = std::minmax(i, k); // crossings may be rounded by the order of the two
        forEachShared(vCuts[first], vCuts[second], type, [&](const Point2& p) {
            vShared[i].add(p);
            vShared[k].add(p);
        });
    });
    for (std::size_t i = 0; i < vCuts.size(); ++i)
        vCuts[i].add(vShared[vFirst[i]].points());
}

// Somewhere in the middle of what the knife has in the box; its target when that can't be told. Only good for
// a start.
Point2 middleIn(const Bbox2& box, const Segment2& knife) {
    const Point2 src = knife.getSrc(), trg = knife.getTrg();
    const double dx = trg.x() - src.x(), dy = trg.y() - src.y();
    double from = 0, to = 1;
    const auto clip = [&](double start, double difference, double min, double max) {
        if (difference == 0) return;
        const double t0 = (min - start) / difference, t1 = (max - start) / difference;
        from = std::max(from, std::min(t0, t1));
        to = std::min(to, std::max(t0, t1));
    };
    clip(src.x(), dx, box.get_minX(), box.get_maxX());
    clip(src.y(), dy, box.get_minY(), box.get_maxY());
    const double middle = (from + to) / 2;
    const Point2 p(src.x() + middle * dx, src.y() + middle * dy);
    return box.isInBox(p) ? p : trg;
}

// Triangles with a new vertex on their circle stay as they are, while this lives.
struct TiesKept {
    CircleTies& ties;
    const CircleTies before = std::exchange(ties, CircleTies::KEEP);

    ~TiesKept() { ties = before; }
};

} // namespace

// Knives that cut nothing.
struct Dt2::IgnoredKnives {
    std::size_t numNotFinite = 0, numEmpty = 0, numOutside = 0;

    void report() const {
        const auto warn = [](std::size_t num, const std::string& verb, const std::string& what) {
            if (num == 0) return;
            const std::string knives =
                num == 1 ? " knife" + verb + (verb.empty() ? "" : "s") : " knives" + verb;
            reportWarning(location, std::to_string(num) + knives + what + " ignored");
        };
        warn(numNotFinite, "", " with a coordinate that is not finite");
        warn(numEmpty, "", " of no length");
        warn(numOutside, " that meet", " the triangulation in no more than a point");
    }
};

ConstraintGraph2* Dt2::cutTriangles(const std::vector<Segment2>& vKnives) {
    if (vKnives.empty() || !is2D()) {
        reportWarning(location, vKnives.empty() ? "vKnives is empty, returning NULL"
                                                : "The triangulation has no triangles yet, returning NULL");
        return nullptr;
    }
    if (!mayInsert("Kivo_2D::cutTriangles()")) return nullptr;
    ProgressHub::Operation progress(hub, "cut triangles", 2 * vKnives.size());
    IgnoredKnives ignored;
    std::vector<KnifeCut> vCuts = findCuts(vKnives, ignored);
    ignored.report();
    if (vCuts.empty()) {
        reportWarning(location, "No knife is left, returning NULL");
        progress.finish();
        return nullptr;
    }
    pEdgeGuard = pConstraintMgr.get();
    if (pConstraintMgr->hasPending()) {
        pConstraintMgr->apply();
        vCuts = findCuts(vKnives, ignored);
    }
    progress.advance(vKnives.size()); // listeners might insert: a cut knows vertices and segments, no edges
    addShared(vCuts);
    const TiesKept kept{circleTies};
    ConstraintGraph2* const pGraph = pConstraintMgr->createConstraint_oriented(
        placeStops(vCuts, *this, *pSegmentInserter), CIS_CONSTRAINED_DELAUNAY);
    progress.finish();
    return pGraph;
}

// The search begins where it is short. From outside the hull, at the hull edge before the middle of the
// knife: the way along a hull may be long. And from a vertex of many triangles, which all would have to be
// asked, last.
KnifeCut Dt2::findCut(const Segment2& knife, KnifePath& path) {
    const auto walkToEnd = [this](const Point2& end) { return walkTo(end, vertexVault.getCloT(end)); };
    const Point2 src = knife.getSrc(), trg = knife.getTrg();
    const WalkResult start = walkToEnd(src);
    if (start.code == WalkResult::INSIDE) return path.follow(knife, start);
    if (start.code == WalkResult::ON_CORNER) {
        const WalkResult end = walkToEnd(trg);
        return end.code == WalkResult::INSIDE ? path.followBack(knife, end) : path.follow(knife, start);
    }
    return path.follow(knife, walkTo(src, walkToEnd(middleIn(box, knife)).pT));
}

// Those that cut, in the order of the knives.
std::vector<KnifeCut> Dt2::findCuts(const std::vector<Segment2>& vKnives, IgnoredKnives& ignored) {
    std::vector<KnifeCut> vCuts;
    KnifePath path(*pConstraintMgr, hullLinks, pTeskPredicates);
    for (const Segment2& knife : vKnives) {
        if (!isFinite(knife)) {
            ++ignored.numNotFinite;
            continue;
        }
        if (knife.getSrc() == knife.getTrg()) {
            ++ignored.numEmpty;
            continue;
        }
        KnifeCut cut = findCut(knife, path);
        if (cut.isPoint()) {
            ++ignored.numOutside;
        } else {
            vCuts.push_back(std::move(cut));
        }
    }
    return vCuts;
}

} // namespace TESK_KIVO2D
