#include "core/walk.h"

#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <cstdlib>

namespace TESK_KIVO2D {
namespace {

template<QueryRange range>
class Walker {
public:
    Walker(Triangle2* pStart, const Point2& query, TeskTest& predicates)
        : q(query), tests(predicates), pT(pStart) {}

    WalkResult run() {
        edgeOrder[0] = 0;
        edgeOrder[1] = 1;
        edgeOrder[2] = 2;
        int position = 0, edge = -1;
        while (position < 3) {
            const int e = edgeOrder[position];
            const Orientation2 side = sideOfEdge(e);
            if (side == ORIENTATION2_CCW) {
                ++position;
            } else if (side == ORIENTATION2_CW) {
                if (pT->getOppositeTriangle(e) == nullptr) return {pT, e, -1};
                position = step(e, position);
                edge = -1; // it named an edge of the triangle just left
            } else {
                if (isAtCorner()) return {pT, WalkResult::ON_CORNER, -1};
                if (pT->getOppositeTriangle(e) == nullptr) {
                    if (!alongHullEdge(e)) return {pT, exitEdge, -1};
                    position = 0;
                    edge = -1;
                } else {
                    edge = e;
                    ++position;
                }
            }
        }
        return {pT, WalkResult::INSIDE, edge};
    }

private:
    Orientation2 sideOfEdge(int e) {
        const Point2& src = *pT->getCorner(Triangle2::incIndexBy1(e));
        const Point2& trg = *pT->getCorner(Triangle2::incIndexBy2(e));
        if constexpr (range == QueryRange::WITHIN_BOUND) {
            return tests.orientation(src, trg, q);
        } else {
            return tests.orientationUnbounded(src, trg, q);
        }
    }

    bool isAtCorner() const {
        return *pT->getCorner(0) == q || *pT->getCorner(1) == q || *pT->getCorner(2) == q;
    }

    // Crosses edge e, which stood at this position of the order. Returns the position to go on from: the
    // entry edge is known to have q on its inner side.
    int step(int e, int position) {
        Triangle2* pNext = pT->getOppositeTriangle(e);
        const int entry = pNext->getIntraTriangleIndex(pT);
        pT = pNext;
        if (++numSteps > 1000) {
            setOrderFrom(std::rand() % 3);
            return 0;
        }
        edgeOrder[0] = entry;
        edgeOrder[position == 1 ? 2 : 1] = Triangle2::incIndexBy1(entry);
        edgeOrder[position == 1 ? 1 : 2] = Triangle2::incIndexBy2(entry);
        return 1;
    }

    void setOrderFrom(int first) {
        edgeOrder[0] = first;
        edgeOrder[1] = Triangle2::incIndexBy1(first);
        edgeOrder[2] = Triangle2::incIndexBy2(first);
    }

    // q is on the line of hull edge e. Returns true after a step towards q; false when the walk ends here, at
    // exitEdge.
    bool alongHullEdge(int e) {
        for (const int side : {Triangle2::incIndexBy1(e), Triangle2::incIndexBy2(e)}) {
            if (sideOfEdge(side) != ORIENTATION2_CW) continue;
            Triangle2* pNext = pT->getOppositeTriangle(side);
            if (pNext == nullptr) {
                exitEdge = side;
                return false;
            }
            pT = pNext;
            // A restart begins with an order of its own; beyond the limit also that one is drawn.
            setOrderFrom(++numSteps > 1000 ? std::rand() % 3 : 0);
            return true;
        }
        exitEdge = e;
        return false;
    }

    const Point2& q;
    TeskTest& tests;
    Triangle2* pT;
    int edgeOrder[3] = {0, 1, 2};
    int exitEdge = -1;
    int numSteps = 0;
};

} // namespace

Point2* cornerAt(const WalkResult& found, const Point2& q) {
    for (int i = 0; i < 3; ++i) {
        if (*found.pT->getCorner(i) == q) return found.pT->getCorner(i);
    }
    reportError("triangulateCoplanarOrDuplicate()", "Proxy not found");
    KIVO_ASSERT(false, "intState==4");
    return nullptr;
}

WalkResult walk(Triangle2* pStartTriangle, const Point2& q, TeskTest& tests, QueryRange range) {
    KIVO_ASSERT(pStartTriangle != nullptr, "pStartTriangle!=0");
    if (range == QueryRange::WITHIN_BOUND) {
        return Walker<QueryRange::WITHIN_BOUND>(pStartTriangle, q, tests).run();
    }
    return Walker<QueryRange::ANYWHERE>(pStartTriangle, q, tests).run();
}

} // namespace TESK_KIVO2D
