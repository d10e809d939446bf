// Knives through the triangles.
#include "core/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "constraints/KnifeCut.h"
#include "constraints/KnifePairs.h"
#include "constraints/KnifePath.h"
#include "constraints/SegmentInserter.h"
#include "kernel/finite.h"
#include "kernel/messages.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr const char* location = "Dt2::cutTriangles(..)";

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
    return isFinite(p) && box.isInBox(p) ? p : trg; // a doubled box may be infinite
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
        const auto warn = [](std::size_t num, const std::string& one, const std::string& several) {
            if (num > 0)
                reportWarning(location, std::to_string(num) + " " + (num == 1 ? one : several) + " ignored");
        };
        warn(numNotFinite, "knife with a coordinate that is not finite",
             "knives with a coordinate that is not finite");
        warn(numEmpty, "knife of no length", "knives of no length");
        warn(numOutside, "knife that meets the triangulation in no more than a point",
             "knives that meet the triangulation in no more than a point");
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
        IgnoredKnives ofTheSame;
        vCuts = findCuts(vKnives, ofTheSame);
    }
    progress.advance(vKnives.size()); // listeners might insert: a cut knows vertices and segments, no edges
    addSharedStops(vCuts);
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
