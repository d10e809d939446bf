#pragma once

#include "core/AddressRange.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// Hands out records of one type, one by one from large blocks, and releases all of them together. Blocks
// never move. They are carved from one reserved run of addresses, so that addresses ascend in the order in
// which records are handed out: orders by address are orders of creation, in every run. (Should a pool
// outgrow what could be reserved, the next run is sought above; only when the address space has no room there
// does the order break.)
//
// Records are raw memory; the caller constructs them. Their destructors never run.
template<class T>
class SimplePool {
public:
    static constexpr int maxBlockCapacity = static_cast<int>(100000000 / sizeof(T));

    // Starts the first block of up to numFirstBlock records. A second call complains and starts a further
    // block.
    void init(std::int64_t numFirstBlock) {
        if (initialized) printText("SimplePool::init(..), ERROR: This pool is already initialized\n");
        numExpected = static_cast<std::size_t>(std::max<std::int64_t>(numFirstBlock, 1));
        startBlock(static_cast<int>(std::clamp<std::int64_t>(numFirstBlock, 1, maxBlockCapacity)));
        initialized = true; // not before there is a block
    }

    // Serves from these records, which are another pool's, and has no more.
    void borrow(std::span<T> records) {
        vBlocks.push_back({records.data(), static_cast<int>(records.size())});
        enterBlock(0);
        initialized = true;
    }

    bool isInitialized() const { return initialized; }

    // The next record. Throws std::bad_alloc, after a message, when memory runs out.
    T* alloc() {
        KIVO_ASSERT(initialized, "initialized");
        if (pNext == pBlockEnd) enterNextBlock();
        return pNext++;
    }

    // Makes sure that the next num calls of alloc succeed.
    void reserve(std::size_t num) {
        KIVO_ASSERT(initialized, "initialized");
        if (static_cast<std::size_t>(pBlockEnd - pNext) >= num) return;
        std::size_t numFree = static_cast<std::size_t>(pBlockEnd - pNext);
        for (std::size_t i = idxCurrent + 1; i < vBlocks.size(); ++i) {
            numFree += static_cast<std::size_t>(vBlocks[i].capacity);
        }
        while (numFree < num) {
            addBlock(nextCapacity());
            numFree += static_cast<std::size_t>(vBlocks.back().capacity);
        }
    }

    // Hands out so many records that follow one another; none if those that are reserved do not.
    std::span<T> allocRun(std::size_t num) {
        KIVO_ASSERT(initialized, "initialized");
        if (num > spare().size() / sizeof(T)) return {};
        T* const pBegin = pNext;
        for (std::size_t numLeft = num; numLeft > 0;) {
            if (pNext == pBlockEnd) enterNextBlock();
            const std::size_t numHere = std::min(numLeft, static_cast<std::size_t>(pBlockEnd - pNext));
            pNext += numHere;
            numLeft -= numHere;
        }
        return {pBegin, num};
    }
    // True when all records, made and reserved, are one run of at least so many.
    bool isOneRun(std::size_t num) const {
        std::size_t numRuns = 0, numRecords = 0;
        forEachReservedRun([&](const T*, std::size_t numOfRun) {
            ++numRuns;
            numRecords += numOfRun;
        });
        return numRuns == 1 && numRecords >= num;
    }
    // Takes all records back, and keeps what is reserved.
    void takeBackAll() {
        numBefore = 0;
        idxCurrent = 0;
        enterBlock(0);
    }

    // Memory of reserved records that follow one another, for passing use: the next alloc ends it.
    std::span<char> spare() const {
        char* const pBegin = reinterpret_cast<char*>(pNext);
        const T* pEnd = pBlockEnd;
        for (std::size_t i = idxCurrent + 1; i < vBlocks.size() && vBlocks[i].pBegin == pEnd; ++i)
            pEnd += vBlocks[i].capacity;
        return {pBegin, static_cast<std::size_t>(pEnd - pNext) * sizeof(T)};
    }

