#pragma once

#include <cmath>
#include <cstdint>
#include <random>

namespace bench {

inline constexpr double pi = 3.14159265358979323846;

// Random numbers of 53 bits, equal on every machine.
class RandomSource {
public:
    explicit RandomSource(std::uint64_t seed) : engine(seed) {}

    // In [0, 1).
    double uniform() { return static_cast<double>(engine() >> 11) * 0x1p-53; }
    double gaussian() { // Box and Muller 1958
        const double r = std::sqrt(-2 * std::log(1 - uniform()));
        return r * std::cos(2 * pi * uniform());
    }
    std::mt19937_64& bits() { return engine; }

private:
    std::mt19937_64 engine;
};

} // namespace bench
