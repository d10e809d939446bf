#include "cli/nodeReader.h"

#include "cli/errors.h"
#include "cli/words.h"

namespace cli {

namespace {

struct NodeHeader {
    std::size_t numPoints = 0;
    std::size_t numAttributes = 0;
    bool bWithMarkers = false;
};

NodeHeader readNodeHeader(TextLines& lines, const std::string& filename) {
    if (!lines.next()) throw FileError(filename, "holds no header line");
    const std::size_t found = lines.getFields().size();
    if (found > 4) lines.fail(counted(found, "number") + " in the header, which has at most 4");
    int aValues[] = {0, 2, 0, 0};
    for (std::size_t i = 0; i < found; ++i)
        aValues[i] = lines.toInt(i);
    if (aValues[0] < 0) lines.fail("a negative number of points");
    if (aValues[1] != 2) lines.fail("points of dimension " + std::to_string(aValues[1]) + " instead of 2");
    if (aValues[2] < 0) lines.fail("a negative number of attributes");
    if (aValues[3] != 0 && aValues[3] != 1) lines.fail("the number of markers is neither 0 nor 1");
    return {static_cast<std::size_t>(aValues[0]), static_cast<std::size_t>(aValues[2]), aValues[3] == 1};
}

void readNodeLine(const TextLines& lines, PointTable& table) {
    const std::size_t expected = 3 + table.numAttributes + (table.bWithMarkers ? 1 : 0);
    expectFields(lines, expected);
    const int number = lines.toInt(0);
    if (table.vPoints.empty()) {
        if (number != 0 && number != 1) lines.fail("the first point has neither the number 0 nor 1");
        table.firstIndex = static_cast<std::size_t>(number);
    }
    const std::size_t wanted = table.firstIndex + table.vPoints.size();
    if (number < 0 || static_cast<std::size_t>(number) != wanted) {
        lines.fail("point " + std::to_string(number) + " where " + std::to_string(wanted) + " is expected");
    }
    addPoint(table, lines.toDouble(1), lines.toDouble(2));
    for (std::size_t i = 0; i < table.numAttributes; ++i)
        table.vAttributes.push_back(lines.toDouble(3 + i));
    if (table.bWithMarkers) table.vMarkers.push_back(lines.toInt(expected - 1));
}

} // namespace

void expectFields(const TextLines& lines, std::size_t expected) {
    const std::size_t found = lines.getFields().size();
    if (found == expected) return;
    lines.fail(counted(found, "number") + " where " + std::to_string(expected) + " are expected");
}

void addPoint(PointTable& table, double x, double y) {
    table.vPoints.emplace_back(x, y);
    table.vPoints.back().setCustomIndex(static_cast<int>(table.vPoints.size() - 1));
}

PointTable readNumberedPoints(TextLines& lines, const std::string& filename) {
    const NodeHeader header = readNodeHeader(lines, filename);
    PointTable table;
    table.numAttributes = header.numAttributes;
    table.bWithMarkers = header.bWithMarkers;
    while (table.vPoints.size() < header.numPoints) {
        if (!lines.next()) {
            throw FileError(filename, "ends after " + std::to_string(table.vPoints.size()) + " of " +
                                          std::to_string(header.numPoints) + " points");
        }
        readNodeLine(lines, table);
    }
    return table;
}

PointTable readNode(const std::string& filename) {
    const std::string content = readWholeFile(filename);
    TextLines lines(filename, content, true);
    PointTable table = readNumberedPoints(lines, filename);
    if (lines.next()) lines.fail("more points than the header says");
    return table;
}

} // namespace cli
