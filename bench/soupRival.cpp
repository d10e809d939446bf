#include "bench/soupRival.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

namespace bench::rival {
namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Points = std::vector<Kernel::Point_2>;
using WithoutCrossings =
    CGAL::Constrained_Delaunay_triangulation_2<Kernel, CGAL::Default,
                                               CGAL::No_constraint_intersection_requiring_constructions_tag>;
using WithCrossings =
    CGAL::Constrained_Delaunay_triangulation_2<Kernel, CGAL::Default, CGAL::Exact_predicates_tag>;

Points converted(const Coordinates& points) {
    Points result;
    result.reserve(points.size());
    for (const auto& [x, y] : points)
        result.emplace_back(x, y);
    return result;
}

} // namespace

struct Import::Impl {
    Points points;
    std::vector<std::pair<std::size_t, std::size_t>> edges;
};

Import::Import(const SoupInput& soup)
    : pImpl(std::make_unique<Impl>(Impl{converted(soup.points), soup.edges()})) {}
Import::~Import() = default;

std::size_t Import::triangulate() const {
    WithoutCrossings triangulation;
    triangulation.insert_constraints(pImpl->points.begin(), pImpl->points.end(), pImpl->edges.begin(),
                                     pImpl->edges.end());
    return triangulation.number_of_faces();
}

struct Cutting::Impl {
    WithCrossings triangulation;
    Points ends;

    // From end to end, in order.
    Points stopsOf(const Kernel::Point_2& p, const Kernel::Point_2& q) const {
        Points stops = {p};
        auto walk = triangulation.line_walk(p, q, triangulation.locate(p));
        while (true) {
            const WithCrossings::Face_handle left = walk;
            const int i = left->index(WithCrossings::Face_handle(++walk));
            const auto edge = triangulation.segment(left, i);
            if (CGAL::orientation(edge.source(), edge.target(), q) != CGAL::RIGHT_TURN) break;
            const auto common = CGAL::intersection(edge, Kernel::Segment_2(p, q));
            if (const auto* pPoint = boost::get<Kernel::Point_2>(&*common)) stops.push_back(*pPoint);
        }
        stops.push_back(q);
        return stops;
    }
};

Cutting::Cutting(const Coordinates& points, const Coordinates& knives) : pImpl(std::make_unique<Impl>()) {
    const Points input = converted(points);
    pImpl->triangulation.insert(input.begin(), input.end());
    pImpl->ends = converted(knives);
}
Cutting::~Cutting() = default;

std::size_t Cutting::cut() {
    const std::size_t before = pImpl->triangulation.number_of_vertices();
    std::vector<Points> chains; // all of the triangles that there were before
    for (std::size_t i = 0; i < pImpl->ends.size(); i += 2)
        chains.push_back(pImpl->stopsOf(pImpl->ends[i], pImpl->ends[i + 1]));
    for (const Points& chain : chains)
        pImpl->triangulation.insert_constraint(chain.begin(), chain.end());
    return pImpl->triangulation.number_of_vertices() - before;
}

} // namespace bench::rival
