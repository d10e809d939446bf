// A height for every place: the heights of the measured points are kept in an array of our own, to which the
// custom indices of the vertices lead; between them, triangles are planes.
#include <Kivo_2D.h>

#include <cmath>
#include <iomanip>
#include <iostream>
#include <vector>

using namespace TESK_KIVO2D;

// Twice the area of the triangle a b c, positive when it is counter-clockwise.
static double doubleArea(const Point2& a, const Point2& b, const Point2& c) {
    return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

// Not a number beyond the measured terrain.
static double heightAt(const Kivo_2D& terrain, const std::vector<double>& vHeights, const Point2& place) {
    const Triangle2* const pTriangle = terrain.locate(place);
    if (pTriangle == nullptr) return NAN;
    double sum = 0;
    double sumOfWeights = 0;
    for (int i = 0; i < 3; ++i) {
        const Point2* const pCorner = pTriangle->getCorner(i);
        const double weight = doubleArea(*pTriangle->getCorner(Triangle2::incIndexBy1(i)),
                                         *pTriangle->getCorner(Triangle2::incIndexBy2(i)), place);
        sum += weight * vHeights[static_cast<std::size_t>(pCorner->getCustomIndex())];
        sumOfWeights += weight;
    }
    return sum / sumOfWeights;
}

int main() {
    // A round hill, 100 m high, measured at points that wind outwards like the seeds of a sunflower.
    std::vector<Point2> vPlaces;
    std::vector<double> vHeights;
    for (int i = 0; i < 5000; ++i) {
        const double radius = 7 * std::sqrt(i);
        const double angle = 2.399963 * i;
        vPlaces.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
        vPlaces.back().setCustomIndex(i);
        vHeights.push_back(100 * std::exp(-radius * radius / 40000));
    }
    Kivo_2D terrain;
    terrain.insert(vPlaces);

    std::cout << "    x   height  the hill itself\n" << std::fixed << std::setprecision(1);
    for (int x = -500; x <= 600; x += 100) {
        const double height = heightAt(terrain, vHeights, Point2(x, 25));
        if (std::isnan(height))
            std::cout << std::setw(5) << x << "   beyond the measured terrain\n";
        else
            std::cout << std::setw(5) << x << std::setw(9) << height << std::setw(9)
                      << 100 * std::exp(-(x * x + 25 * 25) / 40000.0) << '\n';
    }
}
