#include "tests/support/memoryLimit.h"
#include "tests/support/zoned.h"

// Zones that are left, that die in any order, and that memory runs out for.

using namespace zoned;
using doubles::Rng;

namespace {

constexpr ConstraintGraph2* pNoGraph = nullptr;

struct PeelSome : UserPredicateT {
    bool operator()(const Triangle2* pT) override { return pT->getBarycenter().x() > 1; }
};

// One zone of each kind, and each query of it.
void makeAndAsk(Kivo_2D& kivo, ConstraintGraph2* pRing, const Triangles& vSome) {
    PeelSome peelSome;
    Zone2* const pInside = kivo.createZone(pRing, ZL_INSIDE);
    std::vector<Zone2*> vZones = {kivo.createZone(pNoGraph, ZL_GLOBAL), pInside,
                                  kivo.createZone({pRing, pRing}, ZL_OUTSIDE),
                                  kivo.createZone(pRing, ZL_GROW, Point2(0, 0)), kivo.createZone(vSome)};
    vZones.push_back(zoneSymmetricDifference(vZones[0], vZones[4]));
    vZones.push_back(peelOffIf(vZones[2], &peelSome, false));
    vZones.push_back(vZones[3]->convertToBoundedZone());
    vZones.push_back(kivo.createParityZone({pRing}, {{30, 30}, {8, 8}}));
    for (Zone2* pZone : vZones) {
        std::vector<Triangle2*> vTriangles;
        std::vector<Point2*> vVertices;
        std::vector<Segment2> vSegments;
        MeshArrays arrays;
        pZone->getTriangles(vTriangles);
        pZone->getVertices(vVertices);
        pZone->getBoundarySegments(vSegments);
        kivo.getMeshArrays(arrays, pZone);
        EXPECT_EQ(3 * vTriangles.size(), arrays.vCorners.size());
        kivo.deleteZone(pZone);
    }
}

} // namespace

TEST(Zones, thatAreLeftDieWithTheirTriangulationAndOthersInAnyOrder) {
    Rng rng(1);
    for (int round = 0; round < 20; ++round) {
        Kivo_2D kivo;
        kivo.insert(randomPoints(rng, 20, -9, 9));
        std::vector<Zone2*> vZones = {kivo.createZone(pNoGraph, ZL_GLOBAL)};
        for (int i = 0; i < 200; ++i) {
            Zone2*& pZone = vZones[rng() % vZones.size()];
            const int what = doubles::below(rng, 4);
            const CapturedMessages captured;
            if (what == 0 && vZones.size() > 1) {
                kivo.deleteZone(pZone);
                std::swap(pZone, vZones.back());
                vZones.pop_back();
            } else if (what == 1) {
                const std::size_t num = pZone->getNumberOfTriangles();
                EXPECT_TRUE(num == 0 || num == kivo.numberOfTriangles());
            } else {
                vZones.push_back(what == 2 ? zoneUnion(pZone, vZones[rng() % vZones.size()])
                                           : kivo.createZone(pNoGraph, ZL_GLOBAL));
            }
        }
    }
}

TEST(Zones, forWhichMemoryRunsOutAreNotMadeAndAllGoesOnAfterwards) {
    for (const bool bForGood : {false, true}) {
        bool bStopped = true;
        int numStopped = 0;
        for (long num = 0; bStopped && !HasFailure(); num += num < 60 ? 1 : 7) {
            const CapturedMessages captured;
            Rng rng(2);
            Kivo_2D kivo;
            kivo.insert(randomPoints(rng, 30, -9, 9));
            Segments vRing = star(rng, 7, {0, 0}, 6);
            ConstraintGraph2* const pRing = kivo.createConstraint(vRing, CIS_CONSTRAINED_DELAUNAY, true);
            Triangles vSome;
            for (Triangle2* pT : oracle::allTriangles(kivo))
                if (rng() % 3 == 0) vSome.push_back(pT);
            try {
                const MemoryLimit limit(num, bForGood);
                makeAndAsk(kivo, pRing, vSome);
                bStopped = false;
            } catch (const std::bad_alloc&) {
                ++numStopped;
            }
            EXPECT_TRUE(kivo.checkValidity(true, "memory")) << captured.output();
            Zone2* const pInside = kivo.createZone(pRing, ZL_INSIDE);
            expectZone(kivo, pInside, oracle::reachedFrom(oracle::LEFT, kivo, {pRing}));
            expectZone(kivo, kivo.createZone(vSome), vSome);
            makeAndAsk(kivo, pRing, vSome);
        }
        EXPECT_LT(50, numStopped);
    }
}
