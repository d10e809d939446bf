#include "checker/faultMarks.h"

#include "SegmentChecker.h"
#include "output/PsWriter.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr double pageExtent = 480;
constexpr double markDistance = 1.5; // half a cross, on the page
constexpr double sharedEndDistance = 5;
constexpr std::size_t maxOverlaps = 100'000;
constexpr std::size_t maxSharedEndPlaces = 200; // where all is connected, circles would hide the rest

// Places on the page with at least a certain distance between any two: who comes first stays.
class ThinnedPlaces {
public:
    explicit ThinnedPlaces(double minDistance_)
        : minDistance(minDistance_), cellSize(0.7 * minDistance_),
          numColumns(static_cast<int>(pageExtent / cellSize) + 1),
          vCells(static_cast<std::size_t>(numColumns) * static_cast<std::size_t>(numColumns), nowhere) {}

    bool take(const PsPoint& place) {
        const int column = getCell(place.x - 50), row = getCell(place.y - 200);
        for (int r = std::max(row - 2, 0); r <= std::min(row + 2, numColumns - 1); ++r)
            for (int c = std::max(column - 2, 0); c <= std::min(column + 2, numColumns - 1); ++c)
                if (isNear(at(c, r), place)) return false;
        at(column, row) = place; // its cell was empty: no cell has room for two
        return true;
    }

private:
    static constexpr PsPoint nowhere{-1e9, -1e9};

    int getCell(double offset) const {
        return std::clamp(static_cast<int>(offset / cellSize), 0, numColumns - 1);
    }
    PsPoint& at(int column, int row) { return vCells[static_cast<std::size_t>(row * numColumns + column)]; }
    bool isNear(const PsPoint& a, const PsPoint& b) const {
        const double dx = a.x - b.x, dy = a.y - b.y;
        return dx * dx + dy * dy < minDistance * minDistance;
    }

    double minDistance;
    double cellSize; // the diagonal is shorter than the distance
    int numColumns;
    std::vector<PsPoint> vCells;
};

class Collector {
public:
    Collector(const std::vector<Segment2*>& vSegments, const Bbox2& box, const FaultLimits& limits_)
        : vIllegal(vSegments), illegal(vSegments), transform(box), limits(limits_) {}

    void run(bool alsoEndPoints, const std::function<void(double)>& progress);
    FaultMarks getMarks();

private:
    void addPair(const Segment2& a, const Segment2& b, SegmentIntersectionType type);
    void addOverlap(const Segment2& overlap);
    PsPoint toPage(const Point2& p) const { return {transform.x(p.x()), transform.y(p.y())}; }
    // Whether something that looks the same was there before.
    bool isNewOnPage(const Segment2& overlap);

    const std::vector<Segment2*>& vIllegal;
    SegmentChecker illegal;
    const PageTransform transform;
    const FaultLimits limits;
    FaultMarks marks;
    ThinnedPlaces crossings{markDistance}, sharedEnds{sharedEndDistance}, circles{circleShare * pageExtent};
    std::set<std::array<int, 4>> sOverlaps;
};

Bbox2 boxOf(const Segment2& s) {
    Bbox2 box;
    box.add(s.getSrc());
    box.add(s.getTrg());
    return box;
}

// How many segments may be asked for their intersectors: a sample tells how many boxes a segment's box meets.
std::size_t getMaxQueries(const std::vector<Segment2*>& vSegments, double maxBoxesMet) {
    constexpr std::size_t sampleSize = 1000;
    std::vector<Bbox2> vSample;
    for (std::size_t i = 0; i < vSegments.size(); i += vSegments.size() / sampleSize + 1)
        vSample.push_back(boxOf(*vSegments[i]));
    double numPairs = 0, numMeet = 1;
    for (std::size_t i = 0; i < vSample.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j)
            numMeet += vSample[i].doIntersect(vSample[j]);
        numPairs += static_cast<double>(i);
    }
    const double numSegments = static_cast<double>(vSegments.size());
    const double boxesMet = std::max(1.0, numSegments * std::min(1.0, numMeet / std::max(1.0, numPairs)));
    return static_cast<std::size_t>(std::min(numSegments, maxBoxesMet / boxesMet));
}

