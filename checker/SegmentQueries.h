#pragma once

#include "checker/HullTree.h"
#include "checker/SegmentArray.h"
#include "checker/SegmentIndex.h"
#include "checker/segmentClassification.h"
#include "kernel/ProgressHub.h"
#include "kernel/TeskTest.h"

#include <cmath>
#include <optional>
#include <vector>

namespace TESK_KIVO2D {

// The queries over a fixed set of segments: candidates from the index, decided by the predicates.
class SegmentQueries {
public:
    // Of the segments at these places of the set, which must not be null and must be finite.
    SegmentQueries(const std::vector<Segment2*>& vSegments, const std::vector<std::uint32_t>& vPlaces);
    SegmentQueries(const SegmentQueries&) = delete;
    SegmentQueries& operator=(const SegmentQueries&) = delete;

    // Calls visit(place, type) for each segment of the set that has something in common with this one, which
    // may be any, in no order that means anything.
    template<class Visit>
    void visitIntersectors(const Ends& ends, const Visit& visit);

    // Calls visit(place, place, type) with each pair that has more in common than an end of both, once, in no
    // order that means anything. Boxes and lines serve as in findIllegal.
    template<class Visit>
    void visitPairs(const Visit& visit);

    // A mark for each place: whether the segment there takes part and meets another one, in more than an end
    // that the two share unless alsoEndPoints. The operation advances by one for each segment.
    //
    // Boxes are no help once there were maxMisses comparisons a segment without a hit: then lines tell the
    // rest apart. Whatever the segments are, no more than these and the lines' own time is lost.
    std::vector<char> findIllegal(bool alsoEndPoints, ProgressHub::Operation* pOperation,
                                  std::size_t maxMisses = usualMisses);

    std::size_t size() const { return segments.size(); }

private:
    static constexpr std::size_t usualMisses = 8;

    // Counts a query. Lines take the place of boxes for good once there were many comparisons without a hit
    // for each query and each segment, and far more than hits.
    void prepareLines();

    SegmentArray segments;
    SegmentIndex index;
    TeskTest tests;
    std::optional<HullTree> lines;
    std::size_t numQueries = 0, numMisses = 0, numHits = 0; // of visitIntersectors
};

// Makes the static filter valid for larger coordinates, and as sharp as it was when it goes.
class StaticBoundRaised {
public:
    StaticBoundRaised(TeskTest& predicates, double maxAbsCoord)
        : tests(predicates), maxBefore(tests.getMaxAbsCoord()) {
        if (maxAbsCoord > maxBefore) tests.setStaticBound(maxAbsCoord);
    }
    ~StaticBoundRaised() {
        if (tests.getMaxAbsCoord() > maxBefore) tests.setStaticBound(maxBefore);
    }
    StaticBoundRaised(const StaticBoundRaised&) = delete;
    StaticBoundRaised& operator=(const StaticBoundRaised&) = delete;

private:
    TeskTest& tests;
    const double maxBefore;
};

inline SegmentIntersectionType classify(TeskTest& tests, const Ends& a, const Ends& b) {
    return classifySegments(tests, a.src(), a.trg(), b.src(), b.trg());
}

template<class Visit>
void SegmentQueries::visitIntersectors(const Ends& ends, const Visit& visit) {
    prepareLines();
    const StaticBoundRaised raised(tests, std::fmax(ends.src().getMaxAbs(), ends.trg().getMaxAbs()));
    const auto compare = [&](std::size_t i) {
        const SegmentIntersectionType type = classify(tests, ends, segments[i]);
        ++(type == SIT_NONE ? numMisses : numHits);
        if (type != SIT_NONE) visit(segments.place(i), type);
        return true;
    };
    if (lines)
        lines->visitCandidates(ends, true, compare);
    else
        index.visitCandidates(ends, compare);
}

template<class Visit>
void SegmentQueries::visitPairs(const Visit& visit) {
    std::size_t numMissesLeft = usualMisses * size();
    for (std::size_t i = 0; i < size(); ++i) {
        const auto compare = [&](std::size_t j) {
            if (j <= i) return true;
            const SegmentIntersectionType type = classify(tests, segments[i], segments[j]);
            if (type != SIT_NONE && type != SIT_ENDPOINT)
                visit(segments.place(i), segments.place(j), type);
            else if (numMissesLeft > 0)
                --numMissesLeft;
            return true;
        };
        if (numMissesLeft == 0 && !lines) lines.emplace(segments, tests);
        if (lines)
            lines->visitCandidates(segments[i], false, compare);
        else
            index.visitCandidates(segments[i], compare);
    }
}

} // namespace TESK_KIVO2D
