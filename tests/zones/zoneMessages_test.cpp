#include "tests/support/files.h"
#include "tests/support/zoned.h"

#include <limits>
#include <sstream>

// What is said and written: message lines, reports, drawings and meshes of zones.

using namespace zoned;

namespace {

const std::string prefix = "      [Kivo2D-Message] ";
const std::string noZone =
    prefix + "Kivo_2D::createZone(..), WARNING: No zone created, returning NULL (bVerbose==true)\n";
const std::string noTriangles =
    prefix + "Dt2::createZone, ERROR: called on a triangulation which has no triangles yet. Returning NULL\n";
constexpr ConstraintGraph2* pNoGraph = nullptr;

template<class Call>
std::string said(Call call) {
    const CapturedMessages captured;
    call();
    EXPECT_EQ("", captured.error());
    return captured.output();
}

// The call raises after these lines and the report of the condition.
template<class Call>
void expectRaised(const std::string& lines, const std::string& condition, Call call) {
    const std::string text = said([&] { EXPECT_THROW(call(), KivoException); });
    const std::string start =
        lines + prefix + "Kivo, , ERROR: Condition [ " + condition + " failed ]\n      ";
    EXPECT_EQ(start, text.substr(0, start.size()));
    EXPECT_TRUE(text.find(".cpp:", start.size()) != std::string::npos && text.ends_with("\n")) << text;
}

// A square with a ring in it, and graphs of other kinds.
struct Zones : testing::Test {
    Kivo_2D kivo;
    ConstraintGraph2 *pRing, *pOther, *pOpen, *pPending;
    Zone2* pGlobal;

    void SetUp() override {
        pPending = add(kivo, {{{10, 10}, {11, 11}}, {{11, 11}, {10, 10}}});
        kivo.insert({{0, 0}, {20, 0}, {20, 20}, {0, 20}});
        pRing = add(kivo, square(2, 2, 4));
        pOther = add(kivo, square(8, 8, 1));
        pOpen = add(kivo, {{{1, 15}, {3, 16}}}, false);
        pGlobal = kivo.createZone(pNoGraph, ZL_GLOBAL);
    }
};

} // namespace

TEST(ZoneWithoutTriangles, isRefusedOrEmpty) {
    Kivo_2D kivo;
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(noTriangles + noZone,
                  said([&] { EXPECT_EQ(nullptr, kivo.createZone(pNoGraph, ZL_GLOBAL)); }));
        EXPECT_EQ(noTriangles,
                  said([&] { EXPECT_EQ(nullptr, kivo.createZone(pNoGraph, ZL_INSIDE, false)); }));
        EXPECT_NE("", said([&] { EXPECT_EQ(nullptr, kivo.createZone(Triangles())); }));
        EXPECT_NE("", said([&] { EXPECT_EQ(nullptr, kivo.createParityZone({})); }));
        kivo.insert({{0, 0}, {1, 1}, {2, 2}}); // still no triangle
    }
    const Zone2* const pGrown = kivo.createZone(std::vector<ConstraintGraph2*>(), ZL_GROW, Point2(1, 0.5));
    ASSERT_NE(nullptr, pGrown);
    const std::string warning =
        prefix + "Zone2::getTriangles(), WARNING: is2D() is false, nothing to return\n";
    EXPECT_EQ(warning, said([&] { EXPECT_EQ(Triangles(), trianglesOf(pGrown)); }));
    EXPECT_EQ(warning, said([&] { EXPECT_EQ(0.0, pGrown->getArea2D()); }));
    std::vector<Point2*> vVertices;
    EXPECT_EQ(warning, said([&] { pGrown->getVertices(vVertices); }));
    EXPECT_TRUE(vVertices.empty());
    EXPECT_EQ(warning, said([&] { EXPECT_FALSE(pGrown->getBoundingBox().isValid()); }));
    kivo.insert(Point2(2, 0));
    expectZone(kivo, pGrown, oracle::allTriangles(kivo));
}

