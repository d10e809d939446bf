#pragma once

#include "Triangle2.h"
#include "core/MeshStore.h"
#include "core/RecordNumbers.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// Remembers which triangles a search has met, for one search after the other: four bytes a record, and
// nothing to clear in between.
class TriangleStamps {
public:
    explicit TriangleStamps(const MeshStore& triangulation)
        : store(triangulation), numbers(store.reservedTriangleNumbers()) {}

    // Begins a search, which must not make triangles.
    void begin() {
        if (store.numTriangleBlocks() != numBlocks) {
            numBlocks = store.numTriangleBlocks();
            numbers = store.reservedTriangleNumbers();
            vStamps.resize(numbers.size());
        }
        if (++current != 0) return;
        std::fill(vStamps.begin(), vStamps.end(), 0U);
        current = 1;
    }
    // True for a triangle that this search has not met before.
    bool meet(const Triangle2* pT) {
        std::uint32_t& stamp = vStamps[numbers.numberOf(pT)];
        if (stamp == current) return false;
        stamp = current;
        return true;
    }
    // Gives the memory back.
    void release() {
        vStamps = {};
        numBlocks = 0;
    }

private:
    const MeshStore& store;
    RecordNumbers<Triangle2> numbers;
    std::vector<std::uint32_t> vStamps;
    std::size_t numBlocks = 0;
    std::uint32_t current = 0;
};

} // namespace TESK_KIVO2D
