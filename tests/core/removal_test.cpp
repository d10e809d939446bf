#include "Kivo_2D.h"
#include "core/Dt2.h"
#include "tests/support/capture.h"
#include "tests/support/constrained.h"
#include "tests/support/expectSound.h"
#include "tests/support/memoryLimit.h"
#include "tests/support/meshed.h"
#include "tests/support/nastySets.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

namespace {

using Vertices = std::vector<Point2*>;

constexpr const char* strangerText =
    "      [Kivo2D-Message] Dt2::remove(), WARNING: vertex does not belong to "
    "the triangulation, return\n";

Vertices verticesOf(const Kivo_2D& kivo) {
    Vertices v;
    kivo.getVertexPointers(v);
    return v;
}

Points pointsOf(const Vertices& vVertices) {
    Points vPoints;
    for (const Point2* p : vVertices)
        vPoints.push_back(*p);
    return vPoints;
}

Vertices shuffled(Vertices v, Rng& rng) {
    std::shuffle(v.begin(), v.end(), rng);
    return v;
}

// All laws, the hull exact among them, for the vertices that should be left; and where the triangulation is
// unique, the triangles of a new one.
void expectLeft(const Kivo_2D& kivo, const Points& vLeft) {
    expectSound(kivo, vLeft);
    Kivo_2D fresh;
    fresh.insert(vLeft);
    EXPECT_EQ(fresh.numberOfTriangles(), kivo.numberOfTriangles());
    if (!oracle::isUnique(fresh)) return;
    EXPECT_EQ(oracle::triangleSet(fresh), oracle::triangleSet(kivo));
}

Points manyPoints(Rng& rng, int kind, int num) {
    Points v;
    for (int i = 0; i < num; ++i) {
        const double x = doubles::uniform(rng), y = doubles::uniform(rng);
        switch (kind) {
        case 0:
            v.emplace_back(x, y);
            break;
        case 1:
            v.emplace_back(1000 * (i % 7) + x * x * x, 1000 * (i % 5) + y * y * y);
            break;
        case 2:
            v.emplace_back(i % 50, i / 50);
            break;
        case 3:
            v.emplace_back(std::cos(i) + 3, std::sin(i) - 5);
            break;
        default:
            v.emplace_back(i % 8 == 0 ? x : std::round(20 * x), i % 8 == 0 ? y : 3);
            break;
        }
    }
    return v;
}

} // namespace

TEST(Removal, leavesTheDelaunayTriangulationOfTheOthersAfterEachStep) {
    Rng rng(1);
    const auto& vKinds = nastySets::all();
    for (int i = 0; i < 800 && !HasFailure(); ++i) {
        const CapturedMessages captured;
        Kivo_2D kivo;
        kivo.insert(vKinds[static_cast<std::size_t>(i) % vKinds.size()].make(rng));
        for (Vertices v = shuffled(verticesOf(kivo), rng); !v.empty() && !HasFailure();) {
            Point2* const pGone = v.back();
            v.pop_back();
            kivo.remove(pGone);
            EXPECT_EQ(nullptr, pGone->getIncidentTriangle());
            expectLeft(kivo, pointsOf(v));
            if (doubles::below(rng, 4) == 0) {
                v.push_back(kivo.insert(Point2(*pGone)));
                expectLeft(kivo, pointsOf(v));
                std::swap(v.back(), v.front());
            }
        }
        EXPECT_EQ("", captured.output() + captured.error());
    }
}

TEST(Removal, emptiesLargeSetsInRandomOrderAndTheyComeBack) {
    for (int kind = 0; kind < 5; ++kind) {
        Rng rng(static_cast<unsigned>(2 + kind));
        const Points vPoints = manyPoints(rng, kind, 2000);
        Kivo_2D kivo;
        for (int round = 0; round < 2; ++round) {
            kivo.insert(vPoints);
            Vertices v = shuffled(verticesOf(kivo), rng);
            for (std::size_t num = v.size(); num > 0; --num) {
                kivo.remove(v[num - 1]);
                if (num % 500 > 1 && num > 20) continue;
                v.resize(num - 1);
                expectLeft(kivo, pointsOf(v));
                for (int k = 0; k < 50 && kivo.is2D(); ++k) { // from cells whose triangles are gone
                    const Point2 q = vPoints[static_cast<std::size_t>(doubles::below(rng, 2000))];
                    const Triangle2* const pT = kivo.locate(q);
                    if (pT == nullptr) continue;
                    for (int e = 0; e < 3; ++e)
                        EXPECT_NE(ORIENTATION2_CW,
                                  kivo.getOrientation(*pT->getCorner(e), *pT->getCorner((e + 1) % 3), q));
                }
            }
            EXPECT_EQ(0u, kivo.numberOfPoints());
            EXPECT_FALSE(kivo.is2D());
        }
        kivo.insert(vPoints);
        expectLeft(kivo, vPoints);
    }
}

