#include "tests/oracle/bruteForce.h"
#include "tests/support/meshed.h"

#include <filesystem>
#include <limits>
#include <sstream>
#include <stdexcept>

// What the facade and the driver of refinement say, what they refuse, and what listeners hear.

using namespace meshed;

namespace {

const std::string prefix = "      [Kivo2D-Message] ";
const std::string convert = "The zoneLocation must be ZL_INSIDE or ZL_BOUNDED. Please convert the zone using "
                            "pZone->convertToBoundedZone(..)";
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

struct Refining : testing::Test {
    Kivo_2D kivo;
    ConstraintGraph2* pRing = nullptr;
    Zone2 *pInside = nullptr, *pOutside = nullptr;
    std::vector<oracle::Corners> vBefore;

    void SetUp() override {
        kivo.insert({{-1, -1}, {5, 0}, {5, 5}, {0, 5}});
        pRing = add(kivo, ringOf({{0, 0}, {4, 0}, {4, 1}, {0, 1}}));
        pInside = kivo.createZone(pRing, ZL_INSIDE);
        pOutside = kivo.createZone(pRing, ZL_OUTSIDE);
        vBefore = oracle::triangleList(kivo);
    }
    void expectUnchanged() const {
        EXPECT_EQ(vBefore, oracle::triangleList(kivo));
        EXPECT_EQ(RefinementEnd::ABANDONED, kivo.getRefinementReport().end);
    }
    // Nothing happens but this text and, where the call raises, the report of its condition.
    template<class Call>
    void expectRefused(const std::string& text, bool bRaises, Call call) const {
        const CapturedMessages captured;
        if (bRaises) {
            EXPECT_THROW(call(), KivoException);
            const std::string start = text + prefix + "Kivo, , ERROR: Condition [ ";
            EXPECT_EQ(start, captured.output().substr(0, start.size()));
        } else {
            call();
            EXPECT_EQ(text, captured.output());
        }
        EXPECT_EQ("", captured.error());
        expectUnchanged();
    }
};

struct Listener : MsgBase {
    std::vector<double> vHeard;
    std::size_t numBeforeThrow = SIZE_MAX;
    void update(MsgType, const char* label, double progress) override {
        EXPECT_STRNE("", label);
        vHeard.push_back(progress);
        if (vHeard.size() > numBeforeThrow) throw std::runtime_error("enough");
    }
};

std::size_t numberOf(const std::string& part, const std::string& text) {
    std::size_t num = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++num;
    return num;
}

} // namespace

TEST_F(Refining, refusesWrongParameters) {
    expectRefused("Warning: Kivo_2D::refine(..) has been called with pZone==NULL\n", false,
                  [&] { kivo.refine(nullptr, 20, 0, 1, true); });
    expectRefused("Warning: Kivo_2D::refine(..), minAngleDegree can't be >30\n", false,
                  [&] { kivo.refine(pInside, 30.5, 0, 1, true); });
    expectRefused("\n\n\nMeshGenParams::MeshGenParams(..), ERROR: \n\tbehavior since Kivo 1.39: " + convert +
                      "\n\n",
                  true, [&] { kivo.refine(pOutside, 20, 0, 1, true); });
    MeshGenParams params(pInside);
    params.pZone = pOutside;
    expectRefused(prefix + "Dt2::refineMain2(), ERROR: " + convert + "\n", true,
                  [&] { kivo.refineAdvanced(&params); });
    params.minAngleDegree = 31; // the zone comes first
    expectRefused(prefix + "Dt2::refineMain2(), ERROR: " + convert + "\n", true,
                  [&] { kivo.refineAdvanced(&params); });
    params.pZone = pInside;
    expectRefused(prefix + "Dt2::refine(..), ERROR: minAngleDegree must be <=30.0, return\n", true,
                  [&] { kivo.refineAdvanced(&params); });
    MeshGenParams none(nullptr);
    expectRefused(prefix + "Dt2::refineMain2(..), ERROR: pZone==NULL\n", true,
                  [&] { kivo.refineAdvanced(&none); });
    const CapturedMessages captured;
    kivo.refineAdvanced(nullptr);
    EXPECT_EQ(1u, numberOf("WARNING: ", captured.output()));
    expectUnchanged();
}

