#pragma once

#include "Segment2.h"
#include "SegmentChecker.h"
#include "checker/SegmentQueries.h"
#include "kernel/ProgressHub.h"
#include "kernel/TeskTest.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

class SegmentChecker::SegmentCheckerData {
public:
    // The queries over what was added so far; prepared, with warnings, where that was not done yet.
    SegmentQueries& queries(const char* location);
    // The place of the segment, its first one; -1 if it was not added.
    std::int64_t placeOf(const Segment2* pSegment);
    // Of segments that are finite. The same object has more than a point in common with itself, even as a
    // point.
    SegmentIntersectionType typeOf(const Segment2* pA, const Segment2* pB);
    void add(const std::vector<Segment2*>& vAdded);
    // Without null pointers, what is not finite, and what was added before.
    std::vector<std::uint32_t> placesTakingPart();

    std::vector<Segment2*> vSegments;
    TeskTest tests; // of segments that may be any; its bound grows with them
    std::unique_ptr<ProgressHub> pPublisher;
    // Of one query; kept for its memory.
    std::vector<std::pair<std::uint32_t, SegmentIntersectionType>> vFound;

private:
    void sortByAddress();

    std::size_t numRepeated = 0; // as of the latest placesTakingPart
    std::unique_ptr<SegmentQueries> pQueries;
    bool bAddressesSorted = false;
    std::vector<std::uint32_t> vByAddress; // places; empty where they ascend with the addresses as they are
};

} // namespace TESK_KIVO2D
