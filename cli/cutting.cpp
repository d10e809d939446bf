#include "cli/cutting.h"

#include "cli/Background.h"

#include <algorithm>
#include <iterator>
#include <memory>

namespace cli {

namespace {

std::unique_ptr<Background> backgroundOf(const Run& run) {
    if (run.input.table.numAttributes == 0 || !run.triangulation.is2D()) return nullptr;
    return std::make_unique<Background>(run.triangulation, run.constraints.vEdges, std::vector<Region>());
}

// How many of the edges are no more: constraint edges end only by being split.
std::size_t countSplit(const std::vector<PositionPair>& vBefore, const std::vector<PositionPair>& vAfter) {
    std::vector<PositionPair> vSplit;
    std::set_difference(vBefore.begin(), vBefore.end(), vAfter.begin(), vAfter.end(),
                        std::back_inserter(vSplit));
    return vSplit.size();
}

} // namespace

CutReport cut(Run& run) {
    CutReport report;
    report.numKnives = run.input.vKnives.size();
    const std::size_t numVertices = run.triangulation.numberOfPoints();
    const std::vector<PositionPair> vBefore = listConstraintEdges(run.triangulation);
    const std::unique_ptr<Background> background = backgroundOf(run);
    run.constraints.pCuts = run.triangulation.cutTriangles(run.input.vKnives);
    report.numNewVertices = run.triangulation.numberOfPoints() - numVertices;
    if (background != nullptr) background->interpolateNewVertices(run.triangulation, run.input.table);
    run.collectNewVertices();
    report.numSplit = countSplit(vBefore, listConstraintEdges(run.triangulation));
    return report;
}

} // namespace cli
