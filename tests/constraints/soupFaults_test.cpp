#include "tests/support/realData.h"
#include "tests/support/sanitized.h"
#include "tests/support/triangleSoups.h"

#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <regex>
#include <sstream>

// Soups with faults, each of which brute force finds, and what is said of them.

using namespace triangleSoups;

namespace {

constexpr int numRounds = isSanitized ? 60 : 600;

struct Report {
    std::vector<std::string> vLines; // without the last one
    std::size_t numFaults = 0;
    bool bAtLeast = false;
};
Report readReport(const std::string& said) {
    Report report;
    std::istringstream stream(said);
    std::smatch match;
    for (std::string line; std::getline(stream, line);) {
        EXPECT_EQ(location + "ERROR: ", line.substr(0, location.size() + 7));
        report.vLines.push_back(line.substr(std::min(location.size() + 7, line.size())));
    }
    if (report.vLines.empty()) return report;
    const std::string last = report.vLines.back();
    report.vLines.pop_back();
    const std::regex pattern("(At least )?([0-9]+) fault(s?), nothing imported, returning NULL");
    if (std::regex_match(last, match, pattern)) {
        report.numFaults = std::stoul(match[2]);
        report.bAtLeast = match[1].matched;
        EXPECT_EQ(report.numFaults != 1, match[3].length() == 1) << last;
    } else {
        ADD_FAILURE() << last;
    }
    return report;
}

using Place = std::pair<SoupFault::Kind, std::size_t>;

// A constraint segment crosses one of several edges, of triangles with other faults, which may be missing.
std::string withoutTriangle(const std::string& text) { return text.substr(0, text.find(" of triangle ")); }

void expectLines(const Report& report, const std::vector<SoupFault>& vFaults) {
    std::multiset<std::string> sCertain;
    std::set<std::string> sPossible;
    std::map<std::string, Place> mPlaces;
    const bool bAllCertain = vFaults[0].kind == SoupFault::CROSSED_EDGE;
    std::size_t numPossible = 0;
    for (const SoupFault& fault : vFaults) {
        mPlaces[fault.text] = {fault.kind, fault.triangle};
        numPossible += fault.bFirst;
        if (fault.kind != SoupFault::CROSSED_EDGE || (bAllCertain && fault.bFirst)) {
            sCertain.insert(fault.text);
        } else if (!bAllCertain) {
            sPossible.insert(withoutTriangle(fault.text));
        }
    }
    EXPECT_LE(sCertain.size(), report.numFaults);
    EXPECT_LE(report.numFaults, numPossible);
    EXPECT_EQ(std::min<std::size_t>(report.numFaults, 100), report.vLines.size());
    Place last(SoupFault::NOT_FINITE, 0);
    for (const std::string& line : report.vLines) {
        if (const auto certain = sCertain.find(line); certain != sCertain.end()) {
            sCertain.erase(certain);
            EXPECT_LE(last, mPlaces[line]) << "not in order: " << line;
            last = mPlaces[line];
        } else {
            EXPECT_EQ(1u, sPossible.erase(withoutTriangle(line))) << "wrong, or twice: " << line;
        }
    }
    for (const std::string& text : sCertain)
        EXPECT_TRUE(report.vLines.size() == 100 && last <= mPlaces[text]) << "not found: " << text;
}

// What can't be imported changes nothing.
void expectRefused(Constrained& c, const Soup& vSoup, const std::vector<SoupFault>& vFaults) {
    const State before = stateOf(c);
    std::string said;
    {
        const CapturedMessages captured;
        EXPECT_EQ(nullptr, c.kivo.importTriangles(vSoup, false));
        said = captured.output() + captured.error();
    }
    const Report report = readReport(said);
    EXPECT_FALSE(report.bAtLeast);
    expectLines(report, vFaults);
    EXPECT_TRUE(before == stateOf(c));
}

// Finds out by brute force what must happen. Segments that wait may have more to be divided at once they are
// applied.
std::vector<SoupFault> importAnyhow(Constrained& c, const Soup& vSoup) {
    const std::set<Edge> sConstraints = constraintEdges(c);
    const std::vector<SoupFault> vFaults =
        oracle::soupFaults(vSoup, verticesOf(c.kivo), segmentsOf(sConstraints));
    if (!vFaults.empty()) {
        expectRefused(c, vSoup, vFaults);
    } else if (sConstraints != constraintEdges(c.kivo)) {
        const CapturedMessages captured;
        expectZoneOf(c.kivo, c.kivo.importTriangles(vSoup), oracle::soupFacts(vSoup));
        c.kivo.applyConstraintsAndZones();
        EXPECT_TRUE(c.kivo.checkValidity(true, "imported"));
        EXPECT_EQ("", oracle::findGraphFault(c.kivo, c.vGraphs));
    } else {
        expectImported(c, vSoup);
    }
    if (testing::Test::HasFailure()) ADD_FAILURE() << doubles::hex(vSoup) << "\n" << c.given();
    return vFaults;
}

Point2 between(const Point2& p, const Point2& q, double share) {
    return {p.x() + share * (q.x() - p.x()), p.y() + share * (q.y() - p.y())};
}
void append(Soup& vSoup, const Point2& a, const Point2& b, const Point2& c) {
    vSoup.insert(vSoup.end(), {a, b, c});
}

using Plant = void (*)(Rng&, const Frame&, Soup&);
constexpr double aBad[] = {HUGE_VAL, -HUGE_VAL, std::numeric_limits<double>::quiet_NaN()};
const std::vector<Plant> vPlants = {
    // a coordinate that is none
    [](Rng& rng, const Frame&, Soup& v) {
        Point2& p = v[any(rng, v.size())];
        p = rng() % 2 == 0 ? Point2(aBad[any(rng, 3)], p.y()) : Point2(p.x(), aBad[any(rng, 3)]);
    },
    // no area: on an edge, or on a longer line, or all in a point
    [](Rng& rng, const Frame&, Soup& v) {
        const std::size_t i = any(rng, v.size());
        const Point2 p = v[i], q = v[i / 3 * 3 + (i + 1) % 3];
        append(v, p, q, between(p, q, below(rng, 5) / 2.0));
        if (below(rng, 4) == 0) append(v, p, p, p);
    },
    // the same triangle again, maybe more than once
    [](Rng& rng, const Frame&, Soup& v) {
        const std::size_t t = any(rng, v.size()) / 3 * 3;
        for (int i = 1 + below(rng, 2) * below(rng, 12); i > 0; --i)
            append(v, v[t + 1], v[t + any(rng, 2) * 2], v[t + 2]), std::swap(v.back(), v[v.size() - 2]);
    },
    // another triangle at an edge
    [](Rng& rng, const Frame& frame, Soup& v) {
        const std::size_t i = any(rng, v.size());
        append(v, v[i], v[i / 3 * 3 + (i + 1) % 3], anyPoint(rng, frame, 12, true));
    },
    // one side of an edge is divided, the other one is not
    [](Rng& rng, const Frame&, Soup& v) {
        const std::size_t i = any(rng, v.size()), next = i / 3 * 3 + (i + 1) % 3;
        const Point2 p = v[i], q = v[next], apex = v[i / 3 * 3 + (i + 2) % 3], middle = between(p, q, 0.5);
        v[next] = middle;
        append(v, apex, middle, q);
    },
    // a triangle inside another one, or a larger one round it
    [](Rng& rng, const Frame&, Soup& v) {
        const std::size_t t = any(rng, v.size()) / 3 * 3;
        const Point2 center = between(between(v[t], v[t + 1], 0.5), v[t + 2], 1.0 / 3);
        const double share = below(rng, 2) == 0 ? 0.25 : 1.25;
        append(v, between(center, v[t], share), between(center, v[t + 1], share),
               between(center, v[t + 2], share));
    },
    // across all
    [](Rng& rng, const Frame& frame, Soup& v) {
        const double size = 1000 + below(rng, 1000), low = below(rng, 13);
        append(v, frame.place(-size, low - 1), frame.place(size, low), frame.place(-size, low));
    },
    // a corner of one triangle, or of all there, one unit in the last place off
    [](Rng& rng, const Frame&, Soup& v) {
        const std::size_t i = any(rng, v.size());
        const Point2 p = v[i], q = doubles::jittered(rng, p, 1);
        v[i] = q;
        if (below(rng, 4) == 0) std::replace(v.begin(), v.end(), p, q);
    },
    // a corner of one triangle, or of all there, anywhere or where another one is
    [](Rng& rng, const Frame& frame, Soup& v) {
        const std::size_t i = any(rng, v.size());
        const Point2 p = v[i], q = rng() % 2 == 0 ? v[any(rng, v.size())] : anyPoint(rng, frame, 12, true);
        v[i] = q;
        if (rng() % 2 == 0) std::replace(v.begin(), v.end(), p, q);
    },
    // triangles anywhere
    [](Rng& rng, const Frame& frame, Soup& v) {
        for (int i = 3 * (1 + below(rng, 4)); i > 0; --i)
            v.push_back(anyPoint(rng, frame, 12, true));
    },
};

Soup withFaults(Rng& rng, const Frame& frame) {
    Soup v = goodSoup(rng, frame, below(rng, 4) == 0 ? 60 : 12);
    for (int i = 1 + below(rng, 2) * below(rng, 4); i > 0; --i)
        vPlants[any(rng, vPlants.size())](rng, frame, v);
    // A zero is a zero.
    for (Point2& p : v)
        p = Point2(p.x() + 0.0, p.y() + 0.0);
    return shuffled(rng, v);
}

struct SoupFaults : testing::TestWithParam<Frame> {
    std::map<SoupFault::Kind, int> mNumRounds; // in which there was such a fault
    int numGood = 0;

