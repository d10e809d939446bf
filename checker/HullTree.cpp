#include "checker/HullTree.h"

#include "checker/segmentClassification.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace TESK_KIVO2D {
namespace {

// A segment in the frame of a group: the middle and the half length along the group's direction and across.
// Only guides how groups are halved.
struct Shape {
    double x, y;         // middle
    double halfX, halfY; // half of it, pointing right, or up
};

struct Range {
    double low = HUGE_VAL, high = -HUGE_VAL;
    void add(double v) {
        low = std::min(low, v);
        high = std::max(high, v);
    }
    double size() const { return high - low; }
};

struct Direction {
    double x, y;
    double along(double px, double py) const { return x * px + y * py; }
    double across(double px, double py) const { return x * py - y * px; }
};

// The mean of directions that are the same both ways: that of the doubled angles, halved.
Direction meanDirection(std::span<const std::uint32_t> group, const std::vector<Shape>& vShapes) {
    double sumX = 0, sumY = 0;
    for (const std::uint32_t i : group) {
        const Shape& s = vShapes[i];
        sumX += s.halfX * s.halfX - s.halfY * s.halfY;
        sumY += 2 * s.halfX * s.halfY;
    }
    const double angle = 0.5 * std::atan2(sumY, sumX);
    return {std::cos(angle), std::sin(angle)};
}

enum Criterion { POSITION, OFFSET, ANGLE };

double keyOf(const Shape& s, const Direction& d, Criterion criterion) {
    if (criterion == POSITION) return d.along(s.x, s.y);
    if (criterion == OFFSET) return d.across(s.x, s.y);
    // The sine, as the directions lie within half a turn of the mean.
    const double sine = d.across(s.halfX, s.halfY), length = std::hypot(s.halfX, s.halfY);
    if (length == 0) return 0;
    return (d.along(s.halfX, s.halfY) < 0 ? -sine : sine) / length;
}

// Of a group's extent, which is the range of middles and the size of segments, halving takes off half of that
// one range. Where two criteria are about as good the larger range is halved, so that groups do not get thin,
// and opposite spokes of a star get apart.
Criterion bestCriterion(std::span<const std::uint32_t> group, const std::vector<Shape>& vShapes,
                        const Direction& d) {
    Range position, offset;
    double halfLength = 0, halfBreadth = 0;
    for (const std::uint32_t i : group) {
        const Shape& s = vShapes[i];
        position.add(d.along(s.x, s.y));
        offset.add(d.across(s.x, s.y));
        halfLength = std::max(halfLength, std::fabs(d.along(s.halfX, s.halfY)));
        halfBreadth = std::max(halfBreadth, std::fabs(d.across(s.halfX, s.halfY)));
    }
    const double tiny = 1e-300, breadth = 2 * halfBreadth;
    const double byPosition = position.size() / (position.size() + 2 * halfLength + tiny);
    const double byOffset = offset.size() / (offset.size() + breadth + tiny);
    const double byAngle = breadth / (offset.size() + breadth + tiny);
    constexpr double clear = 0.2;
    if (byAngle > byPosition + clear && byAngle > byOffset) return ANGLE;
    if (std::fabs(byPosition - byOffset) < clear) return position.size() > offset.size() ? POSITION : OFFSET;
    return byPosition > byOffset ? POSITION : OFFSET;
}

} // namespace

class HullTree::Builder {
public:
    explicit Builder(HullTree& treeToBuild) : tree(treeToBuild), tests(treeToBuild.tests) {}

    void build() {
        const std::size_t num = tree.segments.size();
        makeShapes();
        tree.vOrder.resize(num);
        for (std::size_t i = 0; i < num; ++i)
            tree.vOrder[i] = static_cast<std::uint32_t>(i);
        vKeys.resize(num);
        tree.vNodes.reserve(num / 2 + 2);
        if (num > 0) add(0, static_cast<std::uint32_t>(num));
    }

private:
    // Multiplied by a power of two, so that no product overflows or vanishes.
    void makeShapes() {
        const Bbox2& box = tree.segments.box();
        const Point2 low = box.getMinPoint(), high = box.getMaxPoint();
        const double midX = low.x() * 0.5 + high.x() * 0.5, midY = low.y() * 0.5 + high.y() * 0.5;
        const double extent = std::max(high.x() * 0.5 - low.x() * 0.5, high.y() * 0.5 - low.y() * 0.5);
        const int exponent = extent > 0 ? -std::ilogb(extent) : 0;
        const double half = std::ldexp(0.5, exponent / 2), rest = std::ldexp(1, exponent - exponent / 2);
        vShapes.reserve(tree.segments.size());
        for (std::size_t i = 0; i < tree.segments.size(); ++i) {
            const Ends& e = tree.segments[i];
            const double x0 = (e.srcX * 0.5 - midX * 0.5) * half * rest,
                         x1 = (e.trgX * 0.5 - midX * 0.5) * half * rest;
            const double y0 = (e.srcY * 0.5 - midY * 0.5) * half * rest,
                         y1 = (e.trgY * 0.5 - midY * 0.5) * half * rest;
            vShapes.push_back({x0 + x1, y0 + y1, x1 - x0, y1 - y0});
        }
    }

