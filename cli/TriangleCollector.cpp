#include "cli/TriangleCollector.h"

#include "cli/nodeReader.h"

namespace cli {

void TriangleCollector::addVertex(double x, double y, double z) {
    if (z != 0.0) fail("a vertex beside the plane z = 0");
    if (numVertices() == MAX_POINTS) fail("more vertices than can be numbered");
    addPoint(input.table, x, y);
}

void TriangleCollector::addTriangle(const std::array<std::int64_t, 3>& aCorners) {
    std::array<std::uint32_t, 3> aTaken{};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto corner = static_cast<std::uint64_t>(aCorners[i]); // negative ones become huge
        if (corner >= numVertices())
            fail("a triangle with a corner that is no vertex of the " + std::to_string(numVertices()) +
                 " before it");
        aTaken[i] = static_cast<std::uint32_t>(corner);
    }
    input.vTriangles.push_back(aTaken);
}

} // namespace cli
