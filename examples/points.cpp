// Who is next to whom, and which station is nearest: points inserted one by one, and the questions that a
// triangulation answers, also after a point was removed.
#include <Kivo_2D.h>

#include <iostream>
#include <string>
#include <vector>

using namespace TESK_KIVO2D;

// From any vertex, step to the neighbour that is nearest to the place. In a Delaunay triangulation that ends
// at the nearest vertex of all.
static Point2* findNearest(Point2* pStart, const Point2& place) {
    Point2* pNearest = pStart;
    Point2* pLast = nullptr;
    while (pNearest != pLast) {
        pLast = pNearest;
        TriangleAroundVertexIterator it(pLast);
        const Triangle2* const pFirst = *it;
        do {
            for (int i = 0; *it != nullptr && i < 3; ++i) {
                Point2* const pCorner = (*it)->getCorner(i);
                if (sqDistance(*pCorner, place) < sqDistance(*pNearest, place)) pNearest = pCorner;
            }
        } while (*++it != pFirst);
    }
    return pNearest;
}

int main() {
    const std::vector<std::string> vNames{"Airport", "Harbour", "Castle",   "Market",
                                          "Station", "Park",    "Hospital", "Mill"};
    const std::vector<Point2> vPlaces{{0, 0}, {9, 1}, {4, 4}, {6, 5}, {5, 2}, {1, 7}, {8, 8}, {2, 3}};
    Kivo_2D stations;
    for (std::size_t i = 0; i < vPlaces.size(); ++i)
        stations.insert(vPlaces[i])->setCustomIndex(static_cast<int>(i));
    const auto nameOf = [&](const Point2* pVtx) {
        return vNames[static_cast<std::size_t>(pVtx->getCustomIndex())];
    };

    std::vector<Point2*> vHull;
    stations.getConvexHull(true, vHull);
    std::cout << stations.numberOfTriangles() << " triangles, the outermost stations:";
    for (const Point2* pVtx : vHull)
        std::cout << ' ' << nameOf(pVtx);
    std::cout << '\n';

    const Point2 visitor(5.8, 3.9);
    const Triangle2* const pTriangle = stations.locate(visitor);
    std::cout << "the visitor stands between";
    for (int i = 0; i < 3; ++i)
        std::cout << ' ' << nameOf(pTriangle->getCorner(i));
    std::cout << "\nnearest to the visitor: " << nameOf(findNearest(vHull[0], visitor)) << '\n';
    std::cout << "out at sea there is " << (stations.locate(Point2(20, 20)) ? "a" : "no") << " triangle\n";

    Point2* const pClosed = findNearest(vHull[0], visitor);
    stations.remove(pClosed);
    std::cout << "after that one has closed: " << nameOf(findNearest(vHull[0], visitor)) << '\n';
}
