#include "tests/support/memoryLimit.h"
#include "tests/support/meshed.h"
#include "tests/support/nastySets.h"

#include <atomic>
#include <limits>
#include <memory>
#include <stdexcept>

// Refinement ends, and loses nothing, whatever it is given.

using namespace meshed;
using doubles::Rng;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
const double oddValues[] = {0.0,       -0.0,   -1.0,    -DBL_MAX, NaN, infinity,
                            -infinity, 5e-324, DBL_MAX, 1e-300,   1.0};
constexpr std::uint64_t fewPoints = 6000;

std::uint64_t numInserted(const Kivo_2D& kivo) {
    const RefinementReport report = kivo.getRefinementReport();
    return report.numInnerPoints + report.numSegmentPoints;
}

// A square, or other ring, with more constraints in it; its zone is what the ring encloses.
struct Domain {
    explicit Domain(const Segments& vInner, const Segments& vRing = square(0, 0, 1),
                    ConstraintInsertionStrategy cis = CIS_CONSTRAINED_DELAUNAY) {
        vGraphs.push_back(add(kivo, vRing, true, cis));
        if (!vInner.empty()) vGraphs.push_back(add(kivo, vInner, false, cis));
        settle(kivo);
        pZone = kivo.createZone(vGraphs[0], ZL_INSIDE);
    }
    // All laws hold, but for the angles where doubles come to their end.
    RefinementReport expectEnds(MeshGenParams params) {
        params.maxInsertedPoints = std::min(params.maxInsertedPoints, fewPoints);
        const std::string messages = expectMeshed(kivo, params, vGraphs);
        const RefinementReport report = kivo.getRefinementReport();
        EXPECT_EQ(report.end == RefinementEnd::POINT_LIMIT, numInserted(kivo) == params.maxInsertedPoints);
        EXPECT_LE(numInserted(kivo), params.maxInsertedPoints);
        EXPECT_TRUE(report.end != RefinementEnd::POINT_LIMIT ||
                    messages.find("WARNING") != std::string::npos);
        return report;
    }

    Kivo_2D kivo;
    oracle::Graphs vGraphs;
    Zone2* pZone;
};

Segments fan(const Point2& center, double radius, double angle, int num) {
    Segments v;
    for (int i = 0; i < num; ++i)
        v.emplace_back(center, Point2(center.x() + radius * std::cos(i * angle),
                                      center.y() + radius * std::sin(i * angle)));
    return v;
}

// Answers without rhyme or reason, the same triangle at different times too; may throw.
struct Liar : MeshGenParams {
    using MeshGenParams::MeshGenParams;
    double answer() const {
        if (--numAnswers == 0) throw std::runtime_error("no more answers");
        const int i = doubles::below(rng, 40);
        if (i < 11) return oddValues[i];
        return i < 20 ? doubles::anyFinite(rng) : std::exp(doubles::uniform(rng, -12, 3));
    }
    double getMaxTriangleArea(Triangle2*) const override { return answer(); }
    double getMaxEdgeLength(Triangle2*) const override { return answer(); }

    mutable Rng rng;
    mutable long numAnswers = -1;
};

} // namespace

