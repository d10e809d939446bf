#include "tests/oracle/cgalConstrained.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <algorithm>

namespace oracle {

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Vertex = CGAL::Triangulation_vertex_base_2<Kernel>;
using Face = CGAL::Constrained_triangulation_face_base_2<Kernel>;
using Triangulation =
    CGAL::Constrained_Delaunay_triangulation_2<Kernel, CGAL::Triangulation_data_structure_2<Vertex, Face>,
                                               CGAL::No_constraint_intersection_requiring_constructions_tag>;

Kernel::Point_2 toPoint(const Xy& xy) { return {xy.first, xy.second}; }

Xy toXy(const Kernel::Point_2& point) { return {point.x() + 0.0, point.y() + 0.0}; } // one zero only

} // namespace

ConstrainedFacts cgalConstrained(const std::vector<Xy>& vPoints, const std::vector<XyPair>& vSegments) {
    Triangulation triangulation;
    std::vector<Kernel::Point_2> vCgalPoints;
    for (const Xy& xy : vPoints)
        vCgalPoints.push_back(toPoint(xy));
    triangulation.insert(vCgalPoints.begin(), vCgalPoints.end());
    std::vector<std::pair<Kernel::Point_2, Kernel::Point_2>> vCgalSegments;
    for (const auto& [source, target] : vSegments)
        vCgalSegments.emplace_back(toPoint(source), toPoint(target));
    triangulation.insert_constraints(vCgalSegments.begin(), vCgalSegments.end());

    ConstrainedFacts facts;
    facts.numVertices = triangulation.number_of_vertices();
    if (triangulation.dimension() < 2) return facts;
    facts.numTriangles = triangulation.number_of_faces();
    for (auto edge = triangulation.finite_edges_begin(); edge != triangulation.finite_edges_end(); ++edge) {
        const Xy p = toXy(edge->first->vertex(Triangulation::cw(edge->second))->point());
        const Xy q = toXy(edge->first->vertex(Triangulation::ccw(edge->second))->point());
        facts.vEdges.emplace_back(std::min(p, q), std::max(p, q));
        if (triangulation.is_constrained(*edge)) facts.vConstraints.push_back(facts.vEdges.back());
    }
    std::sort(facts.vEdges.begin(), facts.vEdges.end());
    std::sort(facts.vConstraints.begin(), facts.vConstraints.end());
    return facts;
}

} // namespace oracle
