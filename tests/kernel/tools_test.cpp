#include "kernel/tools.h"

#include "KivoException.h"
#include "kernel/tools_rings.h"
#include "tests/oracle/exact.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <numeric>
#include <set>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

namespace {

Point2 randomPoint(Rng& rng, double low = -1, double high = 1) {
    const double x = doubles::uniform(rng, low, high);
    return {x, doubles::uniform(rng, low, high)};
}

bool isWithinUlp(double value, const mpq_class& exact) {
    const double magnitude = std::fabs(value);
    return abs(mpq_class(value) - exact) <=
           mpq_class(std::nextafter(magnitude, DBL_MAX)) - mpq_class(magnitude);
}

} // namespace

// ---- points and lines
// ---------------------------------------------------------------------------------------

// Two points inside lattice cells are off by a step, so that touching ones come apart or cross.
TEST(intersectionCoords, areTheOnePointThatSegmentsShare) {
    CapturedMessages captured;
    Rng rng(42);
    int aCount[3] = {0, 0, 0};
    for (int round = 0; round < 20000; ++round) {
        Points v;
        for (int i = 0; i < 4; ++i)
            v.emplace_back(doubles::below(rng, 6) * 0.1, doubles::below(rng, 6) * 0.1);
        if (round % 2 == 0) v[3] = doubles::jittered(rng, v[3], 1);
        const int meeting = oracle::meeting(v[0], v[1], v[2], v[3]);
        const bool bPoints = v[0] == v[1] || v[2] == v[3];
        ++aCount[meeting];
        const auto p = getIntersectionCoordsNoRounding(v[0], v[1], v[2], v[3]);
        if (meeting == 0) {
            ASSERT_FALSE(p.has_value()) << doubles::hex(v);
        } else if (meeting == 1 && bPoints) {
            ASSERT_EQ(*p, v[0] == v[1] ? v[0] : v[2]) << doubles::hex(v);
        } else if (meeting == 1 && p) {
            ASSERT_TRUE((*p == v[0] || *p == v[1]) && (*p == v[2] || *p == v[3])) << doubles::hex(v);
        }
        if (meeting < 2) continue;
        const oracle::RationalPoint exact = oracle::lineIntersection(v[0], v[1], v[2], v[3]);
        ASSERT_TRUE(isWithinUlp(p->x(), exact.x) && isWithinUlp(p->y(), exact.y)) << doubles::hex(v);
        for (const Point2& end : v) // an end that is hit comes back unrounded
            ASSERT_TRUE(exact.x != end.x() || exact.y != end.y() || *p == end) << doubles::hex(v);
    }
    for (const int count : aCount)
        EXPECT_GT(count, 100);
    EXPECT_EQ(*getIntersectionCoordsNoRounding({0, 0}, {1, 1}, {2, 2}, {1, 1}), Point2(1, 1));
    EXPECT_NE(
        captured.output().find("      [Kivo2D-Message] getIntersectionCoordsNoRounding(), WARNING: has been "
                               "called for collinear segments\n"),
        std::string::npos);
}