TEST(Refinement, endsBesideTinyAnglesAndAlmostEqualConstraints) {
    const double up = std::nextafter(0.5, 1);
    const struct {
        const char* name;
        Segments vInner, vRing;
    } aCases[] = {
        {"wedge", {}, ringOf({{0, 0}, {1, 0}, {1, 1e-9}})},
        {"needle", {}, ringOf({{0, 0}, {1, 0}, {1, 5e-324}})},
        {"corner of a nanoradian", fan({0.5, 0.5}, 0.3, 1e-9, 2), square(0, 0, 1)},
        {"fan of milliradians", fan({0.5, 0.5}, 0.3, 1e-3, 60), square(0, 0, 1)},
        {"fan of degrees", fan({0.5, 0.5}, 0.4, 0.05, 126), square(0, 0, 1)},
        {"neighbours", {{{0.1, 0.5}, {0.9, 0.5}}, {{0.1, up}, {0.9, up}}}, square(0, 0, 1)},
        {"crossing neighbours", {{{0.1, 0.5}, {0.9, up}}, {{0.1, up}, {0.9, 0.5}}}, square(0, 0, 1)},
        {"neighbour of the border", {{{0.25, 5e-324}, {0.75, 5e-324}}}, square(0, 0, 1)},
        {"points of one ulp", {{{0.5, 0.5}, {up, 0.5}}, {{0.5, up}, {up, up}}}, square(0, 0, 1)},
        {"spike", {}, ringOf({{0, 0}, {1, 0}, {1, 1}, {0.5, 1}, {0.5, 1e-7}, {up, 1}, {0, 1}})},
        {"far away", fan({1e9 + 0.5, 0.5}, 0.3, 0.3, 9), square(1e9, 0, 1)},
        {"one ulp wide", {}, ringOf({{1e9, 0}, {1e9 + 0x1p-22, 0}, {1e9 + 0x1p-22, 1}, {1e9, 1}})},
        {"shorter than an ulp", {{{1e3, 0}, {1e3, 1e-20}}}, square(990, -10, 20)},
        {"subnormal", {}, ringOf({{0, 0}, {1e-310, 0}, {1e-310, 1e-310}, {0, 1e-310}})},
        {"largest", {}, ringOf({{-1e308, -1e308}, {1e308, -1e308}, {1e308, 1e308}, {-1e308, 1e308}})}};
    for (const auto& test : aCases) {
        for (const auto cis : {CIS_CONSTRAINED_DELAUNAY, CIS_CONFORMING_DELAUNAY}) {
            SCOPED_TRACE(testing::Message() << test.name << ' ' << cis);
            Domain domain(test.vInner, test.vRing, cis);
            MeshGenParams params = onlyAngles(domain.pZone, 30);
            EXPECT_EQ(RefinementEnd::COMPLETE, domain.expectEnds(params).end);
            params.bAllowConstraintSplitting = false;
            domain.expectEnds(params);
        }
    }
}

TEST(Refinement, ofAWedgeTakesFewPoints) {
    for (const double height : {1e-1, 1e-2, 1e-4, 1e-9}) {
        SCOPED_TRACE(height);
        Domain domain({}, ringOf({{0, 0}, {1, 0}, {1, height}}));
        const RefinementReport report = domain.expectEnds(onlyAngles(domain.pZone, 30));
        EXPECT_EQ(RefinementEnd::COMPLETE, report.end);
        EXPECT_LT(report.numTriangles, 400u);
    }
    for (const double angle : {1e-1, 1e-2, 1e-3, 1e-6, 1e-9}) {
        for (const int num : {2, 3, 30}) {
            SCOPED_TRACE(testing::Message() << num << " spokes at " << angle);
            Domain domain(fan({0.5, 0.5}, 0.3, angle, num));
            EXPECT_EQ(RefinementEnd::COMPLETE, domain.expectEnds(onlyAngles(domain.pZone, 30)).end);
            EXPECT_LT(domain.kivo.getRefinementReport().numTriangles, 800u + 120u * unsigned(num));
        }
    }
    for (const double scale : {1.0, 1e200, 1e-200, 1e307}) {
        SCOPED_TRACE(scale);
        Domain domain(fan({0, 0}, scale / 4, 0.05, 28), square(-scale / 2, -scale / 2, scale));
        EXPECT_EQ(RefinementEnd::COMPLETE, domain.expectEnds(onlyAngles(domain.pZone, 30)).end);
        EXPECT_LT(domain.kivo.getRefinementReport().numTriangles, 1500u);
    }
}

TEST(Refinement, reachesFromTheSmallestTrianglesToTheLargest) {
    for (const double e : {1e-20, 1e-78, 1e-100, 1e-200, 1e-307}) {
        SCOPED_TRACE(e);
        Domain domain({});
        domain.kivo.insert({{e, 2 * e}, {2 * e, e}});
        const RefinementReport report = domain.expectEnds(onlyAngles(domain.pZone, 25));
        EXPECT_EQ(RefinementEnd::COMPLETE, report.end);
        EXPECT_LT(3 * std::log2(1 / e), double(report.numTriangles));
    }
}

