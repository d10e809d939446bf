#include "tests/support/files.h"
#include "tests/support/zoned.h"

#include <cfloat>
#include <filesystem>
#include <limits>

// Figures of zones against a second opinion in long double, and what is said and drawn.

using namespace zoned;

namespace {

using Values = std::vector<long double>;

// The measures of triangles, one value each.
struct Plain {
    Values vAngles, vSmallest, vAreas, vLengths, vAspects;
    std::size_t numVertices = 0;
    std::map<const Triangle2*, long double> mSmallest;

    explicit Plain(const Triangles& vTriangles) {
        std::set<std::pair<Point2*, Point2*>> sEdges;
        std::set<Point2*> sVertices;
        for (const Triangle2* pT : vTriangles) {
            long double aX[3], aY[3], longest = 0, smallest = 180;
            for (int i = 0; i < 3; ++i) {
                Point2 *const p = pT->getCorner((i + 1) % 3), *const q = pT->getCorner((i + 2) % 3);
                aX[i] = static_cast<long double>(q->x()) - static_cast<long double>(p->x());
                aY[i] = static_cast<long double>(q->y()) - static_cast<long double>(p->y());
                const long double length = std::hypot(aX[i], aY[i]);
                longest = std::max(longest, length);
                sVertices.insert(p);
                if (sEdges.insert(std::minmax(p, q)).second) vLengths.push_back(length);
            }
            const long double cross = std::max(0.0L, aX[0] * aY[1] - aY[0] * aX[1]);
            for (int i = 0; i < 3; ++i) {
                const int j = (i + 1) % 3, k = (i + 2) % 3;
                const long double angle =
                    std::atan2(cross, -(aX[j] * aX[k] + aY[j] * aY[k])) * 180 / std::acos(-1.0L);
                vAngles.push_back(angle);
                smallest = std::min(smallest, angle);
            }
            mSmallest[pT] = smallest;
            vSmallest.push_back(smallest);
            vAreas.push_back(cross / 2);
            vAspects.push_back(longest * longest / cross);
        }
        numVertices = sVertices.size();
    }
};

long double sum(const Values& v) {
    long double total = 0;
    for (const long double value : v)
        total += value;
    return total;
}

void expectNear(long double expected, double actual) {
    const long double limited = std::min(expected, static_cast<long double>(DBL_MAX));
    EXPECT_TRUE(std::fabs(limited - actual) <= 1e-9L * limited + static_cast<long double>(DBL_MIN))
        << static_cast<double>(limited) << " " << actual;
}

void expectDistribution(const Values& v, const QualityDistribution& d) {
    ASSERT_EQ(v.size(), d.count);
    ASSERT_EQ(d.vCounts.size() + 1, d.vLimits.size());
    expectNear(*std::min_element(v.begin(), v.end()), d.smallest);
    expectNear(*std::max_element(v.begin(), v.end()), d.largest);
    expectNear(sum(v) / static_cast<long double>(v.size()), d.mean);
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < d.vCounts.size(); ++i) {
        const long double low = d.vLimits[i], high = d.vLimits[i + 1], rounding = 1e-9L;
        ASSERT_LT(low, high);
        std::uint64_t certain = 0, possible = 0;
        for (const long double each : v) {
            const long double value = std::min(each, static_cast<long double>(DBL_MAX));
            certain += value > low + low * rounding && value < high - high * rounding;
            possible += value >= low - low * rounding && value <= high + high * rounding;
        }
        EXPECT_LE(certain, d.vCounts[i]) << d.vLimits[i];
        EXPECT_GE(possible, d.vCounts[i]) << d.vLimits[i];
        total += d.vCounts[i];
    }
    EXPECT_EQ(d.count, total);
}

void expectPowersOfTwo(const QualityDistribution& d) {
    EXPECT_LE(d.vCounts.size(), 40u);
    EXPECT_TRUE(d.vLimits.front() <= d.smallest && d.largest <= d.vLimits.back());
    for (const double limit : d.vLimits) {
        int exponent = 0;
        EXPECT_TRUE(limit == 0 || limit == DBL_MAX || std::frexp(limit, &exponent) == 0.5) << limit;
    }
}

ZoneQuality quiet(const Kivo_2D& kivo, const Zone2* pZone, const std::string& name = "") {
    const CapturedMessages captured;
    return kivo.checkZoneQuality(pZone, name);
}

