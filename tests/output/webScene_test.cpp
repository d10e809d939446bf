#include "output/webScene.h"

#include "Kivo_2D.h"
#include "functions.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"
#include "tests/support/files.h"

#include <cstring>
#include <filesystem>
#include <set>

using namespace TESK_KIVO2D;

namespace {

const std::vector<std::string> vViewerNames = {"index.html", "jsc3d.ctm.js", "jsc3d.js", "jsc3d.touch.js"};

// A folder that is not there yet.
std::string newFolder(const std::string& name) {
    std::filesystem::remove_all(pathOf(name));
    return pathOf(name);
}

std::string decodeBase64(const std::string& text) {
    static const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    int numBits = 0;
    for (const char c : text) {
        if (c == '=') break;
        const auto digit = digits.find(c);
        EXPECT_NE(std::string::npos, digit) << c;
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        if ((numBits += 6) >= 8) bytes += static_cast<char>(bits >> (numBits -= 8) & 0xFF);
    }
    EXPECT_EQ(0U, text.size() % 4);
    return bytes;
}

// The script's arrays; the browser tests read it with the page's own code.
struct Script {
    std::string head;
    std::size_t numStatements = 0;
    std::vector<double> vCoordinates;
    std::vector<std::uint32_t> vCorners, vBorderEdges, vConstraintEdges;

    explicit Script(const std::string& path) {
        std::istringstream lines(readFile(path));
        std::string line, last;
        std::getline(lines, line);
        EXPECT_EQ("\"use strict\";", line);
        std::getline(lines, head);
        for (; std::getline(lines, line); last = line) {
            take("coordinates", line, vCoordinates);
            take("corners", line, vCorners);
            take("borderEdges", line, vBorderEdges);
            take("constraintEdges", line, vConstraintEdges);
        }
        EXPECT_EQ("Kivo.mesh.end();", last);
    }

