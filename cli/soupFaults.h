#pragma once

#include <Point2.h>

#include <string>
#include <vector>

namespace cli {

// A corner, an edge or a triangle: one, two or three points.
using Shape = std::vector<TESK_KIVO2D::Point2>;

// While one lives, the lines that tell why triangles can't be imported are not only printed: the shapes that
// they name are collected. One at a time.
class SoupFaults {
public:
    SoupFaults();
    SoupFaults(const SoupFaults&) = delete;
    SoupFaults& operator=(const SoupFaults&) = delete;
    ~SoupFaults();

    // Those of each line that names some.
    const std::vector<std::vector<Shape>>& getShapes() const { return vShapesOf; }

private:
    std::vector<std::vector<Shape>> vShapesOf;
};

} // namespace cli
