#pragma once

#include <cmath>

namespace TESK_KIVO2D {

// Floating-point expansions (Shewchuk 1997): a number is the exact sum of doubles that do not overlap,
// smallest first. Everything here is exact as long as no product over- or underflows, which the callers make
// sure of.
namespace expansion {

// sum + error is exactly a + b (Knuth 1969).
inline void twoSum(double a, double b, double& sum, double& error) {
    sum = a + b;
    const double bVirtual = sum - a;
    const double aVirtual = sum - bVirtual;
    error = (a - aVirtual) + (b - bVirtual);
}

// The same where |a| >= |b| or a is 0 (Dekker 1971).
inline void fastTwoSum(double a, double b, double& sum, double& error) {
    sum = a + b;
    error = b - (sum - a);
}

// high + low is exactly a, each half with at most 26 bits (Veltkamp 1968).
inline void split(double a, double& high, double& low) {
    const double c = 0x1.0000002p27 * a;
    high = c - (c - a);
    low = a - high;
}

// product + error is exactly a * b (Dekker 1971).
inline void twoProduct(double a, double b, double& product, double& error) {
    product = a * b;
    double aHigh = 0, aLow = 0, bHigh = 0, bLow = 0;
    split(a, aHigh, aLow);
    split(b, bHigh, bLow);
    error = aLow * bLow - (((product - aHigh * bHigh) - aLow * bHigh) - aHigh * bLow);
}

// h = e + f without zero components; returns the number of components, at least 1. h holds up to eNum + fNum
// and must be neither e nor f.
inline int sum(const double* e, int eNum, const double* f, int fNum, double* h) {
    int i = 0, j = 0, num = 0;
    const auto takeSmaller = [&] {
        const bool takeE = j == fNum || (i != eNum && std::fabs(e[i]) < std::fabs(f[j]));
        return takeE ? e[i++] : f[j++];
    };
    double q = takeSmaller();
    while (i < eNum || j < fNum) {
        double next = 0, error = 0;
        twoSum(q, takeSmaller(), next, error);
        if (error != 0) h[num++] = error;
        q = next;
    }
    if (q != 0 || num == 0) h[num++] = q;
    return num;
}

// h = b * e without zero components; returns their number, at least 1. h holds up to 2 * eNum and must not be
// e.
inline int scale(const double* e, int eNum, double b, double* h) {
    int num = 0;
    double q = 0, error = 0;
    twoProduct(e[0], b, q, error);
    if (error != 0) h[num++] = error;
    for (int i = 1; i < eNum; ++i) {
        double product = 0, productError = 0, partial = 0;
        twoProduct(e[i], b, product, productError);
        twoSum(q, productError, partial, error);
        if (error != 0) h[num++] = error;
        fastTwoSum(product, partial, q, error);
        if (error != 0) h[num++] = error;
    }
    if (q != 0 || num == 0) h[num++] = q;
    return num;
}

// Products of four such numbers are multiples of 2^-1008 and stay below 2^804, so that neither they nor the
// errors of their products leave the range of doubles.
inline bool isModerate(double v) {
    const double magnitude = std::fabs(v);
    return v == 0 || (magnitude >= 0x1p-200 && magnitude <= 0x1p200);
}

// An exact difference of two doubles: one component, or two where it rounds, smallest first.
struct Difference {
    double components[2];
    int num = 0; // 0 when a component is not of moderate size

    Difference(double p, double q) {
        double high = 0, low = 0;
        twoSum(p, -q, high, low);
        if (!isModerate(high) || !isModerate(low)) return;
        if (low != 0) components[num++] = low;
        components[num++] = high;
    }
};

// h = e * d; up to 2 * eNum * d.num components for an e of up to maxNum. h must not be e.
template<int maxNum>
int times(const double* e, int eNum, const Difference& d, double* h) {
    if (d.num == 1) return scale(e, eNum, d.components[0], h);
    double low[2 * maxNum], high[2 * maxNum];
    const int numLow = scale(e, eNum, d.components[0], low);
    const int numHigh = scale(e, eNum, d.components[1], high);
    return sum(low, numLow, high, numHigh, h);
}

// h = a * b - c * d; up to 16 components.
inline int minorOf(const Difference& a, const Difference& b, const Difference& c, const Difference& d,
                   double* h) {
    double left[8], right[8];
    const int numLeft = times<2>(a.components, a.num, b, left);
    const int numRight = times<2>(c.components, c.num, d, right);
    for (int i = 0; i < numRight; ++i)
        right[i] = -right[i];
    return sum(left, numLeft, right, numRight, h);
}

} // namespace expansion
} // namespace TESK_KIVO2D