    void count(const std::vector<SoupFault>& vFaults) {
        std::set<SoupFault::Kind> sKinds;
        for (const SoupFault& fault : vFaults)
            sKinds.insert(fault.kind);
        for (const SoupFault::Kind kind : sKinds)
            ++mNumRounds[kind];
        numGood += vFaults.empty();
    }
    void expectAtLeast(int num, const std::vector<SoupFault::Kind>& vKinds) {
        for (const SoupFault::Kind kind : vKinds)
            EXPECT_LE(num, mNumRounds[kind]) << kind << ", or the test is empty";
    }
};
INSTANTIATE_TEST_SUITE_P(of, SoupFaults, testing::ValuesIn(aFrames),
                         [](const auto& info) { return info.param.name; });

struct PublishedSoups : testing::TestWithParam<realData::Folder> {};
INSTANTIATE_TEST_SUITE_P(in, PublishedSoups, testing::ValuesIn(realData::folders()),
                         [](const auto& info) { return info.param.name; });

} // namespace

TEST_P(SoupFaults, areAllFoundAndNoOthers) {
    Rng rng(1);
    for (int round = 0; round < numRounds && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        Constrained c;
        count(importAnyhow(c, withFaults(rng, GetParam())));
    }
    expectAtLeast(numRounds / 30, {SoupFault::NOT_FINITE, SoupFault::DEGENERATE, SoupFault::SHARED_EDGE,
                                   SoupFault::CORNER_IN_EDGE, SoupFault::OVERLAP});
}

