#include "bench/checkerRival.h"

#include "SegmentChecker.h"

#include <CGAL/Bbox_2.h>
#include <CGAL/box_intersection_d.h>

#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <utility>

namespace bench::rival {
namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;

class Marks {
public:
    explicit Marks(const Segments& segments) : vSegments(segments), vMarked(segments.size()) {}

    bool isMarked(std::size_t i) const { return vMarked[i] != 0; }
    // Whether they intersect; then both are marked.
    bool test(std::size_t i, std::size_t k) {
        const auto type = checker.getIntersectionType(&vSegments[i], &vSegments[k]);
        const bool bHit = type == TESK_KIVO2D::SIT_POINT || type == TESK_KIVO2D::SIT_SEGMENT;
        if (bHit) vMarked[i] = vMarked[k] = 1;
        return bHit;
    }
    std::vector<std::size_t> all() const {
        std::vector<std::size_t> result;
        for (std::size_t i = 0; i < vMarked.size(); ++i)
            if (isMarked(i)) result.push_back(i);
        return result;
    }

private:
    TESK_KIVO2D::SegmentChecker checker;
    const Segments& vSegments;
    std::vector<char> vMarked;
};

struct Corners {
    explicit Corners(const Segment2& segment) {
        const Point2 source = segment.getSrc(), target = segment.getTrg();
        std::tie(xMin, xMax) = std::minmax({source.x(), target.x()});
        std::tie(yMin, yMax) = std::minmax({source.y(), target.y()});
    }
    double xMin, xMax, yMin, yMax;
};

} // namespace

std::vector<std::size_t> illegalByBoost(const Segments& segments, Tuning tuning) {
    namespace bgi = boost::geometry::index;
    using Corner = boost::geometry::model::point<double, 2, boost::geometry::cs::cartesian>;
    using Entry = std::pair<boost::geometry::model::box<Corner>, std::uint32_t>;
    std::vector<Entry> entries;
    entries.reserve(segments.size());
    for (const Segment2& segment : segments) {
        const Corners box(segment);
        entries.push_back({{Corner(box.xMin, box.yMin), Corner(box.xMax, box.yMax)},
                           static_cast<std::uint32_t>(entries.size())});
    }
    const bgi::rtree<Entry, bgi::rstar<16>> tree(entries);
    Marks marks(segments);
    const auto ask = [&](const Entry& entry) {
        if (marks.isMarked(entry.second)) return;
        const auto end = tree.qend();
        for (auto it = tree.qbegin(bgi::intersects(entry.first)); it != end; ++it)
            if (it->second != entry.second && marks.test(entry.second, it->second)) break;
    };
    if (tuning == Tuning::best) {
        std::for_each(tree.begin(), tree.end(), ask);
    } else {
        std::for_each(entries.begin(), entries.end(), ask);
    }
    return marks.all();
}

std::vector<std::size_t> illegalByCgal(const Segments& segments, Tuning tuning) {
    using Box = CGAL::Box_intersection_d::Box_with_info_d<double, 2, std::uint32_t>;
    std::vector<Box> boxes;
    boxes.reserve(segments.size());
    for (const Segment2& segment : segments) {
        const Corners box(segment);
        boxes.emplace_back(CGAL::Bbox_2(box.xMin, box.yMin, box.xMax, box.yMax),
                           static_cast<std::uint32_t>(boxes.size()));
    }
    Marks marks(segments);
    const auto meet = [&](const Box& a, const Box& b) {
        if (!marks.isMarked(a.info()) || !marks.isMarked(b.info())) marks.test(a.info(), b.info());
    };
    CGAL::box_self_intersection_d(boxes.begin(), boxes.end(), meet,
                                  CGAL::Box_intersection_d::Box_traits_d<Box>(),
                                  tuning == Tuning::best ? 1600 : 10);
    return marks.all();
}

} // namespace bench::rival
