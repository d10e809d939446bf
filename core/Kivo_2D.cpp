#include "Kivo_2D.h"

#include "constraints/ConstraintMgr.h"
#include "core/Dt2.h"
#include "core/queries.h"
#include "kernel/messages.h"
#include "zones/ZoneRegistry.h"

#include <chrono>

namespace TESK_KIVO2D {
namespace {

Zone2* noteIfNull(Zone2* pZone, bool bVerbose) {
    if (pZone == nullptr && bVerbose)
        reportWarning("Kivo_2D::createZone(..)", "No zone created, returning NULL (bVerbose==true)");
    return pZone;
}

} // namespace

Kivo_2D::Kivo_2D(unsigned int numExpectedVertices) { initKivo(numExpectedVertices); }

Kivo_2D::~Kivo_2D() = default;

void Kivo_2D::initKivo(unsigned int numExpectedVertices) { pDt = std::make_unique<Dt2>(numExpectedVertices); }

Point2* Kivo_2D::insert(const Point2& point) { return pDt->insert(point); }

void Kivo_2D::insert(const std::vector<Point2>& vInputPoints) {
    pDt->insertVector(vInputPoints.data(), vInputPoints.size(), nullptr);
}

void Kivo_2D::insert(const std::vector<Point2>& vInputPoints, std::vector<Point2*>& vHandles) {
    vHandles.assign(vInputPoints.size(), nullptr);
    pDt->insertVector(vInputPoints.data(), vInputPoints.size(), vHandles.data());
}

void Kivo_2D::insert(int numPoints, double* aCoordinates, Point2** aHandles) {
    if (numPoints <= 0 || aCoordinates == nullptr) return;
    const std::size_t num = static_cast<std::size_t>(numPoints);
    std::vector<Point2> vPoints;
    vPoints.reserve(num);
    for (std::size_t i = 0; i < num; ++i)
        vPoints.emplace_back(aCoordinates[2 * i], aCoordinates[2 * i + 1]);
    pDt->insertVector(vPoints.data(), num, aHandles);
}

void Kivo_2D::remove(Point2* pVtx) { pDt->remove(pVtx); }

double Kivo_2D::measureTrianguluationTime(std::vector<Point2>& vPoints) {
    const auto start = std::chrono::steady_clock::now();
    insert(vPoints);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Triangle2* Kivo_2D::locate(const Point2& point) const { return pDt->locate(point); }

void Kivo_2D::getConvexHull(bool bAllVertices, std::vector<Point2*>& vConvexHullPoints) const {
    pDt->getConvexHull(bAllVertices, vConvexHullPoints);
}

void Kivo_2D::getIncidentTriangles(Point2* pVtx, std::vector<Triangle2*>& vIncidentT) const {
    TESK_KIVO2D::getIncidentTriangles(pVtx, vIncidentT);
}

Triangle2* Kivo_2D::getAdjacentTriangle(Point2* p0, Point2* p1) const {
    return TESK_KIVO2D::getAdjacentTriangle(p0, p1);
}

void Kivo_2D::getTrianglePointers(std::vector<Triangle2*>& vAllTriangles) const {
    pDt->getTrianglePointers(vAllTriangles);
}

void Kivo_2D::getVertexPointers(std::vector<Point2*>& vAllVertices) const {
    pDt->getVertexPointers(vAllVertices);
}

Bbox2 Kivo_2D::computeBoundingBox() const { return pDt->computeBoundingBox(); }

std::size_t Kivo_2D::numberOfPoints() const { return pDt->numberOfPoints(); }

std::size_t Kivo_2D::numberOfTriangles() const { return pDt->numberOfTriangles(); }

bool Kivo_2D::is2D() const { return pDt->is2D(); }

bool Kivo_2D::checkValidity(bool bCheckEmptyCircleProperty, const std::string& name) const {
    return pDt->checkValidity(bCheckEmptyCircleProperty, name);
}

void Kivo_2D::statistics(const std::string& name) const { pDt->statistics(name); }

Orientation2 Kivo_2D::getOrientation(const Point2& p0, const Point2& p1, const Point2& p2) const {
    return getOrientation2_mt(&p0, &p1, &p2);
}

ConstraintGraph2* Kivo_2D::createConstraint(std::vector<Segment2>& vSegments, ConstraintInsertionStrategy cis,
                                            bool bOrientedSegments) {
    if (vSegments.empty()) {
        reportError("Kivo_2D::createConstraint()", "You have not supplied any segments. Returning NULL!");
        return nullptr;
    }
    return pDt->createConstraint(vSegments, cis, bOrientedSegments);
}

bool Kivo_2D::isConstraint(Point2* pVtx) const { return pDt->constraintMgr().isConstraint(pVtx); }

bool Kivo_2D::isConstraint(Point2* p0, Point2* p1) const { return pDt->constraintMgr().isConstraint(p0, p1); }

bool Kivo_2D::isConstraint(Triangle2* pT, int ith) const {
    if (pT == nullptr || ith < 0 || ith > 2) return false;
    return isConstraint(pT->getCorner(Triangle2::incIndexBy1(ith)),
                        pT->getCorner(Triangle2::incIndexBy2(ith)));
}

ConstraintSegment2* Kivo_2D::getConstraintSegment(Point2* p0, Point2* p1) const {
    return pDt->constraintMgr().getConstraintSegment(p0, p1);
}

void Kivo_2D::applyConstraintsAndZones() {
    if (!is2D()) {
        reportWarning("Kivo2D::applyConstraintsAndZones()",
                      "The triangulation is not 2D yet, can't apply the constraints");
        return;
    }
    pDt->applyConstraintsAndZones();
}

Zone2* Kivo_2D::importTriangles(const std::vector<Point2>& vCorners, bool bVerbose) {
    Zone2* const pZone = pDt->importTriangles(vCorners, bVerbose);
    if (pZone == nullptr && bVerbose)
        reportInfo("Kivo_2D::importTriangles(..)", "Nothing imported, returning NULL (bVerbose==true)");
    return pZone;
}

ConstraintGraph2* Kivo_2D::cutTriangles(const Segment2& knife) { return pDt->cutTriangles({knife}); }

ConstraintGraph2* Kivo_2D::cutTriangles(const std::vector<Segment2>& vKnives) {
    return pDt->cutTriangles(vKnives);
}

Zone2* Kivo_2D::createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, bool bVerbose) {
    return noteIfNull(pDt->zoneRegistry().createZone(pConstraintGraph, zoneLoc), bVerbose);
}

Zone2* Kivo_2D::createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc,
                           bool bVerbose) {
    return noteIfNull(pDt->zoneRegistry().createZone(vConstraintGraphs, zoneLoc), bVerbose);
}

