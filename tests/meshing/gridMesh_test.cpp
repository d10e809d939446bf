#include "tests/oracle/bruteForce.h"
#include "tests/support/memoryLimit.h"
#include "tests/support/meshed.h"

#include <atomic>
#include <limits>
#include <stdexcept>

// Grid meshing: where its points come, what comes of them, and what is refused.

using namespace meshed;
using doubles::Rng;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
const std::string warning = "      [Kivo2D-Message] Dt2::refineMain2(), WARNING: ";

// The frame of a grid, in extended precision.
struct Frame {
    Frame(const Vector2& direction, double itsLength) : length(itsLength) {
        const long double size = std::hypot((long double)direction.x(), (long double)direction.y());
        ux = direction.x() / size, uy = direction.y() / size;
    }
    long double length, ux, uy;
    struct Spot {
        long double s, t;
    };
    Spot spotOf(const Point2& p) const {
        return {(p.x() * ux + p.y() * uy) / length, (p.y() * ux - p.x() * uy) / length};
    }
    bool isOnGrid(const Point2& p) const {
        const Spot spot = spotOf(p);
        return std::abs(spot.s - std::round(spot.s)) < 1e-6 && std::abs(spot.t - std::round(spot.t)) < 1e-6;
    }
};
using Spot = Frame::Spot;

long double distance(const Spot& p, const Spot& a, const Spot& b) {
    const long double ds = b.s - a.s, dt = b.t - a.t, square = ds * ds + dt * dt;
    const long double along = square > 0 ? ((p.s - a.s) * ds + (p.t - a.t) * dt) / square : 0;
    const long double share = std::clamp(along, 0.0L, 1.0L);
    return std::hypot(p.s - a.s - share * ds, p.t - a.t - share * dt);
}

// What grid points must keep away from, as it was given.
struct Obstacles {
    Obstacles(const Frame& frame, const Segments& vRings, const Segments& vInner, const Points& vPoints) {
        for (const Segment2& s : vRings)
            vBorder.emplace_back(frame.spotOf(s.getSrc()), frame.spotOf(s.getTrg()));
        vAll = vBorder;
        for (const Segment2& s : vInner)
            vAll.emplace_back(frame.spotOf(s.getSrc()), frame.spotOf(s.getTrg()));
        for (const Point2& p : vPoints)
            vAll.emplace_back(frame.spotOf(p), frame.spotOf(p));
    }
    // In units of the grid.
    long double distanceTo(const Spot& p) const {
        long double least = 1e30L;
        for (const auto& [a, b] : vAll)
            least = std::min(least, distance(p, a, b));
        return least;
    }
    bool isInside(const Spot& p) const {
        bool bInside = false;
        for (const auto& [a, b] : vBorder)
            if ((a.t <= p.t) != (b.t <= p.t) && p.s < a.s + (p.t - a.t) / (b.t - a.t) * (b.s - a.s))
                bInside = !bInside;
        return bInside;
    }
    std::vector<std::pair<Spot, Spot>> vBorder, vAll;
};

// A zone in a ring with holes and islands, with constraints and single vertices in it and other zones beside.
struct RandomDomain {
    RandomDomain(Rng& rng, const Point2& center, double radius) {
        vRings = nestedStars(rng, 9, center, radius, int(rng() % 3));
        const auto near = [&] {
            const double x = doubles::uniform(rng, -1, 1), y = doubles::uniform(rng, -1, 1);
            return Point2(center.x() + radius * x, center.y() + radius * y);
        };
        for (int num = int(rng() % 3); num > 0; --num) {
            const Point2 p = near();
            vInner.emplace_back(p, near());
        }
        for (int num = int(rng() % 12); num > 0; --num)
            vPoints.push_back(near());
        vGraphs.push_back(add(kivo, vRings));
        if (!vInner.empty()) vGraphs.push_back(add(kivo, vInner, false));
        kivo.insert(vPoints);
        for (const double factor : {1.5, -1.5}) // so that the outside has triangles
            kivo.insert(Point2(center.x() + factor * radius, center.y() - factor * radius));
        settle(kivo);
        const CapturedMessages captured;
        pZone = kivo.createParityZone({vGraphs[0]})->convertToBoundedZone();
    }
    Kivo_2D kivo;
    Segments vRings, vInner;
    Points vPoints;
    oracle::Graphs vGraphs;
    Zone2* pZone;
};

