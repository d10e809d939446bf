#pragma once

#include "ConstraintSegment2.h"

namespace TESK_KIVO2D {

// Keeps a live segment from being one while its triangulation changes under it: it is neither locked nor
// split. It is alive again when the scope ends, also by an exception, unless it was split.
class SegmentRelease {
public:
    explicit SegmentRelease(ConstraintSegment2& released) : segment(released) { segment.bAlive = false; }
    ~SegmentRelease() { end(); }
    SegmentRelease(const SegmentRelease&) = delete;
    SegmentRelease& operator=(const SegmentRelease&) = delete;

    void end() {
        if (segment.aChildren[0] == nullptr) segment.bAlive = true;
    }

private:
    ConstraintSegment2& segment;
};

} // namespace TESK_KIVO2D