TEST(Refinement, endsForSoupsOfNastySegments) {
    Rng rng(17);
    const auto& vKinds = nastySets::all();
    int numMeshed = 0;
    for (std::size_t i = 0; i < 3 * vKinds.size() && !HasFailure(); ++i) {
        SCOPED_TRACE(testing::Message() << i << ' ' << vKinds[i % vKinds.size()].name);
        Points v = vKinds[i % vKinds.size()].make(rng);
        if (v.size() > 24) v.resize(24);
        Segments vSegments;
        for (std::size_t k = 0; k + 1 < v.size(); k += 2)
            vSegments.emplace_back(v[k], v[k + 1]);
        Kivo_2D kivo;
        const CapturedMessages captured;
        kivo.insert(v);
        ConstraintGraph2* const pGraph = kivo.createConstraint(vSegments, ConstraintInsertionStrategy(i % 2));
        if (!kivo.is2D()) continue;
        kivo.applyConstraintsAndZones();
        Zone2* const pAll = kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL);
        MeshGenParams params = onlyAngles(pAll->convertToBoundedZone(), 30);
        params.maxInsertedPoints = 500;
        params.bAllowConstraintSplitting = i % 5 != 0;
        const MeshWitness witness(kivo, params.pZone, pGraph ? oracle::Graphs{pGraph} : oracle::Graphs{});
        kivo.refineAdvanced(&params);
        EXPECT_EQ("", witness.findLoss()) << doubles::hex(v);
        ++numMeshed;
    }
    EXPECT_LT(20, numMeshed);
}

TEST(Refinement, takesLimitsThatAreNoneForSwitchedOff) {
    double MeshGenParams::*const aFields[] = {
        &MeshGenParams::minAngleDegree,  &MeshGenParams::minEdgeLength, &MeshGenParams::maxEdgeLength,
        &MeshGenParams::maxTriangleArea, &MeshGenParams::growFactor,    &MeshGenParams::growFactorMinArea,
        &MeshGenParams::capAspectLimit,  &MeshGenParams::gridLength};
    for (double MeshGenParams::*field : aFields) {
        for (const double value : oddValues) {
            if (field == &MeshGenParams::minAngleDegree && value > 30) continue;
            SCOPED_TRACE(testing::Message()
                         << std::find(aFields, std::end(aFields), field) - aFields << ' ' << value);
            Domain domain({{{0.2, 0.3}, {0.7, 0.4}}});
            MeshGenParams params = onlyAngles(domain.pZone, 25);
            params.maxInsertedPoints = 1000;
            params.*field = value;
            const RefinementReport report = domain.expectEnds(params);
            const bool bTooMuch =
                value > 0 && value < 1e-6 &&
                (field == &MeshGenParams::maxEdgeLength || field == &MeshGenParams::maxTriangleArea);
            EXPECT_EQ(bTooMuch ? RefinementEnd::POINT_LIMIT : RefinementEnd::COMPLETE, report.end);
        }
    }
    for (const double factor : {1.0, 0.5, 1.01, 1 + 1e-15, NaN, 0.0, -2.0}) {
        SCOPED_TRACE(factor);
        Domain domain({});
        MeshGenParams params = onlyAngles(domain.pZone, 20);
        params.growFactor = factor;
        params.growFactorMinArea = 0;
        params.maxInsertedPoints = 2000;
        const RefinementReport report = domain.expectEnds(params);
        EXPECT_TRUE(factor > 1 || report.end == RefinementEnd::COMPLETE);
    }
}

TEST(Refinement, survivesFunctionsThatLieAndThrow) {
    for (unsigned int seed = 1; seed <= 40 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Domain domain(seed % 2 == 0 ? Segments{} : fan({0.5, 0.5}, 0.4, 0.3, 5));
        Liar liar(domain.pZone);
        liar.rng.seed(seed);
        liar.minAngleDegree = seed % 31;
        liar.minEdgeLength = seed % 3 == 0 ? 0.01 : 0;
        liar.maxInsertedPoints = 700;
        if (seed % 4 >= 2) liar.numAnswers = 1 + doubles::below(rng, 1 << seed % 14);
        const MeshWitness witness(domain.kivo, domain.pZone, domain.vGraphs);
        bool bThrown = false;
        try {
            said(domain.kivo, liar);
        } catch (const std::runtime_error& error) {
            bThrown = true;
            EXPECT_EQ(std::string("no more answers"), error.what());
        }
        EXPECT_EQ("", witness.findLoss());
        EXPECT_EQ(liar.numAnswers == 0, bThrown);
        EXPECT_EQ(bThrown, domain.kivo.getRefinementReport().end == RefinementEnd::ABANDONED);
        EXPECT_LE(numInserted(domain.kivo), 700u);
        domain.expectEnds(onlyAngles(domain.pZone, 30));
    }
}

