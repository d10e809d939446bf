// Refinement: what it asks of its triangulation.
#include "core/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "meshing/RefinementDriver.h"

namespace TESK_KIVO2D {

void Dt2::refine(const MeshGenParams& parameters) {
    RefinementDriver(*this, *pRefinementMemory, parameters).run();
}

const RefinementReport& Dt2::refinementReport() const { return pRefinementMemory->report; }

void Dt2::wasLinked(Point2* pVtx) {
    ++work.insertions;
    vertexVault.added(vertexVault.startCell(*pVtx, store), pVtx, 0);
}

std::uint64_t Dt2::changeCount() const {
    return work.insertions + work.flips + work.moves + pConstraintMgr->numberOfSegments();
}

} // namespace TESK_KIVO2D
