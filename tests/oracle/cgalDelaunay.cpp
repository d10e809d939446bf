#include "tests/oracle/cgalDelaunay.h"

#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <algorithm>

namespace oracle {

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Triangulation = CGAL::Delaunay_triangulation_2<Kernel>;

Xy toXy(const Kernel::Point_2& point) { return {point.x(), point.y()}; }

void collectTriangles(const Triangulation& triangulation, DelaunayFacts& facts) {
    for (auto face = triangulation.finite_faces_begin(); face != triangulation.finite_faces_end(); ++face) {
        std::array<Xy, 3> aCorners;
        for (int i = 0; i < 3; ++i)
            aCorners[static_cast<std::size_t>(i)] = toXy(face->vertex(i)->point());
        std::rotate(aCorners.begin(), std::min_element(aCorners.begin(), aCorners.end()), aCorners.end());
        facts.vTriangles.push_back(aCorners);
    }
    std::sort(facts.vTriangles.begin(), facts.vTriangles.end());
}

void collectHull(const Triangulation& triangulation, DelaunayFacts& facts) {
    // Around the infinite vertex the hull passes in clockwise order.
    auto vertex = triangulation.incident_vertices(triangulation.infinite_vertex());
    const auto start = vertex;
    do
        facts.vHull.push_back(toXy(vertex->point()));
    while (++vertex != start);
    std::reverse(facts.vHull.begin(), facts.vHull.end());
    std::rotate(facts.vHull.begin(), std::min_element(facts.vHull.begin(), facts.vHull.end()),
                facts.vHull.end());
}

} // namespace

DelaunayFacts cgalDelaunay(const std::vector<Xy>& vPoints) {
    std::vector<Kernel::Point_2> vCgalPoints;
    vCgalPoints.reserve(vPoints.size());
    for (const Xy& xy : vPoints)
        vCgalPoints.emplace_back(xy.first, xy.second);
    const Triangulation triangulation(vCgalPoints.begin(), vCgalPoints.end());
    DelaunayFacts facts;
    facts.numVertices = triangulation.number_of_vertices();
    if (triangulation.dimension() == 2) {
        collectTriangles(triangulation, facts);
        collectHull(triangulation, facts);
    }
    return facts;
}

} // namespace oracle
