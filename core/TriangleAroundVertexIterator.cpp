#include "TriangleAroundVertexIterator.h"

#include "KivoException.h"
#include "Point2.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"

namespace TESK_KIVO2D {

TriangleAroundVertexIterator::TriangleAroundVertexIterator(Point2* pVertex)
    : pVtx(pVertex), pTr(pVertex != nullptr ? pVertex->getIncidentTriangle() : nullptr) {
    if (pTr == nullptr) {
        printErrorText(
            "TriangleAroundVertexIterator::TriangleAroundVertexIterator(), created from an invalid point\n");
        throw KivoException();
    }
}

TriangleAroundVertexIterator::TriangleAroundVertexIterator(Point2* pVertex, Triangle2* pTriangle)
    : pVtx(pVertex), pTr(pTriangle) {
    KIVO_ASSERT(pTr != nullptr, "pTr!=NULL");
}

TriangleAroundVertexIterator::TriangleAroundVertexIterator(const TriangleAroundVertexIterator& other)
    : pVtx(other.pVtx), pTr(other.pTr) {
    KIVO_ASSERT(pTr != nullptr, "pTr!=NULL");
}

TriangleAroundVertexIterator& TriangleAroundVertexIterator::operator++() {
    step(Triangle2::incIndexBy1);
    return *this;
}

TriangleAroundVertexIterator& TriangleAroundVertexIterator::operator--() {
    step(Triangle2::incIndexBy2);
    return *this;
}

void TriangleAroundVertexIterator::step(int (*neighbourIndex)(int)) {
    if (pTr == nullptr) {
        loop();
        return;
    }
    pSavedTr = pTr;
    pTr = pTr->getOppositeTriangle(neighbourIndex(pTr->getIntraTriangleIndex(pVtx)));
}

void TriangleAroundVertexIterator::loop() {
    KIVO_ASSERT(pTr == nullptr && pSavedTr != nullptr, "pTr==NULL && pSavedTr!=NULL");
    const int i = pSavedTr->getIntraTriangleIndex(pVtx);
    const bool bClockwise = pSavedTr->getOppositeTriangle(Triangle2::incIndexBy2(i)) != nullptr;
    const bool bCounterClockwise = pSavedTr->getOppositeTriangle(Triangle2::incIndexBy1(i)) != nullptr;
    KIVO_ASSERT(!(bClockwise && bCounterClockwise), "direction==DIRECTION_NONE");
    pTr = pSavedTr;
    if (!bClockwise && !bCounterClockwise) return; // a single triangle
    while (pTr != nullptr)
        step(bClockwise ? Triangle2::incIndexBy2 : Triangle2::incIndexBy1);
    pTr = pSavedTr;
}

Triangle2* TriangleAroundVertexIterator::previewNextTriangle() const {
    TriangleAroundVertexIterator preview;
    preview = *this; // not the copy constructor: this one may stand at null
    return *++preview;
}

Triangle2* TriangleAroundVertexIterator::previewPrevTriangle() const {
    TriangleAroundVertexIterator preview;
    preview = *this;
    return *--preview;
}

} // namespace TESK_KIVO2D
