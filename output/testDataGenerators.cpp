#include "functions.h"

#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace TESK_KIVO2D {
namespace {

constexpr int maxRejectionsInARow = 1000;

void seedRandom(unsigned int seed) {
    if (seed != 0) {
        std::srand(seed);
        return;
    }
    // Calls within one second see the same time; each reseeds once more than the one before.
    static std::atomic<unsigned int> numCalls{0};
    std::srand(static_cast<unsigned int>(std::time(nullptr)));
    for (unsigned int k = numCalls++; k > 0; --k)
        std::srand(static_cast<unsigned int>(std::rand()));
}

// C libraries differ in how many bits they give; 15 is what each of them has.
int random15() { return std::rand() & 0x7FFF; }

// Uniform up to a bias of size / 2^45.
std::size_t randomIndex(std::size_t size) {
    std::uint64_t bits = 0;
    for (int i = 0; i < 3; ++i)
        bits = (bits << 15) | static_cast<std::uint64_t>(random15());
    return static_cast<std::size_t>(bits % size);
}

bool isFiniteRange(double min, double max, const char* location) {
    if (std::isfinite(min) && std::isfinite(max)) return true;
    reportWarning(location, "min or max is not finite, nothing generated");
    return false;
}

// The end of a segment of one of the three lengths from start towards direction; nothing where that is no
// point apart from start.
std::optional<Point2> getSegmentEnd(const Point2& start, const Point2& direction, double maxLen) {
    constexpr double aFactors[] = {1, 0.8, 0.5};
    const Vector2 d = direction - start;
    const double distance = d.length();
    if (!(distance > 0) || !std::isfinite(distance)) return std::nullopt;
    const double length = aFactors[random15() % 3] * maxLen;
    const Point2 end(start.x() + d.x() / distance * length, start.y() + d.y() / distance * length);
    if (end == start || !std::isfinite(end.x()) || !std::isfinite(end.y())) return std::nullopt;
    return end;
}

} // namespace

void generateRandomNumbers(std::size_t num, double min, double max, std::vector<double>& vRandomNumbers,
                           unsigned int seed) {
    vRandomNumbers.clear();
    if (!isFiniteRange(min, max, "generateRandomNumbers()")) return;
    vRandomNumbers.resize(num);
    KIVO_ASSERT(max > min, "min<max");
    seedRandom(seed);
    constexpr double reciprocal = 3.0517578125e-5; // 2^-15
    // Halves where the range is beyond the doubles; elsewhere that would change no bit but subnormal ones.
    const double unit = std::isfinite(max - min) ? 1 : 0.5;
    const double step = (max * unit - min * unit) * reciprocal;
    for (double& number : vRandomNumbers)
        number = (random15() * step + min * unit) / unit;
}

void generateRandomPoints(std::size_t num, double min, double max, std::vector<Point2>& vRandomPoints,
                          unsigned int seed) {
    vRandomPoints.clear();
    vRandomPoints.reserve(num); // throws before 2 * num overflows
    if (!isFiniteRange(min, max, "generateRandomPoints()")) return;
    KIVO_ASSERT(max > min, "min<max");
    std::vector<double> vNumbers;
    generateRandomNumbers(2 * num, min, max, vNumbers, seed);
    for (std::size_t i = 0; i < num; ++i)
        vRandomPoints.emplace_back(vNumbers[i], vNumbers[num + i]);
}

void generateRandomSegments(std::size_t num, double min, double max, double maxLen,
                            std::vector<Segment2>& vRandomSegments, unsigned int seed) {
    vRandomSegments.clear();
    vRandomSegments.reserve(num);
    const char* const location = "generateRandomSegments()";
    if (!isFiniteRange(min, max, location)) return;
    KIVO_ASSERT(max > min, "min<max");
    if (!(maxLen > 0) || !std::isfinite(maxLen)) {
        reportWarning(location, "maxLen must be positive and finite, nothing generated");
        return;
    }
    std::vector<Point2> vPool;
    generateRandomPoints(2 * num + 100, min, max, vPool, seed);
    const std::size_t siz = vPool.size();
    KIVO_ASSERT(siz >= 2, "siz>=2");
    int numRejections = 0;
    while (vRandomSegments.size() < num && numRejections < maxRejectionsInARow) {
        const Point2& start = vPool[randomIndex(siz)];
        const Point2& direction = vPool[randomIndex(siz)];
        const auto end = getSegmentEnd(start, direction, maxLen);
        numRejections = end ? 0 : numRejections + 1;
        if (end) vRandomSegments.emplace_back(start, *end);
    }
    if (vRandomSegments.size() < num)
        reportWarning(location, "maxLen vanishes against the coordinates, only " +
                                    std::to_string(vRandomSegments.size()) + " segments generated");
}

void generateCircle(int numPoints, double centerX, double centerY, double radiusX, double radiusY,
                    std::vector<Point2>& vCirclePoints) {
    if (numPoints <= 0) {
        reportWarning("generateCircle()", "numPoints=" + std::to_string(numPoints));
        return;
    }
    const double step = 6.28318 / numPoints; // Deliberate: not two pi
    for (int i = 0; i < numPoints; ++i)
        vCirclePoints.emplace_back(std::cos(i * step) * radiusX + centerX,
                                   std::sin(i * step) * radiusY + centerY);
}

void generateSineSegments(int numSegments, int numPeriods, double xOffset, double yOffset, double xFactor,
                          double yFactor, bool swapXY, std::vector<Segment2>& vSineSegments) {
    if (numSegments <= 0) {
        reportWarning("generateSineSegments()", "numSegments=" + std::to_string(numSegments));
        return;
    }
    constexpr double twoPi = 6.283185307179586;
    const auto pointAt = [&](std::int64_t i) {
        // The phase within its period in whole steps: each period repeats the first one's heights exactly.
        const std::int64_t phase = i * numPeriods % numSegments;
        const double x = static_cast<double>(i) / numSegments * xFactor + xOffset;
        const double y = std::sin(twoPi * static_cast<double>(phase) / numSegments) * yFactor + yOffset;
        return swapXY ? Point2(y, x) : Point2(x, y);
    };
    Point2 source = pointAt(0);
    for (int i = 1; i <= numSegments; ++i) {
        const Point2 target = pointAt(i);
        vSineSegments.emplace_back(source, target);
        source = target;
    }
}

} // namespace TESK_KIVO2D
