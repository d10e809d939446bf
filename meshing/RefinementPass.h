#pragma once

#include "RefinementReport.h"
#include "Triangle2.h"
#include "core/Cavity.h"
#include "core/HalfEdge.h"
#include "meshing/CandidateQueue.h"
#include "meshing/RefCand3.h"
#include "meshing/RefinementSite.h"
#include "meshing/SegmentSplitter.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace TESK_KIVO2D {

// One pass over a zone: knows what has to be refined, and does it one vertex at a time. What a vertex makes
// bad is treated in the same pass. Constraint segments that a vertex is too close to come first, then
// triangles, those with the shortest edge first: so short edges, which nothing can mend, spread least.
class RefinementPass {
public:
    // Adds to the counts of the report.
    explicit RefinementPass(RefinementSite& refinementSite)
        : site(refinementSite), splitter(site, cavity), pmmAng2RC(site.store) {}

    // Enters the triangle, and constraint segments that are too close to its corners, if it is bad.
    void collect(Triangle2* pT);

    // Counts the triangle in the report if it is bad, as one whose turn has not come.
    void count(Triangle2* pT);

    bool isDone() const { return idxSegment == vSegments.size() && pmmAng2RC.empty(); }
    // Treats what comes next.
    void step();

    std::size_t numWaiting() const { return vSegments.size() - idxSegment + pmmAng2RC.size(); }
    // True when a vertex was inserted.
    bool hasChanged() const { return bChanged; }
    // True when somebody else changed the triangulation meanwhile: then nothing here can be relied on.
    bool isStale() const { return site.host.changeCount() != expectedChangeCount; }

private:
    // A closed edge, by its ends: records are rebuilt while it waits.
    struct WaitingSegment {
        Point2* a;
        Point2* b;
        HalfEdge edge;
    };

    void treat(Triangle2* pT);
    RuleSet countExemption(const RefCand3& candidate, RuleSet rules);
    void insertInside(RefCand3& candidate, RuleSet rules);
    bool splitSegment(HalfEdge edge);
    bool splitWaiting(const WaitingSegment& segment);
    // Enters what the latest vertex made bad, and the segments that it is too close to.
    void judgeAll(const std::vector<Triangle2*>& vChanged, bool bOnSegment);
    void judge(Triangle2* pT);
    void collectEncroached(Triangle2* pT, bool bOnSegment);
    bool splitEncroached(const Point2& p);
    std::optional<MeshObstacle> findBorderAt(const Point2& p) const;
    void collectFromOutside(Triangle2* pT);
    bool mustBeDelaunay(HalfEdge edge) const;
    void tally(RuleSet rules, MeshObstacle obstacle);

    RefinementSite& site;
    Cavity cavity;
    SegmentSplitter splitter;
    CandidateQueue pmmAng2RC;
    std::vector<WaitingSegment> vSegments; // those before idxSegment are done
    std::size_t idxSegment = 0;
    std::vector<WaitingSegment> vHit; // by the point that is about to be inserted; kept for its memory
    std::uint64_t expectedChangeCount = site.host.changeCount();
    bool bChanged = false;
    int numPictures = 0;
};

} // namespace TESK_KIVO2D
