// What a candidate tells of itself when its refinement is watched.
#include "meshing/RefCand3.h"

#include "Color.h"
#include "Visualizer2.h"
#include "kernel/messages.h"

#include <cmath>
#include <locale>
#include <numbers>
#include <sstream>
#include <string>

namespace TESK_KIVO2D {
namespace {

double smallestAngle(const TriangleShape& shape) {
    const double middle = shape.aSqLengthsIgnoringZ[1], longest = shape.aSqLengthsIgnoringZ[2];
    const double dot = 0.5 * ((longest - shape.aSqLengthsIgnoringZ[0]) + middle);
    return std::atan2(2 * shape.area, dot) * (180 / std::numbers::pi);
}

bool has(RuleSet rules, MeshRule rule) { return (rules & ruleBit(rule)) != 0; }

} // namespace

// The first rule in the order in which sizes come before angles.
void RefCand3::debug(RuleSet rules, int number) const {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    const char* suffix = nullptr;
    if (has(rules, MeshRule::EDGE_LENGTH)) {
        text << "RefC: sidelength is " << std::sqrt(shape.sqLongest()) / shape.scale << " > "
             << site.limits.parameters().getMaxEdgeLength(pT);
        suffix = "_sidelen.ps";
    } else if (has(rules, MeshRule::AREA)) {
        text << "RefC: area";
        suffix = "_area.ps";
    } else if (has(rules, MeshRule::GROWTH)) {
        text << "RefC: growth";
        suffix = "_growth.ps";
    } else {
        text << "RefC: minAngle, current=" << smallestAngle(shape);
        suffix = "_quality25.ps";
    }
    printText(text.str() + "\n");
    Visualizer2 picture("need_" + std::to_string(number) + suffix);
    picture.addObject(*pT, Color());
    picture.writeFile();
}

} // namespace TESK_KIVO2D
