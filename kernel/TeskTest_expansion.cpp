#include "kernel/TeskTest_stages.h"

#include "kernel/expansion.h"

namespace TESK_KIVO2D::stages {
namespace {

Decision decisionOf(double value) { return value > 0 ? POSITIVE : value < 0 ? NEGATIVE : ZERO; }

// Products of four such numbers are multiples of 2^-1008 and stay below 2^804, so that neither they nor the
// errors of their products leave the range of doubles.
bool isModerate(double v) {
    const double magnitude = std::fabs(v);
    return v == 0 || (magnitude >= 0x1p-200 && magnitude <= 0x1p200);
}

// d = p - q when that is free of rounding error and of moderate size.
bool exactDifference(double p, double q, double& d) {
    d = p - q;
    return isModerate(d) && expansion::isExactDifference(p, q);
}

// h = (x^2 + y^2) * minor; up to 32 components for a minor of up to 4.
int timesLift(const double* minor, int num, double x, double y, double* h) {
    double once[8], xx[16], yy[16];
    int numOnce = expansion::scale(minor, num, x, once);
    const int numXX = expansion::scale(once, numOnce, x, xx);
    numOnce = expansion::scale(minor, num, y, once);
    const int numYY = expansion::scale(once, numOnce, y, yy);
    return expansion::sum(xx, numXX, yy, numYY, h);
}

} // namespace

Decision orientDynamic(const Point2& a, const Point2& b, const Point2& c) {
    const double left = (a.x() - c.x()) * (b.y() - c.y());
    const double right = (b.x() - c.x()) * (a.y() - c.y());
    const double det = left - right;
    const double magnitude = std::fabs(left) + std::fabs(right);
    if (!(magnitude > smallestSafeBound && magnitude < std::numeric_limits<double>::infinity()))
        return UNSURE;
    const double bound = magnitude * ((3 + 16 * 0x1p-53) * 0x1p-53);
    if (det > bound) return POSITIVE;
    if (det < -bound) return NEGATIVE;
    return UNSURE;
}

Decision orientExpansion(const Point2& a, const Point2& b, const Point2& c) {
    double acx = 0, acy = 0, bcx = 0, bcy = 0;
    if (!exactDifference(a.x(), c.x(), acx) || !exactDifference(b.y(), c.y(), bcy) ||
        !exactDifference(b.x(), c.x(), bcx) || !exactDifference(a.y(), c.y(), acy)) {
        return UNSURE;
    }
    double left = 0, leftError = 0, right = 0, rightError = 0;
    expansion::twoProduct(acx, bcy, left, leftError);
    expansion::twoProduct(bcx, acy, right, rightError);
    // Each pair is a rounded product and what rounding lost, so the order of the pairs is that of their
    // heads, and of their tails where the heads agree.
    return left != right ? decisionOf(left > right ? 1.0 : -1.0) : decisionOf(leftError - rightError);
}

bool isRectangle(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
    const Point2* const corners[3] = {&a, &b, &c};
    int numSameX = 0, numSameY = 0, numOtherX = 0, numOtherY = 0;
    double otherX[3], otherY[3];
    for (const Point2* p : corners) {
        if (p->x() == d.x()) {
            ++numSameX;
        } else {
            otherX[numOtherX++] = p->x();
        }
        if (p->y() == d.y()) {
            ++numSameY;
        } else {
            otherY[numOtherY++] = p->y();
        }
    }
    return numSameX == 1 && numSameY == 1 && otherX[0] == otherX[1] && otherY[0] == otherY[1];
}

Decision inCircleExpansion(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
    double adx = 0, ady = 0, bdx = 0, bdy = 0, cdx = 0, cdy = 0;
    if (!exactDifference(a.x(), d.x(), adx) || !exactDifference(a.y(), d.y(), ady) ||
        !exactDifference(b.x(), d.x(), bdx) || !exactDifference(b.y(), d.y(), bdy) ||
        !exactDifference(c.x(), d.x(), cdx) || !exactDifference(c.y(), d.y(), cdy)) {
        return UNSURE;
    }
    double minor[4], aTerm[32], bTerm[32], cTerm[32], ab[64], det[96];
    int num = expansion::productDifference(bdx, cdy, cdx, bdy, minor);
    const int numA = timesLift(minor, num, adx, ady, aTerm);
    num = expansion::productDifference(cdx, ady, adx, cdy, minor);
    const int numB = timesLift(minor, num, bdx, bdy, bTerm);
    num = expansion::productDifference(adx, bdy, bdx, ady, minor);
    const int numC = timesLift(minor, num, cdx, cdy, cTerm);
    const int numAB = expansion::sum(aTerm, numA, bTerm, numB, ab);
    num = expansion::sum(ab, numAB, cTerm, numC, det);
    return decisionOf(det[num - 1]); // the last component outweighs all others
}

} // namespace TESK_KIVO2D::stages
