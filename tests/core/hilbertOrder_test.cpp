// Run under a thread sanitizer too.
#include "core/hilbertOrder.h"

#include "core/WorkerPool.h"
#include "tests/support/doubles.h"
#include "tests/support/sanitized.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>

using namespace TESK_KIVO2D;
using doubles::Points;
using Indices = std::vector<unsigned int>;
using Entry = std::pair<unsigned int, unsigned int>;

namespace {

HC2 curveOf(const Points& v) {
    Bbox2 box;
    for (const Point2& p : v) {
        if (std::isfinite(p.x()) && std::isfinite(p.y())) box.add(p);
    }
    box.doubleTheBox();
    return HC2(box);
}

// The law, restated without a thought for speed: by key; more than 24 points of one key by keys over their
// own box; where that tells nothing, by coordinates.
void orderPlainly(Indices& vIndices, const Points& v, const HC2& hc, bool bOutermost) {
    std::map<unsigned int, Indices> runs;
    for (const unsigned int i : vIndices)
        runs[hc.key(v[i])].push_back(i);
    if (runs.size() == 1 && !bOutermost) {
        std::stable_sort(vIndices.begin(), vIndices.end(), [&](auto a, auto b) { return v[a] < v[b]; });
        return;
    }
    vIndices.clear();
    for (auto& [key, vRun] : runs) {
        if (vRun.size() > 24) {
            Points vOfRun;
            for (const unsigned int i : vRun)
                vOfRun.push_back(v[i]);
            orderPlainly(vRun, v, curveOf(vOfRun), false);
        } else {
            std::stable_sort(vRun.begin(), vRun.end(), [&](auto a, auto b) { return v[a] < v[b]; });
        }
        vIndices.insert(vIndices.end(), vRun.begin(), vRun.end());
    }
}

std::vector<Entry> plainOrder(const Points& v) {
    const HC2 hc = curveOf(v);
    Indices vIndices;
    for (unsigned int i = 0; i < v.size(); ++i) {
        if (std::isfinite(v[i].x()) && std::isfinite(v[i].y())) vIndices.push_back(i);
    }
    orderPlainly(vIndices, v, hc, true);
    std::vector<Entry> vEntries;
    for (const unsigned int i : vIndices)
        vEntries.emplace_back(hc.key(v[i]), i);
    return vEntries;
}

std::vector<Entry> entriesOf(const HilbertOrder& order) {
    std::vector<Entry> vEntries;
    for (const KeyedIndex& k : order.entries())
        vEntries.emplace_back(k.key, k.index);
    return vEntries;
}

// For points of which the second half is given by pointers: that must not matter either.
void expectPlainOrder(Points v, const std::string& what) {
    const std::vector<Entry> expected = plainOrder(v);
    const HC2 hc = curveOf(v);
    std::vector<Point2*> vPointers;
    for (std::size_t i = v.size() / 2; i < v.size(); ++i)
        vPointers.push_back(&v[i]);
    const PointSource points(v.data(), v.size() / 2, vPointers);
    EXPECT_TRUE(expected == entriesOf(HilbertOrder(PointSource(v.data(), v.size()), hc))) << what;
    for (const int numThreads : {1, 2, 3, 8}) {
        if (isSanitized && numThreads % 2 == 0) continue; // each takes seconds there
        WorkerPool pool(numThreads);
        EXPECT_TRUE(expected == entriesOf(HilbertOrder(points, hc, {}, pool)))
            << what << ", threads " << numThreads;
    }
}

Points uniformPoints(std::size_t num, const Point2& corner = {0, 0}, double size = 1) {
    doubles::Rng rng(num);
    Points v;
    while (v.size() < num) {
        const double x = corner.x() + size * doubles::uniform(rng);
        v.emplace_back(x, corner.y() + size * doubles::uniform(rng));
    }
    return v;
}

} // namespace

