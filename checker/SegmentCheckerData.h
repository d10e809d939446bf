#pragma once

#include "Segment2.h"
#include "SegmentChecker.h"
#include "kernel/ProgressHub.h"
#include "kernel/TeskTest.h"

#include <memory>
#include <vector>

namespace TESK_KIVO2D {

class SegmentChecker::SegmentCheckerData {
public:
    std::vector<Segment2*> vSegments;
    TeskTest tests;
    std::unique_ptr<ProgressHub> pPublisher;
};

} // namespace TESK_KIVO2D