// By inversion: the vertex at the origin is a neighbour of all points whose inverses are in convex position
// around it, or with it, whatever shape the points have.
namespace {

using Curve = std::function<Point2(double)>; // of [0, 1), convex

Points inverses(const Curve& curve, int num) {
    Points v;
    for (int i = 0; i < num; ++i) {
        const Point2 w = curve((i + 0.5) / num);
        const double square = w.x() * w.x() + w.y() * w.y();
        v.emplace_back(w.x() / square, w.y() / square);
    }
    return v;
}

// A polygon with sides that bulge a little: its inverse has large lobes, nearly on circles through the
// origin.
Point2 bulgingPolygon(double t, int numSides, double bulge) {
    const double angle = 6.283185307179586 / numSides, side = std::floor(t * numSides),
                 u = t * numSides - side;
    const Point2 a(std::cos(side * angle), std::sin(side * angle));
    const Point2 b(std::cos(side * angle + angle), std::sin(side * angle + angle));
    const double out = bulge * u * (1 - u);
    return {a.x() + u * (b.x() - a.x()) + out * (b.y() - a.y()),
            a.y() + u * (b.y() - a.y()) - out * (b.x() - a.x())};
}

} // namespace

TEST(Removal, ofAHubAsksForEachNeighbourAFewTimesWhateverItsShape) {
    const int num = 20000;
    const double turn = 6.283185307179586;
    const std::pair<const char*, Curve> curves[] = {
        {"circle", [=](double t) { return Point2(std::cos(turn * t), std::sin(turn * t)); }},
        {"ellipse", [=](double t) { return Point2(std::cos(turn * t), 0.01 * std::sin(turn * t)); }},
        {"eccentric", [=](double t) { return Point2(std::cos(turn * t) + 0.99, std::sin(turn * t)); }},
        {"lobes", [](double t) { return bulgingPolygon(t, 5, 0.1); }},
        {"half circle", [=](double t) { return Point2(std::cos(turn * t / 2), std::sin(turn * t / 2)); }},
        {"parabola", [](double t) { return Point2(t - 0.5, 2 - 8 * (t - 0.5) * (t - 0.5)); }},
        {"hill", [](double t) { return Point2(100 * t - 50, 1 + 1e-3 * t * (1 - t)); }},
        {"line", [](double t) { return Point2(t - 0.5, 1); }}, // all on one circle with the hub
    };
    for (const auto& [name, curve] : curves) {
        SCOPED_TRACE(name);
        Points v = inverses(curve, num);
        Kivo_2D kivo;
        Point2* const pHub = kivo.insert(Point2(0, 0));
        kivo.insert(v);
        kivo.insert(Point2(0, 1e9)); // something outside
        std::vector<Triangle2*> vStar;
        kivo.getIncidentTriangles(pHub, vStar);
        EXPECT_LT(std::string(name) == "line" ? 0 : 0.9 * num, vStar.size());
        const auto numBefore = kivo.getImpl()->numRemovalTests();
        kivo.remove(pHub);
        EXPECT_LT(kivo.getImpl()->numRemovalTests() - numBefore, 8.0 * num);
        v.emplace_back(0, 1e9);
        expectLeft(kivo, v);
        kivo.remove(kivo.insert(Point2(0, 0)));
        const CapturedMessages captured;
        EXPECT_TRUE(kivo.checkValidity(true, "hub"));
    }
}

