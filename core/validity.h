#pragma once

#include "Triangle2.h"
#include "core/EdgeGuard.h"
#include "core/MeshStore.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// Something wrong with a triangle; with its neighbour, where it is about two.
struct ValidityFinding {
    enum Kind { CORNERS, ORIENTATION, INCIDENCE, NEIGHBOURSHIP, INTRA_INDEX, EMPTY_CIRCLE };
    Kind kind;
    Triangle2* pT;
    Triangle2* pNeighbour;
};

// The layers of the check. Each reads stored data against stored data and adds what it finds; the later ones
// pass over triangles that the earlier ones make senseless. None throws, whatever the links.

// Three different corners, counter-clockwise, each of which knows a triangle that has it.
void checkCorners(const MeshStore& store, TeskTest& tests, std::vector<ValidityFinding>& vFindings);
// Each neighbour knows this triangle, across the same edge.
void checkLinks(const MeshStore& store, std::vector<ValidityFinding>& vFindings);
// No neighbour's far corner lies strictly inside the circumcircle; edges that the guard holds are left out.
void checkEmptyCircles(const MeshStore& store, TeskTest& tests, const EdgeGuard* pGuard,
                       std::vector<ValidityFinding>& vFindings);

} // namespace TESK_KIVO2D
