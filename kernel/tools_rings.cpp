#include "kernel/tools_rings.h"

#include "functions.h"
#include "kernel/messages.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <tuple>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

// Gives each of a set of addresses a number in 0..size-1. The numbers follow the addresses, so they may serve
// to find things but never to order a result.
template<class T>
class AddressIndex {
public:
    explicit AddressIndex(std::vector<const T*> vAddresses) : vSorted(std::move(vAddresses)) {
        std::sort(vSorted.begin(), vSorted.end(), std::less<const T*>());
        vSorted.erase(std::unique(vSorted.begin(), vSorted.end()), vSorted.end());
    }
    std::size_t size() const { return vSorted.size(); }
    std::size_t find(const T* p) const {
        const auto it = std::lower_bound(vSorted.begin(), vSorted.end(), p, std::less<const T*>());
        return it != vSorted.end() && *it == p ? static_cast<std::size_t>(it - vSorted.begin()) : none;
    }

private:
    std::vector<const T*> vSorted;
};

// ---- sets of triangles ------------------------------------------------------------------------------------

// The listed triangles without nulls and repetitions, and where each one stands.
class TriangleList {
public:
    explicit TriangleList(const std::vector<Triangle2*>& vT)
        : index(std::vector<const Triangle2*>(vT.begin(), vT.end())), vPlace(index.size(), none) {
        for (Triangle2* pT : vT) {
            if (pT == nullptr || placeOf(pT) != none) continue;
            vPlace[index.find(pT)] = vTriangles.size();
            vTriangles.push_back(pT);
        }
    }
    const std::vector<Triangle2*>& triangles() const { return vTriangles; }
    // Place in `triangles`; none for null and for a triangle that is not listed.
    std::size_t placeOf(const Triangle2* pT) const {
        const std::size_t number = pT != nullptr ? index.find(pT) : none;
        return number != none ? vPlace[number] : none;
    }

private:
    AddressIndex<Triangle2> index;
    std::vector<std::size_t> vPlace;
    std::vector<Triangle2*> vTriangles;
};

// Collects the edges that the caller wants, given the places of the triangles on both sides.
template<class Wanted>
std::vector<Edge2> collectEdges(const std::vector<Triangle2*>& vT, Wanted wanted) {
    const TriangleList list(vT);
    std::vector<Edge2> vEdges;
    for (std::size_t place = 0; place < list.triangles().size(); ++place) {
        Triangle2* pT = list.triangles()[place];
        for (int i = 0; i < 3; ++i)
            if (wanted(place, list.placeOf(pT->getOppositeTriangle(i)))) vEdges.emplace_back(pT, i);
    }
    return vEdges;
}

// ---- chains of edges --------------------------------------------------------------------------------------

// The end points of directed edges as numbers.
struct NumberedEdges {
    AddressIndex<Point2> index;
    std::vector<std::size_t> vSrc;
    std::vector<std::size_t> vTrg;

    explicit NumberedEdges(const std::vector<Edge2>& vEdges) : index(endPoints(vEdges)) {
        for (const Edge2& edge : vEdges) {
            vSrc.push_back(index.find(edge.getSrc()));
            vTrg.push_back(index.find(edge.getTrg()));
        }
    }

private:
    static std::vector<const Point2*> endPoints(const std::vector<Edge2>& vEdges) {
        std::vector<const Point2*> vPoints;
        for (const Edge2& edge : vEdges) {
            vPoints.push_back(edge.getSrc());
            vPoints.push_back(edge.getTrg());
        }
        return vPoints;
    }
};

// One end of an edge, seen from the vertex in which it lies.
struct Ray {
    std::size_t vertex;
    std::size_t edge;
    bool bOut;
    const Point2* pVtx;
    const Point2* pFar;
};

bool isInVertexOrder(const Ray& a, const Ray& b) {
    return std::tie(a.vertex, a.edge, a.bOut) < std::tie(b.vertex, b.edge, b.bOut);
}

bool isInUpperHalf(const Ray& ray) {
    return ray.pFar->y() > ray.pVtx->y() || (ray.pFar->y() == ray.pVtx->y() && ray.pFar->x() > ray.pVtx->x());
}

