#include "core/statistics.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <locale>
#include <sstream>

namespace TESK_KIVO2D {
namespace {

// The angle at corner i in degrees, from the cosine rule on unit vectors; a measure for people, so doubles
// will do.
double angleAt(const Triangle2& t, int i) {
    const Point2 &c = *t.getCorner(i), &p = *t.getCorner(Triangle2::incIndexBy1(i)),
                 &q = *t.getCorner(Triangle2::incIndexBy2(i));
    // Halves: the difference of two finite coordinates may overflow.
    const double ux = p.x() / 2 - c.x() / 2, uy = p.y() / 2 - c.y() / 2;
    const double vx = q.x() / 2 - c.x() / 2, vy = q.y() / 2 - c.y() / 2;
    const double u = std::hypot(ux, uy), v = std::hypot(vx, vy);
    if (!(u > 0 && v > 0)) return 0;
    return std::atan2(std::fabs(ux / u * (vy / v) - uy / u * (vx / v)),
                      ux / u * (vx / v) + uy / u * (vy / v)) *
           180 / 3.14159265358979323846;
}

} // namespace

void AngleHistogram::add(const Triangle2& triangle) {
    for (int i = 0; i < 3; ++i) {
        const double angle = angleAt(triangle, i);
        minAngle = std::min(minAngle, angle);
        maxAngle = std::max(maxAngle, angle);
        ++aBins[static_cast<std::size_t>(std::min(numBins - 1, static_cast<int>(angle / binWidth)))];
    }
}

std::string AngleHistogram::toText() const {
    const std::size_t largest = *std::max_element(aBins.begin(), aBins.end());
    if (largest == 0) return {};
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << "  interior angles: " << minAngle << " to " << maxAngle << " degrees\n";
    for (int i = 0; i < numBins; ++i) {
        const std::size_t num = aBins[static_cast<std::size_t>(i)];
        constexpr std::size_t barLength = 50;
        stream << "  " << std::setw(3) << i * binWidth << " - " << std::setw(3) << (i + 1) * binWidth << ": "
               << std::setw(10) << num << " " << std::string((num * barLength + largest - 1) / largest, '*')
               << "\n";
    }
    return stream.str();
}

std::string meshStatistics(const MeshStore& store, std::size_t numVertices, const std::string& name) {
    AngleHistogram angles;
    std::size_t numTriangles = 0, numHullEdges = 0;
    store.forEachTriangle([&](Triangle2* pT) {
        ++numTriangles;
        for (int i = 0; i < 3; ++i) {
            if (pT->getOppositeTriangle(i) == nullptr) ++numHullEdges;
        }
        angles.add(*pT);
    });
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << "MESH STATISTICS" << (name.empty() ? "" : " ") << name << "\n"
           << "  vertices:   " << numVertices << "\n"
           << "  triangles:  " << numTriangles << "\n"
           << "  edges:      " << (3 * numTriangles + numHullEdges) / 2 << "\n"
           << "  hull edges: " << numHullEdges << "\n";
    return stream.str() + angles.toText();
}

} // namespace TESK_KIVO2D
