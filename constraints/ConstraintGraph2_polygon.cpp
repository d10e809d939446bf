#include "ConstraintGraph2.h"

#include "constraints/ConstraintMgr.h"
#include "constraints/SegmentTable.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <cstdint>

namespace TESK_KIVO2D {
namespace {

using CSegs = std::vector<ConstraintSegment2*>;
using Index = std::uint32_t; // into the segments given
constexpr Index none = ~Index{0};

bool isEnd(const ConstraintSegment2* pCSeg, const Point2* pVtx) {
    return pCSeg->getSrc() == pVtx || pCSeg->getTrg() == pVtx;
}
Point2* otherEnd(const ConstraintSegment2* pCSeg, const Point2* pVtx) {
    return pCSeg->getSrc() == pVtx ? pCSeg->getTrg() : pCSeg->getSrc();
}
// One that both have, or null.
Point2* sharedEnd(const ConstraintSegment2* pCSeg0, const ConstraintSegment2* pCSeg1) {
    if (isEnd(pCSeg1, pCSeg0->getSrc())) return pCSeg0->getSrc();
    return isEnd(pCSeg1, pCSeg0->getTrg()) ? pCSeg0->getTrg() : nullptr;
}

enum class RingTest { RING, NO_RING, UNORDERED };

// Most rings are given one segment after the other. UNORDERED says nothing but that this one is not.
RingTest testOrderGiven(const CSegs& vCSegs) {
    const Point2* pConnector = sharedEnd(vCSegs.front(), vCSegs.back());
    VertexSet sSeen;
    for (const ConstraintSegment2* pCSeg : vCSegs) {
        if (pConnector == nullptr || !isEnd(pCSeg, pConnector)) return RingTest::UNORDERED;
        // The third segment at this vertex.
        if (!sSeen.insert(pConnector)) return RingTest::NO_RING;
        pConnector = otherEnd(pCSeg, pConnector);
    }
    return RingTest::RING; // it ends at the one vertex that the last segment shares with the first
}

// The two segments at each vertex.
class VertexDegrees {
public:
    // False when some vertex has another number of them.
    bool collect(const CSegs& vCSegs) {
        table.reserve(vCSegs.size());
        std::size_t numFree = vCSegs.size();
        for (Index i = 0; i < vCSegs.size(); ++i) {
            for (const Point2* pVtx : {vCSegs[i]->getSrc(), vCSegs[i]->getTrg()}) {
                Slot& slot = find(pVtx);
                if (slot.isEmpty()) {
                    // One vertex more than segments: some have one segment only.
                    if (numFree-- == 0) return false;
                    table.use(slot, {pVtx, i, none});
                } else if (slot.second == none) {
                    slot.second = i;
                } else {
                    return false;
                }
            }
        }
        return true; // 2n ends at up to n vertices, none with more than two
    }
    // The other segment at this vertex; none, after an error, when there is something wrong.
    Index getOther(const Point2* pVtx, Index i) const {
        const Slot& slot = find(pVtx);
        if (slot.isEmpty()) return complain("Impossible case1!");
        if (slot.first == i) return slot.second;
        return slot.second == i ? slot.first : complain("Impossible case2!");
    }
    static Index complain(const char* text) {
        reportError("ConstraintGraph2::checkAndSortPolygon()", text);
        return none;
    }

private:
    struct Slot {
        const Point2* pVtx;
        Index first, second;

        bool isEmpty() const { return pVtx == nullptr; }
        std::uint64_t getHash() const { return hashOf(pVtx); }
    };
    static std::uint64_t hashOf(const Point2* pVtx) {
        return reinterpret_cast<std::uintptr_t>(pVtx) * 0x9E3779B97F4A7C15u;
    }
    Slot& find(const Point2* pVtx) const {
        return table.seek(hashOf(pVtx), [=](const Slot& slot) { return slot.pVtx == pVtx; });
    }

