// Queries, checks and drawings: what reads the triangulation and reports.
#include "core/Dt2.h"

#include "Color.h"
#include "Edge2.h"
#include "Visualizer2.h"
#include "constraints/ConstraintMgr.h"
#include "core/hull.h"
#include "core/statistics.h"
#include "core/validity.h"
#include "kernel/messages.h"

#include <algorithm>
#include <locale>
#include <sstream>

namespace TESK_KIVO2D {
namespace {

const char* textOf(ValidityFinding::Kind kind) {
    switch (kind) {
    case ValidityFinding::CORNERS:
        return "Less than three different corners";
    case ValidityFinding::ORIENTATION:
        return "Corners are not in counter-clockwise order:";
    case ValidityFinding::INCIDENCE:
        return "The incident triangle of a corner does not have it:";
    case ValidityFinding::NEIGHBOURSHIP:
        return "Inconsistent neighborships:";
    case ValidityFinding::INTRA_INDEX:
        return "Neighbor found but inconsistent intra triangle indices:";
    case ValidityFinding::EMPTY_CIRCLE:
        return "Sphere inclusion test failed ";
    }
    return "";
}

void reportFinding(const std::string& location, const ValidityFinding& finding) {
    reportError(location, textOf(finding.kind));
    if (finding.kind == ValidityFinding::CORNERS) return; // not fit to be printed
    std::ostringstream stream;
    stream << *finding.pT << "\n";
    printText(stream.str());
}

} // namespace

void Dt2::getConvexHull(bool bAllVertices, std::vector<Point2*>& vConvexHullPoints) {
    if (!is2D()) {
        reportWarning("Dt2::getConvexHull()",
                      "is2D() is false, the triangulation is not full dimensional yet");
        return;
    }
    collectHull(store, vConvexHullPoints);
    if (!bAllVertices) dropCollinear(vConvexHullPoints, pTeskPredicates);
}

void Dt2::getTrianglePointers(std::vector<Triangle2*>& vAllTriangles) const {
    vAllTriangles.clear();
    vAllTriangles.reserve(numberOfTriangles());
    store.forEachTriangle([&](Triangle2* pT) { vAllTriangles.push_back(pT); });
}

void Dt2::getVertexPointers(std::vector<Point2*>& vAllVertices) const {
    if (!is2D()) {
        vAllVertices = vertexVault.stored();
        return;
    }
    vAllVertices.clear();
    vAllVertices.reserve(numberOfPoints());
    store.forEachVertex([&](Point2* pVtx) { vAllVertices.push_back(pVtx); });
}

Bbox2 Dt2::computeBoundingBox() const {
    Bbox2 result;
    if (!is2D()) {
        for (const Point2* pVtx : vertexVault.stored())
            result.add(*pVtx);
    } else {
        store.forEachVertex([&](Point2* pVtx) { result.add(*pVtx); });
    }
    return result;
}

bool Dt2::checkValidity(bool bCheckEmptyCircleProperty, const std::string& label) {
    const std::string location = "Kivo_2D::CheckValidity(" + label + ")";
    reportInfo(location, "has been started");
    if (!is2D()) {
        reportWarning("checkValidity(" + label + ")",
                      "not fulldimensional yet (empty or all points collinear), Returning true");
        return true;
    }
    const bool bConstraintsThere = checkConstraintSegments(label);
    std::vector<ValidityFinding> vFindings;
    checkCorners(store, pTeskPredicates, vFindings);
    checkLinks(store, vFindings);
    if (bCheckEmptyCircleProperty) checkEmptyCircles(store, pTeskPredicates, pEdgeGuard, vFindings);
    if (vFindings.empty() && bConstraintsThere) {
        reportInfo(location, "Valid triangulation");
        return true;
    }
    for (const ValidityFinding& finding : vFindings)
        reportFinding(location, finding);
    printText("\ncheckValidity, bug, name=" + label + "\n");
    show(label + "currentState.ps", true);
    const auto isCircle = [](const ValidityFinding& f) { return f.kind == ValidityFinding::EMPTY_CIRCLE; };
    if (std::any_of(vFindings.begin(), vFindings.end(), isCircle)) {
        Visualizer2 vis(label + "badEmptyCircle.ps");
        for (const ValidityFinding& finding : vFindings) {
            if (!isCircle(finding)) continue;
            vis.addObject(*finding.pT, Color(CRED, 0.5f, false));
            vis.addObject(*finding.pNeighbour, Color(CBLUE, 0.5f, false));
        }
        vis.writeFile();
    }
    return false;
}

void Dt2::statistics(const std::string& label) const {
    if (!is2D()) {
        reportWarning("Kivo_2D::statistics(" + label + ")",
                      "is2D() is false, the triangulation has no triangles yet");
    }
    printText(meshStatistics(store, numberOfPoints(), label));
}

bool Dt2::checkConstraintSegments(const std::string& label) const {
    constexpr std::size_t maxDrawings = 10;
    std::vector<const ConstraintSegment2*> vMissing;
    std::size_t num = 0;
    pConstraintMgr->forEachLiveSegment([&](const ConstraintSegment2* pCSeg) {
        ++num;
        if (!isEdge(pCSeg->getSrc(), pCSeg->getTrg())) vMissing.push_back(pCSeg);
    });
    printText("\n* ConstraintSegments (alive): " + std::to_string(num) + ", contained: " +
              std::to_string(num - vMissing.size()) + ", missing: " + std::to_string(vMissing.size()) + "\n");
    for (std::size_t i = 0; i < vMissing.size(); ++i) {
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        stream << "Not contained: " << *vMissing[i] << "\n";
        printText(stream.str());
        if (i >= maxDrawings) continue;
        Visualizer2 vis(label + "checkValidityFail_" + std::to_string(i) + ".ps");
        draw(vis, true);
        vis.addObject(Segment2(*vMissing[i]->getSrc(), *vMissing[i]->getTrg()), Color(CRED, 1.5f, true));
        vis.writeFile();
    }
    return vMissing.empty();
}

void Dt2::show(const std::string& postscriptFilename, bool bWithConstraints) const {
    if (!is2D()) {
        reportWarning("Dt2::show()", "The triangulation is not 2D, no visualization");
        return;
    }
    Visualizer2 vis(postscriptFilename);
    vis.addHeaderLine(std::to_string(numberOfPoints()) + " vertices, " + std::to_string(numberOfTriangles()) +
                      " triangles");
    draw(vis, bWithConstraints);
    vis.writeFile();
}

void Dt2::show(Visualizer2* pVis, bool bWithConstraints) const {
    if (!is2D()) {
        reportWarning("Dt2::show()", "The triangulation is not full dimensional yet, no visualization");
        return;
    }
    if (pVis != nullptr) draw(*pVis, bWithConstraints);
}

void Dt2::draw(Visualizer2& vis, bool bWithConstraints) const {
    const Color inside(0.25, 0.35, 0.5, 0.1, false), hull(0.1, 0.15, 0.3, 0.7, false);
    const Color constraint(0.75, 0.1, 0.1, 0.6, false);
    store.forEachTriangle([&](Triangle2* pT) {
        // A triangle that a check found broken may lack corners.
        if (pT->getCorner(1) == nullptr || pT->getCorner(2) == nullptr) return;
        vis.addObject(*pT, inside);
        for (int i = 0; i < 3; ++i) {
            if (pT->getOppositeTriangle(i) == nullptr) vis.addObject(Edge2(pT, i), hull);
        }
    });
    if (!bWithConstraints) return;
    pConstraintMgr->forEachLiveSegment([&](const ConstraintSegment2* pCSeg) {
        vis.addObject(Segment2(*pCSeg->getSrc(), *pCSeg->getTrg()), constraint);
    });
}

} // namespace TESK_KIVO2D
