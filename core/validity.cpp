#include "core/validity.h"

namespace TESK_KIVO2D {
namespace {

bool hasThreeCorners(const Triangle2& t) {
    const Point2 *p0 = t.getCorner(0), *p1 = t.getCorner(1), *p2 = t.getCorner(2);
    return p0 != nullptr && p1 != nullptr && p2 != nullptr && p0 != p1 && p1 != p2 && p2 != p0;
}

// The index behind which t has this neighbour, or -1.
int indexOfNeighbour(const Triangle2& t, const Triangle2* pNeighbour) {
    for (int i = 0; i < 3; ++i) {
        if (t.getOppositeTriangle(i) == pNeighbour) return i;
    }
    return -1;
}

// True when edge i of t and edge j of n are one edge, in opposite directions.
bool isSameEdge(const Triangle2& t, int i, const Triangle2& n, int j) {
    return t.getCorner(Triangle2::incIndexBy1(i)) == n.getCorner(Triangle2::incIndexBy2(j)) &&
           t.getCorner(Triangle2::incIndexBy2(i)) == n.getCorner(Triangle2::incIndexBy1(j));
}

} // namespace

void checkCorners(const MeshStore& store, TeskTest& tests, std::vector<ValidityFinding>& vFindings) {
    store.forEachTriangle([&](Triangle2* pT) {
        if (!hasThreeCorners(*pT)) {
            vFindings.push_back({ValidityFinding::CORNERS, pT, nullptr});
            return;
        }
        if (tests.orientation(*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2)) != ORIENTATION2_CCW) {
            vFindings.push_back({ValidityFinding::ORIENTATION, pT, nullptr});
        }
        for (int i = 0; i < 3; ++i) {
            const Triangle2* pIncidentT = pT->getCorner(i)->getIncidentTriangle();
            if (pIncidentT == nullptr || !pIncidentT->hasVertex(pT->getCorner(i))) {
                vFindings.push_back({ValidityFinding::INCIDENCE, pT, nullptr});
            }
        }
    });
}

void checkLinks(const MeshStore& store, std::vector<ValidityFinding>& vFindings) {
    store.forEachTriangle([&](Triangle2* pT) {
        if (!hasThreeCorners(*pT)) return;
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN == nullptr) continue;
            const int j = indexOfNeighbour(*pN, pT);
            if (j < 0) {
                vFindings.push_back({ValidityFinding::NEIGHBOURSHIP, pT, pN});
            } else if (!isSameEdge(*pT, i, *pN, j)) {
                vFindings.push_back({ValidityFinding::INTRA_INDEX, pT, pN});
            }
        }
    });
}

void checkEmptyCircles(const MeshStore& store, TeskTest& tests, const EdgeGuard* pGuard,
                       std::vector<ValidityFinding>& vFindings) {
    store.forEachTriangle([&](Triangle2* pT) {
        if (!hasThreeCorners(*pT)) return;
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN == nullptr || !hasThreeCorners(*pN)) continue;
            const int j = indexOfNeighbour(*pN, pT);
            if (j < 0 || !isSameEdge(*pT, i, *pN, j)) continue;
            const Point2 *const src = pT->getCorner(Triangle2::incIndexBy1(i)), *const trg = pT->getCorner(
                                                                                    Triangle2::incIndexBy2(
                                                                                        i));
            if (pGuard != nullptr && pGuard->isFixed(src, trg)) continue;
            // Three-valued: on the circle is fine, as it is all over a grid.
            if (tests.inCircle(*pT, *pN->getCorner(j)) == CINC2_INCIRCLE) {
                vFindings.push_back({ValidityFinding::EMPTY_CIRCLE, pT, pN});
            }
        }
    });
}

} // namespace TESK_KIVO2D
