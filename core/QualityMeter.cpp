#include "core/QualityMeter.h"

#include <cfloat>
#include <limits>
#include <numbers>

namespace TESK_KIVO2D {
namespace {

constexpr double degrees = 180 / std::numbers::pi;

// Tangents of 5, 10, .. 85 degrees.
constexpr double aTangents[] = {0.087488663525924005222, 0.176326980708464973471, 0.267949192431122706473,
                                0.363970234266202361351, 0.466307658154998592830, 0.577350269189625764509,
                                0.700207538209709779459, 0.839099631177280011763, 1,
                                1.191753592594209958705, 1.428148006742114502161, 1.732050807568877293527,
                                2.144506920509558616356, 2.747477419454622278762, 3.732050807568877293527,
                                5.671281819617709530994, 11.430052302761343067211};

// Angles of halves of squares are limits of bins. Rounding must not deal them out to both sides.
const CellTable<LimitOrder::DESCENDING>& angleTable() {
    static const CellTable<LimitOrder::DESCENDING> table = [] {
        std::vector<double> vCotangents(std::rbegin(aTangents), std::rend(aTangents));
        vCotangents.push_back(0);
        for (const double tangent : aTangents)
            vCotangents.push_back(-tangent);
        constexpr double slack = 1e-9 / degrees;
        for (double& cotangent : vCotangents)
            cotangent += slack * (1 + cotangent * cotangent);
        return CellTable<LimitOrder::DESCENDING>(vCotangents);
    }();
    return table;
}

const std::vector<double> vAspectLimits = {1, 1.25, 1.5, 2, 3, 5, 10, 100, 1000, 10000, DBL_MAX};

const CellTable<LimitOrder::ASCENDING>& aspectTable() {
    static const CellTable<LimitOrder::ASCENDING> table(
        std::vector<double>(vAspectLimits.begin() + 1, vAspectLimits.end() - 1));
    return table;
}

std::size_t exponentBits(double value) { return std::bit_cast<std::uint64_t>(value) >> 52; }

// The angle of this cotangent less that of the tangent, in radians. They are at most 2.5 degrees apart.
inline double angleBeyond(double tangent, double cotangent) {
    const double t = (1 - tangent * cotangent) / (cotangent + tangent), s = t * t;
    return t * (1 - s * (1 / 3.0 - s * (1 / 5.0 - s * (1 / 7.0 - s / 9))));
}

// Chains of additions that run side by side.
double sumOf(const double* aValues, std::size_t num) {
    double sum0 = 0, sum1 = 0;
    for (std::size_t k = 0; k + 1 < num; k += 2) {
        sum0 += aValues[k];
        sum1 += aValues[k + 1];
    }
    return sum0 + sum1 + (num % 2 != 0 ? aValues[num - 1] : 0);
}

double withinDoubles(double value) { return std::min(value, DBL_MAX); }

// The vector from a to b, in units of 2 to the power of the exponent.
struct Vector {
    double x, y;
    int exponent;
};

Vector difference(const Point2& a, const Point2& b) {
    const double x = b.x() - a.x(), y = b.y() - a.y();
    if (std::isfinite(x) && std::isfinite(y)) return {x, y, 0};
    return {b.x() / 2 - a.x() / 2, b.y() / 2 - a.y() / 2, 1};
}

// To a unit in which the larger coordinate is about one.
Vector normalized(Vector v) {
    int exponent = 0;
    std::frexp(std::max(std::fabs(v.x), std::fabs(v.y)), &exponent);
    return {std::ldexp(v.x, -exponent), std::ldexp(v.y, -exponent), v.exponent + exponent};
}

double dot(const Vector& u, const Vector& v) { return u.x * v.x + u.y * v.y; }

struct Length {
    double value;
    int exponent;
};

// The same from either end.
Length lengthOf(const Point2& a, const Point2& b) {
    const Vector v = difference(a, b);
    const double square = dot(v, v);
    if (v.exponent == 0 && square >= 0x1p-960 && square <= 0x1p960) return {std::sqrt(square), 0};
    const Vector unit = normalized(v);
    return {std::sqrt(dot(unit, unit)), unit.exponent};
}

// Bins that end at powers of two, so many to a bin that there are few bins. What is below the normal doubles,
// as 0 is, has a bin for itself.
template<class CountOf>
void fillPowerBins(QualityDistribution& distribution, std::size_t numExponents, CountOf countOf) {
    constexpr std::size_t maxBins = 32;
    std::size_t first = 1, last = numExponents - 1;
    while (first < last && countOf(first) == 0)
        ++first;
    while (first < last && countOf(last) == 0)
        --last;
    const auto limit = [](std::size_t bits) {
        return bits > 2046 ? DBL_MAX : std::ldexp(1.0, static_cast<int>(bits) - 1023);
    };
    if (countOf(0) > 0) {
        distribution.vLimits.push_back(0);
        distribution.vCounts.push_back(countOf(0));
        if (countOf(last) == 0) first = last = 1;
    }
    distribution.vLimits.push_back(limit(first));
    const std::size_t step = (last - first) / maxBins + 1;
    for (std::size_t bits = first; bits <= last && countOf(last) > 0; bits += step) {
        std::uint64_t num = 0;
        for (std::size_t i = bits; i < std::min(bits + step, numExponents); ++i)
            num += countOf(i);
        distribution.vLimits.push_back(limit(bits + step));
        distribution.vCounts.push_back(num);
    }
}

QualityDistribution distributionOf(std::uint64_t count, double smallest, double largest, double mean) {
    QualityDistribution distribution;
    distribution.count = count;
    distribution.smallest = smallest;
    distribution.largest = largest;
    distribution.mean = std::clamp(mean, smallest, largest); // rounding may lift it out
    return distribution;
}

} // namespace

template<LimitOrder order>
CellTable<order>::CellTable(const std::vector<double>& vLimits) {
    for (std::uint64_t cell = 0; cell < aClasses.size(); ++cell) {
        const double nearZero = std::bit_cast<double>(cell << cellShift);
        double far = std::bit_cast<double>((cell << cellShift) + ((std::uint64_t{1} << cellShift) - 1));
        if (std::isnan(far)) far = std::copysign(HUGE_VAL, nearZero);
        std::uint8_t& first = aClasses[cell];
        while (first < vLimits.size() && isReached(nearZero, vLimits[first]) &&
               isReached(far, vLimits[first]))
            ++first;
    }
    aEnds.fill(std::numeric_limits<double>::quiet_NaN());
    std::copy(vLimits.begin(), vLimits.end(), aEnds.begin());
}

void ScaledSum::add(double value, int exponent) {
    if (value == 0) return;
    int ownExponent = 0;
    std::frexp(value, &ownExponent);
    // A sum of numbers of this size can double some hundred times before it leaves the range.
    if (sum == 0 || ownExponent + exponent > unit) {
        sum = std::ldexp(sum, unit - (ownExponent + exponent));
        unit = ownExponent + exponent;
    }
    sum += std::ldexp(value, exponent - unit);
}

double ScaledSum::dividedBy(double number) const { return withinDoubles(std::ldexp(sum / number, unit)); }

QualityMeter::QualityMeter() : pAngles(&angleTable()), pAspects(&aspectTable()) {
    for (std::size_t bin = 0; bin < numAngleBins; ++bin)
        aTangents[bin] = std::tan((5 * static_cast<double>(bin) + 2.5) / degrees);
}

inline unsigned QualityMeter::countAngles(double cot0, double cot1, double cot2) {
    const unsigned bin0 = pAngles->classOf(cot0), bin1 = pAngles->classOf(cot1),
                   bin2 = pAngles->classOf(cot2);
    ++counts.aAngles[0][bin0];
    ++counts.aAngles[1][bin1];
    ++counts.aAngles[2][bin2];
    const unsigned smallest = std::min(std::min(bin0, bin1), bin2);
    ++counts.smallestAngles[smallest];
    return smallest;
}

void QualityMeter::Extremes::add(const double* aValues, std::size_t num) {
    Extremes even, odd;
    for (std::size_t k = 0; k + 1 < num; k += 2) {
        even.add(aValues[k]);
        odd.add(aValues[k + 1]);
    }
    if (num % 2 != 0) even.add(aValues[num - 1]);
    smallest = std::min(smallest, std::min(even.smallest, odd.smallest));
    largest = std::max(largest, std::max(even.largest, odd.largest));
}

// What the triangles of a block are like; entry i of three is of the edge opposite corner i, or of that
// corner.
struct QualityMeter::Shapes {
    std::array<Row<double>, 3> aSquares, aCotangents;
    Row<double> aAreas, aAspects, aUnusual; // 1 or 0

