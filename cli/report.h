#pragma once

#include "cli/measurement.h"

#include <RefinementReport.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct Box {
    double minX, minY, maxX, maxY;
};

// What became of the input's segments.
struct SegmentReport {
    std::size_t numRead = 0;
    std::size_t numSkipped = 0;       // both ends are one vertex
    std::size_t numEdges = 0;         // edges of the triangulation that are pieces of segments
    std::size_t numMissing = 0;       // pieces that are no edges
    std::size_t numNewEnds = 0;       // ends that are no given points
    std::size_t numSteinerPoints = 0; // vertices inside segments that are no given points either
    std::size_t numCrossings = 0;     // those of them where segments cross
    std::size_t numHoles = 0;
    std::size_t numRegions = 0;
};

// The part of the triangulation that was asked for.
struct ZoneReport {
    std::string kind;
    std::size_t numTriangles = 0;
    double area = 0.0;
    std::size_t numBorderEdges = 0;
    std::size_t numParts = 0; // that hang together by edges
};

// How the triangles of a mesh file became part of the triangulation.
struct ImportReport {
    std::size_t numTriangles = 0;
    std::size_t numCorners = 0;
    std::size_t numTurned = 0; // given clockwise
    std::size_t numBorderEdges = 0;
    std::size_t numInnerConstraintEdges = 0; // that are not Delaunay, and segments
};

// What knives cut.
struct CutReport {
    std::size_t numKnives = 0;
    std::size_t numEdges = 0; // of the triangulation, that are cuts
    std::size_t numNewVertices = 0;
    std::size_t numSplit = 0;  // constraint edges that were crossed
    std::size_t numPieces = 0; // of what is written
};

// What became of the zone when it was meshed.
struct MeshReport {
    double minAngle = 0.0; // the limits that held
    double minEdge = 0.0;
    bool bGrid = false;            // grid meshing was asked for
    bool bMovedAfterwards = false; // the limits may hold no more
    TESK_KIVO2D::RefinementReport refinement;
};

// What became of the vertices when they moved to a grid.
struct UnifyReport {
    double width = 0.0;
    std::size_t numMerged = 0; // fell together with another one
    std::size_t numBeside = 0; // stay beside the grid
};

// What a run of the command tells on standard output. Times are seconds; what did not take place is not set.
struct Report {
    std::string command;
    std::string input; // empty for generated points
    std::string kind;  // of generated points
    std::size_t numPoints = 0;
    std::optional<Box> boundingBox; // none without points
    std::vector<std::string> vOutputs;

    bool bTriangulated = false;
    std::size_t numDuplicates = 0;
    std::size_t numVertices = 0;
    std::size_t numTriangles = 0;
    std::size_t numHullVertices = 0; // those inside straight pieces of the hull included
    bool bIs2D = false;
    int numThreads = 1;
    std::optional<SegmentReport> segments; // of inputs that can hold some
    std::optional<ImportReport> import;
    std::optional<CutReport> cut;
    std::optional<ZoneReport> zone;
    std::optional<UnifyReport> unify;
    std::optional<MeshReport> mesh;
    std::optional<Measurement> quality; // also of a mesh
    std::optional<bool> bValid;

    std::optional<double> readTime;
    std::optional<double> triangulateTime;
    std::optional<double> segmentsTime;
    std::optional<double> importTime;
    std::optional<double> cutTime;
    std::optional<double> zoneTime;
    std::optional<double> meshTime;
    std::optional<double> unifyTime;
    std::optional<double> qualityTime;
    std::optional<double> checkTime;
    std::optional<double> writeTime;
};

std::string toText(const Report& report);
std::string toJson(const Report& report);

} // namespace cli