// Counter-clockwise around the vertex from the direction of the x axis. Of two edges that lie upon each other
// the arriving one comes first: so the way back along the same edge is the last choice.
bool isInAngularOrder(const Ray& a, const Ray& b) {
    const bool bUpperA = isInUpperHalf(a);
    const bool bUpperB = isInUpperHalf(b);
    if (bUpperA != bUpperB) return bUpperA;
    const Orientation2 side = getOrientation2_mt(a.pVtx, a.pFar, b.pFar);
    if (side != ORIENTATION2_COLLINEAR) return side == ORIENTATION2_CCW;
    return std::tie(a.bOut, a.edge) < std::tie(b.bOut, b.edge);
}

using RayIterator = std::vector<Ray>::iterator;

// Joins arriving to leaving edges of one vertex. The area to the left of an arriving edge lies clockwise of
// its ray and ends at the next leaving one, so going clockwise the rays match like brackets, round and round.
void joinAtVertex(RayIterator begin, RayIterator end, std::vector<std::size_t>& vNext) {
    if (end - begin > 2) std::sort(begin, end, isInAngularOrder);
    std::vector<std::size_t> vOpen;
    std::vector<bool> vbJoined(static_cast<std::size_t>(end - begin), false);
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = vbJoined.size(); i-- > 0;) {
            const Ray& ray = begin[static_cast<std::ptrdiff_t>(i)];
            if (!ray.bOut && round == 0) vOpen.push_back(ray.edge);
            if (!ray.bOut || vbJoined[i] || vOpen.empty()) continue;
            vNext[vOpen.back()] = ray.edge;
            vOpen.pop_back();
            vbJoined[i] = true;
        }
    }
}

// For each edge the one that continues it, or none; each edge continues at most one.
std::vector<std::size_t> joinEdges(const std::vector<Edge2>& vEdges, const NumberedEdges& numbered) {
    std::vector<Ray> vRays;
    for (std::size_t i = 0; i < vEdges.size(); ++i) {
        const Point2* pSrc = vEdges[i].getSrc();
        const Point2* pTrg = vEdges[i].getTrg();
        vRays.push_back({numbered.vSrc[i], i, true, pSrc, pTrg});
        vRays.push_back({numbered.vTrg[i], i, false, pTrg, pSrc});
    }
    std::sort(vRays.begin(), vRays.end(), isInVertexOrder);
    std::vector<std::size_t> vNext(vEdges.size(), none);
    for (auto begin = vRays.begin(); begin != vRays.end();) {
        const auto end =
            std::find_if(begin, vRays.end(), [begin](const Ray& r) { return r.vertex != begin->vertex; });
        joinAtVertex(begin, end, vNext);
        begin = end;
    }
    return vNext;
}

// Follows chains of edges and cuts a loop off whenever a vertex is met again.
class LoopCutter {
public:
    explicit LoopCutter(const NumberedEdges& numbered_)
        : numbered(numbered_), vPosition(numbered_.index.size(), none) {}

    void append(std::size_t edge) {
        vPosition[numbered.vSrc[edge]] = vPath.size();
        vPath.push_back(edge);
        const std::size_t position = vPosition[numbered.vTrg[edge]];
        if (position != none) cutOff(position, 3);
    }
    void endOfChain() { cutOff(0, none); }

    std::vector<std::vector<std::size_t>> vLoops;
    std::vector<std::size_t> vRemaining;

private:
    // Takes the path from this position on: as a loop if it has enough edges, else to the remaining ones.
    void cutOff(std::size_t position, std::size_t minEdges) {
        const auto begin = vPath.begin() + static_cast<std::ptrdiff_t>(position);
        for (auto it = begin; it != vPath.end(); ++it)
            vPosition[numbered.vSrc[*it]] = none;
        if (vPath.size() - position >= minEdges) {
            vLoops.emplace_back(begin, vPath.end());
        } else {
            vRemaining.insert(vRemaining.end(), begin, vPath.end());
        }
        vPath.erase(begin, vPath.end());
    }

    const NumberedEdges& numbered;
    std::vector<std::size_t> vPosition; // for each vertex the place in the path of the edge that leaves it
    std::vector<std::size_t> vPath;
};

// Feeds every chain to the cutter: from its first edge, or from its lowest one where it has no end.
void followChains(const std::vector<std::size_t>& vNext, LoopCutter& cutter) {
    std::vector<std::size_t> vPrev(vNext.size(), none);
    for (std::size_t i = 0; i < vNext.size(); ++i)
        if (vNext[i] != none) vPrev[vNext[i]] = i;
    std::vector<bool> vbDone(vNext.size(), false);
    for (std::size_t i = 0; i < vNext.size(); ++i) {
        if (vbDone[i]) continue;
        std::size_t first = i;
        while (vPrev[first] != none && vPrev[first] != i)
            first = vPrev[first];
        if (vPrev[first] == i) first = i;
        for (std::size_t edge = first; edge != none && !vbDone[edge]; edge = vNext[edge]) {
            vbDone[edge] = true;
            cutter.append(edge);
        }
        cutter.endOfChain();
    }
}

