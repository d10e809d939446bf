#include "meshing/RefinementPass.h"

#include "core/edgeSearch.h"

namespace TESK_KIVO2D {
namespace {

// False when the edge is not there any more.
bool findAgain(HalfEdge& edge, const Point2* a, const Point2* b) {
    if (edge.source() == a && edge.target() == b) return true;
    edge = findEdge(a, b);
    return edge.pT != nullptr;
}

} // namespace

void RefinementPass::collect(Triangle2* pT) {
    const RefCand3 candidate(pT, site);
    const RuleSet rules = candidate.needRefinement();
    if (rules == 0 || isStale()) return;
    pmmAng2RC.push(candidate.getKey(), pT);
    // A vertex that is too close to a segment makes a bad triangle with it. Where that can't be helped, the
    // segment stays.
    if ((rules & ruleBit(MeshRule::MIN_ANGLE)) != 0 && !candidate.isExemptFromAngle())
        collectEncroached(pT, true);
}

void RefinementPass::step() {
    if (idxSegment < vSegments.size()) {
        const WaitingSegment segment = vSegments[idxSegment++];
        if (2 * idxSegment >= vSegments.size()) {
            vSegments.erase(vSegments.begin(), vSegments.begin() + static_cast<std::ptrdiff_t>(idxSegment));
            idxSegment = 0;
        }
        splitWaiting(segment);
        return;
    }
    const QueuedTriangle next = pmmAng2RC.pop();
    if (pmmAng2RC.isAlive(next) && site.marks.isInZone(next.pT)) treat(next.pT);
}

void RefinementPass::treat(Triangle2* pT) {
    RefCand3 candidate(pT, site);
    RuleSet rules = candidate.needRefinement();
    if (rules == 0 || isStale()) return;
    rules = countExemption(candidate, rules);
    if (rules == 0) return;
    if (site.limits.parameters().debugMode == 1) {
        candidate.debug(rules, numPictures++);
        if (isStale()) return;
    }
    candidate.update();
    if (rules == ruleBit(MeshRule::MIN_ANGLE) && candidate.isOfRounding()) {
        tally(rules, MeshObstacle::ARITHMETIC);
        return;
    }
    switch (candidate.getSplitIndex()) {
    case RefCand3::leave:
        tally(rules, candidate.getObstacle());
        return;
    case RefCand3::insertInside:
        insertInside(candidate);
        return;
    default: {
        const QueuedTriangle queued = pmmAng2RC.asItIs(pT);
        if (!splitSegment(candidate.getSight().edge)) {
            tally(rules, MeshObstacle::ARITHMETIC);
        } else if (pmmAng2RC.isAlive(queued)) {
            pmmAng2RC.push(candidate.getKey(), pT);
        }
    }
    }
}

void RefinementPass::count(Triangle2* pT) {
    const RefCand3 candidate(pT, site);
    const RuleSet rules = candidate.needRefinement();
    if (rules != 0 && !isStale()) tally(countExemption(candidate, rules), MeshObstacle::NOT_REACHED);
}

// Counts a bad triangle. (In a pass that mends something, counts mean nothing.) Returns the rules that remain
// for it.
RuleSet RefinementPass::countExemption(const RefCand3& candidate, RuleSet rules) {
    constexpr RuleSet angle = ruleBit(MeshRule::MIN_ANGLE);
    ++site.report.numBadTriangles;
    if ((rules & angle) == 0 || !candidate.isExemptFromAngle()) return rules;
    tally(angle, MeshObstacle::SMALL_INPUT_ANGLE);
    return rules & ~angle;
}

void RefinementPass::insertInside(RefCand3& candidate) {
    const auto isClosed = [this](HalfEdge edge) { return site.marks.isClosed(edge); };
    const Point2& point = candidate.getPoint();
    const QueuedTriangle queued = pmmAng2RC.asItIs(candidate.getTriangle());
    const HalfEdge place = candidate.getSight().edge;
    cavity.clear();
    if (candidate.getSight().end == Sight::INSIDE) {
        cavity.startInside(place.pT, point, site.tests, isClosed);
    } else {
        Triangle2* const pN = place.opposite();
        cavity.startBeside(place, point, site.tests, isClosed);
        cavity.startBeside({pN, pN->getIntraTriangleIndex(place.pT)}, point, site.tests, isClosed);
    }
    if (splitEncroached(point)) {
        // The triangle may have survived. Then it is looked at again.
        if (pmmAng2RC.isAlive(queued)) pmmAng2RC.push(candidate.getKey(), queued.pT);
        return;
    }
    site.innerVertices.reserve();
    site.store.reserveTriangles(2);
    site.marks.follow();
    cavity.reserve();
    Point2* const pVtx = site.host.newVertex(point);
    cavity.fill(pVtx, false, site.store, [this](Triangle2* pT, std::size_t i) {
        site.marks.set(pT, TriangleMarks::inZone | (cavity.border()[i].bClosed ? 1U : 0U));
    });
    site.host.wasLinked(pVtx);
    site.innerVertices.add(pVtx);
    ++site.report.numInnerPoints;
    judgeAll(cavity.fan(), false);
}

// Splits the segments at the cavity to which the point would be too close. Returns false when there are none
// that can be split.
bool RefinementPass::splitEncroached(const Point2& p) {
    vHit.clear();
    for (const Cavity::BorderEdge& edge : cavity.border()) {
        if (edge.bClosed && site.limits.encroaches(*edge.pFrom, *edge.pTo, p))
            vHit.push_back({edge.pFrom, edge.pTo, edge.inside});
    }
    bool bSplit = false;
    for (const WaitingSegment& segment : vHit) {
        if (isStale()) return true;
        bSplit = splitWaiting(segment) || bSplit;
    }
    return bSplit;
}

bool RefinementPass::splitWaiting(const WaitingSegment& segment) {
    HalfEdge edge = segment.edge;
    return findAgain(edge, segment.a, segment.b) && !SegmentSplitter::obstacleAt(edge, site) &&
           splitSegment(edge);
}

bool RefinementPass::splitSegment(HalfEdge edge) {
    if (site.isSpent() || splitter.split(edge) == nullptr) return false;
    judgeAll(splitter.changedTriangles(), true);
    return true;
}

void RefinementPass::judgeAll(const std::vector<Triangle2*>& vChanged, bool bOnSegment) {
    bChanged = true;
    expectedChangeCount = site.host.changeCount();
    for (Triangle2* const pT : vChanged) {
        if (!site.marks.isInZone(pT)) {
            if (bOnSegment) collectFromOutside(pT);
            continue;
        }
        judge(pT);
        if (isStale()) return; // the client's functions changed the triangulation
        collectEncroached(pT, bOnSegment);
        if (!site.limits.limitsGrowth()) continue;
        Triangle2* const pN = pT->getOppositeTriangle(0);
        if (pN != nullptr && site.marks.isInZone(pN)) judge(pN);
        if (isStale()) return;
    }
}

void RefinementPass::judge(Triangle2* pT) {
    const RefCand3 candidate(pT, site);
    if (candidate.needRefinement() != 0) pmmAng2RC.push(candidate.getKey(), pT);
}

// Only the edge opposite the latest vertex can be news when that lies in the interior, and it has been found
// to be far enough from it.
//
// Where rounding has put a vertex beside a segment, splitting that would only put more there.
void RefinementPass::collectEncroached(Triangle2* pT, bool bOnSegment) {
    for (int i = 0; i < (bOnSegment ? 3 : 1); ++i) {
        const HalfEdge edge{pT, i};
        if (!site.marks.isClosed(edge)) continue;
        const bool bTooClose = bOnSegment &&
                               site.limits.encroaches(*edge.source(), *edge.target(), *pT->getCorner(i)) &&
                               !TriangleShape(*pT, site.limits.scale()).isFlat(*pT);
        if (bTooClose || mustBeDelaunay(edge)) vSegments.push_back({edge.source(), edge.target(), edge});
    }
}

// The latest vertex may have changed what lies beyond the border.
void RefinementPass::collectFromOutside(Triangle2* pT) {
    for (int i = 0; i < 3; ++i) {
        const HalfEdge edge{pT, i};
        const Triangle2* const pN = edge.opposite();
        if (pN != nullptr && site.marks.isInZone(pN) && mustBeDelaunay(edge))
            vSegments.push_back({edge.source(), edge.target(), edge});
    }
}

// True for a conforming segment that has ceased to be Delaunay.
bool RefinementPass::mustBeDelaunay(HalfEdge edge) const {
    const ConstraintSegment2* const pCSeg = site.mgr.getConstraintSegment(edge.source(), edge.target());
    if (pCSeg == nullptr || pCSeg->getCIS() != CIS_CONFORMING_DELAUNAY) return false;
    const Triangle2* const pN = edge.opposite();
    if (pN == nullptr) return false;
    const Point2& far = *pN->getCorner(pN->getIntraTriangleIndex(edge.pT));
    return site.tests.inCircle(*edge.pT, far) == CINC2_INCIRCLE;
}

void RefinementPass::tally(RuleSet rules, MeshObstacle obstacle) {
    for (std::size_t rule = 0; rule < RefinementReport::numRules; ++rule) {
        if ((rules >> rule & 1) != 0) ++site.report.aBad[rule][static_cast<std::size_t>(obstacle)];
    }
}

} // namespace TESK_KIVO2D
