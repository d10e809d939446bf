#include "meshing/RefinementDriver.h"

#include "core/edgeSearch.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "meshing/GridDiagonals.h"
#include "meshing/GridMesher.h"

#include <algorithm>
#include <cstdint>
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

bool hasProperLocation(const Zone2& zone) {
    return zone.getZoneLocation() == ZL_INSIDE || zone.getZoneLocation() == ZL_BOUNDED;
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
    mesh();
}

void RefinementDriver::checkParameters() const {
    check(hasProperLocation(*params.pZone), "Dt2::refineMain2()",
          "The zoneLocation must be ZL_INSIDE or ZL_BOUNDED. Please convert the zone using "
          "pZone->convertToBoundedZone(..)",
          "zoneLoc==ZL_INSIDE || zoneLoc==ZL_BOUNDED");
    check(!(params.minAngleDegree > 30.0), "Dt2::refine(..)", "minAngleDegree must be <=30.0, return",
          "minAngleDegree<=30.0");
}

void RefinementDriver::mesh() {
    try {
        std::vector<Triangle2*> vTriangles = zoneTriangles();
        ProgressHub::Operation progress(host.progressHub(), "refine", progressSteps);
        report.end = RefinementEnd::COMPLETE;
        if (GridMesher::isWanted(params)) fillWithGrid(vTriangles, progress);
        makePasses(std::move(vTriangles), progress);
        progress.finish();
    } catch (const std::bad_alloc&) {
        endWithoutMemory();
    } catch (...) {
        report.end = RefinementEnd::ABANDONED;
        throw;
    }
}

// What a listener changes meanwhile asks for a new plan, in which points that are there are left out.
void RefinementDriver::fillWithGrid(std::vector<Triangle2*>& vTriangles, ProgressHub::Operation& progress) {
    GridMesher grid(host, params, memory.innerVertices, report, params.pZone->getBoundingBox());
    do {
        grid.createStripes(vTriangles, markTriangles(vTriangles));
        if (grid.numWaiting() == 0) return;
        vTriangles = {};
        insertGrid(grid, progress);
        if (host.constraintMgr().hasPending()) host.applyConstraintsAndZones();
        vTriangles = zoneTriangles();
    } while (report.end == RefinementEnd::COMPLETE && grid.isStale());
    newGrid = grid.gridFrame();
}

// Half of the progress is that of the grid.
void RefinementDriver::insertGrid(GridMesher& grid, ProgressHub::Operation& progress) {
    while (grid.numWaiting() > 0 && !grid.isStale() && !mustEnd()) {
        grid.insertSome();
        const std::uint64_t numDone = report.numGridPoints;
        tellSteps(progress, progressSteps / 2 * numDone / (numDone + grid.numWaiting()));
    }
}

void RefinementDriver::makePasses(std::vector<Triangle2*> vTriangles, ProgressHub::Operation& progress) {
    const MeshLimits limits(params, largestCoordinate(vTriangles));
    while (report.end == RefinementEnd::COMPLETE && makePass(limits, std::move(vTriangles), progress)) {
        if (report.numPasses == maxPasses) report.end = RefinementEnd::PASS_LIMIT;
        if (report.end == RefinementEnd::COMPLETE) vTriangles = zoneTriangles();
    }
    if (report.end != RefinementEnd::COMPLETE && report.end != RefinementEnd::ABANDONED)
        countWhatIsLeft(limits);
}

void RefinementDriver::endWithoutMemory() {
    report.end = RefinementEnd::OUT_OF_MEMORY;
    report.aBad = {}; // to count would take memory
    report.numBadTriangles = report.numTriangles = 0;
    try {
        reportWarning("Dt2::refineMain2()", "Out of memory, refinement ends early");
    } catch (const std::bad_alloc&) { // not even for a message: the report says it
    }
}