TEST(Refinement, survivesFunctionsThatChangeTheTriangulation) {
    struct Meddler : MeshGenParams { // against the rules
        Meddler(Zone2* pZone, Kivo_2D& kivo, unsigned int seed)
            : MeshGenParams(pZone), host(kivo), rng(seed) {}
        double getMaxTriangleArea(Triangle2*) const override {
            const int i = ++numCalls < 400 ? doubles::below(rng, 40) : 40;
            if (i == 0) host.insert(randomPoints(rng, 20, 0, 1));
            if (i == 1) add(host, {{randomPoints(rng, 1, 0, 1)[0], randomPoints(rng, 1, 0, 1)[0]}}, false);
            return 0.01;
        }
        Kivo_2D& host;
        mutable Rng rng;
        mutable int numCalls = 0;
    };
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        Domain domain({});
        Meddler meddler(domain.pZone, domain.kivo, seed);
        meddler.growFactor = seed % 2 == 0 ? 5 : DBL_MAX;
        said(domain.kivo, meddler);
        const CapturedMessages captured;
        EXPECT_TRUE(domain.kivo.checkValidity(true, "meddled"));
        EXPECT_EQ(domain.pZone->getNumberOfTriangles(), domain.kivo.getRefinementReport().numTriangles);
    }
}

TEST(Refinement, stopsOnRequestAtOnceOrOnTheWay) {
    struct Stopper : MeshGenParams {
        using MeshGenParams::MeshGenParams;
        double getMaxTriangleArea(Triangle2*) const override {
            if (--numLeft == 0) bStop = true;
            return 1e-5;
        }
        mutable long numLeft = 0;
        mutable std::atomic<bool> bStop{false};
        Stopper(const Stopper&) = delete;
    };
    for (const long numCalls : {0L, 1L, 1000L}) {
        Domain domain({});
        Stopper params(domain.pZone);
        params.numLeft = numCalls;
        params.bStop = numCalls == 0;
        params.pStopRequest = &params.bStop;
        const MeshWitness witness(domain.kivo, domain.pZone, domain.vGraphs);
        said(domain.kivo, params);
        EXPECT_EQ(RefinementEnd::STOPPED, domain.kivo.getRefinementReport().end);
        EXPECT_EQ("", witness.findLoss());
        EXPECT_LE(numInserted(domain.kivo), numCalls == 0 ? 0u : 5000u) << "100 000 were to come";
    }
}

TEST(Refinement, keepsAllWhenMemoryRunsOut) {
    Rng rng(5);
    int numStopped = 0;
    for (int i = 0; i < 120 && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        Domain domain(i % 3 == 0 ? fan({0.5, 0.5}, 0.4, 0.3, 5) : Segments{}, square(0, 0, 1),
                      ConstraintInsertionStrategy(i % 2));
        MeshGenParams params = onlyAngles(domain.pZone, 30);
        params.maxTriangleArea = 0.002;
        const MeshWitness witness(domain.kivo, domain.pZone, domain.vGraphs);
        setMessageSink([](MessageChannel, const std::string&) {});
        bool bThrown = false;
        try {
            const MemoryLimit limit(i < 60 ? i : doubles::below(rng, 600), i % 2 == 0);
            domain.kivo.refineAdvanced(&params);
        } catch (const std::bad_alloc&) {
            bThrown = true; // nothing was left for the warning
        }
        setMessageSink({});
        const RefinementEnd end = domain.kivo.getRefinementReport().end;
        EXPECT_TRUE(bThrown ? end == RefinementEnd::ABANDONED || end == RefinementEnd::OUT_OF_MEMORY
                            : end == RefinementEnd::OUT_OF_MEMORY || end == RefinementEnd::COMPLETE);
        if (end != RefinementEnd::COMPLETE) ++numStopped;
        EXPECT_EQ("", witness.findLoss());
        EXPECT_EQ(RefinementEnd::COMPLETE, domain.expectEnds(params).end);
    }
    EXPECT_LT(30, numStopped);
}

