// Reports and drawings of a zone.
#include "Zone2.h"

#include "Color.h"
#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "Visualizer2.h"
#include "core/QualityMeter.h"
#include "core/statistics.h"
#include "kernel/messages.h"
#include "zones/ZoneEvaluation.h"

#include <algorithm>
#include <functional>
#include <locale>
#include <sstream>

namespace TESK_KIVO2D {
namespace {

std::vector<ConstraintSegment2*> segmentsOf(const std::vector<ConstraintGraph2*>& vGraphs) {
    std::vector<ConstraintSegment2*> vCSegs;
    for (const ConstraintGraph2* pGraph : vGraphs)
        pGraph->getChildConstraintSegments(vCSegs);
    return vCSegs;
}

Segment2 segmentOf(const ConstraintSegment2* pCSeg) { return Segment2(*pCSeg->getSrc(), *pCSeg->getTrg()); }

} // namespace

void Zone2::statistics(const std::string& name) const {
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    QualityMeter meter;
    for (const Triangle2* pT : vTriangles)
        meter.addAngles(*pT);
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "\n\n\n********* ZONE STATISTICS (" << name << ") **********\n\n"
         << "Number of triangles: " << vTriangles.size() << "\n\nINTERIOR ANGLES\n"
         << angleText(meter.angles());
    printText(text.str());
}

void Zone2::show(Visualizer2* pVisualizer, bool bShowFull, bool bWithConstraints) const {
    if (pVisualizer == nullptr) {
        reportWarning("Zone2::show()", "No drawing given, nothing is drawn");
        return;
    }
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    draw(*pVisualizer, vTriangles, bShowFull, bWithConstraints);
}

void Zone2::draw(Visualizer2& visualizer, const std::vector<Triangle2*>& vTriangles, bool bShowFull,
                 bool bWithConstraints) const {
    visualizer.addObject(vTriangles, Color(0.94, 0.9, 0.55, 0.01, true));
    if (bShowFull) {
        if (dt.is2D()) dt.show(&visualizer, bWithConstraints);
        return;
    }
    const Color thick(CRED, 0.5F, false), thin(CRED, 0.001F, false);
    std::vector<ConstraintSegment2*> vOwn = segmentsOf(vConstraintGraphs);
    for (const ConstraintSegment2* pCSeg : vOwn)
        visualizer.addObject(segmentOf(pCSeg), bWithConstraints ? thick : thin);
    if (!bWithConstraints) return;
    std::sort(vOwn.begin(), vOwn.end(), std::less<>{});
    dt.constraints().forEachLiveSegment([&](ConstraintSegment2* pCSeg) {
        if (!std::binary_search(vOwn.begin(), vOwn.end(), pCSeg, std::less<>{}))
            visualizer.addObject(segmentOf(pCSeg), thin);
    });
}

void Zone2::show(const std::string& postscriptFilename, bool bShowFull, bool bWithConstraints) const {
    // A drawing without any extent can't be scaled to the page.
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    if (vTriangles.empty()) {
        reportWarning("Zone2::show()", "The zone has no triangles, no visualization");
        return;
    }
    Visualizer2 vis(postscriptFilename);
    draw(vis, vTriangles, bShowFull, bWithConstraints);
    vis.writeFile();
}

void Zone2::debug(const std::string& name) const {
    printText("This is Zone2::debug()\n");
    std::vector<Triangle2*> vTriangles;
    getTriangles(vTriangles);
    const std::vector<ConstraintSegment2*> vCSegs = segmentsOf(vConstraintGraphs);
    if (vTriangles.empty() && vCSegs.empty()) return;
    Visualizer2 vis("zone2_debug_" + name + ".ps");
    vis.addObject(vTriangles, Color(0.3, 0.3, 0.3, 0.05, false));
    for (const ConstraintSegment2* pCSeg : vCSegs)
        vis.addObject(segmentOf(pCSeg), Color(1, 0, 0, 0.5, false));
    vis.writeFile();
}

} // namespace TESK_KIVO2D
