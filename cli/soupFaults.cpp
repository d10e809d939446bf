#include "cli/soupFaults.h"

#include "cli/messages.h"

#include <functions.h>

#include <charconv>
#include <cstdio>
#include <optional>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;

// Moves p behind "(x, y)"; nothing, and p stays, where there is something else.
std::optional<Point2> readPoint(const char*& p, const char* pEnd) {
    double aValues[2];
    const char* q = p;
    for (std::size_t i = 0; i < 2; ++i) {
        const std::string_view opening = i == 0 ? "(" : ", ";
        if (std::string_view(q, static_cast<std::size_t>(pEnd - q)).substr(0, opening.size()) != opening)
            return std::nullopt;
        const auto [pNext, error] = std::from_chars(q + opening.size(), pEnd, aValues[i]);
        if (error != std::errc()) return std::nullopt;
        q = pNext;
    }
    if (q == pEnd || *q != ')') return std::nullopt;
    p = q + 1;
    return Point2(aValues[0], aValues[1]);
}

// The points of a shape follow each other with one blank between.
std::vector<Shape> shapesIn(const std::string& line) {
    std::vector<Shape> vShapes;
    const char* p = line.data();
    const char* const pEnd = p + line.size();
    const char* pNextOfShape = nullptr;
    while (p != pEnd) {
        const bool bContinues = p == pNextOfShape;
        const std::optional<Point2> point = readPoint(p, pEnd);
        if (!point) {
            ++p;
            continue;
        }
        if (!bContinues) vShapes.emplace_back();
        vShapes.back().push_back(*point);
        pNextOfShape = p + 1;
    }
    return vShapes;
}

} // namespace

SoupFaults::SoupFaults() {
    TESK_KIVO2D::setMessageSink([this](TESK_KIVO2D::MessageChannel, const std::string& text) {
        std::fputs(text.c_str(), stderr);
        std::vector<Shape> vShapes = shapesIn(text);
        if (!vShapes.empty()) vShapesOf.push_back(std::move(vShapes));
    });
}

SoupFaults::~SoupFaults() { sendMessagesToErrorStream(); }

} // namespace cli
