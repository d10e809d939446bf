#pragma once

#include "bench/constraintInputs.h"

#include <memory>
#include <utility>
#include <vector>

// CGAL's Delaunay mesher with exact predicates and inexact constructions, behind a wall.
namespace bench::rival {

// A constrained triangulation that is ready to be meshed.
class Mesher {
public:
    // What can be reached from the hole points or from outside without crossing a segment is not meshed.
    Mesher(const ConstraintInput& input, const Coordinates& holePoints);
    ~Mesher();
    // Refines until no angle is smaller, in degrees, and no edge longer, which 0 switches off; once.
    void refine(double minAngle, double maxEdge);
    std::size_t numTriangles() const;
    // In degrees.
    double smallestAngle() const;

private:
    struct Impl;
    std::unique_ptr<Impl> pImpl;
};

} // namespace bench::rival
