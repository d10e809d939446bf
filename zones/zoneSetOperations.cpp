// The set operations on zones, and what is left of a zone when a predicate peels it.
#include "UserPredicateT.h"
#include "Zone2.h"
#include "functions.h"
#include "kernel/messages.h"
#include "zones/ZoneEvaluation.h"
#include "zones/ZoneRegistry.h"

#include <locale>
#include <sstream>

namespace TESK_KIVO2D {

UserPredicateT::~UserPredicateT() = default;

namespace {

void printNumbers(const char* title, const Zone2& zone) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << title << " numT=" << zone.getNumberOfTriangles() << " area2D=" << zone.getArea2D() << "\n";
    printText(text.str());
}

std::vector<Triangle2*> borderTriangles(const TriangleSet& triangles) {
    std::vector<Triangle2*> vBorder;
    forEachBorderEdge(triangles, [&](Triangle2* pT, int) {
        if (vBorder.empty() || vBorder.back() != pT) vBorder.push_back(pT);
    });
    return vBorder;
}

void peel(TriangleSet& triangles, UserPredicateT& predicate) {
    std::vector<Triangle2*> vStack = borderTriangles(triangles);
    while (!vStack.empty()) {
        Triangle2* const pT = vStack.back();
        vStack.pop_back();
        if (!triangles.contains(pT) || !predicate(pT)) continue;
        triangles.erase(pT);
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN != nullptr && triangles.contains(pN)) vStack.push_back(pN);
        }
    }
}

Zone2* combine(Zone2* pZone0, Zone2* pZone1, ZoneLocation zoneLoc, const char* location) {
    if (pZone0 == nullptr || pZone1 == nullptr) {
        reportError(location, "A zone is NULL! Returning NULL");
        return nullptr;
    }
    ZoneHost& dt = ZoneRegistry::hostOf(*pZone0);
    if (&dt != &ZoneRegistry::hostOf(*pZone1)) {
        reportError(location, "The zones must belong to the same triangulation! Returning NULL");
        return nullptr;
    }
    return dt.zoneRegistry().createResultZone(zoneLoc, pZone0, pZone1);
}

} // namespace

Zone2* zoneUnion(Zone2* pZone0, Zone2* pZone1) {
    return combine(pZone0, pZone1, ZL_RESULT_UNION, "Zone2::zoneUnion(...)");
}

// The location of the first one stands for all others too.
Zone2* zoneIntersection(Zone2* pZone0, Zone2* pZone1) {
    return combine(pZone0, pZone1, ZL_RESULT_INTERSECTION, "zoneUnion(...)");
}

Zone2* zoneDifference(Zone2* pZone0, Zone2* pZone1) {
    return combine(pZone0, pZone1, ZL_RESULT_DIFFERENCE, "zoneUnion(...)");
}

Zone2* zoneSymmetricDifference(Zone2* pZone0, Zone2* pZone1) {
    return combine(pZone0, pZone1, ZL_RESULT_SYM_DIFFERENCE, "zoneUnion(...)");
}

Zone2* peelOffIf(Zone2* pZone, UserPredicateT* pPredicate, bool bVerbose) {
    if (pZone == nullptr) {
        reportWarning("peelOffIf()", "Input zone is NULL, returning NULL");
        return nullptr;
    }
    if (pPredicate == nullptr) {
        reportWarning("peelOffIf()", "The predicate is NULL, returning NULL");
        return nullptr;
    }
    ZoneHost& dt = ZoneRegistry::hostOf(*pZone);
    const ZoneEvaluation evaluation(dt);
    TriangleSet triangles = evaluation.setOf(*pZone);
    if (triangles.empty()) {
        reportWarning("peelOffIf()", "Input zone is empty, returning NULL");
        return nullptr;
    }
    if (bVerbose) printNumbers("\nZone2::peelOffIf(), original Zone:", *pZone);
    peel(triangles, *pPredicate);
    if (dt.meshStore().triangleNumbers().size() != triangles.numbers().size()) {
        reportError("peelOffIf()", "The predicate has changed the triangulation, returning NULL");
        return nullptr;
    }
    Zone2* const pPeeled = dt.zoneRegistry().createGrownZone(triangles);
    if (bVerbose && pPeeled != nullptr) printNumbers("Output Zone:", *pPeeled);
    return pPeeled;
}

} // namespace TESK_KIVO2D