MeshGenParams gridOf(Zone2* pZone, double length, const Vector2& direction, double minAngleDegree = 20) {
    MeshGenParams params = onlyAngles(pZone, minAngleDegree);
    params.gridLength = length;
    params.gridVector = direction;
    return params;
}

// Where there was room for the grid, and only there, its points are vertices; and further inside there are
// only halves of its squares.
void expectGrid(const RandomDomain& domain, const MeshGenParams& params) {
    const Frame frame(params.gridVector, params.gridLength);
    const Obstacles obstacles(frame, domain.vRings, domain.vInner, domain.vPoints);
    long double low[2] = {1e30L, 1e30L}, high[2] = {-1e30L, -1e30L};
    for (const auto& [a, b] : obstacles.vBorder) {
        low[0] = std::min(low[0], a.s), low[1] = std::min(low[1], a.t);
        high[0] = std::max(high[0], a.s), high[1] = std::max(high[1], a.t);
    }
    std::vector<Point2*> vVertices;
    domain.pZone->getVertices(vVertices);
    std::set<std::pair<long, long>> sGrid;
    for (const Point2* p : vVertices)
        if (frame.isOnGrid(*p))
            sGrid.emplace(std::lround(frame.spotOf(*p).s), std::lround(frame.spotOf(*p).t));
    std::size_t numPlaces = 0;
    for (long i = std::lround(low[0]); i <= high[0] + 1; ++i) {
        for (long j = std::lround(low[1]); j <= high[1] + 1; ++j) {
            const Spot place{(long double)i, (long double)j};
            if (!obstacles.isInside(place) || obstacles.distanceTo(place) < 0.5L) continue;
            ++numPlaces;
            EXPECT_EQ(1u, sGrid.count({i, j})) << i << " " << j;
        }
    }
    EXPECT_EQ(numPlaces, domain.kivo.getRefinementReport().numGridPoints);
    for (const Triangle2* pT : trianglesOf(domain.pZone)) {
        if (obstacles.distanceTo(frame.spotOf(pT->getBarycenter())) < 2.5L) continue;
        const oracle::Measures m = oracle::measuresOf(pT);
        EXPECT_NEAR(45, double(m.minAngle), 1e-9);
        EXPECT_NEAR(90, double(m.maxAngle), 1e-9);
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(frame.isOnGrid(*pT->getCorner(i)));
    }
}

Segments turned(Segments v, double angle, double factor, const Point2& shift) {
    const double c = std::cos(angle), s = std::sin(angle);
    const auto at = [&](const Point2& p) {
        const double x = p.x() + shift.x(), y = p.y() + shift.y();
        return Point2(factor * (c * x - s * y), factor * (s * x + c * y));
    };
    for (Segment2& segment : v)
        segment = Segment2(at(segment.getSrc()), at(segment.getTrg()));
    return v;
}

