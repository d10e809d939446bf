#include "Orientation2.h"

#include "functions.h"
#include "kernel/TeskTest.h"

namespace TESK_KIVO2D {
namespace {

Orientation2 grownAndAsked(TeskTest& tests, const Point2* a, const Point2* b, const Point2* c) {
    for (const Point2* p : {a, b, c}) {
        if (!std::isfinite(p->x()) || !std::isfinite(p->y())) return ORIENTATION2_COLLINEAR;
    }
    tests.growStaticBound(*a, *b, *c);
    return tests.orientation(*a, *b, *c);
}

} // namespace

std::string getString(Orientation2 ori) {
    switch (ori) {
    case ORIENTATION2_COLLINEAR:
        return "ORIENTATION2_COLLINEAR";
    case ORIENTATION2_CCW:
        return "ORIENTATION2_CCW";
    case ORIENTATION2_CW:
        return "ORIENTATION2_CW";
    }
    return "";
}

Orientation2 getOrientation2(const Point2* a, const Point2* b, const Point2* c) {
    // One object a thread: its bound and its rationals are working storage.
    thread_local TeskTest tests;
    return grownAndAsked(tests, a, b, c);
}

Orientation2 getOrientation2_mt(const Point2* a, const Point2* b, const Point2* c) {
    TeskTest tests;
    return grownAndAsked(tests, a, b, c);
}

} // namespace TESK_KIVO2D
