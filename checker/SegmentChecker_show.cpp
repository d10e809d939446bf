#include "SegmentChecker.h"

#include "Circle2.h"
#include "Color.h"
#include "Visualizer2.h"
#include "checker/SegmentCheckerData.h"
#include "checker/faultMarks.h"
#include "kernel/messages.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>

namespace TESK_KIVO2D {
namespace {

const Color colorOfLegal(0.6, 0.6, 0.6, 0.25, false);
const Color colorOfIllegal(CRED, 0.8F);
const Color colorOfManyIllegal(CRED, 0.4F); // else they run into one
const Color colorOfConnected(CORANGE, 0.6F);
const Color colorOfCrossings(CBLACK, 0.7F);
const Color colorOfOverlaps(CBLUE, 2.4F);
const Color colorOfSharedEnds(0.0, 0.6, 0.2, 0.7, false);

using Segments = std::vector<Segment2*>;

// Those that take part in anything; the others were warned of when they came.
Segments getDrawable(const Segments& vSegments) {
    Segments vDrawable;
    for (Segment2* p : vSegments)
        if (p != nullptr && std::isfinite(p->getSrc().getMaxAbs()) && std::isfinite(p->getTrg().getMaxAbs()))
            vDrawable.push_back(p);
    return vDrawable;
}

Segments subtract(const Segments& vSegments, Segments vSubtrahend) {
    std::sort(vSubtrahend.begin(), vSubtrahend.end(), std::less<>());
    Segments vRest;
    for (Segment2* p : vSegments)
        if (!std::binary_search(vSubtrahend.begin(), vSubtrahend.end(), p, std::less<>())) vRest.push_back(p);
    return vRest;
}

void addSegmentsTo(Visualizer2& drawing, const Segments& vSegments, const Color& color) {
    for (const Segment2* p : vSegments) {
        if (p->getSrc() == p->getTrg())
            drawing.addObject(p->getSrc(), color); // as a line it would not be seen
        else
            drawing.addObject(*p, color);
    }
}

Bbox2 boxOf(const Segments& vSegments) {
    Bbox2 box;
    for (const Segment2* p : vSegments) {
        box.add(p->getSrc());
        box.add(p->getTrg());
    }
    return box;
}

// None where their radius has no square: the crosses have to do there.
void addCircles(Visualizer2& drawing, const std::vector<Point2>& vCenters, double radius, Color color) {
    if (!std::isnormal(radius * radius)) return;
    color.width = 0.5F;
    for (const Point2& center : vCenters)
        drawing.addObject(Circle2(center, radius * radius), color);
}

void addMarks(Visualizer2& drawing, const FaultMarks& marks, double radius) {
    drawing.addObject(marks.vOverlaps, colorOfOverlaps);
    addCircles(drawing, marks.vSharedEndPlaces, radius, colorOfSharedEnds);
    addCircles(drawing, marks.vFaultPlaces, radius, colorOfIllegal);
    drawing.addObject(marks.vSharedEnds, colorOfSharedEnds);
    drawing.addObject(marks.vCrossings, colorOfCrossings);
}

void addHeader(Visualizer2& drawing, std::size_t numSegments, std::size_t numIllegal, bool alsoEndPoints,
               const FaultMarks& marks) {
    const std::string bound = marks.bAllPairs ? "" : "at least ";
    const auto addLine = [&](const std::string& before, std::size_t num, const std::string& after) {
        drawing.addHeaderLine(before + std::to_string(num) + after);
    };
    addLine("", numSegments, " segments (grey)");
    addLine("", numIllegal, " illegal ones (red)");
    addLine(bound, marks.numCrossings, " crossing pairs (black crosses)");
    addLine(bound, marks.numOverlaps, " overlapping pairs (thick blue)");
    if (alsoEndPoints) addLine(bound, marks.numSharedEnds, " pairs with a common end (green crosses)");
}

} // namespace

void SegmentChecker::showSegments(const std::string& filename) const {
    Visualizer2 drawing(filename);
    addSegmentsTo(drawing, getDrawable(pSCD->vSegments), Color(CBLACK, 0.25F));
    drawing.writeFile();
    printText("SegmentChecker::showSegments(), numSegments=" + std::to_string(pSCD->vSegments.size()) + "\n");
}

void SegmentChecker::showIllegalSegments(bool alsoEndPoints, const std::string& filename) const {
    // Two halves: finding the illegal segments, and the places of their faults.
    constexpr std::size_t half = 1000;
    std::optional<ProgressHub::Operation> operation;
    if (pSCD->pPublisher) operation.emplace(*pSCD->pPublisher, "SEGCHECK", 2 * half);
    std::size_t numDone = 0;
    const auto advanceTo = [&](double share) {
        const auto target = static_cast<std::size_t>(share * half);
        if (operation && target > numDone) operation->advance(target - numDone);
        numDone = std::max(numDone, target);
    };

    Segments vIllegal;
    getIllegalSegments(alsoEndPoints, vIllegal);
    advanceTo(1);
    const Segments vDrawable = getDrawable(pSCD->vSegments);
    const Bbox2 box = boxOf(vDrawable);
    const FaultMarks marks =
        collectFaultMarks(vIllegal, alsoEndPoints, box, [&](double share) { advanceTo(1 + 0.99 * share); });

    Visualizer2 drawing(filename);
    addHeader(drawing, pSCD->vSegments.size(), vIllegal.size(), alsoEndPoints, marks);
    addSegmentsTo(drawing, subtract(vDrawable, vIllegal), colorOfLegal);
    addSegmentsTo(drawing, vIllegal, colorOfIllegal);
    addMarks(drawing, marks, circleShare * box.getMaxRange());
    drawing.writeFile();
    reportInfo("SegmentChecker::showIllegalSegments()",
               "Illegal segments: " + std::to_string(vIllegal.size()));
    if (operation) operation->finish();
}

} // namespace TESK_KIVO2D
