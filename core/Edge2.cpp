#include "Edge2.h"

#include <functional>

namespace TESK_KIVO2D {

void Edge2::getTriangles(Triangle2*& pT0, Triangle2*& pT1, int& idx0, int& idx1) const {
    pT0 = pT;
    idx0 = ith;
    pT1 = pT->getOppositeTriangle(ith);
    idx1 = pT1 != nullptr ? pT1->getIntraTriangleIndex(pT) : -1;
}

bool Edge2::operator<(const Edge2& other) const {
    if (pT != other.pT) return std::less<Triangle2*>()(pT, other.pT);
    return ith < other.ith;
}

} // namespace TESK_KIVO2D