void expectQuality(const Kivo_2D& kivo, const Zone2* pZone) {
    Triangles vTriangles;
    pZone->getTriangles(vTriangles);
    vTriangles = sorted(vTriangles);
    vTriangles.erase(std::unique(vTriangles.begin(), vTriangles.end()), vTriangles.end());
    const Plain plain(vTriangles);
    const ZoneQuality quality = quiet(kivo, pZone);
    EXPECT_EQ(vTriangles.size(), quality.numTriangles);
    EXPECT_EQ(plain.numVertices, quality.numVertices);
    EXPECT_EQ(plain.vLengths.size(), quality.numEdges);
    expectNear(sum(plain.vAreas), quality.totalArea);
    expectDistribution(plain.vAngles, quality.angles);
    expectDistribution(plain.vSmallest, quality.smallestAngles);
    expectDistribution(plain.vAreas, quality.areas);
    expectDistribution(plain.vLengths, quality.edgeLengths);
    expectDistribution(plain.vAspects, quality.aspectRatios);
    expectPowersOfTwo(quality.areas);
    expectPowersOfTwo(quality.edgeLengths);
    const Triangles& vWorst = quality.vWorst;
    ASSERT_EQ(std::min<std::size_t>(100, vTriangles.size()), vWorst.size());
    EXPECT_EQ(vWorst.size(), std::set<Triangle2*>(vWorst.begin(), vWorst.end()).size());
    Values vExpected = plain.vSmallest;
    std::sort(vExpected.begin(), vExpected.end());
    for (std::size_t i = 0; i < vWorst.size(); ++i)
        expectNear(vExpected[i], static_cast<double>(plain.mSmallest.at(vWorst[i])));
    EXPECT_EQ(vWorst, quiet(kivo, pZone).vWorst);
}

} // namespace

TEST(ZoneQuality, agreesWithASecondOpinionAtAnyScaleAndPlace) {
    const struct {
        double factor, shift;
    } aPlaces[] = {{1, 0},         {1, 5e6},   {DBL_MAX / 16, 0}, {1e300, 0}, {1e-300, 0},
                   {0x1p-1060, 0}, {1e150, 0}, {1e-150, 0},       {1e-10, 1}};
    doubles::Rng rng(1);
    for (const auto& place : aPlaces) {
        for (int round = 0; round < 4; ++round) {
            const auto moved = [&](const Point2& p) {
                return Point2(place.factor * p.x() + place.shift, place.factor * p.y() - place.shift);
            };
            Points vPoints = randomPoints(rng, 300, -12, 12);
            // Triangles of very different sizes.
            for (int i = 0; i < 40 * round; ++i) {
                const double r = std::pow(0.5, i / 4), a = i;
                vPoints.emplace_back(r * std::cos(a), r * std::sin(a));
            }
            Segments vInner = star(rng, 9, {0.5, 0.25}, 6), vOuter = star(rng, 30, {0, 0}, 10);
            for (Point2& p : vPoints)
                p = moved(p);
            for (Segments* pSegments : {&vInner, &vOuter})
                for (Segment2& s : *pSegments)
                    s = Segment2(moved(s.getSrc()), moved(s.getTrg()));
            Kivo_2D kivo;
            kivo.insert(vPoints);
            ConstraintGraph2 *const pInner = add(kivo, vInner), *const pOuter = add(kivo, vOuter);
            Zone2* const pInside = kivo.createZone(pOuter, ZL_INSIDE);
            Zone2* const pOutside = kivo.createZone(pInner, ZL_OUTSIDE);
            const Point2 start = moved({0.5, 0.25});
            for (const Zone2* pZone :
                 {pInside, pOutside, kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL),
                  kivo.createParityZone({pInner, pOuter}), kivo.createZone(pInner, ZL_GROW, start),
                  zoneUnion(pInside, pOutside), zoneSymmetricDifference(pInside, pOutside)})
                expectQuality(kivo, pZone);
        }
    }
}

