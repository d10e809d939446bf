#pragma once

#include "Segment2.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

// Point sets that others made, in folders: NAME.xy, NAME.seg and NAME.json.
namespace realData {

using Path = std::filesystem::path;

struct Folder {
    const char* name;
    Path path;
};
inline void PrintTo(const Folder& folder, std::ostream* pStream) { *pStream << folder.path; }

// What ships with the project always; more where the environment names a folder of inputs, which then must
// hold some.
inline std::vector<Folder> folders() {
    std::vector<Folder> vFolders = {{"shipped", KIVO2D_TEST_DATA}};
    if (const char* given = std::getenv("KIVO2D_DATA")) {
        vFolders.push_back({"open", Path(given) / "open"});
        vFolders.push_back({"mesh", Path(given) / "mesh"});
    }
    return vFolders;
}

inline std::vector<Path> filesIn(const Folder& folder, const std::string& ending) {
    std::vector<Path> vFiles;
    std::error_code noFolder;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path, noFolder)) {
        const std::string name = entry.path().filename().string();
        if (name.size() > ending.size() && name.ends_with(ending)) vFiles.push_back(entry.path());
    }
    std::sort(vFiles.begin(), vFiles.end());
    return vFiles;
}

inline nlohmann::json factsBeside(Path path) {
    std::ifstream file(path.replace_extension(".json"));
    return file ? nlohmann::json::parse(file) : nlohmann::json::object();
}

inline std::vector<double> readNumbers(const Path& path) {
    std::vector<double> vNumbers;
    std::ifstream file(path);
    for (double value = 0; file >> value;)
        vNumbers.push_back(value);
    EXPECT_TRUE(file.eof() || !file.is_open()) << path << " holds something else than numbers";
    return vNumbers;
}

inline std::vector<TESK_KIVO2D::Point2> readPoints(const Path& path) {
    const std::vector<double> v = readNumbers(path);
    EXPECT_EQ(0u, v.size() % 2) << path;
    std::vector<TESK_KIVO2D::Point2> vPoints;
    for (std::size_t i = 0; i + 1 < v.size(); i += 2)
        vPoints.emplace_back(v[i], v[i + 1]);
    return vPoints;
}

inline std::vector<TESK_KIVO2D::Segment2> readSegments(const Path& path) {
    const std::vector<TESK_KIVO2D::Point2> vEnds = readPoints(path);
    EXPECT_EQ(0u, vEnds.size() % 2) << path;
    std::vector<TESK_KIVO2D::Segment2> vSegments;
    for (std::size_t i = 0; i + 1 < vEnds.size(); i += 2)
        vSegments.emplace_back(vEnds[i], vEnds[i + 1]);
    return vSegments;
}

} // namespace realData
