#pragma once

#include "Triangle2.h"
#include "core/EdgeMarks.h"
#include "core/TriangleSet.h"
#include "core/prefetch.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

// Adds to the set what can be reached from the triangles of the front, which are in it already, without
// crossing a closed edge. Calls onNew with each triangle that it adds, and onClosed with the triangle behind
// each closed edge that it meets. Leaves the front empty.
//
// Takes the latest triangles first, so that what is near in the plane, and mostly in memory, comes soon; but
// a batch of them at a time, whose records are fetched together. What is already in the set is stored like
// what is new, and overwritten by the next: nothing could predict which it will be.
template<class OnNew, class OnClosed>
void flood(std::vector<Triangle2*>& vFront, const EdgeMarks& closed, TriangleSet& reached, OnNew onNew,
           OnClosed onClosed) {
    constexpr std::size_t batchSize = 96; // as fast as any, measured; much less or more is a third slower
    std::array<const Triangle2*, batchSize> aBatch;
    std::size_t num = vFront.size(); // what lies behind is room for the next batch
    while (num > 0) {
        const std::size_t numBatch = std::min(num, batchSize);
        num -= numBatch;
        for (std::size_t k = 0; k < numBatch; ++k) {
            aBatch[k] = vFront[num + k];
            prefetch(aBatch[k]);
        }
        if (vFront.size() - num < 3 * batchSize + 1) vFront.resize(2 * num + 3 * batchSize + 1);
        Triangle2** pEnd = vFront.data() + num;
        for (std::size_t k = 0; k < numBatch; ++k) {
            const Triangle2* const pT = aBatch[k];
            const unsigned closedBits = closed.bitsOf(pT);
            for (int i = 0; i < 3; ++i) {
                Triangle2* const pN = pT->getOppositeTriangle(i);
                if (pN == nullptr) continue;
                if ((closedBits >> i & 1) != 0) {
                    onClosed(pN);
                    continue;
                }
                const bool bNew = reached.insert(pN);
                if (bNew) onNew(pN);
                *pEnd = pN;
                pEnd += bNew;
            }
        }
        num = static_cast<std::size_t>(pEnd - vFront.data());
    }
    vFront.clear();
}

template<class OnNew>
void flood(std::vector<Triangle2*>& vFront, const EdgeMarks& closed, TriangleSet& reached, OnNew onNew) {
    flood(vFront, closed, reached, onNew, [](const Triangle2*) {});
}

inline void flood(std::vector<Triangle2*>& vFront, const EdgeMarks& closed, TriangleSet& reached) {
    flood(vFront, closed, reached, [](const Triangle2*) {});
}

} // namespace TESK_KIVO2D
