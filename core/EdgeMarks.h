#pragma once

#include "Triangle2.h"
#include "core/HalfEdge.h"
#include "core/RecordNumbers.h"
#include "core/prefetch.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// A mark for each edge of a triangulation, kept on either side of it: three bits a triangle.
class EdgeMarks {
public:
    explicit EdgeMarks(const RecordNumbers<Triangle2>& numbers) : pNumbers(&numbers), vBits(numbers.size()) {}

    bool contains(HalfEdge edge) const { return (bitsOf(edge.pT) >> edge.ith & 1) != 0; }
    // The marks of a triangle's edges, bit i for the one opposite corner i.
    unsigned bitsOf(const Triangle2* pT) const { return vBits[pNumbers->numberOf(pT)]; }
    // The same of the triangle with this number, and its fetch ahead.
    unsigned bitsOfNumber(std::size_t number) const { return vBits[number]; }
    void prefetchNumber(std::size_t number) const { prefetch(static_cast<const void*>(&vBits[number])); }
    void set(HalfEdge edge) {
        change(edge, [](unsigned bits, unsigned bit) { return bits | bit; });
    }
    void flip(HalfEdge edge) {
        change(edge, [](unsigned bits, unsigned bit) { return bits ^ bit; });
    }

private:
    template<class F>
    void change(HalfEdge edge, F f) {
        changeSide(edge.pT, edge.ith, f);
        if (const Triangle2* const pN = edge.opposite())
            changeSide(pN, pN->getIntraTriangleIndex(edge.pT), f);
    }
    template<class F>
    void changeSide(const Triangle2* pT, int ith, F f) {
        std::uint8_t& bits = vBits[pNumbers->numberOf(pT)];
        bits = static_cast<std::uint8_t>(f(bits, 1U << ith));
    }

    const RecordNumbers<Triangle2>* pNumbers;
    std::vector<std::uint8_t> vBits;
};

} // namespace TESK_KIVO2D
