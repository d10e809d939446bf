#include "core/hilbertOrder.h"

#include "core/SegmentRefiner.h"
#include "core/WorkerPool.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <new>
#include <utility>

namespace TESK_KIVO2D {
namespace {

// Of an array that several threads go through; its entries start at the front of it.
struct Slice {
    std::size_t first = 0, last = 0;
    unsigned int bitsOfAll = ~0u, bitsOfAny = 0; // of the keys
    Bbox2 box{};

    void note(unsigned int key) {
        bitsOfAll &= key;
        bitsOfAny |= key;
    }
};

// Writes entries for the finite points of the slice to its front. All by value: what is written might be
// anything else to a compiler.
Slice keyed(Slice s, PointSource points, HC2 hc, KeyedIndex* aEntries) {
    KeyedIndex* pEnd = aEntries + s.first;
    for (std::size_t i = s.first; i < s.last; ++i) {
        const Point2& p = points[i];
        const unsigned int key = hc.key(p);
        *pEnd = {key, static_cast<unsigned int>(i)};
        if (!std::isfinite(p.x()) || !std::isfinite(p.y())) continue;
        s.note(key);
        ++pEnd;
    }
    s.last = static_cast<std::size_t>(pEnd - aEntries);
    return s;
}

// Large segments are split by all threads together, the most significant digit of the keys first, until each
// fits the cache of one thread, which brings it into order alone.
class SegmentSorter {
public:
    SegmentSorter(const PointSource& source, std::span<KeyedIndex> result, std::span<KeyedIndex> otherArray,
                  WorkerPool& workers)
        : points(source), v(result), other(otherArray), pool(workers),
          maxOwn(pool.size() == 1 ? std::size_t(1) << 17 : std::size_t(1) << 15) {}

    // Returns the number of entries.
    std::size_t sort(const HC2& hc) {
        const OrderSegment all = keyAll(hc);
        if (all.size() <= maxOwn && vSlices.size() == 1)
            vOwn.push_back(all);
        else
            split(all);
        while (!vShared.empty()) {
            OrderSegment segment = vShared.back();
            vShared.pop_back();
            if (segment.numBits == 0) {
                rekey(segment);
                continue;
            }
            slice(segment.first, segment.last);
            split(segment);
        }
        refineOwn();
        return all.size();
    }

private:
    // In slices as many as do not wait for each other in the end.
    void slice(std::size_t first, std::size_t last) {
        const std::size_t num = last - first;
        const auto size = static_cast<std::size_t>(pool.size());
        const std::size_t numSlices = size == 1 ? 1 : std::clamp<std::size_t>(num / 4096, 1, 4 * size);
        vSlices.assign(numSlices, {});
        for (std::size_t i = 0; i < numSlices; ++i) {
            vSlices[i].first = first + num * i / numSlices;
            vSlices[i].last = first + num * (i + 1) / numSlices;
        }
    }
    template<class Function>
    void forSlices(const Function& function) {
        pool.run(vSlices.size(), [&function, this](std::size_t i, int) {
            Slice own = vSlices[i]; // no two threads write to one cache line all the time
            function(own, i);
            vSlices[i] = own;
        });
    }
    int numDifferentBits() const {
        Slice all;
        for (const Slice& s : vSlices) {
            all.bitsOfAll &= s.bitsOfAll;
            all.bitsOfAny |= s.bitsOfAny;
        }
        return all.bitsOfAny == 0 ? 0 : static_cast<int>(std::bit_width(all.bitsOfAll ^ all.bitsOfAny));
    }

    // The finite points of each slice move to its front. They lie in the array that is not the result.
    OrderSegment keyAll(const HC2& hc) {
        slice(0, points.size());
        forSlices([&](Slice& s, std::size_t) { s = keyed(s, points, hc, other.data()); });
        std::size_t num = 0;
        for (const Slice& s : vSlices)
            num += s.last - s.first;
        return {0, num, numDifferentBits(), OrderSegment::ownKeys, false};
    }

    // By so many bits that what comes out fits the cache when it is spread evenly. Stable.
    void split(const OrderSegment& segment) {
        const std::size_t num = segment.size();
        const int digitBits = std::min({static_cast<int>(std::bit_width(num / 1024)), 11, segment.numBits});
        const int shift = segment.numBits - digitBits;
        const std::size_t numDigits = std::size_t(1) << digitBits;
        const auto digit = [=](const KeyedIndex& k) { return (k.key >> shift) & (numDigits - 1); };
        const std::span<KeyedIndex> from = segment.bInResult ? v : other, to = segment.bInResult ? other : v;
        vStarts.assign(vSlices.size() * numDigits, 0);
        forSlices([&, from, digit](const Slice& s, std::size_t i) {
            unsigned int* aCounts = vStarts.data() + i * numDigits;
            for (std::size_t k = s.first; k < s.last; ++k)
                ++aCounts[digit(from[k])];
        });
        OrderSegment part = segment;
        part.numBits = shift;
        part.bInResult = !segment.bInResult;
        std::size_t start = segment.first;
        for (std::size_t d = 0; d < numDigits; ++d) {
            part.first = start;
            for (std::size_t i = 0; i < vSlices.size(); ++i)
                start += std::exchange(vStarts[i * numDigits + d], static_cast<unsigned int>(start));
            part.last = start;
            add(part);
        }
        forSlices([&, from, to, digit](const Slice& s, std::size_t i) {
            unsigned int* aStarts = vStarts.data() + i * numDigits;
            for (std::size_t k = s.first; k < s.last; ++k)
                to[aStarts[digit(from[k])]++] = from[k];
        });
    }