    // The first record, or null while there is no block.
    const T* first() const { return vBlocks.empty() ? nullptr : vBlocks.front().pBegin; }
    // Calls f with each record handed out so far, in order.
    template<class F>
    void forEach(F f) const {
        for (std::size_t i = 0; i < vBlocks.size() && i <= idxCurrent; ++i) {
            T* const pEnd = i == idxCurrent ? pNext : vBlocks[i].pBegin + vBlocks[i].capacity;
            for (T* p = vBlocks[i].pBegin; p != pEnd; ++p)
                f(p);
        }
    }
    // The same by runs of records that follow one another in memory: calls f with the first record and their
    // number. All records are one run, as long as the first range of addresses suffices.
    template<class F>
    void forEachRun(F f) const {
        joinBlocks(
            idxCurrent, [this](std::size_t i) { return i == idxCurrent ? pNext : endOf(i); }, f);
    }
    // The same with what is reserved after the records handed out.
    template<class F>
    void forEachReservedRun(F f) const {
        joinBlocks(
            vBlocks.size(), [this](std::size_t i) { return endOf(i); }, f);
    }
    // True for the address of a record that was handed out. O(number of blocks), which is that of a
    // logarithm.
    bool isRecord(const void* p) const {
        bool bFound = false;
        forEachRun([&](const T* pBegin, std::size_t num) {
            const auto offset =
                reinterpret_cast<std::uintptr_t>(p) - reinterpret_cast<std::uintptr_t>(pBegin);
            bFound = bFound || (offset < num * sizeof(T) && offset % sizeof(T) == 0);
        });
        return bFound;
    }
    // Changes whenever more is reserved.
    std::size_t numberOfBlocks() const { return vBlocks.size(); }
    // Number of records handed out so far.
    std::size_t size() const {
        return initialized ? numBefore + static_cast<std::size_t>(pNext - vBlocks[idxCurrent].pBegin) : 0;
    }

    std::vector<int> blockCapacities() const {
        std::vector<int> vCapacities;
        for (const Block& block : vBlocks)
            vCapacities.push_back(block.capacity);
        return vCapacities;
    }

private:
    struct Block {
        T* pBegin;
        int capacity;
    };

    T* endOf(std::size_t i) const { return vBlocks[i].pBegin + vBlocks[i].capacity; }

    // Calls f with the first record and the number of records of each run of blocks that follow one another,
    // up to the last index given.
    template<class End, class F>
    void joinBlocks(std::size_t last, End end, F f) const {
        T *pBegin = nullptr, *pEnd = nullptr;
        for (std::size_t i = 0; i < vBlocks.size() && i <= last; ++i) {
            if (vBlocks[i].pBegin != pEnd) {
                if (pBegin != pEnd) f(pBegin, static_cast<std::size_t>(pEnd - pBegin));
                pBegin = vBlocks[i].pBegin;
            }
            pEnd = end(i);
        }
        if (pBegin != pEnd) f(pBegin, static_cast<std::size_t>(pEnd - pBegin));
    }

    // One block so far: half of it; else twice the latest.
    int nextCapacity() const {
        const std::int64_t last = vBlocks.back().capacity;
        const std::int64_t capacity = vBlocks.size() == 1 ? (last / 2 == 0 ? last : last / 2) : 2 * last;
        return static_cast<int>(std::min<std::int64_t>(capacity, maxBlockCapacity));
    }

    void enterNextBlock() {
        if (idxCurrent + 1 == vBlocks.size()) addBlock(nextCapacity());
        enterBlock(idxCurrent + 1);
    }

    void startBlock(int capacity) {
        addBlock(capacity);
        enterBlock(vBlocks.size() - 1);
    }

    void enterBlock(std::size_t idx) {
        for (std::size_t i = idxCurrent; i < idx; ++i)
            numBefore += static_cast<std::size_t>(vBlocks[i].capacity);
        idxCurrent = idx;
        pNext = vBlocks[idx].pBegin;
        pBlockEnd = pNext + vBlocks[idx].capacity;
    }

    void addBlock(int capacity) {
        const std::size_t numBytes = static_cast<std::size_t>(capacity) * sizeof(T);
        try {
            if (vRanges.empty() || vRanges.back().size() - numUsed < numBytes) addRange(numBytes);
            if (!vRanges.back().commit(numUsed + numBytes)) throw std::bad_alloc();
            vBlocks.push_back({reinterpret_cast<T*>(vRanges.back().begin() + numUsed), capacity});
        } catch (const std::bad_alloc&) {
            printText("SimplePool::alloc(..), ERROR: Out of memory\n");
            throw;
        }
        numUsed += numBytes;
    }

    void addRange(std::size_t numBlockBytes) {
        // 2^28 records: more than any estimate gone wrong, and little enough to leave room for thousands of
        // pools.
        constexpr std::size_t usualBytes = (std::size_t(1) << 28) * sizeof(T);
        const void* pFloor = vRanges.empty() ? nullptr : vRanges.back().begin() + vRanges.back().size();
        const std::size_t numBytes = std::max({usualBytes, 16 * numBlockBytes, 2 * sizeof(T) * numExpected});
        vRanges.emplace_back(numBytes, numBlockBytes, pFloor);
        numUsed = 0;
    }

    T* pNext = nullptr;
    T* pBlockEnd = nullptr;
    bool initialized = false;
    std::size_t idxCurrent = 0;  // the block that alloc serves from
    std::size_t numBefore = 0;   // records of the blocks before it
    std::size_t numExpected = 0; // in all, when the pool was made
    std::size_t numUsed = 0;     // bytes of the last range that belong to blocks
    std::vector<Block> vBlocks;  // blocks behind the current one were reserved ahead
    std::vector<AddressRange> vRanges;
};

} // namespace TESK_KIVO2D
