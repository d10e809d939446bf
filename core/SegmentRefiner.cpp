#include "core/SegmentRefiner.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <utility>

namespace TESK_KIVO2D {
namespace {

std::uint64_t keyThenIndex(const KeyedIndex& k) { return (std::uint64_t(k.key) << 32) | k.index; }

// Stable, by the lowest bits of the keys, least significant digit first. For entries that fit the cache. The
// index of equal keys must ascend already. Returns true when the result is in the other array.
bool radixSort(std::span<KeyedIndex> v, std::span<KeyedIndex> other, int numBits) {
    constexpr std::size_t fewEntries = 48;
    if (v.size() <= fewEntries) {
        std::sort(v.begin(), v.end(),
                  [](const KeyedIndex& a, const KeyedIndex& b) { return keyThenIndex(a) < keyThenIndex(b); });
        return false;
    }
    // Digits of more values than there are entries cost more to count than further passes do.
    const int maxDigitBits = std::min(static_cast<int>(std::bit_width(v.size())), 11);
    const int numPasses = (numBits + maxDigitBits - 1) / maxDigitBits;
    const int digitBits = (numBits + numPasses - 1) / numPasses;
    const unsigned int numDigits = 1u << digitBits;
    std::array<unsigned int, 1 << 11> starts;
    bool bInOther = false;
    for (int shift = 0; shift < numBits; shift += digitBits) {
        const auto digit = [=](const KeyedIndex& k) { return (k.key >> shift) & (numDigits - 1); };
        std::fill_n(starts.begin(), numDigits, 0);
        for (const KeyedIndex& k : v)
            ++starts[digit(k)];
        if (starts[digit(v[0])] == v.size()) continue;
        unsigned int start = 0;
        for (unsigned int d = 0; d < numDigits; ++d)
            start += std::exchange(starts[d], start);
        for (const KeyedIndex& k : v)
            other[starts[digit(k)]++] = k;
        std::swap(v, other);
        bInOther = !bInOther;
    }
    return bInOther;
}

} // namespace

void SegmentRefiner::refine(const OrderSegment& segment) {
    const auto home = v.subspan(segment.first, segment.size());
    const auto away = other.subspan(segment.first, segment.size());
    bool bHome = segment.bInResult;
    if (segment.numBits > 0) bHome ^= radixSort(bHome ? home : away, bHome ? away : home, segment.numBits);
    if (!bHome) std::copy(away.begin(), away.end(), home.begin());
    if (segment.numBits != OrderSegment::inOrder) {
        pushRuns(segment.first, segment.last, segment.key);
        while (!vOpenRuns.empty())
            refineTop();
    }
    if (segment.key == OrderSegment::ownKeys) return;
    for (KeyedIndex& k : home)
        k.key = segment.key;
}

void SegmentRefiner::pushRuns(std::size_t first, std::size_t last, unsigned int key) {
    while (first < last) {
        std::size_t end = first + 1;
        while (end < last && v[end].key == v[first].key)
            ++end;
        if (end - first > 1) {
            for (std::size_t i = first; i < std::min(end, first + 4); ++i)
                prefetch(&points[v[i].index]);
            vOpenRuns.push_back({first, end, key != OrderSegment::ownKeys ? key : v[first].key});
        }
        first = end;
    }
}

void SegmentRefiner::refineTop() {
    constexpr std::size_t smallRun = 24;
    const Run run = vOpenRuns.back();
    vOpenRuns.pop_back();
    if (run.last - run.first <= smallRun || !reorderByOwnBox(run)) sortByCoordinates(run);
    for (KeyedIndex& k : v.subspan(run.first, run.last - run.first))
        k.key = run.key;
}

// Gives the points of the run keys over a box of their own. False when that does not tell any two apart.
bool SegmentRefiner::reorderByOwnBox(const Run& run) {
    const auto entries = v.subspan(run.first, run.last - run.first);
    Bbox2 box;
    forPoints(points, entries, [&](const Point2& p, const KeyedIndex&) { box.add(p); });
    if (box.getMaxRange() == 0) return true; // equal points, in order as they are
    forPoints(points, entries, [own = ownCurve(box)](const Point2& p, KeyedIndex& k) { k.key = own.key(p); });
    const auto space = other.subspan(run.first, run.last - run.first);
    if (radixSort(entries, space, HC2::numKeyBits)) std::copy(space.begin(), space.end(), entries.begin());
    if (entries.front().key == entries.back().key) return false;
    pushRuns(run.first, run.last, run.key);
    return true;
}

void SegmentRefiner::sortByCoordinates(const Run& run) {
    const auto entries = v.subspan(run.first, run.last - run.first);
    std::sort(entries.begin(), entries.end(), [this](const KeyedIndex& a, const KeyedIndex& b) {
        const Point2 &p = points[a.index], &q = points[b.index];
        return p < q || (p == q && a.index < b.index);
    });
}

} // namespace TESK_KIVO2D
