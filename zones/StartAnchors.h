#pragma once

#include "ConstraintSegment2.h"
#include "Point2.h"
#include "Zone2.h"
#include "core/EdgeMarks.h"
#include "core/TriangleSet.h"
#include "zones/ZoneHost.h"

#include <vector>

namespace TESK_KIVO2D {

// Keeps the start points of zones that grow in their regions while vertices move, and borders of regions with
// them: a border may sweep over a point, and a region may be pinched off in two. It knows regions by the
// segments around them.
class StartAnchors {
public:
    // Of all such zones of the triangulation, as they are now.
    explicit StartAnchors(ZoneHost& triangulation);

    // Gives the zones start points where their regions are by now, one for each part that hangs together.
    void restore() const;

private:
    // A segment with a region to its left, seen from one of its ends.
    struct Side {
        ConstraintSegment2* pCSeg;
        Point2* pFrom;
    };
    struct Anchor {
        Zone2* pZone;
        std::vector<Side> vSides; // around all of its regions
    };

    Anchor anchorOf(Zone2* pZone) const;
    void restore(const Anchor& anchor) const;
    bool doReach(const std::vector<Point2>& vStarts, const EdgeMarks& closed,
                 const TriangleSet& region) const;

    ZoneHost& dt;
    std::vector<Anchor> vAnchors;
};

} // namespace TESK_KIVO2D
