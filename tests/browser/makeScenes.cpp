// Makes the scenes that the browser tests open: makeScenes FOLDER.
#include "Kivo_2D.h"
#include "Zone2.h"
#include "functions.h"
#include "output/webScene.h"

#include <cmath>
#include <cstdio>
#include <string>

using namespace TESK_KIVO2D;

namespace {

// Cells of two triangles each, split along the diagonal from the lower left corner.
class Grid {
public:
    Grid(std::uint32_t numColumns_, std::uint32_t numRows_) : numColumns(numColumns_), numRows(numRows_) {
        for (std::uint32_t row = 0; row <= numRows; ++row)
            for (std::uint32_t column = 0; column <= numColumns; ++column)
                content.mesh.vCoordinates.insert(content.mesh.vCoordinates.end(),
                                                 {double(column), double(row)});
        for (std::uint32_t row = 0; row < numRows; ++row)
            for (std::uint32_t column = 0; column < numColumns; ++column)
                addCell(column, row);
    }

    // Places each vertex anew.
    template<class Map>
    Grid& move(Map map) {
        for (std::size_t i = 0; i < content.mesh.vCoordinates.size(); i += 2) {
            double& x = content.mesh.vCoordinates[i];
            double& y = content.mesh.vCoordinates[i + 1];
            map(x, y);
        }
        return *this;
    }
    // Makes the line of edges between two rows a constraint.
    Grid& constrain(std::uint32_t row) {
        for (std::uint32_t column = 0; column < numColumns; ++column) {
            content.vConstraintEdges.push_back(vertexAt(column, row));
            content.vConstraintEdges.push_back(vertexAt(column + 1, row));
        }
        return *this;
    }

    SceneContent content;

private:
    std::uint32_t vertexAt(std::uint32_t column, std::uint32_t row) const {
        return row * (numColumns + 1) + column;
    }
    std::uint32_t cellAt(std::uint32_t column, std::uint32_t row) const {
        return 2 * (row * numColumns + column);
    }

    void addCell(std::uint32_t column, std::uint32_t row) {
        const std::uint32_t a = vertexAt(column, row), b = vertexAt(column + 1, row);
        const std::uint32_t c = vertexAt(column + 1, row + 1), d = vertexAt(column, row + 1);
        constexpr std::uint32_t none = MeshArrays::noTriangle;
        const std::uint32_t lower = cellAt(column, row), upper = lower + 1;
        content.mesh.vCorners.insert(content.mesh.vCorners.end(), {a, b, c, a, c, d});
        content.mesh.vNeighbours.insert(content.mesh.vNeighbours.end(),
                                        {column + 1 < numColumns ? cellAt(column + 1, row) + 1 : none, upper,
                                         row > 0 ? cellAt(column, row - 1) + 1 : none,
                                         row + 1 < numRows ? cellAt(column, row + 1) : none,
                                         column > 0 ? cellAt(column - 1, row) : none, lower});
    }

    std::uint32_t numColumns;
    std::uint32_t numRows;
};

// What clients do: a ring, the zone inside it, its page.
bool writeIsland(const std::string& path) {
    std::vector<Segment2> vCoast;
    generateRandomPolygon(400, 0, 1000, vCoast, 4);
    Kivo_2D kivo;
    ConstraintGraph2* pCoast = kivo.createConstraint(vCoast);
    std::vector<Point2> vSoundings;
    generateRandomPoints(1500, 0, 1000, vSoundings, 5);
    kivo.insert(vSoundings);
    return kivo.writeWebScene(path.c_str(), kivo.createParityZone({pCoast}));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: makeScenes FOLDER\n", stderr);
        return 2;
    }
    const std::string folder = argv[1];
    bool bOk = true;
    const auto write = [&](Grid&& grid, const std::string& name, const std::string& title) {
        grid.content.title = title;
        bOk = writeSceneFiles(folder + "/" + name, grid.content) && bOk;
    };
    const auto scaled = [](double scale) {
        return [scale](double& x, double& y) {
            x = (x - 1) * scale;
            y = (y - 1) * scale;
        };
    };

    write(std::move(Grid(4, 3).constrain(1)), "plain", "4 × 3 <script>document.title='no'</script> \"&\\");
    Grid zone(4, 3);
    zone.content.bZone = true;
    write(std::move(zone), "zone", "A zone");
    const auto slant = [](double& x, double& y) {
        const double shift = 0.21 * x;
        x += 0.37 * y;
        y += shift;
    };
    write(std::move(Grid(4, 3).constrain(1).move(slant)), "slanted", "Slanted");
    // A map's coordinates: the offset takes most of the digits.
    const auto toMap = [](double& x, double& y) {
        x = 446831.25 + x * 0.5;
        y = 5411936.5 + y * 0.5;
    };
    write(std::move(Grid(40, 30).constrain(15).move(toMap)), "map", "Map");
    write(std::move(Grid(2, 2).constrain(1).move(scaled(1.7e308))), "huge", "Huge");
    write(std::move(Grid(2, 2).constrain(1).move(scaled(1e-306))), "tiny", "Tiny");
    write(Grid(0, 0), "empty", "Empty");
    const auto wave = [](double& x, double& y) {
        const double shift = 12 * std::sin(x / 40);
        x += 12 * std::cos(y / 55);
        y += shift;
    };
    write(std::move(Grid(1000, 500).constrain(250).move(wave)), "large", "A million triangles");
    return writeIsland(folder + "/island") && bOk ? 0 : 1;
}