TEST_P(SoupFaults, areFoundBesideVerticesConstraintsAndTrianglesThatAreThere) {
    Rng rng(2);
    for (int round = 0; round < numRounds && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const Frame& frame = GetParam();
        const Soup vSoup = rng() % 4 == 0 ? withFaults(rng, frame) : shuffled(rng, goodSoup(rng, frame, 12));
        Points vPoints;
        for (int i = 1 + below(rng, 12); i > 0; --i)
            vPoints.push_back(anyPoint(rng, frame, 12, true));
        for (int i = below(rng, 8); i > 0; --i)
            vPoints.push_back(vSoup[any(rng, vSoup.size())]);
        for (int i = below(rng, 2) * below(rng, 4); i > 0; --i)
            vPoints.push_back(between(vSoup[any(rng, vSoup.size())], vSoup[any(rng, vSoup.size())], 0.5));
        // All points that would be in the way, or all segments, are left out more often than not.
        std::set<Point2> sWrong;
        for (const SoupFault& fault : oracle::soupFaults(vSoup, vPoints))
            sWrong.insert(fault.point);
        if (rng() % 4 != 0) std::erase_if(vPoints, [&](const Point2& p) { return sWrong.count(p) != 0; });
        std::erase_if(vPoints,
                      [](const Point2& p) { return !std::isfinite(p.x()) || !std::isfinite(p.y()); });
        Constrained c;
        const bool bAnySegments = rng() % 4 == 0;
        const auto addSegments = [&](const Points& v, int num, bool bConforming) {
            for (const Segment2& s : anySegments(rng, v, num)) {
                const std::vector<SoupFault> vFaults = oracle::soupFaults(vSoup, {}, {s});
                if (bAnySegments || vFaults.empty() || vFaults.back().kind != SoupFault::CROSSED_EDGE)
                    c.add({s}, bConforming ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY);
            }
        };
        // Some segments wait until they are applied.
        if (rng() % 2 == 0 && vPoints.size() > 2) addSegments({vPoints[0], vPoints[1]}, 2, rng() % 2 == 0);
        c.kivo.insert(vPoints);
        if (!vPoints.empty()) addSegments(vPoints, below(rng, 2) * below(rng, 8), rng() % 2 == 0);
        if (rng() % 8 == 0) importAnyhow(c, shuffled(rng, goodSoup(rng, frame, 8)));
        if (!HasFailure()) count(importAnyhow(c, vSoup));
    }
    EXPECT_LE(numRounds / 4, numGood);
    expectAtLeast(numRounds / 60,
                  {SoupFault::VERTEX_IN_EDGE, SoupFault::VERTEX_IN_TRIANGLE, SoupFault::CROSSED_EDGE});
}