TEST(footPoint, isNearestOnTheLineAtEverySize) {
    EXPECT_EQ(getFootPoint({1, 0}, {0, 0}, {1, 1}), Point2(0.5, 0.5));
    EXPECT_EQ(getFootPoint({7, 3}, {2, -1}, {4, -1}), Point2(7, -1));
    EXPECT_EQ(getFootPoint({7, 3}, {2, 5}, {2, 5}), Point2(2, 5));
    EXPECT_EQ(getPointLineDistance({7, 3}, {2, -1}, {4, -1}), 4);
    EXPECT_EQ(getPointLineDistance({5, 9}, {2, 5}, {2, 5}), 5);
    EXPECT_EQ(getPointLineDistance({0.3, 0.3}, {0.1, 0.1}, {0.7, 0.7}), 0);
    EXPECT_NEAR(getPointLineDistance({DBL_MAX, 0}, {-DBL_MAX, -DBL_MAX}, {DBL_MAX, DBL_MAX}) / DBL_MAX,
                std::sqrt(0.5), 1e-15);
    Rng rng(43);
    for (int round = 0; round < 3000; ++round) {
        const Points v = {randomPoint(rng), randomPoint(rng), randomPoint(rng)};
        const Point2 foot = getFootPoint(v[0], v[1], v[2]);
        const Vector2 along = normalize(v[2] - v[1]);
        ASSERT_NEAR((foot - v[0]) * along, 0, 1e-15) << doubles::hex(v);
        ASSERT_NEAR(getPointLineDistance(foot, v[1], v[2]), 0, 1e-15) << doubles::hex(v);
        const double distance = getPointLineDistance(v[0], v[1], v[2]);
        ASSERT_NEAR(distance, (foot - v[0]).length(), 2e-15) << doubles::hex(v);
        for (const int exponent : {-950, -500, 500, 1000, 1021}) {
            const Points s = doubles::scaled(v, exponent);
            const Point2 scaledFoot = getFootPoint(s[0], s[1], s[2]);
            ASSERT_NEAR(std::ldexp(scaledFoot.x(), -exponent), foot.x(), 1e-15)
                << exponent << doubles::hex(v);
            ASSERT_NEAR(std::ldexp(scaledFoot.y(), -exponent), foot.y(), 1e-15)
                << exponent << doubles::hex(v);
            ASSERT_NEAR(std::ldexp(getPointLineDistance(s[0], s[1], s[2]), -exponent), distance, 1e-15);
        }
    }
}

TEST(centerWithShift, staysBetweenTheEndsAndOnSimpleSlopes) {
    EXPECT_EQ(centerWithShift({0, 0}, {1, 3}), Point2(0.5, 1.5));
    EXPECT_EQ(centerWithShift({1e308, -1e308}, {1.5e308, -1.5e308}), Point2(1.25e308, -1.25e308));
    Rng rng(44);
    int numShifted = 0;
    for (int round = 0; round < 20000; ++round) {
        const bool bSlope = round % 2 == 0;
        Point2 a = round % 5 == 0 ? doubles::anyPoints(rng, 1)[0] : randomPoint(rng, 0, 16);
        Point2 b = round % 3 == 0 ? doubles::jittered(rng, a, 4) : randomPoint(rng, 0, 16);
        if (bSlope) { // in last bits, so that no mantissa has room for half a bit
            const auto draw = [&rng](int numBits) {
                return static_cast<std::int64_t>(rng() >> (64 - numBits));
            };
            std::int64_t ax = draw(49), ay = draw(49), dx = draw(48), slope = 1 + doubles::below(rng, 5);
            if (round % 4 == 0) { // the target has three bits less than the start
                slope = 3;
                dx = (dx + (std::int64_t{1} << 48)) * 32 - (ax & 7);
                ay = (ay & ~std::int64_t{7}) + ((3 * ax) & 7);
            }
            constexpr std::int64_t offset = std::int64_t{1} << 52;
            const auto point = [](std::int64_t x, std::int64_t y) {
                return Point2(static_cast<double>(offset + x), static_cast<double>(offset + y));
            };
            a = point(ax, ay);
            b = point(ax + dx, ay + slope * dx);
        }
        const Points v = {a, b};
        const Point2 center = centerWithShift(a, b);
        for (const auto& [low, middle, high] :
             {std::array{a.x(), center.x(), b.x()}, {a.y(), center.y(), b.y()}}) {
            ASSERT_LE(std::min(low, high), middle) << doubles::hex(v);
            ASSERT_LE(middle, std::max(low, high)) << doubles::hex(v);
        }
        const bool bRoom = std::nextafter(a.x(), b.x()) != b.x() || std::nextafter(a.y(), b.y()) != b.y();
        if (bRoom && a != b) {
            ASSERT_TRUE(center != a && center != b) << doubles::hex(v);
        }
        if (!bSlope) continue;
        ASSERT_EQ(oracle::orientation(a, b, center), 0) << doubles::hex(v);
        ASSERT_NEAR((center.x() - a.x()) / (b.x() - a.x()), 0.5, 0.126) << doubles::hex(v);
        const Point2 rounded((a.x() + b.x()) * 0.5, (a.y() + b.y()) * 0.5);
        numShifted += rounded != center ? 1 : 0;
    }
    EXPECT_GT(numShifted, 100);
}

