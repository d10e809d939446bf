#include "cli/checkFaults.h"

#include <functions.h>

#include <stdexcept>
#include <utility>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;
using TESK_KIVO2D::SegmentIntersectionType;

std::vector<Segment2*> pointersTo(std::vector<Segment2>& vSegments) {
    std::vector<Segment2*> vPointers;
    vPointers.reserve(vSegments.size());
    for (Segment2& segment : vSegments)
        vPointers.push_back(&segment);
    return vPointers;
}

// One of the ends of b lies on the line through a.
bool hasEndOnLineOf(const Segment2& a, const Segment2& b) {
    const Point2 p = a.getSrc(), q = a.getTrg(), src = b.getSrc(), trg = b.getTrg();
    return getOrientation2(&p, &q, &src) == TESK_KIVO2D::ORIENTATION2_COLLINEAR ||
           getOrientation2(&p, &q, &trg) == TESK_KIVO2D::ORIENTATION2_COLLINEAR;
}

Point2 sharedEndOf(const Segment2& a, const Segment2& b) {
    const Point2 src = a.getSrc();
    return src == b.getSrc() || src == b.getTrg() ? src : a.getTrg();
}

} // namespace

FaultFinder::FaultFinder(std::vector<Segment2>& vSegments_, bool bEndPoints_)
    : vSegments(vSegments_), bEndPoints(bEndPoints_), checker(pointersTo(vSegments_)) {}

const std::vector<std::size_t>& FaultFinder::findSegmentsAtFault() {
    std::vector<Segment2*> vIllegal;
    checker.getIllegalSegments(bEndPoints, vIllegal);
    vAtFault.clear();
    for (const Segment2* pSegment : vIllegal)
        vAtFault.push_back(static_cast<std::size_t>(pSegment - vSegments.data()));
    return vAtFault;
}

bool FaultFinder::forEachFault(std::uint64_t maxPairs, const Visit& visit, const Progress& progress) const {
    std::vector<std::pair<Segment2*, SegmentIntersectionType>> vIntersectors;
    std::uint64_t numPairs = 0, numSegments = 0;
    for (const std::size_t first : vAtFault) {
        vIntersectors.clear();
        checker.getIntersectors(&vSegments[first], bEndPoints, vIntersectors);
        for (const auto& [pSecond, type] : vIntersectors) {
            const auto second = static_cast<std::size_t>(pSecond - vSegments.data());
            if (second < first) continue;
            if (numPairs++ == maxPairs) return false;
            visit({first, second, kindOf(vSegments[first], *pSecond, type)});
        }
        progress(static_cast<double>(++numSegments) / static_cast<double>(vAtFault.size()));
    }
    return true;
}

FaultKind FaultFinder::kindOf(const Segment2& a, const Segment2& b, SegmentIntersectionType type) const {
    switch (type) {
    case TESK_KIVO2D::SIT_ENDPOINT:
        return FAULT_SHARED_END;
    case TESK_KIVO2D::SIT_SEGMENT:
        return a == b ? FAULT_DUPLICATE : FAULT_OVERLAP;
    case TESK_KIVO2D::SIT_POINT:
        return hasEndOnLineOf(a, b) || hasEndOnLineOf(b, a) ? FAULT_TOUCH : FAULT_CROSSING;
    default:
        throw std::logic_error("segments that do not meet were reported to do so");
    }
}

FaultPlace FaultFinder::placeOf(const Fault& fault) const {
    const Segment2 &a = vSegments[fault.first], &b = vSegments[fault.second];
    if (fault.kind == FAULT_SHARED_END) return {sharedEndOf(a, b), sharedEndOf(a, b)};
    if (fault.kind == FAULT_OVERLAP || fault.kind == FAULT_DUPLICATE) {
        Segment2 shared;
        checker.getIntersectionSegment(&a, &b, shared);
        return {shared.getSrc(), shared.getTrg()};
    }
    Point2 point;
    checker.getIntersectionPoint(TESK_KIVO2D::SIT_POINT, &a, &b, point);
    return {point, point};
}

} // namespace cli
