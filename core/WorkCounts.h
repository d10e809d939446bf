#pragma once

#include <cstdint>

namespace TESK_KIVO2D {

// What insertions cost, for tests and benchmarks.
struct WorkCounts {
    std::uint64_t insertions = 0; // vertices linked in by a walk and flips
    std::uint64_t walkSteps = 0;
    std::uint64_t flips = 0;
    std::uint64_t moves = 0; // vertices taken out or moved

    WorkCounts& operator+=(const WorkCounts& other) {
        insertions += other.insertions;
        walkSteps += other.walkSteps;
        flips += other.flips;
        moves += other.moves;
        return *this;
    }
};

} // namespace TESK_KIVO2D