TEST(HilbertOrder, isThePlainOrderForFewPointsAndForMany) {
    for (const std::size_t num : {0u, 1u, 2u, 24u, 25u, 100u, 5000u, 40000u, 300000u})
        expectPlainOrder(uniformPoints(num), std::to_string(num) + " points");
    Points v = uniformPoints(200000);
    for (Point2& p : v)
        p = Point2(p.x(), 0.5 + 1e-7 * p.y());
    expectPlainOrder(v, "a strip");
}

TEST(HilbertOrder, isThePlainOrderForEqualPoints) {
    Points v(150000, Point2(0.25, -3));
    expectPlainOrder(v, "one point");
    for (std::size_t i = 0; i < v.size(); i += 2)
        v[i] = Point2(i % 4 == 0 ? 0.0 : -0.0, i % 6 == 0 ? 0.0 : -0.0);
    expectPlainOrder(v, "two points, and zeros of both signs");
    v = uniformPoints(1000);
    for (std::size_t i = 1000; i < 200000; ++i)
        v.push_back(v[i * i % 1000]);
    expectPlainOrder(v, "a thousand points, many times");
}

// Three of four points are in a smaller cluster around the origin, of those again, and so on: several times
// over more points share a key than a thread orders alone.
TEST(HilbertOrder, isThePlainOrderForClustersInClusters) {
    for (const int step : {12, 20, 60}) {
        doubles::Rng rng(3);
        Points v = uniformPoints(300000, {-1, -1}, 2);
        for (Point2& p : v) {
            int exponent = 0;
            while (rng() % 4 != 0)
                exponent -= step;
            p = Point2(std::ldexp(p.x(), exponent), std::ldexp(p.y(), exponent));
        }
        expectPlainOrder(v, "factor 2^" + std::to_string(step));
    }
    Points v;
    for (int i = 0; i < 3; ++i) {
        const Points vCluster = uniformPoints(60000, {0.3 * i, 0.1 * i}, 1e-12);
        v.insert(v.end(), vCluster.begin(), vCluster.end());
    }
    expectPlainOrder(v, "tight clusters");
}

TEST(HilbertOrder, isThePlainOrderForPointsTooNearForAnyKeys) {
    doubles::Rng rng(4);
    Points v = {Point2(1, 1)};
    while (v.size() < 150000)
        v.emplace_back(doubles::below(rng, 3) * 5e-324, doubles::below(rng, 3) * 5e-324);
    expectPlainOrder(v, "subnormal steps");
    for (Point2& p : v)
        p = Point2(doubles::anyFinite(rng), doubles::anyFinite(rng));
    expectPlainOrder(v, "any finite doubles");
}

TEST(HilbertOrder, leavesPointsOutThatAreNotFinite) {
    const double nan = std::numeric_limits<double>::quiet_NaN(),
                 inf = std::numeric_limits<double>::infinity();
    Points v = uniformPoints(200000);
    for (std::size_t i = 0; i < v.size(); ++i) {
        const double bad[] = {nan, inf, -inf};
        if (i % 7 == 0 || i / 30000 == 2)
            v[i] = i % 2 == 0 ? Point2(bad[i % 3], v[i].y()) : Point2(v[i].x(), nan);
    }
    expectPlainOrder(v, "some");
    expectPlainOrder(Points(v.begin(), v.begin() + 50), "few");
    expectPlainOrder(Points(100000, Point2(nan, inf)), "all");
}

TEST(HilbertOrder, worksInTheSpareMemoryIfThatIsLargeEnough) {
    const Points v = uniformPoints(50000);
    const HC2 hc = curveOf(v);
    WorkerPool pool(2);
    std::vector<KeyedIndex> vSpare(2 * v.size());
    const std::span<char> spare(reinterpret_cast<char*>(vSpare.data()), vSpare.size() * sizeof(KeyedIndex));
    for (const bool bEnough : {false, true}) {
        const HilbertOrder order(PointSource(v.data(), v.size()), hc, spare.first(spare.size() - !bEnough),
                                 pool);
        EXPECT_EQ(bEnough, order.entries().data() >= vSpare.data() &&
                               order.entries().data() < vSpare.data() + vSpare.size());
        EXPECT_TRUE(plainOrder(v) == entriesOf(order));
    }
}
