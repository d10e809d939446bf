#include "core/Cavity.h"

namespace TESK_KIVO2D {

//        to           The fan's triangle m is (v, from, to) of border edge m. Behind its edge
//       / |           1, to -> v, lies the next one; behind edge 2, v -> from, the one before;
//   +1 /  |  outside  behind edge 0 what lay outside the hole.
//     v   |
//   -1 \  |
//       \ |
//       from
void Cavity::link(Point2* pVtx, bool bOpenFan) {
    const std::size_t num = vBorder.size();
    for (std::size_t m = 0; m < num; ++m) {
        const BorderEdge& edge = vBorder[m];
        Triangle2* const pT = vTriangles[m];
        Triangle2* const pNext = m + 1 < num ? vTriangles[m + 1] : bOpenFan ? nullptr : vTriangles[0];
        Triangle2* const pPrevious = m > 0 ? vTriangles[m - 1] : bOpenFan ? nullptr : vTriangles[num - 1];
        pT->relink(pVtx, edge.pFrom, edge.pTo, edge.pOutside, pNext, pPrevious);
        pT->becomeIncidentAt(1);
        if (edge.pOutside != nullptr) edge.pOutside->setOppTriangle(edge.ithOutside, pT);
    }
    vTriangles[0]->becomeIncidentAt(0);
    if (bOpenFan) vTriangles[num - 1]->becomeIncidentAt(2); // begins no border edge
}

} // namespace TESK_KIVO2D