    LineTable<Slot> table;
};

// Walks from segment to segment. False when they are no single closed ring.
bool findRingOrder(const CSegs& vCSegs, std::vector<Index>& vOrder) {
    VertexDegrees degrees;
    if (!degrees.collect(vCSegs)) return false;
    vOrder.reserve(vCSegs.size());
    const Point2* pConnector = vCSegs[0]->getSrc();
    Index i = 0;
    do {
        if (vOrder.size() == vCSegs.size()) {
            VertexDegrees::complain("Impossible case3!");
            return false;
        }
        vOrder.push_back(i);
        pConnector = otherEnd(vCSegs[i], pConnector);
        i = degrees.getOther(pConnector, i);
        if (i == none) return false;
    } while (i != 0);
    return vOrder.size() == vCSegs.size(); // else there are several rings
}

// A ring in one of its two directions: its segments by their places in the list, from anywhere.
class Ring {
public:
    // An empty order is the one of the list.
    Ring(const CSegs& vCSegsGiven, std::vector<Index> vOrderFound)
        : vCSegs(vCSegsGiven), vOrder(std::move(vOrderFound)), num(vCSegs.size()) {
        const Point2* pVtx = sharedEnd(at(0), at(num - 1));
        for (std::size_t k = 0; k < num; ++k) {
            if (startPoint == nullptr || *pVtx < *startPoint) {
                startPoint = const_cast<Point2*>(pVtx);
                kStart = k;
            }
            pVtx = otherEnd(at(k), pVtx);
        }
        KIVO_ASSERT(startPoint != nullptr, "startPoint!=NULL");
    }

    Point2* getStartPoint() const { return startPoint; }

    // Sorts counter-clockwise, which the corner at the leftmost vertex tells.
    void sort(TeskTest& predicates, CSegs& vSorted) const {
        const std::size_t kBefore = (kStart + num - 1) % num;
        const bool bForwardFirst = place(kStart) < place(kBefore);
        const ConstraintSegment2* const seg0 = at(bForwardFirst ? kStart : kBefore);
        const ConstraintSegment2* const seg1 = at(bForwardFirst ? kBefore : kStart);
        const Point2* const candidate0 = otherEnd(seg0, startPoint);
        const Point2* const candidate1 = otherEnd(seg1, startPoint);
        KIVO_ASSERT(candidate0 != startPoint && candidate1 != startPoint,
                    "candidate0!=startPoint && candidate1!=startPoint");
        const bool bAlong0 =
            predicates.orientationUnbounded(*startPoint, *candidate0, *candidate1) == ORIENTATION2_CCW;
        const bool bForward = bAlong0 == bForwardFirst;
        vSorted.reserve(num);
        const Point2* connector = startPoint;
        for (std::size_t i = 0; i < num; ++i) {
            ConstraintSegment2* const seg = at((bForward ? kStart + i : kBefore + num - i) % num);
            const bool bReverse = seg->getSrc() != connector;
            if (bReverse) KIVO_ASSERT(seg->getTrg() == connector, "seg->getTrg()==connector");
            connector = otherEnd(seg, connector);
            vSorted.push_back(seg);
        }
    }

private:
    std::size_t place(std::size_t k) const { return vOrder.empty() ? k : vOrder[k]; }
    ConstraintSegment2* at(std::size_t k) const { return vCSegs[place(k)]; }

    const CSegs& vCSegs;
    std::vector<Index> vOrder;
    std::size_t num;
    Point2* startPoint = nullptr; // smallest x, of those smallest y
    std::size_t kStart = 0;       // the segment that leaves it
};

} // namespace

Point2* ConstraintGraph2::checkAndSortPolygon(const CSegs& vCSegs, CSegs& vSorted) const {
    if (vCSegs.size() < 3 || vCSegs.size() >= none) return nullptr;
    const RingTest test = testOrderGiven(vCSegs);
    if (test == RingTest::NO_RING) return nullptr;
    std::vector<Index> vOrder;
    if (test == RingTest::UNORDERED && !findRingOrder(vCSegs, vOrder)) return nullptr;
    const Ring ring(vCSegs, std::move(vOrder));
    ring.sort(mgr.dt.predicates(), vSorted);
    return ring.getStartPoint();
}

} // namespace TESK_KIVO2D
