#pragma once

#include "Point2.h"

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace TESK_KIVO2D {

// A vertex with its key along the Hilbert curve.
struct KeyedVertex {
    unsigned int key;
    Point2* pVtx;
};

// The active vertices in key order. Entries lie in blocks of bounded size below one array of the blocks'
// first keys, so that both searching and inserting touch a few cache lines, at any size and in any order of
// insertion: a search costs O(log n), an insertion O(log n) plus the move of half a block.
class KeyIndex {
public:
    std::size_t size() const { return numEntries; }
    bool empty() const { return numEntries == 0; }

    // The vertex whose key is nearest; of two neighbours the upper one only if it is strictly nearer. The
    // index must not be empty.
    Point2* nearest(unsigned int key) const;

    void insert(unsigned int key, Point2* pVtx);
    // Adds entries that are in key order; equal keys come after those already there.
    void insertSorted(const std::vector<KeyedVertex>& vSorted);
    // Removes the entry of this vertex; returns false when there is none under the key.
    bool erase(unsigned int key, const Point2* pVtx);
    // Replaces the content by entries that are in key order.
    void build(const std::vector<KeyedVertex>& vSorted);

    // Calls f(key, vertex) with each entry in key order.
    template<class F>
    void forEach(F f) const {
        for (const auto& pBlock : vBlocks) {
            for (std::size_t i = 0; i < pBlock->num; ++i)
                f(pBlock->keys[i], pBlock->vertices[i]);
        }
    }

private:
    static constexpr std::size_t blockCapacity = 256;
    struct Block {
        std::size_t num = 0;
        std::array<unsigned int, blockCapacity> keys;
        std::array<Point2*, blockCapacity> vertices;

        void insertAt(std::size_t position, unsigned int key, Point2* pVtx);
        std::size_t upperBound(unsigned int key) const;
    };

    // The last block whose first key is not above the key, or the first block.
    std::size_t blockFor(unsigned int key) const;
    void splitBlock(std::size_t idx);

    std::vector<unsigned int> vFirstKeys; // of the blocks, which are never empty
    std::vector<std::unique_ptr<Block>> vBlocks;
    std::size_t numEntries = 0;
};

} // namespace TESK_KIVO2D
