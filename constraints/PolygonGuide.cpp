#include "constraints/PolygonGuide.h"

#include "constraints/CzRetriangulation.h"
#include "core/edgeSearch.h"
#include "core/legalize.h"
#include "core/linkIn.h"
#include "core/walk.h"

#include <algorithm>
#include <bit>
#include <functional>

namespace TESK_KIVO2D {
namespace {

bool isBefore(const std::pair<const Point2*, std::size_t>& a,
              const std::pair<const Point2*, std::size_t>& b) {
    return a.first == b.first ? a.second < b.second : std::less<const Point2*>()(a.first, b.first);
}

} // namespace

PolygonGuide::PolygonGuide(const std::vector<Border>& polygon, std::size_t i, std::size_t j,
                           TeskTest& predicates, int depth)
    : store(static_cast<unsigned int>(j - i + 1)), tests(predicates), first(i), vVertices(j - i + 1) {
    insertVertices(polygon);
    forceEdges(depth);
    for (std::size_t k = 0; k < vVertices.size(); ++k)
        vIndices.emplace_back(vVertices[k], first + k);
    std::sort(vIndices.begin(), vIndices.end(), isBefore);
    pBaseT =
        findEdge(vVertices.front(), vVertices.back()).pT; // an edge of the hull: all others lie to its left
}

void PolygonGuide::insertVertices(const std::vector<Border>& polygon) {
    HullLinks hullLinks;
    std::vector<Triangle2*> vCheckT;
    const InsertionSite site = {store, tests, hullLinks, nullptr, vCheckT};
    const auto copyOf = [&](std::size_t k) { return store.createVertex(*polygon[first + k].pVtx); };
    const std::size_t last = vVertices.size() - 1, middle = std::bit_ceil(last + 1) / 2;
    for (const std::size_t k : {std::size_t(0), last, middle})
        vVertices[k] = copyOf(k);
    store.createTriangle(vVertices[0], vVertices[last], vVertices[middle]);
    for (std::size_t stride = middle; stride > 0; stride /= 2) {
        for (std::size_t k = stride; k < last; k += 2 * stride) {
            if (vVertices[k] != nullptr) continue;
            vVertices[k] = copyOf(k);
            const WalkResult found = walk(vVertices[k - stride]->getIncidentTriangle(), *vVertices[k], tests);
            if (found.code == WalkResult::ON_CORNER) {
                Point2* const pThere = cornerAt(found, *vVertices[k]);
                store.recycleVertex(vVertices[k]);
                vVertices[k] = pThere;
                continue;
            }
            linkIn(vVertices[k], found, site);
            legalizeNewVertex(vCheckT, tests, nullptr);
        }
    }
}

// No two of the polygon's edges cross, so none is lost again when others are forced in.
void PolygonGuide::forceEdges(int depth) {
    ConstraintZone zone;
    CzRetriangulation retriangulation(tests, depth + 1);
    for (std::size_t k = 0; k + 1 < vVertices.size(); ++k) {
        const CzResult result = traverse(vVertices[k], vVertices[k + 1], tests, nullptr, zone);
        if (result.end == CzResult::REACHED) retriangulation.fill(zone);
    }
}

PolygonGuide::Step PolygonGuide::follow(const Triangle2* pT, std::size_t i, std::size_t j) const {
    Point2 *const p = at(i), *const q = at(j);
    const Point2* const pApex = pT->getCorner(pT->getIntraTriangleIndex(p, q));
    // Of several visits only one lies between: the others hang from it on the far side of its edges.
    const auto visit = std::upper_bound(vIndices.begin(), vIndices.end(), std::pair(pApex, i), isBefore);
    return {visit->second, pT->getOppositeTriangle(pT->getIntraTriangleIndex(q)),
            pT->getOppositeTriangle(pT->getIntraTriangleIndex(p))};
}

} // namespace TESK_KIVO2D
