// Equal calls give equal bytes in every run: the test program starts itself again and again, under address
// randomisation, and compares the files that its runs write.
#include "Kivo_2D.h"

#include "core/Dt2.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

using namespace TESK_KIVO2D;

namespace {

constexpr const char* folderVariable = "KIVO2D_DETERMINISM_FOLDER";

std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Everything whose order could leak: vertices, triangles, hull, files, drawings, messages; with expected
// counts that are far too small, single insertions between batches, duplicates and cocircular points. The
// first batch goes by chunks in threads, later ones add fewer points than there are.
void writeEverything(const std::string& folder) {
    std::string text;
    setMessageSink([&](MessageChannel, const std::string& message) { text += message; });
    doubles::Rng rng(11);
    Kivo_2D kivo(3);
    kivo.setNumCPU(3);
    kivo.getImpl()->setBatchLimits(1000, 100);
    for (int round = 0; round < 4; ++round) {
        std::vector<Point2> v;
        for (int i = 0; i < 4000; ++i) {
            const bool bGrid = i % 2 == 0;
            const double x = bGrid ? doubles::below(rng, 60) : doubles::uniform(rng, 0, 60 + round);
            v.emplace_back(x, bGrid ? doubles::below(rng, 60) : doubles::uniform(rng, 0, 60));
        }
        kivo.insert(v);
        for (int i = 0; i < 300; ++i)
            kivo.insert(Point2(doubles::below(rng, 80), doubles::uniform(rng, 0, 9)));
    }
    std::vector<Point2*> vVertices, vHull;
    std::vector<Triangle2*> vTriangles;
    kivo.getVertexPointers(vVertices);
    kivo.getTrianglePointers(vTriangles);
    kivo.getConvexHull(true, vHull);
    EXPECT_TRUE(std::is_sorted(vVertices.begin(), vVertices.end(), std::less<>()));
    EXPECT_TRUE(std::is_sorted(vTriangles.begin(), vTriangles.end(), std::less<>()));
    EXPECT_TRUE(writePointsASCII((folder + "/vertices.xy").c_str(), vVertices));
    EXPECT_TRUE(writePointsBIN((folder + "/hull.bin").c_str(), vHull));
    std::ofstream triangles(folder + "/triangles.txt");
    triangles.precision(17);
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i)
            triangles << pT->getCorner(i)->x() << " " << pT->getCorner(i)->y() << " ";
        triangles << "\n";
    }
    std::filesystem::current_path(folder); // the title of a drawing is its file name
    kivo.show("drawing.ps");
    kivo.statistics("all");
    kivo.checkValidity(true, "all");
    setMessageSink({});
    std::ofstream("messages.txt") << text;
}

} // namespace

TEST(determinism, oneRun) {
    // The body of a run that the other test starts; on its own it writes into a folder of its own.
    const char* folder = std::getenv(folderVariable);
    const std::string target = folder != nullptr ? folder : testing::TempDir() + "/kivo2d_determinism_single";
    std::filesystem::create_directories(target);
    const auto before = std::filesystem::current_path();
    writeEverything(target);
    std::filesystem::current_path(before);
}

TEST(determinism, twentyRunsWriteTheSameBytes) {
    const std::filesystem::path root = testing::TempDir() + "/kivo2d_determinism";
    std::filesystem::remove_all(root);
    std::map<std::string, std::string> mFirst;
    for (int run = 0; run < 20; ++run) {
        const std::filesystem::path folder = root / std::to_string(run);
        std::filesystem::create_directories(folder);
        setenv(folderVariable, folder.c_str(), 1);
        const std::string command = std::filesystem::read_symlink("/proc/self/exe").string() +
                                    " --gtest_filter=determinism.oneRun > /dev/null";
        ASSERT_EQ(0, std::system(command.c_str()));
        unsetenv(folderVariable);
        std::map<std::string, std::string> mFiles;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            mFiles[entry.path().filename().string()] = bytesOf(entry.path());
        }
        ASSERT_EQ(5u, mFiles.size());
        for (const auto& [name, bytes] : mFiles)
            EXPECT_GT(bytes.size(), 100u) << name;
        if (run == 0) mFirst = mFiles;
        for (const auto& [name, bytes] : mFiles)
            EXPECT_EQ(mFirst[name], bytes) << name;
    }
}
