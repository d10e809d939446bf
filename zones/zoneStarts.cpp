#include "zones/zoneStarts.h"

#include "core/flood.h"
#include "kernel/messages.h"

#include <locale>
#include <sstream>

namespace TESK_KIVO2D {
namespace {

bool isStrictlyInside(const Triangle2& triangle, const Point2& p, TeskTest& tests) {
    for (int i = 0; i < 3; ++i) {
        if (tests.orientation(*triangle.getCorner(i), *triangle.getCorner(Triangle2::incIndexBy1(i)), p) !=
            ORIENTATION2_CCW)
            return false;
    }
    return true;
}

void reportDegenerate(const std::vector<Triangle2*>& vPart) {
    reportWarning("Dt2::createZone()", "A connected component of the zone is almost degenerate:");
    std::ostringstream text;
    text.imbue(std::locale::classic());
    for (const Triangle2* pT : vPart)
        text << "Unable to handle the triangle " << *pT << "\n";
    printText(text.str());
    reportError("Dt2::createZone",
                "An almost degenerate part of the zone has no start point for zone growing!");
}

bool appendStart(const std::vector<Triangle2*>& vPart, TeskTest& tests, std::vector<Point2>& vStarts) {
    for (const Triangle2* pT : vPart) {
        const Point2 barycenter = pT->getBarycenter();
        if (!isStrictlyInside(*pT, barycenter, tests)) continue;
        vStarts.push_back(barycenter);
        return true;
    }
    return false;
}

} // namespace

std::vector<Point2> startPointsOf(const TriangleSet& triangles, const EdgeMarks& closed, TeskTest& tests,
                                  DegenerateParts degenerateParts) {
    TriangleSet reached(triangles.numbers());
    std::vector<Triangle2*> vStack, vPart;
    std::vector<Point2> vStarts;
    triangles.forEach([&](Triangle2* pFirst) {
        if (!reached.insert(pFirst)) return;
        vPart.assign(1, pFirst);
        vStack.push_back(pFirst);
        flood(vStack, closed, reached, [&](Triangle2* pT) { vPart.push_back(pT); });
        if (!appendStart(vPart, tests, vStarts) && degenerateParts == DegenerateParts::ARE_REPORTED)
            reportDegenerate(vPart);
    });
    return vStarts;
}

std::vector<Point2> startPointsOf(const TriangleSet& triangles, TeskTest& tests) {
    EdgeMarks border(triangles.numbers());
    forEachBorderEdge(triangles, [&](Triangle2* pT, int i) { border.set({pT, i}); });
    return startPointsOf(triangles, border, tests, DegenerateParts::ARE_REPORTED);
}

} // namespace TESK_KIVO2D