    // No branches: the compiler takes two triangles at a time.
    Shapes(const Block& block, std::size_t num) {
        for (std::size_t k = 0; k < num; ++k) {
            const double x0 = block.aX[2][k] - block.aX[1][k], y0 = block.aY[2][k] - block.aY[1][k];
            const double x1 = block.aX[0][k] - block.aX[2][k], y1 = block.aY[0][k] - block.aY[2][k];
            const double x2 = block.aX[1][k] - block.aX[0][k], y2 = block.aY[1][k] - block.aY[0][k];
            const double square0 = x0 * x0 + y0 * y0, square1 = x1 * x1 + y1 * y1,
                         square2 = x2 * x2 + y2 * y2;
            const double larger = square0 < square1 ? square1 : square0;
            const double longest = larger < square2 ? square2 : larger;
            const double cross = x0 * y1 - y0 * x1, inverse = 1 / cross;
            aSquares[0][k] = square0;
            aSquares[1][k] = square1;
            aSquares[2][k] = square2;
            aCotangents[0][k] = -(x1 * x2 + y1 * y2) * inverse;
            aCotangents[1][k] = -(x2 * x0 + y2 * y0) * inverse;
            aCotangents[2][k] = -(x0 * x1 + y0 * y1) * inverse;
            aAreas[k] = 0.5 * cross;
            aAspects[k] = longest * inverse;
            const double tooLarge = longest <= largestSquare ? 0.0 : 1.0;
            const double tooSmall = longest >= smallestSquare ? tooLarge : 1.0;
            aUnusual[k] = cross * largestAspect >= longest ? tooSmall : 1.0;
        }
    }
};

void QualityMeter::measureBlock() {
    Shapes shapes(block, numInBlock);
    if (sumOf(shapes.aUnusual.data(), numInBlock) > 0) {
        takeOutUnusual(shapes);
        shapes = Shapes(block, numInBlock);
    }
    numTriangles += numInBlock;
    measureAngles(shapes);
    measureEdges(shapes);
    const double* const aAreas = shapes.aAreas.data();
    const double* const aAspects = shapes.aAspects.data();
    for (std::size_t k = 0; k < numInBlock; ++k) {
        ++counts.aspects[pAspects->classOf(aAspects[k])];
        ++counts.areas[exponentBits(aAreas[k])];
    }
    areaSum.add(sumOf(aAreas, numInBlock));
    aspectSum.add(sumOf(aAspects, numInBlock));
    areas.add(aAreas, numInBlock);
    aspects.add(aAspects, numInBlock);
    numInBlock = 0;
}

void QualityMeter::takeOutUnusual(const Shapes& shapes) {
    std::size_t num = 0;
    for (std::size_t k = 0; k < numInBlock; ++k) {
        if (shapes.aUnusual[k] > 0) {
            std::array<Point2, 3> aCorners;
            for (std::size_t i = 0; i < 3; ++i)
                aCorners[i] = Point2(block.aX[i][k], block.aY[i][k]);
            addUnusual(block.aIds[k], aCorners, block.aEdges[k]);
            continue;
        }
        block.aIds[num] = block.aIds[k];
        block.aEdges[num] = block.aEdges[k];
        for (std::size_t i = 0; i < 3; ++i) {
            block.aX[i][num] = block.aX[i][k];
            block.aY[i][num] = block.aY[i][k];
        }
        ++num;
    }
    numInBlock = num;
}

void QualityMeter::measureAngles(const Shapes& shapes) {
    Row<double> aTops, aBottoms, aMiddles, aExcess;
    for (std::size_t k = 0; k < numInBlock; ++k) {
        const double cot0 = shapes.aCotangents[0][k], cot1 = shapes.aCotangents[1][k],
                     cot2 = shapes.aCotangents[2][k];
        aMiddles[k] = aTangents[countAngles(cot0, cot1, cot2)];
        aTops[k] = std::max(std::max(cot0, cot1), cot2);
        aBottoms[k] = std::min(std::min(cot0, cot1), cot2);
    }
    for (std::size_t k = 0; k < numInBlock; ++k)
        aExcess[k] = angleBeyond(aMiddles[k], aTops[k]);
    for (std::size_t k = 0; k < numInBlock; ++k) {
        if (aTops[k] >= limit.cotangent) rememberWorst(block.aIds[k], aTops[k]);
    }
    excessSum += sumOf(aExcess.data(), numInBlock);
    tops.add(aTops.data(), numInBlock);
    bottoms.add(aBottoms.data(), numInBlock);
}

void QualityMeter::measureEdges(const Shapes& shapes) {
    std::array<double, 3 * blockSize + 1> aLengths; // one more, which is overwritten
    std::size_t num = 0;
    for (std::size_t k = 0; k < numInBlock; ++k) {
        const unsigned edges = block.aEdges[k];
        aLengths[num] = shapes.aSquares[0][k];
        num += edges & 1;
        aLengths[num] = shapes.aSquares[1][k];
        num += edges >> 1 & 1;
        aLengths[num] = shapes.aSquares[2][k];
        num += edges >> 2 & 1;
    }
    for (std::size_t k = 0; k < num; ++k)
        aLengths[k] = std::sqrt(aLengths[k]);
    for (std::size_t k = 0; k < num; ++k)
        ++counts.lengths[exponentBits(aLengths[k])];
    numEdges += num;
    lengthSum.add(sumOf(aLengths.data(), num));
    lengths.add(aLengths.data(), num);
}

void QualityMeter::addUnusual(std::size_t id, const std::array<Point2, 3>& aCorners, unsigned edges) {
    ++numTriangles;
    std::array<Vector, 3> aEdges;
    int unit = std::numeric_limits<int>::min();
    for (std::size_t i = 0; i < 3; ++i) {
        aEdges[i] = normalized(difference(aCorners[(i + 1) % 3], aCorners[(i + 2) % 3]));
        unit = std::max(unit, aEdges[i].exponent);
    }
    double aSquares[3];
    std::size_t longest = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        if ((edges >> i & 1) != 0) addEdge(aCorners[(i + 1) % 3], aCorners[(i + 2) % 3]);
        Vector& edge = aEdges[i];
        edge = {std::ldexp(edge.x, edge.exponent - unit), std::ldexp(edge.y, edge.exponent - unit), unit};
        aSquares[i] = dot(edge, edge);
        if (aSquares[i] > aSquares[longest]) longest = i;
    }
    // The rounding of the longest edge would spoil the area.
    const Vector &u = aEdges[(longest + 1) % 3], &v = aEdges[(longest + 2) % 3];
    const double cross = std::max(0.0, u.x * v.y - u.y * v.x);
    double aCotangents[3];
    for (std::size_t i = 0; i < 3; ++i) {
        const double cosine = -dot(aEdges[(i + 1) % 3], aEdges[(i + 2) % 3]);
        // Where an edge is too short for these units, the two angles at it have 180 degrees together.
        aCotangents[i] = cosine == 0 ? 0 : cosine / cross;
    }
    const unsigned bin = countAngles(aCotangents[0], aCotangents[1], aCotangents[2]);
    const double cotangent = std::max({aCotangents[0], aCotangents[1], aCotangents[2]});
    tops.add(cotangent);
    bottoms.add(std::min({aCotangents[0], aCotangents[1], aCotangents[2]}));
    excessSum += angleBeyond(aTangents[bin], std::min(cotangent, 1e300));
    if (cotangent >= limit.cotangent) rememberWorst(id, cotangent);
    const double aspect = withinDoubles(aSquares[longest] / cross);
    const double area = withinDoubles(std::ldexp(0.5 * cross, 2 * unit));
    ++counts.aspects[pAspects->classOf(aspect)];
    ++counts.areas[exponentBits(area)];
    aspects.add(aspect);
    areas.add(area);
    aspectSum.add(aspect);
    areaSum.add(0.5 * cross, 2 * unit);
}

