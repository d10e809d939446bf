#include "core/KeyIndex.h"
#include "core/hilbertOrder.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace TESK_KIVO2D;

namespace {

std::vector<KeyedVertex> content(const KeyIndex& index) {
    std::vector<KeyedVertex> v;
    index.forEach([&](unsigned int key, Point2* p) { v.push_back({key, p}); });
    return v;
}

// The vertex that a scan of the sorted content would choose, as a key.
unsigned int distanceOfNearest(const std::vector<KeyedVertex>& v, unsigned int key) {
    unsigned int best = ~0u;
    for (const KeyedVertex& e : v)
        best = std::min(best, e.key > key ? e.key - key : key - e.key);
    return best;
}

} // namespace

TEST(KeyIndex, agreesWithAScanThroughInsertionsBatchesAndErasures) {
    for (const unsigned int numKeys : {1u, 5u, 1000u, 1u << 30}) {
        doubles::Rng rng(numKeys);
        std::vector<Point2> vRecords(3000);
        KeyIndex index;
        std::vector<KeyedVertex> vAll;
        for (Point2& record : vRecords) {
            vAll.push_back({static_cast<unsigned int>(rng() % numKeys), &record});
            if (vAll.size() <= 2000) index.insert(vAll.back().key, vAll.back().pVtx);
        }
        std::vector<KeyedVertex> vBatch(vAll.begin() + 2000, vAll.end());
        const auto byKey = [](const KeyedVertex& a, const KeyedVertex& b) { return a.key < b.key; };
        std::sort(vBatch.begin(), vBatch.end(), byKey);
        index.insertSorted(vBatch);
        for (int i = 0; i < 1000; ++i) {
            const KeyedVertex gone = vAll.back();
            vAll.pop_back();
            ASSERT_TRUE(index.erase(gone.key, gone.pVtx));
            ASSERT_FALSE(index.erase(gone.key, gone.pVtx));
        }
        ASSERT_EQ(vAll.size(), index.size());
        const auto v = content(index);
        EXPECT_TRUE(std::is_sorted(v.begin(), v.end(), byKey));
        std::vector<Point2*> vExpected, vFound;
        for (const KeyedVertex& e : vAll)
            vExpected.push_back(e.pVtx);
        for (const KeyedVertex& e : v)
            vFound.push_back(e.pVtx);
        std::sort(vExpected.begin(), vExpected.end());
        std::sort(vFound.begin(), vFound.end());
        EXPECT_EQ(vExpected, vFound);
        for (int i = 0; i < 300; ++i) {
            const unsigned int key = static_cast<unsigned int>(rng() % (std::uint64_t(numKeys) + 2));
            const Point2* p = index.nearest(key);
            const auto it =
                std::find_if(v.begin(), v.end(), [&](const KeyedVertex& e) { return e.pVtx == p; });
            ASSERT_NE(v.end(), it);
            EXPECT_EQ(distanceOfNearest(v, key), it->key > key ? it->key - key : key - it->key);
        }
    }
}

TEST(KeyIndex, takesTheLowerOfTwoNeighboursThatAreEquallyNear) {
    Point2 lower, upper;
    KeyIndex index;
    index.insert(10, &lower);
    index.insert(20, &upper);
    EXPECT_EQ(&lower, index.nearest(15));
    EXPECT_EQ(&upper, index.nearest(16));
    EXPECT_EQ(&lower, index.nearest(0));
    EXPECT_EQ(&upper, index.nearest(1000));
}

TEST(KeyIndex, emptiesAndFillsAgain) {
    std::vector<Point2> v(1000);
    KeyIndex index;
    for (int round = 0; round < 3; ++round) {
        for (unsigned int i = 0; i < v.size(); ++i)
            index.insert(i * 7919 % 1000, &v[i]);
        for (unsigned int i = 0; i < v.size(); ++i)
            ASSERT_TRUE(index.erase(i * 7919 % 1000, &v[i]));
        EXPECT_TRUE(index.empty());
        EXPECT_FALSE(index.erase(1, &v[0]));
    }
}

TEST(hilbertOrder, bringsEqualPointsTogetherFirstOneFirstAtEveryScale) {
    for (const double scale : {1.0, 1e-12, 5e-324, 1e300}) {
        doubles::Rng rng(7);
        std::vector<Point2> v;
        for (int i = 0; i < 5000; ++i) {
            v.emplace_back(scale * doubles::below(rng, 30), scale * doubles::below(rng, 30));
        }
        v.emplace_back(1e6, 1e6); // puts the others into few cells
        v.emplace_back(std::nan(""), 0);
        v.emplace_back(0, HUGE_VAL);
        Bbox2 box;
        for (const Point2& p : v) {
            if (std::isfinite(p.x()) && std::isfinite(p.y())) box.add(p);
        }
        const auto vOrder = hilbertOrder(PointSource(v.data(), v.size()), HC2(box));
        ASSERT_EQ(5001u, vOrder.size());
        std::vector<unsigned int> vIndices;
        std::vector<Point2> vRuns; // each different point once, if equal ones are together
        for (std::size_t i = 0; i < vOrder.size(); ++i) {
            vIndices.push_back(vOrder[i].index);
            const Point2& p = v[vOrder[i].index];
            if (i > 0) {
                ASSERT_LE(vOrder[i - 1].key, vOrder[i].key);
                const Point2& before = v[vOrder[i - 1].index];
                if (p == before) {
                    ASSERT_LT(vOrder[i - 1].index, vOrder[i].index);
                    continue;
                }
            }
            vRuns.push_back(p);
        }
        std::sort(vRuns.begin(), vRuns.end());
        EXPECT_EQ(vRuns.end(), std::adjacent_find(vRuns.begin(), vRuns.end()));
        std::sort(vIndices.begin(), vIndices.end());
        EXPECT_EQ(vIndices.end(), std::adjacent_find(vIndices.begin(), vIndices.end()));
    }
}
