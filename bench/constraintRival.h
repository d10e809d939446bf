#pragma once

#include "bench/constraintInputs.h"

#include <memory>

// CGAL's constrained triangulation with exact predicates and inexact constructions, behind a wall.
namespace bench::rival {

// Points and constraints in the rival's own form, ready for insertion in one call.
class Constraints {
public:
    explicit Constraints(const ConstraintInput& input);
    ~Constraints();
    // Returns the number of vertices. Constraints that cross need bCrossing: without it the rival is faster.
    std::size_t triangulate(bool bCrossing) const;

private:
    struct Impl;
    std::unique_ptr<Impl> pImpl;
};

} // namespace bench::rival
