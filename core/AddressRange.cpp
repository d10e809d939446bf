#include "core/AddressRange.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

namespace TESK_KIVO2D {
namespace {

constexpr std::size_t commitUnit = std::size_t(1) << 21;
constexpr std::size_t hugePagesFrom = std::size_t(1) << 28;

std::size_t systemValue(int name) { return static_cast<std::size_t>(std::max(sysconf(name), 1L)); }

std::size_t pageBytes() {
    static const std::size_t bytes = systemValue(_SC_PAGESIZE);
    return bytes;
}

std::size_t roundedUp(std::size_t bytes, std::size_t unit) { return (bytes + unit - 1) / unit * unit; }

char* reserve(std::size_t numBytes, char* pHint) {
    void* p = mmap(pHint, numBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return p == MAP_FAILED ? nullptr : static_cast<char*>(p);
}

bool isAbove(const void* p, const void* pFloor) {
    return reinterpret_cast<std::uintptr_t>(p) >= reinterpret_cast<std::uintptr_t>(pFloor);
}

// Looks for a place above the floor: the system's own choice first, then a few hints that lie ever higher.
char* reserveAbove(std::size_t numBytes, const void* pFloor) {
    char* pFound = reserve(numBytes, nullptr);
    std::uintptr_t hint = roundedUp(reinterpret_cast<std::uintptr_t>(pFloor), commitUnit);
    for (int i = 0; i < 16 && pFound != nullptr && !isAbove(pFound, pFloor); ++i) {
        char* pOther = reserve(numBytes, reinterpret_cast<char*>(hint));
        if (pOther == nullptr) break;
        if (isAbove(pOther, pFloor)) std::swap(pFound, pOther);
        munmap(pOther, numBytes);
        hint += std::uintptr_t(numBytes) << i;
    }
    return pFound;
}

} // namespace

// The ranges that are kept, for the whole process.
class KeptRanges {
public:
    using Place = AddressRange::Place;

    // Null when the process is ending and what it kept is gone.
    static KeptRanges* get() {
        static KeptRanges theRanges;
        return bGone ? nullptr : &theRanges;
    }

    ~KeptRanges() {
        bGone = true;
        for (const Place& place : aPlaces)
            if (place.pBegin != nullptr) munmap(place.pBegin, place.numReserved);
    }

    // The smallest kept place of this size above the floor, or an empty one.
    Place take(std::size_t numBytes, const void* pFloor) {
        const std::lock_guard lock(mutex);
        Place* pBest = nullptr;
        for (Place& place : aPlaces) {
            if (place.pBegin == nullptr || place.numReserved < numBytes || !isAbove(place.pBegin, pFloor))
                continue;
            if (pBest == nullptr || place.numReserved < pBest->numReserved) pBest = &place;
        }
        if (pBest == nullptr) return {};
        numKeptBytes -= pBest->numUsable;
        return std::exchange(*pBest, {});
    }

    // False when there is no room for it.
    bool keep(const Place& place, std::size_t numTouched) {
        // Little memory stays as it is: telling the system would cost more than it holds.
        constexpr std::size_t little = std::size_t(1) << 19;
        const std::lock_guard lock(mutex);
        if (numKeptBytes + place.numUsable > mostKeptBytes) return false;
        for (Place& kept : aPlaces) {
            if (kept.pBegin != nullptr) continue;
            if (numTouched > little && !makeReclaimable(place.pBegin, numTouched)) return false;
            kept = place;
            numKeptBytes += place.numUsable;
            return true;
        }
        return false;
    }

private:
    static bool makeReclaimable([[maybe_unused]] char* p, [[maybe_unused]] std::size_t numBytes) {
#ifdef MADV_FREE
        return madvise(p, numBytes, MADV_FREE) == 0;
#else
        return false;
#endif
    }

    inline static std::atomic<bool> bGone = false;
    const std::size_t mostKeptBytes = systemValue(_SC_PHYS_PAGES) / 16 * pageBytes();
    std::mutex mutex;
    std::array<Place, 4> aPlaces; // the pools of two triangulations
    std::size_t numKeptBytes = 0;
};

AddressRange::AddressRange(std::size_t numBytes, std::size_t minBytes, const void* pFloor) {
    if (KeptRanges* pKept = KeptRanges::get()) place = pKept->take(roundedUp(numBytes, pageBytes()), pFloor);
    if (place.pBegin != nullptr) return;
    const std::size_t leastBytes = roundedUp(minBytes, pageBytes());
    place.numReserved = std::max(roundedUp(numBytes, pageBytes()), leastBytes);
    while ((place.pBegin = reserveAbove(place.numReserved, pFloor)) == nullptr) {
        if (place.numReserved == leastBytes) throw std::bad_alloc();
        place.numReserved = std::max(leastBytes, roundedUp(place.numReserved / 4, pageBytes()));
    }
}

AddressRange::~AddressRange() {
    if (place.pBegin == nullptr) return;
    KeptRanges* const pKept = KeptRanges::get();
    if (pKept == nullptr || !pKept->keep(place, numCommitted)) munmap(place.pBegin, place.numReserved);
}

AddressRange::AddressRange(AddressRange&& other) noexcept
    : place(std::exchange(other.place, {})), numCommitted(other.numCommitted) {}

bool AddressRange::commit(std::size_t numBytes) {
    if (numBytes > place.numUsable) {
        // In large steps once there is more than one of them, so that small blocks cost few calls.
        const std::size_t unit = numBytes > commitUnit ? commitUnit : pageBytes();
        const std::size_t wanted = std::min(roundedUp(numBytes, unit), place.numReserved);
        if (wanted < numBytes) return false;
        char* const pNew = place.pBegin + place.numUsable;
        if (mprotect(pNew, wanted - place.numUsable, PROT_READ | PROT_WRITE) != 0) return false;
#ifdef MADV_HUGEPAGE
        // Fewer faults and translations; a hint only. Not for what small memories get: whole huge pages are
        // what a virtual machine has handed back to its host, and costly to get again.
        if (place.numUsable >= hugePagesFrom) madvise(pNew, wanted - place.numUsable, MADV_HUGEPAGE);
#endif
        place.numUsable = wanted;
    }
    numCommitted = std::max(numCommitted, numBytes);
    return true;
}

} // namespace TESK_KIVO2D
