// What it costs to find the triangles of a zone, and to measure them.
#include "bench/zone_bench.h"

#include "Kivo_2D.h"
#include "bench/counters.h"
#include "bench/inputs.h"
#include "functions.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace bench {
namespace {

using TESK_KIVO2D::ConstraintGraph2;
using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;
using TESK_KIVO2D::Triangle2;
using TESK_KIVO2D::Zone2;

constexpr std::size_t million = 1000000;

// A square that leaves out a thousandth of the box's width along each side, in pieces as long as that.
std::vector<Segment2> ringWithin(const TESK_KIVO2D::Bbox2& box) {
    constexpr int numPieces = 998;
    const double left = box.get_minX(), low = box.get_minY(), size = (box.get_maxX() - left) / 1000;
    const auto at = [&](int side, int i) {
        const int j = numPieces - i;
        const int x = side == 0 ? i : side == 1 ? numPieces : side == 2 ? j : 0;
        const int y = side == 0 ? 0 : side == 1 ? i : side == 2 ? numPieces : j;
        return Point2(left + (x + 1) * size, low + (y + 1) * size);
    };
    std::vector<Segment2> vRing;
    for (int side = 0; side < 4; ++side) {
        for (int i = 0; i < numPieces; ++i)
            vRing.emplace_back(at(side, i), at(side, i + 1));
    }
    return vRing;
}

using MakeZone = std::function<Zone2*(Kivo_2D&, ConstraintGraph2*)>;

void listTriangles(benchmark::State& state, const MakeZone& makeZone) {
    const std::vector<Point2> vPoints = converted(input("uniform", million));
    for (auto _ : state) {
        Kivo_2D kivo(static_cast<unsigned int>(million));
        kivo.insert(vPoints);
        std::vector<Segment2> vRing = ringWithin(kivo.computeBoundingBox());
        const Zone2* const pZone = makeZone(kivo, kivo.createConstraint(vRing));
        std::vector<Triangle2*> vTriangles;
        measureOnce(state, [&] { pZone->getTriangles(vTriangles); });
        state.counters["triangles"] = static_cast<double>(vTriangles.size());
    }
}

// A mesh of about a million triangles, measured or, to compare with, its vertices inserted as a batch.
void checkQuality(benchmark::State& state, bool bInsertOnly) {
    Kivo_2D kivo;
    std::vector<Segment2> vSquare;
    const Point2 aCorners[] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (std::size_t i = 0; i < 4; ++i)
        vSquare.emplace_back(aCorners[i], aCorners[(i + 1) % 4]);
    Zone2* const pZone = kivo.createZone(kivo.createConstraint(vSquare), TESK_KIVO2D::ZL_INSIDE);
    TESK_KIVO2D::MeshGenParams params(pZone);
    params.minAngleDegree = 20;
    params.minEdgeLength = 0;
    params.maxTriangleArea = 0.00000155;
    kivo.refineAdvanced(&params);
    std::vector<Point2*> vVertices;
    kivo.getVertexPointers(vVertices);
    std::vector<Point2> vPoints;
    for (const Point2* pVtx : vVertices)
        vPoints.push_back(*pVtx);
    TESK_KIVO2D::setMessageSink([](TESK_KIVO2D::MessageChannel, const std::string&) {});
    for (auto _ : state) {
        if (bInsertOnly) {
            Kivo_2D again;
            measureOnce(state, [&] { again.insert(vPoints); });
        } else {
            measureOnce(state, [&] { kivo.checkZoneQuality(pZone, ""); });
        }
    }
    TESK_KIVO2D::setMessageSink({});
    state.counters["triangles"] = static_cast<double>(kivo.numberOfTriangles());
}

} // namespace

// The run script knows these names.
void addZoneBenchmarks() {
    using namespace TESK_KIVO2D;
    const std::pair<std::string, MakeZone> kinds[] = {
        {"inside", [](Kivo_2D& kivo, ConstraintGraph2* pRing) { return kivo.createZone(pRing, ZL_INSIDE); }},
        {"grow", [](Kivo_2D& kivo,
                    ConstraintGraph2* pRing) { return kivo.createZone(pRing, ZL_GROW, Point2(0.5, 0.5)); }},
        {"union",
         [](Kivo_2D& kivo, ConstraintGraph2* pRing) {
             return zoneUnion(kivo.createZone(pRing, ZL_INSIDE), kivo.createZone(pRing, ZL_OUTSIDE));
         }},
    };
    for (const auto& [kind, makeZone] : kinds) {
        benchmark::RegisterBenchmark(("triangles/" + kind + "/1000000/kivo").c_str(), listTriangles, makeZone)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1)
            ->UseManualTime();
    }
    for (const bool bInsertOnly : {false, true}) {
        benchmark::RegisterBenchmark(bInsertOnly ? "quality/vertices/1000000/kivo"
                                                 : "quality/mesh/1000000/kivo",
                                     checkQuality, bInsertOnly)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1)
            ->UseManualTime();
    }
}

} // namespace bench
