#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

// A file of this name in the folder for temporary files.
inline std::string pathOf(const std::string& name) { return testing::TempDir() + name; }

// The bytes of a file.
inline std::string readFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}
