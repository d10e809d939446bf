#include "Kivo_2D.h"
#include "tests/support/capture.h"
#include "tests/support/expectSound.h"
#include "tests/support/memoryLimit.h"
#include "tests/support/nastySets.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

TEST(MemoryThatRunsOut, leavesASoundTriangulationWithAllThatTheClientHolds) {
    Rng rng(31);
    const auto& vKinds = nastySets::all();
    int numStopped = 0;
    for (int i = 0; i < 600 && !HasFailure(); ++i) {
        Points vPoints = vKinds[static_cast<std::size_t>(i) % vKinds.size()].make(rng);
        for (int k = i % 19 == 0 ? 300 : 0; k > 0;
             --k) // a fan, that a later point beyond the line sees all of
            vPoints.emplace_back(k * 0.5, 0);
        const auto middle = vPoints.begin() + doubles::below(rng, static_cast<int>(vPoints.size()));
        const CapturedMessages messages;
        Kivo_2D kivo(3);
        std::vector<Point2*> vHeld, vHandles;
        for (auto p = vPoints.begin(); p != middle; ++p)
            vHeld.push_back(kivo.insert(*p));
        const Points vRest(middle, vPoints.end());
        vHandles.reserve(vRest.size());
        try {
            const MemoryLimit limit(doubles::below(rng, 40), rng() % 2 == 0);
            kivo.insert(vRest, vHandles);
            kivo.insert(Point2(-1e3, -1e3));
        } catch (const std::bad_alloc&) {
            ++numStopped;
        }
        for (const Point2& p : vPoints)
            kivo.locate(p); // from whatever start is left
        if (kivo.is2D()) {
            expectSound(kivo);
            for (const Point2* pVtx : vHeld)
                EXPECT_NE(nullptr, pVtx->getIncidentTriangle()) << doubles::hex(vPoints);
            for (std::size_t k = 0; k < vHandles.size(); ++k)
                EXPECT_TRUE(vHandles[k] == nullptr ||
                            (*vHandles[k] == vRest[k] && vHandles[k]->getIncidentTriangle() != nullptr));
        }
        vPoints.emplace_back(-1e3, -1e3);
        kivo.insert(vPoints);
        kivo.insert(vPoints.back());
        expectSound(kivo, vPoints);
    }
    EXPECT_LT(50, numStopped);
}

TEST(MemoryThatRunsOut, leavesConstraintsThatALaterCallCompletes) {
    Rng rng(32);
    for (int i = 0; i < 12 && !HasFailure(); ++i) {
        std::vector<Segment2> vSegments;
        for (const int numGiven = 4 + i; static_cast<int>(vSegments.size()) < numGiven;)
            vSegments.emplace_back(Point2(doubles::below(rng, 7), doubles::below(rng, 7)),
                                   Point2(doubles::below(rng, 7), doubles::below(rng, 7)));
        const auto cis = ConstraintInsertionStrategy(i % 2);
        bool bStopped = true;
        for (int k = 0; bStopped && !HasFailure(); ++k) {
            const CapturedMessages messages;
            Kivo_2D kivo;
            for (int owner = 0; owner < i % 4; ++owner)
                kivo.createConstraint(vSegments, cis);
            vSegments.emplace_back(Point2(0, 0.5), Point2(6, 5.5));
            try {
                const MemoryLimit limit(k, i % 3 == 0);
                kivo.createConstraint(vSegments, cis, i % 5 == 0);
                bStopped = false;
            } catch (const std::bad_alloc&) {
            }
            kivo.createConstraint(vSegments, cis);
            vSegments.pop_back();
            EXPECT_TRUE(kivo.checkValidity(true, "memory")) << messages.output() << messages.error();
        }
    }
}