TEST_F(Refining, wantsAnInsideOrBoundedZone) {
    Zone2* const aZones[] = {pOutside, kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL),
                             kivo.createZone(pRing, ZL_GROW, Point2(1, 0.5)), zoneUnion(pInside, pOutside)};
    for (Zone2* pZone : aZones)
        expectRefused("\n\n\nMeshGenParams::MeshGenParams(..), ERROR: \n\tbehavior since Kivo 1.39: " +
                          convert + "\n\n",
                      true, [&] { const MeshGenParams params(pZone); });
    const CapturedMessages captured;
    const MeshGenParams bounded(kivo.createZone(pRing, ZL_BOUNDED));
    EXPECT_EQ("", captured.output());
}

TEST_F(Refining, runsWithThirtyDegreesAndTheDefaults) {
    MeshGenParams params(pInside);
    EXPECT_EQ(pInside, params.pZone);
    EXPECT_EQ(20.0, params.minAngleDegree);
    EXPECT_EQ(0.001, params.minEdgeLength);
    for (const double value : {params.maxEdgeLength, params.maxTriangleArea, params.growFactor,
                               params.getMaxEdgeLength(nullptr), params.getMaxTriangleArea(nullptr)})
        EXPECT_EQ(DBL_MAX, value);
    EXPECT_TRUE(params.bAllowConstraintSplitting && params.bClearInnerVertices);
    EXPECT_EQ(0.001, params.growFactorMinArea);
    EXPECT_EQ(10.0, params.capAspectLimit);
    EXPECT_TRUE(params.gridVector.x() == 0 && params.gridVector.y() == 0 && params.gridLength == 0);
    EXPECT_EQ(0, params.debugMode);
    MeshGenParams copy(params);
    copy.maxTriangleArea = 0.25;
    params = copy;
    EXPECT_EQ(0.25, params.getMaxTriangleArea(nullptr));
    const CapturedMessages captured;
    kivo.refine(pInside, 30.0, 0, 0.5, true);
    EXPECT_EQ("", captured.output() + captured.error());
    EXPECT_EQ(RefinementEnd::COMPLETE, kivo.getRefinementReport().end);
    EXPECT_LT(20u, kivo.getRefinementReport().numTriangles);
}

TEST_F(Refining, namesLimitsThatAreNoneInOneWarning) {
    MeshGenParams params(pInside);
    params.minEdgeLength = -1;
    params.maxEdgeLength = NaN;
    params.maxTriangleArea = 0;
    params.growFactor = 1;
    const std::string text = said(kivo, params);
    EXPECT_EQ(1u, numberOf("WARNING: ", text)) << text;
    for (const char* name : {"minEdgeLength", "maxEdgeLength", "maxTriangleArea", "growFactor"})
        EXPECT_EQ(1u, numberOf(name, text)) << text;
    EXPECT_EQ("", said(kivo, *std::make_unique<MeshGenParams>(onlyAngles(pInside, 20))));
    params = onlyAngles(pInside, 20);
    params.maxTriangleArea = 0.01;
    params.maxInsertedPoints = 7;
    EXPECT_EQ(1u, numberOf("WARNING: ", said(kivo, params)));
    const RefinementReport report = kivo.getRefinementReport();
    EXPECT_EQ(RefinementEnd::POINT_LIMIT, report.end);
    EXPECT_EQ(7u, report.numInnerPoints + report.numSegmentPoints);
    EXPECT_LT(0u, report.numBad(MeshRule::AREA, MeshObstacle::NOT_REACHED));
}