TEST(Removal, ofTheApexOfAFanLeavesALineThatGoesOnAsOne) {
    Kivo_2D kivo;
    Points vLine;
    for (int i = 0; i < 3000; ++i)
        vLine.emplace_back(i * 0.5, i * 0.25);
    kivo.insert(vLine);
    Zone2* pGlobal = nullptr;
    const CapturedMessages captured;
    for (int round = 0; round < 3; ++round) {
        Point2* const pApex = kivo.insert(Point2(500, 1e4 * (round - 1.5)));
        expectSound(kivo);
        if (round == 0) pGlobal = kivo.createZone(nullptr, ZL_GLOBAL);
        EXPECT_EQ(kivo.numberOfTriangles(), pGlobal->getNumberOfTriangles());
        Point2* const pSecond = kivo.insert(Point2(501, 1e4 * (round - 1.5)));
        kivo.remove(round == 1 ? pSecond : pApex);
        kivo.remove(round == 1 ? pApex : pSecond);
        expectLeft(kivo, vLine);
        EXPECT_FALSE(kivo.is2D());
        EXPECT_EQ(0u, kivo.numberOfTriangles());
        EXPECT_EQ(0u, pGlobal->getNumberOfTriangles());
        Vertices v = verticesOf(kivo);
        EXPECT_TRUE(std::is_sorted(v.begin(), v.end(), std::less<>()));
        for (const Point2* p : v)
            EXPECT_EQ(nullptr, p->getIncidentTriangle());
        // In the list they leave and come back too, and are found there.
        for (std::size_t i = 0; i < v.size(); i += 1 + i / 100)
            kivo.remove(v[i]);
        EXPECT_EQ(verticesOf(kivo).size(), kivo.numberOfPoints());
        EXPECT_GT(vLine.size(), kivo.numberOfPoints());
        Point2* const pStill = v[static_cast<std::size_t>(101 + 2 * round)];
        EXPECT_EQ(pStill, kivo.insert(Point2(*pStill)));
        kivo.insert(vLine);
        expectLeft(kivo, vLine);
    }
}

TEST(Removal, refusesEndsOfConstraintsAndKeepsConstraintsAroundTheHole) {
    Rng rng(7);
    for (int i = 0; i < 16 && !HasFailure(); ++i) {
        Constrained c;
        Segments vSegments;
        for (int k = 0; k < 12; ++k)
            vSegments.emplace_back(Point2(doubles::below(rng, 9), doubles::below(rng, 9)),
                                   Point2(doubles::below(rng, 9), doubles::uniform(rng, 0, 9)));
        c.kivo.insert(manyPoints(rng, i % 2 == 0 ? 0 : 2, 400));
        for (int k = 0; k < 150; ++k)
            c.kivo.insert(Point2(doubles::uniform(rng, 0, 9), doubles::uniform(rng, 0, 9)));
        c.addOneByOne(vSegments);
        for (Point2* const p : shuffled(verticesOf(c.kivo), rng)) {
            const CapturedMessages captured;
            const bool bEnd = c.kivo.isConstraint(p);
            const Point2 place = *p;
            c.kivo.remove(p);
            EXPECT_EQ(bEnd, p->getIncidentTriangle() != nullptr);
            EXPECT_EQ(bEnd, !captured.output().empty());
            if (doubles::below(rng, 60) == 0) expectConstrained(c);
            if (!bEnd && doubles::below(rng, 8) == 0) c.kivo.insert(place);
        }
        expectConstrained(c);
    }
}

TEST(Removal, ofTheLastTriangleMakesSegmentsWaitForTheNext) {
    Constrained c;
    Point2* const pApex = c.kivo.insert(Point2(5, 5));
    c.add({Segment2(Point2(0, 0), Point2(10, 0))}, CIS_CONSTRAINED_DELAUNAY);
    EXPECT_TRUE(c.kivo.isConstraint(c.kivo.locate(Point2(5, 1)), 0) ||
                c.kivo.isConstraint(c.kivo.locate(Point2(5, 1)), 1) ||
                c.kivo.isConstraint(c.kivo.locate(Point2(5, 1)), 2));
    c.kivo.remove(pApex);
    EXPECT_FALSE(c.kivo.is2D());
    EXPECT_EQ(2u, c.kivo.numberOfPoints());
    Point2* const pMiddle = c.kivo.insert(Point2(4, 0));
    Point2* const pOther = c.kivo.insert(Point2(14, 0));
    c.kivo.remove(pOther);
    for (const double y : {-3.0, -1.0})
        c.kivo.insert(Point2(3, y));
    c.kivo.applyConstraintsAndZones();
    expectConstrained(c);
    EXPECT_TRUE(c.kivo.isConstraint(pMiddle));
    EXPECT_EQ(5u, c.kivo.numberOfPoints());
}

