#pragma once

#include "Bbox2.h"
#include "Point2.h"
#include "Segment2.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// A segment's coordinates, without what else a point carries.
struct Ends {
    double srcX, srcY, trgX, trgY;

    Ends() = default;
    explicit Ends(const Segment2& segment) {
        segment.getSrc().xy(srcX, srcY);
        segment.getTrg().xy(trgX, trgY);
    }
    Point2 src() const { return Point2(srcX, srcY); }
    Point2 trg() const { return Point2(trgX, trgY); }
};

// The segments of a set that take part in queries, in an order in which neighbours lie near each other. What
// is said of a segment by its number here refers to that order; its place is that in the set.
class SegmentArray {
public:
    // Of the segments at these places, which must not be null and must be finite.
    SegmentArray(const std::vector<Segment2*>& vSegments, const std::vector<std::uint32_t>& vPlaces);

    std::size_t size() const { return vEnds.size(); }
    const Ends& operator[](std::size_t i) const { return vEnds[i]; }
    std::uint32_t place(std::size_t i) const { return vPlace[i]; }
    // Of the set.
    std::size_t numPlaces() const { return numAll; }
    // Of all ends.
    const Bbox2& box() const { return extent; }

private:
    std::vector<Ends> vEnds;
    std::vector<std::uint32_t> vPlace;
    std::size_t numAll;
    Bbox2 extent;
};

} // namespace TESK_KIVO2D