TEST_F(Zones, areRefusedByTheirGraphs) {
    EXPECT_EQ(prefix +
                  "Dt::createZone(), ERROR: pConstraintGraph==NULL, but zoneLoc!=ZL_GLOBAL or ZL_RESULT. "
                  "Returning NULL\n" +
                  noZone,
              said([&] { EXPECT_EQ(nullptr, kivo.createZone(pNoGraph, ZL_INSIDE)); }));
    EXPECT_EQ(prefix + "Dt2::createZone(), WARNING: The constraint graph is not oriented, returning NULL\n" +
                  noZone,
              said([&] { EXPECT_EQ(nullptr, kivo.createZone(pOpen, ZL_OUTSIDE)); }));
    EXPECT_EQ(prefix +
                  "Dt2::createZone(), ERROR: This overloaded version of createZone accepts only ZL_GROW as "
                  "zoneLocation. Returning NULL\n" +
                  noZone,
              said([&] { EXPECT_EQ(nullptr, kivo.createZone(pRing, ZL_INSIDE, Point2(3, 3))); }));
    for (const int location : {0, 4, 5, 6, 7})
        expectRaised("", "pConstraintGraph==NULL", [&] { kivo.createZone(pRing, ZoneLocation(location)); });
    for (const int location : {3, 9})
        expectRaised("zoneLoc=" + std::to_string(location) + "\n" + prefix +
                         "Zone2::Zone2(..), ERROR: The ZoneLocation for this constructor can only be one of "
                         "ZL_INSIDE, ZL_OUTSIDE, ZL_BOUNDED\n",
                     "false", [&] { kivo.createZone(pRing, ZoneLocation(location)); });
    Kivo_2D foreign;
    ConstraintGraph2* const pForeign = add(foreign, square(0, 0, 1));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<std::function<Zone2*()>> vBad = {
        [&] {
            return kivo.createZone({pRing, pNoGraph}, ZL_INSIDE);
        },
        [&] {
            return kivo.createZone({pRing, pOpen}, ZL_INSIDE);
        },
        [&] {
            return kivo.createZone({pRing, pForeign}, ZL_INSIDE);
        },
        [&] {
            return kivo.createZone({pRing, pOther}, ZL_BOUNDED);
        },
        [&] { return kivo.createZone(std::vector<ConstraintGraph2*>(), ZL_INSIDE); },
        [&] { return kivo.createZone(pForeign, ZL_INSIDE); },
        [&] { return kivo.createZone(pNoGraph, ZL_GROW, Point2(1, 1)); },
        [&] { return kivo.createZone(pRing, ZL_GROW, Point2(1, nan)); },
        [&] {
            return kivo.createZone(Triangles{nullptr, nullptr});
        },
        [&] { return kivo.createZone(oracle::allTriangles(foreign)); },
        [&] {
            return kivo.createParityZone({pRing, pNoGraph});
        },
        [&] { return kivo.createParityZone({pForeign}); },
        [&] {
            return kivo.createEnclosedZone({pRing}, {{3, 3}});
        },
        [&] { return kivo.createParityZone({pOpen}); }};
    for (const auto& create : vBad) {
        const std::string text = said([&] { EXPECT_EQ(nullptr, create()); });
        EXPECT_TRUE(text.ends_with(noZone)) << &create - vBad.data() << text;
    }
    expectZone(kivo, kivo.createParityZone({pRing}, {{nan, 3}, {99, 99}}),
               trianglesOf(kivo.createZone(pRing, ZL_INSIDE)));
}

