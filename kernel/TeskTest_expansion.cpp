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

// The components of p - q, one or two, smallest first; 0 when one of them is not of moderate size.
int differenceOf(double p, double q, double* h) {
    double high = 0, low = 0;
    expansion::twoSum(p, -q, high, low);
    if (!isModerate(high) || !isModerate(low)) return 0;
    int num = 0;
    if (low != 0) h[num++] = low;
    h[num++] = high;
    return num;
}

// h = e * f for an f of one or two components; up to 2 * eNum * fNum components for an e of up to 2.
int productOf(const double* e, int eNum, const double* f, int fNum, double* h) {
    if (fNum == 1) return expansion::scale(e, eNum, f[0], h);
    double low[4], high[4];
    const int numLow = expansion::scale(e, eNum, f[0], low);
    const int numHigh = expansion::scale(e, eNum, f[1], high);
    return expansion::sum(low, numLow, high, numHigh, h);
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

Decision orientExpansion(const Point2& a, const Point2& b, const Point2& c) {
    double acx[2], bcy[2], bcx[2], acy[2];
    const int numAcx = differenceOf(a.x(), c.x(), acx), numBcy = differenceOf(b.y(), c.y(), bcy);
    const int numBcx = differenceOf(c.x(), b.x(), bcx), numAcy = differenceOf(a.y(), c.y(), acy);
    if (numAcx * numBcy * numBcx * numAcy == 0) return UNSURE;
    if (numAcx * numBcy * numBcx * numAcy == 1) {
        double left = 0, leftError = 0, right = 0, rightError = 0;
        expansion::twoProduct(acx[0], bcy[0], left, leftError);
        expansion::twoProduct(-bcx[0], acy[0], right, rightError);
        // Each pair is a rounded product and what rounding lost, so the order of the pairs is that of their
        // heads, and of their tails where the heads agree.
        return left != right ? decisionOf(left > right ? 1.0 : -1.0) : decisionOf(leftError - rightError);
    }
    double left[8], right[8], det[16];
    const int numLeft = productOf(acx, numAcx, bcy, numBcy, left);
    const int numRight = productOf(bcx, numBcx, acy, numAcy, right);
    return decisionOf(det[expansion::sum(left, numLeft, right, numRight, det) - 1]);
}

Decision inCircleExpansion(const CornerDifferences& d) {
    for (const auto& corner : d.corners) {
        const bool bExact = corner.x.low == 0 && corner.y.low == 0;
        if (!bExact || !isModerate(corner.x.high) || !isModerate(corner.y.high)) return UNSURE;
    }
    const double adx = d.corners[0].x.high, ady = d.corners[0].y.high;
    const double bdx = d.corners[1].x.high, bdy = d.corners[1].y.high;
    const double cdx = d.corners[2].x.high, cdy = d.corners[2].y.high;
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
