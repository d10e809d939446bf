#include "tests/oracle/bruteForce.h"

#include "tests/oracle/exact.h"

#include <algorithm>
#include <unordered_map>

namespace oracle {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Triangle2;

namespace {

using Index = std::size_t;

// The triangulation as numbers: vertices in the order of their coordinates.
struct Mesh {
    std::vector<Point2*> vVertices;
    std::vector<ExactPoint> vExact;
    std::vector<Triangle2*> vTriangles;
    std::vector<std::array<Index, 3>> vCorners;
    // A directed edge and the number of the triangle to its left; sorted.
    std::vector<std::pair<std::pair<Index, Index>, Index>> vEdgeTriangle;

    const ExactPoint& corner(Index t, Index i) const { return vExact[vCorners[t][i % 3]]; }
};

std::string message(const std::string& text, Index i) { return text + " " + std::to_string(i); }

std::vector<Point2> different(std::vector<Point2> vPoints) {
    std::sort(vPoints.begin(), vPoints.end());
    vPoints.erase(std::unique(vPoints.begin(), vPoints.end()), vPoints.end());
    return vPoints;
}

std::string readVertices(const Kivo_2D& kivo, const std::vector<Point2>& vExpected, Mesh& mesh) {
    kivo.getVertexPointers(mesh.vVertices);
    if (mesh.vVertices.size() != kivo.numberOfPoints()) return "numberOfPoints is not the number of vertices";
    if (std::find(mesh.vVertices.begin(), mesh.vVertices.end(), nullptr) != mesh.vVertices.end())
        return "a vertex is null";
    std::sort(mesh.vVertices.begin(), mesh.vVertices.end(), [](auto* p, auto* q) { return *p < *q; });
    const bool bEqual = std::equal(mesh.vVertices.begin(), mesh.vVertices.end(), vExpected.begin(),
                                   vExpected.end(), [](const Point2* p, const Point2& q) { return *p == q; });
    if (!bEqual) return "the vertices are not the different input points";
    mesh.vExact = exactPoints(vExpected);
    return "";
}

std::string checkDimension(const Kivo_2D& kivo, const Mesh& mesh) {
    const auto& v = mesh.vExact;
    bool b2D = false;
    for (Index i = 2; i < v.size() && !b2D; ++i)
        b2D = orientation(v[0], v[1], v[i]) != 0;
    if (kivo.is2D() != b2D) return b2D ? "is2D is false" : "is2D is true although all points are on one line";
    if (!b2D && kivo.numberOfTriangles() != 0) return "triangles although all points are on one line";
    return "";
}

std::string readTriangles(const Kivo_2D& kivo, Mesh& mesh) {
    kivo.getTrianglePointers(mesh.vTriangles);
    if (mesh.vTriangles.size() != kivo.numberOfTriangles())
        return "numberOfTriangles is not the number of triangles";
    std::unordered_map<const Point2*, Index> mNumber;
    for (Index i = 0; i < mesh.vVertices.size(); ++i)
        mNumber[mesh.vVertices[i]] = i;
    for (Index t = 0; t < mesh.vTriangles.size(); ++t) {
        std::array<Index, 3> aCorners;
        for (Index i = 0; i < 3; ++i) {
            const auto found = mNumber.find(mesh.vTriangles[t]->getCorner(static_cast<int>(i)));
            if (found == mNumber.end()) return message("a corner is no vertex, triangle", t);
            aCorners[i] = found->second;
        }
        mesh.vCorners.push_back(aCorners);
        if (orientation(mesh.corner(t, 0), mesh.corner(t, 1), mesh.corner(t, 2)) <= 0)
            return message("corners not counter-clockwise, triangle", t);
        for (Index i = 0; i < 3; ++i)
            mesh.vEdgeTriangle.push_back({{aCorners[i], aCorners[(i + 1) % 3]}, t});
    }
    std::sort(mesh.vEdgeTriangle.begin(), mesh.vEdgeTriangle.end());
    const auto twice = std::adjacent_find(mesh.vEdgeTriangle.begin(), mesh.vEdgeTriangle.end(),
                                          [](auto& one, auto& other) { return one.first == other.first; });
    return twice == mesh.vEdgeTriangle.end()
               ? ""
               : message("a directed edge occurs twice, triangle", twice->second);
}

// The triangle across the edge opposite corner i, as the corners say; the number of triangles on the hull.
Index across(const Mesh& mesh, Index t, Index i) {
    const auto& c = mesh.vCorners[t];
    const std::pair<Index, Index> edge(c[(i + 2) % 3], c[(i + 1) % 3]);
    const auto found =
        std::lower_bound(mesh.vEdgeTriangle.begin(), mesh.vEdgeTriangle.end(), std::pair(edge, Index(0)));
    return found == mesh.vEdgeTriangle.end() || found->first != edge ? mesh.vTriangles.size() : found->second;
}

std::string checkLinks(const Mesh& mesh) {
    for (Index t = 0; t < mesh.vTriangles.size(); ++t) {
        for (Index i = 0; i < 3; ++i) {
            const Index n = across(mesh, t, i);
            const Triangle2* pExpected = n == mesh.vTriangles.size() ? nullptr : mesh.vTriangles[n];
            if (mesh.vTriangles[t]->getOppositeTriangle(static_cast<int>(i)) != pExpected)
                return message("a neighbour is not what the corners say, triangle", t);
        }
    }
    for (Index v = 0; v < mesh.vVertices.size(); ++v) {
        const Triangle2* pT = mesh.vVertices[v]->getIncidentTriangle();
        if (pT == nullptr || !pT->hasVertex(mesh.vVertices[v]))
            return message("the incident triangle is not one of the vertex, vertex", v);
    }
    return "";
}

std::string checkCountsAndArea(const Mesh& mesh, const std::vector<Index>& vHull) {
    if (mesh.vTriangles.size() != 2 * mesh.vExact.size() - 2 - vHull.size())
        return "the number of triangles is not 2n-2-h";
    mpz_class area = 0, hullArea = 0;
    for (Index t = 0; t < mesh.vTriangles.size(); ++t)
        area += twiceArea(mesh.corner(t, 0), mesh.corner(t, 1), mesh.corner(t, 2));
    for (Index i = 1; i + 1 < vHull.size(); ++i)
        hullArea += twiceArea(mesh.vExact[vHull[0]], mesh.vExact[vHull[i]], mesh.vExact[vHull[i + 1]]);
    return area == hullArea ? "" : "the areas of the triangles do not add up to that of the hull";
}

std::string checkHull(const Kivo_2D& kivo, const Mesh& mesh, bool bAll) {
    std::vector<Point2*> vFound, vExpected;
    kivo.getConvexHull(bAll, vFound);
    for (const Index i : hull(mesh.vExact, bAll))
        vExpected.push_back(mesh.vVertices[i]);
    const auto first = std::find(vFound.begin(), vFound.end(), vExpected.front());
    std::rotate(vFound.begin(), first, vFound.end());
    if (vFound == vExpected) return "";
    return bAll ? "the hull with all vertices is wrong" : "the hull without collinear vertices is wrong";
}

std::string checkEmptyCircles(const Mesh& mesh, EmptyCircleCheck check, const EdgePredicate& isConstraint) {
    for (Index t = 0; t < mesh.vTriangles.size(); ++t) {
        const auto holds = [&](const ExactPoint& q) {
            return inCircle(mesh.corner(t, 0), mesh.corner(t, 1), mesh.corner(t, 2), q) > 0;
        };
        if (check == ALL_POINTS && std::any_of(mesh.vExact.begin(), mesh.vExact.end(), holds))
            return message("a circle holds a point, triangle", t);
        for (Index i = 0; check == ONLY_NEIGHBOURS && i < 3; ++i) {
            const Index n = across(mesh, t, i);
            if (n > t) continue; // the hull, or seen from the other side
            const auto& c = mesh.vCorners[t];
            if (isConstraint && isConstraint(mesh.vVertices[c[(i + 1) % 3]], mesh.vVertices[c[(i + 2) % 3]]))
                continue;
            for (const Index corner : mesh.vCorners[n]) { // two of the three are on the circle
                if (std::find(c.begin(), c.end(), corner) == c.end() && holds(mesh.vExact[corner]))
                    return message("a circle holds a neighbour's corner, triangle", t);
            }
        }
    }
    return "";
}

std::string findFault(const Kivo_2D& kivo, const std::vector<Point2>& vInput, EmptyCircleCheck check,
                      const EdgePredicate& isConstraint) {
    Mesh mesh;
    std::string fault = readVertices(kivo, different(vInput), mesh);
    if (fault.empty()) fault = checkDimension(kivo, mesh);
    if (fault.empty()) fault = readTriangles(kivo, mesh);
    if (!fault.empty() || !kivo.is2D()) return fault;
    fault = checkLinks(mesh);
    if (fault.empty()) fault = checkCountsAndArea(mesh, hull(mesh.vExact, true));
    if (fault.empty()) fault = checkHull(kivo, mesh, true);
    if (fault.empty()) fault = checkHull(kivo, mesh, false);
    return fault.empty() ? checkEmptyCircles(mesh, check, isConstraint) : fault;
}

std::string findFaultWithin(const Kivo_2D& kivo, EmptyCircleCheck check, const EdgePredicate& isConstraint) {
    std::vector<Point2*> vVertices;
    kivo.getVertexPointers(vVertices);
    std::vector<Point2> vPoints;
    for (const Point2* p : vVertices)
        vPoints.push_back(*p);
    if (different(vPoints).size() != vPoints.size()) return "two vertices have equal coordinates";
    return findFault(kivo, vPoints, check, isConstraint);
}

} // namespace

std::string findFault(const Kivo_2D& kivo, const std::vector<Point2>& vInput, EmptyCircleCheck check) {
    return findFault(kivo, vInput, check, {});
}

std::string findFault(const Kivo_2D& kivo, EmptyCircleCheck check) {
    return findFaultWithin(kivo, check, {});
}

std::string findFault(const Kivo_2D& kivo, const EdgePredicate& isConstraint) {
    return findFaultWithin(kivo, ONLY_NEIGHBOURS, isConstraint);
}

std::vector<Corners> triangleList(const Kivo_2D& kivo) {
    std::vector<Triangle2*> vTriangles;
    kivo.getTrianglePointers(vTriangles);
    std::vector<Corners> vCorners;
    for (const Triangle2* pT : vTriangles) {
        Corners c;
        for (int i = 0; i < 3; ++i) {
            const Point2* p = pT->getCorner(i);
            c[static_cast<Index>(i)] = {p->x() + 0.0, p->y() + 0.0}; // one zero only
        }
        std::rotate(c.begin(), std::min_element(c.begin(), c.end()), c.end());
        vCorners.push_back(c);
    }
    return vCorners;
}

std::vector<Corners> triangleSet(const Kivo_2D& kivo) {
    std::vector<Corners> vCorners = triangleList(kivo);
    std::sort(vCorners.begin(), vCorners.end());
    return vCorners;
}

bool isUnique(const Kivo_2D& kivo) {
    std::vector<Triangle2*> vTriangles;
    kivo.getTrianglePointers(vTriangles);
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            const Triangle2* pN = pT->getOppositeTriangle(i);
            if (pN == nullptr || pN > pT) continue;
            const Point2* pFar = pN->getCorner(pN->getIntraTriangleIndex(pT));
            if (inCircle(*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2), *pFar) == 0) return false;
        }
    }
    return true;
}

} // namespace oracle