TEST_F(Zones, sayWhatTheyLack) {
    const Zone2* const pEmpty = kivo.createZone(pPending, ZL_BOUNDED);
    expectRaised(prefix + "Zone2::getTriangles(), ERROR: An inside zone is empty - have you called "
                          "Kivo_2D::applyConstraintsAndZones()?\n",
                 "!vWorkspace.empty()", [&] { pEmpty->getNumberOfTriangles(); });
    EXPECT_EQ(
        prefix + "growZoneArea(), WARNING: pVtx is outside the convex hull of the triangulation, no "
                 "triangles returned\n",
        said([&] { EXPECT_EQ(0u, kivo.createZone(pOpen, ZL_GROW, Point2(30, 1))->getNumberOfTriangles()); }));
    Zone2* const pTwo = kivo.createZone({pRing, pOther}, ZL_INSIDE);
    EXPECT_EQ(prefix + "Zone2::getConstraintGraph(), WARNING: There is more than one constraint graph, use "
                       "Zone2::getConstraintGraphs() instead. Returning NULL\n",
              said([&] { EXPECT_EQ(nullptr, pTwo->getConstraintGraph()); }));
    std::vector<ConstraintGraph2*> vGraphs = {pOpen};
    pTwo->getConstraintGraphs(vGraphs);
    EXPECT_EQ((std::vector{pRing, pOther}), vGraphs);
    EXPECT_EQ(2u, pTwo->numberOfConstraintGraphs());
    EXPECT_EQ(pRing, kivo.createZone(pRing, ZL_OUTSIDE)->getConstraintGraph());
    EXPECT_EQ("", said([&] { EXPECT_EQ(nullptr, pGlobal->getConstraintGraph()); }));
    EXPECT_EQ(kivo.getImpl(), pGlobal->getDelaunayTriangulation());
}

TEST_F(Zones, areDeletedOnce) {
    Kivo_2D foreign;
    foreign.insert({{0, 0}, {1, 0}, {0, 1}});
    const std::string warning =
        prefix + "Dt2::deleteZone(..), WARNING: trying to delete a non-existing zone\n";
    EXPECT_EQ("", said([&] { kivo.deleteZone(pGlobal); }));
    EXPECT_EQ(warning, said([&] { kivo.deleteZone(pGlobal); }));
    EXPECT_EQ(warning, said([&] { kivo.deleteZone(nullptr); }));
    EXPECT_EQ(warning, said([&] { kivo.deleteZone(foreign.createZone(pNoGraph, ZL_GLOBAL)); }));
}

TEST_F(Zones, areCombinedWithTheirLikeOnly) {
    Kivo_2D foreign;
    foreign.insert({{0, 0}, {1, 0}, {0, 1}});
    Zone2* const pForeign = foreign.createZone(pNoGraph, ZL_GLOBAL);
    for (const auto combine : {zoneUnion, zoneIntersection, zoneDifference, zoneSymmetricDifference}) {
        const std::string origin = combine == zoneUnion ? "Zone2::zoneUnion(...)" : "zoneUnion(...)";
        EXPECT_EQ(prefix + origin +
                      ", ERROR: The zones must belong to the same triangulation! Returning NULL\n",
                  said([&] { EXPECT_EQ(nullptr, combine(pGlobal, pForeign)); }));
        for (const auto& [p0, p1] :
             {std::pair(pGlobal, (Zone2*)nullptr), std::pair((Zone2*)nullptr, pGlobal)})
            EXPECT_NE(std::string::npos,
                      said([&, a = p0, b = p1] { EXPECT_EQ(nullptr, combine(a, b)); }).find("ERROR"));
    }
}

TEST_F(Zones, arePeeledAndConvertedWithWords) {
    struct : UserPredicateT {
        bool bAnswer = false;
        bool operator()(const Triangle2*) override { return bAnswer; }
    } predicate;
    Zone2 *const pRight = kivo.createZone(pRing, ZL_INSIDE), *const pNone = zoneDifference(pGlobal, pGlobal);
    for (const bool bVerbose : {true, false}) {
        EXPECT_EQ(prefix + "peelOffIf(), WARNING: Input zone is NULL, returning NULL\n",
                  said([&] { EXPECT_EQ(nullptr, peelOffIf(nullptr, &predicate, bVerbose)); }));
        EXPECT_EQ(prefix + "peelOffIf(), WARNING: Input zone is empty, returning NULL\n",
                  said([&] { EXPECT_EQ(nullptr, peelOffIf(pNone, &predicate, bVerbose)); }));
        EXPECT_NE("", said([&] { EXPECT_EQ(nullptr, peelOffIf(pRight, nullptr, bVerbose)); }));
    }
    const std::string numbers = " numT=" + std::to_string(pRight->getNumberOfTriangles()) + " area2D=16\n";
    const std::string before = "\nZone2::peelOffIf(), original Zone:" + numbers;
    EXPECT_EQ(before + "Output Zone:" + numbers, said([&] { peelOffIf(pRight, &predicate, true); }));
    EXPECT_EQ("", said([&] { peelOffIf(pRight, &predicate, false); }));
    predicate.bAnswer = true;
    EXPECT_EQ(before, said([&] { EXPECT_EQ(nullptr, peelOffIf(pRight, &predicate, true)); }));
    EXPECT_EQ(prefix + "Zone2::convertToBoundedZone(), WARNING: No triangles available, returning NULL\n",
              said([&] { EXPECT_EQ(nullptr, pNone->convertToBoundedZone()); }));
}

