#pragma once

#include "MsgBase.h"
#include "export.h"
#include "fwd.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

/// What two segments have in common.
enum SegmentIntersectionType {
    SIT_UNINITIALIZED = 0, ///< no answer: an argument was no segment
    SIT_NONE = 1,          ///< nothing
    SIT_SEGMENT = 2,       ///< more than one point: both lie on one line and overlap
    SIT_POINT = 3,         ///< one point that is not an end of both: a crossing or a T-junction
    SIT_ENDPOINT = 4       ///< one point, which is an end of both
};

/// Finds the segments of a set that intersect others, before they are inserted as constraints, for example.
///
/// Every classification is exact, for all finite coordinates, and symmetric: it depends neither on the order
/// of the two segments nor on their directions. Segments of no length are points. A segment compared with
/// itself, as the same object, gives `SIT_SEGMENT`; queries over the set never pair an object with itself.
///
/// The segments belong to the caller. They must outlive the checker and must not change: an index over them
/// is made by the first query, and by the first one after more were added. Null pointers and segments with a
/// coordinate that is infinite or not a number keep their place in the numbering and take part in nothing; a
/// warning says how many there are. An object that was added several times counts once, at its first place;
/// the first query after that warns of it, and every query of a set without segments. One checker is used by
/// one thread at a time.
///
/// Memory: about 65 bytes a segment, up to 100 while the index is made. Where boxes are no help (see
/// `getIllegalSegments`) a query takes 135 to 180 bytes a segment, and 30 to 50 of these are kept. The index
/// takes O(n) time for coordinates that are not contrived, else O(n log n).
class KIVO_API SegmentChecker {
public:
    /// No segments.
    SegmentChecker();
    /// The segments, in this order.
    explicit SegmentChecker(const std::vector<Segment2*>& vSegments);
    /// Leaves the segments alone.
    ~SegmentChecker();
    SegmentChecker(const SegmentChecker&) = delete;
    SegmentChecker& operator=(const SegmentChecker&) = delete;

    /// Appends segments to the set. At most 2^31 - 1 fit; more are refused, all of the call, with an error.
    void addSegments(const std::vector<Segment2*>& vSegments);

    /// \name The set
    /// \{

    /// How many were added.
    std::size_t getNumberOfSegments() const;
    /// The i-th. `KivoException` when there is none.
    Segment2* getSegment(std::size_t i) const;
    /// The place of a segment in the set; -1, with a warning, when it is not there. O(log n).
    int getIndex(const Segment2* pSegment) const;
    /// \}

    /// \name Two segments
    /// They need not be in the set.
    /// \{

    /// What they have in common. `SIT_UNINITIALIZED`, with an error, for a null pointer or a coordinate that
    /// is not finite.
    SegmentIntersectionType getIntersectionType(const Segment2* pA, const Segment2* pB) const;
    /// The enumerator's name; "UNKNOWN SIT" for any other value.
    static std::string getIntersectionTypeString(SegmentIntersectionType type);

    /// The one common point of two segments of the type `SIT_POINT`: an end that lies on the other segment as
    /// it is, else the crossing point, each coordinate within a unit in the last place of the exact one. The
    /// custom index is -1. Returns false, with a message and without a change to the point, for any other
    /// type and for segments that do not share exactly one point.
    bool getIntersectionPoint(SegmentIntersectionType type, const Segment2* pA, const Segment2* pB,
                              Point2& point) const;
    /// What two segments of the type `SIT_SEGMENT` share. Its ends are ends of theirs, bit for bit, and its
    /// direction is that of the first. Returns false, with a message and without a change to the segment,
    /// when they share less.
    bool getIntersectionSegment(const Segment2* pA, const Segment2* pB, Segment2& segment) const;
    /// \}

    /// \name All segments
    /// \{

    /// Appends every segment of the set that intersects this one, with its type, by its place in the set.
    /// `SIT_ENDPOINT` counts only with alsoEndPoints. The segment itself is left out, and need not be in the
    /// set. Takes time in proportion to the boxes that its own box meets, until many queries have met far
    /// more boxes than segments: from then on lines tell these apart, as in `getIllegalSegments`.
    void getIntersectors(const Segment2* pSegment, bool alsoEndPoints,
                         std::vector<std::pair<Segment2*, SegmentIntersectionType>>& vIntersectors) const;
    /// Appends every segment that intersects another one, in the order of the set. `SIT_ENDPOINT` counts only
    /// with alsoEndPoints. Faster than asking for each segment, as one intersection of each is enough. Where
    /// the boxes of segments overlap that do not intersect, as those of parallel diagonals or of a star do,
    /// lines between groups of segments tell them apart instead.
    void getIllegalSegments(bool alsoEndPoints, std::vector<Segment2*>& vIllegalSegments) const;
    /// \}

    /// \name Drawings
    /// PostScript files (see `Visualizer2`).
    /// \{

    /// Draws all segments.
    void showSegments(const std::string& filename) const;
    /// Draws all segments, the illegal ones in red, in orange those that only share ends, their intersection
    /// points as crosses and what they share as thick blue lines. Circles mark where to look. Marks that
    /// would hide each other are drawn once. Of more than some million pairs a part is looked at, and lines
    /// above the drawing say so; all illegal segments are in the drawing.
    void showIllegalSegments(bool alsoEndPoints, const std::string& filename) const;
    /// \}

    /// \name Progress
    /// `getIllegalSegments` and `showIllegalSegments` report under the label "SEGCHECK". An exception that a
    /// listener throws ends the query; the output vector stays as it was. A listener may ask the checker, but
    /// not add segments.
    /// \{

    /// The listener must be unsubscribed before it dies.
    void subscribe(MsgType msgType, MsgBase* pListener);
    /// Removes the pair if it is there.
    void unsubscribe(MsgType msgType, MsgBase* pListener);
    /// \}

private:
    class SegmentCheckerData;
    std::unique_ptr<SegmentCheckerData> pSCD;
};

} // namespace TESK_KIVO2D