// A square along the grid, with segments along its lines and diagonals, is nothing but halves of squares.
void expectPerfect(int num, double length, double angle, const Point2& shift,
                   ConstraintInsertionStrategy cis) {
    const double radians = angle * pi / 180;
    const Segments vInner = {{{8, 3}, {8, 17}}, {{10, 5}, {14, 9}}, {{14, 11}, {10, 15}}};
    Kivo_2D kivo;
    const oracle::Graphs vGraphs = {add(kivo, turned(square(0, 0, num), radians, length, shift), true, cis),
                                    add(kivo, turned(vInner, radians, length, shift), false, cis)};
    Zone2* const pZone = kivo.createZone(vGraphs[0], ZL_INSIDE);
    MeshGenParams params = gridOf(pZone, length, {std::cos(radians), std::sin(radians)}, 30);
    params.maxTriangleArea = length * length / 2; // but for rounded corners, not a bit more
    if (std::fmod(angle, 90) != 0) params.maxTriangleArea *= 1 + 1e-6;
    params.maxEdgeLength = 2 * std::sqrt(params.maxTriangleArea);
    params.growFactor = 1.1;
    EXPECT_EQ("", expectMeshed(kivo, params, vGraphs));
    const RefinementReport report = kivo.getRefinementReport();
    EXPECT_EQ(std::uint64_t(2 * num * num), report.numTriangles);
    EXPECT_EQ(std::uint64_t((num + 1) * (num + 1) - 4 - 6), report.numGridPoints);
    for (const Triangle2* pT : trianglesOf(pZone)) {
        EXPECT_NEAR(45, double(oracle::measuresOf(pT).minAngle), 1e-5);
        EXPECT_NEAR(90, double(oracle::measuresOf(pT).maxAngle), 1e-5);
    }
}

struct Listener : MsgBase {
    std::function<void()> onProgress;
    std::vector<double> vHeard;
    void update(MsgType, const char*, double progress) override {
        vHeard.push_back(progress);
        onProgress();
    }
};

// A square of cells that is large enough for several batches.
struct LargeSquare : testing::Test {
    Kivo_2D kivo;
    ConstraintGraph2* pRing = add(kivo, square(0.25, 0.25, 300));
    Zone2* pZone = kivo.createZone(pRing, ZL_INSIDE);
    MeshGenParams params = gridOf(pZone, 1, {1, 0});
    std::atomic<bool> bStop = false;
    Listener listener;

    // Vertices and report agree, and a run without the listener ends as if nothing had been.
    void expectNothingLost(std::size_t numOthers) {
        const RefinementReport report = kivo.getRefinementReport();
        EXPECT_EQ(4 + numOthers + report.numGridPoints + report.numInnerPoints + report.numSegmentPoints,
                  kivo.numberOfPoints());
        kivo.unsubscribe(MSG_PROGRESS, &listener);
        params.pStopRequest = nullptr;
        EXPECT_EQ("", said(kivo, params));
        EXPECT_EQ(RefinementEnd::COMPLETE, kivo.getRefinementReport().end);
        EXPECT_EQ(0u, kivo.getRefinementReport().numBadTriangles);
        std::vector<Point2*> vVertices;
        kivo.getVertexPointers(vVertices);
        const Frame frame(params.gridVector, params.gridLength);
        EXPECT_EQ(299 * 299, std::count_if(vVertices.begin(), vVertices.end(),
                                           [&](const Point2* p) { return frame.isOnGrid(*p); }));
        const CapturedMessages captured;
        EXPECT_TRUE(kivo.checkValidity(true, "grid"));
    }
};

} // namespace

TEST(GridMesh, fillsRandomZonesWithHalvesOfSquares) {
    std::uint64_t numPoints = 0;
    for (unsigned int seed = 1; seed <= 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        const double far = seed % 3 == 0 ? 1000 : 3;
        RandomDomain domain(rng, {doubles::uniform(rng, -far, far), doubles::uniform(rng, -far, far)}, 10);
        const Vector2 aDirections[] = {{1, 0}, {0, -3}, {1, 1}, {-3, 4}, {doubles::uniform(rng, -1, 1), 0.7}};
        MeshGenParams params =
            gridOf(domain.pZone, doubles::uniform(rng, 0.3, 2), aDirections[rng() % 5], double(rng() % 31));
        params.bAllowConstraintSplitting = seed % 4 != 0;
        expectMeshed(domain.kivo, params, domain.vGraphs);
        expectGrid(domain, params);
        numPoints += domain.kivo.getRefinementReport().numGridPoints;
        const std::size_t numBefore = domain.kivo.numberOfPoints();
        said(domain.kivo, params);
        EXPECT_EQ(0u, domain.kivo.getRefinementReport().numGridPoints);
        EXPECT_EQ(numBefore, domain.kivo.numberOfPoints());
    }
    EXPECT_LT(10000u, numPoints);
}

