#pragma once

#include "Point2.h"
#include "Triangle2.h"

#include <cstdint>

namespace TESK_KIVO2D {

// Fetches of records that will be needed soon. A record that is not in the cache takes as long to come as two
// hundred additions; several fetched at once take hardly longer than one. Null is fine.

inline void prefetch([[maybe_unused]] const void* p) {
#if defined(__GNUC__)
    __builtin_prefetch(p);
#endif
}

// A triangle may straddle two cache lines.
inline void prefetch(const Triangle2* pT) {
    const auto address = reinterpret_cast<std::uintptr_t>(pT); // a null pointer has no last byte
    prefetch(reinterpret_cast<const void*>(address));
    prefetch(reinterpret_cast<const void*>(address + sizeof(Triangle2) - 1));
}

// Only its neighbours' addresses.
inline void prefetchLinks(const Triangle2* pT) {
    const auto end = reinterpret_cast<std::uintptr_t>(pT) + sizeof(Triangle2);
    prefetch(reinterpret_cast<const void*>(end - 3 * sizeof(void*)));
    prefetch(reinterpret_cast<const void*>(end - 1));
}

inline void prefetchNeighbours(const Triangle2* pT) {
    for (int i = 0; i < 3; ++i)
        prefetch(pT->getOppositeTriangle(i));
}

// What the legalisation of a vertex in this triangle looks at first: behind each neighbour, whose record
// should be here by now, its far corner and what lies beyond.
inline void prefetchSurroundings(const Triangle2* pT) {
    for (int i = 0; i < 3; ++i) {
        const Triangle2* const pN = pT->getOppositeTriangle(i);
        if (pN == nullptr) continue;
        const int j = pN->getIntraTriangleIndex(pT);
        prefetch(static_cast<const void*>(pN->getCorner(j)));
        prefetch(pN->getOppositeTriangle(Triangle2::incIndexBy1(j)));
        prefetch(pN->getOppositeTriangle(Triangle2::incIndexBy2(j)));
    }
}

} // namespace TESK_KIVO2D
