#include "constraints/polygonApexes.h"

#include "constraints/PolygonGuide.h"

namespace TESK_KIVO2D {
namespace {

// Beyond so many in-circle tests a vertex, twice what a polygon of 10^6 random vertices takes, bases that are
// not small get a guide.
constexpr std::size_t maxStepsPerVertex = 64;
constexpr std::size_t smallBase = 128;
constexpr int maxDepth = 2;

} // namespace

PolygonApexes::PolygonApexes(TeskTest& predicates, int nestingDepth)
    : tests(predicates), depth(nestingDepth) {}
PolygonApexes::~PolygonApexes() = default;

const std::vector<std::size_t>& PolygonApexes::find(const std::vector<Border>& polygon) {
    vApexes.clear();
    vBases.clear();
    numSteps = 0;
    vBases.push_back({0, polygon.size() - 1, nullptr});
    while (!vBases.empty()) {
        Base base = vBases.back();
        vBases.pop_back();
        if (base.j == base.i + 1) continue;
        const bool bLate = numSteps > maxStepsPerVertex * polygon.size();
        if (base.pGuideT == nullptr && bLate && base.j - base.i > smallBase && depth < maxDepth) {
            // The one before is not asked any more: this base comes after all that belonged to it.
            pGuide = std::make_unique<PolygonGuide>(polygon, base.i, base.j, tests, depth);
            base.pGuideT = pGuide->triangleAtBase();
        }
        if (base.pGuideT != nullptr) {
            const PolygonGuide::Step step = pGuide->follow(base.pGuideT, base.i, base.j);
            vApexes.push_back(step.apex);
            vBases.push_back({step.apex, base.j, step.pAtTarget});
            vBases.push_back({base.i, step.apex, step.pAtSource});
        } else {
            const std::size_t apex = findApex(polygon, base);
            vApexes.push_back(apex);
            vBases.push_back({apex, base.j, nullptr});
            vBases.push_back({base.i, apex, nullptr});
        }
    }
    return vApexes;
}

std::size_t PolygonApexes::findApex(const std::vector<Border>& polygon, const Base& base) {
    const Point2 &p = *polygon[base.i].pVtx, &q = *polygon[base.j].pVtx;
    std::size_t apex = base.i + 1;
    for (std::size_t k = apex + 1; k < base.j; ++k) {
        if (tests.inCircle(p, q, *polygon[apex].pVtx, *polygon[k].pVtx) == CINC2_INCIRCLE) apex = k;
    }
    numSteps += base.j - base.i;
    return apex;
}

} // namespace TESK_KIVO2D