// A rectangle whose sides lie on lines of the grid is nothing but halves of squares: so it is where its
// corners, or the grid's points, are rounded.
TEST(GridMesh, fillsARectangleAlongTheGridUpToItsSides) {
    const int num = 21;
    for (const double length : {1.0, 0.1, 0.7, 1e-150, 1e150, 3e5}) {
        for (const double angle : {0.0, 20.0, 45.0, 90.0, 200.0}) {
            for (const Point2& shift : {Point2(0, 0), Point2(-7, 5000)}) {
                SCOPED_TRACE(testing::Message() << length << " " << angle << " " << shift);
                expectPerfect(num, length, angle, shift, CIS_CONSTRAINED_DELAUNAY);
                expectPerfect(num, length, angle, shift, CIS_CONFORMING_DELAUNAY);
            }
        }
    }
}

TEST(GridMesh, putsNoPointOnSegmentsThatMustNotBeSplit) {
    for (const bool bAllowed : {true, false}) {
        for (const double minEdge : {0.0, 1.0, 1.001}) {
            Kivo_2D kivo;
            ConstraintGraph2* const pRing = add(kivo, square(0, 0, 8));
            MeshGenParams params = gridOf(kivo.createZone(pRing, ZL_INSIDE), 1, {0, 1}, 10);
            params.bAllowConstraintSplitting = bAllowed;
            params.minEdgeLength = minEdge;
            expectMeshed(kivo, params, {pRing});
            const bool bSplits = bAllowed && minEdge <= 1;
            EXPECT_EQ(49u + (bSplits ? 28 : 0), kivo.getRefinementReport().numGridPoints);
        }
    }
}

TEST(GridMesh, takesDirectionsOfAnyLength) {
    const auto gridPoints = [](const Vector2& direction) {
        Kivo_2D kivo;
        MeshGenParams params =
            gridOf(kivo.createZone(add(kivo, square(-3.25, 1.5, 7)), ZL_INSIDE), 0.5, direction);
        EXPECT_EQ("", said(kivo, params));
        EXPECT_LT(100u, kivo.getRefinementReport().numGridPoints);
        return oracle::triangleSet(kivo);
    };
    const Vector2 alongAxes[] = {{1, 0}, {1e300, 0}, {5e-324, 0}, {-2, -0.0}, {1e300, 1e-300}};
    for (const Vector2& direction : alongAxes)
        EXPECT_EQ(gridPoints({1, 0}), gridPoints(direction)) << direction;
    for (const Vector2& direction : {Vector2(-0.0, 0.1), Vector2(0, -DBL_MAX), Vector2(1e-310, 1e300)})
        EXPECT_EQ(gridPoints({0, 1}), gridPoints(direction)) << direction;
    for (const double length : {5e-324, 1e-300, 1e300, DBL_MAX})
        EXPECT_EQ(gridPoints({1, 1}), gridPoints({length, length})) << length;
}

