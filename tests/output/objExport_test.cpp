#include "output/objExport.h"

#include "Kivo_2D.h"
#include "Zone2.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"
#include "tests/support/files.h"

#include <cfloat>
#include <cstdio>
#include <iomanip>
#include <limits>
#include <locale>

using namespace TESK_KIVO2D;

namespace {

std::string written(const MeshArrays& mesh) {
    const CapturedMessages messages;
    const std::string path = pathOf("mesh.obj");
    EXPECT_TRUE(writeObjFile(path, mesh));
    EXPECT_EQ("", messages.output() + messages.error());
    std::string text = readFile(path);
    std::remove(path.c_str());
    return text;
}

// What formatted streams make of the mesh.
std::string expected(const MeshArrays& mesh) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::setprecision(20);
    for (std::size_t i = 0; i < mesh.vCoordinates.size(); i += 2)
        text << "v " << mesh.vCoordinates[i] << " " << mesh.vCoordinates[i + 1] << " 0 \n";
    for (std::size_t i = 0; i < mesh.vCorners.size(); i += 3)
        text << "f " << mesh.vCorners[i] + std::uint64_t{1} << " " << mesh.vCorners[i + 1] + std::uint64_t{1}
             << " " << mesh.vCorners[i + 2] + std::uint64_t{1} << "\n";
    return text.str();
}

TEST(ObjExport, numbersAreThoseOfAStreamWithTwentyDigits) {
    doubles::Rng rng(31);
    MeshArrays mesh;
    mesh.vCoordinates = {0.1,
                         -0.0,
                         1e-5,
                         1e-4,
                         123456789012345678.0,
                         1e20,
                         1e19,
                         9.9999999999999999e19,
                         -DBL_MAX,
                         DBL_MIN,
                         4.94e-324,
                         1 / 3.0,
                         -1e-307,
                         65536,
                         5e5,
                         1e21};
    for (int i = 0; i < 40000; ++i)
        mesh.vCoordinates.push_back(i % 2 == 0 ? doubles::anyFinite(rng) : doubles::ofSize(rng, -20, 70));
    for (int i = 0; i < 3000; ++i)
        mesh.vCorners.push_back(static_cast<std::uint32_t>(rng()) >> rng() % 32);
    mesh.vCorners.insert(mesh.vCorners.end(), {0, 9, 0xFFFFFFFFu});
    EXPECT_EQ(expected(mesh), written(mesh));
    mesh = {};
    EXPECT_EQ("", written(mesh));
}

TEST(ObjExport, theGlobalLocaleChangesNothing) {
    struct Commas : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\1"; }
    };
    MeshArrays mesh;
    mesh.vCoordinates = {0.5, 1234567.25};
    mesh.vCorners = {1233, 5677, 999998};
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Commas));
    const std::string text = written(mesh);
    std::locale::global(before);
    EXPECT_EQ("v 0.5 1234567.25 0 \nf 1234 5678 999999\n", text);
}

TEST(ObjExport, aFileThatCantBeWrittenIsNamed) {
    MeshArrays mesh;
    mesh.vCoordinates.assign(100000, 0.1);
    for (const std::string& path : {pathOf("no/such/folder/mesh.obj"), pathOf(""), std::string("/dev/full"),
                                    std::string(), std::string("/dev/null\0x", 11)}) {
        const CapturedMessages messages;
        EXPECT_FALSE(writeObjFile(path, mesh)) << path;
        EXPECT_EQ(path.c_str() + std::string(" can't be written\n"), messages.output());
    }
    mesh.vCoordinates.resize(2); // fits the buffer: the disk complains when the file is closed
    const CapturedMessages messages;
    EXPECT_FALSE(writeObjFile("/dev/full", mesh));
    EXPECT_EQ("/dev/full can't be written\n", messages.output());
}

TEST(ObjExport, threePointsAreThreeVerticesAndOneTriangle) {
    Kivo_2D kivo;
    kivo.insert(std::vector<Point2>{{0, 0}, {1, 0.1}, {0, 2}});
    const std::string path = pathOf("triangle.obj");
    ASSERT_TRUE(kivo.writeObj(path));
    std::vector<Triangle2*> vTriangles;
    kivo.getTrianglePointers(vTriangles);
    std::ostringstream lines;
    lines << std::setprecision(20);
    for (int i = 0; i < 3; ++i)
        lines << "v " << vTriangles[0]->getCorner(i)->x() << " " << vTriangles[0]->getCorner(i)->y()
              << " 0 \n";
    EXPECT_EQ(lines.str() + "f 1 2 3\n", readFile(path));
    EXPECT_NE(std::string::npos, lines.str().find("v 1 0.10000000000000000555 0 \n"));
}

TEST(ObjExport, aZoneGivesItsTrianglesAndTheirCorners) {
    Kivo_2D kivo;
    kivo.insert(std::vector<Point2>{{0, 0}, {8, 0}, {8, 8}, {0, 8}, {7, 6}, {1, 5}, {20, 20}});
    std::vector<Segment2> vSquare{{{2, 2}, {4, 2}}, {{4, 2}, {4, 4}}, {{4, 4}, {2, 4}}, {{2, 4}, {2, 2}}};
    const CapturedMessages messages;
    Zone2* pZone = kivo.createZone(kivo.createConstraint(vSquare, CIS_CONSTRAINED_DELAUNAY, true), ZL_INSIDE);
    const std::string path = pathOf("zone.obj");
    ASSERT_TRUE(kivo.writeObj(path, pZone));
    std::istringstream lines(readFile(path));
    std::string kind;
    std::vector<Point2> vVertices;
    double doubledArea = 0;
    for (double a, b, c; lines >> kind >> a >> b >> c;) {
        if (kind == "v") {
            vVertices.emplace_back(a, b);
            continue;
        }
        ASSERT_EQ("f", kind);
        const auto at = [&](double number) { return vVertices.at(static_cast<std::size_t>(number) - 1); };
        doubledArea += (at(b).x() - at(a).x()) * (at(c).y() - at(a).y()) -
                       (at(b).y() - at(a).y()) * (at(c).x() - at(a).x());
    }
    EXPECT_EQ(4U, vVertices.size());
    EXPECT_EQ(8, doubledArea);
}

} // namespace