// ---- triangles, edges and rings
// -----------------------------------------------------------------------------

namespace {

// A square grid of squares, each cut into two triangles. The numbers of triangles and vertices follow the
// grid; where the records lie follows the flag, so that a result that depends on addresses shows.
class GridMesh {
public:
    GridMesh(int n_, bool bReversed_)
        : n(n_), bReversed(bReversed_), vPoints(numPoints()), vTriangles(numTriangles()) {
        for (int y = 0; y <= n; ++y)
            for (int x = 0; x <= n; ++x)
                *point(x, y) = Point2(x, y);
        for (int y = 0; y < n; ++y) {
            for (int x = 0; x < n; ++x) {
                const int lower = 2 * (y * n + x);
                triangle(lower)->setPropertiesAndOppT(point(x, y), point(x + 1, y), point(x + 1, y + 1),
                                                      x + 1 < n ? triangle(lower + 3) : nullptr,
                                                      triangle(lower + 1),
                                                      y > 0 ? triangle(lower - 2 * n + 1) : nullptr);
                triangle(lower + 1)->setPropertiesAndOppT(point(x, y), point(x + 1, y + 1), point(x, y + 1),
                                                          y + 1 < n ? triangle(lower + 2 * n) : nullptr,
                                                          x > 0 ? triangle(lower - 2) : nullptr,
                                                          triangle(lower));
            }
        }
    }
    std::size_t numPoints() const { return static_cast<std::size_t>((n + 1) * (n + 1)); }
    std::size_t numTriangles() const { return static_cast<std::size_t>(2 * n * n); }
    Point2* point(int x, int y) { return &at(vPoints, y * (n + 1) + x); }
    Triangle2* triangle(int i) { return &at(vTriangles, i); }
    int number(const Triangle2* pT) const {
        return storage(vTriangles, static_cast<int>(pT - vTriangles.data()));
    }

    std::vector<Triangle2*> list(const std::vector<int>& vNumbers) {
        std::vector<Triangle2*> vT;
        for (const int i : vNumbers)
            vT.push_back(triangle(i));
        return vT;
    }

private:
    template<class T>
    int storage(const std::vector<T>& v, int i) const {
        return bReversed ? static_cast<int>(v.size()) - 1 - i : i;
    }
    template<class T>
    T& at(std::vector<T>& v, int i) {
        return v[static_cast<std::size_t>(storage(v, i))];
    }

