// The triangulation, or a zone of it, for others: flat arrays, OBJ files, web scenes, figures.
#include "core/Dt2.h"

#include "Zone2.h"
#include "core/edgeSearch.h"
#include "core/meshArrays.h"
#include "kernel/messages.h"
#include "output/objExport.h"
#include "output/webScene.h"
#include "zones/ZoneEvaluation.h"
#include "zones/ZoneRegistry.h"
#include "zones/zoneQuality.h"

namespace TESK_KIVO2D {

bool Dt2::isOwn(const Zone2* pZone, const char* location) const {
    if (pZone != nullptr && pZoneRegistry->isAlive(pZone)) return true;
    reportWarning(location,
                  pZone == nullptr ? "pZone==NULL, nothing to do" : "pZone is no zone of this triangulation");
    return false;
}

ZoneQuality Dt2::checkZoneQuality(const Zone2* pZone, const std::string& label) {
    constexpr const char* location = "Kivo_2D::checkZoneQuality()";
    if (!isOwn(pZone, location)) return {};
    if (is2D()) return TESK_KIVO2D::checkZoneQuality(*this, *pZone, label);
    reportWarning(location, "is2D() is false, nothing to measure");
    return {};
}

// Empty when there is nothing to export.
std::vector<Triangle2*> Dt2::trianglesFor(const Zone2* pZone) {
    std::vector<Triangle2*> vTriangles;
    if (!is2D()) {
        reportError("Dt2::show()", "The triangulation is not full dimensional yet, no visualization");
        return vTriangles;
    }
    if (pZone == nullptr) {
        getTrianglePointers(vTriangles);
    } else {
        const ZoneEvaluation evaluation(*this);
        evaluation.setOf(*pZone).appendTo(vTriangles);
    }
    return vTriangles;
}

// False, after a message, when a zone has nothing to write to the target.
bool Dt2::hasSome(const std::vector<Triangle2*>& vTriangles, const std::string& target) const {
    if (vTriangles.empty() && is2D()) reportWarning(target, "There are no triangles to write");
    return !vTriangles.empty();
}

bool Dt2::fillArrays(const std::vector<Triangle2*>& vTriangles, bool bNeighbours, MeshArrays& arrays) {
    if (fillMeshArrays(store, vTriangles, bNeighbours, arrays)) return true;
    reportError("Dt2::show()", "More triangles or vertices than 32 bits can number, nothing to export");
    return false;
}

void Dt2::getMeshArrays(MeshArrays& arrays, const Zone2* pZone) {
    fillArrays(trianglesFor(pZone), true, arrays);
}

bool Dt2::writeObj(const std::string& filename, const Zone2* pZone) {
    const std::vector<Triangle2*> vTriangles = trianglesFor(pZone);
    MeshArrays arrays;
    return hasSome(vTriangles, filename) && fillArrays(vTriangles, false, arrays) &&
           writeObjFile(filename, arrays);
}

bool Dt2::writeWebScene(const std::string& path, const Zone2* pZone) {
    const std::vector<Triangle2*> vTriangles = trianglesFor(pZone);
    SceneContent scene;
    if (!hasSome(vTriangles, path) || !fillArrays(vTriangles, true, scene.mesh)) return false;
    scene.bZone = pZone != nullptr;
    scene.title = name;
    const RecordNumbers<Triangle2> records = store.triangleNumbers();
    TriangleSet listed(records);
    for (const Triangle2* pT : vTriangles)
        listed.insert(pT);
    const VertexNumbering numbers(store, scene.mesh);
    pConstraintMgr->forEachLiveSegment([&](const ConstraintSegment2* pCSeg) {
        if (!isEdge(pCSeg->getSrc(), pCSeg->getTrg())) return;
        const HalfEdge edge = findEdge(pCSeg->getSrc(), pCSeg->getTrg());
        if (!listed.contains(edge.pT) && !listed.contains(edge.opposite())) return;
        scene.vConstraintEdges.push_back(numbers[pCSeg->getSrc()]);
        scene.vConstraintEdges.push_back(numbers[pCSeg->getTrg()]);
    });
    return writeSceneFiles(path, scene);
}

} // namespace TESK_KIVO2D
