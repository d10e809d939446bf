#include "core/MeshStore.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>

namespace TESK_KIVO2D {

namespace {

// The first one of the pool at the end, where it is taken first.
template<class T>
void sortFree(std::vector<T*>& vFree, const RecordNumbers<T>& numbers) {
    if (std::is_sorted(vFree.rbegin(), vFree.rend(), std::less<>())) return;
    std::vector<std::uint64_t> vBits(numbers.size() / 64 + 1);
    for (const T* const p : vFree) {
        const std::size_t number = numbers.numberOf(p);
        vBits[number / 64] |= std::uint64_t{1} << (number % 64);
    }
    auto pFree = vFree.rbegin();
    numbers.forEachRun([&](T* pBegin, std::size_t num, std::size_t first) {
        for (std::size_t i = first; i < first + num; i += 64 - i % 64) {
            // From this number on.
            for (std::uint64_t bits = vBits[i / 64] >> (i % 64) << (i % 64); bits != 0; bits &= bits - 1) {
                const std::size_t number = i / 64 * 64 + static_cast<std::size_t>(std::countr_zero(bits));
                if (number < first + num) *pFree++ = pBegin + (number - first);
            }
        }
    });
}

} // namespace

void MeshStore::prepareBatch(std::size_t numVertices) {
    constexpr std::size_t fewer = 1000; // their neighbourhoods are in the cache
    if (numVertices < fewer || vDeadT.size() > 16 * numVertices || vFreeVtx.size() > 8 * numVertices) return;
    // The bits of all records are walked through.
    if (trianglePool.size() > 1024 * numVertices || vDeadT.size() + vFreeVtx.size() < fewer) return;
    try {
        sortFree(vFreeVtx, vertexNumbers());
        sortFree(vDeadT, triangleNumbers());
    } catch (const std::bad_alloc&) { // slower is good enough
    }
}

MeshStore::MeshStore(unsigned int numExpectedVertices) {
    const std::int64_t num = std::max<std::int64_t>(3, numExpectedVertices);
    vertexPool.init(num);
    trianglePool.init(2 * num + 10);
}

VertexRecords MeshStore::takeVertices(std::size_t num) {
    const std::size_t numUsed = std::min(num, vFreeVtx.size());
    std::vector<Point2*> vUsed(vFreeVtx.rbegin(), vFreeVtx.rbegin() + static_cast<std::ptrdiff_t>(numUsed));
    vertexPool.reserve(num - numUsed);
    std::span<Point2> fresh = vertexPool.allocRun(num - numUsed);
    if (fresh.size() < num - numUsed) { // the pool has outgrown its first range of addresses
        vUsed.reserve(num);
        while (vUsed.size() < num)
            vUsed.push_back(vertexPool.alloc());
    }
    vFreeVtx.resize(vFreeVtx.size() - numUsed);
    return {std::move(vUsed), fresh};
}

} // namespace TESK_KIVO2D
