#pragma once

#include "Point2.h"
#include "core/HC2.h"

#include <cstddef>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

class WorkerPool;

// A point of an input array, with its key.
struct KeyedIndex {
    unsigned int key;
    unsigned int index;
};

// An array of points, then an array of pointers to points; either may be empty. The arrays must outlive it.
class PointSource {
public:
    PointSource(const Point2* aAllPoints, std::size_t num)
        : aPoints(aAllPoints), numPoints(num), numAll(num) {}
    explicit PointSource(const std::vector<Point2*>& vPointers) : PointSource(nullptr, 0, vPointers) {}
    PointSource(const Point2* aFirstPoints, std::size_t num, const std::vector<Point2*>& vPointers)
        : aPoints(aFirstPoints), numPoints(num), aPointers(vPointers.data()), numAll(num + vPointers.size()) {
    }

    const Point2& operator[](std::size_t i) const {
        return i < numPoints ? aPoints[i] : *aPointers[i - numPoints];
    }
    std::size_t size() const { return numAll; }

private:
    const Point2* aPoints;
    std::size_t numPoints;
    Point2* const* aPointers = nullptr;
    std::size_t numAll;
};

// The finite points of an array, of fewer than 2^32, in the order of their keys. Points that share a key
// follow a curve of their own over their own box, and so on, so that clusters too small for the keys are in a
// local order too. Points with equal coordinates are adjacent, the first of the array first. O(n log n),
// expected O(n) for points that keys tell apart. The same for every number of threads.
class HilbertOrder {
public:
    // Works in the spare memory if that has room for two entries a point, else in memory of its own.
    HilbertOrder(const PointSource& points, const HC2& hc, std::span<char> spareMemory, WorkerPool& pool);
    // In this thread alone.
    HilbertOrder(const PointSource& points, const HC2& hc, std::span<char> spareMemory = {});

    // As long as this object and the spare memory last.
    std::span<const KeyedIndex> entries() const& { return ordered; }
    std::span<const KeyedIndex> entries() const&& = delete;

private:
    void order(const PointSource& points, const HC2& hc, std::span<char> spareMemory, WorkerPool& pool);

    std::vector<KeyedIndex> vOwn;
    std::span<KeyedIndex> ordered;
};

} // namespace TESK_KIVO2D
