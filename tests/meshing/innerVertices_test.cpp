#include "tests/oracle/bruteForce.h"
#include "tests/oracle/exact.h"
#include "tests/support/meshed.h"

// Vertices that refinement inserted are removed around splits, and nothing else is.

using namespace meshed;

namespace {

using Vertices = std::set<Point2*>;
using Places = std::map<Point2*, Point2>;

Places placesOf(const Kivo_2D& kivo) {
    std::vector<Point2*> v;
    kivo.getVertexPointers(v);
    Places mPlaces;
    for (Point2* p : v)
        mPlaces.emplace(p, *p);
    return mPlaces;
}

void expectValid(const Kivo_2D& kivo) {
    const CapturedMessages captured;
    EXPECT_TRUE(kivo.checkValidity(true, "removed")) << captured.output();
    EXPECT_EQ("", oracle::findFault(kivo, [&](Point2* p, Point2* q) { return kivo.isConstraint(p, q); }));
}

void expectLocated(const Kivo_2D& kivo, const Point2& q) {
    const Triangle2* const pT = kivo.locate(q);
    ASSERT_NE(nullptr, pT);
    for (int i = 0; i < 3; ++i)
        EXPECT_GE(oracle::orientation(*pT->getCorner(i), *pT->getCorner((i + 1) % 3), q), 0);
}

// Two domains side by side and rings inside them, in a box of points.
struct Meshes {
    Kivo_2D kivo;
    std::vector<ConstraintGraph2*> vGraphs;
    std::vector<Zone2*> vZones;
    Vertices sInserted; // by refinements since the record was cleared

    explicit Meshes(doubles::Rng& rng) {
        const CapturedMessages captured;
        kivo.insert(randomPoints(rng, doubles::below(rng, 30), -10, 10));
        for (const double x : {-5.0, 5.0}) {
            const auto cis = rng() % 3 == 0 ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY;
            vGraphs.push_back(add(kivo, square(x - 5, -5, 10), true, cis));
            vZones.push_back(kivo.createZone(vGraphs.back(), ZL_INSIDE));
            const int num = 5 + doubles::below(rng, 9);
            vGraphs.push_back(add(kivo, nestedStars(rng, num, {x, 0}, 4, 1), false, cis));
        }
        kivo.applyConstraintsAndZones();
        for (Zone2* pZone : vZones)
            refine(rng, pZone, false);
    }

    void refine(doubles::Rng& rng, Zone2* pZone, bool bClear) {
        const CapturedMessages captured;
        const Places mBefore = placesOf(kivo);
        MeshGenParams params = onlyAngles(pZone, doubles::uniform(rng, 5, 30));
        params.maxEdgeLength = doubles::uniform(rng, 0.4, 4);
        params.bClearInnerVertices = bClear;
        kivo.refineAdvanced(&params);
        if (bClear) sInserted.clear();
        for (const auto& [p, place] : placesOf(kivo))
            if (mBefore.count(p) == 0) sInserted.insert(p);
    }

    ConstraintSegment2* anySegment(doubles::Rng& rng) const {
        std::vector<ConstraintSegment2*> vLeaves;
        for (const ConstraintGraph2* pGraph : vGraphs)
            pGraph->getChildConstraintSegments(vLeaves);
        return vLeaves[rng() % vLeaves.size()];
    }
};

// Near the segment, at one of its ends, at any vertex, or anywhere.
Point2 splitPoint(doubles::Rng& rng, const ConstraintSegment2* pSegment, const Places& mPlaces) {
    const Point2 &p = *pSegment->getSrc(), &q = *pSegment->getTrg();
    const double t = doubles::uniform(rng, 0, 1), beside = rng() % 2 == 0 ? 0 : doubles::uniform(rng, -1, 1);
    switch (rng() % 10) {
    case 0:
        return p;
    case 1:
        return std::next(mPlaces.begin(), std::ptrdiff_t(rng() % mPlaces.size()))->second;
    default:
        return {p.x() + t * (q.x() - p.x()) + beside * (q.y() - p.y()) / 4,
                p.y() + t * (q.y() - p.y()) - beside * (q.x() - p.x()) / 4};
    }
}

void splitOne(Meshes& meshes, doubles::Rng& rng) {
    Kivo_2D& kivo = meshes.kivo;
    const Places mBefore = placesOf(kivo);
    ConstraintSegment2* const pSegment = meshes.anySegment(rng);
    const Point2 p = splitPoint(rng, pSegment, mBefore), source = *pSegment->getSrc();
    bool bSplit = false;
    {
        const CapturedMessages captured;
        bSplit = pSegment->splitAndRemovePrev(p);
        EXPECT_EQ(bSplit ? "" : "warning", captured.output().empty() ? "" : "warning") << captured.output();
    }
    const Places mAfter = placesOf(kivo);
    if (!bSplit) {
        EXPECT_EQ(mBefore, mAfter);
        EXPECT_TRUE(pSegment->isAlive());
        return;
    }
    ConstraintSegment2 *pKid0 = nullptr, *pKid1 = nullptr;
    Point2* pSplit = nullptr;
    ASSERT_FALSE(pSegment->isAlive());
    pSegment->getChildrenAndSplitPoint(pKid0, pKid1, pSplit);
    const long double limit = std::hypot(static_cast<long double>(source.x()) - pSplit->x(),
                                         static_cast<long double>(source.y()) - pSplit->y());
    for (const auto& [pVtx, place] : mBefore) {
        const auto it = mAfter.find(pVtx);
        const bool bThere = it != mAfter.end();
        EXPECT_TRUE(!bThere || place == it->second) << "moved";
        const long double distance = std::hypot(static_cast<long double>(place.x()) - pSplit->x(),
                                                static_cast<long double>(place.y()) - pSplit->y());
        if (std::fabs(distance - limit) < 1e-12L * limit) continue;
        const bool bExpected = meshes.sInserted.count(pVtx) == 0 || !(distance < limit) || pVtx == pSplit ||
                               (bThere && kivo.isConstraint(pVtx));
        EXPECT_EQ(bExpected, bThere) << doubles::hex({place, *pSplit, source});
        if (!bThere) meshes.sInserted.erase(pVtx);
    }
}

} // namespace

