#pragma once

#include "Triangle2.h"
#include "core/RecordNumbers.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// A set of triangles of one store, a bit a record. Sets that are combined must come from the same numbers,
// which must outlive them.
class TriangleSet {
public:
    explicit TriangleSet(const RecordNumbers<Triangle2>& numbers)
        : pNumbers(&numbers), vWords((numbers.size() + 63) / 64) {}

    const RecordNumbers<Triangle2>& numbers() const { return *pNumbers; }

    // False for null, and for triangles made after the numbers.
    bool contains(const Triangle2* pT) const {
        const std::size_t number = pNumbers->numberOf(pT);
        return number != RecordNumbers<Triangle2>::none && containsNumber(number);
    }
    bool containsNumber(std::size_t number) const { return (vWords[number / 64] >> (number % 64) & 1) != 0; }
    // True when it is new. The triangle must have a number.
    bool insert(const Triangle2* pT) { return insertNumber(pNumbers->numberOf(pT)); }
    bool insertNumber(std::size_t number) {
        std::uint64_t& word = vWords[number / 64];
        const std::uint64_t bit = std::uint64_t{1} << (number % 64);
        const bool bNew = (word & bit) == 0;
        word |= bit;
        return bNew;
    }
    // The triangle must have a number.
    void erase(const Triangle2* pT) {
        const std::size_t number = pNumbers->numberOf(pT);
        vWords[number / 64] &= ~(std::uint64_t{1} << (number % 64));
    }

    std::size_t size() const {
        std::size_t num = 0;
        for (const std::uint64_t word : vWords)
            num += static_cast<std::size_t>(std::popcount(word));
        return num;
    }
    bool empty() const {
        for (const std::uint64_t word : vWords) {
            if (word != 0) return false;
        }
        return true;
    }

    // Calls f with each triangle, in the order of their records.
    template<class F>
    void forEach(F f) const {
        pNumbers->forEachRun([&](Triangle2* pBegin, std::size_t num, std::size_t first) {
            for (std::size_t i = first; i < first + num;) {
                std::uint64_t word = vWords[i / 64] >> (i % 64);
                const std::size_t numBits = std::min(64 - i % 64, first + num - i);
                for (; word != 0; word &= word - 1) {
                    const std::size_t bit = static_cast<std::size_t>(std::countr_zero(word));
                    if (bit >= numBits) break; // of the next run
                    f(pBegin + (i - first + bit));
                }
                i += numBits;
            }
        });
    }
    void appendTo(std::vector<Triangle2*>& vTriangles) const {
        vTriangles.reserve(vTriangles.size() + size());
        forEach([&](Triangle2* pT) { vTriangles.push_back(pT); });
    }

    // Combines two words of 64 records at a time.
    template<class F>
    void combine(const TriangleSet& other, F f) {
        for (std::size_t i = 0; i < vWords.size(); ++i)
            vWords[i] = f(vWords[i], other.vWords[i]);
    }

private:
    const RecordNumbers<Triangle2>* pNumbers;
    std::vector<std::uint64_t> vWords;
};

// Calls f with triangle and index of each edge of the set's triangles whose other side is missing or not in
// the set, in the order of the records.
template<class F>
void forEachBorderEdge(const TriangleSet& triangles, F f) {
    triangles.forEach([&](Triangle2* pT) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN == nullptr || !triangles.contains(pN)) f(pT, i);
        }
    });
}

} // namespace TESK_KIVO2D
