#include "core/legalize.h"

#include "core/flip.h"

namespace TESK_KIVO2D {

std::uint64_t legalizeNewVertex(std::vector<Triangle2*>& vCheckT, TeskTest& tests, const EdgeGuard* pGuard) {
    std::uint64_t numFlips = 0;
    for (; !vCheckT.empty(); vCheckT.pop_back()) {
        Triangle2* pT = vCheckT.back();
        int numToRevisit = 0; // triangles flipped before this one and not looked at since
        for (;;) {
            Triangle2* const pN = pT->getOppositeTriangle(0);
            const bool bFlip = pN != nullptr && tests.isInCircleOrRectangle(*pN, *pT->getCorner(0)) &&
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

} // namespace TESK_KIVO2D
