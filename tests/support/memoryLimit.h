#pragma once

#include <atomic>
#include <cstdlib>
#include <new>

// Memory that runs out on purpose. For one source of a program: it replaces the program's operator new.

namespace memoryLimit {

// Allocations that succeed from now on, in whichever threads; negative: all.
inline std::atomic<long> numLeft = -1;
inline bool bStaysOut = false;

inline bool runsOut() {
    long num = numLeft.load();
    while (num >= 0 && !numLeft.compare_exchange_weak(num, num > 0 ? num - 1 : bStaysOut ? 0 : -1)) {
    }
    return num == 0;
}

} // namespace memoryLimit

// While it lives so many allocations succeed; then one fails, or all.
struct MemoryLimit {
    MemoryLimit(long numAllocations, bool bForGood) {
        memoryLimit::bStaysOut = bForGood;
        memoryLimit::numLeft = numAllocations;
    }
    ~MemoryLimit() { memoryLimit::numLeft = -1; }
};

// Not inlined: g++ would take free for a mistake.
[[gnu::noinline]] void* operator new(std::size_t numBytes, const std::nothrow_t&) noexcept {
    return memoryLimit::runsOut() ? nullptr : std::malloc(numBytes == 0 ? 1 : numBytes);
}
[[gnu::noinline]] void* operator new(std::size_t numBytes) {
    void* const p = operator new(numBytes, std::nothrow);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}
[[gnu::noinline]] void operator delete(void* p) noexcept { std::free(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { std::free(p); }
