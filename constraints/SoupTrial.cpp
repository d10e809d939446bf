#include "constraints/SoupTrial.h"

#include "core/edgeSearch.h"

#include <algorithm>

namespace TESK_KIVO2D {

SoupTrial::SoupTrial(const TriangleSoup& triangleSoup, const std::vector<Point2*>& vItsVertices,
                     SoupPlacement& itsPlacement, const MeshStore& triangulation, TeskTest& predicates)
    : soup(triangleSoup), vVertices(vItsVertices), store(triangulation), tests(predicates),
      placement(itsPlacement), numbers(store.triangleNumbers()), stamps(store) {}

void SoupTrial::findFaults(const std::vector<PointerPair>& vSegments, SoupFaults& faults) {
    findShared(faults);
    placement.force(
        [&](const TriangleSoup::Edge& edge, const CzResult& result) { noteBlocked(edge, result, faults); });
    claimTriangles(faults);
    for (const Index missing : vMissing) {
        if (!mayGoOn(faults)) return;
        searchAround(missing, faults);
    }
    compareMissing(faults);
    for (const PointerPair& segment : vSegments) {
        if (!mayGoOn(faults)) return;
        findCrossed(segment, faults);
    }
}

// False, and the faults are known to be incomplete, when enough of them were found or it would take too long:
// thousands of long triangles that lie about without order have as many pairs as one likes.
bool SoupTrial::mayGoOn(SoupFaults& faults) const {
    const std::size_t maxComparisons = 20000000 + 16 * soup.triangles().size();
    if (!faults.isFull() && numComparisons <= maxComparisons) return true;
    faults.setIncomplete();
    return false;
}

SoupTrial::Index SoupTrial::firstGiven(Halves halves) const {
    Index first = TriangleSoup::none;
    for (const std::uint64_t half : halves)
        first = std::min(first, soup.triangles()[TriangleSoup::halfOf(half).triangle].given);
    return first;
}

void SoupTrial::findShared(SoupFaults& faults) const {
    soup.forEachEdge([&](const TriangleSoup::Edge& edge) {
        if (edge.halves.size() < 3 || !mayGoOn(faults)) return;
        faults.add({.kind = SoupFault::SHARED_EDGE,
                    .triangle = firstGiven(edge.halves),
                    .p = std::min(soup.points()[edge.p], soup.points()[edge.q]),
                    .q = std::max(soup.points()[edge.p], soup.points()[edge.q])});
    });
}

// An edge that crosses another one: the triangles overlap. Else all vertices on it are named.
void SoupTrial::noteBlocked(const TriangleSoup::Edge& edge, const CzResult& result, SoupFaults& faults) {
    const Index given = firstGiven(edge.halves);
    if (result.end == CzResult::MET_FIXED)
        faults.addOverlap(given, firstGiven(soup.halvesBetween(soup.find(*result.edge.source()),
                                                               soup.find(*result.edge.target()))));
    std::vector<PointerPair> vPieces = {{vVertices[edge.p], vVertices[edge.q]}};
    while (!vPieces.empty() && mayGoOn(faults)) {
        const auto [pFrom, pTo] = vPieces.back();
        vPieces.pop_back();
        const CzResult next = traverse(pFrom, pTo, tests, nullptr, zone);
        numComparisons += zone.vTriangles.size();
        if (next.end != CzResult::MET_VERTEX) continue;
        faults.add({.kind = soup.find(*next.pVtx) == TriangleSoup::none ? SoupFault::VERTEX_IN_EDGE
                                                                        : SoupFault::CORNER_IN_EDGE,
                    .triangle = given,
                    .point = *next.pVtx,
                    .p = std::min(*vVertices[edge.p], *vVertices[edge.q]),
                    .q = std::max(*vVertices[edge.p], *vVertices[edge.q])});
        vPieces.emplace_back(pFrom, next.pVtx);
        vPieces.emplace_back(next.pVtx, pTo);
    }
}

void SoupTrial::claimTriangles(SoupFaults& faults) {
    vClaims.assign(numbers.size(), TriangleSoup::none);
    vEarlier.assign(soup.triangles().size(), TriangleSoup::none);
    for (Index i = 0; i < soup.triangles().size(); ++i) {
        const Triangle2* const pT = placement.triangles()[i];
        if (pT == nullptr) {
            vMissing.push_back(i);
            continue;
        }
        Index& claim = vClaims[numbers.numberOf(pT)];
        vEarlier[i] = claim;
        claim = i;
        for (Index k = vEarlier[i]; k != TriangleSoup::none && mayGoOn(faults); k = vEarlier[k])
            faults.addOverlap(soup.triangles()[k].given, soup.triangles()[i].given);
    }
}

// What lies in a triangle that is none of the triangulation, apart from others like it: triangles of the
// soup, and vertices. The triangles inside hang together by edges, those that reach beyond it too.
void SoupTrial::searchAround(Index missing, SoupFaults& faults) {
    const Corners corners = cornersOf(missing);
    const Index given = soup.triangles()[missing].given;
    stamps.begin();
    std::vector<Triangle2*> vFront;
    const auto meet = [&](Triangle2* pT) {
        if (pT == nullptr || !stamps.meet(pT)) return;
        if (overlap(corners, {pT->getCorner(0), pT->getCorner(1), pT->getCorner(2)})) vFront.push_back(pT);
    };
    forEachTriangleAround(vVertices[soup.triangles()[missing].aPoints[0]], [&](Triangle2* pT, int) {
        meet(pT);
        return true;
    });
    while (!vFront.empty() && mayGoOn(faults)) {
        Triangle2* const pT = vFront.back();
        vFront.pop_back();
        for (Index k = vClaims[numbers.numberOf(pT)]; k != TriangleSoup::none; k = vEarlier[k])
            faults.addOverlap(given, soup.triangles()[k].given);
        for (int i = 0; i < 3; ++i) {
            const Point2& corner = *pT->getCorner(i);
            // All triangles around such a vertex are met, so one of them may speak for it.
            if (corner.getIncidentTriangle() == pT && soup.find(corner) == TriangleSoup::none &&
                isStrictlyInside(corner, corners))
                faults.add({.kind = SoupFault::VERTEX_IN_TRIANGLE, .triangle = given, .point = corner});
            meet(pT->getOppositeTriangle(i));
        }
    }
}

// Those that are none of the triangulation with each other, from left to right.
void SoupTrial::compareMissing(SoupFaults& faults) {
    struct Box {
        double minX, maxX, minY, maxY;
        Index triangle;
    };
    std::vector<Box> vBoxes;
    for (const Index missing : vMissing) {
        const Corners corners = cornersOf(missing);
        const auto [minX, maxX] = std::minmax({corners[0]->x(), corners[1]->x(), corners[2]->x()});
        const auto [minY, maxY] = std::minmax({corners[0]->y(), corners[1]->y(), corners[2]->y()});
        vBoxes.push_back({minX, maxX, minY, maxY, missing});
    }
    std::sort(vBoxes.begin(), vBoxes.end(), [](const Box& a, const Box& b) { return a.minX < b.minX; });
    for (std::size_t i = 0; i < vBoxes.size(); ++i) {
        const Box& a = vBoxes[i];
        for (std::size_t k = i + 1; k < vBoxes.size() && vBoxes[k].minX < a.maxX; ++k) {
            const Box& b = vBoxes[k];
            ++numComparisons;
            if (!mayGoOn(faults)) return;
            if (b.minY < a.maxY && a.minY < b.maxY && overlap(cornersOf(a.triangle), cornersOf(b.triangle)))
                faults.addOverlap(soup.triangles()[a.triangle].given, soup.triangles()[b.triangle].given);
        }
    }
}

// The first edge of the soup that the segment crosses, from the lower end on.
void SoupTrial::findCrossed(const PointerPair& segment, SoupFaults& faults) {
    const auto [pLower, pUpper] =
        std::minmax(segment.first, segment.second, [](const Point2* a, const Point2* b) { return *a < *b; });
    std::vector<PointerPair> vPieces = {{pLower, pUpper}};
    while (!vPieces.empty()) {
        const auto [a, b] = vPieces.back();
        vPieces.pop_back();
        const CzResult result = traverse(a, b, tests, nullptr, zone);
        if (result.end == CzResult::MET_VERTEX) {
            vPieces.emplace_back(result.pVtx, b);
            vPieces.emplace_back(a, result.pVtx);
            continue;
        }
        if (result.end == CzResult::IS_EDGE) continue;
        if (zone.pStart != a) std::reverse(zone.vTriangles.begin(), zone.vTriangles.end());
        for (std::size_t i = 1; i < zone.vTriangles.size(); ++i) {
            const Triangle2 *const pT = zone.vTriangles[i - 1], *const pN = zone.vTriangles[i];
            const int ith = pN->getIntraTriangleIndex(pT);
            const Point2 &p = *pN->getCorner(Triangle2::incIndexBy1(ith)),
                         &q = *pN->getCorner(Triangle2::incIndexBy2(ith));
            if (!placement.guard().isFixed(&p, &q)) continue;
            faults.add({.kind = SoupFault::CROSSED_EDGE,
                        .triangle = firstGiven(soup.halvesBetween(soup.find(p), soup.find(q))),
                        .p = std::min(p, q),
                        .q = std::max(p, q),
                        .from = *pLower,
                        .to = *pUpper});
            return;
        }
    }
}

SoupTrial::Corners SoupTrial::cornersOf(Index triangle) const {
    const TriangleSoup::Triangle& t = soup.triangles()[triangle];
    return {&soup.cornerOf(t, 0), &soup.cornerOf(t, 1), &soup.cornerOf(t, 2)};
}

bool SoupTrial::isStrictlyInside(const Point2& p, const Corners& corners) const {
    return tests.orientation(*corners[0], *corners[1], p) == ORIENTATION2_CCW &&
           tests.orientation(*corners[1], *corners[2], p) == ORIENTATION2_CCW &&
           tests.orientation(*corners[2], *corners[0], p) == ORIENTATION2_CCW;
}

// Two convex areas have no inner point in common exactly when a line along an edge of one of them has all of
// the other one beyond it.
bool SoupTrial::overlap(const Corners& a, const Corners& b) {
    ++numComparisons;
    const auto hasSeparatingEdge = [&](const Corners& one, const Corners& other) {
        for (std::size_t i = 0; i < 3; ++i) {
            const Point2 &source = *one[i], &target = *one[(i + 1) % 3];
            if (std::none_of(other.begin(), other.end(), [&](const Point2* pCorner) {
                    return tests.orientation(source, target, *pCorner) == ORIENTATION2_CCW;
                }))
                return true;
        }
        return false;
    };
    return !hasSeparatingEdge(a, b) && !hasSeparatingEdge(b, a);
}

} // namespace TESK_KIVO2D