void QualityMeter::addEdge(const Point2& a, const Point2& b) {
    const Length length = lengthOf(a, b);
    const double rounded = withinDoubles(std::ldexp(length.value, length.exponent));
    ++counts.lengths[exponentBits(rounded)];
    ++numEdges;
    lengths.add(rounded);
    lengthSum.add(length.value, length.exponent);
}

void QualityMeter::rememberWorst(std::size_t id, double cotangent) {
    const Worst candidate = {cotangent, id};
    if (!(candidate < limit) && cotangent == limit.cotangent) return;
    vWorst.push_back(candidate);
    if (vWorst.size() < worstRoom) return;
    std::nth_element(vWorst.begin(), vWorst.begin() + (numWorst - 1), vWorst.end());
    vWorst.resize(numWorst);
    limit = vWorst.back();
}

std::vector<std::size_t> QualityMeter::worst() {
    measureBlock();
    std::vector<Worst> vSorted = vWorst;
    std::sort(vSorted.begin(), vSorted.end());
    vSorted.resize(std::min(vSorted.size(), numWorst));
    std::vector<std::size_t> vIds;
    for (const Worst& candidate : vSorted)
        vIds.push_back(candidate.id);
    return vIds;
}

namespace {

// The angle of a cotangent in degrees.
double angleOf(double cotangent) { return std::atan2(1, cotangent) * degrees; }

} // namespace