    // The nodes of a group, and its hull on top of vHulls, from the smallest point counter-clockwise.
    void add(std::uint32_t first, std::uint32_t last) {
        const std::size_t number = tree.vNodes.size(), hullStart = vHulls.size();
        tree.vNodes.emplace_back();
        tree.vNodes[number].first = first;
        tree.vNodes[number].last = last;
        const std::span<const std::uint32_t> group(&tree.vOrder[first], last - first);
        const Direction d = meanDirection(group, vShapes);
        if (group.size() <= maxLeaf) {
            for (const std::uint32_t i : group) {
                const Ends& e = tree.segments[i];
                vHulls.push_back({e.srcX, e.srcY});
                vHulls.push_back({e.trgX, e.trgY});
            }
        } else {
            const std::uint32_t middle = first + (last - first) / 2;
            halve(first, middle, last, d);
            add(first, middle);
            tree.vNodes[number].right = static_cast<std::uint32_t>(tree.vNodes.size());
            add(middle, last);
        }
        makeHull(hullStart);
        bound(tree.vNodes[number], std::span<const Spot>(vHulls).subspan(hullStart), d);
    }

    void halve(std::uint32_t first, std::uint32_t middle, std::uint32_t last, const Direction& d) {
        const std::span<std::uint32_t> group(&tree.vOrder[first], last - first);
        const Criterion criterion = bestCriterion(group, vShapes, d);
        for (const std::uint32_t i : group)
            vKeys[i] = keyOf(vShapes[i], d, criterion);
        std::nth_element(group.begin(), group.begin() + (middle - first), group.end(),
                         [&](std::uint32_t i, std::uint32_t j) {
                             return vKeys[i] < vKeys[j] || (vKeys[i] == vKeys[j] && i < j);
                         });
    }

    // Andrew's monotone chain; points inside straight pieces go.
    void makeHull(std::size_t start) {
        const auto before = [](const Spot& p, const Spot& q) {
            return p.x < q.x || (p.x == q.x && p.y < q.y);
        };
        const auto isSame = [](const Spot& p, const Spot& q) { return p.x == q.x && p.y == q.y; };
        vSorted.assign(vHulls.begin() + static_cast<std::ptrdiff_t>(start), vHulls.end());
        std::sort(vSorted.begin(), vSorted.end(), before);
        vSorted.erase(std::unique(vSorted.begin(), vSorted.end(), isSame), vSorted.end());
        vHulls.resize(start);
        appendChain(start, vSorted);
        if (vSorted.size() < 2) return;
        vHulls.pop_back(); // the largest point begins the second chain
        std::reverse(vSorted.begin(), vSorted.end());
        appendChain(vHulls.size(), vSorted);
        vHulls.pop_back(); // the smallest has begun the first one
    }
    void appendChain(std::size_t start, const std::vector<Spot>& vPoints) {
        for (const Spot& p : vPoints) {
            while (vHulls.size() >= start + 2 &&
                   tests.orientation(vHulls[vHulls.size() - 2], vHulls.back(), p) != ORIENTATION2_CCW)
                vHulls.pop_back();
            vHulls.push_back(p);
        }
    }

    // Of the hull's edges the two across the middle leave the least room between them.
    static void bound(Node& node, std::span<const Spot> hull, const Direction& d) {
        Range x, y, along;
        for (const Spot& p : hull) {
            x.add(p.x);
            y.add(p.y);
            along.add(d.along(p.x, p.y));
        }
        node.box = {x.low, y.low, x.high, y.high};
        const double middle = along.low * 0.5 + along.high * 0.5;
        const std::size_t num = hull.size();
        node.aBorders = {Border{hull[0], hull[1 % num]}, Border{hull[num / 2], hull[(num / 2 + 1) % num]}};
        for (std::size_t i = 0; i < num; ++i) {
            const Spot &a = hull[i], &b = hull[(i + 1) % num];
            const bool bBefore = d.along(a.x, a.y) < middle, bAfter = d.along(b.x, b.y) >= middle;
            if (bBefore && bAfter) node.aBorders[0] = {a, b};
            if (!bBefore && !bAfter) node.aBorders[1] = {a, b};
        }
        node.aCorners = quadrangle(node, hull, d, along);
        if (!isAround(node.aCorners, hull))
            node.aCorners = {Spot{x.low, y.low}, {x.high, y.low}, {x.high, y.high}, {x.low, y.high}};
    }

