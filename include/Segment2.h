#pragma once

#include "Point2.h"
#include "export.h"

#include <iosfwd>
#include <utility>

namespace TESK_KIVO2D {

/// A directed line segment that holds its two points by value. Equality ignores the direction.
class KIVO_API Segment2 {
public:
    /// Both points are default points.
    Segment2() = default;
    /// Copies coordinates and custom indices.
    Segment2(const Point2& source, const Point2& target) : src(source), trg(target) {}

    /// A copy of the point where it starts.
    Point2 getSrc() const { return src; }
    /// A copy of the point where it ends.
    Point2 getTrg() const { return trg; }

    /// Squared length.
    double getSqLen2D() const { return sqDistance(src, trg); }

    /// Turns the direction round.
    void swapSrcTrg() { std::swap(src, trg); }

    /// Same ends, in whichever order.
    bool operator==(const Segment2& other) const {
        return (src == other.src && trg == other.trg) || (src == other.trg && trg == other.src);
    }
    /// The opposite of `==`.
    bool operator!=(const Segment2& other) const { return !(*this == other); }

private:
    friend KIVO_API std::ostream& operator<<(std::ostream& stream, const Segment2& seg);

    Point2 src;
    Point2 trg;
};

/// Writes "Segment2 (address): ", then source and target in the format of `Point2`, with a comma between.
KIVO_API std::ostream& operator<<(std::ostream& stream, const Segment2& seg);

} // namespace TESK_KIVO2D
