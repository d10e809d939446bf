#include "bench/rival.h"

#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Triangulation_hierarchy_2.h>

namespace bench::rival {
namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Delaunay = CGAL::Delaunay_triangulation_2<Kernel>;
using HierarchyData = CGAL::Triangulation_data_structure_2<
    CGAL::Triangulation_hierarchy_vertex_base_2<CGAL::Triangulation_vertex_base_2<Kernel>>,
    CGAL::Triangulation_face_base_2<Kernel>>;
using DelaunayHierarchy =
    CGAL::Triangulation_hierarchy_2<CGAL::Delaunay_triangulation_2<Kernel, HierarchyData>>;

std::vector<Kernel::Point_2> converted(const Coordinates& points) {
    std::vector<Kernel::Point_2> result;
    result.reserve(points.size());
    for (const auto& [x, y] : points)
        result.emplace_back(x, y);
    return result;
}

} // namespace

struct Batch::Impl {
    std::vector<Kernel::Point_2> points;
};

Batch::Batch(const Coordinates& points) : pImpl(std::make_unique<Impl>(Impl{converted(points)})) {}
Batch::~Batch() = default;

std::size_t Batch::triangulate() const {
    Delaunay triangulation;
    triangulation.insert(pImpl->points.begin(), pImpl->points.end());
    return triangulation.number_of_faces();
}

struct Hierarchy::Impl {
    DelaunayHierarchy triangulation;
};

Hierarchy::Hierarchy() : pImpl(std::make_unique<Impl>()) {}
Hierarchy::~Hierarchy() = default;

void Hierarchy::insert(double x, double y) { pImpl->triangulation.insert(Kernel::Point_2(x, y)); }

void Hierarchy::insertAll(const Coordinates& points) {
    const auto input = converted(points);
    pImpl->triangulation.insert(input.begin(), input.end());
}

bool Hierarchy::locate(double x, double y) const {
    return !pImpl->triangulation.is_infinite(pImpl->triangulation.locate(Kernel::Point_2(x, y)));
}

} // namespace bench::rival