TEST(GridMesh, leavesOutWhatIsNoGrid) {
    struct Case {
        double length;
        Vector2 direction;
        std::string text; // without its end
    };
    const std::string notFinite = "gridLength or gridVector is not finite";
    const auto tooSmall = [](const std::string& length) {
        return "gridLength=" + length + " is too small for the coordinates of the zone";
    };
    const Case aCases[] = {{NaN, {1, 0}, notFinite},
                           {NaN, {0, 0}, notFinite},
                           {infinity, {1, 0}, notFinite},
                           {-infinity, {1, 0}, notFinite},
                           {1, {NaN, 0}, notFinite},
                           {1, {1, -infinity}, notFinite},
                           {0, {1, 0}, ""},
                           {-1, {1, 0}, ""},
                           {1, {0, -0.0}, ""},
                           {1e300, {1, 2}, ""},
                           {DBL_MAX, {1, 0}, ""},
                           {100, {1, 0}, ""},
                           {5e-324, {1, 0}, tooSmall("4.94066e-324")},
                           {1e-300, {1, 1}, tooSmall("1e-300")},
                           {1e-15, {2, 1}, tooSmall("1e-15")},
                           {1e-12, {2, 1}, "the grid has more than maxInsertedPoints=50000000 points"},
                           {0.001, {2, 1}, "the grid has more than maxInsertedPoints=50000000 points"}};
    for (const Case& c : aCases) {
        SCOPED_TRACE(testing::Message() << c.length << " " << c.direction);
        Kivo_2D kivo, without;
        for (Kivo_2D* p : {&kivo, &without})
            add(*p, square(-4, -3, 8));
        const Segments vRing = square(-4, -3, 8);
        MeshGenParams params = gridOf(kivo.createZone(add(kivo, vRing), ZL_INSIDE), c.length, c.direction);
        MeshGenParams plain = onlyAngles(without.createZone(add(without, vRing), ZL_INSIDE), 20);
        params.maxTriangleArea = plain.maxTriangleArea = 2;
        const std::string expected = c.text.empty() ? "" : warning + c.text + ", grid meshing is left out\n";
        EXPECT_EQ(expected, said(kivo, params));
        said(without, plain);
        EXPECT_EQ(oracle::triangleList(without), oracle::triangleList(kivo));
        EXPECT_EQ(0u, kivo.getRefinementReport().numGridPoints);
    }
}

TEST(GridMesh, doesNotLoseItselfInThinZones) {
    Kivo_2D kivo;
    ConstraintGraph2* const pRing = add(kivo, ringOf({{0, 0}, {1, 0}, {1, 1e-12}}));
    MeshGenParams params = gridOf(kivo.createZone(pRing, ZL_INSIDE), 1e-9, {1, 0});
    EXPECT_EQ("", said(kivo, params)); // two rows
    params.gridVector = {0, 1};
    EXPECT_EQ(warning +
                  "gridLength=1e-09 is too small for the border of the zone, grid meshing is left out\n",
              said(kivo, params));
}

TEST(GridMesh, isCompleteOrLeftOutWherePointsAreCounted) {
    for (const bool bEnough : {true, false}) {
        Kivo_2D kivo;
        ConstraintGraph2* const pRing = add(kivo, square(0, 0, 10));
        MeshGenParams params = gridOf(kivo.createZone(pRing, ZL_INSIDE), 1, {1, 0});
        params.maxInsertedPoints = bEnough ? 117 : 116;
        EXPECT_EQ(bEnough
                      ? ""
                      : warning +
                            "the grid has more than maxInsertedPoints=116 points, grid meshing is left out\n",
                  expectMeshed(kivo, params, {pRing}));
        const RefinementReport report = kivo.getRefinementReport();
        EXPECT_EQ(RefinementEnd::COMPLETE, report.end);
        EXPECT_EQ(bEnough ? 117u : 0u, report.numGridPoints);
        EXPECT_EQ(bEnough ? 200u : 2u, report.numTriangles);
    }
    Kivo_2D kivo;
    ConstraintGraph2* const pRing = add(kivo, square(0, 0, 10));
    MeshGenParams params = gridOf(kivo.createZone(pRing, ZL_INSIDE), 1, {1, 0});
    params.maxInsertedPoints = 120;
    params.maxTriangleArea = 0.4;
    EXPECT_EQ(warning + "maxInsertedPoints=120 reached, refinement ends early\n",
              expectMeshed(kivo, params, {pRing}));
    const RefinementReport report = kivo.getRefinementReport();
    EXPECT_EQ(RefinementEnd::POINT_LIMIT, report.end);
    EXPECT_EQ(117u, report.numGridPoints);
}

