// Meshes of about a million triangles, against the rival. Only refinement is timed.
#include "bench/mesh_bench.h"

#include "Kivo_2D.h"
#include "bench/constraintInputs.h"
#include "bench/counters.h"
#include "bench/inputs.h"
#include "bench/meshRival.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {
namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::MeshGenParams;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;
using TESK_KIVO2D::Triangle2;
using TESK_KIVO2D::Zone2;

// Size limits with which both sides end near a million triangles: the rival has no limit of area.
struct Domain {
    std::string name;
    Coordinates holePoints;
    double maxArea;
    double rivalMaxEdge;
    double gridLength; // of a grid mesh of about as many triangles
};

ConstraintInput segmentsOf(const Domain& domain) {
    std::ifstream file(std::string(KIVO2D_BENCH_DATA) + "/" + domain.name + ".seg");
    ConstraintInput input;
    for (double x = 0, y = 0; file >> x >> y;)
        input.corners.emplace_back(x, y);
    if (input.corners.empty()) throw std::runtime_error("no segments of " + domain.name);
    for (std::size_t i = 0; i + 1 < input.corners.size(); i += 2)
        input.segments.emplace_back(i, i + 1);
    return input;
}

void report(benchmark::State& state, std::size_t numTriangles, double smallestAngle) {
    state.counters["triangles"] = static_cast<double>(numTriangles);
    state.counters["smallestAngle"] = smallestAngle;
}

double smallestAngle(const Zone2* pZone) {
    std::vector<Triangle2*> vTriangles;
    pZone->getTriangles(vTriangles);
    double smallest = 180;
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i)
            smallest = std::min(smallest, pT->getInteriorAngle2D(i));
    return smallest;
}

// A grid of that direction in degrees, and no limit of area; or none.
using GridDirection = std::optional<double>;

void meshKivo(benchmark::State& state, const Domain& domain, double angle, GridDirection gridDirection) {
    const ConstraintInput input = segmentsOf(domain);
    const std::vector<Point2> vEnds = converted(input.corners);
    std::vector<Segment2> vSegments;
    for (const auto& [source, target] : input.segments)
        vSegments.emplace_back(vEnds[source], vEnds[target]);
    for (auto _ : state) {
        Kivo_2D kivo;
        Zone2* const pZone =
            kivo.createParityZone({kivo.createConstraint(vSegments)}, converted(domain.holePoints));
        MeshGenParams params(pZone);
        params.minAngleDegree = angle;
        params.minEdgeLength = 0;
        if (gridDirection) {
            const double radians = *gridDirection * (std::numbers::pi / 180);
            params.gridLength = domain.gridLength;
            params.gridVector = TESK_KIVO2D::Vector2(std::cos(radians), std::sin(radians));
        } else {
            params.maxTriangleArea = domain.maxArea;
        }
        measureOnce(state, [&] { kivo.refineAdvanced(&params); });
        const TESK_KIVO2D::RefinementReport result = kivo.getRefinementReport();
        report(state, result.numTriangles, smallestAngle(pZone));
        state.counters["bad"] = static_cast<double>(result.numBadTriangles);
        state.counters["passes"] = result.numPasses;
    }
}

void meshRival(benchmark::State& state, const Domain& domain, double angle, GridDirection) {
    const ConstraintInput input = segmentsOf(domain);
    for (auto _ : state) {
        rival::Mesher mesher(input, domain.holePoints);
        measureOnce(state, [&] { mesher.refine(angle, domain.rivalMaxEdge); });
        report(state, mesher.numTriangles(), mesher.smallestAngle());
    }
}

} // namespace

// The run script knows these names.
void addMeshBenchmarks() {
    const Domain domains[] = {{"noisy_lake", {}, 0.00000045, 0.0012, 0.00076},
                              {"square_with_round_hole", {{0.5, 0.5}}, 0.00000125, 0.002, 0.00126}};
    for (const Domain& domain : domains) {
        for (const int angle : {20, 25, 30}) {
            const std::string name = "mesh/" + domain.name + "/" + std::to_string(angle);
            for (const bool bRival : {false, true}) {
                benchmark::RegisterBenchmark((name + (bRival ? "/cgal" : "/kivo")).c_str(),
                                             bRival ? meshRival : meshKivo, domain,
                                             static_cast<double>(angle), GridDirection())
                    ->Unit(benchmark::kMillisecond)
                    ->Iterations(1)
                    ->UseManualTime();
            }
        }
        for (const int direction : {0, 20}) {
            const std::string name = "mesh/" + domain.name + "_grid" + std::to_string(direction) + "/20/kivo";
            benchmark::RegisterBenchmark(name.c_str(), meshKivo, domain, 20.0,
                                         GridDirection(static_cast<double>(direction)))
                ->Unit(benchmark::kMillisecond)
                ->Iterations(1)
                ->UseManualTime();
        }
    }
}

} // namespace bench
