#pragma once

#include <gmp.h>

namespace TESK_KIVO2D {

// A block of rationals that is initialised and cleared as one.
template<int num>
class RationalBlock {
public:
    RationalBlock() {
        for (mpq_t& q : a)
            mpq_init(q);
    }
    ~RationalBlock() {
        for (mpq_t& q : a)
            mpq_clear(q);
    }
    RationalBlock(const RationalBlock&) = delete;
    RationalBlock& operator=(const RationalBlock&) = delete;

    mpq_ptr operator[](int i) { return a[i]; }

private:
    mpq_t a[num];
};

class OrientationRationals {
public:
    RationalBlock<6> coords; // a.x, a.y, b.x, b.y, c.x, c.y
    RationalBlock<4> differences;
    RationalBlock<2> products;
};

class InCircleRationals {
public:
    RationalBlock<8> coords;      // x and y of a, b, c, d
    RationalBlock<6> differences; // adx, ady, bdx, bdy, cdx, cdy
    RationalBlock<6> squares;
    RationalBlock<6> crosses;
    RationalBlock<3> lifts;
    RationalBlock<3> minors;
    RationalBlock<3> products;
    RationalBlock<1> sum;
};

} // namespace TESK_KIVO2D