TEST(Removal, saysWhatItRefusesInItsOwnWords) {
    Kivo_2D kivo, other;
    std::vector<Segment2> vSegments = {Segment2(Point2(0, 0), Point2(4, 0)),
                                       Segment2(Point2(2, -1), Point2(2, 1))};
    const auto textOf = [&](Point2* p) {
        const CapturedMessages captured;
        kivo.remove(p);
        return captured.output() + "|" + captured.error();
    };
    const std::string stranger = std::string(strangerText) + "|";
    EXPECT_EQ("      [Kivo2D-Message] Dt2::remove(..), WARNING: pVtx==NULL, illegal, return.\n|",
              textOf(nullptr));
    Point2* const pFirst = kivo.insert(Point2(7, 7));
    EXPECT_EQ("|", textOf(pFirst));
    EXPECT_EQ(stranger, textOf(pFirst)); // while there is no triangle
    for (const bool b2D : {false, true}) {
        if (b2D) kivo.createConstraint(vSegments);
        EXPECT_EQ(b2D, kivo.is2D());
        const std::size_t num = kivo.numberOfPoints();
        Point2 onStack(0, 0);
        EXPECT_EQ(stranger, textOf(&onStack));
        EXPECT_EQ(stranger, textOf(other.insert(Point2(0, 0))));
        EXPECT_EQ(stranger, textOf(reinterpret_cast<Point2*>(reinterpret_cast<char*>(pFirst) + 8)));
        EXPECT_EQ(num, kivo.numberOfPoints());
    }
    for (Point2* const p : verticesOf(kivo)) { // the crossing among them, where live segments end
        std::ostringstream place;
        place << *p;
        EXPECT_EQ(
            "      [Kivo2D-Message] Dt2::remove(), WARNING: Illegal: Can't remove a constraint vertex\n|" +
                place.str() + "\n",
            textOf(p));
    }
    EXPECT_EQ(5u, kivo.numberOfPoints());
    Point2 *const pGone = kivo.insert(Point2(2.5, 0.25)), *const pNext = kivo.insert(Point2(3, 0.5));
    Triangle2* const pOldT = pGone->getIncidentTriangle();
    EXPECT_EQ("|", textOf(pGone));
    EXPECT_EQ(stranger, textOf(pGone));
    // What queries say of it.
    const CapturedMessages captured;
    std::vector<Triangle2*> vTriangles;
    EXPECT_THROW(kivo.getIncidentTriangles(pGone, vTriangles), KivoException);
    EXPECT_THROW(kivo.getAdjacentTriangle(pGone, pNext), KivoException);
    EXPECT_EQ(nullptr, kivo.getAdjacentTriangle(pNext, pGone));
    EXPECT_FALSE(kivo.isConstraint(pGone) || kivo.isConstraint(pGone, pNext));
    EXPECT_EQ(nullptr, kivo.getConstraintSegment(pGone, pNext));
    for (int i = 0; i < 3; ++i)
        kivo.isConstraint(pOldT, i);
    EXPECT_EQ(Point2(2.5, 0.25), *pGone);
    EXPECT_EQ(pGone, kivo.insert(Point2(2.75, 0.25))); // its record serves again
}

namespace {

struct Remover : MsgBase {
    Kivo_2D& kivo;
    Point2* pVtx;
    Remover(Kivo_2D& itsKivo, Point2* pItsVtx) : kivo(itsKivo), pVtx(pItsVtx) {}
    void update(MsgType, const char*, double) override { kivo.remove(pVtx); }
};

std::size_t numRecords(const Kivo_2D& kivo) {
    const MeshStore& store = static_cast<const ZoneHost&>(*kivo.getImpl()).meshStore();
    return store.triangleNumbers().size() + store.vertexNumbers().size();
}

} // namespace

TEST(Removal, byAListenerIsRefused) {
    Rng rng(8);
    Kivo_2D kivo;
    Remover remover(kivo, kivo.insert(Point2(0.5, 0.5)));
    kivo.subscribe(MSG_PROGRESS, &remover);
    const CapturedMessages captured;
    Points v = manyPoints(rng, 0, 300);
    kivo.insert(v);
    kivo.unsubscribe(MSG_PROGRESS, &remover);
    EXPECT_EQ(0u,
              captured.output().find("      [Kivo2D-Message] Dt2::remove(), WARNING: Vertices can't be moved "
                                     "or removed while an operation is running\n"));
    v.emplace_back(0.5, 0.5);
    expectLeft(kivo, v);
    kivo.remove(remover.pVtx);
    v.pop_back();
    expectLeft(kivo, v);
}

TEST(Removal, givesRecordsBackSoThatRoundsTakeNoMoreMemory) {
    for (const bool bAll : {true, false}) {
        Rng rng(9);
        Kivo_2D kivo;
        const Points v = manyPoints(rng, 0, 100000);
        std::size_t numAfterThird = 0;
        for (int round = 1; round <= 6; ++round) {
            Vertices vHandles;
            kivo.insert(v, vHandles);
            vHandles = shuffled(vHandles, rng);
            if (!bAll) vHandles.resize(90000);
            for (Point2* const p : vHandles)
                kivo.remove(p);
            if (round == 3) numAfterThird = numRecords(kivo);
        }
        EXPECT_EQ(numAfterThird, numRecords(kivo));
        EXPECT_EQ(bAll ? 0u : 10000u, kivo.numberOfPoints());
        kivo.insert(v);
        const CapturedMessages captured;
        EXPECT_TRUE(kivo.checkValidity(true, "rounds"));
        EXPECT_EQ(v.size(), kivo.numberOfPoints());
        if (!bAll) continue;
        Kivo_2D fresh; // records are in order again, as if they had never been used
        fresh.insert(v);
        EXPECT_EQ(oracle::triangleList(fresh), oracle::triangleList(kivo));
    }
}