TEST(InnerVertices, thatRefinementInsertedGoAroundASplitAndNoOthers) {
    static doubles::Rng rng(1);
    for (int round = 0; round < 12; ++round) {
        Meshes meshes(rng);
        for (int i = 0; i < 12 && !testing::Test::HasFailure(); ++i) {
            splitOne(meshes, rng);
            expectValid(meshes.kivo);
            expectLocated(meshes.kivo, {doubles::uniform(rng, -4, 4), doubles::uniform(rng, -4, 4)});
            if (i % 4 == 3) meshes.refine(rng, meshes.vZones[rng() % 2], rng() % 2 == 0);
        }
        if (testing::Test::HasFailure()) return;
    }
}

TEST(InnerVertices, thatWereRemovedLeaveATriangulationThatWorks) {
    static doubles::Rng rng(2);
    for (int round = 0; round < 10; ++round) {
        Meshes meshes(rng);
        Kivo_2D& kivo = meshes.kivo;
        const double area = meshes.vZones[0]->getArea2D() + meshes.vZones[1]->getArea2D();
        const Places mBefore = placesOf(kivo);
        for (int i = 0; i < 6; ++i) {
            ConstraintSegment2* const pSegment = meshes.anySegment(rng);
            const Point2 p = {(pSegment->getSrc()->x() + pSegment->getTrg()->x()) / 2,
                              (pSegment->getSrc()->y() + pSegment->getTrg()->y()) / 2};
            EXPECT_TRUE(pSegment->splitAndRemovePrev(p));
        }
        EXPECT_NEAR(area, meshes.vZones[0]->getArea2D() + meshes.vZones[1]->getArea2D(), 1e-9 * area);
        const Places mAfter = placesOf(kivo);
        Points vGone;
        for (const auto& [p, place] : mBefore)
            if (mAfter.count(p) == 0) vGone.push_back(place);
        kivo.insert(vGone); // at once and one by one
        for (const Point2& p : randomPoints(rng, 20, -9, 9))
            kivo.insert(p);
        settle(kivo);
        expectValid(kivo);
        for (const Point2& p : vGone)
            expectLocated(kivo, p);
        for (Zone2* pZone : meshes.vZones) {
            meshes.refine(rng, pZone, round % 2 == 0);
            const CapturedMessages captured;
            pZone->unifyGrid(std::pow(10, doubles::uniform(rng, -6, -1)));
        }
        settle(kivo);
        expectValid(kivo);
        for (const Zone2* pZone : meshes.vZones)
            expectZone(kivo, pZone, trianglesOf(pZone));
        if (testing::Test::HasFailure()) return;
    }
}

TEST(InnerVertices, stayWhereTheRecordWasCleared) {
    doubles::Rng rng(3);
    Meshes meshes(rng);
    {
        const CapturedMessages captured;
        MeshGenParams params = onlyAngles(meshes.vZones[0], 1); // which inserts nothing any more
        meshes.kivo.refineAdvanced(&params);
    }
    for (int i = 0; i < 20; ++i) {
        const std::size_t num = meshes.kivo.numberOfPoints();
        ConstraintSegment2* const pSegment = meshes.anySegment(rng);
        const Point2 p = {(pSegment->getSrc()->x() + pSegment->getTrg()->x()) / 2,
                          (pSegment->getSrc()->y() + pSegment->getTrg()->y()) / 2};
        EXPECT_TRUE(pSegment->splitAndRemovePrev(p));
        EXPECT_LE(num, meshes.kivo.numberOfPoints());
    }
    expectValid(meshes.kivo);
}
