#include "cli/mshReader.h"

#include "cli/TriangleCollector.h"
#include "cli/errors.h"
#include "cli/nodeReader.h"
#include "cli/textLines.h"

#include <unordered_map>

namespace cli {

namespace {

class MshReader {
public:
    MshReader(const std::string& filename_, const std::string& content, Input& input)
        : filename(filename_), lines(filename_, content),
          collector(input, [this](const std::string& text) { lines.fail(text); }) {}

    // Sections in any order, but nodes before the elements that name them.
    void read() {
        while (lines.next()) {
            const std::string head(lines.getFields()[0]);
            if (head.front() != '$') lines.fail(inQuotes(head) + " where a section should begin");
            if (head == "$MeshFormat") readFormat();
            if (head == "$Nodes") readNodes();
            if (head == "$Elements") readElements();
            skipTo("$End" + head.substr(1));
        }
        if (!bFormat) throw FileError(filename, "has no section $MeshFormat");
    }

private:
    void nextLine() {
        if (!lines.next()) throw FileError(filename, "ends inside a section");
    }
    void skipTo(const std::string& end) {
        do
            nextLine();
        while (lines.getFields()[0] != end);
    }
    int readCount() {
        nextLine();
        expectFields(lines, 1);
        const int count = lines.toInt(0);
        if (count < 0) lines.fail("a negative number");
        return count;
    }
    void readFormat() {
        nextLine();
        expectFields(lines, 3);
        const double version = lines.toDouble(0);
        if (!(version >= 2.0 && version < 3.0) || lines.toInt(1) != 0)
            lines.fail("only version 2.2 as text is read");
        bFormat = true;
    }
    void readNodes() {
        const int count = readCount();
        for (int i = 0; i < count; ++i) {
            nextLine();
            expectFields(lines, 4);
            const auto position = static_cast<std::int64_t>(collector.numVertices());
            if (!mPositionOf.emplace(lines.toInt(0), position).second) lines.fail("a node's number again");
            collector.addVertex(lines.toDouble(1), lines.toDouble(2), lines.toDouble(3));
        }
    }
    // "number kind tags tag... node..."
    void readElements() {
        constexpr int LINE = 1, TRIANGLE = 2, POINT = 15;
        const int count = readCount();
        for (int i = 0; i < count; ++i) {
            nextLine();
            if (lines.getFields().size() < 3) lines.fail("an element without a kind");
            const int kind = lines.toInt(1), numTags = lines.toInt(2);
            if (kind == LINE || kind == POINT) continue;
            if (kind != TRIANGLE)
                lines.fail("an element of kind " + std::to_string(kind) + "; only triangles are read");
            if (numTags < 0) lines.fail("a negative number of tags");
            const std::size_t first = 3 + static_cast<std::size_t>(numTags);
            expectFields(lines, first + 3);
            collector.addTriangle({positionOf(first), positionOf(first + 1), positionOf(first + 2)});
        }
    }
    std::int64_t positionOf(std::size_t field) const {
        const auto it = mPositionOf.find(lines.toInt(field));
        if (it == mPositionOf.end()) lines.fail("there is no node " + std::string(lines.getFields()[field]));
        return it->second;
    }

    const std::string& filename;
    TextLines lines;
    TriangleCollector collector;
    std::unordered_map<int, std::int64_t> mPositionOf; // only asked, never listed
    bool bFormat = false;
};

} // namespace

Input readMsh(const std::string& filename) {
    const std::string content = readWholeFile(filename);
    Input input;
    MshReader(filename, content, input).read();
    input.vFilenames = {filename};
    return input;
}

} // namespace cli
