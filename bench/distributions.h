#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

// Point sets for benchmarks, made from written recipes with mt19937_64 and 53 random bits, in random order.
namespace bench {

using Coordinates = std::vector<std::pair<double, double>>;

// uniform, clusters, utm (uniform, 1000 wide, at offset (5e5, 5e6)), grid (integers), turnedGrid (that grid
// turned by 30 degrees at the same offset), circle, line (all on a line but one).
Coordinates makePoints(const std::string& kind, std::size_t num);

} // namespace bench
