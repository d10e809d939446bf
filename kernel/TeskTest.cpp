#include "kernel/TeskTest.h"

#include "kernel/TeskTest_exact.h"
#include "kernel/assertion.h"
#include "kernel/finite.h"
#include "kernel/messages.h"

#include <cstdlib>
#include <limits>
#include <locale>
#include <sstream>

namespace TESK_KIVO2D {
namespace {

std::ostringstream classicStream() {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    return stream;
}

// The rationals of a predicate are created when a question first gets that far.
template<class T>
T& created(std::unique_ptr<T>& p) {
    if (!p) p = std::make_unique<T>();
    return *p;
}

// True when q, on one line with a and b, lies outside the closed segment ab. Decided by the order of
// coordinates alone: squared distances would round.
bool isOutsideCollinear(const Point2& a, const Point2& b, const Point2& q) {
    return a < b ? (q < a || b < q) : (q < b || a < q);
}

// Copies of points, times the power of two that brings the largest coordinate near 1. Signs of determinants
// stay, and what was out of the range of the filters comes back into it.
template<int num>
struct Rescaled {
    Point2 points[num];
    bool bUsable; // false when the size was moderate already, or when a small coordinate would lose bits

    explicit Rescaled(const Point2* const (&original)[num]) {
        double largest = 0;
        for (const Point2* p : original)
            largest = std::fmax(largest, p->getMaxAbs());
        const int exponent = largest > 0 ? std::ilogb(largest) : 0;
        bUsable = std::abs(exponent) > 100;
        for (int i = 0; i < num && bUsable; ++i) {
            points[i] =
                Point2(std::ldexp(original[i]->x(), -exponent), std::ldexp(original[i]->y(), -exponent));
            bUsable = std::ldexp(points[i].x(), exponent) == original[i]->x() &&
                      std::ldexp(points[i].y(), exponent) == original[i]->y();
        }
    }
};

stages::Decision counted(stages::Decision decision, std::uint64_t& count) {
    if (decision != stages::UNSURE) ++count;
    return decision;
}

} // namespace

TeskTest::StageCounts& TeskTest::StageCounts::operator+=(const StageCounts& other) {
    orientationPastStatic += other.orientationPastStatic;
    orientationDynamic += other.orientationDynamic;
    orientationAxisParallel += other.orientationAxisParallel;
    orientationExpansion += other.orientationExpansion;
    orientationInterval += other.orientationInterval;
    orientationExact += other.orientationExact;
    inCirclePastStatic += other.inCirclePastStatic;
    inCircleRectangle += other.inCircleRectangle;
    inCircleLattice += other.inCircleLattice;
    inCircleDoubleDouble += other.inCircleDoubleDouble;
    inCircleExpansion += other.inCircleExpansion;
    inCircleExact += other.inCircleExact;
    return *this;
}

TeskTest::TeskTest() : staticFilterBound(std::numeric_limits<double>::infinity()) {}
TeskTest::~TeskTest() = default;

void TeskTest::setStaticBound(double newMaxAbsCoord) {
    // (3 u + O(u^2)) of two products of at most 4 M^2 each: see orientStatic.
    constexpr double factor = 0x1.8p-49;
    maxAbsCoord = std::fabs(newMaxAbsCoord);
    upperStaticBound = factor * maxAbsCoord * maxAbsCoord;
    // The last term of the derivation, O(u^2), and the rounding of the two multiplications above are a few
    // units in the last place of the bound: the filter uses a bound that is larger by that much. Up to 2^510
    // no product of two differences overflows: one that did would pass any finite bound.
    const bool bTrusted = upperStaticBound >= stages::smallestSafeBound && maxAbsCoord <= 0x1p510;
    staticFilterBound = bTrusted ? upperStaticBound * (1 + 0x1p-48) : std::numeric_limits<double>::infinity();
}

void TeskTest::growStaticBound(const Point2& p0, const Point2& p1, const Point2& p2) {
    // Deliberate: a sum, not a maximum. It may overshoot; a bound that is too large only costs speed.
    double sum = 0;
    for (const Point2* p : {&p0, &p1, &p2}) {
        if (p->getMaxAbs() > maxAbsCoord) sum += p->getMaxAbs();
    }
    if (sum > maxAbsCoord) setStaticBound(sum);
}

Orientation2 TeskTest::getOrientation2(const Point2* a, const Point2* b, const Point2* c) {
    if (!isFinite(*a) || !isFinite(*b) || !isFinite(*c)) return ORIENTATION2_COLLINEAR;
    const bool bBeyond =
        a->getMaxAbs() > maxAbsCoord || b->getMaxAbs() > maxAbsCoord || c->getMaxAbs() > maxAbsCoord;
    if (!bBeyond) return orientation(*a, *b, *c);
    std::ostringstream before = classicStream(), after = classicStream();
    before << "Static bound: " << upperStaticBound << "\nmax p0: " << a->getMaxAbs()
           << "\nmax p1: " << b->getMaxAbs() << "\nmax p2: " << c->getMaxAbs() << "\n";
    after << "maxAbsCoord=" << maxAbsCoord << "\n";
    printText(before.str());
    reportWarning("TeskTest::getOrientation2", "Recompute the static bound!");
    printText(after.str());
    return orientationUnbounded(*a, *b, *c);
}

Orientation2 TeskTest::getOrientation2(const Triangle2& t, int ith, const Point2& q) {
    KIVO_ASSERT(ith >= 0 && ith < 3, "num>=0 && num<3");
    return getOrientation2(t.getCorner(Triangle2::incIndexBy1(ith)), t.getCorner(Triangle2::incIndexBy2(ith)),
                           &q);
}

Orientation2 TeskTest::orientationUnbounded(const Point2& a, const Point2& b, const Point2& c) {
    ++counts.orientationPastStatic;
    const stages::Decision decision = counted(stages::orientDynamic(a, b, c), counts.orientationDynamic);
    return decision != stages::UNSURE ? static_cast<Orientation2>(decision) : orientationPastDynamic(a, b, c);
}

Orientation2 TeskTest::orientationPastDynamic(const Point2& a, const Point2& b, const Point2& c) {
    if ((a.x() == b.x() && b.x() == c.x()) || (a.y() == b.y() && b.y() == c.y())) {
        ++counts.orientationAxisParallel;
        return ORIENTATION2_COLLINEAR;
    }
    stages::Decision decision = counted(stages::orientExpansion(a, b, c), counts.orientationExpansion);
    if (decision == stages::UNSURE) {
        const Rescaled<3> r({&a, &b, &c});
        const Point2(&p)[3] = r.points;
        if (r.bUsable) decision = counted(stages::orientDynamic(p[0], p[1], p[2]), counts.orientationDynamic);
        if (r.bUsable && decision == stages::UNSURE)
            decision = counted(stages::orientExpansion(p[0], p[1], p[2]), counts.orientationExpansion);
    }
    if (decision == stages::UNSURE)
        decision = counted(stages::orientInterval(a, b, c), counts.orientationInterval);
    if (decision == stages::UNSURE) {
        ++counts.orientationExact;
        decision = stages::orientExact(a, b, c, created(pOrientationRationals));
    }
    return static_cast<Orientation2>(decision);
}

void TeskTest::prepareInCircle() { created(pInCircleRationals); }

stages::Decision TeskTest::inCirclePastStatic(const Point2& a, const Point2& b, const Point2& c,
                                              const Point2& q, stages::Decision ofRectangle) {
    ++counts.inCirclePastStatic;
    if (stages::isRectangle(a, b, c, q)) {
        ++counts.inCircleRectangle;
        return ofRectangle;
    }
    stages::Decision decision = inCircleMiddleStages(a, b, c, q);
    if (decision == stages::UNSURE) {
        const Rescaled<4> r({&a, &b, &c, &q});
        const Point2(&p)[4] = r.points;
        if (r.bUsable) decision = inCircleMiddleStages(p[0], p[1], p[2], p[3]);
    }
    if (decision == stages::UNSURE) {
        ++counts.inCircleExact;
        decision = stages::inCircleExact(a, b, c, q, created(pInCircleRationals));
    }
    return decision;
}

stages::Decision TeskTest::inCircleMiddleStages(const Point2& a, const Point2& b, const Point2& c,
                                                const Point2& q) {
    stages::Decision decision = counted(stages::inCircleLattice(a, b, c, q), counts.inCircleLattice);
    if (decision == stages::UNSURE)
        decision = counted(stages::inCircleDoubleDouble(a, b, c, q), counts.inCircleDoubleDouble);
    if (decision == stages::UNSURE)
        decision = counted(stages::inCircleExpansion(a, b, c, q), counts.inCircleExpansion);
    return decision;
}

SegmentIntersectionState2 TeskTest::classifySegments(const Point2& p1, const Point2& p2, const Point2& p3,
                                                     const Point2& p4) {
    const Orientation2 o1 = orientationUnbounded(p1, p2, p3);
    const Orientation2 o2 = orientationUnbounded(p1, p2, p4);
    if (o1 == ORIENTATION2_COLLINEAR && o2 == ORIENTATION2_COLLINEAR) {
        // A segment that is one point has no line: only now it shows whether it lies on the other's.
        if (p1 == p2 && orientationUnbounded(p3, p4, p1) != ORIENTATION2_COLLINEAR) return IST_NOIS;
        const bool bDisjoint = isOutsideCollinear(p1, p2, p3) && isOutsideCollinear(p1, p2, p4) &&
                               isOutsideCollinear(p3, p4, p1) && isOutsideCollinear(p3, p4, p2);
        return bDisjoint ? IST_NOIS : IST_COLLINEAR;
    }
    if (o1 == o2) return IST_NOIS;
    const Orientation2 o3 = orientationUnbounded(p3, p4, p1);
    const Orientation2 o4 = orientationUnbounded(p3, p4, p2);
    return o3 != o4 ? IST_REGULAR : IST_NOIS;
}

void TeskTest::debug(const Point2& a, const Point2& b, const Point2& c) {
    std::ostringstream stream = classicStream();
    const double det = (a.x() - c.x()) * (b.y() - c.y()) - (b.x() - c.x()) * (a.y() - c.y());
    stream << "TeskTest::debug()\n";
    stream << "STATIC BOUND=" << upperStaticBound << " resp. " << -upperStaticBound << "\n";
    stream << "simple result=" << det << "\n";
    if (det > upperStaticBound) {
        stream << "simple test says positive\n";
    } else if (det < -upperStaticBound) {
        stream << "simple test says negative\n";
    } else {
        stream << "simple test says 'no idea'\n";
    }
    const stages::Interval bounds = stages::orientBounds(a, b, c);
    stream << "Result of dynamic ub: " << bounds.upper << "\n";
    stream << "Result of dynamic lb: " << bounds.lower << "\n";
    if (isFinite(a) && isFinite(b) && isFinite(c)) {
        static constexpr const char* names[3] = {"ZERO", "POSITIVE", "NEGATIVE"};
        const stages::Decision exact = stages::orientExact(a, b, c, created(pOrientationRationals));
        stream << "exact test says " << names[exact] << "\n";
    }
    printText(stream.str());
}

} // namespace TESK_KIVO2D