TEST(ZoneQuality, staysFiniteForTrianglesWithoutAreaAndOfAllSizesAtOnce) {
    doubles::Rng rng(2);
    for (int round = 0; round < 200; ++round) {
        Kivo_2D kivo;
        Points vPoints;
        for (int i = 0; i < 30; ++i) {
            const double x = doubles::anyFinite(rng), y = doubles::anyFinite(rng);
            vPoints.emplace_back(x, round % 2 == 0 ? y : round % 4 == 1 ? x : i * 0x1p-1074);
        }
        kivo.insert(vPoints);
        kivo.insert({{1, 0}, {-1, 0}, {0, 0x1p-1070}, {DBL_MAX, -DBL_MAX}, {-DBL_MAX, DBL_MAX}});
        const Zone2* const pZone = kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL);
        const ZoneQuality quality = quiet(kivo, pZone);
        const QualityDistribution* const aAll[] = {&quality.angles, &quality.smallestAngles, &quality.areas,
                                                   &quality.edgeLengths, &quality.aspectRatios};
        for (const QualityDistribution* pD : aAll) {
            EXPECT_TRUE(std::isfinite(pD->smallest) && std::isfinite(pD->largest));
            EXPECT_TRUE(pD->smallest >= 0 && pD->smallest <= pD->mean && pD->mean <= pD->largest);
            std::uint64_t total = 0;
            for (const std::uint64_t num : pD->vCounts)
                total += num;
            EXPECT_EQ(pD->count, total);
        }
        EXPECT_LE(quality.angles.largest, 180);
        EXPECT_EQ(kivo.numberOfPoints(), quality.numVertices);
        EXPECT_EQ(quality.numTriangles + quality.numVertices - 1, quality.numEdges);
    }
}

TEST(ZoneQuality, listsEquallyBadTrianglesInTheOrderOfRecords) {
    Kivo_2D kivo;
    Points vPoints;
    for (int i = 0; i < 2500; ++i)
        vPoints.emplace_back(i % 50, i / 50);
    kivo.insert(vPoints);
    ConstraintGraph2* const pRing = add(kivo, square(1, 1, 40));
    for (const Zone2* pZone : {kivo.createZone(pRing, ZL_INSIDE), kivo.createZone(pRing, ZL_OUTSIDE),
                               kivo.createZone(pRing, ZL_GROW, Point2(9.5, 9.25))}) {
        Triangles vTriangles = trianglesOf(pZone);
        vTriangles.resize(100);
        const ZoneQuality quality = quiet(kivo, pZone);
        EXPECT_EQ(vTriangles, quality.vWorst);
        EXPECT_EQ(45, quality.angles.smallest);
        EXPECT_EQ(90, quality.angles.largest);
        EXPECT_EQ(2 * quality.numTriangles, quality.angles.vCounts[4]);
        EXPECT_EQ(quality.numTriangles, quality.angles.vCounts[9]);
        EXPECT_EQ(quality.numTriangles, quality.smallestAngles.vCounts[9]);
        EXPECT_EQ(45, quality.smallestAngles.mean);
        EXPECT_EQ(2, quality.aspectRatios.mean);
        EXPECT_EQ(quality.numTriangles, quality.aspectRatios.vCounts[3]);
    }
}

