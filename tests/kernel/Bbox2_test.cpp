#include "Bbox2.h"

#include "kernel/TeskTest.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <list>

using namespace TESK_KIVO2D;
using doubles::Points;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

const Points vUnit = {{0, 0}, {2, 2}};

void expectBounds(const Bbox2& box, double minX, double minY, double maxX, double maxY) {
    EXPECT_EQ(box.getMinPoint(), Point2(minX, minY));
    EXPECT_EQ(box.getMaxPoint(), Point2(maxX, maxY));
    double aBound[4];
    box.getBounds(aBound[0], aBound[1], aBound[2], aBound[3]);
    EXPECT_EQ(Points({{aBound[0], aBound[1]}, {aBound[2], aBound[3]}}), Points({{minX, maxX}, {minY, maxY}}));
    EXPECT_EQ(Points({{box.get_minX(), box.get_minY()}, {box.get_maxX(), box.get_maxY()}}),
              Points({{minX, minY}, {maxX, maxY}}));
}

} // namespace

TEST(Bbox2, startsEmpty) {
    const Bbox2 box;
    expectBounds(box, DBL_MAX, DBL_MAX, -DBL_MAX, -DBL_MAX);
    EXPECT_FALSE(box.isValid());
    EXPECT_FALSE(box.isInBox(Point2(0, 0)));
    Bbox2 unchanged;
    unchanged.inflateIfDegenerate(1);
    EXPECT_FALSE(unchanged.add(vUnit.begin(), vUnit.begin()));
    EXPECT_FALSE(unchanged.add(0, nullptr));
    EXPECT_FALSE(unchanged.isValid());
}

TEST(Bbox2, boundsWhatItTakesInHoweverItIsGiven) {
    doubles::Rng rng(21);
    for (int round = 0; round < 500; ++round) {
        Points vPoints = doubles::anyPoints(rng, 1 + static_cast<std::size_t>(doubles::below(rng, 8)));
        std::vector<Point2*> vPointers = {nullptr};
        std::vector<double> vCoordinates;
        Bbox2 single, chunk;
        double minX = vPoints[0].x(), maxX = minX, minY = vPoints[0].y(), maxY = minY;
        for (Point2& p : vPoints) {
            const bool bInside = single.isInBox(p);
            EXPECT_EQ(single.add(p), !bInside);
            EXPECT_FALSE(single.add(p));
            vPointers.push_back(&p);
            vCoordinates.insert(vCoordinates.end(), {p.x(), p.y()});
            minX = std::min(minX, p.x());
            maxX = std::max(maxX, p.x());
            minY = std::min(minY, p.y());
            maxY = std::max(maxY, p.y());
        }
        EXPECT_TRUE(chunk.add(vPoints.size(), vCoordinates.data()));
        EXPECT_FALSE(chunk.add(vPoints.size(), vCoordinates.data()));
        EXPECT_FALSE(chunk.add(vPointers.begin(), vPointers.end()));
        const std::list<Point2> lPoints(vPoints.begin(), vPoints.end());
        for (const Bbox2& box : {single, chunk, Bbox2(lPoints.begin(), lPoints.end()),
                                 Bbox2(vPointers.begin(), vPointers.end())}) {
            expectBounds(box, minX, minY, maxX, maxY);
            EXPECT_EQ(box.getMinCoord(), std::min(minX, minY));
            EXPECT_EQ(box.getMaxCoord(), std::max(maxX, maxY));
            EXPECT_TRUE(std::all_of(vPoints.begin(), vPoints.end(), [&](auto& p) { return box.isInBox(p); }));
        }
    }
}

TEST(Bbox2, countsABoundThatIsNotANumberAsChanged) {
    Bbox2 box;
    EXPECT_TRUE(box.add(Point2(notANumber, 1))); // into an empty box
    const double aInside[] = {0, 1};
    EXPECT_TRUE(box.add(1, aInside));
    Bbox2 sound(vUnit.begin(), vUnit.end());
    EXPECT_FALSE(sound.add(Point2(notANumber, notANumber)));
    expectBounds(sound, 0, 0, 2, 2);
}

TEST(Bbox2, settersCompleteTheBoxAndTheFirstPointKeepsWhatTheyGave) {
    Bbox2 box;
    box.setMinX(1);
    EXPECT_TRUE(box.isValid()); // looks at one bound only
    EXPECT_TRUE(box.add(Point2(-5, 3)));
    expectBounds(box, 1, 3, -5, 3);
    Bbox2 other;
    other.setMaxX(-3);
    other.setMinY(4);
    EXPECT_TRUE(other.add(Point2(7, 1)));
    expectBounds(other, 7, 4, -3, 1);

    Bbox2 complete;
    complete.setMinX(-1);
    complete.setMaxX(1);
    complete.setMinY(-2);
    EXPECT_FALSE(complete.isInBox(Point2(0, -2)));
    complete.setMaxY(2);
    EXPECT_TRUE(complete.isInBox(Point2(0, -2)));
    complete.setMaxY(-9); // the flag stays
    EXPECT_TRUE(complete.add(Point2(0, 0)));
    expectBounds(complete, -1, -2, 1, 0);
}

