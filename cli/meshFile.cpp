#include "cli/meshFile.h"

#include "cli/TriangleCollector.h"
#include "cli/errors.h"
#include "cli/mshReader.h"
#include "cli/nodeReader.h"
#include "cli/textLines.h"
#include "cli/vtuReader.h"
#include "cli/words.h"

#include <charconv>
#include <filesystem>

namespace cli {

namespace {

// The vertex that the reference of a face names, counted from 0: "7", "7/1", "7//2" or, from the end, "-1".
std::int64_t cornerOf(std::string_view reference, const TextLines& lines, std::size_t numVertices) {
    const std::string_view text = reference.substr(0, reference.find('/'));
    std::int64_t number = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || pEnd != text.data() + text.size() || number == 0)
        lines.fail(inQuotes(reference) + " names no vertex");
    return number > 0 ? number - 1 : static_cast<std::int64_t>(numVertices) + number;
}

Input readObj(const std::string& filename) {
    const std::string content = readWholeFile(filename);
    TextLines lines(filename, content, true);
    Input input;
    TriangleCollector collector(input, [&lines](const std::string& text) { lines.fail(text); });
    while (lines.next()) {
        const std::vector<std::string_view>& vFields = lines.getFields();
        if (vFields[0] == "v") {
            if (vFields.size() < 4) lines.fail("a vertex without three coordinates");
            collector.addVertex(lines.toDouble(1), lines.toDouble(2), lines.toDouble(3));
        } else if (vFields[0] == "f") {
            if (vFields.size() != 4)
                lines.fail("a face of " + counted(vFields.size() - 1, "corner") +
                           "; only triangles are read");
            std::array<std::int64_t, 3> aCorners{};
            for (std::size_t i = 0; i < 3; ++i)
                aCorners[i] = cornerOf(vFields[i + 1], lines, collector.numVertices());
            collector.addTriangle(aCorners);
        }
    }
    input.vFilenames = {filename};
    return input;
}

std::string besideAs(const std::string& filename, const char* extension) {
    return std::filesystem::path(filename).replace_extension(extension).string();
}

// Header "count 3 attributes", then "number corner corner corner attributes..." a line.
void readTriangleLines(TextLines& lines, const std::string& filename, std::int64_t firstIndex,
                       TriangleCollector& collector) {
    if (!lines.next()) throw FileError(filename, "holds no header line");
    const std::size_t inHeader = lines.getFields().size();
    const int count = lines.toInt(0);
    const int numCorners = inHeader > 1 ? lines.toInt(1) : 3;
    const int numAttributes = inHeader > 2 ? lines.toInt(2) : 0;
    if (inHeader > 3 || count < 0 || numAttributes < 0) lines.fail("a wrong header");
    if (numCorners != 3) lines.fail("triangles of " + std::to_string(numCorners) + " corners");
    for (int i = 0; i < count; ++i) {
        if (!lines.next())
            throw FileError(filename, "ends after " + std::to_string(i) + " of " + std::to_string(count) +
                                          " triangles");
        expectFields(lines, 4 + static_cast<std::size_t>(numAttributes));
        collector.addTriangle(
            {lines.toInt(1) - firstIndex, lines.toInt(2) - firstIndex, lines.toInt(3) - firstIndex});
    }
    if (lines.next()) lines.fail("more triangles than the header says");
}

Input readEle(const std::string& filename) {
    Input input;
    const std::string nodes = besideAs(filename, ".node");
    input.table = readNode(nodes);
    input.vFilenames = {filename, nodes};
    const std::string content = readWholeFile(filename);
    TextLines lines(filename, content, true);
    TriangleCollector collector(input, [&lines](const std::string& text) { lines.fail(text); });
    readTriangleLines(lines, filename, static_cast<std::int64_t>(input.table.firstIndex), collector);
    return input;
}

} // namespace

bool holdsTriangles(FileFormat format) {
    return format == FORMAT_OBJ || format == FORMAT_MSH || format == FORMAT_VTU || format == FORMAT_ELE;
}

Input readMeshFile(const std::string& filename) {
    const FileFormat format = formatOf(filename);
    Input input = format == FORMAT_MSH   ? readMsh(filename)
                  : format == FORMAT_VTU ? readVtu(filename)
                  : format == FORMAT_ELE ? readEle(filename)
                                         : readObj(filename);
    if (input.vTriangles.empty()) throw FileError(filename, "holds no triangles");
    input.numPoints = input.table.vPoints.size();
    return input;
}

} // namespace cli
