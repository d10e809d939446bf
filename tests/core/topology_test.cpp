#include "Edge2.h"
#include "KivoException.h"
#include "Triangle2.h"
#include "core/EdgeGuard.h"
#include "core/MeshStore.h"
#include "core/flip.h"
#include "core/legalize.h"
#include "core/split.h"
#include "tests/support/capture.h"

#include <gtest/gtest.h>

#include <set>

using namespace TESK_KIVO2D;

namespace {

// Two triangles on the unit square: t = (a, b, c) and n = (a, c, d), which share the diagonal ac; beyond ab
// lies o.
struct Square {
    Point2 a{0, 0}, b{1, 0}, c{1, 1}, d{0, 1}, below{0.5, -1};
    Triangle2 t, n, o;

    Square() {
        t.setPropertiesAndOppT(&a, &b, &c, nullptr, &n, &o);
        n.setPropertiesAndOppT(&a, &c, &d, nullptr, nullptr, &t);
        o.setPropertiesAndOppT(&b, &a, &below, nullptr, nullptr, &t);
    }
};

void expectLinked(const std::vector<const Triangle2*>& vT) {
    for (const Triangle2* pT : vT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* pN = pT->getOppositeTriangle(i);
            if (pN == nullptr) continue;
            const int j = pN->getIntraTriangleIndex(pT);
            EXPECT_EQ(pT->getCorner(Triangle2::incIndexBy1(i)), pN->getCorner(Triangle2::incIndexBy2(j)));
            EXPECT_EQ(pT->getCorner(Triangle2::incIndexBy2(i)), pN->getCorner(Triangle2::incIndexBy1(j)));
        }
    }
}

} // namespace

TEST(Triangle2, indexStepsRunModuloThree) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ((i + 1) % 3, Triangle2::incIndexBy1(i));
        EXPECT_EQ((i + 2) % 3, Triangle2::incIndexBy2(i));
    }
}

TEST(Triangle2, holdsSixPointersAndNothingElse) { EXPECT_EQ(6 * sizeof(void*), sizeof(Triangle2)); }

TEST(Triangle2, findsIndicesByVertexEdgeAndNeighbour) {
    Square s;
    EXPECT_EQ(1, s.t.getIntraTriangleIndex(&s.b));
    EXPECT_EQ(1, s.t.getIntraTriangleIndex(&s.a, &s.c));
    EXPECT_EQ(1, s.t.getIntraTriangleIndex(&s.c, &s.a));
    EXPECT_EQ(2, s.n.getIntraTriangleIndex(&s.t));
    EXPECT_TRUE(s.t.hasVertex(&s.c));
    EXPECT_FALSE(s.t.hasVertex(&s.d));
}

TEST(Triangle2, aStrangersIndexIsAnInternalError) {
    Square s;
    const CapturedMessages messages;
    EXPECT_THROW(s.t.getIntraTriangleIndex(&s.d), KivoException);
    EXPECT_THROW(s.o.getIntraTriangleIndex(&s.n), KivoException);
    EXPECT_THROW(s.t.getIntraTriangleIndex(&s.a, &s.d), KivoException);
    EXPECT_THROW(s.t.setProperties(&s.a, nullptr, &s.b), KivoException);
    const std::string text = messages.output();
    EXPECT_NE(std::string::npos, text.find("BUG: Triangle2::getIntraTriangleIndex failed for\n"));
    EXPECT_NE(std::string::npos,
              text.find("      [Kivo2D-Message] Kivo, , ERROR: Condition [ false failed ]\n"
                        "      Triangle2.cpp:"));
    EXPECT_NE(std::string::npos, text.find("Condition [ (pI!=NULL && pJ!=NULL && pK!=NULL) failed ]"));
}

TEST(Triangle2, aRetiredRecordHoldsNothing) {
    Square s;
    s.t.clearProperties();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(nullptr, s.t.getCorner(i));
        EXPECT_EQ(nullptr, s.t.getOppositeTriangle(i));
    }
}

TEST(Edge2, hasTwoNamesThatCompareUnequal) {
    Square s;
    const Edge2 seenFromT(&s.t, 1), seenFromN(&s.n, 2), hull(&s.t, 0);
    EXPECT_NE(seenFromT, seenFromN);
    EXPECT_NE(seenFromT < seenFromN, seenFromN < seenFromT);
    EXPECT_EQ(seenFromT.getSrc(), seenFromN.getTrg());
    EXPECT_EQ(seenFromT.getTrg(), seenFromN.getSrc());
    Triangle2 *pT0 = nullptr, *pT1 = nullptr;
    int idx0 = -2, idx1 = -2;
    seenFromT.getTriangles(pT0, pT1, idx0, idx1);
    EXPECT_EQ(&s.t, pT0);
    EXPECT_EQ(&s.n, pT1);
    EXPECT_EQ(1, idx0);
    EXPECT_EQ(2, idx1);
    hull.getTriangles(pT0, pT1, idx0, idx1);
    EXPECT_EQ(nullptr, pT1);
    EXPECT_EQ(-1, idx1);
}

