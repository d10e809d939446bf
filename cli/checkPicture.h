#pragma once

#include "cli/checkFaults.h"
#include "cli/checkInsets.h"
#include "cli/checkReport.h"
#include "cli/svgShapes.h"

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace cli {

// For input whose y axis points downwards.
TESK_KIVO2D::Point2 upsideDown(const TESK_KIVO2D::Point2& point);

// The different ends of segments, and the segments of some length between them.
struct SegmentGraph {
    std::vector<TESK_KIVO2D::Point2> vVertices;
    std::vector<Trails::Edge> vFaultless;
    std::vector<Trails::Edge> vAtFault;
};

// A picture of segments: those at fault in red, marks where they meet, and rings that lead the eye there.
// Marks and rings are as many as can be told apart, however many faults are added.
class CheckPicture {
public:
    // One segment at least has a length. In the picture y points downwards where bFlipY is set. Both lists
    // stay where they are while this lives.
    CheckPicture(const std::vector<TESK_KIVO2D::Segment2>& vSegments_,
                 const std::vector<std::size_t>& vAtFault_, bool bFlipY_);

    void add(const Fault& fault, const FaultPlace& place);

    // Writes an .svg file. Throws `FileError` unless every byte arrived.
    void write(const std::string& filename, const CheckReport& report) const;

private:
    using Cell = std::pair<int, int>;
    // By the cells of its ends, the first mark that has them.
    using Marks = std::map<std::pair<Cell, Cell>, std::pair<Pixel, Pixel>>;
    struct Place {
        Pixel least, most;
        std::size_t number; // in the order in which they were found
    };

    std::size_t numRings() const;
    Pixel pixelOf(const TESK_KIVO2D::Point2& point) const;
    void writeSegments(OutputFile& out) const;
    void writeMarks(OutputFile& out, FaultKind kind) const;
    void writeRings(OutputFile& out) const;

    const std::vector<TESK_KIVO2D::Segment2>& vSegments;
    const std::vector<std::size_t>& vAtFault;
    bool bFlipY;
    SegmentGraph graph;
    Page page;
    std::array<Marks, NUM_FAULT_KINDS> aMarks;
    std::map<Cell, Place> mPlaces; // where rings go
    std::vector<Inset> vInsets;    // the first places
};

} // namespace cli
