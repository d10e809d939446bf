#include "cli/readers.h"

#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/textLines.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace cli {

namespace {

// Points are numbered by an int, and so are the corners of triangles in the files that number them.
constexpr std::size_t MAX_POINTS = std::numeric_limits<int>::max();

std::string numbers(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " number" : " numbers");
}

void addPoint(PointTable& table, double x, double y) {
    table.vPoints.emplace_back(x, y);
    table.vPoints.back().setCustomIndex(static_cast<int>(table.vPoints.size() - 1));
}

PointTable readColumns(const std::string& filename, std::size_t numColumns) {
    const std::string content = readWholeFile(filename);
    TextLines lines(filename, content);
    PointTable table;
    table.numAttributes = numColumns - 2;
    while (lines.next()) {
        const std::size_t found = lines.getFields().size();
        if (found != numColumns) {
            lines.fail(numbers(found) + " where " + std::to_string(numColumns) + " are expected");
        }
        if (table.vPoints.size() == MAX_POINTS) lines.fail("more points than can be numbered");
        addPoint(table, lines.toDouble(0), lines.toDouble(1));
        for (std::size_t i = 2; i < numColumns; ++i)
            table.vAttributes.push_back(lines.toDouble(i));
    }
    return table;
}

struct NodeHeader {
    std::size_t numPoints = 0;
    std::size_t numAttributes = 0;
    bool bWithMarkers = false;
};

NodeHeader readNodeHeader(TextLines& lines, const std::string& filename) {
    if (!lines.next()) throw FileError(filename, "holds no header line");
    const std::size_t found = lines.getFields().size();
    if (found > 4) lines.fail(numbers(found) + " in the header, which has at most 4");
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
    const std::size_t found = lines.getFields().size();
    if (found != expected)
        lines.fail(numbers(found) + " where " + std::to_string(expected) + " are expected");
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

PointTable readNode(const std::string& filename) {
    const std::string content = readWholeFile(filename);
    TextLines lines(filename, content, true);
    const NodeHeader header = readNodeHeader(lines, filename);
    PointTable table;
    table.numAttributes = header.numAttributes;
    table.bWithMarkers = header.bWithMarkers;
    while (lines.next()) {
        if (table.vPoints.size() == header.numPoints) lines.fail("more points than the header says");
        readNodeLine(lines, table);
    }
    if (table.vPoints.size() != header.numPoints) {
        throw FileError(filename, "ends after " + std::to_string(table.vPoints.size()) + " of " +
                                      std::to_string(header.numPoints) + " points");
    }
    return table;
}

template<class Value>
Value takeAt(const std::string& content, std::size_t offset) {
    Value value;
    std::memcpy(&value, content.data() + offset, sizeof value);
    return value;
}

// Number of doubles of each point; checks that the file holds exactly what its header claims.
std::size_t checkBinaryHeader(const std::string& filename, const std::string& content,
                              std::uint64_t& numPoints) {
    constexpr std::size_t HEADER_SIZE = 12;
    if (content.size() < HEADER_SIZE) throw FileError(filename, "ends inside its header");
    const auto type = takeAt<std::int32_t>(content, 0);
    if (type != 20 && type != 30) {
        throw FileError(filename, "is of type " + std::to_string(type) + ", not a point file (20 or 30)");
    }
    numPoints = takeAt<std::uint64_t>(content, 4);
    const std::size_t numDoubles = type == 20 ? 2 : 3;
    const std::size_t recordSize = numDoubles * sizeof(double);
    const std::size_t held = (content.size() - HEADER_SIZE) / recordSize;
    if (numPoints > held) {
        throw FileError(filename, "is truncated: " + std::to_string(held) + " of " +
                                      std::to_string(numPoints) + " points are there");
    }
    if (content.size() != HEADER_SIZE + numPoints * recordSize) {
        throw FileError(filename, "holds more bytes than its " + std::to_string(numPoints) + " points need");
    }
    if (numPoints > MAX_POINTS) throw FileError(filename, "more points than can be numbered");
    return numDoubles;
}

PointTable readBinary(const std::string& filename) {
    const std::string content = readWholeFile(filename);
    std::uint64_t numPoints = 0;
    const std::size_t numDoubles = checkBinaryHeader(filename, content, numPoints);
    PointTable table;
    table.numAttributes = numDoubles - 2;
    table.vPoints.reserve(numPoints);
    table.vAttributes.reserve(numPoints * table.numAttributes);
    for (std::size_t i = 0; i < numPoints; ++i) {
        double aValues[3] = {0.0, 0.0, 0.0};
        std::memcpy(aValues, content.data() + 12 + i * numDoubles * sizeof(double),
                    numDoubles * sizeof(double));
        if (!std::isfinite(aValues[0]) || !std::isfinite(aValues[1]) || !std::isfinite(aValues[2])) {
            throw FileError(filename,
                            "point " + std::to_string(i + 1) + " holds a number that is not finite");
        }
        addPoint(table, aValues[0], aValues[1]);
        if (numDoubles == 3) table.vAttributes.push_back(aValues[2]);
    }
    return table;
}

} // namespace

PointTable readPoints(const std::string& filename) {
    switch (formatOf(filename)) {
    case FORMAT_XY:
        return readColumns(filename, 2);
    case FORMAT_XYZ:
        return readColumns(filename, 3);
    case FORMAT_NODE:
        return readNode(filename);
    case FORMAT_BIN:
        return readBinary(filename);
    default:
        throw UsageError(filename + ": files of this kind are only written");
    }
}

} // namespace cli