TEST(Edge2, givesTheSquaredLength) {
    Point2 p(0, 0), q(3, 4), r(-1, 9);
    Triangle2 t;
    t.setProperties(&p, &q, &r);
    EXPECT_EQ(25, Edge2(&t, 2).getLength2D());
}

TEST(flip, leavesTheFormerCornerAtIndexZeroOfBothTriangles) {
    Square s;
    flip(&s.t, 1); // b against d
    EXPECT_EQ(&s.b, s.t.getCorner(0));
    EXPECT_EQ(&s.c, s.t.getCorner(1));
    EXPECT_EQ(&s.d, s.t.getCorner(2));
    EXPECT_EQ(&s.b, s.n.getCorner(0));
    EXPECT_EQ(&s.d, s.n.getCorner(1));
    EXPECT_EQ(&s.a, s.n.getCorner(2));
    EXPECT_EQ(&s.n, s.t.getOppositeTriangle(1));
    EXPECT_EQ(&s.t, s.n.getOppositeTriangle(2));
    EXPECT_EQ(&s.o, s.n.getOppositeTriangle(1));
    expectLinked({&s.t, &s.n, &s.o});
    for (const Point2* p : {&s.a, &s.b, &s.c, &s.d})
        EXPECT_TRUE(p->getIncidentTriangle()->hasVertex(p));
}

TEST(split, ofATriangleAndOfEdgesKeepsAllLinks) {
    for (int what = 0; what < 3; ++what) {
        Square s;
        MeshStore store(10);
        std::vector<Triangle2*> vCheckT;
        Point2 v(what == 0 ? 0.75 : what == 1 ? 0.5 : 1, what == 0 ? 0.25 : 0.5);
        if (what == 0) splitTriangle(&s.t, &v, store, vCheckT);
        if (what == 1) splitEdge(&s.t, 1, &v, store, vCheckT); // the diagonal
        if (what == 2) splitEdge(&s.t, 0, &v, store, vCheckT); // the hull edge bc
        std::vector<const Triangle2*> vAll{&s.t, &s.n, &s.o};
        store.forEachTriangle([&](Triangle2* pT) { vAll.push_back(pT); });
        EXPECT_EQ(what == 2 ? 4u : 5u, vAll.size());
        expectLinked(vAll);
        for (const Triangle2* pT : vCheckT) {
            EXPECT_EQ(&v, pT->getCorner(0));
            EXPECT_NE(nullptr, pT->getOppositeTriangle(0));
        }
        for (const Point2* p : {&s.a, &s.b, &s.c, &s.d, &v})
            EXPECT_TRUE(p->getIncidentTriangle()->hasVertex(p));
    }
}

TEST(legalize, neverFlipsAnEdgeThatTheGuardHolds) {
    struct Guard : EdgeGuard {
        bool bFixed = true;
        bool isFixed(const Point2*, const Point2*) const override { return bFixed; }
        void wasSplit(Point2*, Point2*, Point2*) override {}
    } guard;
    // v at corner 0 of t lies well inside the circle of n.
    Point2 v(0, -0.1), p(1, 0), q(-1, 0), far(0, 2);
    Triangle2 t, n;
    TeskTest tests;
    tests.setStaticBound(2);
    for (const bool bFixed : {true, false}) {
        t.setPropertiesAndOppT(&v, &p, &q, &n, nullptr, nullptr);
        n.setPropertiesAndOppT(&far, &q, &p, &t, nullptr, nullptr);
        guard.bFixed = bFixed;
        std::vector<Triangle2*> vCheckT{&t};
        EXPECT_EQ(bFixed ? 0u : 1u, legalizeNewVertex(vCheckT, tests, &guard));
        EXPECT_TRUE(vCheckT.empty());
    }
}

TEST(MeshStore, reusesTheRecordsItGotBack) {
    MeshStore store(3);
    Point2* p = store.createVertex(Point2(1, 2));
    Point2 q(1, 0), r(0, 1);
    Triangle2* pT = store.createTriangle(p, &q, &r);
    EXPECT_EQ(1u, store.numTriangles());
    store.retireTriangle(pT);
    EXPECT_EQ(0u, store.numTriangles());
    EXPECT_EQ(pT, store.createTriangle(p, &q, &r));
    store.recycleVertex(p);
    Point2 source(3, 4);
    source.setCustomIndex(7);
    Point2* again = store.createVertex(source);
    EXPECT_EQ(p, again);
    EXPECT_EQ(7, again->getCustomIndex());
    EXPECT_EQ(nullptr, again->getIncidentTriangle());
}
