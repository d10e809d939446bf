#include "core/GhostRing.h"

#include "core/flip.h"
#include "core/hull.h"
#include "kernel/assertion.h"

#include <utility>
#include <vector>

namespace TESK_KIVO2D {
namespace {

constexpr const Point2* infinity = nullptr;

bool isGhost(const Triangle2& t) { return t.hasVertex(infinity); }

// The corner of t that lies off its edge pq. By corners: two triangles may share two edges here.
int indexOff(const Triangle2& t, const Point2* p, const Point2* q) {
    for (const int i : {0, 1}) {
        if (t.getCorner(i) != p && t.getCorner(i) != q) return i;
    }
    return 2;
}

// A place on the ring: the ghost (infinity, t, s) behind the hull edge s -> t, which runs counter-clockwise
// around the part.
class Ghost {
public:
    explicit Ghost(Triangle2* pGhost) : pT(pGhost), ith(pGhost->getIntraTriangleIndex(infinity)) {}
    // Makes one, without neighbours.
    Ghost(Triangle2* pRecord, Point2* pSource, Point2* pTarget) : pT(pRecord), ith(2) {
        pT->relink(pTarget, pSource, nullptr, nullptr, nullptr, nullptr);
    }

    Triangle2* triangle() const { return pT; }
    Point2* source() const { return pT->getCorner(Triangle2::incIndexBy2(ith)); }
    Point2* target() const { return pT->getCorner(Triangle2::incIndexBy1(ith)); }
    Ghost next() const { return Ghost(pT->getOppositeTriangle(Triangle2::incIndexBy2(ith))); }
    Ghost previous() const { return Ghost(pT->getOppositeTriangle(Triangle2::incIndexBy1(ith))); }
    // What lies behind the hull edge: a triangle, or the ghost on the other side of a bare edge.
    HalfEdge inner() const {
        Triangle2* const pInner = pT->getOppositeTriangle(ith);
        return {pInner, indexOff(*pInner, source(), target())};
    }
    void setInner(Triangle2* pInner) const { pT->setOppTriangle(ith, pInner); }

    // The other one follows this one on the ring.
    void precede(const Ghost& other) const {
        pT->setOppTriangle(Triangle2::incIndexBy2(ith), other.pT);
        other.pT->setOppTriangle(Triangle2::incIndexBy1(other.ith), pT);
    }
    bool operator==(const Ghost& other) const { return pT == other.pT; }

private:
    Triangle2* pT;
    int ith;
};

void becomeIncident(Triangle2* pT, int ith) {
    if (pT->getCorner(ith) != infinity) pT->becomeIncidentAt(ith);
}

// As core/flip.h has it, where ghosts take part.
void flipRinged(Triangle2* pT, int ith) {
    const Point2 *const b = pT->getCorner(Triangle2::incIndexBy1(ith)), *const c = pT->getCorner(
                                                                            Triangle2::incIndexBy2(ith));
    const FlipQuad quad(pT, ith, indexOff(*pT->getOppositeTriangle(ith), b, c));
    quad.pBD->setOppTriangle(indexOff(*quad.pBD, quad.b, quad.d), pT);
    quad.pCA->setOppTriangle(indexOff(*quad.pCA, quad.c, quad.a), quad.pN);
    quad.relink();
    becomeIncident(pT, 1);
    becomeIncident(quad.pN, 2);
}

// The ghost whose edge starts at this vertex of the hull; the vertex has a triangle.
Ghost ghostFrom(const Point2* pVtx) {
    Triangle2* pT = pVtx->getIncidentTriangle();
    while (!isGhost(*pT))
        pT = pT->getOppositeTriangle(Triangle2::incIndexBy1(pT->getIntraTriangleIndex(pVtx)));
    const Ghost ghost(pT);
    return ghost.source() == pVtx ? ghost : ghost.next();
}

// The hull edge that starts at a vertex of the hull of a triangulation without ghosts.
HullEdge hullEdgeFrom(const Point2* pVtx) {
    Triangle2* pT = pVtx->getIncidentTriangle();
    for (;;) {
        const int i = Triangle2::incIndexBy2(pT->getIntraTriangleIndex(pVtx));
        if (pT->getOppositeTriangle(i) == nullptr) return {pT, i};
        pT = pT->getOppositeTriangle(i);
    }
}

// The hull of one part, seen from the end of the rising edge that lies on it. A single point is a hull too.
class Side {
public:
    Side(Point2* pStart) : pVtx(pStart), pFrom(nullptr) {
        if (pVtx->getIncidentTriangle() != nullptr) pFrom = ghostFrom(pVtx).triangle();
    }
    Point2* vertex() const { return pVtx; }
    bool isSingle() const { return pFrom == nullptr; }
    // The ghosts after and before the vertex.
    Ghost after() const { return Ghost(pFrom); }
    Ghost before() const { return after().previous(); }
    Point2* next() const { return isSingle() ? pVtx : after().target(); }
    Point2* previous() const { return isSingle() ? pVtx : before().source(); }
    void advance() {
        pVtx = next();
        pFrom = after().next().triangle();
    }
    void retreat() {
        pVtx = previous();
        pFrom = before().triangle();
    }

private:
    Point2* pVtx;
    Triangle2* pFrom;
};

class Merger {
public:
    Merger(Point2* pEndOfLeft, Point2* pEndOfRight, TeskTest& predicates)
        : tests(predicates), left(pEndOfLeft), right(pEndOfRight), pRising(nullptr) {}

