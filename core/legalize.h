#pragma once

#include "Triangle2.h"
#include "core/EdgeGuard.h"
#include "core/HalfEdge.h"
#include "kernel/TeskTest.h"

#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// What becomes of edges whose far corner lies on the circle.
enum class CircleTies {
    TURN_DIAGONALS, // the new vertex gets the diagonal of an axis-parallel rectangle
    KEEP            // nothing
};

// Flips until no edge opposite the new vertex, which is corner 0 of every triangle on the stack, has that
// vertex inside the neighbour's circumcircle (Lawson 1977); edges that the guard holds stay. Empties the
// stack and returns the number of flips. It ends because every flip adds an edge at the vertex. Never
// allocates: memory that runs out half-way would leave circles that are not empty.
std::uint64_t legalizeNewVertex(std::vector<Triangle2*>& vCheckT, TeskTest& tests, const EdgeGuard* pGuard,
                                CircleTies ties = CircleTies::TURN_DIAGONALS);

// Flips until these edges, and all that flips on the way may have made illegal, have no far corner strictly
// inside the circumcircle on the other side; edges that the guard holds stay. For edges of any kind: the
// question is three-valued, so every flip makes the triangulation more Delaunay and it ends (Lawson 1977).
// Empties the stack.
std::uint64_t legalizeEdges(std::vector<HalfEdge>& vEdges, TeskTest& tests, const EdgeGuard* pGuard);

} // namespace TESK_KIVO2D
