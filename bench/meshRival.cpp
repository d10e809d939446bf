#include "bench/meshRival.h"

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Delaunay_mesh_face_base_2.h>
#include <CGAL/Delaunay_mesh_size_criteria_2.h>
#include <CGAL/Delaunay_mesh_vertex_base_2.h>
#include <CGAL/Delaunay_mesher_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <algorithm>
#include <cmath>

namespace bench::rival {
namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Data = CGAL::Triangulation_data_structure_2<CGAL::Delaunay_mesh_vertex_base_2<Kernel>,
                                                  CGAL::Delaunay_mesh_face_base_2<Kernel>>;
using Triangulation = CGAL::Constrained_Delaunay_triangulation_2<Kernel, Data>;
using Criteria = CGAL::Delaunay_mesh_size_criteria_2<Triangulation>;

const double degree = std::acos(-1.0) / 180;

} // namespace

struct Mesher::Impl {
    Triangulation triangulation;
    std::vector<Kernel::Point_2> seeds;
};

Mesher::Mesher(const ConstraintInput& input, const Coordinates& holePoints)
    : pImpl(std::make_unique<Impl>()) {
    std::vector<Kernel::Point_2> points;
    for (const auto& [x, y] : input.corners)
        points.emplace_back(x, y);
    for (const auto& [x, y] : holePoints)
        pImpl->seeds.emplace_back(x, y);
    pImpl->triangulation.insert_constraints(points.begin(), points.end(), input.segments.begin(),
                                            input.segments.end());
}
Mesher::~Mesher() = default;

// The shape bound is the square of the sine of the smallest angle.
void Mesher::refine(double minAngle, double maxEdge) {
    const double shape = std::pow(std::sin(minAngle * degree), 2);
    CGAL::refine_Delaunay_mesh_2(pImpl->triangulation, pImpl->seeds.begin(), pImpl->seeds.end(),
                                 Criteria(shape, maxEdge));
}

std::size_t Mesher::numTriangles() const {
    const auto faces = pImpl->triangulation.finite_face_handles();
    return static_cast<std::size_t>(
        std::count_if(faces.begin(), faces.end(), [](const auto& face) { return face->is_in_domain(); }));
}

double Mesher::smallestAngle() const {
    double smallest = 180;
    for (const auto& face : pImpl->triangulation.finite_face_handles()) {
        if (!face->is_in_domain()) continue;
        for (int i = 0; i < 3; ++i) {
            const auto p = face->vertex((i + 1) % 3)->point() - face->vertex(i)->point();
            const auto q = face->vertex((i + 2) % 3)->point() - face->vertex(i)->point();
            smallest = std::min(smallest, std::atan2(p.x() * q.y() - p.y() * q.x(), p * q) / degree);
        }
    }
    return smallest;
}

} // namespace bench::rival
