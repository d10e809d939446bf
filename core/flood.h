#pragma once

#include "Triangle2.h"
#include "core/EdgeMarks.h"
#include "core/TriangleSet.h"
#include "core/prefetch.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// A triangle that a flood passed, its number, and its closed edges: bit i for the one opposite corner i.
struct Flooded {
    Triangle2* pT;
    std::size_t number;
    unsigned closedEdges;
};

// Adds to the set what can be reached from the triangles of the front, which are in it already, without
// crossing a closed edge. Calls onNew with each triangle that it adds, onClosed with the triangle behind each
// closed edge that it meets, and onBatch with all triangles, those of the front too, some at a time, while
// their records are in the cache. Leaves the front empty.
//
// Takes the latest triangles first, so that what is near in the plane, and mostly in memory, comes soon; but
// a batch of them at a time, whose records are fetched together. What is already in the set is stored like
// what is new, and overwritten by the next: nothing could predict which it will be.
template<class OnNew, class OnClosed, class OnBatch>
void flood(std::vector<Triangle2*>& vFront, const EdgeMarks& closed, TriangleSet& reached, OnNew onNew,
           OnClosed onClosed, OnBatch onBatch) {
    constexpr std::size_t batchSize = 96; // as fast as any, measured; much less or more is a third slower
    std::array<Flooded, batchSize> aBatch;
    std::size_t num = vFront.size(); // what lies behind is room for the next batch
    while (num > 0) {
        const std::size_t numBatch = std::min(num, batchSize);
        num -= numBatch;
        for (std::size_t k = 0; k < numBatch; ++k) {
            Flooded& each = aBatch[k];
            each.pT = vFront[num + k];
            each.number = reached.numbers().numberOf(each.pT);
            prefetch(each.pT);
            closed.prefetchNumber(each.number);
        }
        if (vFront.size() - num < 3 * batchSize + 1) vFront.resize(2 * num + 3 * batchSize + 1);
        Triangle2** pEnd = vFront.data() + num;
        for (std::size_t k = 0; k < numBatch; ++k) {
            const Triangle2* const pT = aBatch[k].pT;
            const unsigned closedEdges = closed.bitsOfNumber(aBatch[k].number);
            aBatch[k].closedEdges = closedEdges;
            for (int i = 0; i < 3; ++i) {
                Triangle2* const pN = pT->getOppositeTriangle(i);
                if (pN == nullptr) continue;
                if ((closedEdges >> i & 1) != 0) {
                    onClosed(pN);
                    continue;
                }
                const bool bNew = reached.insert(pN);
                if (bNew) onNew(pN);
                *pEnd = pN;
                pEnd += bNew;
            }
        }
        onBatch(std::span<const Flooded>(aBatch.data(), numBatch));
        num = static_cast<std::size_t>(pEnd - vFront.data());
    }
    vFront.clear();
}

template<class OnNew>
void flood(std::vector<Triangle2*>& vFront, const EdgeMarks& closed, TriangleSet& reached, OnNew onNew) {
    flood(
        vFront, closed, reached, onNew, [](const Triangle2*) {}, [](std::span<const Flooded>) {});
}

} // namespace TESK_KIVO2D
