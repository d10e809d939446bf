#include "constraints/SoupFaults.h"

#include "kernel/messages.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace TESK_KIVO2D {
namespace {

using Index = TriangleSoup::Index;

void append(std::string& text, double value) {
    char aDigits[32];
    const auto [pEnd, error] =
        std::to_chars(aDigits, aDigits + sizeof(aDigits), value, std::chars_format::general, 17);
    text.append(aDigits, pEnd);
}

std::string textOf(const Point2& p) {
    std::string text = "(";
    append(text, p.x());
    text += ", ";
    append(text, p.y());
    return text + ")";
}

std::string textOf(const TriangleSoup& soup, Index given) {
    std::string text = std::to_string(given);
    for (const Point2& corner : soup.givenCorners(given))
        text += " " + textOf(corner);
    return text;
}

std::string edgeText(const SoupFault& fault) {
    return "edge " + textOf(std::min(fault.p, fault.q)) + " " + textOf(std::max(fault.p, fault.q));
}

// "K triangles: N, M, L" of those at the edge.
std::string sharersText(const TriangleSoup& soup, const SoupFault& fault) {
    constexpr std::size_t maxListed = 10;
    std::vector<Index> vSharers;
    for (const std::uint64_t half : soup.halvesBetween(soup.find(fault.p), soup.find(fault.q)))
        vSharers.push_back(soup.triangles()[TriangleSoup::halfOf(half).triangle].given);
    std::sort(vSharers.begin(), vSharers.end());
    std::string text = std::to_string(vSharers.size()) + " triangles";
    for (std::size_t i = 0; i < std::min(vSharers.size(), maxListed); ++i)
        text += (i == 0 ? ": " : ", ") + std::to_string(vSharers[i]);
    return vSharers.size() > maxListed ? text + ", ..." : text;
}

std::string textOf(const TriangleSoup& soup, const SoupFault& fault) {
    const std::string number = std::to_string(fault.triangle);
    switch (fault.kind) {
    case SoupFault::NOT_FINITE:
        return "Triangle " + textOf(soup, fault.triangle) + " has a coordinate that is not finite";
    case SoupFault::DEGENERATE:
        return "Triangle " + textOf(soup, fault.triangle) + " is degenerate";
    case SoupFault::SHARED_EDGE:
        return "The " + edgeText(fault) + " is shared by " + sharersText(soup, fault);
    case SoupFault::CORNER_IN_EDGE:
    case SoupFault::VERTEX_IN_EDGE:
        return std::string(fault.kind == SoupFault::CORNER_IN_EDGE ? "The corner " : "The vertex ") +
               textOf(fault.point) + " lies inside the " + edgeText(fault) + " of triangle " + number;
    case SoupFault::VERTEX_IN_TRIANGLE:
        return "The vertex " + textOf(fault.point) + " lies inside triangle " + textOf(soup, fault.triangle);
    case SoupFault::OVERLAP:
        return "Triangle " + textOf(soup, fault.triangle) + " and triangle " + textOf(soup, fault.other) +
               " overlap";
    case SoupFault::CROSSED_EDGE:
        return "The constraint segment " + textOf(fault.from) + " " + textOf(fault.to) + " crosses the " +
               edgeText(fault) + " of triangle " + number;
    }
    return "";
}

} // namespace

void SoupFaults::report(const TriangleSoup& soup, const std::string& location) {
    constexpr std::size_t maxLines = 100;
    faults.unite();
    const std::vector<SoupFault>& vFaults = faults.all();
    for (std::size_t i = 0; i < std::min(vFaults.size(), maxLines); ++i)
        reportError(location, textOf(soup, vFaults[i]));
    reportError(location, (bComplete ? "" : "At least ") + std::to_string(vFaults.size()) +
                              (vFaults.size() == 1 ? " fault" : " faults") +
                              ", nothing imported, returning NULL");
}

} // namespace TESK_KIVO2D
