#include "cli/givenMesh.h"

#include "cli/errors.h"

#include <algorithm>
#include <utility>

namespace cli {

namespace {

using TESK_KIVO2D::ConstraintGraph2;
using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;
using TESK_KIVO2D::Triangle2;
using TESK_KIVO2D::Zone2;

// A triangle by its corners' positions in the table, counter-clockwise from the smallest, and its place in a
// list.
struct Key {
    std::array<std::uint32_t, 3> aCorners;
    std::uint32_t place;

    bool operator<(const Key& other) const {
        return std::tie(aCorners, place) < std::tie(other.aCorners, other.place);
    }
};

Key keyOf(const std::array<const Point2*, 3>& aVertices, std::size_t place) {
    Key key{{}, static_cast<std::uint32_t>(place)};
    for (std::size_t i = 0; i < 3; ++i)
        key.aCorners[i] = static_cast<std::uint32_t>(aVertices[i]->getCustomIndex());
    std::rotate(key.aCorners.begin(), std::min_element(key.aCorners.begin(), key.aCorners.end()),
                key.aCorners.end());
    return key;
}

class GivenMesh {
public:
    GivenMesh(Kivo_2D& triangulation_, const Input& input_, const std::vector<Point2*>& vHandles_,
              const std::string& name_)
        : triangulation(triangulation_), input(input_), vHandles(vHandles_), name(name_),
          vFound(input_.vTriangles.size(), nullptr) {}

    Zone2* createZone() {
        listWanted();
        std::vector<std::uint32_t> vMissing = match();
        if (!vMissing.empty()) {
            forceEdgesOf(vMissing);
            vMissing = match();
        }
        if (!vMissing.empty()) failAt(vMissing.front(), "overlaps another one, or has a vertex on its side");
        const bool bAll = vFound.size() == triangulation.numberOfTriangles();
        Zone2* const pZone =
            bAll ? triangulation.createZone(static_cast<ConstraintGraph2*>(nullptr), TESK_KIVO2D::ZL_GLOBAL)
                 : triangulation.createZone(vFound);
        if (pZone == nullptr || pZone->getNumberOfTriangles() != vFound.size())
            throw FileError(name, "holds a part too thin to be told from what surrounds it");
        return pZone;
    }

private:
    [[noreturn]] void failAt(std::size_t place, const std::string& text) const {
        throw FileError(name, "triangle " + std::to_string(place + 1) + " " + text);
    }

    // In either direction in the file.
    void listWanted() {
        for (std::size_t i = 0; i < input.vTriangles.size(); ++i) {
            std::array<const Point2*, 3> aVertices{};
            for (std::size_t k = 0; k < 3; ++k)
                aVertices[k] = vHandles[input.vTriangles[i][k]];
            const auto orientation =
                triangulation.getOrientation(*aVertices[0], *aVertices[1], *aVertices[2]);
            if (orientation == TESK_KIVO2D::ORIENTATION2_COLLINEAR) failAt(i, "has no area");
            if (orientation == TESK_KIVO2D::ORIENTATION2_CW) std::swap(aVertices[0], aVertices[1]);
            vWanted.push_back(keyOf(aVertices, i));
        }
        std::sort(vWanted.begin(), vWanted.end());
        for (std::size_t i = 1; i < vWanted.size(); ++i) {
            if (vWanted[i - 1].aCorners == vWanted[i].aCorners)
                failAt(vWanted[i].place,
                       "is triangle " + std::to_string(vWanted[i - 1].place + 1) + " again");
        }
    }

    // Finds the triangles in the triangulation. Returns the places of those that are not there, ascending.
    std::vector<std::uint32_t> match() {
        std::vector<Triangle2*> vTriangles;
        triangulation.getTrianglePointers(vTriangles);
        std::vector<Key> vPresent;
        vPresent.reserve(vTriangles.size());
        for (std::size_t i = 0; i < vTriangles.size(); ++i) {
            const Triangle2& t = *vTriangles[i];
            vPresent.push_back(keyOf({t.getCorner(0), t.getCorner(1), t.getCorner(2)}, i));
        }
        std::sort(vPresent.begin(), vPresent.end());
        std::vector<std::uint32_t> vMissing;
        std::size_t at = 0;
        for (const Key& wanted : vWanted) {
            while (at < vPresent.size() && vPresent[at].aCorners < wanted.aCorners)
                ++at;
            const bool bThere = at < vPresent.size() && vPresent[at].aCorners == wanted.aCorners;
            vFound[wanted.place] = bThere ? vTriangles[vPresent[at].place] : nullptr;
            if (!bThere) vMissing.push_back(wanted.place);
        }
        std::sort(vMissing.begin(), vMissing.end());
        return vMissing;
    }

    // Edges of a mesh cross nowhere. A few at a time, so that a file of triangles one over another is refused
    // before all their crossings are made.
    void forceEdgesOf(const std::vector<std::uint32_t>& vPlaces) {
        constexpr std::size_t NUM_AT_ONCE = 300;
        const std::size_t numVertices = triangulation.numberOfPoints();
        std::vector<Segment2> vSegments;
        for (std::size_t i = 0; i < vPlaces.size(); ++i) {
            const auto& aCorners = input.vTriangles[vPlaces[i]];
            for (std::size_t k = 0; k < 3; ++k)
                vSegments.emplace_back(*vHandles[aCorners[k]], *vHandles[aCorners[(k + 1) % 3]]);
            if (vSegments.size() < NUM_AT_ONCE && i + 1 < vPlaces.size()) continue;
            triangulation.createConstraint(vSegments);
            if (triangulation.numberOfPoints() != numVertices) throw FileError(name, "triangles overlap");
            vSegments.clear();
        }
    }

    Kivo_2D& triangulation;
    const Input& input;
    const std::vector<Point2*>& vHandles;
    const std::string& name;
    std::vector<Key> vWanted;       // ascending
    std::vector<Triangle2*> vFound; // in the order of the file
};

} // namespace

Zone2* createZoneOfMesh(Kivo_2D& triangulation, const Input& input, const std::vector<Point2*>& vHandles,
                        const std::string& name) {
    return GivenMesh(triangulation, input, vHandles, name).createZone();
}

} // namespace cli
