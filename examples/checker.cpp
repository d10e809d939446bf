// Checks the walls of a floor plan before they become constraints: which of them cross, touch or lie on one
// another? Walls that others cover are dropped, the rest is inserted.
#include <Kivo_2D.h>

#include <cmath>
#include <iostream>
#include <map>
#include <utility>
#include <vector>

using namespace TESK_KIVO2D;
using Intersectors = std::vector<std::pair<Segment2*, SegmentIntersectionType>>;

static void printPair(const SegmentChecker& checker, Segment2* pWall, Segment2* pOther,
                      SegmentIntersectionType type) {
    std::cout << "  walls " << checker.getIndex(pWall) << " and " << checker.getIndex(pOther);
    Point2 point;
    Segment2 common;
    if (type == SIT_POINT && checker.getIntersectionPoint(type, pWall, pOther, point))
        std::cout << " meet at (" << point.x() << ", " << point.y() << ")\n";
    if (type == SIT_SEGMENT && checker.getIntersectionSegment(pWall, pOther, common))
        std::cout << " share a length of " << std::sqrt(common.getSqLen2D()) << '\n';
}

// True when another wall covers this one from end to end. Of two equal ones the first stays.
static bool isCovered(const SegmentChecker& checker, Segment2* pWall) {
    Intersectors vIntersectors;
    checker.getIntersectors(pWall, false, vIntersectors);
    for (const auto& [pOther, type] : vIntersectors) {
        Segment2 common;
        if (type != SIT_SEGMENT || !checker.getIntersectionSegment(pWall, pOther, common)) continue;
        const bool bStays = *pWall == *pOther && checker.getIndex(pWall) < checker.getIndex(pOther);
        if (common == *pWall && !bStays) return true;
    }
    return false;
}

int main() {
    // A hall with a partition, as somebody drew it.
    const std::vector<Segment2> vDrawn{{Point2(0, 0), Point2(9, 0)}, {Point2(9, 0), Point2(9, 6)},
                                       {Point2(9, 6), Point2(0, 6)}, {Point2(0, 6), Point2(0, 0)},
                                       {Point2(9, 0), Point2(0, 0)}, // the first one again
                                       {Point2(4, 0), Point2(4, 6)}, // the partition
                                       {Point2(4, 2), Point2(4, 5)}, // a part of it
                                       {Point2(2, 4), Point2(6, 3)}};
    if (!writeSegmentsBIN("plan.bin", vDrawn)) return 1;
    std::vector<Segment2> vWalls;
    if (!readSegmentsBIN("plan.bin", vWalls)) return 1;

    std::vector<Segment2*> vPointers; // the checker finds them by their addresses: the vector must not grow
    for (Segment2& wall : vWalls)
        vPointers.push_back(&wall);
    const SegmentChecker checker(vPointers);
    std::vector<Segment2*> vIllegal;
    checker.getIllegalSegments(false, vIllegal);
    std::cout << vIllegal.size() << " of " << checker.getNumberOfSegments() << " walls are illegal\n";

    std::map<SegmentIntersectionType, int> mNumPairs;
    for (Segment2* const pWall : vPointers) {
        Intersectors vIntersectors;
        checker.getIntersectors(pWall, true, vIntersectors); // corners, too
        for (const auto& [pOther, type] : vIntersectors) {
            if (checker.getIndex(pOther) < checker.getIndex(pWall)) continue; // each pair once
            ++mNumPairs[type];
            if (type != SIT_ENDPOINT) printPair(checker, pWall, pOther, type);
        }
    }
    for (const auto& [type, num] : mNumPairs)
        std::cout << SegmentChecker::getIntersectionTypeString(type) << ": " << num << '\n';
    checker.showIllegalSegments(false, "plan.ps");

    std::vector<Segment2> vMended;
    for (Segment2* const pWall : vPointers)
        if (!isCovered(checker, pWall)) vMended.push_back(*pWall);
    Kivo_2D plan;
    const ConstraintGraph2* const pGraph = plan.createConstraint(vMended);
    std::vector<ConstraintSegment2*> vEdges;
    pGraph->getChildConstraintSegments(vEdges);
    std::cout << vMended.size() << " walls are left; they became " << vEdges.size() << " edges and "
              << plan.numberOfPoints() << " vertices\n";
}
