#include "MeshGenParams.h"

#include "Zone2.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"

namespace TESK_KIVO2D {

MeshGenParams::MeshGenParams(Zone2* pItsZone) : pZone(pItsZone) {
    if (pZone == nullptr) return; // refineAdvanced says so
    const ZoneLocation zoneLoc = pZone->getZoneLocation();
    const bool bMeshable = zoneLoc == ZL_INSIDE || zoneLoc == ZL_BOUNDED;
    if (!bMeshable) {
        printText("\n\n\nMeshGenParams::MeshGenParams(..), ERROR: \n\tbehavior since Kivo 1.39: The "
                  "zoneLocation must be ZL_INSIDE or ZL_BOUNDED. Please convert the zone using "
                  "pZone->convertToBoundedZone(..)\n\n");
    }
    KIVO_ASSERT(bMeshable, "zoneLoc==ZL_INSIDE || zoneLoc==ZL_BOUNDED");
}

MeshGenParams::~MeshGenParams() = default;

double MeshGenParams::getMaxTriangleArea(Triangle2*) const { return maxTriangleArea; }

double MeshGenParams::getMaxEdgeLength(Triangle2*) const { return maxEdgeLength; }

} // namespace TESK_KIVO2D
