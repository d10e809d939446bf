#include "cli/segmentReader.h"

#include "cli/BinaryRecords.h"
#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/geojsonReader.h"
#include "cli/nodeReader.h"
#include "cli/textLines.h"

namespace cli {

namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;

std::vector<Segment2> readText(const std::string& filename) {
    const std::string content = readWholeFile(filename);
    TextLines lines(filename, content);
    std::vector<Segment2> vSegments;
    while (lines.next()) {
        expectFields(lines, 4);
        vSegments.emplace_back(Point2(lines.toDouble(0), lines.toDouble(1)),
                               Point2(lines.toDouble(2), lines.toDouble(3)));
    }
    return vSegments;
}

std::vector<Segment2> readBinary(const std::string& filename) {
    const BinaryRecords records(filename, {"segment", 21, 31, 2});
    std::vector<Segment2> vSegments;
    vSegments.reserve(records.size());
    const std::size_t second = records.getDimension();
    for (std::size_t i = 0; i < records.size(); ++i) {
        double aValues[6];
        records.get(i, aValues);
        vSegments.emplace_back(Point2(aValues[0], aValues[1]), Point2(aValues[second], aValues[second + 1]));
    }
    return vSegments;
}

std::vector<Segment2> readLinesOfGeoJson(const std::string& filename) {
    const Input input = readGeoJson(filename);
    std::vector<Segment2> vSegments;
    vSegments.reserve(input.domain.vSegments.size());
    for (const InputSegment& segment : input.domain.vSegments)
        vSegments.emplace_back(input.table.vPoints[segment.source], input.table.vPoints[segment.target]);
    return vSegments;
}

} // namespace

std::vector<Segment2> readSegments(const std::string& filename) {
    switch (formatOf(filename)) {
    case FORMAT_SEG:
        return readText(filename);
    case FORMAT_BIN:
        return readBinary(filename);
    case FORMAT_GEOJSON:
        return readLinesOfGeoJson(filename);
    default:
        throw UsageError(filename + ": files of segments are .seg, .geojson or .bin");
    }
}

} // namespace cli
