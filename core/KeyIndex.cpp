#include "core/KeyIndex.h"

#include <algorithm>

namespace TESK_KIVO2D {

void KeyIndex::Block::insertAt(std::size_t position, unsigned int key, Point2* pVtx) {
    std::copy_backward(keys.begin() + position, keys.begin() + num, keys.begin() + num + 1);
    std::copy_backward(vertices.begin() + position, vertices.begin() + num, vertices.begin() + num + 1);
    keys[position] = key;
    vertices[position] = pVtx;
    ++num;
}

std::size_t KeyIndex::Block::upperBound(unsigned int key) const {
    return static_cast<std::size_t>(std::upper_bound(keys.begin(), keys.begin() + num, key) - keys.begin());
}

std::size_t KeyIndex::blockFor(unsigned int key) const {
    const auto above = std::upper_bound(vFirstKeys.begin(), vFirstKeys.end(), key);
    return above == vFirstKeys.begin() ? 0 : static_cast<std::size_t>(above - vFirstKeys.begin() - 1);
}

Point2* KeyIndex::nearest(unsigned int key) const {
    const std::size_t idx = blockFor(key);
    const Block& block = *vBlocks[idx];
    const std::size_t position = block.upperBound(key);
    if (position == 0) return block.vertices[0]; // the key is below all others
    const std::size_t lower = position - 1;
    const bool bInBlock = position < block.num;
    if (!bInBlock && idx + 1 == vBlocks.size()) return block.vertices[lower];
    const unsigned int upperKey = bInBlock ? block.keys[position] : vFirstKeys[idx + 1];
    if (upperKey - key >= key - block.keys[lower]) return block.vertices[lower];
    return bInBlock ? block.vertices[position] : vBlocks[idx + 1]->vertices[0];
}

void KeyIndex::insert(unsigned int key, Point2* pVtx) {
    if (vBlocks.empty()) {
        build({{key, pVtx}});
        return;
    }
    std::size_t idx = blockFor(key);
    if (vBlocks[idx]->num == blockCapacity) {
        splitBlock(idx);
        idx = blockFor(key);
    }
    Block& block = *vBlocks[idx];
    block.insertAt(block.upperBound(key), key, pVtx);
    vFirstKeys[idx] = block.keys[0];
    ++numEntries;
}

void KeyIndex::splitBlock(std::size_t idx) {
    Block& lower = *vBlocks[idx];
    auto pUpper = std::make_unique<Block>();
    const std::size_t numLower = lower.num / 2;
    pUpper->num = lower.num - numLower;
    std::copy(lower.keys.begin() + numLower, lower.keys.begin() + lower.num, pUpper->keys.begin());
    std::copy(lower.vertices.begin() + numLower, lower.vertices.begin() + lower.num,
              pUpper->vertices.begin());
    vFirstKeys.reserve(vFirstKeys.size() + 1); // both arrays grow or neither
    const unsigned int firstKey = pUpper->keys[0];
    const auto position = static_cast<std::ptrdiff_t>(idx) + 1;
    vBlocks.insert(vBlocks.begin() + position, std::move(pUpper));
    vFirstKeys.insert(vFirstKeys.begin() + position, firstKey);
    lower.num = numLower;
}

void KeyIndex::insertSorted(const std::vector<KeyedVertex>& vSorted) {
    if (vSorted.size() < numEntries / 8) {
        for (const KeyedVertex& entry : vSorted)
            insert(entry.key, entry.pVtx);
        return;
    }
    if (empty()) {
        build(vSorted);
        return;
    }
    std::vector<KeyedVertex> vMerged;
    vMerged.reserve(numEntries + vSorted.size());
    std::size_t next = 0;
    forEach([&](unsigned int key, Point2* pVtx) {
        while (next < vSorted.size() && vSorted[next].key < key)
            vMerged.push_back(vSorted[next++]);
        vMerged.push_back({key, pVtx});
    });
    vMerged.insert(vMerged.end(), vSorted.begin() + static_cast<std::ptrdiff_t>(next), vSorted.end());
    build(vMerged);
}

bool KeyIndex::erase(unsigned int key, const Point2* pVtx) {
    if (empty()) return false;
    // Entries with this key end in the block found and may begin in blocks before it.
    for (std::size_t idx = blockFor(key) + 1; idx-- > 0;) {
        Block& block = *vBlocks[idx];
        for (std::size_t i = block.upperBound(key); i-- > 0 && block.keys[i] == key;) {
            if (block.vertices[i] != pVtx) continue;
            std::copy(block.keys.begin() + i + 1, block.keys.begin() + block.num, block.keys.begin() + i);
            std::copy(block.vertices.begin() + i + 1, block.vertices.begin() + block.num,
                      block.vertices.begin() + i);
            --numEntries;
            if (--block.num == 0) {
                vBlocks.erase(vBlocks.begin() + static_cast<std::ptrdiff_t>(idx));
                vFirstKeys.erase(vFirstKeys.begin() + static_cast<std::ptrdiff_t>(idx));
            } else {
                vFirstKeys[idx] = block.keys[0];
            }
            return true;
        }
        if (block.keys[0] < key) break;
    }
    return false;
}

void KeyIndex::build(const std::vector<KeyedVertex>& vSorted) {
    std::vector<std::unique_ptr<Block>> vNewBlocks;
    std::vector<unsigned int> vNewFirstKeys;
    vNewBlocks.reserve(vSorted.size() / blockCapacity + 1);
    vNewFirstKeys.reserve(vNewBlocks.capacity());
    for (std::size_t first = 0; first < vSorted.size(); first += blockCapacity) {
        auto pBlock = std::make_unique<Block>();
        pBlock->num = std::min(blockCapacity, vSorted.size() - first);
        for (std::size_t i = 0; i < pBlock->num; ++i) {
            pBlock->keys[i] = vSorted[first + i].key;
            pBlock->vertices[i] = vSorted[first + i].pVtx;
        }
        vNewFirstKeys.push_back(pBlock->keys[0]);
        vNewBlocks.push_back(std::move(pBlock));
    }
    vBlocks = std::move(vNewBlocks);
    vFirstKeys = std::move(vNewFirstKeys);
    numEntries = vSorted.size();
}

} // namespace TESK_KIVO2D
