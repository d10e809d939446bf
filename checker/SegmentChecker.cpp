#include "SegmentChecker.h"

#include "checker/SegmentCheckerData.h"
#include "checker/segmentClassification.h"
#include "kernel/assertion.h"
#include "kernel/intersection.h"
#include "kernel/messages.h"
#include "kernel/tools.h"

#include <algorithm>
#include <cmath>

namespace TESK_KIVO2D {
namespace {

bool isFinite(const Segment2& s) {
    return std::isfinite(s.getSrc().getMaxAbs()) && std::isfinite(s.getTrg().getMaxAbs());
}

} // namespace

SegmentChecker::SegmentChecker() : pSCD(std::make_unique<SegmentCheckerData>()) {}
SegmentChecker::SegmentChecker(const std::vector<Segment2*>& vSegments) : SegmentChecker() {
    addSegments(vSegments);
}
SegmentChecker::~SegmentChecker() = default;

void SegmentChecker::addSegments(const std::vector<Segment2*>& vSegments) {
    pSCD->vSegments.insert(pSCD->vSegments.end(), vSegments.begin(), vSegments.end());
}
std::size_t SegmentChecker::getNumberOfSegments() const { return pSCD->vSegments.size(); }
Segment2* SegmentChecker::getSegment(std::size_t i) const {
    KIVO_ASSERT(i < pSCD->vSegments.size(), "i<pSCD->vSegments.size()");
    return pSCD->vSegments[i];
}
int SegmentChecker::getIndex(const Segment2* pSegment) const {
    const auto& v = pSCD->vSegments;
    const auto it = std::find(v.begin(), v.end(), pSegment);
    if (it != v.end()) return static_cast<int>(it - v.begin());
    reportWarning("SegmentChecker::getIndex()", "No such segment");
    return -1;
}

SegmentIntersectionType SegmentChecker::getIntersectionType(const Segment2* pA, const Segment2* pB) const {
    if (pA == nullptr || pB == nullptr || !isFinite(*pA) || !isFinite(*pB)) {
        reportError("SegmentChecker::getIntersectionType()", "null pointer or coordinate that is not finite");
        return SIT_UNINITIALIZED;
    }
    if (pA == pB) return SIT_SEGMENT;
    const Point2 p1 = pA->getSrc(), p2 = pA->getTrg(), p3 = pB->getSrc(), p4 = pB->getTrg();
    pSCD->tests.growStaticBound(p1, p2, p3);
    pSCD->tests.growStaticBound(p4, p4, p4);
    return classifySegments(pSCD->tests, p1, p2, p3, p4);
}

std::string SegmentChecker::getIntersectionTypeString(SegmentIntersectionType type) {
    switch (type) {
    case SIT_UNINITIALIZED:
        return "SIT_UNINITIALIZED";
    case SIT_NONE:
        return "SIT_NONE";
    case SIT_SEGMENT:
        return "SIT_SEGMENT";
    case SIT_POINT:
        return "SIT_POINT";
    case SIT_ENDPOINT:
        return "SIT_ENDPOINT";
    }
    return "UNKNOWN SIT";
}

bool SegmentChecker::getIntersectionPoint(SegmentIntersectionType type, const Segment2* pA,
                                          const Segment2* pB, Point2& point) const {
    if (type != SIT_POINT) {
        reportError("SegmentChecker::getIntersectionPoint()",
                    type == SIT_ENDPOINT
                        ? "SIT_ENDPOINT is a wrong SegmentIntersectionType for the preset segments"
                        : "wrong SegmentIntersectionType provided");
        return false;
    }
    if (getIntersectionType(pA, pB) != SIT_POINT) return false;
    const Point2 p1 = pA->getSrc(), p2 = pA->getTrg(), p3 = pB->getSrc(), p4 = pB->getTrg();
    point = getNearestIntersection(p1, p2, p3, p4);
    return true;
}

bool SegmentChecker::getIntersectionSegment(const Segment2* pA, const Segment2* pB, Segment2& segment) const {
    if (getIntersectionType(pA, pB) != SIT_SEGMENT) return false;
    const Point2 p1 = pA->getSrc(), p2 = pA->getTrg(), p3 = pB->getSrc(), p4 = pB->getTrg();
    segment =
        Segment2(std::max(std::min(p1, p2), std::min(p3, p4)), std::min(std::max(p1, p2), std::max(p3, p4)));
    if (p2 < p1) segment.swapSrcTrg();
    return true;
}

void SegmentChecker::getIntersectors(const Segment2* pSegment, bool alsoEndPoints,
                                     std::vector<std::pair<Segment2*, SegmentIntersectionType>>& vOut) const {
    for (Segment2* p : pSCD->vSegments) {
        if (p == nullptr || p == pSegment || !isFinite(*p)) continue;
        const auto type = getIntersectionType(pSegment, p);
        if (type == SIT_SEGMENT || type == SIT_POINT || (type == SIT_ENDPOINT && alsoEndPoints))
            vOut.emplace_back(p, type);
    }
}

void SegmentChecker::getIllegalSegments(bool alsoEndPoints, std::vector<Segment2*>& vIllegalSegments) const {
    for (Segment2* p : pSCD->vSegments) {
        if (p == nullptr || !isFinite(*p)) continue;
        std::vector<std::pair<Segment2*, SegmentIntersectionType>> v;
        getIntersectors(p, alsoEndPoints, v);
        if (!v.empty()) vIllegalSegments.push_back(p);
    }
}

void SegmentChecker::subscribe(MsgType msgType, MsgBase* pListener) {
    if (!pSCD->pPublisher) pSCD->pPublisher = std::make_unique<ProgressHub>("SEGCHECK");
    pSCD->pPublisher->subscribe(msgType, pListener);
}

void SegmentChecker::unsubscribe(MsgType msgType, MsgBase* pListener) {
    if (!pSCD->pPublisher) {
        reportWarning("SegmentChecker::unsubscribe()", "No publisher present");
        return;
    }
    pSCD->pPublisher->unsubscribe(msgType, pListener);
}

} // namespace TESK_KIVO2D
