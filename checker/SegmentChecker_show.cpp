#include "SegmentChecker.h"

#include "Circle2.h"
#include "Color.h"
#include "Visualizer2.h"
#include "checker/SegmentCheckerData.h"
#include "checker/faultMarks.h"
#include "kernel/messages.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace TESK_KIVO2D {
namespace {

using Segments = std::vector<Segment2*>;

const Color colorOfLegal(0.6, 0.6, 0.6, 0.25, false);
const Color colorOfConnected(1.0, 0.6, 0.1, 0.6, false);
const Color colorOfOverlaps(CBLUE, 1.7F);
const Color colorOfSharedEnds(0.0, 0.6, 0.2, 0.5, false);

// Lines are thick where they are few, thin where they would run into each other.
Color adjusted(Colorname name, std::size_t num, double many, double thickest, double thinnest) {
    const double width = thickest * many / static_cast<double>(num + 1);
    return Color(name, static_cast<float>(std::clamp(width, thinnest, thickest)));
}
Color colorOfIllegal(std::size_t num) { return adjusted(CRED, num, 1000, 0.8, 0.4); }
Color colorOfCrossings(std::size_t num) { return adjusted(CBLACK, num, 300, 1.1, 0.2); }
Color colorOfFaultPlaces(std::size_t num) { return adjusted(CRED, num, 100, 1.0, 0.25); }

// Who plays which part in a drawing.
struct Cast {
    Segments vLegal;
    Segments vConnected; // they share ends and nothing else, and that was asked for
    Segments vIllegal;

    Segments getFaulty() const {
        Segments vFaulty(vIllegal);
        vFaulty.insert(vFaulty.end(), vConnected.begin(), vConnected.end());
        return vFaulty;
    }
    Bbox2 getBox() const {
        Bbox2 box;
        for (const Segments* pSegments : {&vLegal, &vConnected, &vIllegal})
            for (const Segment2* p : *pSegments)
                box.add(p->getSrc()), box.add(p->getTrg());
        return box;
    }
};

void addSegmentsTo(Visualizer2& drawing, const Segments& vSegments, const Color& color) {
    for (const Segment2* p : vSegments) {
        if (p->getSrc() == p->getTrg())
            drawing.addObject(p->getSrc(), color); // as a line it would not be seen
        else
            drawing.addObject(*p, color);
    }
}

void addCirclesTo(Visualizer2& drawing, const std::vector<Point2>& vCenters, double radius,
                  const Color& color) {
    if (!std::isnormal(radius * radius)) return; // no circle has that radius: the crosses have to do
    for (const Point2& center : vCenters)
        drawing.addObject(Circle2(center, radius * radius), color);
}

void addHeaderTo(Visualizer2& drawing, const Cast& cast, bool alsoEndPoints, const FaultMarks& marks) {
    const auto addCount = [&](const char* text, std::size_t num, const char* bound = "") {
        drawing.addHeaderLine(text + (num > 0 ? bound : std::string()) + std::to_string(num));
    };
    const char* const bound = marks.bAllPairs ? "" : "at least ";
    const std::size_t numIllegal = cast.vIllegal.size(), numConnected = cast.vConnected.size();
    addCount("Segments (grey): ", cast.vLegal.size() + numIllegal + numConnected);
    addCount("- that intersect others (red): ", numIllegal);
    if (alsoEndPoints) addCount("- that only share ends (orange): ", numConnected);
    addCount("Pairs that cross or touch (black crosses): ", marks.numCrossings, bound);
    addCount("Pairs that overlap (thick blue lines): ", marks.numOverlaps, bound);
    if (alsoEndPoints) addCount("Pairs that share an end (green crosses): ", marks.numSharedEnds, bound);
    if (!marks.bAllPairs) drawing.addHeaderLine("Only a part of all pairs was looked at.");
}

void draw(const Cast& cast, bool alsoEndPoints, const FaultMarks& marks, const std::string& filename) {
    const double radius = circleShare * cast.getBox().getMaxRange();
    Visualizer2 drawing(filename);
    addHeaderTo(drawing, cast, alsoEndPoints, marks);
    addSegmentsTo(drawing, cast.vLegal, colorOfLegal);
    addSegmentsTo(drawing, cast.vConnected, colorOfConnected);
    addSegmentsTo(drawing, cast.vIllegal, colorOfIllegal(cast.vIllegal.size()));
    drawing.addObject(marks.vOverlaps, colorOfOverlaps);
    addCirclesTo(drawing, marks.vSharedEndPlaces, radius, colorOfSharedEnds);
    addCirclesTo(drawing, marks.vFaultPlaces, radius, colorOfFaultPlaces(marks.vFaultPlaces.size()));
    drawing.addObject(marks.vSharedEnds, colorOfSharedEnds);
    drawing.addObject(marks.vCrossings, colorOfCrossings(marks.vCrossings.size()));
    drawing.writeFile();
}

// Finds the roles of the segments at these places.
Cast findCast(const Segments& vSegments, const std::vector<std::uint32_t>& vPlaces, SegmentQueries& queries,
              bool alsoEndPoints, ProgressHub::Operation* pOperation) {
    Cast cast;
    const std::vector<char> vMeets = queries.findIllegal(alsoEndPoints, pOperation);
    const std::vector<char> vIntersects = alsoEndPoints ? queries.findIllegal(false, nullptr) : vMeets;
    for (const std::uint32_t place : vPlaces) {
        Segments& role = vIntersects[place] != 0 ? cast.vIllegal
                         : vMeets[place] != 0    ? cast.vConnected
                                                 : cast.vLegal;
        role.push_back(vSegments[place]);
    }
    return cast;
}

} // namespace

void SegmentChecker::showSegments(const std::string& filename) const {
    Segments vDrawn;
    for (const std::uint32_t place : pSCD->placesTakingPart())
        vDrawn.push_back(pSCD->vSegments[place]);
    Visualizer2 drawing(filename);
    addSegmentsTo(drawing, vDrawn, Color(CBLACK, 0.25F));
    drawing.writeFile();
    printText("SegmentChecker::showSegments(), numSegments=" + std::to_string(pSCD->vSegments.size()) + "\n");
}

void SegmentChecker::showIllegalSegments(bool alsoEndPoints, const std::string& filename) const {
    SegmentQueries& queries = pSCD->queries("SegmentChecker::showIllegalSegments()");
    const std::size_t half = queries.size(); // each for the segments, and for the places of their faults
    std::optional<ProgressHub::Operation> operation;
    if (pSCD->pPublisher) operation.emplace(*pSCD->pPublisher, "SEGCHECK", 2 * half);
    const Cast cast = findCast(pSCD->vSegments, pSCD->placesTakingPart(), queries, alsoEndPoints,
                               operation ? &*operation : nullptr);
    const Segments vFaulty = cast.getFaulty();
    std::size_t numDone = 0;
    const auto setProgress = [&](double share) {
        const auto num = static_cast<std::size_t>(0.9 * share * static_cast<double>(half));
        if (operation && num > numDone) operation->advance(num - numDone);
        numDone = std::max(numDone, num);
    };
    draw(cast, alsoEndPoints, collectFaultMarks(vFaulty, alsoEndPoints, cast.getBox(), setProgress),
         filename);
    reportInfo("SegmentChecker::showIllegalSegments()",
               "Illegal segments: " + std::to_string(vFaulty.size()));
    if (operation) operation->finish();
}

} // namespace TESK_KIVO2D
