#include "cli/readers.h"

#include "cli/BinaryRecords.h"
#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/nodeReader.h"
#include "cli/textLines.h"

namespace cli {

namespace {

PointTable readColumns(const std::string& filename, std::size_t numColumns) {
    const std::string content = readWholeFile(filename);
    TextLines lines(filename, content);
    PointTable table;
    table.numAttributes = numColumns - 2;
    while (lines.next()) {
        expectFields(lines, numColumns);
        if (table.vPoints.size() == MAX_POINTS) lines.fail("more points than can be numbered");
        addPoint(table, lines.toDouble(0), lines.toDouble(1));
        for (std::size_t i = 2; i < numColumns; ++i)
            table.vAttributes.push_back(lines.toDouble(i));
    }
    return table;
}

PointTable readBinary(const std::string& filename) {
    const BinaryRecords records(filename, {"point", 20, 30, 1});
    if (records.size() > MAX_POINTS) throw FileError(filename, "more points than can be numbered");
    PointTable table;
    table.numAttributes = records.getDimension() - 2;
    table.vPoints.reserve(records.size());
    table.vAttributes.reserve(records.size() * table.numAttributes);
    for (std::size_t i = 0; i < records.size(); ++i) {
        double aValues[3];
        records.get(i, aValues);
        addPoint(table, aValues[0], aValues[1]);
        if (table.numAttributes == 1) table.vAttributes.push_back(aValues[2]);
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
    case FORMAT_SEG:
        throw UsageError(filename + ": segments are read with --segments, beside a file of points");
    default:
        throw UsageError(filename + ": files of this kind are only written");
    }
}

} // namespace cli