TEST_F(Refining, saysAndDrawsWhyATriangleIsBad) {
    const struct {
        const char *line, *picture;
        double MeshGenParams::*field;
        double value;
    } aRules[] = {{"RefC: minAngle, current=", "_quality25.ps", &MeshGenParams::minAngleDegree, 25},
                  {"RefC: sidelength is ", "_sidelen.ps", &MeshGenParams::maxEdgeLength, 3.0},
                  {"RefC: area", "_area.ps", &MeshGenParams::maxTriangleArea, 1.5},
                  {"RefC: growth", "_growth.ps", &MeshGenParams::growFactor, 1.5}};
    namespace fs = std::filesystem;
    const fs::path home = fs::current_path();
    for (const auto& rule : aRules) {
        SCOPED_TRACE(rule.line);
        const fs::path folder = fs::path(testing::TempDir()) / "refiningDebug";
        fs::remove_all(folder);
        fs::create_directory(folder);
        fs::current_path(folder);
        Kivo_2D other;
        ConstraintGraph2* const pGraph = add(other, ringOf({{0, 0}, {4, 0}, {4, 1}, {2, 0.9}, {0, 1}}));
        MeshGenParams params(other.createZone(pGraph, ZL_INSIDE));
        params.minAngleDegree = 0;
        params.maxInsertedPoints = 20;
        params.growFactorMinArea = 0;
        params.*rule.field = rule.value;
        EXPECT_EQ(0u, numberOf("RefC", said(other, params)));
        EXPECT_TRUE(fs::is_empty(folder));
        Kivo_2D same;
        params.pZone =
            same.createZone(add(same, ringOf({{0, 0}, {4, 0}, {4, 1}, {2, 0.9}, {0, 1}})), ZL_INSIDE);
        params.debugMode = 1;
        const std::string text = said(same, params);
        EXPECT_EQ(oracle::triangleList(other), oracle::triangleList(same));
        std::size_t numPictures = 0;
        for (const auto& entry : fs::directory_iterator(folder)) {
            const std::string name = entry.path().filename().string();
            EXPECT_TRUE(name.starts_with("need_") && name.ends_with(rule.picture)) << name;
            EXPECT_LT(100u, fs::file_size(entry));
            ++numPictures;
        }
        fs::current_path(home);
        EXPECT_LT(0u, numberOf(rule.line, text)) << text;
        EXPECT_EQ(numberOf("RefC: ", text), numberOf(rule.line, text));
        EXPECT_EQ(numberOf("RefC: ", text), numPictures);
    }
}

TEST(RefiningAtTheEndOfDoubles, saysThatASegmentIsTooShortToBeSplit) {
    struct Demanding : MeshGenParams { // of one triangle of an ulp
        using MeshGenParams::MeshGenParams;
        double getMaxEdgeLength(Triangle2* pT) const override {
            return pT->getArea2D() < 1e-30 ? 1e-17 : DBL_MAX;
        }
    };
    const double x = std::nextafter(1.0, 2);
    Kivo_2D kivo;
    const oracle::Graphs vGraphs = {add(kivo, square(0, 0, 2)), add(kivo, ringOf({{1, 1}, {x, 1}, {x, x}}))};
    Demanding params(kivo.createZone(vGraphs[0], ZL_INSIDE));
    params.minAngleDegree = 1;
    params.minEdgeLength = 0;
    const MeshWitness witness(kivo, params.pZone, vGraphs);
    const std::string text = said(kivo, params);
    const std::string warning = prefix +
                                "Dt2::refineMain3(), WARNING: Double precision arithmetic does not allow to "
                                "split a segment further, giving up\n";
    EXPECT_LT(0u, numberOf(warning, text)) << text;
    for (const char* line : {"EdgeLen2D(0): ", "EdgeLen2D(1): ", "EdgeLen2D(2): "})
        EXPECT_EQ(numberOf(warning, text), numberOf(line, text)) << text;
    EXPECT_EQ("", witness.findLoss());
    EXPECT_LT(0u, kivo.getRefinementReport().numBad(MeshRule::EDGE_LENGTH, MeshObstacle::ARITHMETIC));
    EXPECT_EQ(RefinementEnd::COMPLETE, kivo.getRefinementReport().end);
}

TEST_F(Refining, tellsListenersAndLetsThemEndIt) {
    Listener listener;
    kivo.subscribe(MSG_PROGRESS, &listener);
    MeshGenParams params = onlyAngles(pInside, 30);
    params.maxTriangleArea = 1e-3;
    const MeshWitness witness(kivo, pInside, {pRing});
    listener.numBeforeThrow = 5;
    EXPECT_THROW(said(kivo, params), std::runtime_error);
    EXPECT_EQ("", witness.findLoss());
    const RefinementReport report = kivo.getRefinementReport();
    EXPECT_EQ(RefinementEnd::ABANDONED, report.end);
    EXPECT_LT(0u, report.numInnerPoints);
    for (const double area : {1e-3, 1e-5, 1.0}) { // the last one finds nothing to do
        listener = Listener();
        params.maxTriangleArea = area;
        said(kivo, params);
        const auto& v = listener.vHeard;
        EXPECT_TRUE(std::is_sorted(v.begin(), v.end()));
        ASSERT_FALSE(v.empty());
        EXPECT_TRUE(v.front() >= 0 && v.back() == 1.0);
        EXPECT_EQ(1, std::count(v.begin(), v.end(), 1.0));
        EXPECT_TRUE(area != 1e-5 || v.size() > 20) << v.size();
        EXPECT_EQ(RefinementEnd::COMPLETE, kivo.getRefinementReport().end);
    }
    kivo.unsubscribe(MSG_PROGRESS, &listener);
}
