#pragma once

#include "Point2.h"
#include "kernel/assertion.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace TESK_KIVO2D {

// One bit for each hash of a vertex: a clear one proves that the vertex is no end of a constraint segment, a
// set one proves nothing. 32 kB, which stay in the nearest cache while edges are flipped.
class EndpointFilter {
public:
    bool exists() const { return pBits != nullptr; }
    // Makes the filter, with no bit set.
    void build() { pBits = std::make_unique<std::uint64_t[]>(numBits / 64); }
    // The filter must exist.
    void set(const Point2* pVtx) {
        const std::size_t hash = hashOf(pVtx);
        pBits[hash / 64] |= std::uint64_t{1} << (hash % 64);
    }
    // True when the filter exists and proves that the vertex is no end.
    bool excludes(const Point2* pVtx) const {
        if (pBits == nullptr) return false;
        const std::size_t hash = hashOf(pVtx);
        return (pBits[hash / 64] >> (hash % 64) & 1) == 0;
    }

private:
    static constexpr std::size_t numBits = 262144;

    static std::size_t hashOf(const Point2* pVtx) {
        const std::size_t hash = (reinterpret_cast<std::uintptr_t>(pVtx) >> 5) & 0x3FFFF;
        KIVO_ASSERT(hash < numBits, "hash<262144");
        return hash;
    }

    std::unique_ptr<std::uint64_t[]> pBits;
};

} // namespace TESK_KIVO2D
