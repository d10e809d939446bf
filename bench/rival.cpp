#include "bench/rival.h"

#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Triangulation_hierarchy_2.h>

#include <map>

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

struct Removal::Impl {
    Delaunay triangulation;
    std::vector<Delaunay::Vertex_handle> going;
};

Removal::Removal(const Coordinates& points, std::size_t numGone) : pImpl(std::make_unique<Impl>()) {
    const auto input = converted(points);
    pImpl->triangulation.insert(input.begin(), input.end());
    std::map<Kernel::Point_2, Delaunay::Vertex_handle> handles;
    for (std::size_t i = 0; i < numGone; ++i)
        handles[input[i]];
    for (const auto handle : pImpl->triangulation.finite_vertex_handles()) {
        const auto found = handles.find(handle->point());
        if (found != handles.end()) found->second = handle;
    }
    for (std::size_t i = 0; i < numGone; ++i) {
        pImpl->going.push_back(handles[input[i]]);
        handles.erase(input[i]);
    }
}
Removal::~Removal() = default;

void Removal::removeAll() {
    for (const Delaunay::Vertex_handle handle : pImpl->going) {
        if (handle != Delaunay::Vertex_handle()) pImpl->triangulation.remove(handle);
    }
}

} // namespace bench::rival
