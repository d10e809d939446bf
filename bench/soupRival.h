#pragma once

#include "bench/soupInputs.h"

#include <memory>

// What CGAL's constrained triangulation with exact predicates and inexact constructions can do in place of
// import and cutting, behind a wall.
namespace bench::rival {

// Points and all edges, ready for insertion in one call.
class Import {
public:
    explicit Import(const SoupInput& soup);
    ~Import();
    // Returns the number of triangles.
    std::size_t triangulate() const;

private:
    struct Impl;
    std::unique_ptr<Impl> pImpl;
};

// A triangulation, and knives, whose ends lie in its hull.
class Cutting {
public:
    Cutting(const Coordinates& points, const Coordinates& knives);
    ~Cutting();
    // Walks along each knife, computes where it crosses edges, and inserts these points as a chain of
    // constraints; knives cross each other as constraints do. Returns the number of new vertices.
    std::size_t cut();

private:
    struct Impl;
    std::unique_ptr<Impl> pImpl;
};

} // namespace bench::rival
