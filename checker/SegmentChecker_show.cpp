#include "Color.h"
#include "Visualizer2.h"
#include "checker/SegmentCheckerData.h"
#include "kernel/messages.h"

namespace TESK_KIVO2D {

void SegmentChecker::showSegments(const std::string& filename) const {
    Visualizer2 drawing(filename);
    for (const Segment2* p : pSCD->vSegments)
        if (p != nullptr) drawing.addObject(*p, Color(CBLACK));
    drawing.writeFile();
    printText("SegmentChecker::showSegments(), numSegments=" + std::to_string(pSCD->vSegments.size()) + "\n");
}

void SegmentChecker::showIllegalSegments(bool alsoEndPoints, const std::string& filename) const {
    std::vector<Segment2*> vIllegal;
    getIllegalSegments(alsoEndPoints, vIllegal);
    Visualizer2 drawing(filename);
    for (const Segment2* p : pSCD->vSegments)
        if (p != nullptr) drawing.addObject(*p, Color(CBLACK));
    for (const Segment2* p : vIllegal)
        drawing.addObject(*p, Color(CRED));
    drawing.writeFile();
    reportInfo("SegmentChecker::showIllegalSegments()",
               "Illegal segments: " + std::to_string(vIllegal.size()));
}

} // namespace TESK_KIVO2D
