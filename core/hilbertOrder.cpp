#include "core/hilbertOrder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <utility>

namespace TESK_KIVO2D {
namespace {

// Least significant digit first; stable, so equal keys keep the order of the array. Returns which of the two
// the result is in.
std::span<KeyedIndex> radixSort(std::span<KeyedIndex> v, std::span<KeyedIndex> other) {
    constexpr int digitBits = 10;
    constexpr unsigned int numDigits = 1u << digitBits;
    static_assert(HC2::numKeyBits % digitBits == 0);
    constexpr std::size_t numPasses = HC2::numKeyBits / digitBits;
    std::array<std::array<std::size_t, numDigits>, numPasses> starts{};
    for (const KeyedIndex& k : v) {
        for (std::size_t pass = 0; pass < numPasses; ++pass)
            ++starts[pass][(k.key >> (pass * digitBits)) % numDigits];
    }
    for (std::size_t pass = 0; pass < numPasses; ++pass) {
        std::size_t start = 0;
        for (std::size_t& s : starts[pass]) {
            const std::size_t count = s;
            s = start;
            start += count;
        }
        for (const KeyedIndex& k : v)
            other[starts[pass][(k.key >> (pass * digitBits)) % numDigits]++] = k;
        std::swap(v, other);
    }
    return v;
}

// Orders runs of equal keys.
class RunRefiner {
public:
    RunRefiner(const PointSource& source, std::span<KeyedIndex> ordered) : points(source), v(ordered) {}

    void refineAll() {
        for (std::size_t first = 0; first < v.size();) {
            const std::size_t last = endOfRun(first, v.size());
            if (last - first > 1) {
                vOpenRuns.push_back({first, last, v[first].key});
                while (!vOpenRuns.empty())
                    refineTop();
            }
            first = last;
        }
    }

private:
    struct Run {
        std::size_t first, last;
        unsigned int key; // which all its points get back when the run is in order
    };
    static constexpr std::size_t smallRun = 24;

    const Point2& point(std::size_t i) const { return points[v[i].index]; }

    std::size_t endOfRun(std::size_t first, std::size_t end) const {
        std::size_t last = first + 1;
        while (last < end && v[last].key == v[first].key)
            ++last;
        return last;
    }

    // A stack of its own, since clusters within clusters go as deep as the exponents of doubles.
    void refineTop() {
        const Run run = vOpenRuns.back();
        vOpenRuns.pop_back();
        const auto begin = v.begin() + static_cast<std::ptrdiff_t>(run.first);
        const auto end = v.begin() + static_cast<std::ptrdiff_t>(run.last);
        if (run.last - run.first > smallRun && reorderByOwnBox(run)) {
            for (std::size_t first = run.first; first < run.last;) {
                const std::size_t last = endOfRun(first, run.last);
                if (last - first > 1) vOpenRuns.push_back({first, last, run.key});
                first = last;
            }
        } else {
            std::sort(begin, end, [this](const KeyedIndex& a, const KeyedIndex& b) {
                const Point2 &p = points[a.index], &q = points[b.index];
                return p < q || (p == q && a.index < b.index);
            });
        }
        for (auto it = begin; it != end; ++it)
            it->key = run.key;
    }

    // Gives the points of the run keys over a box of their own. False when that does not tell any two apart.
    bool reorderByOwnBox(const Run& run) {
        Bbox2 box;
        for (std::size_t i = run.first; i < run.last; ++i)
            box.add(point(i));
        box.doubleTheBox(); // the cells at the two ends of an axis share their digits
        const HC2 own(box);
        for (std::size_t i = run.first; i < run.last; ++i)
            v[i].key = own.key(point(i));
        const auto begin = v.begin() + static_cast<std::ptrdiff_t>(run.first);
        const auto end = v.begin() + static_cast<std::ptrdiff_t>(run.last);
        std::sort(begin, end, [](const KeyedIndex& a, const KeyedIndex& b) {
            return a.key < b.key || (a.key == b.key && a.index < b.index);
        });
        return v[run.first].key != v[run.last - 1].key;
    }

    const PointSource& points;
    std::span<KeyedIndex> v;
    std::vector<Run> vOpenRuns;
};

} // namespace

HilbertOrder::HilbertOrder(const PointSource& points, const HC2& hc, std::span<char> spareMemory) {
    const std::size_t numAll = points.size();
    std::span<KeyedIndex> work;
    if (spareMemory.size() >= 2 * numAll * sizeof(KeyedIndex)) {
        work = {new (spareMemory.data()) KeyedIndex[2 * numAll], 2 * numAll};
    } else {
        vOwn.resize(2 * numAll);
        work = vOwn;
    }
    std::size_t num = 0;
    for (std::size_t i = 0; i < numAll; ++i) {
        const Point2& p = points[i];
        work[num] = {hc.key(p), static_cast<unsigned int>(i)};
        num += std::isfinite(p.x()) && std::isfinite(p.y()) ? 1u : 0u;
    }
    ordered = radixSort(work.first(num), work.subspan(numAll, num));
    RunRefiner(points, ordered).refineAll();
}

} // namespace TESK_KIVO2D
