#pragma once

#include "MeshArrays.h"

#include <cstdint>
#include <string>
#include <vector>

namespace TESK_KIVO2D {

// What a web scene shows.
struct SceneContent {
    MeshArrays mesh;                             // with neighbours: they tell the border
    std::vector<std::uint32_t> vConstraintEdges; // two vertex numbers each
    bool bZone = false;                          // the triangles of a zone, in the colour of zones
    std::string title;
};

// Makes the directory a web page that shows the content. Returns false, after a message, when it can't be
// made.
bool writeSceneFiles(const std::string& path, const SceneContent& content);

} // namespace TESK_KIVO2D
