#include "cli/checkInsets.h"

#include "cli/checkPanel.h"
#include "cli/numbers.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;

constexpr double SIDE = 150.0, GAP = 20.0, CAPTION = 50.0;
constexpr std::size_t NUM_COLUMNS = 2;
constexpr std::size_t MAX_LINES = 1000; // of one colour in one square, where more would be a blot anyway

// Relative to a square from -1 to 1 both ways.
struct Vector {
    double x, y;
};
struct Line {
    Vector from, to;
};

// What of the line lies in the square; false when nothing does.
bool clip(Line& line) {
    const Vector start = line.from, step{line.to.x - start.x, line.to.y - start.y};
    double first = 0.0, last = 1.0;
    for (const auto& [at, by] : {std::pair(start.x, step.x), std::pair(start.y, step.y)}) {
        if (by == 0.0) {
            if (std::abs(at) > 1.0) return false;
            continue;
        }
        const auto [in, out] = std::minmax({(-1.0 - at) / by, (1.0 - at) / by});
        first = std::max(first, in);
        last = std::min(last, out);
    }
    if (!(first <= last)) return false;
    line = {{start.x + first * step.x, start.y + first * step.y},
            {start.x + last * step.x, start.y + last * step.y}};
    return true;
}

// The square around a fault.
class Window {
public:
    // The nearest end that is not at the fault itself is well inside: a segment that goes a little too far
    // shows how far. But not so small that the grid of the doubles shows.
    Window(const Inset& inset, const InsetSource& source)
        : centre{inset.place.from.x() / 8.0 + inset.place.to.x() / 8.0,
                 inset.place.from.y() / 8.0 + inset.place.to.y() / 8.0},
          sign(source.bFlipY ? 1.0 : -1.0) {
        double nearest = 0.0;
        for (const std::size_t i : {inset.fault.first, inset.fault.second}) {
            for (const Point2& end : {source.vSegments[i].getSrc(), source.vSegments[i].getTrg()}) {
                const Vector v = quarterOf(end);
                const double distance = std::max(std::abs(v.x), std::abs(v.y));
                if (distance > 0.0 && (nearest == 0.0 || distance < nearest)) nearest = distance;
            }
        }
        constexpr double VISIBLE = 1e-13, TINY = 1e-300;
        const double grid = std::max({std::abs(centre.x) * VISIBLE, std::abs(centre.y) * VISIBLE, TINY});
        halfSide = std::max(nearest * 2.5, grid);
    }

    Line lineOf(const Point2& from, const Point2& to) const { return {inSquare(from), inSquare(to)}; }

private:
    // A quarter of all lengths, since differences might be infinite else.
    Vector quarterOf(const Point2& p) const { return {p.x() / 4.0 - centre.x, p.y() / 4.0 - centre.y}; }
    Vector inSquare(const Point2& p) const {
        const Vector v = quarterOf(p);
        return {v.x / halfSide, sign * v.y / halfSide};
    }

    Vector centre;
    double sign;
    double halfSide = 0.0;
};

class InsetWriter {
public:
    InsetWriter(OutputFile& out_, const Inset& inset_, const InsetSource& source_)
        : out(out_), inset(inset_), source(source_), window(inset_, source_) {}

    void write() {
        const FaultStyle& style = FAULT_STYLES[inset.fault.kind];
        const bool bDot = inset.place.from == inset.place.to;
        writeOthers();
        if (!bDot) writeMark(style.color, 6.0);
        beginPath(AT_FAULT_COLOR, 2.0);
        addSegment(inset.fault.first);
        addSegment(inset.fault.second);
        endPath();
        if (bDot) writeMark(style.color, 6.0);
        out << "<rect width=\"" << SIDE << "\" height=\"" << SIDE << "\" fill=\"none\" stroke=\""
            << PLACE_COLOR << "\" stroke-width=\"1.5\"/>\n";
    }

private:
    void writeOthers() {
        std::vector<std::size_t> vFaultless, vOthers;
        auto itAtFault = source.vAtFault.begin();
        for (std::size_t i = 0; i < source.vSegments.size(); ++i) {
            const bool bAtFault = itAtFault != source.vAtFault.end() && *itAtFault == i;
            if (bAtFault) ++itAtFault;
            std::vector<std::size_t>& vSame = bAtFault ? vOthers : vFaultless;
            Line line = lineOf(i);
            if (vSame.size() < MAX_LINES && clip(line)) vSame.push_back(i);
        }
        writeAll(vFaultless, SEGMENT_COLOR);
        writeAll(vOthers, AT_FAULT_COLOR);
    }
    void writeAll(const std::vector<std::size_t>& vPositions, const char* color) {
        beginPath(color, 0.8);
        for (const std::size_t i : vPositions)
            addSegment(i);
        endPath();
    }
    void writeMark(const char* color, double width) {
        beginPath(color, width);
        addLine(window.lineOf(inset.place.from, inset.place.to));
        endPath();
    }

    Line lineOf(std::size_t i) const {
        return window.lineOf(source.vSegments[i].getSrc(), source.vSegments[i].getTrg());
    }
    void addSegment(std::size_t i) { addLine(lineOf(i)); }
    void addLine(Line line) {
        if (!clip(line)) return;
        out << "M" << onPage(line.from.x) << " " << onPage(line.from.y) << "L" << onPage(line.to.x) << " "
            << onPage(line.to.y);
    }
    static std::string onPage(double part) { return rounded((part + 1.0) * SIDE / 2.0, 2); }
    void beginPath(const char* color, double width) {
        out << "<path fill=\"none\" stroke-linecap=\"round\" stroke=\"" << color << "\" stroke-width=\""
            << width << "\" d=\"";
    }
    void endPath() { out << "\"/>\n"; }

    OutputFile& out;
    const Inset& inset;
    const InsetSource& source;
    Window window;
};

} // namespace

double heightOfInsets(std::size_t numInsets) {
    const std::size_t numRows = (numInsets + NUM_COLUMNS - 1) / NUM_COLUMNS;
    return static_cast<double>(numRows) * (SIDE + CAPTION);
}

void writeInsets(OutputFile& out, double top, const std::vector<Inset>& vInsets, const InsetSource& source) {
    for (std::size_t k = 0; k < vInsets.size(); ++k) {
        const Fault& fault = vInsets[k].fault;
        out << "<g class=\"inset\" transform=\"translate("
            << static_cast<double>(k % NUM_COLUMNS) * (SIDE + GAP) << " "
            << top + static_cast<double>(k / NUM_COLUMNS) * (SIDE + CAPTION) << ")\">\n";
        InsetWriter(out, vInsets[k], source).write();
        out << "<text y=\"" << SIDE + 18.0 << "\" font-size=\"13\"><tspan font-weight=\"bold\" fill=\""
            << PLACE_COLOR << "\">" << k + 1 << "</tspan> " << FAULT_STYLES[fault.kind].one
            << "</text>\n<text y=\"" << SIDE + 34.0 << "\" font-size=\"13\">"
            << fault.first + source.firstNumber << " and " << fault.second + source.firstNumber
            << "</text>\n</g>\n";
    }
}

} // namespace cli
