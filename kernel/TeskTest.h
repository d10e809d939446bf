#pragma once

#include "Orientation2.h"
#include "Point2.h"
#include "Triangle2.h"
#include "kernel/TeskTest_stages.h"

#include <cstdint>
#include <memory>

namespace TESK_KIVO2D {

// Where a point lies against a circumcircle.
enum CircleInclusion2 {
    CINC2_ZERO = 0,     // on the circle
    CINC2_INCIRCLE = 1, // strictly inside
    CINC2_OUTCIRCLE = 2 // strictly outside
};

// How two segments meet.
enum SegmentIntersectionState2 {
    IST_NOIS = 0,      // not at all
    IST_COLLINEAR = 1, // all four ends on one line, touching or overlapping
    IST_REGULAR = 2    // properly or by touching, not on one line
};

// The exact predicates. Each question runs through stages: a stage answers only when its answer is certain,
// and the last one, rational arithmetic, always is. So for all finite coordinates:
//   (1) an orientation is collinear exactly when the real determinant is 0;
//   (2) rotating the three points keeps an orientation, swapping two exchanges CCW and CW;
//   (3) the three-valued in-circle test is the sign of the real determinant.
//
// The static bound belongs to a largest absolute coordinate: the static stage may answer only for points
// within it. The entries named getOrientation2 guard that and complain; `orientation` trusts its caller, who
// keeps the bound valid by construction, and `orientationUnbounded` leaves the static stage out.
//
// One object must not be used by two threads at once: the rationals are working storage, kept from call to
// call.
class TeskTest {
public:
    TeskTest();
    ~TeskTest();
    TeskTest(const TeskTest&) = delete;
    TeskTest& operator=(const TeskTest&) = delete;

    // Makes the static stage valid for coordinates up to |maxAbsCoord|.
    void setStaticBound(double maxAbsCoord);
    // Raises the bound when one of the points lies beyond it.
    void growStaticBound(const Point2& p0, const Point2& p1, const Point2& p2);
    double getMaxAbsCoord() const { return maxAbsCoord; }
    double getUpperStaticBound() const { return upperStaticBound; }
    double getLowerStaticBound() const { return -upperStaticBound; }

    // The sign of stages::orientationDet is right for points within the bound when its magnitude is larger
    // than this.
    double filterBound() const { return staticFilterBound; }

    // Side of c seen from the directed line a -> b. A point beyond the bound is answered right all the same,
    // but with a report and the warning "Recompute the static bound!".
    Orientation2 getOrientation2(const Point2* a, const Point2* b, const Point2* c);
    // Side of q seen from the edge of t opposite corner ith.
    Orientation2 getOrientation2(const Triangle2& t, int ith, const Point2& q);

    // The same question for points within the bound; inlined, since the walk lives on it.
    Orientation2 orientation(const Point2& a, const Point2& b, const Point2& c) {
        const stages::Decision decision = stages::orientStatic(a, b, c, staticFilterBound);
        if (decision != stages::UNSURE) return static_cast<Orientation2>(decision);
        return orientationUnbounded(a, b, c);
    }
    // The same question for any finite points.
    Orientation2 orientationUnbounded(const Point2& a, const Point2& b, const Point2& c);

    // Where q lies against the circumcircle of t, whose corners run counter-clockwise.
    CircleInclusion2 inCircle(const Triangle2& t, const Point2& q) {
        return inCircle(*t.getCorner(0), *t.getCorner(1), *t.getCorner(2), q);
    }
    // Where q lies against the circle through a, b and c, which run counter-clockwise.
    CircleInclusion2 inCircle(const Point2& a, const Point2& b, const Point2& c, const Point2& q) {
        stages::Decision decision = stages::inCircleStatic(a, b, c, q);
        if (decision == stages::UNSURE) decision = inCirclePastStatic(a, b, c, q, stages::ZERO);
        return static_cast<CircleInclusion2>(decision);
    }

    // From now on no in-circle test throws when memory runs out.
    void prepareInCircle();

    // True when q lies strictly inside the circumcircle of t, and also when q is the fourth corner of an
    // axis-parallel rectangle with t. Deliberate: it turns the diagonals of a grid the way the newest vertex
    // wants them. Only the legalisation of a new vertex may use it, where each flip adds an edge at that
    // vertex; any other loop would flip a square's diagonal for ever.
    bool isInCircleOrRectangle(const Triangle2& t, const Point2& q) {
        const Point2 &a = *t.getCorner(0), &b = *t.getCorner(1), &c = *t.getCorner(2);
        const stages::CircleDet circle = stages::inCircleDet(a, b, c, q);
        if (std::fabs(circle.det) > circle.bound) return circle.det > 0;
        return inCirclePastStatic(a, b, c, q, stages::POSITIVE) == stages::POSITIVE;
    }

    // How the segments p1p2 and p3p4 meet.
    SegmentIntersectionState2 classifySegments(const Point2& p1, const Point2& p2, const Point2& p3,
                                               const Point2& p4);

    // Prints what each stage of the orientation says.
    void debug(const Point2& a, const Point2& b, const Point2& c);

    // How often a question went past its inlined stage, and which stage answered it then, since construction.
    // A question that is answered after scaling counts for the stage that answered it.
    struct StageCounts {
        std::uint64_t orientationPastStatic = 0;
        std::uint64_t orientationDynamic = 0;
        std::uint64_t orientationAxisParallel = 0;
        std::uint64_t orientationExpansion = 0;
        std::uint64_t orientationInterval = 0;
        std::uint64_t orientationExact = 0;
        std::uint64_t inCirclePastStatic = 0;
        std::uint64_t inCircleRectangle = 0;
        std::uint64_t inCircleLattice = 0;
        std::uint64_t inCircleDoubleDouble = 0;
        std::uint64_t inCircleExpansion = 0;
        std::uint64_t inCircleExact = 0;

        StageCounts& operator+=(const StageCounts& other);
    };
    const StageCounts& stageCounts() const { return counts; }
    // Counts what others were asked as asked here.
    void addStageCounts(const StageCounts& others) { counts += others; }

private:
    Orientation2 orientationPastDynamic(const Point2& a, const Point2& b, const Point2& c);
    // With what to answer for the fourth corner of a rectangle.
    stages::Decision inCirclePastStatic(const Point2& a, const Point2& b, const Point2& c, const Point2& q,
                                        stages::Decision ofRectangle);
    stages::Decision inCircleMiddleStages(const Point2& a, const Point2& b, const Point2& c, const Point2& q);

    double staticFilterBound; // upperStaticBound where it may be trusted, else infinite: no answer passes it
    double upperStaticBound = 0;
    double maxAbsCoord = 0;
    StageCounts counts;
    std::unique_ptr<OrientationRationals> pOrientationRationals; // null until first needed
    std::unique_ptr<InCircleRationals> pInCircleRationals;       // null until first needed
};

} // namespace TESK_KIVO2D
