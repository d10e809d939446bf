#pragma once

#include "ConstraintSegment2.h"
#include "Point2.h"
#include "core/prefetch.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

namespace TESK_KIVO2D {

// A hash table with open addressing, of slots that fill cache lines. A search begins at the first slot of a
// line and goes on line by line; no more than half of the slots are in use, so one line mostly answers it,
// whether the answer is yes or no. Nothing is ever removed. The order of slots follows addresses and differs
// from run to run: nothing may walk through a table.
//
// A slot says whether it is empty, as a slot of zero bytes must be, and knows its hash.
template<class Slot>
class LineTable {
public:
    bool empty() const { return numUsed == 0; }

    // Makes sure that num more slots can be used. Throws std::bad_alloc, with the table as it was.
    void reserve(std::size_t num) {
        if (2 * (numUsed + num) > numLines * slotsPerLine) grow(numUsed + num);
    }
    // The slot of this hash that is the same, or the empty one where it would be. Needs a reserved slot.
    template<class Same>
    Slot& seek(std::uint64_t hash, Same same) const {
        for (std::size_t i = hash >> shift;; i = (i + 1) & (numLines - 1)) {
            for (Slot& slot : pLines[i].aSlots) {
                if (slot.isEmpty() || same(slot)) return slot;
            }
        }
    }
    void use(Slot& emptySlot, const Slot& content) {
        emptySlot = content;
        ++numUsed;
    }
    void prefetchLine(std::uint64_t hash) const {
        if (numLines != 0) prefetch(static_cast<const void*>(&pLines[hash >> shift]));
    }

private:
    static constexpr std::size_t lineBytes = 64;
    static constexpr std::size_t slotsPerLine = lineBytes / sizeof(Slot);
    struct alignas(lineBytes) Line {
        Slot aSlots[slotsPerLine] = {};
    };

    void grow(std::size_t numNeeded) {
        const std::size_t num = std::bit_ceil(std::max<std::size_t>(8, 2 * numNeeded / slotsPerLine + 1));
        std::unique_ptr<Line[]> pOld = std::make_unique<Line[]>(num);
        pOld.swap(pLines);
        const std::size_t numOld = std::exchange(numLines, num);
        shift = 64 - std::countr_zero(num);
        for (std::size_t i = 0; i < numOld; ++i) {
            for (const Slot& slot : pOld[i].aSlots) {
                if (!slot.isEmpty()) seek(slot.getHash(), [](const Slot&) { return false; }) = slot;
            }
        }
    }

    std::unique_ptr<Line[]> pLines;
    std::size_t numLines = 0; // a power of 2
    int shift = 0;            // the upper bits of a hash are the index of a line
    std::size_t numUsed = 0;
};

// Finds the segment between two vertices: a hash table with lines of eight slots, one word each. Single
// segments are never removed.
//
// The line is that of the later vertex in memory, unscrambled. So segments whose vertices were made one after
// the other, as happens along a segment that crosses others, lie beside each other, and the search for them
// stays in the cache. Only what finds its line full goes to lines in scrambled order; a vertex with many
// segments costs no more than others.
class SegmentTable {
public:
    bool empty() const { return numUsed == 0; }
    // Makes sure that num more segments can be inserted. Throws std::bad_alloc, with the table as it was.
    void reserve(std::size_t num) {
        if (numUsed + num > numLines * slotsPerLine / 2) grow(numUsed + num);
    }

    // In any order of the two vertices; null when there is none.
    ConstraintSegment2* find(const Point2* p0, const Point2* p1) const {
        if (numLines == 0) return nullptr;
        return segmentOf(*seek(p0, p1));
    }
    // False, and nothing done, when there is one between its ends. Needs a reserved slot.
    bool insert(ConstraintSegment2* pCSeg) {
        std::uint64_t* const pSlot = seek(pCSeg->getSrc(), pCSeg->getTrg());
        if (*pSlot != 0) return false;
        *pSlot = slotOf(pCSeg);
        ++numUsed;
        return true;
    }
    // Empties it, and keeps its memory.
    void clear() {
        for (std::size_t i = 0; i < numLines; ++i)
            pLines[i] = {};
        numUsed = 0;
    }
    // Puts it in place of the one between its ends.
    void replace(ConstraintSegment2* pCSeg) { *seek(pCSeg->getSrc(), pCSeg->getTrg()) = slotOf(pCSeg); }
    void prefetchSlot(const Point2* p0, const Point2* p1) const {
        if (numLines == 0) return;
        const Point2* const pLater = std::less<>{}(p1, p0) ? p0 : p1;
        prefetch(static_cast<const void*>(&pLines[numberOf(pLater) & (numLines - 1)]));
    }

private:
    static constexpr std::size_t slotsPerLine = 8;
    struct alignas(64) Line {
        std::uint64_t aSlots[slotsPerLine] = {}; // 16 bits of the hash above the address; 0 while empty
    };
    static constexpr int addressBits = 48;

