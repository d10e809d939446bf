#pragma once

#include "Triangle2.h"
#include "core/MeshStore.h"
#include "core/prefetch.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

// A triangle as it is, to be told from one that has other corners: splits and flips rebuild records in place.
//
// Corners enter as a sum, so that it does not matter which one comes first, of scrambled numbers: those of
// vertices made one after the other are evenly spaced, and their own sums would often agree. (Once in four
// thousand million times different corners pass for the same. Then a triangle is looked at that did not
// wait.)
class CornerSums {
public:
    // Addresses are counted from the first vertex record, so that all runs of a program see the same.
    explicit CornerSums(const MeshStore& store) : base(addressOf(store.firstVertex())) {}

    std::uint32_t of(const Triangle2& t) const {
        return scrambled(t.getCorner(0)) + scrambled(t.getCorner(1)) + scrambled(t.getCorner(2));
    }

private:
    static std::uint64_t addressOf(const Point2* p) { return reinterpret_cast<std::uintptr_t>(p); }
    std::uint32_t scrambled(const Point2* p) const {
        std::uint64_t bits = (addressOf(p) - base) * 0x9E3779B97F4A7C15u;
        bits ^= bits >> 32;
        return static_cast<std::uint32_t>(bits * 0xD6E8FEB86659FD93u >> 32);
    }

    std::uint64_t base;
};

// A triangle that waits for its turn, with the sum of the corners that it had when it was entered.
struct QueuedTriangle {
    Triangle2* pT = nullptr;
    std::uint32_t corners = 0;
};

// An ordered multimap from squared lengths to triangles, smallest key first, equal keys in the order in which
// they came. Keys count as equal when they agree in the exponent and the first bits of the mantissa: so a
// list for each is enough, and entering and taking cost no comparison.
class CandidateQueue {
public:
    explicit CandidateQueue(const MeshStore& store) : sums(store), vWords(numKeys / 64) {}

    CandidateQueue(const CandidateQueue&) = delete;
    CandidateQueue& operator=(const CandidateQueue&) = delete;

    QueuedTriangle asItIs(Triangle2* pT) const { return {pT, sums.of(*pT)}; }
    bool isAlive(const QueuedTriangle& triangle) const { return sums.of(*triangle.pT) == triangle.corners; }

    bool empty() const { return numEntries == 0; }
    std::size_t size() const { return numEntries; }

    // The key is a double that is not negative.
    void push(double key, Triangle2* pT) {
        if (vLists.empty()) vLists.resize(numKeys); // not for a zone without a bad triangle
        const std::size_t k = bucketOf(key);
        List& list = vLists[k];
        if (list.pLast == nullptr) {
            list.pFirst = list.pLast = takeChunk();
            list.begin = list.end = 0;
            vWords[k / 64] |= std::uint64_t{1} << (k % 64);
            lowestWord = std::min(lowestWord, k / 64);
        } else if (list.end == chunkSize) {
            list.pLast->pNext = takeChunk();
            list.pLast = list.pLast->pNext;
            list.end = 0;
        }
        list.pLast->aEntries[list.end++] = asItIs(pT);
        ++numEntries;
    }

    // The queue must not be empty.
    QueuedTriangle pop() {
        while (vWords[lowestWord] == 0)
            ++lowestWord;
        const std::uint64_t word = vWords[lowestWord];
        List& list = vLists[lowestWord * 64 + static_cast<std::size_t>(std::countr_zero(word))];
        Chunk* const pChunk = list.pFirst;
        const QueuedTriangle triangle = pChunk->aEntries[list.begin++];
        // Most candidates have died when their turn comes, so the next ones come at once. (Behind the end of
        // a list there may be old entries, whose records are as good to fetch as any.)
        if (list.begin + ahead < chunkSize) prefetch(pChunk->aEntries[list.begin + ahead].pT);
        --numEntries;
        const bool bLast = pChunk == list.pLast;
        if (bLast ? list.begin == list.end : list.begin == chunkSize) {
            list.pFirst = pChunk->pNext;
            list.begin = 0;
            giveBack(pChunk);
            if (bLast) {
                list.pLast = nullptr;
                vWords[lowestWord] &= word - 1;
            }
        }
        return triangle;
    }

private:
    static constexpr std::uint32_t chunkSize = 31, ahead = 3;
    struct Chunk {
        QueuedTriangle aEntries[chunkSize] = {};
        Chunk* pNext = nullptr;
    };
    // From entry `begin` of the first chunk to before entry `end` of the last one; null while empty.
    struct List {
        Chunk* pFirst = nullptr;
        Chunk* pLast = nullptr;
        std::uint32_t begin = 0;
        std::uint32_t end = 0;
    };

    static constexpr int numMantissaBits = 4;
    static constexpr std::size_t numKeys = std::size_t{2048} << numMantissaBits;
    static std::size_t bucketOf(double key) {
        return static_cast<std::size_t>(std::bit_cast<std::uint64_t>(key) >> (52 - numMantissaBits)) %
               numKeys;
    }

    Chunk* takeChunk() {
        if (pFree == nullptr) return &dChunks.emplace_back();
        Chunk* const pChunk = std::exchange(pFree, pFree->pNext);
        pChunk->pNext = nullptr;
        return pChunk;
    }
    void giveBack(Chunk* pChunk) {
        pChunk->pNext = pFree;
        pFree = pChunk;
    }

    CornerSums sums;
    std::vector<List> vLists;          // by key
    std::vector<std::uint64_t> vWords; // a bit for each key that has entries
    std::deque<Chunk> dChunks;         // their addresses stay
    Chunk* pFree = nullptr;
    std::size_t lowestWord = numKeys / 64 - 1; // no word below has a bit
    std::size_t numEntries = 0;
};

} // namespace TESK_KIVO2D
