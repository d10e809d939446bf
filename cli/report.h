#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct Box {
    double minX, minY, maxX, maxY;
};

// What a run of the command tells on standard output. Times are seconds; what did not take place is not set.
struct Report {
    std::string command;
    std::string input; // empty for generated points
    std::string kind;  // of generated points
    std::size_t numPoints = 0;
    std::optional<Box> boundingBox; // none without points
    std::vector<std::string> vOutputs;

    bool bTriangulated = false;
    std::size_t numVertices = 0; // different points
    std::size_t numTriangles = 0;
    std::size_t numHullVertices = 0; // those inside straight pieces of the hull included
    bool bIs2D = false;
    int numThreads = 1;
    std::optional<bool> bValid;

    std::optional<double> readTime;
    std::optional<double> triangulateTime;
    std::optional<double> checkTime;
    std::optional<double> writeTime;
};

std::string toText(const Report& report);
std::string toJson(const Report& report);

} // namespace cli
