#pragma once

#include "core/HC2.h"
#include "core/hilbertOrder.h"
#include "core/prefetch.h"

#include <cstddef>
#include <limits>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// Entries in one of two arrays, at the places that they have in the order, too, but not in order yet.
struct OrderSegment {
    static constexpr unsigned int ownKeys = std::numeric_limits<unsigned int>::max();
    static constexpr int inOrder = -1;

    std::size_t first, last;
    // The lower bits of the keys that are still to be sorted by; the upper ones are the same for all. 0: the
    // points share a key and want keys over a box of their own. inOrder: nothing is left to do.
    int numBits;
    unsigned int key; // which all of them get back in the end, or ownKeys when they have theirs
    bool bInResult;   // else in the other array

    std::size_t size() const { return last - first; }
};

// The points of entries, which are all over the memory: several are fetched at a time.
template<class Function>
void forPoints(const PointSource& points, std::span<KeyedIndex> entries, const Function& function) {
    constexpr std::size_t ahead = 24;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i + ahead < entries.size()) prefetch(&points[entries[i + ahead].index]);
        function(points[entries[i].index], entries[i]);
    }
}

// The keys of points over a box of their own. The cells at the two ends of an axis share their digits, so the
// box is made larger.
inline HC2 ownCurve(Bbox2 box) {
    box.doubleTheBox();
    return HC2(box);
}

// Brings segments into order, in the array of the result; the other one is work space. One a thread: segments
// do not overlap.
class SegmentRefiner {
public:
    SegmentRefiner(const PointSource& source, std::span<KeyedIndex> result, std::span<KeyedIndex> otherArray)
        : points(source), v(result), other(otherArray) {}

    void refine(const OrderSegment& segment);

private:
    struct Run {
        std::size_t first, last;
        unsigned int key; // which all its points get back when the run is in order
    };

    void pushRuns(std::size_t first, std::size_t last, unsigned int key);
    void refineTop();
    bool reorderByOwnBox(const Run& run);
    void sortByCoordinates(const Run& run);

    const PointSource& points;
    std::span<KeyedIndex> v, other;
    // A stack of its own, since clusters within clusters go as deep as the exponents of doubles.
    std::vector<Run> vOpenRuns;
};

} // namespace TESK_KIVO2D
