#pragma once

#include "Triangle2.h"
#include "core/EdgeMarks.h"
#include "core/TriangleSet.h"
#include "core/prefetch.h"

#include <vector>

namespace TESK_KIVO2D {

// Adds to the set what can be reached from the triangles of the front, which are in it already, without
// crossing a closed edge. Calls onNew with each triangle that it adds, and onClosed with the triangle behind
// each closed edge that it meets. Leaves the front empty.
//
// Goes front by front: so the records that come next are known, and can be fetched ahead.
template<class OnNew, class OnClosed>
void flood(std::vector<Triangle2*>& vFront, const EdgeMarks& closed, TriangleSet& reached, OnNew onNew,
           OnClosed onClosed) {
    constexpr std::size_t distance = 16;
    std::vector<Triangle2*> vNext;
    while (!vFront.empty()) {
        for (std::size_t k = 0; k < vFront.size(); ++k) {
            if (k + distance < vFront.size()) prefetch(vFront[k + distance]);
            const Triangle2* const pT = vFront[k];
            const unsigned closedBits = closed.bitsOf(pT);
            for (int i = 0; i < 3; ++i) {
                Triangle2* const pN = pT->getOppositeTriangle(i);
                if (pN == nullptr) continue;
                if ((closedBits >> i & 1) != 0) {
                    onClosed(pN);
                } else if (reached.insert(pN)) {
                    onNew(pN);
                    vNext.push_back(pN);
                }
            }
        }
        vFront.swap(vNext);
        vNext.clear();
    }
}

template<class OnNew>
void flood(std::vector<Triangle2*>& vFront, const EdgeMarks& closed, TriangleSet& reached, OnNew onNew) {
    flood(vFront, closed, reached, onNew, [](const Triangle2*) {});
}

inline void flood(std::vector<Triangle2*>& vFront, const EdgeMarks& closed, TriangleSet& reached) {
    flood(vFront, closed, reached, [](const Triangle2*) {});
}

} // namespace TESK_KIVO2D