std::vector<Edge2> pick(const std::vector<Edge2>& vEdges, const std::vector<std::size_t>& vIndices) {
    std::vector<Edge2> vPicked;
    for (const std::size_t i : vIndices)
        vPicked.push_back(vEdges[i]);
    return vPicked;
}

bool failRing(const char* message) {
    reportWarning("sortRing()", message);
    return false;
}

} // namespace

std::vector<Edge2> getDirectedEdges(const std::vector<Triangle2*>& vT) {
    return collectEdges(vT, [](std::size_t, std::size_t) { return true; });
}

std::vector<Edge2> getUndirectedEdges(const std::vector<Triangle2*>& vT) {
    return collectEdges(
        vT, [](std::size_t here, std::size_t beyond) { return here < beyond; }); // none is largest
}

std::vector<Edge2> getBorders(const std::vector<Triangle2*>& vT) {
    return collectEdges(vT, [](std::size_t, std::size_t beyond) { return beyond == none; });
}

std::vector<std::vector<Triangle2*>> getConnectedComponents(const std::vector<Triangle2*>& vT) {
    const TriangleList list(vT);
    const std::vector<Triangle2*>& vTriangles = list.triangles();
    std::vector<std::size_t> vComponent(vTriangles.size(), none);
    std::vector<std::vector<Triangle2*>> vvComponents;
    std::vector<std::size_t> vStack;
    for (std::size_t seed = 0; seed < vTriangles.size(); ++seed) {
        if (vComponent[seed] == none) {
            vComponent[seed] = vvComponents.size();
            vvComponents.emplace_back();
            vStack.push_back(seed);
        }
        while (!vStack.empty()) {
            const std::size_t place = vStack.back();
            vStack.pop_back();
            for (int i = 0; i < 3; ++i) {
                const std::size_t beyond = list.placeOf(vTriangles[place]->getOppositeTriangle(i));
                if (beyond == none || vComponent[beyond] != none) continue;
                vComponent[beyond] = vComponent[place];
                vStack.push_back(beyond);
            }
        }
        // By now its component is known, and all before it have been listed.
        vvComponents[vComponent[seed]].push_back(vTriangles[seed]);
    }
    return vvComponents;
}

bool sortRing(std::vector<Edge2>& vRing) {
    if (vRing.size() < 3) return failRing("Not a ring1");
    const NumberedEdges numbered(vRing);
    std::vector<std::size_t> vLeaving(numbered.index.size(), none);
    for (std::size_t i = 0; i < vRing.size(); ++i) {
        std::size_t& leaving = vLeaving[numbered.vSrc[i]];
        if (leaving != none) return failRing("Not a ring2");
        leaving = i;
    }
    for (const std::size_t target : numbered.vTrg)
        if (vLeaving[target] == none) return failRing("Not a ring2");
    std::vector<std::size_t> vOrder;
    std::size_t edge = 0;
    do {
        vOrder.push_back(edge);
        edge = vLeaving[numbered.vTrg[edge]];
    } while (edge != 0 && vOrder.size() < vRing.size());
    if (edge != 0 || vOrder.size() != vRing.size()) return failRing("Not a ring3");
    vRing = pick(vRing, vOrder);
    return true;
}

PolygonParts edgesToPolygons(const std::vector<Edge2>& vEdges) {
    const NumberedEdges numbered(vEdges);
    LoopCutter cutter(numbered);
    followChains(joinEdges(vEdges, numbered), cutter);

    for (std::vector<std::size_t>& vLoop : cutter.vLoops)
        std::rotate(vLoop.begin(), std::min_element(vLoop.begin(), vLoop.end()), vLoop.end());
    std::sort(cutter.vLoops.begin(), cutter.vLoops.end());
    std::sort(cutter.vRemaining.begin(), cutter.vRemaining.end());

    PolygonParts parts;
    for (const std::vector<std::size_t>& vLoop : cutter.vLoops)
        parts.vvPolygons.push_back(pick(vEdges, vLoop));
    parts.vRemaining = pick(vEdges, cutter.vRemaining);
    return parts;
}

} // namespace TESK_KIVO2D