RefinementSite RefinementDriver::siteFor(const MeshLimits& limits, TriangleMarks& marks) const {
    return {host,   host.records(), host.predicates(), host.constraintMgr(),
            limits, marks,          memory.origins,    memory.innerVertices,
            report};
}

// The triangles of the zone as it is now, with nothing counted yet, and a pass over them.
struct RefinementDriver::Round {
    Round(RefinementDriver& driver, const MeshLimits& limits, std::vector<Triangle2*> vZone)
        : vTriangles(std::move(vZone)), marks(driver.markTriangles(vTriangles)),
          site(driver.siteFor(limits, marks)), pass(site) {
        site.report.aBad = {};
        site.report.numBadTriangles = 0;
        site.report.numTriangles = vTriangles.size();
    }

    const std::vector<Triangle2*> vTriangles;
    TriangleMarks marks;
    RefinementSite site;
    RefinementPass pass;
};

bool RefinementDriver::makePass(const MeshLimits& limits, std::vector<Triangle2*> vZone,
                                ProgressHub::Operation& progress) {
    Round round(*this, limits, std::move(vZone));
    if (newGrid) turnDiagonals(round.vTriangles, *newGrid, round.marks, host.predicates());
    newGrid.reset();
    if (collect(round.vTriangles, round.pass)) work(round.site, round.pass, progress);
    const bool bAgain = round.pass.hasChanged() || round.pass.isStale();
    if (bAgain) ++report.numPasses;
    return bAgain;
}

// Returns false when the pass must not go on.
bool RefinementDriver::collect(const std::vector<Triangle2*>& vTriangles, RefinementPass& pass) {
    for (std::size_t i = 0; i < vTriangles.size(); ++i) {
        if (i % stepsPerLook == 0 && mustEnd()) return false;
        pass.collect(vTriangles[i]);
        if (pass.isStale()) return false;
    }
    return true;
}

void RefinementDriver::work(const RefinementSite& site, RefinementPass& pass,
                            ProgressHub::Operation& progress) {
    for (std::size_t numDone = 0; !pass.isDone() && !pass.isStale(); ++numDone) {
        if (numDone % stepsPerLook == 0) {
            tell(progress, numDone, pass.numWaiting());
            if (pass.isStale() || mustEnd()) return;
        }
        if (site.isSpent()) {
            report.end = RefinementEnd::POINT_LIMIT;
            reportWarning("Dt2::refineMain2()",
                          "maxInsertedPoints=" + std::to_string(params.maxInsertedPoints) +
                              " reached, refinement ends early");
            return;
        }
        pass.step();
    }
}

bool RefinementDriver::mustEnd() {
    if (params.pStopRequest == nullptr || !params.pStopRequest->load(std::memory_order_relaxed)) return false;
    report.end = RefinementEnd::STOPPED;
    return true;
}

// The share of what is done in what is known.
void RefinementDriver::tell(ProgressHub::Operation& progress, std::size_t numDone, std::size_t numWaiting) {
    tellSteps(progress, (progressSteps - 1) * numDone / (numDone + numWaiting + 1));
}

void RefinementDriver::tellSteps(ProgressHub::Operation& progress, std::size_t num) {
    if (num <= numTold) return;
    progress.advance(num - numTold);
    numTold = num;
}

std::vector<Triangle2*> RefinementDriver::zoneTriangles() {
    std::vector<Triangle2*> vTriangles;
    if (host.isOwn(params.pZone, "Kivo_2D::refineAdvanced()") && hasProperLocation(*params.pZone)) {
        params.pZone->getTriangles(vTriangles);
    } else {
        report.end = RefinementEnd::ABANDONED; // deleted meanwhile, and maybe another one is in its place
    }
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
    Round round(*this, limits, zoneTriangles());
    for (std::size_t i = 0; i < round.vTriangles.size() && !round.pass.isStale(); ++i)
        round.pass.count(round.vTriangles[i]);
}

} // namespace TESK_KIVO2D
