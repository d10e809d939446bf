#pragma once

#include "Triangle2.h"
#include "core/HalfEdge.h"
#include "core/MeshStore.h"
#include "core/RecordNumbers.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// What a refinement knows of each triangle, a byte beside the record: whether it belongs to the zone, and
// which of its edges are closed, because they are constraints or because the zone ends there. Looking up
// constraints would take longer than all else.
class TriangleMarks {
public:
    static constexpr unsigned inZone = 8; // above a bit for each edge, that of the edge opposite corner i

    explicit TriangleMarks(const MeshStore& triangulation)
        : store(triangulation), numbers(store.reservedTriangleNumbers()), vBytes(numbers.size()),
          numBlocks(store.numTriangleBlocks()) {}

    // Makes room for triangles that have been reserved since.
    void follow() {
        if (store.numTriangleBlocks() == numBlocks) return;
        numbers = store.reservedTriangleNumbers();
        vBytes.resize(numbers.size());
        numBlocks = store.numTriangleBlocks();
    }

    unsigned of(const Triangle2* pT) const { return vBytes[numbers.numberOf(pT)]; }
    void set(const Triangle2* pT, unsigned marks) {
        vBytes[numbers.numberOf(pT)] = static_cast<std::uint8_t>(marks);
    }

    bool isInZone(const Triangle2* pT) const { return (of(pT) & inZone) != 0; }
    bool isClosed(HalfEdge edge) const { return isClosed(edge.pT, edge.ith); }
    bool isClosed(const Triangle2* pT, int ith) const { return (of(pT) >> ith & 1) != 0; }
    int numberOfClosed(const Triangle2* pT) const { return std::popcount(of(pT) % inZone); }
    // On both sides.
    void close(HalfEdge edge) {
        set(edge.pT, of(edge.pT) | 1U << edge.ith);
        if (const Triangle2* const pN = edge.opposite())
            set(pN, of(pN) | 1U << pN->getIntraTriangleIndex(edge.pT));
    }
    // On this side.
    void open(HalfEdge edge) { set(edge.pT, of(edge.pT) & ~(1U << edge.ith)); }
    // The open edge is about to be flipped by `flip`, which see for the names.
    void flip(HalfEdge edge) {
        Triangle2 *const pT = edge.pT, *const pN = edge.opposite();
        const int j = pN->getIntraTriangleIndex(pT);
        const auto bit = [this](const Triangle2* p, int i) { return of(p) >> i & 1; };
        const unsigned ab = bit(pT, Triangle2::incIndexBy2(edge.ith)),
                       ca = bit(pT, Triangle2::incIndexBy1(edge.ith)),
                       bd = bit(pN, Triangle2::incIndexBy1(j)), dc = bit(pN, Triangle2::incIndexBy2(j));
        const unsigned zone = of(pT) & inZone;
        set(pT, zone | bd | ab << 2);
        set(pN, zone | dc | ca << 1);
    }

private:
    const MeshStore& store;
    RecordNumbers<Triangle2> numbers;
    std::vector<std::uint8_t> vBytes;
    std::size_t numBlocks;
};

} // namespace TESK_KIVO2D