    int n;
    bool bReversed;
    std::vector<Point2> vPoints;
    std::vector<Triangle2> vTriangles;
};

std::vector<int> randomNumbers(Rng& rng, int num, int percent) {
    std::vector<int> vNumbers;
    for (int i = 0; i < num; ++i)
        if (doubles::below(rng, 100) < percent) vNumbers.push_back(i);
    std::shuffle(vNumbers.begin(), vNumbers.end(), rng);
    return vNumbers;
}

// Coordinates of the ends, which do not depend on where the records lie.
using EdgeKey = std::array<double, 4>;
EdgeKey key(const Edge2& edge) {
    return {edge.getSrc()->x(), edge.getSrc()->y(), edge.getTrg()->x(), edge.getTrg()->y()};
}
EdgeKey reversed(const EdgeKey& k) { return {k[2], k[3], k[0], k[1]}; }
std::vector<EdgeKey> keys(const std::vector<Edge2>& vEdges) {
    std::vector<EdgeKey> vKeys;
    for (const Edge2& edge : vEdges)
        vKeys.push_back(key(edge));
    return vKeys;
}
std::vector<EdgeKey> filtered(const std::vector<EdgeKey>& vKeys,
                              const std::function<bool(const EdgeKey&)>& wanted) {
    std::vector<EdgeKey> vResult;
    std::copy_if(vKeys.begin(), vKeys.end(), std::back_inserter(vResult), wanted);
    return vResult;
}

// The directions in which a polygon enters and leaves a vertex, both seen from there.
struct Way {
    double in;
    double out;
};
double angle(const Point2& from, const Point2& to) {
    return std::atan2(to.y() - from.y(), to.x() - from.x());
}

// True when exactly one end of one way lies between the ends of the other.
bool cross(const Way& a, const Way& b) {
    const auto isBetween = [&a](double s) { return std::min(a.in, a.out) < s && s < std::max(a.in, a.out); };
    return isBetween(b.in) != isBetween(b.out);
}

// Closed, each vertex once, and two polygons never cross in a vertex.
void expectPolygons(const std::vector<std::vector<Edge2>>& vvPolygons) {
    std::map<const Point2*, std::vector<Way>> mWays;
    for (const std::vector<Edge2>& vPolygon : vvPolygons) {
        ASSERT_GE(vPolygon.size(), 3u);
        std::set<const Point2*> sSeen;
        for (std::size_t i = 0; i < vPolygon.size(); ++i) {
            const Edge2& next = vPolygon[(i + 1) % vPolygon.size()];
            const Point2* pVtx = vPolygon[i].getTrg();
            ASSERT_EQ(pVtx, next.getSrc());
            ASSERT_TRUE(sSeen.insert(pVtx).second);
            mWays[pVtx].push_back({angle(*pVtx, *vPolygon[i].getSrc()), angle(*pVtx, *next.getTrg())});
        }
    }
    for (const auto& [pVtx, vWays] : mWays)
        for (std::size_t i = 0; i < vWays.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                ASSERT_FALSE(cross(vWays[i], vWays[j])) << *pVtx;
}

} // namespace

TEST(EdgeLists, agreeWithCountingTheEdges) {
    Rng rng(45);
    GridMesh mesh(6, false);
    for (int round = 0; round < 200; ++round) {
        std::vector<Triangle2*> vT = mesh.list(randomNumbers(rng, 72, 10 + 5 * (round % 19)));
        std::vector<EdgeKey> vAll;
        for (Triangle2* pT : vT)
            for (int i = 0; i < 3; ++i)
                vAll.push_back(key(Edge2(pT, i)));
        const std::set<EdgeKey> sAll(vAll.begin(), vAll.end());
        std::set<EdgeKey> sBefore;
        vT.push_back(nullptr);
        if (vT.size() > 1) vT.insert(vT.end(), vT.begin(), vT.begin() + 1); // listed twice
        EXPECT_EQ(keys(getDirectedEdges(vT)), vAll);
        EXPECT_EQ(keys(getBorders(vT)),
                  filtered(vAll, [&](auto& k) { return sAll.count(reversed(k)) == 0; }));
        EXPECT_EQ(keys(getUndirectedEdges(vT)), filtered(vAll, [&](auto& k) {
                      sBefore.insert(k);
                      return sBefore.count(reversed(k)) == 0;
                  }));
    }
}

TEST(ConnectedComponents, arePartsInTheOrderOfTheInput) {
    Rng rng(46);
    GridMesh mesh(6, false);
    for (int round = 0; round < 200; ++round) {
        const std::vector<Triangle2*> vT = mesh.list(randomNumbers(rng, 72, 20 + 4 * (round % 16)));
        // By lowering labels until nothing changes.
        std::vector<std::size_t> vLabel(vT.size());
        std::iota(vLabel.begin(), vLabel.end(), std::size_t{0});
        for (bool bChanged = true; bChanged;) {
            bChanged = false;
            for (std::size_t i = 0; i < vT.size(); ++i)
                for (std::size_t j = 0; j < vT.size(); ++j)
                    for (int k = 0; k < 3; ++k)
                        if (vT[i]->getOppositeTriangle(k) == vT[j] && vLabel[j] < vLabel[i]) {
                            vLabel[i] = vLabel[j];
                            bChanged = true;
                        }
        }
        std::map<std::size_t, std::vector<Triangle2*>> mExpected;
        for (std::size_t i = 0; i < vT.size(); ++i)
            mExpected[vLabel[i]].push_back(vT[i]);
        std::vector<std::vector<Triangle2*>> vvExpected;
        for (const auto& [label, vPart] : mExpected)
            vvExpected.push_back(vPart);
        EXPECT_EQ(getConnectedComponents(vT), vvExpected);
    }
}

TEST(edgesToPolygons, coversTheBorderOfAnyAreaWithPolygonsThatDoNotCross) {
    Rng rng(47);
    GridMesh mesh(6, false), elsewhere(6, true);
    for (int round = 0; round < 400; ++round) {
        const std::vector<int> vNumbers = randomNumbers(rng, 72, 10 + 5 * (round % 19));
        std::vector<Edge2> vBorder = getBorders(mesh.list(vNumbers));
        const PolygonParts parts = edgesToPolygons(vBorder);
        EXPECT_TRUE(parts.vRemaining.empty());
        expectPolygons(parts.vvPolygons);
        std::vector<Edge2> vUsed;
        std::vector<std::size_t> vFirst;
        for (std::vector<Edge2> vPolygon : parts.vvPolygons) {
            vUsed.insert(vUsed.end(), vPolygon.begin(), vPolygon.end());
            vFirst.push_back(static_cast<std::size_t>(std::find(vBorder.begin(), vBorder.end(), vPolygon[0]) -
                                                      vBorder.begin()));
            const std::vector<Edge2> vExpected = vPolygon;
            std::shuffle(vPolygon.begin() + 1, vPolygon.end(), rng);
            EXPECT_TRUE(sortRing(vPolygon));
            EXPECT_TRUE(vPolygon == vExpected);
        }
        EXPECT_TRUE(std::is_sorted(vFirst.begin(), vFirst.end()));
        std::vector<EdgeKey> vUsedKeys = keys(vUsed), vBorderKeys = keys(vBorder);
        std::sort(vUsedKeys.begin(), vUsedKeys.end());
        std::sort(vBorderKeys.begin(), vBorderKeys.end());
        EXPECT_EQ(vUsedKeys, vBorderKeys);

        const PolygonParts same = edgesToPolygons(getBorders(elsewhere.list(vNumbers)));
        ASSERT_EQ(same.vvPolygons.size(), parts.vvPolygons.size());
        for (std::size_t i = 0; i < parts.vvPolygons.size(); ++i)
            EXPECT_EQ(keys(same.vvPolygons[i]), keys(parts.vvPolygons[i]));
    }
}

TEST(edgesToPolygons, keepsLensesApartThatShareBothTips) {
    Rng rng(49);
    constexpr int numLenses = 7;
    Point2 top(0, 2), bottom(0, -2);
    Points vMiddle;
    for (int i = 0; i < 2 * numLenses; ++i)
        vMiddle.emplace_back(i - numLenses, 0);
    std::vector<Triangle2> vT(vMiddle.size());
    std::vector<Edge2> vBorder;
    for (std::size_t i = 0; i < vT.size(); i += 2) {
        vT[i].setProperties(&top, &vMiddle[i], &vMiddle[i + 1]);
        vT[i + 1].setProperties(&bottom, &vMiddle[i + 1], &vMiddle[i]);
        for (Triangle2* pT : {&vT[i], &vT[i + 1]})
            for (const int edge : {1, 2})
                vBorder.emplace_back(pT, edge);
    }
    for (int round = 0; round < 50; ++round) {
        std::shuffle(vBorder.begin(), vBorder.end(), rng);
        const PolygonParts parts = edgesToPolygons(vBorder);
        EXPECT_EQ(parts.vvPolygons.size(), static_cast<std::size_t>(numLenses));
        EXPECT_TRUE(parts.vRemaining.empty());
        expectPolygons(parts.vvPolygons);
        for (const std::vector<Edge2>& vLens : parts.vvPolygons) { // not a gap between two, nor their outline
            double twiceArea = 0;
            for (const EdgeKey& k : keys(vLens))
                twiceArea += k[0] * k[3] - k[1] * k[2];
            EXPECT_EQ(twiceArea, 4);
        }
    }
}

TEST(edgesToPolygons, ofAllDirectedEdgesAreTheTriangles) {
    GridMesh mesh(4, false);
    std::vector<int> vNumbers(mesh.numTriangles());
    std::iota(vNumbers.begin(), vNumbers.end(), 0);
    const std::vector<Edge2> vEdges = getDirectedEdges(mesh.list(vNumbers));
    const PolygonParts parts = edgesToPolygons(vEdges);
    ASSERT_EQ(parts.vvPolygons.size(), mesh.numTriangles());
    for (const std::vector<Edge2>& vPolygon : parts.vvPolygons) {
        EXPECT_EQ(vPolygon[0].getTriangle(), vPolygon[1].getTriangle());
        EXPECT_EQ(vPolygon[0].getTriangle(), vPolygon[2].getTriangle());
    }
}

TEST(edgesToPolygons, returnsWhatClosesNoPolygon) {
    Rng rng(48);
    GridMesh mesh(5, false);
    int numPolygons = 0;
    for (int round = 0; round < 400; ++round) {
        // Any edges, both directions of one among them.
        std::vector<Edge2> vEdges = getDirectedEdges(mesh.list(randomNumbers(rng, 50, 40)));
        std::shuffle(vEdges.begin(), vEdges.end(), rng);
        vEdges.resize(vEdges.size() / 2);
        const PolygonParts parts = edgesToPolygons(vEdges);
        std::vector<EdgeKey> vResult = keys(parts.vRemaining), vInput = keys(vEdges);
        EXPECT_TRUE(std::is_sorted(parts.vRemaining.begin(), parts.vRemaining.end(), [&](auto& a, auto& b) {
            return std::find(vEdges.begin(), vEdges.end(), a) < std::find(vEdges.begin(), vEdges.end(), b);
        }));
        for (const std::vector<Edge2>& vPolygon : parts.vvPolygons) {
            ++numPolygons;
            expectPolygons({vPolygon});
            for (const EdgeKey& k : keys(vPolygon))
                vResult.push_back(k);
        }
        std::sort(vResult.begin(), vResult.end());
        std::sort(vInput.begin(), vInput.end());
        EXPECT_EQ(vResult, vInput);
    }
    EXPECT_GT(numPolygons, 200);
    EXPECT_TRUE(edgesToPolygons({}).vvPolygons.empty());
}

TEST(sortRing, saysWhyItIsNoRing) {
    GridMesh mesh(4, false);
    const auto expectFailure = [](std::vector<Edge2> vEdges, const std::string& why) {
        const std::vector<Edge2> vBefore = vEdges;
        CapturedMessages captured;
        EXPECT_FALSE(sortRing(vEdges));
        EXPECT_TRUE(vEdges == vBefore);
        EXPECT_EQ(captured.output(), "      [Kivo2D-Message] sortRing(), WARNING: " + why + "\n");
    };
    const std::vector<Edge2> vTriangle = getBorders({mesh.triangle(0)});
    expectFailure({}, "Not a ring1");
    expectFailure({vTriangle[0], vTriangle[1]}, "Not a ring1");
    std::vector<Edge2> vOpen = getBorders({mesh.triangle(0), mesh.triangle(1)});
    vOpen.pop_back();
    expectFailure(vOpen, "Not a ring2");
    expectFailure(getBorders({mesh.triangle(0), mesh.triangle(10)}), "Not a ring2"); // they touch in a vertex
    expectFailure(getBorders({mesh.triangle(0), mesh.triangle(20)}), "Not a ring3");
    // The last edge runs into the middle of the chain.
    expectFailure({Edge2(mesh.triangle(0), 2), Edge2(mesh.triangle(2), 1), Edge2(mesh.triangle(2), 2),
                   Edge2(mesh.triangle(2), 0)},
                  "Not a ring3");
}

TEST(RingTools, takeLongRingsWithoutRecursion) {
    GridMesh mesh(300, false);
    std::vector<int> vNumbers(mesh.numTriangles());
    std::iota(vNumbers.begin(), vNumbers.end(), 0);
    // A comb: every other column, joined by the bottom row.
    std::erase_if(vNumbers, [](int i) { return (i / 2) % 2 == 1 && i / 600 > 0; });
    const std::vector<Triangle2*> vT = mesh.list(vNumbers);
    EXPECT_EQ(getConnectedComponents(vT).size(), 1u);
    std::vector<Edge2> vBorder = getBorders(vT);
    EXPECT_EQ(vBorder.size(), 300u + 2 + 150 + 150 * (2 * 299 + 1));
    EXPECT_TRUE(sortRing(vBorder));
}
