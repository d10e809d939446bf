#include "zones/zoneQuality.h"

#include "Color.h"
#include "Visualizer2.h"
#include "core/HalfEdge.h"
#include "core/QualityMeter.h"
#include "core/prefetch.h"
#include "core/statistics.h"
#include "kernel/messages.h"
#include "zones/ZoneEvaluation.h"

#include <algorithm>
#include <array>
#include <functional>
#include <locale>
#include <sstream>
#include <utility>

namespace TESK_KIVO2D {
namespace {

struct Measured {
    ZoneQuality quality;
    std::vector<HalfEdge> vBorder;
};

// Measures triangles while the query finds them: then their records are in the cache.
class Measurement : public TriangleVisitor {
public:
    Measurement(ZoneHost& triangulation) : numbers(triangulation.meshStore().triangleNumbers()) {}

    // One batch behind, so that the corners have time to come.
    void visit(std::span<const Flooded> batch) override {
        for (const Flooded& each : batch) {
            for (int i = 0; i < 3; ++i)
                prefetch(static_cast<const void*>(each.pT->getCorner(i)));
        }
        for (const Flooded& each : vWaiting)
            add(each);
        vWaiting.assign(batch.begin(), batch.end());
    }
    // With the set of all triangles seen.
    Measured finish(const TriangleSet& triangles);

private:
    void add(const Flooded& each) {
        Triangle2* const pT = each.pT;
        unsigned edges = 0, closedEdges = each.closedEdges;
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            edges |= static_cast<unsigned>(std::less<>{}(static_cast<const Triangle2*>(pT), pN)) << i;
            if (pN == nullptr) closedEdges |= 1U << i;
        }
        if (closedEdges != 0) setAside(pT, closedEdges);
        const Point2 &a = *pT->getCorner(0), &b = *pT->getCorner(1), &c = *pT->getCorner(2);
        meter.add(each.number, a, b, c, edges & ~closedEdges);
        // Each vertex has one incident triangle, so it is counted once.
        numIncident += static_cast<std::uint64_t>(a.getIncidentTriangle() == pT) +
                       static_cast<std::uint64_t>(b.getIncidentTriangle() == pT) +
                       static_cast<std::uint64_t>(c.getIncidentTriangle() == pT);
    }
    void setAside(Triangle2* pT, unsigned edges) {
        for (int i = 0; i < 3; ++i) {
            if ((edges >> i & 1) != 0) vClosed.push_back({pT, i});
        }
    }

    const RecordNumbers<Triangle2> numbers;
    QualityMeter meter;
    std::vector<Flooded> vWaiting;
    std::uint64_t numIncident = 0;
    std::vector<HalfEdge> vClosed; // border, or with the zone on both sides
};

// Number of vertices whose incident triangle is not in the set.
std::uint64_t numVerticesOfOthers(const TriangleSet& triangles, const std::vector<HalfEdge>& vBorder) {
    std::vector<const Point2*> vVertices;
    for (const HalfEdge& edge : vBorder) {
        for (const Point2* pVtx : {edge.source(), edge.target()}) {
            if (!triangles.contains(pVtx->getIncidentTriangle())) vVertices.push_back(pVtx);
        }
    }
    std::sort(vVertices.begin(), vVertices.end(), std::less<>{});
    return static_cast<std::uint64_t>(std::unique(vVertices.begin(), vVertices.end()) - vVertices.begin());
}

Measured Measurement::finish(const TriangleSet& triangles) {
    visit({});
    Measured result;
    for (const HalfEdge& edge : vClosed) {
        const bool bBorder = !triangles.contains(edge.opposite());
        if (bBorder) result.vBorder.push_back(edge);
        if (bBorder || std::less<>{}(edge.pT, edge.opposite())) meter.addEdge(*edge.source(), *edge.target());
    }
    result.quality = meter.figures();
    result.quality.numVertices = numIncident + numVerticesOfOthers(triangles, result.vBorder);
    for (const std::size_t number : meter.worst())
        result.quality.vWorst.push_back(numbers.recordOf(number));
    return result;
}

void appendDistribution(std::ostream& stream, const char* title, const QualityDistribution& distribution,
                        int width) {
    stream << "\n"
           << title << "\n  " << distribution.smallest << " to " << distribution.largest << ", mean "
           << distribution.mean << "\n";
    appendHistogram(stream, distribution, width);
}

std::string textOf(const ZoneQuality& quality, const std::string& name) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << "\n\n\n********* ZONE QUALITY (" << name << ") **********\n\n"
           << "Number of triangles: " << quality.numTriangles << "\n"
           << "Number of vertices:  " << quality.numVertices << "\n"
           << "Number of edges:     " << quality.numEdges << "\n"
           << "Total area:          " << quality.totalArea << "\n";
    constexpr int numberWidth = 12;
    appendDistribution(stream, "INTERIOR ANGLES (degrees)", quality.angles, 3);
    appendDistribution(stream, "SMALLEST ANGLES OF TRIANGLES (degrees)", quality.smallestAngles, 3);
    appendDistribution(stream, "AREAS", quality.areas, numberWidth);
    appendDistribution(stream, "EDGE LENGTHS", quality.edgeLengths, numberWidth);
    appendDistribution(stream, "ASPECT RATIOS (longest edge by the height on it)", quality.aspectRatios,
                       numberWidth);
    return stream.str();
}

// The crosses have one size whatever the scale, so that a triangle too small to be seen is found.
void drawWorst(const Measured& measured, const std::string& filename) {
    Visualizer2 vis(filename);
    std::ostringstream title;
    title.imbue(std::locale::classic());
    title << "The " << measured.quality.vWorst.size() << " triangles with the smallest angles of "
          << measured.quality.numTriangles << ": from " << measured.quality.angles.smallest << " degrees";
    vis.addHeaderLine(title.str());
    const Color outline(CBLACK, 0.2F, false), area(CORANGE, 0, true), edge(CRED, 0.5F, false),
        mark(CBLUE, 0.5F, false);
    for (const HalfEdge& border : measured.vBorder)
        vis.addObject(Segment2(*border.source(), *border.target()), outline);
    for (const Triangle2* pT : measured.quality.vWorst) {
        vis.addObject(*pT, area);
        vis.addObject(*pT, edge);
        vis.addObject(pT->getBarycenter(), mark);
    }
    vis.writeFile();
}

} // namespace

ZoneQuality checkZoneQuality(ZoneHost& triangulation, const Zone2& zone, const std::string& name) {
    const ZoneEvaluation evaluation(triangulation);
    Measurement measurement(triangulation);
    Measured measured = measurement.finish(evaluation.visit(zone, measurement));
    if (measured.quality.numTriangles == 0) {
        reportWarning("Kivo_2D::checkZoneQuality()", "The zone has no triangles, nothing to measure");
        return {};
    }
    printText(textOf(measured.quality, name));
    if (!name.empty()) drawWorst(measured, name + "_quality.ps");
    return std::move(measured.quality);
}

} // namespace TESK_KIVO2D