TEST_F(LargeSquare, stopsBetweenBatches) {
    params.pStopRequest = &bStop;
    bStop = true;
    EXPECT_EQ("", said(kivo, params));
    EXPECT_EQ(RefinementEnd::STOPPED, kivo.getRefinementReport().end);
    EXPECT_EQ(4u, kivo.numberOfPoints());
    bStop = false;
    listener.onProgress = [this] { bStop = true; };
    kivo.subscribe(MSG_PROGRESS, &listener);
    EXPECT_EQ("", said(kivo, params));
    const RefinementReport report = kivo.getRefinementReport();
    EXPECT_EQ(RefinementEnd::STOPPED, report.end);
    EXPECT_TRUE(0 < report.numGridPoints && report.numGridPoints < 299 * 299) << report.numGridPoints;
    EXPECT_EQ(0u, report.numInnerPoints + report.numSegmentPoints);
    EXPECT_EQ(trianglesOf(pZone).size(), report.numTriangles);
    expectNothingLost(0);
}

TEST_F(LargeSquare, endsWhereAListenerThrows) {
    listener.onProgress = [] { throw std::runtime_error("enough"); };
    kivo.subscribe(MSG_PROGRESS, &listener);
    EXPECT_THROW(said(kivo, params), std::runtime_error);
    EXPECT_EQ(RefinementEnd::ABANDONED, kivo.getRefinementReport().end);
    EXPECT_LT(0u, kivo.getRefinementReport().numGridPoints);
    expectNothingLost(0);
}

TEST_F(LargeSquare, goesOnAroundPointsOfAListener) {
    std::size_t numOthers = 0;
    listener.onProgress = [&] {
        if (numOthers < 3) kivo.insert(Point2(260.125 + double(++numOthers), 290.25));
    };
    kivo.subscribe(MSG_PROGRESS, &listener);
    EXPECT_EQ("", said(kivo, params));
    EXPECT_EQ(3u, numOthers);
    EXPECT_TRUE(std::is_sorted(listener.vHeard.begin(), listener.vHeard.end()));
    EXPECT_EQ(1.0, listener.vHeard.back());
    const RefinementReport report = kivo.getRefinementReport();
    EXPECT_EQ(RefinementEnd::COMPLETE, report.end);
    EXPECT_LT(299u * 299 - 9, report.numGridPoints);
    EXPECT_EQ(7 + report.numGridPoints + report.numInnerPoints + report.numSegmentPoints,
              kivo.numberOfPoints());
}

TEST(GridMesh, endsValidWhenMemoryRunsOut) {
    int numStopped = 0;
    for (int i = 0; i < 120 && !testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE(i);
        const double angle = i % 2 ? pi / 6 : 0;
        Kivo_2D kivo;
        const oracle::Graphs vGraphs = {add(kivo, turned(square(0, 0, 8), angle, 1, {1, 1})),
                                        add(kivo, {{{3, 6}, {4, 5.5}}}, false)};
        Zone2* const pZone = kivo.createZone(vGraphs[0], ZL_INSIDE);
        MeshGenParams params = gridOf(pZone, 0.5, {std::cos(angle), std::sin(angle)});
        const MeshWitness witness(kivo, pZone, vGraphs);
        setMessageSink([](MessageChannel, const std::string&) {});
        try {
            const MemoryLimit limit(i, i % 4 < 2);
            kivo.refineAdvanced(&params);
        } catch (const std::bad_alloc&) { // nothing was left for the warning
        }
        setMessageSink({});
        if (kivo.getRefinementReport().end != RefinementEnd::COMPLETE) ++numStopped;
        settle(kivo); // the piece of a segment that rounding has moved may wait for that
        EXPECT_EQ("", witness.findLoss());
        EXPECT_EQ("", expectMeshed(kivo, params, vGraphs));
    }
    EXPECT_LT(30, numStopped);
}