TEST(Removal, leavesZonesTrue) {
    Rng rng(10);
    Kivo_2D kivo;
    const auto area = [](const oracle::Triangles& vTriangles) {
        double sum = 0;
        for (const Triangle2* pT : vTriangles)
            sum += pT->getArea2D();
        return sum;
    };
    ConstraintGraph2* const pRing = meshed::add(kivo, meshed::square(0, 0, 10), true);
    ConstraintGraph2* const pHole = meshed::add(kivo, meshed::square(4, 4, 2), true);
    const CapturedMessages captured; // after `add`, which has its own
    Points v;
    for (int i = 0; i < 600; ++i)
        v.emplace_back(doubles::uniform(rng, -2, 12), doubles::uniform(rng, -2, 12));
    Vertices vHandles;
    kivo.insert(v, vHandles);
    Zone2* const pZone = kivo.createZone(pRing, ZL_INSIDE);
    Zone2* const pRest = kivo.createZone({pRing, pHole}, ZL_GROW, Point2(1, 1));
    Zone2* const pOwn = pZone->convertToBoundedZone();
    kivo.refine(pOwn, 25, 0, 1e9, true);
    std::vector<Point2*> vAll = shuffled(verticesOf(kivo), rng);
    for (std::size_t i = 0; i < vAll.size() && !HasFailure(); ++i) {
        kivo.remove(vAll[i]);
        if (i % 100 > 0 && i + 1 < vAll.size()) continue;
        for (const auto& [pAny, size] : {std::pair(pZone, 100.0), {pRest, 96.0}, {pOwn, 100.0}}) {
            oracle::Triangles vTriangles;
            pAny->getTriangles(vTriangles);
            EXPECT_NEAR(size, area(vTriangles), 1e-9);
            EXPECT_EQ(vTriangles.size(), pAny->getNumberOfTriangles());
        }
    }
    EXPECT_EQ(std::string::npos, captured.output().find("does not belong"));
    EXPECT_TRUE(kivo.checkValidity(true, "removed"));
    // What refinement inserted and removal took is not taken again.
    kivo.refine(pOwn, 25, 0, 1, true);
    for (Point2* const p : shuffled(verticesOf(kivo), rng)) {
        if (doubles::below(rng, 2) == 0) kivo.remove(p);
    }
    std::vector<ConstraintSegment2*> vLeaves;
    pRing->getChildConstraintSegments(vLeaves);
    for (ConstraintSegment2* const pLeaf : vLeaves) {
        const Point2 &a = *pLeaf->getSrc(), &b = *pLeaf->getTrg();
        pLeaf->splitAndRemovePrev(Point2((a.x() + b.x()) / 2, (a.y() + b.y()) / 2));
    }
    EXPECT_TRUE(kivo.checkValidity(true, "removed")) << captured.output();
}

TEST(Removal, whenMemoryRunsOutHasNotHappened) {
    const auto onCircle = [](int num, bool bLine) {
        Points v;
        for (int i = 0; i < num; ++i)
            v.push_back(bLine ? Point2(i, 0) : Point2(std::cos(i), std::sin(i)));
        return v;
    };
    for (const bool bLine : {false, true}) {
        for (const int num : {5, 500, 9000}) {
            Points v = onCircle(num, bLine);
            v.emplace_back(0, bLine ? 1 : 0);
            Kivo_2D kivo;
            kivo.insert(v);
            Point2* const pHub = kivo.insert(v.back());
            int numStopped = 0;
            for (bool bStopped = true; bStopped && numStopped < 50; numStopped += bStopped) {
                bStopped = false;
                try {
                    const MemoryLimit limit(numStopped, true);
                    kivo.remove(pHub);
                } catch (const std::bad_alloc&) {
                    bStopped = true;
                }
                if (!bStopped) v.pop_back();
                expectSound(kivo, v);
            }
            EXPECT_LT(num > 100 ? 3 : -1, numStopped);
            EXPECT_EQ(!bLine, kivo.is2D());
        }
    }
}
