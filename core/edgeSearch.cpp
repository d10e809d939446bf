#include "core/edgeSearch.h"

#include "kernel/assertion.h"

#include <utility>

namespace TESK_KIVO2D {
namespace {

// How many triangles are looked at around the first vertex before the second one gets its turns.
constexpr int numOneSided = 12;

// The triangles around a vertex one by one: from its incident triangle in one direction to the end of the fan
// or all around, and from a fan's end once more from the incident triangle in the other direction.
class Turn {
public:
    explicit Turn(const Point2* pCentre) : pVtx(pCentre), pStart(pVtx->getIncidentTriangle()), pT(pStart) {
        KIVO_ASSERT(pStart != nullptr, "pTr!=NULL");
        centre = pT->getIntraTriangleIndex(pVtx);
    }

    const Point2* vertex() const { return pVtx; }
    // The triangle of the moment and the index of the vertex in it. Null when all were shown.
    Triangle2* triangle() const { return pT; }
    int index() const { return centre; }
    Point2* first() const { return pT->getCorner(Triangle2::incIndexBy1(centre)); }
    Point2* second() const { return pT->getCorner(Triangle2::incIndexBy2(centre)); }

    void setClockwise(bool bClockwise_) {
        bClockwise = bClockwise_;
        bDirected = true;
    }
    bool isDirected() const { return bDirected; }

    void next() {
        pT = behind(pT, centre);
        if (pT == nullptr && !bOtherWay) { // the end of a fan
            bOtherWay = true;
            bClockwise = !bClockwise;
            pT = behind(pStart, pStart->getIntraTriangleIndex(pVtx));
        }
        if (pT == pStart) pT = nullptr;
        if (pT != nullptr) centre = pT->getIntraTriangleIndex(pVtx);
    }

private:
    Triangle2* behind(const Triangle2* pTriangle, int ith) const {
        return pTriangle->getOppositeTriangle(bClockwise ? Triangle2::incIndexBy2(ith)
                                                         : Triangle2::incIndexBy1(ith));
    }

    const Point2* pVtx;
    Triangle2* pStart;
    Triangle2* pT;
    int centre;
    bool bClockwise = false, bDirected = false, bOtherWay = false;
};

// True when q and p, on one line with the centre, lie on the same side of it.
bool isAhead(const Point2& centre, const Point2& p, const Point2& q) { return (centre < p) == (centre < q); }

// Where the segment from the turning vertex to the target runs in this triangle, if it does.
bool leavesHere(Turn& turn, const Point2& target, TeskTest& tests, Departure& departure) {
    const Point2& centre = *turn.vertex();
    Point2 *const pFirst = turn.first(), *const pSecond = turn.second();
    for (Point2* p : {pFirst, pSecond}) {
        if (p != &target) continue;
        departure.kind = Departure::ALONG_EDGE;
        departure.pVtx = p;
        return true;
    }
    const Orientation2 ofFirst = tests.orientation(centre, *pFirst, target);
    const Orientation2 ofSecond = tests.orientation(centre, *pSecond, target);
    if (ofFirst == ORIENTATION2_CCW && ofSecond == ORIENTATION2_CW) {
        departure.kind = Departure::ACROSS_EDGE;
        departure.across = {turn.triangle(), turn.index()};
        return true;
    }
    for (const auto& [side, p] : {std::pair(ofFirst, pFirst), {ofSecond, pSecond}}) {
        if (side != ORIENTATION2_COLLINEAR || !isAhead(centre, *p, target)) continue;
        departure.kind = Departure::ALONG_EDGE;
        departure.pVtx = p;
        return true;
    }
    if (!turn.isDirected()) turn.setClockwise(ofSecond != ORIENTATION2_CCW);
    return false;
}

} // namespace

Departure findDeparture(Point2* p, Point2* q, TeskTest& tests) {
    KIVO_ASSERT(p->getIncidentTriangle() != nullptr, "pStart->getIncidentTriangle()!=NULL");
    KIVO_ASSERT(q->getIncidentTriangle() != nullptr, "pStop->getIncidentTriangle()!=NULL");
    Departure departure = {Departure::ALONG_EDGE, false, nullptr, {nullptr, 0}};
    Turn turnP(p);
    for (int i = 0; i < numOneSided && turnP.triangle() != nullptr; ++i, turnP.next()) {
        if (leavesHere(turnP, *q, tests, departure)) return departure;
    }
    for (Turn turnQ(q); turnP.triangle() != nullptr && turnQ.triangle() != nullptr;
         turnP.next(), turnQ.next()) {
        if (leavesHere(turnP, *q, tests, departure)) return departure;
        departure.bFromTarget = true;
        if (leavesHere(turnQ, *p, tests, departure)) return departure;
        departure.bFromTarget = false;
    }
    KIVO_ASSERT(false, "!(ori1==ORIENTATION2_COLLINEAR && ori2==ORIENTATION2_COLLINEAR)");
    return departure;
}

HalfEdge findEdge(const Point2* p, const Point2* q) {
    const auto edgeTo = [](const Turn& turn, const Point2* pOther) -> HalfEdge {
        if (turn.first() == pOther) return {turn.triangle(), Triangle2::incIndexBy2(turn.index())};
        if (turn.second() == pOther) return {turn.triangle(), Triangle2::incIndexBy1(turn.index())};
        return {nullptr, 0};
    };
    Turn turnP(p), turnQ(q);
    for (int i = 0; turnP.triangle() != nullptr && turnQ.triangle() != nullptr; ++i, turnP.next()) {
        HalfEdge edge = edgeTo(turnP, q);
        if (edge.pT == nullptr && i >= numOneSided) {
            edge = edgeTo(turnQ, p);
            turnQ.next();
        }
        if (edge.pT != nullptr) return edge;
    }
    return {nullptr, 0};
}

Triangle2* findTriangle(const Point2* a, const Point2* b, const Point2* c) {
    const auto isIt = [](const Turn& turn, const Point2* p, const Point2* q) {
        const Point2 *const pFirst = turn.first(), *const pSecond = turn.second();
        return (pFirst == p && pSecond == q) || (pFirst == q && pSecond == p);
    };
    Turn turnA(a);
    for (int i = 0; i < numOneSided && turnA.triangle() != nullptr; ++i, turnA.next()) {
        if (isIt(turnA, b, c)) return turnA.triangle();
    }
    Turn turnB(b), turnC(c);
    while (turnA.triangle() != nullptr && turnB.triangle() != nullptr && turnC.triangle() != nullptr) {
        if (isIt(turnA, b, c)) return turnA.triangle();
        if (isIt(turnB, a, c)) return turnB.triangle();
        if (isIt(turnC, a, b)) return turnC.triangle();
        turnA.next();
        turnB.next();
        turnC.next();
    }
    return nullptr;
}

} // namespace TESK_KIVO2D
