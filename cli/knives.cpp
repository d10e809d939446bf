#include "cli/knives.h"

#include "cli/checkInput.h"
#include "cli/errors.h"
#include "cli/numbers.h"

namespace cli {

namespace {

using TESK_KIVO2D::Point2;

void readKnifeFile(const std::string& filename, Input& input) {
    const CheckInput file = readSegmentsToCheck(filename);
    input.vKnives.insert(input.vKnives.end(), file.vSegments.begin(), file.vSegments.end());
    input.vFilenames.insert(input.vFilenames.end(), file.vFilenames.begin(), file.vFilenames.end());
}

} // namespace

void readKnives(const std::vector<std::string>& vTexts, Input& input) {
    for (const std::string& text : vTexts) {
        if (const auto ends = numberList<4>(text)) {
            const auto& [x0, y0, x1, y1] = *ends;
            input.vKnives.emplace_back(Point2(x0, y0), Point2(x1, y1));
        } else if (text.find_first_not_of("0123456789+-.,eE ") == std::string::npos) {
            throw UsageError("--cut takes four numbers x0,y0,x1,y1, or a file of segments, not " + text);
        } else {
            readKnifeFile(text, input);
        }
    }
}

} // namespace cli
