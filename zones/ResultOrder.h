#pragma once

#include "Zone2.h"

#include <array>
#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

inline bool isResult(ZoneLocation zoneLoc) {
    return zoneLoc >= ZL_RESULT_UNION && zoneLoc <= ZL_RESULT_SYM_DIFFERENCE;
}

// The order in which a result zone and all that it is made from are evaluated: operands first, each zone
// once, however often it is an operand. So neither a long chain of zones nor one that doubles at every link
// takes more than a step a zone.
class ResultOrder {
public:
    struct Step {
        const Zone2* pZone;
        std::array<std::size_t, 2> aOperands; // earlier steps, if it is a result zone
        bool bFirstEnds;                      // no later step needs the first operand
        bool bSecondEnds;
    };

    ResultOrder(const ZoneRegistry& registry, const Zone2& zone);

    // The last step is the zone itself.
    const std::vector<Step>& steps() const { return vSteps; }
    // True when an operand is no more; then there are no steps.
    bool meetsDeletedZone() const { return vSteps.empty(); }

private:
    void findEnds();

    std::vector<Step> vSteps;
};

} // namespace TESK_KIVO2D
