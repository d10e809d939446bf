#include "bench/constraintRival.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

namespace bench::rival {
namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
template<class Crossings>
using Constrained = CGAL::Constrained_Delaunay_triangulation_2<Kernel, CGAL::Default, Crossings>;

} // namespace

struct Constraints::Impl {
    std::vector<Kernel::Point_2> points;
    std::vector<std::pair<std::size_t, std::size_t>> segments;

    template<class Triangulation>
    std::size_t triangulate() const {
        Triangulation triangulation;
        triangulation.insert_constraints(points.begin(), points.end(), segments.begin(), segments.end());
        return triangulation.number_of_vertices();
    }
};

Constraints::Constraints(const ConstraintInput& input) : pImpl(std::make_unique<Impl>()) {
    for (const Coordinates* pPoints : {&input.corners, &input.points}) {
        for (const auto& [x, y] : *pPoints)
            pImpl->points.emplace_back(x, y);
    }
    pImpl->segments = input.segments;
}
Constraints::~Constraints() = default;

std::size_t Constraints::triangulate(bool bCrossing) const {
    return bCrossing ? pImpl->triangulate<Constrained<CGAL::Exact_predicates_tag>>()
                     : pImpl->triangulate<
                           Constrained<CGAL::No_constraint_intersection_requiring_constructions_tag>>();
}

} // namespace bench::rival