void Collector::run(bool alsoEndPoints, const std::function<void(double)>& progress) {
    const std::size_t num = vIllegal.size(), maxQueries = getMaxQueries(vIllegal, limits.maxBoxesMet),
                      stride = num / 100 + 1;
    std::vector<std::pair<Segment2*, SegmentIntersectionType>> vIntersectors;
    std::size_t numQueries = 0, numReports = 0;
    for (std::size_t start = 0; start < stride; ++start) {
        for (std::size_t i = start; i < num; i += stride) {
            if (numQueries == maxQueries || numReports >= limits.maxReports) {
                marks.bAllPairs = false;
                return;
            }
            vIntersectors.clear();
            illegal.getIntersectors(vIllegal[i], alsoEndPoints, vIntersectors);
            for (const auto& [pOther, type] : vIntersectors)
                addPair(*vIllegal[i], *pOther, type);
            ++numQueries;
            numReports += vIntersectors.size();
            progress(std::max(static_cast<double>(numQueries) / static_cast<double>(maxQueries),
                              static_cast<double>(numReports) / static_cast<double>(limits.maxReports)));
        }
    }
}

void Collector::addPair(const Segment2& a, const Segment2& b, SegmentIntersectionType type) {
    if (type == SIT_POINT) {
        ++marks.numCrossings;
        Point2 point;
        illegal.getIntersectionPoint(type, &a, &b, point);
        if (crossings.take(toPage(point))) marks.vCrossings.push_back(point);
        if (circles.take(toPage(point))) marks.vFaultPlaces.push_back(point);
    } else if (type == SIT_SEGMENT) {
        ++marks.numOverlaps;
        Segment2 overlap;
        illegal.getIntersectionSegment(&a, &b, overlap);
        addOverlap(overlap);
    } else {
        ++marks.numSharedEnds;
        const Point2 src = a.getSrc();
        const Point2 end = src == b.getSrc() || src == b.getTrg() ? src : a.getTrg();
        if (sharedEnds.take(toPage(end))) marks.vSharedEnds.push_back(end);
    }
}

void Collector::addOverlap(const Segment2& overlap) {
    const Point2 src = overlap.getSrc(), trg = overlap.getTrg();
    const Point2 middle(src.x() / 2 + trg.x() / 2, src.y() / 2 + trg.y() / 2);
    if (circles.take(toPage(middle))) marks.vFaultPlaces.push_back(middle);
    if (sOverlaps.size() < maxOverlaps && isNewOnPage(overlap)) marks.vOverlaps.push_back(overlap);
}

bool Collector::isNewOnPage(const Segment2& overlap) {
    PsPoint src = toPage(overlap.getSrc()), trg = toPage(overlap.getTrg());
    if (std::pair(trg.x, trg.y) < std::pair(src.x, src.y)) std::swap(src, trg);
    const auto round = [](double v) { return static_cast<int>(v / markDistance); };
    return sOverlaps.insert({round(src.x), round(src.y), round(trg.x), round(trg.y)}).second;
}

// To be called once, at the end.
FaultMarks Collector::getMarks() {
    // Each pair was met twice if all segments were asked, else at most twice.
    for (std::size_t* pNum : {&marks.numCrossings, &marks.numOverlaps, &marks.numSharedEnds})
        *pNum = (*pNum + 1) / 2;
    for (const Point2& end : marks.vSharedEnds)
        if (circles.take(toPage(end))) marks.vSharedEndPlaces.push_back(end);
    if (marks.vSharedEndPlaces.size() > maxSharedEndPlaces) marks.vSharedEndPlaces.clear();
    return std::move(marks);
}

} // namespace

FaultMarks collectFaultMarks(const std::vector<Segment2*>& vIllegal, bool alsoEndPoints, const Bbox2& box,
                             const std::function<void(double)>& progress, const FaultLimits& limits) {
    Collector collector(vIllegal, box, limits);
    collector.run(alsoEndPoints, progress);
    return collector.getMarks();
}

} // namespace TESK_KIVO2D
