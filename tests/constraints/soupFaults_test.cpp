#include "tests/support/sanitized.h"
#include "tests/support/triangleSoups.h"

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <sstream>

// Soups with faults, each of which brute force finds, and what is said of them.

using namespace triangleSoups;

namespace {

constexpr int numRounds = isSanitized ? 60 : 600;
const std::string label = location + "ERROR: ";

// The errors, without their label, of a soup that can't be imported.
std::vector<std::string> refusalOf(Constrained& c, const Soup& vSoup) {
    const CapturedMessages captured;
    EXPECT_EQ(nullptr, c.kivo.importTriangles(vSoup, false));
    std::vector<std::string> vLines;
    std::istringstream stream(captured.output() + captured.error());
    for (std::string line; std::getline(stream, line);) {
        EXPECT_TRUE(line.starts_with(label)) << line;
        vLines.push_back(line.substr(std::min(label.size(), line.size())));
    }
    EXPECT_FALSE(vLines.empty());
    return vLines;
}

// A constraint segment crosses one of several edges, of triangles with other faults, which may be missing.
std::string withoutTriangle(const std::string& text) { return text.substr(0, text.find(" of triangle ")); }

void expectReport(std::vector<std::string> vLines, const std::vector<SoupFault>& vFaults) {
    using Place = std::pair<SoupFault::Kind, std::size_t>;
    std::map<std::string, Place> mCertain;
    std::set<std::string> sPossible;
    std::size_t numPossible = 0;
    const bool bOnlyCrossed = vFaults[0].kind == SoupFault::CROSSED_EDGE;
    for (const SoupFault& fault : vFaults) {
        numPossible += fault.bFirst;
        if (fault.kind != SoupFault::CROSSED_EDGE || (bOnlyCrossed && fault.bFirst))
            mCertain[fault.text] = {fault.kind, fault.triangle};
        else if (!bOnlyCrossed)
            sPossible.insert(withoutTriangle(fault.text));
    }
    const std::size_t num = std::strtoul(vLines.back().c_str(), nullptr, 10);
    EXPECT_TRUE(mCertain.size() <= num && num <= numPossible) << num;
    EXPECT_EQ(counted(num, "fault") + ", nothing imported, returning NULL", vLines.back());
    vLines.pop_back();
    EXPECT_EQ(std::min<std::size_t>(num, 100), vLines.size());
    Place last(SoupFault::NOT_FINITE, 0);
    for (const std::string& line : vLines) {
        if (const auto certain = mCertain.find(line); certain != mCertain.end()) {
            EXPECT_LE(last, certain->second) << "not in order: " << line;
            last = certain->second;
            mCertain.erase(certain);
        } else {
            EXPECT_EQ(1u, sPossible.erase(withoutTriangle(line))) << "wrong, or twice: " << line;
            last = {SoupFault::CROSSED_EDGE, 0};
        }
    }
    for (const auto& [text, place] : mCertain)
        EXPECT_TRUE(vLines.size() == 100 && last <= place) << "not found: " << text;
}

// Finds out by brute force what must happen. Segments that wait may have more to be divided at once they are
// applied.
std::vector<SoupFault> importAnyhow(Constrained& c, const Soup& vSoup) {
    const std::set<Edge> sConstraints = constraintEdges(c);
    const std::vector<SoupFault> vFaults =
        oracle::soupFaults(vSoup, verticesOf(c.kivo), segmentsOf(sConstraints));
    if (!vFaults.empty()) {
        const State before = stateOf(c);
        expectReport(refusalOf(c, vSoup), vFaults);
        EXPECT_TRUE(before == stateOf(c));
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

void addFault(Rng& rng, const Frame& frame, Soup& v) {
    constexpr double aBad[] = {HUGE_VAL, -HUGE_VAL, std::numeric_limits<double>::quiet_NaN()};
    const std::size_t i = any(rng, v.size());
    const Point2 p = v[i], q = v[next(i)], r = v[next(next(i))],
                 center = between(between(p, q, 0.5), r, 1.0 / 3), anywhere = anyPoint(rng, frame, 12, true);
    const double bad = aBad[any(rng, 3)], share = rng() % 2 == 0 ? 0.25 : 1.25, y = below(rng, 13);
    switch (below(rng, 10)) {
    case 0: // a coordinate that is none
        v[i] = rng() % 2 == 0 ? Point2(bad, p.y()) : Point2(p.x(), bad);
        break;
    case 1: // no area: on an edge, or on a longer line
        return append(v, p, q, between(p, q, below(rng, 5) / 2.0));
    case 2: // all in a point
        return append(v, p, p, p);
    case 3: // the same triangle again, maybe more than once
        for (int num = 1 + below(rng, 2) * below(rng, 12); num > 0; --num)
            append(v, p, q, r);
        break;
    case 4: // another triangle at an edge
        return append(v, p, q, anywhere);
    case 5: // one side of an edge is divided, the other one is not
        v[next(i)] = between(p, q, 0.5);
        return append(v, r, v[next(i)], q);
    case 6: // a triangle inside another one, or a larger one round it
        return append(v, between(center, p, share), between(center, q, share), between(center, r, share));
    case 7: // across all
        return append(v, frame.place(-1500, y - 1), frame.place(1000, y), frame.place(-1500, y));
    case 8: // a corner, or all there, a unit in the last place off, anywhere, or at another one
        v[i] = std::array{doubles::jittered(rng, p, 1), anywhere, v[any(rng, v.size())]}[any(rng, 3)];
        if (rng() % 2 == 0) std::replace(v.begin(), v.end(), p, Point2(v[i]));
        break;
    default: // a triangle anywhere
        return append(v, anywhere, anyPoint(rng, frame, 12, true), anyPoint(rng, frame, 12, true));
    }
}

Soup withFaults(Rng& rng, const Frame& frame) {
    Soup v = goodSoup(rng, frame, below(rng, 4) == 0 ? 60 : 12);
    for (int i = 1 + below(rng, 2) * below(rng, 4); i > 0; --i)
        addFault(rng, frame, v);
    for (Point2& p : v)
        p = Point2(p.x() + 0.0, p.y() + 0.0); // one zero only
    return shuffled(rng, v);
}

struct SoupFaults : testing::TestWithParam<Frame> {};
INSTANTIATE_TEST_SUITE_P(of, SoupFaults, testing::ValuesIn(aFrames),
                         [](const auto& info) { return info.param.name; });

} // namespace

// Alone, or beside vertices, constraints and triangles that are there.
TEST_P(SoupFaults, areAllFoundAndNoOthers) {
    Rng rng(1);
    const Frame& frame = GetParam();
    std::map<SoupFault::Kind, int> mNumRounds; // in which there was such a fault
    int numGood = 0;
    for (int round = 0; round < 2 * numRounds && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const bool bAlone = round % 2 == 0;
        const Soup vSoup = bAlone || rng() % 4 == 0 ? withFaults(rng, frame) : goodSoup(rng, frame, 12);
        const auto anyCorner = [&] { return vSoup[any(rng, vSoup.size())]; };
        Points vPoints;
        for (int i = bAlone ? 0 : 1 + below(rng, 24); i > 0; --i)
            vPoints.push_back(rng() % 2 == 0 ? anyPoint(rng, frame, 12, true)
                                             : between(anyCorner(), anyCorner(), rng() % 4 == 0 ? 0.5 : 0));
        // All points that would be in the way, or all segments, are left out more often than not.
        std::set<Point2> sWrong;
        if (rng() % 4 != 0)
            for (const SoupFault& fault : oracle::soupFaults(vSoup, vPoints))
                sWrong.insert(fault.point);
        std::erase_if(vPoints, [&](const Point2& p) {
            return sWrong.count(p) != 0 || !std::isfinite(p.x()) || !std::isfinite(p.y());
        });
        Constrained c;
        const bool bAnySegments = rng() % 4 == 0;
        const auto addSegments = [&](const Points& v, int num) {
            const auto cis = ConstraintInsertionStrategy(rng() % 2);
            for (const Segment2& s : anySegments(rng, v, v.empty() ? 0 : num)) {
                const std::vector<SoupFault> vFaults = oracle::soupFaults(vSoup, {}, {s});
                if (bAnySegments || vFaults.empty() || vFaults.back().kind != SoupFault::CROSSED_EDGE)
                    c.add({s}, cis);
            }
        };
        // Some segments wait until they are applied.
        if (rng() % 2 == 0 && vPoints.size() > 2) addSegments({vPoints[0], vPoints[1]}, 2);
        c.kivo.insert(vPoints);
        addSegments(vPoints, below(rng, 2) * below(rng, 8));
        if (!bAlone && rng() % 8 == 0) importAnyhow(c, goodSoup(rng, frame, 8));
        const std::vector<SoupFault> vFaults = importAnyhow(c, vSoup);
        std::set<SoupFault::Kind> sKinds;
        for (const SoupFault& fault : vFaults)
            if (sKinds.insert(fault.kind).second) ++mNumRounds[fault.kind];
        numGood += !bAlone && vFaults.empty();
        if (!bAlone || vFaults.empty()) continue;
        // Later work is as it would be without what was refused.
        Constrained other;
        const Soup vLater = goodSoup(rng, frame, 12);
        const Point2 outside = frame.place(-below(rng, 20), 20);
        for (Constrained* const pC : {&c, &other}) {
            pC->kivo.insert(outside);
            pC->kivo.importTriangles(vLater, false);
        }
        EXPECT_EQ(oracle::triangleList(c.kivo), oracle::triangleList(other.kivo));
        EXPECT_EQ(constraintEdges(c), constraintEdges(other));
    }
    EXPECT_LE(numRounds / 4, numGood);
    for (const int kind : {0, 1, 2, 3, 4, 5, 6, 7})
        EXPECT_LE(numRounds / (kind < SoupFault::VERTEX_IN_EDGE ? 30 : 60), mNumRounds[SoupFault::Kind(kind)])
            << kind << ", or the test is empty";
}

// Where many edges meet in an end of it, a walk may start at the other one.
TEST(CrossedEdges, areNamedFromTheLowerEndOfTheirSegment) {
    for (const double x : {-20, 20}) {
        Soup vSoup = {{x, -5}, {x, 5}, {1.1 * x, 0}};
        for (int i = 0; i < 62; ++i)
            append(vSoup, {0, 0}, {9 * std::cos(0.1 * i), 9 * std::sin(0.1 * i)},
                   {9 * std::cos(0.1 * (i + 1)), 9 * std::sin(0.1 * (i + 1))});
        Constrained c;
        c.add({{{0, 0}, {1.5 * x, 1}}}, CIS_CONSTRAINED_DELAUNAY);
        EXPECT_EQ(3u, importAnyhow(c, vSoup).size());
    }
}

TEST(ManySoupFaults, areCountedBeyondTheHundredThatAreShownAndUpToALimit) {
    Rng rng(3);
    Soup vSoup = gridSoup(rng, 14);
    append(vSoup, {-1e9, -1}, {1e9, 0.5}, {7, 1e9});
    Constrained c;
    EXPECT_LT(300u, importAnyhow(c, shuffled(rng, vSoup)).size());
    const Points vPoints = zoned::randomPoints(rng, isSanitized ? 200 : 3000, 0, 100);
    c.kivo.insert(vPoints);
    EXPECT_EQ(vPoints.size(), importAnyhow(c, {{-1, -1}, {300, -1}, {-1, 300}}).size());
    // Beyond 10000 the search ends.
    vSoup.clear();
    for (int i = 0; i < 400; ++i)
        append(vSoup, {0, 0}, {1, 0}, {0, 1});
    Constrained other;
    const std::vector<std::string> vLines = refusalOf(other, vSoup);
    ASSERT_EQ(101u, vLines.size());
    EXPECT_EQ("The edge (0, 0) (0, 1) is shared by 400 triangles: 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, ...",
              vLines[0]);
    unsigned long num = 0;
    ASSERT_EQ(1, std::sscanf(vLines[100].c_str(), "At least %lu", &num));
    EXPECT_EQ("At least " + counted(num, "fault") + ", nothing imported, returning NULL", vLines[100]);
    EXPECT_TRUE(num >= 10000 && num <= 400 * 399 / 2 + 3) << num;
}

TEST(ImportMessages, nameEveryFaultWithItsCoordinates) {
    const Soup vSoup = {{0, 0},  {4, 0},        {0, 4},   // 0
                        {1, 0},  {HUGE_VAL, 0}, {0, 1},   // 1: not finite
                        {1, 1},  {0.1, 0.1},    {2, 2},   // 2: no area
                        {4, 0},  {0, 4},        {4, 4},   // 3: clockwise
                        {5, 5},  {4, 0},        {0, 4},   // 4: the third at an edge, over 3
                        {0, 0},  {1, -1},       {2, 0},   // 5: below 0, with half of its edge
                        {10, 0}, {12, 0},       {11, 2}}; // 6
    Constrained c;
    c.kivo.insert({{1, 1}, {0, 2}, {4, 0}, {20, 0.5}});
    c.add({{{13, 1}, {9, 1}}}, CIS_CONSTRAINED_DELAUNAY);
    std::string expected;
    for (const char* line :
         {"Triangle 1 (1, 0) (inf, 0) (0, 1) has a coordinate that is not finite",
          "Triangle 2 (1, 1) (0.10000000000000001, 0.10000000000000001) (2, 2) is degenerate",
          "The edge (0, 4) (4, 0) is shared by 3 triangles: 0, 3, 4",
          "The corner (2, 0) lies inside the edge (0, 0) (4, 0) of triangle 0",
          "The vertex (0, 2) lies inside the edge (0, 0) (0, 4) of triangle 0",
          "The vertex (1, 1) lies inside triangle 0 (0, 0) (4, 0) (0, 4)",
          "Triangle 3 (4, 0) (0, 4) (4, 4) and triangle 4 (5, 5) (4, 0) (0, 4) overlap",
          "The constraint segment (9, 1) (13, 1) crosses the edge (10, 0) (11, 2) of triangle 6",
          "8 faults, nothing imported, returning NULL"})
        expected += label + line + "\n";
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
    expectSaid(label + "Triangle 0 (0, 0) (0, 0) (0, 0) is degenerate\n" + label +
                   "1 fault, nothing imported, returning NULL\n",
               {{0, 0}, {0, 0}, {0, 0}});
    expectSaid(location + "WARNING: vCorners is empty, returning NULL\n", {});
    expectSaid(label + "vCorners does not hold three corners a triangle (4 points), returning NULL\n",
               {{0, 0}, {1, 0}, {0, 1}, {1, 1}});
}
