#pragma once

#include <Point2.h>
#include <Segment2.h>
#include <SegmentChecker.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace cli {

// How two segments of a file meet that should not.
enum FaultKind {
    FAULT_CROSSING,   // inside both
    FAULT_TOUCH,      // an end of one, inside the other
    FAULT_OVERLAP,    // along a line
    FAULT_DUPLICATE,  // the same ends, in whichever order
    FAULT_SHARED_END, // an end of both and nothing else; a fault only where that is asked for
    NUM_FAULT_KINDS
};

// Ends of overlaps differ; all else has one place, twice. An end of a segment is told as it is, a crossing
// point to the last digits.
struct FaultPlace {
    TESK_KIVO2D::Point2 from, to;
};

// Positions in the set, the smaller one first.
struct Fault {
    std::size_t first = 0;
    std::size_t second = 0;
    FaultKind kind = FAULT_CROSSING;
};

using FaultCounts = std::array<std::uint64_t, NUM_FAULT_KINDS>;

// The pairs of a set of segments that meet. The segments stay where they are while this lives.
class FaultFinder {
public:
    FaultFinder(std::vector<TESK_KIVO2D::Segment2>& vSegments_, bool bEndPoints_);

    TESK_KIVO2D::SegmentChecker& getChecker() { return checker; }

    // Finds the segments at fault, by their positions. Needed before the rest.
    const std::vector<std::size_t>& findSegmentsAtFault();

    using Visit = std::function<void(const Fault&)>;
    using Progress = std::function<void(double)>;
    // Visits the pairs by their first and then their second segments, each once, until there were so many.
    // Returns false when there are more. All pairs may be too many to store, but those of one segment are
    // not.
    bool forEachFault(std::uint64_t maxPairs, const Visit& visit, const Progress& progress) const;

    FaultPlace placeOf(const Fault& fault) const;

private:
    FaultKind kindOf(const TESK_KIVO2D::Segment2& a, const TESK_KIVO2D::Segment2& b,
                     TESK_KIVO2D::SegmentIntersectionType type) const;

    std::vector<TESK_KIVO2D::Segment2>& vSegments;
    bool bEndPoints;
    TESK_KIVO2D::SegmentChecker checker;
    std::vector<std::size_t> vAtFault;
};

} // namespace cli
