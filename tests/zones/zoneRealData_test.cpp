#include "tests/support/realData.h"
#include "tests/support/zoned.h"

// Zones over what others have measured and drawn.

using namespace zoned;
using namespace realData;

namespace {

// Chains of segments that return to their start.
std::vector<Segments> ringsOf(const Segments& vSegments) {
    std::vector<Segments> vRings;
    Segments vRing;
    for (const Segment2& s : vSegments) {
        if (s.getSrc() == s.getTrg()) continue;
        if (!vRing.empty() && vRing.back().getTrg() != s.getSrc()) return {};
        vRing.push_back(s);
        if (s.getTrg() != vRing.front().getSrc()) continue;
        vRings.push_back(vRing);
        vRing.clear();
    }
    return vRing.empty() ? vRings : std::vector<Segments>();
}

bool passesAVertexTwice(const Segments& vRing) {
    std::set<Point2> s;
    for (const Segment2& segment : vRing)
        s.insert(segment.getSrc());
    return s.size() != vRing.size();
}

struct RealZones : testing::TestWithParam<Folder> {};
INSTANTIATE_TEST_SUITE_P(in, RealZones, testing::ValuesIn(folders()),
                         [](const auto& info) { return info.param.name; });

// Rings that may touch in vertices, but neither cross nor overlap.
bool isPlain(const nlohmann::json& counts) {
    for (const char* name : {"pairs_crossing", "pairs_T", "pairs_overlap", "duplicate"})
        if (counts[name] != 0) return false;
    return true;
}

void expectRingZones(Kivo_2D& kivo, const std::vector<Segments>& vRings) {
    for (const Segments& vRing : vRings) {
        if (passesAVertexTwice(vRing) || vRing.size() < 3 || &vRing - vRings.data() > 200) continue;
        const Zone2* const pInside = kivo.createZone(add(kivo, vRing, false), ZL_INSIDE);
        ASSERT_NE(nullptr, pInside);
        expectNearArea(std::abs(oracle::areaOf(vRing)), pInside->getArea2D());
    }
}

} // namespace

TEST_P(RealZones, haveTheAreaOfTheRingsTheyWereMadeOf) {
    std::size_t numTried = 0;
    for (const Path& path : filesIn(GetParam(), ".seg")) {
        const nlohmann::json facts = factsBeside(path);
        if (!facts.contains("derived") || !facts["derived"].contains("rings")) continue;
        SCOPED_TRACE(path.filename().string());
        const Segments vSegments = readSegments(path);
        const std::vector<Segments> vRings = ringsOf(vSegments);
        if (vRings.empty() || !isPlain(facts["derived"]["segments"])) continue;
        ++numTried;
        Kivo_2D kivo;
        ConstraintGraph2* const pGraph = add(kivo, vSegments, false);
        const CapturedMessages captured;
        const Zone2* const pParity = kivo.createParityZone({pGraph});
        ASSERT_NE(nullptr, pParity);
        expectNearArea(oracle::parityArea(vRings), pParity->getArea2D());
        expectRingZones(kivo, vRings);
    }
    EXPECT_TRUE(numTried >= 30 || GetParam().name != std::string("open")) << numTried;
}

TEST_P(RealZones, haveTheTrianglesThatBruteForceFinds) {
    for (const Path& path : filesIn(GetParam(), ".seg")) {
        SCOPED_TRACE(path.filename().string());
        Kivo_2D kivo;
        ConstraintGraph2* const pGraph = add(kivo, readSegments(path), false);
        if (!kivo.is2D()) continue;
        for (const bool bParity : {true, false}) {
            const Triangles vExpected =
                bParity ? oracle::oddlyEnclosed(kivo, {pGraph}) : oracle::enclosed(kivo, {pGraph});
            const CapturedMessages captured;
            const Zone2* const pZone =
                bParity ? kivo.createParityZone({pGraph}) : kivo.createEnclosedZone({pGraph});
            if (vExpected.empty()) {
                EXPECT_EQ(nullptr, pZone);
            } else {
                expectZone(kivo, pZone, vExpected);
            }
        }
    }
}