TEST(ZoneOfTriangles, withoutRoomForAStartPointIsRefused) {
    Kivo_2D kivo;
    const double u = 0x1p-52;
    kivo.insert({{1, 1}, {1 + u, 1}, {1, 1 + u}}); // the barycentre is rounded to a corner
    const Triangles vAll = oracle::allTriangles(kivo);
    ASSERT_EQ(1u, vAll.size());
    std::ostringstream triangle;
    triangle << *vAll[0];
    const std::string text = said([&] { EXPECT_EQ(nullptr, kivo.createZone(vAll)); });
    const std::string start =
        prefix + "Dt2::createZone(), WARNING: A connected component of the zone is almost degenerate:\n";
    const std::string end =
        prefix +
        "Dt2::createZone, ERROR: An almost degenerate part of the zone has no start point "
        "for zone growing!\n" +
        noZone;
    EXPECT_TRUE(text.starts_with(start + "Unable to handle the triangle " + triangle.str())) << text;
    EXPECT_TRUE(text.ends_with(end)) << text;
    for (int i = 0; i < 3; ++i)
        EXPECT_FALSE(kivo.isConstraint(vAll[0], i));
    kivo.insert({{-3, -3}, {9, -2}, {2, 9}}); // a part with room is kept
    Triangles vTwo = {kivo.locate({1 + u, 1}), kivo.locate({-2.9, -2.9})};
    const CapturedMessages captured;
    EXPECT_NE(nullptr, kivo.createZone(vTwo));
}

TEST_F(Zones, printStatistics) {
    const std::string text = said([&] { kivo.createZone(pRing, ZL_INSIDE)->statistics("ring"); });
    EXPECT_EQ(0u,
              text.rfind("\n\n\n********* ZONE STATISTICS (ring) **********\n\nNumber of triangles: 2\n", 0))
        << text;
    EXPECT_NE(std::string::npos, text.find("INTERIOR ANGLES"));
}

TEST_F(Zones, areDrawn) {
    const Zone2* const pInside = kivo.createZone(pRing, ZL_INSIDE);
    const std::string path = pathOf("zone.ps");
    const auto draw = [&](auto drawIt) {
        said([&] {
            Visualizer2 vis(path);
            vis.addObject(trianglesOf(pInside), Color(0.94, 0.9, 0.55, 0.01, true));
            drawIt(vis);
            vis.writeFile();
        });
        return readFile(path);
    };
    for (const bool bWithConstraints : {true, false}) {
        const std::string expected = draw([&](Visualizer2& vis) { kivo.show(&vis, bWithConstraints); });
        said([&] { pInside->show(path, true, bWithConstraints); });
        EXPECT_EQ(expected, readFile(path));
        // Own segments thick, others thin, in whatever order.
        const auto linesOf = [](const std::string& text) {
            std::istringstream stream(text);
            std::multiset<std::string> s;
            for (std::string line; std::getline(stream, line);)
                s.insert(line);
            return s;
        };
        const std::string sparse = draw([&](Visualizer2& vis) {
            for (const Segment2& segment : oracle::leavesOf({pRing}))
                vis.addObject(segment, Color(CRED, bWithConstraints ? 0.5F : 0.001F, false));
            if (!bWithConstraints) return;
            for (const Segment2& segment : oracle::leavesOf({pOther, pOpen}))
                vis.addObject(segment, Color(CRED, 0.001F, false));
            vis.addObject(Segment2({10, 10}, {11, 11}), Color(CRED, 0.001F, false));
        });
        said([&] { pInside->show(path, false, bWithConstraints); });
        EXPECT_EQ(linesOf(sparse).size(), linesOf(readFile(path)).size());
        EXPECT_EQ(linesOf(sparse).count("0.5\tsetlinewidth"),
                  linesOf(readFile(path)).count("0.5\tsetlinewidth"));
        EXPECT_EQ(linesOf(sparse).count("0.001\tsetlinewidth"),
                  linesOf(readFile(path)).count("0.001\tsetlinewidth"));
    }
    EXPECT_NE(std::string::npos, said([&] { pInside->debug("x"); }).find("This is Zone2::debug()"));
    EXPECT_NE(std::string::npos,
              readFile("zone2_debug_x.ps").find("0.3\t0.3\t0.3\tsetrgbcolor\n0.05\tsetlinewidth"));
    const std::string none = pathOf("none.ps");
    EXPECT_NE("", said([&] { zoneDifference(pGlobal, pGlobal)->show(none, true, true); }));
    said([&] { EXPECT_THROW(kivo.createZone(pPending, ZL_INSIDE)->show(none, true, true), KivoException); });
    EXPECT_NE("", said([&] { pInside->show(static_cast<Visualizer2*>(nullptr), true, true); }));
    EXPECT_FALSE(std::ifstream(none).is_open());
}