    void run(Triangle2* aTwoRecords) {
        descend();
        join(aTwoRecords);
        while (rise()) {
        }
    }

private:
    // Until no vertex of either part lies to the right of the edge from left to right.
    void descend() {
        for (;;) {
            if (isRightOf(*right.next())) {
                right.advance();
            } else if (isRightOf(*left.previous())) {
                left.retreat();
            } else {
                return;
            }
        }
    }
    bool isRightOf(const Point2& p) {
        return tests.orientation(*left.vertex(), *right.vertex(), p) == ORIENTATION2_CW;
    }

    // The two rings become one: that of the left part from its vertex on, the edge to the right part, that of
    // the right part, and the edge back, which is the rising one.
    void join(Triangle2* aTwoRecords) {
        Point2 *const l = left.vertex(), *const r = right.vertex();
        const Ghost there(aTwoRecords, l, r), back(aTwoRecords + 1, r, l);
        there.setInner(back.triangle());
        back.setInner(there.triangle());
        const auto link = [](const Ghost& arriving, const Side& side, const Ghost& leaving) {
            if (side.isSingle()) {
                arriving.precede(leaving);
                return;
            }
            const Ghost before = side.before(), after = side.after();
            arriving.precede(after);
            before.precede(leaving);
        };
        link(there, right, back);
        link(back, left, there);
        if (left.isSingle()) becomeIncident(there.triangle(), 1);
        if (right.isSingle()) becomeIncident(there.triangle(), 0);
        pRising = back.triangle();
    }

    // Makes the next triangle at the rising edge, if there is one.
    bool rise() {
        const Ghost base(pRising);
        const Point2 *const l = base.target(), *const r = base.source();
        const auto isAbove = [&](const Point2* p) {
            return tests.orientation(*l, *r, *p) == ORIENTATION2_CCW;
        };
        const auto isInCircle = [&](const Point2* top, const Point2* p) {
            return p != infinity && tests.inCircle(*l, *r, *top, *p) == CINC2_INCIRCLE;
        };
        // Opens the triangles behind this ghost as long as the far corner is the better top.
        const auto mayBeTop = [&](auto top, auto ghost) {
            if (!isAbove(top(ghost()))) return false;
            for (;;) {
                const Ghost outside = ghost();
                const HalfEdge inner = outside.inner();
                if (!isInCircle(top(outside), inner.pT->getCorner(inner.ith))) return true;
                flipRinged(inner.pT, inner.ith);
            }
        };
        const auto ghostOfLeft = [&] { return base.next(); };
        const auto ghostOfRight = [&] { return base.previous(); };
        const bool bLeft = mayBeTop([](const Ghost& g) { return g.target(); }, ghostOfLeft);
        const bool bRight = mayBeTop([](const Ghost& g) { return g.source(); }, ghostOfRight);
        if (!bLeft && !bRight) return false;
        // The rising edge's ghost is (infinity, l, r): what it becomes has the far corner of its neighbour.
        Triangle2* const pT = base.triangle();
        if (!bLeft || (bRight && isInCircle(ghostOfLeft().target(), ghostOfRight().source()))) {
            pRising = ghostOfRight().triangle(); // (l, r, top) and (infinity, l, top)
            flipRinged(pT, pT->getIntraTriangleIndex(l));
        } else {
            flipRinged(pT, pT->getIntraTriangleIndex(r)); // (infinity, top, r) and (l, r, top)
        }
        return true;
    }

