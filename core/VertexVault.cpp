#include "core/VertexVault.h"

#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <algorithm>
#include <functional>

namespace TESK_KIVO2D {

std::size_t VertexVault::CoordinateHash::operator()(const Point2* p) const {
    const std::hash<double> hash; // equal for 0.0 and -0.0
    return hash(p->x()) * 0x9e3779b97f4a7c15u ^ hash(p->y());
}

Point2* VertexVault::findStored(const Point2& p) {
    // Filled on demand: most clients begin with one batch and never ask.
    for (; numLookup < vStored.size(); ++numLookup)
        sLookup.insert(vStored[numLookup]);
    const auto found = sLookup.find(&p);
    return found == sLookup.end() ? nullptr : const_cast<Point2*>(*found);
}

bool VertexVault::findFirstTriangle(TeskTest& tests, Point2* (&corners)[3]) {
    KIVO_ASSERT(!bFullDimensional, "!bFullDimensional");
    for (numCollinear = std::max<std::size_t>(numCollinear, 2); numCollinear < vStored.size();
         ++numCollinear) {
        Point2 *const a = vStored[0], *const b = vStored[1], *const c = vStored[numCollinear];
        const Orientation2 turn = tests.orientation(*a, *b, *c);
        if (turn == ORIENTATION2_COLLINEAR) continue;
        corners[0] = a;
        corners[1] = turn == ORIENTATION2_CCW ? b : c;
        corners[2] = turn == ORIENTATION2_CCW ? c : b;
        return true;
    }
    return false;
}

std::vector<Point2*> VertexVault::becomeFullDimensional() {
    bFullDimensional = true;
    sLookup = {};
    return std::exchange(vStored, {});
}

Triangle2* VertexVault::getCloT(unsigned int key) const {
    const Point2* pVtx = vIdxVtxAct.nearest(key);
    Triangle2* pT = pVtx->getIncidentTriangle();
    KIVO_ASSERT(pT != nullptr, "pT!=0");
    return pT;
}

Triangle2* VertexVault::getOneValidTriangle() const {
    if (!bFullDimensional) {
        reportWarning("getOneValidTriangle()", "Triangulation is not 2D, returning NULL");
        return nullptr;
    }
    if (!vIdxVtxAct.empty()) {
        Triangle2* pT = vIdxVtxAct.nearest(0)->getIncidentTriangle();
        if (pT != nullptr) return pT;
    }
    reportWarning("getOneValidTriangle()", "No valid triangle found");
    return nullptr;
}

void VertexVault::recomputeKeys(const HC2& hc) {
    std::vector<KeyedVertex> vEntries;
    vEntries.reserve(vIdxVtxAct.size());
    vIdxVtxAct.forEach([&](unsigned int, Point2* pVtx) { vEntries.push_back({hc.key(*pVtx), pVtx}); });
    std::stable_sort(vEntries.begin(), vEntries.end(),
                     [](const KeyedVertex& a, const KeyedVertex& b) { return a.key < b.key; });
    vIdxVtxAct.build(vEntries);
}

void VertexVault::sortRedundant() {
    std::sort(mRedundant2UniqueVtx.begin(), mRedundant2UniqueVtx.end(),
              [](const auto& a, const auto& b) { return std::less<Point2*>()(a.first, b.first); });
}

Point2* VertexVault::uniqueOf(Point2* pVtx) const {
    const auto pExisting =
        std::lower_bound(mRedundant2UniqueVtx.begin(), mRedundant2UniqueVtx.end(), pVtx,
                         [](const auto& pair, Point2* p) { return std::less<Point2*>()(pair.first, p); });
    if (pExisting == mRedundant2UniqueVtx.end() || pExisting->first != pVtx) return pVtx;
    KIVO_ASSERT(*pVtx == *pExisting->second, "**it==*pExistingVtx");
    return pExisting->second;
}

} // namespace TESK_KIVO2D
