// How far does a drum bend? Solves -laplace(u) = 1 in a round membrane that is fixed at its rim, by linear
// finite elements on the flat arrays of a mesh. The exact answer is (1 - x^2 - y^2) / 4.
#include <Kivo_2D.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <vector>

using namespace TESK_KIVO2D;

// An edge pulls its ends together by half of the cotangent of each angle that lies opposite.
struct Spring {
    std::uint32_t a, b;
    double strength;
};

static std::vector<double> bend(const MeshArrays& mesh) {
    const std::size_t numVertices = mesh.vVertices.size();
    std::vector<Spring> vSprings;
    std::vector<double> vStrength(numVertices), vLoad(numVertices);
    std::vector<bool> vFixed(numVertices);
    for (std::size_t t = 0; t < mesh.vCorners.size(); t += 3) {
        for (std::size_t i = 0; i < 3; ++i) {
            const std::uint32_t a = mesh.vCorners[t + (i + 1) % 3], b = mesh.vCorners[t + (i + 2) % 3];
            const Vector2 toA = *mesh.vVertices[a] - *mesh.vVertices[mesh.vCorners[t + i]];
            const Vector2 toB = *mesh.vVertices[b] - *mesh.vVertices[mesh.vCorners[t + i]];
            const double doubleArea = toA.x() * toB.y() - toA.y() * toB.x();
            vSprings.push_back({a, b, 0.5 * (toA * toB) / doubleArea});
            vStrength[a] += vSprings.back().strength;
            vStrength[b] += vSprings.back().strength;
            vLoad[mesh.vCorners[t + i]] += doubleArea / 6; // each corner carries a third of the triangle
            // No neighbour across the edge from a to b: it is a piece of the rim.
            if (mesh.vNeighbours[t + i] == MeshArrays::noTriangle) vFixed[a] = vFixed[b] = true;
        }
    }
    // Puts each vertex where its springs and its load are in balance, over and over (Jacobi).
    std::vector<double> u(numVertices), vForce;
    for (double change = 1; change > 1e-12;) {
        vForce = vLoad;
        for (const Spring& spring : vSprings) {
            vForce[spring.a] += spring.strength * u[spring.b];
            vForce[spring.b] += spring.strength * u[spring.a];
        }
        change = 0;
        for (std::size_t i = 0; i < numVertices; ++i) {
            const double before = u[i];
            if (!vFixed[i]) u[i] = vForce[i] / vStrength[i];
            change = std::max(change, std::fabs(u[i] - before));
        }
    }
    return u;
}

int main() {
    for (const int numRings : {4, 8, 16, 32}) {
        std::vector<Point2> vPoints{{0, 0}};
        for (int ring = 1; ring <= numRings; ++ring)
            generateCircle(6 * ring, 0, 0, double(ring) / numRings, double(ring) / numRings, vPoints);
        Kivo_2D drum;
        drum.insert(vPoints);
        MeshArrays mesh;
        drum.getMeshArrays(mesh);
        const std::vector<double> u = bend(mesh);
        double error = 0;
        for (std::size_t i = 0; i < u.size(); ++i) {
            const double sqRadius = sqDistance(*mesh.vVertices[i], Point2(0, 0));
            error = std::max(error, std::fabs(u[i] - (1 - sqRadius) / 4));
        }
        std::cout << mesh.vCorners.size() / 3 << " triangles: largest error " << std::setprecision(3) << error
                  << '\n';
    }
}