QualityDistribution QualityMeter::angles() {
    measureBlock();
    if (numTriangles == 0) return {};
    // Three angles are 180 degrees.
    QualityDistribution all =
        distributionOf(3 * numTriangles, angleOf(tops.largest), angleOf(bottoms.smallest), 60);
    for (std::size_t bin = 0; bin < numAngleBins; bin += 2) {
        all.vLimits.push_back(5.0 * static_cast<double>(bin));
        std::uint64_t& num = all.vCounts.emplace_back(0);
        for (const auto& aBins : counts.aAngles)
            num += aBins[bin] + aBins[bin + 1];
    }
    all.vLimits.push_back(180);
    return all;
}

QualityDistribution QualityMeter::smallestAngles() const {
    constexpr std::size_t numBins = 12;
    double sum = excessSum * degrees;
    for (std::size_t bin = 0; bin < numAngleBins; ++bin)
        sum += static_cast<double>(counts.smallestAngles[bin]) * (5 * static_cast<double>(bin) + 2.5);
    QualityDistribution smallest = distributionOf(numTriangles, angleOf(tops.largest), angleOf(tops.smallest),
                                                  sum / static_cast<double>(numTriangles));
    for (std::size_t bin = 0; bin < numBins; ++bin) {
        smallest.vLimits.push_back(5.0 * static_cast<double>(bin));
        smallest.vCounts.push_back(counts.smallestAngles[bin]);
    }
    smallest.vLimits.push_back(60);
    smallest.vCounts.back() += counts.smallestAngles[numBins]; // rounding may lift 60 degrees
    return smallest;
}

