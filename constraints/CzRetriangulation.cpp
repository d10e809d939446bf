#include "constraints/CzRetriangulation.h"

#include "core/flip.h"
#include "kernel/assertion.h"

#include <algorithm>
#include <functional>

namespace TESK_KIVO2D {
namespace {

// Stands for the index of a border's outer triangle where that is a triangle of the zone itself.
constexpr int isHanging = -1;

void noteHanging(std::vector<Border>& polygon) {
    for (Border& border : polygon) {
        if (border.pOuter != nullptr && border.pOuter->getCorner(0) == nullptr) border.ith = isHanging;
    }
}

// From stop to start: what lay to the right of the segment lies to the left of the way back.
void reverse(const std::vector<Border>& polygon, std::vector<Border>& reversed) {
    reversed.clear();
    reversed.push_back(polygon.back());
    for (std::size_t i = polygon.size() - 1; i-- > 0;) {
        reversed.back().pOuter = polygon[i].pOuter;
        reversed.back().ith = polygon[i].ith;
        reversed.push_back({polygon[i].pVtx, nullptr, 0});
    }
}

} // namespace

bool CzRetriangulation::Hanging::operator<(const Hanging& other) const {
    const std::less<const Point2*> less;
    return pFirst == other.pFirst ? less(pSecond, other.pSecond) : less(pFirst, other.pFirst);
}

void CzRetriangulation::fill(ConstraintZone& zone) {
    std::vector<Triangle2*>& vTriangles = zone.vTriangles;
    if (vTriangles.size() == 2) {
        flip(vTriangles[0], vTriangles[0]->getIntraTriangleIndex(zone.pStart));
        return;
    }
    KIVO_ASSERT(zone.lPolygon.size() > 1 && zone.rPolygon.size() > 1, "lPolygon.size()>1");
    reverse(zone.rPolygon, rReversed);
    vLeftApexes = apexes.find(zone.lPolygon);
    const std::vector<std::size_t>& vRightApexes = apexes.find(rReversed);
    vBases.reserve(vTriangles.size());
    vHanging.reserve(2 * vTriangles.size());
    // From here on nothing fails.
    for (Triangle2* pT : vTriangles)
        pT->setVertexPointer(0, nullptr); // marks the zone for noteHanging
    noteHanging(zone.lPolygon);
    noteHanging(rReversed);
    pNextFree = vTriangles.data();
    Triangle2* const pLeft = link(zone.lPolygon, vLeftApexes);
    Triangle2* const pRight = link(rReversed, vRightApexes);
    pLeft->setOppTriangle(2, pRight);
    pRight->setOppTriangle(2, pLeft);
    joinHanging();
}

// Returns the triangle at the polygon's base, from the last vertex to the first, behind its edge 2.
Triangle2* CzRetriangulation::link(const std::vector<Border>& polygon,
                                   const std::vector<std::size_t>& vApexes) {
    auto apex = vApexes.begin();
    Triangle2* pFirst = nullptr;
    vBases.push_back({0, polygon.size() - 1, nullptr, 0});
    while (!vBases.empty()) {
        const Base base = vBases.back();
        vBases.pop_back();
        if (base.j == base.i + 1) {
            linkBorder(polygon[base.i], polygon[base.j].pVtx, base);
            continue;
        }
        Triangle2* const pT = *pNextFree++;
        pT->setPropertiesAndOppT(polygon[base.i].pVtx, polygon[base.j].pVtx, polygon[*apex].pVtx, nullptr,
                                 nullptr, base.pT);
        if (base.pT != nullptr) {
            base.pT->setOppTriangle(base.ith, pT);
        } else {
            pFirst = pT;
        }
        vBases.push_back({*apex, base.j, pT, 0});
        vBases.push_back({base.i, *apex, pT, 1});
        ++apex;
    }
    return pFirst;
}

void CzRetriangulation::linkBorder(const Border& border, Point2* pNext, const Base& edge) {
    if (border.ith == isHanging) {
        Point2 *const p = border.pVtx, *const q = pNext;
        const bool bInOrder = std::less<Point2*>()(p, q);
        vHanging.push_back({bInOrder ? p : q, bInOrder ? q : p, edge.pT, edge.ith});
        return;
    }
    edge.pT->setOppTriangle(edge.ith, border.pOuter);
    if (border.pOuter != nullptr) border.pOuter->setOppTriangle(border.ith, edge.pT);
}

void CzRetriangulation::joinHanging() {
    std::sort(vHanging.begin(), vHanging.end());
    for (std::size_t i = 0; i + 1 < vHanging.size(); i += 2) {
        const Hanging &one = vHanging[i], &other = vHanging[i + 1];
        one.pT->setOppTriangle(one.ith, other.pT);
        other.pT->setOppTriangle(other.ith, one.pT);
    }
    vHanging.clear();
}

} // namespace TESK_KIVO2D
