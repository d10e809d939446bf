#include "output/webScene.h"

#include "functions.h"
#include "kernel/messages.h"
#include "output/OutputFile.h"
#include "output/elementFiles.h"
#include "output/objExport.h"
#include "output/viewerFiles.h"

#include <bit>

namespace TESK_KIVO2D {
namespace {

// The mesh reaches the page as a script, since browsers let a page read no neighbouring file from disk, but
// run it:
//     Kivo.mesh.begin({"title":..., counts});
//     Kivo.mesh.add("coordinates", "base64"); any number of times for each array, in order
//     Kivo.mesh.end();
// All numbers are little-endian.

// Bytes as base64, in statements of a moderate length: engines limit the length of one string.
class Base64Statements {
public:
    Base64Statements(OutputFile& file_, std::string_view arrayName_) : file(file_), arrayName(arrayName_) {}
    ~Base64Statements() {
        if (numPending > 0) writePending();
        if (numWritten > 0) file.text("\");\n");
    }
    Base64Statements(const Base64Statements&) = delete;
    Base64Statements& operator=(const Base64Statements&) = delete;

    void add(double value) { add(std::bit_cast<std::uint64_t>(value), sizeof value); }
    void add(std::uint32_t value) { add(value, sizeof value); }

private:
    static constexpr std::size_t bytesPerStatement = std::size_t{3} << 20;

    void add(std::uint64_t bits, std::size_t numBytes) {
        for (; numBytes > 0; --numBytes, bits >>= 8) {
            pending = pending << 8 | static_cast<std::uint32_t>(bits & 0xFF);
            if (++numPending == 3) writePending();
        }
    }
    // Three bytes are four digits; one or two at the end are filled up with "=".
    void writePending() {
        static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        if (numWritten % bytesPerStatement == 0) beginStatement();
        const std::uint32_t bits = pending << 8 * (3 - numPending);
        const char four[4] = {digits[bits >> 18], digits[bits >> 12 & 63],
                              numPending > 1 ? digits[bits >> 6 & 63] : '=',
                              numPending > 2 ? digits[bits & 63] : '='};
        file.raw(four);
        numWritten += 3;
        numPending = 0;
        pending = 0;
    }
    void beginStatement() {
        if (numWritten > 0) file.text("\");\n");
        file.text("Kivo.mesh.add(\"");
        file.text(arrayName);
        file.text("\",\"");
    }

    OutputFile& file;
    const std::string_view arrayName;
    std::uint32_t pending = 0;
    unsigned numPending = 0;
    std::size_t numWritten = 0;
};

template<class Value>
void writeArray(OutputFile& file, std::string_view name, const std::vector<Value>& vValues) {
    Base64Statements statements(file, name);
    for (const Value value : vValues)
        statements.add(value);
}

// Calls the function with the two vertex numbers of each edge that has no triangle on its other side.
template<class Function>
void forEachBorderEdge(const MeshArrays& mesh, Function function) {
    for (std::size_t i = 0; i < mesh.vNeighbours.size(); ++i) {
        if (mesh.vNeighbours[i] != MeshArrays::noTriangle) continue;
        const std::size_t first = i - i % 3;
        function(mesh.vCorners[first + (i + 1) % 3], mesh.vCorners[first + (i + 2) % 3]);
    }
}

// One character of UTF-8 text: its number, and how many bytes it takes.
struct Utf8Character {
    std::uint32_t code;
    std::size_t numBytes;
};

Utf8Character firstCharacter(std::string_view text) {
    const auto byteAt = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
    };
    const std::uint32_t lead = byteAt(0);
    const std::size_t numBytes = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
    if (numBytes == 1 || text.size() < numBytes) return {lead, 1};
    std::uint32_t code = lead & (0xFFu >> (numBytes + 1));
    for (std::size_t i = 1; i < numBytes; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80) return {lead, 1};
        code = code << 6 | (byteAt(i) & 0x3F);
    }
    static constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool bSurrogate = code >= 0xD800 && code < 0xE000;
    if (code < smallest[numBytes] || code > 0x10FFFF || bSurrogate) return {lead, 1};
    return {code, numBytes};
}

// The text as a string of the script. Whatever could end the string, the line or the script's element, or is
// no ASCII, is written by its number, so that no encoding matters. Bytes that are not UTF-8 count as Latin-1.
void writeString(OutputFile& file, std::string_view text) {
    static constexpr char digits[] = "0123456789abcdef";
    file.character('"');
    while (!text.empty()) {
        const auto [code, numBytes] = firstCharacter(text);
        text.remove_prefix(numBytes);
        const bool bPlain = code >= ' ' && code < 0x7F && code != '"' && code != '\\' && code != '<';
        if (bPlain) {
            file.character(static_cast<char>(code));
            continue;
        }
        file.text("\\u{");
        for (int shift = 20; shift >= 0; shift -= 4)
            file.character(digits[code >> shift & 15]);
        file.character('}');
    }
    file.character('"');
}

void writeCount(OutputFile& file, std::string_view name, std::size_t count) {
    file.text(",\"");
    file.text(name);
    file.text("\":");
    file.integer(static_cast<long long>(count));
}

void writeHead(OutputFile& file, const SceneContent& content) {
    std::size_t numBorderEdges = 0;
    forEachBorderEdge(content.mesh, [&](std::uint32_t, std::uint32_t) { ++numBorderEdges; });
    file.text("Kivo.mesh.begin({\"title\":");
    writeString(file, content.title);
    file.text(content.bZone ? ",\"zone\":true" : ",\"zone\":false");
    writeCount(file, "vertices", content.mesh.vCoordinates.size() / 2);
    writeCount(file, "triangles", content.mesh.vCorners.size() / 3);
    writeCount(file, "borderEdges", numBorderEdges);
    writeCount(file, "constraintEdges", content.vConstraintEdges.size() / 2);
    file.text("});\n");
}

bool writeMeshScript(const std::string& filename, const SceneContent& content) {
    OutputFile file(filename);
    if (!file.isOpen()) return complainAboutFile(filename.c_str(), " can't be written");
    file.text("\"use strict\";\n");
    writeHead(file, content);
    writeArray(file, "coordinates", content.mesh.vCoordinates);
    writeArray(file, "corners", content.mesh.vCorners);
    {
        Base64Statements statements(file, "borderEdges");
        forEachBorderEdge(content.mesh, [&](std::uint32_t source, std::uint32_t target) {
            statements.add(source);
            statements.add(target);
        });
    }
    writeArray(file, "constraintEdges", content.vConstraintEdges);
    file.text("Kivo.mesh.end();\n");
    return file.close() || complainAboutFile(filename.c_str(), " can't be written");
}

} // namespace

bool writeSceneFiles(const std::string& path, const SceneContent& content) {
    if (!createDirectory(path)) {
        reportWarning("Dt2::writeWebScene()", path);
        return false;
    }
    printText("writeWebScene: Creating " + path + "\n");
    for (const ViewerFile& viewerFile : aViewerFiles)
        if (!fileReplicate(std::string(viewerFile.name), path)) return false;
    return writeObjFile(path + "/3d.obj", content.mesh) && writeMeshScript(path + "/3d.js", content);
}

} // namespace TESK_KIVO2D
