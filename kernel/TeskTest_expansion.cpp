#include "kernel/TeskTest_stages.h"

#include "kernel/expansion.h"

namespace TESK_KIVO2D::stages {
namespace {

// Products of four such numbers are multiples of 2^-1008 and stay below 2^804, so that neither they nor the
// errors of their products leave the range of doubles.
bool isModerate(double v) {
    const double magnitude = std::fabs(v);
    return v == 0 || (magnitude >= 0x1p-200 && magnitude <= 0x1p200);
}

// An exact difference of two doubles: one component, or two where it rounds, smallest first.
struct Difference {
    double components[2];
    int num = 0; // 0 when a component is not of moderate size

    Difference(double p, double q) {
        double high = 0, low = 0;
        expansion::twoSum(p, -q, high, low);
        if (!isModerate(high) || !isModerate(low)) return;
        if (low != 0) components[num++] = low;
        components[num++] = high;
    }
};

// h = e * d; up to 2 * eNum * d.num components for an e of up to maxNum. h must not be e.
template<int maxNum>
int times(const double* e, int eNum, const Difference& d, double* h) {
    if (d.num == 1) return expansion::scale(e, eNum, d.components[0], h);
    double low[2 * maxNum], high[2 * maxNum];
    const int numLow = expansion::scale(e, eNum, d.components[0], low);
    const int numHigh = expansion::scale(e, eNum, d.components[1], high);
    return expansion::sum(low, numLow, high, numHigh, h);
}

// h = a * b - c * d; up to 16 components.
int minorOf(const Difference& a, const Difference& b, const Difference& c, const Difference& d, double* h) {
    double left[8], right[8];
    const int numLeft = times<2>(a.components, a.num, b, left);
    const int numRight = times<2>(c.components, c.num, d, right);
    for (int i = 0; i < numRight; ++i)
        right[i] = -right[i];
    return expansion::sum(left, numLeft, right, numRight, h);
}

// h = (x^2 + y^2) * minor; up to 512 components for a minor of up to 16.
int timesLift(const double* minor, int num, const Difference& x, const Difference& y, double* h) {
    double once[64], xx[256], yy[256];
    int numOnce = times<16>(minor, num, x, once);
    const int numXX = times<64>(once, numOnce, x, xx);
    numOnce = times<16>(minor, num, y, once);
    const int numYY = times<64>(once, numOnce, y, yy);
    return expansion::sum(xx, numXX, yy, numYY, h);
}

// True when the error of the product of p and q does not underflow.
bool isSafeProduct(double product, double p, double q) {
    return std::fabs(product) >= 0x1p-900 || p == 0 || q == 0;
}

// Not inlined: its storage would push the short way out of registers.
[[gnu::noinline]] Decision orientLongExpansion(const Point2& a, const Point2& b, const Point2& c) {
    const Difference acx(a.x(), c.x()), acy(a.y(), c.y()), bcx(b.x(), c.x()), bcy(b.y(), c.y());
    if (acx.num * acy.num * bcx.num * bcy.num == 0) return UNSURE;
    double det[16];
    const int num = minorOf(acx, bcy, bcx, acy, det);
    return decisionOf(det[num - 1]); // the last component outweighs all others
}

} // namespace

Decision orientExpansion(const Point2& a, const Point2& b, const Point2& c) {
    double acx = 0, acy = 0, bcx = 0, bcy = 0, lost[4];
    expansion::twoSum(a.x(), -c.x(), acx, lost[0]);
    expansion::twoSum(a.y(), -c.y(), acy, lost[1]);
    expansion::twoSum(b.x(), -c.x(), bcx, lost[2]);
    expansion::twoSum(b.y(), -c.y(), bcy, lost[3]);
    double left = 0, leftError = 0, right = 0, rightError = 0;
    expansion::twoProduct(acx, bcy, left, leftError);
    expansion::twoProduct(bcx, acy, right, rightError);
    const bool bExact =
        std::fabs(lost[0]) + std::fabs(lost[1]) + std::fabs(lost[2]) + std::fabs(lost[3]) == 0;
    // Neither the products nor their errors leave the range of doubles: nearly all questions end here.
    const double size = std::fabs(acx) + std::fabs(acy) + std::fabs(bcx) + std::fabs(bcy);
    const bool bModerate = size <= 0x1p400 && isSafeProduct(left, acx, bcy) && isSafeProduct(right, bcx, acy);
    if (!bExact || !bModerate) return orientLongExpansion(a, b, c);
    // Each pair is a rounded product and what rounding lost, so the order of the pairs is that of their
    // heads, and of their tails where the heads agree.
    return left != right ? decisionOf(left - right) : decisionOf(leftError - rightError);
}

Decision inCircleExpansion(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
    const Difference adx(a.x(), d.x()), ady(a.y(), d.y());
    const Difference bdx(b.x(), d.x()), bdy(b.y(), d.y());
    const Difference cdx(c.x(), d.x()), cdy(c.y(), d.y());
    if (adx.num * ady.num * bdx.num * bdy.num * cdx.num * cdy.num == 0) return UNSURE;
    double minor[16], aTerm[512], bTerm[512], cTerm[512], ab[1024], det[1536];
    int num = minorOf(bdx, cdy, cdx, bdy, minor);
    const int numA = timesLift(minor, num, adx, ady, aTerm);
    num = minorOf(cdx, ady, adx, cdy, minor);
    const int numB = timesLift(minor, num, bdx, bdy, bTerm);
    num = minorOf(adx, bdy, bdx, ady, minor);
    const int numC = timesLift(minor, num, cdx, cdy, cTerm);
    const int numAB = expansion::sum(aTerm, numA, bTerm, numB, ab);
    num = expansion::sum(ab, numAB, cTerm, numC, det);
    return decisionOf(det[num - 1]);
}

} // namespace TESK_KIVO2D::stages
