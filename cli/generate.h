#pragma once

#include "cli/PointTable.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cli {

struct GenerateOptions {
    std::string kind;
    std::size_t count = 0;
    std::uint64_t seed = 1;
    double size = 1.0;
    double offsetX = 0.0;
    double offsetY = 0.0;
};

// The kinds of point sets:
//   uniform   independent points of the square
//   gaussian  one normal cloud about the centre of the square, standard deviation size / 8
//   clusters  about sqrt(n) normal clouds with centres all over the square, standard deviation size / 200
//   grid      the first n nodes, row by row, of the smallest square grid that has n
//   circle    equally spaced on the inscribed circle
//   line      independent points of the line from the corner (0, 0) to (size, size / 2); exactly collinear
//   unless
//             an offset is added
const std::vector<std::string>& generatorKinds();

// The points in [0, size) x [0, size) (clouds may reach beyond), moved by the offset. Equal options give
// equal points. The kind must be one of the above.
PointTable generatePoints(const GenerateOptions& options);

} // namespace cli
