#include "core/legalize.h"

#include "core/flip.h"

namespace TESK_KIVO2D {

std::uint64_t legalizeNewVertex(std::vector<Triangle2*>& vCheckT, TeskTest& tests, const EdgeGuard* pGuard) {
    std::uint64_t numFlips = 0;
    while (!vCheckT.empty()) {
        Triangle2* const pT = vCheckT.back();
        Triangle2* const pN = pT->getOppositeTriangle(0);
        const bool bFlip = pN != nullptr && tests.isInCircleOrRectangle(*pN, *pT->getCorner(0)) &&
                           (pGuard == nullptr || !pGuard->isFixed(pT->getCorner(1), pT->getCorner(2)));
        if (bFlip) {
            flip(pT, 0);
            vCheckT.push_back(pN); // looked at next; T, now behind another edge, again afterwards
            ++numFlips;
        } else {
            vCheckT.pop_back();
        }
    }
    return numFlips;
}

} // namespace TESK_KIVO2D
