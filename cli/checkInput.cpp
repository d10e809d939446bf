#include "cli/checkInput.h"

#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/polyReader.h"
#include "cli/segmentReader.h"

namespace cli {

namespace {

CheckInput readSegmentsOfPoly(const std::string& filename) {
    const Input poly = readPoly(filename);
    CheckInput input;
    input.vFilenames = poly.vFilenames;
    input.firstNumber = poly.domain.firstNumber;
    input.vSegments.reserve(poly.domain.vSegments.size());
    for (const InputSegment& segment : poly.domain.vSegments)
        input.vSegments.emplace_back(poly.table.vPoints[segment.source], poly.table.vPoints[segment.target]);
    return input;
}

CheckInput readFile(const std::string& filename) {
    switch (formatOf(filename)) {
    case FORMAT_POLY:
        return readSegmentsOfPoly(filename);
    case FORMAT_SEG:
    case FORMAT_BIN:
    case FORMAT_GEOJSON:
        return {readSegments(filename), 1, {filename}};
    default:
        throw UsageError(filename + ": segments are in files of the kinds .seg, .poly, .geojson and .bin");
    }
}

} // namespace

CheckInput readSegmentsToCheck(const std::string& filename) {
    CheckInput input = readFile(filename);
    if (input.vSegments.size() > MAX_POINTS) throw FileError(filename, "more segments than can be numbered");
    return input;
}

} // namespace cli
