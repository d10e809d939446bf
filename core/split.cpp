#include "core/split.h"

#include "core/flip.h"

namespace TESK_KIVO2D {

//            p2
//           /|\              v the vertex; T keeps its record and becomes (v, p0, p1)
//       A1 / | \ A0          T1 = (v, p1, p2), T2 = (v, p2, p0)
//         /T2|T1\.
//        / ./v\. \.
//       /./  T  \.\.
//      p0 --------- p1
//            A2
void splitTriangle(Triangle2* pT, Point2* pVtx, MeshStore& store, std::vector<Triangle2*>& vCheckT) {
    store.reserveTriangles(2);
    Point2 *const p0 = pT->getCorner(0), *const p1 = pT->getCorner(1), *const p2 = pT->getCorner(2);
    Triangle2 *const pA0 = pT->getOppositeTriangle(0), *const pA1 = pT->getOppositeTriangle(1),
                     *const pA2 = pT->getOppositeTriangle(2);
    Triangle2 *const pT1 = store.newTriangle(), *const pT2 = store.newTriangle();
    redirect(pA0, pT, pT1);
    redirect(pA1, pT, pT2);
    pT1->relink(pVtx, p1, p2, pA0, pT2, pT);
    pT2->relink(pVtx, p2, p0, pA1, pT, pT1);
    pT->relink(pVtx, p0, p1, pA2, pT1, pT2);
    pT->becomeIncidentAt(0);
    pT1->becomeIncidentAt(2); // p2 is no corner of T any more
    pushForCheck(pT, vCheckT);
    pushForCheck(pT1, vCheckT);
    pushForCheck(pT2, vCheckT);
}

namespace {

// One side of a split edge: T = (a, b, c) with the vertex on its edge bc keeps its record for (v, a, b); the
// new triangle is (v, c, a). The link between the two is set; those across the split edge are the caller's.
Triangle2* splitSide(Triangle2* pT, int ith, Point2* pVtx, MeshStore& store) {
    Point2* const a = pT->getCorner(ith);
    Point2* const b = pT->getCorner(Triangle2::incIndexBy1(ith));
    Point2* const c = pT->getCorner(Triangle2::incIndexBy2(ith));
    Triangle2* const pCA = pT->getOppositeTriangle(Triangle2::incIndexBy1(ith));
    Triangle2* const pAB = pT->getOppositeTriangle(Triangle2::incIndexBy2(ith));
    Triangle2* const pNew = store.newTriangle();
    redirect(pCA, pT, pNew);
    pNew->relink(pVtx, c, a, pCA, pT, nullptr);
    pT->relink(pVtx, a, b, pAB, nullptr, pNew);
    pT->becomeIncidentAt(0);
    pNew->becomeIncidentAt(1); // c is no corner of T any more
    return pNew;
}

} // namespace

//         a                The edge bc carries v. T = (a, b, c) becomes T = (v, a, b) and T1 = (v, c, a);
//       / | \              across it N = (d, c, b) becomes N = (v, d, c) and N1 = (v, b, d).
//      / T|T1\             Across bv lie T and N1, across vc lie T1 and N.
//     b---v---c
//      \N1|N /
//       \ | /
//         d
void splitEdge(Triangle2* pT, int ith, Point2* pVtx, MeshStore& store, std::vector<Triangle2*>& vCheckT) {
    store.reserveTriangles(2);
    Triangle2* const pN = pT->getOppositeTriangle(ith);
    const int j = pN != nullptr ? pN->getIntraTriangleIndex(pT) : -1;
    Triangle2* const pT1 = splitSide(pT, ith, pVtx, store);
    if (pN != nullptr) {
        Triangle2* const pN1 = splitSide(pN, j, pVtx, store);
        pT->setOppTriangle(1, pN1);
        pN1->setOppTriangle(2, pT);
        pT1->setOppTriangle(2, pN);
        pN->setOppTriangle(1, pT1);
        pushForCheck(pN, vCheckT);
        pushForCheck(pN1, vCheckT);
    }
    pushForCheck(pT, vCheckT);
    pushForCheck(pT1, vCheckT);
}

} // namespace TESK_KIVO2D