Zone2* Kivo_2D::createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, const Point2& startPoint,
                           bool bVerbose) {
    return createZone(std::vector<ConstraintGraph2*>{pConstraintGraph}, zoneLoc, startPoint, bVerbose);
}

Zone2* Kivo_2D::createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc,
                           const Point2& startPoint, bool bVerbose) {
    return noteIfNull(pDt->zoneRegistry().createZone(vConstraintGraphs, zoneLoc, startPoint), bVerbose);
}

Zone2* Kivo_2D::createZone(const std::vector<Triangle2*>& vTriangles, bool bVerbose) {
    return noteIfNull(pDt->zoneRegistry().createZone(vTriangles), bVerbose);
}

Zone2* Kivo_2D::createParityZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs,
                                 const std::vector<Point2>& vHolePoints, bool bVerbose) {
    ZoneRegistry& registry = pDt->zoneRegistry();
    return noteIfNull(registry.createEnclosedZone(vConstraintGraphs, InsideRule::PARITY, vHolePoints),
                      bVerbose);
}

Zone2* Kivo_2D::createEnclosedZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs,
                                   const std::vector<Point2>& vHolePoints, bool bVerbose) {
    ZoneRegistry& registry = pDt->zoneRegistry();
    return noteIfNull(registry.createEnclosedZone(vConstraintGraphs, InsideRule::ENCLOSED, vHolePoints),
                      bVerbose);
}