ZoneQuality QualityMeter::figures() {
    measureBlock();
    ZoneQuality quality;
    if (numTriangles == 0) return quality;
    quality.numTriangles = numTriangles;
    quality.numEdges = numEdges;
    quality.angles = angles();
    quality.smallestAngles = smallestAngles();
    quality.totalArea = areaSum.dividedBy(1);
    const double num = static_cast<double>(numTriangles);
    quality.areas = distributionOf(numTriangles, areas.smallest, areas.largest, areaSum.dividedBy(num));
    fillPowerBins(quality.areas, numExponents, [&](std::size_t i) { return counts.areas[i]; });
    quality.edgeLengths = distributionOf(numEdges, lengths.smallest, lengths.largest,
                                         lengthSum.dividedBy(static_cast<double>(numEdges)));
    fillPowerBins(quality.edgeLengths, numExponents, [&](std::size_t i) { return counts.lengths[i]; });
    quality.aspectRatios =
        distributionOf(numTriangles, aspects.smallest, aspects.largest, aspectSum.dividedBy(num));
    quality.aspectRatios.vLimits = vAspectLimits;
    quality.aspectRatios.vCounts.assign(counts.aspects.begin(),
                                        counts.aspects.begin() +
                                            static_cast<std::ptrdiff_t>(vAspectLimits.size()) - 1);
    return quality;
}

} // namespace TESK_KIVO2D