TEST(Bbox2, answersOnItsBorder) {
    const Bbox2 box(vUnit.begin(), vUnit.end());
    std::vector<Point2> vCorners = {{9, 9}};
    box.getCorners(vCorners);
    EXPECT_EQ(vCorners, Points({{9, 9}, {0, 0}, {2, 0}, {2, 2}, {0, 2}}));
    for (const Point2& corner : Points({{0, 0}, {2, 1}, {1, 2}}))
        EXPECT_TRUE(box.isInBox(corner));
    for (const Point2& p : Points({{std::nextafter(2.0, 3.0), 1}, {1, -5e-324}}))
        EXPECT_FALSE(box.isInBox(p));
    const Points vBeyondCorner = {{2, 2}, {3, 3}}, vBeyondEdge = {{-1, -1}, {0, 3}},
                 vApart = {{2.5, 0}, {3, 2}};
    EXPECT_TRUE(box.doIntersect(Bbox2(vBeyondCorner.begin(), vBeyondCorner.end())));
    EXPECT_TRUE(box.doIntersect(Bbox2(vBeyondEdge.begin(), vBeyondEdge.end())));
    EXPECT_FALSE(box.doIntersect(Bbox2(vApart.begin(), vApart.end())));
    EXPECT_FALSE(Bbox2(vApart.begin(), vApart.end()).doIntersect(box));
    EXPECT_EQ(box.computeCenter(), Point2(1, 1));
}

TEST(Bbox2, warnsWhereAnEmptyBoxHasNoAnswer) {
    Bbox2 box(vUnit.begin(), vUnit.end());
    const Bbox2 empty;
    CapturedMessages captured;
    EXPECT_FALSE(box.doIntersect(empty));
    EXPECT_FALSE(empty.doIntersect(box));
    EXPECT_EQ(empty.computeCenter(), Point2(0, 0));
    const Bbox2 sum = box + empty;
    expectBounds(sum, 0, 0, 2, 2);
    EXPECT_EQ(captured.output(),
              "      [Kivo2D-Message] Bbox2::doIntersect(), WARNING: bbox invalid\n"
              "      [Kivo2D-Message] Bbox2::doIntersect(), WARNING: bbox invalid\n"
              "      [Kivo2D-Message] Bbox2::computeCenter(), WARNING: Bbox2 is invalid\n"
              "      [Kivo2D-Message] Box2::operator+(), WARNING: trying to add an invalid Bbox2\n");
}

TEST(Bbox2, sumWidensTheLeftBox) {
    Bbox2 box(vUnit.begin(), vUnit.end());
    const Points vOther = {{-3, 1}, {1, 7}};
    const Bbox2 other(vOther.begin(), vOther.end());
    expectBounds(box + other, -3, 0, 2, 7);
    expectBounds(box, -3, 0, 2, 7);

    Bbox2 empty;
    expectBounds(empty + other, -3, 1, 1, 7);
    EXPECT_TRUE(empty.isValid());
    EXPECT_FALSE(empty.isInBox(Point2(0, 2))); // the flag is not taken over
}

TEST(Bbox2, growsAboutItsCentre) {
    Bbox2 box(vUnit.begin(), vUnit.end()), doubled(box), point(vUnit.begin(), vUnit.begin() + 1);
    doubled.doubleTheBox();
    expectBounds(doubled, -1, -1, 3, 3);
    box.enlargeRanges(3);
    expectBounds(box, -2, -2, 4, 4);
    EXPECT_EQ(box.getRangeX(), 6);
    point.doubleTheBox();
    EXPECT_EQ(point.getMaxRange(), 0);
    point.inflateIfDegenerate(1);
    expectBounds(point, 0, 0, 1, 1);
    point.inflateIfDegenerate(1);
    expectBounds(point, 0, 0, 1, 1);
}

TEST(Bbox2, tellsItsPredicatesOnlyWhenItIsEnlarged) {
    TeskTest tests;
    const Points vNegative = {{-9, -8}, {-7, -4}};
    Bbox2 box(vNegative.begin(), vNegative.end(), &tests);
    box.inflateIfDegenerate(1);
    EXPECT_EQ(tests.getMaxAbsCoord(), 0);
    Bbox2 copy(box), assigned;
    assigned = box;
    copy.doubleTheBox();
    expectBounds(copy, -10, -10, -6, -2);
    EXPECT_EQ(tests.getMaxAbsCoord(), 10);
    assigned.enlargeRanges(4); // the tie is copied too
    expectBounds(assigned, -12, -14, -4, 2);
    EXPECT_EQ(tests.getMaxAbsCoord(), 14);
}
