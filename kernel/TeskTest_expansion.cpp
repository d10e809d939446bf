#include "kernel/TeskTest_stages.h"

#include "kernel/expansion.h"

namespace TESK_KIVO2D::stages {
namespace {

using expansion::Difference;
using expansion::minorOf;
using expansion::times;

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
