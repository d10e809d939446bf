#pragma once

#include "core/flood.h"

#include <span>

namespace TESK_KIVO2D {

// Is shown the triangles of a zone while they are found, each once, in no order that matters.
class TriangleVisitor {
public:
    virtual ~TriangleVisitor() = default;
    // What lies behind an open edge is null or in the zone too; behind a closed one, it may be.
    virtual void visit(std::span<const Flooded> batch) = 0;
};

} // namespace TESK_KIVO2D