// Where many edges meet in an end of it, a walk may start at the other one.
TEST(CrossedEdges, areNamedFromTheLowerEndOfTheirSegment) {
    for (const double direction : {-1, 1}) {
        Soup vSoup = {{20 * direction, -5}, {20 * direction, 5}, {21 * direction, 0}};
        for (int i = 0; i < 62; ++i)
            append(vSoup, {0, 0}, {9 * std::cos(0.1 * i), 9 * std::sin(0.1 * i)},
                   {9 * std::cos(0.1 * (i + 1)), 9 * std::sin(0.1 * (i + 1))});
        Constrained c;
        c.add({{{0, 0}, {30 * direction, 1}}}, CIS_CONSTRAINED_DELAUNAY);
        EXPECT_EQ(3u, importAnyhow(c, vSoup).size());
    }
}

TEST(RefusedSoups, leaveLaterWorkAsItWouldBeWithoutThem) {
    Rng rng(4);
    for (int round = 0; round < numRounds / 10 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const Frame& frame = aFrames[round % 5];
        const Soup vSoup = goodSoup(rng, frame, 12);
        Points vOutside = {frame.place(-1, -1), frame.place(-2, 20), frame.place(30, 2), frame.place(4, 14)};
        vOutside.resize(any(rng, 5)); // no triangle, at first, or two
        std::array<Constrained, 2> aBoth;
        for (Constrained& c : aBoth) {
            c.kivo.insert(vOutside);
            if (vOutside.size() > 1) c.add({{vOutside[0], vOutside[1]}}, CIS_CONSTRAINED_DELAUNAY);
        }
        for (int i = 0; i < 3; ++i)
            if (const Soup v = withFaults(rng, frame);
                !oracle::soupFaults(v, vOutside, segmentsOf(constraintEdges(aBoth[0]))).empty())
                importAnyhow(aBoth[0], v);
        const Points vLater = {anyPoint(rng, frame, 12, false), anyPoint(rng, frame, 12, true)};
        for (Constrained& c : aBoth) {
            importAnyhow(c, vSoup);
            c.kivo.insert(vLater);
            c.add({{vLater[0], vSoup[0]}}, CIS_CONSTRAINED_DELAUNAY);
        }
        EXPECT_EQ(oracle::triangleList(aBoth[0].kivo), oracle::triangleList(aBoth[1].kivo));
        EXPECT_EQ(constraintEdges(aBoth[0]), constraintEdges(aBoth[1]));
    }
}

TEST(ManySoupFaults, areCountedBeyondTheHundredThatAreShownAndUpToALimit) {
    Rng rng(3);
    const Frame& frame = aFrames[0];
    Soup vGrid;
    for (int i = 0; i < 14; ++i)
        for (int j = 0; j < 14; ++j)
            append(vGrid, frame.place(i, j), frame.place(i + 1, j), frame.place(i, j + 1)),
                append(vGrid, frame.place(i + 1, j), frame.place(i + 1, j + 1), frame.place(i, j + 1));
    Soup vSome = vGrid;
    append(vSome, {-1e9, -1}, {1e9, 0.5}, {7, 1e9});
    Constrained c;
    EXPECT_LT(300u, importAnyhow(c, shuffled(rng, vSome)).size());
    Points vPoints;
    while (vPoints.size() < (isSanitized ? 200 : 3000))
        vPoints.push_back(anyPoint(rng, frame, 100, false));
    c.kivo.insert(vPoints);
    EXPECT_EQ(vPoints.size(), importAnyhow(c, {{-1, -1}, {300, -1}, {-1, 300}}).size());
}