TEST(Refinement, meshesAZoneThatHasChangedSinceItWasMade) {
    for (unsigned int seed = 1; seed <= 8 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Domain domain({}, star(rng, 9, {0, 0}, 8), ConstraintInsertionStrategy(seed % 2));
        for (int round = 0; round < 3; ++round) {
            domain.kivo.insert(randomPoints(rng, 20, -12, 12));
            const Points v = randomPoints(rng, 2, -12, 12);
            domain.vGraphs.push_back(add(domain.kivo, {{v[0], v[1]}}, false));
            settle(domain.kivo);
            domain.expectEnds(onlyAngles(domain.pZone, 25));
        }
    }
}

TEST(Refinement, ofAZoneWithAnOpenBorderStaysInsideTheHull) {
    for (unsigned int seed = 1; seed <= 6; ++seed) {
        Rng rng(seed);
        Kivo_2D kivo;
        kivo.insert(randomPoints(rng, 30, 0, 10));
        ConstraintGraph2* const pGraph = add(kivo, {{{2, 5}, {8, 5}}, {{8, 5}, {9, 3}}}, true);
        MeshGenParams params = onlyAngles(kivo.createZone(pGraph, ZL_INSIDE), 30);
        params.maxInsertedPoints = 5000;
        params.maxTriangleArea = seed % 2 == 0 ? 0.5 : DBL_MAX;
        const MeshWitness witness(kivo, params.pZone, {pGraph});
        said(kivo, params);
        EXPECT_EQ("", witness.findLoss());
        EXPECT_LT(0u, kivo.getRefinementReport().numBad(MeshRule::MIN_ANGLE, MeshObstacle::OPEN_BORDER));
    }
}

// A turned square leaves slivers along its hull, an ulp high, that belong to the zone of all triangles.
TEST(Refinement, endsWhereSliversOfRoundingAreToBeMeshed) {
    for (unsigned int seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        const double turn = doubles::uniform(rng, 0, 6);
        Segments vRing;
        for (const Segment2& side : square(0, 0, 1)) {
            for (int i = 0; i < 20; ++i) {
                const auto at = [&](double share) {
                    const Point2 a = side.getSrc(), b = side.getTrg();
                    const double x = a.x() + share * (b.x() - a.x()), y = a.y() + share * (b.y() - a.y());
                    return Point2(3 + x * std::cos(turn) - y * std::sin(turn),
                                  5 + x * std::sin(turn) + y * std::cos(turn));
                };
                vRing.emplace_back(at(i / 20.0), at((i + 1) / 20.0));
            }
        }
        Kivo_2D kivo;
        add(kivo, vRing, true);
        ConstraintGraph2* const pNone = nullptr;
        MeshGenParams params = onlyAngles(kivo.createZone(pNone, ZL_GLOBAL)->convertToBoundedZone(), 25);
        params.maxInsertedPoints = 5000;
        said(kivo, params);
        EXPECT_EQ(RefinementEnd::COMPLETE, kivo.getRefinementReport().end);
        EXPECT_GT(1000u, kivo.getRefinementReport().numTriangles);
    }
}

TEST(Refinement, refusesAZoneOfAnotherTriangulationOrOneThatIsGone) {
    Domain domain({}), other({});
    MeshGenParams foreign = onlyAngles(other.pZone, 30);
    MeshGenParams gone = onlyAngles(domain.kivo.createZone(domain.vGraphs[0], ZL_BOUNDED), 30);
    domain.kivo.deleteZone(gone.pZone);
    for (MeshGenParams* pParams : {&foreign, &gone}) {
        EXPECT_NE("", said(domain.kivo, *pParams));
        EXPECT_EQ(4u, domain.kivo.numberOfPoints());
        EXPECT_EQ(4u, other.kivo.numberOfPoints());
        EXPECT_EQ(RefinementEnd::ABANDONED, domain.kivo.getRefinementReport().end);
    }
    domain.expectEnds(onlyAngles(domain.pZone, 30));
}
