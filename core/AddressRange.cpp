#include "core/AddressRange.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

namespace TESK_KIVO2D {
namespace {

constexpr std::size_t hugePageBytes = std::size_t(1) << 21;

std::size_t pageBytes() {
    static const std::size_t bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

std::size_t roundedUp(std::size_t bytes, std::size_t unit) { return (bytes + unit - 1) / unit * unit; }

char* reserve(std::size_t numBytes, char* pHint) {
    void* p = mmap(pHint, numBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return p == MAP_FAILED ? nullptr : static_cast<char*>(p);
}

// Looks for a place above the floor: the system's own choice first, then a few hints that lie ever higher.
char* reserveAbove(std::size_t numBytes, const void* pFloor) {
    char* pFound = reserve(numBytes, nullptr);
    const std::uintptr_t floor = reinterpret_cast<std::uintptr_t>(pFloor);
    std::uintptr_t hint = roundedUp(floor, hugePageBytes);
    for (int i = 0; i < 16 && pFound != nullptr && reinterpret_cast<std::uintptr_t>(pFound) < floor; ++i) {
        char* pOther = reserve(numBytes, reinterpret_cast<char*>(hint));
        if (pOther == nullptr) break;
        if (reinterpret_cast<std::uintptr_t>(pOther) >= floor) std::swap(pFound, pOther);
        munmap(pOther, numBytes);
        hint += std::uintptr_t(numBytes) << i;
    }
    return pFound;
}

} // namespace

AddressRange::AddressRange(std::size_t numBytes, std::size_t minBytes, const void* pFloor) {
    const std::size_t leastBytes = roundedUp(minBytes, pageBytes());
    numReserved = std::max(roundedUp(numBytes, pageBytes()), leastBytes);
    while ((pBegin = reserveAbove(numReserved, pFloor)) == nullptr) {
        if (numReserved == leastBytes) throw std::bad_alloc();
        numReserved = std::max(leastBytes, roundedUp(numReserved / 4, pageBytes()));
    }
}

AddressRange::~AddressRange() {
    if (pBegin != nullptr) munmap(pBegin, numReserved);
}

AddressRange::AddressRange(AddressRange&& other) noexcept
    : pBegin(std::exchange(other.pBegin, nullptr)), numReserved(other.numReserved),
      numCommitted(other.numCommitted) {}

bool AddressRange::commit(std::size_t numBytes) {
    if (numBytes <= numCommitted) return true;
    // In steps of huge pages once there is more than one of them, so that small blocks cost few calls.
    const std::size_t unit = numBytes > hugePageBytes ? hugePageBytes : pageBytes();
    const std::size_t wanted = std::min(roundedUp(numBytes, unit), numReserved);
    if (wanted < numBytes) return false;
    if (mprotect(pBegin + numCommitted, wanted - numCommitted, PROT_READ | PROT_WRITE) != 0) return false;
#ifdef MADV_HUGEPAGE
    // Fewer page faults and fewer translation misses; a hint only.
    if (wanted - numCommitted >= hugePageBytes)
        madvise(pBegin + numCommitted, wanted - numCommitted, MADV_HUGEPAGE);
#endif
    numCommitted = wanted;
    return true;
}

} // namespace TESK_KIVO2D
