#include "core/walk.h"

#include "core/prefetch.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <cmath>
#include <random>

namespace TESK_KIVO2D {
namespace {

// Beyond this many steps the order of edges is drawn.
constexpr int maxOrderedSteps = 1000;

// A triangle on the way, with the order in which its edges are asked. Edges before the position are known to
// have q on their inner side.
struct WayPoint {
    Triangle2* pT;
    int edgeOrder[3] = {0, 1, 2};
    int position = 0;
    int numSteps = 0;
};

// Asks one edge at a time, and copes with everything: points on lines of edges, hull edges, cycles.
template<QueryRange range>
class Walker {
public:
    Walker(const WayPoint& from, const Point2& query, TeskTest& predicates)
        : q(query), tests(predicates),
          pT(from.pT), edgeOrder{from.edgeOrder[0], from.edgeOrder[1], from.edgeOrder[2]},
          position(from.position), numSteps(from.numSteps) {}

    WalkResult run() {
        int edge = -1;
        while (position < 3) {
            const int e = edgeOrder[position];
            const Orientation2 side = sideOfEdge(e);
            if (side == ORIENTATION2_CCW) {
                ++position;
            } else if (side == ORIENTATION2_CW) {
                if (pT->getOppositeTriangle(e) == nullptr) return result(e);
                position = step(e);
                edge = -1; // it named an edge of the triangle just left
            } else {
                if (isAtCorner()) return result(WalkResult::ON_CORNER);
                if (pT->getOppositeTriangle(e) == nullptr) {
                    if (!alongHullEdge(e)) return result(exitEdge);
                    position = 0;
                    edge = -1;
                } else {
                    edge = e;
                    ++position;
                }
            }
        }
        return result(WalkResult::INSIDE, edge);
    }

private:
    WalkResult result(int code, int edge = -1) const {
        return {pT, static_cast<short>(code), static_cast<short>(edge), numSteps};
    }

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
    int step(int e) {
        Triangle2* pNext = pT->getOppositeTriangle(e);
        const int entry = pNext->getIntraTriangleIndex(pT);
        pT = pNext;
        if (++numSteps > maxOrderedSteps) {
            setOrderFrom(drawnEdge());
            return 0;
        }
        edgeOrder[0] = entry;
        edgeOrder[position == 1 ? 2 : 1] = Triangle2::incIndexBy1(entry);
        edgeOrder[position == 1 ? 1 : 2] = Triangle2::incIndexBy2(entry);
        return 1;
    }

    // Begins anew in each walk, so that a walk depends on nothing else and threads share nothing.
    int drawnEdge() { return static_cast<int>(random() % 3); }

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
            setOrderFrom(++numSteps > maxOrderedSteps ? drawnEdge() : 0);
            return true;
        }
        exitEdge = e;
        return false;
    }

    const Point2& q;
    TeskTest& tests;
    Triangle2* pT;
    int edgeOrder[3];
    int position;
    int numSteps;
    int exitEdge = -1;
    std::minstd_rand random;
};

// The usual walk. It asks all open edges of a triangle at once and chooses by arithmetic: the way is random,
// and a branch an edge would be mispredicted half of the time. It goes as far as the static filter is sure,
// along the same triangles as the Walker.
class FastWalker {
public:
    FastWalker(Triangle2* pStart, const Point2& query, double filterBound)
        : q(query), bound(filterBound), here{pStart} {}

    // True when the walk is done and result() holds; false when a Walker must go on from wayPoint().
    bool run() {
        const Point2 &a = *here.pT->getCorner(0), &b = *here.pT->getCorner(1), &c = *here.pT->getCorner(2);
        prefetchNeighbours(here.pT);
        const double det0 = side(b, c), det1 = side(c, a), det2 = side(a, b);
        if (!isSure(det0) || !isSure(det1) || !isSure(det2)) return false;
        const int inner0 = det0 > 0, inner1 = det1 > 0, inner2 = det2 > 0;
        here.position = numInner(inner0, inner1) + (inner0 & inner1 & inner2);
        while (here.position < 3) {
            const int edge = here.edgeOrder[here.position];
            Triangle2* const pNext = here.pT->getOppositeTriangle(edge);
            if (pNext == nullptr) {
                exitEdge = edge;
                return true;
            }
            if (here.numSteps == maxOrderedSteps) return false;
            if (!step(pNext)) return false;
        }
        return true;
    }

    WalkResult result() const { return {here.pT, static_cast<short>(exitEdge), -1, here.numSteps}; }
    const WayPoint& wayPoint() const { return here; }

private:
    double side(const Point2& src, const Point2& trg) const { return stages::orientationDet(src, trg, q); }
    bool isSure(double det) const { return std::fabs(det) > bound; }
    // How many edges in a row from here have q on their inner side.
    static int numInner(int first, int second) { return first + (first & second); }

    // Enters the neighbour and moves the position to the edge to cross next, or to 3. False if unsure.
    bool step(Triangle2* pNext) {
        const int entry = pNext->getIntraTriangleIndex(here.pT);
        const int next = Triangle2::incIndexBy1(entry), previous = Triangle2::incIndexBy2(entry);
        const Point2 &apex = *pNext->getCorner(entry), &src = *pNext->getCorner(next),
                     &trg = *pNext->getCorner(previous);
        const int bSwap = here.position == 1;
        prefetchNeighbours(pNext); // they come while the corners do
        here.pT = pNext;
        ++here.numSteps;
        here.edgeOrder[0] = entry;
        here.edgeOrder[1 + bSwap] = next;
        here.edgeOrder[2 - bSwap] = previous;
        here.position = 1;
        const double detNext = side(trg, apex), detPrevious = side(apex, src);
        if (!isSure(detNext) || !isSure(detPrevious)) return false;
        const int nextInner = detNext > 0, previousInner = detPrevious > 0;
        const int toSwap = (nextInner ^ previousInner) & -bSwap;
        here.position += numInner(nextInner ^ toSwap, previousInner ^ toSwap);
        return true;
    }

    const Point2& q;
    const double bound;
    WayPoint here;
    int exitEdge = WalkResult::INSIDE;
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
    if (range == QueryRange::ANYWHERE) return Walker<QueryRange::ANYWHERE>({pStartTriangle}, q, tests).run();
    FastWalker walker(pStartTriangle, q, tests.filterBound());
    if (walker.run()) return walker.result();
    return Walker<QueryRange::WITHIN_BOUND>(walker.wayPoint(), q, tests).run();
}

} // namespace TESK_KIVO2D
