#pragma once

#include "cli/Domain.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace cli {

// Fills an input with what a mesh file holds. What can't be taken goes to the reader's function, which knows
// the place in its file and throws.
class TriangleCollector {
public:
    using Fail = std::function<void(const std::string& text)>;

    TriangleCollector(Input& input_, Fail fail_) : input(input_), fail(std::move(fail_)) {}

    std::size_t numVertices() const { return input.table.vPoints.size(); }
    void addVertex(double x, double y, double z);
    // Corners are counted from 0.
    void addTriangle(const std::array<std::int64_t, 3>& aCorners);

private:
    Input& input;
    Fail fail;
};

} // namespace cli
