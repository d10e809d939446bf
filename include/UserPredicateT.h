#pragma once

#include "export.h"
#include "fwd.h"

namespace TESK_KIVO2D {

/// A decision about triangles that the application makes; see `peelOffIf`.
class KIVO_API UserPredicateT {
public:
    UserPredicateT() = default;
    UserPredicateT(const UserPredicateT&) = default;
    UserPredicateT& operator=(const UserPredicateT&) = default;
    virtual ~UserPredicateT();

    /// True: peel this triangle off. May be asked about one triangle more than once. What it throws reaches
    /// the caller of the function that asked, and nothing has changed then. It must not change the
    /// triangulation.
    virtual bool operator()(const Triangle2* pTriangle) = 0;
};

} // namespace TESK_KIVO2D
