#include "Zone2.h"

#include "ConstraintGraph2.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "kernel/tools_rings.h"
#include "zones/GridUnifier.h"
#include "zones/ResultOrder.h"
#include "zones/ZoneEvaluation.h"
#include "zones/ZoneRegistry.h"

#include <cmath>
#include <string>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr const char* constructorLocation = "Zone2::Zone2(..)";

// An edge that the zone's own constraint separates from the zone on its other side is no border.
void appendBorder(const TriangleSet& triangles, std::vector<Edge2>& vEdges) {
    forEachBorderEdge(triangles, [&](Triangle2* pT, int i) { vEdges.emplace_back(pT, i); });
}

} // namespace

Zone2::Zone2(ZoneHost& triangulation, ZoneLocation location) : dt(triangulation), zoneLoc(location) {
    KIVO_ASSERT(zoneLoc == ZL_GLOBAL || isResult(zoneLoc),
                "zoneLoc==ZL_GLOBAL || zoneLoc==ZL_RESULT_UNION || zoneLoc==ZL_RESULT_INTERSECTION || "
                "zoneLoc==ZL_RESULT_DIFFERENCE || zoneLoc==ZL_RESULT_SYM_DIFFERENCE");
}

Zone2::Zone2(ZoneHost& triangulation, ZoneLocation location, ConstraintGraph2* pGraph)
    : dt(triangulation), zoneLoc(location), vConstraintGraphs(1, pGraph) {
    if (pGraph == nullptr) {
        reportError(constructorLocation, "The ConstraintGraph is NULL");
        KIVO_ASSERT(pGraph != nullptr, "false");
    }
    if (!pGraph->isOriented()) {
        reportError(constructorLocation, "The ConstraintGraph is not oriented");
        KIVO_ASSERT(pGraph->isOriented(), "false");
    }
    if (zoneLoc == ZL_INSIDE || zoneLoc == ZL_OUTSIDE || zoneLoc == ZL_BOUNDED) return;
    printText("zoneLoc=" + std::to_string(zoneLoc) + "\n");
    reportError(constructorLocation,
                "The ZoneLocation for this constructor can only be one of ZL_INSIDE, ZL_OUTSIDE, ZL_BOUNDED");
    KIVO_ASSERT(false, "false");
}

Zone2::Zone2(ZoneHost& triangulation, ZoneLocation location, const std::vector<ConstraintGraph2*>& vGraphs)
    : dt(triangulation), zoneLoc(location), vConstraintGraphs(vGraphs) {
    for (const ConstraintGraph2* pGraph : vGraphs) {
        if (!pGraph->isOriented())
            reportError(constructorLocation, "One of the ConstraintGraphs is not oriented!");
    }
    if (zoneLoc != ZL_INSIDE && zoneLoc != ZL_OUTSIDE)
        reportError(constructorLocation,
                    "ZoneLocation for this constructor must be ZL_INSIDE or ZL_OUTSIDE!");
}

Zone2::Zone2(ZoneHost& triangulation, const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation location,
             const std::vector<Point2>& vPoints)
    : dt(triangulation), zoneLoc(location), vConstraintGraphs(vGraphs), vStartPoints(vPoints) {
    KIVO_ASSERT(zoneLoc == ZL_GROW, "zoneLoc==ZL_GROW");
}

Zone2::~Zone2() = default;

Dt2* Zone2::getDelaunayTriangulation() const { return dt.implementation(); }

ConstraintGraph2* Zone2::getConstraintGraph() const {
    if (vConstraintGraphs.size() > 1) {
        reportWarning("Zone2::getConstraintGraph()", "There is more than one constraint graph, use "
                                                     "Zone2::getConstraintGraphs() instead. Returning NULL");
        return nullptr;
    }
    return vConstraintGraphs.empty() ? nullptr : vConstraintGraphs.front();
}

void Zone2::getTriangles(std::vector<Triangle2*>& vTriangles) const {
    ZoneEvaluation(dt).list(*this, vTriangles);
}

std::uint64_t Zone2::getNumberOfTriangles() const {
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    return vTriangles.size();
}

void Zone2::getVertices(std::vector<Point2*>& vVertices) const {
    ZoneEvaluation(dt).listVertices(*this, vVertices);
}

double Zone2::getArea2D() const {
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    double area = 0;
    for (const Triangle2* pT : vTriangles)
        area += pT->getArea2D();
    return area;
}

Bbox2 Zone2::getBoundingBox() const {
    const ZoneEvaluation evaluation(dt);
    Bbox2 box;
    evaluation.setOf(*this).forEach([&](Triangle2* pT) {
        for (int i = 0; i < 3; ++i)
            box.add(*pT->getCorner(i));
    });
    return box;
}

void Zone2::getBorderEdges(std::vector<Edge2>& vEdges) const {
    const ZoneEvaluation evaluation(dt);
    appendBorder(evaluation.setOf(*this), vEdges);
}

void Zone2::getBoundaryEdges(std::vector<Edge2>& vEdges) const {
    std::vector<Edge2> vBorder;
    getBorderEdges(vBorder);
    const PolygonParts parts = edgesToPolygons(vBorder);
    KIVO_ASSERT(parts.vRemaining.empty(), "vRemaining.empty()");
    for (const std::vector<Edge2>& vRing : parts.vvPolygons)
        vEdges.insert(vEdges.end(), vRing.begin(), vRing.end());
}

void Zone2::getBoundarySegments(std::vector<Segment2>& vSegments) const {
    std::vector<Edge2> vEdges;
    getBoundaryEdges(vEdges);
    vSegments.reserve(vSegments.size() + vEdges.size());
    for (const Edge2& edge : vEdges)
        vSegments.emplace_back(*edge.getSrc(), *edge.getTrg());
}

Zone2* Zone2::convertToBoundedZone() {
    if (zoneLoc == ZL_INSIDE) return this;
    // Only then: application goes over all segments, and conforming ones might be divided further.
    if (dt.constraints().hasPending() || !dt.is2D()) dt.applyConstraintsAndZones();
    const ZoneEvaluation evaluation(dt);
    const TriangleSet triangles = evaluation.setOf(*this);
    if (triangles.empty()) {
        reportWarning("Zone2::convertToBoundedZone()", "No triangles available, returning NULL");
        return nullptr;
    }
    return dt.zoneRegistry().createBoundedZone(triangles);
}

std::size_t Zone2::unifyGrid(double tolerance) {
    constexpr const char* location = "Zone2::unifyGrid()";
    if (!(tolerance > 0) || std::isinf(tolerance)) {
        reportWarning(location, "The tolerance must be a positive number, nothing to do");
        return 0;
    }
    if (dt.constraints().hasPending() || !dt.is2D()) dt.applyConstraintsAndZones();
    if (getNumberOfTriangles() == 0) {
        reportWarning(location, "The zone has no triangles, nothing to do");
        return 0;
    }
    const std::size_t num = GridUnifier(*this, dt, tolerance).run();
    if (num > 0) {
        reportWarning(location, std::to_string(num) + (num == 1 ? " vertex stays" : " vertices stay") +
                                    " beside the grid: moving them would change how constraints lie");
    }
    return num;
}

} // namespace TESK_KIVO2D
