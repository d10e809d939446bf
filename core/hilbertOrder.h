#pragma once

#include "Point2.h"
#include "core/HC2.h"

#include <cstddef>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// A point of an input array, with its key.
struct KeyedIndex {
    unsigned int key;
    unsigned int index;
};

// An array of points or of pointers to points.
class PointSource {
public:
    PointSource(const Point2* aAllPoints, std::size_t num) : aPoints(aAllPoints), numPoints(num) {}
    explicit PointSource(const std::vector<Point2*>& vPointers)
        : aPointers(vPointers.data()), numPoints(vPointers.size()) {}

    const Point2& operator[](std::size_t i) const { return aPoints != nullptr ? aPoints[i] : *aPointers[i]; }
    std::size_t size() const { return numPoints; }

private:
    const Point2* aPoints = nullptr;
    Point2* const* aPointers = nullptr;
    std::size_t numPoints;
};

// The finite points of an array, of fewer than 2^32, in the order of their keys. Points that share a key
// follow a curve of their own over their own box, and so on, so that clusters too small for the keys are in a
// local order too. Points with equal coordinates are adjacent, the first of the array first. O(n log n),
// expected O(n) for points that keys tell apart.
class HilbertOrder {
public:
    // Works in the spare memory if that has room for two entries a point, else in memory of its own.
    HilbertOrder(const PointSource& points, const HC2& hc, std::span<char> spareMemory = {});

    // As long as this object and the spare memory last.
    std::span<const KeyedIndex> entries() const& { return ordered; }
    std::span<const KeyedIndex> entries() const&& = delete;

private:
    std::vector<KeyedIndex> vOwn;
    std::span<KeyedIndex> ordered;
};

} // namespace TESK_KIVO2D
