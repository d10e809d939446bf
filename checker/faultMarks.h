#pragma once

#include "Bbox2.h"
#include "Point2.h"
#include "Segment2.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace TESK_KIVO2D {

// What a drawing shows of the faults of segments, so that the eye finds each of them. Marks that would lie on
// one another are drawn once: their number is bounded, whatever that of the faults.
struct FaultMarks {
    std::vector<Point2> vCrossings;
    std::vector<Point2> vSharedEnds;
    std::vector<Segment2> vOverlaps;
    // Centres of circles, with at least their radius between any two. Each crossing, and the middle of each
    // overlap, is inside one.
    std::vector<Point2> vFaultPlaces;
    std::vector<Point2> vSharedEndPlaces; // none where they are many

    // Pairs of segments. Lower bounds unless all were looked at.
    std::size_t numCrossings = 0;
    std::size_t numOverlaps = 0;
    std::size_t numSharedEnds = 0;
    bool bAllPairs = true;
};

// The radius of the circles as a share of the drawing's larger extent.
constexpr double circleShare = 0.015;

// What is looked at: some seconds' worth.
struct FaultLimits {
    std::size_t maxReports = 4'000'000; // of pairs, each of which is reported from either side
    double maxBoxesMet = 3e8;           // whether a pair comes of it or not
};

// The marks of segments that are illegal, all of them: what is legal has no part in a fault. They are finite
// and lie in the box. Beyond the limits only some of the segments, spread over the set, are asked for their
// intersectors. The function is told the share that is done.
FaultMarks collectFaultMarks(const std::vector<Segment2*>& vIllegal, bool alsoEndPoints, const Bbox2& box,
                             const std::function<void(double)>& progress, const FaultLimits& limits = {});

} // namespace TESK_KIVO2D
