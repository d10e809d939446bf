#include "SegmentChecker.h"

#include "checker/SegmentCheckerData.h"
#include "checker/segmentClassification.h"
#include "kernel/assertion.h"
#include "kernel/finite.h"
#include "kernel/messages.h"
#include "kernel/tools.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace TESK_KIVO2D {
namespace {

// False, with an error, when one of the pointers is null or a coordinate is not finite.
template<class... Segments>
bool areUsable(const char* location, const Segments*... pSegments) {
    const bool bNull = ((pSegments == nullptr) || ...);
    if (bNull || !(isFinite(*pSegments) && ...)) {
        reportError(location, bNull ? "null pointer" : "coordinate that is not finite");
        return false;
    }
    return true;
}

} // namespace

SegmentChecker::SegmentChecker() : pSCD(std::make_unique<SegmentCheckerData>()) {}
SegmentChecker::SegmentChecker(const std::vector<Segment2*>& vSegments) : SegmentChecker() {
    addSegments(vSegments);
}
SegmentChecker::~SegmentChecker() = default;

void SegmentChecker::addSegments(const std::vector<Segment2*>& vSegments) {
    if (pSCD->pPublisher && pSCD->pPublisher->isBusy()) {
        reportError("SegmentChecker::addSegments()", "no segment is added during a query");
        return;
    }
    constexpr auto maxSegments = static_cast<std::size_t>(std::numeric_limits<int>::max());
    if (vSegments.size() > maxSegments - pSCD->vSegments.size()) {
        reportError("SegmentChecker::addSegments()", "too many segments, none is added");
        return;
    }
    pSCD->add(vSegments);
}

std::size_t SegmentChecker::getNumberOfSegments() const { return pSCD->vSegments.size(); }

Segment2* SegmentChecker::getSegment(std::size_t i) const {
    KIVO_ASSERT(i < pSCD->vSegments.size(), "i<pSCD->vSegments.size()");
    return pSCD->vSegments[i];
}

int SegmentChecker::getIndex(const Segment2* pSegment) const {
    const std::int64_t place = pSegment != nullptr ? pSCD->placeOf(pSegment) : -1;
    if (place < 0) reportWarning("SegmentChecker::getIndex()", "No such segment");
    return static_cast<int>(place);
}

SegmentIntersectionType SegmentChecker::getIntersectionType(const Segment2* pA, const Segment2* pB) const {
    if (!areUsable("SegmentChecker::getIntersectionType()", pA, pB)) return SIT_UNINITIALIZED;
    return pSCD->typeOf(pA, pB);
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
    const char* const location = "SegmentChecker::getIntersectionPoint()";
    if (type != SIT_POINT) {
        reportError(location, type == SIT_ENDPOINT
                                  ? "SIT_ENDPOINT is a wrong SegmentIntersectionType for the preset segments"
                                  : "wrong SegmentIntersectionType provided");
        return false;
    }
    if (!areUsable(location, pA, pB)) return false;
    const auto common =
        getIntersectionCoordsNoRounding(pA->getSrc(), pA->getTrg(), pB->getSrc(), pB->getTrg());
    if (!common) {
        reportWarning(location, "segments do not share exactly one point");
        return false;
    }
    point = *common;
    return true;
}

bool SegmentChecker::getIntersectionSegment(const Segment2* pA, const Segment2* pB, Segment2& segment) const {
    // Deliberate: the location is that of the other method.
    const char* const location = "SegmentChecker::getIntersectionPoint()";
    if (!areUsable("SegmentChecker::getIntersectionSegment()", pA, pB)) return false;
    const Segment2 a = *pA, b = *pB; // one of them may be where the result goes
    const Point2 p1 = a.getSrc(), p2 = a.getTrg(), p3 = b.getSrc(), p4 = b.getTrg();
    if (pSCD->typeOf(pA, pB) != SIT_SEGMENT) {
        const bool bCollinear = sideOf(pSCD->tests, p1, p2, p3) == ORIENTATION2_COLLINEAR &&
                                sideOf(pSCD->tests, p1, p2, p4) == ORIENTATION2_COLLINEAR;
        reportWarning(location, bCollinear ? "segments share no more than a point"
                                           : "segments seem to be non-collinear");
        return false;
    }
    const auto [first, last] = collinearPart(p1, p2, p3, p4);
    segment = Segment2(first, last);
    if (p2 < p1) segment.swapSrcTrg();
    return true;
}

void SegmentChecker::getIntersectors(
    const Segment2* pSegment, bool alsoEndPoints,
    std::vector<std::pair<Segment2*, SegmentIntersectionType>>& vIntersectors) const {
    const char* const location = "SegmentChecker::getIntersectors()";
    if (!areUsable(location, pSegment)) return;
    SegmentCheckerData& data = *pSCD;
    data.vFound.clear();
    data.queries(location).visitIntersectors(
        Ends(*pSegment), [&](std::uint32_t place, SegmentIntersectionType type) {
            if (data.vSegments[place] != pSegment && (type != SIT_ENDPOINT || alsoEndPoints))
                data.vFound.emplace_back(place, type);
        });
    std::sort(data.vFound.begin(), data.vFound.end());
    for (const auto& [place, type] : data.vFound)
        vIntersectors.emplace_back(data.vSegments[place], type);
}

void SegmentChecker::getIllegalSegments(bool alsoEndPoints, std::vector<Segment2*>& vIllegalSegments) const {
    SegmentQueries& queries = pSCD->queries("SegmentChecker::getIllegalSegments()");
    std::optional<ProgressHub::Operation> operation;
    if (pSCD->pPublisher) operation.emplace(*pSCD->pPublisher, "SEGCHECK", queries.size());
    const std::vector<char> vMarks = queries.findIllegal(alsoEndPoints, operation ? &*operation : nullptr);
    if (operation) operation->finish();
    const auto num = static_cast<std::size_t>(std::count(vMarks.begin(), vMarks.end(), 1));
    vIllegalSegments.reserve(vIllegalSegments.size() + num);
    for (std::size_t i = 0; i < vMarks.size(); ++i)
        if (vMarks[i] != 0) vIllegalSegments.push_back(pSCD->vSegments[i]);
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
