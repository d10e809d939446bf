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

#include <cmath>
#include <cstdint>
#include <numeric>
#include <optional>
#include <string>

namespace TESK_KIVO2D {
namespace {

constexpr const char* location = "Dt2::cutTriangles(..)";

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
    std::vector<std::uint32_t> vPlaces(vKnives.size());
    std::iota(vPlaces.begin(), vPlaces.end(), 0U);
    SegmentQueries queries(vPointers, vPlaces);
    std::vector<std::vector<Point2>> vShared(vKnives.size());
    for (std::uint32_t i = 0; i < vKnives.size(); ++i) {
        const Point2 a = vKnives[i].getSrc(), b = vKnives[i].getTrg();
        queries.visitIntersectors(Ends(vKnives[i]), [&](std::uint32_t k, SegmentIntersectionType type) {
            if (k <= i || type == SIT_ENDPOINT) return; // a common end is a stop of both
            const Point2 c = vKnives[k].getSrc(), d = vKnives[k].getTrg();
            std::vector<Point2> vPoints;
            if (type == SIT_SEGMENT) {
                const CollinearPart part = collinearPart(a, b, c, d);
                vPoints = {part.first, part.last};
            } else if (const std::optional<Point2> point = getIntersectionCoordsNoRounding(a, b, c, d)) {
                vPoints = {vCuts[i].toHull(vCuts[k].toHull(*point))};
            }
            for (const std::uint32_t knife : {i, k})
                vShared[knife].insert(vShared[knife].end(), vPoints.begin(), vPoints.end());
        });
    }
    for (std::size_t i = 0; i < vCuts.size(); ++i)
        vCuts[i].add(vShared[i]);
}

// Triangles with a new vertex on their circle stay as they are, while this lives.
class CircleTiesKept {
public:
    explicit CircleTiesKept(Dt2& triangulation) : dt(triangulation) { dt.setCircleTies(CircleTies::KEEP); }
    ~CircleTiesKept() { dt.setCircleTies(CircleTies::TURN_DIAGONALS); }
    CircleTiesKept(const CircleTiesKept&) = delete;
    CircleTiesKept& operator=(const CircleTiesKept&) = delete;

private:
    Dt2& dt;
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
    const CircleTiesKept kept(*this);
    if (pConstraintMgr->hasPending()) {
        pConstraintMgr->apply();
        vCuts = findCuts(vKnives, ignored);
    }
    progress.advance(
        vKnives.size()); // listeners might insert, which no cut minds: it knows vertices, not edges
    addShared(vCuts);
    ConstraintGraph2* const pGraph = pConstraintMgr->createConstraint_oriented(
        placeStops(vCuts, *this, *pSegmentInserter), CIS_CONSTRAINED_DELAUNAY);
    progress.finish();
    return pGraph;
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
        const Point2 src = knife.getSrc();
        if (src == knife.getTrg()) {
            ++ignored.numEmpty;
            continue;
        }
        KnifeCut cut = path.follow(knife, walkTo(src, vertexVault.getCloT(src)));
        if (cut.isPoint()) {
            ++ignored.numOutside;
        } else {
            vCuts.push_back(std::move(cut));
        }
    }
    return vCuts;
}

} // namespace TESK_KIVO2D
