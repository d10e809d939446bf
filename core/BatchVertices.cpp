#include "core/BatchVertices.h"

#include "core/prefetch.h"

#include <algorithm>
#include <functional>
#include <new>

namespace TESK_KIVO2D {
namespace {

// A part of the ordered points that no run of equal ones crosses.
struct Slice {
    std::size_t first, last;         // entries
    std::size_t numVertices, numNew; // in it; later: before it
};

class Registration {
public:
    Registration(std::span<const Point2> newPoints, const PointSource& allPoints,
                 std::span<const KeyedIndex> orderedEntries)
        : points(newPoints), source(allPoints), entries(orderedEntries) {}

    std::vector<Slice> slices(std::size_t num) const {
        std::vector<Slice> vSlices;
        std::size_t first = 0;
        for (std::size_t i = 1; i <= num; ++i) {
            std::size_t last = std::max(first, entries.size() * i / num);
            while (last > 0 && last < entries.size() && isSame(last))
                ++last;
            vSlices.push_back({first, last, 0, 0});
            first = last;
        }
        return vSlices;
    }

    void count(Slice& slice) const {
        for (std::size_t i = slice.first; i < slice.last;) {
            const Run run = runAt(i);
            ++slice.numVertices;
            slice.numNew += isOld(run.lead) ? 0u : 1u;
            i = run.last;
        }
    }

    void make(const Slice& slice, const std::vector<Point2*>& vOld, const VertexRecords& records,
              Point2** aVertices, Point2** aHandles) const {
        std::size_t numVertices = slice.numVertices, numNew = slice.numNew;
        for (std::size_t i = slice.first; i < slice.last;) {
            constexpr std::size_t ahead = 16;
            if (i + ahead < entries.size() && !isOld(entries[i + ahead].index)) {
                prefetch(&points[entries[i + ahead].index]);
                if (aHandles != nullptr) prefetch(aHandles + entries[i + ahead].index);
            }
            const Run run = runAt(i);
            Point2* const pVtx = isOld(run.lead) ? vOld[run.lead - points.size()]
                                                 : new (records[numNew++]) Point2(points[run.lead]);
            aVertices[numVertices++] = pVtx;
            for (; i < run.last; ++i) {
                if (aHandles != nullptr && !isOld(entries[i].index)) aHandles[entries[i].index] = pVtx;
            }
        }
    }

private:
    // Entries with the same coordinates. The lead is the old vertex among them, or else the first point.
    struct Run {
        std::size_t last;
        std::size_t lead;
    };

    bool isOld(std::size_t index) const { return index >= points.size(); }
    bool isSame(std::size_t i) const {
        return entries[i].key == entries[i - 1].key &&
               source[entries[i].index] == source[entries[i - 1].index];
    }
    // They are in the order of their indices, and the old ones have the highest.
    Run runAt(std::size_t first) const {
        std::size_t last = first + 1;
        while (last < entries.size() && isSame(last))
            ++last;
        const std::size_t index = entries[last - 1].index;
        return {last, isOld(index) ? index : entries[first].index};
    }

    std::span<const Point2> points;
    const PointSource& source;
    std::span<const KeyedIndex> entries;
};

} // namespace

BatchVertices::BatchVertices(std::span<const Point2> points, const std::vector<Point2*>& vOld, const HC2& hc,
                             MeshStore& store, WorkerPool& workers, Point2** aHandles) {
    const PointSource source(points.data(), points.size(), vOld);
    const HilbertOrder order(source, hc, store.spareMemory(), workers);
    const std::span<const KeyedIndex> entries = order.entries();
    if (aHandles != nullptr && entries.size() < source.size())
        std::fill(aHandles, aHandles + points.size(), nullptr);

    const Registration registration(points, source, entries);
    constexpr std::size_t slicesPerThread = 8;
    std::vector<Slice> vSlices = registration.slices(
        workers.size() == 1 ? 1 : slicesPerThread * static_cast<std::size_t>(workers.size()));
    workers.run(vSlices.size(), [&](std::size_t i, int) { registration.count(vSlices[i]); });
    std::size_t numVertices = 0, numNew = 0;
    for (Slice& slice : vSlices) {
        const Slice counted = slice;
        slice.numVertices = numVertices;
        slice.numNew = numNew;
        numVertices += counted.numVertices;
        numNew += counted.numNew;
    }
    vVertices.resize(numVertices); // touched by this thread first, as the cells of StartGrid are
    const VertexRecords records = store.takeVertices(numNew);
    const auto make = [&](std::size_t i, int) {
        registration.make(vSlices[i], vOld, records, vVertices.data(), aHandles);
    };
    workers.run(vSlices.size(), std::cref(make)); // needs no memory: records must not stay unmade
}

} // namespace TESK_KIVO2D