    template<class Value>
    void take(const std::string& name, const std::string& line, std::vector<Value>& vValues) {
        const std::string start = "Kivo.mesh.add(\"" + name + "\",\"", end = "\");";
        if (line.rfind(start, 0) != 0) return;
        ASSERT_TRUE(line.ends_with(end));
        const std::string bytes =
            decodeBase64(line.substr(start.size(), line.size() - start.size() - end.size()));
        ASSERT_EQ(0U, bytes.size() % sizeof(Value));
        const std::size_t numBefore = vValues.size();
        vValues.resize(numBefore + bytes.size() / sizeof(Value));
        std::memcpy(vValues.data() + numBefore, bytes.data(), bytes.size());
        ++numStatements;
    }
};

// A fan of triangles round vertex 0, with arbitrary coordinates.
SceneContent fan(std::uint32_t numTriangles) {
    doubles::Rng rng(5);
    SceneContent content;
    for (std::uint32_t i = 0; i < 2 * (numTriangles + 2); ++i)
        content.mesh.vCoordinates.push_back(doubles::anyFinite(rng));
    for (std::uint32_t i = 0; i < numTriangles; ++i) {
        const std::uint32_t none = MeshArrays::noTriangle;
        content.mesh.vCorners.insert(content.mesh.vCorners.end(), {0, i + 1, i + 2});
        content.mesh.vNeighbours.insert(content.mesh.vNeighbours.end(),
                                        {none, i + 1 < numTriangles ? i + 1 : none, i > 0 ? i - 1 : none});
    }
    return content;
}

bool write(const std::string& path, const SceneContent& content) {
    const CapturedMessages messages;
    const bool bOk = writeSceneFiles(path, content);
    EXPECT_EQ("writeWebScene: Creating " + path + "\n", messages.output());
    return bOk;
}

std::string headOf(const std::string& title) {
    SceneContent content = fan(1);
    content.title = title;
    const std::string folder = newFolder("titled");
    EXPECT_TRUE(write(folder, content));
    return Script(folder + "/3d.js").head;
}

TEST(WebScene, holdsTheViewerAndTheMeshTwice) {
    const std::string folder = newFolder("scenes") + "/new/scene";
    ASSERT_TRUE(write(folder, fan(2)));
    ASSERT_TRUE(write(folder, fan(3))); // over an older one
    std::set<std::string> sNames;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        sNames.insert(entry.path().filename().string());
    std::set<std::string> sExpected(vViewerNames.begin(), vViewerNames.end());
    sExpected.insert({"3d.obj", "3d.js"});
    EXPECT_EQ(sExpected, sNames);
    for (const std::string& name : vViewerNames)
        EXPECT_EQ(readFile(KIVO2D_TEST_DATA "/../../output/viewer/" + name), readFile(folder + "/" + name));
    const std::string obj = readFile(folder + "/3d.obj");
    EXPECT_TRUE(obj.ends_with("f 1 2 3\nf 1 3 4\nf 1 4 5\n")) << obj;
}

TEST(WebScene, theScriptHoldsEveryBitInStatementsOfModerateLength) {
    for (const std::uint32_t numTriangles : {1U, 2U, 3U, 200000U, 262144U}) {
        SceneContent content = fan(numTriangles);
        content.bZone = numTriangles == 2;
        for (std::uint32_t i = 0; i + 1 < numTriangles; ++i)
            content.vConstraintEdges.insert(content.vConstraintEdges.end(), {i + 2, 0});
        const std::string folder = newFolder("scene");
        ASSERT_TRUE(write(folder, content));
        const Script script(folder + "/3d.js");
        const std::string num = std::to_string(numTriangles);
        EXPECT_EQ(
            "Kivo.mesh.begin({\"title\":\"\",\"zone\":" + std::string(content.bZone ? "true" : "false") +
                ",\"vertices\":" + std::to_string(numTriangles + 2) + ",\"triangles\":" + num +
                ",\"borderEdges\":" + std::to_string(numTriangles + 2) +
                ",\"constraintEdges\":" + std::to_string(numTriangles - 1) + "});",
            script.head);
        ASSERT_EQ(content.mesh.vCoordinates.size(), script.vCoordinates.size());
        EXPECT_EQ(0, std::memcmp(content.mesh.vCoordinates.data(), script.vCoordinates.data(),
                                 script.vCoordinates.size() * sizeof(double)));
        EXPECT_EQ(content.mesh.vCorners, script.vCorners);
        EXPECT_EQ(content.vConstraintEdges, script.vConstraintEdges);
        std::vector<std::uint32_t> vBorder; // counter-clockwise round its triangle
        for (std::uint32_t i = 0; i < numTriangles; ++i) {
            vBorder.insert(vBorder.end(), {i + 1, i + 2});
            if (i + 1 == numTriangles) vBorder.insert(vBorder.end(), {i + 2, 0});
            if (i == 0) vBorder.insert(vBorder.end(), {0, 1});
        }
        EXPECT_EQ(vBorder, script.vBorderEdges);
        constexpr std::size_t limit = std::size_t{3} << 20;
        const auto statements = [&](std::size_t numBytes) { return (numBytes + limit - 1) / limit; };
        EXPECT_EQ(statements(script.vCoordinates.size() * 8) + statements(script.vCorners.size() * 4) +
                      statements(script.vBorderEdges.size() * 4) +
                      statements(script.vConstraintEdges.size() * 4),
                  script.numStatements);
    }
}

TEST(WebScene, noTitleCanLeaveItsString) {
    const std::string before = "Kivo.mesh.begin({\"title\":\"",
                      after = "\",\"zone\":false,\"vertices\":3,\"triangles\":1,"
                              "\"borderEdges\":3,\"constraintEdges\":0});";
    const auto expectTitle = [&](const std::string& title, const std::string& written) {
        EXPECT_EQ(before + written + after, headOf(title));
    };
    expectTitle("A map, 1:25 000 (north) ~", "A map, 1:25 000 (north) ~");
    expectTitle("\"\\</\n\r\t\x7f",
                "\\u{000022}\\u{00005c}\\u{00003c}/\\u{00000a}\\u{00000d}\\u{000009}\\u{00007f}");
    expectTitle(std::string("a\0b", 3), "a\\u{000000}b");
    expectTitle("\u00fc\u20ac\U0001F5FA\u2028", "\\u{0000fc}\\u{0020ac}\\u{01f5fa}\\u{002028}");
    // No UTF-8: a byte alone, a cut character, an overlong one, a surrogate, a number beyond Unicode.
    expectTitle("\xfc", "\\u{0000fc}");
    expectTitle("\xe2\x82", "\\u{0000e2}\\u{000082}");
    expectTitle("\xc0\x80", "\\u{0000c0}\\u{000080}");
    expectTitle("\xe0\x80\xaf", "\\u{0000e0}\\u{000080}\\u{0000af}");
    expectTitle("\xed\xa0\x80", "\\u{0000ed}\\u{0000a0}\\u{000080}");
    expectTitle("\xf4\x90\x80\x80", "\\u{0000f4}\\u{000090}\\u{000080}\\u{000080}");
}

TEST(WebScene, aDirectoryThatCantBeMadeIsAWarning) {
    std::ofstream(pathOf("file")) << "x";
    for (const std::string& path :
         {pathOf("file"), pathOf("file") + "/scene", std::string(), std::string("a\0b", 3)}) {
        const CapturedMessages messages;
        EXPECT_FALSE(writeSceneFiles(path, fan(1)));
        EXPECT_EQ("      [Kivo2D-Message] Dt2::writeWebScene(), WARNING: " + path + "\n",
                  messages.output() + messages.error());
    }
    EXPECT_FALSE(std::filesystem::exists("a"));
}

TEST(WebScene, eachFileThatCantBeWrittenIsNamed) {
    std::vector<std::string> vNames = vViewerNames;
    vNames.insert(vNames.end(), {"3d.obj", "3d.js"});
    for (const std::string& name : vNames) {
        for (const bool bFullDisk : {false, true}) {
            const std::string folder = newFolder("blocked");
            std::filesystem::create_directories(folder);
            if (bFullDisk)
                std::filesystem::create_symlink("/dev/full", folder + "/" + name);
            else
                std::filesystem::create_directory(folder + "/" + name);
            const CapturedMessages messages;
            EXPECT_FALSE(writeSceneFiles(folder, fan(1)));
            EXPECT_EQ("writeWebScene: Creating " + folder + "\n" + folder + "/" + name +
                          " can't be written\n",
                      messages.output());
        }
    }
}

TEST(FileReplicate, writesTheFourFilesAndNoOther) {
    const std::string folder = newFolder("replicated");
    ASSERT_TRUE(createDirectory(folder));
    for (const std::string& name : vViewerNames)
        EXPECT_TRUE(fileReplicate(name, folder));
    const CapturedMessages messages;
    for (const char* name : {"3d.js", "", "../index.html", "INDEX.HTML"}) {
        EXPECT_FALSE(fileReplicate(name, folder));
        EXPECT_TRUE(messages.output().ends_with(name + std::string(" is no file of a web scene\n")));
    }
    EXPECT_FALSE(fileReplicate("index.html", folder + "/missing"));
    EXPECT_TRUE(messages.output().ends_with(folder + "/missing/index.html can't be written\n"));
    EXPECT_EQ(vViewerNames.size(),
              static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {})));
}