    TeskTest& tests;
    Side left, right;
    Triangle2* pRising; // the ghost of the edge from the right part to the left one, all below is done
};

} // namespace

void addGhosts(const RingedPart& part, MeshStore& store) {
    const HullEdge first = hullEdgeFrom(part.pLeft);
    const auto ghostBehind = [&store](const HullEdge& edge) {
        const Ghost ghost(store.newTriangle(), edge.source(), edge.target());
        ghost.setInner(edge.pT);
        return ghost;
    };
    const Ghost firstGhost = ghostBehind(first);
    Ghost ghost = firstGhost;
    // A hull edge gets its ghost when the hull is not needed there any more.
    for (HullEdge edge = nextHullEdge(first); !(edge == first);) {
        const Ghost following = ghostBehind(edge);
        ghost.precede(following);
        ghost = following;
        const HullEdge done = edge;
        edge = nextHullEdge(edge);
        done.pT->setOppTriangle(done.ith, following.triangle());
    }
    ghost.precede(firstGhost);
    first.pT->setOppTriangle(first.ith, firstGhost.triangle());
}

void makeLine(Point2* const* aVertices, std::size_t num, MeshStore& store) {
    Triangle2 *pThere = nullptr, *pBack = nullptr; // of the latest edge
    for (std::size_t i = 1; i < num; ++i) {
        Point2 *const p = aVertices[i - 1], *const q = aVertices[i];
        const Ghost there(store.newTriangle(), p, q), back(store.newTriangle(), q, p);
        there.setInner(back.triangle());
        back.setInner(there.triangle());
        if (pThere != nullptr) {
            Ghost(pThere).precede(there);
            back.precede(Ghost(pBack));
        } else {
            back.precede(there);
        }
        pThere = there.triangle();
        pBack = back.triangle();
        becomeIncident(pThere, 1);
    }
    if (pThere == nullptr) return;
    Ghost(pThere).precede(Ghost(pBack));
    becomeIncident(pThere, 0);
}

RingedPart mergeRinged(const RingedPart& first, const RingedPart& second, Triangle2* aTwoRecords,
                       TeskTest& tests) {
    // What lies below counts as left, what lies above as right: the same picture, turned.
    if (first.pRight->x() < second.pLeft->x()) {
        Merger(first.pRight, second.pLeft, tests).run(aTwoRecords);
    } else if (second.pRight->x() < first.pLeft->x()) {
        Merger(second.pRight, first.pLeft, tests).run(aTwoRecords);
    } else if (first.pTop->y() < second.pBottom->y()) {
        Merger(first.pTop, second.pBottom, tests).run(aTwoRecords);
    } else {
        KIVO_ASSERT(second.pTop->y() < first.pBottom->y(), "sStartedChunks.empty()");
        Merger(second.pTop, first.pBottom, tests).run(aTwoRecords);
    }
    RingedPart whole = first;
    whole.add(second);
    return whole;
}

bool removeGhosts(const RingedPart& part, MeshStore& store) {
    if (part.pLeft->getIncidentTriangle() == nullptr) return false; // a single point
    const Ghost first = ghostFrom(part.pLeft);
    std::vector<Triangle2*> vGhosts;
    Ghost ghost = first;
    do {
        vGhosts.push_back(ghost.triangle());
        ghost = ghost.next();
    } while (!(ghost == first));
    store.reserveRetired(vGhosts.size());
    bool bLine = true;
    for (Triangle2* const pGhost : vGhosts) {
        const HalfEdge inner = Ghost(pGhost).inner();
        if (isGhost(*inner.pT)) {
            MeshStore::unlinkVertex(inner.source());
            MeshStore::unlinkVertex(inner.target());
            continue;
        }
        bLine = false;
        inner.pT->setOppTriangle(inner.ith, nullptr);
        inner.pT->becomeIncidentAt(Triangle2::incIndexBy1(inner.ith));
        inner.pT->becomeIncidentAt(Triangle2::incIndexBy2(inner.ith));
    }
    for (Triangle2* const pGhost : vGhosts)
        store.retireTriangle(pGhost);
    return !bLine;
}

} // namespace TESK_KIVO2D
