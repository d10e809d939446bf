#include "cli/checkPanel.h"

#include "cli/svgText.h"

#include <filesystem>

namespace cli {

namespace {

constexpr double ROW = 24.0, VALUE = 34.0;

// Rows of a sign and a text, from above.
class Rows {
public:
    Rows(OutputFile& out_, double y_) : out(out_), y(y_) {}

    void text(const std::string& content, double x = VALUE) {
        out << "<text x=\"" << x << "\" y=\"" << y << "\">" << escaped(content) << "</text>\n";
        y += ROW;
    }
    void line(const char* color, double width, const std::string& content) {
        sign("<path d=\"M2 ", color, width, "h18\" stroke-linecap=\"round\"");
        text(content);
    }
    void dot(const char* color, double width, const std::string& content) {
        sign("<path d=\"M11 ", color, width, "h0\" stroke-linecap=\"round\"");
        text(content);
    }
    void ring(const char* color, const std::string& content) {
        out << "<circle cx=\"11\" cy=\"" << y - 5.0 << "\" r=\"9\" fill=\"none\" stroke=\"" << color
            << "\" stroke-width=\"2\"/>\n";
        text(content);
    }

private:
    void sign(const char* start, const char* color, double width, const char* end) {
        out << start << y - 5.0 << end << " fill=\"none\" stroke=\"" << color << "\" stroke-width=\"" << width
            << "\"/>\n";
    }

    OutputFile& out;
    double y;
};

std::string countOf(std::uint64_t count, const char* one, const char* many) {
    return grouped(count) + " " + (count == 1 ? one : many);
}

std::string atFaultOf(const CheckReport& report) {
    return (report.numAtFault == 0 ? "none" : grouped(report.numAtFault)) + " at fault";
}

} // namespace

std::string titleOf(const CheckReport& report) {
    return countOf(report.numSegments, "segment", "segments") + ", " + atFaultOf(report);
}

void writeLegend(OutputFile& out, const CheckReport& report, std::size_t numPlaces, std::size_t numRings) {
    out << "<g font-size=\"20\" font-weight=\"bold\">";
    Rows(out, 22.0).text(std::filesystem::path(report.input).filename().string(), 0.0);
    out << "</g>\n";
    Rows rows(out, 56.0);
    rows.line(SEGMENT_COLOR, 1.0, countOf(report.numSegments, "segment", "segments"));
    rows.line(AT_FAULT_COLOR, 2.0, atFaultOf(report));
    for (std::size_t kind = 0; kind < NUM_FAULT_KINDS; ++kind) {
        if (report.aCounts[kind] == 0) continue;
        const FaultStyle& style = FAULT_STYLES[kind];
        const std::string label =
            (report.bComplete ? "" : "at least ") + countOf(report.aCounts[kind], style.one, style.many);
        const bool bLine = kind == FAULT_OVERLAP || kind == FAULT_DUPLICATE;
        const double width = style.width / 100.0;
        bLine ? rows.line(style.color, width, label) : rows.dot(style.color, width, label);
    }
    if (numPlaces == 0) return;
    const std::string marked = numRings < numPlaces ? grouped(numRings) + " of " : "";
    rows.ring(PLACE_COLOR, "where to look: " + marked + countOf(numPlaces, "place", "places"));
}

} // namespace cli
