#include "meshing/RefinementDriver.h"

#include "core/edgeSearch.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr int maxPasses = 50;
constexpr std::size_t progressSteps = 1000;
// Steps between two looks at what may end the run.
constexpr std::size_t stepsPerLook = 256;

double largestCoordinate(const std::vector<Triangle2*>& vTriangles) {
    double largest = 0;
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i)
            largest = std::max(largest, pT->getCorner(i)->getMaxAbs());
    }
    return largest;
}

void check(bool bCondition, const char* location, const char* message, const char* conditionText) {
    if (!bCondition) reportError(location, message);
    KIVO_ASSERT(bCondition, conditionText);
}

} // namespace

void RefinementDriver::run() {
    report = {};
    if (params.bClearInnerVertices) memory.innerVertices.clear();
    check(params.pZone != nullptr, "Dt2::refineMain2(..)", "pZone==NULL", "pZone!=NULL");
    if (!host.isOwn(params.pZone, "Kivo_2D::refineAdvanced()")) return; // it may lead nowhere
    checkParameters();
    if (!host.is2D()) {
        reportWarning("Kivo_2D::refineAdvanced()",
                      "The triangulation is not full dimensional yet. Nothing to do");
        return;
    }
    if (host.constraintMgr().hasPending()) host.applyConstraintsAndZones();
    makePasses();
}

void RefinementDriver::checkParameters() const {
    const ZoneLocation zoneLoc = params.pZone->getZoneLocation();
    check(zoneLoc == ZL_INSIDE || zoneLoc == ZL_BOUNDED, "Dt2::refineMain2()",
          "The zoneLocation must be ZL_INSIDE or ZL_BOUNDED. Please convert the zone using "
          "pZone->convertToBoundedZone(..)",
          "zoneLoc==ZL_INSIDE || zoneLoc==ZL_BOUNDED");
    check(!(params.minAngleDegree > 30.0), "Dt2::refine(..)", "minAngleDegree must be <=30.0, return",
          "minAngleDegree<=30.0");
}

void RefinementDriver::makePasses() {
    const MeshLimits limits(params, largestCoordinate(zoneTriangles()));
    ProgressHub::Operation progress(host.progressHub(), "refine", progressSteps);
    report.end = RefinementEnd::COMPLETE;
    try {
        while (makePass(limits, progress)) {
            ++report.numPasses;
            if (report.end != RefinementEnd::COMPLETE) break;
            if (report.numPasses == maxPasses) {
                report.end = RefinementEnd::PASS_LIMIT;
                break;
            }
        }
        if (report.end != RefinementEnd::COMPLETE) countWhatIsLeft(limits);
    } catch (const std::bad_alloc&) {
        report.end = RefinementEnd::OUT_OF_MEMORY;
        reportWarning("Dt2::refineMain2()", "Out of memory, refinement ends early");
    } catch (...) {
        report.end = RefinementEnd::ABANDONED;
        throw;
    }
    progress.finish();
}

RefinementSite RefinementDriver::siteFor(const MeshLimits& limits, TriangleMarks& marks) const {
    return {host,   host.records(), host.predicates(), host.constraintMgr(),
            limits, marks,          memory.origins,    memory.innerVertices,
            report};
}

bool RefinementDriver::makePass(const MeshLimits& limits, ProgressHub::Operation& progress) {
    report.aBad = {};
    report.numBadTriangles = 0;
    const std::vector<Triangle2*> vTriangles = zoneTriangles();
    report.numTriangles = vTriangles.size();
    TriangleMarks marks = markTriangles(vTriangles);
    RefinementSite site = siteFor(limits, marks);
    RefinementPass pass(site);
    for (Triangle2* const pT : vTriangles) {
        pass.collect(pT);
        if (pass.isStale()) return true;
    }
    return work(site, pass, progress);
}

bool RefinementDriver::work(const RefinementSite& site, RefinementPass& pass,
                            ProgressHub::Operation& progress) {
    for (std::size_t numDone = 0; !pass.isDone(); ++numDone) {
        if (numDone % stepsPerLook == 0) {
            tell(progress, numDone, pass.numWaiting());
            if (pass.isStale()) return true;
            if (mustEnd()) return true;
        }
        if (site.isSpent()) {
            report.end = RefinementEnd::POINT_LIMIT;
            reportWarning("Dt2::refineMain2()",
                          "maxInsertedPoints=" + std::to_string(params.maxInsertedPoints) +
                              " reached, refinement ends early");
            return true;
        }
        pass.step();
        if (pass.isStale()) return true;
    }
    return pass.hasChanged();
}

bool RefinementDriver::mustEnd() {
    if (params.pStopRequest == nullptr || !params.pStopRequest->load(std::memory_order_relaxed)) return false;
    report.end = RefinementEnd::STOPPED;
    return true;
}

// The share of what is done in what is known.
void RefinementDriver::tell(ProgressHub::Operation& progress, std::size_t numDone, std::size_t numWaiting) {
    const std::size_t num = (progressSteps - 1) * numDone / (numDone + numWaiting + 1);
    if (num <= numTold) return;
    progress.advance(num - numTold);
    numTold = num;
}

std::vector<Triangle2*> RefinementDriver::zoneTriangles() const {
    std::vector<Triangle2*> vTriangles;
    if (host.isOwn(params.pZone, "Kivo_2D::refineAdvanced()")) params.pZone->getTriangles(vTriangles);
    return vTriangles;
}

TriangleMarks RefinementDriver::markTriangles(const std::vector<Triangle2*>& vTriangles) const {
    TriangleMarks marks(host.records());
    host.constraintMgr().forEachLiveSegment([&](const ConstraintSegment2* pCSeg) {
        const HalfEdge edge = findEdge(pCSeg->getSrc(), pCSeg->getTrg());
        if (edge.pT != nullptr) marks.close(edge);
    });
    for (Triangle2* const pT : vTriangles)
        marks.set(pT, marks.of(pT) | TriangleMarks::inZone);
    // A zone ends at constraints, or at the hull; should it end elsewhere, it is kept there all the same.
    for (Triangle2* const pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN == nullptr || !marks.isInZone(pN)) marks.close({pT, i});
        }
    }
    return marks;
}

void RefinementDriver::countWhatIsLeft(const MeshLimits& limits) {
    report.aBad = {};
    report.numBadTriangles = 0;
    const std::vector<Triangle2*> vTriangles = zoneTriangles();
    report.numTriangles = vTriangles.size();
    TriangleMarks marks = markTriangles(vTriangles);
    RefinementSite site = siteFor(limits, marks);
    RefinementPass pass(site);
    for (Triangle2* const pT : vTriangles)
        pass.count(pT);
}

} // namespace TESK_KIVO2D