TEST(WriteObj, writesThreePointsAndATrianglePointByPoint) {
    Kivo_2D kivo;
    const std::string path = pathOf("three.obj");
    EXPECT_EQ(prefix +
                  "Dt2::show(), ERROR: The triangulation is not full dimensional yet, no visualization\n",
              said([&] { EXPECT_FALSE(kivo.writeObj(path)); }));
    kivo.insert({{0, 0}, {0.1, -2}, {1e300, 5}});
    EXPECT_EQ("", said([&] { EXPECT_TRUE(kivo.writeObj(path)); }));
    const std::string text = readFile(path);
    for (const char* line :
         {"v 0 0 0 \n", "v 0.10000000000000000555 -2 0 \n", "v 1.0000000000000000525e+300 5 0 \n"})
        EXPECT_NE(std::string::npos, text.find(line)) << text;
    EXPECT_TRUE(text.ends_with("f 1 2 3\n")) << text;
}

TEST_F(Zones, writeTheirTrianglesAsObjects) {
    const Zone2* const pOutside = kivo.createZone(pRing, ZL_OUTSIDE);
    const std::string path = pathOf("zone.obj");
    EXPECT_EQ("", said([&] { EXPECT_TRUE(kivo.writeObj(path, pOutside)); }));
    std::vector<Point2*> vVertices;
    pOutside->getVertices(vVertices);
    std::string expected;
    for (const Point2* p : vVertices) {
        std::ostringstream line;
        line.precision(20);
        line << "v " << p->x() << " " << p->y() << " 0 \n";
        expected += line.str();
    }
    for (const Triangle2* pT : trianglesOf(pOutside)) {
        expected += "f";
        for (int i = 0; i < 3; ++i)
            expected +=
                " " + std::to_string(1 + (std::find(vVertices.begin(), vVertices.end(), pT->getCorner(i)) -
                                          vVertices.begin()));
        expected += "\n";
    }
    EXPECT_EQ(expected, readFile(path));
    Kivo_2D foreign;
    foreign.insert({{0, 0}, {1, 0}, {0, 1}});
    Zone2* const pDead = kivo.createZone(pNoGraph, ZL_GLOBAL);
    kivo.deleteZone(pDead);
    for (const Zone2* pBad : {(const Zone2*)nullptr, (const Zone2*)foreign.createZone(pNoGraph, ZL_GLOBAL),
                              (const Zone2*)pDead}) {
        MeshArrays arrays;
        EXPECT_NE("", said([&] { EXPECT_FALSE(kivo.writeObj(pathOf("bad.obj"), pBad)); }));
        EXPECT_NE("", said([&] { kivo.getMeshArrays(arrays, pBad); }));
        EXPECT_TRUE(arrays.vCorners.empty());
    }
    EXPECT_FALSE(std::ifstream(pathOf("bad.obj")).is_open());
}