    static std::uint64_t numberOf(const Point2* p) { return reinterpret_cast<std::uintptr_t>(p) >> 5; }
    static std::uint64_t hashOf(const Point2* p0, const Point2* p1) {
        const std::uint64_t mixed = numberOf(p0) * 0x9E3779B97F4A7C15u + numberOf(p1);
        return (mixed ^ (mixed >> 32)) * 0xD6E8FEB86659FD93u;
    }
    static ConstraintSegment2* segmentOf(std::uint64_t slot) {
        return reinterpret_cast<ConstraintSegment2*>(slot & ((std::uint64_t{1} << addressBits) - 1));
    }
    static std::uint64_t slotOf(const ConstraintSegment2* pCSeg) {
        const std::uint64_t tag = hashOf(pCSeg->getSrc(), pCSeg->getTrg()) >> addressBits;
        return tag << addressBits | reinterpret_cast<std::uintptr_t>(pCSeg);
    }

    // The slot of the segment between the two, or the empty one where it would be.
    std::uint64_t* seek(const Point2* p0, const Point2* p1) const {
        if (std::less<>{}(p1, p0)) std::swap(p0, p1);
        const std::uint64_t hash = hashOf(p0, p1);
        std::size_t line = numberOf(p1) & (numLines - 1);
        for (std::size_t i = 0;; ++i) {
            for (std::uint64_t& slot : pLines[line].aSlots) {
                if (slot == 0) return &slot;
                if ((slot ^ hash) >> addressBits != 0) continue;
                const ConstraintSegment2* const pCSeg = segmentOf(slot);
                if (pCSeg->getSrc() == p0 && pCSeg->getTrg() == p1) return &slot;
            }
            line = (hash + i) & (numLines - 1);
        }
    }

    void grow(std::size_t numNeeded) {
        const std::size_t num = std::bit_ceil(std::max<std::size_t>(8, 2 * numNeeded / slotsPerLine + 1));
        std::unique_ptr<Line[]> pOld = std::make_unique<Line[]>(num);
        pOld.swap(pLines);
        const std::size_t numOld = std::exchange(numLines, num);
        for (std::size_t i = 0; i < numOld; ++i) {
            for (const std::uint64_t slot : pOld[i].aSlots) {
                if (slot != 0) *seek(segmentOf(slot)->getSrc(), segmentOf(slot)->getTrg()) = slot;
            }
        }
    }

    std::unique_ptr<Line[]> pLines;
    std::size_t numLines = 0; // a power of 2
    std::size_t numUsed = 0;
};

// A set of vertices, a bit each: those of 64 records that follow one another share a slot. Vertices of a pool
// mostly come in such runs.
class VertexSet {
public:
    // Makes sure that num more vertices can be inserted, wherever they lie.
    void reserve(std::size_t num) { table.reserve(num); }
    // True when the vertex is new. Throws std::bad_alloc, unless a place was reserved.
    bool insert(const Point2* pVtx) {
        table.reserve(1);
        Slot& slot = slotOf(pVtx);
        const std::uint64_t bit = bitOf(pVtx);
        if ((slot.bits & bit) != 0) return false;
        if (slot.isEmpty()) {
            table.use(slot, {groupOf(pVtx), bit});
        } else {
            slot.bits |= bit;
        }
        return true;
    }
    // True when it was there. Its slot stays in use.
    bool erase(const Point2* pVtx) {
        if (!contains(pVtx)) return false;
        slotOf(pVtx).bits &= ~bitOf(pVtx);
        return true;
    }
    bool contains(const Point2* pVtx) const {
        return !table.empty() && (slotOf(pVtx).bits & bitOf(pVtx)) != 0;
    }

private:
    struct Slot {
        std::uint64_t group;
        std::uint64_t bits;

        bool isEmpty() const { return group == 0; } // no record lies in the first page
        std::uint64_t getHash() const { return hashOf(group); }
    };

    // Records are no smaller than 32 bytes, so two of them never have the same quotient.
    static_assert(sizeof(Point2) >= 32);
    static std::uint64_t numberOf(const Point2* pVtx) { return reinterpret_cast<std::uintptr_t>(pVtx) >> 5; }
    static std::uint64_t groupOf(const Point2* pVtx) { return numberOf(pVtx) >> 6; }
    static std::uint64_t bitOf(const Point2* pVtx) { return std::uint64_t{1} << (numberOf(pVtx) & 63); }
    static std::uint64_t hashOf(std::uint64_t group) { return group * 0x9E3779B97F4A7C15u; }

    Slot& slotOf(const Point2* pVtx) const {
        const std::uint64_t group = groupOf(pVtx);
        return table.seek(hashOf(group), [=](const Slot& slot) { return slot.group == group; });
    }

    LineTable<Slot> table;
};

} // namespace TESK_KIVO2D