void Kivo_2D::deleteZone(Zone2* pZone) { pDt->zoneRegistry().deleteZone(pZone); }

namespace {

// The parameters of the simple form.
class MyLocalParams : public MeshGenParams {
public:
    explicit MyLocalParams(Zone2* pItsZone) : MeshGenParams(pItsZone) {}
};

} // namespace

void Kivo_2D::refine(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                     bool bAllowConstraintSplitting) {
    if (pZone == nullptr) {
        printText("Warning: Kivo_2D::refine(..) has been called with pZone==NULL\n");
        return;
    }
    if (minAngleDegree > 30.0) {
        printText("Warning: Kivo_2D::refine(..), minAngleDegree can't be >30\n");
        return;
    }
    if (!pDt->isOwn(pZone, "Kivo_2D::refine(..)")) return;
    MyLocalParams parameters(pZone);
    parameters.minAngleDegree = minAngleDegree;
    parameters.minEdgeLength = minEdgeLength;
    parameters.maxEdgeLength = maxEdgeLength;
    parameters.bAllowConstraintSplitting = bAllowConstraintSplitting;
    pDt->refine(parameters);
}

void Kivo_2D::refineAdvanced(MeshGenParams* pParameters) {
    if (pParameters == nullptr) {
        reportWarning("Kivo_2D::refineAdvanced(..)", "The parameters are NULL. Nothing to do");
        return;
    }
    pDt->refine(*pParameters);
}

RefinementReport Kivo_2D::getRefinementReport() const { return pDt->refinementReport(); }

ZoneQuality Kivo_2D::checkZoneQuality(const Zone2* pZone, const std::string& name) const {
    return pDt->checkZoneQuality(pZone, name);
}

bool Kivo_2D::writeObj(const std::string& filename) const { return pDt->writeObj(filename, nullptr); }

bool Kivo_2D::writeObj(const std::string& filename, const Zone2* pZone) const {
    return pDt->isOwn(pZone, "Kivo_2D::writeObj()") && pDt->writeObj(filename, pZone);
}

bool Kivo_2D::writeWebScene(const char* path) const { return writeWebSceneAt(path, nullptr); }

bool Kivo_2D::writeWebScene(const char* path, const Zone2* pZone) const {
    return pDt->isOwn(pZone, "Kivo_2D::writeWebScene()") && writeWebSceneAt(path, pZone);
}

bool Kivo_2D::writeWebSceneAt(const char* path, const Zone2* pZone) const {
    if (path != nullptr) return pDt->writeWebScene(path, pZone);
    reportWarning("Kivo_2D::writeWebScene()", "path==NULL, nothing to do");
    return false;
}

void Kivo_2D::getMeshArrays(MeshArrays& arrays) const { pDt->getMeshArrays(arrays, nullptr); }

void Kivo_2D::getMeshArrays(MeshArrays& arrays, const Zone2* pZone) const {
    arrays = {};
    if (pDt->isOwn(pZone, "Kivo_2D::getMeshArrays()")) pDt->getMeshArrays(arrays, pZone);
}

void Kivo_2D::show(const std::string& postscriptFilename, bool bWithConstraints) const {
    pDt->show(postscriptFilename, bWithConstraints);
}

void Kivo_2D::show(Visualizer2* pVis, bool bWithConstraints) const { pDt->show(pVis, bWithConstraints); }

void Kivo_2D::setName(const std::string& name) { pDt->setName(name); }

std::string Kivo_2D::getName() const { return pDt->getName(); }

int Kivo_2D::setNumCPU(int numCPU) { return pDt->setNumCPU(numCPU); }

void Kivo_2D::enableMultithreading() { pDt->setNumCPU(0); }

void Kivo_2D::subscribe(MsgType msgType, MsgBase* pMsg) { pDt->progressHub().subscribe(msgType, pMsg); }

void Kivo_2D::unsubscribe(MsgType msgType, MsgBase* pMsg) { pDt->progressHub().unsubscribe(msgType, pMsg); }

} // namespace TESK_KIVO2D
