#pragma once

#include "bench/distributions.h"

#include <memory>

// CGAL with exact predicates and inexact constructions, behind a wall.
namespace bench::rival {

// Points in the rival's own form, ready for batch insertion.
class Batch {
public:
    explicit Batch(const Coordinates& points);
    ~Batch();
    // Returns the number of triangles.
    std::size_t triangulate() const;

private:
    struct Impl;
    std::unique_ptr<Impl> pImpl;
};

// The hierarchy, for insertions one by one and for location.
class Hierarchy {
public:
    Hierarchy();
    ~Hierarchy();
    void insert(double x, double y);
    void insertAll(const Coordinates& points);
    // True for a point inside the hull.
    bool locate(double x, double y) const;

private:
    struct Impl;
    std::unique_ptr<Impl> pImpl;
};

// A triangulation of all points, and handles to the first ones of them.
class Removal {
public:
    Removal(const Coordinates& points, std::size_t numGone);
    ~Removal();
    // Of those, in the order of the points.
    void removeAll();

private:
    struct Impl;
    std::unique_ptr<Impl> pImpl;
};

} // namespace bench::rival
