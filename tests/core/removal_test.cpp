#include "Kivo_2D.h"
#include "core/Dt2.h"
#include "tests/support/capture.h"
#include "tests/support/expectSound.h"
#include "tests/support/memoryLimit.h"
#include "tests/support/nastySets.h"

#include <algorithm>
#include <cmath>
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
