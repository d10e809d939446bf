#include "cli/refinement.h"

#include "cli/Background.h"
#include "cli/Interruption.h"
#include "cli/errors.h"
#include "cli/numbers.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <memory>

namespace cli {

namespace {

using TESK_KIVO2D::MeshGenParams;
using TESK_KIVO2D::Triangle2;
using TESK_KIVO2D::Zone2;

// Of the zone's size. Far above the resolution of doubles, far below what a client can tell apart.
constexpr double MIN_EDGE_SHARE = 1e-9;

struct Grid {
    double length, dx, dy;

    bool isWanted() const { return length > 0.0 && (dx != 0.0 || dy != 0.0); }
};

// Nothing for a text that is not three numbers of that kind, with commas between them.
std::optional<Grid> gridOf(const std::string& text) {
    const auto numbers = numberList<3>(text);
    if (!numbers) return std::nullopt;
    const Grid grid{(*numbers)[0], (*numbers)[1], (*numbers)[2]};
    return grid.isWanted() ? std::optional(grid) : std::nullopt;
}

class Limits : public MeshGenParams {
public:
    Limits(Zone2* pZone_, const MeshOptions& options, const Background* pBackground_)
        : MeshGenParams(pZone_), pBackground(pBackground_) {
        minAngleDegree = std::max(options.minAngle, DBL_MIN); // of 0 there would be a warning
        maxTriangleArea = options.maxArea.value_or(DBL_MAX);
        maxEdgeLength = options.maxEdge.value_or(DBL_MAX);
        growFactor = options.growFactor.value_or(DBL_MAX);
        growFactorMinArea = 0.0;
        bAllowConstraintSplitting = !options.bNoSplit;
        if (options.maxPoints) maxInsertedPoints = static_cast<std::uint64_t>(*options.maxPoints);
        const TESK_KIVO2D::Bbox2 box = pZone_->getBoundingBox();
        const double size = std::max(box.get_maxX() - box.get_minX(), box.get_maxY() - box.get_minY());
        if (const std::optional<Grid> grid = gridOf(options.grid)) {
            gridLength = grid->length;
            gridVector = TESK_KIVO2D::Vector2(grid->dx, grid->dy);
        }
        minEdgeLength = options.minEdge.value_or(std::min(size, DBL_MAX) * MIN_EDGE_SHARE);
    }

    double getMaxTriangleArea(Triangle2* pT) const override {
        if (pBackground == nullptr) return maxTriangleArea;
        return std::min(maxTriangleArea, pBackground->maxAreaAt(pT->getBarycenter()));
    }

private:
    const Background* pBackground; // null where no region has a limit
};

[[noreturn]] void refuse(const char* option, const char* wanted, double found) {
    throw UsageError(std::string(option) + " takes " + wanted + ", not " + shortest(found));
}

void checkPositive(const char* option, const char* wanted, const std::optional<double>& value) {
    if (value && !(std::isfinite(*value) && *value > 0.0)) refuse(option, wanted, *value);
}

std::unique_ptr<Background> backgroundOf(const Run& run) {
    if (run.input.table.numAttributes == 0 && !hasAreaLimits(run.input.domain)) return nullptr;
    return std::make_unique<Background>(run.triangulation, run.constraints.vEdges, run.input.domain.vRegions);
}

} // namespace

void checkLimits(const MeshOptions& options) {
    if (!(options.minAngle >= 0.0 && options.minAngle <= 30.0))
        refuse("--min-angle", "degrees from 0 to 30", options.minAngle);
    checkPositive("--max-area", "a positive area", options.maxArea);
    checkPositive("--max-edge", "a positive length", options.maxEdge);
    if (options.minEdge && !(std::isfinite(*options.minEdge) && *options.minEdge >= 0.0))
        refuse("--min-edge", "a length, or 0", *options.minEdge);
    if (options.growFactor && !(std::isfinite(*options.growFactor) && *options.growFactor > 1.0))
        refuse("--grow", "a factor above 1", *options.growFactor);
    if (options.maxPoints && *options.maxPoints < 0)
        refuse("--max-points", "a number of points", static_cast<double>(*options.maxPoints));
    if (!options.grid.empty() && !gridOf(options.grid))
        throw UsageError(
            "--grid takes a positive length and a direction other than 0,0, as in 0.5,1,0, not " +
            options.grid);
}

MeshReport refine(Run& run, const MeshOptions& options) {
    const StopWatch watch;
    const std::unique_ptr<Background> background = backgroundOf(run);
    const bool bLimits = hasAreaLimits(run.input.domain);
    Limits limits(run.pZone, options, bLimits ? background.get() : nullptr);
    MeshReport report;
    {
        const Interruption interruption;
        limits.pStopRequest = interruption.getFlag();
        run.triangulation.refineAdvanced(&limits);
    }
    report.refinement = run.triangulation.getRefinementReport();
    report.bGrid = !options.grid.empty();
    report.minAngle = options.minAngle;
    report.minEdge = limits.minEdgeLength;
    if (background != nullptr) background->interpolateNewVertices(run.triangulation, run.input.table);
    run.collectNewVertices();
    run.report.meshTime = watch.seconds();
    return report;
}

} // namespace cli
