// The only source that changes the rounding mode; compiled with -frounding-math.
#include "kernel/TeskTest_stages.h"

#include <cfenv>

namespace TESK_KIVO2D::stages {
namespace {

// No value passes unseen: without this, optimisers compute a product once and use it under two rounding
// modes, also with -frounding-math.
inline double opaque(double v) {
#if defined(__GNUC__)
    asm volatile("" : "+m"(v)::"memory");
    return v;
#else
    volatile double hidden = v;
    return hidden;
#endif
}

// Restores the caller's rounding mode on every path.
class RoundingMode {
public:
    RoundingMode() : saved(std::fegetround()) {}
    ~RoundingMode() { std::fesetround(saved); }
    RoundingMode(const RoundingMode&) = delete;
    RoundingMode& operator=(const RoundingMode&) = delete;
    static void set(int mode) { std::fesetround(mode); }

private:
    const int saved;
};

double subtract(double a, double b) { return opaque(opaque(a) - opaque(b)); }
double multiply(double a, double b) { return opaque(opaque(a) * opaque(b)); }

// The product (p - q)(r - s): its sign and, once both rounding modes have run, bounds of its magnitude.
struct Product {
    double largerP, smallerP, largerR, smallerR;
    bool bNegative;
    double magnitudeUp = 0;
    double magnitudeDown = 0;

    Product(double p, double q, double r, double s)
        : largerP(p < q ? q : p), smallerP(p < q ? p : q), largerR(r < s ? s : r), smallerR(r < s ? r : s),
          bNegative((p < q) != (r < s)) {}

    double magnitude() const { return multiply(subtract(largerP, smallerP), subtract(largerR, smallerR)); }
    double up() const { return bNegative ? -magnitudeDown : magnitudeUp; }
    double down() const { return bNegative ? -magnitudeUp : magnitudeDown; }
};

} // namespace

Interval orientBounds(const Point2& a, const Point2& b, const Point2& c) {
    Product left(a.x(), c.x(), b.y(), c.y());
    Product right(a.y(), c.y(), b.x(), c.x());
    const RoundingMode restoredAtExit;
    RoundingMode::set(FE_TOWARDZERO);
    left.magnitudeDown = left.magnitude();
    right.magnitudeDown = right.magnitude();
    RoundingMode::set(FE_UPWARD);
    left.magnitudeUp = left.magnitude();
    right.magnitudeUp = right.magnitude();
    Interval bounds;
    bounds.upper = subtract(left.up(), right.down());
    RoundingMode::set(FE_DOWNWARD);
    bounds.lower = subtract(left.down(), right.up());
    return bounds;
}

Decision orientInterval(const Point2& a, const Point2& b, const Point2& c) {
    const Interval bounds = orientBounds(a, b, c);
    // An overflow leaves infinities or no numbers behind. Rounded towards zero it stops at the largest
    // double, which is a bound still, and an infinite bound on the far side says nothing wrong; only a
    // difference of two infinities must be kept out, and that compares false.
    if (bounds.upper < 0) return NEGATIVE;
    if (bounds.lower > 0) return POSITIVE;
    return UNSURE;
}

} // namespace TESK_KIVO2D::stages
