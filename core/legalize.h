#pragma once

#include "Triangle2.h"
#include "core/EdgeGuard.h"
#include "kernel/TeskTest.h"

#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// Flips until no edge opposite the new vertex, which is corner 0 of every triangle on the stack, has that
// vertex inside the neighbour's circumcircle (Lawson 1977); edges that the guard holds stay. Empties the
// stack and returns the number of flips. It ends because every flip adds an edge at the vertex. Never
// allocates: memory that runs out half-way would leave circles that are not empty.
std::uint64_t legalizeNewVertex(std::vector<Triangle2*>& vCheckT, TeskTest& tests, const EdgeGuard* pGuard);

} // namespace TESK_KIVO2D
