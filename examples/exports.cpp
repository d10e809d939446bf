// Hands a mesh on: a Wavefront OBJ file for 3-D programs, and a web page that anybody opens by a double
// click.
#include <Kivo_2D.h>

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

using namespace TESK_KIVO2D;

static void describe(const std::string& filename) {
    std::ifstream file(filename);
    int numVertices = 0;
    int numFaces = 0;
    for (std::string line; std::getline(file, line);) {
        numVertices += line.rfind("v ", 0) == 0;
        numFaces += line.rfind("f ", 0) == 0;
    }
    std::cout << filename << ": " << numVertices << " vertices, " << numFaces << " faces\n";
}

int main() {
    // A gear wheel with a bore.
    std::vector<Segment2> vOutline;
    std::vector<Point2> vTeeth;
    std::vector<Point2> vRoots;
    std::vector<Point2> vBore;
    generateCircle(96, 0, 0, 50, 50, vTeeth);
    generateCircle(96, 0, 0, 44, 44, vRoots);
    generateCircle(48, 0, 0, 12, 12, vBore);
    for (std::size_t i = 0; i < vTeeth.size(); ++i) {
        const std::size_t j = (i + 1) % vTeeth.size();
        vOutline.emplace_back(i % 4 < 2 ? vTeeth[i] : vRoots[i], j % 4 < 2 ? vTeeth[j] : vRoots[j]);
    }
    for (std::size_t i = 0; i < vBore.size(); ++i)
        vOutline.emplace_back(vBore[i], vBore[(i + 1) % vBore.size()]);

    Kivo_2D mesh;
    std::vector<Point2> vInner;
    generateRandomPoints(3000, -55.0, 55.0, vInner, 9);
    mesh.insert(vInner);
    const Zone2* const pGear = mesh.createParityZone({mesh.createConstraint(vOutline)});

    if (!mesh.writeObj("all.obj") || !mesh.writeObj("gear.obj", pGear)) return 1;
    if (!mesh.writeWebScene("gear", pGear)) return 1;
    describe("all.obj");
    describe("gear.obj");
    describe("gear/3d.obj");
    std::cout << "open gear/index.html in a browser\n";
}