    // The borders, or lines along the direction instead where a border is short against what it would be
    // extended to, between two lines across. All a little further out, to hold what rounding takes away.
    static std::array<Spot, 4> quadrangle(const Node& node, std::span<const Spot> hull, const Direction& d,
                                          const Range& along) {
        Range across;
        double largest = 0;
        for (const Spot& p : hull) {
            across.add(d.across(p.x, p.y));
            largest = std::max({largest, std::fabs(p.x), std::fabs(p.y)});
        }
        const double slack = 1e-14 * largest;
        const double low = along.low - slack, high = along.high + slack;
        const auto corner = [&](const Border& border, double position, double outermost, double outwards) {
            const double aAlong = d.along(border.a.x, border.a.y), bAlong = d.along(border.b.x, border.b.y);
            const double aAcross = d.across(border.a.x, border.a.y);
            const double bAcross = d.across(border.b.x, border.b.y);
            const bool bLong = std::fabs(bAlong - aAlong) * 4 > high - low;
            const double share = (position - aAlong) / (bAlong - aAlong);
            const double side = (bLong ? aAcross + (bAcross - aAcross) * share : outermost) + outwards;
            return Spot{d.x * position - d.y * side, d.y * position + d.x * side};
        };
        const Border &right = node.aBorders[0], &left = node.aBorders[1];
        return {corner(right, low, across.low, -slack), corner(right, high, across.low, -slack),
                corner(left, high, across.high, slack), corner(left, low, across.high, slack)};
    }

    // As far as doubles tell; for corners that are not finite they don't.
    static bool isAround(const std::array<Spot, 4>& aCorners, std::span<const Spot> hull) {
        for (std::size_t i = 0; i < 4; ++i)
            for (const Spot& p : hull)
                if (stages::orientDynamic(aCorners[i], aCorners[(i + 1) % 4], p) != stages::POSITIVE)
                    return false;
        return true;
    }

    HullTree& tree;
    TeskTest& tests;
    std::vector<Shape> vShapes;
    std::vector<double> vKeys;
    std::vector<Spot> vHulls, vSorted;
};

HullTree::HullTree(const SegmentArray& allSegments, TeskTest& predicates)
    : segments(allSegments), tests(predicates) {
    Builder(*this).build();
}

bool HullTree::isOff(const Node& node, const Ends& ends, bool alsoEndPoints) const {
    const Box& box = node.box;
    if (std::max(ends.srcX, ends.trgX) < box.minX || std::min(ends.srcX, ends.trgX) > box.maxX ||
        std::max(ends.srcY, ends.trgY) < box.minY || std::min(ends.srcY, ends.trgY) > box.maxY)
        return true;
    const Point2 src = ends.src(), trg = ends.trg();
    return isBeyond(node.aBorders[0], src, trg, alsoEndPoints) ||
           isBeyond(node.aBorders[1], src, trg, alsoEndPoints) || isOffLine(node.aCorners, src, trg);
}

// A segment with one end on the line meets the node's segments there at most: not outside of a and b, and at
// a or b with an end of theirs, as none goes beyond.
bool HullTree::isBeyond(const Border& border, const Point2& src, const Point2& trg,
                        bool alsoEndPoints) const {
    const Point2 a = border.a, b = border.b;
    if (a == b) return !alsoEndPoints && (src == a || trg == a); // all are this point
    const Orientation2 srcSide = sideOf(tests, a, b, src);
    if (srcSide == ORIENTATION2_CCW) return false;
    const Orientation2 trgSide = sideOf(tests, a, b, trg);
    if (trgSide == ORIENTATION2_CCW || srcSide + trgSide == ORIENTATION2_COLLINEAR) return false;
    if (srcSide == trgSide) return true;
    const Point2& onLine = srcSide == ORIENTATION2_COLLINEAR ? src : trg;
    const Point2 &first = std::min(a, b), &last = std::max(a, b);
    return onLine < first || last < onLine || (!alsoEndPoints && (onLine == a || onLine == b));
}

// Whether the corners, and all that is between them, lie on one side of the segment's line, as far as doubles
// tell. Corners may lie beyond the static bound.
bool HullTree::isOffLine(const std::array<Spot, 4>& aCorners, const Point2& src, const Point2& trg) const {
    const stages::Decision side = stages::orientDynamic(src, trg, aCorners[0]);
    if (side == stages::UNSURE) return false;
    return std::all_of(aCorners.begin() + 1, aCorners.end(),
                       [&](const Spot& corner) { return stages::orientDynamic(src, trg, corner) == side; });
}

} // namespace TESK_KIVO2D
