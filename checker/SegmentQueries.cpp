#include "checker/SegmentQueries.h"

#include <algorithm>

namespace TESK_KIVO2D {
namespace {

// Marks segments that meet another one. Each is compared with others until the first hit, which marks both.
class IllegalSearch {
public:
    IllegalSearch(const SegmentArray& allSegments, const SegmentIndex& boxes,
                  std::optional<HullTree>& lineTree, TeskTest& predicates, bool alsoSharedEnds,
                  std::size_t maxMissesASegment)
        : segments(allSegments), index(boxes), lines(lineTree), tests(predicates),
          alsoEndPoints(alsoSharedEnds), maxMisses(maxMissesASegment * allSegments.size()),
          vMarks(allSegments.size(), 0) {}

    void search(std::size_t i) {
        if (vMarks[i] != 0) return;
        const auto compare = [&](std::size_t j) { return !isHit(i, j); };
        const bool bByLines = numMisses >= maxMisses;
        if (bByLines && !lines) lines.emplace(segments, tests);
        if (bByLines)
            lines->visitCandidates(segments[i], alsoEndPoints, compare);
        else
            index.visitCandidatesOf(i, segments[i], compare);
    }
    bool isMarked(std::size_t i) const { return vMarks[i] != 0; }

private:
    bool isHit(std::size_t i, std::size_t j) {
        // An unmarked one before this one was compared with all.
        if (j == i || (j < i && vMarks[j] == 0)) return false;
        const SegmentIntersectionType type = classify(tests, segments[i], segments[j]);
        if (type == SIT_NONE || (type == SIT_ENDPOINT && !alsoEndPoints)) {
            ++numMisses;
            return false;
        }
        vMarks[i] = vMarks[j] = 1;
        return true;
    }

    const SegmentArray& segments;
    const SegmentIndex& index;
    std::optional<HullTree>& lines; // made when it is needed
    TeskTest& tests;
    const bool alsoEndPoints;
    const std::size_t maxMisses;
    std::vector<char> vMarks;
    std::size_t numMisses = 0;
};

} // namespace

SegmentQueries::SegmentQueries(const std::vector<Segment2*>& vSegments,
                               const std::vector<std::uint32_t>& vPlaces)
    : segments(vSegments, vPlaces), index(segments) {
    const Bbox2& box = segments.box();
    if (size() > 0)
        tests.setStaticBound(std::fmax(box.getMinPoint().getMaxAbs(), box.getMaxPoint().getMaxAbs()));
}

void SegmentQueries::prepareLines() {
    ++numQueries;
    constexpr std::size_t manyMisses = 32; // a query
    if (!lines && numMisses > manyMisses * std::max(numQueries, size()) + 4 * numHits)
        lines.emplace(segments, tests);
}

std::vector<char> SegmentQueries::findIllegal(bool alsoEndPoints, ProgressHub::Operation* pOperation,
                                              std::size_t maxMisses) {
    IllegalSearch search(segments, index, lines, tests, alsoEndPoints, maxMisses);
    for (std::size_t i = 0; i < size(); ++i) {
        search.search(i);
        if (pOperation != nullptr) pOperation->advance();
    }
    std::vector<char> vMarks(segments.numPlaces(), 0);
    for (std::size_t i = 0; i < size(); ++i)
        vMarks[segments.place(i)] = search.isMarked(i) ? 1 : 0;
    return vMarks;
}

} // namespace TESK_KIVO2D
