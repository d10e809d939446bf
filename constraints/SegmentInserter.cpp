#include "constraints/SegmentInserter.h"

#include "constraints/SegmentRelease.h"
#include "constraints/splitPoint.h"
#include "core/edgeSearch.h"
#include "kernel/assertion.h"
#include "kernel/intersection.h"
#include "kernel/messages.h"
#include "kernel/tools.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>

namespace TESK_KIVO2D {
namespace {

// So many Steiner points a conforming segment may take to be there, even when those of its call are used up.
constexpr std::size_t numOwnSteinerPoints = 16;

double extent(const Point2& p, const Point2& q) {
    return std::max(std::fabs(p.x() - q.x()), std::fabs(p.y() - q.y()));
}

// True when rounding to doubles may turn the segment by a thousandth or more.
bool isCoarse(const Point2& rounded, const Point2& p, const Point2& q) {
    const double size = rounded.getMaxAbs();
    const double unit = std::nextafter(size, std::numeric_limits<double>::infinity()) - size;
    return extent(p, q) < 1024 * unit;
}

// True when the segment is too short to be split once more.
bool isBelowResolution(const Point2& a, const Point2& b, double largestCoordinate) {
    if (!(largestCoordinate > 0)) return true;
    const double size = std::min(largestCoordinate, DBL_MAX); // that of a doubled box may be infinite
    const int exponent = static_cast<int>(std::ceil(std::log(size) / std::log(2.0)));
    const double eps = std::ldexp(DBL_EPSILON, exponent) * 10;
    return std::fabs(a.x() - b.x()) < eps && std::fabs(a.y() - b.y()) < eps;
}

// The part of the segment that lives and has the point, which lies on the segment but for rounding.
ConstraintSegment2* leafAt(ConstraintSegment2* pCSeg, const Point2& p) {
    while (!pCSeg->isAlive()) {
        ConstraintSegment2 *pKid0 = nullptr, *pKid1 = nullptr;
        Point2* pSplit = nullptr;
        pCSeg->getChildrenAndSplitPoint(pKid0, pKid1, pSplit);
        const auto farEnd = [pSplit](const ConstraintSegment2* pKid) {
            return pKid->getSrc() == pSplit ? pKid->getTrg() : pKid->getSrc();
        };
        pCSeg = isBefore(*pSplit, p, *farEnd(pKid0), *farEnd(pKid1)) ? pKid1 : pKid0;
    }
    return pCSeg;
}

} // namespace

bool SegmentInserter::insert(ConstraintSegment2* pInitialCSeg) {
    KIVO_ASSERT(pInitialCSeg->isAlive(), "pInitialCSeg->isAlive()");
    vStack.assign(1, pInitialCSeg);
    return insertPieces();
}

// Those on the stack, and all that comes of them.
bool SegmentInserter::insertPieces() {
    numOwnLeft = numOwnSteinerPoints;
    for (std::uint64_t numPieces = 0; !vStack.empty(); ++numPieces) {
        if (numPieces == budget) {
            reportWarning("ConstraintMgr::apply()",
                          "insufficient numeric accuracy, need to skip last insertions");
            return false;
        }
        ConstraintSegment2* const pCSeg = vStack.back();
        vStack.pop_back();
        if (!pCSeg->isAlive()) {
            pCSeg->getChildrenRec(vStack);
        } else {
            insertPiece(pCSeg);
        }
    }
    return true;
}

void SegmentInserter::force(ConstraintSegment2* pCSeg) {
    const CzResult result = traverse(pCSeg->getSrc(), pCSeg->getTrg(), tests, &mgr, zone);
    if (result.end == CzResult::IS_EDGE) return;
    KIVO_ASSERT(result.end == CzResult::REACHED, "pCSeg->isAlive()");
    retriangulation.fill(zone);
}

void SegmentInserter::insertPiece(ConstraintSegment2* pCSeg) {
    const bool bConforming = pCSeg->getCIS() == CIS_CONFORMING_DELAUNAY;
    const CzResult result = traverse(pCSeg->getSrc(), pCSeg->getTrg(), tests, &mgr, zone);
    switch (result.end) {
    case CzResult::IS_EDGE:
        // Present, but until the circles are empty it is locked rather than Delaunay.
        if (bConforming && numSteinerPointsLeft > 0 && !isLocallyDelaunay(pCSeg) && takeSteinerPoint())
            splitInTheMiddle(pCSeg);
        return;
    case CzResult::REACHED:
        if (bConforming) {
            if (takeSteinerPoint() && splitInTheMiddle(pCSeg)) return;
            reportWarning("Dt2::insertSegmentConformingDelaunay()",
                          "Double precision arithmetic does not allow to split a segment further, giving up. "
                          "Incorrect result!"); // at least it is forced in
        }
        retriangulation.fill(zone);
        return;
    case CzResult::MET_VERTEX:
        pCSeg->split_combinatorialOnly(result.pVtx);
        pushPieces(pCSeg);
        return;
    case CzResult::MET_FIXED:
        cross(pCSeg, result.edge);
        return;
    }
}

bool SegmentInserter::takeSteinerPoint() {
    std::size_t& numLeft = numSteinerPointsLeft > 0 ? numSteinerPointsLeft : numOwnLeft;
    if (numLeft == 0) return false;
    --numLeft;
    return true;
}

// A far corner that rounding has put beside the segment makes it no less Delaunay: splits would only make
// more such corners, without end.
bool SegmentInserter::isLocallyDelaunay(const ConstraintSegment2* pCSeg) const {
    const Point2 &src = *pCSeg->getSrc(), &trg = *pCSeg->getTrg();
    const HalfEdge edge = findEdge(&src, &trg);
    Triangle2* const pN = edge.opposite();
    if (pN == nullptr) return true;
    const Point2& onT = *edge.pT->getCorner(edge.ith);
    const Point2& onN = *pN->getCorner(pN->getIntraTriangleIndex(edge.pT));
    return tests.inCircle(*edge.pT, onN) != CINC2_INCIRCLE || isWithinUnitOfLine(onT, src, trg) ||
           isWithinUnitOfLine(onN, src, trg);
}

// False when doubles leave no room for it.
bool SegmentInserter::splitInTheMiddle(ConstraintSegment2* pCSeg) {
    Point2 *const a = pCSeg->getSrc(), *const b = pCSeg->getTrg();
    if (isBelowResolution(*a, *b, tests.getMaxAbsCoord())) return false;
    const Point2 middle = splitPointOf(a, b, mgr);
    if (middle == *a || middle == *b) return false;
    Point2* const pSplitPoint = insertReleased(middle, a->getIncidentTriangle(), pCSeg);
    KIVO_ASSERT(pSplitPoint != a, "pSplitPoint!=pCSeg->getSrc()");
    const bool bOK = pCSeg->split_combinatorialOnly(pSplitPoint);
    KIVO_ASSERT(bOK, "bOK");
    site.legalizeEdge(a, b);
    pushPieces(pCSeg);
    return true;
}

// The segment crosses a constraint edge: both are split there.
//
// Unless an end of one lies on the other but for a unit in the last place. Then the other one is split at
// that end: a new vertex would be no better, and among many segments that lie on each other but for rounding
// each would make more.
void SegmentInserter::cross(ConstraintSegment2* pCSeg, HalfEdge edge) {
    Point2 *const a = pCSeg->getSrc(), *const b = pCSeg->getTrg();
    Point2 *const r = edge.source(), *const l = edge.target();
    ConstraintSegment2* const pCrossingCSeg = mgr.getConstraintSegment(r, l);
    mgr.reserveSplits(2);
    // To nearest: rounding towards zero each time lets segments that meet at a small angle slide past each
    // other, unit by unit, for as long as they are.
    const Point2 crossing = getNearestIntersection(*a, *b, *r, *l);
    if (splitAtEnd(pCSeg, *pCrossingCSeg, crossing)) {
        pushPieces(pCSeg);
        return;
    }
    if (splitAtEnd(pCrossingCSeg, *pCSeg, crossing)) {
        site.legalizeEdge(r, l);
        vStack.push_back(pCSeg);
        pushPieces(pCrossingCSeg);
        return;
    }
    if (isCoarse(crossing, *a, *b) || isCoarse(crossing, *r, *l)) {
        reportWarning(
            "Dt2::treatConstraintZone()",
            "intersection point of two constraints has bad numerica accuracy!"); // text kept as it is
    }
    if (splitInPlace(pCrossingCSeg, edge, crossing, pCSeg) != nullptr) {
        pushPieces(pCSeg);
        return;
    }
    Point2* const pSplitPoint = insertReleased(crossing, edge.pT, pCrossingCSeg);
    pCrossingCSeg->split_combinatorialOnly(pSplitPoint);
    pCSeg->split_combinatorialOnly(pSplitPoint);
    site.legalizeEdge(r, l);
    pushPieces(pCSeg);
    pushPieces(pCrossingCSeg);
}

// Splits the segment at an end of the other one that lies on it but for a unit in the last place, or on which
// the crossing was rounded.
bool SegmentInserter::splitAtEnd(ConstraintSegment2* pCSeg, const ConstraintSegment2& other,
                                 const Point2& crossing) {
    const Point2 &src = *pCSeg->getSrc(), &trg = *pCSeg->getTrg();
    for (Point2* pEnd : {other.getSrc(), other.getTrg()}) {
        const bool bOnIt =
            *pEnd == crossing || (isInBox(*pEnd, src, trg) && isWithinUnitOfLine(*pEnd, src, trg));
        if (bOnIt) return pCSeg->split_combinatorialOnly(pEnd);
    }
    return false;
}

// Puts the point in the place of the segment's edge, if that makes four proper triangles; else it is null.
// The segment that crosses there, if there is one, is split too.
Point2* SegmentInserter::splitInPlace(ConstraintSegment2* pCSeg, HalfEdge edge, const Point2& p,
                                      ConstraintSegment2* pCrossing) {
    if (edge.opposite() == nullptr || !isStarShaped(edge, p)) return nullptr;
    Point2* const pSplitPoint = site.newVertex(p);
    // First, so that the new edges are known as fixed when they are legalised around.
    pCSeg->split_combinatorialOnly(pSplitPoint);
    if (pCrossing != nullptr) pCrossing->split_combinatorialOnly(pSplitPoint);
    site.replaceEdge(edge, pSplitPoint);
    return pSplitPoint;
}

Point2* SegmentInserter::splitAt(ConstraintSegment2* pCSeg, const Point2& p) {
    ConstraintSegment2* const pLeaf = leafAt(pCSeg, p);
    Point2 *const a = pLeaf->getSrc(), *const b = pLeaf->getTrg();
    if (p == *a || p == *b) return p == *a ? a : b;
    // Beside it rather than on it, between earlier splits that were rounded too.
    if (!isInBox(p, *a, *b)) return site.insertNear(p, a->getIncidentTriangle());
    mgr.reserveSplits(1);
    const HalfEdge edge = findEdge(a, b);
    if (edge.pT != nullptr) {
        if (Point2* const pSplitPoint = splitInPlace(pLeaf, edge, p, nullptr)) return pSplitPoint;
    }
    try {
        Point2* const pSplitPoint = insertReleased(p, a->getIncidentTriangle(), pLeaf);
        pLeaf->split_combinatorialOnly(pSplitPoint);
        site.legalizeEdge(a, b);
        vStack.clear();
        pushPieces(pLeaf);
        insertPieces();
        return pSplitPoint;
    } catch (...) { // out of memory
        mgr.applyLater();
        throw;
    }
}

// Inserts a point as if this segment were no constraint: it is not split by it, and its edge is not held.
Point2* SegmentInserter::insertReleased(const Point2& p, Triangle2* pNear, ConstraintSegment2* pReleased) {
    const SegmentRelease release(*pReleased);
    return site.insertNear(p, pNear);
}

// True when the point is strictly inside the two triangles at the edge and sees all of their corners.
bool SegmentInserter::isStarShaped(HalfEdge edge, const Point2& p) const {
    const Triangle2 *const pT = edge.pT, *const pN = edge.opposite();
    const Point2 &r = *edge.source(), &l = *edge.target();
    const Point2& onT = *pT->getCorner(edge.ith);
    const Point2& onN = *pN->getCorner(pN->getIntraTriangleIndex(pT));
    return tests.orientation(onT, r, p) == ORIENTATION2_CCW &&
           tests.orientation(l, onT, p) == ORIENTATION2_CCW &&
           tests.orientation(onN, l, p) == ORIENTATION2_CCW &&
           tests.orientation(r, onN, p) == ORIENTATION2_CCW;
}

void SegmentInserter::pushPieces(ConstraintSegment2* pCSeg) {
    ConstraintSegment2 *pKid0 = nullptr, *pKid1 = nullptr;
    Point2* pSplit = nullptr;
    pCSeg->getChildrenAndSplitPoint(pKid0, pKid1, pSplit);
    vStack.push_back(pKid1);
    vStack.push_back(pKid0);
}

} // namespace TESK_KIVO2D
