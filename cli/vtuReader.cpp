#include "cli/vtuReader.h"

#include "cli/TriangleCollector.h"
#include "cli/errors.h"
#include "cli/textLines.h"

#include <charconv>
#include <cmath>
#include <string_view>

namespace cli {

namespace {

// What stands between the start tag and the end tag, and the start tag itself.
struct Element {
    std::string_view tag;
    std::string_view content;
};

class VtuReader {
public:
    VtuReader(const std::string& filename_, Input& input_)
        : filename(filename_), collector(input_, [this](const std::string& text) { fail(text); }) {}

    void read(std::string_view content) {
        if (content.find("UnstructuredGrid") == content.npos) fail("holds no UnstructuredGrid");
        const Element piece = find(content, "Piece", "");
        const char* const pAfter = piece.content.data() + piece.content.size();
        if (content.find("<Piece", static_cast<std::size_t>(pAfter - content.data())) != content.npos)
            fail("has several pieces; only one is read");
        const std::string_view cells = find(piece.content, "Cells", "").content;
        addVertices(find(piece.content, "Points", "").content, attribute(piece.tag, "NumberOfPoints"));
        addTriangles(numbersOf<std::int64_t>(find(cells, "DataArray", "connectivity")),
                     numbersOf<std::int64_t>(find(cells, "DataArray", "offsets")),
                     numbersOf<std::int64_t>(find(cells, "DataArray", "types")),
                     attribute(piece.tag, "NumberOfCells"));
    }

private:
    [[noreturn]] void fail(const std::string& text) const { throw FileError(filename, text); }

    static std::string_view attribute(std::string_view tag, const std::string& name) {
        for (std::size_t at = tag.find(name); at != tag.npos; at = tag.find(name, at + 1)) {
            const std::size_t equals = at + name.size();
            const bool bWhole = at > 0 && (tag[at - 1] == ' ' || tag[at - 1] == '\n' || tag[at - 1] == '\t');
            if (!bWhole || equals + 1 >= tag.size() || tag[equals] != '=') continue;
            const std::size_t end = tag.find(tag[equals + 1], equals + 2);
            if (end != tag.npos) return tag.substr(equals + 2, end - equals - 2);
        }
        return {};
    }

    // The first element of the kind, and of the name unless that is empty.
    Element find(std::string_view text, const std::string& kind, const std::string& name) const {
        const std::string what = name.empty() ? kind : kind + " " + name;
        for (std::size_t at = text.find('<' + kind); at != text.npos; at = text.find('<' + kind, at + 1)) {
            const std::size_t end = text.find('>', at);
            if (end == text.npos) break;
            const std::string_view tag = text.substr(at, end - at);
            if (!name.empty() && attribute(tag, "Name") != name) continue;
            if (tag.back() == '/') return {tag, text.substr(end, 0)};
            const std::size_t close = text.find("</" + kind, end);
            if (close == text.npos) fail("ends inside " + what);
            return {tag, text.substr(end + 1, close - end - 1)};
        }
        fail("holds no " + what);
    }

    template<class Number>
    std::vector<Number> numbersOf(const Element& array) const {
        const std::string_view format = attribute(array.tag, "format");
        if (format != "ascii") fail("an array in the format " + inQuotes(format) + "; only 'ascii' is read");
        std::vector<Number> vNumbers;
        const char* p = array.content.data();
        const char* const pEnd = p + array.content.size();
        for (;;) {
            while (p != pEnd && (*p == ' ' || *p == '\n' || *p == '\r' || *p == '\t'))
                ++p;
            if (p == pEnd) return vNumbers;
            const auto [pNext, error] = std::from_chars(p, pEnd, vNumbers.emplace_back());
            if (error != std::errc() || !std::isfinite(static_cast<double>(vNumbers.back())))
                fail(inQuotes(std::string_view(p, static_cast<std::size_t>(pEnd - p)).substr(0, 20)) +
                     " in an array starts with no number that can be read");
            p = pNext;
        }
    }

    void expectCount(std::size_t found, std::string_view expected, const char* what) const {
        if (std::to_string(found) != expected)
            fail("has " + std::to_string(found) + " " + what + " where " + inQuotes(expected) + " are told");
    }

    void addVertices(std::string_view points, std::string_view count) {
        const auto vNumbers = numbersOf<double>(find(points, "DataArray", ""));
        if (vNumbers.size() % 3 != 0) fail("points without three coordinates");
        expectCount(vNumbers.size() / 3, count, "points");
        for (std::size_t i = 0; i < vNumbers.size(); i += 3)
            collector.addVertex(vNumbers[i], vNumbers[i + 1], vNumbers[i + 2]);
    }

    void addTriangles(const std::vector<std::int64_t>& vCorners, const std::vector<std::int64_t>& vOffsets,
                      const std::vector<std::int64_t>& vTypes, std::string_view count) {
        constexpr std::int64_t VERTEX = 1, LINE = 3, TRIANGLE = 5; // as VTK numbers kinds of cells
        expectCount(vTypes.size(), count, "types of cells");
        expectCount(vOffsets.size(), count, "offsets of cells");
        std::int64_t start = 0;
        for (std::size_t i = 0; i < vTypes.size(); ++i) {
            const std::int64_t end = vOffsets[i];
            if (end < start || static_cast<std::uint64_t>(end) > vCorners.size())
                fail("a cell's corners lie outside their array");
            if (vTypes[i] == TRIANGLE && end - start == 3) {
                const auto k = static_cast<std::size_t>(start);
                collector.addTriangle({vCorners[k], vCorners[k + 1], vCorners[k + 2]});
            } else if (vTypes[i] != VERTEX && vTypes[i] != LINE) {
                fail("a cell of type " + std::to_string(vTypes[i]) + " with " + std::to_string(end - start) +
                     " corners; only triangles are read");
            }
            start = end;
        }
    }

    const std::string& filename;
    TriangleCollector collector;
};

} // namespace

Input readVtu(const std::string& filename) {
    const std::string content = readWholeFile(filename);
    Input input;
    VtuReader(filename, input).read(content);
    input.vFilenames = {filename};
    return input;
}

} // namespace cli
