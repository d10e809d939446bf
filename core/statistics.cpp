#include "core/statistics.h"

#include "core/QualityMeter.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>

namespace TESK_KIVO2D {

void appendHistogram(std::ostream& stream, const QualityDistribution& distribution, int width) {
    constexpr std::size_t barLength = 50;
    const std::vector<std::uint64_t>& vCounts = distribution.vCounts;
    const std::uint64_t largest = *std::max_element(vCounts.begin(), vCounts.end());
    for (std::size_t i = 0; i < vCounts.size(); ++i) {
        stream << "  " << std::setw(width) << distribution.vLimits[i] << " - " << std::setw(width)
               << distribution.vLimits[i + 1] << ": " << std::setw(10) << vCounts[i] << " "
               << std::string((vCounts[i] * barLength + largest - 1) / largest, '*') << "\n";
    }
}

std::string angleText(const QualityDistribution& angles) {
    if (angles.count == 0) return {};
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << "  interior angles: " << angles.smallest << " to " << angles.largest << " degrees\n";
    appendHistogram(stream, angles, 3);
    return stream.str();
}

std::string meshStatistics(const MeshStore& store, std::size_t numVertices, const std::string& name) {
    QualityMeter meter;
    std::size_t numTriangles = 0, numHullEdges = 0;
    store.forEachTriangle([&](Triangle2* pT) {
        ++numTriangles;
        for (int i = 0; i < 3; ++i) {
            if (pT->getOppositeTriangle(i) == nullptr) ++numHullEdges;
        }
        meter.addAngles(*pT);
    });
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << "MESH STATISTICS" << (name.empty() ? "" : " ") << name << "\n"
           << "  vertices:   " << numVertices << "\n"
           << "  triangles:  " << numTriangles << "\n"
           << "  edges:      " << (3 * numTriangles + numHullEdges) / 2 << "\n"
           << "  hull edges: " << numHullEdges << "\n";
    return stream.str() + angleText(meter.angles());
}

} // namespace TESK_KIVO2D
