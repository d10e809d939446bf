#include "kernel/intersection.h"

#include "kernel/TeskTest_exact.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <mutex>

namespace TESK_KIVO2D {
namespace {

struct IntersectionRationals {
    std::mutex mutex;
    RationalBlock<8> coords;      // x and y of p1 to p4
    RationalBlock<4> products;    // p1.x p2.y, p1.y p2.x, p3.x p4.y, p3.y p4.x
    RationalBlock<2> crosses;     // p1 x p2, p3 x p4
    RationalBlock<4> differences; // p1 - p2, p3 - p4
    RationalBlock<4> numParts;
    RationalBlock<2> denomParts;
    RationalBlock<2> num;
    RationalBlock<1> denom;
    RationalBlock<2> result;
};

// Created on first use and never cleared, so that it serves to the very end of the process.
IntersectionRationals& rationals() {
    static IntersectionRationals* pRationals = new IntersectionRationals;
    return *pRationals;
}

} // namespace

void getIntersectionCoords(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4, double& x,
                           double& y) {
    IntersectionRationals& r = rationals();
    const std::lock_guard<std::mutex> lock(r.mutex);
    int next = 0;
    for (const Point2* p : {&p1, &p2, &p3, &p4}) {
        mpq_set_d(r.coords[next++], p->x());
        mpq_set_d(r.coords[next++], p->y());
    }
    for (int line = 0; line < 2; ++line) {
        const int s = 4 * line, t = s + 2; // where the line's two points begin
        mpq_mul(r.products[2 * line], r.coords[s], r.coords[t + 1]);
        mpq_mul(r.products[2 * line + 1], r.coords[s + 1], r.coords[t]);
        mpq_sub(r.crosses[line], r.products[2 * line], r.products[2 * line + 1]);
        for (int axis = 0; axis < 2; ++axis) {
            mpq_sub(r.differences[2 * line + axis], r.coords[s + axis], r.coords[t + axis]);
        }
    }
    mpq_mul(r.denomParts[0], r.differences[0], r.differences[3]);
    mpq_mul(r.denomParts[1], r.differences[1], r.differences[2]);
    mpq_sub(r.denom[0], r.denomParts[0], r.denomParts[1]);
    if (mpq_sgn(r.denom[0]) == 0) {
        reportError("TeskTest::getIntersectionCoords()", "denom=0 -> parallel segments");
        KIVO_ASSERT(false, "false");
    }
    for (int axis = 0; axis < 2; ++axis) {
        mpq_mul(r.numParts[2 * axis], r.crosses[0], r.differences[2 + axis]);
        mpq_mul(r.numParts[2 * axis + 1], r.differences[axis], r.crosses[1]);
        mpq_sub(r.num[axis], r.numParts[2 * axis], r.numParts[2 * axis + 1]);
        mpq_div(r.result[axis], r.num[axis], r.denom[0]);
    }
    x = mpq_get_d(r.result[0]);
    y = mpq_get_d(r.result[1]);
}

} // namespace TESK_KIVO2D
