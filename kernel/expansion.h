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

} // namespace expansion
} // namespace TESK_KIVO2D
