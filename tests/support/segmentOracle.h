#pragma once

#include "SegmentChecker.h"
#include "checker/SegmentQueries.h"
#include "tests/oracle/exact.h"
#include "tests/support/doubles.h"

#include <algorithm>
#include <bit>
#include <string>

// A second opinion on what a segment checker finds: rationals for two segments, each compared with each for
// sets. Faults come back as text.
namespace segmentOracle {

using namespace TESK_KIVO2D;
using doubles::Points;
using Pointers = std::vector<Segment2*>;
using Intersectors = std::vector<std::pair<Segment2*, SegmentIntersectionType>>;

// Bit for bit.
inline bool isSame(const Point2& p, const Point2& q) {
    const auto bits = [](double v) { return std::bit_cast<std::uint64_t>(v); };
    return bits(p.x()) == bits(q.x()) && bits(p.y()) == bits(q.y());
}
inline bool isAt(const oracle::RationalPoint& exact, const Point2& p) {
    return exact.x == p.x() && exact.y == p.y();
}
// Within a unit in the last place: no double lies between them.
inline bool isNextTo(double value, const mpq_class& exact) {
    const double below = std::nextafter(value, -HUGE_VAL), above = std::nextafter(value, HUGE_VAL);
    return (std::isinf(below) || below < exact) && (std::isinf(above) || exact < above);
}

// Whether type and shared part of the segments p[0]p[1] and p[2]p[3] are as the exact ones.
inline bool isRight(const SegmentChecker& checker, const Points& p, SegmentIntersectionType type,
                    const std::optional<oracle::RationalSegment>& exact) {
    const Segment2 a(p[0], p[1]), b(p[2], p[3]);
    const auto isEnd = [&](const Point2& q) {
        return std::any_of(p.begin(), p.end(), [&](const Point2& end) { return isSame(end, q); });
    };
    if (checker.getIntersectionType(&a, &b) != type) return false;
    if (type == SIT_NONE) return true;
    const oracle::RationalPoint &first = exact->first, &last = exact->last;
    if (type == SIT_SEGMENT) {
        Segment2 shared;
        if (!checker.getIntersectionSegment(&a, &b, shared)) return false;
        const Point2 src = shared.getSrc(), trg = shared.getTrg();
        const bool bForth = isAt(first, src) && isAt(last, trg), bBack = isAt(last, src) && isAt(first, trg);
        return (bForth || bBack) && (src < trg) == (p[0] < p[1]) && isEnd(src) && isEnd(trg);
    }
    Point2 point;
    point.setCustomIndex(3);
    const bool bAtEnd = std::any_of(p.begin(), p.end(), [&](const Point2& q) { return isAt(first, q); });
    return checker.getIntersectionPoint(SIT_POINT, &a, &b, point) && isNextTo(point.x(), first.x) &&
           isNextTo(point.y(), first.y) && (!bAtEnd || isEnd(point)) && point.getCustomIndex() == -1;
}

inline SegmentIntersectionType exactType(const Points& p,
                                         const std::optional<oracle::RationalSegment>& exact) {
    if (!exact) return SIT_NONE;
    if (!(exact->first == exact->last)) return SIT_SEGMENT;
    const auto isEnd = [&](std::size_t i) { return isAt(exact->first, p[i]); };
    return (isEnd(0) || isEnd(1)) && (isEnd(2) || isEnd(3)) ? SIT_ENDPOINT : SIT_POINT;
}

// In both directions of both segments, and with either one first.
inline std::string findFault(const SegmentChecker& checker, const Points& p) {
    const auto exact = oracle::commonPoints(p[0], p[1], p[2], p[3]);
    const SegmentIntersectionType type = exactType(p, exact);
    for (unsigned bits = 0; bits < 8; ++bits) {
        Points q = p;
        if ((bits & 1) != 0) std::swap(q[0], q[1]);
        if ((bits & 2) != 0) std::swap(q[2], q[3]);
        if ((bits & 4) != 0) std::rotate(q.begin(), q.begin() + 2, q.end());
        if (!isRight(checker, q, type, exact))
            return SegmentChecker::getIntersectionTypeString(type) + " of " + doubles::hex(q);
    }
    return "";
}

inline bool isFinite(const Segment2& s) {
    const Point2 a = s.getSrc(), b = s.getTrg();
    return a.x() * 0 + a.y() * 0 + b.x() * 0 + b.y() * 0 == 0;
}

// Null pointers, what is not finite and what was there before take no part.
inline std::vector<std::uint32_t> placesTakingPart(const Pointers& v) {
    std::vector<std::uint32_t> vPlaces;
    for (auto it = v.begin(); it != v.end(); ++it)
        if (*it != nullptr && isFinite(**it) && std::find(v.begin(), it, *it) == it)
            vPlaces.push_back(static_cast<std::uint32_t>(it - v.begin()));
    return vPlaces;
}

// In all queries over a set; what is illegal is also searched by lines soon, or never.
inline std::string findFault(const SegmentChecker& checker, const Pointers& v) {
    const std::vector<std::uint32_t> vPlaces = placesTakingPart(v);
    std::vector<Intersectors> vAll(v.size(), {{nullptr, SIT_NONE}}); // what was there before: queries append
    for (const std::uint32_t i : vPlaces) {
        for (auto j = vPlaces.begin(); *j != i; ++j) {
            const SegmentIntersectionType type = checker.getIntersectionType(v[i], v[*j]);
            if (type == SIT_NONE) continue;
            vAll[i].emplace_back(v[*j], type);
            vAll[*j].emplace_back(v[i], type);
        }
    }
    SegmentQueries queries(v, vPlaces);
    for (const bool alsoEndPoints : {true, false}) {
        Pointers vIllegal = {nullptr}, vFound = vIllegal;
        std::vector<char> vMarks(v.size(), 0);
        for (const std::uint32_t place : vPlaces) {
            if (!alsoEndPoints)
                std::erase_if(vAll[place], [](const auto& hit) { return hit.second == SIT_ENDPOINT; });
            Intersectors vOfOne = {{nullptr, SIT_NONE}};
            checker.getIntersectors(v[place], alsoEndPoints, vOfOne);
            if (vOfOne != vAll[place]) return "intersectors of " + std::to_string(place);
            vMarks[place] = vAll[place].size() > 1;
            if (vMarks[place] != 0) vIllegal.push_back(v[place]);
        }
        checker.getIllegalSegments(alsoEndPoints, vFound);
        if (vFound != vIllegal) return "illegal segments";
        for (const std::size_t maxMisses : {std::size_t(0), std::size_t(1), std::size_t(1) << 40})
            if (queries.findIllegal(alsoEndPoints, nullptr, maxMisses) != vMarks)
                return "illegal segments by lines after misses: " + std::to_string(maxMisses);
    }
    return "";
}

} // namespace segmentOracle
