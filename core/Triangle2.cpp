#include "Triangle2.h"

#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <sstream>

namespace TESK_KIVO2D {

int Triangle2::getIntraTriangleIndex(const Point2* p, const Point2* q) const {
    for (int i = 0; i < 3; ++i) {
        const Point2 *const src = aCorners[incIndexBy1(i)], *const trg = aCorners[incIndexBy2(i)];
        if ((src == p && trg == q) || (src == q && trg == p)) return i;
    }
    std::ostringstream stream;
    stream << "BUG: Triangle2::getIntraTriangleIndex failed for\n" << *p << "\n" << *q << "\n";
    if (aCorners[0] != nullptr && aCorners[1] != nullptr && aCorners[2] != nullptr) stream << *this << "\n";
    printText(stream.str());
    return failIndex();
}

void Triangle2::failNullCorner() {
    failAssertion("(pI!=NULL && pJ!=NULL && pK!=NULL)", __FILE__, __LINE__); // text kept as it is
}

int Triangle2::failIndex() { failAssertion("false", __FILE__, __LINE__); }

} // namespace TESK_KIVO2D
