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

// Calls f with each triangle, in the order of their records, once the corners that it will read are on their
// way.
template<class F>
void forEachFetched(const TriangleSet& triangles, F f) {
    std::array<Triangle2*, 32> aWaiting;
    std::size_t num = 0;
    const auto work = [&] {
        for (std::size_t i = 0; i < num; ++i)
            f(aWaiting[i]);
        num = 0;
    };
    triangles.forEach([&](Triangle2* pT) {
        for (int i = 0; i < 3; ++i)
            prefetch(static_cast<const void*>(pT->getCorner(i)));
        aWaiting[num++] = pT;
        if (num == aWaiting.size()) work();
    });
    work();
}

Measured measure(ZoneHost& triangulation, const Zone2& zone) {
    const ZoneEvaluation evaluation(triangulation);
    const TriangleSet triangles = evaluation.setOf(zone);
    QualityMeter meter;
    Measured result;
    const RecordNumbers<Triangle2>& numbers = triangles.numbers();
    std::uint64_t numIncident = 0;
    forEachFetched(triangles, [&](Triangle2* pT) {
        const Point2 &a = *pT->getCorner(0), &b = *pT->getCorner(1), &c = *pT->getCorner(2);
        // Each vertex has one incident triangle, so it is counted once.
        numIncident += static_cast<std::uint64_t>(a.getIncidentTriangle() == pT) +
                       static_cast<std::uint64_t>(b.getIncidentTriangle() == pT) +
                       static_cast<std::uint64_t>(c.getIncidentTriangle() == pT);
        const std::size_t number = numbers.numberOf(pT);
        unsigned edges = 0;
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pN = pT->getOppositeTriangle(i);
            const std::size_t beyond = numbers.numberOf(pN);
            if (pN != nullptr && triangles.containsNumber(beyond)) {
                edges |= static_cast<unsigned>(number < beyond) << i;
            } else {
                edges |= 1U << i;
                result.vBorder.push_back({pT, i});
            }
        }
        meter.add(number, a, b, c, edges);
    });
    ZoneQuality& quality = result.quality;
    quality = meter.figures();
    quality.numVertices = numIncident + numVerticesOfOthers(triangles, result.vBorder);
    for (const std::size_t number : meter.worst())
        quality.vWorst.push_back(numbers.recordOf(number));
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
    const Color outline(CBLACK, 0.2F, false), area(CORANGE, 0, true), edge(CRED, 0.5F, false);
    for (const HalfEdge& border : measured.vBorder)
        vis.addObject(Segment2(*border.source(), *border.target()), outline);
    for (const Triangle2* pT : measured.quality.vWorst) {
        vis.addObject(*pT, area);
        vis.addObject(*pT, edge);
        vis.addObject(pT->getBarycenter(), edge);
    }
    vis.writeFile();
}

} // namespace

ZoneQuality checkZoneQuality(ZoneHost& triangulation, const Zone2& zone, const std::string& name) {
    Measured measured = measure(triangulation, zone);
    if (measured.quality.numTriangles == 0) {
        reportWarning("Kivo_2D::checkZoneQuality()", "The zone has no triangles, nothing to measure");
        return {};
    }
    printText(textOf(measured.quality, name));
    if (!name.empty()) drawWorst(measured, name + "_quality.ps");
    return std::move(measured.quality);
}

} // namespace TESK_KIVO2D