TEST(ManySoupFaults, endTheSearch) {
    Soup vSoup;
    for (int i = 0; i < 400; ++i)
        append(vSoup, {0, 0}, {1, 0}, {0, 1});
    Constrained c;
    const CapturedMessages captured;
    EXPECT_EQ(nullptr, c.kivo.importTriangles(vSoup, false));
    const Report report = readReport(captured.output() + captured.error());
    EXPECT_TRUE(report.bAtLeast);
    ASSERT_EQ(100u, report.vLines.size());
    EXPECT_TRUE(report.numFaults >= 10000 && report.numFaults <= 400 * 399 / 2 + 3) << report.numFaults;
    EXPECT_EQ("The edge (0, 0) (0, 1) is shared by 400 triangles: 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, ...",
              report.vLines[0]);
}

// Triangulations by other programs, most of which are none where points nearly lie on a line.
TEST_P(PublishedSoups, areImportedOrRefusedForTheFaultsThatTheyHave) {
    for (const realData::Path& path : realData::filesIn(GetParam(), ".tri")) {
        SCOPED_TRACE(path.filename().string());
        const Points vPoints =
            realData::readPoints(realData::Path(path).replace_extension().replace_extension(".xy"));
        Soup vSoup;
        for (const double number : realData::readNumbers(path))
            vSoup.push_back(vPoints.at(std::size_t(number)));
        Constrained c;
        if (vSoup.size() < 10000 && !vSoup.empty()) importAnyhow(c, vSoup);
    }
}

TEST(ImportMessages, nameEveryFaultWithItsCoordinates) {
    constexpr double inf = HUGE_VAL;
    const Soup vSoup = {{0, 0},  {4, 0},     {0, 4},   // 0
                        {1, 0},  {inf, 0},   {0, 1},   // 1: not finite
                        {1, 1},  {0.1, 0.1}, {2, 2},   // 2: no area
                        {4, 0},  {0, 4},     {4, 4},   // 3: clockwise
                        {5, 5},  {4, 0},     {0, 4},   // 4: the third at an edge, over 3
                        {0, 0},  {1, -1},    {2, 0},   // 5: below 0, with half of its edge
                        {10, 0}, {12, 0},    {11, 2}}; // 6
    Constrained c;
    c.kivo.insert({{1, 1}, {0, 2}, {4, 0}, {20, 0.5}});
    c.add({{{13, 1}, {9, 1}}}, CIS_CONSTRAINED_DELAUNAY);
    const char* const aLines[] = {
        "Triangle 1 (1, 0) (inf, 0) (0, 1) has a coordinate that is not finite",
        "Triangle 2 (1, 1) (0.10000000000000001, 0.10000000000000001) (2, 2) is degenerate",
        "The edge (0, 4) (4, 0) is shared by 3 triangles: 0, 3, 4",
        "The corner (2, 0) lies inside the edge (0, 0) (4, 0) of triangle 0",
        "The vertex (0, 2) lies inside the edge (0, 0) (0, 4) of triangle 0",
        "The vertex (1, 1) lies inside triangle 0 (0, 0) (4, 0) (0, 4)",
        "Triangle 3 (4, 0) (0, 4) (4, 4) and triangle 4 (5, 5) (4, 0) (0, 4) overlap",
        "The constraint segment (9, 1) (13, 1) crosses the edge (10, 0) (11, 2) of triangle 6",
        "8 faults, nothing imported, returning NULL"};
    std::string expected;
    for (const char* line : aLines)
        expected += location + "ERROR: " + line + "\n";
    const std::string nothing =
        prefix + "Kivo_2D::importTriangles(..), INFO: Nothing imported, returning NULL (bVerbose==true)\n";
    const auto expectSaid = [&](const std::string& text, const Soup& v) {
        const State before = stateOf(c);
        for (const bool bVerbose : {false, true}) {
            const CapturedMessages captured;
            EXPECT_EQ(nullptr, c.kivo.importTriangles(v, bVerbose));
            EXPECT_EQ(text + (bVerbose ? nothing : ""), captured.output() + captured.error());
        }
        EXPECT_TRUE(before == stateOf(c));
    };
    expectSaid(expected, vSoup);
    expectSaid(location + "ERROR: Triangle 0 (0, 0) (0, 0) (0, 0) is degenerate\n" + location +
                   "ERROR: 1 fault, nothing imported, returning NULL\n",
               {{0, 0}, {0, 0}, {0, 0}});
    expectSaid(location + "WARNING: vCorners is empty, returning NULL\n", {});
    expectSaid(location +
                   "ERROR: vCorners does not hold three corners a triangle (4 points), returning NULL\n",
               {{0, 0}, {1, 0}, {0, 1}, {1, 1}});
}
