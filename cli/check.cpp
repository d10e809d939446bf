#include "cli/check.h"

#include "cli/Run.h"
#include "cli/checkFaults.h"
#include "cli/checkInput.h"
#include "cli/checkPicture.h"
#include "cli/checkReport.h"
#include "cli/formats.h"
#include "cli/libraryWriters.h"
#include "cli/messages.h"
#include "cli/outputFiles.h"
#include "cli/progress.h"

#include <algorithm>
#include <optional>

namespace cli {

namespace {

using TESK_KIVO2D::Segment2;
using TESK_KIVO2D::SegmentChecker;

void checkUsage(const CheckOptions& options) {
    for (const std::string& output : options.vOutputs) {
        if (formatOf(output) != FORMAT_SVG && formatOf(output) != FORMAT_PS)
            throw UsageError(output + ": pictures of faults are .svg and .ps files");
    }
}

void checkOutputs(const CheckOptions& options, const CheckInput& input, bool bNothingToDraw) {
    for (const std::string& output : options.vOutputs) {
        checkNotInput(output, input.vFilenames);
        if (bNothingToDraw)
            throw FileError(output, "is not written: no segment of " + options.input + " has a length");
    }
    for (const std::string& output : options.vOutputs)
        checkWritable(output);
}

CheckReport reportOf(const CheckOptions& options, const CheckInput& input) {
    const std::vector<Segment2>& vSegments = input.vSegments;
    CheckReport report;
    report.input = options.input;
    report.bEndPoints = options.bEndPoints;
    report.vOutputs = options.vOutputs;
    report.numSegments = vSegments.size();
    report.firstNumber = input.firstNumber;
    const auto isZeroLength = [](const Segment2& s) { return s.getSrc() == s.getTrg(); };
    report.numZeroLength =
        static_cast<std::size_t>(std::count_if(vSegments.begin(), vSegments.end(), isZeroLength));
    if (vSegments.empty()) return report;
    TESK_KIVO2D::Bbox2 box;
    for (const Segment2& segment : vSegments) {
        box.add(segment.getSrc());
        box.add(segment.getTrg());
    }
    report.boundingBox = {box.get_minX(), box.get_minY(), box.get_maxX(), box.get_maxY()};
    return report;
}

// Listens while it lives, when somebody looks.
class Listening {
public:
    Listening(SegmentChecker& checker_, bool bListens_) : checker(checker_), bListens(bListens_) {
        if (bListens) checker.subscribe(TESK_KIVO2D::MSG_PROGRESS, &progressBar);
    }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
    ~Listening() {
        if (bListens) checker.unsubscribe(TESK_KIVO2D::MSG_PROGRESS, &progressBar);
    }
    void update(double progress) {
        if (bListens) progressBar.update(TESK_KIVO2D::MSG_PROGRESS, "PAIRS", progress);
    }

private:
    SegmentChecker& checker;
    bool bListens;
    ProgressBar progressBar;
};

void drawPostScript(const std::string& filename, const SegmentChecker& checker, bool bEndPoints) {
    const QuietOutput quiet;
    checker.showIllegalSegments(bEndPoints, filename);
    if (isCompleteDrawing(filename)) return;
    removeUnfinished(filename);
    throw FileError(filename, "can't be written completely");
}

// Mirrored segments meet as they did before.
void drawPostScriptUpsideDown(const std::string& filename, std::vector<Segment2> vSegments, bool bEndPoints) {
    for (Segment2& segment : vSegments)
        segment = Segment2(upsideDown(segment.getSrc()), upsideDown(segment.getTrg()));
    FaultFinder finder(vSegments, bEndPoints);
    drawPostScript(filename, finder.getChecker(), bEndPoints);
}

bool wantsSvg(const CheckOptions& options) {
    return std::any_of(options.vOutputs.begin(), options.vOutputs.end(),
                       [](const std::string& output) { return formatOf(output) == FORMAT_SVG; });
}

void writePictures(const CheckOptions& options, const CheckInput& input, FaultFinder& finder,
                   const std::optional<CheckPicture>& picture, CheckReport& report) {
    if (options.vOutputs.empty()) return;
    const StopWatch watch;
    for (const std::string& output : options.vOutputs) {
        if (formatOf(output) == FORMAT_SVG)
            picture->write(output, report);
        else if (options.bFlipY)
            drawPostScriptUpsideDown(output, input.vSegments, options.bEndPoints);
        else
            drawPostScript(output, finder.getChecker(), options.bEndPoints);
    }
    report.writeTime = watch.seconds();
}

} // namespace

ExitCode runCheck(const CheckOptions& options) {
    checkUsage(options);
    const StopWatch readWatch;
    CheckInput input = readSegmentsToCheck(options.input);
    CheckReport report = reportOf(options, input);
    report.readTime = readWatch.seconds();
    checkOutputs(options, input, report.numZeroLength == report.numSegments);

    const StopWatch checkWatch;
    FaultFinder finder(input.vSegments, options.bEndPoints);
    Listening listening(finder.getChecker(), options.bProgress || isErrorStreamTerminal());
    const std::vector<std::size_t>& vAtFault = finder.findSegmentsAtFault();
    report.numAtFault = vAtFault.size();
    std::optional<CheckPicture> picture;
    if (wantsSvg(options)) picture.emplace(input.vSegments, vAtFault, options.bFlipY);
    CheckReportWriter writer(report, options.bJson, options.bList);
    writer.begin();
    const auto visit = [&](const Fault& fault) {
        ++report.aCounts[fault.kind];
        if (!options.bList && !picture) return;
        const FaultPlace place = finder.placeOf(fault);
        if (options.bList) writer.add(fault, place);
        if (picture) picture->add(fault, place);
    };
    report.bComplete = finder.forEachFault(options.maxPairs, visit,
                                           [&listening](double progress) { listening.update(progress); });
    report.checkTime = checkWatch.seconds();
    writePictures(options, input, finder, picture, report);
    writer.end();
    return report.numAtFault == 0 ? EXIT_CODE_OK : EXIT_CODE_FAULTS;
}

} // namespace cli
