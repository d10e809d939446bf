#pragma once

#include "Triangle2.h"
#include "core/MeshStore.h"
#include "core/prefetch.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
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
    Triangle2* pT;
    std::uint32_t corners;
};

// An ordered multimap from squared lengths to triangles, smallest key first, equal keys in the order in which
// they came. Keys count as equal when they agree in the exponent and the first bits of the mantissa: so a
// list for each is enough, and entering and taking cost no comparison.
class CandidateQueue {
public:
    explicit CandidateQueue(const MeshStore& store)
        : sums(store), vFirst(numKeys, none), vLast(numKeys, none), vWords(numKeys / 64) {}

    QueuedTriangle asItIs(Triangle2* pT) const { return {pT, sums.of(*pT)}; }
    bool isAlive(const QueuedTriangle& triangle) const { return sums.of(*triangle.pT) == triangle.corners; }

    bool empty() const { return numEntries == 0; }
    std::size_t size() const { return numEntries; }

    // The key is a double that is not negative.
    void push(double key, Triangle2* pT) {
        const std::uint32_t idx = takeNode();
        vNodes[idx] = {pT, sums.of(*pT), none};
        const std::size_t k = bucketOf(key);
        if (vFirst[k] == none) {
            vFirst[k] = idx;
            vWords[k / 64] |= std::uint64_t{1} << (k % 64);
        } else {
            vNodes[vLast[k]].next = idx;
        }
        vLast[k] = idx;
        lowestWord = std::min(lowestWord, k / 64);
        ++numEntries;
    }

    // The queue must not be empty.
    QueuedTriangle pop() {
        while (vWords[lowestWord] == 0)
            ++lowestWord;
        const std::size_t k =
            lowestWord * 64 + static_cast<std::size_t>(std::countr_zero(vWords[lowestWord]));
        const std::uint32_t idx = vFirst[k];
        const Node node = vNodes[idx];
        vFirst[k] = node.next;
        if (node.next == none) {
            vWords[lowestWord] &= vWords[lowestWord] - 1;
        } else {
            // Most candidates have died when their turn comes, so the next ones come at once.
            const Node& next = vNodes[node.next];
            prefetch(next.pT);
            if (next.next != none) prefetch(vNodes[next.next].pT);
        }
        vNodes[idx].next = firstFree;
        firstFree = idx;
        --numEntries;
        return {node.pT, node.corners};
    }

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    struct Node {
        Triangle2* pT = nullptr;
        std::uint32_t corners = 0;
        std::uint32_t next = none;
    };

    static constexpr int numMantissaBits = 4;
    static constexpr std::size_t numKeys = std::size_t{2048} << numMantissaBits;
    static std::size_t bucketOf(double key) {
        return static_cast<std::size_t>(std::bit_cast<std::uint64_t>(key) >> (52 - numMantissaBits)) %
               numKeys;
    }

    std::uint32_t takeNode() {
        if (firstFree != none) {
            const std::uint32_t idx = firstFree;
            firstFree = vNodes[idx].next;
            return idx;
        }
        vNodes.emplace_back();
        return static_cast<std::uint32_t>(vNodes.size() - 1);
    }

    CornerSums sums;
    std::vector<std::uint32_t> vFirst, vLast; // by key: the ends of its list
    std::vector<std::uint64_t> vWords;        // a bit for each key that has entries
    std::vector<Node> vNodes;
    std::uint32_t firstFree = none;
    std::size_t lowestWord = numKeys / 64 - 1; // no word below has a bit
    std::size_t numEntries = 0;
};

} // namespace TESK_KIVO2D
