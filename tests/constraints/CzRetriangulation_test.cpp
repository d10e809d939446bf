#include "constraints/CzRetriangulation.h"

#include "constraints/PolygonGuide.h"
#include "core/edgeSearch.h"
#include "core/legalize.h"
#include "core/linkIn.h"
#include "core/validity.h"
#include "core/walk.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <utility>
#include <vector>

using namespace TESK_KIVO2D;

namespace {

// A triangulation made of the primitives alone, which remembers the edges that were forced in.
class Mesh : public EdgeGuard {
public:
    explicit Mesh(const std::vector<Point2>& vPoints) : store(static_cast<unsigned int>(vPoints.size())) {
        for (const Point2& p : vPoints)
            tests.setStaticBound(std::max(tests.getMaxAbsCoord(), p.getMaxAbs()));
        for (int i = 0; i < 3; ++i)
            vVertices.push_back(store.createVertex(vPoints[static_cast<std::size_t>(i)]));
        store.createTriangle(vVertices[0], vVertices[1], vVertices[2]);
        for (std::size_t i = 3; i < vPoints.size(); ++i)
            add(vPoints[i]);
    }
    bool isFixed(const Point2* p, const Point2* q) const override {
        return sFixed.count(std::minmax(p, q)) > 0;
    }
    void wasSplit(Point2*, Point2*, Point2*) override {}

    // Forces the segment in, from vertex to vertex, unless it crosses a fixed edge.
    void force(Point2* p, Point2* q) {
        while (p != q) {
            const CzResult result = traverse(p, q, tests, this, zone);
            if (result.end == CzResult::MET_FIXED) return;
            if (result.end == CzResult::MET_VERTEX) {
                force(p, result.pVtx);
                p = result.pVtx;
                continue;
            }
            maxZone = std::max(maxZone, zone.vTriangles.size());
            if (result.end == CzResult::REACHED) retriangulation.fill(zone);
            ASSERT_NE(nullptr, findEdge(p, q).pT);
            sFixed.insert(std::minmax<const Point2*>(p, q));
            return;
        }
    }
    void expectConstrainedDelaunay() {
        std::vector<ValidityFinding> vFindings;
        checkCorners(store, tests, vFindings);
        checkLinks(store, vFindings);
        checkEmptyCircles(store, tests, this, vFindings);
        EXPECT_EQ(0u, vFindings.size());
    }

    std::vector<Point2*> vVertices;
    TeskTest tests;
    std::size_t maxZone = 0;

private:
    void add(const Point2& p) {
        const WalkResult found = walk(vVertices.back()->getIncidentTriangle(), p, tests);
        if (found.code == WalkResult::ON_CORNER) return;
        vVertices.push_back(store.createVertex(p));
        linkIn(vVertices.back(), found, {store, tests, hullLinks, nullptr, vCheckT});
        legalizeNewVertex(vCheckT, tests, nullptr);
    }

    MeshStore store;
    HullLinks hullLinks;
    std::vector<Triangle2*> vCheckT;
    std::set<std::pair<const Point2*, const Point2*>> sFixed;
    CzRetriangulation retriangulation{tests};
    ConstraintZone zone;
};

double between(std::mt19937_64& random, double low, double high) {
    return low + (high - low) * static_cast<double>(random() >> 11) * 0x1p-53;
}

// Three corners around all that follows.
std::vector<Point2> inLargeTriangle() { return {{-4, -4}, {8, -4}, {-4, 8}}; }

TEST(CzRetriangulation, manySegmentsThroughFewPointsLeaveIslandsAndHangingEdges) {
    std::mt19937_64 random(1);
    for (int run = 0; run < 400; ++run) {
        std::vector<Point2> vPoints = inLargeTriangle();
        const bool bLattice = run % 2 == 0;
        for (int i = 0; i < 12 + run / 4; ++i) {
            const double x = between(random, 0, 1), y = between(random, 0, 1);
            vPoints.emplace_back(bLattice ? std::floor(12 * x) / 12 : x,
                                 bLattice ? std::floor(12 * y) / 12 : y);
        }
        Mesh mesh(vPoints);
        for (int i = 0; i < 60; ++i) {
            const std::size_t num = mesh.vVertices.size();
            mesh.force(mesh.vVertices[random() % num], mesh.vVertices[random() % num]);
        }
        mesh.expectConstrainedDelaunay();
    }
}

// Vertices on two flat arcs towards the segment, and away from it: the triangles beside it are long fans.
TEST(CzRetriangulation, longZonesWithFansFollowAGuide) {
    std::mt19937_64 random(2);
    for (const double height : {0.3, -0.3, 0.05, -0.05}) {
        for (const int num : {200, 3000}) {
            std::vector<Point2> vPoints = inLargeTriangle();
            const double lowest = height < 0 ? 0.01 - height : 0.01;
            for (int i = 0; i <= num; ++i) {
                const double x = (i + between(random, 0.1, 0.9)) / (num + 2),
                             bulge = 4 * x * (1 - x) * height;
                vPoints.emplace_back(x, 0.5 + lowest + bulge);
                vPoints.emplace_back(x, 0.5 - lowest - bulge);
            }
            vPoints.emplace_back(0, 0.5);
            vPoints.emplace_back(1, 0.5);
            Mesh mesh(vPoints);
            const std::size_t last = mesh.vVertices.size() - 1;
            // Walls that are no Delaunay edges, some of them on the zone's border.
            for (std::size_t i = 3; i + 40 < last; i += 37)
                mesh.force(mesh.vVertices[i], mesh.vVertices[i + 20]);
            mesh.force(mesh.vVertices[last - 1], mesh.vVertices[last]);
            EXPECT_GT(mesh.maxZone, static_cast<std::size_t>(num));
            mesh.expectConstrainedDelaunay();
        }
    }
}

} // namespace
