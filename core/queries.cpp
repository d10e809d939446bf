#include "core/queries.h"

#include "TriangleAroundVertexIterator.h"
#include "kernel/assertion.h"

namespace TESK_KIVO2D {

void getIncidentTriangles(Point2* pVtx, std::vector<Triangle2*>& vIncidentT) {
    TriangleAroundVertexIterator start(pVtx);
    // Clockwise to the end of the fan, or once around.
    TriangleAroundVertexIterator it(start);
    Triangle2* pFirstT = *start;
    for (--it; *it != nullptr && *it != *start; --it)
        pFirstT = *it;
    if (*it != nullptr) pFirstT = *start; // an inner vertex: begin at its own triangle
    TriangleAroundVertexIterator forward(pVtx, pFirstT);
    do {
        vIncidentT.push_back(*forward);
        ++forward;
    } while (*forward != nullptr && *forward != pFirstT);
}

Triangle2* getAdjacentTriangle(Point2* p0, Point2* p1) {
    KIVO_ASSERT(p0 != nullptr, "p0!=0");
    KIVO_ASSERT(p1 != nullptr, "p1!=0");
    KIVO_ASSERT(p0 != p1, "p0!=p1");
    const TriangleAroundVertexIterator start(p0);
    TriangleAroundVertexIterator it(start);
    do {
        Triangle2* const pT = *it;
        // Around a hull vertex one position of the circulation is null.
        if (pT != nullptr && pT->getCorner(Triangle2::incIndexBy1(pT->getIntraTriangleIndex(p0))) == p1)
            return pT;
        ++it;
    } while (it != start);
    return nullptr;
}

} // namespace TESK_KIVO2D
