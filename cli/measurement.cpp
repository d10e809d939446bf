#include "cli/measurement.h"

#include "cli/messages.h"
#include "cli/smallestAngle.h"

namespace cli {

namespace {

using TESK_KIVO2D::ConstraintGraph2;
using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Triangle2;
using TESK_KIVO2D::Zone2;

TESK_KIVO2D::ZoneQuality figuresOf(Kivo_2D& triangulation, const Zone2* pZone) {
    const QuietOutput quiet;
    if (pZone != nullptr) return triangulation.checkZoneQuality(pZone, "");
    Zone2* const pAll =
        triangulation.createZone(static_cast<ConstraintGraph2*>(nullptr), TESK_KIVO2D::ZL_GLOBAL);
    TESK_KIVO2D::ZoneQuality figures = triangulation.checkZoneQuality(pAll, "");
    triangulation.deleteZone(pAll);
    return figures;
}

} // namespace

Measurement measure(Kivo_2D& triangulation, const Zone2* pZone) {
    Measurement measurement;
    measurement.figures = figuresOf(triangulation, pZone);
    for (const Triangle2* pT : measurement.figures.vWorst)
        measurement.vWorst.push_back(
            {{*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2)}, smallestAngleOf(*pT)});
    measurement.figures.vWorst.clear();
    return measurement;
}

} // namespace cli