// The edges, each with its smaller vertex first, and which lie on the border.
TEST(WebScene, aTriangulationShowsItsConstraintsAndItsHull) {
    doubles::Rng rng(77);
    std::vector<Segment2> vSegments;
    for (int i = 0; i < 60; ++i)
        vSegments.emplace_back(Point2(doubles::uniform(rng), doubles::uniform(rng)),
                               Point2(doubles::uniform(rng), doubles::uniform(rng)));
    Kivo_2D kivo;
    const CapturedMessages messages;
    kivo.createConstraint(vSegments);
    const std::string folder = newFolder("triangulation");
    ASSERT_TRUE(kivo.writeWebScene(folder.c_str()));
    using Edge = std::pair<Point2, Point2>;
    const auto edgeOf = [](const Point2& p, const Point2& q) { return p < q ? Edge(p, q) : Edge(q, p); };
    std::multiset<Edge> sConstraints, sHull;
    std::vector<Triangle2*> vTriangles;
    kivo.getTrianglePointers(vTriangles);
    for (Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* pOther = pT->getOppositeTriangle(i);
            const Edge edge = edgeOf(*pT->getCorner((i + 1) % 3), *pT->getCorner((i + 2) % 3));
            if (pOther == nullptr) sHull.insert(edge);
            if ((pOther == nullptr || pT < pOther) && kivo.isConstraint(pT, i)) sConstraints.insert(edge);
        }
    }
    const Script script(folder + "/3d.js");
    const auto edgesOf = [&](const std::vector<std::uint32_t>& vEnds) {
        const auto at = [&](std::uint32_t v) {
            return Point2(script.vCoordinates.at(2 * v), script.vCoordinates.at(2 * v + 1));
        };
        std::multiset<Edge> sEdges;
        for (std::size_t i = 0; i + 1 < vEnds.size(); i += 2)
            sEdges.insert(edgeOf(at(vEnds[i]), at(vEnds[i + 1])));
        return sEdges;
    };
    EXPECT_EQ(3 * vTriangles.size(), script.vCorners.size());
    EXPECT_TRUE(sHull == edgesOf(script.vBorderEdges));
    EXPECT_TRUE(sConstraints == edgesOf(script.vConstraintEdges));
    EXPECT_GT(sConstraints.size(), vSegments.size());
}

} // namespace
