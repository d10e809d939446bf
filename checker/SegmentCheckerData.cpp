#include "checker/SegmentCheckerData.h"

#include "checker/segmentClassification.h"
#include "kernel/finite.h"
#include "kernel/messages.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <string>

namespace TESK_KIVO2D {

void SegmentChecker::SegmentCheckerData::add(const std::vector<Segment2*>& vAdded) {
    const auto numNull = std::count(vAdded.begin(), vAdded.end(), nullptr);
    const auto numNotFinite = std::count_if(vAdded.begin(), vAdded.end(), [](const Segment2* pSegment) {
        return pSegment != nullptr && !isFinite(*pSegment);
    });
    vSegments.insert(vSegments.end(), vAdded.begin(), vAdded.end());
    pQueries.reset();
    bAddressesSorted = false;
    if (numNull + numNotFinite > 0)
        reportWarning("SegmentChecker::addSegments()",
                      "segments that take no part: null pointers: " + std::to_string(numNull) +
                          ", coordinates that are not finite: " + std::to_string(numNotFinite));
}

SegmentIntersectionType SegmentChecker::SegmentCheckerData::typeOf(const Segment2* pA, const Segment2* pB) {
    if (pA == pB) return SIT_SEGMENT;
    const Point2 p1 = pA->getSrc(), p2 = pA->getTrg(), p3 = pB->getSrc(), p4 = pB->getTrg();
    tests.growStaticBound(p1, p2, p3);
    tests.growStaticBound(p4, p4, p4);
    return classifySegments(tests, p1, p2, p3, p4);
}

void SegmentChecker::SegmentCheckerData::sortByAddress() {
    if (bAddressesSorted) return;
    const std::less<const Segment2*> before;
    vByAddress.clear();
    const auto isOutOfOrder = [&](const Segment2* p, const Segment2* q) { return !before(p, q); };
    if (std::adjacent_find(vSegments.begin(), vSegments.end(), isOutOfOrder) != vSegments.end()) {
        vByAddress.resize(vSegments.size());
        std::iota(vByAddress.begin(), vByAddress.end(), 0U);
        std::sort(vByAddress.begin(), vByAddress.end(), [&](std::uint32_t i, std::uint32_t j) {
            return vSegments[i] != vSegments[j] ? before(vSegments[i], vSegments[j]) : i < j;
        });
    }
    bAddressesSorted = true;
}

std::int64_t SegmentChecker::SegmentCheckerData::placeOf(const Segment2* pSegment) {
    sortByAddress();
    const std::less<const Segment2*> before;
    std::size_t place = 0;
    if (vByAddress.empty()) {
        place = static_cast<std::size_t>(
            std::lower_bound(vSegments.begin(), vSegments.end(), pSegment, before) - vSegments.begin());
    } else {
        const auto it = std::lower_bound(
            vByAddress.begin(), vByAddress.end(), pSegment,
            [&](std::uint32_t i, const Segment2* pWanted) { return before(vSegments[i], pWanted); });
        place = it != vByAddress.end() ? *it : vSegments.size();
    }
    return place < vSegments.size() && vSegments[place] == pSegment ? static_cast<std::int64_t>(place) : -1;
}

std::vector<std::uint32_t> SegmentChecker::SegmentCheckerData::placesTakingPart() {
    sortByAddress();
    std::vector<char> vOut(vSegments.size(), 0);
    for (std::size_t i = 0; i < vSegments.size(); ++i)
        if (vSegments[i] == nullptr || !isFinite(*vSegments[i])) vOut[i] = 1;
    numRepeated = 0;
    for (std::size_t i = 1; i < vByAddress.size(); ++i) {
        char& out = vOut[vByAddress[i]];
        if (out != 0 || vSegments[vByAddress[i]] != vSegments[vByAddress[i - 1]]) continue;
        out = 1;
        ++numRepeated;
    }
    std::vector<std::uint32_t> vPlaces;
    vPlaces.reserve(vSegments.size());
    for (std::size_t i = 0; i < vSegments.size(); ++i)
        if (vOut[i] == 0) vPlaces.push_back(static_cast<std::uint32_t>(i));
    return vPlaces;
}

SegmentQueries& SegmentChecker::SegmentCheckerData::queries(const char* location) {
    if (vSegments.empty()) reportWarning(location, "no segments");
    if (pQueries) return *pQueries;
    const std::vector<std::uint32_t> vPlaces = placesTakingPart();
    if (numRepeated > 0)
        reportWarning(location,
                      "segments that were added before and count once: " + std::to_string(numRepeated));
    pQueries = std::make_unique<SegmentQueries>(vSegments, vPlaces);
    return *pQueries;
}

} // namespace TESK_KIVO2D
