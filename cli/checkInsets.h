#pragma once

#include "cli/OutputFile.h"
#include "cli/checkFaults.h"

#include <Segment2.h>

#include <cstddef>
#include <vector>

namespace cli {

// A fault that is drawn so large that it can be seen.
struct Inset {
    Fault fault;
    FaultPlace place;
};
constexpr std::size_t MAX_INSETS = 6;

// The set that insets show pieces of.
struct InsetSource {
    const std::vector<TESK_KIVO2D::Segment2>& vSegments;
    const std::vector<std::size_t>& vAtFault; // positions, sorted
    std::size_t firstNumber;
    bool bFlipY;
};

double heightOfInsets(std::size_t numInsets);

// Draws faults as through a magnifying glass, in squares numbered from 1, below the given height.
void writeInsets(OutputFile& out, double top, const std::vector<Inset>& vInsets, const InsetSource& source);

} // namespace cli
