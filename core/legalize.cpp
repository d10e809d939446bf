#include "core/legalize.h"

#include "core/flip.h"

namespace TESK_KIVO2D {
namespace {

template<class IsIllegal>
std::uint64_t legalizeFan(std::vector<Triangle2*>& vCheckT, IsIllegal isIllegal, const EdgeGuard* pGuard) {
    std::uint64_t numFlips = 0;
    for (; !vCheckT.empty(); vCheckT.pop_back()) {
        Triangle2* pT = vCheckT.back();
        int numToRevisit = 0; // triangles flipped before this one and not looked at since
        for (;;) {
            Triangle2* const pN = pT->getOppositeTriangle(0);
            const bool bFlip = pN != nullptr && isIllegal(*pN, *pT->getCorner(0)) &&
                               (pGuard == nullptr || !pGuard->isFixed(pT->getCorner(1), pT->getCorner(2)));
            if (bFlip) {
                flip(pT, 0);
                pT = pN; // T, now behind another edge, is looked at again afterwards: it lies behind edge 2
                ++numToRevisit;
                ++numFlips;
            } else if (numToRevisit-- > 0) {
                pT = pT->getOppositeTriangle(2);
            } else {
                break;
            }
        }
    }
    return numFlips;
}

} // namespace

std::uint64_t legalizeNewVertex(std::vector<Triangle2*>& vCheckT, TeskTest& tests, const EdgeGuard* pGuard,
                                CircleTies ties) {
    if (ties == CircleTies::KEEP) {
        const auto isInCircle = [&](const Triangle2& t, const Point2& q) {
            return tests.inCircle(t, q) == CINC2_INCIRCLE;
        };
        return legalizeFan(vCheckT, isInCircle, pGuard);
    }
    const auto isInCircleOrRectangle = [&](const Triangle2& t, const Point2& q) {
        return tests.isInCircleOrRectangle(t, q);
    };
    return legalizeFan(vCheckT, isInCircleOrRectangle, pGuard);
}

std::uint64_t legalizeEdges(std::vector<HalfEdge>& vEdges, TeskTest& tests, const EdgeGuard* pGuard) {
    std::uint64_t numFlips = 0;
    while (!vEdges.empty()) {
        // The records may have been flipped since this edge was noted. Then it is on the stack once more, as
        // one of the four edges around that flip.
        const HalfEdge edge = vEdges.back();
        vEdges.pop_back();
        Triangle2 *const pT = edge.pT, *const pN = edge.opposite();
        if (pN == nullptr) continue;
        const int j = pN->getIntraTriangleIndex(pT);
        if (tests.inCircle(*pT, *pN->getCorner(j)) != CINC2_INCIRCLE) continue;
        if (pGuard != nullptr && pGuard->isFixed(edge.source(), edge.target())) continue;
        flip(pT, edge.ith);
        ++numFlips;
        for (const HalfEdge& around : {HalfEdge{pT, 0}, HalfEdge{pT, 2}, HalfEdge{pN, 0}, HalfEdge{pN, 1}})
            vEdges.push_back(around);
    }
    return numFlips;
}

} // namespace TESK_KIVO2D