    void add(const OrderSegment& segment) {
        if (segment.size() > maxOwn)
            vShared.push_back(segment);
        else if (segment.size() > 0)
            vOwn.push_back(segment);
    }

    // Points that share a key, so many that they are worth several threads, get keys over their own box.
    void rekey(OrderSegment& segment) {
        const std::span<KeyedIndex> entries = segment.bInResult ? v : other;
        slice(segment.first, segment.last);
        forSlices([&](Slice& s, std::size_t) {
            forPoints(points, entries.subspan(s.first, s.last - s.first),
                      [&](const Point2& p, const KeyedIndex&) { s.box.add(p); });
        });
        Bbox2 box;
        for (const Slice& s : vSlices) {
            box.add(s.box.getMinPoint());
            box.add(s.box.getMaxPoint());
        }
        if (segment.key == OrderSegment::ownKeys) segment.key = entries[segment.first].key;
        if (box.getMaxRange() == 0) return addInOrder(segment);
        forSlices([&, own = ownCurve(box)](Slice& s, std::size_t) {
            forPoints(points, entries.subspan(s.first, s.last - s.first),
                      [&](const Point2& p, KeyedIndex& k) {
                          k.key = own.key(p);
                          s.note(k.key);
                      });
        });
        segment.numBits = numDifferentBits();
        if (segment.numBits > 0)
            vShared.push_back(segment);
        else
            vOwn.push_back(segment); // different points so near that keys do not tell them apart
    }

    void addInOrder(OrderSegment segment) {
        segment.numBits = OrderSegment::inOrder;
        for (std::size_t last = segment.last; segment.first < last; segment.first = segment.last) {
            segment.last = std::min(segment.first + maxOwn, last);
            vOwn.push_back(segment);
        }
    }

    void refineOwn() {
        std::vector<SegmentRefiner> vRefiners(static_cast<std::size_t>(pool.size()),
                                              SegmentRefiner(points, v, other));
        // Several small ones make a task.
        std::vector<std::size_t> vTasks;
        std::size_t num = maxOwn;
        for (std::size_t i = 0; i < vOwn.size(); ++i) {
            if (num >= maxOwn / 2) {
                vTasks.push_back(i);
                num = 0;
            }
            num += vOwn[i].size();
        }
        const std::size_t numTasks = vTasks.size();
        vTasks.push_back(vOwn.size());
        pool.run(numTasks, [&](std::size_t task, int thread) {
            for (std::size_t i = vTasks[task]; i < vTasks[task + 1]; ++i)
                vRefiners[static_cast<std::size_t>(thread)].refine(vOwn[i]);
        });
    }

    const PointSource& points;
    std::span<KeyedIndex> v, other;
    WorkerPool& pool;
    const std::size_t maxOwn; // the largest segment that a thread sorts alone
    std::vector<Slice> vSlices;
    std::vector<unsigned int> vStarts; // of each slice, where the next entry with a digit goes
    std::vector<OrderSegment> vShared,
        vOwn; // yet to be split by all threads, to be brought into order by one
};

} // namespace

HilbertOrder::HilbertOrder(const PointSource& points, const HC2& hc, std::span<char> spareMemory,
                           WorkerPool& pool) {
    order(points, hc, spareMemory, pool);
}

HilbertOrder::HilbertOrder(const PointSource& points, const HC2& hc, std::span<char> spareMemory) {
    WorkerPool caller(1);
    order(points, hc, spareMemory, caller);
}

void HilbertOrder::order(const PointSource& points, const HC2& hc, std::span<char> spareMemory,
                         WorkerPool& pool) {
    const std::size_t num = points.size();
    if (num == 0) return;
    std::span<KeyedIndex> work;
    if (spareMemory.size() >= 2 * num * sizeof(KeyedIndex)) {
        work = {new (spareMemory.data()) KeyedIndex[2 * num], 2 * num};
    } else {
        vOwn.resize(2 * num);
        work = vOwn;
    }
    const std::span<KeyedIndex> result = work.first(num);
    ordered = result.first(SegmentSorter(points, result, work.last(num), pool).sort(hc));
}

} // namespace TESK_KIVO2D
