#include "kernel/TeskTest_exact.h"

#include "kernel/TeskTest_stages.h"

namespace TESK_KIVO2D::stages {
namespace {

void setCoords(mpq_ptr x, mpq_ptr y, const Point2& p) {
    mpq_set_d(x, p.x());
    mpq_set_d(y, p.y());
}

} // namespace

Decision orientExact(const Point2& a, const Point2& b, const Point2& c, OrientationRationals& r) {
    setCoords(r.coords[0], r.coords[1], a);
    setCoords(r.coords[2], r.coords[3], b);
    setCoords(r.coords[4], r.coords[5], c);
    mpq_sub(r.differences[0], r.coords[0], r.coords[4]); // a.x - c.x
    mpq_sub(r.differences[1], r.coords[3], r.coords[5]); // b.y - c.y
    mpq_sub(r.differences[2], r.coords[1], r.coords[5]); // a.y - c.y
    mpq_sub(r.differences[3], r.coords[2], r.coords[4]); // b.x - c.x
    mpq_mul(r.products[0], r.differences[0], r.differences[1]);
    mpq_mul(r.products[1], r.differences[2], r.differences[3]);
    const int order = mpq_cmp(r.products[0], r.products[1]);
    return order > 0 ? POSITIVE : order < 0 ? NEGATIVE : ZERO;
}

Decision inCircleExact(const Point2& a, const Point2& b, const Point2& c, const Point2& d,
                       InCircleRationals& r) {
    setCoords(r.coords[0], r.coords[1], a);
    setCoords(r.coords[2], r.coords[3], b);
    setCoords(r.coords[4], r.coords[5], c);
    setCoords(r.coords[6], r.coords[7], d);
    for (int i = 0; i < 6; ++i)
        mpq_sub(r.differences[i], r.coords[i], r.coords[6 + i % 2]);
    for (int i = 0; i < 6; ++i)
        mpq_mul(r.squares[i], r.differences[i], r.differences[i]);
    mpq_set_ui(r.sum[0], 0, 1);
    for (int i = 0; i < 3; ++i) {
        // Corner i, lifted, times the minor of the other two in cyclic order.
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        mpq_add(r.lifts[i], r.squares[2 * i], r.squares[2 * i + 1]);
        mpq_mul(r.crosses[2 * i], r.differences[2 * j], r.differences[2 * k + 1]);
        mpq_mul(r.crosses[2 * i + 1], r.differences[2 * k], r.differences[2 * j + 1]);
        mpq_sub(r.minors[i], r.crosses[2 * i], r.crosses[2 * i + 1]);
        mpq_mul(r.products[i], r.lifts[i], r.minors[i]);
        mpq_add(r.sum[0], r.sum[0], r.products[i]);
    }
    const int sign = mpq_sgn(r.sum[0]);
    return sign > 0 ? POSITIVE : sign < 0 ? NEGATIVE : ZERO;
}

} // namespace TESK_KIVO2D::stages
