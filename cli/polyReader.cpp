#include "cli/polyReader.h"

#include "cli/errors.h"
#include "cli/nodeReader.h"
#include "cli/textLines.h"
#include "cli/words.h"

#include <filesystem>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;

std::size_t toCount(const TextLines& lines, const std::string& nouns) {
    const int count = lines.toInt(0);
    if (count < 0) lines.fail("a negative number of " + nouns);
    return static_cast<std::size_t>(count);
}

// Moves to each line of a numbered list in turn and lets the reader take the fields after the number. Returns
// the number of the first.
template<class ReadLine>
std::size_t readList(TextLines& lines, const std::string& filename, std::size_t count,
                     const std::string& noun, const ReadLine& readLine) {
    int first = 1;
    for (std::size_t i = 0; i < count; ++i) {
        if (!lines.next()) {
            throw FileError(filename, "ends after " + std::to_string(i) + " of " + std::to_string(count) +
                                          " " + noun + "s");
        }
        const int number = lines.toInt(0);
        if (i == 0) {
            if (number != 0 && number != 1)
                lines.fail("the first " + noun + " has neither the number 0 nor 1");
            first = number;
        }
        const std::size_t wanted = static_cast<std::size_t>(first) + i;
        if (number < 0 || static_cast<std::size_t>(number) != wanted) {
            lines.fail(noun + " " + std::to_string(number) + " where " + std::to_string(wanted) +
                       " is expected");
        }
        readLine();
    }
    return static_cast<std::size_t>(first);
}

// Of the same name, in the same folder. Upper case extensions come in pairs.
std::string nodeFilenameOf(const std::string& filename) {
    std::filesystem::path path(filename);
    return path.replace_extension(path.extension() == ".POLY" ? ".NODE" : ".node").string();
}

std::size_t toPosition(const TextLines& lines, std::size_t field, const PointTable& table) {
    const int number = lines.toInt(field);
    const auto first = static_cast<long long>(table.firstIndex);
    const auto last = first + static_cast<long long>(table.vPoints.size()) - 1;
    if (number < first || number > last) {
        lines.fail("there is no point " + std::to_string(number) + ": " +
                   (table.vPoints.empty()
                        ? "there are none"
                        : "they run from " + std::to_string(first) + " to " + std::to_string(last)));
    }
    return static_cast<std::size_t>(number - first);
}

void readPolySegments(TextLines& lines, const std::string& filename, Input& input) {
    if (!lines.next()) throw FileError(filename, "ends before the number of segments");
    const std::size_t found = lines.getFields().size();
    if (found > 2)
        lines.fail(counted(found, "number") + " where the number of segments and of markers are expected");
    const std::size_t count = toCount(lines, "segments");
    const int numMarkers = found == 2 ? lines.toInt(1) : 0;
    if (numMarkers != 0 && numMarkers != 1) lines.fail("the number of markers is neither 0 nor 1");
    input.domain.bWithMarkers = numMarkers == 1;
    input.domain.firstNumber = readList(lines, filename, count, "segment", [&lines, &input, numMarkers]() {
        expectFields(lines, numMarkers == 1 ? 4 : 3);
        InputSegment segment;
        segment.source = toPosition(lines, 1, input.table);
        segment.target = toPosition(lines, 2, input.table);
        if (numMarkers == 1) segment.marker = lines.toInt(3);
        input.domain.vSegments.push_back(segment);
    });
}

void readHoles(TextLines& lines, const std::string& filename, Domain& domain) {
    if (!lines.next()) throw FileError(filename, "ends before the number of holes");
    expectFields(lines, 1);
    readList(lines, filename, toCount(lines, "holes"), "hole", [&lines, &domain]() {
        expectFields(lines, 3);
        domain.vHoles.emplace_back(lines.toDouble(1), lines.toDouble(2));
    });
}

void readRegions(TextLines& lines, const std::string& filename, Domain& domain) {
    if (!lines.next()) return;
    expectFields(lines, 1);
    readList(lines, filename, toCount(lines, "regions"), "region", [&lines, &domain]() {
        const bool bWithArea = lines.getFields().size() == 5;
        if (!bWithArea) expectFields(lines, 4);
        Region region;
        region.point = Point2(lines.toDouble(1), lines.toDouble(2));
        region.attribute = lines.toDouble(3);
        if (bWithArea) region.maxArea = lines.toDouble(4);
        domain.vRegions.push_back(region);
    });
    if (lines.next()) lines.fail("something follows the last list");
}

} // namespace

Input readPoly(const std::string& filename) {
    const std::string content = readWholeFile(filename);
    TextLines lines(filename, content, true);
    Input input;
    input.vFilenames = {filename};
    input.table = readNumberedPoints(lines, filename);
    if (input.table.vPoints.empty()) {
        const std::string nodeFilename = nodeFilenameOf(filename);
        if (!std::filesystem::exists(nodeFilename)) {
            throw FileError(filename, "holds no points, and there is no " + nodeFilename + " with them");
        }
        input.vFilenames.push_back(nodeFilename);
        input.table = readNode(nodeFilename);
    }
    input.numPoints = input.table.vPoints.size();
    readPolySegments(lines, filename, input);
    readHoles(lines, filename, input.domain);
    readRegions(lines, filename, input.domain);
    return input;
}

} // namespace cli