TEST(ZoneQuality, isSaidAndDrawn) {
    Kivo_2D kivo;
    kivo.insert({{0, 0}, {4, 0}, {4, 3}, {0, 3}, {1, 1}});
    const Zone2* const pZone = kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL);
    const std::string stars25(25, '*'), stars50(50, '*');
    std::string expected = "\n\n\n********* ZONE QUALITY () **********\n\n"
                           "Number of triangles: 4\nNumber of vertices:  5\nNumber of edges:     8\n"
                           "Total area:          12\n\n"
                           "INTERIOR ANGLES (degrees)\n  18.4349 to 116.565, mean 60\n";
    const int aAngles[] = {0, 1, 1, 1, 2, 2, 1, 1, 1, 0, 1, 1, 0, 0, 0, 0, 0, 0};
    char line[100];
    for (int i = 0; i < 18; ++i) {
        std::snprintf(line, sizeof line, "  %3d - %3d: %10d ", 10 * i, 10 * (i + 1), aAngles[i]);
        expected += line + stars50.substr(0, static_cast<std::size_t>(25 * aAngles[i])) + "\n";
    }
    expected += "\nSMALLEST ANGLES OF TRIANGLES (degrees)\n  18.4349 to 52.125, mean 32.7038\n";
    for (int i = 0; i < 12; ++i) {
        const bool bOne = i == 3 || i == 5 || i == 6 || i == 10;
        std::snprintf(line, sizeof line, "  %3d - %3d: %10d ", 5 * i, 5 * (i + 1), bOne);
        expected += line + (bOne ? stars50 : "") + "\n";
    }
    expected += "\nAREAS\n  1.5 to 4.5, mean 3\n"
                "             1 -            2:          1 " +
                stars25 +
                "\n"
                "             2 -            4:          1 " +
                stars25 +
                "\n"
                "             4 -            8:          2 " +
                stars50 +
                "\n"
                "\nEDGE LENGTHS\n  1.41421 to 4, mean 3.05226\n"
                "             1 -            2:          1 **********\n"
                "             2 -            4:          5 " +
                stars50 +
                "\n"
                "             4 -            8:          2 ********************\n"
                "\nASPECT RATIOS (longest edge by the height on it)\n  1.44444 to 4, mean 2.61111\n"
                "             1 -         1.25:          0 \n"
                "          1.25 -          1.5:          1 " +
                stars25 +
                "\n"
                "           1.5 -            2:          0 \n"
                "             2 -            3:          1 " +
                stars25 +
                "\n"
                "             3 -            5:          2 " +
                stars50 +
                "\n"
                "             5 -           10:          0 \n"
                "            10 -          100:          0 \n"
                "           100 -         1000:          0 \n"
                "          1000 -        10000:          0 \n"
                "         10000 - 1.79769e+308:          0 \n";
    std::remove("_quality.ps");
    std::remove("tiny_quality.ps");
    {
        const CapturedMessages captured;
        kivo.checkZoneQuality(pZone, "");
        EXPECT_EQ(expected, captured.output());
        EXPECT_EQ("", captured.error());
    }
    EXPECT_FALSE(std::filesystem::exists("_quality.ps") || std::filesystem::exists("tiny_quality.ps"));
    quiet(kivo, pZone, "tiny");
    const std::string drawing = readFile("tiny_quality.ps");
    EXPECT_NE(std::string::npos,
              drawing.find("The 4 triangles with the smallest angles of 4: from 18.4349 degrees"));
    quiet(kivo, pZone, "tiny");
    EXPECT_EQ(drawing, readFile("tiny_quality.ps"));
}

TEST(ZoneQuality, isZeroForWhatIsNoZoneWithTriangles) {
    const auto expectNothing = [](const Kivo_2D& kivo, const Zone2* pZone, const std::string& warning) {
        const CapturedMessages captured;
        const ZoneQuality quality = kivo.checkZoneQuality(pZone, "nothing");
        EXPECT_EQ("      [Kivo2D-Message] Kivo_2D::checkZoneQuality(), WARNING: " + warning + "\n",
                  captured.output() + captured.error());
        EXPECT_EQ(0u, quality.numTriangles + quality.numVertices + quality.numEdges + quality.vWorst.size());
        for (const QualityDistribution* pD : {&quality.angles, &quality.smallestAngles, &quality.areas,
                                              &quality.edgeLengths, &quality.aspectRatios}) {
            EXPECT_TRUE(pD->count == 0 && pD->smallest == 0 && pD->largest == 0 && pD->mean == 0);
            EXPECT_TRUE(pD->vLimits.empty() && pD->vCounts.empty());
        }
        EXPECT_FALSE(std::filesystem::exists("nothing_quality.ps"));
    };
    constexpr ConstraintGraph2* pNoGraph = nullptr;
    Kivo_2D kivo, other;
    kivo.insert({{0, 0}, {1, 0}, {0, 1}});
    expectNothing(kivo, nullptr, "pZone==NULL, nothing to do");
    Zone2* const pGlobal = kivo.createZone(pNoGraph, ZL_GLOBAL);
    expectNothing(other, pGlobal, "pZone is no zone of this triangulation");
    expectNothing(kivo, zoneDifference(pGlobal, pGlobal), "The zone has no triangles, nothing to measure");
    kivo.deleteZone(pGlobal);
    expectNothing(kivo, pGlobal, "pZone is no zone of this triangulation");
    const Zone2* const pGrown = other.createZone(std::vector<ConstraintGraph2*>(), ZL_GROW, Point2(0, 0));
    expectNothing(other, pGrown, "is2D() is false, nothing to measure");
}
