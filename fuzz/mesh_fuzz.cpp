#include "fuzz/check.h"

#include "Kivo_2D.h"
#include "tests/oracle/meshes.h"

#include <array>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>

// A few segments, on a small grid or of any coordinates, a zone of some kind, and refinements of it under
// limits that may make no sense. Whatever comes of it must be a valid mesh that lost nothing, and the report
// must be true.

using namespace TESK_KIVO2D;

namespace {

constexpr int MAX_REFINEMENTS = 3;
constexpr std::uint64_t MANY_POINTS = 400;
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::array<double, 16> oddValues = {0.0,       -0.0,   -1.0,   -DBL_MAX,     NaN,   INFINITY,
                                              -INFINITY, 5e-324, 1e-300, DBL_MAX,      1e300, 1e-9,
                                              1e-17,     0.5,    1.0,    1.0 + 0x1p-52};

class Input : public Bytes {
public:
    Input(const std::uint8_t* pBytes, std::size_t num) : Bytes(pBytes, num), mode(byte() % 8) {}
    // Grids of ones, of tenths, far from the origin, of neighbouring doubles, and any bits of moderate size.
    Point2 point() {
        if (mode == 7) {
            const double x = bits();
            return {x, bits()};
        }
        constexpr std::array<double, 7> units = {1, 0.1, 0.1, 1.0 / 3, 0x1p-52, 1e-150, 1e150};
        const double offset = mode == 2 ? 4e6 : mode == 4 ? 1 : 0;
        const std::uint8_t xy = byte();
        return {(xy & 15) * units[mode] + offset, (xy >> 4) * units[mode] + offset};
    }
    double unit() const { return mode == 4 ? 0x1p-52 : mode == 5 ? 1e-150 : mode == 6 ? 1e150 : 1; }
    // Mostly a limit between a hundredth of a unit and some units; or one that is odd.
    double limit(double scale) {
        const std::uint8_t value = byte();
        if (value == 0) return DBL_MAX;
        return value < 16 ? oddValues[value] : scale * std::exp2((value - 140) / 16.0);
    }

    // Along an axis, at any angle, or no direction.
    Vector2 direction() {
        const std::uint8_t value = byte();
        if (value >= 32) return {std::cos(value), std::sin(value)};
        return {oddValues[value % 16], value < 16 ? 0.0 : oddValues[byte() % 16]};
    }

private:
    double bits() {
        std::uint64_t value = 0;
        for (int i = 0; i < 8; ++i)
            value = value << 8 | byte();
        double result;
        std::memcpy(&result, &value, sizeof result);
        return std::isfinite(result) && std::abs(result) < 1e140 ? result : double(value % 256);
    }

    std::size_t mode;
};

class Meshing {
public:
    void run(Input& input) {
        // Conforming segments may have thousands of pieces: too many for slow checks.
        const auto isSmall = [this] { return kivo.numberOfPoints() <= MANY_POINTS; };
        for (int num = input.byte() % 3; num >= 0 && isSmall(); --num)
            addGraph(input);
        Zone2* const pZone = isSmall() ? makeZone(input) : nullptr;
        if (pZone == nullptr) return;
        for (int i = 0; i < MAX_REFINEMENTS && isSmall() && (i == 0 || !input.atEnd()); ++i)
            refine(input, pZone);
        CHECK(kivo.checkValidity(true, "mesh"));
    }

private:
    void addGraph(Input& input) {
        std::vector<Segment2> vSegments;
        const std::uint8_t bits = input.byte();
        const Point2 first = input.point();
        Point2 p = first;
        for (int num = bits % 12; num >= 0; --num) {
            const Point2 q = num == 0 && (bits & 16) == 0 ? first : input.point();
            vSegments.emplace_back(p, q);
            p = (bits & 32) == 0 ? q : input.point();
        }
        const auto cis = bits & 64 ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY;
        vGraphs.push_back(kivo.createConstraint(vSegments, cis, (bits & 128) != 0));
        if (kivo.is2D()) kivo.applyConstraintsAndZones();
    }

    Zone2* makeZone(Input& input) {
        const std::uint8_t kind = input.byte();
        const Point2 p = input.point();
        if (!kivo.is2D()) return nullptr;
        kivo.applyConstraintsAndZones();
        Zone2* pZone = nullptr;
        switch (kind % 4) {
        case 0:
            return kivo.createParityZone(vGraphs);
        case 1:
            return kivo.createEnclosedZone(vGraphs);
        case 2:
            pZone = kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL);
            break;
        default:
            pZone = kivo.createZone(vGraphs, ZL_GROW, Point2(p.x() + 0.017, p.y() + 0.031));
        }
        return pZone == nullptr ? nullptr : pZone->convertToBoundedZone();
    }

    void refine(Input& input, Zone2* pZone) {
        MeshGenParams params(pZone);
        const std::uint8_t bits = input.byte();
        params.bAllowConstraintSplitting = (bits & 1) == 0;
        params.minAngleDegree = input.byte() % 31;
        params.minEdgeLength = bits & 2 ? input.limit(input.unit()) : 0;
        params.maxTriangleArea = input.limit(input.unit() * input.unit());
        params.maxEdgeLength = input.limit(input.unit());
        params.growFactor = bits & 4 ? input.limit(16) : DBL_MAX;
        params.growFactorMinArea = bits & 8 ? input.limit(1) : 0;
        if (bits & 64) {
            params.gridLength = input.limit(input.unit());
            params.gridVector = input.direction();
        }
        params.maxInsertedPoints = bits & 16 ? MANY_POINTS / 20 : MANY_POINTS;
        const oracle::MeshWitness witness(kivo, pZone, vGraphs);
        kivo.refineAdvanced(&params);
        const std::string fault = witness.findFault(params);
        if (!fault.empty()) std::fprintf(stderr, "%s\n", fault.c_str());
        CHECK(fault.empty());
        const RefinementReport report = kivo.getRefinementReport();
        CHECK(report.numGridPoints + report.numInnerPoints + report.numSegmentPoints <=
              params.maxInsertedPoints);
        if (bits & 32) kivo.insert(input.point());
        if (kivo.is2D()) kivo.applyConstraintsAndZones();
    }

    Kivo_2D kivo;
    std::vector<ConstraintGraph2*> vGraphs;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t num) {
    Input input(pBytes, num);
    Meshing meshing;
    setMessageSink([](MessageChannel, const std::string&) {});
    meshing.run(input);
    setMessageSink({});
    return 0;
}
